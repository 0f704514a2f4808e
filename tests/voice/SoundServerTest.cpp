#include "voice/SoundServer.h"

#include "support/PulseDaemon.h"

#include <QLocalServer>
#include <QTest>

namespace {

/// A computer that is busy may keep even a server that runs from answering in time.
template <typename Question>
bool eventually(const Question& question)
{
    return QTest::qWaitFor(question, 30000);
}

} // namespace

/// What is asked of a sound server before anybody asks it for a device.
class SoundServerTest : public QObject {
    Q_OBJECT

private slots:
    void whereThereIsNoServerNobodyHasToWait();
    void aServerThatRunsAnswers();
    void theMicrophoneIsTheOneThatTheDesktopChose();
    void aServerThatHangsDoesNotAnswerUntilItGoesOn();
    void aServerThatIsKilledIsNone();
    void aServerThatHangsIsGreetedOnce();
};

void SoundServerTest::whereThereIsNoServerNobodyHasToWait()
{
    PulseDaemon server(PulseDaemon::Sink::None);
    QVERIFY2(server.problem().isEmpty(), qPrintable(server.problem()));
    qputenv("PULSE_SERVER", QFile::encodeName("unix:" + server.filePath("nadie")));
    QVERIFY(eventually([] { return SoundServer::answers(); }));
    QCOMPARE(SoundServer::defaultMicrophone(), QByteArray());
}

void SoundServerTest::aServerThatRunsAnswers()
{
    PulseDaemon server(PulseDaemon::Sink::None);
    QVERIFY2(server.problem().isEmpty(), qPrintable(server.problem()));
    for (int i = 0; i < 3; ++i)
        QVERIFY(eventually([] { return SoundServer::answers(); }));
}

void SoundServerTest::theMicrophoneIsTheOneThatTheDesktopChose()
{
    PulseDaemon server;
    server.loadMicrophone();
    QVERIFY2(server.problem().isEmpty(), qPrintable(server.problem()));
    QVERIFY(eventually([] { return SoundServer::defaultMicrophone() == "mic"; }));
    server.unloadMicrophone();
    // What a sink plays can be recorded too, and is all that is left.
    QVERIFY(eventually([] { return SoundServer::defaultMicrophone() == "ear.monitor"; }));
}

void SoundServerTest::aServerThatHangsDoesNotAnswerUntilItGoesOn()
{
    PulseDaemon server;
    server.loadMicrophone();
    QVERIFY2(server.problem().isEmpty(), qPrintable(server.problem()));
    QVERIFY(eventually([] { return SoundServer::answers(); }));
    server.freeze();
    QVERIFY(!SoundServer::answers());
    QVERIFY(!SoundServer::answers());
    QCOMPARE(SoundServer::defaultMicrophone(), QByteArray());
    server.thaw();
    QVERIFY(eventually([] { return SoundServer::answers(); }));
    QVERIFY(eventually([] { return SoundServer::defaultMicrophone() == "mic"; }));
}

void SoundServerTest::aServerThatIsKilledIsNone()
{
    PulseDaemon server(PulseDaemon::Sink::None);
    QVERIFY2(server.problem().isEmpty(), qPrintable(server.problem()));
    server.freeze();
    QVERIFY(!SoundServer::answers());
    server.kill();
    QVERIFY(eventually([] { return SoundServer::answers(); }));
    QCOMPARE(SoundServer::defaultMicrophone(), QByteArray());
}

void SoundServerTest::aServerThatHangsIsGreetedOnce()
{
    QTemporaryDir dir;
    QLocalServer silent;
    QVERIFY(silent.listen(dir.filePath("socket")));
    qputenv("PULSE_SERVER", QFile::encodeName("unix:" + dir.filePath("socket")));
    for (int i = 0; i < 3; ++i)
        QVERIFY(!SoundServer::answers());
    int greetings = 0;
    while (silent.waitForNewConnection(100)) {
        while (silent.nextPendingConnection())
            ++greetings;
    }
    QCOMPARE(greetings, 1);
}

QTEST_GUILESS_MAIN(SoundServerTest)
#include "SoundServerTest.moc"
