#include "storage/ProjectHead.h"

#include "support/Files.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

namespace ProjectHeadTests {

namespace {

/// More than is parsed as a whole.
QByteArray filling(char byte)
{
    return QByteArray(ProjectHead::kParsedWhole, byte);
}

} // namespace

/// What a listing learns of a work, with as little reading as it takes.
class ProjectHeadTest : public QObject {
    Q_OBJECT

private slots:
    void theTitleIsThatOfTheOutermostObject_data();
    void theTitleIsThatOfTheOutermostObject();
    void aWorkSaysWhatItsMusicIsLike();
    void numbersThatNoClockShowsAreNone_data();
    void numbersThatNoClockShowsAreNone();
    void whatIsNoObjectIsNoWork_data();
    void whatIsNoObjectIsNoWork();
    void ofALargeWorkNoMoreIsReadThanItTakes();
    void endlessFilesAreNoWork();

private:
    std::optional<ProjectHead> headOf(const QByteArray& bytes)
    {
        writeBytes(dir_.filePath("project.json"), bytes);
        return ProjectHead::read(dir_.filePath("project.json"));
    }

    QTemporaryDir dir_;
};

void ProjectHeadTest::theTitleIsThatOfTheOutermostObject_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<bool>("named");
    QTest::addColumn<QString>("name");
    QTest::newRow("first") << QByteArray(R"({"name": "Zamba")") << true << "Zamba";
    QTest::newRow("no space at all") << QByteArray(R"({"bpm":1,"name":"Zamba")") << true << "Zamba";
    QTest::newRow("behind other records")
        << QByteArray(R"({"audioTracks": [{"name": "Voz"}], "key": {"name": "no"}, "name": "Sí")")
        << true << "Sí";
    QTest::newRow("a text that looks like the key")
        << QByteArray(R"({"app": "name", "b": ["name", ":", "x"], "name": "Gato")") << true
        << "Gato";
    QTest::newRow("brackets and quotes in texts")
        << QByteArray(R"({"a": "}]\"{[\\", "name": "A \"B\" \u00f1 \\ } ")") << true
        << QString("A \"B\" ñ \\ } ");
    QTest::newRow("a byte order mark")
        << QByteArray("\xEF\xBB\xBF {\"name\": \"x\"") << true << "x";
    QTest::newRow("an empty one") << QByteArray(R"({"name": "")") << true << "";
    QTest::newRow("a number") << QByteArray(R"({"name": 5)") << false << "";
    QTest::newRow("an object") << QByteArray(R"({"name": {"name": "x"})") << false << "";
    QTest::newRow("none") << QByteArray(R"({"bpm": 120)") << false << "";
}

/// A file that is parsed as a whole and one that is not say the same.
void ProjectHeadTest::theTitleIsThatOfTheOutermostObject()
{
    QFETCH(QByteArray, start);
    QFETCH(bool, named);
    QFETCH(QString, name);
    const std::optional<QString> expected = named ? std::optional(name) : std::nullopt;
    const QByteArray small = start + ", \"tracks\": []}";
    QVERIFY(QJsonDocument::fromJson(small).isObject());
    for (const QByteArray& bytes : {small, start + ", \"tracks\": [" + filling(' ') + "]}\n",
                                    start + ", \"tracks\": [\"" + filling('x') + "\"]}"}) {
        const auto head = headOf(bytes);
        QVERIFY(head);
        QCOMPARE(head->name, expected);
    }
}

/// Two bars of 6/8 are six beats: four seconds at 90 beats a minute.
void ProjectHeadTest::aWorkSaysWhatItsMusicIsLike()
{
    Project work;
    work.bpm = 90;
    work.timeSignature = {.numerator = 6, .denominator = 8, .isCompound = true};
    work.keySignature = {.rootPitchClass = 9, .mode = KeyMode::Minor};
    work.tracks.append(ProjectBuilder::melodyTrack({ProjectBuilder::melody({}, 0.0, 5.5)}));
    work.tracks.append(
        ProjectBuilder::loopTrack({ProjectBuilder::loop("cueca", "bombo", 3.0, 3.0),
                                   ProjectBuilder::loop("zamba", "bombo", 0.0, 3.0)}));
    const auto head = headOf(QJsonDocument(work.toJson()).toJson());
    QVERIFY(head && head->song);
    const SongFacts expected{.timeSignature = work.timeSignature,
                             .key = work.keySignature,
                             .seconds = 4.0,
                             .rhythmId = "zamba"};
    QCOMPARE(*head->song, expected);
}

void ProjectHeadTest::numbersThatNoClockShowsAreNone_data()
{
    QTest::addColumn<int>("bpm");
    QTest::addColumn<double>("beats");
    QTest::newRow("no tempo") << 0 << 4.0;
    QTest::newRow("a tempo below none") << -5 << 4.0;
    QTest::newRow("an endless song") << 120 << 1e300;
}

void ProjectHeadTest::numbersThatNoClockShowsAreNone()
{
    QFETCH(int, bpm);
    QFETCH(double, beats);
    Project work;
    work.bpm = bpm;
    work.tracks.append(ProjectBuilder::melodyTrack({ProjectBuilder::melody({}, 0.0, beats)}));
    const auto head = headOf(QJsonDocument(work.toJson()).toJson());
    QVERIFY(head && head->song);
    QCOMPARE(head->song->seconds, 0.0);
}

void ProjectHeadTest::whatIsNoObjectIsNoWork_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no JSON") << QByteArray("obra");
    QTest::newRow("damaged in its middle") << QByteArray(R"({"name": "x", "tracks": [}})");
    QTest::newRow("cut") << QByteArray(R"({"name": "x", "tracks": [)");
    QTest::newRow("a large list") << "[{\"name\": \"x\"}," + filling(' ') + "{}]";
    QTest::newRow("a large cut one") << "{\"name\": \"x\", \"tracks\": [" + filling(' ');
    QTest::newRow("a large one of zeros") << filling('\0');
    QTest::newRow("a large text") << filling('x') + "}";
}

void ProjectHeadTest::whatIsNoObjectIsNoWork()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!headOf(bytes));
}

void ProjectHeadTest::ofALargeWorkNoMoreIsReadThanItTakes()
{
    // Who read the middle would find that it is no JSON.
    const auto head = headOf("{\"name\": \"Zamba\", \"tracks\": [" + filling('\0') + "]}");
    QVERIFY(head);
    QCOMPARE(head->name, "Zamba");
}

void ProjectHeadTest::endlessFilesAreNoWork()
{
    QVERIFY(headOf("{\"name\": \"x\"}"));
    QFile file(dir_.filePath("project.json"));
    QVERIFY(file.resize(ProjectHead::kMaxFileBytes) && file.open(QIODevice::Append));
    QVERIFY(file.write("}") == 1 && file.flush());
    QVERIFY(!ProjectHead::read(file.fileName()));
}

VELTA_GUILESS_TEST(ProjectHeadTest)

} // namespace ProjectHeadTests

#include "ProjectHeadTest.moc"
