#include "music/ChordVoicer.h"

#include "support/TestProgram.h"

#include <QTest>

#include <limits>

namespace ChordVoicerTests {

using namespace ChordVoicer;

namespace {

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

constexpr std::array kModes{KeyMode::Major, KeyMode::Minor, KeyMode::Dorian, KeyMode::Lydian};
constexpr std::array kExtensions{ChordExtension::Triad, ChordExtension::Seventh,
                                 ChordExtension::Ninth};

constexpr KeySignature key(int root, KeyMode mode = KeyMode::Major)
{
    return {.rootPitchClass = root, .mode = mode};
}

int floorMod12(qint64 value)
{
    return static_cast<int>(((value % 12) + 12) % 12);
}

/// Calls `check` for every chord of every key.
template <typename Check>
void forEveryChord(Check check)
{
    for (const KeyMode mode : kModes) {
        for (int root = 0; root < 12; ++root) {
            for (int degree = 1; degree <= 7; ++degree) {
                for (const ChordExtension extension : kExtensions)
                    check(key(root, mode), degree, extension);
            }
        }
    }
}

} // namespace

class ChordVoicerTest : public QObject {
    Q_OBJECT

private slots:
    void pitchesOfChord_data();
    void pitchesOfChord();
    void pitchesLeaveTheRangeByOctaves_data();
    void pitchesLeaveTheRangeByOctaves();
    void fourIsTheUsualOctave();
    void chordsAreStackedThirdsOfTheScale();
    void noChordOfAnyKeyIsAboveEightyThree();
    void anyIntegersGiveMidiPitchesOfTheRightClass();
    void pitchClassesOfChord_data();
    void pitchClassesOfChord();
    void pitchClassesAreThoseOfThePitchesInOrder();
    void labelOfChord_data();
    void labelOfChord();
    void labelDoesNotDependOnTheRoot();
    void degreeSignIsOneCharacter();
    void degreeOutsideOneToSevenIsNoChord_data();
    void degreeOutsideOneToSevenIsNoChord();
    void unknownExtensionIsATriad_data();
    void unknownExtensionIsATriad();
    void unknownModeActsAsMajor();
};

void ChordVoicerTest::pitchesOfChord_data()
{
    QTest::addColumn<int>("root");
    QTest::addColumn<KeyMode>("mode");
    QTest::addColumn<int>("degree");
    QTest::addColumn<ChordExtension>("extension");
    QTest::addColumn<QList<int>>("expected");

    const auto row = [](const char* name, int root, KeyMode mode, int degree,
                        ChordExtension extension, const QList<int>& pitches) {
        QTest::newRow(name) << root << mode << degree << extension << pitches;
    };
    using enum KeyMode;
    using enum ChordExtension;
    row("C Major I", 0, Major, 1, Triad, {48, 52, 55});
    row("C Major V7", 0, Major, 5, Seventh, {55, 59, 62, 65});
    row("C Major vii with a ninth goes on upward", 0, Major, 7, Ninth, {59, 62, 65, 69, 72});
    row("C Minor v with a ninth stays minor", 0, Minor, 5, Ninth, {55, 58, 62, 65, 68});
    row("C Lydian vii with a ninth", 0, Lydian, 7, Ninth, {59, 62, 66, 69, 72});
    row("C Lydian iv is diminished on F#", 0, Lydian, 4, Triad, {54, 57, 60});
    row("D Dorian IV7", 2, Dorian, 4, Seventh, {55, 59, 62, 65});
    row("A Minor i starts at 57", 9, Minor, 1, Triad, {57, 60, 64});
    row("B Major vii with a ninth is the highest", 11, Major, 7, Ninth, {70, 73, 76, 80, 83});
}

void ChordVoicerTest::pitchesOfChord()
{
    QFETCH(int, root);
    QFETCH(KeyMode, mode);
    QFETCH(int, degree);
    QFETCH(ChordExtension, extension);
    QTEST(chordPitches(key(root, mode), degree, extension), "expected");
}

void ChordVoicerTest::pitchesLeaveTheRangeByOctaves_data()
{
    QTest::addColumn<int>("root");
    QTest::addColumn<int>("octave");
    QTest::addColumn<int>("degree");
    QTest::addColumn<QList<int>>("expected");

    // 11 + 120 + the scale of B on A#: 142, 145, 148, 152, 155, each lowered until it fits.
    QTest::newRow("octave 10 may leave the order of thirds")
        << 11 << 10 << 7 << QList<int>{118, 121, 124, 116, 119};
    QTest::newRow("octave 9 in C only lowers the top")
        << 0 << 9 << 7 << QList<int>{119, 122, 125, 117, 120};
    QTest::newRow("octave 0 in C starts at 0") << 0 << 0 << 1 << QList<int>{0, 4, 7, 11, 14};
    QTest::newRow("octave -1 is raised") << 0 << -1 << 1 << QList<int>{0, 4, 7, 11, 2};
    QTest::newRow("octave -5 is raised") << 9 << -5 << 1 << QList<int>{9, 1, 4, 8, 11};
    QTest::newRow("a root far above is lowered")
        << 1200 << 4 << 1 << QList<int>{120, 124, 127, 119, 122};
}

void ChordVoicerTest::pitchesLeaveTheRangeByOctaves()
{
    QFETCH(int, root);
    QFETCH(int, octave);
    QFETCH(int, degree);
    QTEST(chordPitches(key(root), degree, ChordExtension::Ninth, octave), "expected");
}

void ChordVoicerTest::fourIsTheUsualOctave()
{
    forEveryChord([](const KeySignature& signature, int degree, ChordExtension extension) {
        QCOMPARE(chordPitches(signature, degree, extension),
                 chordPitches(signature, degree, extension, 4));
    });
}

void ChordVoicerTest::chordsAreStackedThirdsOfTheScale()
{
    forEveryChord([](const KeySignature& signature, int degree, ChordExtension extension) {
        const QList<int> pitches = chordPitches(signature, degree, extension);
        QCOMPARE(pitches.size(), 3 + static_cast<qsizetype>(extension));
        QVERIFY(pitches.first() >= 48 + signature.rootPitchClass);
        QVERIFY(pitches.first() < 60 + signature.rootPitchClass);
        for (qsizetype tone = 0; tone < pitches.size(); ++tone) {
            QCOMPARE(signature.degreeOfPitchClass(pitches[tone]),
                     static_cast<int>((degree - 1 + 2 * tone) % 7 + 1));
            if (tone > 0) {
                const int third = pitches[tone] - pitches[tone - 1];
                QVERIFY(third == 3 || third == 4);
            }
        }
    });
}

void ChordVoicerTest::noChordOfAnyKeyIsAboveEightyThree()
{
    int highest = 0;
    forEveryChord([&](const KeySignature& signature, int degree, ChordExtension extension) {
        for (const int pitch : chordPitches(signature, degree, extension))
            highest = std::max(highest, pitch);
    });
    QCOMPARE(highest, 83);
}

void ChordVoicerTest::anyIntegersGiveMidiPitchesOfTheRightClass()
{
    const QList<int> scale{0, 2, 4, 5, 7, 9, 11};
    for (const int root : {kMin, kMin + 1, -13, -1, 0, 11, 12, 1000, kMax}) {
        for (const int octave :
             {kMin, -400000000, -1000, -1, 0, 4, 10, 11, 1000, 400000000, kMax}) {
            for (int degree = 1; degree <= 7; ++degree) {
                const QList<int> pitches =
                    chordPitches(key(root), degree, ChordExtension::Ninth, octave);
                QCOMPARE(pitches.size(), 5);
                for (qsizetype tone = 0; tone < 5; ++tone) {
                    QVERIFY(pitches[tone] >= 0 && pitches[tone] <= 127);
                    QCOMPARE(pitches[tone] % 12,
                             floorMod12(qint64(scale[(degree - 1 + 2 * tone) % 7]) + root));
                }
            }
        }
    }
}

void ChordVoicerTest::pitchClassesOfChord_data()
{
    QTest::addColumn<int>("root");
    QTest::addColumn<KeyMode>("mode");
    QTest::addColumn<int>("degree");
    QTest::addColumn<ChordExtension>("extension");
    QTest::addColumn<QList<int>>("expected");

    const auto row = [](const char* name, int root, KeyMode mode, int degree,
                        ChordExtension extension, const QList<int>& pitchClasses) {
        QTest::newRow(name) << root << mode << degree << extension << pitchClasses;
    };
    using enum KeyMode;
    using enum ChordExtension;
    row("C Major I with a ninth, in stacking order", 0, Major, 1, Ninth, {0, 4, 7, 11, 2});
    row("C Major V7", 0, Major, 5, Seventh, {7, 11, 2, 5});
    row("A Minor i", 9, Minor, 1, Triad, {9, 0, 4});
    row("D Dorian i7", 2, Dorian, 1, Seventh, {2, 5, 9, 0});
    row("F Lydian II", 5, Lydian, 2, Triad, {7, 11, 2});
    row("a negative root still gives 0 to 11", -1, Major, 1, Triad, {11, 3, 6});
}

void ChordVoicerTest::pitchClassesOfChord()
{
    QFETCH(int, root);
    QFETCH(KeyMode, mode);
    QFETCH(int, degree);
    QFETCH(ChordExtension, extension);
    QTEST(chordPitchClasses(key(root, mode), degree, extension), "expected");
}

void ChordVoicerTest::pitchClassesAreThoseOfThePitchesInOrder()
{
    forEveryChord([](const KeySignature& signature, int degree, ChordExtension extension) {
        const QList<int> pitches = chordPitches(signature, degree, extension);
        const QList<int> pitchClasses = chordPitchClasses(signature, degree, extension);
        QCOMPARE(pitchClasses.size(), pitches.size());
        for (qsizetype tone = 0; tone < pitches.size(); ++tone) {
            QVERIFY(pitchClasses[tone] >= 0 && pitchClasses[tone] < 12);
            QCOMPARE((pitches[tone] - pitchClasses[tone]) % 12, 0);
            QCOMPARE(pitchClasses.count(pitchClasses[tone]), 1);
        }
    });
}

void ChordVoicerTest::labelOfChord_data()
{
    struct Mode {
        KeyMode mode;
        const char* name;
        QStringList labels;
    };

    const QList<Mode> modes{
        {KeyMode::Major, "Major", {"I", "ii", "iii", "IV", "V", "vi", "vii°"}},
        {KeyMode::Minor, "Minor", {"i", "ii°", "III", "iv", "v", "VI", "VII"}},
        {KeyMode::Dorian, "Dorian", {"i", "ii", "III", "IV", "v", "vi°", "VII"}},
        {KeyMode::Lydian, "Lydian", {"I", "II", "iii", "iv°", "V", "vi", "vii"}},
    };
    QTest::addColumn<KeyMode>("mode");
    QTest::addColumn<int>("degree");
    QTest::addColumn<ChordExtension>("extension");
    QTest::addColumn<QString>("expected");

    const auto row = [](const Mode& mode, int degree, ChordExtension extension,
                        const QString& label) {
        QTest::addRow("degree %d of %s is %s", degree, mode.name, qPrintable(label))
            << mode.mode << degree << extension << label;
    };
    for (const Mode& mode : modes) {
        for (int degree = 1; degree <= 7; ++degree) {
            const QString& label = mode.labels[degree - 1];
            row(mode, degree, ChordExtension::Triad, label);
            row(mode, degree, ChordExtension::Seventh, label + '7');
            row(mode, degree, ChordExtension::Ninth, label + '9');
        }
    }
}

void ChordVoicerTest::labelOfChord()
{
    QFETCH(KeyMode, mode);
    QFETCH(int, degree);
    QFETCH(ChordExtension, extension);
    QTEST(degreeLabel(key(0, mode), degree, extension), "expected");
}

void ChordVoicerTest::labelDoesNotDependOnTheRoot()
{
    forEveryChord([](const KeySignature& signature, int degree, ChordExtension extension) {
        QCOMPARE(degreeLabel(signature, degree, extension),
                 degreeLabel(key(0, signature.mode), degree, extension));
    });
}

void ChordVoicerTest::degreeSignIsOneCharacter()
{
    const QString label = degreeLabel(key(0), 7, ChordExtension::Seventh);
    QCOMPARE(label.size(), 5);
    QCOMPARE(label[3], QChar(0x00B0));
    QCOMPARE(label[4], QChar('7'));
}

void ChordVoicerTest::degreeOutsideOneToSevenIsNoChord_data()
{
    QTest::addColumn<int>("degree");

    QTest::newRow("0") << 0;
    QTest::newRow("8") << 8;
    QTest::newRow("-1") << -1;
    QTest::newRow("the largest integer") << kMax;
    QTest::newRow("the least integer") << kMin;
}

void ChordVoicerTest::degreeOutsideOneToSevenIsNoChord()
{
    QFETCH(int, degree);
    for (const ChordExtension extension : kExtensions) {
        QVERIFY(chordPitches(key(0), degree, extension).isEmpty());
        QVERIFY(chordPitches(key(0), degree, extension, kMax).isEmpty());
        QVERIFY(chordPitchClasses(key(0), degree, extension).isEmpty());
        QVERIFY(degreeLabel(key(0), degree, extension).isNull());
    }
}

void ChordVoicerTest::unknownExtensionIsATriad_data()
{
    QTest::addColumn<int>("extension");

    QTest::newRow("3") << 3;
    QTest::newRow("-1") << -1;
    QTest::newRow("the largest integer") << kMax;
    QTest::newRow("the least integer") << kMin;
}

void ChordVoicerTest::unknownExtensionIsATriad()
{
    QFETCH(int, extension);
    const auto unknown = static_cast<ChordExtension>(extension);
    QCOMPARE(chordPitches(key(0), 5, unknown), (QList<int>{55, 59, 62}));
    QCOMPARE(chordPitchClasses(key(0), 5, unknown), (QList<int>{7, 11, 2}));
    QCOMPARE(degreeLabel(key(0), 5, unknown), QString("V"));
}

void ChordVoicerTest::unknownModeActsAsMajor()
{
    const auto unknown = static_cast<KeyMode>(7);
    forEveryChord([&](const KeySignature& signature, int degree, ChordExtension extension) {
        const KeySignature odd = key(signature.rootPitchClass, unknown);
        const KeySignature major = key(signature.rootPitchClass);
        QCOMPARE(chordPitches(odd, degree, extension), chordPitches(major, degree, extension));
        QCOMPARE(degreeLabel(odd, degree, extension), degreeLabel(major, degree, extension));
    });
}

VELTA_GUILESS_TEST(ChordVoicerTest)

} // namespace ChordVoicerTests

#include "ChordVoicerTest.moc"
