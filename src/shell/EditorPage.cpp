#include "shell/EditorPage.h"

#include "playback/PlaybackEngine.h"
#include "shell/EditorFocus.h"
#include "shell/FirstSteps.h"
#include "shell/FittingArea.h"
#include "shell/FocusAreas.h"
#include "shell/FocusRing.h"
#include "shell/LoopBrowser.h"
#include "shell/RecoveryBar.h"
#include "shell/Services.h"
#include "shell/TransportControls.h"
#include "shell/theme/UserSettings.h"
#include "views/PlayheadFollower.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoRollCanvas.h"

#include <QGraphicsView>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSplitter>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto kFollowKey = "seguirCabezal"_L1;

/// So much of the panel of the track is seen always: its name, its instrument and its volume.
constexpr int kHeaderPercentInSight = 45;

} // namespace

// Every part is made within the next larger one: a widget that changes its parent is styled anew,
// with all that stands in it.
EditorPage::EditorPage(const Services& services, QWidget* parent)
    : QWidget(parent), services_(services), ribbon_(new TransportControls(services.engine(), this))
{
    auto* columns = new QSplitter(Qt::Horizontal, this);
    columns->setObjectName(u"columnas"_s);
    columns->addWidget(buildEditors(columns));
    columns->addWidget(buildSidePanel(columns));
    editorFocus_->returnFrom(ribbon_);
    editorFocus_->returnFrom(browser_);
    columns->setStretchFactor(0, 1);
    columns->setStretchFactor(1, 0);
    columns->setCollapsible(1, true);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    recoveryBar_ = new RecoveryBar(this);
    layout->addWidget(recoveryBar_, 0);
    layout->addWidget(ribbon_, 0);
    layout->addWidget(columns, 1);
    connectParts();
}

QWidget* EditorPage::buildEditors(QWidget* parent)
{
    auto* editors = new QSplitter(Qt::Vertical, parent);
    editors->setObjectName(u"editores"_s);
    roll_ = new PianoRollCanvas(editors);
    arranger_ = new TrackArranger(editors);
    editors->addWidget(roll_);
    editors->addWidget(arranger_);
    editors->setStretchFactor(0, 3);
    editors->setStretchFactor(1, 2);
    editors->setSizes({3000, 2000});

    // The same letters are notes in the one and chords in the other.
    new FocusRing(roll_);
    new FocusRing(arranger_);
    editorFocus_ = new EditorFocus({roll_, arranger_}, this);
    buildFirstSteps();
    return editors;
}

void EditorPage::buildFirstSteps()
{
    firstSteps_ = {new FirstSteps({tr("Click en la grilla: una nota."),
                                   tr("Más arriba es más agudo; más a la derecha, más tarde."),
                                   tr("Click derecho la borra.")},
                                  roll_->findChild<QGraphicsView*>()),
                   new FirstSteps({tr("Click en la fila «Acordes»: un acorde."),
                                   tr("Arrastrá un número del acompañamiento hasta acá: un ritmo."),
                                   tr("Espacio: escuchar la canción.")},
                                  arranger_->findChild<QGraphicsView*>())};
}

QWidget* EditorPage::buildSidePanel(QWidget* parent)
{
    auto* panel = new QScrollArea(parent);
    auto* content = new QWidget(panel);
    browser_ =
        new LoopBrowser(services_.loops(), services_.instruments(), services_.catalog(),
                        services_.downloads(), services_.registry(), services_.engine(), content);
    trackPanel_ = new TrackHeaderPanel(services_.instruments(), content);
    // On a low screen it scrolls, so that the loops that are used most stay in sight.
    auto* trackArea = new FittingArea(
        trackPanel_, FittingArea::Wish::All,
        [this] { return trackPanel_->sizeHint().height() * kHeaderPercentInSight / 100; }, content);
    // Height that its rows do not need is better spent on loops.
    trackArea->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);

    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(browser_, 3);
    layout->addWidget(trackArea, 2);

    panel->setWidgetResizable(true);
    panel->setFrameShape(QFrame::NoFrame);
    panel->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    panel->setMinimumWidth(252);
    panel->setMaximumWidth(352);
    panel->setFocusPolicy(Qt::NoFocus);
    panel->setWidget(content);
    return panel;
}

void EditorPage::connectParts()
{
    using Ribbon = TransportControls;
    connect(ribbon_, &Ribbon::zoomInRequested, this, &EditorPage::zoomIn);
    connect(ribbon_, &Ribbon::zoomOutRequested, this, &EditorPage::zoomOut);
    connect(ribbon_, &Ribbon::subdivisionChanged, roll_, &PianoRollCanvas::setSubdivisionLevel);
    connect(ribbon_, &Ribbon::followToggled, this, &EditorPage::setFollowing);
    connect(arranger_, &TrackArranger::laneSelectionChanged, this,
            &EditorPage::syncSelectionToViews);
    connect(arranger_, &TrackArranger::openMelodyBlock, this, &EditorPage::openMelodyBlock);
    connect(trackPanel_, &TrackHeaderPanel::audibilityChanged, this, [this] {
        arranger_->repaintHeader();
        ribbon_->updateFromProject();
    });
    ribbon_->setFollowing(userSettings().value(kFollowKey, true).toBool());
}

CommandedEditor& EditorPage::keyEditor() const
{
    if (editorFocus_->last() == arranger_)
        return *arranger_;
    return *roll_->notes();
}

void EditorPage::setProject(Project* project)
{
    ribbon_->setProject(project);
    browser_->setProject(project);
    // The roll begins with the track that the arranger selects, and need not be told.
    const QSignalBlocker quiet(arranger_);
    roll_->setContext(project, services_.engine());
    arranger_->setContext(project, services_.engine(), services_.loops());
    trackPanel_->setProject(project);
    showSelectedTrack();
}

void EditorPage::setEmpty(bool empty)
{
    for (FirstSteps* steps : firstSteps_)
        steps->setTold(empty);
}

void EditorPage::syncSelectionToViews()
{
    showSelectedTrack();
    // Who lays chords goes on with the notes that are shown.
    if (arranger_->areChordsSelected())
        return;
    if (arranger_->selectedAudioTrack() >= 0)
        roll_->setVisibleTracks({}, -1);
    else
        roll_->setVisibleTracks(arranger_->selectedTracks(), arranger_->activeTrack());
}

void EditorPage::showSelectedTrack()
{
    const int voice = arranger_->selectedAudioTrack();
    if (arranger_->areChordsSelected())
        trackPanel_->showChords();
    else if (voice >= 0)
        trackPanel_->showAudioTrack(voice);
    else
        trackPanel_->showTrack(arranger_->activeTrack());
}

void EditorPage::openMelodyBlock(int track, int block)
{
    arranger_->selectNoteTrack(track, false);
    roll_->setActiveBlock(track, block);
    // Who opens notes goes on with them.
    roll_->setFocus(Qt::OtherFocusReason);
}

void EditorPage::finishGestures()
{
    trackPanel_->takeTypedName();
    roll_->endDrag();
    arranger_->endDrag();
}

void EditorPage::showRecording(bool recording)
{
    ribbon_->showRecording(recording);
    roll_->setRecording(recording);
    arranger_->setRecording(recording);
}

void EditorPage::zoomIn()
{
    roll_->zoomHorizontal(Zoom::kCommandStep);
    arranger_->zoomHorizontal(Zoom::kCommandStep);
}

void EditorPage::zoomOut()
{
    roll_->zoomHorizontal(1.0 / Zoom::kCommandStep);
    arranger_->zoomHorizontal(1.0 / Zoom::kCommandStep);
}

void EditorPage::changeArea(int step)
{
    FocusAreas::go({ribbon_, roll_, arranger_, browser_, trackPanel_}, step);
}

void EditorPage::setFollowing(bool on)
{
    roll_->follower()->setOn(on);
    arranger_->follower()->setOn(on);
    userSettings().setValue(kFollowKey, on);
}
