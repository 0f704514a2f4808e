#pragma once

#include "model/GridSubdivision.h"
#include "music/TimeSignature.h"

#include <QHash>
#include <QPointer>
#include <QWidget>

class PlaybackEngine;
class Project;
class QAction;
class QComboBox;
class QKeySequence;
class QLabel;
class QSpinBox;
class QToolButton;
class RibbonGroup;
class TakeSign;

/// The ribbon: transport, tempo and key, and the actions on the work, its tracks and its voice. It
/// plays by itself; everything else it only asks for. It outlives projects.
class TransportControls : public QWidget {
    Q_OBJECT

public:
    /// The buttons that entries of the menus have in common with the ribbon.
    enum class Card {
        Play,
        Stop,
        Repeat,
        Metronome,
        Record,
        Import,
        AddTrack,
        RemoveTrack,
        ExportMp3,
        ExportWav,
        ExportMidi,
        ZoomIn,
        ZoomOut,
        Follow
    };
    Q_ENUM(Card)

    /// The engine is not owned; without one the transport does nothing.
    explicit TransportControls(PlaybackEngine* engine, QWidget* parent = nullptr);

    /// Shows a project, which is not owned and may be null, and follows its changes.
    void setProject(Project* project);

    /// Takes every control from the project. No edit is announced.
    void updateFromProject();

    /// Plays, or pauses, with the numbers of bars that are being typed.
    void togglePlayback();

    /// Has the tool tip of a button say which keys do the same.
    void tellShortcut(Card card, const QKeySequence& keys);

    /// Makes an entry of a menu another switch for Repeat, Metronome or Follow: both are on or both
    /// off.
    void bindSwitch(Card card, QAction* action);

    /// What the grid shall mark, as if it were chosen in the ribbon.
    void chooseSubdivision(GridSubdivisionLevel level);

    GridSubdivisionLevel subdivision() const;

    /// Whether the views shall follow the playhead. Announced as if the user had switched it.
    void setFollowing(bool on);

    /// Shows that a voice is being recorded, and for how long, or that no voice is.
    void showRecording(bool recording);

    /// Shows a click of those that count the voice in, from 1, in the place of the time.
    void showCount(int click);

    /// Shows how loud the microphone is, 0 to 1.
    void showLevel(float peak);

    /// Offers a setting in the menu of a button's right click. It is not owned.
    void addSetting(Card card, QAction* setting);

signals:
    void saveRequested();
    void newProjectRequested();
    void openProjectRequested();
    void addTrackRequested();
    void removeTrackRequested();
    /// Before playback is stopped from here.
    void stopRequested();

    void recordVoiceRequested();

    /// The take that is under way is to be dropped.
    void cancelVoiceRequested();

    void importVoiceRequested();
    void exportMp3Requested();
    void exportWavRequested();
    void exportMidiRequested();
    void zoomInRequested();
    void zoomOutRequested();

    /// The views shall follow the playhead, or no more.
    void followToggled(bool on);

    /// Quarter notes per minute.
    void bpmEdited(int bpm);

    void meterEdited(const TimeSignature& meter);

    void harmonyMuteToggled(bool muted);

    /// `mode` is 0 for Major and 1 for Minor.
    void keySignatureEdited(int rootPitchClass, int mode);

    void subdivisionChanged(GridSubdivisionLevel level);

private:
    RibbonGroup* projectGroup();
    RibbonGroup* playbackGroup();
    RibbonGroup* keyGroup();
    RibbonGroup* tracksGroup();
    RibbonGroup* voiceGroup();
    RibbonGroup* exportGroup();
    RibbonGroup* viewGroup();
    void connectEngine();
    void connectEdits();

    void followProject();
    void finishTyping();
    QToolButton* addCard(Card card, RibbonGroup* group, const QString& face, const QString& caption,
                         const QString& tooltip, bool checkable = false);
    void applyRepeatRange();
    void emitKeyEdit();
    void updateSubdivisionLabels();
    void updatePlayhead(double beat);
    void showPlaying(bool playing);

    PlaybackEngine* engine_;
    QPointer<Project> project_;
    QHash<Card, QToolButton*> cards_;
    QToolButton* play_ = nullptr;
    QToolButton* stop_ = nullptr;
    QToolButton* repeat_ = nullptr;
    QSpinBox* firstBar_ = nullptr;
    QSpinBox* lastBar_ = nullptr;
    QToolButton* metronome_ = nullptr;
    QLabel* position_ = nullptr;
    QSpinBox* bpm_ = nullptr;
    /// The meters that can be chosen, and behind them that of the work where it is another.
    QComboBox* meter_ = nullptr;
    QComboBox* key_ = nullptr;
    QComboBox* mode_ = nullptr;
    QToolButton* chords_ = nullptr;
    TakeSign* takeSign_ = nullptr;
    QComboBox* grid_ = nullptr;
    /// Beats of the bars that the repeat range was last made of.
    double repeatedBeatsPerBar_ = 0.0;
    /// Set while controls change by the program's own hand.
    bool updatingFromProject_ = false;
};
