#include "views/LoopDragPayload.h"

#include "support/SeededRandom.h"
#include "support/TestProgram.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>
#include <QTest>

#include <limits>

namespace LoopDragPayloadTests {

namespace {

/// "rhythm layer section variant"; nothing for no payload.
QString written(const std::optional<LoopDragPayload>& payload)
{
    if (!payload)
        return {};
    return QStringLiteral("%1 %2 %3 %4")
        .arg(payload->rhythmId, payload->layerId)
        .arg(static_cast<int>(payload->section))
        .arg(payload->variantIndex);
}

const QByteArray kWhole = R"({"rhythmId":"zamba","layerId":"bombo","section":"Final",)"
                          R"("variantIndex":3})";

} // namespace

class LoopDragPayloadTest : public QObject {
    Q_OBJECT

private slots:
    void mimeTypeIsTheAgreedOne();
    void payloadIsRead_data();
    void payloadIsRead();
    void whatIsNoLoopIsRefused_data();
    void whatIsNoLoopIsRefused();
    void deepNestingIsHarmless();
    void damagedPayloadsAreHarmless();

    void payloadIsWrittenCompactly();
    void everySectionHasItsWord_data();
    void everySectionHasItsWord();
    void whatIsWrittenIsReadBack_data();
    void whatIsWrittenIsReadBack();
    void aDragCarriesThePayloadAlone();
};

void LoopDragPayloadTest::mimeTypeIsTheAgreedOne()
{
    QCOMPARE(kLoopVariantMimeType, "application/x-velta-loop");
}

void LoopDragPayloadTest::payloadIsRead_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("expected");

    QTest::newRow("whole") << kWhole << "zamba bombo 3 3";
    QTest::newRow("spread over lines, keys in another order")
        << QByteArray("{\n  \"variantIndex\": 2,\n  \"section\": \"Intro\",\n"
                      "  \"layerId\": \"b\",\n  \"rhythmId\": \"z\"\n}\n")
        << "z b 0 2";
    QTest::newRow("Intro") << QByteArray(R"({"section":"Intro"})") << "  0 1";
    QTest::newRow("Intermedio") << QByteArray(R"({"section":"Intermedio"})") << "  1 1";
    QTest::newRow("Normal") << QByteArray(R"({"section":"Normal"})") << "  2 1";
    QTest::newRow("Final") << QByteArray(R"({"section":"Final"})") << "  3 1";
    QTest::newRow("unknown section is Normal") << QByteArray(R"({"section":"Puente"})") << "  2 1";
    QTest::newRow("section in other letters is Normal")
        << QByteArray(R"({"section":"intro"})") << "  2 1";
    QTest::newRow("word of the screen is no word of the payload")
        << QByteArray(R"({"section":"Introducción"})") << "  2 1";
    QTest::newRow("section as a number is Normal") << QByteArray(R"({"section":0})") << "  2 1";
    QTest::newRow("without a section, Normal") << QByteArray(R"({"variantIndex":4})") << "  2 4";
    QTest::newRow("without a variant, 1")
        << QByteArray(R"({"rhythmId":"z","layerId":"b","section":"Final"})") << "z b 3 1";
    QTest::newRow("variant as a text is 1") << QByteArray(R"({"variantIndex":"3"})") << "  2 1";
    QTest::newRow("variant null is 1") << QByteArray(R"({"variantIndex":null})") << "  2 1";
    QTest::newRow("fraction of a variant is 1") << QByteArray(R"({"variantIndex":2.5})") << "  2 1";
    QTest::newRow("variant written as 3.0 is 3")
        << QByteArray(R"({"variantIndex":3.0})") << "  2 3";
    QTest::newRow("variant beyond all numbers is 1")
        << QByteArray(R"({"variantIndex":1e300})") << "  2 1";
    QTest::newRow("variant beyond 32 bits is 1")
        << QByteArray(R"({"variantIndex":2147483648})") << "  2 1";
    QTest::newRow("negative variant is read as it stands")
        << QByteArray(R"({"variantIndex":-7})") << "  2 -7";
    QTest::newRow("ids of other types are empty")
        << QByteArray(R"({"rhythmId":[1],"layerId":{"a":"b"}})") << "  2 1";
    QTest::newRow("ids in any letters")
        << QByteArray(R"({"rhythmId":"ñandú\n","layerId":"\u0000"})")
        << QString("ñandú\n ") + QChar(0) + " 2 1";
    QTest::newRow("the last of two equal keys counts")
        << QByteArray(R"({"rhythmId":"a","rhythmId":"b"})") << "b  2 1";
    QTest::newRow("keys of no meaning are enough for a payload")
        << QByteArray(R"({"otro":1})") << "  2 1";
}

void LoopDragPayloadTest::payloadIsRead()
{
    QFETCH(QByteArray, json);
    QTEST(written(LoopDragPayload::fromJson(json)), "expected");
}

void LoopDragPayloadTest::whatIsNoLoopIsRefused_data()
{
    QTest::addColumn<QByteArray>("json");

    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("empty object") << QByteArray("{}");
    QTest::newRow("empty object with spaces") << QByteArray(" { } ");
    QTest::newRow("array") << QByteArray(R"([{"rhythmId":"z"}])");
    QTest::newRow("text") << QByteArray("\"zamba\"");
    QTest::newRow("number") << QByteArray("7");
    QTest::newRow("null") << QByteArray("null");
    QTest::newRow("no JSON") << QByteArray("zamba");
    QTest::newRow("object without its end") << kWhole.chopped(1);
    QTest::newRow("something behind the object") << kWhole + "x";
    QTest::newRow("comma before the end") << QByteArray(R"({"rhythmId":"z",})");
    QTest::newRow("bytes that are no UTF-8") << QByteArray("{\"rhythmId\":\"\xff\xfe\"}");
    QTest::newRow("zeros") << QByteArray(64, '\0');
    QTest::newRow("UTF-16") << QByteArray::fromRawData("{\0\"\0a\0\"\0:\0"
                                                       "1\0}\0",
                                                       14);
}

void LoopDragPayloadTest::whatIsNoLoopIsRefused()
{
    QFETCH(QByteArray, json);
    QVERIFY(!LoopDragPayload::fromJson(json));
}

void LoopDragPayloadTest::deepNestingIsHarmless()
{
    for (const int depth : {1, 100, 1000, 1023, 1024, 5000, 1000000}) {
        const QByteArray arrays = "{\"rhythmId\":" + QByteArray(depth, '[') +
                                  QByteArray(depth, ']') + ",\"layerId\":\"b\"}";
        const auto payload = LoopDragPayload::fromJson(arrays);
        QVERIFY(!payload || payload->layerId == "b");
        QVERIFY(!LoopDragPayload::fromJson(QByteArray(depth, '[')));
        QVERIFY(!LoopDragPayload::fromJson(QByteArray("{\"a\":").repeated(depth)));
    }
}

void LoopDragPayloadTest::damagedPayloadsAreHarmless()
{
    SeededRandom random(2001);
    int readable = 0;
    for (int i = 0; i < 200000; ++i) {
        QByteArray json = kWhole;
        for (int edits = random.between(1, 6); edits > 0; --edits) {
            const qsizetype at = random.between(0, static_cast<int>(json.size()) - 1);
            const char byte = static_cast<char>(random.between(0, 255));
            if (random.oneIn(3))
                json.insert(at, byte);
            else if (random.oneIn(2) && json.size() > 1)
                json.remove(at, 1);
            else
                json[at] = byte;
        }
        const auto payload = LoopDragPayload::fromJson(json);
        if (!payload)
            continue;
        ++readable;
        QVERIFY(payload->section >= LoopSection::Intro && payload->section <= LoopSection::Final);
    }
    QVERIFY(readable > 1000);
}

// ---- Writing -------------------------------------------------------------------------------

void LoopDragPayloadTest::payloadIsWrittenCompactly()
{
    const QByteArray json = LoopDragPayload{"zamba", "bombo", LoopSection::Final, 3}.toJson();
    QCOMPARE(QJsonDocument::fromJson(json), QJsonDocument::fromJson(kWhole));
    QVERIFY(QJsonDocument::fromJson(json).object()["variantIndex"].isDouble());
    QVERIFY(!json.contains(' ') && !json.contains('\n'));
    QCOMPARE(json.size(), kWhole.size());
    QVERIFY(LoopDragPayload({"ñandú", "b", LoopSection::Intro, 1}).toJson().contains("ñandú"));
}

void LoopDragPayloadTest::everySectionHasItsWord_data()
{
    QTest::addColumn<int>("section");
    QTest::addColumn<QString>("word");

    QTest::newRow("Intro is not written as on the screen") << 0 << "Intro";
    QTest::newRow("Intermedio") << 1 << "Intermedio";
    QTest::newRow("Normal") << 2 << "Normal";
    QTest::newRow("Final") << 3 << "Final";
    QTest::newRow("a number that names none is Normal") << 7 << "Normal";
    QTest::newRow("a negative number is Normal") << -1 << "Normal";
}

void LoopDragPayloadTest::everySectionHasItsWord()
{
    QFETCH(int, section);
    LoopDragPayload payload;
    payload.section = static_cast<LoopSection>(section);
    QTEST(QJsonDocument::fromJson(payload.toJson())["section"].toString(), "word");
}

void LoopDragPayloadTest::whatIsWrittenIsReadBack_data()
{
    QTest::addColumn<QString>("rhythmId");
    QTest::addColumn<QString>("layerId");
    QTest::addColumn<int>("section");
    QTest::addColumn<int>("variantIndex");

    QTest::newRow("plain") << "zamba"
                           << "bombo" << 3 << 3;
    QTest::newRow("no ids") << ""
                            << "" << 2 << 1;
    QTest::newRow("letters that JSON escapes") << "\"\\\n\t"
                                               << "a/b" << 0 << 2;
    QTest::newRow("letters beyond ASCII") << "ñandú 🎵"
                                          << "§" << 1 << 2;
    QTest::newRow("variant 0") << "z"
                               << "b" << 0 << 0;
    QTest::newRow("least variant") << "z"
                                   << "b" << 1 << std::numeric_limits<int>::min();
    QTest::newRow("greatest variant") << "z"
                                      << "b" << 2 << std::numeric_limits<int>::max();
}

void LoopDragPayloadTest::whatIsWrittenIsReadBack()
{
    QFETCH(QString, rhythmId);
    QFETCH(QString, layerId);
    QFETCH(int, section);
    QFETCH(int, variantIndex);
    const LoopDragPayload payload{rhythmId, layerId, static_cast<LoopSection>(section),
                                  variantIndex};
    QCOMPARE(written(LoopDragPayload::fromJson(payload.toJson())), written(payload));
}

void LoopDragPayloadTest::aDragCarriesThePayloadAlone()
{
    const LoopDragPayload payload{"zamba", "bombo", LoopSection::Intro, 2};
    const auto data = payload.toMimeData();
    QCOMPARE(data->formats(), QStringList{"application/x-velta-loop"});
    QCOMPARE(data->data("application/x-velta-loop"), payload.toJson());
}

VELTA_GUILESS_TEST(LoopDragPayloadTest)

} // namespace LoopDragPayloadTests

#include "LoopDragPayloadTest.moc"
