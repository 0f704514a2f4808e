#include "playback/SoundThreads.h"

#include "support/ChildProcess.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QProcess>
#include <QTest>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <functional>
#include <linux/capability.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr int kRoundRobin = SCHED_RR | SCHED_RESET_ON_FORK;

/// A thread that bears a name and waits until it dies.
class NamedThread {
public:
    explicit NamedThread(const char* name)
    {
        pthread_setname_np(thread_.native_handle(), name);
        runs_.acquire();
    }

    ~NamedThread()
    {
        mayEnd_.release();
        thread_.join();
    }

    pid_t id() const { return id_; }

    int policy() const { return sched_getscheduler(id_); }

private:
    std::atomic<pid_t> id_ = 0;
    std::binary_semaphore runs_{0};
    std::binary_semaphore mayEnd_{0};
    std::thread thread_{[this] {
        id_ = gettid();
        runs_.release();
        mayEnd_.acquire();
    }};
};

/// The calling thread may hurry none by its own right any more.
void giveUpTheRight()
{
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_RTPRIO, &none);
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> sets = {};
    syscall(SYS_capget, &header, sets.data());
    sets[0].effective &= ~(1U << CAP_SYS_NICE);
    syscall(SYS_capset, &header, sets.data());
}

/// Whether a thread of this process may go first without anybody's help.
bool hasTheRight()
{
    bool has = false;
    std::thread([&has] {
        const sched_param priority = {.sched_priority = 5};
        has = sched_setscheduler(0, kRoundRobin, &priority) == 0;
    }).join();
    return has;
}

/// The service of the desktop, of which a test decides what it grants.
class FakeService : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.RealtimeKit1")
    Q_PROPERTY(qlonglong RTTimeUSecMax MEMBER longestTurn)
    Q_PROPERTY(int MaxRealtimePriority MEMBER highest)

public:
    qlonglong longestTurn = 150'000;
    int highest = 3;
    QList<qulonglong> refused;
    QList<std::pair<qulonglong, uint>> asked;
    rlimit limit = {};

public slots:

    void MakeThreadRealtime(qulonglong thread, uint priority)
    {
        asked.append({thread, priority});
        getrlimit(RLIMIT_RTTIME, &limit);
        if (refused.contains(thread))
            sendErrorReply(QDBusError::AccessDenied, "no");
    }
};

} // namespace

class SoundThreadsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void threadsOfTheSoundLibrariesAreHurriedAndNoOthers();
    void whoHasTheRightNeedsNoService();
    void theServiceIsAskedForNoMoreThanItGrants();
    void allAreHurriedOrNone();
    void withoutTheServiceNothingIsHurried();
    void withoutThreadsOfSoundNobodyIsAsked();
    void aDeviceThatOpensIsFoundInASecond();
    /// The last: what this one proves lasts as long as the process.
    void aThreadThatNeverRestsIsOrdinaryFromThenOn();

private:
    /// What hurry() answers on a thread of its own, while this one serves the bus.
    static int hurriedAfter(const std::function<void()>& preparation);

    QProcess bus_;
    QString address_;
    FakeService* service_ = nullptr;
};

void SoundThreadsTest::initTestCase()
{
    endWithTest(bus_);
    bus_.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
    QVERIFY2(bus_.waitForReadyRead(15000), "The package dbus-daemon is needed.");
    address_ = bus_.readLine().trimmed();
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address_.toUtf8());
}

void SoundThreadsTest::init()
{
    service_ = new FakeService;
    QDBusConnection bus = QDBusConnection::connectToBus(address_, "service");
    QVERIFY(
        bus.registerObject("/org/freedesktop/RealtimeKit1", service_,
                           QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties));
    QVERIFY(bus.registerService("org.freedesktop.RealtimeKit1"));
}

void SoundThreadsTest::cleanup()
{
    QDBusConnection::disconnectFromBus("service");
    delete service_;
}

int SoundThreadsTest::hurriedAfter(const std::function<void()>& preparation)
{
    std::atomic<int> answer = -1;
    std::thread asking([&] {
        preparation();
        answer = SoundThreads::hurry();
    });
    while (answer < 0)
        QTest::qWait(5);
    asking.join();
    return answer;
}

void SoundThreadsTest::threadsOfTheSoundLibrariesAreHurriedAndNoOthers()
{
    const NamedThread client("threaded-ml");
    const NamedThread other("Thread (pooled)");
    const NamedThread driver("alsa-audio");
    QCOMPARE(hurriedAfter(giveUpTheRight), 2);
    QList<qulonglong> threads;
    for (const auto& [thread, priority] : service_->asked)
        threads.append(thread);
    std::ranges::sort(threads);
    QList<qulonglong> expected = {static_cast<qulonglong>(client.id()),
                                  static_cast<qulonglong>(driver.id())};
    std::ranges::sort(expected);
    QCOMPARE(threads, expected);
    QCOMPARE(other.policy(), SCHED_OTHER);
}

void SoundThreadsTest::whoHasTheRightNeedsNoService()
{
    const NamedThread client("threaded-ml");
    const NamedThread other("velta");
    QCOMPARE(hurriedAfter([] {}), 1);
    QCOMPARE(service_->asked.isEmpty(), hasTheRight());
    QCOMPARE(client.policy(), hasTheRight() ? kRoundRobin : SCHED_OTHER);
    QCOMPARE(other.policy(), SCHED_OTHER);
}

void SoundThreadsTest::theServiceIsAskedForNoMoreThanItGrants()
{
    const NamedThread driver("pulse-audio");
    QCOMPARE(hurriedAfter(giveUpTheRight), 1);
    QCOMPARE(service_->asked, (QList<std::pair<qulonglong, uint>>{{driver.id(), 3U}}));
    QCOMPARE(service_->limit.rlim_max, static_cast<rlim_t>(150'000));
    // The warning comes before the end.
    QCOMPARE(service_->limit.rlim_cur, static_cast<rlim_t>(75'000));
}

void SoundThreadsTest::allAreHurriedOrNone()
{
    const NamedThread client("threaded-ml");
    const NamedThread driver("alsa-audio");
    service_->refused = {static_cast<qulonglong>(std::max(client.id(), driver.id()))};
    QCOMPARE(hurriedAfter(giveUpTheRight), 0);
    QCOMPARE(client.policy(), SCHED_OTHER);
    QCOMPARE(driver.policy(), SCHED_OTHER);
}

void SoundThreadsTest::withoutTheServiceNothingIsHurried()
{
    QVERIFY(QDBusConnection("service").unregisterService("org.freedesktop.RealtimeKit1"));
    const NamedThread client("threaded-ml");
    QCOMPARE(hurriedAfter(giveUpTheRight), 0);
    QCOMPARE(client.policy(), SCHED_OTHER);
}

void SoundThreadsTest::withoutThreadsOfSoundNobodyIsAsked()
{
    const NamedThread other("alsa-audio-not");
    QCOMPARE(hurriedAfter(giveUpTheRight), 0);
    QVERIFY(service_->asked.isEmpty());
}

void SoundThreadsTest::aDeviceThatOpensIsFoundInASecond()
{
    SoundThreads::hurrySoon();
    const NamedThread client("threaded-ml");
    QTRY_VERIFY_WITH_TIMEOUT(client.policy() == kRoundRobin || !service_->asked.isEmpty(), 30000);
}

void SoundThreadsTest::aThreadThatNeverRestsIsOrdinaryFromThenOn()
{
    const NamedThread client("threaded-ml");
    QCOMPARE(hurriedAfter(giveUpTheRight), 1);
    // The service's part, where this process may play it; the system's signal to who never rests.
    const sched_param priority = {.sched_priority = 3};
    sched_setscheduler(client.id(), kRoundRobin, &priority);
    QCOMPARE(client.policy(), hasTheRight() ? kRoundRobin : SCHED_OTHER);
    QCOMPARE(std::raise(SIGXCPU), 0);
    QCOMPARE(client.policy(), SCHED_OTHER);
    service_->asked.clear();
    QCOMPARE(hurriedAfter([] {}), 0);
    QCOMPARE(client.policy(), SCHED_OTHER);
    QVERIFY(service_->asked.isEmpty());
}

QTEST_GUILESS_MAIN(SoundThreadsTest)
#include "SoundThreadsTest.moc"
