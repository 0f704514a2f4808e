#include "content/ContentServer.h"

#include "content/ContentHost.h"
#include "support/Await.h"
#include "support/TestProgram.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <QTest>
#include <QThread>

#include <atomic>
#include <future>
#include <memory>

namespace ContentServerTests {

using namespace std::chrono_literals;

namespace {

constexpr qint64 kBound = 100000;

/// What came of a request; no signal at all is an error too.
ContentServer::Answer fetch(const QUrl& url, qint64 maxBytes = kBound,
                            std::chrono::milliseconds patience = ContentServer::kPatience)
{
    QNetworkAccessManager network;
    QList<ContentServer::Answer> answers;
    ContentServer::get(network, url, maxBytes, patience, &network,
                       [&](const ContentServer::Answer& answer) { answers.append(answer); });
    if (!await([&] { return !answers.isEmpty(); }))
        return {{}, "no answer"};
    QTest::qWait(10);
    return answers.size() == 1 ? answers[0] : ContentServer::Answer{{}, "answered again"};
}

/// Whether an error is one, and that of a request which ended as it should.
bool isOrdinary(const QString& error)
{
    return !error.isEmpty() && error != "no answer" && error != "answered again";
}

QByteArray headOf(const QByteArray& moreHeaders)
{
    return "HTTP/1.1 200 OK\r\n" + moreHeaders + "\r\n";
}

/// A body of zeros that unpacks into 1032 times as many.
QByteArray packedZeros(qsizetype size)
{
    // The length that is put in front belongs to no HTTP body.
    return qCompress(QByteArray(size, '\0'), 9).mid(4);
}

} // namespace

class ContentServerTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void addressesAreThoseOfTheBaseAndTheFile_data();
    void addressesAreThoseOfTheBaseAndTheFile();
    void bodiesComeWhole_data();
    void bodiesComeWhole();
    void damagedAnswersAreFailures_data();
    void damagedAnswersAreFailures();
    void redirectsWithinHttpAreFollowed();
    void redirectsElsewhereAreFailures_data();
    void redirectsElsewhereAreFailures();
    void redirectsWithoutEndEnd();
    void bodiesUpToTheBoundAreTaken();
    void longerBodiesAreFailures_data();
    void longerBodiesAreFailures();
    void noMoreThanTheBoundIsTakenInWhileTheProgramIsBusy();
    void aServerThatKeepsSilentIsGivenUp_data();
    void aServerThatKeepsSilentIsGivenUp();
    void aSlowServerIsHeardToItsEnd();
    void whatCameWhileTheProgramWasBusyIsHeard();
    void requestsBearNoHeadersOfOurs();
    void nothingIsHeardAfterTheListenerIsGone();
    void deletingTheReplyEndsTheRequestUnheard();
};

void ContentServerTest::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void ContentServerTest::addressesAreThoseOfTheBaseAndTheFile_data()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("address");
    QTest::newRow("without a path") << "http://h:8765"
                                    << "catalog.json"
                                    << "http://h:8765/catalog.json";
    QTest::newRow("a slash at the end is doubled") << "http://h/"
                                                   << "catalog.json"
                                                   << "http://h//catalog.json";
    QTest::newRow("below a folder") << "http://h/velta"
                                    << "content/zamba.content.json"
                                    << "http://h/velta/content/zamba.content.json";
    QTest::newRow("a folder with a slash at its end") << "http://h/velta/"
                                                      << "a"
                                                      << "http://h/velta//a";
    QTest::newRow("an escaped base stays escaped") << "http://h/a%20b%25"
                                                   << "c"
                                                   << "http://h/a%20b%25/c";
    QTest::newRow("a percent sign is none of an escape") << "http://h"
                                                         << "a%2Fb"
                                                         << "http://h/a%252Fb";
    QTest::newRow("marks of an address lose their meaning") << "http://h"
                                                            << "a?b#c"
                                                            << "http://h/a%3Fb%23c";
    QTest::newRow("letters beyond ASCII") << "http://h"
                                          << "content/ñandú.content.json"
                                          << "http://h/content/%C3%B1and%C3%BA.content.json";
    QTest::newRow("a question of the base stays behind") << "http://h/velta?key=1"
                                                         << "a"
                                                         << "http://h/velta/a?key=1";
}

void ContentServerTest::addressesAreThoseOfTheBaseAndTheFile()
{
    QFETCH(QString, base);
    QFETCH(QString, file);
    QTEST(ContentServer::urlOf(QUrl(base), file).toString(QUrl::FullyEncoded), "address");
}

void ContentServerTest::bodiesComeWhole_data()
{
    const QByteArray body = QByteArray("all of it\0with a zero", 21);
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("with its length") << httpAnswer("200 OK", body) << body;
    QTest::newRow("up to the end of the connection")
        << headOf("Connection: close\r\n") + body << body;
    QTest::newRow("in pieces") << headOf("Transfer-Encoding: chunked\r\n") + "15\r\n" + body +
                                      "\r\n0\r\n\r\n"
                               << body;
    QTest::newRow("empty") << httpAnswer("200 OK", "") << QByteArray("");
    QTest::newRow("packed") << httpAnswer("200 OK", packedZeros(5000),
                                          "Content-Encoding: deflate\r\n")
                            << QByteArray(5000, '\0');
}

void ContentServerTest::bodiesComeWhole()
{
    QFETCH(QByteArray, answer);
    const LocalServer server(sends(answer));
    const ContentServer::Answer outcome = fetch(server.url());
    QCOMPARE(outcome.error, "");
    QTEST(outcome.body, "body");
}

void ContentServerTest::damagedAnswersAreFailures_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("not found") << httpAnswer("404 Not Found", "<html></html>");
    QTest::newRow("refused") << httpAnswer("403 Forbidden", "");
    QTest::newRow("out of order") << httpAnswer("500 Internal Server Error", "");
    QTest::newRow("wants a login")
        << httpAnswer("401 Unauthorized", "", "WWW-Authenticate: Basic realm=\"x\"\r\n");
    QTest::newRow("hangs up") << QByteArray();
    QTest::newRow("hangs up in the head") << QByteArray("HTTP/1.1 200 OK\r\nContent-");
    QTest::newRow("cut in the body") << headOf("Content-Length: 100\r\n") + "only this";
    QTest::newRow("no HTTP") << QByteArray("220 smtp.invalid ESMTP\r\n");
    QTest::newRow("packed in no way")
        << httpAnswer("200 OK", "not packed", "Content-Encoding: gzip\r\n");
}

void ContentServerTest::damagedAnswersAreFailures()
{
    QFETCH(QByteArray, answer);
    const LocalServer server(sends(answer));
    const ContentServer::Answer outcome = fetch(server.url());
    QVERIFY2(isOrdinary(outcome.error), qPrintable(outcome.error));
}

void ContentServerTest::redirectsWithinHttpAreFollowed()
{
    ContentHost host;
    host.put("/new/catalog.json", "{}");
    host.misbehave("/catalog.json",
                   sends(httpAnswer("302 Found", "", "Location: /new/catalog.json\r\n")));
    const ContentServer::Answer outcome = fetch(host.url("/catalog.json"));
    QCOMPARE(outcome.error, "");
    QCOMPARE(outcome.body, QByteArray("{}"));
}

void ContentServerTest::redirectsElsewhereAreFailures_data()
{
    QTest::addColumn<QByteArray>("location");
    QTest::newRow("a file of this computer") << QByteArray("file://%1");
    QTest::newRow("a path of this computer as an address") << QByteArray("FILE:%1");
    QTest::newRow("data") << QByteArray("data:text/plain,secret");
    QTest::newRow("a resource of the program") << QByteArray("qrc:/qt-project.org/qmime/x");
    QTest::newRow("another service") << QByteArray("ftp://127.0.0.1/%1");
    QTest::newRow("nowhere") << QByteArray("");
    QTest::newRow("no address") << QByteArray("http://[::bad/");
}

void ContentServerTest::redirectsElsewhereAreFailures()
{
    QFETCH(QByteArray, location);
    QTemporaryFile secret;
    QVERIFY(secret.open());
    QVERIFY(secret.write("secret") == 6 && secret.flush());
    location.replace("%1", QFile::encodeName(secret.fileName()));
    const LocalServer server(sends(httpAnswer("302 Found", "", "Location: " + location + "\r\n")));
    const ContentServer::Answer outcome = fetch(server.url());
    QVERIFY2(isOrdinary(outcome.error), qPrintable(outcome.error));
    QVERIFY2(outcome.body.isEmpty(), outcome.body);
}

void ContentServerTest::redirectsWithoutEndEnd()
{
    const LocalServer server(sends(httpAnswer("302 Found", "", "Location: /ingreso\r\n")));
    const ContentServer::Answer outcome = fetch(server.url());
    QVERIFY2(isOrdinary(outcome.error), qPrintable(outcome.error));
    QVERIFY(server.requests().size() <= 60);
}

void ContentServerTest::bodiesUpToTheBoundAreTaken()
{
    const QByteArray body(kBound, 'x');
    const LocalServer server(sends(httpAnswer("200 OK", body)));
    QCOMPARE(fetch(server.url()).body, body);
}

void ContentServerTest::longerBodiesAreFailures_data()
{
    const QByteArray longer(kBound + 1, 'x');
    QTest::addColumn<QByteArray>("beginning");
    QTest::addColumn<QByteArray>("piece");
    QTest::newRow("a byte too many") << httpAnswer("200 OK", longer) << QByteArray();
    QTest::newRow("a byte too many, up to the end of the connection")
        << headOf("") + longer << QByteArray();
    QTest::newRow("announced and not sent") << headOf("Content-Length: 100001\r\n") << QByteArray();
    QTest::newRow("announced beyond all numbers, and sent")
        << headOf("Content-Length: 99999999999999999999\r\n") << longer;
    QTest::newRow("endless") << headOf("") << QByteArray(65536, 'x');
    QTest::newRow("endless in pieces") << headOf("Transfer-Encoding: chunked\r\n")
                                       << "10000\r\n" + QByteArray(65536, 'x') + "\r\n";
    const QByteArray packed = "Content-Encoding: deflate\r\n";
    QTest::newRow("a byte too many when unpacked")
        << httpAnswer("200 OK", packedZeros(kBound + 1), packed) << QByteArray();
    QTest::newRow("almost endless when unpacked")
        << httpAnswer("200 OK", packedZeros(200000000), packed) << QByteArray();
}

void ContentServerTest::longerBodiesAreFailures()
{
    QFETCH(QByteArray, beginning);
    QFETCH(QByteArray, piece);
    const LocalServer server(floods(beginning, piece));
    const ContentServer::Answer outcome = fetch(server.url());
    QVERIFY2(isOrdinary(outcome.error), qPrintable(outcome.error));
    QTRY_COMPARE(server.openConnections(), 0);
}

void ContentServerTest::noMoreThanTheBoundIsTakenInWhileTheProgramIsBusy()
{
    std::atomic<qint64> sent = 0;
    std::promise<QUrl> url;
    // A server that does not depend on this thread, which will be busy.
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        const LocalServer server(LocalServer::Behaviour([&](QTcpSocket& connection) {
            QObject::connect(&connection, &QTcpSocket::bytesWritten, &connection,
                             [&](qint64 bytes) { sent += bytes; });
            floods(headOf("Connection: close\r\n"), QByteArray(1 << 20, ' '))(connection);
        }));
        url.set_value(server.url());
        QEventLoop().exec();
    }));
    thread->start();
    QNetworkAccessManager network;
    QString error;
    ContentServer::get(network, url.get_future().get(), kBound, ContentServer::kPatience, &network,
                       [&](const ContentServer::Answer& answer) { error = answer.error; });
    QTRY_VERIFY(sent > 0);
    // The system keeps some megabytes of its own between the two ends of a connection. Whoever
    // takes in more than that does so without end, so this waits until nothing more flows.
    constexpr qint64 kMost = 40'000'000;
    int still = 0;
    for (qint64 before = 0; still < 10 && sent < kMost; before = sent) {
        QThread::msleep(100);
        still = sent == before ? still + 1 : 0;
    }
    QVERIFY2(sent < kMost, qPrintable(QString::number(sent)));
    QTRY_COMPARE(error, "Operation canceled");
    thread->quit();
    QVERIFY(thread->wait());
}

void ContentServerTest::aServerThatKeepsSilentIsGivenUp_data()
{
    QTest::addColumn<QByteArray>("beginning");
    QTest::newRow("from the start") << QByteArray();
    QTest::newRow("in the head of its answer") << QByteArray("HTTP/1.1 200 OK\r\nContent-Le");
    QTest::newRow("in the body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{");
}

void ContentServerTest::aServerThatKeepsSilentIsGivenUp()
{
    QFETCH(QByteArray, beginning);
    const LocalServer server(
        LocalServer::Behaviour([&](QTcpSocket& connection) { connection.write(beginning); }));
    const ContentServer::Answer answer = fetch(server.url(), kBound, 200ms);
    QCOMPARE(answer.error, "El servidor no responde.");
    QVERIFY(answer.body.isEmpty());
    QTRY_COMPARE(server.openConnections(), 0);
}

void ContentServerTest::aSlowServerIsHeardToItsEnd()
{
    constexpr int kPieces = 20;
    const LocalServer server(LocalServer::Behaviour([](QTcpSocket& connection) {
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\n");
        auto* timer = new QTimer(&connection);
        QObject::connect(timer, &QTimer::timeout, &connection,
                         [&connection, timer, sent = 0]() mutable {
                             connection.write("x");
                             if (++sent == kPieces)
                                 timer->stop();
                         });
        timer->start(100);
    }));
    const ContentServer::Answer answer = fetch(server.url(), kBound, 1500ms);
    QCOMPARE(answer.error, QString());
    QCOMPARE(answer.body, QByteArray(kPieces, 'x'));
}

void ContentServerTest::whatCameWhileTheProgramWasBusyIsHeard()
{
    const LocalServer server(sends(httpAnswer("200 OK", "{}")));
    QNetworkAccessManager network;
    QString error = "no answer";
    ContentServer::get(network, server.url(), kBound, 300ms, &network,
                       [&](const ContentServer::Answer& answer) { error = answer.error; });
    QTRY_COMPARE(server.requests().size(), 1);
    QThread::msleep(600);
    QTRY_VERIFY(error != "no answer");
    QCOMPARE(error, QString());
}

void ContentServerTest::requestsBearNoHeadersOfOurs()
{
    ContentHost host;
    host.put("/catalog.json", "{}");
    fetch(host.url("/catalog.json"));
    const QByteArray request = host.server().requests()[0];
    QVERIFY2(request.startsWith("GET /catalog.json HTTP/1.1\r\nHost: 127.0.0.1:"), request);
    QVERIFY2(request.endsWith("\r\n\r\n"), request);
}

void ContentServerTest::nothingIsHeardAfterTheListenerIsGone()
{
    const LocalServer server(sends(httpAnswer("200 OK", "{}")));
    QNetworkAccessManager network;
    int heard = 0;
    {
        const QObject listener;
        ContentServer::get(network, server.url(), kBound, ContentServer::kPatience, &listener,
                           [&](const ContentServer::Answer&) { ++heard; });
    }
    QTRY_COMPARE(server.requests().size(), 1);
    QTest::qWait(50);
    QCOMPARE(heard, 0);
}

void ContentServerTest::deletingTheReplyEndsTheRequestUnheard()
{
    const LocalServer server(keepsSilent());
    QNetworkAccessManager network;
    int heard = 0;
    QNetworkReply* reply =
        ContentServer::get(network, server.url(), kBound, ContentServer::kPatience, &network,
                           [&](const ContentServer::Answer&) { ++heard; });
    QTRY_COMPARE(server.requests().size(), 1);
    delete reply;
    QTRY_COMPARE(server.openConnections(), 0);
    QCOMPARE(heard, 0);
}

VELTA_GUILESS_TEST(ContentServerTest)

} // namespace ContentServerTests

#include "ContentServerTest.moc"
