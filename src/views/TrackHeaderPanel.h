#pragma once

#include <QList>
#include <QString>
#include <QWidget>

class InstrumentLibrary;
class InstrumentSelector;
class Project;
class QCheckBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QToolButton;
struct AudioTrack;
struct HarmonyTrack;
struct Track;

/// The properties of the one track that is selected. It writes straight into the project and says
/// how deep the change goes. What is changed elsewhere shows at the next selection.
class TrackHeaderPanel : public QWidget {
    Q_OBJECT

public:
    /// The library is not owned and may be null.
    explicit TrackHeaderPanel(InstrumentLibrary* library, QWidget* parent = nullptr);
    ~TrackHeaderPanel() override;

    // Whoever changes the track that is shown takes the name that is being typed for it first.

    /// Shows no track yet. The project is not owned and may be null.
    void setProject(Project* project);

    /// An index of no track disables the panel.
    void showTrack(int index);
    void showAudioTrack(int index);

    /// Shows the lane of chords, which has a volume and can be muted.
    void showChords();

    /// Gives the track the name that is being typed, which is an edit; does nothing while nobody
    /// types. The field keeps the focus.
    void takeTypedName();

    /// Shows the track as it is now. A name that is being typed is given up.
    void refresh();

    /// Shows "Mute" and "Solo" as they are now, which lanes and undo change too. Nothing that is
    /// being typed or dragged is touched.
    void refreshSwitches();

signals:
    /// A finished edit of the song.
    void trackEdited();

    /// A change of the mix alone, which is no step of undo.
    void mixingChanged();

    /// Behind mixingChanged(): other tracks are heard now.
    void audibilityChanged();

private:
    void buildCommonRows();
    void nameParts();
    void buildNoteRows();
    void buildAudioRows();
    void connectCommonRows();
    void connectNoteRows();
    void connectAudioRows();

    /// The tracks in view: one of them, or none.
    const Track* track() const;
    const AudioTrack* audioTrack() const;
    const HarmonyTrack* chords() const;

    /// Let a function change the record in view. False where there is none, and while the
    /// controls are being filled.
    template <typename Edit>
    bool editTrack(Edit edit);
    template <typename Edit>
    bool editAudioTrack(Edit edit);
    template <typename Edit>
    bool editEither(Edit edit);
    /// For what chords have too.
    template <typename Edit>
    bool editAny(Edit edit);

    void showRows();
    void fillTrack(const Track& track);
    void fillAudioTrack(const AudioTrack& track);
    void fillChords(const HarmonyTrack& chords);
    template <typename AnyTrack>
    void fillCommonRows(const AnyTrack& track);
    template <typename AnyTrack>
    void fillSwitches(const AnyTrack& track);

    void showEither(int trackIndex, int audioTrackIndex, bool chords = false);
    void writeTypedName();
    void finishName();

    Project* project_ = nullptr;
    int trackIndex_ = -1;
    int audioTrackIndex_ = -1;
    bool showsChords_ = false;
    /// The controls are being filled: what they say is no edit.
    bool updating_ = false;
    /// A name is being typed for the track in view.
    bool typing_ = false;

    QFormLayout* form_;
    QLabel* chordsTitle_;
    QLineEdit* name_;
    InstrumentSelector* instrument_;
    QSlider* volume_;
    QToolButton* mute_;
    QToolButton* solo_;
    QCheckBox* humanize_;
    QSlider* humanizeIntensity_;
    QPushButton* vary_;
    QCheckBox* tune_;
    QSlider* tuneIntensity_;
    QList<QWidget*> noteRows_;
    QList<QWidget*> audioRows_;
};
