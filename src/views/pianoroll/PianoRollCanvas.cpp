#include "views/pianoroll/PianoRollCanvas.h"

#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "playback/PlaybackEngine.h"
#include "shell/controls/ElidedLabel.h"
#include "views/AccessibleItems.h"
#include "views/AccessibleRuler.h"
#include "views/PlayheadFollower.h"
#include "views/ScrollIntoView.h"
#include "views/TimelineRuler.h"
#include "views/WheelForwarder.h"
#include "views/pianoroll/PianoKeyboardWidget.h"
#include "views/pianoroll/PianoRollAccessible.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QToolButton>

#include <algorithm>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kCornerHeight = 34;
constexpr int kScrollMs = 140;
constexpr double kSnapWithoutProject = 0.5;

QString modeName(KeyMode mode)
{
    switch (mode) {
    case KeyMode::Major:
        break;
    case KeyMode::Minor:
        return PianoRollCanvas::tr("menor");
    case KeyMode::Dorian:
        return PianoRollCanvas::tr("dórico");
    case KeyMode::Lydian:
        return PianoRollCanvas::tr("lidio");
    }
    return PianoRollCanvas::tr("mayor");
}

QToolButton* arrowButton(const QString& face, const QString& toolTip)
{
    auto* button = new QToolButton;
    button->setObjectName(u"btn_toolbar"_s);
    button->setText(face);
    button->setToolTip(toolTip);
    button->setAutoRepeat(true);
    button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    return button;
}

} // namespace

PianoRollCanvas::PianoRollCanvas(QWidget* parent)
    : QWidget(parent), scene_(new PianoRollScene(this)), caption_(new ElidedLabel),
      ruler_(new TimelineRuler), view_(new PianoRollGridView(scene_, this)),
      follower_(new PlayheadFollower(view_)), keyboard_(new PianoKeyboardWidget(view_))
{
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeBar(), 0, 0, 1, 2);
    layout->addWidget(makeCorner(), 1, 0);
    layout->addWidget(ruler_, 1, 1);
    layout->addWidget(keyboard_, 2, 0);
    layout->addWidget(view_, 2, 1);

    new WheelForwarder(ruler_, view_->viewport());
    setFocusPolicy(Qt::StrongFocus);
    view_->setFocusProxy(this);
    connectParts();
    nameParts();
}

void PianoRollCanvas::connectParts()
{
    scrollAnimation_.setDuration(kScrollMs);
    scrollAnimation_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&scrollAnimation_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& y) { view_->verticalScrollBar()->setValue(y.toInt()); });
    connect(view_->horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &PianoRollCanvas::syncRulerAndKeyboard);
    connect(view_->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &PianoRollCanvas::syncRulerAndKeyboard);
    connect(keyboard_, &PianoKeyboardWidget::keyPressed, this, &PianoRollCanvas::liveNoteOn);
    connect(keyboard_, &PianoKeyboardWidget::keyReleased, this, &PianoRollCanvas::liveNoteOff);
    connect(ruler_, &TimelineRuler::seekRequested, this, &PianoRollCanvas::seek);
    connect(ruler_, &TimelineRuler::placeRequested, this, &PianoRollCanvas::placePlayhead);
    connect(keyboard_, &PianoKeyboardWidget::wheelTurned, this, &PianoRollCanvas::wheelNotes);
    connect(view_, &PianoRollGridView::rowsTurned, this, &PianoRollCanvas::wheelNotes);
    connect(view_, &PianoRollGridView::heightChanged, this, &PianoRollCanvas::applyVerticalFit);
    connect(view_, &PianoRollGridView::rowZoomRequested, this, &PianoRollCanvas::zoomVertical);
    connect(view_, &PianoRollGridView::zoomRequested, this,
            [this](double factor) { zoomHorizontal(factor, Zoom::By::Wheel); });
    // Letters may come by way of the buttons, which have a focus of their own.
    connect(qApp, &QApplication::focusChanged, this, &PianoRollCanvas::endHeldKeys);
}

PianoRollCanvas::~PianoRollCanvas()
{
    // What has the focus loses it on the way, and nothing is held by then.
    disconnect(qApp, nullptr, this, nullptr);
    // A view that loses its scene scrolls, and the ruler follows: the view has to go first.
    delete view_;
    view_ = nullptr;
}

void PianoRollCanvas::nameParts()
{
    PianoRollAccessible::install();
    setAccessibleName(tr("Piano roll"));
    view_->setAccessibleName(tr("Notas"));
    keyboard_->setAccessibleName(tr("Teclas del piano"));
    ruler_->setAccessibleName(tr("Cabezal del piano roll"));
}

QWidget* PianoRollCanvas::makeBar()
{
    QFont bold = caption_->font();
    bold.setWeight(QFont::Bold);
    caption_->setFont(bold);
    auto* whole = new QPushButton(tr("Ver toda la melodía"));
    whole->setToolTip(tr("Muestra desde la nota más grave hasta la más aguda"));
    // The letters go on playing after a click.
    whole->setFocusPolicy(Qt::TabFocus);
    connect(whole, &QPushButton::clicked, this, &PianoRollCanvas::showWholeMelody);

    auto* bar = new QWidget;
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(8, 2, 4, 2);
    layout->addWidget(caption_, 1);
    layout->addWidget(whole);
    return bar;
}

QWidget* PianoRollCanvas::makeCorner()
{
    auto* up = arrowButton(u"▲"_s, tr("Subir una nota (flecha arriba)"));
    auto* down = arrowButton(u"▼"_s, tr("Bajar una nota (flecha abajo)"));
    up->setAccessibleName(tr("Subir una nota"));
    down->setAccessibleName(tr("Bajar una nota"));
    connect(up, &QToolButton::clicked, this, [this] { scrollNotes(1); });
    connect(down, &QToolButton::clicked, this, [this] { scrollNotes(-1); });

    auto* corner = new QWidget;
    corner->setFixedSize(keyboard_->width(), kCornerHeight);
    auto* layout = new QHBoxLayout(corner);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    layout->addWidget(up);
    layout->addWidget(down);
    return corner;
}

// ---- What is shown -------------------------------------------------------------------------

void PianoRollCanvas::setContext(Project* project, PlaybackEngine* playback)
{
    forgetGestures();
    if (project_)
        disconnect(project_, nullptr, this, nullptr);
    if (playback_ && playback_ != playback)
        disconnect(playback_, nullptr, this, nullptr);
    project_ = project;
    playback_ = playback;
    const bool any = project_ && !project_->tracks.isEmpty();
    activeTrack_ = any ? 0 : -1;
    visibleTracks_ = any ? QList<int>{0} : QList<int>();
    activeBlockIndex_ = 0;
    ruler_->setProject(project);
    if (project_)
        connect(project_, &Project::changed, this, &PianoRollCanvas::rebuildScene);
    if (playback_) {
        connect(playback_, &PlaybackEngine::playheadChanged, this, &PianoRollCanvas::updatePlayhead,
                Qt::UniqueConnection);
        connect(playback_, &PlaybackEngine::playingChanged, this, &PianoRollCanvas::tellPlayhead,
                Qt::UniqueConnection);
    }
    rebuildScene();
    rows_ = PitchRows();
    zoomX_ = 1.0;
    applyVerticalFit();
    follower_->showStart();
    syncRulerAndKeyboard();
    if (!melodyVisible())
        showWholeMelody();
}

void PianoRollCanvas::setVisibleTracks(const QList<int>& tracks, int active)
{
    visibleTracks_ = tracks;
    showTrack(active, 0);
}

void PianoRollCanvas::setActiveTrack(int track)
{
    showTrack(track, 0);
}

void PianoRollCanvas::setActiveBlock(int track, int block)
{
    showTrack(track, block);
}

void PianoRollCanvas::showTrack(int track, int block)
{
    endDrag();
    activeTrack_ = track;
    activeBlockIndex_ = block;
    rebuildScene();
    if (!melodyVisible())
        showWholeMelody();
}

void PianoRollCanvas::setSubdivisionLevel(GridSubdivisionLevel level)
{
    subdivisionLevel_ = level;
    view_->viewport()->update();
}

double PianoRollCanvas::snapBeats() const
{
    return project_ ? PianoRollLayout::snapBeats(project_->timeSignature, subdivisionLevel_)
                    : kSnapWithoutProject;
}

const Track* PianoRollCanvas::track() const
{
    if (!project_ || activeTrack_ < 0 || activeTrack_ >= project_->tracks.size())
        return nullptr;
    return &project_->tracks.at(activeTrack_);
}

MelodyBlock* PianoRollCanvas::activeBlock()
{
    if (!track() || track()->isAccompaniment)
        return nullptr;
    QList<MelodyBlock>& blocks = project_->tracks[activeTrack_].melodyBlocks;
    if (blocks.isEmpty())
        blocks.append(ProjectEdits::blankMelody(*project_));
    return &blocks[std::clamp<qsizetype>(activeBlockIndex_, 0, blocks.size() - 1)];
}

const MelodyBlock* PianoRollCanvas::shownBlock() const
{
    if (!track() || track()->isAccompaniment || track()->melodyBlocks.isEmpty())
        return nullptr;
    const QList<MelodyBlock>& blocks = track()->melodyBlocks;
    return &blocks.at(std::clamp<qsizetype>(activeBlockIndex_, 0, blocks.size() - 1));
}

int PianoRollCanvas::currentNote() const
{
    const QList<int> selected = scene_->selectedNotes();
    return selected.contains(currentNote_) ? currentNote_ : selected.value(0, -1);
}

bool PianoRollCanvas::hasEditableBlock()
{
    return activeBlock() != nullptr;
}

QList<int> PianoRollCanvas::ghostTracks() const
{
    QList<int> tracks = visibleTracks_;
    tracks.removeAll(activeTrack_);
    return tracks;
}

void PianoRollCanvas::rebuildScene()
{
    if (!project_) {
        scene_->empty();
        updateCaption();
        return;
    }
    const MelodyBlock* block = activeBlock();
    scene_->rebuild(*project_, block, ghostTracks(),
                    view_->isDragging() ? SceneWidth::Keep : SceneWidth::Fit);
    if (!block && (activeTrack_ >= 0 || visibleTracks_.isEmpty()))
        scene_->showMessage(
            tr("Elegí una velta de melodía en la línea de tiempo para editarla acá."));
    if (playback_)
        updatePlayhead(playback_->playheadBeat());
    updateCaption();
    syncRulerAndKeyboard();
    AccessibleItems::tellChange(view_);
}

void PianoRollCanvas::fitScene()
{
    if (project_)
        scene_->fit(*project_);
}

void PianoRollCanvas::endDrag()
{
    view_->endDrag();
    endKeyRun();
}

// ---- Caption -------------------------------------------------------------------------------

QString PianoRollCanvas::caption() const
{
    return caption_->text();
}

void PianoRollCanvas::updateCaption()
{
    const MelodyBlock* block = activeBlock();
    caption_->setText(block ? captionOf(*block) : QString());
}

QString PianoRollCanvas::captionOf(const MelodyBlock& block) const
{
    const QString name = track()->name.trimmed();
    const KeySignature& key = project_->keySignature;
    const int bars = PianoRollLayout::barsOf(block, project_->beatsPerBar());
    const QString length = bars == 1 ? tr("1 compás") : tr("%1 compases").arg(bars);
    return tr("%1 · %2 · %3")
        .arg(name.isEmpty() ? tr("Melodía") : name,
             KeySignature::solfegeName(key.rootPitchClass) + u' ' + modeName(key.mode),
             block.notes.isEmpty() ? tr("sin notas todavía") : length);
}

// ---- Playhead ------------------------------------------------------------------------------

void PianoRollCanvas::syncRulerAndKeyboard()
{
    const double sceneX = view_->mapToScene(QPoint(0, 0)).x();
    ruler_->setViewport(sceneX * zoomX_, PianoRollLayout::kBeatPixels * zoomX_, 0);
    keyboard_->update();
    scene_->placeMessage(*view_);
}

void PianoRollCanvas::updatePlayhead(double beat)
{
    scene_->setPlayheadBeat(beat);
    ruler_->setPlayheadBeat(beat);
    if (playback_ && playback_->isPlaying())
        follower_->follow(beat * PianoRollLayout::kBeatPixels);
}

void PianoRollCanvas::placePlayhead(double beat)
{
    if (!playback_ || !project_)
        return;
    const double last = scene_->width() / PianoRollLayout::kBeatPixels;
    playback_->setPlayheadBeat(std::clamp(beat, 0.0, last));
    const double x = playback_->playheadBeat() * PianoRollLayout::kBeatPixels;
    ScrollIntoView::horizontally(*view_, x, x);
    if (scene_->selectedItems().isEmpty())
        tellPlayhead();
}

void PianoRollCanvas::tellPlayhead()
{
    // Not at every tick: who listens hears the song.
    if (hasFocus() && playback_ && !playback_->isPlaying())
        AccessibleRuler::tell(ruler_);
}

void PianoRollCanvas::setRecording(bool recording)
{
    scene_->setRecording(recording);
    ruler_->setRecording(recording);
}

void PianoRollCanvas::seek(double beat)
{
    if (!playback_)
        return;
    playback_->setPlayheadBeat(beat);
    if (!playback_->isPlaying())
        playback_->play(beat);
}
