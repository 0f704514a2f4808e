#pragma once

#include <QHash>
#include <QImage>
#include <QString>

class LoopLibrary;
class Project;

/// What a picture says besides the notes.
struct PictureWords {
    /// Empty for none.
    QString title;
    /// What drums are called, by their key; a key without a name is its number.
    QHash<int, QString> drums;
};

/// Draws what the tracks of a song sound, one strip above another: time runs to the right with the
/// lines of bars and beats, pitch upwards, and the louder a note, the darker it is. Bars have their
/// numbers, chords their degree and root, rows the name of their note or drum. The notes are those
/// of playback, humanizer and chords included.
QImage notePicture(const Project& project, const LoopLibrary& library,
                   const PictureWords& words = {});
