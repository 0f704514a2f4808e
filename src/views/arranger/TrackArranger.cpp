#include "views/arranger/TrackArranger.h"

#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "views/AccessibleItems.h"
#include "views/AccessibleRuler.h"
#include "views/PlayheadFollower.h"
#include "views/ScrollIntoView.h"
#include "views/TimelineRuler.h"
#include "views/WheelForwarder.h"
#include "views/arranger/ArrangerAccessible.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerHeaderColumn.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/BlockEditor.h"

#include <QGridLayout>
#include <QScrollBar>

#include <algorithm>

TrackArranger::TrackArranger(QWidget* parent)
    : QWidget(parent), scene_(new ArrangerScene(this)), blocks_(new BlockEditor(scene_, this)),
      ruler_(new TimelineRuler), header_(new ArrangerHeaderColumn),
      view_(new ArrangerGridView(scene_, blocks_)), follower_(new PlayheadFollower(view_))
{
    auto* corner = new QWidget;
    corner->setFixedSize(ArrangerLayout::kHeaderWidth, ArrangerLayout::kCornerHeight);
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(corner, 0, 0);
    layout->addWidget(ruler_, 0, 1);
    layout->addWidget(header_, 1, 0);
    layout->addWidget(view_, 1, 1);

    new WheelForwarder(ruler_, view_->viewport());
    new WheelForwarder(header_, view_->viewport());
    setFocusPolicy(Qt::StrongFocus);
    view_->setFocusProxy(this);
    connectParts();
    nameParts();
}

void TrackArranger::connectParts()
{
    connect(view_->horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &TrackArranger::syncRuler);
    connect(view_->verticalScrollBar(), &QScrollBar::valueChanged, header_,
            &ArrangerHeaderColumn::setScroll);
    connect(ruler_, &TimelineRuler::seekRequested, this, &TrackArranger::seek);
    connect(ruler_, &TimelineRuler::placeRequested, this, &TrackArranger::placePlayhead);
    connect(blocks_, &BlockEditor::changed, this, &TrackArranger::rebuildScene);
    connect(blocks_, &BlockEditor::dragEnded, this, &TrackArranger::fitScene);
    connect(blocks_, &BlockEditor::edited, this, &TrackArranger::edited);
    connect(blocks_, &BlockEditor::tracksExhausted, this, &TrackArranger::tracksExhausted);
    connect(blocks_, &BlockEditor::alreadyThere, this, [this](const BlockRef& block) {
        emit alreadyThere(ArrangerAccessible::nameOf(*project_, library_, block));
    });
    connect(header_, &ArrangerHeaderColumn::lanePressed, this, &TrackArranger::pressLane);
    connect(header_, &ArrangerHeaderColumn::laneRequested, this, &TrackArranger::goToLane);
    connect(header_, &ArrangerHeaderColumn::foldRequested, this, &TrackArranger::toggleGroup);
    connect(header_, &ArrangerHeaderColumn::mutePressed, this, &TrackArranger::toggleLaneMute);
    connect(view_, &ArrangerGridView::lanePressed, this, &TrackArranger::pressLane);
    connect(view_, &ArrangerGridView::blockRequested, this, &TrackArranger::goToBlock);
    connect(view_, &ArrangerGridView::deletedByClick, this, &TrackArranger::deletedByClick);
    connect(view_, &ArrangerGridView::openMelodyBlock, this, &TrackArranger::openMelodyBlock);
    connect(view_, &ArrangerGridView::loopDropped, this, &TrackArranger::loopDropped);
    connect(view_, &ArrangerGridView::zoomRequested, this,
            [this](double factor) { zoomHorizontal(factor, Zoom::By::Wheel); });
    connect(view_, &ArrangerGridView::chordRequested, this,
            [this](double beat, const QPoint& place) { openHarmonyMenu(beat, place); });
}

TrackArranger::~TrackArranger()
{
    // A view that loses its scene scrolls, and the ruler follows: the view has to go first.
    delete view_;
    view_ = nullptr;
}

void TrackArranger::nameParts()
{
    ArrangerAccessible::install();
    setAccessibleName(tr("Arreglo"));
    view_->setAccessibleName(tr("Bloques"));
    header_->setAccessibleName(tr("Carriles"));
    ruler_->setAccessibleName(tr("Cabezal del arreglo"));
}

void TrackArranger::setContext(Project* project, PlaybackEngine* playback, LoopLibrary* library)
{
    if (project_)
        disconnect(project_, nullptr, this, nullptr);
    if (playback_ && playback_ != playback)
        disconnect(playback_, nullptr, this, nullptr);
    blocks_->setContext(project, library);
    scene_->forgetVoices();
    setKeyLane(LaneRef());
    project_ = project;
    playback_ = playback;
    library_ = library;
    scene_->setLibrary(library);
    view_->setLibrary(library);
    selectFirstTrack();
    ruler_->setProject(project);
    if (project_)
        connect(project_, &Project::changed, this, &TrackArranger::rebuildScene);
    if (playback_) {
        connect(playback_, &PlaybackEngine::playheadChanged, this, &TrackArranger::updatePlayhead,
                Qt::UniqueConnection);
        connect(playback_, &PlaybackEngine::playingChanged, this, &TrackArranger::tellPlayhead,
                Qt::UniqueConnection);
    }
    if (project_)
        rebuildScene();
    else
        showNothing();
    showStart();
    emit laneSelectionChanged();
}

void TrackArranger::showNothing()
{
    lanes_.clear();
    scene_->rebuild(Project(), lanes_);
    view_->setLanes(lanes_);
    header_->setLanes(nullptr, lanes_);
}

void TrackArranger::showStart()
{
    zoomX_ = 1.0;
    view_->setTransform(QTransform());
    follower_->showStart();
    view_->verticalScrollBar()->setValue(0);
    syncRuler();
}

void TrackArranger::selectFirstTrack()
{
    const bool any = project_ && !project_->tracks.isEmpty();
    selection_.activeTrack = any ? 0 : -1;
    selection_.tracks = any ? QList<int>{0} : QList<int>();
    selection_.audioTrack = -1;
    selection_.chords = false;
    header_->setSelection(selection_);
}

// ---- Lanes and scene -----------------------------------------------------------------------

void TrackArranger::rebuildLanes()
{
    lanes_ = project_ ? ArrangerLayout::lanes(*project_, library_) : QList<LaneInfo>();
}

void TrackArranger::rebuildScene()
{
    if (!project_)
        return;
    rebuildLanes();
    scene_->setClipFolder(playback_ ? playback_->projectDir : QString());
    scene_->rebuild(*project_, lanes_, view_->isDragging() ? SceneWidth::Keep : SceneWidth::Fit);
    view_->setLanes(lanes_);
    header_->setLanes(project_, lanes_);
    if (playback_)
        updatePlayhead(playback_->playheadBeat());
    syncRuler();
    AccessibleItems::tellChange(view_);
    AccessibleItems::tellChange(header_);
}

void TrackArranger::fitScene()
{
    if (project_)
        scene_->fit(*project_, lanes_);
}

void TrackArranger::endDrag()
{
    blocks_->endDrag();
    blocks_->endKeyRun();
}

const LaneInfo* TrackArranger::laneAtY(double y) const
{
    return ArrangerLayout::laneAtY(lanes_, y);
}

int TrackArranger::laneTopForNoteTrack(int index) const
{
    const LaneInfo* lane = ArrangerLayout::laneOfTrack(lanes_, LaneKind::NoteTrack, index);
    return lane ? lane->top : -1;
}

int TrackArranger::laneTopForAudioTrack(int index) const
{
    const LaneInfo* lane = ArrangerLayout::laneOfTrack(lanes_, LaneKind::AudioTrack, index);
    return lane ? lane->top : -1;
}

double TrackArranger::snapBeats() const
{
    return blocks_->snapBeats();
}

bool TrackArranger::isGroupCollapsed(const QString& key) const
{
    return project_ && project_->collapsedGroups.contains(key);
}

void TrackArranger::toggleGroup(const QString& key)
{
    if (!project_)
        return;
    if (isGroupCollapsed(key))
        project_->collapsedGroups.removeAll(key);
    else
        project_->collapsedGroups.append(key);
    rebuildScene();
    emit edited();
}

bool TrackArranger::isPitchedTrack(const Track& track) const
{
    return ArrangerLayout::isPitchedTrack(track, library_);
}

// ---- Scrolling, zoom and playhead ----------------------------------------------------------

void TrackArranger::zoomHorizontal(double factor, Zoom::By by)
{
    zoomX_ = Zoom::zoomed(zoomX_, factor);
    const double playhead = playback_ ? playback_->playheadBeat() : 0.0;
    Zoom::set(*view_, QTransform::fromScale(zoomX_, 1.0),
              Zoom::anchor(*view_, playhead * ArrangerLayout::kBeatPixels, by));
    syncRuler();
}

void TrackArranger::syncRuler()
{
    const double sceneX = view_->mapToScene(QPoint(0, 0)).x();
    ruler_->setViewport(zoomX_ * sceneX, zoomX_ * ArrangerLayout::kBeatPixels, 0);
}

void TrackArranger::updatePlayhead(double beat)
{
    scene_->setPlayheadBeat(beat);
    ruler_->setPlayheadBeat(beat);
    if (playback_ && playback_->isPlaying())
        follower_->follow(beat * ArrangerLayout::kBeatPixels);
}

void TrackArranger::placePlayhead(double beat)
{
    if (!playback_ || !project_)
        return;
    const double last = scene_->width() / ArrangerLayout::kBeatPixels;
    playback_->setPlayheadBeat(std::clamp(beat, 0.0, last));
    showBeat(playback_->playheadBeat());
    if (!blocks_->current())
        tellPlayhead();
}

void TrackArranger::tellPlayhead()
{
    // Not at every tick: who listens hears the song.
    if (hasFocus() && playback_ && !playback_->isPlaying())
        AccessibleRuler::tell(ruler_);
}

void TrackArranger::setRecording(bool recording)
{
    scene_->setRecording(recording);
    ruler_->setRecording(recording);
}

void TrackArranger::seek(double beat)
{
    if (playback_)
        playback_->seek(beat);
}

// ---- Selection -----------------------------------------------------------------------------

void TrackArranger::selectNoteTrack(int index, bool additive)
{
    const bool inRange = project_ && index >= 0 && index < project_->tracks.size();
    QList<int>& tracks = selection_.tracks;
    if (!additive || !inRange || project_->tracks.at(index).isAccompaniment)
        tracks = {index};
    else if (!tracks.contains(index))
        tracks.append(index);
    else if (tracks.size() > 1)
        tracks.removeAll(index);
    selection_.activeTrack = index;
    selection_.audioTrack = -1;
    selection_.chords = false;
    setKeyLane({LaneKind::NoteTrack, index});
    emit laneSelectionChanged();
}

void TrackArranger::selectAudioTrack(int index)
{
    selection_.tracks.clear();
    selection_.audioTrack = index;
    selection_.activeTrack = -1;
    selection_.chords = false;
    setKeyLane({LaneKind::AudioTrack, index});
    emit laneSelectionChanged();
}

void TrackArranger::selectChords()
{
    selection_.tracks.clear();
    selection_.audioTrack = -1;
    selection_.activeTrack = -1;
    selection_.chords = true;
    setKeyLane({});
    emit laneSelectionChanged();
}

void TrackArranger::pressLane(const LaneRef& lane, bool additive)
{
    if (lane.kind == LaneKind::NoteTrack)
        selectNoteTrack(lane.trackIndex, additive);
    else if (lane.kind == LaneKind::AudioTrack)
        selectAudioTrack(lane.trackIndex);
    else
        selectChords();
}

void TrackArranger::setKeyLane(const LaneRef& lane, bool shows)
{
    selection_.keyLane = lane;
    selection_.keyLaneShows = shows;
    header_->setSelection(selection_);
}

// ---- Edits ---------------------------------------------------------------------------------

void TrackArranger::toggleLaneMute(const LaneInfo& lane)
{
    if (!project_)
        return;
    const auto flip = [&](auto& tracks) {
        if (lane.trackIndex < 0 || lane.trackIndex >= tracks.size())
            return;
        tracks[lane.trackIndex].muted = !tracks.at(lane.trackIndex).muted;
        emit edited();
    };
    if (lane.kind == LaneKind::NoteTrack) {
        flip(project_->tracks);
    } else if (lane.kind == LaneKind::AudioTrack) {
        flip(project_->audioTracks);
    } else if (lane.kind == LaneKind::Harmony) {
        project_->harmonyTrack.muted = !project_->harmonyTrack.muted;
        emit edited();
    }
}

void TrackArranger::repaintHeader()
{
    header_->update();
}

void TrackArranger::deleteItem(QGraphicsItem* item)
{
    if (const auto* block = qgraphicsitem_cast<BlockItem*>(item))
        blocks_->remove(block->block());
}
