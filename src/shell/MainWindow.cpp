#include "shell/MainWindow.h"

#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "playback/PlaybackEngine.h"
#include "shell/AccessibleControls.h"
#include "shell/EditMenu.h"
#include "shell/EditorPage.h"
#include "shell/FocusedControl.h"
#include "shell/GridMenu.h"
#include "shell/LoopBrowser.h"
#include "shell/OpenWork.h"
#include "shell/RecoveryBar.h"
#include "shell/Services.h"
#include "shell/StaleHover.h"
#include "shell/StatusLine.h"
#include "shell/TransportControls.h"
#include "shell/VoiceRecording.h"
#include "shell/controls/PlainText.h"
#include "shell/theme/ThemeManager.h"
#include "shell/theme/TitleBar.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoRollCanvas.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QStackedWidget>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kDeletedMs = 5000;
constexpr int kToldMs = 3000;

} // namespace

MainWindow::MainWindow(QWidget* parent, Prompts& prompts) : QMainWindow(parent), prompts_(prompts)
{
    AccessibleControls::install();
    setWindowTitle(u"Velta"_s);
    resize(1360, 860);
    setAcceptDrops(true);
    services_ = std::make_unique<Services>(this);
    work_ = std::make_unique<OpenWork>(*engine(), this);
    voice_ = std::make_unique<VoiceRecording>(services_->player(), *engine(), prompts_, this);

    auto* pages = new QStackedWidget;
    setCentralWidget(pages);
    page_ = std::make_unique<EditorPage>(*services_, pages);
    pages->addWidget(page_.get());
    ribbon_ = page_->ribbon();
    loopBrowser_ = page_->browser();
    pianoRoll_ = page_->roll();
    arranger_ = page_->arranger();

    buildMenus();
    buildStatusLine();
    connectRibbon();
    connectEditors();
    connectWork();
    connectVoice();
    setTitleBarDark(reinterpret_cast<void*>(winId()), ThemeManager::instance()->isDark());
    startBlankProject();
    // A message makes room for itself only among what is seen already.
    QTimer::singleShot(0, this, &MainWindow::nameRefusedContent);
    findAbandoned();
    new StaleHover(this);
}

MainWindow::~MainWindow() = default;

QString MainWindow::resourcesDir()
{
    return Services::resourcesDir();
}

const Project* MainWindow::project() const
{
    return work_->project();
}

Project* MainWindow::project()
{
    return work_->project();
}

const InstrumentLibrary* MainWindow::instruments() const
{
    return services_->instruments();
}

const LoopLibrary* MainWindow::loopLibrary() const
{
    return services_->loops();
}

PlaybackEngine* MainWindow::engine() const
{
    return services_->engine();
}

const QString& MainWindow::currentProjectId() const
{
    return work_->id();
}

// ---- Who hears of what ---------------------------------------------------------------------

void MainWindow::connectRibbon()
{
    using Ribbon = TransportControls;
    connect(ribbon_, &Ribbon::bpmEdited, this, &MainWindow::setBpm);
    connect(ribbon_, &Ribbon::meterEdited, this, &MainWindow::setMeter);
    connect(ribbon_, &Ribbon::keySignatureEdited, this, &MainWindow::setKey);
    connect(ribbon_, &Ribbon::harmonyMuteToggled, this, &MainWindow::setHarmonyMuted);
    connect(ribbon_, &Ribbon::saveRequested, this, &MainWindow::saveCurrentProject);
    connect(ribbon_, &Ribbon::newProjectRequested, this, &MainWindow::newProject);
    connect(ribbon_, &Ribbon::openProjectRequested, this, &MainWindow::openProjectDialog);
    connect(ribbon_, &Ribbon::addTrackRequested, this, &MainWindow::addTrack);
    connect(ribbon_, &Ribbon::removeTrackRequested, this, &MainWindow::removeSelectedTrack);
    connect(ribbon_, &Ribbon::exportMp3Requested, this, [this] { exportAudio(true); });
    connect(ribbon_, &Ribbon::exportWavRequested, this, [this] { exportAudio(false); });
    connect(ribbon_, &Ribbon::exportMidiRequested, this, &MainWindow::exportMidi);
    connect(ribbon_, &Ribbon::importVoiceRequested, this, &MainWindow::importVoiceFile);
}

void MainWindow::connectEditors()
{
    connect(loopBrowser_, &LoopBrowser::loopChosen, this, &MainWindow::handleLoopChosen);
    connect(pianoRoll_, &PianoRollCanvas::edited, this, &MainWindow::snapshotAndRefresh);
    connect(arranger_, &TrackArranger::edited, this, &MainWindow::snapshotAndRefresh);
    connect(arranger_, &TrackArranger::deletedByClick, this, [this] {
        statusBar()->showMessage(tr("Bloque borrado · Ctrl+Z lo trae de vuelta."), kDeletedMs);
    });
    connect(arranger_, &TrackArranger::alreadyThere, this, &MainWindow::tellAlreadyThere);
    connect(arranger_, &TrackArranger::tracksExhausted, this,
            [this] { prompts_.inform(this, tr("Veltas"), tr("No quedan veltas libres.")); });
    connect(arranger_, &TrackArranger::loopDropped, this,
            [this](const QString& rhythmId, const QString& layerId, LoopSection section,
                   int variantIndex, double beat) {
                placeLoop(rhythmId, layerId, static_cast<int>(section), variantIndex, beat);
            });
    const TrackHeaderPanel* panel = page_->trackPanel();
    connect(panel, &TrackHeaderPanel::trackEdited, this, &MainWindow::snapshotAndRefresh);
    connect(panel, &TrackHeaderPanel::mixingChanged, engine(), &PlaybackEngine::refreshChannels);
    connect(panel, &TrackHeaderPanel::mixingChanged, work_.get(), &OpenWork::keepSoon);
    connect(panel, &TrackHeaderPanel::audibilityChanged, engine(),
            &PlaybackEngine::rescheduleIfPlaying);
    connect(engine(), &PlaybackEngine::waitingForVoices, this, &MainWindow::showWaiting);
    connect(loopLibrary(), &LoopLibrary::libraryChanged, this, &MainWindow::onLibraryChanged);
}

void MainWindow::connectWork()
{
    connect(work_.get(), &OpenWork::looked, this, &MainWindow::setWindowModified);
    connect(work_.get(), &OpenWork::movedTo, voice_.get(), &VoiceRecording::moveTo);
    connect(&work_->undoStack(), &UndoStack::availabilityChanged, editMenu_,
            &EditMenu::setAvailable);
    connect(page_->recoveryBar(), &RecoveryBar::recoverRequested, this, &MainWindow::recover);
}

void MainWindow::connectVoice()
{
    using Ribbon = TransportControls;
    using Voice = VoiceRecording;
    connect(ribbon_, &Ribbon::recordVoiceRequested, this, &MainWindow::toggleVoiceRecording);
    connect(ribbon_, &Ribbon::cancelVoiceRequested, voice_.get(), &Voice::cancel);
    connect(ribbon_, &Ribbon::stopRequested, voice_.get(), &Voice::finish);
    connect(voice_.get(), &Voice::counted, ribbon_, &Ribbon::showCount);
    connect(voice_.get(), &Voice::levelHeard, ribbon_, &Ribbon::showLevel);
    connect(voice_.get(), &Voice::singingChanged, this, &MainWindow::showRecording);
    connect(voice_.get(), &Voice::told, this,
            [this](const QString& text) { statusBar()->showMessage(text, kToldMs); });
    connect(voice_.get(), &Voice::recorded, this, &MainWindow::layClip);
}

void MainWindow::buildStatusLine()
{
    statusLine_ = new StatusLine(services_->hasBank() ? QString() : Services::bankPath(), this);
    setStatusBar(statusLine_);
    connect(statusLine_, &StatusLine::missingBankAsked, this, [this](const QString& sentence) {
        prompts_.inform(this, tr("Sin sonido"),
                        tr("%1\n\nCopiá el archivo a esa carpeta, o instalá Velta de nuevo, y "
                           "volvé a abrir el programa.")
                            .arg(sentence));
    });
    connect(ThemeManager::instance(), &ThemeManager::themeChanged, this,
            &MainWindow::onThemeChanged);
}

void MainWindow::onThemeChanged(bool dark)
{
    setTitleBarDark(reinterpret_cast<void*>(winId()), dark);
    // The views hold colours of the former look.
    emit project()->changed();
}

void MainWindow::showWaiting(bool waiting)
{
    if (waiting)
        QGuiApplication::setOverrideCursor(Qt::BusyCursor);
    else
        QGuiApplication::restoreOverrideCursor();
}

// ---- The work that is shown ----------------------------------------------------------------

void MainWindow::exchangeProject(Project* opened, const QString& id)
{
    voice_->finish();
    work_->open(opened, id);
    adoptProject();
}

void MainWindow::adoptProject()
{
    page_->setProject(project());
    static_cast<QStackedWidget*>(centralWidget())->setCurrentWidget(page_.get());
    updateFromProject();
    showProjectName();
    connect(project(), &Project::changed, this, &MainWindow::updateFromProject,
            Qt::UniqueConnection);
    // A new song begins with notes.
    pianoRoll_->setFocus(Qt::OtherFocusReason);
    // What the views add to a work that they show is no change of its user's.
    work_->accept();
}

void MainWindow::updateFromProject()
{
    gridMenu_->setCompound(project()->timeSignature.isCompound);
    page_->setEmpty(!projectHasContent());
}

void MainWindow::showProjectName()
{
    setWindowTitle(tr("Velta — %1").arg(plainTitle(project()->name)) + "[*]"_L1);
    work_->look();
}

void MainWindow::finishGestures()
{
    page_->finishGestures();
}

void MainWindow::snapshotAndRefresh()
{
    if (!project())
        return;
    // The roll gives the track that it shows a block to write in. Where the edit took the last one,
    // that belongs to it and not to the next.
    pianoRoll_->notes()->hasEditableBlock();
    work_->snapshot();
    page_->trackPanel()->refreshSwitches();
    showAndSound();
}

void MainWindow::showAndSound()
{
    emit project()->changed();
    engine()->refreshChannels();
    engine()->rescheduleIfPlaying();
}

void MainWindow::undo()
{
    finishGestures();
    if (!project() || !work_->undoStack().canUndo())
        return;
    const Song former = *project();
    restore(*work_->undoStack().undoSong(*project()));
    takePlayheadBack(former);
}

void MainWindow::redo()
{
    finishGestures();
    if (!project() || !work_->undoStack().canRedo())
        return;
    const Song former = *project();
    restore(*work_->undoStack().redoSong());
    takePlayheadOn(former);
}

void MainWindow::restore(const Song& state)
{
    const QList<Track> former = project()->tracks;
    const int track = arranger_->activeTrack();
    work_->restore(state);
    showAndSound();
    // The track that the panel showed may be otherwise now, elsewhere in the list, or gone.
    const int present = ProjectEdits::trackAfter(former, project()->tracks, track);
    if (present != track)
        arranger_->selectNoteTrack(present, false);
    else
        page_->showSelectedTrack();
}

void MainWindow::setBpm(int bpm)
{
    if (!project())
        return;
    project()->bpm = bpm;
    snapshotAndRefresh();
}

void MainWindow::setMeter(const TimeSignature& meter)
{
    if (!project())
        return;
    ProjectEdits::setMeter(*project(), meter);
    snapshotAndRefresh();
}

void MainWindow::setKey(int rootPitchClass, int mode)
{
    if (!project())
        return;
    ProjectEdits::setKey(*project(), rootPitchClass, mode);
    snapshotAndRefresh();
}

void MainWindow::setHarmonyMuted(bool muted)
{
    if (!project())
        return;
    project()->harmonyTrack.muted = muted;
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
    if (voice_->isSinging() && event->matches(QKeySequence::Cancel))
        voice_->cancel();
    else if (!FocusedControl::pressByReturn(*event, focusWidget()))
        QMainWindow::keyPressEvent(event);
}
