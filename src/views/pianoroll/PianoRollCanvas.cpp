#include "views/pianoroll/PianoRollCanvas.h"

#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "shell/controls/ElidedLabel.h"
#include "views/AccessibleItems.h"
#include "views/AccessibleRuler.h"
#include "views/PlayheadFollower.h"
#include "views/ScrollIntoView.h"
#include "views/TimelineRuler.h"
#include "views/WheelForwarder.h"
#include "views/pianoroll/LiveNotes.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoKeyboardWidget.h"
#include "views/pianoroll/PianoRollAccessible.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollScene.h"
#include "views/pianoroll/PianoRollViewport.h"

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QScrollBar>
#include <QToolButton>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kCornerHeight = 34;

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
    : QWidget(parent), scene_(new PianoRollScene(this)), notes_(new NoteEditor(scene_, this)),
      live_(new LiveNotes(notes_, this)), caption_(new ElidedLabel), ruler_(new TimelineRuler),
      view_(new PianoRollGridView(scene_, notes_)), rows_(new PianoRollViewport(view_)),
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
    connectNotes();
    connect(view_->horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &PianoRollCanvas::syncRulerAndKeyboard);
    connect(view_->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &PianoRollCanvas::syncRulerAndKeyboard);
    connect(rows_, &PianoRollViewport::scaled, this, &PianoRollCanvas::syncRulerAndKeyboard);
    connect(keyboard_, &PianoKeyboardWidget::keyPressed, live_, &LiveNotes::noteOn);
    connect(keyboard_, &PianoKeyboardWidget::keyReleased, live_, &LiveNotes::noteOff);
    connect(keyboard_, &PianoKeyboardWidget::wheelTurned, rows_, &PianoRollViewport::wheelNotes);
    connect(ruler_, &TimelineRuler::seekRequested, this, &PianoRollCanvas::seek);
    connect(ruler_, &TimelineRuler::placeRequested, this, &PianoRollCanvas::placePlayhead);
    connect(view_, &PianoRollGridView::rowsTurned, rows_, &PianoRollViewport::wheelNotes);
    connect(view_, &PianoRollGridView::heightChanged, rows_, &PianoRollViewport::applyVerticalFit);
    connect(view_, &PianoRollGridView::rowZoomRequested, rows_, &PianoRollViewport::zoomVertical);
    connect(view_, &PianoRollGridView::zoomRequested, this,
            [this](double factor) { zoomHorizontal(factor, Zoom::By::Wheel); });
    // Letters may come by way of the buttons, which have a focus of their own.
    connect(qApp, &QApplication::focusChanged, live_, &LiveNotes::releaseAll);
}

void PianoRollCanvas::connectNotes()
{
    connect(notes_, &NoteEditor::changed, this, &PianoRollCanvas::rebuildScene);
    connect(notes_, &NoteEditor::dragEnded, this, &PianoRollCanvas::fitScene);
    connect(notes_, &NoteEditor::edited, this, &PianoRollCanvas::showEdit);
    connect(notes_, &NoteEditor::reached, this, &PianoRollCanvas::showNotes);
    connect(notes_, &NoteEditor::allSelected, view_,
            [this] { AccessibleItems::tellCurrent(view_); });
    connect(notes_, &NoteEditor::playheadRequested, this, &PianoRollCanvas::placePlayhead);
}

PianoRollCanvas::~PianoRollCanvas()
{
    // What has the focus loses it on the way, and nothing is held by then.
    disconnect(qApp, nullptr, live_, nullptr);
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
    connect(up, &QToolButton::clicked, this, [this] { rows_->scrollNotes(1); });
    connect(down, &QToolButton::clicked, this, [this] { rows_->scrollNotes(-1); });

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
    if (notes_->project())
        disconnect(notes_->project(), nullptr, this, nullptr);
    if (notes_->playback() && notes_->playback() != playback)
        disconnect(notes_->playback(), nullptr, this, nullptr);
    live_->forget();
    keyboard_->release();
    notes_->setContext(project, playback);
    visibleTracks_ = notes_->track() ? QList<int>{0} : QList<int>();
    ruler_->setProject(project);
    if (project)
        connect(project, &Project::changed, this, &PianoRollCanvas::rebuildScene);
    if (playback) {
        connect(playback, &PlaybackEngine::playheadChanged, this, &PianoRollCanvas::updatePlayhead,
                Qt::UniqueConnection);
        connect(playback, &PlaybackEngine::playingChanged, this, &PianoRollCanvas::tellPlayhead,
                Qt::UniqueConnection);
    }
    rebuildScene();
    rows_->reset();
    follower_->showStart();
    syncRulerAndKeyboard();
    showMelody();
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
    notes_->setBlock(track, block);
    rebuildScene();
    showMelody();
}

void PianoRollCanvas::showMelody()
{
    if (!melodyVisible())
        showWholeMelody();
}

bool PianoRollCanvas::melodyVisible() const
{
    const MelodyBlock* block = notes_->activeBlock();
    return !block || rows_->containsAnyOf(block->notes);
}

void PianoRollCanvas::showWholeMelody()
{
    const MelodyBlock* block = notes_->activeBlock();
    rows_->showAll(block ? block->notes : QList<NoteEvent>());
}

void PianoRollCanvas::setSubdivisionLevel(GridSubdivisionLevel level)
{
    notes_->setSubdivisionLevel(level);
    view_->viewport()->update();
}

QList<int> PianoRollCanvas::ghostTracks() const
{
    QList<int> tracks = visibleTracks_;
    tracks.removeAll(notes_->activeTrack());
    return tracks;
}

void PianoRollCanvas::rebuildScene()
{
    const Project* project = notes_->project();
    if (!project) {
        scene_->empty();
        updateCaption();
        return;
    }
    const MelodyBlock* block = notes_->activeBlock();
    scene_->rebuild(*project, block, ghostTracks(),
                    notes_->isDragging() ? SceneWidth::Keep : SceneWidth::Fit);
    if (!block && (notes_->activeTrack() >= 0 || visibleTracks_.isEmpty()))
        scene_->showMessage(
            tr("Elegí una velta de melodía en la línea de tiempo para editarla acá."));
    if (notes_->playback())
        updatePlayhead(notes_->playback()->playheadBeat());
    updateCaption();
    syncRulerAndKeyboard();
    AccessibleItems::tellChange(view_);
}

void PianoRollCanvas::fitScene()
{
    if (notes_->project())
        scene_->fit(*notes_->project());
}

void PianoRollCanvas::endDrag()
{
    notes_->endGestures();
}

void PianoRollCanvas::showEdit()
{
    // Who listens announces the change, and the scene is made anew; without anybody the items would
    // stand for other notes.
    if (isSignalConnected(QMetaMethod::fromSignal(&PianoRollCanvas::edited)))
        emit edited();
    else
        rebuildScene();
}

/// The rows by no more than it takes to show the first of them.
void PianoRollCanvas::showNotes(const QList<int>& indices)
{
    const MelodyBlock* block = notes_->activeBlock();
    if (!block || indices.isEmpty())
        return;
    const NoteEvent& note = block->notes.at(indices.first());
    if (const auto rect = PianoRollLayout::noteRect(*block, note))
        ScrollIntoView::horizontally(*view_, rect->left(), rect->right());
    rows_->scrollTo(note.pitch);
    AccessibleItems::tellCurrent(view_);
}

// ---- Caption -------------------------------------------------------------------------------

void PianoRollCanvas::updateCaption()
{
    const MelodyBlock* block = notes_->activeBlock();
    caption_->setText(block ? captionOf(*block) : QString());
}

QString PianoRollCanvas::captionOf(const MelodyBlock& block) const
{
    const Project& project = *notes_->project();
    const QString name = notes_->track()->name.trimmed();
    const KeySignature& key = project.keySignature;
    const int bars = PianoRollLayout::barsOf(block, project.beatsPerBar());
    const QString length = bars == 1 ? tr("1 compás") : tr("%1 compases").arg(bars);
    return tr("%1 · %2 · %3")
        .arg(name.isEmpty() ? tr("Melodía") : name,
             KeySignature::solfegeName(key.rootPitchClass) + u' ' + modeName(key.mode),
             block.notes.isEmpty() ? tr("sin notas todavía") : length);
}

// ---- Scale and playhead --------------------------------------------------------------------

void PianoRollCanvas::zoomHorizontal(double factor, Zoom::By by)
{
    const PlaybackEngine* playback = notes_->playback();
    const double playhead = playback ? playback->playheadBeat() : 0.0;
    rows_->zoomHorizontal(factor, playhead * PianoRollLayout::kBeatPixels, by);
}

/// Puts the ruler and the keys where the view stands.
void PianoRollCanvas::syncRulerAndKeyboard()
{
    const double sceneX = view_->mapToScene(QPoint(0, 0)).x();
    const double zoom = rows_->zoomX();
    ruler_->setViewport(sceneX * zoom, PianoRollLayout::kBeatPixels * zoom, 0);
    keyboard_->update();
    scene_->placeMessage(*view_);
}

void PianoRollCanvas::updatePlayhead(double beat)
{
    scene_->setPlayheadBeat(beat);
    ruler_->setPlayheadBeat(beat);
    if (notes_->playback() && notes_->playback()->isPlaying())
        follower_->follow(beat * PianoRollLayout::kBeatPixels);
}

void PianoRollCanvas::placePlayhead(double beat)
{
    PlaybackEngine* playback = notes_->playback();
    if (!playback || !notes_->project())
        return;
    const double last = scene_->width() / PianoRollLayout::kBeatPixels;
    playback->setPlayheadBeat(std::clamp(beat, 0.0, last));
    const double x = playback->playheadBeat() * PianoRollLayout::kBeatPixels;
    ScrollIntoView::horizontally(*view_, x, x);
    if (scene_->selectedItems().isEmpty())
        tellPlayhead();
}

void PianoRollCanvas::tellPlayhead()
{
    // Not at every tick: who listens hears the song.
    if (hasFocus() && notes_->playback() && !notes_->playback()->isPlaying())
        AccessibleRuler::tell(ruler_);
}

void PianoRollCanvas::setRecording(bool recording)
{
    scene_->setRecording(recording);
    ruler_->setRecording(recording);
}

void PianoRollCanvas::seek(double beat)
{
    if (PlaybackEngine* playback = notes_->playback())
        playback->seek(beat);
}
