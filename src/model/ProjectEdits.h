#pragma once

#include <QString>

class Project;

/// What the commands of the window do to a project. Nothing is announced from here.
namespace ProjectEdits {

/// Whether there is anything in a work that would be missed: a chord, a clip, a loop block or a
/// note. Tracks by themselves and empty melody blocks are nothing.
bool hasContent(const Project& project);

/// Adds a note track with a piano, above the accompaniment, and returns its index.
qsizetype addNoteTrack(Project& project, const QString& name);

/// Sets the key to Minor for a `mode` of 1 and to Major for any other: the key that a work came
/// with may be in another mode, and loses it here.
void setKey(Project& project, int rootPitchClass, int mode);

} // namespace ProjectEdits
