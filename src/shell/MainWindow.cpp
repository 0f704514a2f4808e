#include "shell/MainWindow.h"

#include "content/ContentCatalog.h"
#include "content/ContentDownloadManager.h"
#include "content/ContentRoots.h"
#include "content/InstalledContentRegistry.h"
#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "model/UndoStack.h"
#include "playback/CountIn.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "shell/AccessibleControls.h"
#include "shell/EditorFocus.h"
#include "shell/FirstSteps.h"
#include "shell/FittingArea.h"
#include "shell/FocusRing.h"
#include "shell/FocusedControl.h"
#include "shell/LoopBrowser.h"
#include "shell/RecoveryBar.h"
#include "shell/StaleHover.h"
#include "shell/TransportControls.h"
#include "shell/VoiceTake.h"
#include "shell/controls/PlainText.h"
#include "shell/theme/ThemeManager.h"
#include "storage/LocalStorageProvider.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "voice/AudioRecorder.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QGraphicsView>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScrollArea>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kDeletedMs = 5000;

/// So much of the panel of the track is seen always: its name, its instrument and its volume.
constexpr int kHeaderPercentInSight = 45;

} // namespace

MainWindow::MainWindow(QWidget* parent, Prompts& prompts) : QMainWindow(parent), prompts_(prompts)
{
    AccessibleControls::install();
    setWindowTitle(u"Velta"_s);
    resize(1360, 860);
    setAcceptDrops(true);
    createServices();

    stackedWidget_ = new QStackedWidget;
    setCentralWidget(stackedWidget_);
    stackedWidget_->addWidget(buildEditorView(stackedWidget_));
    stackedWidget_->setCurrentIndex(0);

    connect(undoStack_, &UndoStack::availabilityChanged, this, [this](bool canUndo, bool canRedo) {
        undoAction_->setEnabled(canUndo);
        redoAction_->setEnabled(canRedo);
    });
    buildMenus();
    buildStatusBar();
    updateTitleBar(ThemeManager::instance()->isDark());
    restoreFollowing();
    startBlankProject();
    // A message makes room for itself only among what is seen already.
    QTimer::singleShot(0, this, &MainWindow::nameRefusedContent);
    findAbandoned();
    new StaleHover(this);
}

MainWindow::~MainWindow()
{
    // A field that loses the focus as it goes has nobody left to tell.
    disconnect(headerPanel_, nullptr, this, nullptr);
    // An install ends while there still is all that it installs into.
    delete downloads_;
    // Sound devices run the event loop as they go, while there still is a window for its events.
    // Playback ends before anything that it plays with.
    delete recorder_;
    delete engine_;
}

QString MainWindow::resourcesDir()
{
    const QString besideExecutable = QCoreApplication::applicationDirPath() + "/resources"_L1;
    if (QDir(besideExecutable).exists())
        return besideExecutable;
    return QDir::currentPath() + "/resources"_L1;
}

QString MainWindow::bankPath()
{
    return ContentRoots::of(resourcesDir()).gmBank();
}

void MainWindow::createServices()
{
    const ContentRoots roots = ContentRoots::of(resourcesDir());
    storage_ = std::make_unique<LocalStorageProvider>(QString());
    instruments_ = new InstrumentLibrary(roots.soundfonts(), this);
    instruments_->loadBuiltinGmInstruments();
    loopLibrary_ = new LoopLibrary(roots.loops(), instruments_, this);
    loopLibrary_->readAhead();
    registry_ = new InstalledContentRegistry(roots, this);
    registry_->load();
    catalog_ = new ContentCatalog(ContentCatalog::urlFromEnvironment(), this);
    downloads_ = new ContentDownloadManager(catalog_, registry_, loopLibrary_, instruments_, this);

    player_ = new SoundfontPlayer(SoundfontPlayer::Mode::Realtime, this);
    hasBank_ = player_->loadGmBank(bankPath());
    loopLibrary_->reload();
    engine_ = new PlaybackEngine(player_, loopLibrary_, instruments_, this);
    recorder_ = new AudioRecorder(this);
    connect(recorder_, &AudioRecorder::recordingFailed, this, &MainWindow::onRecordingFailed);
    countIn_ = new CountIn(player_, this);
    connect(countIn_, &CountIn::ended, this, &MainWindow::beginTake);
    // Who plays the song meanwhile does not want to wait for it.
    connect(engine_, &PlaybackEngine::playingChanged, this, &MainWindow::cancelCountIn);
    undoStack_ = new UndoStack(this);
    createRecovery();
    connect(loopLibrary_, &LoopLibrary::libraryChanged, this, &MainWindow::onLibraryChanged);
}

// Every part is made within the next larger one: a widget that changes its parent is styled anew,
// with all that stands in it.
QWidget* MainWindow::buildEditorView(QWidget* parent)
{
    auto* page = new QWidget(parent);
    transport_ = new TransportControls(engine_, page);
    connectTransport();

    auto* columns = new QSplitter(Qt::Horizontal, page);
    columns->setObjectName(u"columnas"_s);
    columns->addWidget(buildEditors(columns));
    columns->addWidget(buildSidePanel(columns));
    editorFocus_->returnFrom(transport_);
    editorFocus_->returnFrom(loopBrowser_);
    columns->setStretchFactor(0, 1);
    columns->setStretchFactor(1, 0);
    columns->setCollapsible(1, true);

    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    recoveryBar_ = new RecoveryBar(page);
    connect(recoveryBar_, &RecoveryBar::recoverRequested, this, &MainWindow::recover);
    layout->addWidget(recoveryBar_, 0);
    layout->addWidget(transport_, 0);
    layout->addWidget(columns, 1);
    return page;
}

QWidget* MainWindow::buildEditors(QWidget* parent)
{
    auto* editors = new QSplitter(Qt::Vertical, parent);
    editors->setObjectName(u"editores"_s);
    pianoRoll_ = new PianoRollCanvas(editors);
    connectPianoRoll();
    arranger_ = new TrackArranger(editors);
    connectArranger();
    editors->addWidget(pianoRoll_);
    editors->addWidget(arranger_);
    editors->setStretchFactor(0, 3);
    editors->setStretchFactor(1, 2);
    editors->setSizes({3000, 2000});

    // The same letters are notes in the one and chords in the other.
    new FocusRing(pianoRoll_);
    new FocusRing(arranger_);
    editorFocus_ = new EditorFocus({pianoRoll_, arranger_}, this);

    firstSteps_ = {new FirstSteps({tr("Click en la grilla: una nota."),
                                   tr("Más arriba es más agudo; más a la derecha, más tarde."),
                                   tr("Click derecho la borra.")},
                                  pianoRoll_->findChild<QGraphicsView*>()),
                   new FirstSteps({tr("Click en la fila «Acordes»: un acorde."),
                                   tr("Arrastrá un número del acompañamiento hasta acá: un ritmo."),
                                   tr("Espacio: escuchar la canción.")},
                                  arranger_->findChild<QGraphicsView*>())};
    return editors;
}

QWidget* MainWindow::buildSidePanel(QWidget* parent)
{
    auto* panel = new QScrollArea(parent);
    auto* content = new QWidget(panel);
    loopBrowser_ = new LoopBrowser(loopLibrary_, instruments_, catalog_, downloads_, registry_,
                                   engine_, content);
    connect(loopBrowser_, &LoopBrowser::loopChosen, this, &MainWindow::handleLoopChosen);
    headerPanel_ = new TrackHeaderPanel(instruments_, content);
    // On a low screen it scrolls, so that the loops that are used most stay in sight.
    auto* headerArea = new FittingArea(
        headerPanel_, FittingArea::Wish::All,
        [this] { return headerPanel_->sizeHint().height() * kHeaderPercentInSight / 100; },
        content);
    // Height that its rows do not need is better spent on loops.
    headerArea->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    connect(headerPanel_, &TrackHeaderPanel::trackEdited, this, &MainWindow::snapshotAndRefresh);
    connect(headerPanel_, &TrackHeaderPanel::mixingChanged, engine_,
            &PlaybackEngine::refreshChannels);
    connect(headerPanel_, &TrackHeaderPanel::mixingChanged, this, &MainWindow::keepSoon);
    connect(headerPanel_, &TrackHeaderPanel::audibilityChanged, this, [this] {
        engine_->rescheduleIfPlaying();
        arranger_->repaintHeader();
        transport_->updateFromProject();
    });

    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(loopBrowser_, 3);
    layout->addWidget(headerArea, 2);

    panel->setWidgetResizable(true);
    panel->setFrameShape(QFrame::NoFrame);
    panel->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    panel->setMinimumWidth(252);
    panel->setMaximumWidth(352);
    panel->setFocusPolicy(Qt::NoFocus);
    panel->setWidget(content);
    return panel;
}

void MainWindow::connectTransport()
{
    using Ribbon = TransportControls;
    connect(transport_, &Ribbon::bpmEdited, this, &MainWindow::setBpm);
    connect(transport_, &Ribbon::meterEdited, this, &MainWindow::setMeter);
    connect(transport_, &Ribbon::keySignatureEdited, this, &MainWindow::setKey);
    connect(transport_, &Ribbon::harmonyMuteToggled, this, &MainWindow::setHarmonyMuted);
    connect(transport_, &Ribbon::saveRequested, this, &MainWindow::saveCurrentProject);
    connect(transport_, &Ribbon::newProjectRequested, this, &MainWindow::newProject);
    connect(transport_, &Ribbon::openProjectRequested, this, &MainWindow::openProjectDialog);
    connect(transport_, &Ribbon::addTrackRequested, this, &MainWindow::addTrack);
    connect(transport_, &Ribbon::removeTrackRequested, this, &MainWindow::removeSelectedTrack);
    connect(transport_, &Ribbon::exportMp3Requested, this, [this] { exportAudio(true); });
    connect(transport_, &Ribbon::exportWavRequested, this, [this] { exportAudio(false); });
    connect(transport_, &Ribbon::exportMidiRequested, this, &MainWindow::exportMidi);
    connect(transport_, &Ribbon::recordVoiceRequested, this, &MainWindow::toggleVoiceRecording);
    connect(transport_, &Ribbon::cancelVoiceRequested, this, &MainWindow::cancelVoiceRecording);
    connect(transport_, &Ribbon::stopRequested, this, &MainWindow::finishTake);
    connect(countIn_, &CountIn::counted, transport_, &Ribbon::showCount);
    connect(recorder_, &AudioRecorder::levelHeard, transport_, &Ribbon::showLevel);
    connect(transport_, &Ribbon::importVoiceRequested, this, &MainWindow::importVoiceFile);
    connect(transport_, &Ribbon::zoomInRequested, this, &MainWindow::zoomIn);
    connect(transport_, &Ribbon::zoomOutRequested, this, &MainWindow::zoomOut);
    connect(transport_, &Ribbon::followToggled, this, &MainWindow::setFollowing);
    connect(engine_, &PlaybackEngine::waitingForVoices, this, &MainWindow::showWaiting);
}

void MainWindow::showWaiting(bool waiting)
{
    if (waiting)
        QGuiApplication::setOverrideCursor(Qt::BusyCursor);
    else
        QGuiApplication::restoreOverrideCursor();
}

void MainWindow::connectPianoRoll()
{
    connect(pianoRoll_, &PianoRollCanvas::edited, this, &MainWindow::snapshotAndRefresh);
    connect(transport_, &TransportControls::subdivisionChanged, pianoRoll_,
            &PianoRollCanvas::setSubdivisionLevel);
}

void MainWindow::connectArranger()
{
    connect(arranger_, &TrackArranger::edited, this, &MainWindow::snapshotAndRefresh);
    connect(arranger_, &TrackArranger::deletedByClick, this, [this] {
        statusBar()->showMessage(tr("Bloque borrado · Ctrl+Z lo trae de vuelta."), kDeletedMs);
    });
    connect(arranger_, &TrackArranger::alreadyThere, this, &MainWindow::tellAlreadyThere);
    connect(arranger_, &TrackArranger::tracksExhausted, this,
            [this] { prompts_.inform(this, tr("Veltas"), tr("No quedan veltas libres.")); });
    connect(arranger_, &TrackArranger::openMelodyBlock, this, &MainWindow::openMelodyBlock);
    connect(arranger_, &TrackArranger::laneSelectionChanged, this,
            &MainWindow::syncSelectionToViews);
    connect(arranger_, &TrackArranger::loopDropped, this,
            [this](const QString& rhythmId, const QString& layerId, LoopSection section,
                   int variantIndex, double beat) {
                placeLoop(rhythmId, layerId, static_cast<int>(section), variantIndex, beat);
            });
}

void MainWindow::zoomIn()
{
    pianoRoll_->zoomHorizontal(Zoom::kCommandStep);
    arranger_->zoomHorizontal(Zoom::kCommandStep);
}

void MainWindow::zoomOut()
{
    pianoRoll_->zoomHorizontal(1.0 / Zoom::kCommandStep);
    arranger_->zoomHorizontal(1.0 / Zoom::kCommandStep);
}

void MainWindow::adoptProject()
{
    engine_->setProject(project_);
    engine_->projectDir =
        currentProjectId_.isEmpty() ? QString() : storage_->projectFolder(currentProjectId_);
    engine_->prepareVoices();
    transport_->setProject(project_);
    loopBrowser_->setProject(project_);
    showFirstTrack();
    undoStack_->reset(*project_);
    updateSubdivisionMenu();
    stackedWidget_->setCurrentIndex(0);
    showProjectName();
    showFirstSteps();
    connect(project_, &Project::changed, this, &MainWindow::showFirstSteps, Qt::UniqueConnection);
    connect(project_, &Project::changed, this, &MainWindow::updateSubdivisionMenu,
            Qt::UniqueConnection);
    // A new song begins with notes.
    pianoRoll_->setFocus(Qt::OtherFocusReason);
    // What the views add to a work that they show is no change of its user's.
    markSaved();
}

void MainWindow::showFirstTrack()
{
    // The roll begins with the track that the arranger selects, and need not be told.
    const QSignalBlocker quiet(arranger_);
    pianoRoll_->setContext(project_, engine_);
    arranger_->setContext(project_, engine_, loopLibrary_);
    headerPanel_->setProject(project_);
    showSelectedTrack();
}

void MainWindow::exchangeProject(Project* project, const QString& id)
{
    finishTake();
    if (project_)
        project_->deleteLater();
    project_ = project;
    currentProjectId_ = id;
    adoptProject();
}

void MainWindow::syncSelectionToViews()
{
    if (!project_)
        return;
    showSelectedTrack();
    // Who lays chords goes on with the notes that are shown.
    if (arranger_->areChordsSelected())
        return;
    if (arranger_->selectedAudioTrack() >= 0)
        pianoRoll_->setVisibleTracks({}, -1);
    else
        pianoRoll_->setVisibleTracks(arranger_->selectedTracks(), arranger_->activeTrack());
}

void MainWindow::showSelectedTrack()
{
    const int voice = arranger_->selectedAudioTrack();
    if (arranger_->areChordsSelected())
        headerPanel_->showChords();
    else if (voice >= 0)
        headerPanel_->showAudioTrack(voice);
    else
        headerPanel_->showTrack(arranger_->activeTrack());
}

void MainWindow::openMelodyBlock(int track, int block)
{
    arranger_->selectNoteTrack(track, false);
    pianoRoll_->setActiveBlock(track, block);
    // Who opens notes goes on with them.
    pianoRoll_->setFocus(Qt::OtherFocusReason);
}

void MainWindow::showProjectName()
{
    setWindowTitle(tr("Velta — %1").arg(plainTitle(project_->name)) + "[*]"_L1);
    showUnsaved();
}

void MainWindow::showFirstSteps()
{
    for (FirstSteps* steps : firstSteps_)
        steps->setTold(!projectHasContent());
}

void MainWindow::snapshotAndRefresh()
{
    if (!project_)
        return;
    // The roll gives the track that it shows a block to write in. Where the edit took the last one,
    // that belongs to it and not to the next.
    pianoRoll_->notes()->hasEditableBlock();
    undoStack_->snapshot(*project_);
    keepSoon();
    headerPanel_->refreshSwitches();
    showAndSound();
}

void MainWindow::showAndSound()
{
    emit project_->changed();
    engine_->refreshChannels();
    engine_->rescheduleIfPlaying();
}

void MainWindow::undo()
{
    finishGestures();
    if (!project_ || !undoStack_->canUndo())
        return;
    const Song former = *project_;
    restore(*undoStack_->undoSong(*project_));
    takePlayheadBack(former);
}

void MainWindow::redo()
{
    finishGestures();
    if (!project_ || !undoStack_->canRedo())
        return;
    const Song former = *project_;
    restore(*undoStack_->redoSong());
    takePlayheadOn(former);
}

void MainWindow::restore(const Song& state)
{
    // A name comes from saving, and is not taken back.
    const QString name = project_->name;
    static_cast<Song&>(*project_) = state;
    project_->name = name;
    keepSoon();
    showAndSound();
    // The track that the panel showed may be otherwise now, or gone.
    showSelectedTrack();
}

void MainWindow::setBpm(int bpm)
{
    if (!project_)
        return;
    project_->bpm = bpm;
    snapshotAndRefresh();
}

void MainWindow::setMeter(const TimeSignature& meter)
{
    if (!project_)
        return;
    ProjectEdits::setMeter(*project_, meter);
    snapshotAndRefresh();
}

void MainWindow::setKey(int rootPitchClass, int mode)
{
    if (!project_)
        return;
    ProjectEdits::setKey(*project_, rootPitchClass, mode);
    snapshotAndRefresh();
}

void MainWindow::setHarmonyMuted(bool muted)
{
    if (!project_)
        return;
    project_->harmonyTrack.muted = muted;
    snapshotAndRefresh();
}

bool MainWindow::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride &&
        FocusedControl::takesSpace(*static_cast<QKeyEvent*>(event), focusWidget())) {
        event->accept();
        return true;
    }
    return QMainWindow::event(event);
}

void MainWindow::keyPressEvent(QKeyEvent* event)
{
    if (isSinging() && event->matches(QKeySequence::Cancel))
        cancelVoiceRecording();
    else if (!FocusedControl::pressByReturn(*event, focusWidget()))
        QMainWindow::keyPressEvent(event);
}
