#include "shell/MainWindow.h"

#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "storage/LocalStorageProvider.h"

#include <QCoreApplication>
#include <QDir>
#include <QMessageBox>
#include <QStatusBar>

using namespace Qt::Literals::StringLiterals;

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent)
{
    setWindowTitle(u"Velta"_s);
    resize(1360, 860);

    const QString soundfontsDir = resourcesDir() + "/soundfonts"_L1;
    const QString loopsDir = resourcesDir() + "/loops"_L1;
    storage_ = std::make_unique<LocalStorageProvider>(QString());
    instruments_ = new InstrumentLibrary(soundfontsDir, this);
    instruments_->loadBuiltinGmInstruments();
    loopLibrary_ = new LoopLibrary(loopsDir, instruments_, this);
    loopLibrary_->reload();

    player_ = new SoundfontPlayer(SoundfontPlayer::Mode::Realtime, this);
    const QString bank = soundfontsDir + "/velta_bank_gm.sf2"_L1;
    if (!player_->loadGmBank(bank))
        statusBar()->showMessage(
            tr("Falta el banco de sonidos %1 — la app funciona sin sonido.").arg(bank));
    engine_ = new PlaybackEngine(player_, loopLibrary_, instruments_, this);

    startBlankProject();
}

MainWindow::~MainWindow() = default;

QString MainWindow::resourcesDir()
{
    const QString besideExecutable = QCoreApplication::applicationDirPath() + "/resources"_L1;
    if (QDir(besideExecutable).exists())
        return besideExecutable;
    return QDir::currentPath() + "/resources"_L1;
}

void MainWindow::startBlankProject()
{
    auto* blank = new Project(this);
    blank->name = tr("Obra sin título");
    Track melody;
    melody.name = tr("Melodía");
    melody.instrumentId = u"gm_piano"_s;
    blank->tracks.append(melody);
    exchangeProject(blank, QString());
}

void MainWindow::openProject(const QString& id)
{
    Project* opened = storage_->loadProject(id, this);
    if (opened)
        exchangeProject(opened, id);
    else
        QMessageBox::warning(this, tr("Abrir proyecto"), tr("No pude abrir el proyecto."));
}

void MainWindow::openProjectById(const QString& id)
{
    openProject(id);
}

void MainWindow::exchangeProject(Project* project, const QString& id)
{
    if (project_)
        project_->deleteLater();
    project_ = project;
    currentProjectId_ = id;
    adoptProject();
}

void MainWindow::adoptProject()
{
    setWindowTitle(tr("Velta — %1").arg(project_->name));
}
