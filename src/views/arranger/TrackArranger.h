#pragma once

#include "music/ChordVoicer.h"
#include "music/LoopSection.h"
#include "views/EditCommand.h"
#include "views/Zoom.h"
#include "views/arranger/LaneSelection.h"

#include <QList>
#include <QWidget>

class ArrangerGridView;
class ArrangerHeaderColumn;
class ArrangerScene;
class BlockEditor;
class LoopLibrary;
class PlaybackEngine;
class PlayheadFollower;
class Project;
class QGraphicsItem;
class TimelineRuler;
struct ArrowKey;

/// The timeline of a song: a lane for each part of it, with everything placed on it as a block. It
/// holds nothing of the song; it writes gestures straight into the project and says so.
class TrackArranger : public QWidget, public CommandedEditor {
    Q_OBJECT

public:
    explicit TrackArranger(QWidget* parent = nullptr);
    ~TrackArranger() override;

    /// Shows a project from its first track and its first bar on, in the scale 1. Nothing is owned,
    /// and each may be null.
    void setContext(Project* project, PlaybackEngine* playback, LoopLibrary* library);

    Project* project() const { return project_; }

    /// May be null.
    const LoopLibrary* library() const { return library_; }

    const QList<LaneInfo>& lanes() const { return lanes_; }

    /// The track on which edits by other means act; -1 for none.
    int activeTrack() const { return selection_.activeTrack; }

    const QList<int>& selectedTracks() const { return selection_.tracks; }

    /// -1 for none.
    int selectedAudioTrack() const { return selection_.audioTrack; }

    /// Whether it is the lane of chords that is selected, and no track.
    bool areChordsSelected() const { return selection_.chords; }

    /// The horizontal scale of the view, Zoom::kLeast to Zoom::kMost.
    double zoomX() const { return zoomX_; }

    ArrangerScene* scene() const { return scene_; }

    BlockEditor* blocks() const { return blocks_; }

    ArrangerGridView* view() const { return view_; }

    ArrangerHeaderColumn* headerColumn() const { return header_; }

    TimelineRuler* ruler() const { return ruler_; }

    /// Keeps the playhead of a song that plays in sight.
    PlayheadFollower* follower() const { return follower_; }

    void rebuildLanes();
    void rebuildScene();

    /// Gives the scene the size of the song again, which a drag keeps it from getting.
    void fitScene();

    /// Ends a drag of a block that is under way as if the mouse let go, and a run of arrows as if
    /// the key came up: whoever puts other records into the project, or reads it as a whole, does
    /// so first.
    void endDrag();

    /// The lane at a height of the scene, or null.
    const LaneInfo* laneAtY(double y) const;

    /// The top of a track's lane in scene pixels; -1 where its group is folded.
    int laneTopForNoteTrack(int index) const;
    int laneTopForAudioTrack(int index) const;

    /// In beats.
    double snapBeats() const;

    bool isGroupCollapsed(const QString& key) const;

    /// Folds or unfolds a group, which is an edit of the project.
    void toggleGroup(const QString& key);

    bool isPitchedTrack(const Track& track) const;

    /// What one looks at stays where it is; see Zoom::anchor().
    void zoomHorizontal(double factor, Zoom::By by = Zoom::By::Command);

    /// Makes a track the active one. An additive selection takes further tracks along, or leaves
    /// them out again; tracks of the accompaniment are selected alone.
    void selectNoteTrack(int index, bool additive);

    void selectAudioTrack(int index);

    void selectChords();

    bool can(EditCommand command) const override;
    void perform(EditCommand command) override;

    /// The lane that the keys are on, which is that of the last block or track to be selected.
    const LaneRef& keyLane() const { return selection_.keyLane; }

    /// Selects a lane in place of everything that is selected: the keys are on it then, and its
    /// track, if it has one, is the active one.
    void goToLane(const LaneRef& lane);

    /// Selects one block and shows it; the keys are on its lane then.
    void goToBlock(const BlockRef& block);

    /// Scrolls a lane into sight, unless its group is folded.
    void showLane(const LaneRef& lane);

    /// Scrolls a beat of the song into sight.
    void showBeat(double beat);

    void toggleLaneMute(const LaneInfo& lane);

    /// Paints the names and the mute buttons of the lanes anew, which others may have changed.
    void repaintHeader();

    /// Removes the record of a block from the project; an edit even where the block is stale and
    /// nothing goes. Other items, and null, are left alone. The item is gone afterwards.
    void deleteItem(QGraphicsItem* item);

    /// What has opened a menu: a mouse is over its entry soon, a key begins at one.
    enum class OpenedBy { Mouse, Key };

    /// Lays a chord that the user chooses, from a beat to the end of its bar.
    void openHarmonyMenu(double beat, const QPoint& globalPos, OpenedBy by = OpenedBy::Mouse);

    /// Lays a chord from the step under the playhead to the end of its bar. A degree outside 1..7
    /// lays nothing.
    void insertHarmonyAtPlayhead(int degree, ChordExtension extension);

    /// Lets the user choose a chord and lays it at the step under the playhead.
    void openHarmonyMenuAtPlayhead();

    /// Moves the playhead to a beat of the song as shown, and the view to where it is. Starts
    /// nothing.
    void placePlayhead(double beat);

    void syncRuler();

    /// Shows the playhead in red while a voice is recorded.
    void setRecording(bool recording);

signals:
    void edited();

    /// Blocks were to be laid where they lie already: what one of them is, in words.
    void alreadyThere(const QString& block);

    /// Blocks were to be laid on a track that could not be made.
    void tracksExhausted();

    /// A click has taken a block away, which not everybody expects of it.
    void deletedByClick();

    /// A melody block is to be opened for editing.
    void openMelodyBlock(int trackIndex, int blockIndex);

    void laneSelectionChanged();

    /// A loop was dropped on the bar that starts at a beat.
    void loopDropped(const QString& rhythmId, const QString& layerId, LoopSection section,
                     int variantIndex, double beat);

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    bool stepByKey(const QKeyEvent& event);
    bool changeByArrow(const QKeyEvent& event, const ArrowKey& arrow);
    bool goByArrow(const ArrowKey& arrow);
    void goAlongLane(const ArrowKey& arrow);
    void goToLaneBeside(const ArrowKey& arrow);
    void takeAlong(const BlockRef& block);
    bool areKeysOn(const LaneRef& lane) const;
    bool commandByKey(const QKeyEvent& event);
    bool movePlayhead(double step, int direction);
    void showBlock(const BlockRef& block);
    double placeInSong() const;
    double stepUnderPlayhead() const;
    bool enterByKey(const QKeyEvent& event);
    bool deselectByKey(const QKeyEvent& event);
    bool deleteByKey(const QKeyEvent& event);
    void updatePlayhead(double beat);
    void seek(double beat);
    void connectParts();
    void nameParts();
    void tellPlayhead();
    void selectFirstTrack();
    void pressLane(const LaneRef& lane, bool additive);
    void setKeyLane(const LaneRef& lane, bool shows = false);
    void showStart();
    void showNothing();
    void layChord(double beat, int degree, ChordExtension extension);
    bool layChordOfKey(const QKeyEvent& event);

    Project* project_ = nullptr;
    PlaybackEngine* playback_ = nullptr;
    LoopLibrary* library_ = nullptr;
    QList<LaneInfo> lanes_;
    double zoomX_ = 1.0;
    LaneSelection selection_;

    ArrangerScene* scene_;
    BlockEditor* blocks_;
    TimelineRuler* ruler_;
    ArrangerHeaderColumn* header_;
    ArrangerGridView* view_;
    PlayheadFollower* follower_;
};
