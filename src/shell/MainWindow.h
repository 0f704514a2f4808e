#pragma once

#include "export/ExportProgress.h"
#include "model/Song.h"
#include "shell/Prompts.h"

#include <QMainWindow>

#include <functional>
#include <memory>
#include <optional>

class AudioRecorder;
class ContentCatalog;
class ContentDownloadManager;
class CountIn;
class EditorFocus;
class FirstSteps;
class CommandedEditor;
class InstalledContentRegistry;
class InstrumentLibrary;
class LoopBrowser;
class LoopLibrary;
class PianoRollCanvas;
class PlaybackEngine;
class Project;
class ProjectStorageProvider;
class QLabel;
class QMenu;
class QPushButton;
class QStackedWidget;
class QTimer;
class RecoveryBar;
class RecoveryCopy;
class SoundfontPlayer;
class TrackArranger;
class TrackHeaderPanel;
class TransportControls;
class UndoStack;
class VoiceTake;
struct AudioClip;
struct KeptWork;
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

    const Project* project() const { return project_; }

    Project* project() { return project_; }

    const InstrumentLibrary* instruments() const { return instruments_; }

    const LoopLibrary* loopLibrary() const { return loopLibrary_; }

    PlaybackEngine* engine() const { return engine_; }

    const QString& currentProjectId() const { return currentProjectId_; }

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
    /// Where the General MIDI bank is looked for.
    static QString bankPath();

    void createServices();
    QWidget* buildEditorView(QWidget* parent);
    QWidget* buildEditors(QWidget* parent);
    QWidget* buildSidePanel(QWidget* parent);
    void connectTransport();
    void connectPianoRoll();
    void connectArranger();
    void buildMenus();
    void buildFileMenu();
    void fillRecentMenu();
    void buildEditMenu();
    void addEditCommands(QMenu* menu);

    /// The one that has the keys, or had them last.
    CommandedEditor& keyEditor() const;
    void buildViewMenu();
    void buildPlaybackMenu();
    void buildOwnMenu();
    void buildHelpMenu();
    QAction* makePlaybackAction();
    void showGuide();
    void showShortcuts();
    void showAbout();

    /// Gives the keys to the next of the window's areas, or the one before it for -1.
    void changeArea(int step);
    void buildStatusBar();

    /// Ends a take too.
    void stopPlayback();

    /// The hint gives way to messages and to a take.
    void updateHint();

    /// Says for as long as the window lives that there is nothing to play with, and what helps.
    void addMissingBankMark();

    /// Makes the present project the one that everybody works on.
    void adoptProject();

    /// Has the views show the project from its first track on.
    void showFirstTrack();

    /// Makes a project the present one in place of the former.
    void exchangeProject(Project* project, const QString& id);

    /// Shows what is selected in the arranger wherever else a selection shows.
    void syncSelectionToViews();

    /// Has the panel show the track that is selected in the arranger, if it still is there.
    void showSelectedTrack();

    void openMelodyBlock(int track, int block);
    void showProjectName();

    /// An empty work says how it begins.
    void showFirstSteps();
    void updateSubdivisionMenu();
    void updateThemeButton(bool dark);
    void updateTitleBar(bool dark);
    void onThemeChanged(bool dark);
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

    /// Begins to sing at once, or counts a bar first where the user has set that and the song
    /// stands still: one that plays counts by itself.
    void startTake();

    /// The microphone is open, and what comes from now on is the take.
    void beginTake();

    /// Ends a count before its take has begun; nothing is left of either.
    void cancelCountIn();

    bool isSinging() const;

    /// Says in the status bar what is under way.
    void tellTake();

    /// Shows in the ribbon, in the editors and in the status bar whether a voice is recorded.
    void showRecording(bool recording);

    /// Ends the take, if there is one, into the work that it belongs to: the present one, as no
    /// other is opened during a take.
    void finishTake();

    /// Offers another place for a take that found no room in its file, until one takes it or the
    /// user gives it up. The path, which is empty for a take that is given up.
    QString rescueTake(const QString& file, double* seconds);

    /// Ends a take that was under way with what came by then.
    void onRecordingFailed(const QString& message);

    /// Where the clips of the work lie: in its folder, or among the works until its first save.
    QString clipsFolder() const;

    /// Has the clips lie in the work's folder, which it may have got since they came. False if that
    /// takes a copy that cannot be made.
    bool bringClipsHome();
    QStringList namesOfClips() const;
    void renameClips(const QHash<QString, QString>& names);

    /// Adds a clip to a work, which is the present one, as a finished edit.
    void layClip(Project& work, const AudioClip& clip);
    void zoomIn();
    void zoomOut();

    /// Has the editors follow the playhead, in this window and in those to come, or not.
    void setFollowing(bool on);
    void restoreFollowing();
    void showWaiting(bool waiting);

    /// Puts a state that undo has kept in place of the present one.
    void restore(const Song& state);

    void setBpm(int bpm);
    void setMeter(const TimeSignature& meter);
    void setKey(int rootPitchClass, int mode);
    void setHarmonyMuted(bool muted);

    /// Makes an edit of what is under way, a name that is being typed or a drag: neither keys nor
    /// the ribbon take the focus away, and a dialog takes the release of the mouse.
    void finishGestures();

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

    /// Saves the work as another one, with copies of its clips, and goes on with that. False, with
    /// nothing changed and nothing left behind, where it cannot be saved.
    bool goOnInCopy(const QString& name);

    /// Gives a work that is in no folder a name and an id. False when the user gave up.
    bool nameForFirstSave();

    /// Whether the work has a file on disk, as far as anybody can see.
    bool hasFile() const;

    /// Whether anything would be lost with the work as it stands here.
    bool hasUnsavedWork() const;

    /// Marks the title for as long as anything would be lost.
    void showUnsaved();

    /// Takes the work as it is now for what its file holds.
    void markSaved();

    bool mayClose();

    /// Has the next start look as this window does now.
    void keepLayout() const;

    /// Asks what to do about a file that somebody else has changed: the work gets an id of its own,
    /// or takes the file's place. False when the user gave up.
    bool saveOverOthers();

    void createRecovery();

    /// Has the work kept outside its folder within two seconds.
    void keepSoon();
    void keepCopy();
    KeptWork presentWork() const;

    /// Offers what programs that are gone have left unsaved.
    void findAbandoned();

    /// Puts the work that is offered in place of the present one.
    void recover();

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
    std::unique_ptr<ProjectStorageProvider> storage_;
    // In the order of construction. All have this window as their parent.
    InstrumentLibrary* instruments_ = nullptr;
    LoopLibrary* loopLibrary_ = nullptr;
    InstalledContentRegistry* registry_ = nullptr;
    ContentCatalog* catalog_ = nullptr;
    ContentDownloadManager* downloads_ = nullptr;
    SoundfontPlayer* player_ = nullptr;
    /// There is something to play with.
    bool hasBank_ = false;
    PlaybackEngine* engine_ = nullptr;
    AudioRecorder* recorder_ = nullptr;
    UndoStack* undoStack_ = nullptr;
    Project* project_ = nullptr;
    /// Storage id of the project; empty until it is saved for the first time.
    QString currentProjectId_;
    /// Refused content that the status bar has named.
    QStringList namedContent_;
    /// The work as it was read or saved; nothing for one that its file does not hold.
    std::optional<Song> saved_;
    std::unique_ptr<RecoveryCopy> copy_;
    QTimer* keepTimer_ = nullptr;
    /// Null while nobody sings.
    std::unique_ptr<VoiceTake> take_;
    CountIn* countIn_ = nullptr;
    QAction* countInAction_ = nullptr;

    QStackedWidget* stackedWidget_ = nullptr;
    RecoveryBar* recoveryBar_ = nullptr;
    TransportControls* transport_ = nullptr;
    LoopBrowser* loopBrowser_ = nullptr;
    PianoRollCanvas* pianoRoll_ = nullptr;
    TrackArranger* arranger_ = nullptr;
    TrackHeaderPanel* headerPanel_ = nullptr;
    EditorFocus* editorFocus_ = nullptr;
    QAction* undoAction_ = nullptr;
    QAction* redoAction_ = nullptr;
    QMenu* recentMenu_ = nullptr;
    QMenu* subdivisionMenu_ = nullptr;
    QLabel* hint_ = nullptr;
    /// Over the roll and over the arranger.
    QList<FirstSteps*> firstSteps_;
    /// In the place of the hint during a take.
    QLabel* takeNotice_ = nullptr;
    QPushButton* themeButton_ = nullptr;
};
