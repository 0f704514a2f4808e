#include "music/Humanizer.h"

#include "support/Exact.h"
#include "support/TestProgram.h"

#include <QTest>

#include <array>
#include <cmath>
#include <limits>
#include <random>

namespace HumanizerTests {

using Humanizer::apply;

namespace {

using Doubles = std::numeric_limits<double>;
using Ints = std::numeric_limits<qint32>;

constexpr double kBar = 4.0;

constexpr HumanizeSettings settings(float intensity, quint32 seed = 1)
{
    return {.enabled = true, .intensity = intensity, .seed = seed};
}

NoteEvent note(double startBeat, int velocity = 64)
{
    return {.pitch = 60, .startBeat = startBeat, .durationBeats = 1.0, .velocity = velocity};
}

GrooveTemplate groove(const QList<GrooveOffset>& offsets)
{
    return {.rhythmId = "chacarera", .offsets = offsets};
}

/// Notes that differ from one another in everything.
QList<NoteEvent> phrase(int length, quint32 seed)
{
    QRandomGenerator random(seed);
    QList<NoteEvent> notes;
    for (int i = 0; i < length; ++i)
        notes.append({.pitch = random.bounded(128),
                      .startBeat = random.bounded(1, 640) / 16.0,
                      .durationBeats = random.bounded(1, 64) / 16.0,
                      .velocity = random.bounded(20, 108)});
    return notes;
}

/// A mild groove on every beat of a bar in 4/4.
GrooveTemplate gentleGroove()
{
    return groove({{.position = 0.0, .timingOffsetBeats = 0.02, .velocityOffset = 10},
                   {.position = 1.0, .timingOffsetBeats = -0.03, .velocityOffset = -5},
                   {.position = 2.5, .timingOffsetBeats = 0.05, .velocityOffset = 4},
                   {.position = 3.75, .timingOffsetBeats = -0.01, .velocityOffset = -8}});
}

/// Starts and velocities as text, exact to the last bit.
QStringList played(const QList<NoteEvent>& notes)
{
    QStringList result;
    for (const NoteEvent& note : notes)
        result.append(exact(note.startBeat) + " at " + QByteArray::number(note.velocity));
    return result;
}

QStringList texts(const QList<std::pair<double, int>>& startsAndVelocities)
{
    QStringList result;
    for (const auto& [start, velocity] : startsAndVelocities)
        result.append(exact(start) + " at " + QByteArray::number(velocity));
    return result;
}

} // namespace

class HumanizerTest : public QObject {
    Q_OBJECT

private slots:
    void streamOfSeed_data();
    void streamOfSeed();
    void streamIsAMersenneTwisterSeededWithOneWord();
    void loosenedPhrase_data();
    void loosenedPhrase();
    void settingsThatLeaveTheNotes_data();
    void settingsThatLeaveTheNotes();
    void intensityAboveOneActsAsOne();
    void faintIntensityHardlyMoves();
    void noNoteStartsBeforeTheWork();
    void velocityStaysAudible_data();
    void velocityStaysAudible();
    void onlyStartAndVelocityChange();
    void jitterStaysWithinItsBounds();
    void nthNoteAlwaysGetsTheNthPair();
    void grooveDoesNotShiftTheStream();
    void distanceToOffset_data();
    void distanceToOffset();
    void nearestOffsetWins();
    void tieGoesToTheEarlierOffset();
    void barLineIsNotCrossed_data();
    void barLineIsNotCrossed();
    void grooveFollowsTheBar();
    void noteBeforeTheWorkHasItsPlaceInTheBar();
    void barLengthThatSkipsTheGroove_data();
    void barLengthThatSkipsTheGroove();
    void grooveWithoutOffsetsIsNone();
    void emptyListStaysEmpty();
    void equalInputGivesEqualOutput();
    void preparedGeneratorGivesTheSame();
    void seedsDiffer();
    void anyNumbersGiveAudibleNotes();
};

void HumanizerTest::streamOfSeed_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<QList<double>>("expected");

    // Computed apart from this code by a plain implementation of MT19937 and of the standard's
    // seed sequence; each number takes two 32-bit words, the low one first, without its last 11
    // bits.
    QTest::newRow("seed 0") << 0U << QList<double>{0.32079700086174123, 0.5115914570643522,
                                                   0.23623780582017195, 0.1738161564627123,
                                                   0.8776620343367502,  0.5417500724119015};
    QTest::newRow("seed 1") << 1U << QList<double>{0.557944348128205,   0.6951468956434482,
                                                   0.07929942259928047, 0.06940391353220021,
                                                   0.8479977992079486,  0.1860916562717726};
    QTest::newRow("seed 42") << 42U << QList<double>{0.568270147919814,  0.6226018210286433,
                                                     0.6405244100860592, 0.7637928554434322,
                                                     0.5953962947515627, 0.7740850037510361};
    QTest::newRow("the largest seed")
        << 4294967295U
        << QList<double>{0.038013099818386964, 0.10337387553860555, 0.8875348000389289,
                         0.3409825441716404,   0.9511750865963017,  0.07545903591858538};
}

void HumanizerTest::streamOfSeed()
{
    QFETCH(quint32, seed);
    QFETCH(QList<double>, expected);
    QRandomGenerator generator = Humanizer::generatorFor(seed);
    for (const double number : expected)
        QCOMPARE(exact(generator.generateDouble()), exact(number));
}

void HumanizerTest::streamIsAMersenneTwisterSeededWithOneWord()
{
    for (quint32 i = 0; i < 200; ++i) {
        const quint32 seed = i * 2654435761U;
        std::seed_seq words{seed};
        std::mt19937 twister(words);
        QRandomGenerator generator = Humanizer::generatorFor(seed);
        for (int draw = 0; draw < 400; ++draw) {
            const quint64 low = twister();
            const quint64 high = twister();
            QCOMPARE(exact(generator.generateDouble()),
                     exact(std::ldexp(static_cast<double>((high << 32 | low) >> 11), -53)));
        }
    }
}

void HumanizerTest::loosenedPhrase_data()
{
    QTest::addColumn<float>("intensity");
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<bool>("withGroove");
    QTest::addColumn<double>("beatsPerBar");
    QTest::addColumn<QStringList>("expected");

    // Computed apart from this code, from the streams above.
    QTest::newRow("by the usual settings") << 0.4F << 1U << false << 4.0
                                           << texts({{0.0016224417717660073, 102},
                                                     {0.9882203836572498, 96},
                                                     {2.0097439385230187, 61},
                                                     {2.490168867821575, 127},
                                                     {3.0004416713369033, 2},
                                                     {7.74395559639164, 77}});
    QTest::newRow("fully") << 1.0F << 1U << false << 4.0
                           << texts({{0.004056104368974353, 105},
                                     {0.9705509595819496, 90},
                                     {2.024359845944556, 56},
                                     {2.475422169920176, 127},
                                     {3.0011041783258054, 3},
                                     {7.734888991204272, 72}});
    QTest::newRow("toward a groove") << 0.4F << 1U << true << 4.0
                                     << texts({{0.009622441890975298, 106},
                                               {0.976220383478436, 94},
                                               {2.0097439385230187, 61},
                                               {2.5101688681195986, 127},
                                               {3.0004416713369033, 2},
                                               {7.7399555963320354, 74}});
    QTest::newRow("fully toward a groove") << 1.0F << 42U << true << 4.0
                                           << texts({{0.02477891035438698, 113},
                                                     {0.9798367087060241, 101},
                                                     {2.0066777406326093, 71},
                                                     {2.5335228183205762, 124},
                                                     {2.9699633422943785, 1},
                                                     {7.7238513526598735, 83}});
    QTest::newRow("fully toward a groove in three beats") << 1.0F << 42U << true << 3.0
                                                          << texts({{0.02477891035438698, 113},
                                                                    {0.9798367087060241, 101},
                                                                    {2.0066777406326093, 71},
                                                                    {2.5335228183205762, 124},
                                                                    {2.9899633422943785, 1},
                                                                    {7.733851352659873, 91}});
}

void HumanizerTest::loosenedPhrase()
{
    QFETCH(float, intensity);
    QFETCH(quint32, seed);
    QFETCH(bool, withGroove);
    QFETCH(double, beatsPerBar);
    const QList<NoteEvent> notes{note(0.0, 100), note(1.0, 100), note(2.0, 64),
                                 note(2.5, 127), note(3.0, 1),   note(7.75, 80)};
    const GrooveTemplate offsets = gentleGroove();
    QTEST(played(apply(notes, settings(intensity, seed), withGroove ? &offsets : nullptr,
                       beatsPerBar)),
          "expected");
}

void HumanizerTest::settingsThatLeaveTheNotes_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<float>("intensity");

    QTest::newRow("switched off") << false << 1.0F;
    QTest::newRow("no intensity") << true << 0.0F;
    QTest::newRow("negative zero") << true << -0.0F;
    QTest::newRow("a negative intensity") << true << -0.4F;
    QTest::newRow("an intensity that is no number")
        << true << std::numeric_limits<float>::quiet_NaN();
}

void HumanizerTest::settingsThatLeaveTheNotes()
{
    QFETCH(bool, enabled);
    QFETCH(float, intensity);
    const HumanizeSettings off{.enabled = enabled, .intensity = intensity, .seed = 1};
    const GrooveTemplate offsets = gentleGroove();
    // Values that humanizing would not leave alone.
    const QList<NoteEvent> notes{note(0.0, 0), note(-3.0, 500), note(1.0, -7)};
    QVERIFY(apply(notes, off, &offsets, kBar) == notes);
    QVERIFY(apply(notes, off, &offsets, kBar, Humanizer::generatorFor(1)) == notes);
}

void HumanizerTest::intensityAboveOneActsAsOne()
{
    const QList<NoteEvent> notes = phrase(50, 3);
    const GrooveTemplate offsets = gentleGroove();
    const QStringList full = played(apply(notes, settings(1.0F), &offsets, kBar));
    for (const float intensity : {1.0000001F, 2.5F, 1e30F, std::numeric_limits<float>::infinity()})
        QCOMPARE(played(apply(notes, settings(intensity), &offsets, kBar)), full);
}

void HumanizerTest::faintIntensityHardlyMoves()
{
    const QList<NoteEvent> notes = phrase(50, 4);
    const GrooveTemplate offsets = gentleGroove();
    QVERIFY(apply(notes, settings(std::numeric_limits<float>::denorm_min()), &offsets, kBar) ==
            notes);
}

void HumanizerTest::noNoteStartsBeforeTheWork()
{
    // The second pair of seed 1 moves its note by -0.029 at full intensity.
    const QList<NoteEvent> result =
        apply({note(0.0), note(0.0), note(0.0)}, settings(1.0F), nullptr, kBar);
    QCOMPARE(exact(result[0].startBeat), exact(0.004056104368974353));
    QCOMPARE(exact(result[1].startBeat), exact(0.0));
    QVERIFY(result[2].startBeat > 0.0);

    const GrooveTemplate early = groove({{.position = 0.0, .timingOffsetBeats = -5.0}});
    QCOMPARE(exact(apply({note(0.0)}, settings(1.0F), &early, kBar)[0].startBeat), exact(0.0));
}

void HumanizerTest::velocityStaysAudible_data()
{
    QTest::addColumn<int>("velocity");
    QTest::addColumn<int>("raised");
    QTest::addColumn<int>("lowered");

    // The first pair of seed 1 adds 4.68 at full intensity, the second takes 10.33.
    QTest::newRow("127 stays at 127") << 127 << 127 << 117;
    QTest::newRow("1 stays at 1") << 1 << 6 << 1;
    QTest::newRow("0 becomes audible") << 0 << 5 << 1;
    QTest::newRow("64 moves freely") << 64 << 69 << 54;
    QTest::newRow("a negative velocity becomes 1") << -50 << 1 << 1;
    QTest::newRow("the largest becomes 127") << Ints::max() << 127 << 127;
    QTest::newRow("the least becomes 1") << Ints::min() << 1 << 1;
}

void HumanizerTest::velocityStaysAudible()
{
    QFETCH(int, velocity);
    const QList<NoteEvent> result =
        apply({note(1.0, velocity), note(2.0, velocity)}, settings(1.0F), nullptr, kBar);
    QTEST(result[0].velocity, "raised");
    QTEST(result[1].velocity, "lowered");
}

void HumanizerTest::onlyStartAndVelocityChange()
{
    const QList<NoteEvent> notes = phrase(500, 5);
    const GrooveTemplate offsets = gentleGroove();
    const QList<NoteEvent> result = apply(notes, settings(1.0F), &offsets, kBar);
    QCOMPARE(result.size(), notes.size());
    for (qsizetype i = 0; i < notes.size(); ++i) {
        QCOMPARE(result[i].pitch, notes[i].pitch);
        QCOMPARE(exact(result[i].durationBeats), exact(notes[i].durationBeats));
    }
}

void HumanizerTest::jitterStaysWithinItsBounds()
{
    // Starts at 8 lose some of the last bits in the sum: hence the slack.
    const QList<NoteEvent> notes(5000, note(8.0));
    for (const float intensity : {0.25F, 0.5F, 1.0F}) {
        const double most = static_cast<double>(intensity);
        double widest = 0.0;
        int loudest = 0;
        for (const NoteEvent& moved : apply(notes, settings(intensity, 9), nullptr, kBar)) {
            widest = std::max(widest, std::abs(moved.startBeat - 8.0));
            loudest = std::max(loudest, std::abs(moved.velocity - 64));
        }
        QVERIFY(widest <= 0.035 * most + 1e-12);
        QVERIFY(widest > 0.034 * most);
        QCOMPARE(loudest, static_cast<int>(12 * most));
    }
}

void HumanizerTest::nthNoteAlwaysGetsTheNthPair()
{
    const QList<NoteEvent> plain(40, note(16.0));
    QList<NoteEvent> varied = plain;
    for (qsizetype i = 0; i < varied.size(); ++i) {
        varied[i].pitch = static_cast<qint32>(i);
        varied[i].durationBeats = 0.1 * static_cast<double>(i);
    }
    const QStringList expected = played(apply(plain, settings(0.8F), nullptr, kBar));
    QCOMPARE(played(apply(varied, settings(0.8F), nullptr, kBar)), expected);

    QList<NoteEvent> longer = plain;
    longer.prepend(note(0.0));
    QStringList shifted = played(apply(longer, settings(0.8F), nullptr, kBar));
    shifted.removeFirst();
    QCOMPARE(shifted.first(), expected[1]);
    shifted.removeLast();
    QCOMPARE(shifted, expected.mid(1));
}

void HumanizerTest::grooveDoesNotShiftTheStream()
{
    const GrooveTemplate onTheFirstBeat =
        groove({{.position = 0.0, .timingOffsetBeats = 0.1, .velocityOffset = 30}});
    const QList<NoteEvent> notes{note(4.0), note(5.0), note(8.0), note(9.5)};
    const QStringList with = played(apply(notes, settings(1.0F), &onTheFirstBeat, kBar));
    const QStringList without = played(apply(notes, settings(1.0F), nullptr, kBar));
    QVERIFY(with[0] != without[0]);
    QCOMPARE(with[1], without[1]);
    QVERIFY(with[2] != without[2]);
    QCOMPARE(with[3], without[3]);
}

void HumanizerTest::distanceToOffset_data()
{
    QTest::addColumn<double>("startBeat");
    QTest::addColumn<bool>("taken");

    QTest::newRow("on the offset") << 5.0 << true;
    QTest::newRow("an eighth of a beat behind") << 5.125 << true;
    QTest::newRow("an eighth of a beat ahead") << 4.875 << true;
    QTest::newRow("an eighth and rounding behind") << 5.1250000005 << true;
    QTest::newRow("an eighth and rounding ahead") << 4.8749999995 << true;
    QTest::newRow("an eighth and more than rounding") << 5.125000002 << false;
    QTest::newRow("0.13 behind") << 5.13 << false;
    QTest::newRow("0.13 ahead") << 4.87 << false;
    QTest::newRow("a beat away") << 6.0 << false;
}

void HumanizerTest::distanceToOffset()
{
    QFETCH(double, startBeat);
    const GrooveTemplate offsets =
        groove({{.position = 1.0, .timingOffsetBeats = 0.25, .velocityOffset = 20}});
    const NoteEvent with = apply({note(startBeat)}, settings(1.0F), &offsets, kBar)[0];
    const NoteEvent without = apply({note(startBeat)}, settings(1.0F), nullptr, kBar)[0];
    QTEST(with.velocity == without.velocity + 20, "taken");
    QTEST(std::abs(with.startBeat - without.startBeat - 0.25) < 1e-9, "taken");
    QTEST(exact(with.startBeat) != exact(without.startBeat), "taken");
}

void HumanizerTest::nearestOffsetWins()
{
    const GrooveOffset far{.position = 1.125, .timingOffsetBeats = 0.2, .velocityOffset = 20};
    const GrooveOffset near{.position = 0.9375, .timingOffsetBeats = -0.2, .velocityOffset = -20};
    const GrooveTemplate alone = groove({near});
    const QStringList expected = played(apply({note(1.0)}, settings(1.0F), &alone, kBar));
    for (const QList<GrooveOffset>& offsets : {QList{far, near}, QList{near, far}}) {
        const GrooveTemplate both = groove(offsets);
        QCOMPARE(played(apply({note(1.0)}, settings(1.0F), &both, kBar)), expected);
    }
}

void HumanizerTest::tieGoesToTheEarlierOffset()
{
    const GrooveOffset ahead{.position = 0.9375, .timingOffsetBeats = -0.2, .velocityOffset = -20};
    const GrooveOffset behind{.position = 1.0625, .timingOffsetBeats = 0.2, .velocityOffset = 20};
    for (const auto& [first, second] : {std::pair{ahead, behind}, std::pair{behind, ahead}}) {
        const GrooveTemplate both = groove({first, second});
        const GrooveTemplate alone = groove({first});
        QCOMPARE(played(apply({note(1.0)}, settings(1.0F), &both, kBar)),
                 played(apply({note(1.0)}, settings(1.0F), &alone, kBar)));
    }
}

void HumanizerTest::barLineIsNotCrossed_data()
{
    QTest::addColumn<double>("startBeat");
    QTest::addColumn<double>("position");
    QTest::addColumn<bool>("taken");

    QTest::newRow("a late note is not drawn to the start of the bar") << 3.99 << 0.0 << false;
    QTest::newRow("an offset at the bar line takes a late note") << 3.99 << 4.0 << true;
    QTest::newRow("an early note is not drawn to the end of the bar") << 4.01 << 3.99 << false;
    QTest::newRow("a note on the bar line is drawn to the start") << 8.0 << 0.0 << true;
    QTest::newRow("a note on the bar line is not drawn to the bar line") << 8.0 << 4.0 << false;
}

void HumanizerTest::barLineIsNotCrossed()
{
    QFETCH(double, startBeat);
    QFETCH(double, position);
    const GrooveTemplate offsets = groove({{.position = position, .velocityOffset = 20}});
    const NoteEvent with = apply({note(startBeat)}, settings(1.0F), &offsets, kBar)[0];
    const NoteEvent without = apply({note(startBeat)}, settings(1.0F), nullptr, kBar)[0];
    QTEST(with.velocity - without.velocity == 20, "taken");
    QCOMPARE(exact(with.startBeat), exact(without.startBeat));
}

void HumanizerTest::grooveFollowsTheBar()
{
    const QList<NoteEvent> notes{note(1.0), note(4.0), note(5.0), note(7.0)};
    const auto accented = [&](double beatsPerBar, double position = 1.0) {
        const GrooveTemplate offsets = groove({{.position = position, .velocityOffset = 20}});
        QList<bool> result;
        const QList<NoteEvent> with = apply(notes, settings(1.0F), &offsets, beatsPerBar);
        const QList<NoteEvent> without = apply(notes, settings(1.0F), nullptr, beatsPerBar);
        for (qsizetype i = 0; i < notes.size(); ++i)
            result.append(with[i].velocity == without[i].velocity + 20);
        return result;
    };
    QCOMPARE(accented(4.0), (QList<bool>{true, false, true, false}));
    QCOMPARE(accented(3.0), (QList<bool>{true, true, false, true}));
    QCOMPARE(accented(Doubles::infinity()), (QList<bool>{true, false, false, false}));
    QCOMPARE(accented(0.75, 0.25), (QList<bool>{true, true, false, true}));
}

void HumanizerTest::noteBeforeTheWorkHasItsPlaceInTheBar()
{
    const GrooveTemplate offsets = groove({{.position = 3.5, .velocityOffset = 20}});
    const NoteEvent with = apply({note(-0.5)}, settings(1.0F), &offsets, kBar)[0];
    const NoteEvent without = apply({note(-0.5)}, settings(1.0F), nullptr, kBar)[0];
    QCOMPARE(with.velocity, without.velocity + 20);
    QCOMPARE(exact(with.startBeat), exact(0.0));
}

void HumanizerTest::barLengthThatSkipsTheGroove_data()
{
    QTest::addColumn<double>("beatsPerBar");

    QTest::newRow("zero") << 0.0;
    QTest::newRow("negative") << -4.0;
    QTest::newRow("no number") << Doubles::quiet_NaN();
    QTest::newRow("negative infinity") << -Doubles::infinity();
}

void HumanizerTest::barLengthThatSkipsTheGroove()
{
    QFETCH(double, beatsPerBar);
    const GrooveTemplate offsets = gentleGroove();
    const QList<NoteEvent> notes = phrase(50, 6);
    const QStringList expected = played(apply(notes, settings(0.7F), nullptr, kBar));
    QCOMPARE(played(apply(notes, settings(0.7F), &offsets, beatsPerBar)), expected);
    QVERIFY(played(notes) != expected);
}

void HumanizerTest::grooveWithoutOffsetsIsNone()
{
    const GrooveTemplate none = groove({});
    const QList<NoteEvent> notes = phrase(50, 7);
    QCOMPARE(played(apply(notes, settings(0.7F), &none, kBar)),
             played(apply(notes, settings(0.7F), nullptr, kBar)));
}

void HumanizerTest::emptyListStaysEmpty()
{
    const GrooveTemplate offsets = gentleGroove();
    QVERIFY(apply({}, settings(1.0F), &offsets, kBar).isEmpty());
    QVERIFY(apply({}, settings(1.0F), nullptr, kBar, Humanizer::generatorFor(1)).isEmpty());
}

void HumanizerTest::equalInputGivesEqualOutput()
{
    const GrooveTemplate offsets = gentleGroove();
    for (quint32 seed = 0; seed < 300; ++seed) {
        const QList<NoteEvent> notes = phrase(20, seed);
        const QList<NoteEvent> before = notes;
        const QList<NoteEvent> once = apply(notes, settings(0.4F, seed), &offsets, kBar);
        QCOMPARE(played(apply(notes, settings(0.4F, seed), &offsets, kBar)), played(once));
        QVERIFY(notes == before);
    }
}

void HumanizerTest::preparedGeneratorGivesTheSame()
{
    const GrooveTemplate offsets = gentleGroove();
    for (quint32 seed = 0; seed < 300; ++seed) {
        const QRandomGenerator prepared = Humanizer::generatorFor(seed);
        const QList<NoteEvent> notes = phrase(20, seed + 1000);
        const GrooveTemplate* used = seed % 2 == 0 ? &offsets : nullptr;
        const QStringList expected = played(apply(notes, settings(0.6F, seed), used, kBar));
        for (int again = 0; again < 2; ++again)
            QCOMPARE(played(apply(notes, settings(0.6F, seed), used, kBar, prepared)), expected);
    }
}

void HumanizerTest::seedsDiffer()
{
    const QList<NoteEvent> notes(8, note(8.0));
    QSet<QStringList> playings;
    for (quint32 seed = 0; seed < 500; ++seed)
        playings.insert(played(apply(notes, settings(1.0F, seed), nullptr, kBar)));
    QCOMPARE(playings.size(), 500);
}

void HumanizerTest::anyNumbersGiveAudibleNotes()
{
    constexpr std::array kBeats{0.0,   -0.0,   -1.0,
                                1e300, -1e300, Doubles::max(),
                                3.0,   1e-320, Doubles::infinity(),
                                1e9,   -1e9,   -Doubles::infinity(),
                                0.125, -0.125, Doubles::quiet_NaN()};
    constexpr std::array kInts{0, 1, -1, 127, Ints::min(), Ints::max()};
    constexpr std::array kIntensities{1.0F, 0.4F,  1e-40F,
                                      3.0F, -1.0F, std::numeric_limits<float>::infinity()};
    QRandomGenerator random(99);
    const auto beat = [&] { return kBeats[random.generate() % kBeats.size()]; };
    const auto integer = [&] { return kInts[random.generate() % kInts.size()]; };
    for (int round = 0; round < 5000; ++round) {
        GrooveTemplate offsets;
        for (quint32 i = random.generate() % 4; i > 0; --i)
            offsets.offsets.append({beat(), beat(), integer()});
        QList<NoteEvent> notes;
        for (quint32 i = random.generate() % 6; i > 0; --i)
            notes.append({integer(), beat(), beat(), integer()});
        const float intensity = kIntensities[random.generate() % kIntensities.size()];
        const QList<NoteEvent> result =
            apply(notes, settings(intensity, random.generate()), &offsets, beat());
        QCOMPARE(result.size(), notes.size());
        for (const NoteEvent& heard : result) {
            if (intensity > 0.0F)
                QVERIFY(heard.startBeat >= 0.0 && heard.velocity >= 1 && heard.velocity <= 127);
        }
    }
}

VELTA_GUILESS_TEST(HumanizerTest)

} // namespace HumanizerTests

#include "HumanizerTest.moc"
