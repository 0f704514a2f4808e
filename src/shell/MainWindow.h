#pragma once

#include <QMainWindow>

#include <memory>

class InstrumentLibrary;
class LoopLibrary;
class PlaybackEngine;
class Project;
class ProjectStorageProvider;
class SoundfontPlayer;

/// The one window. It owns every long-lived object and is the only place where they meet.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    /// The resources folder beside the executable, or else, unchecked, the one in the current
    /// folder.
    static QString resourcesDir();

    /// Puts a fresh work in place of the present one: one melody track on a piano.
    void startBlankProject();

    /// Opens a saved work, or says that it cannot be opened and leaves the present one alone.
    void openProject(const QString& id);

    /// As openProject(), for whoever knows no more of a work than its id.
    void openProjectById(const QString& id);

    const Project* project() const { return project_; }

    const InstrumentLibrary* instruments() const { return instruments_; }

    const LoopLibrary* loopLibrary() const { return loopLibrary_; }

private:
    /// Makes the present project the one that everybody works on.
    void adoptProject();

    /// Makes a project the present one in place of the former.
    void exchangeProject(Project* project, const QString& id);

    std::unique_ptr<ProjectStorageProvider> storage_;
    // In the order of construction. All have this window as their parent.
    InstrumentLibrary* instruments_;
    LoopLibrary* loopLibrary_;
    SoundfontPlayer* player_;
    PlaybackEngine* engine_;
    Project* project_ = nullptr;
    /// Storage id of the project; empty until it is saved for the first time.
    QString currentProjectId_;
};
