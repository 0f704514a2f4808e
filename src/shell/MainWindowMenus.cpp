#include "shell/EditMenu.h"
#include "shell/EditorPage.h"
#include "shell/GridMenu.h"
#include "shell/MainWindow.h"
#include "shell/OpenWork.h"
#include "shell/RecentMenu.h"
#include "shell/TransportControls.h"
#include "shell/VoiceRecording.h"

#include <QAction>
#include <QApplication>
#include <QMenuBar>

using namespace Qt::Literals::StringLiterals;

using Card = TransportControls::Card;

namespace {

/// Gives an entry its keys, and has the button of the ribbon that does the same tell them.
QAction* withKeys(QAction* entry, const QKeySequence& keys, TransportControls* ribbon, Card card)
{
    entry->setShortcut(keys);
    ribbon->tellShortcut(card, keys);
    return entry;
}

} // namespace

void MainWindow::buildMenus()
{
    buildFileMenu();
    editMenu_ = new EditMenu(
        tr("&Edición"), [this]() -> CommandedEditor& { return page_->keyEditor(); }, menuBar());
    connect(editMenu_, &EditMenu::undoRequested, this, &MainWindow::undo);
    connect(editMenu_, &EditMenu::redoRequested, this, &MainWindow::redo);
    menuBar()->addMenu(editMenu_);
    buildViewMenu();
    buildPlaybackMenu();
    buildOwnMenu();
    buildHelpMenu();
}

void MainWindow::buildFileMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Archivo"));
    menu->addAction(tr("Obra nueva…"), this, &MainWindow::newProject)
        ->setShortcuts(QKeySequence::New);
    menu->addAction(tr("Abrir obra…"), this, &MainWindow::openProjectDialog)
        ->setShortcuts(QKeySequence::Open);
    auto* recent = new RecentMenu(tr("Obras recientes"), work_->storage(), menu);
    connect(recent, &RecentMenu::chosen, this, &MainWindow::openRecentProject);
    menu->addMenu(recent);
    menu->addAction(tr("Guardar"), this, &MainWindow::saveCurrentProject)
        ->setShortcuts(QKeySequence::Save);
    menu->addAction(tr("Guardar como…"), this, &MainWindow::saveAs)
        ->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_S);
    menu->addAction(tr("Duplicar obra"), this, &MainWindow::duplicateWork);
    menu->addAction(tr("Cambiar nombre…"), this, &MainWindow::renameWork);
    menu->addSeparator();
    withKeys(menu->addAction(tr("Importar audio de voz…"), this, &MainWindow::importVoiceFile),
             Qt::CTRL | Qt::Key_I, ribbon_, Card::Import);
    menu->addSeparator();
    withKeys(menu->addAction(tr("Exportar WAV…"), this, [this] { exportAudio(false); }),
             Qt::CTRL | Qt::SHIFT | Qt::Key_E, ribbon_, Card::ExportWav);
    withKeys(menu->addAction(tr("Exportar MP3…"), this, [this] { exportAudio(true); }),
             Qt::CTRL | Qt::Key_E, ribbon_, Card::ExportMp3);
    withKeys(menu->addAction(tr("Exportar MIDI…"), this, &MainWindow::exportMidi),
             Qt::CTRL | Qt::ALT | Qt::Key_E, ribbon_, Card::ExportMidi);
    menu->addAction(tr("Imprimir o guardar hoja…"), this, &MainWindow::printSheet)
        ->setShortcuts(QKeySequence::Print);
    menu->addAction(tr("Exportar obra completa…"), this, &MainWindow::exportWork);
    menu->addSeparator();
    menu->addAction(tr("Salir"), this, &MainWindow::close)->setShortcuts(QKeySequence::Quit);
}

void MainWindow::buildViewMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Ver"));
    gridMenu_ = new GridMenu(tr("Qué marca la grilla"), ribbon_, menu);
    menu->addMenu(gridMenu_);
    menu->addSeparator();
    QAction* zoomIn = menu->addAction(tr("Acercar (tiempo)"), page_.get(), &EditorPage::zoomIn);
    zoomIn->setShortcuts(QKeySequence::ZoomIn);
    ribbon_->tellShortcut(Card::ZoomIn, zoomIn->shortcut());
    QAction* zoomOut = menu->addAction(tr("Alejar (tiempo)"), page_.get(), &EditorPage::zoomOut);
    zoomOut->setShortcuts(QKeySequence::ZoomOut);
    ribbon_->tellShortcut(Card::ZoomOut, zoomOut->shortcut());
    menu->addSeparator();
    ribbon_->bindSwitch(Card::Follow, withKeys(menu->addAction(tr("Seguir el cabezal")),
                                               Qt::CTRL | Qt::Key_J, ribbon_, Card::Follow));
}

void MainWindow::buildPlaybackMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Reproducción"));
    menu->addAction(makePlaybackAction());
    withKeys(menu->addAction(tr("Detener"), this, &MainWindow::stopPlayback),
             Qt::SHIFT | Qt::Key_Space, ribbon_, Card::Stop);
    ribbon_->bindSwitch(Card::Repeat, withKeys(menu->addAction(tr("Repetir")), Qt::CTRL | Qt::Key_L,
                                               ribbon_, Card::Repeat));
    ribbon_->bindSwitch(Card::Metronome, withKeys(menu->addAction(tr("Metrónomo")),
                                                  Qt::CTRL | Qt::Key_M, ribbon_, Card::Metronome));
    menu->addSeparator();
    withKeys(menu->addAction(tr("Grabar voz"), this, &MainWindow::toggleVoiceRecording),
             Qt::CTRL | Qt::Key_R, ribbon_, Card::Record);
    QAction* countIn = menu->addAction(tr("Contar un compás antes de grabar"));
    countIn->setCheckable(true);
    countIn->setChecked(voice_->countsIn());
    connect(countIn, &QAction::toggled, voice_.get(), &VoiceRecording::setCountsIn);
    ribbon_->addSetting(Card::Record, countIn);
}

void MainWindow::buildOwnMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("Ve&lta"));
    withKeys(menu->addAction(tr("Agregar velta"), this, &MainWindow::addTrack),
             Qt::CTRL | Qt::Key_T, ribbon_, Card::AddTrack);
    withKeys(menu->addAction(tr("Quitar velta"), this, &MainWindow::removeSelectedTrack),
             Qt::CTRL | Qt::SHIFT | Qt::Key_T, ribbon_, Card::RemoveTrack);
    menu->addSeparator();
    menu->addAction(tr("Área siguiente"), Qt::Key_F6, this, [this] { page_->changeArea(1); });
    menu->addAction(tr("Área anterior"), Qt::SHIFT | Qt::Key_F6, this,
                    [this] { page_->changeArea(-1); });
}

QAction* MainWindow::makePlaybackAction()
{
    auto* action = new QAction(tr("Reproducir/Pausar"), this);
    action->setShortcut(Qt::Key_Space);
    action->setShortcutContext(Qt::ApplicationShortcut);
    action->setAutoRepeat(false);
    connect(action, &QAction::triggered, this, [this] {
        // The keys are those of the list or menu that is open.
        if (!QApplication::activePopupWidget())
            ribbon_->togglePlayback();
    });
    addAction(action);
    return action;
}
