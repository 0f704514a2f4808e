#include "shots/ShotStage.h"

#include "content/ContentCatalog.h"
#include "content/ContentDownloadManager.h"
#include "content/InstalledContentRegistry.h"
#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "shell/MainWindow.h"
#include "shell/OnlineSearchDialog.h"
#include "shell/OpenProjectDialog.h"
#include "shell/QtTexts.h"
#include "shell/TakeSign.h"
#include "shell/TransportControls.h"
#include "shell/theme/ThemeManager.h"
#include "shots/PictureSong.h"
#include "storage/LocalStorageProvider.h"
#include "storage/RecoveryCopy.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "voice/WaveOutlines.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QStandardPaths>
#include <QStatusBar>
#include <QStyleFactory>
#include <QTimeZone>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr QSize kWindowSize(1360, 860);
constexpr int kFontPoints = 9;

/// Turns of the event loop in which all layouts are done and what was asked for has come.
constexpr int kTurns = 8;

constexpr auto kSongId = "zamba_de_la_escuela"_L1;

/// What a content server offers, so that none is needed.
constexpr auto kCatalog = R"({"rhythms": [
    {"rhythmId": "huayno", "displayName": "Huayno", "styleId": "folklore",
     "styleDisplayName": "Folklore", "estimatedDownloadBytes": 2202009},
    {"rhythmId": "bolero", "displayName": "Bolero", "styleId": "popular",
     "styleDisplayName": "Popular", "estimatedDownloadBytes": 734003},
    {"rhythmId": "marcha", "displayName": "Marcha", "styleId": "popular",
     "styleDisplayName": "Popular", "estimatedDownloadBytes": 104857}]})";

QString worksFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/Velta"_L1;
}

void saveWork(const QString& id, const Song& song, const QDateTime& changed)
{
    Project project;
    static_cast<Song&>(project) = song;
    LocalStorageProvider(QString()).saveProject(id, project);
    QFile file(u"%1/%2/project.json"_s.arg(worksFolder(), id));
    if (file.open(QIODevice::ReadWrite))
        file.setFileTime(changed, QFileDevice::FileModificationTime);
}

} // namespace

void ShotStage::prepareApplication()
{
    // DejaVu comes with the font library of Debian itself.
    QApplication::setFont(QFont(u"DejaVu Sans"_s, kFontPoints));
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    QApplication::setCursorFlashTime(0);
    QLocale::setDefault(QLocale(QLocale::Spanish, QLocale::Argentina));
    auto* texts = new QtTexts(qApp);
    texts->loadSpanish();
    QCoreApplication::installTranslator(texts);
}

ShotStage::ShotStage(bool dark)
{
    QDir(worksFolder()).removeRecursively();
    ThemeManager::instance()->setDark(dark);
    makeWindow();
}

ShotStage::~ShotStage() = default;

void ShotStage::makeWindow()
{
    window_ = std::make_unique<MainWindow>(nullptr, prompts_);
    window_->resize(kWindowSize);
    window_->show();
}

TrackArranger& ShotStage::arranger()
{
    return *window_->findChild<TrackArranger*>();
}

PianoRollCanvas& ShotStage::roll()
{
    return *window_->findChild<PianoRollCanvas*>();
}

// ---- What is there -------------------------------------------------------------------------

void ShotStage::openSong()
{
    saveWork(kSongId, pictureSong(*window_->loopLibrary()),
             QDateTime(QDate(2026, 3, 9), QTime(10, 30)));
    window_->openProject(kSongId);
}

void ShotStage::saveWorks()
{
    Song song = pictureSong(*window_->loopLibrary());
    saveWork(kSongId, song, QDateTime(QDate(2026, 3, 9), QTime(10, 30)));
    song.name = u"Tarea de música"_s;
    song.timeSignature = {.numerator = 3};
    saveWork(u"tarea"_s, song, QDateTime(QDate(2026, 3, 5), QTime(8, 15)));
    saveWork(u"tarea_2"_s, song, QDateTime(QDate(2026, 3, 5), QTime(11, 40)));
}

void ShotStage::abandonWork()
{
    KeptWork work;
    work.song = pictureSong(*window_->loopLibrary());
    window_.reset();
    RecoveryCopy(RecoveryCopy::standardFolder()).keepNow(work);
    makeWindow();
}

void ShotStage::lookRecording()
{
    window_->engine()->setPlayheadBeat(5.0);
    auto* controls = window_->findChild<TransportControls*>();
    controls->showRecording(true);
    // However long it takes to paint the picture, the take has just begun.
    controls->findChild<TakeSign*>()->findChild<QTimer*>()->stop();
    roll().setRecording(true);
    arranger().setRecording(true);
    window_->statusBar()->findChild<QLabel*>(u"grabando"_s)->show();
}

void ShotStage::lookPlaying()
{
    window_->engine()->setPlayheadBeat(6.5);
    emit window_->engine()->playingChanged(true);
}

// ---- What is shown -------------------------------------------------------------------------

void ShotStage::show(std::unique_ptr<QWidget> subject)
{
    subject_ = std::move(subject);
    subject_->show();
}

void ShotStage::showMenu(const QString& title)
{
    for (QAction* action : window_->menuBar()->actions()) {
        if (action->text() == title)
            action->menu()->popup(QPoint(0, 0));
    }
}

void ShotStage::showOpenDialog()
{
    saveWorks();
    LocalStorageProvider storage{QString()};
    show(std::make_unique<OpenProjectDialog>(storage.listProjects(), nullptr, prompts_));
}

void ShotStage::showOnlineDialog()
{
    const QDir server(QDir::temp().filePath(u"velta-shots"_s));
    server.mkpath(u"."_s);
    QFile catalog(server.filePath(u"catalog.json"_s));
    if (catalog.open(QIODevice::WriteOnly))
        catalog.write(kCatalog);
    catalog.close();
    catalog_ = std::make_unique<ContentCatalog>(QUrl::fromLocalFile(server.path()));
    registry_ = std::make_unique<InstalledContentRegistry>(server.filePath(u"registry.json"_s),
                                                           server.path());
    downloads_ =
        std::make_unique<ContentDownloadManager>(catalog_.get(), registry_.get(), nullptr, nullptr);
    show(std::make_unique<OnlineSearchDialog>(*window_->loopLibrary(), *catalog_, *downloads_,
                                              *registry_));
}

QWidget& ShotStage::subject()
{
    const auto settle = [] {
        for (int turn = 0; turn < kTurns; ++turn)
            QApplication::processEvents(QEventLoop::AllEvents, 50);
    };
    settle();
    // Voices are read beside the window, as soon as it shows them.
    const auto* voices = window_->findChild<WaveOutlines*>();
    while (voices && voices->isReading())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    settle();
    if (QWidget* menu = QApplication::activePopupWidget())
        return *menu;
    return subject_ ? *subject_ : *window_;
}

QImage ShotStage::picture()
{
    QWidget& shown = subject();
    QImage image(shown.size(), QImage::Format_RGB32);
    shown.render(&image);
    return image;
}
