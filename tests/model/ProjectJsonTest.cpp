#include "model/Project.h"
#include "support/Exact.h"
#include "support/JsonEdit.h"
#include "support/ProjectBuilder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

#include <limits>
#include <memory>

using namespace JsonEdit;
using ProjectBuilder::firstDifference;
using ProjectBuilder::Generator;
using ProjectBuilder::Numbers;

namespace {

/// A project in which no field has its default.
const char* const kFullText = R"({
    "app": "velta",
    "audioTracks": [
        {
            "clips": [
                {
                    "audioFilePath": "voz-1.wav",
                    "durationBeats": 12.5,
                    "fadeInSeconds": 0.25,
                    "fadeOutSeconds": 0.10000000149011612,
                    "gain": 1.5,
                    "offsetBeats": 8,
                    "tune": {
                        "enabled": true,
                        "intensity": 0.75
                    }
                }
            ],
            "muted": true,
            "name": "Voz",
            "solo": true,
            "volume": 0.5
        }
    ],
    "bpm": 96,
    "collapsedGroups": [
        "voz",
        "acompañamiento"
    ],
    "formatVersion": 1,
    "harmonyTrack": {
        "blocks": [
            {
                "barIndex": 2,
                "events": [
                    {
                        "degree": 5,
                        "durationBeats": 1.5,
                        "extension": "Seventh",
                        "startBeat": 0.5
                    },
                    {
                        "degree": 6,
                        "durationBeats": 0.1,
                        "extension": "Ninth",
                        "startBeat": 2
                    }
                ]
            }
        ],
        "muted": true,
        "volume": 0.25
    },
    "keySignature": {
        "mode": "Dorian",
        "rootPitchClass": 2
    },
    "name": "Zamba \"nueva\"",
    "timeSignature": {
        "denominator": 8,
        "isCompound": true,
        "numerator": 6
    },
    "tracks": [
        {
            "humanize": {
                "enabled": false,
                "intensity": 0.8999999761581421,
                "seed": 4294967295
            },
            "instrumentId": "quena",
            "isAccompaniment": true,
            "layerId": "bombo",
            "loopBlocks": [
                {
                    "durationBeats": 6,
                    "layerId": "bombo",
                    "rhythmId": "zamba",
                    "section": "Intro",
                    "startBeat": 3,
                    "variantIndex": 2
                }
            ],
            "melodyBlocks": [
                {
                    "durationBeats": 3,
                    "notes": [
                        {
                            "durationBeats": 0.3333333333333333,
                            "pitch": 72,
                            "startBeat": 1.5,
                            "velocity": 90
                        }
                    ],
                    "startBeat": 6
                }
            ],
            "muted": true,
            "name": "Melodía",
            "solo": true,
            "volume": 0.30000001192092896
        }
    ]
}
)";

const char* const kDefaultText = R"({
    "app": "velta",
    "audioTracks": [
    ],
    "bpm": 120,
    "collapsedGroups": [
    ],
    "formatVersion": 1,
    "harmonyTrack": {
        "blocks": [
        ],
        "muted": false,
        "volume": 0.699999988079071
    },
    "keySignature": {
        "mode": "Major",
        "rootPitchClass": 0
    },
    "name": "",
    "timeSignature": {
        "denominator": 4,
        "isCompound": false,
        "numerator": 4
    },
    "tracks": [
    ]
}
)";

/// The project of kFullText, field by field.
std::unique_ptr<Project> fullProject()
{
    auto project = std::make_unique<Project>();
    project->name = "Zamba \"nueva\"";
    project->bpm = 96;
    project->timeSignature = {.numerator = 6, .denominator = 8, .isCompound = true};
    project->keySignature = {.rootPitchClass = 2, .mode = KeyMode::Dorian};
    project->tracks = {
        {.name = "Melodía",
         .instrumentId = "quena",
         .volume = 0.3F,
         .muted = true,
         .solo = true,
         .isAccompaniment = true,
         .layerId = "bombo",
         .humanize = {.enabled = false, .intensity = 0.9F, .seed = 4294967295U},
         .melodyBlocks = {ProjectBuilder::melody({ProjectBuilder::note(72, 1.5, 1.0 / 3.0, 90)},
                                                 6.0, 3.0)},
         .loopBlocks = {ProjectBuilder::loop("zamba", "bombo", 3.0, 6.0, LoopSection::Intro, 2)}}};
    project->audioTracks = {{.name = "Voz",
                             .volume = 0.5F,
                             .muted = true,
                             .solo = true,
                             .clips = {{.audioFilePath = "voz-1.wav",
                                        .offsetBeats = 8.0,
                                        .durationBeats = 12.5,
                                        .gain = 1.5F,
                                        .fadeInSeconds = 0.25F,
                                        .fadeOutSeconds = 0.1F,
                                        .tune = {.enabled = true, .intensity = 0.75F}}}}};
    project->harmonyTrack = {
        .muted = true,
        .volume = 0.25F,
        .blocks = {{.barIndex = 2,
                    .events = {ProjectBuilder::chord(5, 0.5, 1.5, ChordExtension::Seventh),
                               ProjectBuilder::chord(6, 2.0, 0.1, ChordExtension::Ninth)}}}};
    project->collapsedGroups = QStringList{"voz", "acompañamiento"};
    return project;
}

QByteArray textOf(const Project& project)
{
    return QJsonDocument(project.toJson()).toJson(QJsonDocument::Indented);
}

std::unique_ptr<Project> loaded(const QJsonObject& json)
{
    return std::unique_ptr<Project>(Project::fromJson(json, nullptr));
}

std::unique_ptr<Project> loaded(const QByteArray& text)
{
    return loaded(parsed(text));
}

QJsonObject defaultHumanize()
{
    return {{"enabled", true}, {"intensity", 0.4000000059604645}, {"seed", 1}};
}

QJsonObject defaultTune()
{
    return {{"enabled", false}, {"intensity", 0.5}};
}

QJsonObject defaultTrack()
{
    return {{"humanize", defaultHumanize()},
            {"instrumentId", ""},
            {"isAccompaniment", false},
            {"layerId", ""},
            {"loopBlocks", QJsonArray()},
            {"melodyBlocks", QJsonArray()},
            {"muted", false},
            {"name", ""},
            {"solo", false},
            {"volume", 0.800000011920929}};
}

QJsonObject defaultMelodyBlock()
{
    return {{"durationBeats", 4}, {"notes", QJsonArray()}, {"startBeat", 0}};
}

QJsonObject defaultNote()
{
    return {{"durationBeats", 1}, {"pitch", 60}, {"startBeat", 0}, {"velocity", 100}};
}

QJsonObject defaultLoopBlock()
{
    return {{"durationBeats", 0},  {"layerId", ""},  {"rhythmId", ""},
            {"section", "Normal"}, {"startBeat", 0}, {"variantIndex", 1}};
}

QJsonObject defaultAudioTrack()
{
    return {{"clips", QJsonArray()},
            {"muted", false},
            {"name", ""},
            {"solo", false},
            {"volume", 0.800000011920929}};
}

QJsonObject defaultClip()
{
    return {{"audioFilePath", ""},  {"durationBeats", 0}, {"fadeInSeconds", 0},
            {"fadeOutSeconds", 0},  {"gain", 1},          {"offsetBeats", 0},
            {"tune", defaultTune()}};
}

QJsonObject defaultHarmonyTrack()
{
    return {{"blocks", QJsonArray()}, {"muted", false}, {"volume", 0.699999988079071}};
}

QJsonObject defaultChord()
{
    return {{"degree", 1}, {"durationBeats", 1}, {"extension", "Triad"}, {"startBeat", 0}};
}

enum class Kind { Integer, WideInteger, Number, Flag, Text, Word, Record, List };

struct Key {
    const char* path;
    Kind kind;
    QJsonValue fallback;
};

/// Every key of the file that is read, as its place in kFullText and the value that is saved
/// after a load without it.
QList<Key> everyKey()
{
    using enum Kind;
    const QJsonArray none;
    const QJsonObject meter{{"denominator", 4}, {"isCompound", false}, {"numerator", 4}};
    const QJsonObject key{{"mode", "Major"}, {"rootPitchClass", 0}};
    return {
        {"name", Text, ""},
        {"bpm", Integer, 120},
        {"timeSignature", Record, meter},
        {"timeSignature/numerator", Integer, 4},
        {"timeSignature/denominator", Integer, 4},
        {"timeSignature/isCompound", Flag, false},
        {"keySignature", Record, key},
        {"keySignature/rootPitchClass", Integer, 0},
        {"keySignature/mode", Word, "Major"},
        {"tracks", List, none},
        {"tracks/0/name", Text, ""},
        {"tracks/0/instrumentId", Text, ""},
        {"tracks/0/volume", Number, 0.800000011920929},
        {"tracks/0/muted", Flag, false},
        {"tracks/0/solo", Flag, false},
        {"tracks/0/isAccompaniment", Flag, false},
        {"tracks/0/layerId", Text, ""},
        {"tracks/0/humanize", Record, defaultHumanize()},
        {"tracks/0/humanize/enabled", Flag, true},
        {"tracks/0/humanize/intensity", Number, 0.4000000059604645},
        {"tracks/0/humanize/seed", WideInteger, 1},
        {"tracks/0/melodyBlocks", List, none},
        {"tracks/0/melodyBlocks/0/startBeat", Number, 0},
        {"tracks/0/melodyBlocks/0/durationBeats", Number, 4},
        {"tracks/0/melodyBlocks/0/notes", List, none},
        {"tracks/0/melodyBlocks/0/notes/0/pitch", Integer, 60},
        {"tracks/0/melodyBlocks/0/notes/0/startBeat", Number, 0},
        {"tracks/0/melodyBlocks/0/notes/0/durationBeats", Number, 1},
        {"tracks/0/melodyBlocks/0/notes/0/velocity", Integer, 100},
        {"tracks/0/loopBlocks", List, none},
        {"tracks/0/loopBlocks/0/startBeat", Number, 0},
        {"tracks/0/loopBlocks/0/durationBeats", Number, 0},
        {"tracks/0/loopBlocks/0/rhythmId", Text, ""},
        {"tracks/0/loopBlocks/0/layerId", Text, ""},
        {"tracks/0/loopBlocks/0/section", Word, "Normal"},
        {"tracks/0/loopBlocks/0/variantIndex", Integer, 1},
        {"audioTracks", List, none},
        {"audioTracks/0/name", Text, ""},
        {"audioTracks/0/volume", Number, 0.800000011920929},
        {"audioTracks/0/muted", Flag, false},
        {"audioTracks/0/solo", Flag, false},
        {"audioTracks/0/clips", List, none},
        {"audioTracks/0/clips/0/audioFilePath", Text, ""},
        {"audioTracks/0/clips/0/offsetBeats", Number, 0},
        {"audioTracks/0/clips/0/durationBeats", Number, 0},
        {"audioTracks/0/clips/0/gain", Number, 1},
        {"audioTracks/0/clips/0/fadeInSeconds", Number, 0},
        {"audioTracks/0/clips/0/fadeOutSeconds", Number, 0},
        {"audioTracks/0/clips/0/tune", Record, defaultTune()},
        {"audioTracks/0/clips/0/tune/enabled", Flag, false},
        {"audioTracks/0/clips/0/tune/intensity", Number, 0.5},
        {"harmonyTrack", Record, defaultHarmonyTrack()},
        {"harmonyTrack/muted", Flag, false},
        {"harmonyTrack/volume", Number, 0.699999988079071},
        {"harmonyTrack/blocks", List, none},
        {"harmonyTrack/blocks/0/barIndex", Integer, 0},
        {"harmonyTrack/blocks/0/events", List, none},
        {"harmonyTrack/blocks/0/events/0/degree", Integer, 1},
        {"harmonyTrack/blocks/0/events/0/extension", Word, "Triad"},
        {"harmonyTrack/blocks/0/events/0/startBeat", Number, 0},
        {"harmonyTrack/blocks/0/events/0/durationBeats", Number, 1},
        {"collapsedGroups", List, none},
    };
}

/// Values that a key of this kind does not take.
QList<QJsonValue> mistypedFor(Kind kind)
{
    const QList<QJsonValue> fractions{61.5, -0.5, 1e300, -1e300, "7"};
    switch (kind) {
    case Kind::Integer:
        return fractions + QList<QJsonValue>{QJsonValue(),
                                             true,
                                             QJsonArray{7},
                                             QJsonObject(),
                                             2147483648.0,
                                             -2147483649.0,
                                             std::numeric_limits<qint64>::max()};
    case Kind::WideInteger:
        return fractions +
               QList<QJsonValue>{QJsonValue(), true, QJsonArray{7}, QJsonObject(), 1.0e19};
    case Kind::Number:
        return {QJsonValue(), true, "0.5", "", QJsonArray{0.5}, QJsonObject()};
    case Kind::Flag:
        return {QJsonValue(), 0, 1, "true", "false", QJsonArray{true}, QJsonObject()};
    case Kind::Text:
        return {QJsonValue(), true, 7, QJsonArray{"x"}, QJsonObject{{"x", "x"}}};
    case Kind::Word:
        return {QJsonValue(),
                true,
                0,
                1,
                3,
                "",
                "minor",
                "MAJOR",
                "7",
                "Final ",
                " Minor",
                "Eleventh",
                QJsonArray{"Minor"}};
    case Kind::Record:
        return {QJsonValue(), true, 5, "x", QJsonArray{QJsonObject()}, QJsonObject()};
    case Kind::List:
        return {QJsonValue(), true, 5, "x", QJsonObject{{"0", QJsonObject()}}, QJsonArray()};
    }
    return {};
}

QStringList stepsOf(const QString& path)
{
    return path.split('/');
}

} // namespace

class ProjectJsonTest : public QObject {
    Q_OBJECT

private slots:
    void defaultProjectText();
    void fullProjectText();
    void fullProjectReadsBack();
    void emptyObjectIsADefaultProject();
    void missingOrMistypedKey_data();
    void missingOrMistypedKey();
    void elementThatIsNoObject_data();
    void elementThatIsNoObject();
    void groupThatIsNoStringIsEmpty();
    void integerWithoutAFractionIsTaken();
    void outOfRangeValuesAreTakenAsTheyStand();
    void seed_data();
    void seed();
    void modeText_data();
    void modeText();
    void sectionText_data();
    void sectionText();
    void extensionText_data();
    void extensionText();
    void versionAndAppAreNotRead_data();
    void versionAndAppAreNotRead();
    void unknownKeysAreDropped();
    void storedOrderIsKept();
    void floatReadsBackToTheLastBit();
    void secondLoadLeavesNothingOfTheFirst();
    void loadingAndSavingSignalNothing();
    void newProjectHasTheGivenParent();
    void savedProjectReadsBack_data();
    void savedProjectReadsBack();
    void everyProjectHasTheSameKeys();
    void hostileProjectSettlesAfterOneSave();
    void replacedValuesAreSurvived_data();
    void replacedValuesAreSurvived();
    void brokenTextIsSurvived();
    void deepNestingIsDropped();
    void hugeListsAreRead();
};

void ProjectJsonTest::defaultProjectText()
{
    QCOMPARE(textOf(Project()), QByteArray(kDefaultText));
}

void ProjectJsonTest::fullProjectText()
{
    QCOMPARE(textOf(*fullProject()), QByteArray(kFullText));
}

void ProjectJsonTest::fullProjectReadsBack()
{
    QCOMPARE(firstDifference(*loaded(kFullText), *fullProject()), QString());
}

void ProjectJsonTest::emptyObjectIsADefaultProject()
{
    const auto project = loaded(QJsonObject());
    QVERIFY(project->name.isEmpty());
    QCOMPARE(project->bpm, 120);
    QVERIFY(project->timeSignature == TimeSignature({4, 4, false}));
    QVERIFY(project->keySignature == KeySignature({0, KeyMode::Major}));
    QVERIFY(project->tracks.isEmpty());
    QVERIFY(project->audioTracks.isEmpty());
    QVERIFY(!project->harmonyTrack.muted);
    QCOMPARE(exact(static_cast<double>(project->harmonyTrack.volume)), exact(0.699999988079071));
    QVERIFY(project->harmonyTrack.blocks.isEmpty());
    QVERIFY(project->collapsedGroups.isEmpty());
}

void ProjectJsonTest::missingOrMistypedKey_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QJsonValue>("fallback");

    for (const Key& key : everyKey())
        QTest::newRow(key.path) << QString(key.path) << static_cast<int>(key.kind) << key.fallback;
}

void ProjectJsonTest::missingOrMistypedKey()
{
    QFETCH(QString, path);
    QFETCH(int, kind);
    QFETCH(QJsonValue, fallback);
    const QJsonObject full = parsed(kFullText);
    const QJsonValue expected = withValue(full, stepsOf(path), fallback);
    QVERIFY2(expected != QJsonValue(full), "the full project does not have the default here");

    QList<QJsonValue> unfit = mistypedFor(static_cast<Kind>(kind));
    unfit.prepend(QJsonValue::Undefined);
    for (const QJsonValue& value : unfit) {
        const QJsonObject hurt = withValue(full, stepsOf(path), value).toObject();
        QVERIFY(hurt != full);
        QCOMPARE(QJsonValue(loaded(hurt)->toJson()), expected);
    }
}

void ProjectJsonTest::elementThatIsNoObject_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QJsonObject>("fallback");

    QTest::newRow("in tracks") << "tracks" << defaultTrack();
    QTest::newRow("in melodyBlocks") << "tracks/0/melodyBlocks" << defaultMelodyBlock();
    QTest::newRow("in notes") << "tracks/0/melodyBlocks/0/notes" << defaultNote();
    QTest::newRow("in loopBlocks") << "tracks/0/loopBlocks" << defaultLoopBlock();
    QTest::newRow("in audioTracks") << "audioTracks" << defaultAudioTrack();
    QTest::newRow("in clips") << "audioTracks/0/clips" << defaultClip();
    QTest::newRow("in blocks") << "harmonyTrack/blocks"
                               << QJsonObject{{"barIndex", 0}, {"events", QJsonArray()}};
    QTest::newRow("in events") << "harmonyTrack/blocks/0/events" << defaultChord();
}

void ProjectJsonTest::elementThatIsNoObject()
{
    QFETCH(QString, path);
    QFETCH(QJsonObject, fallback);
    const QJsonArray odd{7, "x", QJsonValue(), QJsonArray{QJsonObject{{"name", "x"}}},
                         QJsonObject()};
    const QJsonValue json = withValue(parsed(kFullText), stepsOf(path), odd);
    const QJsonArray saved = valueAt(loaded(json.toObject())->toJson(), stepsOf(path)).toArray();
    QCOMPARE(saved.size(), odd.size());
    for (const QJsonValue& element : saved)
        QCOMPARE(element.toObject(), fallback);
}

void ProjectJsonTest::groupThatIsNoStringIsEmpty()
{
    const QJsonArray groups{"voz", 7, QJsonValue(), QJsonObject(), "voz"};
    QCOMPARE(loaded(QJsonObject{{"collapsedGroups", groups}})->collapsedGroups,
             (QStringList{"voz", "", "", "", "voz"}));
}

void ProjectJsonTest::integerWithoutAFractionIsTaken()
{
    QCOMPARE(loaded(QByteArray(R"({"bpm": 96.0})"))->bpm, 96);
    QCOMPARE(loaded(QByteArray(R"({"bpm": 1.2e2})"))->bpm, 120);
    QCOMPARE(loaded(QByteArray(R"({"bpm": 90.5})"))->bpm, 120);
    QCOMPARE(loaded(QByteArray(R"({"bpm": 2147483647})"))->bpm, 2147483647);
    QCOMPARE(loaded(QByteArray(R"({"bpm": -2147483648})"))->bpm, -2147483647 - 1);
}

void ProjectJsonTest::outOfRangeValuesAreTakenAsTheyStand()
{
    const auto project = loaded(QByteArray(R"({
        "bpm": -5, "timeSignature": {"numerator": 0, "denominator": -3},
        "keySignature": {"rootPitchClass": 99},
        "tracks": [{"volume": -2.5, "humanize": {"intensity": 40},
                    "melodyBlocks": [{"startBeat": -1e300, "notes": [{"pitch": 200, "velocity": -1}]}],
                    "loopBlocks": [{"startBeat": -8, "variantIndex": 0}]}],
        "harmonyTrack": {"blocks": [{"barIndex": -2147483648, "events": [{"degree": 9}]}]}})"));
    QCOMPARE(project->bpm, -5);
    QVERIFY(project->timeSignature == TimeSignature({0, -3, false}));
    QCOMPARE(project->keySignature.rootPitchClass, 99);
    const Track& track = project->tracks.first();
    QCOMPARE(track.volume, -2.5F);
    QCOMPARE(track.humanize.intensity, 40.0F);
    QCOMPARE(exact(track.melodyBlocks[0].startBeat), exact(-1e300));
    QVERIFY(track.melodyBlocks[0].notes[0] == ProjectBuilder::note(200, 0.0, 1.0, -1));
    QVERIFY(track.loopBlocks[0] == ProjectBuilder::loop("", "", -8.0, 0.0, LoopSection::Normal, 0));
    QCOMPARE(project->harmonyTrack.blocks[0].barIndex, std::numeric_limits<qint32>::min());
    QCOMPARE(project->harmonyTrack.blocks[0].events[0].degree, 9);
}

void ProjectJsonTest::seed_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<quint32>("expected");

    QTest::newRow("the largest seed") << QByteArray("4294967295") << 4294967295U;
    QTest::newRow("zero") << QByteArray("0") << 0U;
    QTest::newRow("beyond 31 bits") << QByteArray("2147483648") << 2147483648U;
    QTest::newRow("one too many is cut to zero") << QByteArray("4294967296") << 0U;
    QTest::newRow("2 to the 53 and 7 is cut to 7") << QByteArray("9007199254740999") << 7U;
    QTest::newRow("2 to the 63 less 1 is cut") << QByteArray("9223372036854775807") << 4294967295U;
    QTest::newRow("-1 is cut") << QByteArray("-1") << 4294967295U;
    QTest::newRow("a fraction is the default") << QByteArray("5.5") << 1U;
    QTest::newRow("a number beyond 64 bits is the default") << QByteArray("1e20") << 1U;
    QTest::newRow("a text is the default") << QByteArray("\"5\"") << 1U;
}

void ProjectJsonTest::seed()
{
    QFETCH(QByteArray, written);
    QFETCH(quint32, expected);
    const auto project = loaded(R"({"tracks": [{"humanize": {"seed": )" + written + "}}]}");
    QCOMPARE(project->tracks[0].humanize.seed, expected);
    const QByteArray saved = textOf(*project);
    QVERIFY(saved.contains("\"seed\": " + QByteArray::number(expected) + "\n"));
    QCOMPARE(loaded(saved)->tracks[0].humanize.seed, expected);
}

void ProjectJsonTest::modeText_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("readsBack");

    QTest::newRow("0") << 0 << "Major" << true;
    QTest::newRow("1") << 1 << "Minor" << true;
    QTest::newRow("2") << 2 << "Dorian" << true;
    QTest::newRow("3") << 3 << "Lydian" << true;
    QTest::newRow("4 is written as Major") << 4 << "Major" << false;
    QTest::newRow("-1 is written as Major") << -1 << "Major" << false;
    QTest::newRow("the least integer is written as Major")
        << std::numeric_limits<int>::min() << "Major" << false;
}

void ProjectJsonTest::modeText()
{
    QFETCH(int, number);
    QFETCH(QString, text);
    QFETCH(bool, readsBack);
    Project project;
    project.keySignature.mode = static_cast<KeyMode>(number);
    const QJsonObject json = project.toJson();
    QCOMPARE(valueAt(json, {"keySignature", "mode"}), QJsonValue(text));
    QCOMPARE(static_cast<int>(loaded(json)->keySignature.mode), readsBack ? number : 0);
}

void ProjectJsonTest::sectionText_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("readsBack");

    QTest::newRow("0") << 0 << "Intro" << true;
    QTest::newRow("1") << 1 << "Intermedio" << true;
    QTest::newRow("2") << 2 << "Normal" << true;
    QTest::newRow("3") << 3 << "Final" << true;
    QTest::newRow("4 is written as Normal") << 4 << "Normal" << false;
    QTest::newRow("-1 is written as Normal") << -1 << "Normal" << false;
    QTest::newRow("the largest integer is written as Normal")
        << std::numeric_limits<int>::max() << "Normal" << false;
}

void ProjectJsonTest::sectionText()
{
    QFETCH(int, number);
    QFETCH(QString, text);
    QFETCH(bool, readsBack);
    const auto project = ProjectBuilder::project({ProjectBuilder::loopTrack(
        {ProjectBuilder::loop("zamba", "bombo", 0, 4, static_cast<LoopSection>(number))})});
    const QJsonObject json = project->toJson();
    QCOMPARE(valueAt(json, {"tracks", "0", "loopBlocks", "0", "section"}), QJsonValue(text));
    QCOMPARE(static_cast<int>(loaded(json)->tracks[0].loopBlocks[0].section),
             readsBack ? number : 2);
}

void ProjectJsonTest::extensionText_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("readsBack");

    QTest::newRow("0") << 0 << "Triad" << true;
    QTest::newRow("1") << 1 << "Seventh" << true;
    QTest::newRow("2") << 2 << "Ninth" << true;
    QTest::newRow("3 is written as Triad") << 3 << "Triad" << false;
    QTest::newRow("-1 is written as Triad") << -1 << "Triad" << false;
}

void ProjectJsonTest::extensionText()
{
    QFETCH(int, number);
    QFETCH(QString, text);
    QFETCH(bool, readsBack);
    Project project;
    project.harmonyTrack.insertEvent(0, 4, 5, static_cast<ChordExtension>(number), 4);
    const QJsonObject json = project.toJson();
    QCOMPARE(valueAt(json, stepsOf("harmonyTrack/blocks/0/events/0/extension")), QJsonValue(text));
    QCOMPARE(static_cast<int>(loaded(json)->harmonyTrack.blocks[0].events[0].extension),
             readsBack ? number : 0);
}

void ProjectJsonTest::versionAndAppAreNotRead_data()
{
    QTest::addColumn<QJsonValue>("version");
    QTest::addColumn<QJsonValue>("app");

    QTest::newRow("a later version") << QJsonValue(99) << QJsonValue("velta");
    QTest::newRow("a version that is no number") << QJsonValue("dos") << QJsonValue("velta");
    QTest::newRow("another app") << QJsonValue(1) << QJsonValue("otra");
    QTest::newRow("neither") << QJsonValue(QJsonValue::Undefined)
                             << QJsonValue(QJsonValue::Undefined);
}

void ProjectJsonTest::versionAndAppAreNotRead()
{
    QFETCH(QJsonValue, version);
    QFETCH(QJsonValue, app);
    QJsonObject json = parsed(kFullText);
    json["formatVersion"] = version;
    json["app"] = app;
    QCOMPARE(textOf(*loaded(json)), QByteArray(kFullText));
}

void ProjectJsonTest::unknownKeysAreDropped()
{
    QJsonValue json = parsed(kFullText);
    for (const char* path : {"nuevo", "timeSignature/nuevo", "keySignature/nuevo", "tracks/0/nuevo",
                             "tracks/0/humanize/nuevo", "tracks/0/melodyBlocks/0/nuevo",
                             "tracks/0/melodyBlocks/0/notes/0/nuevo", "tracks/0/loopBlocks/0/nuevo",
                             "audioTracks/0/nuevo", "audioTracks/0/clips/0/nuevo",
                             "audioTracks/0/clips/0/tune/nuevo", "harmonyTrack/nuevo",
                             "harmonyTrack/blocks/0/nuevo", "harmonyTrack/blocks/0/events/0/nuevo"})
        json = withValue(json, stepsOf(path), QJsonArray{1, 2, 3});
    QVERIFY(QJsonDocument(json.toObject()).toJson() != kFullText);
    QCOMPARE(textOf(*loaded(json.toObject())), QByteArray(kFullText));
}

void ProjectJsonTest::storedOrderIsKept()
{
    const auto project = loaded(QByteArray(R"({
        "tracks": [{"isAccompaniment": true}, {"melodyBlocks": [
            {"startBeat": 8}, {"startBeat": 0, "notes": [
                {"startBeat": 2}, {"startBeat": 1, "pitch": 90}, {"startBeat": 1, "pitch": 40},
                {"startBeat": 1, "pitch": 40}]}]}],
        "harmonyTrack": {"blocks": [{"barIndex": 3}, {"barIndex": 1}, {"barIndex": 3}]}})"));
    QVERIFY(project->tracks[0].isAccompaniment);
    const QList<MelodyBlock>& blocks = project->tracks[1].melodyBlocks;
    QCOMPARE(exact(blocks[0].startBeat), exact(8.0));
    QVERIFY(blocks[1].notes == (QList{ProjectBuilder::note(60, 2), ProjectBuilder::note(90, 1),
                                      ProjectBuilder::note(40, 1), ProjectBuilder::note(40, 1)}));
    QCOMPARE(project->harmonyTrack.blocks.size(), 3);
    QCOMPARE(project->harmonyTrack.blocks[1].barIndex, 1);
    QCOMPARE(project->harmonyTrack.blocks[2].barIndex, 3);
}

void ProjectJsonTest::floatReadsBackToTheLastBit()
{
    QRandomGenerator random(5);
    Project project;
    project.tracks.resize(1);
    for (int i = 0; i < 3000; ++i) {
        const float volume = static_cast<float>(random.generate()) / 4294967296.0F;
        project.tracks[0].volume = volume;
        const QJsonObject json = project.toJson();
        QCOMPARE(exact(valueAt(json, {"tracks", "0", "volume"}).toDouble()),
                 exact(static_cast<double>(volume)));
        QVERIFY(loaded(QJsonDocument(json).toJson())->tracks[0].volume == volume);
    }
}

void ProjectJsonTest::secondLoadLeavesNothingOfTheFirst()
{
    Project project;
    project.loadJson(parsed(kFullText));
    QCOMPARE(textOf(project), QByteArray(kFullText));
    project.loadJson({});
    QCOMPARE(textOf(project), QByteArray(kDefaultText));

    for (quint32 seed = 0; seed < 300; ++seed) {
        const auto other = Generator(seed).project();
        project.loadJson(other->toJson());
        QCOMPARE(firstDifference(project, *other), QString());
    }
}

void ProjectJsonTest::loadingAndSavingSignalNothing()
{
    Project project;
    const QSignalSpy changed(&project, &Project::changed);
    const QSignalSpy renamed(&project, &QObject::objectNameChanged);
    project.loadJson(parsed(kFullText));
    project.loadJson({});
    project.toJson();
    QCOMPARE(changed.count(), 0);
    QCOMPARE(renamed.count(), 0);
}

void ProjectJsonTest::newProjectHasTheGivenParent()
{
    QObject parent;
    const Project* project = Project::fromJson(parsed(kFullText), &parent);
    QCOMPARE(project->parent(), &parent);
    QCOMPARE(firstDifference(*project, *fullProject()), QString());
    const std::unique_ptr<Project> orphan(Project::fromJson({}, nullptr));
    QVERIFY(orphan);
    QCOMPARE(orphan->parent(), nullptr);
}

void ProjectJsonTest::savedProjectReadsBack_data()
{
    QTest::addColumn<int>("numbers");
    QTest::addColumn<int>("rounds");

    QTest::newRow("with what pupils make") << static_cast<int>(Numbers::Musical) << 1500;
    QTest::newRow("with any finite numbers") << static_cast<int>(Numbers::AnyFinite) << 1500;
}

void ProjectJsonTest::savedProjectReadsBack()
{
    QFETCH(int, numbers);
    QFETCH(int, rounds);
    Generator generator(2024, static_cast<Numbers>(numbers));
    for (int round = 0; round < rounds; ++round) {
        const auto project = generator.project(3);
        const QJsonObject json = project->toJson();
        const auto copy = loaded(json);
        QCOMPARE(firstDifference(*copy, *project), QString());
        QVERIFY(copy->toJson() == json);
        QCOMPARE(firstDifference(*loaded(textOf(*project)), *project), QString());
    }
}

void ProjectJsonTest::everyProjectHasTheSameKeys()
{
    const QStringList root = parsed(kDefaultText).keys();
    Generator generator(31);
    for (int round = 0; round < 300; ++round) {
        const QJsonObject json = generator.project(2)->toJson();
        QCOMPARE(json.keys(), root);
        for (const QJsonValue& track : json["tracks"].toArray())
            QCOMPARE(track.toObject().keys(), defaultTrack().keys());
        for (const QJsonValue& track : json["audioTracks"].toArray())
            QCOMPARE(track.toObject().keys(), defaultAudioTrack().keys());
        QCOMPARE(json["harmonyTrack"].toObject().keys(), defaultHarmonyTrack().keys());
    }
}

void ProjectJsonTest::hostileProjectSettlesAfterOneSave()
{
    Generator generator(77, Numbers::Hostile);
    for (int round = 0; round < 1500; ++round) {
        // Numbers that JSON does not have are saved as null and come back as defaults.
        const auto project = generator.project(3);
        const auto once = loaded(textOf(*project));
        const auto twice = loaded(textOf(*once));
        QCOMPARE(firstDifference(*twice, *once), QString());
        QCOMPARE(once->tracks.size(), project->tracks.size());
        QCOMPARE(once->bpm, project->bpm);
        QCOMPARE(once->name, project->name);
    }
}

void ProjectJsonTest::replacedValuesAreSurvived_data()
{
    QTest::addColumn<int>("rarity");

    QTest::newRow("every fourth") << 4;
    QTest::newRow("every tenth") << 10;
    QTest::newRow("every fortieth") << 40;
}

void ProjectJsonTest::replacedValuesAreSurvived()
{
    QFETCH(int, rarity);
    QRandomGenerator random(static_cast<quint32>(rarity));
    Generator generator(13);
    Project project;
    for (int round = 0; round < 700; ++round) {
        const QJsonObject original =
            round % 2 == 0 ? parsed(kFullText) : generator.project(3)->toJson();
        project.loadJson(mutated(QJsonValue(original), random, rarity).toObject());
        QVERIFY(project.endBeat() >= 0.0);
        QVERIFY(project.barCount(8) >= 8);
        QCOMPARE(project.toJson().keys(), parsed(kDefaultText).keys());
        const auto once = loaded(textOf(project));
        QCOMPARE(textOf(*loaded(textOf(*once))), textOf(*once));
    }
}

void ProjectJsonTest::brokenTextIsSurvived()
{
    QRandomGenerator random(4);
    Project project;
    int readable = 0;
    for (int round = 0; round < 6000; ++round) {
        const QJsonObject json = parsed(mutated(QByteArray(kFullText), random, 4));
        readable += json.isEmpty() ? 0 : 1;
        project.loadJson(json);
        QVERIFY(project.endBeat() >= 0.0);
        QCOMPARE(project.toJson()["app"].toString(), QString("velta"));
        project.toJson();
    }
    QVERIFY2(readable > 500, "part of the texts can be read");
}

void ProjectJsonTest::deepNestingIsDropped()
{
    QJsonValue deep = 7;
    for (int level = 0; level < 500; ++level)
        deep = level % 2 == 0 ? QJsonValue(QJsonArray{deep}) : QJsonValue(QJsonObject{{"x", deep}});
    const QJsonObject full = parsed(kFullText);
    Project project;
    for (const Key& key : everyKey()) {
        project.loadJson(withValue(full, stepsOf(key.path), deep).toObject());
        QVERIFY(textOf(project).size() < QByteArray(kFullText).size() + 600);
    }
}

void ProjectJsonTest::hugeListsAreRead()
{
    constexpr int kNotes = 50'000;
    MelodyBlock block;
    for (int i = 0; i < kNotes; ++i)
        block.notes.append(ProjectBuilder::note(i % 128, i * 0.25, 0.25, i % 127 + 1));
    const auto project = ProjectBuilder::project({ProjectBuilder::melodyTrack({block})});
    const auto copy = loaded(textOf(*project));
    QCOMPARE(firstDifference(*copy, *project), QString());
    QCOMPARE(copy->tracks[0].melodyBlocks[0].notes.size(), kNotes);

    QJsonArray sevens;
    for (int i = 0; i < kNotes; ++i)
        sevens.append(7);
    const auto odd = loaded(QJsonObject{{"tracks", sevens}, {"collapsedGroups", sevens}});
    QCOMPARE(odd->tracks.size(), kNotes);
    QVERIFY(odd->tracks.last() == Track());
    QCOMPARE(odd->collapsedGroups.size(), kNotes);
}

QTEST_GUILESS_MAIN(ProjectJsonTest)
#include "ProjectJsonTest.moc"
