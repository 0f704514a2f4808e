#include "views/TrackHeaderPanel.h"

#include "model/Project.h"
#include "shell/controls/InstrumentSelector.h"
#include "shell/controls/WheelGuard.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRandomGenerator>
#include <QScopedValueRollback>
#include <QSlider>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kRoomAround = 8;
constexpr int kPercent = 100;

/// Pixels above and below the words beside a tall field.
constexpr int kLabelPadding = 3;

QSlider* percentSlider()
{
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setRange(0, kPercent);
    return slider;
}

QToolButton* switchButton(const QString& text)
{
    auto* button = new QToolButton;
    button->setText(text);
    button->setCheckable(true);
    return button;
}

QLabel* title(const QString& text)
{
    auto* label = new QLabel(text);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

void addTallField(QFormLayout* form, const QString& text, QWidget* field)
{
    form->addRow(text, field);
    // A form gives a label no more than 7/4 of its own height, which would hold it above the
    // middle of the field.
    form->labelForField(field)->setContentsMargins(0, kLabelPadding, 0, kLabelPadding);
}

int percentOf(float level)
{
    if (std::isnan(level))
        return 0;
    return static_cast<int>(std::clamp(level * kPercent, 0.0F, float{kPercent}));
}

float levelOf(int percent)
{
    return static_cast<float>(percent) / kPercent;
}

} // namespace

TrackHeaderPanel::TrackHeaderPanel(InstrumentLibrary* library, QWidget* parent)
    : QWidget(parent), form_(new QFormLayout(this)), chordsTitle_(title(tr("Acordes"))),
      name_(new QLineEdit), instrument_(new InstrumentSelector(library)), volume_(percentSlider()),
      mute_(switchButton(tr("Mute"))), solo_(switchButton(tr("Solo"))),
      humanize_(new QCheckBox(tr("Activado"))), humanizeIntensity_(percentSlider()),
      vary_(new QPushButton(tr("Probar otra variación"))), tune_(new QCheckBox(tr("Activado"))),
      tuneIntensity_(percentSlider())
{
    form_->setContentsMargins(kRoomAround, kRoomAround, kRoomAround, kRoomAround);
    buildCommonRows();
    buildNoteRows();
    buildAudioRows();
    connectCommonRows();
    connectNoteRows();
    connectAudioRows();
    WheelGuard::guardAllIn(*this);
    nameParts();
    refresh();
}

TrackHeaderPanel::~TrackHeaderPanel()
{
    // A field that has the focus finishes its editing as its window goes.
    name_->disconnect(this);
}

void TrackHeaderPanel::buildCommonRows()
{
    form_->addRow(chordsTitle_);
    addTallField(form_, tr("Nombre"), name_);
    addTallField(form_, tr("Instrumento"), instrument_);
    form_->addRow(tr("Volumen"), volume_);
    auto* switches = new QHBoxLayout;
    switches->addWidget(mute_);
    switches->addWidget(solo_);
    switches->addStretch();
    form_->addRow(QString(), switches);
}

/// Captions that stand twice are told apart by their headings, which only the eye sees over them.
void TrackHeaderPanel::nameParts()
{
    setAccessibleName(tr("Propiedades de la velta"));
    humanize_->setAccessibleName(tr("Humanizador"));
    humanizeIntensity_->setAccessibleName(humanizeIntensity_->toolTip());
    tune_->setAccessibleName(tr("Afinar voz"));
    tuneIntensity_->setAccessibleName(tuneIntensity_->toolTip());
}

void TrackHeaderPanel::buildNoteRows()
{
    auto* heading = title(tr("Humanizador"));
    humanizeIntensity_->setToolTip(tr("Intensidad de la variación"));
    form_->addRow(heading);
    form_->addRow(QString(), humanize_);
    form_->addRow(tr("Intensidad"), humanizeIntensity_);
    form_->addRow(vary_);
    noteRows_ = {instrument_, heading, humanize_, humanizeIntensity_, vary_};
}

void TrackHeaderPanel::buildAudioRows()
{
    auto* heading = title(tr("Afinar voz"));
    tuneIntensity_->setToolTip(tr("Cuánto se corrige la afinación"));
    // Every value is a step of undo and a new mix of the voices: one for each drag will do.
    tuneIntensity_->setTracking(false);
    form_->addRow(heading);
    form_->addRow(QString(), tune_);
    form_->addRow(tr("Intensidad"), tuneIntensity_);
    audioRows_ = {heading, tune_, tuneIntensity_};
}

void TrackHeaderPanel::connectCommonRows()
{
    connect(name_, &QLineEdit::textChanged, this, [this] { typing_ = !updating_; });
    connect(name_, &QLineEdit::editingFinished, this, &TrackHeaderPanel::finishName);
    connect(volume_, &QSlider::valueChanged, this, [this](int percent) {
        if (editAny([&](auto& track) { track.volume = levelOf(percent); }))
            emit mixingChanged();
    });
    const auto connectSwitch = [this](QToolButton* button, auto setOn) {
        connect(button, &QToolButton::toggled, this, [this, setOn](bool on) {
            if (!setOn(on))
                return;
            emit mixingChanged();
            emit audibilityChanged();
        });
    };
    connectSwitch(mute_,
                  [this](bool on) { return editAny([on](auto& track) { track.muted = on; }); });
    connectSwitch(solo_,
                  [this](bool on) { return editEither([on](auto& track) { track.solo = on; }); });
}

void TrackHeaderPanel::connectNoteRows()
{
    connect(instrument_, &InstrumentSelector::instrumentSelected, this, [this](const QString& id) {
        if (editTrack([&](Track& track) { track.instrumentId = id; }))
            emit trackEdited();
    });
    connect(humanize_, &QCheckBox::toggled, this, [this](bool on) {
        if (editTrack([&](Track& track) { track.humanize.enabled = on; }))
            emit trackEdited();
    });
    connect(humanizeIntensity_, &QSlider::valueChanged, this, [this](int percent) {
        if (editTrack([&](Track& track) { track.humanize.intensity = levelOf(percent); }))
            emit mixingChanged();
    });
    connect(vary_, &QPushButton::clicked, this, [this] {
        const quint32 seed = QRandomGenerator::global()->generate();
        if (editTrack([&](Track& track) { track.humanize.seed = seed; }))
            emit trackEdited();
    });
}

void TrackHeaderPanel::connectAudioRows()
{
    const auto tuneClips = [this](auto edit) {
        const bool edited = editAudioTrack([&](AudioTrack& track) {
            for (AudioClip& clip : track.clips)
                edit(clip.tune);
        });
        if (edited)
            emit trackEdited();
    };
    connect(tune_, &QCheckBox::toggled, this, [tuneClips](bool on) {
        tuneClips([&](VoiceTuneSettings& tune) { tune.enabled = on; });
    });
    connect(tuneIntensity_, &QSlider::valueChanged, this, [tuneClips](int percent) {
        tuneClips([&](VoiceTuneSettings& tune) { tune.intensity = levelOf(percent); });
    });
}

// ---- The record in view --------------------------------------------------------------------

const Track* TrackHeaderPanel::track() const
{
    if (!project_ || trackIndex_ < 0 || trackIndex_ >= project_->tracks.size())
        return nullptr;
    return &project_->tracks.at(trackIndex_);
}

const AudioTrack* TrackHeaderPanel::audioTrack() const
{
    if (!project_ || audioTrackIndex_ < 0 || audioTrackIndex_ >= project_->audioTracks.size())
        return nullptr;
    return &project_->audioTracks.at(audioTrackIndex_);
}

const HarmonyTrack* TrackHeaderPanel::chords() const
{
    return project_ && showsChords_ ? &project_->harmonyTrack : nullptr;
}

template <typename Edit>
bool TrackHeaderPanel::editTrack(Edit edit)
{
    if (updating_ || !track())
        return false;
    edit(project_->tracks[trackIndex_]);
    return true;
}

template <typename Edit>
bool TrackHeaderPanel::editAudioTrack(Edit edit)
{
    if (updating_ || !audioTrack())
        return false;
    edit(project_->audioTracks[audioTrackIndex_]);
    return true;
}

template <typename Edit>
bool TrackHeaderPanel::editEither(Edit edit)
{
    return editTrack(edit) || editAudioTrack(edit);
}

template <typename Edit>
bool TrackHeaderPanel::editAny(Edit edit)
{
    if (editEither(edit))
        return true;
    if (updating_ || !chords())
        return false;
    edit(project_->harmonyTrack);
    return true;
}

void TrackHeaderPanel::setProject(Project* project)
{
    takeTypedName();
    project_ = project;
    showEither(-1, -1);
}

void TrackHeaderPanel::showTrack(int index)
{
    takeTypedName();
    showEither(index, -1);
}

void TrackHeaderPanel::showAudioTrack(int index)
{
    takeTypedName();
    showEither(-1, index);
}

void TrackHeaderPanel::showChords()
{
    takeTypedName();
    showEither(-1, -1, true);
}

void TrackHeaderPanel::showEither(int trackIndex, int audioTrackIndex, bool chords)
{
    showsChords_ = chords;
    trackIndex_ = trackIndex;
    audioTrackIndex_ = audioTrackIndex;
    refresh();
}

// ---- Filling -------------------------------------------------------------------------------

void TrackHeaderPanel::refresh()
{
    // From the first step on: a field that is disabled under the cursor finishes its editing.
    const QScopedValueRollback guard(updating_, true);
    showRows();
    if (track())
        fillTrack(*track());
    else if (audioTrack())
        fillAudioTrack(*audioTrack());
    else if (chords())
        fillChords(*chords());
    else
        fillCommonRows(AudioTrack());
}

void TrackHeaderPanel::showRows()
{
    setEnabled(track() || audioTrack() || chords());
    form_->setRowVisible(chordsTitle_, chords() != nullptr);
    form_->setRowVisible(name_, chords() == nullptr);
    solo_->setVisible(chords() == nullptr);
    for (QWidget* row : noteRows_)
        form_->setRowVisible(row, track() != nullptr);
    for (QWidget* row : audioRows_)
        form_->setRowVisible(row, audioTrack() != nullptr);
}

template <typename AnyTrack>
void TrackHeaderPanel::fillCommonRows(const AnyTrack& track)
{
    typing_ = false;
    name_->setText(track.name);
    volume_->setValue(percentOf(track.volume));
    fillSwitches(track);
}

template <typename AnyTrack>
void TrackHeaderPanel::fillSwitches(const AnyTrack& track)
{
    mute_->setChecked(track.muted);
    solo_->setChecked(track.solo);
}

void TrackHeaderPanel::refreshSwitches()
{
    const QScopedValueRollback guard(updating_, true);
    if (track())
        fillSwitches(*track());
    else if (audioTrack())
        fillSwitches(*audioTrack());
    else if (chords())
        mute_->setChecked(chords()->muted);
}

void TrackHeaderPanel::fillChords(const HarmonyTrack& chords)
{
    typing_ = false;
    name_->clear();
    volume_->setValue(percentOf(chords.volume));
    mute_->setChecked(chords.muted);
}

void TrackHeaderPanel::fillTrack(const Track& track)
{
    fillCommonRows(track);
    instrument_->setCurrentInstrument(track.instrumentId);
    humanize_->setChecked(track.humanize.enabled);
    humanizeIntensity_->setValue(percentOf(track.humanize.intensity));
}

void TrackHeaderPanel::fillAudioTrack(const AudioTrack& track)
{
    fillCommonRows(track);
    const VoiceTuneSettings tune = track.clips.value(0).tune;
    tune_->setChecked(tune.enabled);
    tuneIntensity_->setValue(percentOf(tune.intensity));
}

// ---- The name ------------------------------------------------------------------------------

void TrackHeaderPanel::writeTypedName()
{
    typing_ = false;
    const QString name = name_->text();
    editEither([&](auto& track) { track.name = name; });
}

void TrackHeaderPanel::takeTypedName()
{
    if (!typing_)
        return;
    writeTypedName();
    emit trackEdited();
}

void TrackHeaderPanel::finishName()
{
    if (updating_ || !project_)
        return;
    if (typing_)
        writeTypedName();
    emit trackEdited();
}
