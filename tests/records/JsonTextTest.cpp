#include "records/JsonText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

#include <bit>
#include <limits>

using namespace Qt::Literals::StringLiterals;

/// What QJsonDocument writes is what is expected, everywhere.
class JsonTextTest : public QObject {
    Q_OBJECT

private slots:
    void aNumberIsWrittenAsQtWritesIt_data();
    void aNumberIsWrittenAsQtWritesIt();
    void anyNumberIsWrittenAsQtWritesIt();
    void aTextIsWrittenAsQtWritesIt_data();
    void aTextIsWrittenAsQtWritesIt();
    void whatHoldsNothingIsWrittenAsQtWritesIt();
    void objectsAndArraysStandInOneAnother();

private:
    static QByteArray arrayOf(double number)
    {
        JsonText json;
        json.beginArray();
        json.value(number);
        json.endArray();
        return json.text();
    }

    static QByteArray asQtWrites(const QJsonArray& array) { return QJsonDocument(array).toJson(); }
};

void JsonTextTest::aNumberIsWrittenAsQtWritesIt_data()
{
    using Limits = std::numeric_limits<double>;
    QTest::addColumn<double>("number");
    for (const double number : {0.0,
                                -0.0,
                                1.0,
                                -1.0,
                                0.1,
                                1.0 / 3,
                                2.0 / 3,
                                0.001,
                                0.00099999999999,
                                1e-4,
                                1e-5,
                                999999.5,
                                999999.99999999988,
                                1e6,
                                1234567.0,
                                1e15,
                                1e16,
                                9007199254740991.0,
                                9007199254740993.0,
                                1e20,
                                1e21,
                                1e22,
                                1e300,
                                Limits::max(),
                                Limits::min(),
                                Limits::denorm_min(),
                                Limits::epsilon(),
                                Limits::infinity(),
                                -Limits::infinity(),
                                Limits::quiet_NaN(),
                                127.25,
                                -3.9999999999999996})
        QTest::addRow("%.17g", number) << number;
}

void JsonTextTest::aNumberIsWrittenAsQtWritesIt()
{
    QFETCH(double, number);
    QCOMPARE(arrayOf(number), asQtWrites({number}));
}

void JsonTextTest::anyNumberIsWrittenAsQtWritesIt()
{
    QRandomGenerator random(20260102);
    for (int round = 0; round < 20000; ++round) {
        const double anything = std::bit_cast<double>(random.generate64());
        const double beats = random.bounded(256.0);
        const double fraction = random.bounded(4096) / double(1 + random.bounded(48));
        for (const double number : {anything, beats, -beats, fraction, beats * 8192})
            QCOMPARE(arrayOf(number), asQtWrites({number}));
    }
}

void JsonTextTest::aTextIsWrittenAsQtWritesIt_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << QString();
    QTest::newRow("letters") << u"Chacarera trunca · ñandú"_s;
    QTest::newRow("quotes and slashes") << u"\"a\\b/c\""_s;
    QTest::newRow("lines and bells") << u"a\n\r\t\b\f\a\x1f\x7f"_s;
    QTest::newRow("two units") << u"🎵"_s;
    QTest::newRow("half of two units") << QString(QChar(0xD83C));
    QTest::newRow("brackets") << u"],[{}"_s;
}

void JsonTextTest::aTextIsWrittenAsQtWritesIt()
{
    QFETCH(QString, text);
    JsonText json;
    json.beginArray();
    json.value(text);
    json.value(text);
    json.endArray();
    QCOMPARE(json.text(), asQtWrites({text, text}));
}

void JsonTextTest::whatHoldsNothingIsWrittenAsQtWritesIt()
{
    JsonText array;
    array.beginArray();
    array.endArray();
    QCOMPARE(array.text(), QJsonDocument(QJsonArray()).toJson());
    JsonText object;
    object.beginObject();
    object.endObject();
    QCOMPARE(object.text(), QJsonDocument(QJsonObject()).toJson());
}

void JsonTextTest::objectsAndArraysStandInOneAnother()
{
    JsonText json;
    json.beginObject();
    json.key("a"_L1);
    json.beginArray();
    json.beginObject();
    json.key("pitch"_L1);
    json.value(60);
    json.key("startBeat"_L1);
    json.value(1.5);
    json.endObject();
    json.beginObject();
    json.endObject();
    json.beginArray();
    json.endArray();
    json.value(-7);
    json.endArray();
    json.key("b"_L1);
    json.value(true);
    json.key("c"_L1);
    json.beginObject();
    json.key("d"_L1);
    json.value(u"vidala"_s);
    json.endObject();
    json.key("e"_L1);
    json.value(false);
    json.endObject();
    const QJsonObject expected{{"a", QJsonArray{QJsonObject{{"pitch", 60}, {"startBeat", 1.5}},
                                                QJsonObject(), QJsonArray(), -7}},
                               {"b", true},
                               {"c", QJsonObject{{"d", "vidala"}}},
                               {"e", false}};
    QCOMPARE(json.text(), QJsonDocument(expected).toJson());
}

QTEST_APPLESS_MAIN(JsonTextTest)
#include "JsonTextTest.moc"
