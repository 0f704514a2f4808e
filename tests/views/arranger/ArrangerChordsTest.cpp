#include "ArrangerStage.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "support/FluidSpy.h"
#include "support/TinyBank.h"
#include "views/Painted.h"
#include "views/TimelineRuler.h"
#include "views/arranger/TrackArranger.h"

#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>

#include <array>
#include <limits>

using namespace ProjectBuilder;

namespace {

constexpr KeySignature kCMajor{0, KeyMode::Major};
constexpr KeySignature kAMinor{9, KeyMode::Minor};

/// An engine with a synthesiser that nobody hears, whose calls are watched.
class Band {
public:
    Band()
    {
        ContentFixture::write(files_.filePath("gm.sf2"), TinyBank::bytes({{0, 0, 100}}));
        player_.loadGmBank(files_.filePath("gm.sf2"));
        FluidSpy::reset();
    }

    PlaybackEngine& engine() { return engine_; }

    /// The notes that have been started, as "channel pitch velocity".
    static QStringList notes()
    {
        QStringList notes;
        for (const QString& call : FluidSpy::calls({"noteon"}))
            notes.append(call.section(' ', 1));
        return notes;
    }

private:
    ContentFixture files_;
    SoundfontPlayer player_{SoundfontPlayer::Mode::Offline};
    PlaybackEngine engine_{&player_, nullptr, nullptr};
};

/// "bar: degree.extension start+length" of each chord.
QStringList chordsOf(const Project& song)
{
    QStringList chords;
    for (const HarmonyBlock& bar : song.harmonyTrack.blocks) {
        for (const HarmonyDegreeEvent& event : bar.events)
            chords.append(QStringLiteral("%1: %2.%3 %4+%5")
                              .arg(bar.barIndex)
                              .arg(event.degree)
                              .arg(static_cast<int>(event.extension))
                              .arg(event.startBeat)
                              .arg(event.durationBeats));
    }
    return chords;
}

constexpr std::array<Qt::Key, 7> kLetters{Qt::Key_C, Qt::Key_D, Qt::Key_E, Qt::Key_F,
                                          Qt::Key_G, Qt::Key_A, Qt::Key_B};

} // namespace

class ArrangerChordsTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void lettersLayDegrees_data();
    void lettersLayDegrees();
    void lettersLayTheDegreesOfEveryKey();
    void modifiersChooseTheExtension_data();
    void modifiersChooseTheExtension();
    void notesOutsideTheKeyLayNothing_data();
    void notesOutsideTheKeyLayNothing();
    void otherKeysArePassedOn_data();
    void otherKeysArePassedOn();
    void lettersWithoutAProjectArePassedOn();
    void repeatedKeysAreIgnored();
    void heldKeysLayOneChord();
    void altLettersComeBeforeTheMenus();
    void altLettersOpenMenusWithoutAProject();
    void altWithOtherLettersOpensMenus();

    void chordFillsTheRestOfItsBar_data();
    void chordFillsTheRestOfItsBar();
    void chordWithoutAnEngineIsLaidAtTheStart();
    void degreesOutOfRangeLayNothing_data();
    void degreesOutOfRangeLayNothing();
    void damagedMetersAreSurvived_data();
    void damagedMetersAreSurvived();
    void chordReplacesWhatStandsThere();

    void menuHasEveryChordOfTheKey_data();
    void menuHasEveryChordOfTheKey();
    void entriesCarryDegreeAndExtension();
    void menuLaysTheChosenChord_data();
    void menuLaysTheChosenChord();
    void menuWithoutAChoiceLaysNothing();
    void clickOnTheChordLaneAsks_data();
    void clickOnTheChordLaneAsks();
    void menuOpensAtTheMouse();
    void clickOnAChordAsksNothing();
    void clickOfAZoomedAndScrolledSongAsks();
    void projectThatChangesUnderTheMenuGetsNoChord_data();
    void projectThatChangesUnderTheMenuGetsNoChord();

    void chordIsHeardAsItIsLaid_data();
    void chordIsHeardAsItIsLaid();
    void mutedChordsAreLaidInSilence();
    void chordOutsideTheKeyIsNotHeard();
    void menuIsHeardToo();

    void clickOnTheRulerPlaysFromThere();
    void clickOnTheRulerMovesWhilePlaying();
    void clickOnTheRulerWithoutAnEngineDoesNothing();
    void playheadFollowsTheEngine();
    void playheadSurvivesRebuilds();
    void contextLeavesThePreviousEngine();

private:
    const QStringList& laid() const { return laid_; }

    std::unique_ptr<Band> band_;
    std::unique_ptr<ArrangerStage> stage_;
    /// The chords after the last edit.
    QStringList laid_;
    int edits_ = 0;
};

void ArrangerChordsTest::init()
{
    band_ = std::make_unique<Band>();
    stage_ = std::make_unique<ArrangerStage>();
    stage_->song.harmonyTrack = {};
    stage_->song.keySignature = kCMajor;
    band_->engine().setProject(&stage_->song);
    stage_->arranger.setContext(&stage_->song, &band_->engine(), stage_->content.library());
    laid_.clear();
    edits_ = 0;
    connect(&stage_->arranger, &TrackArranger::edited, this, [this] {
        laid_ = chordsOf(stage_->song);
        ++edits_;
        emit stage_->song.changed();
    });
}

void ArrangerChordsTest::cleanup()
{
    band_->engine().stop();
    band_->engine().setProject(nullptr);
    stage_.reset();
    band_.reset();
}

// ---- Letters -------------------------------------------------------------------------------

void ArrangerChordsTest::lettersLayDegrees_data()
{
    QTest::addColumn<KeySignature>("key");
    QTest::addColumn<Qt::Key>("letter");
    QTest::addColumn<bool>("shift");
    QTest::addColumn<int>("degree");

    const KeySignature dDorian{2, KeyMode::Dorian};
    const KeySignature fLydian{5, KeyMode::Lydian};
    const KeySignature eMajor{4, KeyMode::Major};
    QTest::newRow("C in C major is I") << kCMajor << Qt::Key_C << false << 1;
    QTest::newRow("D in C major is ii") << kCMajor << Qt::Key_D << false << 2;
    QTest::newRow("G in C major is V") << kCMajor << Qt::Key_G << false << 5;
    QTest::newRow("A in C major is vi") << kCMajor << Qt::Key_A << false << 6;
    QTest::newRow("B in C major is vii") << kCMajor << Qt::Key_B << false << 7;
    QTest::newRow("E sharp in C major is F, IV") << kCMajor << Qt::Key_E << true << 4;
    QTest::newRow("B sharp in C major is C, I") << kCMajor << Qt::Key_B << true << 1;
    QTest::newRow("A in A minor is i") << kAMinor << Qt::Key_A << false << 1;
    QTest::newRow("C in A minor is III") << kAMinor << Qt::Key_C << false << 3;
    QTest::newRow("G in A minor is VII") << kAMinor << Qt::Key_G << false << 7;
    QTest::newRow("D in D dorian is i") << dDorian << Qt::Key_D << false << 1;
    QTest::newRow("B in D dorian is vi") << dDorian << Qt::Key_B << false << 6;
    QTest::newRow("B in F lydian is iv") << fLydian << Qt::Key_B << false << 4;
    QTest::newRow("F sharp in E major is ii") << eMajor << Qt::Key_F << true << 2;
    QTest::newRow("D sharp in E major is vii") << eMajor << Qt::Key_D << true << 7;
}

void ArrangerChordsTest::lettersLayDegrees()
{
    QFETCH(KeySignature, key);
    QFETCH(Qt::Key, letter);
    QFETCH(bool, shift);
    QFETCH(int, degree);
    stage_->song.keySignature = key;
    stage_->key(letter, shift ? Qt::ShiftModifier : Qt::NoModifier);
    QCOMPARE(laid(), QStringList{QStringLiteral("0: %1.0 0+4").arg(degree)});
    QCOMPARE(edits_, 1);
}

void ArrangerChordsTest::lettersLayTheDegreesOfEveryKey()
{
    // From C on, what the white keys of a piano are above it.
    constexpr std::array<int, 7> kWhite{0, 2, 4, 5, 7, 9, 11};
    const QList<QList<int>> steps{
        {2, 2, 1, 2, 2, 2, 1}, {2, 1, 2, 2, 1, 2, 2}, {2, 1, 2, 2, 2, 1, 2}, {2, 2, 2, 1, 2, 2, 1}};
    for (int root = 0; root < 12; ++root) {
        for (int mode = 0; mode < 4; ++mode) {
            std::array<int, 12> degrees{};
            int pitch = root;
            for (int degree = 1; degree <= 7; ++degree) {
                degrees[static_cast<std::size_t>(pitch % 12)] = degree;
                pitch += steps[mode][degree - 1];
            }
            stage_->song.keySignature = {root, static_cast<KeyMode>(mode)};
            for (std::size_t i = 0; i < 14; ++i) {
                const bool sharp = i >= 7;
                const int degree =
                    degrees[static_cast<std::size_t>((kWhite[i % 7] + (sharp ? 1 : 0)) % 12)];
                stage_->song.harmonyTrack.blocks.clear();
                stage_->key(kLetters[i % 7], sharp ? Qt::ShiftModifier : Qt::NoModifier);
                QCOMPARE(chordsOf(stage_->song),
                         degree == 0 ? QStringList()
                                     : QStringList{QStringLiteral("0: %1.0 0+4").arg(degree)});
            }
        }
    }
}

void ArrangerChordsTest::modifiersChooseTheExtension_data()
{
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<QString>("chord");

    using Modifiers = Qt::KeyboardModifiers;
    QTest::newRow("none") << Modifiers() << "0: 3.0 0+4";
    QTest::newRow("Ctrl") << Modifiers(Qt::ControlModifier) << "0: 3.1 0+4";
    QTest::newRow("Alt") << Modifiers(Qt::AltModifier) << "0: 3.2 0+4";
    QTest::newRow("Alt and Ctrl") << (Qt::AltModifier | Qt::ControlModifier) << "0: 3.2 0+4";
    QTest::newRow("Ctrl and Shift") << (Qt::ControlModifier | Qt::ShiftModifier) << "0: 4.1 0+4";
    QTest::newRow("Alt and Shift") << (Qt::AltModifier | Qt::ShiftModifier) << "0: 4.2 0+4";
    QTest::newRow("keypad") << Modifiers(Qt::KeypadModifier) << "0: 3.0 0+4";
    QTest::newRow("Meta") << Modifiers(Qt::MetaModifier) << "0: 3.0 0+4";
}

void ArrangerChordsTest::modifiersChooseTheExtension()
{
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(QString, chord);
    stage_->key(Qt::Key_E, modifiers);
    QCOMPARE(laid(), QStringList{chord});
}

void ArrangerChordsTest::notesOutsideTheKeyLayNothing_data()
{
    QTest::addColumn<KeySignature>("key");
    QTest::addColumn<Qt::Key>("letter");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");

    using Modifiers = Qt::KeyboardModifiers;
    QTest::newRow("F sharp in C major") << kCMajor << Qt::Key_F << Modifiers(Qt::ShiftModifier);
    QTest::newRow("C sharp seventh in C major")
        << kCMajor << Qt::Key_C << (Qt::ShiftModifier | Qt::ControlModifier);
    QTest::newRow("G sharp in A minor") << kAMinor << Qt::Key_G << Modifiers(Qt::ShiftModifier);
    QTest::newRow("F in E major") << KeySignature{4, KeyMode::Major} << Qt::Key_F << Modifiers();
    QTest::newRow("F ninth in E major")
        << KeySignature{4, KeyMode::Major} << Qt::Key_F << Modifiers(Qt::AltModifier);
}

void ArrangerChordsTest::notesOutsideTheKeyLayNothing()
{
    QFETCH(KeySignature, key);
    QFETCH(Qt::Key, letter);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    stage_->song.keySignature = key;
    QKeyEvent event(QEvent::KeyPress, letter, modifiers);
    QApplication::sendEvent(&stage_->arranger, &event);
    QVERIFY(event.isAccepted());
    QCOMPARE(edits_, 0);
    QCOMPARE(chordsOf(stage_->song), QStringList());
}

void ArrangerChordsTest::otherKeysArePassedOn_data()
{
    QTest::addColumn<Qt::Key>("key");

    QTest::newRow("H") << Qt::Key_H;
    QTest::newRow("Z") << Qt::Key_Z;
    QTest::newRow("1") << Qt::Key_1;
    QTest::newRow("Escape") << Qt::Key_Escape;
    QTest::newRow("Space") << Qt::Key_Space;
}

void ArrangerChordsTest::otherKeysArePassedOn()
{
    QFETCH(Qt::Key, key);
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier);
        QApplication::sendEvent(&stage_->arranger, &event);
        QVERIFY(!event.isAccepted());
    }
    QCOMPARE(edits_, 0);
}

void ArrangerChordsTest::lettersWithoutAProjectArePassedOn()
{
    TrackArranger arranger;
    const QSignalSpy edited(&arranger, &TrackArranger::edited);
    QKeyEvent event(QEvent::KeyPress, Qt::Key_C, Qt::NoModifier);
    QApplication::sendEvent(&arranger, &event);
    QVERIFY(!event.isAccepted());
    QCOMPARE(edited.size(), 0);
}

void ArrangerChordsTest::repeatedKeysAreIgnored()
{
    stage_->click(stage_->at(9.0, kQuenaY));
    for (const Qt::Key key : {Qt::Key_C, Qt::Key_Delete, Qt::Key_Backspace, Qt::Key_H}) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
        event.ignore();
        QApplication::sendEvent(&stage_->arranger, &event);
        QVERIFY(event.isAccepted());
    }
    QCOMPARE(edits_, 0);
    QCOMPARE(stage_->selected().size(), 1);
}

void ArrangerChordsTest::heldKeysLayOneChord()
{
    QTest::keyPress(&stage_->arranger, Qt::Key_C);
    for (int i = 0; i < 5; ++i) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_C, Qt::NoModifier, "c", true);
        QApplication::sendEvent(&stage_->arranger, &event);
    }
    QTest::keyRelease(&stage_->arranger, Qt::Key_C);
    QCOMPARE(edits_, 1);
}

namespace {

/// A window with the menus of the program, whose letters are marked.
class MenuWindow {
public:
    explicit MenuWindow(QWidget* arranger)
    {
        window.setCentralWidget(arranger);
        for (const char* title : {"&Archivo", "&Edición", "&Ver"})
            window.menuBar()->addMenu(QString::fromUtf8(title))->addAction("Entrada");
        window.show();
        window.activateWindow();
        (void)QTest::qWaitForWindowActive(&window);
        arranger->setFocus();
    }

    /// The menu that a key has opened, which is closed again.
    static QString openMenu()
    {
        const auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        const QString title = menu ? menu->title() : QString();
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
        return title;
    }

    QMainWindow window;
};

} // namespace

void ArrangerChordsTest::altLettersComeBeforeTheMenus()
{
    auto* arranger = new TrackArranger;
    MenuWindow menus(arranger);
    arranger->setContext(&stage_->song, nullptr, nullptr);
    QTest::keyClick(arranger, Qt::Key_A, Qt::AltModifier);
    QCOMPARE(MenuWindow::openMenu(), QString());
    QCOMPARE(chordsOf(stage_->song), QStringList{"0: 6.2 0+4"});
    QTest::keyClick(arranger, Qt::Key_E, Qt::AltModifier);
    QCOMPARE(MenuWindow::openMenu(), QString());
    QCOMPARE(chordsOf(stage_->song), QStringList{"0: 3.2 0+4"});
}

void ArrangerChordsTest::altLettersOpenMenusWithoutAProject()
{
    auto* arranger = new TrackArranger;
    MenuWindow menus(arranger);
    QTest::keyClick(arranger, Qt::Key_A, Qt::AltModifier);
    QCOMPARE(MenuWindow::openMenu(), QString("&Archivo"));
}

void ArrangerChordsTest::altWithOtherLettersOpensMenus()
{
    auto* arranger = new TrackArranger;
    MenuWindow menus(arranger);
    arranger->setContext(&stage_->song, nullptr, nullptr);
    QTest::keyClick(arranger, Qt::Key_V, Qt::AltModifier);
    QCOMPARE(MenuWindow::openMenu(), QString("&Ver"));
    QCOMPARE(chordsOf(stage_->song), QStringList());
}

// ---- Where chords are laid -----------------------------------------------------------------

void ArrangerChordsTest::chordFillsTheRestOfItsBar_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("playhead");
    QTest::addColumn<QString>("chord");

    const TimeSignature common{4, 4, false};
    const TimeSignature compound{6, 8, true};
    QTest::newRow("start") << common << 0.0 << "0: 1.0 0+4";
    QTest::newRow("back to the beat") << common << 0.99 << "0: 1.0 0+4";
    QTest::newRow("second beat") << common << 1.0 << "0: 1.0 1+3";
    QTest::newRow("last beat") << common << 3.5 << "0: 1.0 3+1";
    QTest::newRow("second bar") << common << 5.7 << "1: 1.0 1+3";
    QTest::newRow("third bar of 3/4") << TimeSignature{3, 4, false} << 8.2 << "2: 1.0 2+1";
    QTest::newRow("6/8, first pulse") << compound << 1.4 << "0: 1.0 0+3";
    QTest::newRow("6/8, second pulse") << compound << 1.5 << "0: 1.0 1.5+1.5";
    QTest::newRow("6/8, second bar") << compound << 5.9 << "1: 1.0 1.5+1.5";
    QTest::newRow("5/4") << TimeSignature{5, 4, false} << 7.0 << "1: 1.0 2+3";
    QTest::newRow("7/8, beats run on over the bar")
        << TimeSignature{7, 8, false} << 4.2 << "1: 1.0 0.5+3";
}

void ArrangerChordsTest::chordFillsTheRestOfItsBar()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, playhead);
    QFETCH(QString, chord);
    stage_->song.timeSignature = meter;
    band_->engine().setPlayheadBeat(playhead);
    stage_->key(Qt::Key_C);
    QCOMPARE(laid(), QStringList{chord});
}

void ArrangerChordsTest::chordWithoutAnEngineIsLaidAtTheStart()
{
    stage_->arranger.setContext(&stage_->song, nullptr, nullptr);
    stage_->key(Qt::Key_G);
    QCOMPARE(laid(), QStringList{"0: 5.0 0+4"});
}

void ArrangerChordsTest::degreesOutOfRangeLayNothing_data()
{
    QTest::addColumn<int>("degree");

    QTest::newRow("0") << 0;
    QTest::newRow("8") << 8;
    QTest::newRow("-1") << -1;
    QTest::newRow("2^31 - 1") << std::numeric_limits<int>::max();
    QTest::newRow("-2^31") << std::numeric_limits<int>::min();
}

void ArrangerChordsTest::degreesOutOfRangeLayNothing()
{
    QFETCH(int, degree);
    stage_->arranger.insertHarmonyAtPlayhead(degree, ChordExtension::Triad);
    QCOMPARE(edits_, 0);
    QCOMPARE(Band::notes(), QStringList());
}

void ArrangerChordsTest::damagedMetersAreSurvived_data()
{
    QTest::addColumn<TimeSignature>("meter");

    QTest::newRow("bar without length") << TimeSignature{0, 4, false};
    QTest::newRow("bar of infinite length") << TimeSignature{4, 0, false};
    QTest::newRow("bar that is no number") << TimeSignature{0, 0, true};
    QTest::newRow("bar of negative length") << TimeSignature{-4, 4, false};
}

void ArrangerChordsTest::damagedMetersAreSurvived()
{
    QFETCH(TimeSignature, meter);
    stage_->song.timeSignature = meter;
    emit stage_->song.changed();
    band_->engine().setPlayheadBeat(5.0);
    stage_->key(Qt::Key_C);
    QCOMPARE(chordsOf(stage_->song), QStringList());
    const MenuAnswer answer({"IV · Fa"});
    stage_->click(QPoint(70, kChordsY));
    QVERIFY(answer.wasAsked());
    QCOMPARE(chordsOf(stage_->song), QStringList());
}

void ArrangerChordsTest::chordReplacesWhatStandsThere()
{
    stage_->song.harmonyTrack = harmony({1, 4});
    band_->engine().setPlayheadBeat(6.0);
    stage_->key(Qt::Key_G, Qt::ControlModifier);
    QCOMPARE(laid(), QStringList({"0: 1.0 0+4", "1: 4.0 0+2", "1: 5.1 2+2"}));
    stage_->key(Qt::Key_A);
    QCOMPARE(laid(), QStringList({"0: 1.0 0+4", "1: 4.0 0+2", "1: 6.0 2+2"}));
}

// ---- The menu ------------------------------------------------------------------------------

void ArrangerChordsTest::menuHasEveryChordOfTheKey_data()
{
    QTest::addColumn<KeySignature>("key");
    QTest::addColumn<QStringList>("entries");

    QTest::newRow("C major") << kCMajor
                             << QStringList{"Con séptima: I7 · Domaj7 ii7 · Rem7 iii7 · Mim7 "
                                            "IV7 · Famaj7 V7 · Sol7 vi7 · Lam7 vii°7 · Sim7♭5",
                                            "Con novena: I9 · Domaj9 ii9 · Rem9 iii9 · Mim7♭9 "
                                            "IV9 · Famaj9 V9 · Sol9 vi9 · Lam9 vii°9 · Sim7♭5♭9",
                                            "I · Do",
                                            "ii · Rem",
                                            "iii · Mim",
                                            "IV · Fa",
                                            "V · Sol",
                                            "vi · Lam",
                                            "vii° · Si°"};
    QTest::newRow("A minor") << kAMinor
                             << QStringList{"Con séptima: i7 · Lam7 ii°7 · Sim7♭5 III7 · Domaj7 "
                                            "iv7 · Rem7 v7 · Mim7 VI7 · Famaj7 VII7 · Sol7",
                                            "Con novena: i9 · Lam9 ii°9 · Sim7♭5♭9 III9 · Domaj9 "
                                            "iv9 · Rem9 v9 · Mim7♭9 VI9 · Famaj9 VII9 · Sol9",
                                            "i · Lam",
                                            "ii° · Si°",
                                            "III · Do",
                                            "iv · Rem",
                                            "v · Mim",
                                            "VI · Fa",
                                            "VII · Sol"};
}

void ArrangerChordsTest::menuHasEveryChordOfTheKey()
{
    QFETCH(KeySignature, key);
    stage_->song.keySignature = key;
    const MenuAnswer answer{QStringList()};
    stage_->click(stage_->at(9.0, kChordsY));
    QTEST(answer.entries(), "entries");
}

void ArrangerChordsTest::entriesCarryDegreeAndExtension()
{
    QStringList data;
    QTimer::singleShot(0, this, [&data] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QList<QAction*> actions = menu->actions().mid(2);
        actions += menu->actions()[0]->menu()->actions();
        actions += menu->actions()[1]->menu()->actions();
        for (const QAction* action : actions) {
            const auto [degree, extension] = action->data().value<QPair<int, int>>();
            data.append(QStringLiteral("%1.%2").arg(degree).arg(extension));
        }
        menu->close();
    });
    stage_->arranger.openHarmonyMenu(0.0, QPoint(100, 100));
    QCOMPARE(data, QStringList({"1.0", "2.0", "3.0", "4.0", "5.0", "6.0", "7.0",
                                "1.1", "2.1", "3.1", "4.1", "5.1", "6.1", "7.1",
                                "1.2", "2.2", "3.2", "4.2", "5.2", "6.2", "7.2"}));
}

void ArrangerChordsTest::menuLaysTheChosenChord_data()
{
    QTest::addColumn<QStringList>("choice");
    QTest::addColumn<QString>("chord");

    QTest::newRow("triad") << QStringList{"IV · Fa"} << "2: 4.0 1+3";
    QTest::newRow("last triad") << QStringList{"vii° · Si°"} << "2: 7.0 1+3";
    QTest::newRow("seventh") << QStringList{"Con séptima", "V7 · Sol7"} << "2: 5.1 1+3";
    QTest::newRow("ninth") << QStringList{"Con novena", "ii9 · Rem9"} << "2: 2.2 1+3";
}

void ArrangerChordsTest::menuLaysTheChosenChord()
{
    QFETCH(QStringList, choice);
    QFETCH(QString, chord);
    const MenuAnswer answer(choice);
    stage_->arranger.openHarmonyMenu(9.0, QPoint(120, 90));
    QCOMPARE(laid(), QStringList{chord});
    QCOMPARE(edits_, 1);
    QCOMPARE(answer.place(), QPoint(120, 90));
}

void ArrangerChordsTest::menuWithoutAChoiceLaysNothing()
{
    const MenuAnswer answer{QStringList()};
    stage_->click(stage_->at(9.0, kChordsY));
    QVERIFY(answer.wasAsked());
    const MenuAnswer submenu({"Con séptima"});
    stage_->click(stage_->at(9.0, kChordsY));
    QVERIFY(submenu.wasAsked());
    QCOMPARE(edits_, 0);
    QCOMPARE(Band::notes(), QStringList());
}

void ArrangerChordsTest::clickOnTheChordLaneAsks_data()
{
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<QPoint>("place");
    QTest::addColumn<QString>("chord");

    const TimeSignature common{4, 4, false};
    const TimeSignature compound{6, 8, true};
    QTest::newRow("left button") << Qt::LeftButton << common << QPoint(300, 13) << "2: 4.0 1+3";
    QTest::newRow("right button") << Qt::RightButton << common << QPoint(300, 13) << "2: 4.0 1+3";
    QTest::newRow("last pixel of a beat")
        << Qt::LeftButton << common << QPoint(319, 13) << "2: 4.0 1+3";
    QTest::newRow("first pixel of a beat")
        << Qt::LeftButton << common << QPoint(320, 13) << "2: 4.0 2+2";
    QTest::newRow("left edge") << Qt::LeftButton << common << QPoint(0, 13) << "0: 4.0 0+4";
    QTest::newRow("top of the lane") << Qt::LeftButton << common << QPoint(64, 0) << "0: 4.0 2+2";
    QTest::newRow("bottom of the lane")
        << Qt::LeftButton << common << QPoint(64, 25) << "0: 4.0 2+2";
    QTest::newRow("6/8") << Qt::LeftButton << compound << QPoint(150, 13) << "1: 4.0 1.5+1.5";
    QTest::newRow("6/8, last pixel of a pulse")
        << Qt::LeftButton << compound << QPoint(143, 13) << "1: 4.0 0+3";
}

void ArrangerChordsTest::clickOnTheChordLaneAsks()
{
    QFETCH(Qt::MouseButton, button);
    QFETCH(TimeSignature, meter);
    QFETCH(QPoint, place);
    QFETCH(QString, chord);
    stage_->song.timeSignature = meter;
    emit stage_->song.changed();
    const MenuAnswer answer({"IV · Fa"});
    stage_->press(place, button);
    QCOMPARE(laid(), QStringList{chord});
    QCOMPARE(edits_, 1);
    QVERIFY(answer.wasAsked());
}

void ArrangerChordsTest::menuOpensAtTheMouse()
{
    for (const QPoint& place : {QPoint(1, 0), QPoint(40, kChordsY), QPoint(61, 25)}) {
        const MenuAnswer answer{QStringList()};
        stage_->press(place);
        QCOMPARE(answer.place(), stage_->grid()->mapToGlobal(place));
    }
}

void ArrangerChordsTest::clickOnAChordAsksNothing()
{
    stage_->song.harmonyTrack = harmony({1, 4});
    emit stage_->song.changed();
    const MenuAnswer answer({"IV · Fa"});
    stage_->click(stage_->at(5.0, kChordsY));
    QCoreApplication::processEvents();
    stage_->click(stage_->at(5.0, kChordsY), Qt::RightButton);
    QVERIFY(!answer.wasAsked());
    QCOMPARE(chordsOf(stage_->song), QStringList{"0: 1.0 0+4"});
    QCOMPARE(edits_, 1);
}

void ArrangerChordsTest::clickOfAZoomedAndScrolledSongAsks()
{
    stage_->arranger.zoomHorizontal(2.0);
    stage_->arranger.view()->horizontalScrollBar()->setValue(600);
    const MenuAnswer answer({"I · Do"});
    // Pixel 100 is place 350 of the scene, in beat 10.
    stage_->click(QPoint(100, kChordsY));
    QCOMPARE(laid(), QStringList{"2: 1.0 2+2"});
}

void ArrangerChordsTest::projectThatChangesUnderTheMenuGetsNoChord_data()
{
    QTest::addColumn<bool>("another");

    QTest::newRow("no project") << false;
    QTest::newRow("another project") << true;
}

// The menu runs an event loop of its own.
void ArrangerChordsTest::projectThatChangesUnderTheMenuGetsNoChord()
{
    QFETCH(bool, another);
    Project other;
    QTimer::singleShot(0, this, [this, another, &other] {
        stage_->arranger.setContext(another ? &other : nullptr, nullptr, nullptr);
    });
    const MenuAnswer answer({"IV · Fa"});
    stage_->arranger.openHarmonyMenu(0.0, QPoint(100, 100));
    QVERIFY(answer.wasAsked());
    QCOMPARE(chordsOf(other), QStringList());
    QCOMPARE(chordsOf(stage_->song), QStringList());
    QCOMPARE(edits_, 0);
    stage_->arranger.setContext(nullptr, nullptr, nullptr);
}

// ---- What is heard -------------------------------------------------------------------------

void ArrangerChordsTest::chordIsHeardAsItIsLaid_data()
{
    QTest::addColumn<KeySignature>("key");
    QTest::addColumn<Qt::Key>("letter");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<QStringList>("notes");

    using Modifiers = Qt::KeyboardModifiers;
    QTest::newRow("C major I") << kCMajor << Qt::Key_C << Modifiers()
                               << QStringList{"13 48 80", "13 52 80", "13 55 80"};
    QTest::newRow("C major V7") << kCMajor << Qt::Key_G << Modifiers(Qt::ControlModifier)
                                << QStringList{"13 55 80", "13 59 80", "13 62 80", "13 65 80"};
    QTest::newRow("C major vii°9")
        << kCMajor << Qt::Key_B << Modifiers(Qt::AltModifier)
        << QStringList{"13 59 80", "13 62 80", "13 65 80", "13 69 80", "13 72 80"};
    QTest::newRow("A minor i") << kAMinor << Qt::Key_A << Modifiers()
                               << QStringList{"13 57 80", "13 60 80", "13 64 80"};
}

void ArrangerChordsTest::chordIsHeardAsItIsLaid()
{
    QFETCH(KeySignature, key);
    QFETCH(Qt::Key, letter);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    stage_->song.keySignature = key;
    stage_->key(letter, modifiers);
    QTEST(Band::notes(), "notes");
}

void ArrangerChordsTest::mutedChordsAreLaidInSilence()
{
    stage_->song.harmonyTrack.muted = true;
    stage_->key(Qt::Key_C);
    const MenuAnswer answer({"IV · Fa"});
    stage_->click(stage_->at(4.5, kChordsY));
    QCOMPARE(laid(), QStringList({"0: 1.0 0+4", "1: 4.0 0+4"}));
    QCOMPARE(edits_, 2);
    QCOMPARE(Band::notes(), QStringList());
}

void ArrangerChordsTest::chordOutsideTheKeyIsNotHeard()
{
    stage_->key(Qt::Key_F, Qt::ShiftModifier);
    QCOMPARE(Band::notes(), QStringList());
}

void ArrangerChordsTest::menuIsHeardToo()
{
    const MenuAnswer answer({"Con séptima", "V7 · Sol7"});
    stage_->click(stage_->at(4.0, kChordsY));
    QCOMPARE(Band::notes(), QStringList({"13 55 80", "13 59 80", "13 62 80", "13 65 80"}));
}

// ---- The playhead --------------------------------------------------------------------------

void ArrangerChordsTest::clickOnTheRulerPlaysFromThere()
{
    QTest::mouseClick(stage_->arranger.ruler(), Qt::LeftButton, {}, QPoint(330, 10));
    QVERIFY(band_->engine().isPlaying());
    QVERIFY(band_->engine().playheadBeat() >= 10.0);
    QVERIFY(band_->engine().playheadBeat() < 12.0);
}

void ArrangerChordsTest::clickOnTheRulerMovesWhilePlaying()
{
    band_->engine().play(0.0);
    const QSignalSpy playing(&band_->engine(), &PlaybackEngine::playingChanged);
    QTest::mouseClick(stage_->arranger.ruler(), Qt::LeftButton, {}, QPoint(330, 10));
    QVERIFY(band_->engine().isPlaying());
    QVERIFY(band_->engine().playheadBeat() >= 10.0);
    // It is not started a second time.
    QCOMPARE(playing.size(), 1);
}

void ArrangerChordsTest::clickOnTheRulerWithoutAnEngineDoesNothing()
{
    stage_->arranger.setContext(&stage_->song, nullptr, nullptr);
    QTest::mouseClick(stage_->arranger.ruler(), Qt::LeftButton, {}, QPoint(330, 10));
    QVERIFY(!band_->engine().isPlaying());
    QCOMPARE(band_->engine().playheadBeat(), 0.0);
}

namespace {

double playheadX(const TrackArranger& arranger)
{
    for (const QGraphicsItem* item : arranger.scene()->items()) {
        if (item->zValue() == 100.0)
            return item->x();
    }
    return -1.0;
}

} // namespace

void ArrangerChordsTest::playheadFollowsTheEngine()
{
    band_->engine().setPlayheadBeat(4.5);
    QCOMPARE(playheadX(stage_->arranger), 144.0);
    COMPARE_COLOR(painted(stage_->arranger.ruler()).pixelColor(144, 18), QColor("#4a7325"));
    band_->engine().setPlayheadBeat(6.25);
    QCOMPARE(playheadX(stage_->arranger), 200.0);
    COMPARE_COLOR(painted(stage_->arranger.ruler()).pixelColor(200, 18), QColor("#4a7325"));
    QCOMPARE(stage_->scroll().x(), 0);
}

void ArrangerChordsTest::playheadSurvivesRebuilds()
{
    band_->engine().setPlayheadBeat(4.5);
    emit stage_->song.changed();
    QCOMPARE(playheadX(stage_->arranger), 144.0);
    TrackArranger other;
    other.setContext(&stage_->song, &band_->engine(), nullptr);
    QCOMPARE(playheadX(other), 144.0);
}

void ArrangerChordsTest::contextLeavesThePreviousEngine()
{
    for (int i = 0; i < 3; ++i)
        stage_->arranger.setContext(&stage_->song, &band_->engine(), nullptr);
    stage_->arranger.setContext(&stage_->song, nullptr, nullptr);
    band_->engine().setPlayheadBeat(4.5);
    QCOMPARE(playheadX(stage_->arranger), 0.0);
}

QTEST_MAIN(ArrangerChordsTest)

#include "ArrangerChordsTest.moc"
