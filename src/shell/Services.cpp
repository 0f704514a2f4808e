#include "shell/Services.h"

#include "content/ContentCatalog.h"
#include "content/ContentDownloadManager.h"
#include "content/ContentRoots.h"
#include "content/InstalledContentRegistry.h"
#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"

#include <QCoreApplication>
#include <QDir>

using namespace Qt::Literals::StringLiterals;

Services::Services(QObject* parent)
{
    const ContentRoots roots = ContentRoots::of(resourcesDir());
    instruments_ = std::make_unique<InstrumentLibrary>(roots.soundfonts(), parent);
    instruments_->loadBuiltinGmInstruments();
    loops_ = std::make_unique<LoopLibrary>(roots.loops(), instruments_.get(), parent);
    loops_->readAhead();
    registry_ = std::make_unique<InstalledContentRegistry>(roots, parent);
    registry_->load();
    catalog_ = std::make_unique<ContentCatalog>(ContentCatalog::urlFromEnvironment(), parent);

    player_ = std::make_unique<SoundfontPlayer>(SoundfontPlayer::Mode::Realtime, parent);
    hasBank_ = player_->loadGmBank(roots.gmBank());
    loops_->reload();
    engine_ =
        std::make_unique<PlaybackEngine>(player_.get(), loops_.get(), instruments_.get(), parent);
    downloads_ = std::make_unique<ContentDownloadManager>(catalog_.get(), registry_.get(),
                                                          loops_.get(), instruments_.get(), parent);
}

Services::~Services() = default;

QString Services::resourcesDir()
{
    const QString besideExecutable = QCoreApplication::applicationDirPath() + "/resources"_L1;
    if (QDir(besideExecutable).exists())
        return besideExecutable;
    return QDir::currentPath() + "/resources"_L1;
}

QString Services::bankPath()
{
    return ContentRoots::of(resourcesDir()).gmBank();
}
