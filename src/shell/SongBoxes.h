#pragma once

#include <QString>

class QComboBox;
class QSpinBox;
struct TimeSignature;

/// Boxes with what a song can be given, for whoever asks for it.
namespace SongBoxes {

/// The meters that a work can be given. The item's data is the meter.
QComboBox* meters();

/// Shows a meter that the box may lack: it stands behind the others for as long.
void showMeter(QComboBox& box, const TimeSignature& meter);

/// The twelve keys by their pitch class, as in "%1 / %2" with the letter and the syllable, or the
/// other way round.
QComboBox* keys(const QString& pattern);

/// Major and minor, in this order.
QComboBox* modes();

/// Quarter notes per minute, at first those of a work that nobody has changed.
QSpinBox* tempo();

} // namespace SongBoxes
