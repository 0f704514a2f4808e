#pragma once

#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "shell/MainWindow.h"
#include "shell/TransportControls.h"
#include "storage/LocalStorageProvider.h"
#include "support/Files.h"
#include "support/ScriptedPrompts.h"
#include "support/UserHome.h"
#include "support/Widgets.h"

#include <QJsonDocument>
#include <QStackedWidget>
#include <QStatusBar>

#include <memory>

/// A window of a user of its own, with a small bank to play with, whose questions a test answers
/// ahead.
class WindowStage {
public:
    WindowStage() { home_.installBank(); }

    UserHome& home() { return home_; }

    ScriptedPrompts& prompts() { return prompts_; }

    /// Made on first use.
    MainWindow& window()
    {
        if (!window_)
            window_ = std::make_unique<MainWindow>(nullptr, prompts_);
        return *window_;
    }

    bool showWindow()
    {
        window().show();
        return QTest::qWaitForWindowActive(window_.get());
    }

    void destroyWindow() { window_.reset(); }

    Project& song() { return *window().project(); }

    PlaybackEngine& engine() { return *window().engine(); }

    TransportControls& ribbon() { return *window().findChild<TransportControls*>(); }

    QStackedWidget& pages() { return *window().findChild<QStackedWidget*>(); }

    QString message() { return window().statusBar()->currentMessage(); }

    // ---- What a user does ----

    void choose(const QString& entry) { Widgets::entry(window(), entry)->trigger(); }

    /// A card of the ribbon by its name, which it keeps while a clock stands under it.
    QToolButton* card(const QString& name)
    {
        for (auto* button : ribbon().findChildren<QToolButton*>()) {
            if (button->accessibleName() == name)
                return button;
        }
        return nullptr;
    }

    void clickRibbon(const QString& name) { Widgets::click(card(name)); }

    bool canUndo() { return Widgets::entry(window(), "Deshacer")->isEnabled(); }

    bool canRedo() { return Widgets::entry(window(), "Rehacer")->isEnabled(); }

    /// Saves the present work for the first time.
    bool saveAs(const QString& name)
    {
        prompts_.answerText(name);
        const bool saved = window().saveCurrentProject();
        prompts_.takeCalls();
        return saved;
    }

    /// Shows the window and closes it; false if it stays open.
    bool close()
    {
        window().show();
        return window().close();
    }

    // ---- Works ----

    /// Puts a work on the disk, where the window finds it.
    bool saveWork(const QString& id, const Project& work)
    {
        return LocalStorageProvider(QString()).saveProject(id, work);
    }

    QStringList savedIds() const
    {
        return QDir(home_.works()).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    }

    /// What project.json of a work holds.
    QJsonObject savedWork(const QString& id) const
    {
        return QJsonDocument::fromJson(bytesOf(home_.projectFile(id))).object();
    }

    /// Puts a file where the folder of the works was, so that nothing can be saved.
    void blockWorks() const
    {
        QDir(home_.works()).removeRecursively();
        writeBytes(home_.works(), "in the way");
    }

    void unblockWorks() const { QFile::remove(home_.works()); }

    /// Projects that the window still keeps, once those that it has given up are gone.
    qsizetype keptProjects()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return window().findChildren<Project*>(QString(), Qt::FindDirectChildrenOnly).size();
    }

private:
    UserHome home_;
    ScriptedPrompts prompts_;
    std::unique_ptr<MainWindow> window_;
};
