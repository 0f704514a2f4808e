#pragma once

#include "export/ExportProgress.h"
#include "model/Song.h"
#include "shell/Prompts.h"

#include <QMainWindow>

#include <functional>
#include <memory>
#include <optional>

class EditMenu;
class EditorPage;
class GridMenu;
class InstrumentLibrary;
class LoopBrowser;
class LoopLibrary;
class OpenWork;
class PianoRollCanvas;
class PlaybackEngine;
class Project;
class QAction;
class QMenu;
class Services;
class StatusLine;
class TrackArranger;
class TransportControls;
class VoiceRecording;
struct AudioClip;
struct KeySignature;
struct LoopBlock;
struct SongSheet;
struct TimeSignature;

/// The one window. It owns every long-lived object and is the only place where they meet: the
/// parts of the editor know the project but not one another.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// The prompts are not owned.
    explicit MainWindow(QWidget* parent = nullptr, Prompts& prompts = Prompts::dialogs());
    ~MainWindow() override;

    /// The resources folder beside the executable, or else, unchecked, the one in the current
    /// folder.
    static QString resourcesDir();

    // ---- The work as a whole ----

    /// Asks for the settings of a new work, and opens it.
    void newProject();

    /// Saves a new work with one melody track, and opens it. An empty name becomes "Mi canción".
    void createProject(const QString& name, const TimeSignature& timeSignature,
                       const KeySignature& key, int bpm);

    /// Puts a fresh work in place of the present one: one melody track on a piano, in no folder.
    void startBlankProject();

    /// Opens a saved work, or says that it cannot be opened and leaves the present one alone.
    void openProject(const QString& id);

    /// As openProject(), for whoever knows no more of a work than its id.
    void openProjectById(const QString& id);

    void openProjectDialog();

    /// Unpacks a work in one file as a new one, and opens it, in place of this one only with the
    /// user's leave. Says what rhythms it lacks here.
    void openWorkFile(const QString& path);

    /// As openProject(), for a work that takes the place of this one only with the user's leave.
    void openRecentProject(const QString& id);

    /// Saves the work, asking for its name if it is in no folder yet. True when it is on disk.
    bool saveCurrentProject();

    /// Saves the work under a name and an id of its own, and goes on with that. The former one
    /// stays as it was saved last.
    void saveAs();

    /// Saves the work, and goes on with a copy of it.
    void duplicateWork();

    /// Gives the work another name, in its file too. Its folder keeps its own.
    void renameWork();

    /// Exports the work itself with its voices, as one file to be carried elsewhere.
    void exportWork();

    void exportMidi();

    /// Exports as MP3 or as WAV.
    void exportAudio(bool mp3);

    /// Takes the size and the columns of the last window that was closed. False if there was none.
    bool restoreLayout();

    // ---- Edits ----

    void addTrack();

    /// Removes the track that is selected in the arranger; the last one too.
    void removeSelectedTrack();

    /// Lays a loop on the accompaniment track of its layer, which is made where there is none. A
    /// block with a negative start goes to the bar of the playhead, which goes on to its end unless
    /// the song plays. A loop that lies there already is refused.
    void handleLoopChosen(const LoopBlock& block, const QString& instrumentId,
                          const QString& trackName);

    /// Lays a loop of the library at a beat, or from the start of the song for a negative one. Does
    /// nothing for one that the library does not hold.
    void placeLoop(const QString& rhythmId, const QString& layerId, int section, int variantIndex,
                   double startBeat);

    /// Copies an audio file of the user's into the work's folder, as WAV, and lays it as a clip at
    /// the playhead.
    void importVoiceFile();

    /// Begins to record a voice, along with playback, or ends the take and lays it as a clip that
    /// ends at the playhead. A take that outlasted playback lies where it began.
    void toggleVoiceRecording();

    /// Asks, and then drops the take that is under way: nothing is kept of it.
    void cancelVoiceRecording();

    /// The one way of every finished edit: makes it undoable, visible and audible.
    void snapshotAndRefresh();

    /// Makes the project as it is now visible and audible.
    void showAndSound();

    void undo();
    void redo();

    // ---- What there is ----

    const Project* project() const;
    Project* project();
    const InstrumentLibrary* instruments() const;
    const LoopLibrary* loopLibrary() const;
    PlaybackEngine* engine() const;

    /// Storage id of the work; empty until it is saved for the first time.
    const QString& currentProjectId() const;

    /// Whether there is anything in the work that would be missed.
    bool projectHasContent() const;

    /// Whether another work may take the place of this one. Saves a work that has a file and was
    /// changed, and asks for any other with content, or where that save failed.
    bool confirmDiscardChanges();

protected:
    /// Saves a work that has a file and was changed, and asks where that fails or where there is
    /// content without a file.
    void closeEvent(QCloseEvent* event) override;

    /// Leaves the space bar to the control that has the focus, if it presses one.
    bool event(QEvent* event) override;

    void keyPressEvent(QKeyEvent* event) override;

    /// A work in one file may be dropped anywhere.
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void connectRibbon();
    void connectEditors();
    void connectWork();
    void connectVoice();
    void buildStatusLine();

    void buildMenus();
    void buildFileMenu();
    void buildViewMenu();
    void buildPlaybackMenu();
    void buildOwnMenu();
    void buildHelpMenu();
    QAction* makePlaybackAction();
    void showGuide();
    void showShortcuts();
    void showAbout();

    /// Makes the present project the one that everybody shows.
    void adoptProject();

    /// Makes a project the present one in place of the former.
    void exchangeProject(Project* project, const QString& id);
    void showProjectName();

    /// Follows what the song and its meter have become.
    void updateFromProject();
    void onThemeChanged(bool dark);
    void showWaiting(bool waiting);

    /// Puts a state that undo has kept in place of the present one.
    void restore(const Song& state);

    void setBpm(int bpm);
    void setMeter(const TimeSignature& meter);
    void setKey(int rootPitchClass, int mode);
    void setHarmonyMuted(bool muted);

    /// Makes an edit of what is under way, a name that is being typed or a drag.
    void finishGestures();

    // ---- Content ----

    void onLibraryChanged();

    /// Names in the status bar what content the library has refused, each of it once.
    void nameRefusedContent();

    /// Says why a block is not laid: one like it lies in its place.
    void tellAlreadyThere(const QString& block);

    /// Puts the playhead behind a block, so that the next one goes there.
    void goOnBehind(const LoopBlock& block);

    /// Undo and redo take the playhead along where placing a loop has moved it. `former` is the
    /// work as it was before them.
    void takePlayheadBack(const Song& former);
    void takePlayheadOn(const Song& former);

    // ---- Voices ----

    /// Ends a take too.
    void stopPlayback();

    /// Shows in the ribbon, in the editors and in the status bar whether a voice is recorded.
    void showRecording();

    /// Adds a clip to the work as a finished edit.
    void layClip(const AudioClip& clip);

    // ---- Works ----

    static QString workFileFilter();

    /// A work in one file of the user's choice.
    std::optional<QString> askWorkFile();

    /// As openWorkFile(), with the user's leave.
    void takeWorkFile(const QString& path);

    /// What a rhythm is called, here or on the content server; its id where nobody knows.
    QString rhythmName(const QString& id) const;

    /// Names the rhythms that the work uses and this computer lacks, and leads to where they are.
    void offerMissingRhythms();

    /// A name for the work, or nothing when the user gave up.
    std::optional<QString> askName(const QString& title);

    /// Says that the work is on disk.
    void tellSaved();

    /// Goes on with a copy of the work, or says that it cannot be saved.
    bool goOnInCopy(const QString& name);

    /// Gives a work that is in no folder a name and an id. False when the user gave up.
    bool nameForFirstSave();
    bool mayClose();

    /// Has the next start look as this window does now.
    void keepLayout() const;

    /// Asks what to do about a file that somebody else has changed: the work gets an id of its own,
    /// or takes the file's place. False when the user gave up.
    bool saveOverOthers();

    /// Offers what programs that are gone have left unsaved.
    void findAbandoned();

    /// Puts the work that is offered in place of the present one.
    void recover();

    // ---- Exports ----

    /// What one file format is to the user, and how it is written.
    struct ExportKind {
        /// Of the file dialog and of the progress.
        QString title;
        /// With its dot.
        QString suffix;
        QString filter;
        QString failureTitle;
        std::function<bool(const QString& path, QString* error, const ExportProgress& progress)>
            write;
    };

    /// Asks for a file and exports to it. Nothing plays and nothing can be edited meanwhile.
    void exportFile(const ExportKind& kind);

    /// Shows the sheet of the song, to be printed or saved.
    void printSheet();

    /// Asks for a file and writes the sheet to it: true where it is there.
    bool saveSheet(const SongSheet& sheet, QWidget* over);

    Prompts& prompts_;
    /// Refused content that the status bar has named.
    QStringList namedContent_;

    // What the window is made of. The last goes first: sound devices run the event loop as they go,
    // while there still is a window for its events, and the page before QWidget's own end, which
    // takes the focus from a field that would tell of it.
    std::unique_ptr<EditorPage> page_;
    std::unique_ptr<Services> services_;
    std::unique_ptr<OpenWork> work_;
    std::unique_ptr<VoiceRecording> voice_;

    // The parts of the page that commands act on.
    TransportControls* ribbon_ = nullptr;
    LoopBrowser* loopBrowser_ = nullptr;
    PianoRollCanvas* pianoRoll_ = nullptr;
    TrackArranger* arranger_ = nullptr;

    StatusLine* statusLine_ = nullptr;
    EditMenu* editMenu_ = nullptr;
    GridMenu* gridMenu_ = nullptr;
};
