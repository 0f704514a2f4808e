#include "playback/SoundThreads.h"

#include <QCoreApplication>
#include <QThreadPool>
#include <QTimer>

#include <chrono>

#ifdef __linux__

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QList>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <sched.h>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {

/// That of the sound server's own threads.
constexpr int kPriority = 5;

/// Without a rest, in microseconds: the service grants nothing to who may go on for longer than
/// its own bound, and this is what it has unless its administrator decides otherwise.
constexpr int kLongestTurn = 200'000;

constexpr int kPatienceMs = 1000;

/// The threads that have been hurried, for a signal handler; 0 where there is none.
std::array<std::atomic<pid_t>, 8> hurried;

/// One of them never rested.
std::atomic<bool> outran = false;

void restore(pid_t thread)
{
    const sched_param ordinary = {};
    sched_setscheduler(thread, SCHED_OTHER, &ordinary);
}

void restoreAll(int)
{
    const int error = errno;
    outran = true;
    for (const std::atomic<pid_t>& thread : hurried) {
        if (const pid_t id = thread)
            restore(id);
    }
    errno = error;
}

/// The sound server's client library names its thread so, and the synthesiser those of its drivers.
bool carriesSound(const QByteArray& threadName)
{
    return threadName == "threaded-ml" || threadName == "alsa-audio" || threadName == "pulse-audio";
}

QList<pid_t> soundThreads()
{
    QList<pid_t> threads;
    const QDir tasks(u"/proc/self/task"_s);
    for (const QString& id : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name(tasks.filePath(id + "/comm"_L1));
        if (name.open(QIODevice::ReadOnly) && carriesSound(name.readAll().trimmed()))
            threads.append(id.toInt());
    }
    return threads;
}

/// The service that gives threads of ordinary users real-time priority.
class PriorityService {
public:
    int setting(const QString& name, int otherwise) const
    {
        QDBusMessage question = call(u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
        question << u"org.freedesktop.RealtimeKit1"_s << name;
        const QList<QVariant> answer = bus_.call(question, QDBus::Block, kPatienceMs).arguments();
        const int value =
            answer.isEmpty() ? 0 : answer.first().value<QDBusVariant>().variant().toInt();
        return value > 0 ? value : otherwise;
    }

    bool hurry(pid_t thread, int priority) const
    {
        QDBusMessage request = call(u"org.freedesktop.RealtimeKit1"_s, u"MakeThreadRealtime"_s);
        request << static_cast<qulonglong>(thread) << static_cast<uint>(priority);
        return bus_.call(request, QDBus::Block, kPatienceMs).type() == QDBusMessage::ReplyMessage;
    }

private:
    static QDBusMessage call(const QString& interface, const QString& method)
    {
        return QDBusMessage::createMethodCall(u"org.freedesktop.RealtimeKit1"_s,
                                              u"/org/freedesktop/RealtimeKit1"_s, interface,
                                              method);
    }

    QDBusConnection bus_ = QDBusConnection::systemBus();
};

/// Has a thread that never rests stopped before the system stops the program.
void boundTurns(int longest)
{
    struct sigaction action = {};
    action.sa_handler = restoreAll;
    action.sa_flags = SA_RESTART;
    sigaction(SIGXCPU, &action, nullptr);
    rlimit limit = {};
    getrlimit(RLIMIT_RTTIME, &limit);
    limit.rlim_max = std::min(limit.rlim_max, static_cast<rlim_t>(longest));
    limit.rlim_cur = limit.rlim_max / 2;
    setrlimit(RLIMIT_RTTIME, &limit);
}

/// By the program's own right, which users have where an administrator gives it to them.
bool hurryUnaided(pid_t thread)
{
    const sched_param priority = {.sched_priority = kPriority};
    return sched_setscheduler(thread, SCHED_RR | SCHED_RESET_ON_FORK, &priority) == 0;
}

bool hurryAll(const QList<pid_t>& threads)
{
    boundTurns(kLongestTurn);
    if (std::ranges::all_of(threads, hurryUnaided))
        return true;
    const PriorityService service;
    boundTurns(service.setting(u"RTTimeUSecMax"_s, kLongestTurn));
    const int priority = std::min(kPriority, service.setting(u"MaxRealtimePriority"_s, kPriority));
    return std::ranges::all_of(threads,
                               [&](pid_t thread) { return service.hurry(thread, priority); });
}

} // namespace

int SoundThreads::hurry()
{
    QList<pid_t> threads;
    if (!outran)
        threads = soundThreads();
    threads.resize(std::min<qsizetype>(threads.size(), hurried.size()));
    std::ranges::fill(hurried, 0);
    std::ranges::copy(threads, hurried.begin());
    if (threads.isEmpty() || hurryAll(threads))
        return static_cast<int>(threads.size());
    std::ranges::for_each(threads, restore);
    return 0;
}

#else

int SoundThreads::hurry()
{
    return 0;
}

#endif

void SoundThreads::hurrySoon()
{
    QTimer::singleShot(std::chrono::seconds(1), QCoreApplication::instance(),
                       [] { QThreadPool::globalInstance()->start([] { hurry(); }); });
}
