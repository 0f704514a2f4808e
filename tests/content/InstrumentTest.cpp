#include "content/Instrument.h"

#include "support/TestProgram.h"

#include <QTest>

#include <limits>

namespace InstrumentTests {

class InstrumentTest : public QObject {
    Q_OBJECT

private slots:
    void categoryHasItsWord_data();
    void categoryHasItsWord();
    void valueOutsideTheTableIsCalledPiano();
    void anyOtherTextIsPiano_data();
    void anyOtherTextIsPiano();
    void sourceHasItsWord();
    void valueOutsideTheSourcesIsTheGeneralMidiBank();
    void anyOtherTextIsTheGeneralMidiBank_data();
    void anyOtherTextIsTheGeneralMidiBank();
    void freshInstrumentIsAPianoOfTheGeneralMidiBank();
};

void InstrumentTest::categoryHasItsWord_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("word");

    QTest::newRow("0 is Piano") << 0 << "Piano";
    QTest::newRow("1 is Strings") << 1 << "Strings";
    QTest::newRow("2 is Percussion") << 2 << "Percussion";
    QTest::newRow("3 is Bass") << 3 << "Bass";
    QTest::newRow("4 is Winds") << 4 << "Winds";
    QTest::newRow("5 is Synth") << 5 << "Synth";
    QTest::newRow("6 is Folklorico") << 6 << "Folklorico";
}

void InstrumentTest::categoryHasItsWord()
{
    QFETCH(int, value);
    QFETCH(QString, word);
    QCOMPARE(instrumentCategoryToString(static_cast<InstrumentCategory>(value)), word);
    QCOMPARE(static_cast<int>(instrumentCategoryFromString(word)), value);
}

void InstrumentTest::valueOutsideTheTableIsCalledPiano()
{
    for (const int value :
         {-1, 7, 100, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        QCOMPARE(instrumentCategoryToString(static_cast<InstrumentCategory>(value)), "Piano");
}

void InstrumentTest::anyOtherTextIsPiano_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("percussion in lower case") << "percussion";
    QTest::newRow("in upper case") << "STRINGS";
    QTest::newRow("with a blank behind it") << "Bass ";
    QTest::newRow("the beginning of a word") << "Wind";
    QTest::newRow("more than a word") << "Synths";
    QTest::newRow("with its accent") << "Folklórico";
    QTest::newRow("a number") << "2";
    QTest::newRow("empty") << "";
    QTest::newRow("null") << QString();
}

void InstrumentTest::anyOtherTextIsPiano()
{
    QFETCH(QString, text);
    QCOMPARE(instrumentCategoryFromString(text), InstrumentCategory::Piano);
}

void InstrumentTest::sourceHasItsWord()
{
    QCOMPARE(instrumentSourceToString(InstrumentSource::GeneralMidiBank), "GeneralMidiBank");
    QCOMPARE(instrumentSourceToString(InstrumentSource::CustomRecordedBank), "CustomRecordedBank");
    QCOMPARE(instrumentSourceFromString("GeneralMidiBank"), InstrumentSource::GeneralMidiBank);
    QCOMPARE(instrumentSourceFromString("CustomRecordedBank"),
             InstrumentSource::CustomRecordedBank);
    QCOMPARE(static_cast<int>(InstrumentSource::CustomRecordedBank), 1);
}

void InstrumentTest::valueOutsideTheSourcesIsTheGeneralMidiBank()
{
    for (const int value : {-1, 2, std::numeric_limits<int>::max()})
        QCOMPARE(instrumentSourceToString(static_cast<InstrumentSource>(value)), "GeneralMidiBank");
}

void InstrumentTest::anyOtherTextIsTheGeneralMidiBank_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("in lower case") << "customrecordedbank";
    QTest::newRow("with a blank before it") << " CustomRecordedBank";
    QTest::newRow("the beginning of the word") << "CustomRecorded";
    QTest::newRow("a number") << "1";
    QTest::newRow("empty") << "";
    QTest::newRow("null") << QString();
}

void InstrumentTest::anyOtherTextIsTheGeneralMidiBank()
{
    QFETCH(QString, text);
    QCOMPARE(instrumentSourceFromString(text), InstrumentSource::GeneralMidiBank);
}

void InstrumentTest::freshInstrumentIsAPianoOfTheGeneralMidiBank()
{
    const Instrument instrument;
    QVERIFY(instrument.id.isEmpty());
    QVERIFY(instrument.name.isEmpty());
    QCOMPARE(instrument.category, InstrumentCategory::Piano);
    QCOMPARE(instrument.source, InstrumentSource::GeneralMidiBank);
    QCOMPARE(instrument.generalMidiProgram, 0);
    QVERIFY(instrument.soundfontBankPath.isEmpty());
}

VELTA_GUILESS_TEST(InstrumentTest)

} // namespace InstrumentTests

#include "InstrumentTest.moc"
