#include "suite/Sesion.h"

#include "suite/SuiteFolder.h"
#include "support/JsonEdit.h"
#include "support/TestProgram.h"

#include <QRegularExpression>
#include <QTest>

#include <limits>
#include <memory>

namespace SesionTests {

using namespace brusel;

namespace {

constexpr int kMinute = 60;

std::unique_ptr<Sesion> loaded()
{
    return std::unique_ptr<Sesion>(Sesion::cargar(nullptr));
}

QList<Integrante> twoMembers()
{
    return {{.id = "u1", .nombre = "Ana Ñandú", .color = "#ff8800"},
            {.id = "u2", .nombre = "Beto \"el Zorro\"", .color = "azul"}};
}

/// What is wrong with how a written session comes back; nothing if it comes back as it was, but for
/// the fractions of seconds.
QString differences(const Sesion& written, const Sesion& read)
{
    QStringList fields;
    const auto compare = [&](const char* field, const auto& one, const auto& other) {
        if (one != other)
            fields.append(field);
    };
    compare("modo", written.modo, read.modo);
    compare("token", written.token, read.token);
    compare("grupo", written.grupo, read.grupo);
    compare("integrantes", written.integrantes, read.integrantes);
    compare("inicio_sesion", written.inicio_sesion.toSecsSinceEpoch(),
            read.inicio_sesion.toSecsSinceEpoch());
    compare("ultima_actividad", written.ultima_actividad.toSecsSinceEpoch(),
            read.ultima_actividad.toSecsSinceEpoch());
    compare("duracion_estimada_min", written.duracion_estimada_min, read.duracion_estimada_min);
    return fields.join(", ");
}

} // namespace

class SesionTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void aNewObjectIsAnEmptyStandaloneSession();
    void theFileStandsInTheDataFolder();
    void theFileIsTheDocumentedObject();
    void aBegunSessionIsSavedAndAlive();
    void aBegunSessionTakesThePlaceOfTheFormer();
    void aSessionThatCannotBeSavedIsNotBegun();
    void everyFieldIsReadFromTheFile();
    void missingAndMistypedKeysTakeDefaults_data();
    void missingAndMistypedKeysTakeDefaults();
    void theModeIsReadExactly_data();
    void theModeIsReadExactly();
    void membersOfTheWrongTypeAreEmptyOnes();
    void datesMayHaveAnOffset();
    void withoutAFileThereIsNoSession();
    void anUnreadableFileIsLeftAlone_data();
    void anUnreadableFileIsLeftAlone();
    void aSessionThatIsNotAliveIsRemoved_data();
    void aSessionThatIsNotAliveIsRemoved();
    void aSessionFromTheFutureIsAlive();
    void validityLooksAtTheFileAlone();
    void savingNotesTheTime();
    void savingFailsWhereAFolderHasTheName();
    void aPipeGivesWayToASavedSession();
    void activityIsWrittenWhenThisObjectNeverWrote();
    void aBurstOfActivityWritesOnce();
    void activityIsWrittenFromTheThirtiethSecondOn_data();
    void activityIsWrittenFromTheThirtiethSecondOn();
    void closingRemovesTheFileAlone();
    void savedSessionsComeBack();
    void brokenFilesAreSurvived();
    void absurdFilesAreSurvived();

private:
    SuiteFolder suite_;
};

void SesionTest::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
    suite_.clear();
}

void SesionTest::aNewObjectIsAnEmptyStandaloneSession()
{
    QObject parent;
    const Sesion session(&parent);
    QCOMPARE(session.parent(), &parent);
    QCOMPARE(session.modo, ModoSesion::Standalone);
    QCOMPARE(static_cast<qint32>(ModoSesion::Mirasel), 0);
    QCOMPARE(static_cast<qint32>(ModoSesion::Standalone), 1);
    QVERIFY(session.token.isEmpty() && session.grupo.isEmpty() && session.integrantes.isEmpty());
    QVERIFY(!session.inicio_sesion.isValid() && !session.ultima_actividad.isValid());
    QCOMPARE(session.duracion_estimada_min, 0);
    QVERIFY(!session.ultimo_guardado.isValid());
}

// ---- Writing -------------------------------------------------------------------------------

void SesionTest::theFileStandsInTheDataFolder()
{
    QCOMPARE(Sesion::dirDatos(), suite_.path());
    QCOMPARE(Sesion::rutaArchivo(), suite_.sessionFile());
}

void SesionTest::theFileIsTheDocumentedObject()
{
    Sesion session;
    session.modo = ModoSesion::Mirasel;
    session.token = "t-1";
    session.grupo = QString("Los Ñandúes");
    session.integrantes = {{.id = "u1", .nombre = "Ana", .color = "#ff8800"}};
    session.inicio_sesion = QDateTime(QDate(2024, 5, 6), QTime(8, 30, 15));
    session.ultima_actividad = QDateTime(QDate(2024, 5, 6), QTime(9, 0, 0, 999));
    session.duracion_estimada_min = 45;
    QVERIFY(session.guardar());
    QCOMPARE(bytesOf(suite_.sessionFile()), QByteArray(R"({
    "duracion_estimada_min": 45,
    "grupo": "Los Ñandúes",
    "inicio_sesion": "2024-05-06T08:30:15",
    "integrantes": [
        {
            "color": "#ff8800",
            "id": "u1",
            "nombre": "Ana"
        }
    ],
    "modo": "mirasel",
    "token": "t-1",
    "ultima_actividad": "2024-05-06T09:00:00"
}
)"));
}

void SesionTest::aBegunSessionIsSavedAndAlive()
{
    QObject parent;
    const QDateTime before = QDateTime::currentDateTime();
    const Sesion* session =
        Sesion::iniciar(ModoSesion::Mirasel, "t-1", "Zorzales", twoMembers(), 45, &parent);
    QVERIFY(session);
    QCOMPARE(session->parent(), &parent);
    QVERIFY(session->inicio_sesion >= before);
    QCOMPARE(session->ultima_actividad, session->inicio_sesion);
    QVERIFY(session->ultimo_guardado >= session->inicio_sesion);
    QVERIFY(session->esValida());

    const auto read = loaded();
    QVERIFY(read);
    QCOMPARE(differences(*session, *read), QString());
    QCOMPARE(read->modo, ModoSesion::Mirasel);
    QCOMPARE(read->integrantes, twoMembers());
    QCOMPARE(suite_.everything(), QStringList{"sesion.json"});
}

void SesionTest::aBegunSessionTakesThePlaceOfTheFormer()
{
    const std::unique_ptr<Sesion> first(
        Sesion::iniciar(ModoSesion::Mirasel, "t-1", "Zorzales", twoMembers(), 45, nullptr));
    const std::unique_ptr<Sesion> second(
        Sesion::iniciar(ModoSesion::Standalone, "", "Horneros", {}, 0, nullptr));
    const auto read = loaded();
    QCOMPARE(read->modo, ModoSesion::Standalone);
    QCOMPARE(read->grupo, "Horneros");
    QVERIFY(read->token.isEmpty() && read->integrantes.isEmpty());
}

void SesionTest::aSessionThatCannotBeSavedIsNotBegun()
{
    QObject parent;
    QDir().mkpath(suite_.sessionFile());
    QVERIFY(!Sesion::iniciar(ModoSesion::Standalone, "", "g", twoMembers(), 0, &parent));
    QVERIFY(parent.children().isEmpty());
    QDir(suite_.path()).removeRecursively();
    QVERIFY(!Sesion::iniciar(ModoSesion::Standalone, "", "g", twoMembers(), 0, &parent));
    QVERIFY(parent.children().isEmpty());
}

// ---- Reading -------------------------------------------------------------------------------

void SesionTest::everyFieldIsReadFromTheFile()
{
    const QByteArray begin = secondsAgo(120);
    const QByteArray latest = secondsAgo(60);
    writeBytes(suite_.sessionFile(),
               R"({"token": "t-1", "grupo": "Los Ñandúes", "modo": "mirasel", "inicio_sesion": ")" +
                   begin + R"(", "ultima_actividad": ")" + latest +
                   R"(", "duracion_estimada_min": 80, "integrantes": [
                       {"id": "u1", "nombre": "Ana Ñandú", "color": "#ff8800"},
                       {"id": "u2", "nombre": "Beto \"el Zorro\"", "color": "azul"}]})");
    QObject parent;
    const Sesion* session = Sesion::cargar(&parent);
    QVERIFY(session);
    QCOMPARE(session->parent(), &parent);
    QCOMPARE(session->modo, ModoSesion::Mirasel);
    QCOMPARE(session->token, "t-1");
    QCOMPARE(session->grupo, QString("Los Ñandúes"));
    QCOMPARE(session->integrantes, twoMembers());
    QCOMPARE(session->inicio_sesion, QDateTime::fromString(begin, Qt::ISODate));
    QCOMPARE(session->ultima_actividad, QDateTime::fromString(latest, Qt::ISODate));
    QCOMPARE(session->duracion_estimada_min, 80);
    QVERIFY2(!session->ultimo_guardado.isValid(), "this object has not written the file");
}

void SesionTest::missingAndMistypedKeysTakeDefaults_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("missing") << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("null") << QJsonValue();
    QTest::newRow("true") << QJsonValue(true);
    QTest::newRow("a fraction") << QJsonValue(45.5);
    QTest::newRow("an absurd number") << QJsonValue(1e300);
    QTest::newRow("an object") << QJsonValue(QJsonObject{{"id", "u1"}});
}

void SesionTest::missingAndMistypedKeysTakeDefaults()
{
    QFETCH(QJsonValue, value);
    QJsonValue json = JsonEdit::parsed(sessionWith(R"({"id": "u1"})"));
    for (const char* key : {"token", "grupo", "modo", "duracion_estimada_min", "integrantes"})
        json = JsonEdit::withValue(json, {key}, value);
    writeBytes(suite_.sessionFile(), QJsonDocument(json.toObject()).toJson());
    const auto session = loaded();
    QVERIFY(session);
    QCOMPARE(session->modo, ModoSesion::Standalone);
    QVERIFY(session->token.isEmpty() && session->grupo.isEmpty());
    QVERIFY(session->integrantes.isEmpty());
    QCOMPARE(session->duracion_estimada_min, 0);
}

void SesionTest::theModeIsReadExactly_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<ModoSesion>("mode");
    QTest::newRow("mirasel") << QByteArray("mirasel") << ModoSesion::Mirasel;
    QTest::newRow("a capital") << QByteArray("Mirasel") << ModoSesion::Standalone;
    QTest::newRow("a space") << QByteArray("mirasel ") << ModoSesion::Standalone;
    QTest::newRow("standalone") << QByteArray("standalone") << ModoSesion::Standalone;
    QTest::newRow("empty") << QByteArray() << ModoSesion::Standalone;
    QTest::newRow("a number") << QByteArray("0") << ModoSesion::Standalone;
}

void SesionTest::theModeIsReadExactly()
{
    QFETCH(QByteArray, text);
    writeBytes(suite_.sessionFile(), sessionWith("").replace(R"("mirasel")", '"' + text + '"'));
    QTEST(loaded()->modo, "mode");
}

void SesionTest::membersOfTheWrongTypeAreEmptyOnes()
{
    writeBytes(suite_.sessionFile(),
               sessionWith(R"(7, {"id": 7, "nombre": ["Ana"], "color": null}, [], {"id": "u1"})"));
    const QList<Integrante> expected{{}, {}, {}, {.id = "u1", .nombre = {}, .color = {}}};
    QCOMPARE(loaded()->integrantes, expected);
}

void SesionTest::datesMayHaveAnOffset()
{
    const QDateTime begin = QDateTime::currentDateTimeUtc().addSecs(-600);
    const QString elsewhere = begin.toOffsetFromUtc(-3 * 3600).toString(Qt::ISODate);
    QVERIFY(elsewhere.endsWith("-03:00"));
    writeBytes(suite_.sessionFile(), R"({"inicio_sesion": ")" + elsewhere.toUtf8() +
                                         R"(", "ultima_actividad": ")" +
                                         begin.toString(Qt::ISODate).toUtf8() + R"("})");
    const auto session = loaded();
    QVERIFY(session);
    QCOMPARE(session->inicio_sesion.toSecsSinceEpoch(), begin.toSecsSinceEpoch());
    QCOMPARE(session->ultima_actividad.toSecsSinceEpoch(), begin.toSecsSinceEpoch());
}

void SesionTest::withoutAFileThereIsNoSession()
{
    QVERIFY(!Sesion::cargar(nullptr));
    QVERIFY(!Sesion().esValida());
    QCOMPARE(suite_.everything(), QStringList());
}

void SesionTest::anUnreadableFileIsLeftAlone_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < obstacles().size(); ++i)
        QTest::newRow(obstacles()[i].name) << i;
}

void SesionTest::anUnreadableFileIsLeftAlone()
{
    QFETCH(int, index);
    QObject parent;
    obstacles()[index].place(suite_.sessionFile());
    const QStringList before = suite_.everything();
    QVERIFY(!Sesion::cargar(&parent));
    QVERIFY(parent.children().isEmpty());
    QVERIFY(!Sesion().esValida());
    QCOMPARE(suite_.everything(), before);
}

void SesionTest::aSessionThatIsNotAliveIsRemoved_data()
{
    QTest::addColumn<QByteArray>("begin");
    QTest::addColumn<QByteArray>("latest");
    const QByteArray good = '"' + secondsAgo(60) + '"';
    QTest::newRow("past its plan, out of use")
        << '"' + secondsAgo(50 * kMinute) + '"' << '"' + secondsAgo(20 * kMinute) + '"';
    QTest::newRow("past its grace") << '"' + secondsAgo(62 * kMinute) + '"' << good;
    QTest::newRow("years ago") << QByteArray(R"("1999-12-31T23:59:59")") << good;
    QTest::newRow("no begin") << QByteArray("null") << good;
    QTest::newRow("no activity") << good << QByteArray("null");
    QTest::newRow("an empty begin") << QByteArray(R"("")") << good;
    QTest::newRow("a begin that is no date") << QByteArray(R"("ayer")") << good;
    QTest::newRow("activity that is no date") << good << QByteArray(R"("2024-13-45T99:99:99")");
    QTest::newRow("seconds since 1970") << QByteArray("1714986000") << good;
    QTest::newRow("an absurd number") << good << QByteArray("1e300");
    QTest::newRow("a list") << good << QByteArray("[\"2024-05-06T08:30:15\"]");
    QTest::newRow("a date of the suite's own language")
        << QByteArray(R"("06/05/2024 8:30")") << good;
    QTest::newRow("a date of five thousand digits") << '"' + QByteArray(5000, '9') + '"' << good;
}

void SesionTest::aSessionThatIsNotAliveIsRemoved()
{
    QFETCH(QByteArray, begin);
    QFETCH(QByteArray, latest);
    writeBytes(suite_.sessionFile(), R"({"duracion_estimada_min": 45, "inicio_sesion": )" + begin +
                                         R"(, "ultima_actividad": )" + latest + "}");
    QVERIFY(!Sesion().esValida());
    QVERIFY2(QFile::exists(suite_.sessionFile()), "asking does not remove it");
    QObject parent;
    QVERIFY(!Sesion::cargar(&parent));
    QVERIFY(parent.children().isEmpty());
    QCOMPARE(suite_.everything(), QStringList());
}

void SesionTest::aSessionFromTheFutureIsAlive()
{
    writeBytes(suite_.sessionFile(), R"({"inicio_sesion": "9999-12-31T23:59:59",
                                         "ultima_actividad": "9999-12-31T23:59:59"})");
    QVERIFY(Sesion().esValida());
    QVERIFY(loaded());
}

void SesionTest::validityLooksAtTheFileAlone()
{
    Sesion expired;
    expired.inicio_sesion = expired.ultima_actividad = QDateTime::currentDateTime().addDays(-1);
    writeBytes(suite_.sessionFile(), sessionWith(""));
    QVERIFY(expired.esValida());

    const auto alive = loaded();
    writeBytes(suite_.sessionFile(), "{}");
    QVERIFY(!alive->esValida());
}

// ---- Keeping it ----------------------------------------------------------------------------

void SesionTest::savingNotesTheTime()
{
    const Sesion session;
    const QDateTime before = QDateTime::currentDateTime();
    QVERIFY(session.guardar());
    QVERIFY(session.ultimo_guardado >= before);
    QVERIFY(session.ultimo_guardado <= QDateTime::currentDateTime());
}

void SesionTest::savingFailsWhereAFolderHasTheName()
{
    QDir().mkpath(suite_.sessionFile());
    const Sesion session;
    QVERIFY(!session.guardar());
    QVERIFY(!session.ultimo_guardado.isValid());
    QCOMPARE(suite_.everything(), QStringList{"sesion.json"});
}

void SesionTest::aPipeGivesWayToASavedSession()
{
#ifdef Q_OS_UNIX
    QCOMPARE(mkfifo(suite_.sessionFile().toUtf8().constData(), 0600), 0);
#endif
    const std::unique_ptr<Sesion> session(
        Sesion::iniciar(ModoSesion::Standalone, "", "g", twoMembers(), 0, nullptr));
    QVERIFY(session);
    QCOMPARE(loaded()->integrantes, twoMembers());
}

void SesionTest::activityIsWrittenWhenThisObjectNeverWrote()
{
    writeBytes(suite_.sessionFile(), sessionWith(R"({"id": "u1"})"));
    const auto session = loaded();
    const QDateTime before = QDateTime::currentDateTime();
    session->registrarActividad();
    QVERIFY(session->ultima_actividad >= before);
    QVERIFY(session->ultimo_guardado >= before);
    QCOMPARE(differences(*session, *loaded()), QString());
}

void SesionTest::aBurstOfActivityWritesOnce()
{
    Sesion session;
    session.registrarActividad();
    QVERIFY(QFile::remove(suite_.sessionFile()));
    const QDateTime saved = session.ultimo_guardado;
    for (int use = 0; use < 100; ++use)
        session.registrarActividad();
    QVERIFY(!QFile::exists(suite_.sessionFile()));
    QCOMPARE(session.ultimo_guardado, saved);
    QVERIFY(session.ultima_actividad >= saved);
}

void SesionTest::activityIsWrittenFromTheThirtiethSecondOn_data()
{
    QTest::addColumn<int>("secondsBefore");
    QTest::addColumn<bool>("written");
    QTest::newRow("just now") << 0 << false;
    QTest::newRow("ten seconds") << 10 << false;
    QTest::newRow("twenty-nine seconds") << 29 << false;
    QTest::newRow("thirty seconds") << 30 << true;
    QTest::newRow("an hour") << 3600 << true;
    QTest::newRow("a clock set back by an hour") << -3600 << false;
}

void SesionTest::activityIsWrittenFromTheThirtiethSecondOn()
{
    QFETCH(int, secondsBefore);
    Sesion session;
    QDateTime saved;
    // A machine that pauses between the two moments would move the first one: then once more.
    do {
        QFile::remove(suite_.sessionFile());
        saved = QDateTime::currentDateTime().addSecs(-secondsBefore);
        session.ultimo_guardado = saved;
        session.registrarActividad();
    } while (saved.msecsTo(session.ultima_actividad) >= 1000 * (secondsBefore + 1));
    QTEST(QFile::exists(suite_.sessionFile()), "written");
}

void SesionTest::closingRemovesTheFileAlone()
{
    writeBytes(suite_.sessionFile(), sessionWith(""));
    writeBytes(suite_.listFile("u1"), "[]");
    Sesion::cerrar();
    QCOMPARE(suite_.everything(), (QStringList{"recientes", "recientes/u1.json"}));
    Sesion::cerrar();
    QCOMPARE(suite_.everything(), (QStringList{"recientes", "recientes/u1.json"}));
}

// ---- Laws and hostile files ----------------------------------------------------------------

void SesionTest::savedSessionsComeBack()
{
    QRandomGenerator random(93);
    const QStringList texts{"", "a", "Ñandú", "\"\\\n\t/", QString(3000, 'x'), "𝄞", "null"};
    const auto text = [&] { return texts[random.bounded(texts.size())]; };
    for (int round = 0; round < 60; ++round) {
        QList<Integrante> members;
        for (int count = random.bounded(5); count > 0; --count)
            members.append({.id = text(), .nombre = text(), .color = text()});
        const auto mode = static_cast<ModoSesion>(random.bounded(2));
        const int planned = random.bounded(-1000, 1'000'000'000);
        const std::unique_ptr<Sesion> session(
            Sesion::iniciar(mode, text(), text(), members, planned, nullptr));
        QVERIFY(session);
        const auto read = loaded();
        QVERIFY(read);
        QCOMPARE(differences(*session, *read), QString());
    }
}

void SesionTest::brokenFilesAreSurvived()
{
    QRandomGenerator random(94);
    const QByteArray whole = sessionWith(R"({"id": "u1", "nombre": "Ana", "color": "#ff8800"})");
    int alive = 0;
    for (int round = 0; round < 10'000; ++round) {
        const QByteArray text = JsonEdit::mutated(whole, random, 2);
        writeBytes(suite_.sessionFile(), text);
        const bool readable = QJsonDocument::fromJson(text).isObject();
        const auto session = loaded();
        QVERIFY(!session || (readable && session->inicio_sesion.isValid()));
        QCOMPARE(QFile::exists(suite_.sessionFile()), session || !readable);
        alive += session ? 1 : 0;
    }
    QVERIFY2(alive > 1000 && alive < 9000, "both kinds of files come up");
}

void SesionTest::absurdFilesAreSurvived()
{
    QRandomGenerator random(95);
    const QJsonValue whole = JsonEdit::parsed(sessionWith(R"({"id": "u1", "nombre": "Ana"}, {})"));
    int alive = 0;
    for (int round = 0; round < 1000; ++round) {
        const QJsonObject json = JsonEdit::mutated(whole, random, 6).toObject();
        writeBytes(suite_.sessionFile(), QJsonDocument(json).toJson());
        const auto session = loaded();
        if (!session)
            continue;
        ++alive;
        QCOMPARE(session->integrantes.size(), json["integrantes"].toArray().size());
        if (round % 20 == 0) {
            session->registrarActividad();
            QCOMPARE(differences(*session, *loaded()), QString());
        }
    }
    QVERIFY2(alive > 100 && alive < 900, "both kinds of files come up");
}

VELTA_GUILESS_TEST(SesionTest)

} // namespace SesionTests

#include "SesionTest.moc"
