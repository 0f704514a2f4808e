#include "music/KeySignature.h"

#include "support/TestProgram.h"

#include <QTest>

#include <limits>

namespace KeySignatureTests {

namespace {

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

constexpr KeySignature key(int root, KeyMode mode = KeyMode::Major)
{
    return {.rootPitchClass = root, .mode = mode};
}

/// The whole and half steps of a mode from one degree to the next, as music books print them.
QList<int> stepsOf(KeyMode mode)
{
    switch (mode) {
    case KeyMode::Major:
        return {2, 2, 1, 2, 2, 2, 1};
    case KeyMode::Minor:
        return {2, 1, 2, 2, 1, 2, 2};
    case KeyMode::Dorian:
        return {2, 1, 2, 2, 2, 1, 2};
    case KeyMode::Lydian:
        return {2, 2, 2, 1, 2, 2, 1};
    }
    return {};
}

constexpr std::array kModes{KeyMode::Major, KeyMode::Minor, KeyMode::Dorian, KeyMode::Lydian};

} // namespace

class KeySignatureTest : public QObject {
    Q_OBJECT

private slots:
    void isCMajorByDefault();
    void equalWhenBothFieldsAre();
    void modesAreNumberedAsStored();
    void scaleOfKey_data();
    void scaleOfKey();
    void everyScaleWalksTheStepsOfItsMode();
    void rootOutsideTheOctaveIsNotNormalised_data();
    void rootOutsideTheOctaveIsNotNormalised();
    void degreeOfPitchClass_data();
    void degreeOfPitchClass();
    void everyScaleNoteHasItsDegreeInEveryOctave();
    void unknownModeActsAsMajor_data();
    void unknownModeActsAsMajor();
    void nameOfPitchClass_data();
    void nameOfPitchClass();
    void namesRepeatEveryOctave();
};

void KeySignatureTest::isCMajorByDefault()
{
    const KeySignature signature;
    QCOMPARE(signature.rootPitchClass, 0);
    QCOMPARE(signature.mode, KeyMode::Major);
}

void KeySignatureTest::equalWhenBothFieldsAre()
{
    QVERIFY(key(9, KeyMode::Minor) == key(9, KeyMode::Minor));
    QVERIFY(key(9, KeyMode::Minor) != key(9, KeyMode::Major));
    QVERIFY(key(9, KeyMode::Minor) != key(0, KeyMode::Minor));
    QVERIFY(key(0) != key(12));
}

void KeySignatureTest::modesAreNumberedAsStored()
{
    QCOMPARE(static_cast<int>(KeyMode::Major), 0);
    QCOMPARE(static_cast<int>(KeyMode::Minor), 1);
    QCOMPARE(static_cast<int>(KeyMode::Dorian), 2);
    QCOMPARE(static_cast<int>(KeyMode::Lydian), 3);
}

void KeySignatureTest::scaleOfKey_data()
{
    QTest::addColumn<int>("root");
    QTest::addColumn<KeyMode>("mode");
    QTest::addColumn<QList<int>>("expected");

    QTest::newRow("C Major is the white keys")
        << 0 << KeyMode::Major << QList<int>{0, 2, 4, 5, 7, 9, 11};
    QTest::newRow("A Minor starts at its tonic, unsorted")
        << 9 << KeyMode::Minor << QList<int>{9, 11, 0, 2, 4, 5, 7};
    QTest::newRow("D Dorian") << 2 << KeyMode::Dorian << QList<int>{2, 4, 5, 7, 9, 11, 0};
    QTest::newRow("F Lydian") << 5 << KeyMode::Lydian << QList<int>{5, 7, 9, 11, 0, 2, 4};
    QTest::newRow("C Minor has no raised seventh")
        << 0 << KeyMode::Minor << QList<int>{0, 2, 3, 5, 7, 8, 10};
    QTest::newRow("B Major") << 11 << KeyMode::Major << QList<int>{11, 1, 3, 4, 6, 8, 10};
}

void KeySignatureTest::scaleOfKey()
{
    QFETCH(int, root);
    QFETCH(KeyMode, mode);
    QTEST(key(root, mode).scalePitchClasses(), "expected");
}

void KeySignatureTest::everyScaleWalksTheStepsOfItsMode()
{
    for (const KeyMode mode : kModes) {
        for (int root = 0; root < 12; ++root) {
            QList<int> walked;
            int pitchClass = root;
            for (const int step : stepsOf(mode)) {
                walked.append(pitchClass);
                pitchClass = (pitchClass + step) % 12;
            }
            QCOMPARE(pitchClass, root);
            QCOMPARE(key(root, mode).scalePitchClasses(), walked);
        }
    }
}

void KeySignatureTest::rootOutsideTheOctaveIsNotNormalised_data()
{
    QTest::addColumn<int>("root");
    QTest::addColumn<QList<int>>("expected");

    QTest::newRow("12 is C") << 12 << QList<int>{0, 2, 4, 5, 7, 9, 11};
    QTest::newRow("-1 starts below zero") << -1 << QList<int>{-1, 1, 3, 4, 6, 8, 10};
    QTest::newRow("-13 has negative remainders") << -13 << QList<int>{-1, -11, -9, -8, -6, -4, -2};
    QTest::newRow("the largest root does not overflow") << kMax << QList<int>{7, 9, 11, 0, 2, 4, 6};
    QTest::newRow("the least root does not overflow")
        << kMin << QList<int>{-8, -6, -4, -3, -1, -11, -9};
}

void KeySignatureTest::rootOutsideTheOctaveIsNotNormalised()
{
    QFETCH(int, root);
    QTEST(key(root).scalePitchClasses(), "expected");
}

void KeySignatureTest::degreeOfPitchClass_data()
{
    QTest::addColumn<int>("root");
    QTest::addColumn<KeyMode>("mode");
    QTest::addColumn<int>("pitchClass");
    QTest::addColumn<int>("expected");

    const auto row = [](const char* name, int root, KeyMode mode, int pitchClass, int degree) {
        QTest::newRow(name) << root << mode << pitchClass << degree;
    };
    row("C# is not in C Major", 0, KeyMode::Major, 61, 0);
    row("G is the fifth of C", 0, KeyMode::Major, 67, 5);
    row("a negative G is the fifth of C", 0, KeyMode::Major, -5, 5);
    row("G# is not in A Minor", 9, KeyMode::Minor, 8, 0);
    row("G is the seventh of A Minor", 9, KeyMode::Minor, 7, 7);
    row("B is the sixth of D Dorian", 2, KeyMode::Dorian, 11, 6);
    row("B is the fourth of F Lydian", 5, KeyMode::Lydian, 71, 4);
    row("the largest integer is a G", 0, KeyMode::Major, kMax, 5);
    row("the least integer is an E", 0, KeyMode::Major, kMin, 3);
    row("a negative root finds no wrapped note", -1, KeyMode::Major, 11, 0);
    row("a negative root still finds the others", -1, KeyMode::Major, 1, 2);
}

void KeySignatureTest::degreeOfPitchClass()
{
    QFETCH(int, root);
    QFETCH(KeyMode, mode);
    QFETCH(int, pitchClass);
    QTEST(key(root, mode).degreeOfPitchClass(pitchClass), "expected");
}

void KeySignatureTest::everyScaleNoteHasItsDegreeInEveryOctave()
{
    for (const KeyMode mode : kModes) {
        for (int root = 0; root < 12; ++root) {
            QList<int> degrees(12, 0);
            int pitchClass = root;
            int degree = 1;
            for (const int step : stepsOf(mode)) {
                degrees[pitchClass] = degree++;
                pitchClass = (pitchClass + step) % 12;
            }
            for (int pitch = -120; pitch <= 240; ++pitch)
                QCOMPARE(key(root, mode).degreeOfPitchClass(pitch), degrees[(pitch + 120) % 12]);
        }
    }
}

void KeySignatureTest::unknownModeActsAsMajor_data()
{
    QTest::addColumn<int>("mode");

    QTest::newRow("7") << 7;
    QTest::newRow("4, the first unknown one") << 4;
    QTest::newRow("-1") << -1;
    QTest::newRow("the largest integer") << kMax;
    QTest::newRow("the least integer") << kMin;
}

void KeySignatureTest::unknownModeActsAsMajor()
{
    QFETCH(int, mode);
    const auto unknown = static_cast<KeyMode>(mode);
    QCOMPARE(scaleRow(unknown), (ScaleRow{0, 2, 4, 5, 7, 9, 11}));
    for (int root = 0; root < 12; ++root) {
        QCOMPARE(key(root, unknown).scalePitchClasses(), key(root).scalePitchClasses());
        for (int pitch = 0; pitch < 128; ++pitch)
            QCOMPARE(key(root, unknown).degreeOfPitchClass(pitch),
                     key(root).degreeOfPitchClass(pitch));
    }
}

void KeySignatureTest::nameOfPitchClass_data()
{
    QTest::addColumn<int>("pitchClass");
    QTest::addColumn<QString>("letter");
    QTest::addColumn<QString>("solfege");

    const auto row = [](int pitchClass, const char* letter, const char* solfege) {
        QTest::addRow("%d is %s and %s", pitchClass, letter, solfege)
            << pitchClass << QString(letter) << QString(solfege);
    };
    row(0, "C", "Do");
    row(1, "C#", "Do#");
    row(2, "D", "Re");
    row(3, "D#", "Re#");
    row(4, "E", "Mi");
    row(5, "F", "Fa");
    row(6, "F#", "Fa#");
    row(7, "G", "Sol");
    row(8, "G#", "Sol#");
    row(9, "A", "La");
    row(10, "A#", "La#");
    row(11, "B", "Si");
    row(12, "C", "Do");
    row(61, "C#", "Do#");
    row(-11, "C#", "Do#");
    row(-1, "B", "Si");
    row(kMax, "G", "Sol");
    row(kMin, "E", "Mi");
}

void KeySignatureTest::nameOfPitchClass()
{
    QFETCH(int, pitchClass);
    QTEST(KeySignature::letterName(pitchClass), "letter");
    QTEST(KeySignature::solfegeName(pitchClass), "solfege");
}

void KeySignatureTest::namesRepeatEveryOctave()
{
    for (int pitch = -240; pitch <= 240; ++pitch) {
        QCOMPARE(KeySignature::letterName(pitch), KeySignature::letterName(pitch + 12));
        QCOMPARE(KeySignature::solfegeName(pitch), KeySignature::solfegeName(pitch + 12));
        QVERIFY(KeySignature::letterName(pitch) != KeySignature::letterName(pitch + 1));
        QVERIFY(KeySignature::solfegeName(pitch) != KeySignature::solfegeName(pitch + 1));
    }
}

VELTA_GUILESS_TEST(KeySignatureTest)

} // namespace KeySignatureTests

#include "KeySignatureTest.moc"
