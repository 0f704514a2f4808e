#pragma once

#include <QString>

#include <memory>

class ContentCatalog;
class ContentDownloadManager;
class InstalledContentRegistry;
class InstrumentLibrary;
class LoopLibrary;
class PlaybackEngine;
class QObject;
class SoundfontPlayer;

/// What a window has to play and to lay, and what plays it: everything that lives as long as the
/// window and shows nothing.
class Services {
public:
    /// Everything here gets `parent`, and is gone before it with this.
    explicit Services(QObject* parent);
    ~Services();
    Services(const Services&) = delete;
    Services& operator=(const Services&) = delete;

    /// The resources folder beside the executable, or else, unchecked, the one in the current
    /// folder.
    static QString resourcesDir();

    /// Where the General MIDI bank is looked for.
    static QString bankPath();

    InstrumentLibrary* instruments() const { return instruments_.get(); }

    LoopLibrary* loops() const { return loops_.get(); }

    InstalledContentRegistry* registry() const { return registry_.get(); }

    ContentCatalog* catalog() const { return catalog_.get(); }

    ContentDownloadManager* downloads() const { return downloads_.get(); }

    SoundfontPlayer* player() const { return player_.get(); }

    PlaybackEngine* engine() const { return engine_.get(); }

    /// There is something to play with.
    bool hasBank() const { return hasBank_; }

private:
    // Each stands behind all that it uses, and goes before them.
    std::unique_ptr<InstrumentLibrary> instruments_;
    std::unique_ptr<LoopLibrary> loops_;
    std::unique_ptr<InstalledContentRegistry> registry_;
    std::unique_ptr<ContentCatalog> catalog_;
    std::unique_ptr<SoundfontPlayer> player_;
    bool hasBank_ = false;
    std::unique_ptr<PlaybackEngine> engine_;
    std::unique_ptr<ContentDownloadManager> downloads_;
};
