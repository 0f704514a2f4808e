#include "views/TrackHeaderPanel.h"

#include "shell/theme/StyleSheet.h"
#include "support/ContentFixture.h"
#include "support/ContextTranslator.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/Widgets.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QSignalSpy>
#include <QSlider>
#include <QWheelEvent>

#include <functional>

namespace TrackHeaderPanelTests {

using namespace ProjectBuilder;

/// The controls of a panel, by what a user sees of them.
struct Controls {
    explicit Controls(TrackHeaderPanel& panel)
        : name(panel.findChild<QLineEdit*>()), instrument(panel.findChild<QComboBox*>()),
          volume(panel.findChildren<QSlider*>().value(0)),
          mute(Widgets::withText<QToolButton>(panel, "Mute")),
          solo(Widgets::withText<QToolButton>(panel, "Solo")),
          humanize(panel.findChildren<QCheckBox*>().value(0)),
          humanizing(panel.findChildren<QSlider*>().value(1)),
          vary(Widgets::withText<QPushButton>(panel, "Probar otra variación")),
          tune(panel.findChildren<QCheckBox*>().value(1)),
          tuning(panel.findChildren<QSlider*>().value(2))
    {}

    QLineEdit* name;
    QComboBox* instrument;
    QSlider* volume;
    QToolButton* mute;
    QToolButton* solo;
    QCheckBox* humanize;
    QSlider* humanizing;
    QPushButton* vary;
    QCheckBox* tune;
    QSlider* tuning;
};

namespace {

using Floats = std::numeric_limits<float>;

/// Two tracks of notes and two voices, the second of them without clips.
std::unique_ptr<Project> song()
{
    auto result =
        project({melodyTrack({melody({})}, "gm_violin"), melodyTrack({melody({})}, "gm_flauta")});
    result->tracks[0].name = "Violines";
    result->tracks[1].name = "Flautas";
    result->tracks[1].muted = true;
    result->tracks[1].volume = 0.25F;
    result->audioTracks = {voiceTrack({clip("a.wav"), clip("b.wav", 8.0)}), voiceTrack({})};
    result->audioTracks[0].name = "Coro";
    result->audioTracks[0].solo = true;
    result->audioTracks[0].clips[0].tune = {.enabled = true, .intensity = 0.7F};
    result->audioTracks[1].name = "Voz nueva";
    return result;
}

/// The words of the rows that are to be seen, from top to bottom.
QStringList visibleRows(const TrackHeaderPanel& panel)
{
    const auto* form = qobject_cast<QFormLayout*>(panel.layout());
    QStringList rows;
    for (int row = 0; row < form->rowCount(); ++row) {
        for (const auto role :
             {QFormLayout::LabelRole, QFormLayout::SpanningRole, QFormLayout::FieldRole}) {
            const QLayoutItem* item = form->itemAt(row, role);
            const QWidget* widget = item ? item->widget() : nullptr;
            const QVariant text = widget ? widget->property("text") : QVariant();
            if (widget && widget->isVisibleTo(&panel) && !text.toString().isEmpty() &&
                !qobject_cast<const QLineEdit*>(widget)) {
                rows.append(text.toString());
                break;
            }
        }
    }
    return rows;
}

const QStringList kCommonRows{"Nombre", "Volumen"};
const QStringList kNoteRows{
    "Nombre",     "Instrumento",          "Volumen", "Humanizador", "Activado",
    "Intensidad", "Probar otra variación"};
const QStringList kAudioRows{"Nombre", "Volumen", "Afinar voz", "Activado", "Intensidad"};

using Act = std::function<void(const Controls&)>;
using Change = std::function<void(Project&)>;

void clickBox(QCheckBox* box)
{
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
}

/// Turns the wheel down over a control. True when the control has taken it.
bool turnWheel(QWidget* control)
{
    const QPointF place = control->rect().center();
    QWheelEvent event(place, control->mapToGlobal(place), QPoint(), QPoint(0, -120), Qt::NoButton,
                      {}, Qt::NoScrollPhase, false);
    event.ignore();
    QApplication::sendEvent(control, &event);
    return event.isAccepted();
}

/// Replaces what stands in a field, letter by letter.
void type(QLineEdit* field, const QString& text)
{
    field->setFocus();
    field->selectAll();
    for (const QChar letter : text) {
        QKeyEvent press(QEvent::KeyPress, 0, {}, QString(letter));
        QApplication::sendEvent(field, &press);
    }
}

} // namespace

class TrackHeaderPanelTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aNoteTrackHasItsRows();
    void anAudioTrackHasItsRows();
    void theChordsHaveAVolumeAndCanBeMuted();
    void withoutASelectionThePanelIsDisabled();
    void startsDisabled();
    void indicesOfNoTrackDisableIt_data();
    void indicesOfNoTrackDisableIt();
    void slidersGoFromNothingToAll();
    void tipsTellWhatAnIntensityIs();
    void labelsNameTheirFields();
    void textsAreTranslatable();

    void showsANoteTrack();
    void showsAnAudioTrack();
    void showsWhatChangedElsewhereAtTheNextSelection();
    void levelsAreCutToWholePercents_data();
    void levelsAreCutToWholePercents();
    void audioTrackWithoutClipsShowsTuningOffAtHalf();
    void fillingEmitsNothing();
    void fillingWritesNothing();

    void everyChangeHasItsDepth_data();
    void everyChangeHasItsDepth();
    void switchesFollowWhatOthersHaveSet();
    void tuningIsWrittenToEveryClip();
    void tuningATrackWithoutClipsChangesNothing();
    void dragOfTheTuningIsOneEdit();
    void dragOfTheVolumeIsHeardOnTheWay();
    void seedsAreRandom32BitNumbers();

    void nameThatStaysAsItWasIsStillAnEdit();
    void nameOfNoTrackIsStillAnEdit();
    void nameIsTakenOnEnter();
    void nameIsTakenTimeAndAgain();
    void nameIsTakenAsItIsTyped_data();
    void nameIsTakenAsItIsTyped();
    void typedNameIsTakenAsAMenuOpens();
    void typedNameIsTakenBeforeAnotherTrackIsShown_data();
    void typedNameIsTakenBeforeAnotherTrackIsShown();
    void typedNameIsTakenBeforeAnotherProjectIsShown();
    void typedNameCanBeTakenWithoutLosingTheFocus();
    void nothingTypedIsNothingToTake();
    void typedNameThatWasTakenNeverReachesTheTrackThatUndoPutThere_data();
    void typedNameThatWasTakenNeverReachesTheTrackThatUndoPutThere();
    void untouchedNameNeverReachesTheTrackThatUndoPutThere();
    void nameTypedAfterAnUndoneRenamingIsTaken();
    void clickOutsideTakesTheNameBeforeTheSelectionMoves();
    void losingTheTrackWhileTypingIsOneEdit();
    void goingAwayWhileTypingEmitsNothing();
    void windowMayRefreshThePanelFromItsSignals();

    void wheelTurnsNothingWithoutTheFocus();
    void wheelTurnsWhatHasTheFocus();

    void staleIndicesDoNothing_data();
    void staleIndicesDoNothing();
    void withoutAProjectNothingIsEdited();
    void uninstalledInstrumentStays();
    void installingAnInstrumentIsNoEdit();
    void withoutALibraryThereAreNoInstruments();
    void damagedLevelsAreHeldInTheSliders_data();
    void damagedLevelsAreHeldInTheSliders();
    void hostileProjectsAreHarmless();
    void longTextsDoNotWidenIt();

private:
    void makePanel()
    {
        panel_ = std::make_unique<TrackHeaderPanel>(&content_->instruments());
        controls_ = std::make_unique<Controls>(*panel_);
        edited_ = std::make_unique<QSignalSpy>(panel_.get(), &TrackHeaderPanel::trackEdited);
        mixed_ = std::make_unique<QSignalSpy>(panel_.get(), &TrackHeaderPanel::mixingChanged);
        heardOthers_ =
            std::make_unique<QSignalSpy>(panel_.get(), &TrackHeaderPanel::audibilityChanged);
    }

    /// In a window where nothing has the focus yet.
    void showPanel()
    {
        panel_->resize(252, 400);
        panel_->show();
        QVERIFY(QTest::qWaitForWindowActive(panel_.get()));
        controls_->name->clearFocus();
        edited_->clear();
    }

    void compareProject(const Project& expected) const
    {
        QCOMPARE(firstDifference(*song_, expected), QString());
    }

    bool isSilent() const { return edited_->isEmpty() && mixed_->isEmpty(); }

    /// Everything that a user can do with the controls, visible or not.
    void touchEverything() const
    {
        const Controls& all = *controls_;
        for (QSlider* slider : {all.volume, all.humanizing, all.tuning}) {
            slider->setValue(13);
            slider->setValue(87);
        }
        for (QAbstractButton* button :
             QList<QAbstractButton*>{all.mute, all.solo, all.humanize, all.vary, all.tune})
            button->click();
        all.instrument->setCurrentIndex(3);
        all.instrument->setCurrentIndex(4);
    }

    std::unique_ptr<ContentFixture> content_;
    std::unique_ptr<Project> song_;
    std::unique_ptr<TrackHeaderPanel> panel_;
    std::unique_ptr<Controls> controls_;
    std::unique_ptr<QSignalSpy> edited_;
    std::unique_ptr<QSignalSpy> mixed_;
    std::unique_ptr<QSignalSpy> heardOthers_;
};

void TrackHeaderPanelTest::init()
{
    content_ = std::make_unique<ContentFixture>();
    content_->instruments().loadBuiltinGmInstruments();
    song_ = song();
    makePanel();
    panel_->setProject(song_.get());
}

void TrackHeaderPanelTest::cleanup()
{
    panel_.reset();
    song_.reset();
    content_.reset();
}

// ---- The form ------------------------------------------------------------------------------

void TrackHeaderPanelTest::aNoteTrackHasItsRows()
{
    panel_->showTrack(0);
    QVERIFY(panel_->isEnabled());
    QCOMPARE(visibleRows(*panel_), kNoteRows);
    QVERIFY(controls_->mute->isVisibleTo(panel_.get()));
    QVERIFY(controls_->solo->isVisibleTo(panel_.get()));
    QVERIFY(controls_->humanizing->isVisibleTo(panel_.get()));
    QVERIFY(!controls_->tuning->isVisibleTo(panel_.get()));
    QCOMPARE(panel_->layout()->contentsMargins(), QMargins(8, 8, 8, 8));
}

void TrackHeaderPanelTest::anAudioTrackHasItsRows()
{
    panel_->showAudioTrack(0);
    QVERIFY(panel_->isEnabled());
    QCOMPARE(visibleRows(*panel_), kAudioRows);
    QVERIFY(controls_->mute->isVisibleTo(panel_.get()));
    QVERIFY(controls_->tuning->isVisibleTo(panel_.get()));
    QVERIFY(!controls_->humanizing->isVisibleTo(panel_.get()));
    QVERIFY(!controls_->instrument->isVisibleTo(panel_.get()));
}

void TrackHeaderPanelTest::theChordsHaveAVolumeAndCanBeMuted()
{
    panel_->showTrack(0);
    panel_->showChords();
    QVERIFY(panel_->isEnabled());
    QCOMPARE(visibleRows(*panel_), (QStringList{"Acordes", "Volumen"}));
    QVERIFY(!controls_->solo->isVisibleTo(panel_.get()));
    QCOMPARE(controls_->volume->value(), 70);
    const QSignalSpy mixed(panel_.get(), &TrackHeaderPanel::mixingChanged);
    const QSignalSpy edited(panel_.get(), &TrackHeaderPanel::trackEdited);
    controls_->volume->setValue(25);
    QCOMPARE(song_->harmonyTrack.volume, 0.25F);
    controls_->mute->click();
    QVERIFY(song_->harmonyTrack.muted);
    QCOMPARE(mixed.size(), 2);
    QCOMPARE(edited.size(), 0);
    // Others mute it too.
    song_->harmonyTrack.muted = false;
    panel_->refreshSwitches();
    QVERIFY(!controls_->mute->isChecked());
    panel_->showTrack(0);
    QCOMPARE(visibleRows(*panel_), kNoteRows);
    QVERIFY(controls_->solo->isVisibleTo(panel_.get()));
    controls_->volume->setValue(60);
    QCOMPARE(song_->harmonyTrack.volume, 0.25F);
}

void TrackHeaderPanelTest::withoutASelectionThePanelIsDisabled()
{
    panel_->showTrack(0);
    panel_->setProject(song_.get());
    QVERIFY(!panel_->isEnabled());
    QCOMPARE(visibleRows(*panel_), kCommonRows);
    QVERIFY(!controls_->instrument->isVisibleTo(panel_.get()));
    QCOMPARE(controls_->name->text(), "");
}

void TrackHeaderPanelTest::startsDisabled()
{
    makePanel();
    QVERIFY(!panel_->isEnabled());
    QCOMPARE(visibleRows(*panel_), kCommonRows);
}

void TrackHeaderPanelTest::indicesOfNoTrackDisableIt_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("none") << -1;
    QTest::newRow("one too many") << 2;
    QTest::newRow("far too many") << std::numeric_limits<int>::max();
    QTest::newRow("far below none") << std::numeric_limits<int>::min();
}

void TrackHeaderPanelTest::indicesOfNoTrackDisableIt()
{
    QFETCH(int, index);
    panel_->showTrack(0);
    panel_->showTrack(index);
    QVERIFY(!panel_->isEnabled());
    QCOMPARE(visibleRows(*panel_), kCommonRows);
    panel_->showAudioTrack(0);
    panel_->showAudioTrack(index);
    QVERIFY(!panel_->isEnabled());
    QCOMPARE(visibleRows(*panel_), kCommonRows);
}

void TrackHeaderPanelTest::slidersGoFromNothingToAll()
{
    for (const QSlider* slider : {controls_->volume, controls_->humanizing, controls_->tuning}) {
        QCOMPARE(slider->orientation(), Qt::Horizontal);
        QCOMPARE(slider->minimum(), 0);
        QCOMPARE(slider->maximum(), 100);
    }
}

void TrackHeaderPanelTest::tipsTellWhatAnIntensityIs()
{
    QCOMPARE(controls_->humanizing->toolTip(), "Intensidad de la variación");
    QCOMPARE(controls_->tuning->toolTip(), "Cuánto se corrige la afinación");
}

void TrackHeaderPanelTest::labelsNameTheirFields()
{
    const auto buddyOf = [&](const char* text) {
        return Widgets::withText<QLabel>(*panel_, text)->buddy();
    };
    QCOMPARE(buddyOf("Nombre"), controls_->name);
    QCOMPARE(buddyOf("Instrumento"), controls_->instrument);
    QCOMPARE(buddyOf("Volumen"), controls_->volume);
}

void TrackHeaderPanelTest::textsAreTranslatable()
{
    ContextTranslator translator;
    QApplication::installTranslator(&translator);
    TrackHeaderPanel panel(nullptr);
    QApplication::removeTranslator(&translator);
    panel.setProject(song_.get());
    panel.showTrack(0);
    QStringList expected;
    for (const QString& row : kNoteRows)
        expected.append("TrackHeaderPanel: " + row);
    QCOMPARE(visibleRows(panel), expected);
    QVERIFY(Widgets::withText<QToolButton>(panel, "TrackHeaderPanel: Mute"));
    QCOMPARE(Controls(panel).tuning->toolTip(), "TrackHeaderPanel: Cuánto se corrige la afinación");
}

// ---- Filling -------------------------------------------------------------------------------

void TrackHeaderPanelTest::showsANoteTrack()
{
    song_->tracks[1].humanize = {.enabled = false, .intensity = 0.9F, .seed = 5};
    panel_->showTrack(1);
    QCOMPARE(controls_->name->text(), "Flautas");
    QCOMPARE(controls_->instrument->currentText(), "Flauta");
    QCOMPARE(controls_->volume->value(), 25);
    QVERIFY(controls_->mute->isChecked());
    QVERIFY(!controls_->solo->isChecked());
    QVERIFY(!controls_->humanize->isChecked());
    QCOMPARE(controls_->humanizing->value(), 90);

    panel_->showTrack(0);
    QCOMPARE(controls_->name->text(), "Violines");
    QCOMPARE(controls_->instrument->currentText(), "Violín");
    QCOMPARE(controls_->volume->value(), 80);
    QVERIFY(!controls_->mute->isChecked());
    QVERIFY(controls_->humanize->isChecked());
    QCOMPARE(controls_->humanizing->value(), 40);
}

void TrackHeaderPanelTest::showsAnAudioTrack()
{
    panel_->showAudioTrack(0);
    QCOMPARE(controls_->name->text(), "Coro");
    QCOMPARE(controls_->volume->value(), 80);
    QVERIFY(!controls_->mute->isChecked());
    QVERIFY(controls_->solo->isChecked());
    QVERIFY(controls_->tune->isChecked());
    QCOMPARE(controls_->tuning->value(), 70);
}

void TrackHeaderPanelTest::showsWhatChangedElsewhereAtTheNextSelection()
{
    panel_->showTrack(0);
    song_->tracks[0].muted = true;
    emit song_->changed();
    QVERIFY(!controls_->mute->isChecked());
    panel_->showTrack(0);
    QVERIFY(controls_->mute->isChecked());
}

void TrackHeaderPanelTest::levelsAreCutToWholePercents_data()
{
    QTest::addColumn<float>("level");
    QTest::addColumn<int>("percent");
    QTest::newRow("nothing") << 0.0F << 0;
    QTest::newRow("nearly one") << 0.0099F << 0;
    QTest::newRow("a third") << 0.3333F << 33;
    QTest::newRow("nearly half") << 0.499F << 49;
    QTest::newRow("seven tenths") << 0.7F << 70;
    QTest::newRow("nearly all") << 0.999F << 99;
    QTest::newRow("all") << 1.0F << 100;
}

void TrackHeaderPanelTest::levelsAreCutToWholePercents()
{
    QFETCH(float, level);
    QFETCH(int, percent);
    song_->tracks[0].volume = level;
    song_->tracks[0].humanize.intensity = level;
    song_->audioTracks[0].volume = level;
    song_->audioTracks[0].clips[0].tune.intensity = level;
    panel_->showTrack(0);
    QCOMPARE(controls_->volume->value(), percent);
    QCOMPARE(controls_->humanizing->value(), percent);
    panel_->showAudioTrack(0);
    QCOMPARE(controls_->volume->value(), percent);
    QCOMPARE(controls_->tuning->value(), percent);
}

void TrackHeaderPanelTest::audioTrackWithoutClipsShowsTuningOffAtHalf()
{
    panel_->showAudioTrack(0);
    panel_->showAudioTrack(1);
    QVERIFY(!controls_->tune->isChecked());
    QCOMPARE(controls_->tuning->value(), 50);
}

void TrackHeaderPanelTest::fillingEmitsNothing()
{
    for (int round = 0; round < 2; ++round) {
        for (const int index : {0, 1, 7, -1}) {
            panel_->showTrack(index);
            panel_->showAudioTrack(index);
            panel_->refresh();
        }
        panel_->setProject(nullptr);
        panel_->setProject(song_.get());
    }
    QVERIFY(isSilent());
}

void TrackHeaderPanelTest::fillingWritesNothing()
{
    const auto generated = Generator(3).project(6);
    const QJsonObject before = generated->toJson();
    panel_->setProject(generated.get());
    for (int index = 0; index < 6; ++index) {
        panel_->showTrack(index);
        panel_->showAudioTrack(index);
    }
    QCOMPARE(generated->toJson(), before);
}

// ---- Edits ---------------------------------------------------------------------------------

void TrackHeaderPanelTest::everyChangeHasItsDepth_data()
{
    QTest::addColumn<bool>("audio");
    QTest::addColumn<Act>("act");
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("edits");
    QTest::addColumn<int>("mixes");

    const auto row = [](const char* name, bool audio, int edits, int mixes, const Act& act,
                        const Change& change) {
        QTest::newRow(name) << audio << act << change << edits << mixes;
    };
    const Act rename = [](const Controls& all) {
        type(all.name, "Zamba");
        QTest::keyClick(all.name, Qt::Key_Tab);
    };
    const Act louder = [](const Controls& all) { QTest::keyClick(all.volume, Qt::Key_PageUp); };
    const Act mute = [](const Controls& all) { Widgets::click(all.mute); };
    const Act solo = [](const Controls& all) { Widgets::click(all.solo); };

    row("name of a note track is an edit", false, 1, 0, rename,
        [](Project& song) { song.tracks[0].name = "Zamba"; });
    row("name of a voice is an edit", true, 1, 0, rename,
        [](Project& song) { song.audioTracks[0].name = "Zamba"; });
    row(
        "instrument is an edit", false, 1, 0,
        [](const Controls& all) { QTest::keyClick(all.instrument, Qt::Key_Home); },
        [](Project& song) { song.tracks[0].instrumentId = "gm_piano"; });
    row("volume of a note track is mixing", false, 0, 1, louder,
        [](Project& song) { song.tracks[0].volume = 0.9F; });
    row("volume of a voice is mixing", true, 0, 1, louder,
        [](Project& song) { song.audioTracks[0].volume = 0.9F; });
    row("mute of a note track is mixing", false, 0, 1, mute,
        [](Project& song) { song.tracks[0].muted = true; });
    row("mute of a voice is mixing", true, 0, 1, mute,
        [](Project& song) { song.audioTracks[0].muted = true; });
    row("solo of a note track is mixing", false, 0, 1, solo,
        [](Project& song) { song.tracks[0].solo = true; });
    row("solo of a voice is mixing", true, 0, 1, solo,
        [](Project& song) { song.audioTracks[0].solo = false; });
    row(
        "humanizing is an edit", false, 1, 0, [](const Controls& all) { clickBox(all.humanize); },
        [](Project& song) { song.tracks[0].humanize.enabled = false; });
    row(
        "intensity of humanizing is mixing", false, 0, 1,
        [](const Controls& all) { QTest::keyClick(all.humanizing, Qt::Key_End); },
        [](Project& song) { song.tracks[0].humanize.intensity = 1.0F; });
    row(
        "tuning is an edit", true, 1, 0, [](const Controls& all) { clickBox(all.tune); },
        [](Project& song) {
            song.audioTracks[0].clips[0].tune.enabled = false;
            song.audioTracks[0].clips[1].tune.enabled = false;
        });
    row(
        "intensity of tuning is an edit", true, 1, 0,
        [](const Controls& all) { QTest::keyClick(all.tuning, Qt::Key_Home); },
        [](Project& song) {
            song.audioTracks[0].clips[0].tune.intensity = 0.0F;
            song.audioTracks[0].clips[1].tune.intensity = 0.0F;
        });
}

void TrackHeaderPanelTest::everyChangeHasItsDepth()
{
    QFETCH(bool, audio);
    QFETCH(Act, act);
    QFETCH(Change, change);
    if (audio)
        panel_->showAudioTrack(0);
    else
        panel_->showTrack(0);
    showPanel();
    act(*controls_);
    const auto expected = song();
    change(*expected);
    compareProject(*expected);
    QTEST(int(edited_->size()), "edits");
    QTEST(int(mixed_->size()), "mixes");
    const QString name = QTest::currentDataTag();
    QCOMPARE(int(heardOthers_->size()), name.startsWith("mute") || name.startsWith("solo") ? 1 : 0);
}

void TrackHeaderPanelTest::switchesFollowWhatOthersHaveSet()
{
    for (const bool audio : {false, true}) {
        if (audio)
            panel_->showAudioTrack(0);
        else
            panel_->showTrack(0);
        showPanel();
        type(controls_->name, "Zam");
        song_->tracks[0].muted = song_->audioTracks[0].muted = true;
        song_->tracks[0].solo = song_->audioTracks[0].solo = false;
        panel_->refreshSwitches();
        QVERIFY(controls_->mute->isChecked());
        QVERIFY(!controls_->solo->isChecked());
        QCOMPARE(controls_->name->text(), "Zam");
        QVERIFY(mixed_->isEmpty() && heardOthers_->isEmpty());
    }
    panel_->setProject(nullptr);
    panel_->refreshSwitches();
}

void TrackHeaderPanelTest::tuningIsWrittenToEveryClip()
{
    song_->audioTracks[0].clips.append(clip("c.wav"));
    panel_->showAudioTrack(0);
    showPanel();
    clickBox(controls_->tune);
    clickBox(controls_->tune);
    QTest::keyClick(controls_->tuning, Qt::Key_PageDown);
    for (const AudioClip& each : song_->audioTracks[0].clips)
        QCOMPARE(each.tune, (VoiceTuneSettings{.enabled = true, .intensity = 0.6F}));
    QCOMPARE(edited_->size(), 3);
}

void TrackHeaderPanelTest::tuningATrackWithoutClipsChangesNothing()
{
    panel_->showAudioTrack(1);
    showPanel();
    clickBox(controls_->tune);
    QTest::keyClick(controls_->tuning, Qt::Key_Home);
    compareProject(*song());
    panel_->refresh();
    QVERIFY(!controls_->tune->isChecked());
    QCOMPARE(controls_->tuning->value(), 50);
}

void TrackHeaderPanelTest::dragOfTheTuningIsOneEdit()
{
    panel_->showAudioTrack(0);
    controls_->tuning->setSliderDown(true);
    for (const int position : {60, 50, 40, 30})
        controls_->tuning->setSliderPosition(position);
    QCOMPARE(edited_->size(), 0);
    controls_->tuning->setSliderDown(false);
    QCOMPARE(edited_->size(), 1);
    QCOMPARE(song_->audioTracks[0].clips[1].tune.intensity, 0.3F);
}

void TrackHeaderPanelTest::dragOfTheVolumeIsHeardOnTheWay()
{
    panel_->showTrack(0);
    controls_->volume->setSliderDown(true);
    for (const int position : {60, 50, 40, 30})
        controls_->volume->setSliderPosition(position);
    QCOMPARE(mixed_->size(), 4);
    QCOMPARE(song_->tracks[0].volume, 0.3F);
}

void TrackHeaderPanelTest::seedsAreRandom32BitNumbers()
{
    panel_->showTrack(0);
    showPanel();
    QSet<quint32> seeds;
    quint32 bits = 0;
    for (int i = 0; i < 100; ++i) {
        Widgets::click(controls_->vary);
        seeds.insert(song_->tracks[0].humanize.seed);
        bits |= song_->tracks[0].humanize.seed;
    }
    QVERIFY(seeds.size() > 95);
    QCOMPARE(bits, 0xffffffffU);
    QCOMPARE(edited_->size(), 100);
    QVERIFY(mixed_->isEmpty());
    const auto expected = song();
    expected->tracks[0].humanize.seed = song_->tracks[0].humanize.seed;
    compareProject(*expected);
}

// ---- The name ------------------------------------------------------------------------------

void TrackHeaderPanelTest::nameThatStaysAsItWasIsStillAnEdit()
{
    panel_->showTrack(0);
    showPanel();
    controls_->name->setFocus();
    QTest::keyClick(controls_->name, Qt::Key_End);
    QTest::keyClicks(controls_->name, "x");
    QTest::keyClick(controls_->name, Qt::Key_Backspace);
    QVERIFY(edited_->isEmpty());
    QTest::keyClick(controls_->name, Qt::Key_Tab);
    QCOMPARE(edited_->size(), 1);
    compareProject(*song());
}

void TrackHeaderPanelTest::nameOfNoTrackIsStillAnEdit()
{
    emit controls_->name->editingFinished();
    QCOMPARE(edited_->size(), 1);
    compareProject(*song());
}

void TrackHeaderPanelTest::nameIsTakenOnEnter()
{
    panel_->showAudioTrack(1);
    showPanel();
    type(controls_->name, "Contralto");
    QCOMPARE(song_->audioTracks[1].name, "Voz nueva");
    QTest::keyClick(controls_->name, Qt::Key_Return);
    QCOMPARE(song_->audioTracks[1].name, "Contralto");
    QCOMPARE(edited_->size(), 1);
}

void TrackHeaderPanelTest::nameIsTakenTimeAndAgain()
{
    panel_->showTrack(0);
    showPanel();
    for (const char* name : {"Zamba", "Gato", "Violines", "Zamba"}) {
        type(controls_->name, name);
        QTest::keyClick(controls_->name, Qt::Key_Return);
        QCOMPARE(song_->tracks[0].name, name);
    }
    type(controls_->name, "Cueca");
    panel_->showTrack(1);
    type(controls_->name, "Malambo");
    QTest::keyClick(controls_->name, Qt::Key_Return);
    QCOMPARE(song_->tracks[0].name, "Cueca");
    QCOMPARE(song_->tracks[1].name, "Malambo");
}

void TrackHeaderPanelTest::nameIsTakenAsItIsTyped_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("accents") << "Canción de ñandú";
    QTest::newRow("blanks around it") << "  Bombo ";
    QTest::newRow("markup") << "<b>x</b> & %1";
    QTest::newRow("a single letter") << "x";
}

void TrackHeaderPanelTest::nameIsTakenAsItIsTyped()
{
    QFETCH(QString, name);
    panel_->showTrack(1);
    showPanel();
    type(controls_->name, name);
    QTest::keyClick(controls_->name, Qt::Key_Tab);
    QCOMPARE(song_->tracks[1].name, name);
    panel_->showTrack(0);
    panel_->showTrack(1);
    QCOMPARE(controls_->name->text(), name);
}

// So that what the menu does, an undo for one, comes after the name.
void TrackHeaderPanelTest::typedNameIsTakenAsAMenuOpens()
{
    panel_->showTrack(0);
    showPanel();
    type(controls_->name, "Zamba");
    QMenu menu(panel_.get());
    menu.addAction("Deshacer");
    menu.popup(QPoint());
    QCOMPARE(song_->tracks[0].name, "Zamba");
    QCOMPARE(edited_->size(), 1);
    menu.close();
}

void TrackHeaderPanelTest::typedNameIsTakenBeforeAnotherTrackIsShown_data()
{
    QTest::addColumn<bool>("audio");
    QTest::addColumn<int>("index");
    QTest::newRow("another note track") << false << 1;
    QTest::newRow("a voice of the same index") << true << 0;
    QTest::newRow("the same track again") << false << 0;
    QTest::newRow("no track") << false << -1;
}

void TrackHeaderPanelTest::typedNameIsTakenBeforeAnotherTrackIsShown()
{
    QFETCH(bool, audio);
    QFETCH(int, index);
    panel_->showTrack(0);
    showPanel();
    type(controls_->name, "Zamba");
    if (audio)
        panel_->showAudioTrack(index);
    else
        panel_->showTrack(index);
    QCOMPARE(edited_->size(), 1);
    QTest::keyClick(controls_->name, Qt::Key_Tab);
    QTest::keyClick(controls_->name, Qt::Key_Return);
    const auto expected = song();
    expected->tracks[0].name = "Zamba";
    compareProject(*expected);
}

void TrackHeaderPanelTest::typedNameIsTakenBeforeAnotherProjectIsShown()
{
    const auto other = song();
    panel_->showTrack(0);
    showPanel();
    type(controls_->name, "Zamba");
    panel_->setProject(other.get());
    QCOMPARE(edited_->size(), 1);
    panel_->showTrack(0);
    QTest::keyClick(controls_->name, Qt::Key_Return);
    QCOMPARE(firstDifference(*other, *song()), QString());
    const auto expected = song();
    expected->tracks[0].name = "Zamba";
    compareProject(*expected);
}

void TrackHeaderPanelTest::typedNameCanBeTakenWithoutLosingTheFocus()
{
    panel_->showTrack(0);
    showPanel();
    type(controls_->name, "Zmba");
    controls_->name->setCursorPosition(1);
    panel_->takeTypedName();
    QCOMPARE(song_->tracks[0].name, "Zmba");
    QCOMPARE(edited_->size(), 1);
    QVERIFY(controls_->name->hasFocus());
    QCOMPARE(controls_->name->cursorPosition(), 1);
    QTest::keyClicks(controls_->name, "a");
    QTest::keyClick(controls_->name, Qt::Key_Return);
    QCOMPARE(song_->tracks[0].name, "Zamba");
    QCOMPARE(edited_->size(), 2);
}

void TrackHeaderPanelTest::nothingTypedIsNothingToTake()
{
    panel_->showTrack(0);
    showPanel();
    controls_->name->setFocus();
    panel_->takeTypedName();
    panel_->showTrack(1);
    panel_->takeTypedName();
    panel_->setProject(nullptr);
    panel_->takeTypedName();
    QVERIFY(isSilent());
    compareProject(*song());
}

void TrackHeaderPanelTest::typedNameThatWasTakenNeverReachesTheTrackThatUndoPutThere_data()
{
    QTest::addColumn<Change>("undo");
    QTest::newRow("the track went away")
        << Change([](Project& song) { song.tracks.removeFirst(); });
    QTest::newRow("a track came in front of it")
        << Change([](Project& song) { song.tracks.prepend(melodyTrack({})); });
    QTest::newRow("all went away") << Change([](Project& song) { song.tracks.clear(); });
}

void TrackHeaderPanelTest::typedNameThatWasTakenNeverReachesTheTrackThatUndoPutThere()
{
    QFETCH(Change, undo);
    panel_->showTrack(0);
    showPanel();
    type(controls_->name, "Zamba");
    // As everybody does who changes the track in view.
    panel_->takeTypedName();
    undo(*song_);
    panel_->showTrack(0);
    QTest::keyClick(controls_->name, Qt::Key_Tab);
    const auto expected = song();
    expected->tracks[0].name = "Zamba";
    undo(*expected);
    compareProject(*expected);
    QCOMPARE(controls_->name->text(), expected->tracks.value(0).name);
}

void TrackHeaderPanelTest::untouchedNameNeverReachesTheTrackThatUndoPutThere()
{
    panel_->showTrack(0);
    showPanel();
    controls_->name->setFocus();
    song_->tracks.removeFirst();
    QTest::keyClick(controls_->name, Qt::Key_Return);
    QCOMPARE(song_->tracks[0].name, "Flautas");
}

void TrackHeaderPanelTest::nameTypedAfterAnUndoneRenamingIsTaken()
{
    panel_->showTrack(0);
    showPanel();
    type(controls_->name, "Zamba");
    QTest::keyClick(controls_->name, Qt::Key_Return);
    song_->tracks[0].name = "Violines";
    type(controls_->name, "Zamba");
    QTest::keyClick(controls_->name, Qt::Key_Return);
    QCOMPARE(song_->tracks[0].name, "Zamba");
}

void TrackHeaderPanelTest::clickOutsideTakesTheNameBeforeTheSelectionMoves()
{
    panel_->showTrack(0);
    showPanel();
    type(controls_->name, "Zamba");
    controls_->name->clearFocus();
    panel_->showTrack(1);
    const auto expected = song();
    expected->tracks[0].name = "Zamba";
    compareProject(*expected);
    QCOMPARE(edited_->size(), 1);
}

void TrackHeaderPanelTest::losingTheTrackWhileTypingIsOneEdit()
{
    panel_->showTrack(0);
    showPanel();
    type(controls_->name, "Zamba");
    panel_->setProject(song_.get());
    QVERIFY(!controls_->name->hasFocus());
    QCOMPARE(edited_->size(), 1);
    const auto expected = song();
    expected->tracks[0].name = "Zamba";
    compareProject(*expected);
}

void TrackHeaderPanelTest::goingAwayWhileTypingEmitsNothing()
{
    panel_->showTrack(0);
    showPanel();
    type(controls_->name, "Zamba");
    panel_.reset();
    QVERIFY(isSilent());
    compareProject(*song());
}

void TrackHeaderPanelTest::windowMayRefreshThePanelFromItsSignals()
{
    panel_->showTrack(0);
    showPanel();
    connect(panel_.get(), &TrackHeaderPanel::trackEdited, panel_.get(),
            [this] { panel_->showTrack(1); });
    type(controls_->name, "Zamba");
    QTest::keyClick(controls_->name, Qt::Key_Return);
    const auto expected = song();
    expected->tracks[0].name = "Zamba";
    compareProject(*expected);
    QCOMPARE(controls_->name->text(), "Flautas");
}

// ---- The wheel -----------------------------------------------------------------------------

void TrackHeaderPanelTest::wheelTurnsNothingWithoutTheFocus()
{
    panel_->showTrack(0);
    showPanel();
    controls_->name->setFocus();
    for (QWidget* control :
         {static_cast<QWidget*>(controls_->volume), static_cast<QWidget*>(controls_->instrument),
          static_cast<QWidget*>(controls_->humanizing)}) {
        QVERIFY(!turnWheel(control));
        QVERIFY(!control->hasFocus());
    }
    compareProject(*song());
    QVERIFY(isSilent());
}

void TrackHeaderPanelTest::wheelTurnsWhatHasTheFocus()
{
    panel_->showTrack(0);
    showPanel();
    controls_->volume->setFocus();
    const int before = controls_->volume->value();
    QVERIFY(turnWheel(controls_->volume));
    QVERIFY(controls_->volume->value() != before);
}

// ---- Bad input -----------------------------------------------------------------------------

void TrackHeaderPanelTest::staleIndicesDoNothing_data()
{
    QTest::addColumn<bool>("audio");
    QTest::newRow("note track") << false;
    QTest::newRow("voice") << true;
}

void TrackHeaderPanelTest::staleIndicesDoNothing()
{
    QFETCH(bool, audio);
    if (audio)
        panel_->showAudioTrack(1);
    else
        panel_->showTrack(1);
    song_->tracks.removeLast();
    song_->audioTracks.removeLast();
    const QJsonObject before = song_->toJson();
    touchEverything();
    QVERIFY(isSilent());
    type(controls_->name, "Zamba");
    emit controls_->name->editingFinished();
    QCOMPARE(song_->toJson(), before);
}

void TrackHeaderPanelTest::withoutAProjectNothingIsEdited()
{
    panel_->showTrack(0);
    panel_->setProject(nullptr);
    panel_->showTrack(0);
    QVERIFY(!panel_->isEnabled());
    touchEverything();
    emit controls_->name->editingFinished();
    QVERIFY(isSilent());
    compareProject(*song());
}

void TrackHeaderPanelTest::uninstalledInstrumentStays()
{
    song_->tracks[0].instrumentId = "erke";
    panel_->showTrack(1);
    panel_->showTrack(0);
    QCOMPARE(controls_->instrument->currentText(), "Flauta");
    QVERIFY(isSilent());
    QCOMPARE(song_->tracks[0].instrumentId, "erke");
    QTest::keyClick(controls_->instrument, Qt::Key_End);
    QCOMPARE(song_->tracks[0].instrumentId, "gm_bateria");
}

void TrackHeaderPanelTest::installingAnInstrumentIsNoEdit()
{
    panel_->showTrack(0);
    Instrument erke;
    erke.id = "erke";
    erke.name = "Erke";
    content_->instruments().registerInstrument(erke);
    QCOMPARE(controls_->instrument->count(), 17);
    QCOMPARE(controls_->instrument->currentText(), "Violín");
    QVERIFY(isSilent());
}

void TrackHeaderPanelTest::withoutALibraryThereAreNoInstruments()
{
    TrackHeaderPanel panel(nullptr);
    panel.setProject(song_.get());
    panel.showTrack(0);
    QCOMPARE(Controls(panel).instrument->count(), 0);
    compareProject(*song());
}

void TrackHeaderPanelTest::damagedLevelsAreHeldInTheSliders_data()
{
    QTest::addColumn<float>("level");
    QTest::addColumn<int>("percent");
    QTest::newRow("seven times full") << 7.0F << 100;
    QTest::newRow("negative") << -1.0F << 0;
    QTest::newRow("as 1e300 is read") << static_cast<float>(Floats::infinity()) << 100;
    QTest::newRow("minus infinity") << -Floats::infinity() << 0;
    QTest::newRow("the largest there is") << Floats::max() << 100;
    QTest::newRow("not a number") << Floats::quiet_NaN() << 0;
    QTest::newRow("denormal") << 1e-40F << 0;
}

void TrackHeaderPanelTest::damagedLevelsAreHeldInTheSliders()
{
    QFETCH(float, level);
    QFETCH(int, percent);
    song_->tracks[0].volume = level;
    song_->tracks[0].humanize.intensity = level;
    song_->audioTracks[0].clips[0].tune.intensity = level;
    panel_->showTrack(0);
    QCOMPARE(controls_->volume->value(), percent);
    QCOMPARE(controls_->humanizing->value(), percent);
    panel_->showAudioTrack(0);
    QCOMPARE(controls_->tuning->value(), percent);
    QVERIFY(isSilent());
}

void TrackHeaderPanelTest::hostileProjectsAreHarmless()
{
    for (quint32 seed = 0; seed < 40; ++seed) {
        const auto hostile = Generator(seed, Numbers::Hostile).project(4);
        panel_->setProject(hostile.get());
        for (int index = -1; index < 5; ++index) {
            panel_->showTrack(index);
            touchEverything();
            panel_->showAudioTrack(index);
            touchEverything();
            emit controls_->name->editingFinished();
        }
        for (const Track& track : std::as_const(hostile->tracks))
            QCOMPARE(track.volume, 0.87F);
        for (const AudioTrack& track : std::as_const(hostile->audioTracks))
            QCOMPARE(track.volume, 0.87F);
    }
    panel_->setProject(nullptr);
}

void TrackHeaderPanelTest::longTextsDoNotWidenIt()
{
    song_->tracks[0].name = QString(500, 'm');
    song_->tracks[0].instrumentId = "largo";
    Instrument instrument;
    instrument.id = "largo";
    instrument.name = QString(500, 'm');
    content_->instruments().registerInstrument(instrument);
    makePanel();
    panel_->setProject(song_.get());
    panel_->showTrack(0);
    for (const bool dark : {false, true}) {
        qApp->setStyleSheet(styleSheet(dark));
        panel_->ensurePolished();
        QVERIFY(panel_->minimumSizeHint().width() <= 241);
    }
    qApp->setStyleSheet(QString());
}

VELTA_TEST(TrackHeaderPanelTest)

} // namespace TrackHeaderPanelTests

#include "TrackHeaderPanelTest.moc"
