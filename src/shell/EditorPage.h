#pragma once

#include <QList>
#include <QWidget>

class CommandedEditor;
class EditorFocus;
class FirstSteps;
class LoopBrowser;
class PianoRollCanvas;
class Project;
class RecoveryBar;
class Services;
class TrackArranger;
class TrackHeaderPanel;
class TransportControls;

/// What fills the window: the ribbon above, the editors on the left, and on the right the loops and
/// the track that is selected. The parts do not know one another: what is selected in one of them
/// is shown in the others from here.
class EditorPage : public QWidget {
    Q_OBJECT

public:
    /// The services are not owned.
    EditorPage(const Services& services, QWidget* parent);

    TransportControls* ribbon() const { return ribbon_; }

    LoopBrowser* browser() const { return browser_; }

    PianoRollCanvas* roll() const { return roll_; }

    TrackArranger* arranger() const { return arranger_; }

    TrackHeaderPanel* trackPanel() const { return trackPanel_; }

    RecoveryBar* recoveryBar() const { return recoveryBar_; }

    /// The editor that has the keys, or had them last.
    CommandedEditor& keyEditor() const;

    /// Shows a work, which is not owned, from its first track on, and gives the keys to its notes.
    void setProject(Project* project);

    /// An empty work says how it begins.
    void setEmpty(bool empty);

    /// Has the panel show the track that is selected, if it still is there.
    void showSelectedTrack();

    /// Makes an edit of what is under way, a name that is being typed or a drag: neither keys nor
    /// the ribbon take the focus away, and a dialog takes the release of the mouse.
    void finishGestures();

    /// Shows in the ribbon and in the editors whether a voice is recorded.
    void showRecording(bool recording);

    void zoomIn();
    void zoomOut();

    /// Gives the keys to the next of the areas, or the one before it for -1.
    void changeArea(int step);

private:
    QWidget* buildEditors(QWidget* parent);
    QWidget* buildSidePanel(QWidget* parent);
    void buildFirstSteps();
    void connectParts();

    /// Shows what is selected in the arranger wherever else a selection shows.
    void syncSelectionToViews();
    void openMelodyBlock(int track, int block);

    /// Has the editors follow the playhead, in this window and in those to come, or not.
    void setFollowing(bool on);

    const Services& services_;
    TransportControls* ribbon_;
    RecoveryBar* recoveryBar_ = nullptr;
    PianoRollCanvas* roll_ = nullptr;
    TrackArranger* arranger_ = nullptr;
    LoopBrowser* browser_ = nullptr;
    TrackHeaderPanel* trackPanel_ = nullptr;
    EditorFocus* editorFocus_ = nullptr;
    /// Over the roll and over the arranger.
    QList<FirstSteps*> firstSteps_;
};
