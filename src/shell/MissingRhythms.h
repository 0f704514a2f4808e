#pragma once

#include <QStringList>

class LoopLibrary;
struct Song;

/// Ids of the rhythms that the loops of a work are of and the library does not hold, each once, in
/// the order of its tracks.
QStringList missingRhythms(const Song& work, const LoopLibrary& library);
