#include "listen/ListenOptions.h"

#include "support/TestProgram.h"

#include <QTest>

namespace ListenOptionsTests {

class ListenOptionsTest : public QObject {
    Q_OBJECT

private slots:
    void keysAreSaidAsMusiciansSayThem_data();
    void keysAreSaidAsMusiciansSayThem();
    void whatIsNoKeyIsRefused_data();
    void whatIsNoKeyIsRefused();
    void degreesAreNumbersFromOneToSeven();
    void temposAreThoseThatSomebodyPlays();
    void aSectionIsChosenWithOrWithoutItsNumber();
};

void ListenOptionsTest::keysAreSaidAsMusiciansSayThem_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("root");
    QTest::addColumn<KeyMode>("mode");
    QTest::newRow("a bare note is major") << "Do" << 0 << KeyMode::Major;
    QTest::newRow("minor") << "La menor" << 9 << KeyMode::Minor;
    QTest::newRow("an accent") << "Re dórico" << 2 << KeyMode::Dorian;
    QTest::newRow("no accent, capitals") << "RE DORICO" << 2 << KeyMode::Dorian;
    QTest::newRow("a letter and a sharp") << "F# lidio" << 6 << KeyMode::Lydian;
    QTest::newRow("a sung flat") << "Sib mayor" << 10 << KeyMode::Major;
    QTest::newRow("a flat letter") << "Eb menor" << 3 << KeyMode::Minor;
    QTest::newRow("B is Si") << "B" << 11 << KeyMode::Major;
    QTest::newRow("a flat C") << "Cb" << 11 << KeyMode::Major;
}

void ListenOptionsTest::keysAreSaidAsMusiciansSayThem()
{
    QFETCH(QString, text);
    QFETCH(int, root);
    QFETCH(KeyMode, mode);
    const auto key = ListenOptions::keyOf(text);
    QVERIFY(key);
    QCOMPARE(*key, (KeySignature{.rootPitchClass = root, .mode = mode}));
}

void ListenOptionsTest::whatIsNoKeyIsRefused_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text : {"", "H", "Do frigio", "Do mayor menor", "mayor", "bbbb x"})
        QTest::newRow(text[0] ? text : "nothing") << QString::fromUtf8(text);
}

void ListenOptionsTest::whatIsNoKeyIsRefused()
{
    QFETCH(QString, text);
    QVERIFY(!ListenOptions::keyOf(text));
}

void ListenOptionsTest::degreesAreNumbersFromOneToSeven()
{
    QCOMPARE(ListenOptions::degreesOf("1,4,5,1"), (QList<int>{1, 4, 5, 1}));
    QCOMPARE(ListenOptions::degreesOf(" 7 , 2 "), (QList<int>{7, 2}));
    for (const char* text : {"", "0", "8", "1,,4", "I,IV", "1;4"})
        QVERIFY2(!ListenOptions::degreesOf(text), text);
    QVERIFY(ListenOptions::degreesOf(QStringList(16, "1").join(u',')));
    QVERIFY(!ListenOptions::degreesOf(QStringList(17, "1").join(u',')));
}

void ListenOptionsTest::temposAreThoseThatSomebodyPlays()
{
    QCOMPARE(ListenOptions::tempoOf("96"), 96);
    for (const char* text : {"", "19", "401", "rápido", "9.5"})
        QVERIFY2(!ListenOptions::tempoOf(QString::fromUtf8(text)), text);
}

void ListenOptionsTest::aSectionIsChosenWithOrWithoutItsNumber()
{
    const RhythmDemo::Loop second{LoopSection::Normal, 2, 1};
    const RhythmDemo::Loop twelfth{LoopSection::Normal, 12, 1};
    const RhythmDemo::Loop intro{LoopSection::Intro, 2, 1};
    const auto wants = [](const QStringList& sections, const RhythmDemo::Loop& loop) {
        ListenOptions options;
        options.sections = sections;
        return options.wants(loop);
    };
    QVERIFY(wants({}, intro));
    QVERIFY(wants({"normal"}, second) && wants({"normal"}, twelfth));
    QVERIFY(!wants({"Normal"}, intro));
    QVERIFY(wants({"Normal 2"}, second));
    QVERIFY(!wants({"Normal 2"}, twelfth));
    QVERIFY(wants({"Final", "Intro 2"}, intro));
}

VELTA_GUILESS_TEST(ListenOptionsTest)

} // namespace ListenOptionsTests

#include "ListenOptionsTest.moc"
