#include "views/MusicWords.h"

#include "support/TestProgram.h"

#include <QLocale>
#include <QTest>

#include <limits>

namespace MusicWordsTests {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// As the user's language writes a number with a comma in it.
QString local(const char* text, double number)
{
    return QString::fromUtf8(text).arg(QLocale().toString(number, 'g', 6));
}

} // namespace

/// Music in words.
class MusicWordsTest : public QObject {
    Q_OBJECT

private slots:
    void notesAreNamedWithTheirOctave_data();
    void notesAreNamedWithTheirOctave();
    void chordsAreNamedByRootAndKind_data();
    void chordsAreNamedByRootAndKind();
    void noDegreeIsNoChord();
    void lengthsAreNoteValues_data();
    void lengthsAreNoteValues();
    void otherLengthsAreCountedInQuarters();
    void wholeBarsAreBars_data();
    void wholeBarsAreBars();
    void barsCountFromOne();
    void placesAreBarsAndPulses();
    void withoutBarsThereIsNoPlace();
    void emptyWordsLeaveNoComma();
};

void MusicWordsTest::notesAreNamedWithTheirOctave_data()
{
    QTest::addColumn<int>("pitch");
    QTest::addColumn<QString>("name");

    QTest::newRow("middle C") << 60 << "Do 4";
    QTest::newRow("the B below it") << 59 << "Si 3";
    QTest::newRow("a black key") << 70 << "La sostenido 4";
    QTest::newRow("F sharp") << 66 << "Fa sostenido 4";
    QTest::newRow("the highest row") << 96 << "Do 7";
    QTest::newRow("the lowest row") << 24 << "Do 1";
    QTest::newRow("the lowest note") << 0 << "Do -1";
    QTest::newRow("far below all notes") << -30 << "Fa sostenido -4";
}

void MusicWordsTest::notesAreNamedWithTheirOctave()
{
    QFETCH(int, pitch);
    QTEST(MusicWords::note(pitch), "name");
}

void MusicWordsTest::chordsAreNamedByRootAndKind_data()
{
    QTest::addColumn<KeySignature>("key");
    QTest::addColumn<ChordExtension>("extension");
    QTest::addColumn<QStringList>("names");

    const KeySignature c{.rootPitchClass = 0, .mode = KeyMode::Major};
    const KeySignature d{.rootPitchClass = 2, .mode = KeyMode::Major};
    QTest::newRow("triads of C major")
        << c << ChordExtension::Triad
        << QStringList{"Do mayor",  "Re menor", "Mi menor",     "Fa mayor",
                       "Sol mayor", "La menor", "Si disminuido"};
    QTest::newRow("sevenths of C major")
        << c << ChordExtension::Seventh
        << QStringList{"Do séptima mayor", "Re menor séptima", "Mi menor séptima",
                       "Fa séptima mayor", "Sol séptima",      "La menor séptima",
                       "Si semidisminuido"};
    QTest::newRow("ninths of C major")
        << c << ChordExtension::Ninth << QStringList{"Do novena mayor",
                                                     "Re menor novena",
                                                     "Mi menor séptima con novena bemol",
                                                     "Fa novena mayor",
                                                     "Sol novena",
                                                     "La menor novena",
                                                     "Si semidisminuido con novena bemol"};
    QTest::newRow("triads of D major")
        << d << ChordExtension::Triad
        << QStringList{"Re mayor", "Mi menor", "Fa sostenido menor",     "Sol mayor",
                       "La mayor", "Si menor", "Do sostenido disminuido"};
}

void MusicWordsTest::chordsAreNamedByRootAndKind()
{
    QFETCH(KeySignature, key);
    QFETCH(ChordExtension, extension);
    QStringList names;
    for (int degree = 1; degree <= 7; ++degree)
        names.append(MusicWords::chord(key, degree, extension));
    QTEST(names, "names");
}

void MusicWordsTest::noDegreeIsNoChord()
{
    QCOMPARE(MusicWords::chord(KeySignature(), 0, ChordExtension::Triad), QString());
    QCOMPARE(MusicWords::chord(KeySignature(), 8, ChordExtension::Ninth), QString());
}

void MusicWordsTest::lengthsAreNoteValues_data()
{
    QTest::addColumn<double>("beats");
    QTest::addColumn<QString>("name");

    QTest::newRow("4") << 4.0 << "redonda";
    QTest::newRow("2") << 2.0 << "blanca";
    QTest::newRow("1") << 1.0 << "negra";
    QTest::newRow("1/2") << 0.5 << "corchea";
    QTest::newRow("1/4") << 0.25 << "semicorchea";
    QTest::newRow("6") << 6.0 << "redonda con puntillo";
    QTest::newRow("3") << 3.0 << "blanca con puntillo";
    QTest::newRow("3/2") << 1.5 << "negra con puntillo";
    QTest::newRow("3/4") << 0.75 << "corchea con puntillo";
    QTest::newRow("3/8") << 0.375 << "semicorchea con puntillo";
    QTest::newRow("a sum of tenths") << 0.1 + 0.2 + 0.2 << "corchea";
}

void MusicWordsTest::lengthsAreNoteValues()
{
    QFETCH(double, beats);
    QTEST(MusicWords::value(beats), "name");
}

void MusicWordsTest::otherLengthsAreCountedInQuarters()
{
    QCOMPARE(MusicWords::value(5.0), QStringLiteral("5 negras"));
    QCOMPARE(MusicWords::value(2.5), local("%1 negras", 2.5));
    QCOMPARE(MusicWords::value(1.0 / 3.0), local("%1 negras", 0.33));
}

void MusicWordsTest::wholeBarsAreBars_data()
{
    QTest::addColumn<double>("beats");
    QTest::addColumn<double>("bar");
    QTest::addColumn<QString>("length");

    QTest::newRow("a bar") << 4.0 << 4.0 << "1 compás";
    QTest::newRow("bars") << 12.0 << 4.0 << "3 compases";
    QTest::newRow("bars of six eighths") << 6.0 << 3.0 << "2 compases";
    QTest::newRow("half a bar") << 2.0 << 4.0 << "blanca";
    QTest::newRow("a bar and a half") << 6.0 << 4.0 << "redonda con puntillo";
    QTest::newRow("bars without a length") << 2.0 << 0.0 << "blanca";
    QTest::newRow("endless bars") << 1.0 << kInfinity << "negra";
}

void MusicWordsTest::wholeBarsAreBars()
{
    QFETCH(double, beats);
    QFETCH(double, bar);
    QTEST(MusicWords::length(beats, bar), "length");
}

void MusicWordsTest::barsCountFromOne()
{
    QCOMPARE(MusicWords::bar(0.0, 4.0), QStringLiteral("compás 1"));
    QCOMPARE(MusicWords::bar(7.9, 4.0), QStringLiteral("compás 2"));
    QCOMPARE(MusicWords::bar(0.1 * 40.0 * 2.0, 4.0), QStringLiteral("compás 3"));
}

void MusicWordsTest::placesAreBarsAndPulses()
{
    const TimeSignature four{.numerator = 4, .denominator = 4, .isCompound = false};
    const TimeSignature six{.numerator = 6, .denominator = 8, .isCompound = true};
    QCOMPARE(MusicWords::place(0.0, four), QStringLiteral("compás 1, pulso 1"));
    QCOMPARE(MusicWords::place(9.0, four), QStringLiteral("compás 3, pulso 2"));
    QCOMPARE(MusicWords::place(9.5, four), local("compás 3, pulso %1", 2.5));
    QCOMPARE(MusicWords::place(4.5, six), QStringLiteral("compás 2, pulso 2"));
}

void MusicWordsTest::withoutBarsThereIsNoPlace()
{
    const TimeSignature none{.numerator = 0, .denominator = 4, .isCompound = false};
    QCOMPARE(MusicWords::place(3.0, none), QString());
    QCOMPARE(MusicWords::bar(3.0, 0.0), QString());
    QCOMPARE(MusicWords::bar(kInfinity, 4.0), QString());
}

void MusicWordsTest::emptyWordsLeaveNoComma()
{
    QCOMPARE(MusicWords::list({"Voz", "", "compás 1"}), QStringLiteral("Voz, compás 1"));
    QCOMPARE(MusicWords::list({}), QString());
}

VELTA_TEST(MusicWordsTest)

} // namespace MusicWordsTests

#include "MusicWordsTest.moc"
