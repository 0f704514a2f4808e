#include "content/InstrumentLibrary.h"

#include "support/ContentFixture.h"
#include "support/TestProgram.h"

#include <QSignalSpy>
#include <QTest>

#include <limits>

namespace InstrumentLibraryTests {

namespace {

Instrument recorded(const QString& id, InstrumentCategory category = InstrumentCategory::Piano,
                    const QString& bankPath = {}, int program = 5)
{
    return {.id = id,
            .name = id,
            .category = category,
            .source = InstrumentSource::CustomRecordedBank,
            .generalMidiProgram = program,
            .soundfontBankPath = bankPath};
}

QStringList idsOf(const InstrumentLibrary& library)
{
    QStringList ids;
    for (const Instrument& instrument : library.instruments())
        ids.append(instrument.id);
    return ids;
}

InstrumentLibrary& filled(InstrumentLibrary& library)
{
    library.loadBuiltinGmInstruments();
    return library;
}

} // namespace

class InstrumentLibraryTest : public QObject {
    Q_OBJECT

private slots:
    void startsEmpty();
    void builtinHasItsRow_data();
    void builtinHasItsRow();
    void thereAreSixteenBuiltinsAndEachIsAnnounced();
    void loadingTheBuiltinsTwiceAddsNone();
    void redefiningABuiltinKeepsItsPlace();
    void redefiningReplacesEveryField();
    void registeringAnEntryOfTheListItselfKeepsIt();
    void instrumentsStandInOrderOfFirstRegistration();
    void findIsExact();
    void emptyIdIsAnIdLikeAnyOther();
    void bankPathIsUnderTheRoot();
    void noBankPathGivesNoAbsolutePath();
    void availabilityFollowsTheFile();
    void bankOfAnInstrumentThatIsNotRecordedIsNeverAvailable();
    void recordedInstrumentWithoutAPathIsNotAvailable();
    void gmInstrumentPlaysItsOwnProgram_data();
    void gmInstrumentPlaysItsOwnProgram();
    void recordedInstrumentPlaysItsStandIn_data();
    void recordedInstrumentPlaysItsStandIn();
    void unknownSourceActsAsRecorded();
    void programDoesNotDependOnTheBankBeingThere();
};

void InstrumentLibraryTest::startsEmpty()
{
    const InstrumentLibrary library("banks");
    QVERIFY(library.instruments().isEmpty());
    QVERIFY(!library.find("gm_piano"));
}

void InstrumentLibraryTest::builtinHasItsRow_data()
{
    using enum InstrumentCategory;
    QTest::addColumn<int>("place");
    QTest::addColumn<QString>("name");
    QTest::addColumn<InstrumentCategory>("category");
    QTest::addColumn<int>("program");

    QTest::newRow("gm_piano") << 0 << "Piano" << Piano << 0;
    QTest::newRow("gm_epiano") << 1 << "Piano eléctrico" << Piano << 4;
    QTest::newRow("gm_guitarra_nylon") << 2 << "Guitarra criolla (GM)" << Strings << 24;
    QTest::newRow("gm_guitarra_electrica") << 3 << "Guitarra eléctrica" << Strings << 27;
    QTest::newRow("gm_cuerdas") << 4 << "Cuerdas" << Strings << 48;
    QTest::newRow("gm_violin") << 5 << "Violín" << Strings << 40;
    QTest::newRow("gm_bajo") << 6 << "Bajo" << Bass << 33;
    QTest::newRow("gm_bajo_acustico") << 7 << "Bajo acústico" << Bass << 32;
    QTest::newRow("gm_flauta") << 8 << "Flauta" << Winds << 73;
    QTest::newRow("gm_flauta_pan") << 9 << "Flauta de pan" << Winds << 75;
    QTest::newRow("gm_trompeta") << 10 << "Trompeta" << Winds << 56;
    QTest::newRow("gm_saxo") << 11 << "Saxo" << Winds << 65;
    QTest::newRow("gm_sintetizador") << 12 << "Sintetizador" << Synth << 81;
    QTest::newRow("gm_pad") << 13 << "Pad suave" << Synth << 89;
    QTest::newRow("gm_marimba") << 14 << "Marimba" << Piano << 12;
    QTest::newRow("gm_bateria") << 15 << "Batería" << Percussion << 0;
}

void InstrumentLibraryTest::builtinHasItsRow()
{
    QFETCH(int, place);
    QFETCH(QString, name);
    QFETCH(InstrumentCategory, category);
    QFETCH(int, program);

    InstrumentLibrary library("banks");
    const Instrument* found = filled(library).find(QTest::currentDataTag());
    QVERIFY(found);
    QCOMPARE(found, &library.instruments().at(place));
    QCOMPARE(found->name, name);
    QCOMPARE(found->category, category);
    QCOMPARE(found->source, InstrumentSource::GeneralMidiBank);
    QCOMPARE(found->generalMidiProgram, program);
    QVERIFY(found->soundfontBankPath.isEmpty());
    QCOMPARE(library.effectiveGmProgram(*found), program);
}

void InstrumentLibraryTest::thereAreSixteenBuiltinsAndEachIsAnnounced()
{
    InstrumentLibrary library("banks");
    const QSignalSpy changed(&library, &InstrumentLibrary::instrumentsChanged);
    library.loadBuiltinGmInstruments();
    QCOMPARE(library.instruments().size(), 16);
    QCOMPARE(changed.count(), 16);
}

void InstrumentLibraryTest::loadingTheBuiltinsTwiceAddsNone()
{
    InstrumentLibrary library("banks");
    const QStringList once = idsOf(filled(library));
    QCOMPARE(idsOf(filled(library)), once);
}

void InstrumentLibraryTest::redefiningABuiltinKeepsItsPlace()
{
    InstrumentLibrary library("banks");
    const QStringList before = idsOf(filled(library));
    const QSignalSpy changed(&library, &InstrumentLibrary::instrumentsChanged);

    Instrument piano = *library.find("gm_piano");
    piano.name = "Piano de la escuela";
    library.registerInstrument(piano);
    QCOMPARE(idsOf(library), before);
    QCOMPARE(library.find("gm_piano")->name, "Piano de la escuela");
    QCOMPARE(changed.count(), 1);
}

void InstrumentLibraryTest::redefiningReplacesEveryField()
{
    InstrumentLibrary library("banks");
    library.registerInstrument({.id = "quena",
                                .name = "Quena",
                                .category = InstrumentCategory::Winds,
                                .source = InstrumentSource::GeneralMidiBank,
                                .generalMidiProgram = 75,
                                .soundfontBankPath = {}});
    const Instrument last =
        recorded("quena", InstrumentCategory::Folklorico, "instruments/quena.sf2", 9);
    library.registerInstrument(last);
    QCOMPARE(library.instruments(), QList<Instrument>{last});
}

void InstrumentLibraryTest::registeringAnEntryOfTheListItselfKeepsIt()
{
    InstrumentLibrary library("banks");
    library.registerInstrument(recorded("erke"));
    library.registerInstrument(recorded("anata"));
    const QList<Instrument> before = library.instruments();
    library.registerInstrument(library.instruments().last());
    QCOMPARE(library.instruments(), before);
}

void InstrumentLibraryTest::instrumentsStandInOrderOfFirstRegistration()
{
    InstrumentLibrary library("banks");
    for (const char* id : {"erke", "anata", "caja", "anata", "erke"})
        library.registerInstrument(recorded(id));
    QCOMPARE(idsOf(library), QStringList({"erke", "anata", "caja"}));
}

void InstrumentLibraryTest::findIsExact()
{
    InstrumentLibrary library("banks");
    library.registerInstrument(recorded("erke"));
    QVERIFY(library.find("erke"));
    for (const char* other : {"Erke", "erk", "erke ", ""})
        QVERIFY2(!library.find(other), other);
}

void InstrumentLibraryTest::emptyIdIsAnIdLikeAnyOther()
{
    InstrumentLibrary library("banks");
    library.registerInstrument(recorded(""));
    library.registerInstrument(recorded("", InstrumentCategory::Bass));
    QCOMPARE(library.instruments().size(), 1);
    QCOMPARE(library.find("")->category, InstrumentCategory::Bass);
}

void InstrumentLibraryTest::bankPathIsUnderTheRoot()
{
    const InstrumentLibrary library("/banks");
    QCOMPARE(library.customBankAbsolutePath(
                 recorded("erke", InstrumentCategory::Winds, "instruments/erke.sf2")),
             "/banks/instruments/erke.sf2");

    Instrument ordinary;
    ordinary.soundfontBankPath = "a.sf2";
    QCOMPARE(library.customBankAbsolutePath(ordinary), "/banks/a.sf2");
}

void InstrumentLibraryTest::noBankPathGivesNoAbsolutePath()
{
    QVERIFY(InstrumentLibrary("/banks").customBankAbsolutePath(recorded("erke")).isEmpty());
}

void InstrumentLibraryTest::availabilityFollowsTheFile()
{
    const ContentFixture content;
    const InstrumentLibrary library(content.bankRoot());
    const Instrument erke = recorded("erke", InstrumentCategory::Winds, "instruments/erke.sf2");
    QVERIFY(!library.customBankAvailable(erke));
    ContentFixture::write(content.bankRoot() + "/instruments/erke.sf2", "any content");
    QVERIFY(library.customBankAvailable(erke));
    QVERIFY(QFile::remove(content.bankRoot() + "/instruments/erke.sf2"));
    QVERIFY(!library.customBankAvailable(erke));
}

void InstrumentLibraryTest::bankOfAnInstrumentThatIsNotRecordedIsNeverAvailable()
{
    const ContentFixture content;
    ContentFixture::write(content.bankRoot() + "/erke.sf2", "any content");
    const InstrumentLibrary library(content.bankRoot());
    Instrument erke = recorded("erke", InstrumentCategory::Winds, "erke.sf2");
    QVERIFY(library.customBankAvailable(erke));
    erke.source = InstrumentSource::GeneralMidiBank;
    QVERIFY(!library.customBankAvailable(erke));
    erke.source = static_cast<InstrumentSource>(2);
    QVERIFY(!library.customBankAvailable(erke));
}

void InstrumentLibraryTest::recordedInstrumentWithoutAPathIsNotAvailable()
{
    const ContentFixture content;
    QVERIFY(QFileInfo::exists(content.bankRoot()));
    QVERIFY(!InstrumentLibrary(content.bankRoot()).customBankAvailable(recorded("erke")));
}

void InstrumentLibraryTest::gmInstrumentPlaysItsOwnProgram_data()
{
    QTest::addColumn<int>("program");

    QTest::newRow("of the table") << 40;
    QTest::newRow("0") << 0;
    QTest::newRow("beyond the range, as nothing is checked") << 500;
    QTest::newRow("below the range") << -3;
    QTest::newRow("the largest number") << std::numeric_limits<int>::max();
}

void InstrumentLibraryTest::gmInstrumentPlaysItsOwnProgram()
{
    QFETCH(int, program);
    Instrument instrument = recorded("quena", InstrumentCategory::Winds, {}, program);
    instrument.source = InstrumentSource::GeneralMidiBank;
    QCOMPARE(InstrumentLibrary("banks").effectiveGmProgram(instrument), program);
}

void InstrumentLibraryTest::recordedInstrumentPlaysItsStandIn_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<int>("category");
    QTest::addColumn<int>("program");

    QTest::newRow("bombo_leguero is a drum") << "bombo_leguero" << 6 << 117;
    QTest::newRow("charango is a nylon guitar") << "charango" << 1 << 24;
    QTest::newRow("guitarra_criolla is a nylon guitar") << "guitarra_criolla" << 1 << 24;
    QTest::newRow("acordeon is an accordion") << "acordeon" << 6 << 21;
    QTest::newRow("bandoneon is a tango accordion") << "bandoneon" << 6 << 23;
    QTest::newRow("quena is a pan flute, whatever program it declares") << "quena" << 4 << 75;
    QTest::newRow("the id goes before the category") << "quena" << 2 << 75;
    QTest::newRow("an id in another case is unknown") << "Quena" << 4 << 73;
    QTest::newRow("unknown in Piano") << "x" << 0 << 0;
    QTest::newRow("unknown in Strings") << "x" << 1 << 48;
    QTest::newRow("unknown in Percussion") << "x" << 2 << 117;
    QTest::newRow("unknown in Bass") << "x" << 3 << 33;
    QTest::newRow("unknown in Winds") << "x" << 4 << 73;
    QTest::newRow("unknown in Synth") << "x" << 5 << 81;
    QTest::newRow("unknown in Folklorico") << "x" << 6 << 24;
    QTest::newRow("unknown in a category past the last") << "x" << 7 << 0;
    QTest::newRow("unknown in a category below the first") << "x" << -1 << 0;
}

void InstrumentLibraryTest::recordedInstrumentPlaysItsStandIn()
{
    QFETCH(QString, id);
    QFETCH(int, category);
    const InstrumentLibrary library("banks");
    QTEST(library.effectiveGmProgram(recorded(id, static_cast<InstrumentCategory>(category))),
          "program");
}

void InstrumentLibraryTest::unknownSourceActsAsRecorded()
{
    Instrument instrument = recorded("x", InstrumentCategory::Synth);
    for (const int source : {-1, 2, std::numeric_limits<int>::min()}) {
        instrument.source = static_cast<InstrumentSource>(source);
        QCOMPARE(InstrumentLibrary("banks").effectiveGmProgram(instrument), 81);
    }
}

void InstrumentLibraryTest::programDoesNotDependOnTheBankBeingThere()
{
    const ContentFixture content;
    const InstrumentLibrary library(content.bankRoot());
    const Instrument quena = recorded("quena", InstrumentCategory::Winds, "quena.sf2");
    QCOMPARE(library.effectiveGmProgram(quena), 75);
    ContentFixture::write(content.bankRoot() + "/quena.sf2", "any content");
    QVERIFY(library.customBankAvailable(quena));
    QCOMPARE(library.effectiveGmProgram(quena), 75);
}

VELTA_GUILESS_TEST(InstrumentLibraryTest)

} // namespace InstrumentLibraryTests

#include "InstrumentLibraryTest.moc"
