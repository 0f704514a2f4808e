#include "voice/SoundServer.h"

#include "support/PulseDaemon.h"

#include <QLocalServer>
#include <QTest>

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
    QVERIFY(SoundServer::answers());
    QCOMPARE(SoundServer::defaultMicrophone(), QByteArray());
}

void SoundServerTest::aServerThatRunsAnswers()
{
    PulseDaemon server(PulseDaemon::Sink::None);
    QVERIFY2(server.problem().isEmpty(), qPrintable(server.problem()));
    for (int i = 0; i < 3; ++i)
        QVERIFY(SoundServer::answers());
}

void SoundServerTest::theMicrophoneIsTheOneThatTheDesktopChose()
{
    PulseDaemon server;
    server.loadMicrophone();
    QVERIFY2(server.problem().isEmpty(), qPrintable(server.problem()));
    QCOMPARE(SoundServer::defaultMicrophone(), QByteArray("mic"));
    server.unloadMicrophone();
    // What a sink plays can be recorded too, and is all that is left.
    QCOMPARE(SoundServer::defaultMicrophone(), QByteArray("ear.monitor"));
}

void SoundServerTest::aServerThatHangsDoesNotAnswerUntilItGoesOn()
{
    PulseDaemon server;
    server.loadMicrophone();
    QVERIFY2(server.problem().isEmpty(), qPrintable(server.problem()));
    QVERIFY(SoundServer::answers());
    server.freeze();
    QVERIFY(!SoundServer::answers());
    QVERIFY(!SoundServer::answers());
    QCOMPARE(SoundServer::defaultMicrophone(), QByteArray());
    server.thaw();
    QTRY_VERIFY(SoundServer::answers());
    QCOMPARE(SoundServer::defaultMicrophone(), QByteArray("mic"));
}

void SoundServerTest::aServerThatIsKilledIsNone()
{
    PulseDaemon server(PulseDaemon::Sink::None);
    QVERIFY2(server.problem().isEmpty(), qPrintable(server.problem()));
    server.freeze();
    QVERIFY(!SoundServer::answers());
    server.kill();
    QTRY_VERIFY(SoundServer::answers());
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
