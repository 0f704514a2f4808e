#include "music/ChordNames.h"

#include "support/TestProgram.h"

#include <QTest>

namespace ChordNamesTests {

namespace {

constexpr KeySignature key(int root, KeyMode mode = KeyMode::Major)
{
    return {.rootPitchClass = root, .mode = mode};
}

} // namespace

class ChordNamesTest : public QObject {
    Q_OBJECT

private slots:
    void nameOfChord_data();
    void nameOfChord();
    void degreeAndNameStandSideBySide();
    void degreeOutsideOneToSevenHasNoName();
};

void ChordNamesTest::nameOfChord_data()
{
    QTest::addColumn<KeySignature>("signature");
    QTest::addColumn<ChordExtension>("extension");
    QTest::addColumn<QStringList>("names");

    QTest::newRow("triads of C major")
        << key(0) << ChordExtension::Triad
        << QStringList{"Do", "Rem", "Mim", "Fa", "Sol", "Lam", "Si°"};
    QTest::newRow("sevenths of C major")
        << key(0) << ChordExtension::Seventh
        << QStringList{"Domaj7", "Rem7", "Mim7", "Famaj7", "Sol7", "Lam7", "Sim7♭5"};
    QTest::newRow("ninths of C major")
        << key(0) << ChordExtension::Ninth
        << QStringList{"Domaj9", "Rem9", "Mim7♭9", "Famaj9", "Sol9", "Lam9", "Sim7♭5♭9"};
    QTest::newRow("triads of A minor")
        << key(9, KeyMode::Minor) << ChordExtension::Triad
        << QStringList{"Lam", "Si°", "Do", "Rem", "Mim", "Fa", "Sol"};
    QTest::newRow("sevenths of A minor")
        << key(9, KeyMode::Minor) << ChordExtension::Seventh
        << QStringList{"Lam7", "Sim7♭5", "Domaj7", "Rem7", "Mim7", "Famaj7", "Sol7"};
    QTest::newRow("triads of D major")
        << key(2) << ChordExtension::Triad
        << QStringList{"Re", "Mim", "Fa#m", "Sol", "La", "Sim", "Do#°"};
    QTest::newRow("triads of F lydian")
        << key(5, KeyMode::Lydian) << ChordExtension::Triad
        << QStringList{"Fa", "Sol", "Lam", "Si°", "Do", "Rem", "Mim"};
}

void ChordNamesTest::nameOfChord()
{
    QFETCH(KeySignature, signature);
    QFETCH(ChordExtension, extension);
    QStringList names;
    for (int degree = 1; degree <= 7; ++degree)
        names.append(ChordNames::nameOf(signature, degree, extension));
    QTEST(names, "names");
}

void ChordNamesTest::degreeAndNameStandSideBySide()
{
    QCOMPARE(ChordNames::labelOf(key(0), 4, ChordExtension::Triad), "IV · Fa");
    QCOMPARE(ChordNames::labelOf(key(7), 5, ChordExtension::Seventh), "V7 · Re7");
}

void ChordNamesTest::degreeOutsideOneToSevenHasNoName()
{
    for (const int degree : {-1, 0, 8}) {
        QVERIFY(ChordNames::nameOf(key(0), degree, ChordExtension::Seventh).isNull());
        QVERIFY(ChordNames::labelOf(key(0), degree, ChordExtension::Triad).isNull());
    }
}

VELTA_GUILESS_TEST(ChordNamesTest)

} // namespace ChordNamesTests

#include "ChordNamesTest.moc"
