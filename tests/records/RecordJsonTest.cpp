#include "records/RecordJson.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

enum class Colour { Red, Green };

QString wordOf(Colour colour)
{
    return colour == Colour::Green ? u"verde"_s : u"rojo"_s;
}

Colour colourOf(const QString& word)
{
    return word == "verde"_L1 ? Colour::Green : Colour::Red;
}

struct Bead {
    qint32 size = 3;
    Colour colour = Colour::Red;

    friend bool operator==(const Bead&, const Bead&) = default;
};

struct Necklace {
    QString name = u"sin nombre"_s;
    bool gold = true;
    double length = 1.5;
    float weight = 0.5F;
    quint32 number = 7;
    QStringList owners{u"nadie"_s};
    QDateTime made;
    QJsonValue extra;
    Bead clasp{9, Colour::Green};
    QList<Bead> beads{Bead()};
    QList<Bead> large;

    friend bool operator==(const Necklace&, const Necklace&) = default;
};

Bead largeBead()
{
    return {.size = 30};
}

} // namespace

namespace Records {

template <>
constexpr auto kFields<Bead> = FieldList{
    WordField{"colour"_L1, &Bead::colour, wordOf, colourOf},
    Field{"size"_L1, &Bead::size},
};

template <>
constexpr auto kFields<Necklace> = FieldList{
    ListField{"beads"_L1, &Necklace::beads},
    Field{"clasp"_L1, &Necklace::clasp},
    Field{"extra"_L1, &Necklace::extra},
    Field{"gold"_L1, &Necklace::gold},
    ListField{"large"_L1, &Necklace::large, largeBead},
    Field{"length"_L1, &Necklace::length},
    Field{"made"_L1, &Necklace::made},
    Field{"name"_L1, &Necklace::name},
    Field{"number"_L1, &Necklace::number},
    Field{"owners"_L1, &Necklace::owners},
    Field{"weight"_L1, &Necklace::weight},
};

} // namespace Records

namespace {

/// A necklace in which no field has its default.
Necklace fullNecklace()
{
    return {.name = u"río"_s,
            .gold = false,
            .length = 0.1,
            .weight = 0.1F,
            .number = 4294967295U,
            .owners = {u"Ana"_s, QString()},
            .made = QDateTime(QDate(2024, 2, 29), QTime(23, 59, 58)),
            .extra = QJsonObject{{u"a"_s, 1}},
            .clasp = {2, Colour::Red},
            .beads = {{5, Colour::Green}, {6, Colour::Red}},
            .large = {{50, Colour::Green}}};
}

const char* const kFullText =
    R"({"beads":[{"colour":"verde","size":5},{"colour":"rojo","size":6}],)"
    R"("clasp":{"colour":"rojo","size":2},"extra":{"a":1},"gold":false,)"
    R"("large":[{"colour":"verde","size":50}],"length":0.1,"made":"2024-02-29T23:59:58",)"
    R"("name":"río","number":4294967295,"owners":["Ana",""],"weight":0.10000000149011612})";

QJsonObject parsed(const char* text)
{
    return QJsonDocument::fromJson(text).object();
}

} // namespace

class RecordJsonTest : public QObject {
    Q_OBJECT

private slots:
    void aRecordIsWrittenByItsKeys();
    void whatWasWrittenReadsBack();
    void whatIsMissingKeepsItsValue();
    void mistypedFieldKeepsItsValue_data();
    void mistypedFieldKeepsItsValue();
    void mistypedListIsEmpty();
    void mistypedWordIsReadAsAWord();
    void anElementThatIsNoObjectHasItsDefaults();
    void anElementWithoutAFieldHasWhatTheListSays();
    void unknownKeysArePassedOver();
};

void RecordJsonTest::aRecordIsWrittenByItsKeys()
{
    const QByteArray text =
        QJsonDocument(RecordJson::write(fullNecklace())).toJson(QJsonDocument::Compact);
    QCOMPARE(text, QByteArray(kFullText));
}

void RecordJsonTest::whatWasWrittenReadsBack()
{
    QCOMPARE(RecordJson::read<Necklace>(parsed(kFullText)), fullNecklace());
}

void RecordJsonTest::whatIsMissingKeepsItsValue()
{
    Necklace necklace = fullNecklace();
    RecordJson::read({{u"length"_s, 8}}, &necklace);
    Necklace expected = fullNecklace();
    expected.length = 8.0;
    expected.owners.clear();
    expected.made = QDateTime();
    expected.extra = QJsonValue(QJsonValue::Undefined);
    expected.clasp.colour = Colour::Red;
    expected.beads.clear();
    expected.large.clear();
    QCOMPARE(necklace, expected);
}

void RecordJsonTest::mistypedFieldKeepsItsValue_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("a number for a text") << u"name"_s << QJsonValue(5);
    QTest::newRow("a text for a truth") << u"gold"_s << QJsonValue(u"false"_s);
    QTest::newRow("a text for a number") << u"length"_s << QJsonValue(u"8"_s);
    QTest::newRow("a truth for a number") << u"weight"_s << QJsonValue(true);
    QTest::newRow("a fraction for a whole number") << u"number"_s << QJsonValue(1.5);
}

void RecordJsonTest::mistypedFieldKeepsItsValue()
{
    QFETCH(QString, key);
    QFETCH(QJsonValue, value);
    const auto necklace = RecordJson::read<Necklace>({{key, value}});
    QCOMPARE(necklace, RecordJson::read<Necklace>({}));
    QCOMPARE(necklace.name, u"sin nombre"_s);
    QCOMPARE(necklace.gold, true);
    QCOMPARE(necklace.length, 1.5);
    QCOMPARE(necklace.weight, 0.5F);
    QCOMPARE(necklace.number, 7U);
    QCOMPARE(necklace.clasp.size, 9);
}

void RecordJsonTest::mistypedListIsEmpty()
{
    const auto necklace = RecordJson::read<Necklace>(parsed(R"({"beads":{},"owners":"Ana"})"));
    QVERIFY(necklace.beads.isEmpty());
    QVERIFY(necklace.owners.isEmpty());
}

void RecordJsonTest::mistypedWordIsReadAsAWord()
{
    Bead bead{1, Colour::Green};
    RecordJson::read({{u"colour"_s, 1}}, &bead);
    QCOMPARE(bead.colour, Colour::Red);
}

void RecordJsonTest::anElementThatIsNoObjectHasItsDefaults()
{
    const auto beads = RecordJson::readList<Bead>(QJsonArray{7, QJsonObject{{u"size"_s, 4}}});
    QCOMPARE(beads, (QList<Bead>{{3, Colour::Red}, {4, Colour::Red}}));
}

void RecordJsonTest::anElementWithoutAFieldHasWhatTheListSays()
{
    const auto necklace = RecordJson::read<Necklace>(parsed(R"({"large":[{},{"size":31}]})"));
    QCOMPARE(necklace.large, (QList<Bead>{{30, Colour::Red}, {31, Colour::Red}}));
}

void RecordJsonTest::unknownKeysArePassedOver()
{
    const auto bead = RecordJson::read<Bead>({{u"size"_s, 4}, {u"weight"_s, 5}});
    QCOMPARE(RecordJson::write(bead), (QJsonObject{{u"colour"_s, u"rojo"_s}, {u"size"_s, 4}}));
}

QTEST_GUILESS_MAIN(RecordJsonTest)
#include "RecordJsonTest.moc"
