#pragma once

#include "views/SceneWidth.h"
#include "views/arranger/ArrangerLayout.h"
#include "views/arranger/BlockItem.h"
#include "views/arranger/BlockLabels.h"

#include <QGraphicsScene>

class LoopLibrary;
class Project;
class WaveOutlines;
struct AudioClip;
struct LoopBlock;

/// The blocks of a song and the playhead over them. Everything is made anew from the project at
/// each rebuild, so pointers to items live until then.
class ArrangerScene : public QGraphicsScene {
    Q_OBJECT

public:
    explicit ArrangerScene(QObject* parent = nullptr);

    /// Blocks of a track without a lane are left out, and so are those whose place is not finite
    /// or beyond ArrangerLayout::kMostBeats. The playhead stands at beat 0 afterwards.
    void rebuild(const Project& project, const QList<LaneInfo>& lanes,
                 SceneWidth width = SceneWidth::Fit);

    /// Where the next rebuild finds the files of clips; an empty one has none, and no voice is
    /// shown.
    void setClipFolder(const QString& folder) { clipFolder_ = folder; }

    /// Forgets how the voices of the work so far look.
    void forgetVoices();

    /// Knows from the next rebuild on how long loops are. Not owned; may be null.
    void setLibrary(const LoopLibrary* library) { library_ = library; }

    /// Gives the scene the size of the song.
    void fit(const Project& project, const QList<LaneInfo>& lanes,
             SceneWidth width = SceneWidth::Fit);

    void setPlayheadBeat(double beat);

    /// Shows the playhead in red while a voice is recorded.
    void setRecording(bool recording);

    bool isRecording() const { return recording_; }

    /// Another number after each rebuild.
    int revision() const { return revision_; }

    /// The item of a record, or null.
    BlockItem* itemOf(const BlockRef& block) const;

    /// All blocks that are drawn, in the order of their references.
    QList<BlockRef> blocks() const;

    /// In the same order.
    QList<BlockRef> selectedBlocks() const;

    /// Selects some blocks and nothing else.
    void selectBlocks(const QList<BlockRef>& blocks);

    /// The topmost block at a place, or null.
    BlockItem* blockAt(const QPointF& place) const;

private:
    /// Takes it over.
    void addBlock(BlockItem* item);

    void addChords(const Project& project);
    void addTracks(const Project& project, const QList<LaneInfo>& lanes);
    void addAudioTracks(const Project& project, const QList<LaneInfo>& lanes);
    void addClip(const Project& project, const BlockRef& block, const LaneInfo& lane,
                 const AudioClip& clip);
    /// Null for one that is not drawn.
    BlockItem* addTrackBlock(const BlockRef& block, const LaneInfo& lane, const BlockSpan& span,
                             const QString& label);
    void addLoops(const Project& project, int track, const LaneInfo& lane);
    void addPlayhead();

    QPen playheadPen() const;

    WaveOutlines* outlines_;
    BlockLabels labels_;
    QString clipFolder_;
    QGraphicsLineItem* playhead_ = nullptr;
    const LoopLibrary* library_ = nullptr;
    bool recording_ = false;
    int revision_ = 0;
};
