#include "suite/RespuestaLogin.h"

#include "support/JsonEdit.h"
#include "support/TestProgram.h"

#include <QRegularExpression>
#include <QTest>

namespace RespuestaLoginTests {

using brusel::RespuestaLogin;

namespace {

const QByteArray kAnswer = R"({"token": "t-1", "id": "u7", "nombre": "Ana Ñandú"})";

} // namespace

/// What the login service answers.
class RespuestaLoginTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void theThreeStringsAreRead();
    void otherKeysDoNotMatter();
    void anythingElseIsNoAnswer_data();
    void anythingElseIsNoAnswer();
    void brokenAnswersAreSurvived();
    void absurdAnswersAreSurvived();
};

void RespuestaLoginTest::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void RespuestaLoginTest::theThreeStringsAreRead()
{
    const auto answer = RespuestaLogin::leer(kAnswer);
    QVERIFY(answer);
    QCOMPARE(answer->token, "t-1");
    QCOMPARE(answer->id, "u7");
    QCOMPARE(answer->nombre, QString("Ana Ñandú"));
}

void RespuestaLoginTest::otherKeysDoNotMatter()
{
    QVERIFY(RespuestaLogin::leer(R"({"a": [{}], "nombre": "n", "id": "i", "token": "t", "b": 0})"));
}

void RespuestaLoginTest::anythingElseIsNoAnswer_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a page") << QByteArray("<!DOCTYPE html><html><body>Bienvenidos</body></html>");
    QTest::newRow("no token") << QByteArray(R"({"id": "u7", "nombre": "Ana"})");
    QTest::newRow("no id") << QByteArray(R"({"token": "t-1", "nombre": "Ana"})");
    QTest::newRow("no name") << QByteArray(R"({"token": "t-1", "id": "u7"})");
    QTest::newRow("an empty token") << QByteArray(R"({"token": "", "id": "u7", "nombre": "Ana"})");
    QTest::newRow("an empty id") << QByteArray(R"({"token": "t-1", "id": "", "nombre": "Ana"})");
    QTest::newRow("an empty name") << QByteArray(R"({"token": "t-1", "id": "u7", "nombre": ""})");
    QTest::newRow("a number for an id")
        << QByteArray(R"({"token": "t-1", "id": 7, "nombre": "Ana"})");
    QTest::newRow("null for a name")
        << QByteArray(R"({"token": "t-1", "id": "u7", "nombre": null})");
    QTest::newRow("keys in another case")
        << QByteArray(R"({"Token": "t-1", "ID": "u7", "Nombre": "Ana"})");
    QTest::newRow("inside of a list") << "[" + kAnswer + "]";
    QTest::newRow("cut off") << kAnswer.chopped(1);
    QTest::newRow("two of them") << kAnswer + kAnswer;
    QTest::newRow("a string") << QByteArray(R"("token id nombre")");
    QTest::newRow("nested five thousand deep") << QByteArray(R"({"token":)").repeated(5000);
    QTest::newRow("sixteen bits per character")
        << QByteArray(reinterpret_cast<const char*>(u"{\"token\"}"), 18);
}

void RespuestaLoginTest::anythingElseIsNoAnswer()
{
    QFETCH(QByteArray, body);
    QVERIFY(!RespuestaLogin::leer(body));
}

void RespuestaLoginTest::brokenAnswersAreSurvived()
{
    QRandomGenerator random(91);
    int accepted = 0;
    for (int round = 0; round < 40'000; ++round) {
        const auto answer = RespuestaLogin::leer(JsonEdit::mutated(kAnswer, random, 3));
        if (!answer)
            continue;
        ++accepted;
        QVERIFY(!answer->token.isEmpty() && !answer->id.isEmpty() && !answer->nombre.isEmpty());
    }
    QVERIFY2(accepted > 1000 && accepted < 39'000, "both kinds of answers come up");
}

void RespuestaLoginTest::absurdAnswersAreSurvived()
{
    QRandomGenerator random(92);
    const QJsonValue whole = JsonEdit::parsed(kAnswer);
    int accepted = 0;
    for (int round = 0; round < 5'000; ++round) {
        const QJsonObject json = JsonEdit::mutated(whole, random, 4).toObject();
        const bool complete = !json["token"].toString().isEmpty() &&
                              !json["id"].toString().isEmpty() &&
                              !json["nombre"].toString().isEmpty();
        QCOMPARE(RespuestaLogin::leer(QJsonDocument(json).toJson()).has_value(), complete);
        accepted += complete ? 1 : 0;
    }
    QVERIFY2(accepted > 500 && accepted < 4'500, "both kinds of answers come up");
}

VELTA_GUILESS_TEST(RespuestaLoginTest)

} // namespace RespuestaLoginTests

#include "RespuestaLoginTest.moc"
