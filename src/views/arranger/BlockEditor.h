#pragma once

#include "views/RecordDrag.h"
#include "views/arranger/BlockCopies.h"
#include "views/arranger/HeldBlocks.h"

#include <QObject>

#include <optional>

class ArrangerScene;
class ClipGestures;
class LoopLibrary;
class Project;
class QKeyEvent;
struct ArrowKey;

/// What mouse and keys do to the blocks of the arranger: it knows which are selected and which are
/// held, writes into the project and says so. How it is shown is the business of others.
class BlockEditor : public QObject {
    Q_OBJECT

public:
    /// The scene is not owned; selections are those of its items.
    explicit BlockEditor(ArrangerScene* scene, QObject* parent);

    /// Nothing is owned, and each may be null. What is held is let go where it is.
    void setContext(Project* project, const LoopLibrary* library);

    Project* project() const { return project_; }

    /// May be null.
    const LoopLibrary* library() const { return library_; }

    /// In beats: how far blocks go at a time.
    double snapBeats() const;

    /// What changes the gains and the fades of clips.
    ClipGestures* clips() const { return clips_; }

    // ---- Selection ----

    QList<BlockRef> selected() const;

    /// The selected block that the keys are on; nothing where none is selected.
    std::optional<BlockRef> current() const;

    /// Selects one block and nothing else.
    void select(const BlockRef& block);

    /// Selects some blocks and nothing else.
    void selectAll(const QList<BlockRef>& blocks);

    /// Selects a block beside those that are.
    void add(const BlockRef& block);

    // ---- Drags ----

    /// What a press on a block does besides taking it.
    enum class Press {
        /// Selects it alone, unless it is one of several that are selected: they go along.
        Plain,
        /// Takes it along, or leaves it out again if the mouse goes nowhere.
        Additive
    };

    /// Takes the selected blocks at one of them, or by their ends.
    void take(const BlockRef& block, Press press, bool byTheEnd, double sceneX);

    /// Has what is held go along with the mouse, or copies of it.
    void dragTo(double sceneX, Qt::MouseButtons buttons, bool copying);

    bool isDragging() const { return drag_.has_value(); }

    /// Whether the drag is one of this button.
    bool isEndedBy(Qt::MouseButton button) const;

    /// The mouse has let go.
    void release();

    /// Ends a drag that is under way as if the mouse let go. Whether it has gone anywhere, and was
    /// no click.
    bool endDrag();

    /// Forgets a drag that is under way; what it has done so far stays.
    void cancelDrag();

    // ---- Keys ----

    /// Moves or stretches the selected blocks by an arrow that is pressed, or held on: past those
    /// that are equal, on which they would not be seen. False where none is selected.
    bool step(int key, bool heldOn, const ArrowKey& arrow);

    /// Changes the gain or a fade of the clips that are selected: true where the key does that.
    bool stepClip(const QKeyEvent& event);

    /// The key of a run of arrows; nothing while there is none.
    std::optional<int> runningKey() const;

    /// Makes one edit of what an arrow that is held down has done.
    void endKeyRun();

    // ---- Edits ----

    /// Removes the record of a block; an edit even where the block is stale and nothing goes.
    void remove(const BlockRef& block);

    void removeSelected();

    /// Takes copies of the selected blocks, in place of what was copied before. Where none is
    /// selected that stays.
    void copySelected();

    bool hasCopies() const { return !copies_.isEmpty(); }

    /// Lays what was copied from a beat on, and selects it. See BlockCopies::layAt().
    void paste(double beat, int melodyTrack);

    /// Repeats the selected blocks right behind the last of them, a whole number of steps later,
    /// and selects what is new.
    void duplicateSelected();

signals:
    /// The records have changed on the way of a gesture: whoever shows them shows them anew.
    void changed();

    /// A drag is over, and the song may be wider than is shown.
    void dragEnded();

    /// An edit of the song is done.
    void edited();

    /// A block was to be laid where it lies already. It is the one that lies there, as the project
    /// is at this moment.
    void alreadyThere(const BlockRef& block);

    /// There was no track for what was to be laid, and no room for one.
    void tracksExhausted();

private:
    using Records = RecordDrag<HeldBlocks::Record>;

    /// What becomes of the block that a press took, if the mouse goes nowhere.
    enum class Click { Nothing, Alone, Deselected };

    /// Between press and release.
    struct Drag {
        BlockRef block;
        bool byTheEnd;
        /// Of the press, in scene pixels.
        double startX;
        Click click;
        HeldBlocks held;
        Records records;
    };

    /// An arrow that is held down.
    struct KeyRun {
        int key;
        HeldBlocks held;
        Records records;
    };

    bool ownsRun() const;
    void stepOn(HeldBlocks::Act act, double way);
    void lay(const BlockCopies& copies, double beat, int melodyTrack);
    void showAnew(const QList<BlockRef>& blocks);
    void forgetGestures();

    ArrangerScene* scene_;
    ClipGestures* clips_;
    Project* project_ = nullptr;
    const LoopLibrary* library_ = nullptr;
    /// May be selected no longer.
    BlockRef current_;
    std::optional<Drag> drag_;
    std::optional<KeyRun> keyRun_;
    BlockCopies copies_;
};
