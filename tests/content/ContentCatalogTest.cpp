#include "content/ContentCatalog.h"

#include "content/ContentHost.h"
#include "support/Await.h"
#include "support/Files.h"
#include "support/JsonEdit.h"
#include "support/TestProgram.h"

#include <QNetworkAccessManager>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <limits>
#include <memory>

namespace ContentCatalogTests {

namespace {

const QByteArray kCatalog = R"({"rhythms": [
    {"rhythmId": "zamba", "displayName": "Zamba", "styleId": "folklore",
     "styleDisplayName": "Folklore", "estimatedDownloadBytes": 1500000.9,
     "instrumentIds": ["charango", "bombo_leguero"]},
    {"rhythmId": "", "displayName": "Nobody"},
    {"rhythmId": "cueca", "styleId": "andino"}
]})";

QByteArray catalogOf(const QByteArray& elements)
{
    return "{\"rhythms\": [" + elements + "]}";
}

/// A catalogue with everything that it says.
struct Client {
    explicit Client(const QUrl& url)
        : catalog(std::make_unique<ContentCatalog>(url)),
          loaded(catalog.get(), &ContentCatalog::catalogLoaded),
          failed(catalog.get(), &ContentCatalog::catalogFailed)
    {}

    qsizetype signalCount() const { return loaded.size() + failed.size(); }

    /// "loaded", or the message of the failure; another sentence if not just one signal comes.
    QString refresh()
    {
        loaded.clear();
        failed.clear();
        catalog->refresh();
        if (!await([&] { return signalCount() > 0; }))
            return "no signal";
        QTest::qWait(10);
        if (signalCount() > 1)
            return "more than one signal";
        return loaded.isEmpty() ? failed[0][0].toString() : "loaded";
    }

    QStringList ids() const
    {
        QStringList ids;
        for (const CatalogEntry& entry : catalog->entries())
            ids.append(entry.rhythmId);
        return ids;
    }

    std::unique_ptr<ContentCatalog> catalog;
    QSignalSpy loaded;
    QSignalSpy failed;
};

} // namespace

class ContentCatalogTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theAddressComesFromTheEnvironment();
    void theAddressIsSetOnceForAComputer_data();
    void theAddressIsSetOnceForAComputer();
    void settingsThatAreNoFileSetNothing();
    void anEntryReadsAllItsFields();
    void missingAndMistypedFieldsTakeDefaults_data();
    void missingAndMistypedFieldsTakeDefaults();
    void sizesAreCutToWholeBytes_data();
    void sizesAreCutToWholeBytes();
    void entriesWithoutAnIdAreDropped();
    void theFirstOfTwoEntriesIsFound();
    void damagedCataloguesNeverHarm();
    void nothingIsFetchedAtFirst();
    void aGoodCatalogueLoads();
    void theCatalogueIsAskedForBelowTheBase_data();
    void theCatalogueIsAskedForBelowTheBase();
    void anEmptyAddressFailsAtOnce();
    void noServerIsAFailureInItsOwnWords();
    void aBadAnswerLeavesWhatWasThere_data();
    void aBadAnswerLeavesWhatWasThere();
    void aRedirectOutOfHttpLeavesWhatWasThere();
    void aCatalogueOfTenThousandRhythmsLoads();
    void longNamesAreCut();
    void aServerThatKeepsSilentIsGivenUp();
    void twoRefreshesAnswerTwice();
    void deletingEndsWhatIsUnderWay_data();
    void deletingEndsWhatIsUnderWay();
    void aSlotMayDeleteTheCatalogue();
};

void ContentCatalogTest::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void ContentCatalogTest::cleanup()
{
    qunsetenv("VELTA_CONTENT_URL");
}

// ---- Reading -------------------------------------------------------------------------------

void ContentCatalogTest::theAddressComesFromTheEnvironment()
{
    qunsetenv("VELTA_CONTENT_URL");
    QCOMPARE(ContentCatalog::urlFromEnvironment(QString()), QUrl("http://127.0.0.1:8765"));
    qputenv("VELTA_CONTENT_URL", "https://content.invalid/velta");
    QCOMPARE(ContentCatalog::urlFromEnvironment(), QUrl("https://content.invalid/velta"));
    qputenv("VELTA_CONTENT_URL", "");
    QVERIFY(!ContentCatalog::urlFromEnvironment().isValid());
}

void ContentCatalogTest::theAddressIsSetOnceForAComputer_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QUrl>("address");
    const QUrl usual("http://127.0.0.1:8765");
    QTest::newRow("an address") << QByteArray("; el aula\nVELTA_CONTENT_URL=http://10.0.0.5:80/v\n")
                                << QUrl("http://10.0.0.5:80/v");
    QTest::newRow("blanks and another end of line")
        << QByteArray("\r\nVELTA_CONTENT_URL = http://aula\r\n") << QUrl("http://aula");
    QTest::newRow("a comma") << QByteArray("VELTA_CONTENT_URL=http://aula/a,b\n")
                             << QUrl("http://aula/a,b");
    QTest::newRow("nothing behind the name") << QByteArray("VELTA_CONTENT_URL=\n") << QUrl();
    QTest::newRow("another name") << QByteArray("OTRA=http://aula\n") << usual;
    QTest::newRow("an empty file") << QByteArray() << usual;
    QTest::newRow("no settings") << QByteArray("\xff\xfe\0[\n=\n\n]", 9) << usual;
}

void ContentCatalogTest::theAddressIsSetOnceForAComputer()
{
    QFETCH(QByteArray, written);
    QFETCH(QUrl, address);
    const QTemporaryDir folder;
    const QString path = folder.filePath("velta.conf");
    QVERIFY(writeBytes(path, written));
    QCOMPARE(ContentCatalog::urlFromEnvironment(path), address);
    qputenv("VELTA_CONTENT_URL", "http://mine");
    QCOMPARE(ContentCatalog::urlFromEnvironment(path), QUrl("http://mine"));
}

void ContentCatalogTest::settingsThatAreNoFileSetNothing()
{
    const QTemporaryDir folder;
    const QUrl usual("http://127.0.0.1:8765");
    QCOMPARE(ContentCatalog::urlFromEnvironment(folder.path()), usual);
    QCOMPARE(ContentCatalog::urlFromEnvironment(folder.filePath("velta.conf")), usual);
}

void ContentCatalogTest::anEntryReadsAllItsFields()
{
    const CatalogEntry expected{.rhythmId = "zamba",
                                .displayName = "Zamba",
                                .styleId = "folklore",
                                .styleDisplayName = "Folklore",
                                .estimatedDownloadBytes = 1500000,
                                .instrumentIds = {"charango", "bombo_leguero"}};
    QCOMPARE(ContentCatalog::parse(JsonEdit::parsed(kCatalog))[0], expected);
}

void ContentCatalogTest::missingAndMistypedFieldsTakeDefaults_data()
{
    QTest::addColumn<QByteArray>("element");
    QTest::addColumn<CatalogEntry>("entry");
    const CatalogEntry bare{"cueca", "cueca", "", "", 0, {}};
    QTest::newRow("without a display name it shows its id")
        << QByteArray(R"({"rhythmId": "cueca"})") << bare;
    QTest::newRow("without a style's name it shows the style's id")
        << QByteArray(R"({"rhythmId": "cueca", "styleId": "andino"})")
        << CatalogEntry{"cueca", "cueca", "andino", "andino", 0, {}};
    QTest::newRow("other types") << QByteArray(
                                        R"({"rhythmId": "cueca", "displayName": 7, "styleId": [],
                          "styleDisplayName": null, "estimatedDownloadBytes": "12",
                          "instrumentIds": {"a": "b"}})")
                                 << bare;
    QTest::newRow("names that are there and empty stay empty")
        << QByteArray(R"({"rhythmId": "cueca", "displayName": "", "styleId": "a",
                          "styleDisplayName": ""})")
        << CatalogEntry{"cueca", "", "a", "", 0, {}};
}

void ContentCatalogTest::missingAndMistypedFieldsTakeDefaults()
{
    QFETCH(QByteArray, element);
    QFETCH(CatalogEntry, entry);
    QCOMPARE(ContentCatalog::parse(JsonEdit::parsed(catalogOf(element))),
             QList<CatalogEntry>{entry});
}

void ContentCatalogTest::sizesAreCutToWholeBytes_data()
{
    QTest::addColumn<QByteArray>("number");
    QTest::addColumn<qint64>("bytes");
    QTest::newRow("a fraction is cut") << QByteArray("1500000.9") << qint64(1500000);
    QTest::newRow("a fraction below zero too") << QByteArray("-1.9") << qint64(-1);
    QTest::newRow("beyond 32 bits") << QByteArray("5000000000") << qint64(5000000000);
    QTest::newRow("beyond any file") << QByteArray("1e300") << qint64(9000000000000000000);
    QTest::newRow("below any file") << QByteArray("-1e300") << qint64(-9000000000000000000);
    QTest::newRow("beyond all numbers") << QByteArray("1e999") << qint64(0);
    QTest::newRow("no number") << QByteArray("true") << qint64(0);
}

void ContentCatalogTest::sizesAreCutToWholeBytes()
{
    QFETCH(QByteArray, number);
    const auto entries = ContentCatalog::parse(JsonEdit::parsed(
        catalogOf(R"({"rhythmId": "a", "estimatedDownloadBytes": )" + number + "}")));
    QTEST(entries.value(0).estimatedDownloadBytes, "bytes");
}

void ContentCatalogTest::entriesWithoutAnIdAreDropped()
{
    QStringList ids;
    for (const CatalogEntry& entry : ContentCatalog::parse(JsonEdit::parsed(catalogOf(
             R"({"rhythmId": "c"}, {"rhythmId": ""}, {}, 7, {"rhythmId": 7}, {"rhythmId": "a"},
                {"rhythmId": "../b"})"))))
        ids.append(entry.rhythmId);
    QCOMPARE(ids, QStringList({"c", "a", "../b"}));
}

void ContentCatalogTest::theFirstOfTwoEntriesIsFound()
{
    ContentHost host;
    host.put("/catalog.json", catalogOf(R"({"rhythmId": "a", "displayName": "first"},
                                           {"rhythmId": "a", "displayName": "second"})"));
    Client client(host.url());
    QCOMPARE(client.refresh(), "loaded");
    QCOMPARE(client.catalog->entries().size(), 2);
    QCOMPARE(client.catalog->findEntry("a"), &client.catalog->entries()[0]);
    QVERIFY(!client.catalog->findEntry("A"));
    QVERIFY(!client.catalog->findEntry(""));
}

void ContentCatalogTest::damagedCataloguesNeverHarm()
{
    QRandomGenerator random(21);
    for (int round = 0; round < 500; ++round) {
        const QJsonValue json = JsonEdit::mutated(JsonEdit::parsed(kCatalog), random, 8);
        const QByteArray text = QJsonDocument(json.toObject()).toJson();
        for (const CatalogEntry& entry :
             ContentCatalog::parse(JsonEdit::parsed(JsonEdit::mutated(text, random, 4))))
            QVERIFY(!entry.rhythmId.isEmpty());
    }
}

// ---- Fetching ------------------------------------------------------------------------------

void ContentCatalogTest::nothingIsFetchedAtFirst()
{
    const ContentHost host;
    const Client client(host.url());
    QTest::qWait(20);
    QVERIFY(host.asked().isEmpty());
    QVERIFY(!client.catalog->isLoaded());
    QVERIFY(client.catalog->entries().isEmpty());
    QCOMPARE(client.catalog->baseUrl(), host.url());
    QCOMPARE(client.catalog->networkManager()->parent(), client.catalog.get());
}

void ContentCatalogTest::aGoodCatalogueLoads()
{
    ContentHost host;
    host.put("/catalog.json", kCatalog);
    Client client(host.url());
    QCOMPARE(client.refresh(), "loaded");
    QVERIFY(client.catalog->isLoaded());
    QCOMPARE(client.ids(), QStringList({"zamba", "cueca"}));
    host.put("/catalog.json", "{}");
    QCOMPARE(client.refresh(), "loaded");
    QVERIFY(client.catalog->isLoaded());
    QVERIFY(client.ids().isEmpty());
}

void ContentCatalogTest::theCatalogueIsAskedForBelowTheBase_data()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("asked");
    QTest::newRow("without a path") << ""
                                    << "/catalog.json";
    QTest::newRow("a slash alone, which Qt does not ask for twice") << "/"
                                                                    << "/catalog.json";
    QTest::newRow("a folder") << "/velta"
                              << "/velta/catalog.json";
    QTest::newRow("a folder's slash at the end is doubled") << "/a%20b/"
                                                            << "/a%20b//catalog.json";
}

void ContentCatalogTest::theCatalogueIsAskedForBelowTheBase()
{
    QFETCH(QString, base);
    QFETCH(QString, asked);
    ContentHost host;
    host.put(asked, kCatalog);
    Client client(host.url(base));
    const QString outcome = client.refresh();
    QCOMPARE(host.asked(), QStringList{asked});
    QCOMPARE(outcome, "loaded");
}

void ContentCatalogTest::anEmptyAddressFailsAtOnce()
{
    qputenv("VELTA_CONTENT_URL", "");
    Client client(ContentCatalog::urlFromEnvironment());
    client.catalog->refresh();
    QCOMPARE(client.failed.size(), 1);
    QCOMPARE(client.failed[0][0].toString(), "No hay una URL de catálogo configurada.");
    QVERIFY(!client.catalog->isLoaded());
}

void ContentCatalogTest::noServerIsAFailureInItsOwnWords()
{
    const QUrl url = ContentHost().url();
    Client client(url);
    QCOMPARE(client.refresh(), "Connection refused");
}

void ContentCatalogTest::aBadAnswerLeavesWhatWasThere_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("message");
    const QString invalid = "catalog.json inválido.";
    QTest::newRow("a page") << httpAnswer("200 OK", "<html></html>") << invalid;
    QTest::newRow("an array") << httpAnswer("200 OK", "[]") << invalid;
    QTest::newRow("nothing") << httpAnswer("200 OK", "") << invalid;
    QTest::newRow("half of a catalogue") << httpAnswer("200 OK", kCatalog.left(90)) << invalid;
    QTest::newRow("nested without end")
        << httpAnswer("200 OK", "{\"rhythms\":" + QByteArray(100000, '[')) << invalid;
    QTest::newRow("hangs up") << QByteArray() << "Connection closed";
}

void ContentCatalogTest::aBadAnswerLeavesWhatWasThere()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, message);
    ContentHost host;
    host.put("/catalog.json", kCatalog);
    Client client(host.url());
    QCOMPARE(client.refresh(), "loaded");
    host.misbehave("/catalog.json", sends(answer));
    QCOMPARE(client.refresh(), message);
    QVERIFY(client.catalog->isLoaded());
    QCOMPARE(client.ids(), QStringList({"zamba", "cueca"}));
    host.heal();
    QCOMPARE(client.refresh(), "loaded");
}

void ContentCatalogTest::aRedirectOutOfHttpLeavesWhatWasThere()
{
    ContentHost host;
    host.misbehave("/catalog.json",
                   sends(httpAnswer("302 Found", "", "Location: data:,%7B%7D\r\n")));
    Client client(host.url());
    QVERIFY(client.refresh() != "loaded");
    QVERIFY(!client.catalog->isLoaded());
}

void ContentCatalogTest::aCatalogueOfTenThousandRhythmsLoads()
{
    QByteArray elements = R"({"rhythmId": "first"})";
    for (int count = 1; count < 10000; ++count)
        elements += ",{\"rhythmId\": \"r" + QByteArray::number(count) + R"(", "styleId": "s",
                     "displayName": "A rhythm among many"})";
    ContentHost host;
    host.put("/catalog.json", catalogOf(elements));
    Client client(host.url());
    QCOMPARE(client.refresh(), "loaded");
    QCOMPARE(client.catalog->entries().size(), 10000);

    host.put("/catalog.json", catalogOf(elements + ",{}"));
    QCOMPARE(client.refresh(), "catalog.json inválido.");
    QCOMPARE(client.catalog->entries().size(), 10000);
}

void ContentCatalogTest::longNamesAreCut()
{
    const QString name(201, QChar(0x00F1));
    const QJsonObject json{{"rhythms", QJsonArray{QJsonObject{{"rhythmId", name},
                                                              {"displayName", name},
                                                              {"styleDisplayName", name}},
                                                  QJsonObject{{"rhythmId", name}}}}};
    for (const CatalogEntry& entry : ContentCatalog::parse(json)) {
        QCOMPARE(entry.rhythmId, name);
        QCOMPARE(entry.displayName, name.left(200));
        QVERIFY(entry.styleDisplayName.size() <= 200);
    }
}

void ContentCatalogTest::aServerThatKeepsSilentIsGivenUp()
{
    const LocalServer server(keepsSilent());
    ContentCatalog catalog(server.url(), nullptr, std::chrono::milliseconds(200));
    const QSignalSpy failed(&catalog, &ContentCatalog::catalogFailed);
    catalog.refresh();
    QTRY_COMPARE(failed.size(), 1);
    QCOMPARE(failed[0][0].toString(), "El servidor no responde.");
}

void ContentCatalogTest::twoRefreshesAnswerTwice()
{
    ContentHost host;
    host.put("/catalog.json", kCatalog);
    Client client(host.url());
    client.catalog->refresh();
    client.catalog->refresh();
    QTRY_COMPARE(client.loaded.size(), 2);
    QCOMPARE(client.ids(), QStringList({"zamba", "cueca"}));
}

void ContentCatalogTest::deletingEndsWhatIsUnderWay_data()
{
    const QByteArray ok = "HTTP/1.1 200 OK\r\n";
    QTest::addColumn<LocalServer::Behaviour>("behaviour");
    QTest::newRow("no answer") << keepsSilent();
    QTest::newRow("a head without end") << drips(ok, "X-More: of the same\r\n");
    QTest::newRow("a line without end") << drips(ok + "X-More: ", "x");
    QTest::newRow("a body without end") << drips(ok + "\r\n", "x");
}

void ContentCatalogTest::deletingEndsWhatIsUnderWay()
{
    QFETCH(LocalServer::Behaviour, behaviour);
    ContentHost host;
    host.misbehave("/catalog.json", behaviour);
    Client client(host.url());
    client.catalog->refresh();
    QTRY_COMPARE(host.asked().size(), 1);
    QTest::qWait(20);
    client.catalog.reset();
    QTRY_COMPARE(host.server().openConnections(), 0);
    QCOMPARE(client.signalCount(), 0);
}

void ContentCatalogTest::aSlotMayDeleteTheCatalogue()
{
    ContentHost host;
    host.put("/catalog.json", kCatalog);
    Client client(host.url());
    connect(client.catalog.get(), &ContentCatalog::catalogLoaded, this,
            [&] { client.catalog.reset(); });
    client.catalog->refresh();
    QTRY_COMPARE(client.loaded.size(), 1);
    QTest::qWait(20);
    QVERIFY(!client.catalog);
}

VELTA_GUILESS_TEST(ContentCatalogTest)

} // namespace ContentCatalogTests

#include "ContentCatalogTest.moc"
