#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "shell/GridLevelNames.h"
#include "shell/MainWindow.h"
#include "shell/theme/ThemeManager.h"
#include "shell/theme/TitleBar.h"
#include "views/pianoroll/PianoRollCanvas.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QStatusBar>

using namespace Qt::Literals::StringLiterals;

void MainWindow::buildMenus()
{
    buildFileMenu();
    buildEditMenu();
    buildViewMenu();
    addPlaybackShortcut();
}

void MainWindow::buildFileMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Archivo"));
    menu->addAction(tr("Obra nueva…"), this, &MainWindow::newProject)
        ->setShortcuts(QKeySequence::New);
    menu->addAction(tr("Abrir obra…"), this, &MainWindow::openProjectDialog)
        ->setShortcuts(QKeySequence::Open);
    menu->addAction(tr("Guardar"), this, &MainWindow::saveCurrentProject)
        ->setShortcuts(QKeySequence::Save);
    menu->addSeparator();
    menu->addAction(tr("Importar audio de voz…"), this, &MainWindow::importVoiceFile);
    menu->addSeparator();
    menu->addAction(tr("Exportar WAV…"), this, [this] { exportAudio(false); });
    menu->addAction(tr("Exportar MP3…"), this, [this] { exportAudio(true); });
    menu->addAction(tr("Exportar MIDI…"), this, &MainWindow::exportMidi);
    menu->addSeparator();
    menu->addAction(tr("Salir"), this, &MainWindow::close)->setShortcuts(QKeySequence::Quit);
}

void MainWindow::buildEditMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Edición"));
    undoAction_ = menu->addAction(tr("Deshacer"), this, &MainWindow::undo);
    undoAction_->setShortcuts(QKeySequence::Undo);
    redoAction_ = menu->addAction(tr("Rehacer"), this, &MainWindow::redo);
    redoAction_->setShortcuts(QKeySequence::Redo);
    undoAction_->setEnabled(false);
    redoAction_->setEnabled(false);
}

void MainWindow::buildViewMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Ver"));
    subdivisionMenu_ = menu->addMenu(tr("Qué marca la grilla"));
    for (const GridSubdivisionLevel level : kGridLevels)
        subdivisionMenu_
            ->addAction(QString(), pianoRoll_,
                        [this, level] { pianoRoll_->setSubdivisionLevel(level); })
            ->setData(QVariant::fromValue(level));
    updateSubdivisionMenu();
    menu->addSeparator();
    menu->addAction(tr("Acercar (tiempo)"), this, &MainWindow::zoomIn)
        ->setShortcuts(QKeySequence::ZoomIn);
    menu->addAction(tr("Alejar (tiempo)"), this, &MainWindow::zoomOut)
        ->setShortcuts(QKeySequence::ZoomOut);
}

void MainWindow::updateSubdivisionMenu()
{
    const bool compound = project_ && project_->timeSignature.isCompound;
    for (QAction* action : subdivisionMenu_->actions())
        action->setText(gridLevelName(action->data().value<GridSubdivisionLevel>(), compound));
}

void MainWindow::addPlaybackShortcut()
{
    auto* action = new QAction(tr("Reproducir/Pausar"), this);
    action->setShortcut(Qt::Key_Space);
    action->setShortcutContext(Qt::ApplicationShortcut);
    action->setAutoRepeat(false);
    connect(action, &QAction::triggered, this, &MainWindow::playOrPause);
    addAction(action);
}

void MainWindow::playOrPause()
{
    // The keys are those of the list or menu that is open.
    if (QApplication::activePopupWidget())
        return;
    if (engine_->isPlaying())
        engine_->pause();
    else
        engine_->play();
}

void MainWindow::buildStatusBar()
{
    auto* hint = new QLabel(
        tr("Espacio reproduce · A-G tocan notas (Shift = sostenido, Z/X cambian de octava) · "
           "Shift+arrastre selecciona"));
    statusBar()->addWidget(hint);
    // The bar itself hides nothing behind a message that comes before the window is shown.
    connect(statusBar(), &QStatusBar::messageChanged, hint,
            [hint](const QString& message) { hint->setVisible(message.isEmpty()); });
    themeButton_ = new QPushButton;
    themeButton_->setObjectName(u"toggle_modo"_s);
    themeButton_->setCursor(Qt::PointingHandCursor);
    statusBar()->addPermanentWidget(themeButton_);

    ThemeManager* theme = ThemeManager::instance();
    updateThemeButton(theme->isDark());
    connect(themeButton_, &QPushButton::clicked, theme,
            [theme] { theme->setDark(!theme->isDark()); });
    connect(theme, &ThemeManager::themeChanged, this, &MainWindow::onThemeChanged);
}

void MainWindow::updateThemeButton(bool dark)
{
    themeButton_->setText(dark ? tr("☀ Modo claro") : tr("🌙 Modo oscuro"));
}

void MainWindow::updateTitleBar(bool dark)
{
    setTitleBarDark(reinterpret_cast<void*>(winId()), dark);
}

void MainWindow::onThemeChanged(bool dark)
{
    updateThemeButton(dark);
    updateTitleBar(dark);
    // The views hold colours of the former look.
    if (project_)
        emit project_->changed();
}
