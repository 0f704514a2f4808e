#include "content/LoopLibrary.h"

#include "content/LoopLength.h"
#include "support/ContentFixture.h"
#include "support/FullDisk.h"
#include "support/TestProgram.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <sys/stat.h>

namespace LoopLibraryTests {

namespace {

/// A package of one rhythm, with more members as JSON text.
QByteArray package(const QByteArray& rhythmId, const QByteArray& more = {})
{
    return "{\"rhythm\": {\"id\": \"" + rhythmId + "\", \"styleId\": \"folklore\"}" +
           (more.isEmpty() ? "" : ", ") + more + "}";
}

QByteArray groove(const QByteArray& rhythmId, int velocityOffset)
{
    return "{\"rhythmId\": \"" + rhythmId +
           "\", \"offsets\": [{\"velocityOffset\": " + QByteArray::number(velocityOffset) + "}]}";
}

template <typename Record>
QStringList idsOf(const QList<Record>& records)
{
    QStringList ids;
    for (const Record& record : records)
        ids.append(record.id);
    return ids;
}

/// Bars of the variants, which the packages of these tests use to tell variants apart.
QList<int> barsOf(const QList<LoopVariant>& variants)
{
    QList<int> bars;
    for (const LoopVariant& variant : variants)
        bars.append(variant.durationBars);
    return bars;
}

const QByteArray kVariants = R"("loopVariants": [
    {"layerId": "l", "section": "Normal", "variantIndex": 3, "durationBars": 11},
    {"layerId": "l", "section": "Normal", "variantIndex": 1, "durationBars": 12},
    {"layerId": "l", "section": "Final", "variantIndex": 1, "durationBars": 13},
    {"layerId": "otro", "section": "Normal", "variantIndex": 2, "durationBars": 14},
    {"layerId": "l", "section": "Normal", "variantIndex": 2, "durationBars": 15},
    {"layerId": "l", "section": "Normal", "variantIndex": -4, "durationBars": 16},
    {"layerId": "l", "section": "Normal", "variantIndex": 1, "durationBars": 17}])";

const QByteArray kSmallPackage = R"({
    "musicalStyle": {"id": "folklore", "displayName": "Folklore"},
    "rhythm": {"id": "zamba", "displayName": "Zamba", "styleId": "folklore",
               "timeSignature": {"numerator": 6, "denominator": 8, "isCompound": true},
               "referenceBpm": 90},
    "instruments": [{"id": "bombo", "category": "Percussion"}],
    "loopLayers": [{"id": "zamba_bombo", "rhythmId": "zamba", "label": "Bombo",
                    "instrumentId": "bombo"}],
    "loopVariants": [{"layerId": "zamba_bombo", "section": "Intro", "durationBars": 2,
                      "notes": [{"pitch": 36, "startBeat": 0.5}]}]})";

/// Written by hand: keys in alphabetical order, four blanks a level, as QJsonDocument indents.
const QByteArray kSmallManifest = R"({
    "loopLayers": [
        {
            "id": "zamba_bombo",
            "instrumentId": "bombo",
            "label": "Bombo",
            "pitched": false,
            "rhythmId": "zamba"
        }
    ],
    "loopVariants": [
        {
            "durationBars": 2,
            "layerId": "zamba_bombo",
            "notes": [
                {
                    "durationBeats": 0.25,
                    "pitch": 36,
                    "startBeat": 0.5,
                    "velocity": 100
                }
            ],
            "section": "Intro",
            "variantIndex": 1
        }
    ],
    "musicalStyles": [
        {
            "displayName": "Folklore",
            "id": "folklore"
        }
    ],
    "rhythms": [
        {
            "bpmMax": 110,
            "bpmMin": 70,
            "displayName": "Zamba",
            "grooveTemplateId": "zamba",
            "id": "zamba",
            "referenceBpm": 90,
            "styleId": "folklore",
            "timeSignature": {
                "denominator": 8,
                "isCompound": true,
                "numerator": 6
            }
        }
    ]
}
)";

const QByteArray kEmptyManifest = R"({
    "loopLayers": [
    ],
    "loopVariants": [
    ],
    "musicalStyles": [
    ],
    "rhythms": [
    ]
}
)";

QByteArray damaged(QByteArray bytes, QRandomGenerator& random)
{
    for (int change = random.bounded(1, 4); change > 0; --change) {
        const int at = random.bounded(static_cast<int>(bytes.size()));
        if (random.bounded(3) == 0)
            bytes.insert(at, bytes.mid(random.bounded(static_cast<int>(bytes.size())), 30));
        else
            bytes[at] = static_cast<char>(random.bounded(3) == 0 ? random.bounded(256)
                                                                 : random.bounded(32, 127));
    }
    return random.bounded(5) == 0 ? bytes.left(random.bounded(static_cast<int>(bytes.size())))
                                  : bytes;
}

} // namespace

class LoopLibraryTest : public QObject {
    Q_OBJECT

private slots:
    void foldersStandUnderTheRoot();
    void nothingIsReadBeforeTheFirstReload();
    void contentOfAPackageIsLoaded();
    void packagesLoadInTheOrderOfTheirFileNames();
    void onlyContentFilesOfTheFolderItselfAreRead();
    void fileThatCannotBeReadIsSkipped_data();
    void fileThatCannotBeReadIsSkipped();
    void missingFoldersGiveAnEmptyLibrary();
    void missingRootIsSurvived();
    void reloadForgetsWhatIsGone();
    void reloadingTheSameGivesTheSame();

    void sharedStyleKeepsTheNameOfTheFirstFile();
    void aStyleOfTheProgramKeepsItsName();
    void styleWithoutAnIdIsNotListed();
    void repeatedRhythmIdGivesTwoEntries();
    void repeatedLayerIdFindsTheFirst();
    void lookUpsAreCaseSensitive();
    void unknownIdFindsNothing();

    void variantMatchesInAllThree_data();
    void variantMatchesInAllThree();
    void firstOfEqualVariantsIsFound();
    void aVariantLastsBarsOfItsRhythm();
    void variantsOfASectionAscendByIndex();
    void queriesOfAListGiveItsOrder();

    void grooveIsFoundByItsRhythm();
    void grooveTemplateIdTakesNoPart();
    void lastGrooveFileOfARhythmWins();
    void grooveWithoutARhythmIdIsIgnored();
    void grooveWithoutOffsetsIsKept();
    void grooveOfNobodyIsHarmless();
    void brokenGrooveFilesAreSkipped();
    void missingGrooveFolderLeavesEveryRhythmWithoutOne();

    void packageInstrumentsAreRegisteredInOrder();
    void lastPackageRedefinesAnInstrument();
    void refusedPackageRegistersNoInstrument();
    void instrumentsOutliveTheirPackage();
    void libraryWithoutInstrumentsStillLoads();
    void reloadIsAnnouncedOnceAndSoAreItsInstruments();
    void announcementComesWhenAllIsDone();

    void indexIsWrittenByteForByte();
    void indexOfAnEmptyLibraryHoldsEmptyArrays();
    void indexReplacesALongerOne();
    void indexListsOnlyWhatWasLoaded();
    void indexIsNeverReadBack();
    void indexThatCannotBeWrittenIsReported();

    void indexOnAFullDiskStaysAsItWas();
    void indexThatStandsIsNotWrittenAgain();

    void packageBeyondTheBoundsIsSkippedAndNamed();
    void whatStandsInForAShippedRhythmIsSkipped();
    void grooveOfAShippedRhythmIsItsOwn();
    void pipesAndEndlessFilesAreSkipped();
    void damagedFilesNeverBreakTheLibrary();
};

// ---- Loading -------------------------------------------------------------------------------

void LoopLibraryTest::foldersStandUnderTheRoot()
{
    const LoopLibrary library("/a/loops", nullptr);
    QCOMPARE(library.installedDir(), "/a/loops/installed");
    QCOMPARE(library.groovesDir(), "/a/loops/grooves");
}

void LoopLibraryTest::nothingIsReadBeforeTheFirstReload()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    QVERIFY(content.library().rhythms().isEmpty());
    QVERIFY(content.library().styles().isEmpty());
    QVERIFY(!content.library().findRhythm("zamba"));
    QVERIFY(content.manifest().isNull());
}

void LoopLibraryTest::contentOfAPackageIsLoaded()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    LoopLibrary& library = content.library();
    library.reload();

    QCOMPARE(library.styles(), (QList<MusicalStyle>{{"folklore", "Folklore"}}));
    QCOMPARE(library.rhythms(),
             (QList<Rhythm>{{"zamba", "Zamba", "folklore", {6, 8, true}, 90, 70, 110, "zamba"}}));
    QCOMPARE(library.findRhythm("zamba"), &library.rhythms().first());
    QVERIFY(library.findLayer("zamba_bombo"));
    QCOMPARE(*library.findLayer("zamba_bombo"),
             (LoopLayer{"zamba_bombo", "zamba", "Bombo", "bombo", false}));
    const LoopVariant* variant = library.findVariant("zamba_bombo", LoopSection::Intro, 1);
    QVERIFY(variant);
    QCOMPARE(*variant,
             (LoopVariant{"zamba_bombo", LoopSection::Intro, 1, {{36, 0.5, 0.25, 100}}, 2}));
}

void LoopLibraryTest::packagesLoadInTheOrderOfTheirFileNames()
{
    ContentFixture content;
    content.addPackage("c", package("uno"));
    content.addPackage("10", package("dos"));
    content.addPackage("b", package("tres"));
    content.addPackage("2", package("cuatro"));
    content.library().reload();
    QCOMPARE(idsOf(content.library().rhythms()), QStringList({"dos", "cuatro", "tres", "uno"}));
}

void LoopLibraryTest::onlyContentFilesOfTheFolderItselfAreRead()
{
    ContentFixture content;
    content.addPackage("a", package("a"));
    const QString installed = content.library().installedDir();
    ContentFixture::write(installed + "/b.json", package("b"));
    ContentFixture::write(installed + "/c.content.json.bak", package("c"));
    ContentFixture::write(installed + "/d.groove.json", package("d"));
    ContentFixture::write(installed + "/dentro/e.content.json", package("e"));
    ContentFixture::write(content.root() + "/f.content.json", package("f"));
    ContentFixture::write(content.library().groovesDir() + "/g.content.json", package("g"));
    content.library().reload();
    QCOMPARE(idsOf(content.library().rhythms()), QStringList({"a"}));
}

void LoopLibraryTest::fileThatCannotBeReadIsSkipped_data()
{
    QTest::addColumn<QByteArray>("content");

    QTest::newRow("an empty file") << QByteArray("");
    QTest::newRow("no JSON") << QByteArray("hola");
    QTest::newRow("JSON cut off") << kSmallPackage.left(kSmallPackage.size() / 2);
    QTest::newRow("a list") << QByteArray("[" + kSmallPackage + "]");
    QTest::newRow("a number") << QByteArray("7");
    QTest::newRow("a package without a rhythm") << QByteArray(R"({"musicalStyle": {"id": "x"}})");
    QTest::newRow("zeros") << QByteArray(5000, '\0');
    QTest::newRow("two documents") << QByteArray(kSmallPackage + kSmallPackage);
    QTest::newRow("bytes that are no UTF-8")
        << QByteArray("{\"rhythm\": {\"id\": \"\xFF\xFE\xC0\"}}");
    QTest::newRow("brackets without end") << QByteArray(200000, '[');
    QTest::newRow("a folder of that name") << QByteArray("folder");
    QTest::newRow("a link to nowhere") << QByteArray("link");
}

void LoopLibraryTest::fileThatCannotBeReadIsSkipped()
{
    QFETCH(QByteArray, content);
    ContentFixture fixture;
    fixture.addPackage("a", package("a"));
    fixture.addPackage("c", package("c"));
    const QString path = fixture.library().installedDir() + "/b.content.json";
    if (content == "folder")
        QVERIFY(QDir().mkpath(path));
    else if (content == "link")
        QVERIFY(QFile::link(fixture.filePath("nowhere"), path));
    else
        fixture.addPackage("b", content);
    fixture.library().reload();
    QCOMPARE(idsOf(fixture.library().rhythms()), QStringList({"a", "c"}));
    QVERIFY(fixture.library().styles().isEmpty());
    QCOMPARE(jsonObject(fixture.manifest())["rhythms"].toArray().size(), 2);
}

void LoopLibraryTest::missingFoldersGiveAnEmptyLibrary()
{
    ContentFixture content;
    const QSignalSpy changed(&content.library(), &LoopLibrary::libraryChanged);
    content.library().reload();
    QVERIFY(content.library().rhythms().isEmpty());
    QVERIFY(content.library().styles().isEmpty());
    QCOMPARE(changed.count(), 1);
    QCOMPARE(content.manifest(), kEmptyManifest);
}

void LoopLibraryTest::missingRootIsSurvived()
{
    const ContentFixture content;
    LoopLibrary library(content.filePath("no/such/folder"), nullptr);
    const QSignalSpy changed(&library, &LoopLibrary::libraryChanged);
    library.reload();
    QCOMPARE(changed.count(), 1);
    QVERIFY(library.rhythms().isEmpty());
    QVERIFY(!library.writeManifest());
}

void LoopLibraryTest::reloadForgetsWhatIsGone()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    content.addGroove("zamba", groove("zamba", 1));
    LoopLibrary& library = content.library();
    library.reload();
    QVERIFY(library.findVariant("zamba_bombo", LoopSection::Intro, 1));
    QVERIFY(library.grooveForRhythm("zamba"));

    QVERIFY(QFile::remove(library.installedDir() + "/zamba.content.json"));
    QVERIFY(QFile::remove(library.groovesDir() + "/zamba.groove.json"));
    library.reload();
    QVERIFY(!library.findVariant("zamba_bombo", LoopSection::Intro, 1));
    QVERIFY(!library.findLayer("zamba_bombo"));
    QVERIFY(!library.grooveForRhythm("zamba"));
    QVERIFY(library.styles().isEmpty());
    QCOMPARE(content.manifest(), kEmptyManifest);
}

void LoopLibraryTest::reloadingTheSameGivesTheSame()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    content.addPackage("chacarera", package("chacarera", kVariants));
    LoopLibrary& library = content.library();
    library.reload();
    const QList<Rhythm> rhythms = library.rhythms();
    const QByteArray manifest = content.manifest();
    library.reload();
    QCOMPARE(library.rhythms(), rhythms);
    QCOMPARE(library.variantsFor("l", LoopSection::Normal).size(), 5);
    QCOMPARE(content.manifest(), manifest);
}

// ---- Look-ups ------------------------------------------------------------------------------

void LoopLibraryTest::sharedStyleKeepsTheNameOfTheFirstFile()
{
    ContentFixture content;
    content.addPackage(
        "b", package("b", R"("musicalStyle": {"id": "folklore", "displayName": "Segundo"})"));
    content.addPackage(
        "a", package("a", R"("musicalStyle": {"id": "folklore", "displayName": "Primero"})"));
    content.addPackage(
        "c", package("c", R"("musicalStyle": {"id": "Folklore", "displayName": "Otro"})"));
    content.library().reload();
    QCOMPARE(content.library().styles(),
             (QList<MusicalStyle>{{"folklore", "Primero"}, {"Folklore", "Otro"}}));
}

void LoopLibraryTest::aStyleOfTheProgramKeepsItsName()
{
    ContentFixture content;
    content.addPackage(
        "a", package("a", R"("musicalStyle": {"id": "folklore", "displayName": "Otra cosa"})"));
    content.addPackage("b", package("b", R"("musicalStyle": {"id": "b", "displayName": "B"})"));
    content.addPackage(
        "folklore_zamba",
        package("folklore_zamba", R"("musicalStyle": {"id": "folklore", "displayName": "Folk"})"));
    content.library().reload();
    QCOMPARE(content.library().styles(), (QList<MusicalStyle>{{"folklore", "Folk"}, {"b", "B"}}));
    // Nor does it keep the one of a former reading.
    content.addPackage("folklore_zamba",
                       package("folklore_zamba",
                               R"("musicalStyle": {"id": "folklore", "displayName": "Criollo"})"));
    content.library().reload();
    QCOMPARE(content.library().styles(),
             (QList<MusicalStyle>{{"folklore", "Criollo"}, {"b", "B"}}));
}

void LoopLibraryTest::styleWithoutAnIdIsNotListed()
{
    ContentFixture content;
    content.addPackage("a", package("a", R"("musicalStyle": {"displayName": "Sin id"})"));
    content.library().reload();
    QVERIFY(content.library().styles().isEmpty());
    QCOMPARE(idsOf(content.library().rhythms()), QStringList({"a"}));
}

void LoopLibraryTest::repeatedRhythmIdGivesTwoEntries()
{
    ContentFixture content;
    content.addPackage("a", R"({"rhythm": {"id": "z", "displayName": "A", "styleId": "s"}})");
    content.addPackage("b", R"({"rhythm": {"id": "z", "displayName": "B", "styleId": "s"}})");
    LoopLibrary& library = content.library();
    library.reload();
    QCOMPARE(library.rhythms().size(), 2);
    QCOMPARE(library.findRhythm("z")->displayName, "A");
    QCOMPARE(library.rhythmsForStyle("s"), library.rhythms());
}

void LoopLibraryTest::repeatedLayerIdFindsTheFirst()
{
    ContentFixture content;
    content.addPackage("a", package("a", R"("loopLayers": [{"id": "l", "label": "A"}])"));
    content.addPackage("b", package("b", R"("loopLayers": [{"id": "l", "label": "B"}])"));
    content.library().reload();
    QCOMPARE(content.library().findLayer("l")->label, "A");
}

void LoopLibraryTest::lookUpsAreCaseSensitive()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    content.addGroove("zamba", groove("zamba", 1));
    LoopLibrary& library = content.library();
    library.reload();
    QVERIFY(!library.findRhythm("Zamba"));
    QVERIFY(!library.findLayer("Zamba_bombo"));
    QVERIFY(!library.findVariant("ZAMBA_BOMBO", LoopSection::Intro, 1));
    QVERIFY(!library.grooveForRhythm("ZAMBA"));
    QVERIFY(library.rhythmsForStyle("Folklore").isEmpty());
    QVERIFY(library.layersForRhythm("Zamba").isEmpty());
    QVERIFY(library.variantsFor("Zamba_bombo", LoopSection::Intro).isEmpty());
}

void LoopLibraryTest::unknownIdFindsNothing()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    LoopLibrary& library = content.library();
    library.reload();
    for (const QString& id : {QString(), QString("nadie"), QString("zamb")}) {
        QVERIFY(!library.findRhythm(id));
        QVERIFY(!library.findLayer(id));
        QVERIFY(!library.findVariant(id, LoopSection::Intro, 1));
        QVERIFY(!library.grooveForRhythm(id));
        QVERIFY(library.rhythmsForStyle(id).isEmpty());
        QVERIFY(library.layersForRhythm(id).isEmpty());
        QVERIFY(library.variantsFor(id, LoopSection::Intro).isEmpty());
    }
}

void LoopLibraryTest::variantMatchesInAllThree_data()
{
    QTest::addColumn<QString>("layer");
    QTest::addColumn<LoopSection>("section");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("bars");

    QTest::newRow("all three match") << "l" << LoopSection::Normal << 2 << 15;
    QTest::newRow("another layer") << "otro" << LoopSection::Normal << 2 << 14;
    QTest::newRow("another section") << "l" << LoopSection::Final << 1 << 13;
    QTest::newRow("a negative index is a number like any other")
        << "l" << LoopSection::Normal << -4 << 16;
    QTest::newRow("an index that the section lacks") << "l" << LoopSection::Final << 2 << 0;
    QTest::newRow("an index past the last") << "l" << LoopSection::Normal << 4 << 0;
    QTest::newRow("a section that the layer lacks") << "l" << LoopSection::Intro << 1 << 0;
    QTest::newRow("a section that does not exist") << "l" << static_cast<LoopSection>(9) << 1 << 0;
    QTest::newRow("a layer that does not exist") << "nadie" << LoopSection::Normal << 1 << 0;
}

void LoopLibraryTest::variantMatchesInAllThree()
{
    QFETCH(QString, layer);
    QFETCH(LoopSection, section);
    QFETCH(int, index);
    ContentFixture content;
    content.addPackage("a", package("a", kVariants));
    content.library().reload();
    const LoopVariant* found = content.library().findVariant(layer, section, index);
    QTEST(found ? found->durationBars : 0, "bars");
}

void LoopLibraryTest::aVariantLastsBarsOfItsRhythm()
{
    ContentFixture content;
    content.addPackage("r", R"({"rhythm": {"id": "r",
        "timeSignature": {"numerator": 6, "denominator": 8}}, "loopLayers": [{"id": "l"}],
        "loopVariants": [{"layerId": "l", "section": "Final", "variantIndex": 2,
                          "durationBars": 4}]})");
    LoopLibrary& library = content.library();
    library.reload();
    QCOMPARE(loopBeats(library, "r", "l", LoopSection::Final, 2), 12.0);
    QVERIFY(!loopBeats(library, "x", "l", LoopSection::Final, 2));
    QVERIFY(!loopBeats(library, "r", "x", LoopSection::Final, 2));
    QVERIFY(!loopBeats(library, "r", "l", LoopSection::Intro, 2));
    QVERIFY(!loopBeats(library, "r", "l", LoopSection::Final, 1));
}

void LoopLibraryTest::firstOfEqualVariantsIsFound()
{
    ContentFixture content;
    content.addPackage("a", package("a", kVariants));
    content.addPackage("b", package("b", kVariants));
    content.library().reload();
    const LoopVariant* found = content.library().findVariant("l", LoopSection::Normal, 1);
    QVERIFY(found);
    QCOMPARE(found->durationBars, 12);
}

void LoopLibraryTest::variantsOfASectionAscendByIndex()
{
    ContentFixture content;
    content.addPackage("a", package("a", kVariants));
    content.library().reload();
    QList<int> bars = barsOf(content.library().variantsFor("l", LoopSection::Normal));
    QCOMPARE(bars.size(), 5);
    // The two variants of index 1 may stand in either order.
    std::sort(bars.begin() + 1, bars.begin() + 3);
    QCOMPARE(bars, QList<int>({16, 12, 17, 15, 11}));
    QCOMPARE(barsOf(content.library().variantsFor("l", LoopSection::Final)), QList<int>{13});
}

void LoopLibraryTest::queriesOfAListGiveItsOrder()
{
    ContentFixture content;
    content.addPackage("a", R"({"rhythm": {"id": "r2", "styleId": "s"},
        "loopLayers": [{"id": "l3", "rhythmId": "r2"}, {"id": "l1", "rhythmId": "r1"},
                       {"id": "l2", "rhythmId": "r2"}]})");
    content.addPackage("b", R"({"rhythm": {"id": "r3", "styleId": "t"}})");
    content.addPackage("c", R"({"rhythm": {"id": "r1", "styleId": "s"},
        "loopLayers": [{"id": "l0", "rhythmId": "r2"}]})");
    LoopLibrary& library = content.library();
    library.reload();
    QCOMPARE(idsOf(library.rhythmsForStyle("s")), QStringList({"r2", "r1"}));
    QCOMPARE(idsOf(library.layersForRhythm("r2")), QStringList({"l3", "l2", "l0"}));
    QCOMPARE(idsOf(library.layersForRhythm("r1")), QStringList({"l1"}));
}

// ---- Grooves -------------------------------------------------------------------------------

void LoopLibraryTest::grooveIsFoundByItsRhythm()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    content.addGroove("any name", R"({"rhythmId": "zamba", "offsets": [
        {"position": 1.5, "timingOffsetBeats": -0.02, "velocityOffset": 9}, {"position": 0.5}]})");
    content.library().reload();
    const GrooveTemplate* found = content.library().grooveForRhythm("zamba");
    QVERIFY(found);
    QCOMPARE(*found, (GrooveTemplate{"zamba", {{1.5, -0.02, 9}, {0.5, 0.0, 0}}}));
}

void LoopLibraryTest::grooveTemplateIdTakesNoPart()
{
    ContentFixture content;
    content.addPackage("a", R"({"rhythm": {"id": "a", "grooveTemplateId": "shared"}})");
    content.addGroove("shared", groove("shared", 1));
    content.library().reload();
    QCOMPARE(content.library().findRhythm("a")->grooveTemplateId, "shared");
    QVERIFY(!content.library().grooveForRhythm("a"));
    QVERIFY(content.library().grooveForRhythm("shared"));
}

void LoopLibraryTest::lastGrooveFileOfARhythmWins()
{
    ContentFixture content;
    content.addGroove("b", groove("zamba", 2));
    content.addGroove("a", groove("zamba", 1));
    content.library().reload();
    const GrooveTemplate* found = content.library().grooveForRhythm("zamba");
    QVERIFY(found);
    QCOMPARE(found->offsets.size(), 1);
    QCOMPARE(found->offsets.first().velocityOffset, 2);
}

void LoopLibraryTest::grooveWithoutARhythmIdIsIgnored()
{
    ContentFixture content;
    content.addGroove("a", groove("", 1));
    content.addGroove("b", R"({"offsets": [{"position": 1}]})");
    content.addGroove("c", R"({"rhythmId": 5, "offsets": []})");
    content.library().reload();
    QVERIFY(!content.library().grooveForRhythm(""));
    QVERIFY(!content.library().grooveForRhythm("5"));
}

void LoopLibraryTest::grooveWithoutOffsetsIsKept()
{
    ContentFixture content;
    content.addGroove("a", R"({"rhythmId": "a"})");
    content.library().reload();
    QVERIFY(content.library().grooveForRhythm("a"));
    QVERIFY(content.library().grooveForRhythm("a")->offsets.isEmpty());
}

void LoopLibraryTest::grooveOfNobodyIsHarmless()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    content.addGroove("huayno", groove("huayno", 1));
    content.library().reload();
    QVERIFY(content.library().grooveForRhythm("huayno"));
    QVERIFY(!content.library().grooveForRhythm("zamba"));
}

void LoopLibraryTest::brokenGrooveFilesAreSkipped()
{
    ContentFixture content;
    content.addGroove("a", groove("a", 1));
    content.addGroove("b", "{\"rhythmId\": \"b\"");
    content.addGroove("c", "[]");
    content.addGroove("d", groove("d", 4));
    QVERIFY(QDir().mkpath(content.library().groovesDir() + "/e.groove.json"));
    content.library().reload();
    QVERIFY(content.library().grooveForRhythm("a"));
    QVERIFY(!content.library().grooveForRhythm("b"));
    QVERIFY(content.library().grooveForRhythm("d"));
}

void LoopLibraryTest::missingGrooveFolderLeavesEveryRhythmWithoutOne()
{
    ContentFixture content;
    content.addPackage("a", package("a"));
    content.addPackage("zamba", kSmallPackage);
    content.library().reload();
    QVERIFY(!QFileInfo::exists(content.library().groovesDir()));
    QCOMPARE(content.library().rhythms().size(), 2);
    for (const Rhythm& rhythm : content.library().rhythms())
        QVERIFY(!content.library().grooveForRhythm(rhythm.id));
}

// ---- Instruments and signals ---------------------------------------------------------------

void LoopLibraryTest::packageInstrumentsAreRegisteredInOrder()
{
    ContentFixture content;
    content.addPackage("b", package("b", R"("instruments": [{"id": "caja"}, {"id": "erke"}])"));
    content.addPackage("a", package("a", R"("instruments": [{"id": "quena"}, {"id": "caja"}])"));
    content.library().reload();
    QCOMPARE(idsOf(content.instruments().instruments()), QStringList({"quena", "caja", "erke"}));
}

void LoopLibraryTest::lastPackageRedefinesAnInstrument()
{
    ContentFixture content;
    content.instruments().loadBuiltinGmInstruments();
    content.addPackage("a", package("a", R"("instruments": [{"id": "gm_piano", "name": "A"}])"));
    content.addPackage("b", package("b", R"("instruments": [{"id": "gm_piano", "name": "B"}])"));
    content.library().reload();
    QCOMPARE(content.instruments().instruments().size(), 16);
    QCOMPARE(content.instruments().instruments().first().name, "B");
}

void LoopLibraryTest::refusedPackageRegistersNoInstrument()
{
    ContentFixture content;
    content.addPackage("a", R"({"rhythm": {}, "instruments": [{"id": "quena"}]})");
    content.library().reload();
    QVERIFY(content.instruments().instruments().isEmpty());
}

void LoopLibraryTest::instrumentsOutliveTheirPackage()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    content.library().reload();
    QVERIFY(QFile::remove(content.library().installedDir() + "/zamba.content.json"));
    content.library().reload();
    QVERIFY(content.instruments().find("bombo"));
}

void LoopLibraryTest::libraryWithoutInstrumentsStillLoads()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    LoopLibrary library(content.root(), nullptr);
    library.reload();
    QVERIFY(library.findRhythm("zamba"));
    QVERIFY(!library.findLayer("zamba_bombo")->pitched);
}

void LoopLibraryTest::reloadIsAnnouncedOnceAndSoAreItsInstruments()
{
    ContentFixture content;
    content.addPackage("a", package("a", R"("instruments": [{"id": "x"}, {"id": "y"}])"));
    content.addPackage("b", package("b"));
    content.addPackage("c", package("c", R"("instruments": [{"id": "x"}])"));
    content.addPackage("d", "broken");
    content.addGroove("a", groove("a", 1));
    const QSignalSpy changed(&content.library(), &LoopLibrary::libraryChanged);
    const QSignalSpy instruments(&content.instruments(), &InstrumentLibrary::instrumentsChanged);
    content.library().reload();
    QCOMPARE(changed.count(), 1);
    QCOMPARE(instruments.count(), 1);
    content.library().reload();
    QCOMPARE(changed.count(), 2);
    QCOMPARE(instruments.count(), 2);
}

void LoopLibraryTest::announcementComesWhenAllIsDone()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    content.addGroove("zamba", groove("zamba", 1));
    QByteArray manifest;
    bool complete = false;
    connect(&content.library(), &LoopLibrary::libraryChanged, this, [&] {
        manifest = content.manifest();
        complete = content.library().findVariant("zamba_bombo", LoopSection::Intro, 1) &&
                   content.library().grooveForRhythm("zamba") &&
                   content.instruments().find("bombo");
    });
    content.library().reload();
    QVERIFY(complete);
    QCOMPARE(manifest, kSmallManifest);
}

// ---- The index -----------------------------------------------------------------------------

void LoopLibraryTest::indexIsWrittenByteForByte()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    content.library().reload();
    QCOMPARE(content.manifest(), kSmallManifest);
}

void LoopLibraryTest::indexOfAnEmptyLibraryHoldsEmptyArrays()
{
    const ContentFixture content;
    const LoopLibrary library(content.root(), nullptr);
    QVERIFY(library.writeManifest());
    QCOMPARE(content.manifest(), kEmptyManifest);
}

void LoopLibraryTest::indexReplacesALongerOne()
{
    ContentFixture content;
    ContentFixture::write(content.root() + "/manifest.json", QByteArray(100000, 'x'));
    content.library().reload();
    QCOMPARE(content.manifest(), kEmptyManifest);
}

void LoopLibraryTest::indexListsOnlyWhatWasLoaded()
{
    ContentFixture content;
    content.addPackage("a", "broken");
    content.addPackage("b", R"({"rhythm": {}, "loopLayers": [{"id": "l"}]})");
    content.addPackage("zamba", kSmallPackage);
    content.library().reload();
    QCOMPARE(content.manifest(), kSmallManifest);
}

void LoopLibraryTest::indexIsNeverReadBack()
{
    ContentFixture content;
    ContentFixture::write(content.root() + "/manifest.json", kSmallManifest);
    content.library().reload();
    QVERIFY(content.library().rhythms().isEmpty());
    QVERIFY(!content.library().findLayer("zamba_bombo"));
}

void LoopLibraryTest::indexThatCannotBeWrittenIsReported()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    QVERIFY(QDir().mkpath(content.root() + "/manifest.json"));
    const QSignalSpy changed(&content.library(), &LoopLibrary::libraryChanged);
    content.library().reload();
    QVERIFY(!content.library().writeManifest());
    QCOMPARE(changed.count(), 1);
    QVERIFY(content.library().findRhythm("zamba"));
}

void LoopLibraryTest::indexOnAFullDiskStaysAsItWas()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    content.library().reload();
    QByteArray more;
    for (int i = 0; i < 30; ++i)
        more += R"({"id": "layer"},)";
    content.addPackage("zz", package("zz", "\"loopLayers\": [" + more + "{}]"));
    {
        const FullDisk disk(kSmallManifest.size() + 500);
        content.library().reload();
        QVERIFY(!content.library().writeManifest());
    }
    QCOMPARE(content.manifest(), kSmallManifest);
    QVERIFY(content.library().findRhythm("zz"));
    QVERIFY(content.library().writeManifest());
    QVERIFY(content.manifest().contains("layer"));
}

void LoopLibraryTest::indexThatStandsIsNotWrittenAgain()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    content.library().reload();
    const FullDisk disk(0);
    QVERIFY(content.library().writeManifest());
    QCOMPARE(content.manifest(), kSmallManifest);
}

// ---- Files that are refused ----------------------------------------------------------------

void LoopLibraryTest::packageBeyondTheBoundsIsSkippedAndNamed()
{
    ContentFixture content;
    content.addPackage("a", package("a", "\"instruments\": [" +
                                             QByteArray(R"({"id": "i"},)").repeated(64) + "{}]"));
    content.addPackage("b", package("b"));
    content.addPackage("c", "no package");
    content.addGroove("b", R"({"rhythmId": "b", "offsets": [)" + QByteArray("{},").repeated(256) +
                               "{}]}");
    content.library().reload();
    QCOMPARE(idsOf(content.library().rhythms()), QStringList{"b"});
    QVERIFY(!content.instruments().find("i"));
    QVERIFY(!content.library().grooveForRhythm("b"));
    QCOMPARE(content.library().refused(), QStringList({"a", "b"}));
    for (const char* name : {"a", "B", "c"})
        QVERIFY2(content.library().hasPackageFile(name), name);
    QVERIFY(!content.library().hasPackageFile("d"));

    content.addPackage("a", package("a"));
    QVERIFY(QFile::remove(content.library().groovesDir() + "/b.groove.json"));
    content.library().reload();
    QCOMPARE(idsOf(content.library().rhythms()), QStringList({"a", "b"}));
    QVERIFY(content.library().refused().isEmpty());
}

void LoopLibraryTest::whatStandsInForAShippedRhythmIsSkipped()
{
    ContentFixture content;
    const QByteArray layers = R"("loopLayers": [{"id": "z_bombo", "rhythmId": "folklore_zamba"}],
                                 "loopVariants": [{"layerId": "z_bombo", "durationBars": 2}])";
    content.addPackage("folklore_zamba", package("folklore_zamba", layers));
    content.addPackage("a_thief", package("folklore_zamba"));
    content.addPackage("b_thief", package("Folklore_Zamba"));
    content.addPackage("c_thief", package("c_thief", R"("loopLayers": [{"id": "z_bombo"}])"));
    content.addPackage("d_thief",
                       package("d_thief", R"("loopVariants": [{"layerId": "z_bombo"}])"));
    content.addPackage("Folklore_Zamba", package("Folklore_Zamba"));
    content.addPackage("z_neighbour", package("z_neighbour", R"("loopLayers": [{"id": "z_2"}])"));
    content.library().reload();
    QCOMPARE(idsOf(content.library().rhythms()), QStringList({"folklore_zamba", "z_neighbour"}));
    QCOMPARE(content.library().findVariant("z_bombo", LoopSection::Normal, 1)->durationBars, 2);
    QStringList refused = content.library().refused();
    refused.sort();
    QCOMPARE(refused, QStringList({"Folklore_Zamba", "a_thief", "b_thief", "c_thief", "d_thief"}));
}

void LoopLibraryTest::grooveOfAShippedRhythmIsItsOwn()
{
    ContentFixture content;
    content.addGroove("folklore_zamba", groove("folklore_zamba", 3));
    content.addGroove("z_thief", groove("folklore_zamba", 99));
    content.library().reload();
    QCOMPARE(content.library().grooveForRhythm("folklore_zamba")->offsets[0].velocityOffset, 3);
    QCOMPARE(content.library().refused(), QStringList{"z_thief"});
}

void LoopLibraryTest::pipesAndEndlessFilesAreSkipped()
{
    ContentFixture content;
    content.addPackage("zamba", kSmallPackage);
    const QString folder = content.library().installedDir();
    QVERIFY(mkfifo(qPrintable(folder + "/pipe.content.json"), 0600) == 0);
    QVERIFY(QFile::link("/dev/zero", folder + "/zero.content.json"));
    QFile large(folder + "/large.content.json");
    QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(16 * 1024 * 1024 + 1));
    content.library().reload();
    QCOMPARE(idsOf(content.library().rhythms()), QStringList{"zamba"});
}

// ---- Hostile files -------------------------------------------------------------------------

void LoopLibraryTest::damagedFilesNeverBreakTheLibrary()
{
    QRandomGenerator random(33);
    ContentFixture content;
    content.addPackage("a", package("a"));
    content.addPackage("c", package("c"));
    content.addGroove("c", groove("c", 3));
    LoopLibrary& library = content.library();
    int survivors = 0;
    for (int round = 0; round < 400; ++round) {
        content.addPackage("b", damaged(kSmallPackage, random));
        content.addGroove("b", damaged(groove("b", 2), random));
        library.reload();
        QCOMPARE(library.rhythms().first().id, "a");
        QCOMPARE(library.rhythms().last().id, "c");
        QVERIFY(library.grooveForRhythm("c"));
        const auto extra = library.rhythms().size() - 2;
        QVERIFY(extra == 0 || extra == 1);
        survivors += static_cast<int>(extra);
        QCOMPARE(jsonObject(content.manifest())["rhythms"].toArray().size(), extra + 2);
    }
    QVERIFY2(survivors > 20 && survivors < 380, qPrintable(QString::number(survivors)));
}

VELTA_GUILESS_TEST(LoopLibraryTest)

} // namespace LoopLibraryTests

#include "LoopLibraryTest.moc"
