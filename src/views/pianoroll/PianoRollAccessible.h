#pragma once

class PianoRollCanvas;
class QString;
struct MelodyBlock;
struct NoteEvent;

/// What those hear of the piano roll who cannot see it: the roll and its keys with what they show,
/// and each note of the block as a child of the grid.
namespace PianoRollAccessible {

/// Has the widgets of piano rolls be asked for from now on. May be called again.
void install();

/// "Do 4, compás 2, negra".
QString nameOf(const MelodyBlock& block, const NoteEvent& note, double beatsPerBar);

} // namespace PianoRollAccessible
