#include "playback/LivePreview.h"

#include "content/Rhythm.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "support/ContentFixture.h"
#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/TinyBank.h"

#include <QTest>
#include <QTimer>

#include <limits>
#include <memory>

namespace LivePreviewTests {

using ProjectBuilder::note;

namespace {

constexpr int kMinInt = std::numeric_limits<int>::min();
constexpr int kMaxInt = std::numeric_limits<int>::max();

LoopVariant variantOf(const QList<NoteEvent>& notes)
{
    LoopVariant variant;
    variant.notes = notes;
    return variant;
}

/// Everything that a synthesiser without a sound card is asked for.
QStringList calls()
{
    return FluidSpy::calls({"program_select", "cc", "noteon", "noteoff", "all_notes_off"});
}

/// The same since the last time.
QStringList newCalls()
{
    const QStringList list = calls();
    FluidSpy::reset();
    return list;
}

/// Previews on a synthesiser of two programs and a drum kit.
class Ear {
public:
    Ear()
    {
        files_.instruments().loadBuiltinGmInstruments();
        ContentFixture::write(files_.filePath("gm.sf2"),
                              TinyBank::bytes({{0, 0, 100}, {0, 75, 80}, {128, 0, 50}}));
        player_.loadGmBank(files_.filePath("gm.sf2"));
        FluidSpy::reset();
    }

    LivePreview& preview() { return *preview_; }

    void destroy() { preview_.reset(); }

private:
    ContentFixture files_;
    SoundfontPlayer player_{SoundfontPlayer::Mode::Realtime};
    std::unique_ptr<LivePreview> preview_ =
        std::make_unique<LivePreview>(&player_, &files_.instruments());
};

/// Whether a call comes between two moments, in milliseconds from now. Timers fire in the order
/// of their times, so the answer does not hang on how busy the machine is.
class Between {
public:
    Between(const QString& call, int after, int before) : call_(call), before_(before)
    {
        QTimer::singleShot(after, Qt::PreciseTimer, &context_, [this] { tooEarly_ = came(); });
    }

    /// To be called when the call is on its way.
    bool holds()
    {
        bool over = false;
        bool inTime = false;
        QTimer::singleShot(before_, Qt::PreciseTimer, &context_, [&] {
            inTime = came();
            over = true;
        });
        return QTest::qWaitFor([&] { return over; }, 20000) && inTime && !tooEarly_;
    }

private:
    bool came() const { return FluidSpy::calls().contains(call_); }

    QString call_;
    int before_;
    bool tooEarly_ = true;
    QObject context_;
};

} // namespace

class LivePreviewTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void noteSoundsUntilItIsReleased();
    void noteConfiguresItsInstrumentOnce();
    void anotherInstrumentIsConfigured();
    void noInstrumentAtFirstIsAPiano();
    void unknownInstrumentIsAPiano();
    void releaseOfANoteThatDoesNotSoundIsPassedOn();
    void samePitchTwiceIsHeldOnce();

    void chordSoundsOnThePianoInItsOrder();
    void chordEndsAfterItsTime();
    void chordDoesNotSetTheVolume();
    void noteAfterAChordConfiguresItsInstrumentAnew();
    void emptyChordOnlyTakesThePiano();
    void chordMayBeStoppedBeforeItsEnd();
    void secondChordEndsTheFirstAndSoundsItsWholeTime();
    void noteEndsAChord();

    void variantConfiguresItsInstrumentEveryTime();
    void variantSilencesWhatSounded();
    void variantSoundsItsNotesInTime();
    void variantReleasesItsNotesInTime();
    void variantPlaysItsStoredPitchesAndVelocities();
    void variantOfManyNotesSoundsThemInTheirOrder();
    void variantHoldsNoPitch();
    void secondVariantEndsTheFirst();
    void secondPressOfAVariantEndsIt();
    void variantThatIsOverPlaysAgain();
    void noteOrChordEndsAVariant();
    void stoppedVariantStaysSilent();
    void runningPreviewsEndAndHeldNotesStay();
    void repeatedNotesOfAVariantAllSound();
    void tempoBelowOneCountsAsOne_data();
    void tempoBelowOneCountsAsOne();
    void placeBeforeTheStartSoundsAtOnce();
    void placeOutOfReachDoesNotSound_data();
    void placeOutOfReachDoesNotSound();
    void emptyVariantOnlyConfigures();

    void stopSilencesItsChannelOnly();
    void everythingStaysOnItsChannel();
    void pendingTimersDieWithThePreview();
    void withoutAPlayerNothingHappens();
    void withoutASynthesiserNothingHappens();
    void engineOpensTheDoor();
    void absurdNumbersAreSurvived();
};

void LivePreviewTest::init()
{
    FluidSpy::reset();
}

// ---- Notes ---------------------------------------------------------------------------------

void LivePreviewTest::noteSoundsUntilItIsReleased()
{
    Ear ear;
    ear.preview().noteOn(64, "gm_flauta_pan", 100);
    QCOMPARE(newCalls(),
             QStringList({"program_select 13 1 0 75", "cc 13 7 114", "noteon 13 64 100"}));
    QCOMPARE(ear.preview().held(), QSet<int>{64});
    QTest::qWait(20);
    QVERIFY(newCalls().isEmpty());
    ear.preview().noteOff(64);
    QCOMPARE(newCalls(), QStringList{"noteoff 13 64"});
    QVERIFY(ear.preview().held().isEmpty());
}

void LivePreviewTest::noteConfiguresItsInstrumentOnce()
{
    Ear ear;
    ear.preview().noteOn(64, "gm_flauta_pan", 100);
    ear.preview().noteOff(64);
    newCalls();
    ear.preview().noteOn(65, "gm_flauta_pan", 90);
    ear.preview().noteOn(66, "gm_flauta_pan", 80);
    QCOMPARE(newCalls(), QStringList({"noteon 13 65 90", "noteon 13 66 80"}));
    QCOMPARE(ear.preview().held(), QSet<int>({65, 66}));
}

void LivePreviewTest::anotherInstrumentIsConfigured()
{
    Ear ear;
    ear.preview().noteOn(64, "gm_flauta_pan", 100);
    newCalls();
    ear.preview().noteOn(38, "gm_bateria", 100);
    QCOMPARE(newCalls(),
             QStringList({"program_select 13 1 128 0", "cc 13 7 114", "noteon 13 38 100"}));
    ear.preview().noteOn(64, "gm_flauta_pan", 100);
    QCOMPARE(newCalls().first(), "program_select 13 1 0 75");
}

void LivePreviewTest::noInstrumentAtFirstIsAPiano()
{
    Ear ear;
    ear.preview().noteOn(64, "", 100);
    QCOMPARE(newCalls(),
             QStringList({"program_select 13 1 0 0", "cc 13 7 114", "noteon 13 64 100"}));
    ear.preview().noteOn(65, "", 100);
    QCOMPARE(newCalls(), QStringList{"noteon 13 65 100"});
}

void LivePreviewTest::unknownInstrumentIsAPiano()
{
    Ear ear;
    ear.preview().noteOn(64, "theremin", 100);
    QCOMPARE(newCalls().first(), "program_select 13 1 0 0");
}

void LivePreviewTest::releaseOfANoteThatDoesNotSoundIsPassedOn()
{
    Ear ear;
    ear.preview().noteOff(64);
    QCOMPARE(newCalls(), QStringList{"noteoff 13 64"});
    QVERIFY(ear.preview().held().isEmpty());
}

void LivePreviewTest::samePitchTwiceIsHeldOnce()
{
    Ear ear;
    ear.preview().noteOn(64, "", 100);
    ear.preview().noteOn(64, "", 100);
    ear.preview().noteOff(64);
    QVERIFY(ear.preview().held().isEmpty());
    QCOMPARE(newCalls().mid(2),
             QStringList({"noteon 13 64 100", "noteon 13 64 100", "noteoff 13 64"}));
}

// ---- Chords --------------------------------------------------------------------------------

void LivePreviewTest::chordSoundsOnThePianoInItsOrder()
{
    Ear ear;
    ear.preview().chord({67, 60, 64}, 80);
    QCOMPARE(newCalls(), QStringList({"program_select 13 1 0 0", "noteon 13 67 80",
                                      "noteon 13 60 80", "noteon 13 64 80"}));
    QCOMPARE(ear.preview().held(), QSet<int>({60, 64, 67}));
}

void LivePreviewTest::chordEndsAfterItsTime()
{
    QCOMPARE(LivePreview::kChordPreviewMs, 600);
    Ear ear;
    Between inTime("noteoff 13 60", 590, 620);
    ear.preview().chord({60, 64}, 80);
    newCalls();
    QVERIFY(inTime.holds());
    QCOMPARE(newCalls(), QStringList({"noteoff 13 60", "noteoff 13 64"}));
    QVERIFY(ear.preview().held().isEmpty());
}

void LivePreviewTest::chordDoesNotSetTheVolume()
{
    Ear ear;
    ear.preview().chord({60}, 80);
    QVERIFY(FluidSpy::calls({"cc"}).isEmpty());
}

void LivePreviewTest::noteAfterAChordConfiguresItsInstrumentAnew()
{
    Ear ear;
    ear.preview().noteOn(64, "gm_flauta_pan", 100);
    ear.preview().chord({60}, 80);
    newCalls();
    ear.preview().noteOn(64, "gm_flauta_pan", 100);
    QCOMPARE(newCalls(), QStringList({"noteoff 13 60", "program_select 13 1 0 75", "cc 13 7 114",
                                      "noteon 13 64 100"}));
}

void LivePreviewTest::emptyChordOnlyTakesThePiano()
{
    Ear ear;
    ear.preview().chord({}, 80);
    QCOMPARE(newCalls(), QStringList{"program_select 13 1 0 0"});
    QVERIFY(ear.preview().held().isEmpty());
}

void LivePreviewTest::chordMayBeStoppedBeforeItsEnd()
{
    Ear ear;
    ear.preview().chord({60, 64}, 80);
    newCalls();
    ear.preview().stop();
    QCOMPARE(newCalls(), QStringList{"all_notes_off 13"});
    QVERIFY(ear.preview().held().isEmpty());
    QTest::qWait(650);
    QVERIFY(calls().isEmpty());
}

void LivePreviewTest::secondChordEndsTheFirstAndSoundsItsWholeTime()
{
    Ear ear;
    ear.preview().chord({60, 64, 67}, 80);
    newCalls();
    QTest::qWait(300);
    // Two of its notes sound already: the first chord's end must not be theirs.
    Between inTime("noteoff 13 72", 590, 620);
    ear.preview().chord({60, 67, 72}, 80);
    QCOMPARE(newCalls(), QStringList({"noteoff 13 60", "noteoff 13 64", "noteoff 13 67",
                                      "program_select 13 1 0 0", "noteon 13 60 80",
                                      "noteon 13 67 80", "noteon 13 72 80"}));
    QCOMPARE(ear.preview().held(), QSet<int>({60, 67, 72}));
    QVERIFY(inTime.holds());
    QCOMPARE(newCalls(), QStringList({"noteoff 13 60", "noteoff 13 67", "noteoff 13 72"}));
}

void LivePreviewTest::noteEndsAChord()
{
    Ear ear;
    ear.preview().chord({60, 64}, 80);
    newCalls();
    ear.preview().noteOn(60, "gm_flauta_pan", 100);
    QCOMPARE(newCalls(), QStringList({"noteoff 13 60", "noteoff 13 64", "program_select 13 1 0 75",
                                      "cc 13 7 114", "noteon 13 60 100"}));
    QTest::qWait(650);
    QVERIFY(calls().isEmpty());
    QCOMPARE(ear.preview().held(), QSet<int>{60});
}

// ---- Variants ------------------------------------------------------------------------------

void LivePreviewTest::variantConfiguresItsInstrumentEveryTime()
{
    Ear ear;
    const QStringList configuring{"all_notes_off 13", "program_select 13 1 0 75", "cc 13 7 114"};
    ear.preview().variant(variantOf({}), "gm_flauta_pan", 120);
    QCOMPARE(newCalls(), configuring);
    ear.preview().variant(variantOf({}), "gm_flauta_pan", 120);
    QCOMPARE(newCalls(), configuring);
    ear.preview().noteOn(60, "gm_flauta_pan", 100);
    QCOMPARE(newCalls(), QStringList{"noteon 13 60 100"});
}

void LivePreviewTest::variantSilencesWhatSounded()
{
    Ear ear;
    ear.preview().noteOn(64, "gm_flauta_pan", 100);
    newCalls();
    ear.preview().variant(variantOf({}), "gm_flauta_pan", 120);
    QCOMPARE(newCalls().first(), "all_notes_off 13");
    QVERIFY(ear.preview().held().isEmpty());
}

void LivePreviewTest::variantSoundsItsNotesInTime()
{
    Ear ear;
    Between inTime("noteon 13 60 100", 490, 520);
    ear.preview().variant(variantOf({note(60, 1.0)}), "gm_piano", 120);
    QVERIFY(inTime.holds());
}

void LivePreviewTest::variantReleasesItsNotesInTime()
{
    Ear ear;
    Between inTime("noteoff 13 60", 290, 320);
    ear.preview().variant(variantOf({note(60, 1.0, 0.5)}), "gm_piano", 300);
    QVERIFY(inTime.holds());
}

void LivePreviewTest::variantPlaysItsStoredPitchesAndVelocities()
{
    Ear ear;
    ear.preview().variant(variantOf({note(61, 0.0, 0.5, 33), note(200, 1.0, 0.5, 999)}),
                          "gm_flauta_pan", 6000);
    newCalls();
    QTRY_COMPARE(calls(), QStringList({"noteon 13 61 33", "noteoff 13 61", "noteon 13 127 127",
                                       "noteoff 13 127"}));
}

void LivePreviewTest::variantOfManyNotesSoundsThemInTheirOrder()
{
    QList<NoteEvent> notes;
    QStringList expected;
    for (int i = 0; i < 50; ++i) {
        notes.append(note(30 + i, 0.1 * i, 0.06));
        expected.append({QStringLiteral("noteon 13 %1 100").arg(30 + i),
                         QStringLiteral("noteoff 13 %1").arg(30 + i)});
    }
    Ear ear;
    ear.preview().variant(variantOf(notes), "gm_piano", 1200);
    newCalls();
    QTRY_COMPARE(calls(), expected);
}

void LivePreviewTest::variantHoldsNoPitch()
{
    Ear ear;
    ear.preview().variant(variantOf({note(60, 0.0, 1000.0)}), "gm_piano", 120);
    QTRY_VERIFY(calls().contains("noteon 13 60 100"));
    QVERIFY(ear.preview().held().isEmpty());
}

void LivePreviewTest::secondVariantEndsTheFirst()
{
    Ear ear;
    ear.preview().variant(variantOf({note(60, 0.0, 0.2), note(62, 0.5, 0.2)}), "gm_piano", 600);
    QTRY_VERIFY(calls().contains("noteon 13 60 100"));
    newCalls();
    ear.preview().variant(variantOf({note(72, 0.4, 0.6)}), "gm_piano", 600);
    QCOMPARE(newCalls(),
             QStringList({"all_notes_off 13", "program_select 13 1 0 0", "cc 13 7 114"}));
    QTRY_COMPARE(calls(), QStringList({"noteon 13 72 100", "noteoff 13 72"}));
}

void LivePreviewTest::secondPressOfAVariantEndsIt()
{
    Ear ear;
    const LoopVariant pressed = variantOf({note(60, 0.0, 1000.0), note(62, 0.5)});
    ear.preview().variant(pressed, "gm_piano", 600);
    QTRY_VERIFY(calls().contains("noteon 13 60 100"));
    newCalls();
    ear.preview().variant(pressed, "gm_piano", 600);
    QCOMPARE(newCalls(), QStringList{"all_notes_off 13"});
    QTest::qWait(100);
    QVERIFY(calls().isEmpty());
    // The third press plays it, and so does the same variant on another instrument.
    ear.preview().variant(pressed, "gm_piano", 600);
    QTRY_VERIFY(calls().contains("noteon 13 60 100"));
    newCalls();
    ear.preview().variant(pressed, "gm_flauta_pan", 600);
    QTRY_VERIFY(calls().contains("noteon 13 60 100"));
}

void LivePreviewTest::variantThatIsOverPlaysAgain()
{
    Ear ear;
    const LoopVariant once = variantOf({note(60, 0.0, 0.1)});
    for (int time = 0; time < 2; ++time) {
        ear.preview().variant(once, "gm_piano", 6000);
        newCalls();
        QTRY_COMPARE(calls(), QStringList({"noteon 13 60 100", "noteoff 13 60"}));
    }
}

void LivePreviewTest::noteOrChordEndsAVariant()
{
    const LoopVariant variant = variantOf({note(60, 0.0, 1000.0), note(62, 1.0)});
    for (const bool withChord : {false, true}) {
        Ear ear;
        ear.preview().variant(variant, "gm_piano", 600);
        QTRY_VERIFY(calls().contains("noteon 13 60 100"));
        newCalls();
        if (withChord)
            ear.preview().chord({72}, 80);
        else
            ear.preview().noteOn(72, "gm_piano", 80);
        QCOMPARE(newCalls(), withChord ? QStringList({"all_notes_off 13", "program_select 13 1 0 0",
                                                      "noteon 13 72 80"})
                                       : QStringList({"all_notes_off 13", "noteon 13 72 80"}));
        QTest::qWait(200);
        QVERIFY(calls().isEmpty());
    }
}

void LivePreviewTest::stoppedVariantStaysSilent()
{
    Ear ear;
    ear.preview().variant(variantOf({note(60, 0.5, 0.2)}), "gm_piano", 600);
    ear.preview().stop();
    newCalls();
    QTest::qWait(150);
    QVERIFY(calls().isEmpty());
}

void LivePreviewTest::runningPreviewsEndAndHeldNotesStay()
{
    Ear ear;
    ear.preview().endRunning();
    ear.preview().noteOn(60, "gm_piano", 100);
    newCalls();
    ear.preview().endRunning();
    QVERIFY(newCalls().isEmpty());
    QCOMPARE(ear.preview().held(), QSet<int>{60});
    ear.preview().chord({64}, 80);
    newCalls();
    ear.preview().endRunning();
    QCOMPARE(newCalls(), QStringList{"noteoff 13 64"});
    ear.preview().variant(variantOf({note(60, 0.0, 1000.0)}), "gm_piano", 600);
    newCalls();
    ear.preview().endRunning();
    QCOMPARE(newCalls(), QStringList{"all_notes_off 13"});
}

void LivePreviewTest::repeatedNotesOfAVariantAllSound()
{
    // Each note rings into the next; the order of the list is not that of time.
    Ear ear;
    ear.preview().variant(variantOf({note(60, 0.4, 0.3), note(60, 0.0, 9.0), note(60, 0.2, 9.0)}),
                          "gm_piano", 600);
    newCalls();
    QTRY_COMPARE(calls(), QStringList({"noteon 13 60 100", "noteoff 13 60", "noteon 13 60 100",
                                       "noteoff 13 60", "noteon 13 60 100", "noteoff 13 60"}));
}

void LivePreviewTest::tempoBelowOneCountsAsOne_data()
{
    QTest::addColumn<int>("bpm");
    QTest::newRow("a tempo of 1") << 1;
    QTest::newRow("a tempo of 0") << 0;
    QTest::newRow("a negative tempo") << -120;
    QTest::newRow("the lowest tempo") << kMinInt;
}

void LivePreviewTest::tempoBelowOneCountsAsOne()
{
    QFETCH(int, bpm);
    Ear ear;
    // At a tempo of 1 a beat takes a minute.
    Between inTime("noteon 13 60 100", 110, 140);
    ear.preview().variant(variantOf({note(60, 0.002)}), "gm_piano", bpm);
    QVERIFY(inTime.holds());
}

void LivePreviewTest::placeBeforeTheStartSoundsAtOnce()
{
    Ear ear;
    ear.preview().variant(variantOf({note(60, -5.0, 1.0)}), "gm_piano", 120);
    newCalls();
    QTRY_COMPARE(calls(), QStringList({"noteon 13 60 100", "noteoff 13 60"}));
}

void LivePreviewTest::placeOutOfReachDoesNotSound_data()
{
    using Limits = std::numeric_limits<double>;
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("duration");
    QTest::newRow("a start that is no number") << Limits::quiet_NaN() << 1.0;
    QTest::newRow("a length that is no number") << 0.0 << Limits::quiet_NaN();
    QTest::newRow("an infinite start") << Limits::infinity() << 1.0;
    QTest::newRow("an infinite length") << 0.0 << Limits::infinity();
    QTest::newRow("a start at the end of time") << Limits::max() << 1.0;
    QTest::newRow("a start in a thousand years") << 1e12 << 1.0;
}

void LivePreviewTest::placeOutOfReachDoesNotSound()
{
    QFETCH(double, start);
    QFETCH(double, duration);
    Ear ear;
    ear.preview().variant(variantOf({note(60, start, duration), note(72, 0.2, 0.1)}), "gm_piano",
                          600);
    newCalls();
    QTRY_COMPARE(calls(), QStringList({"noteon 13 72 100", "noteoff 13 72"}));
}

void LivePreviewTest::emptyVariantOnlyConfigures()
{
    Ear ear;
    ear.preview().variant(variantOf({}), "gm_bateria", 120);
    QCOMPARE(newCalls(),
             QStringList({"all_notes_off 13", "program_select 13 1 128 0", "cc 13 7 114"}));
}

// ---- Manners -------------------------------------------------------------------------------

void LivePreviewTest::stopSilencesItsChannelOnly()
{
    Ear ear;
    ear.preview().noteOn(60, "gm_piano", 100);
    ear.preview().noteOn(64, "gm_piano", 100);
    newCalls();
    ear.preview().stop();
    QCOMPARE(newCalls(), QStringList{"all_notes_off 13"});
    QVERIFY(ear.preview().held().isEmpty());
    ear.preview().noteOn(60, "gm_piano", 100);
    QCOMPARE(newCalls(), QStringList{"noteon 13 60 100"});
}

void LivePreviewTest::everythingStaysOnItsChannel()
{
    Ear ear;
    ear.preview().noteOn(60, "gm_bateria", 100);
    ear.preview().chord({60, 64}, 80);
    ear.preview().variant(variantOf({note(60, 0.0, 0.1)}), "gm_flauta_pan", 6000);
    QTRY_VERIFY(calls().contains("noteoff 13 60"));
    ear.preview().noteOff(60);
    ear.preview().stop();
    for (const QString& call : calls())
        QCOMPARE(call.section(' ', 1, 1), "13");
}

void LivePreviewTest::pendingTimersDieWithThePreview()
{
    Ear ear;
    ear.preview().chord({60}, 80);
    ear.preview().variant(variantOf({note(60, 0.1), note(62, 0.5)}), "gm_piano", 600);
    ear.destroy();
    newCalls();
    QTest::qWait(650);
    QVERIFY(calls().isEmpty());
}

void LivePreviewTest::withoutAPlayerNothingHappens()
{
    LivePreview preview(nullptr, nullptr);
    preview.noteOn(60, "gm_piano", 100);
    preview.noteOff(60);
    preview.chord({60}, 80);
    preview.variant(variantOf({note(60, 0.0)}), "gm_piano", 120);
    preview.stop();
    QTest::qWait(20);
    QVERIFY(preview.held().isEmpty());
    QVERIFY(FluidSpy::calls().isEmpty());
}

void LivePreviewTest::withoutASynthesiserNothingHappens()
{
    FluidSpy::letSynthFail();
    SoundfontPlayer dead(SoundfontPlayer::Mode::Realtime);
    LivePreview preview(&dead, nullptr);
    preview.noteOn(60, "gm_piano", 100);
    preview.chord({60}, 80);
    preview.variant(variantOf({note(60, 0.0)}), "gm_piano", 120);
    QVERIFY(preview.held().isEmpty());
    preview.noteOff(60);
    preview.stop();
    QTest::qWait(20);
    QVERIFY(calls().isEmpty());
}

void LivePreviewTest::engineOpensTheDoor()
{
    ContentFixture files;
    files.instruments().loadBuiltinGmInstruments();
    SoundfontPlayer player(SoundfontPlayer::Mode::Realtime);
    PlaybackEngine engine(&player, nullptr, &files.instruments());
    engine.previewNoteOn(60, "gm_piano", 100);
    QCOMPARE(engine.previewHeld(), QSet<int>{60});
    engine.previewNoteOff(60);
    QVERIFY(engine.previewHeld().isEmpty());
    engine.previewChord({64, 67}, 80);
    QCOMPARE(engine.previewHeld(), QSet<int>({64, 67}));
    engine.stopPreview();
    QVERIFY(engine.previewHeld().isEmpty());
    FluidSpy::reset();
    // The length that is told has no effect: neither is anything cut, nor does it come again.
    engine.previewVariant(variantOf({note(70, 0.0, 0.2), note(71, 0.4, 0.2)}), "gm_piano", 600,
                          0.1);
    QTRY_COMPARE(FluidSpy::calls({"noteon"}),
                 QStringList({"noteon 13 70 100", "noteon 13 71 100"}));
    QTRY_VERIFY(FluidSpy::calls().contains("noteoff 13 71"));
}

void LivePreviewTest::absurdNumbersAreSurvived()
{
    Ear ear;
    ProjectBuilder::Generator generator(9, ProjectBuilder::Numbers::Hostile);
    for (int round = 0; round < 200; ++round) {
        QList<NoteEvent> notes;
        for (int i = 0; i < 10; ++i)
            notes.append(generator.note());
        for (const int bpm : {kMinInt, 0, 60, kMaxInt})
            ear.preview().variant(variantOf(notes), "gm_piano", bpm);
        for (const NoteEvent& drawn : notes) {
            ear.preview().noteOn(drawn.pitch, "gm_bateria", drawn.velocity);
            ear.preview().chord({drawn.pitch, drawn.velocity}, drawn.velocity);
            ear.preview().noteOff(drawn.pitch);
        }
        QTest::qWait(1);
        for (const QString& call : newCalls()) {
            const QStringList words = call.split(' ');
            QCOMPARE(words.at(1), "13");
            if (words.first().startsWith("noteo"))
                QVERIFY2(uint(words.at(2).toInt()) < 128, qPrintable(call));
            if (words.first() == "noteon")
                QVERIFY2(uint(words.at(3).toInt() - 1) < 127, qPrintable(call));
        }
        ear.preview().stop();
        QVERIFY(ear.preview().held().isEmpty());
        FluidSpy::reset();
    }
}

VELTA_GUILESS_TEST(LivePreviewTest)

} // namespace LivePreviewTests

#include "LivePreviewTest.moc"
