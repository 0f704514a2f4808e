#pragma once

#include <QImage>

class LoopLibrary;
class Project;

/// Draws what the tracks of a song sound, one strip above another: time runs to the right with the
/// lines of bars and beats, pitch upwards, and the louder a note, the darker it is. The notes are
/// those of playback, humanizer and chords included.
QImage notePicture(const Project& project, const LoopLibrary& library);
