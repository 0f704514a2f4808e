#pragma once

#include "views/RecordDrag.h"
#include "views/arranger/ClipEdits.h"

#include <QObject>
#include <QPointF>

#include <optional>

class ArrangerScene;
class AudioClipItem;
class QKeyEvent;
struct ClipShape;

/// What the mouse and the keys do to the gain and the fades of clips. The record changes at once; a
/// gesture is one edit when it ends. Places are those of the scene, and a scale is that of its
/// widths on the screen.
class ClipGestures : public QObject {
    Q_OBJECT

public:
    /// The scene is not owned.
    explicit ClipGestures(ArrangerScene* scene, QObject* parent);

    /// Not owned, and may be null.
    void setProject(Project* project) { project_ = project; }

    // ---- Mouse ----

    /// The handle of a clip at a place; nothing where a press means the block.
    std::optional<ClipHandle> handleAt(const QPointF& place, double scale) const;

    /// Takes hold of the handle at a place, and selects its clip unless it is selected; false where
    /// there is none.
    bool press(const QPointF& place, double scale);

    bool isHeld() const { return held_.has_value(); }

    /// Follows the mouse. A line that is drawn sideways is let go of, since it is its block that is
    /// to move: then the place of the press.
    std::optional<QPointF> move(const QPointF& place, Qt::MouseButtons buttons, double scale);

    /// The mouse has let go. A click selects the clip alone.
    void release();

    // ---- Keys ----

    /// Whether a key changes clips that are selected.
    bool acts(const QKeyEvent& event) const;

    /// Whether a key goes on with what it has begun.
    bool goesOn(const QKeyEvent& event) const;

    /// Changes all clips that are selected, whatever else is: true where the key does that.
    bool step(const QKeyEvent& event);

    /// The key that is held down; nothing while there is none.
    std::optional<int> runningKey() const;

    // ---- Both ----

    /// What the gesture under way has come to with a clip, or with the first of its clips; empty
    /// where it has changed nothing yet.
    QString words(const std::optional<BlockRef>& clip = std::nullopt) const;

    /// Makes an edit of what has been done so far.
    void end();

    /// Forgets a gesture; what it has done so far stays.
    void cancel();

signals:
    /// A record has changed on the way: whoever shows it shows it anew.
    void changed();

    /// A drag is over.
    void ended();

    /// An edit of the song is done.
    void edited();

private:
    using Levels = RecordDrag<QList<std::optional<ClipLevels>>>;

    /// Clips by one of their handles, in the hands of the mouse, which has one of them, or of a
    /// key.
    struct Gesture {
        QList<BlockRef> clips;
        ClipHandle handle;
        Levels levels;
    };

    struct Held : Gesture {
        QPointF press;
        /// Whether the mouse has gone far enough to say which way.
        bool follows;
    };

    struct KeyRun : Gesture {
        int key;
    };

    std::optional<ClipLevels> levelsOf(const BlockRef& block) const;
    const AudioClipItem* itemOf(const BlockRef& block) const;
    QList<std::optional<ClipLevels>> levelsOf(const QList<BlockRef>& clips) const;
    QList<BlockRef> selectedClips() const;
    void follow(const QPointF& place);
    double valueAt(const ClipShape& shape, const QPointF& place) const;
    void stepOn(Gesture& gesture, int steps);
    void leave(Gesture& gesture, const QList<std::optional<ClipLevels>>& levels);
    void commit(const Gesture& gesture);

    ArrangerScene* scene_;
    Project* project_ = nullptr;
    std::optional<Held> held_;
    std::optional<KeyRun> run_;
};
