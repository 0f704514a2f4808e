#include "suite/AuthMirasel.h"

#include "support/LocalServer.h"
#include "support/TestProgram.h"

#include <QEventLoop>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <future>
#include <memory>

namespace AuthMiraselTests {

using brusel::AuthMirasel;
using namespace std::chrono_literals;

namespace {

const QByteArray kIdentity = R"({"token": "t-1", "id": "u7", "nombre": "Ana Ñandú"})";

const QString kUnreachable =
    "No pude conectarme con Mirasel. Fijate si hay internet y probá de nuevo.";
const QString kRejected = "No pude entrar: revisá tu usuario y tu clave.";
const QString kUnusable = "No entendí la respuesta de Mirasel. Probá de nuevo en un rato.";

/// Long enough for any answer that comes at all.
constexpr auto kPatience = 10s;
/// Short enough to be waited for.
constexpr auto kHaste = 150ms;

QByteArray ok(const QByteArray& body)
{
    return httpAnswer("200 OK", body, "Content-Type: application/json\r\n");
}

/// An identity, filled up with spaces to a length in bytes.
QByteArray identityOf(qint64 size)
{
    return kIdentity + QByteArray(size - kIdentity.size(), ' ');
}

/// A client with everything that it says.
struct Client {
    explicit Client(const QUrl& url, std::chrono::milliseconds patience = kPatience)
        : auth(std::make_unique<AuthMirasel>(url, patience)),
          available(auth.get(), &AuthMirasel::disponible),
          success(auth.get(), &AuthMirasel::loginExitoso),
          failure(auth.get(), &AuthMirasel::loginFallido)
    {}

    qsizetype signalCount() const { return available.size() + success.size() + failure.size(); }

    /// Whether the service is there; a sentence if there is not just that one signal.
    QString check()
    {
        auth->comprobar();
        if (!waitForSignals(1))
            return "no signal";
        return available.isEmpty() ? "another signal" : available[0][0].toBool() ? "yes" : "no";
    }

    /// "token|id|nombre", or the reason for failing; a sentence if there is not just one signal.
    QString logIn()
    {
        auth->entrar("ana", "s3creta");
        if (!waitForSignals(1))
            return "no signal";
        if (success.isEmpty())
            return failure.value(0).value(0).toString();
        return success[0][0].toString() + '|' + success[0][1].toString() + '|' +
               success[0][2].toString();
    }

    /// Runs the event loop until there are so many signals. False if they do not come.
    bool waitForSignals(qsizetype count) const
    {
        QEventLoop loop;
        QTimer look;
        QObject::connect(&look, &QTimer::timeout, &loop, [&] {
            if (signalCount() >= count)
                loop.exit(1);
        });
        look.start(2ms);
        QTimer::singleShot(20s, &loop, &QEventLoop::quit);
        return loop.exec() == 1;
    }

    std::unique_ptr<AuthMirasel> auth;
    QSignalSpy available;
    QSignalSpy success;
    QSignalSpy failure;
};

/// Lets whatever is still under way come to its end.
void settle()
{
    QTest::qWait(20);
}

} // namespace

class AuthMiraselTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void anAnswerTellsWhetherTheServiceIsThere_data();
    void anAnswerTellsWhetherTheServiceIsThere();
    void nobodyListeningIsNoService();
    void aSilentServerIsNoService_data();
    void aSilentServerIsNoService();
    void theHeadOfAnAnswerIsEnough_data();
    void theHeadOfAnAnswerIsEnough();
    void theServiceIsAskedWithAPlainGet();
    void askingTwiceAsksOnce();
    void askingAgainAsksAgain();
    void anAnswerMayBeFollowedByAnotherQuestion();
    void credentialsGoOutAsOnePost();
    void credentialsAreWrittenAsJson();
    void aFullAnswerIsASuccess_data();
    void aFullAnswerIsASuccess();
    void anyOtherAnswerIsAFailure_data();
    void anyOtherAnswerIsAFailure();
    void aRefusalAsksForOtherCredentials_data();
    void aRefusalAsksForOtherCredentials();
    void credentialsFollowNoRedirect_data();
    void credentialsFollowNoRedirect();
    void nobodyListeningFailsTheLogin();
    void aSilentServerFailsTheLogin_data();
    void aSilentServerFailsTheLogin();
    void anEndlessAnswerFailsTheLogin();
    void answersAreReadUpToTheirBound();
    void noMoreThanTheBoundIsTakenInWhileTheProgramIsBusy();
    void credentialsNeverGoOutInTheOpenForASafeAddress();
    void addressesThatAreNoneFail_data();
    void addressesThatAreNoneFail();
    void nothingIsSaidFromWithinACall();
    void aSecondLoginTakesThePlaceOfTheFirst();
    void aLoginThatIsAnsweredIsReplacedToo();
    void aLoginAndACheckRunSideBySide();
    void aFailureMayBeAnsweredByAnotherLogin();
    void deletingEndsWhatIsUnderWay();
    void aSlotMayDeleteTheObject_data();
    void aSlotMayDeleteTheObject();
};

void AuthMiraselTest::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

// ---- Is the service there? -----------------------------------------------------------------

void AuthMiraselTest::anAnswerTellsWhetherTheServiceIsThere_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("there");
    QTest::newRow("a page") << httpAnswer("200 OK", "<html></html>") << "yes";
    QTest::newRow("nothing to say") << QByteArray("HTTP/1.1 204 No Content\r\n\r\n") << "yes";
    QTest::newRow("wants a login") << httpAnswer("401 Unauthorized", "") << "yes";
    QTest::newRow("wants a login of the browser")
        << httpAnswer("401 Unauthorized", "", "WWW-Authenticate: Basic realm=\"x\"\r\n") << "yes";
    QTest::newRow("wants no GET") << httpAnswer("405 Method Not Allowed", "") << "yes";
    QTest::newRow("nothing there for a GET") << httpAnswer("404 Not Found", "") << "yes";
    QTest::newRow("out of order") << httpAnswer("500 Internal Server Error", "") << "no";
    QTest::newRow("at rest") << httpAnswer("503 Service Unavailable", "") << "no";
    QTest::newRow("a gate of the network")
        << httpAnswer("302 Found", "", "Location: http://portal.invalid/\r\n") << "no";
    QTest::newRow("a gate that sends to the same place")
        << httpAnswer("307 Temporary Redirect", "", "Location: /ingreso\r\n") << "no";
    QTest::newRow("a gate that wants a login")
        << httpAnswer("511 Network Authentication Required", "") << "no";
    QTest::newRow("a proxy that wants a login")
        << httpAnswer("407 Proxy Authentication Required", "") << "no";
    QTest::newRow("a status of no kind") << httpAnswer("999 Odd", "") << "no";
    QTest::newRow("no HTTP") << QByteArray("220 smtp.invalid ESMTP\r\n") << "no";
    QTest::newRow("binary") << QByteArray("\x16\x03\x01\x00\xFF\x00\r\n\r\n", 10) << "no";
    QTest::newRow("hangs up") << QByteArray() << "no";
}

void AuthMiraselTest::anAnswerTellsWhetherTheServiceIsThere()
{
    QFETCH(QByteArray, answer);
    const LocalServer server(sends(answer));
    Client client(server.url());
    QTEST(client.check(), "there");
    settle();
    QCOMPARE(client.signalCount(), 1);
}

void AuthMiraselTest::nobodyListeningIsNoService()
{
    const QUrl url = LocalServer(keepsSilent()).url();
    QCOMPARE(Client(url).check(), "no");
}

void AuthMiraselTest::aSilentServerIsNoService_data()
{
    QTest::addColumn<QByteArray>("beginning");
    QTest::addColumn<QByteArray>("piece");
    QTest::newRow("no answer") << QByteArray() << QByteArray();
    QTest::newRow("half a line") << QByteArray("HTTP/1.1 20") << QByteArray();
    QTest::newRow("a head without end")
        << QByteArray("HTTP/1.1 200 OK\r\n") << QByteArray("X-More: of the same\r\n");
    QTest::newRow("a line without end")
        << QByteArray("HTTP/1.1 200 OK\r\nX-More: ") << QByteArray(64, 'x');
}

void AuthMiraselTest::aSilentServerIsNoService()
{
    QFETCH(QByteArray, beginning);
    QFETCH(QByteArray, piece);
    const LocalServer server(drips(beginning, piece));
    Client client(server.url(), kHaste);
    QCOMPARE(client.check(), "no");
}

void AuthMiraselTest::theHeadOfAnAnswerIsEnough_data()
{
    QTest::addColumn<QByteArray>("piece");
    QTest::newRow("with nothing behind it") << QByteArray();
    QTest::newRow("with drops behind it") << QByteArray("x");
    QTest::newRow("with no end behind it") << QByteArray(65536, 'x');
}

void AuthMiraselTest::theHeadOfAnAnswerIsEnough()
{
    QFETCH(QByteArray, piece);
    const LocalServer server(
        drips("HTTP/1.1 200 OK\r\nContent-Length: 400000000000\r\n\r\n", piece));
    Client client(server.url(), 60s);
    QCOMPARE(client.check(), "yes");
    QTRY_COMPARE(server.openConnections(), 0);
}

void AuthMiraselTest::theServiceIsAskedWithAPlainGet()
{
    const LocalServer server(sends(httpAnswer("200 OK", "")));
    Client client(server.url());
    QCOMPARE(client.logIn(), kUnusable);
    client.auth->comprobar();
    QVERIFY(client.waitForSignals(2));
    QCOMPARE(server.requests().size(), 2);
    const QByteArray request = server.requests()[1];
    QVERIFY2(request.startsWith("GET /ingreso HTTP/1.1\r\n"), request);
    QVERIFY2(request.endsWith("\r\n\r\n"), request);
    QVERIFY2(!request.contains("ana") && !request.contains("s3creta"), request);
}

void AuthMiraselTest::askingTwiceAsksOnce()
{
    const LocalServer server(sends(httpAnswer("200 OK", "")));
    Client client(server.url());
    client.auth->comprobar();
    QCOMPARE(client.check(), "yes");
    settle();
    QCOMPARE(client.available.size(), 1);
    QCOMPARE(server.requests().size(), 1);
}

void AuthMiraselTest::askingAgainAsksAgain()
{
    int asked = 0;
    const LocalServer server([&](QTcpSocket& connection) {
        sends(httpAnswer(++asked == 1 ? "503 At Rest" : "200 OK", ""))(connection);
    });
    Client client(server.url());
    QCOMPARE(client.check(), "no");
    client.auth->comprobar();
    QVERIFY(client.waitForSignals(2));
    QCOMPARE(client.available[1][0].toBool(), true);
}

void AuthMiraselTest::anAnswerMayBeFollowedByAnotherQuestion()
{
    const LocalServer server(sends(httpAnswer("200 OK", "")));
    Client client(server.url());
    QObject::connect(client.auth.get(), &AuthMirasel::disponible, client.auth.get(), [&] {
        if (client.available.size() < 5)
            client.auth->comprobar();
    });
    client.auth->comprobar();
    QVERIFY(client.waitForSignals(5));
    for (const QList<QVariant>& answer : client.available)
        QCOMPARE(answer[0].toBool(), true);
    QCOMPARE(server.requests().size(), 5);
}

// ---- Logging in ----------------------------------------------------------------------------

void AuthMiraselTest::credentialsGoOutAsOnePost()
{
    const LocalServer server(sends(ok(kIdentity)));
    Client client(server.url());
    QCOMPARE(client.logIn(), QString("t-1|u7|Ana Ñandú"));
    settle();
    QCOMPARE(server.requests().size(), 1);
    const QByteArray request = server.requests()[0];
    QVERIFY2(request.startsWith("POST /ingreso HTTP/1.1\r\n"), request);
    QVERIFY2(request.toLower().contains("\r\ncontent-type: application/json\r\n"), request);
    QVERIFY2(request.toLower().contains("\r\naccept-encoding: identity\r\n"), request);
    QVERIFY2(request.endsWith("\r\n\r\n{\"clave\":\"s3creta\",\"usuario\":\"ana\"}"), request);
}

void AuthMiraselTest::credentialsAreWrittenAsJson()
{
    const LocalServer server(sends(ok(kIdentity)));
    Client client(server.url());
    client.auth->entrar("ñandú", "a\"b\\c\n&=");
    QVERIFY(client.waitForSignals(1));
    QVERIFY2(
        server.received().endsWith("\r\n\r\n{\"clave\":\"a\\\"b\\\\c\\n&=\",\"usuario\":\"\xC3\xB1"
                                   "and\xC3\xBA\"}"),
        server.received());
}

void AuthMiraselTest::aFullAnswerIsASuccess_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("with its length") << ok(kIdentity);
    QTest::newRow("up to the end of the connection")
        << "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + kIdentity;
    QTest::newRow("an older protocol") << "HTTP/1.0 200 OK\r\n\r\n" + kIdentity;
    QTest::newRow("created") << httpAnswer("201 Created", kIdentity);
    QTest::newRow("in pieces") << "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n10\r\n" +
                                      kIdentity.left(16) + "\r\n" +
                                      QByteArray::number(kIdentity.size() - 16, 16) + "\r\n" +
                                      kIdentity.mid(16) + "\r\n0\r\n\r\n";
    QTest::newRow("under another name of its kind")
        << httpAnswer("200 OK", kIdentity, "Content-Type: text/plain\r\n");
    QTest::newRow("with a cookie") << httpAnswer("200 OK", kIdentity, "Set-Cookie: a=b\r\n");
}

void AuthMiraselTest::aFullAnswerIsASuccess()
{
    QFETCH(QByteArray, answer);
    const LocalServer server(sends(answer));
    Client client(server.url());
    QCOMPARE(client.logIn(), QString("t-1|u7|Ana Ñandú"));
    settle();
    QCOMPARE(client.signalCount(), 1);
}

void AuthMiraselTest::anyOtherAnswerIsAFailure_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("reason");
    QTest::newRow("the page of a gate") << ok("<html>Bienvenidos</html>") << kUnusable;
    QTest::newRow("nothing") << ok("") << kUnusable;
    QTest::newRow("no content") << QByteArray("HTTP/1.1 204 No Content\r\n\r\n") << kUnusable;
    QTest::newRow("a field is missing") << ok(R"({"token": "t-1", "id": "u7"})") << kUnusable;
    QTest::newRow("a list") << ok("[" + kIdentity + "]") << kUnusable;
    QTest::newRow("an identity that is not found")
        << httpAnswer("404 Not Found", kIdentity) << kUnusable;
    QTest::newRow("an identity of a server out of order")
        << httpAnswer("500 Internal Server Error", kIdentity) << kUnusable;
    QTest::newRow("an identity beside a redirect")
        << httpAnswer("302 Found", kIdentity, "Location: http://127.0.0.1:9/\r\n") << kUnusable;
    QTest::newRow("shorter than it says")
        << "HTTP/1.1 200 OK\r\nContent-Length: 500\r\n\r\n" + kIdentity.chopped(1) << kUnusable;
    QTest::newRow("cut off within a piece")
        << "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nfff\r\n" + kIdentity.chopped(1)
        << kUnusable;
    QTest::newRow("said to be compressed")
        << httpAnswer("200 OK", "\x1F\x8B\x08" + kIdentity, "Content-Encoding: gzip\r\n")
        << kUnusable;
    QTest::newRow("no HTTP") << QByteArray("220 smtp.invalid ESMTP\r\n") << kUnreachable;
    QTest::newRow("hangs up") << QByteArray() << kUnreachable;
}

void AuthMiraselTest::anyOtherAnswerIsAFailure()
{
    QFETCH(QByteArray, answer);
    const LocalServer server(sends(answer));
    Client client(server.url());
    QTEST(client.logIn(), "reason");
    settle();
    QCOMPARE(client.signalCount(), 1);
}

void AuthMiraselTest::aRefusalAsksForOtherCredentials_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("unauthorized") << httpAnswer("401 Unauthorized", "{}");
    QTest::newRow("unauthorized, with a login of the browser")
        << httpAnswer("401 Unauthorized", "", "WWW-Authenticate: Basic realm=\"x\"\r\n");
    QTest::newRow("forbidden") << httpAnswer("403 Forbidden", kIdentity);
}

void AuthMiraselTest::aRefusalAsksForOtherCredentials()
{
    QFETCH(QByteArray, answer);
    const LocalServer server(sends(answer));
    Client client(server.url());
    QCOMPARE(client.logIn(), kRejected);
    settle();
    QCOMPARE(client.signalCount(), 1);
}

void AuthMiraselTest::credentialsFollowNoRedirect_data()
{
    QTest::addColumn<QByteArray>("status");
    for (const char* status : {"301 Moved Permanently", "302 Found", "303 See Other",
                               "307 Temporary Redirect", "308 Permanent Redirect"})
        QTest::newRow(status) << QByteArray(status);
}

void AuthMiraselTest::credentialsFollowNoRedirect()
{
    QFETCH(QByteArray, status);
    const LocalServer elsewhere(sends(ok(kIdentity)));
    const QByteArray location = "Location: " + elsewhere.url().toEncoded() + "\r\n";
    const LocalServer server(sends(httpAnswer(status, "", location)));
    Client client(server.url());
    QCOMPARE(client.logIn(), kUnusable);
    settle();
    QCOMPARE(elsewhere.connections(), 0);
    QCOMPARE(server.requests().size(), 1);
}

void AuthMiraselTest::nobodyListeningFailsTheLogin()
{
    const QUrl url = LocalServer(keepsSilent()).url();
    QCOMPARE(Client(url).logIn(), kUnreachable);
}

void AuthMiraselTest::aSilentServerFailsTheLogin_data()
{
    QTest::addColumn<QByteArray>("beginning");
    QTest::addColumn<QByteArray>("piece");
    QTest::addColumn<QString>("reason");
    const QByteArray head = "HTTP/1.1 200 OK\r\nContent-Length: 5000\r\n\r\n";
    QTest::newRow("no answer") << QByteArray() << QByteArray() << kUnreachable;
    QTest::newRow("half an answer") << head + kIdentity << QByteArray() << kUnusable;
    QTest::newRow("an answer by drops") << head + kIdentity << QByteArray(" ") << kUnusable;
    QTest::newRow("a head without end") << QByteArray("HTTP/1.1 200 OK\r\n")
                                        << QByteArray("X-More: of the same\r\n") << kUnreachable;
}

void AuthMiraselTest::aSilentServerFailsTheLogin()
{
    QFETCH(QByteArray, beginning);
    QFETCH(QByteArray, piece);
    const LocalServer server(drips(beginning, piece));
    Client client(server.url(), kHaste);
    QTEST(client.logIn(), "reason");
    QTRY_COMPARE(server.openConnections(), 0);
    QCOMPARE(client.signalCount(), 1);
}

void AuthMiraselTest::anEndlessAnswerFailsTheLogin()
{
    const LocalServer server(
        floods("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + kIdentity, QByteArray(65536, ' ')));
    Client client(server.url());
    QCOMPARE(client.logIn(), kUnusable);
    QTRY_COMPARE(server.openConnections(), 0);
}

void AuthMiraselTest::answersAreReadUpToTheirBound()
{
    const LocalServer full(sends(ok(identityOf(AuthMirasel::kMaxRespuesta))));
    QCOMPARE(Client(full.url()).logIn(), QString("t-1|u7|Ana Ñandú"));
    const LocalServer overfull(sends(ok(identityOf(AuthMirasel::kMaxRespuesta + 1))));
    QCOMPARE(Client(overfull.url()).logIn(), kUnusable);
}

void AuthMiraselTest::noMoreThanTheBoundIsTakenInWhileTheProgramIsBusy()
{
    std::atomic<qint64> sent = 0;
    std::promise<QUrl> url;
    // A server that does not depend on this thread, which will be busy.
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        const LocalServer server([&](QTcpSocket& connection) {
            QObject::connect(&connection, &QTcpSocket::bytesWritten, &connection,
                             [&](qint64 bytes) { sent += bytes; });
            floods("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n",
                   QByteArray(1 << 20, ' '))(connection);
        });
        url.set_value(server.url());
        QEventLoop().exec();
    }));
    thread->start();
    Client client(url.get_future().get());
    client.auth->entrar("ana", "s3creta");
    QTRY_VERIFY(sent > 0);
    QThread::msleep(400);
    // The system keeps some megabytes of its own between the two ends of a connection.
    QVERIFY2(sent < 40'000'000, qPrintable(QString::number(sent)));
    QVERIFY(client.waitForSignals(1));
    QCOMPARE(client.failure.value(0).value(0).toString(), kUnusable);
    thread->quit();
    QVERIFY(thread->wait());
}

void AuthMiraselTest::credentialsNeverGoOutInTheOpenForASafeAddress()
{
    const LocalServer server(hangsUp());
    Client client(server.url("https"), kHaste);
    QCOMPARE(client.logIn(), kUnreachable);
    QVERIFY(server.connections() > 0);
    QVERIFY(!server.received().contains("s3creta"));
}

void AuthMiraselTest::addressesThatAreNoneFail_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::newRow("none") << QUrl();
    QTest::newRow("a host without a scheme") << QUrl("mirasel.invalid");
    QTest::newRow("a scheme without a host") << QUrl("http://");
    QTest::newRow("a path without a host") << QUrl("http:///ingreso");
    QTest::newRow("a file") << QUrl::fromLocalFile(QCoreApplication::applicationFilePath());
    QTest::newRow("a resource") << QUrl("qrc:/ingreso");
    QTest::newRow("data") << QUrl("data:application/json," + kIdentity);
    QTest::newRow("another protocol") << QUrl("ftp://127.0.0.1/ingreso");
    QTest::newRow("a port out of range") << QUrl("http://127.0.0.1:99999/ingreso");
}

void AuthMiraselTest::addressesThatAreNoneFail()
{
    QFETCH(QUrl, url);
    QCOMPARE(Client(url).check(), "no");
    QCOMPARE(Client(url).logIn(), kUnreachable);
}

// ---- Life ----------------------------------------------------------------------------------

void AuthMiraselTest::nothingIsSaidFromWithinACall()
{
    Client client{QUrl()};
    client.auth->comprobar();
    client.auth->entrar("ana", "s3creta");
    client.auth->entrar("ana", "s3creta");
    QCOMPARE(client.signalCount(), 0);
    QVERIFY(client.waitForSignals(2));
    settle();
    QCOMPARE(client.available.size(), 1);
    QCOMPARE(client.failure.size(), 1);
}

void AuthMiraselTest::aSecondLoginTakesThePlaceOfTheFirst()
{
    const QByteArray other = R"({"token": "t-2", "id": "u8", "nombre": "Beto"})";
    QPointer<QTcpSocket> first;
    LocalServer server([&](QTcpSocket& connection) {
        if (!first)
            first = &connection;
        else
            sends(ok(other))(connection);
    });
    Client client(server.url());
    client.auth->entrar("ana", "s3creta");
    QTRY_COMPARE(server.requests().size(), 1);
    client.auth->entrar("beto", "otra");
    QVERIFY(client.waitForSignals(1));
    QTRY_VERIFY2(!first || first->state() != QAbstractSocket::ConnectedState, "it is given up");
    settle();
    QCOMPARE(client.signalCount(), 1);
    QCOMPARE(client.success.value(0).value(0).toString(), "t-2");
}

/// The answer is there, and nobody has heard of it yet.
void AuthMiraselTest::aLoginThatIsAnsweredIsReplacedToo()
{
    const LocalServer server(sends(ok(kIdentity)));
    Client client(server.url());
    for (int delay = 0; delay < 20; ++delay) {
        client.auth->entrar("ana", "s3creta");
        QTest::qWait(delay / 4);
    }
    client.success.clear();
    client.auth->entrar("ana", "s3creta");
    QVERIFY(client.waitForSignals(1));
    settle();
    QCOMPARE(client.signalCount(), 1);
}

void AuthMiraselTest::aLoginAndACheckRunSideBySide()
{
    const LocalServer server(sends(ok(kIdentity)));
    Client client(server.url());
    client.auth->comprobar();
    client.auth->entrar("ana", "s3creta");
    QVERIFY(client.waitForSignals(2));
    QCOMPARE(client.available.value(0).value(0).toBool(), true);
    QCOMPARE(client.success.size(), 1);
}

void AuthMiraselTest::aFailureMayBeAnsweredByAnotherLogin()
{
    int asked = 0;
    const LocalServer server([&](QTcpSocket& connection) {
        sends(++asked < 3 ? httpAnswer("401 Unauthorized", "") : ok(kIdentity))(connection);
    });
    Client client(server.url());
    QObject::connect(client.auth.get(), &AuthMirasel::loginFallido, client.auth.get(),
                     [&] { client.auth->entrar("ana", "s3creta"); });
    client.auth->entrar("ana", "s3creto");
    QVERIFY(client.waitForSignals(3));
    QCOMPARE(client.failure.size(), 2);
    QCOMPARE(client.success.size(), 1);
}

void AuthMiraselTest::deletingEndsWhatIsUnderWay()
{
    const LocalServer server(keepsSilent());
    Client client(server.url());
    client.auth->comprobar();
    client.auth->entrar("ana", "s3creta");
    QTRY_COMPARE(server.requests().size(), 2);
    client.auth.reset();
    QTRY_COMPARE(server.openConnections(), 0);
    QCOMPARE(client.signalCount(), 0);

    Client brief(server.url());
    brief.auth->comprobar();
    brief.auth->entrar("ana", "s3creta");
    brief.auth.reset();
    settle();
    QCOMPARE(brief.signalCount(), 0);
}

void AuthMiraselTest::aSlotMayDeleteTheObject_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("on a success") << ok(kIdentity);
    QTest::newRow("on a failure") << ok("");
    QTest::newRow("on a refusal") << httpAnswer("401 Unauthorized", "");
    QTest::newRow("on an answer too long") << ok(identityOf(AuthMirasel::kMaxRespuesta * 4));
    QTest::newRow("on no answer") << QByteArray();
}

void AuthMiraselTest::aSlotMayDeleteTheObject()
{
    QFETCH(QByteArray, answer);
    const LocalServer server(sends(answer));
    for (const bool login : {true, false}) {
        Client client(server.url());
        const auto destroy = [&] { client.auth.reset(); };
        QObject::connect(client.auth.get(), &AuthMirasel::disponible, this, destroy);
        QObject::connect(client.auth.get(), &AuthMirasel::loginExitoso, this, destroy);
        QObject::connect(client.auth.get(), &AuthMirasel::loginFallido, this, destroy);
        login ? client.auth->entrar("ana", "s3creta") : client.auth->comprobar();
        QVERIFY(client.waitForSignals(1));
        QVERIFY(!client.auth);
        settle();
        QCOMPARE(client.signalCount(), 1);
    }
}

VELTA_GUILESS_TEST(AuthMiraselTest)

} // namespace AuthMiraselTests

#include "AuthMiraselTest.moc"
