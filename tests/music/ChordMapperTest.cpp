#include "music/ChordMapper.h"

#include "support/TestProgram.h"

#include <QTest>

#include <limits>

namespace ChordMapperTests {

using namespace ChordMapper;

namespace {

constexpr KeySignature key(int root, KeyMode mode = KeyMode::Major)
{
    return {.rootPitchClass = root, .mode = mode};
}

QList<int> mapped(const QList<int>& pitches, const KeySignature& key, int degree)
{
    QList<int> result;
    for (const int pitch : pitches)
        result.append(mapPitch(pitch, key, degree));
    return result;
}

} // namespace

class ChordMapperTest : public QObject {
    Q_OBJECT

private slots:
    void writtenChordLandsOnDegree_data();
    void writtenChordLandsOnDegree();
    void singleNote_data();
    void singleNote();
    void degreeOutsideOneToSevenOnlyTransposes();
    void transposeFoldsIntoMidiRange_data();
    void transposeFoldsIntoMidiRange();
    void everyNoteOfEveryKeyStaysNearItsAnchor();
    void diatonicNotesStayInTheScale();
    void unknownModeActsAsMajor();
    void anyIntegerGivesAMidiPitch();
    void foldingKeepsThePitchClass();
    void octavesOfANoteMapToOneNoteName();
};

void ChordMapperTest::writtenChordLandsOnDegree_data()
{
    QTest::addColumn<int>("root");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("degree");
    QTest::addColumn<QList<int>>("written");
    QTest::addColumn<QList<int>>("expected");

    const QList<int> triad{60, 64, 67};
    QTest::newRow("C Major I leaves the chord unchanged")
        << 0 << 0 << 1 << triad << QList<int>{60, 64, 67};
    QTest::newRow("C Major ii stands above the anchors")
        << 0 << 0 << 2 << triad << QList<int>{62, 65, 69};
    QTest::newRow("C Major iii is E, G, B") << 0 << 0 << 3 << triad << QList<int>{64, 67, 71};
    QTest::newRow("C Major IV is F, A, C") << 0 << 0 << 4 << triad << QList<int>{65, 69, 72};
    QTest::newRow("C Major V folds below") << 0 << 0 << 5 << triad << QList<int>{55, 59, 62};
    QTest::newRow("C Major vi folds below") << 0 << 0 << 6 << triad << QList<int>{57, 60, 64};
    QTest::newRow("C Major vii folds below") << 0 << 0 << 7 << triad << QList<int>{59, 62, 65};
    QTest::newRow("A Minor v changes its inversion at the fold")
        << 9 << 1 << 5 << triad << QList<int>{64, 79, 71};
    QTest::newRow("D Dorian iv keeps its seventh")
        << 2 << 2 << 4 << QList<int>{60, 64, 67, 71} << QList<int>{67, 71, 74, 77};
}

void ChordMapperTest::writtenChordLandsOnDegree()
{
    QFETCH(int, root);
    QFETCH(int, mode);
    QFETCH(int, degree);
    QFETCH(QList<int>, written);
    QTEST(mapped(written, key(root, static_cast<KeyMode>(mode)), degree), "expected");
}

void ChordMapperTest::singleNote_data()
{
    QTest::addColumn<int>("root");
    QTest::addColumn<int>("degree");
    QTest::addColumn<int>("written");
    QTest::addColumn<int>("expected");

    QTest::newRow("C# over V moves with the root and folds down") << 0 << 5 << 61 << 56;
    QTest::newRow("C# over ii moves with the root") << 0 << 2 << 61 << 63;
    QTest::newRow("B over IV is the E five above its anchor") << 0 << 4 << 71 << 76;
    QTest::newRow("F over IV stays exactly a tritone above its anchor") << 0 << 4 << 65 << 71;
    QTest::newRow("below middle C over V folds down") << 0 << 5 << 48 << 43;
    QTest::newRow("B below middle C over ii crosses into C") << 0 << 2 << 47 << 48;
    QTest::newRow("top of the range keeps its pitch class") << 11 << 7 << 127 << 124;
    QTest::newRow("bottom of the range over I") << 0 << 1 << 0 << 0;
    QTest::newRow("bottom of the range over vii") << 0 << 7 << 2 << 0;
}

void ChordMapperTest::singleNote()
{
    QFETCH(int, root);
    QFETCH(int, degree);
    QFETCH(int, written);
    QTEST(mapPitch(written, key(root), degree), "expected");
}

void ChordMapperTest::degreeOutsideOneToSevenOnlyTransposes()
{
    QCOMPARE(mapPitch(60, key(2), 0), 62);
    for (const int degree :
         {-1, 0, 8, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        for (int pitch = 0; pitch <= 127; ++pitch)
            QCOMPARE(mapPitch(pitch, key(7, KeyMode::Minor), degree),
                     transposeToKey(pitch, key(7)));
    }
}

void ChordMapperTest::transposeFoldsIntoMidiRange_data()
{
    QTest::addColumn<int>("root");
    QTest::addColumn<int>("written");
    QTest::addColumn<int>("expected");

    QTest::newRow("plain shift by the tonic") << 9 << 60 << 69;
    QTest::newRow("127 in A falls by one octave") << 9 << 127 << 124;
    QTest::newRow("200 falls by whole octaves") << 0 << 200 << 116;
    QTest::newRow("-1 rises by an octave") << 0 << -1 << 11;
}

void ChordMapperTest::transposeFoldsIntoMidiRange()
{
    QFETCH(int, root);
    QFETCH(int, written);
    QTEST(transposeToKey(written, key(root)), "expected");
}

void ChordMapperTest::everyNoteOfEveryKeyStaysNearItsAnchor()
{
    for (int mode = 0; mode < 4; ++mode) {
        for (int root = 0; root < 12; ++root) {
            for (int degree = 1; degree <= 7; ++degree) {
                for (int pitch = 12; pitch <= 108; ++pitch) {
                    const int result =
                        mapPitch(pitch, key(root, static_cast<KeyMode>(mode)), degree);
                    QVERIFY2(std::abs(result - (root + pitch)) <= 6,
                             qPrintable(QStringLiteral("mode %1 root %2 degree %3 pitch %4 gave %5")
                                            .arg(mode)
                                            .arg(root)
                                            .arg(degree)
                                            .arg(pitch)
                                            .arg(result)));
                }
            }
        }
    }
}

void ChordMapperTest::diatonicNotesStayInTheScale()
{
    for (int mode = 0; mode < 4; ++mode) {
        for (int root = 0; root < 12; ++root) {
            const KeySignature signature = key(root, static_cast<KeyMode>(mode));
            for (int degree = 1; degree <= 7; ++degree) {
                for (int pitch = 0; pitch <= 127; ++pitch) {
                    if (key(0).degreeOfPitchClass(pitch) == 0)
                        continue;
                    const int written = key(0).degreeOfPitchClass(pitch);
                    const int heard =
                        signature.degreeOfPitchClass(mapPitch(pitch, signature, degree));
                    QCOMPARE(heard, (written + degree - 2) % 7 + 1);
                }
            }
        }
    }
}

void ChordMapperTest::unknownModeActsAsMajor()
{
    for (int pitch = 0; pitch <= 127; ++pitch)
        QCOMPARE(mapPitch(pitch, key(3, static_cast<KeyMode>(7)), 6), mapPitch(pitch, key(3), 6));
}

void ChordMapperTest::anyIntegerGivesAMidiPitch()
{
    constexpr int kMin = std::numeric_limits<int>::min();
    constexpr int kMax = std::numeric_limits<int>::max();
    for (const int pitch : {kMin, -1000, -1, 0, 128, 1000, kMax}) {
        for (const int root : {kMin, -1, 12, kMax}) {
            for (int degree = 0; degree <= 8; ++degree) {
                const int result = mapPitch(pitch, key(root), degree);
                QVERIFY(result >= 0 && result <= 127);
            }
        }
    }
}

void ChordMapperTest::foldingKeepsThePitchClass()
{
    for (int root = 0; root < 12; ++root) {
        for (int pitch = -600; pitch <= 600; ++pitch) {
            const int result = transposeToKey(pitch, key(root));
            QVERIFY(result >= 0 && result <= 127);
            QCOMPARE((result - pitch - root) % 12, 0);
        }
    }
}

void ChordMapperTest::octavesOfANoteMapToOneNoteName()
{
    for (int mode = 0; mode < 4; ++mode) {
        const KeySignature signature = key(7, static_cast<KeyMode>(mode));
        for (int degree = 1; degree <= 7; ++degree) {
            for (int pitch = -120; pitch <= 240; ++pitch)
                QCOMPARE(mapPitch(pitch, signature, degree) % 12,
                         mapPitch(60 + (pitch + 120) % 12, signature, degree) % 12);
        }
    }
}

VELTA_GUILESS_TEST(ChordMapperTest)

} // namespace ChordMapperTests

#include "ChordMapperTest.moc"
