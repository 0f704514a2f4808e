#pragma once

#include "shell/Prompts.h"

#include <QImage>
#include <QSize>

#include <memory>

class ContentCatalog;
class ContentDownloadManager;
class InstalledContentRegistry;
class MainWindow;
class PianoRollCanvas;
class TrackArranger;

/// A window to be painted, with a work of its own, in the home that the process has been given. Two
/// stages that are told the same look alike: nothing in them is random, and no clock is shown.
class ShotStage {
public:
    /// Once for the process, before the first stage: one font, one style, one locale, no caret that
    /// blinks.
    static void prepareApplication();

    explicit ShotStage(bool dark);
    ~ShotStage();
    ShotStage(const ShotStage&) = delete;
    ShotStage& operator=(const ShotStage&) = delete;

    MainWindow& window() { return *window_; }

    TrackArranger& arranger();
    PianoRollCanvas& roll();

    // ---- What is there ----

    /// Opens the song of the pictures: chords, two melodies, two loops of the first rhythm in 4/4
    /// of the library, and a voice.
    void openSong();

    /// Saves works that the dialogs list, last changed at fixed times.
    void saveWorks();

    /// Leaves a work behind as a program does that was killed, and opens the window anew.
    void abandonWork();

    /// The window as it is while a voice is recorded, and while the song plays.
    void lookRecording();
    void lookPlaying();

    // ---- What is shown ----

    /// Paints this instead of the window. Dialogs are shown over it.
    void show(std::unique_ptr<QWidget> subject);

    /// As show(), for a menu of the window's menu bar.
    void showMenu(const QString& title);

    void showOpenDialog();
    void showOnlineDialog();

    /// What is to be painted, as large as it likes to be, with all its layouts done.
    QWidget& subject();

    /// The subject, a pixel for each of its units whatever the screen's scale.
    QImage picture();

private:
    void makeWindow();

    Prompts prompts_;
    // In the order of their lives: dialogs know services and the window.
    std::unique_ptr<MainWindow> window_;
    std::unique_ptr<ContentCatalog> catalog_;
    std::unique_ptr<InstalledContentRegistry> registry_;
    std::unique_ptr<ContentDownloadManager> downloads_;
    std::unique_ptr<QWidget> subject_;
};
