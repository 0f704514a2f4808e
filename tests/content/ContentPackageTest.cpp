#include "content/ContentPackage.h"

#include "support/ContentFixture.h"
#include "support/TestProgram.h"

#include <QRandomGenerator>
#include <QTest>

#include <array>
#include <limits>

namespace ContentPackageTests {

namespace {

constexpr int kMinInt = std::numeric_limits<int>::min();
constexpr int kMaxInt = std::numeric_limits<int>::max();

/// Everything that one package gives.
struct Parsed {
    bool ok = false;
    QString error;
    MusicalStyle style;
    Rhythm rhythm;
    QList<Instrument> instruments;
    QList<LoopLayer> layers;
    QList<LoopVariant> variants;

    friend bool operator==(const Parsed&, const Parsed&) = default;
};

Parsed parsed(const QJsonObject& json)
{
    Parsed result;
    result.ok = ContentPackage::parse(json, &result.style, &result.rhythm, &result.instruments,
                                      &result.layers, &result.variants, &result.error);
    return result;
}

/// A package of the rhythm "r" with one more member, given as JSON text.
QJsonObject packageWith(const QByteArray& member)
{
    return jsonObject(R"({"rhythm": {"id": "r"}, )" + member + "}");
}

Rhythm rhythmFrom(const QByteArray& text)
{
    return parsed(jsonObject(R"({"rhythm": )" + text + "}")).rhythm;
}

MusicalStyle styleFrom(const QByteArray& text)
{
    return parsed(packageWith(R"("musicalStyle": )" + text)).style;
}

/// The only element of an array of the package, read back.
Instrument instrumentFrom(const QByteArray& text)
{
    return parsed(packageWith(R"("instruments": [)" + text + "]")).instruments.value(0);
}

LoopLayer layerFrom(const QByteArray& text)
{
    return parsed(packageWith(R"("loopLayers": [)" + text + "]")).layers.value(0);
}

LoopVariant variantFrom(const QByteArray& text)
{
    return parsed(packageWith(R"("loopVariants": [)" + text + "]")).variants.value(0);
}

NoteEvent noteFrom(const QByteArray& text)
{
    return variantFrom(R"({"notes": [)" + text + "]}").notes.value(0);
}

GrooveOffset offsetFrom(const QByteArray& text)
{
    return ContentPackage::parseGroove(
               jsonObject(R"({"rhythmId": "r", "offsets": [)" + text + "]}"))
        .offsets.value(0);
}

constexpr NoteEvent kDefaultNote{
    .pitch = 60, .startBeat = 0.0, .durationBeats = 0.25, .velocity = 100};

enum class JsonType { Text, Integer, Number, Flag, Object, Array };

/// Texts of values that do not have a type; for integers, numbers that are none among them.
QList<QByteArray> valuesNotOfType(JsonType type)
{
    QList<QByteArray> values{"null"};
    if (type != JsonType::Text)
        values += {R"("7")", R"("")"};
    if (type == JsonType::Integer)
        values += {"90.5", "3e9", "-3e9", "1e300"};
    else if (type != JsonType::Number)
        values += {"1", "0"};
    if (type != JsonType::Flag)
        values += {"true", "false"};
    if (type != JsonType::Object)
        values += R"({"id": "x"})";
    if (type != JsonType::Array)
        values += "[1]";
    return values;
}

struct Key {
    const char* name;
    JsonType type;
};

/// A row for each key with each value that is not of its type. `start` holds the members that
/// the object has beside it.
void addMistypedRows(const QByteArray& start, const QList<Key>& keys)
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("nothing given") << "{" + start + "}";
    for (const Key& key : keys) {
        for (const QByteArray& value : valuesNotOfType(key.type))
            QTest::addRow("%s given as %s", key.name, value.constData())
                << "{" + start + (start.isEmpty() ? "" : ", ") + "\"" + key.name + "\": " + value +
                       "}";
    }
}

Rhythm plainRhythm(const QString& id)
{
    return {.id = id,
            .displayName = id,
            .styleId = {},
            .timeSignature = {},
            .referenceBpm = 120,
            .bpmMin = 100,
            .bpmMax = 140,
            .grooveTemplateId = id};
}

const QByteArray kWholePackage = R"({
    "musicalStyle": {"id": "folklore", "displayName": "Folklore argentino"},
    "rhythm": {"id": "chacarera", "displayName": "Chacarera", "styleId": "folklore",
               "timeSignature": {"numerator": 6, "denominator": 8, "isCompound": true},
               "referenceBpm": 110, "bpmMin": 95, "bpmMax": 125, "grooveTemplateId": "chaca"},
    "instruments": [
        {"id": "bombo_leguero", "name": "Bombo legüero", "category": "Percussion",
         "source": "CustomRecordedBank", "generalMidiProgram": 117,
         "soundfontBankPath": "instruments/bombo_leguero.sf2"},
        {"id": "violin_criollo", "name": "Violín", "category": "Strings"}],
    "loopLayers": [
        {"id": "chaca_bombo", "rhythmId": "chacarera", "label": "Bombo",
         "instrumentId": "bombo_leguero", "pitched": false},
        {"id": "chaca_guitarra", "rhythmId": "chacarera", "label": "Guitarra",
         "instrumentId": "guitarra_criolla", "pitched": true}],
    "loopVariants": [
        {"layerId": "chaca_bombo", "section": "Final", "variantIndex": 3, "durationBars": 2,
         "notes": [{"pitch": 36, "startBeat": 1.5, "durationBeats": 0.5, "velocity": 90},
                   {"pitch": 38, "startBeat": 0.75, "durationBeats": 0.125, "velocity": 70}]}]
})";

/// Values that a careless or hostile author may put in the place of any other.
QJsonValue randomValue(QRandomGenerator& random)
{
    static const QJsonArray kValues{QJsonValue::Null,
                                    true,
                                    false,
                                    "",
                                    "Percussion",
                                    "r",
                                    QString(300, u'x'),
                                    0,
                                    -1,
                                    0.5,
                                    1e300,
                                    -1e300,
                                    kMinInt,
                                    kMaxInt,
                                    4294967296.0,
                                    QJsonArray(),
                                    QJsonArray{1, "a", QJsonValue::Null, QJsonObject()},
                                    QJsonObject(),
                                    QJsonObject{{"id", "y"}, {"notes", 3}}};
    return kValues.at(random.bounded(static_cast<int>(kValues.size())));
}

/// The same document with values here and there replaced by others.
QJsonValue mutated(const QJsonValue& value, QRandomGenerator& random)
{
    if (random.bounded(30) == 0)
        return randomValue(random);
    if (value.isArray()) {
        QJsonArray array;
        for (const QJsonValue& element : value.toArray())
            array.append(mutated(element, random));
        return array;
    }
    if (value.isObject()) {
        QJsonObject object = value.toObject();
        for (const QString& key : object.keys())
            object[key] = mutated(object[key], random);
        return object;
    }
    return value;
}

int intWithin(QRandomGenerator& random)
{
    static constexpr std::array<int, 6> kEdges{kMinInt, -1, 0, 1, 127, kMaxInt};
    return random.bounded(3) == 0 ? kEdges[static_cast<std::size_t>(random.bounded(6))]
                                  : random.bounded(-1000, 1000);
}

LoopVariant randomVariant(QRandomGenerator& random)
{
    LoopVariant variant{.layerId = QString::number(random.bounded(9)),
                        .section = static_cast<LoopSection>(random.bounded(4)),
                        .variantIndex = intWithin(random),
                        .notes = {},
                        .durationBars = intWithin(random)};
    for (int i = random.bounded(5); i > 0; --i)
        variant.notes.append({.pitch = intWithin(random),
                              .startBeat = random.generateDouble() * 1e3 - 5e2,
                              .durationBeats = random.generateDouble(),
                              .velocity = intWithin(random)});
    return variant;
}

Rhythm randomRhythm(QRandomGenerator& random)
{
    return {.id = QStringLiteral("r%1").arg(random.bounded(9)),
            .displayName = QStringLiteral("Ñandú %1").arg(random.bounded(9)),
            .styleId = QString::number(random.bounded(9)),
            .timeSignature = {.numerator = intWithin(random),
                              .denominator = intWithin(random),
                              .isCompound = random.bounded(2) == 1},
            .referenceBpm = intWithin(random),
            .bpmMin = intWithin(random),
            .bpmMax = intWithin(random),
            .grooveTemplateId = QString::number(random.bounded(9))};
}

LoopLayer randomLayer(QRandomGenerator& random)
{
    return {.id = QString::number(random.bounded(9)),
            .rhythmId = QString::number(random.bounded(9)),
            .label = QStringLiteral("Percusión %1").arg(random.bounded(9)),
            .instrumentId = QString::number(random.bounded(9)),
            .pitched = random.bounded(2) == 1};
}

} // namespace

class ContentPackageTest : public QObject {
    Q_OBJECT

private slots:
    void packageWithoutARhythmIdIsRefused_data();
    void packageWithoutARhythmIdIsRefused();
    void refusedPackageStoresNothing();
    void refusalNeedsNobodyToListen();
    void acceptedPackageLeavesTheErrorAlone();
    void rhythmIdAloneIsAPackage();
    void wholePackageIsReadFieldByField();
    void keysAreCaseSensitive();
    void unknownKeysAreDropped();

    void mistypedPartOfThePackageIsEmpty_data();
    void mistypedPartOfThePackageIsEmpty();
    void mistypedStyleMemberTakesItsDefault_data();
    void mistypedStyleMemberTakesItsDefault();
    void mistypedRhythmMemberTakesItsDefault_data();
    void mistypedRhythmMemberTakesItsDefault();
    void mistypedMeterMemberTakesItsDefault_data();
    void mistypedMeterMemberTakesItsDefault();
    void mistypedInstrumentMemberTakesItsDefault_data();
    void mistypedInstrumentMemberTakesItsDefault();
    void mistypedLayerMemberTakesItsDefault_data();
    void mistypedLayerMemberTakesItsDefault();
    void mistypedVariantMemberTakesItsDefault_data();
    void mistypedVariantMemberTakesItsDefault();
    void mistypedNoteMemberTakesItsDefault_data();
    void mistypedNoteMemberTakesItsDefault();
    void mistypedGrooveOffsetMemberIsZero_data();
    void mistypedGrooveOffsetMemberIsZero();
    void mistypedGrooveMemberIsEmpty_data();
    void mistypedGrooveMemberIsEmpty();
    void elementThatIsNoObjectGivesARecordOfDefaults_data();
    void elementThatIsNoObjectGivesARecordOfDefaults();

    void emptyTextThatIsGivenStands();
    void wholeNumberWrittenAsAFractionIsAnInteger();
    void tempoRangeFollowsTheReference_data();
    void tempoRangeFollowsTheReference();
    void sectionIsReadExactly_data();
    void sectionIsReadExactly();
    void noteWithAPitchAloneHasTheOtherDefaults();
    void numbersAreTakenWithoutACheck();
    void notesKeepTheirOrderAndRepeats();
    void referencesAreNotChecked();

    void pitchedDefault_data();
    void pitchedDefault();
    void withoutAnInstrumentListOnlyNamesTellPercussion();
    void instrumentsThatTheCallerHadCountAndComeFirst();
    void listsAreAppendedTo();
    void outputThatNobodyAsksForIsSkipped();

    void grooveIsReadInFileOrder();
    void grooveWithoutARhythmIdBelongsToNobody();

    void indexHoldsEveryFieldOfTheLibrary();
    void indexOfNothingHoldsEmptyArrays();
    void indexReadsBackAsWritten();
    void packageBeyondABoundIsRefused_data();
    void packageBeyondABoundIsRefused();
    void grooveBeyondABoundIsTold();

    void changedPackageNeverBreaksTheReader();
    void changedBytesNeverBreakTheReader();
};

// ---- The package as a whole ----------------------------------------------------------------

void ContentPackageTest::packageWithoutARhythmIdIsRefused_data()
{
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("an empty object") << QByteArray("{}");
    QTest::newRow("a rhythm without an id") << QByteArray(R"({"rhythm": {"displayName": "X"}})");
    QTest::newRow("an empty id") << QByteArray(R"({"rhythm": {"id": ""}})");
    QTest::newRow("an id that is a number") << QByteArray(R"({"rhythm": {"id": 7}})");
    QTest::newRow("an id that is null") << QByteArray(R"({"rhythm": {"id": null}})");
    QTest::newRow("an id that is a list") << QByteArray(R"({"rhythm": {"id": ["x"]}})");
    QTest::newRow("a rhythm that is a text") << QByteArray(R"({"rhythm": "x"})");
    QTest::newRow("a rhythm that is a list") << QByteArray(R"({"rhythm": [{"id": "x"}]})");
    QTest::newRow("an id in another place") << QByteArray(R"({"id": "x", "rhythm": {}})");
    QTest::newRow("a key in another case") << QByteArray(R"({"Rhythm": {"id": "x"}})");
}

void ContentPackageTest::packageWithoutARhythmIdIsRefused()
{
    QFETCH(QByteArray, text);
    const Parsed result = parsed(jsonObject(text));
    QVERIFY(!result.ok);
    QCOMPARE(result.error, "falta rhythm.id");
}

void ContentPackageTest::refusedPackageStoresNothing()
{
    Parsed expected = parsed(jsonObject(kWholePackage));
    Parsed result = expected;
    QJsonObject broken = jsonObject(kWholePackage);
    broken["rhythm"] = QJsonObject{{"displayName", "Sin id"}};
    result.ok = ContentPackage::parse(broken, &result.style, &result.rhythm, &result.instruments,
                                      &result.layers, &result.variants, &result.error);
    expected.ok = false;
    expected.error = "falta rhythm.id";
    QVERIFY(result == expected);
}

void ContentPackageTest::refusalNeedsNobodyToListen()
{
    QVERIFY(!ContentPackage::parse({}, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
}

void ContentPackageTest::acceptedPackageLeavesTheErrorAlone()
{
    QString error = "lo anterior";
    QVERIFY(ContentPackage::parse(jsonObject(kWholePackage), nullptr, nullptr, nullptr, nullptr,
                                  nullptr, &error));
    QCOMPARE(error, "lo anterior");
}

void ContentPackageTest::rhythmIdAloneIsAPackage()
{
    const Parsed result = parsed(jsonObject(R"({"rhythm": {"id": "zamba"}})"));
    QVERIFY(result.ok);
    QVERIFY(result.error.isEmpty());
    QCOMPARE(result.style, MusicalStyle());
    QCOMPARE(result.rhythm, plainRhythm("zamba"));
    QVERIFY(result.instruments.isEmpty());
    QVERIFY(result.layers.isEmpty());
    QVERIFY(result.variants.isEmpty());
}

void ContentPackageTest::wholePackageIsReadFieldByField()
{
    const Parsed result = parsed(jsonObject(kWholePackage));
    QVERIFY(result.ok);
    QCOMPARE(result.style, (MusicalStyle{.id = "folklore", .displayName = "Folklore argentino"}));
    QCOMPARE(result.rhythm,
             (Rhythm{"chacarera", "Chacarera", "folklore", {6, 8, true}, 110, 95, 125, "chaca"}));
    QCOMPARE(result.instruments,
             (QList<Instrument>{{"bombo_leguero", "Bombo legüero", InstrumentCategory::Percussion,
                                 InstrumentSource::CustomRecordedBank, 117,
                                 "instruments/bombo_leguero.sf2"},
                                {"violin_criollo", "Violín", InstrumentCategory::Strings,
                                 InstrumentSource::GeneralMidiBank, 0, ""}}));
    QCOMPARE(
        result.layers,
        (QList<LoopLayer>{{"chaca_bombo", "chacarera", "Bombo", "bombo_leguero", false},
                          {"chaca_guitarra", "chacarera", "Guitarra", "guitarra_criolla", true}}));
    QCOMPARE(result.variants, (QList<LoopVariant>{{"chaca_bombo",
                                                   LoopSection::Final,
                                                   3,
                                                   {{36, 1.5, 0.5, 90}, {38, 0.75, 0.125, 70}},
                                                   2}}));
}

void ContentPackageTest::keysAreCaseSensitive()
{
    QCOMPARE(rhythmFrom(R"({"id": "r", "ReferenceBpm": 90, "displayname": "X"})"),
             plainRhythm("r"));
    QCOMPARE(noteFrom(R"({"Pitch": 40, "startbeat": 2})"), kDefaultNote);
}

void ContentPackageTest::unknownKeysAreDropped()
{
    QJsonObject more = jsonObject(kWholePackage);
    more["version"] = 3;
    more["grooves"] = QJsonArray{1, 2};
    QVERIFY(parsed(more) == parsed(jsonObject(kWholePackage)));
}

// ---- Defaults ------------------------------------------------------------------------------

void ContentPackageTest::mistypedPartOfThePackageIsEmpty_data()
{
    addMistypedRows(R"("rhythm": {"id": "r"})", {{"instruments", JsonType::Array},
                                                 {"loopLayers", JsonType::Array},
                                                 {"loopVariants", JsonType::Array},
                                                 {"musicalStyle", JsonType::Object}});
}

void ContentPackageTest::mistypedPartOfThePackageIsEmpty()
{
    QFETCH(QByteArray, text);
    Parsed expected;
    expected.ok = true;
    expected.rhythm = plainRhythm("r");
    QVERIFY(parsed(jsonObject(text)) == expected);
}

void ContentPackageTest::mistypedStyleMemberTakesItsDefault_data()
{
    addMistypedRows(R"("id": "s")", {{"displayName", JsonType::Text}});
}

void ContentPackageTest::mistypedStyleMemberTakesItsDefault()
{
    QFETCH(QByteArray, text);
    QCOMPARE(styleFrom(text), (MusicalStyle{.id = "s", .displayName = "s"}));
}

void ContentPackageTest::mistypedRhythmMemberTakesItsDefault_data()
{
    addMistypedRows(R"("id": "r")", {{"displayName", JsonType::Text},
                                     {"styleId", JsonType::Text},
                                     {"timeSignature", JsonType::Object},
                                     {"referenceBpm", JsonType::Integer},
                                     {"bpmMin", JsonType::Integer},
                                     {"bpmMax", JsonType::Integer},
                                     {"grooveTemplateId", JsonType::Text}});
}

void ContentPackageTest::mistypedRhythmMemberTakesItsDefault()
{
    QFETCH(QByteArray, text);
    QCOMPARE(rhythmFrom(text), plainRhythm("r"));
}

void ContentPackageTest::mistypedMeterMemberTakesItsDefault_data()
{
    addMistypedRows({}, {{"numerator", JsonType::Integer},
                         {"denominator", JsonType::Integer},
                         {"isCompound", JsonType::Flag}});
}

void ContentPackageTest::mistypedMeterMemberTakesItsDefault()
{
    QFETCH(QByteArray, text);
    const Rhythm rhythm = rhythmFrom(R"({"id": "r", "timeSignature": )" + text + "}");
    QCOMPARE(rhythm.timeSignature,
             (TimeSignature{.numerator = 4, .denominator = 4, .isCompound = false}));
}

void ContentPackageTest::mistypedInstrumentMemberTakesItsDefault_data()
{
    addMistypedRows(R"("id": "i")", {{"name", JsonType::Text},
                                     {"category", JsonType::Text},
                                     {"source", JsonType::Text},
                                     {"generalMidiProgram", JsonType::Integer},
                                     {"soundfontBankPath", JsonType::Text}});
}

void ContentPackageTest::mistypedInstrumentMemberTakesItsDefault()
{
    QFETCH(QByteArray, text);
    QCOMPARE(instrumentFrom(text), (Instrument{"i", "i", InstrumentCategory::Piano,
                                               InstrumentSource::GeneralMidiBank, 0, ""}));
}

void ContentPackageTest::mistypedLayerMemberTakesItsDefault_data()
{
    addMistypedRows(R"("id": "l")", {{"rhythmId", JsonType::Text},
                                     {"label", JsonType::Text},
                                     {"instrumentId", JsonType::Text},
                                     {"pitched", JsonType::Flag}});
}

void ContentPackageTest::mistypedLayerMemberTakesItsDefault()
{
    QFETCH(QByteArray, text);
    QCOMPARE(layerFrom(text), (LoopLayer{"l", "", "l", "", true}));
}

void ContentPackageTest::mistypedVariantMemberTakesItsDefault_data()
{
    addMistypedRows({}, {{"layerId", JsonType::Text},
                         {"section", JsonType::Text},
                         {"variantIndex", JsonType::Integer},
                         {"durationBars", JsonType::Integer},
                         {"notes", JsonType::Array}});
}

void ContentPackageTest::mistypedVariantMemberTakesItsDefault()
{
    QFETCH(QByteArray, text);
    QCOMPARE(variantFrom(text), (LoopVariant{"", LoopSection::Normal, 1, {}, 1}));
}

void ContentPackageTest::mistypedNoteMemberTakesItsDefault_data()
{
    addMistypedRows({}, {{"pitch", JsonType::Integer},
                         {"startBeat", JsonType::Number},
                         {"durationBeats", JsonType::Number},
                         {"velocity", JsonType::Integer}});
}

void ContentPackageTest::mistypedNoteMemberTakesItsDefault()
{
    QFETCH(QByteArray, text);
    QCOMPARE(noteFrom(text), kDefaultNote);
}

void ContentPackageTest::mistypedGrooveOffsetMemberIsZero_data()
{
    addMistypedRows({}, {{"position", JsonType::Number},
                         {"timingOffsetBeats", JsonType::Number},
                         {"velocityOffset", JsonType::Integer}});
}

void ContentPackageTest::mistypedGrooveOffsetMemberIsZero()
{
    QFETCH(QByteArray, text);
    QCOMPARE(offsetFrom(text), (GrooveOffset{0.0, 0.0, 0}));
}

void ContentPackageTest::mistypedGrooveMemberIsEmpty_data()
{
    addMistypedRows({}, {{"rhythmId", JsonType::Text}, {"offsets", JsonType::Array}});
}

void ContentPackageTest::mistypedGrooveMemberIsEmpty()
{
    QFETCH(QByteArray, text);
    QCOMPARE(ContentPackage::parseGroove(jsonObject(text)), GrooveTemplate());
}

void ContentPackageTest::elementThatIsNoObjectGivesARecordOfDefaults_data()
{
    QTest::addColumn<QByteArray>("element");
    for (const QByteArray& element : valuesNotOfType(JsonType::Object)) {
        if (!element.startsWith('{'))
            QTest::addRow("%s", element.constData()) << element;
    }
}

void ContentPackageTest::elementThatIsNoObjectGivesARecordOfDefaults()
{
    QFETCH(QByteArray, element);
    QCOMPARE(instrumentFrom(element), (Instrument{"", "", InstrumentCategory::Piano,
                                                  InstrumentSource::GeneralMidiBank, 0, ""}));
    QCOMPARE(layerFrom(element), (LoopLayer{"", "", "", "", true}));
    QCOMPARE(variantFrom(element), (LoopVariant{"", LoopSection::Normal, 1, {}, 1}));
    QCOMPARE(noteFrom(element), kDefaultNote);
    QCOMPARE(offsetFrom(element), (GrooveOffset{0.0, 0.0, 0}));

    const Parsed three =
        parsed(packageWith(R"("instruments": [)" + element + ", " + element + R"(, {"id": "i"}])"));
    QCOMPARE(three.instruments.size(), 3);
    QCOMPARE(three.instruments.last().id, "i");
}

// ---- Values --------------------------------------------------------------------------------

void ContentPackageTest::emptyTextThatIsGivenStands()
{
    QCOMPARE(styleFrom(R"({"id": "s", "displayName": ""})").displayName, "");
    const Rhythm rhythm = rhythmFrom(R"({"id": "r", "displayName": "", "grooveTemplateId": ""})");
    QCOMPARE(rhythm.displayName, "");
    QCOMPARE(rhythm.grooveTemplateId, "");
    QCOMPARE(instrumentFrom(R"({"id": "i", "name": ""})").name, "");
    QCOMPARE(layerFrom(R"({"id": "l", "label": ""})").label, "");
}

void ContentPackageTest::wholeNumberWrittenAsAFractionIsAnInteger()
{
    QCOMPARE(rhythmFrom(R"({"id": "r", "referenceBpm": 90.0})").referenceBpm, 90);
    QCOMPARE(noteFrom(R"({"pitch": 6.4e1})").pitch, 64);
    QCOMPARE(noteFrom(R"({"startBeat": 3})").startBeat, 3.0);
}

void ContentPackageTest::tempoRangeFollowsTheReference_data()
{
    QTest::addColumn<QByteArray>("members");
    QTest::addColumn<int>("reference");
    QTest::addColumn<int>("least");
    QTest::addColumn<int>("most");

    const auto row = [](const char* name, const QByteArray& members) -> QTestData& {
        return QTest::newRow(name) << members;
    };
    row("90 alone", R"("referenceBpm": 90)") << 90 << 70 << 110;
    row("a lower bound of its own", R"("referenceBpm": 90, "bpmMin": 40)") << 90 << 40 << 110;
    row("an upper bound of its own", R"("referenceBpm": 90, "bpmMax": 91)") << 90 << 70 << 91;
    row("bounds without a reference", R"("bpmMin": 1, "bpmMax": 2)") << 120 << 1 << 2;
    row("bounds the wrong way round", R"("bpmMin": 200, "bpmMax": 10)") << 120 << 200 << 10;
    row("a mistyped reference", R"("referenceBpm": "90")") << 120 << 100 << 140;
    row("a reference of 0", R"("referenceBpm": 0)") << 0 << -20 << 20;
    row("the smallest reference is not passed", R"("referenceBpm": -2147483648)")
        << kMinInt << kMinInt << kMinInt + 20;
    row("the largest reference is not passed", R"("referenceBpm": 2147483647)")
        << kMaxInt << kMaxInt - 20 << kMaxInt;
    row("the smallest reference with bounds of its own",
        R"("referenceBpm": -2147483648, "bpmMin": 3, "bpmMax": 4)")
        << kMinInt << 3 << 4;
}

void ContentPackageTest::tempoRangeFollowsTheReference()
{
    QFETCH(QByteArray, members);
    const Rhythm rhythm = rhythmFrom(R"({"id": "r", )" + members + "}");
    QTEST(rhythm.referenceBpm, "reference");
    QTEST(rhythm.bpmMin, "least");
    QTEST(rhythm.bpmMax, "most");
}

void ContentPackageTest::sectionIsReadExactly_data()
{
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<LoopSection>("section");

    QTest::newRow("Intro") << QByteArray("Intro") << LoopSection::Intro;
    QTest::newRow("Intermedio") << QByteArray("Intermedio") << LoopSection::Intermedio;
    QTest::newRow("Normal") << QByteArray("Normal") << LoopSection::Normal;
    QTest::newRow("Final") << QByteArray("Final") << LoopSection::Final;
    QTest::newRow("intro in lower case is Normal") << QByteArray("intro") << LoopSection::Normal;
    QTest::newRow("FINAL in upper case is Normal") << QByteArray("FINAL") << LoopSection::Normal;
    QTest::newRow("a blank behind it makes it Normal")
        << QByteArray("Final ") << LoopSection::Normal;
    QTest::newRow("a number is Normal") << QByteArray("0") << LoopSection::Normal;
    QTest::newRow("nothing is Normal") << QByteArray("") << LoopSection::Normal;
}

void ContentPackageTest::sectionIsReadExactly()
{
    QFETCH(QByteArray, word);
    QTEST(variantFrom("{\"section\": \"" + word + "\"}").section, "section");
}

void ContentPackageTest::noteWithAPitchAloneHasTheOtherDefaults()
{
    QCOMPARE(noteFrom(R"({"pitch": 43})"), (NoteEvent{43, 0.0, 0.25, 100}));
}

void ContentPackageTest::numbersAreTakenWithoutACheck()
{
    QCOMPARE(noteFrom(R"({"pitch": -2147483648, "startBeat": -1e300, "durationBeats": -4.5,
                          "velocity": 2147483647})"),
             (NoteEvent{kMinInt, -1e300, -4.5, kMaxInt}));
    const LoopVariant variant = variantFrom(R"({"variantIndex": -7, "durationBars": 0})");
    QCOMPARE(variant.variantIndex, -7);
    QCOMPARE(variant.durationBars, 0);
    QCOMPARE(rhythmFrom(R"({"id": "r", "timeSignature": {"numerator": -3, "denominator": 0}})")
                 .timeSignature,
             (TimeSignature{.numerator = -3, .denominator = 0, .isCompound = false}));
    QCOMPARE(instrumentFrom(R"({"generalMidiProgram": 5000})").generalMidiProgram, 5000);
}

void ContentPackageTest::notesKeepTheirOrderAndRepeats()
{
    const LoopVariant variant = variantFrom(R"({"notes": [
        {"pitch": 60, "startBeat": 3}, {"pitch": 50, "startBeat": 1},
        {"pitch": 50, "startBeat": 1}, {"pitch": 70, "startBeat": 2}]})");
    QList<int> pitches;
    for (const NoteEvent& note : variant.notes)
        pitches.append(note.pitch);
    QCOMPARE(pitches, QList<int>({60, 50, 50, 70}));
}

void ContentPackageTest::referencesAreNotChecked()
{
    const Parsed result = parsed(packageWith(
        R"("musicalStyle": {"id": "otro"},
           "loopLayers": [{"id": "l", "rhythmId": "de otro paquete", "instrumentId": "nadie"}],
           "loopVariants": [{"layerId": "de nadie"}])"));
    QVERIFY(result.ok);
    QCOMPARE(result.layers.value(0).rhythmId, "de otro paquete");
    QCOMPARE(result.variants.value(0).layerId, "de nadie");
}

// ---- The default of "pitched" --------------------------------------------------------------

void ContentPackageTest::pitchedDefault_data()
{
    QTest::addColumn<QByteArray>("instruments");
    QTest::addColumn<QByteArray>("layer");
    QTest::addColumn<bool>("pitched");

    const QByteArray drum = R"({"id": "bombo", "category": "Percussion"})";
    const QByteArray guitar = R"({"id": "bombo", "category": "Strings"})";
    const auto row = [](const char* name, const QByteArray& instruments, const QByteArray& layer,
                        bool pitched) { QTest::newRow(name) << instruments << layer << pitched; };
    row("nothing tells percussion", "", R"("id": "l", "label": "Guitarra")", true);
    row("a percussion instrument of the package", drum,
        R"("label": "Bombo", "instrumentId": "bombo")", false);
    row("a built-in drum kit is not looked at", "",
        R"("label": "Bombo", "instrumentId": "gm_bateria")", true);
    row("a built-in drum kit with percusion in the id", "",
        R"("id": "mi_percusion", "label": "Bombo", "instrumentId": "gm_bateria")", false);
    row("an instrument id in another case", drum, R"("instrumentId": "Bombo")", true);
    row("the first instrument of an id decides for percussion", drum + "," + guitar,
        R"("instrumentId": "bombo")", false);
    row("the first instrument of an id decides against percussion", guitar + "," + drum,
        R"("instrumentId": "bombo")", true);
    row("another category goes on to the label", guitar,
        R"("label": "Percusión", "instrumentId": "bombo")", false);
    row("another category goes on to the id", guitar,
        R"("id": "percusion", "instrumentId": "bombo")", false);
    row("a label with the accent", "", R"("label": "Percusión mayor")", false);
    row("a label of just the seven letters", "", R"("label": "Percusi")", false);
    row("a label in lower case", "", R"("label": "percusión")", false);
    row("a label in upper case", "", R"("label": "PERCUSIONES")", false);
    row("a label of six letters", "", R"("label": "Percus")", true);
    row("a label with the word further in", "", R"("label": "La percusión")", true);
    row("a label with a blank before it", "", R"("label": " Percusión")", true);
    row("an id with the word inside", "", R"("id": "chaca_percusion_2", "label": "Bombo")", false);
    row("an id in upper case", "", R"("id": "LA_PERCUSION", "label": "Bombo")", false);
    row("an id with the accent", "", R"("id": "la_percusión", "label": "Bombo")", true);
    row("an id with a part of the word", "", R"("id": "la_percusi", "label": "Bombo")", true);
    row("without a label the id is the label", "", R"("id": "Percusi_x")", false);
    row("an explicit true overrides the instrument", drum,
        R"("instrumentId": "bombo", "pitched": true)", true);
    row("an explicit true overrides the label", "", R"("label": "Percusión", "pitched": true)",
        true);
    row("an explicit true overrides the id", "", R"("id": "percusion", "pitched": true)", true);
    row("an explicit false needs no reason", "", R"("label": "Guitarra", "pitched": false)", false);
    row("a mistyped flag is computed", "", R"("label": "Percusión", "pitched": 1)", false);
}

void ContentPackageTest::pitchedDefault()
{
    QFETCH(QByteArray, instruments);
    QFETCH(QByteArray, layer);
    const Parsed result = parsed(
        packageWith(R"("loopLayers": [{)" + layer + R"(}], "instruments": [)" + instruments + "]"));
    QCOMPARE(result.layers.size(), 1);
    QTEST(result.layers.first().pitched, "pitched");
}

void ContentPackageTest::withoutAnInstrumentListOnlyNamesTellPercussion()
{
    const QJsonObject package = packageWith(
        R"("instruments": [{"id": "bombo", "category": "Percussion"}],
           "loopLayers": [{"id": "a", "instrumentId": "bombo"},
                          {"id": "b", "label": "Percusión", "instrumentId": "bombo"}])");
    QList<LoopLayer> layers;
    QVERIFY(ContentPackage::parse(package, nullptr, nullptr, nullptr, &layers, nullptr, nullptr));
    QCOMPARE(layers.size(), 2);
    QVERIFY(layers[0].pitched);
    QVERIFY(!layers[1].pitched);
}

void ContentPackageTest::instrumentsThatTheCallerHadCountAndComeFirst()
{
    const QJsonObject package = packageWith(
        R"("instruments": [{"id": "caja", "category": "Percussion"}],
           "loopLayers": [{"id": "a", "instrumentId": "bombo"},
                          {"id": "b", "instrumentId": "caja"}])");
    Instrument drum;
    drum.id = "bombo";
    drum.category = InstrumentCategory::Percussion;
    Instrument notADrum;
    notADrum.id = "caja";
    notADrum.category = InstrumentCategory::Strings;

    QList<Instrument> instruments{drum, notADrum};
    QList<LoopLayer> layers;
    QVERIFY(
        ContentPackage::parse(package, nullptr, nullptr, &instruments, &layers, nullptr, nullptr));
    QVERIFY(!layers.at(0).pitched);
    QVERIFY(layers.at(1).pitched);
    QCOMPARE(instruments.size(), 3);
}

void ContentPackageTest::listsAreAppendedTo()
{
    const Parsed once = parsed(jsonObject(kWholePackage));
    Parsed twice = once;
    QVERIFY(ContentPackage::parse(jsonObject(kWholePackage), &twice.style, &twice.rhythm,
                                  &twice.instruments, &twice.layers, &twice.variants, nullptr));
    QCOMPARE(twice.style, once.style);
    QCOMPARE(twice.rhythm, once.rhythm);
    QCOMPARE(twice.instruments, once.instruments + once.instruments);
    QCOMPARE(twice.layers, once.layers + once.layers);
    QCOMPARE(twice.variants, once.variants + once.variants);
}

void ContentPackageTest::outputThatNobodyAsksForIsSkipped()
{
    const Parsed whole = parsed(jsonObject(kWholePackage));
    for (int skipped = 0; skipped < 5; ++skipped) {
        Parsed result;
        result.ok = ContentPackage::parse(
            jsonObject(kWholePackage), skipped == 0 ? nullptr : &result.style,
            skipped == 1 ? nullptr : &result.rhythm, skipped == 2 ? nullptr : &result.instruments,
            skipped == 3 ? nullptr : &result.layers, skipped == 4 ? nullptr : &result.variants,
            nullptr);
        QVERIFY(result.ok);
        QCOMPARE(result.style, skipped == 0 ? MusicalStyle() : whole.style);
        QCOMPARE(result.rhythm, skipped == 1 ? Rhythm() : whole.rhythm);
        QCOMPARE(result.instruments, skipped == 2 ? QList<Instrument>() : whole.instruments);
        QCOMPARE(result.layers, skipped == 3 ? QList<LoopLayer>() : whole.layers);
        QCOMPARE(result.variants, skipped == 4 ? QList<LoopVariant>() : whole.variants);
    }
}

// ---- Grooves -------------------------------------------------------------------------------

void ContentPackageTest::grooveIsReadInFileOrder()
{
    const GrooveTemplate groove = ContentPackage::parseGroove(jsonObject(R"({
        "rhythmId": "zamba",
        "offsets": [
            {"position": 2.5, "timingOffsetBeats": -0.03, "velocityOffset": -7},
            {"position": 0.0, "timingOffsetBeats": 0.02, "velocityOffset": 12},
            {"position": 2.5, "timingOffsetBeats": 0.5, "velocityOffset": 1}]})"));
    QCOMPARE(groove.rhythmId, "zamba");
    QCOMPARE(groove.offsets,
             (QList<GrooveOffset>{{2.5, -0.03, -7}, {0.0, 0.02, 12}, {2.5, 0.5, 1}}));
}

void ContentPackageTest::grooveWithoutARhythmIdBelongsToNobody()
{
    const GrooveTemplate groove =
        ContentPackage::parseGroove(jsonObject(R"({"offsets": [{"position": 1}]})"));
    QVERIFY(groove.rhythmId.isEmpty());
    QCOMPARE(groove.offsets.size(), 1);
}

// ---- The index -----------------------------------------------------------------------------

void ContentPackageTest::indexHoldsEveryFieldOfTheLibrary()
{
    const Parsed whole = parsed(jsonObject(kWholePackage));
    const QByteArray index =
        ContentPackage::writeManifest({whole.style}, {whole.rhythm}, whole.layers, whole.variants);
    QJsonObject expected = jsonObject(kWholePackage);
    expected["musicalStyles"] = QJsonArray{expected.take("musicalStyle")};
    expected["rhythms"] = QJsonArray{expected.take("rhythm")};
    expected.remove("instruments");
    QCOMPARE(index, QJsonDocument(expected).toJson());
}

void ContentPackageTest::indexOfNothingHoldsEmptyArrays()
{
    QCOMPARE(jsonObject(ContentPackage::writeManifest({}, {}, {}, {})),
             jsonObject(R"({"musicalStyles": [], "rhythms": [], "loopLayers": [],
                            "loopVariants": []})"));
}

void ContentPackageTest::indexReadsBackAsWritten()
{
    QRandomGenerator random(20260101);
    for (int round = 0; round < 300; ++round) {
        const MusicalStyle style{.id = QString::number(round), .displayName = "Á \"x\""};
        const Rhythm rhythm = randomRhythm(random);
        const QList<LoopLayer> layers{randomLayer(random), randomLayer(random)};
        const QList<LoopVariant> variants{randomVariant(random), randomVariant(random)};
        const QByteArray text = ContentPackage::writeManifest({style}, {rhythm}, layers, variants);

        QJsonObject package = jsonObject(text);
        QCOMPARE(text, QJsonDocument(package).toJson());
        package["rhythm"] = package["rhythms"].toArray().first();
        package["musicalStyle"] = package["musicalStyles"].toArray().first();
        const Parsed back = parsed(package);
        QCOMPARE(back.style, style);
        QCOMPARE(back.rhythm, rhythm);
        QCOMPARE(back.layers, layers);
        QCOMPARE(back.variants, variants);
    }
}

// ---- Bounds --------------------------------------------------------------------------------

void ContentPackageTest::packageBeyondABoundIsRefused_data()
{
    const auto many = [](int count, const QJsonObject& element = {}) {
        QJsonArray array;
        for (int i = 0; i < count; ++i)
            array.append(element);
        return array;
    };
    const auto text = [](int length) { return QString(length, QChar(0x00F1)); };
    const auto withNotes = [&](int count) { return QJsonObject{{"notes", many(count)}}; };
    const auto withText = [&](const char* key, int length) {
        return QJsonObject{{key, text(length)}};
    };
    QTest::addColumn<QString>("member");
    QTest::addColumn<QJsonValue>("most");
    QTest::addColumn<QJsonValue>("beyond");
    QTest::addColumn<QString>("error");
    const auto row = [](const char* name, const QString& member, const QJsonValue& most,
                        const QJsonValue& beyond, const char* error) {
        QTest::newRow(name) << member << most << beyond << error;
    };
    row("instruments", "instruments", many(64), many(65), "tiene demasiados instrumentos");
    row("layers", "loopLayers", many(32), many(33), "tiene demasiadas capas");
    row("variants", "loopVariants", many(512), many(513), "tiene demasiadas variaciones");
    row("notes of a variant", "loopVariants", many(1, withNotes(4096)), many(1, withNotes(4097)),
        "tiene demasiadas notas");
    row("notes in all", "loopVariants", many(512, withNotes(128)), many(511, withNotes(129)),
        "tiene demasiadas notas");
    const char* tooLong = "tiene un texto demasiado largo";
    row("a style's name", "musicalStyle", withText("displayName", 200),
        withText("displayName", 201), tooLong);
    row("an instrument's name", "instruments", many(1, withText("name", 200)),
        many(2, withText("name", 201)), tooLong);
    row("a layer's label", "loopLayers", many(1, withText("label", 200)),
        many(1, withText("label", 201)), tooLong);
    row("a variant's layer", "loopVariants", many(1, withText("layerId", 200)),
        many(1, withText("layerId", 201)), tooLong);
    row("the rhythm's id", "rhythm", withText("id", 200), withText("id", 201), tooLong);
}

void ContentPackageTest::packageBeyondABoundIsRefused()
{
    QFETCH(QString, member);
    QFETCH(QJsonValue, most);
    QFETCH(QJsonValue, beyond);
    QJsonObject package{{"rhythm", QJsonObject{{"id", "r"}}}};
    package[member] = most;
    QVERIFY(parsed(package).ok);
    package[member] = beyond;
    const Parsed refused = parsed(package);
    QVERIFY(!refused.ok);
    QTEST(refused.error, "error");
    QCOMPARE(refused.rhythm, Rhythm());
    QVERIFY(refused.instruments.isEmpty() && refused.layers.isEmpty() &&
            refused.variants.isEmpty());
    QVERIFY(!ContentPackage::parse(package, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
}

void ContentPackageTest::grooveBeyondABoundIsTold()
{
    const auto groove = [](int offsets, int textLength) {
        QJsonArray array;
        for (int i = 0; i < offsets; ++i)
            array.append(QJsonObject());
        return QJsonObject{{"rhythmId", QString(textLength, 'r')}, {"offsets", array}};
    };
    QVERIFY(ContentPackage::isGrooveWithinBounds(groove(256, 200)));
    QVERIFY(!ContentPackage::isGrooveWithinBounds(groove(257, 1)));
    QVERIFY(!ContentPackage::isGrooveWithinBounds(groove(0, 201)));
}

// ---- Hostile packages ----------------------------------------------------------------------

void ContentPackageTest::changedPackageNeverBreaksTheReader()
{
    QRandomGenerator random(7);
    const QJsonObject whole = jsonObject(kWholePackage);
    int refused = 0;
    for (int round = 0; round < 20000; ++round) {
        const QJsonObject json = mutated(whole, random).toObject();
        const Parsed result = parsed(json);
        const QJsonValue id = json["rhythm"].toObject()["id"];
        QCOMPARE(result.error == "falta rhythm.id", id.toString().isEmpty());
        QCOMPARE(result.error.isEmpty(), result.ok);
        if (!result.ok) {
            ++refused;
            continue;
        }
        QCOMPARE(result.instruments.size(), json["instruments"].toArray().size());
        QCOMPARE(result.layers.size(), json["loopLayers"].toArray().size());
        QCOMPARE(result.variants.size(), json["loopVariants"].toArray().size());
        for (const Instrument& instrument : result.instruments)
            QCOMPARE(instrumentCategoryFromString(instrumentCategoryToString(instrument.category)),
                     instrument.category);
    }
    QVERIFY(refused > 100 && refused < 10000);
}

void ContentPackageTest::changedBytesNeverBreakTheReader()
{
    QRandomGenerator random(8);
    int objects = 0;
    for (int round = 0; round < 20000; ++round) {
        QByteArray bytes = kWholePackage;
        for (int change = random.bounded(1, 4); change > 0; --change) {
            const int at = random.bounded(static_cast<int>(bytes.size()));
            if (random.bounded(4) == 0)
                bytes.remove(at, random.bounded(40));
            else
                bytes[at] = static_cast<char>(random.bounded(256));
            if (bytes.isEmpty())
                break;
        }
        const QJsonDocument document = QJsonDocument::fromJson(bytes);
        if (!document.isObject())
            continue;
        ++objects;
        const Parsed result = parsed(document.object());
        QCOMPARE(result.error.isEmpty(), result.ok);
        ContentPackage::parseGroove(document.object());
    }
    QVERIFY(objects > 1000);
}

VELTA_GUILESS_TEST(ContentPackageTest)

} // namespace ContentPackageTests

#include "ContentPackageTest.moc"
