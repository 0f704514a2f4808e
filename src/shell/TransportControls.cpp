#include "shell/TransportControls.h"

#include "model/Project.h"
#include "music/Beats.h"
#include "playback/PlaybackEngine.h"
#include "shell/GridLevelNames.h"
#include "shell/LevelMeter.h"
#include "shell/RibbonGroup.h"
#include "shell/SongBoxes.h"
#include "shell/TakeSign.h"
#include "shell/controls/WheelGuard.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QScopedValueRollback>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

QSpinBox* barBox(int bar, const QString& tooltip)
{
    auto* box = new QSpinBox;
    box->setRange(1, 999);
    box->setValue(bar);
    box->setFixedWidth(46);
    box->setToolTip(tooltip);
    return box;
}

/// A row of groups, closed by a stretch.
QWidget* rowOf(const QList<RibbonGroup*>& groups)
{
    auto* row = new QWidget;
    row->setObjectName(u"fila_btns"_s);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(3);
    for (RibbonGroup* group : groups)
        layout->addWidget(group);
    layout->addStretch();
    return row;
}

} // namespace

TransportControls::TransportControls(PlaybackEngine* engine, QWidget* parent)
    : QWidget(parent), engine_(engine)
{
    setObjectName(u"ribbon"_s);
    setAccessibleName(tr("Herramientas"));
    // A plain widget paints the background of a style sheet only when it is told to.
    setAttribute(Qt::WA_StyledBackground);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(3, 3, 3, 3);
    layout->setSpacing(3);
    layout->addWidget(rowOf({projectGroup(), playbackGroup(), keyGroup()}));
    layout->addWidget(rowOf({tracksGroup(), voiceGroup(), exportGroup(), viewGroup()}));
    updateSubdivisionLabels();
    WheelGuard::guardAllIn(*this);
    connectEdits();
    if (engine_)
        connectEngine();
}

RibbonGroup* TransportControls::projectGroup()
{
    auto* group = new RibbonGroup(tr("Proyecto"), 0);
    connect(group->addCard(u"✚"_s, tr("Nueva"), tr("Empezar una obra nueva (Ctrl+N)"), false),
            &QToolButton::clicked, this, &TransportControls::newProjectRequested);
    connect(group->addCard(u"💾"_s, tr("Guardar"),
                           tr("Guardar la obra para seguirla después (Ctrl+S)"), false),
            &QToolButton::clicked, this, &TransportControls::saveRequested);
    connect(group->addCard(u"📂"_s, tr("Abrir"), tr("Abrir una obra guardada (Ctrl+O)"), false),
            &QToolButton::clicked, this, &TransportControls::openProjectRequested);
    return group;
}

RibbonGroup* TransportControls::playbackGroup()
{
    auto* group = new RibbonGroup(tr("Reproducción"), 1);
    play_ = addCard(Card::Play, group, u"▶"_s, tr("Reproducir"),
                    tr("Escuchar la canción desde el cabezal (Espacio)"));
    stop_ = addCard(Card::Stop, group, u"■"_s, tr("Detener"), tr("Parar y volver al comienzo"));
    repeat_ = addCard(Card::Repeat, group, u"⟳"_s, tr("Repetir"),
                      tr("Repetir un rango de compases en loop"), true);
    firstBar_ = barBox(1, tr("Primer compás del rango repetido"));
    group->addLabeledWidget(firstBar_, tr("Del compás"));
    lastBar_ = barBox(4, tr("Último compás del rango repetido"));
    group->addLabeledWidget(lastBar_, tr("al compás"));
    metronome_ = addCard(Card::Metronome, group, u"♩"_s, tr("Metrónomo"),
                         tr("Marcar el pulso mientras suena la canción"), true);
    position_ = new QLabel(u"1.1"_s);
    position_->setObjectName(u"lbl_toolbar"_s);
    // The application's sheet has a size for captions, which only a sheet can overrule.
    position_->setStyleSheet(u"font-size: 14pt; font-weight: 700;"_s);
    position_->setAlignment(Qt::AlignCenter);
    position_->setMinimumWidth(48);
    position_->setToolTip(tr("Dónde está el cabezal: compás.pulso"));
    position_->setAccessibleDescription(position_->toolTip());
    group->addLabeledWidget(position_, tr("Posición"));
    return group;
}

RibbonGroup* TransportControls::keyGroup()
{
    auto* group = new RibbonGroup(tr("Tempo y tonalidad"), 2);
    bpm_ = SongBoxes::tempo();
    bpm_->setFixedWidth(56);
    bpm_->setToolTip(tr("Velocidad de la canción, en pulsos por minuto"));
    group->addLabeledWidget(bpm_, tr("Velocidad"));
    meter_ = SongBoxes::meters();
    meter_->setToolTip(tr("Compás de la canción: cuántos pulsos tiene cada compás"));
    group->addLabeledWidget(meter_, tr("Compás"));
    key_ = SongBoxes::keys(u"%1 / %2"_s);
    key_->setToolTip(tr("Nota principal de la canción"));
    group->addLabeledWidget(key_, tr("Tonalidad"));
    mode_ = SongBoxes::modes();
    mode_->setToolTip(tr("Modo: Mayor suena alegre, Menor más triste"));
    group->addLabeledWidget(mode_, tr("Modo"));
    chords_ = group->addCard(u"♫"_s, tr("Acordes"),
                             tr("Hacer sonar (o silenciar) la guía de acordes"), true);
    chords_->setChecked(true);
    return group;
}

RibbonGroup* TransportControls::tracksGroup()
{
    auto* group = new RibbonGroup(tr("Veltas"), 0);
    connect(addCard(Card::AddTrack, group, u"＋"_s, tr("Agregar"),
                    tr("Agregar una velta nueva para otro instrumento")),
            &QToolButton::clicked, this, &TransportControls::addTrackRequested);
    connect(
        addCard(Card::RemoveTrack, group, u"−"_s, tr("Quitar"), tr("Quitar la velta seleccionada")),
        &QToolButton::clicked, this, &TransportControls::removeTrackRequested);
    return group;
}

RibbonGroup* TransportControls::voiceGroup()
{
    auto* group = new RibbonGroup(tr("Voz"), 1);
    QToolButton* record = addCard(Card::Record, group, u"●"_s, tr("Grabar"),
                                  tr("Grabar tu voz con el micrófono mientras suena la canción"));
    connect(record, &QToolButton::clicked, this, &TransportControls::recordVoiceRequested);
    QToolButton* cancel = group->addCard(u"✕"_s, tr("Cancelar"),
                                         tr("Descartar lo que se está grabando (Esc)"), false);
    connect(cancel, &QToolButton::clicked, this, &TransportControls::cancelVoiceRequested);
    auto* meter = new LevelMeter;
    group->addLabeledWidget(meter, tr("Nivel"));
    takeSign_ = new TakeSign(record, cancel, meter, this);
    connect(addCard(Card::Import, group, u"⇩"_s, tr("Importar"),
                    tr("Traer un audio ya grabado (WAV, MP3, ogg, opus)")),
            &QToolButton::clicked, this, &TransportControls::importVoiceRequested);
    return group;
}

RibbonGroup* TransportControls::exportGroup()
{
    auto* group = new RibbonGroup(tr("Exportar"), 2);
    const auto addWord = [&](Card card, const QString& face, const QString& caption,
                             const QString& tooltip, void (TransportControls::*requested)()) {
        QToolButton* button = addCard(card, group, face, caption, tooltip);
        button->setStyleSheet(u"font-size: 13px; font-weight: 800;"_s);
        connect(button, &QToolButton::clicked, this, requested);
    };
    addWord(Card::ExportMp3, u"MP3"_s, tr("Audio"),
            tr("Guardar la canción como MP3 para compartir o usar en Ecos y Cuadros"),
            &TransportControls::exportMp3Requested);
    addWord(Card::ExportWav, u"WAV"_s, tr("Audio HQ"),
            tr("Guardar la canción como WAV sin comprimir"),
            &TransportControls::exportWavRequested);
    addWord(Card::ExportMidi, u"MIDI"_s, tr("Partitura"),
            tr("Guardar las notas como MIDI para abrir en otros programas"),
            &TransportControls::exportMidiRequested);
    return group;
}

RibbonGroup* TransportControls::viewGroup()
{
    auto* group = new RibbonGroup(tr("Vista"), 0);
    connect(addCard(Card::ZoomIn, group, u"⊕"_s, tr("Acercar"), tr("Ver el tiempo más de cerca")),
            &QToolButton::clicked, this, &TransportControls::zoomInRequested);
    connect(addCard(Card::ZoomOut, group, u"⊖"_s, tr("Alejar"), tr("Ver más compases a la vez")),
            &QToolButton::clicked, this, &TransportControls::zoomOutRequested);
    grid_ = new QComboBox;
    grid_->addItems({QString(), QString(), QString()});
    grid_->setToolTip(tr("Qué está marcando la grilla: el pulso, su división o la subdivisión"));
    QToolButton* follow =
        addCard(Card::Follow, group, u"⇥"_s, tr("Seguir"),
                tr("Pasar de página cuando el cabezal sale de lo que se ve"), true);
    follow->setChecked(true);
    connect(follow, &QToolButton::toggled, this, &TransportControls::followToggled);
    // The words of a compound meter are longer.
    grid_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    grid_->setCurrentIndex(static_cast<int>(GridSubdivisionLevel::Division));
    group->addLabeledWidget(grid_, tr("Grilla"));
    return group;
}

QToolButton* TransportControls::addCard(Card card, RibbonGroup* group, const QString& face,
                                        const QString& caption, const QString& tooltip,
                                        bool checkable)
{
    QToolButton* button = group->addCard(face, caption, tooltip, checkable);
    cards_.insert(card, button);
    return button;
}

void TransportControls::tellShortcut(Card card, const QKeySequence& keys)
{
    QToolButton* button = cards_.value(card);
    button->setToolTip(
        u"%1 (%2)"_s.arg(button->toolTip(), keys.toString(QKeySequence::NativeText)));
    button->setAccessibleDescription(button->toolTip());
}

void TransportControls::bindSwitch(Card card, QAction* action)
{
    QToolButton* button = cards_.value(card);
    action->setCheckable(true);
    action->setChecked(button->isChecked());
    connect(button, &QToolButton::toggled, action, &QAction::setChecked);
    connect(action, &QAction::toggled, button, &QToolButton::setChecked);
}

void TransportControls::setFollowing(bool on)
{
    cards_.value(Card::Follow)->setChecked(on);
}

void TransportControls::chooseSubdivision(GridSubdivisionLevel level)
{
    grid_->setCurrentIndex(static_cast<int>(level));
}

GridSubdivisionLevel TransportControls::subdivision() const
{
    return static_cast<GridSubdivisionLevel>(grid_->currentIndex());
}

void TransportControls::connectEngine()
{
    connect(play_, &QToolButton::clicked, this, &TransportControls::togglePlayback);
    connect(stop_, &QToolButton::clicked, this, &TransportControls::stopRequested);
    connect(stop_, &QToolButton::clicked, engine_, &PlaybackEngine::stop);
    connect(metronome_, &QToolButton::toggled, engine_, &PlaybackEngine::setMetronomeEnabled);
    connect(repeat_, &QToolButton::toggled, this, &TransportControls::applyRepeatRange);
    for (QSpinBox* box : {firstBar_, lastBar_})
        box->setKeyboardTracking(false);
    connect(firstBar_, &QSpinBox::valueChanged, this, &TransportControls::applyRepeatRange);
    connect(lastBar_, &QSpinBox::valueChanged, this, &TransportControls::applyRepeatRange);
    connect(engine_, &PlaybackEngine::playheadChanged, this, &TransportControls::updatePlayhead);
    connect(engine_, &PlaybackEngine::playingChanged, this, &TransportControls::showPlaying);
}

void TransportControls::connectEdits()
{
    const auto unlessUpdating = [this](auto edit) {
        return [this, edit](auto value) {
            if (!updatingFromProject_)
                edit(value);
        };
    };
    connect(bpm_, &QSpinBox::valueChanged, this,
            unlessUpdating([this](int bpm) { emit bpmEdited(bpm); }));
    connect(meter_, &QComboBox::currentIndexChanged, this, unlessUpdating([this](int index) {
                emit meterEdited(meter_->itemData(index).value<TimeSignature>());
            }));
    connect(key_, &QComboBox::currentIndexChanged, this,
            unlessUpdating([this](int) { emitKeyEdit(); }));
    connect(mode_, &QComboBox::currentIndexChanged, this,
            unlessUpdating([this](int) { emitKeyEdit(); }));
    connect(chords_, &QToolButton::toggled, this,
            unlessUpdating([this](bool heard) { emit harmonyMuteToggled(!heard); }));
    connect(grid_, &QComboBox::currentIndexChanged, this, unlessUpdating([this](int level) {
                emit subdivisionChanged(static_cast<GridSubdivisionLevel>(level));
            }));
}

void TransportControls::setProject(Project* project)
{
    if (project_)
        disconnect(project_, nullptr, this, nullptr);
    project_ = project;
    updateFromProject();
    applyRepeatRange();
    if (project)
        connect(project, &Project::changed, this, &TransportControls::followProject,
                Qt::UniqueConnection);
}

void TransportControls::followProject()
{
    updateFromProject();
    // The bars that are repeated have another length in another meter.
    if (repeatedBeatsPerBar_ != project_->beatsPerBar())
        applyRepeatRange();
}

void TransportControls::updateFromProject()
{
    updateSubdivisionLabels();
    if (!project_)
        return;
    const QScopedValueRollback guard(updatingFromProject_, true);
    bpm_->setValue(project_->bpm);
    SongBoxes::showMeter(*meter_, project_->timeSignature);
    key_->setCurrentIndex(project_->keySignature.rootPitchClass);
    mode_->setCurrentIndex(project_->keySignature.mode == KeyMode::Minor ? 1 : 0);
    chords_->setChecked(!project_->harmonyTrack.muted);
}

void TransportControls::showRecording(bool recording)
{
    takeSign_->show(recording);
}

void TransportControls::showCount(int click)
{
    takeSign_->showCount(click);
}

void TransportControls::showLevel(float peak)
{
    takeSign_->showLevel(peak);
}

void TransportControls::addSetting(Card card, QAction* setting)
{
    QToolButton* button = cards_.value(card);
    button->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(button, &QWidget::customContextMenuRequested, this,
            [this, button, setting](const QPoint& place) {
                // Of the button it would have the letters of its face.
                QMenu menu(this);
                menu.addAction(setting);
                menu.exec(button->mapToGlobal(place));
            });
}

void TransportControls::updateSubdivisionLabels()
{
    const QScopedValueRollback guard(updatingFromProject_, true);
    const bool compound = project_ && project_->timeSignature.isCompound;
    for (const GridSubdivisionLevel level : kGridLevels)
        grid_->setItemText(static_cast<int>(level), gridLevelName(level, compound));
}

void TransportControls::finishTyping()
{
    // The buttons of the ribbon take no focus, which would end the typing.
    firstBar_->interpretText();
    lastBar_->interpretText();
}

void TransportControls::togglePlayback()
{
    finishTyping();
    if (engine_->isPlaying())
        engine_->pause();
    else
        engine_->play();
}

void TransportControls::applyRepeatRange()
{
    if (!project_ || !engine_ || updatingFromProject_)
        return;
    if (!repeat_->isChecked()) {
        engine_->clearLoopRange();
        return;
    }
    finishTyping();
    const auto [first, last] = std::minmax({firstBar_->value(), lastBar_->value()});
    repeatedBeatsPerBar_ = project_->beatsPerBar();
    engine_->setLoopRange((first - 1) * repeatedBeatsPerBar_, last * repeatedBeatsPerBar_);
}

void TransportControls::emitKeyEdit()
{
    emit keySignatureEdited(key_->currentIndex(), mode_->currentIndex());
}

void TransportControls::updatePlayhead(double beat)
{
    const double beatsPerBar = project_ ? project_->beatsPerBar() : 0.0;
    const auto bar = barAt(beat, beatsPerBar);
    if (!bar)
        return;
    const double pulse = project_->timeSignature.pulseBeats();
    const double pulses = std::floor((beat - *bar * beatsPerBar) / pulse);
    position_->setText(u"%1.%2"_s.arg(*bar + 1.0, 0, 'f', 0).arg(pulses + 1.0, 0, 'f', 0));
}

void TransportControls::showPlaying(bool playing)
{
    play_->setText(playing ? u"⏸"_s : u"▶"_s);
}
