#pragma once

#include "model/GridSubdivision.h"

#include <QString>

class Project;
struct MelodyBlock;

/// The notes of a piano roll and who writes them, as the parts of the roll ask for them that show
/// them and take the mouse.
class RollNotes {
public:
    virtual ~RollNotes() = default;

    /// May be null.
    virtual Project* project() const = 0;

    virtual GridSubdivisionLevel subdivisionLevel() const = 0;

    /// Length of a step in beats.
    virtual double snapBeats() const = 0;

    /// The block whose notes can be edited, or null: for no track, and for one of the
    /// accompaniment. A track without a melody block is given one, as long as the song, here and
    /// without a word. Valid until the next change of the track's blocks.
    virtual MelodyBlock* activeBlock() = 0;

    /// Adds a note to the block at an absolute beat, and says nothing of it.
    virtual void addNoteAt(double beat, int pitch, double duration) = 0;

    /// Puts the notes of the block in order, and says that the project has been edited.
    virtual void commitEdit() = 0;

    virtual void deleteSelectedNotes() = 0;

    /// Makes one edit of what an arrow that is held down has done to the notes.
    virtual void endKeyRun() = 0;

    /// Shows the notes as they are now.
    virtual void rebuildScene() = 0;

    /// Gives the scene the size of the song again, which a drag keeps it from getting.
    virtual void fitScene() = 0;

    /// Sounds a pitch with the instrument of the track, until endPreview().
    virtual void startPreview(int pitch) = 0;
    virtual void endPreview(int pitch) = 0;

    /// Selects one note and shows it.
    virtual void goToNote(int index) = 0;

    /// The selected note that the keys are on; -1 where none is selected.
    virtual int currentNote() const = 0;

    /// The track, the key and the length of the block, in words.
    virtual QString caption() const = 0;
};
