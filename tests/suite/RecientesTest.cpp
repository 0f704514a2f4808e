#include "suite/Recientes.h"

#include "suite/Sesion.h"
#include "suite/SuiteFolder.h"
#include "support/JsonEdit.h"
#include "support/SeededRandom.h"
#include "support/TestProgram.h"

#include <QRegularExpression>
#include <QTest>

#include <memory>

namespace RecientesTests {

using namespace brusel;

namespace {

const QDateTime kMorning(QDate(2024, 5, 6), QTime(8, 30, 15));

ArchivoReciente entry(const QString& path, const QString& app = "velta")
{
    return {.ruta = path, .app = app, .ultimo_uso = kMorning, .temporal = false};
}

QStringList pathsOf(const QString& memberId)
{
    QStringList paths;
    for (const ArchivoReciente& recent : Recientes::listar(memberId))
        paths.append(recent.ruta);
    return paths;
}

/// A list file with so many entries, "/obra/1" first.
QByteArray listOf(int count)
{
    QByteArray json = "[";
    for (int number = 1; number <= count; ++number)
        json += (number == 1 ? "" : ",") + (R"({"ruta": "/obra/)" + QByteArray::number(number)) +
                R"(", "app": "velta", "ultimo_uso": "2024-05-06T08:30:15", "temporal": false})";
    return json + "]";
}

} // namespace

class RecientesTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void theLatestUseStandsFirst();
    void theFileIsTheDocumentedArray();
    void everyFieldIsReadFromTheFile();
    void missingAndMistypedKeysTakeDefaults();
    void aListedPathMovesToTheFrontWithItsNewData();
    void pathsThatDifferOnlyInCaseCountAsOne();
    void everyOldEntryOfThePathGoes();
    void theThirtyFirstEntryPushesOutTheOldest();
    void aListThatIsTooLongIsReadWholeAndCutWhenWritten();
    void aListBeyondItsBytesIsDamaged();
    void theOldestGoWhenTheBytesRunOut();
    void membersHaveListsOfTheirOwn();
    void idsAreMadeSafe_data();
    void idsAreMadeSafe();
    void idsThatDifferOnlyInRefusedCharactersShareAList();
    void safeNamesAreThoseOfThePattern();
    void nothingIsWrittenOutsideTheFolder_data();
    void nothingIsWrittenOutsideTheFolder();
    void askingForThePathMakesTheFolder();
    void anIdTooLongForAFileIsNotListed();
    void anUnreadableListIsEmpty_data();
    void anUnreadableListIsEmpty();
    void aLinkInThePlaceOfAListLeadsNowhere();
    void withoutASessionNothingIsRecorded();
    void anExpiredSessionIsRemovedAndNothingRecorded();
    void aUseIsRecordedForEveryMember();
    void theUsesOfASessionAreThoseOfItsMembers();
    void withoutASessionThereAreNoUses();
    void theEntryOfAUseIsOfNow();
    void aUseKeepsTheSessionAlive();
    void aSessionWithoutMembersIsKeptAliveToo();
    void damagedListsOfMembersDoNotKeepOthersFromTheirs();
    void membersWithoutAnIdShareTheNamelessList();
    void hostileMembersStayInTheFolder();
    void anEndlessGroupIsCut();
    void brokenListsAreSurvived();
    void absurdListsAreSurvived();

private:
    SuiteFolder suite_;
};

void RecientesTest::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
    suite_.clear();
}

// ---- The list of a member ------------------------------------------------------------------

void RecientesTest::theLatestUseStandsFirst()
{
    QVERIFY(Recientes::listar("ana").isEmpty());
    for (const char* path : {"/obra/1", "/obra/2", "/obra/3"})
        Recientes::registrar("ana", entry(path));
    QCOMPARE(pathsOf("ana"), (QStringList{"/obra/3", "/obra/2", "/obra/1"}));
}

void RecientesTest::theFileIsTheDocumentedArray()
{
    Recientes::registrar("ana", {.ruta = "C:/Obras/Ñandú",
                                 .app = "otra",
                                 .ultimo_uso = kMorning.addSecs(60).addMSecs(999),
                                 .temporal = true});
    Recientes::registrar("ana", entry("/obra/1"));
    QCOMPARE(bytesOf(suite_.listFile("ana")), QByteArray(R"([
    {
        "app": "velta",
        "ruta": "/obra/1",
        "temporal": false,
        "ultimo_uso": "2024-05-06T08:30:15"
    },
    {
        "app": "otra",
        "ruta": "C:/Obras/Ñandú",
        "temporal": true,
        "ultimo_uso": "2024-05-06T08:31:15"
    }
]
)"));
}

void RecientesTest::everyFieldIsReadFromTheFile()
{
    writeBytes(suite_.listFile("ana"),
               R"([{"ruta": "C:/Obras/Ñandú", "app": "otra", "temporal": true,
                    "ultimo_uso": "2024-05-06T08:30:15"},
                   {"ruta": "/obra/1", "app": "velta", "temporal": false,
                    "ultimo_uso": "2024-05-06T11:30:15Z"}])");
    const QList<ArchivoReciente> expected{
        {.ruta = "C:/Obras/Ñandú", .app = "otra", .ultimo_uso = kMorning, .temporal = true},
        {.ruta = "/obra/1",
         .app = "velta",
         .ultimo_uso = QDateTime(QDate(2024, 5, 6), QTime(11, 30, 15), Qt::UTC),
         .temporal = false}};
    QCOMPARE(Recientes::listar("ana"), expected);
}

void RecientesTest::missingAndMistypedKeysTakeDefaults()
{
    writeBytes(suite_.listFile("ana"),
               R"([{}, 7, null, [], "/obra", {"ruta": 7, "app": [], "ultimo_uso": 1714986000,
                   "temporal": 1}, {"ultimo_uso": "ayer"}, {"ultimo_uso": "2024-13-45T99:99:99"}])");
    const QList<ArchivoReciente> list = Recientes::listar("ana");
    QCOMPARE(list.size(), 8);
    for (const ArchivoReciente& recent : list) {
        QVERIFY(recent.ruta.isEmpty() && recent.app.isEmpty() && !recent.temporal);
        QVERIFY(!recent.ultimo_uso.isValid());
    }
}

void RecientesTest::aListedPathMovesToTheFrontWithItsNewData()
{
    for (const char* path : {"/obra/1", "/obra/2", "/obra/3"})
        Recientes::registrar("ana", entry(path));
    const ArchivoReciente again{
        .ruta = "/obra/1", .app = "otra", .ultimo_uso = kMorning.addDays(1), .temporal = true};
    Recientes::registrar("ana", again);
    QCOMPARE(pathsOf("ana"), (QStringList{"/obra/1", "/obra/3", "/obra/2"}));
    QCOMPARE(Recientes::listar("ana").first(), again);
}

void RecientesTest::pathsThatDifferOnlyInCaseCountAsOne()
{
    Recientes::registrar("ana", entry("C:/Obras/ÑANDÚ"));
    Recientes::registrar("ana", entry("/obra/2"));
    Recientes::registrar("ana", entry("c:/obras/ñandú"));
    QCOMPARE(pathsOf("ana"), (QStringList{"c:/obras/ñandú", "/obra/2"}));
}

void RecientesTest::everyOldEntryOfThePathGoes()
{
    writeBytes(suite_.listFile("ana"), R"([{"ruta": "/A"}, {"ruta": "/b"}, {"ruta": "/a"}, {}])");
    Recientes::registrar("ana", entry("/a"));
    QCOMPARE(pathsOf("ana"), (QStringList{"/a", "/b", ""}));
}

void RecientesTest::theThirtyFirstEntryPushesOutTheOldest()
{
    for (int number = 1; number <= 31; ++number)
        Recientes::registrar("ana", entry(QString("/obra/%1").arg(number)));
    const QStringList paths = pathsOf("ana");
    QCOMPARE(paths.size(), 30);
    QCOMPARE(paths.first(), "/obra/31");
    QCOMPARE(paths.last(), "/obra/2");
    Recientes::registrar("ana", entry("/obra/2"));
    QCOMPARE(pathsOf("ana").size(), 30);
    QCOMPARE(pathsOf("ana").last(), "/obra/3");
}

void RecientesTest::aListThatIsTooLongIsReadWholeAndCutWhenWritten()
{
    writeBytes(suite_.listFile("ana"), listOf(40));
    QCOMPARE(pathsOf("ana").size(), 40);
    QCOMPARE(pathsOf("ana").last(), "/obra/40");
    // Another one of the first thirty goes, so that the thirtieth of the others is "/obra/30".
    Recientes::registrar("ana", entry("/obra/7"));
    QCOMPARE(pathsOf("ana").size(), 30);
    QCOMPARE(pathsOf("ana").first(), "/obra/7");
    QCOMPARE(pathsOf("ana").last(), "/obra/30");
}

void RecientesTest::aListBeyondItsBytesIsDamaged()
{
    const QByteArray list = listOf(3);
    const qsizetype bound = 256 * 1024;
    QVERIFY(writeBytes(Recientes::rutaArchivo("ana"), list + QByteArray(bound - list.size(), ' ')));
    QCOMPARE(pathsOf("ana").size(), 3);
    QVERIFY(
        writeBytes(Recientes::rutaArchivo("ana"), list + QByteArray(bound - list.size() + 1, ' ')));
    QCOMPARE(pathsOf("ana"), QStringList());
    Recientes::registrar("ana", entry("/obra/nueva"));
    QCOMPARE(pathsOf("ana"), QStringList{"/obra/nueva"});
}

void RecientesTest::theOldestGoWhenTheBytesRunOut()
{
    const auto path = [](int number) {
        return QString("/obra/%1/").arg(number) + QString(32000, 'x');
    };
    for (int number = 0; number < 12; ++number)
        Recientes::registrar("ana", entry(path(number)));
    const QStringList kept = pathsOf("ana");
    QCOMPARE(kept.size(), 8);
    QCOMPARE(kept.first(), path(11));
    QCOMPARE(kept.last(), path(4));
    QVERIFY(QFileInfo(Recientes::rutaArchivo("ana")).size() <= 256 * 1024);
}

void RecientesTest::membersHaveListsOfTheirOwn()
{
    Recientes::registrar("ana", entry("/obra/1"));
    Recientes::registrar("beto", entry("/obra/2"));
    QCOMPARE(pathsOf("ana"), QStringList{"/obra/1"});
    QCOMPARE(pathsOf("beto"), QStringList{"/obra/2"});
}

// ---- File names ----------------------------------------------------------------------------

void RecientesTest::idsAreMadeSafe_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("name");
    QTest::newRow("letters, digits and the three signs stay") << "Ana_9.b-C"
                                                              << "Ana_9.b-C";
    QTest::newRow("a space") << "ana perez"
                             << "ana_perez";
    QTest::newRow("a slash") << "ana/perez"
                             << "ana_perez";
    QTest::newRow("a backslash") << "ana\\perez"
                                 << "ana_perez";
    QTest::newRow("one underscore per character") << "a  /b"
                                                  << "a___b";
    QTest::newRow("letters beyond ASCII") << "ñandú"
                                          << "_and_";
    QTest::newRow("digits beyond ASCII") << "a٣"
                                         << "a_";
    QTest::newRow("a character of two code units") << "a𝄞b"
                                                   << "a_b";
    QTest::newRow("half a surrogate pair") << "a" + QString(QChar(0xD800)) + "/b"
                                           << "a__b";
    QTest::newRow("the other half") << QString(QChar(0xDC00)) + "../b"
                                    << "_.._b";
    QTest::newRow("a null character") << "a" + QString(QChar(0)) + "b"
                                      << "a_b";
    QTest::newRow("the ends of the lines") << "a\r\nb"
                                           << "a__b";
    QTest::newRow("the neighbours of the kept ranges") << "@[`{/:"
                                                       << "______";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("the folder itself") << "."
                                       << ".";
    QTest::newRow("the folder above") << ".."
                                      << "..";
    QTest::newRow("a way out") << "../../x"
                               << ".._.._x";
    QTest::newRow("a drive") << "C:\\Windows"
                             << "C__Windows";
    QTest::newRow("an address") << "ana@escuela.edu"
                                << "ana_escuela.edu";
}

void RecientesTest::idsAreMadeSafe()
{
    QFETCH(QString, id);
    QFETCH(QString, name);
    QCOMPARE(Recientes::rutaArchivo(id), suite_.listsFolder() + '/' + name + ".json");
    Recientes::registrar(id, entry("/obra/1"));
    QVERIFY(QFile::exists(suite_.listFile(name)));
    QCOMPARE(pathsOf(id), QStringList{"/obra/1"});
}

void RecientesTest::idsThatDifferOnlyInRefusedCharactersShareAList()
{
    Recientes::registrar("ana perez", entry("/obra/1"));
    Recientes::registrar("ana/perez", entry("/obra/2"));
    QCOMPARE(pathsOf("ana perez"), (QStringList{"/obra/2", "/obra/1"}));
    QCOMPARE(pathsOf("anañperez"), pathsOf("ana_perez"));
    QCOMPARE(suite_.everything(), (QStringList{"recientes", "recientes/ana_perez.json"}));
}

/// The pattern itself is the reference, for all text that it can read.
void RecientesTest::safeNamesAreThoseOfThePattern()
{
    const QRegularExpression refused("[^A-Za-z0-9_.-]");
    SeededRandom random(96);
    const QString few = QString::fromUtf8("aZ09_.-/\\ :@[`{~ñ\t") + QChar(0) + QChar(0xFFFF);
    for (int round = 0; round < 3000; ++round) {
        QString id;
        for (int left = random.between(0, 12); left > 0; --left)
            id += random.oneIn(8) ? QString("𝄞") : QString(random.pick(few));
        const QString name = QString(id).replace(refused, "_");
        QCOMPARE(Recientes::rutaArchivo(id), suite_.listsFolder() + '/' + name + ".json");
    }
}

void RecientesTest::nothingIsWrittenOutsideTheFolder_data()
{
    QTest::addColumn<QString>("id");
    const QString lone(QChar(0xD800));
    const QString absolute = suite_.outside() + "/x";
    const QStringList ids{"",
                          ".",
                          "..",
                          "../x",
                          "../../x",
                          absolute,
                          "/" + absolute,
                          "~/x",
                          "..\\..\\x",
                          "x/../../../y",
                          "./x",
                          "x/",
                          "...",
                          "../",
                          "%2e%2e/x",
                          "NUL",
                          lone + "/../../x",
                          "../" + lone,
                          lone + absolute,
                          "x" + QString(QChar(0)) + "/../../y"};
    for (int i = 0; i < ids.size(); ++i)
        QTest::addRow("id %d", i) << ids[i];
}

void RecientesTest::nothingIsWrittenOutsideTheFolder()
{
    QFETCH(QString, id);
    Recientes::registrar(id, entry("/obra/1"));
    const QStringList found = suite_.everything();
    QCOMPARE(found.size(), 2);
    QCOMPARE(found[0], "recientes");
    QVERIFY(found[1].startsWith("recientes/") && found[1].endsWith(".json"));
    QCOMPARE(found[1].count('/'), 1);
    QCOMPARE(pathsOf(id), QStringList{"/obra/1"});
}

void RecientesTest::askingForThePathMakesTheFolder()
{
    Recientes::rutaArchivo("ana");
    QCOMPARE(suite_.everything(), QStringList{"recientes"});
}

void RecientesTest::anIdTooLongForAFileIsNotListed()
{
    const QString id(5000, 'x');
    Recientes::registrar(id, entry("/obra/1"));
    QVERIFY(Recientes::listar(id).isEmpty());
    QCOMPARE(suite_.everything(), QStringList{"recientes"});
}

void RecientesTest::anUnreadableListIsEmpty_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < obstacles().size(); ++i)
        QTest::newRow(obstacles()[i].name) << i;
}

void RecientesTest::anUnreadableListIsEmpty()
{
    QFETCH(int, index);
    QDir().mkpath(suite_.listsFolder());
    obstacles()[index].place(suite_.listFile("ana"));
    QVERIFY(Recientes::listar("ana").isEmpty());
    Recientes::registrar("ana", entry("/obra/1"));
    const QFileInfo info(suite_.listFile("ana"));
    const bool inTheWay = info.isDir() || info.isSymLink();
    QCOMPARE(pathsOf("ana"), inTheWay ? QStringList() : QStringList{"/obra/1"});
}

void RecientesTest::aLinkInThePlaceOfAListLeadsNowhere()
{
    const QString target = suite_.outside() + "/mine.json";
    QDir().mkpath(suite_.listsFolder());
    writeBytes(target, R"([{"ruta": "/secreta"}])");
    QVERIFY(QFile::link(target, suite_.listFile("ana")));
    Recientes::registrar("ana", entry("/obra/1"));
    QCOMPARE(bytesOf(target), R"([{"ruta": "/secreta"}])");
    QVERIFY(pathsOf("ana").isEmpty());
    QVERIFY(QFile::remove(target));
}

// ---- Uses in a session ---------------------------------------------------------------------

void RecientesTest::withoutASessionNothingIsRecorded()
{
    Recientes::registrarEnSesionActiva("/obra/1", "velta", false);
    QCOMPARE(suite_.everything(), QStringList());
}

void RecientesTest::anExpiredSessionIsRemovedAndNothingRecorded()
{
    writeBytes(suite_.sessionFile(), R"({"integrantes": [{"id": "ana"}], "inicio_sesion":
                "1999-12-31T22:00:00", "ultima_actividad": "1999-12-31T23:00:00"})");
    Recientes::registrarEnSesionActiva("/obra/1", "velta", false);
    QCOMPARE(suite_.everything(), QStringList());
}

void RecientesTest::aUseIsRecordedForEveryMember()
{
    writeBytes(suite_.sessionFile(),
               sessionWith(R"({"id": "ana"}, {"id": "beto"}, {"id": "carla ñ"})"));
    Recientes::registrar("beto", entry("/obra/de beto"));
    Recientes::registrarEnSesionActiva("/obra/1", "velta", false);
    QCOMPARE(suite_.everything(),
             (QStringList{"recientes", "recientes/ana.json", "recientes/beto.json",
                          "recientes/carla__.json", "sesion.json"}));
    QCOMPARE(pathsOf("ana"), QStringList{"/obra/1"});
    QCOMPARE(pathsOf("beto"), (QStringList{"/obra/1", "/obra/de beto"}));
    QCOMPARE(Recientes::listar("ana").first(), Recientes::listar("carla ñ").first());
}

void RecientesTest::theUsesOfASessionAreThoseOfItsMembers()
{
    writeBytes(suite_.sessionFile(), sessionWith(R"({"id": "ana"}, {"id": "beto"})"));
    const auto use = [](const char* member, const char* path, int minute, const char* app,
                        bool temporary) {
        Recientes::registrar(member, {.ruta = path,
                                      .app = app,
                                      .ultimo_uso = kMorning.addSecs(60 * minute),
                                      .temporal = temporary});
    };
    use("ana", "/obra/1", 1, "velta", false);
    use("ana", "/obra/2", 4, "velta", false);
    use("ana", "/cuadro", 5, "otra", false);
    use("beto", "/obra/1", 2, "velta", false);
    use("beto", "/obra/3", 3, "velta", false);
    use("beto", "/tmp/4", 6, "velta", true);
    use("carla", "/obra/5", 7, "velta", false);
    QCOMPARE(Recientes::rutasDeSesionActiva("velta"),
             (QStringList{"/obra/2", "/obra/3", "/obra/1"}));
}

void RecientesTest::withoutASessionThereAreNoUses()
{
    Recientes::registrar("ana", entry("/obra/1"));
    QCOMPARE(Recientes::rutasDeSesionActiva("velta"), QStringList());
}

void RecientesTest::theEntryOfAUseIsOfNow()
{
    writeBytes(suite_.sessionFile(), sessionWith(R"({"id": "ana"})"));
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    Recientes::registrarEnSesionActiva("C:/Obras/Ñandú", "velta", true);
    const ArchivoReciente recent = Recientes::listar("ana").value(0);
    QCOMPARE(recent.ruta, "C:/Obras/Ñandú");
    QCOMPARE(recent.app, "velta");
    QVERIFY(recent.temporal);
    QVERIFY(recent.ultimo_uso.toSecsSinceEpoch() >= before);
    QVERIFY(recent.ultimo_uso <= QDateTime::currentDateTime());
}

void RecientesTest::aUseKeepsTheSessionAlive()
{
    writeBytes(suite_.sessionFile(),
               sessionWith(R"({"id": "ana", "nombre": "Ana", "color": "c"})"));
    const QJsonObject before = JsonEdit::parsed(bytesOf(suite_.sessionFile()));
    const qint64 start = QDateTime::currentSecsSinceEpoch();
    Recientes::registrarEnSesionActiva("/obra/1", "velta", false);
    QJsonObject after = JsonEdit::parsed(bytesOf(suite_.sessionFile()));
    const QString latest = after["ultima_actividad"].toString();
    QVERIFY(QDateTime::fromString(latest, Qt::ISODate).toSecsSinceEpoch() >= start);
    after["ultima_actividad"] = before["ultima_actividad"];
    QCOMPARE(after, before);
}

void RecientesTest::aSessionWithoutMembersIsKeptAliveToo()
{
    writeBytes(suite_.sessionFile(), sessionWith(""));
    const QByteArray before = bytesOf(suite_.sessionFile());
    Recientes::registrarEnSesionActiva("/obra/1", "velta", false);
    QVERIFY(bytesOf(suite_.sessionFile()) != before);
    QCOMPARE(suite_.everything(), QStringList{"sesion.json"});
}

void RecientesTest::damagedListsOfMembersDoNotKeepOthersFromTheirs()
{
    writeBytes(suite_.sessionFile(), sessionWith(R"({"id": "ana"}, {"id": "beto"}, {"id": ")" +
                                                 QByteArray(5000, 'x') + R"("}, {"id": "carla"})"));
    QDir().mkpath(suite_.listFile("ana"));
    writeBytes(suite_.listFile("beto"), "no JSON");
    Recientes::registrarEnSesionActiva("/obra/1", "velta", false);
    QCOMPARE(pathsOf("beto"), QStringList{"/obra/1"});
    QCOMPARE(pathsOf("carla"), QStringList{"/obra/1"});
    QCOMPARE(QDir(suite_.listsFolder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             (QStringList{"ana.json", "beto.json", "carla.json"}));
}

void RecientesTest::membersWithoutAnIdShareTheNamelessList()
{
    writeBytes(suite_.sessionFile(), sessionWith(R"(7, {"nombre": "Ana"}, {"id": 7}, [])"));
    Recientes::registrarEnSesionActiva("/obra/1", "velta", false);
    QCOMPARE(suite_.everything(), (QStringList{"recientes", "recientes/.json", "sesion.json"}));
    QCOMPARE(pathsOf(""), QStringList{"/obra/1"});
}

void RecientesTest::hostileMembersStayInTheFolder()
{
    writeBytes(suite_.sessionFile(),
               sessionWith(R"({"id": "../../x"}, {"id": "\ud800/../../x"}, {"id": "/x/../../../x"},
                              {"id": ".."}, {"id": "a\u0000/../../x"}, {"id": "\udc00../sesion"})"));
    Recientes::registrarEnSesionActiva("/obra/1", "velta", false);
    for (const QString& path : suite_.everything())
        QVERIFY2(path == "recientes" || path == "sesion.json" ||
                     (path.startsWith("recientes/") && path.count('/') == 1),
                 qPrintable(path));
    QVERIFY(std::unique_ptr<Sesion>(Sesion::cargar(nullptr)));
}

void RecientesTest::anEndlessGroupIsCut()
{
    QByteArray members = R"({"id": "m0"})";
    for (int number = 1; number < 50'000; ++number)
        members += R"(,{"id": "m)" + QByteArray::number(number) + R"("})";
    writeBytes(suite_.sessionFile(), sessionWith(members));
    Recientes::registrarEnSesionActiva("/obra/1", "velta", false);
    QCOMPARE(pathsOf("m0"), QStringList{"/obra/1"});
    QCOMPARE(pathsOf("m63"), QStringList{"/obra/1"});
    QCOMPARE(QDir(suite_.listsFolder()).entryList(QDir::Files).size(), 64);
    const std::unique_ptr<Sesion> session(Sesion::cargar(nullptr));
    QVERIFY2(session, "a session that grows too large to be read again is not written");
    QCOMPARE(session->integrantes.size(), 50'000);
}

// ---- Hostile lists -------------------------------------------------------------------------

void RecientesTest::brokenListsAreSurvived()
{
    QRandomGenerator random(97);
    const QByteArray whole = listOf(4);
    int readable = 0;
    for (int round = 0; round < 5000; ++round) {
        const QByteArray text = JsonEdit::mutated(whole, random, 4);
        writeBytes(suite_.listFile("ana"), text);
        const auto list = Recientes::listar("ana");
        QCOMPARE(list.size(), QJsonDocument::fromJson(text).array().size());
        readable += list.isEmpty() ? 0 : 1;
        if (round % 50 != 0)
            continue;
        Recientes::registrar("ana", entry("/nueva"));
        QCOMPARE(pathsOf("ana").first(), "/nueva");
        QVERIFY(pathsOf("ana").size() <= list.size() + 1);
    }
    QVERIFY2(readable > 500 && readable < 4500, "both kinds of files come up");
}

void RecientesTest::absurdListsAreSurvived()
{
    QRandomGenerator random(98);
    const QJsonValue whole = QJsonDocument::fromJson(listOf(29)).array();
    for (int round = 0; round < 100; ++round) {
        const QJsonArray json = JsonEdit::mutated(whole, random, 15).toArray();
        writeBytes(suite_.listFile("ana"), QJsonDocument(json).toJson());
        QCOMPARE(Recientes::listar("ana").size(), json.size());
        Recientes::registrar("ana", entry("/nueva"));
        const auto list = Recientes::listar("ana");
        QCOMPARE(list.first(), entry("/nueva"));
        QVERIFY(list.size() <= 30);
        QCOMPARE(pathsOf("ana").count("/nueva"), 1);
    }
}

VELTA_GUILESS_TEST(RecientesTest)

} // namespace RecientesTests

#include "RecientesTest.moc"
