#pragma once

#include "support/ChildProcess.h"
#include "support/Files.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <csignal>
#include <cstring>
#include <utility>

/// A PulseAudio server of the test's own, which nobody hears: what is played goes to a sink
/// without a card, and can be recorded from it.
///
/// Make it before anything asks for sound: the environment of the process is set so that Qt and
/// ALSA find this server and no other, and Qt looks for one only once.
class PulseDaemon {
public:
    static constexpr int kSampleRate = 44100;
    static constexpr int kChannels = 2;

    /// Sets the environment, and starts the server with a sink unless it is to stay without one.
    enum class Sink { Loaded, None };

    explicit PulseDaemon(Sink sink = Sink::Loaded)
    {
        for (const char* name : {"XDG_RUNTIME_DIR", "HOME", "XDG_CONFIG_HOME", "PULSE_STATE_PATH",
                                 "PULSE_RUNTIME_PATH"})
            qputenv(name, QFile::encodeName(dir_.path()));
        for (const char* name : {"PULSE_SINK", "PULSE_SOURCE", "PULSE_CLIENTCONFIG", "DISPLAY",
                                 "DBUS_SESSION_BUS_ADDRESS", "ALSA_CONFIG_PATH"})
            qunsetenv(name);
        qputenv("PULSE_SERVER", QFile::encodeName("unix:" + socket()));
        writeBytes(dir_.filePath(".asoundrc"), "pcm.!default pulse\nctl.!default pulse\n");
        start();
        if (sink == Sink::Loaded)
            loadSink();
    }

    ~PulseDaemon()
    {
        stop(silence_);
        stop(listener_);
        kill();
    }

    PulseDaemon(const PulseDaemon&) = delete;
    PulseDaemon& operator=(const PulseDaemon&) = delete;

    /// Why there is no sound to be had; empty if all is well.
    QString problem() const { return problem_; }

    /// A file beside the server's own.
    QString filePath(const QString& name) const { return dir_.filePath(name); }

    void loadSink()
    {
        sinkModule_ = control({"load-module", "module-null-sink", "sink_name=ear",
                               "rate=" + QString::number(kSampleRate),
                               "channels=" + QString::number(kChannels), "format=float32le"})
                          .trimmed();
        if (sinkModule_.isEmpty())
            return tell("The sound server has no sink without a card.");
        control({"set-default-sink", "ear"});
        // A sink that plays nothing renders two seconds at a time.
        stop(silence_);
        silence_.start("pacat",
                       {"--playback", "--raw", "--device=ear", "--latency-msec=20", "/dev/zero"});
    }

    /// As if the sound card were pulled out.
    void unloadSink() { control({"unload-module", sinkModule_}); }

    /// As if the server crashed.
    void kill() { stop(server_); }

    /// As if the server hung: it keeps its clients and answers none of them.
    void freeze() { ::kill(static_cast<pid_t>(server_.processId()), SIGSTOP); }

    void thaw() { ::kill(static_cast<pid_t>(server_.processId()), SIGCONT); }

    /// A server that was killed comes back, as the system sees to.
    void restart()
    {
        QFile::remove(socket());
        start();
        microphoneModules_.clear();
        loadSink();
        loadMicrophone();
    }

    /// Gives the server a microphone that hears a steady tone of 450 Hz: a room where it sounds.
    void loadMicrophone()
    {
        const QString rate = "rate=" + QString::number(kSampleRate);
        for (const QStringList& module :
             {QStringList{"module-null-sink", "sink_name=room", rate, "channels=1"},
              QStringList{"module-sine", "sink=room", "frequency=450"},
              QStringList{"module-remap-source", "source_name=mic", "master=room.monitor"}})
            microphoneModules_.prepend(control(QStringList{"load-module"} + module).trimmed());
        control({"set-default-source", "mic"});
        // A room to which nobody listens closely renders two seconds at a time.
        stop(listener_);
        listener_.start("parec", {"--raw", "--device=mic", "--latency-msec=20"});
    }

    /// As if the microphone were pulled out.
    void unloadMicrophone()
    {
        for (const QString& module : std::exchange(microphoneModules_, QStringList()))
            control({"unload-module", module});
    }

    /// Where what is played can be recorded.
    static QString monitor() { return QStringLiteral("ear.monitor"); }

private:
    QString socket() const { return dir_.filePath("socket"); }

    static void stop(QProcess& process)
    {
        process.kill();
        process.waitForFinished();
    }

    void tell(const QString& problem)
    {
        if (problem_.isEmpty())
            problem_ = problem;
    }

    void start()
    {
        endWithTest(server_);
        endWithTest(silence_);
        endWithTest(listener_);
        listener_.setStandardOutputFile(QProcess::nullDevice());
        server_.setProcessChannelMode(QProcess::MergedChannels);
        server_.start("pulseaudio",
                      {"-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
                       "--disable-shm=yes", "--log-target=stderr", "-L",
                       "module-native-protocol-unix auth-anonymous=1 socket=" + socket()});
        if (!server_.waitForStarted())
            return tell("The package pulseaudio is needed: " + server_.errorString());
        QDeadlineTimer patience(15000);
        while (!QFile::exists(socket()) && server_.state() == QProcess::Running &&
               !patience.hasExpired())
            server_.waitForReadyRead(20);
        if (!QFile::exists(socket()))
            tell("The sound server did not start: " + server_.readAll());
    }

    /// What pactl answers.
    QString control(const QStringList& command)
    {
        QProcess control;
        control.start("pactl", command);
        if (!control.waitForStarted())
            tell("The package pulseaudio-utils is needed: " + control.errorString());
        else if (!control.waitForFinished(15000) || control.exitCode() != 0)
            tell("pactl " + command.join(' ') + ": " + control.readAllStandardError());
        return QString::fromUtf8(control.readAllStandardOutput());
    }

    QTemporaryDir dir_;
    QProcess server_;
    QProcess silence_;
    QProcess listener_;
    QString sinkModule_;
    QStringList microphoneModules_;
    QString problem_;
};

/// What is played on a PulseDaemon, from the construction on. Its clock is the number of its
/// samples.
class MonitorRecording {
public:
    MonitorRecording()
    {
        endWithTest(recorder_);
        recorder_.start("parec", {"--device=" + PulseDaemon::monitor(), "--raw",
                                  "--format=float32le", "--latency-msec=100",
                                  "--rate=" + QString::number(PulseDaemon::kSampleRate),
                                  "--channels=" + QString::number(PulseDaemon::kChannels)});
        runs_ = recorder_.waitForStarted() && await(0.05);
    }

    ~MonitorRecording()
    {
        recorder_.kill();
        recorder_.waitForFinished();
    }

    MonitorRecording(const MonitorRecording&) = delete;
    MonitorRecording& operator=(const MonitorRecording&) = delete;

    /// Whether anything is recorded at all.
    bool runs() const { return runs_; }

    /// Forgets what was recorded.
    void clear()
    {
        take();
        bytes_.remove(0, bytes_.size() - bytes_.size() % kFrame);
    }

    /// Runs the event loop until so many seconds more are recorded; false if they do not come.
    bool await(double seconds)
    {
        const double end = this->seconds() + seconds;
        QEventLoop loop;
        QObject::connect(&recorder_, &QProcess::readyReadStandardOutput, &loop, [&] {
            if (this->seconds() >= end)
                loop.quit();
        });
        QTimer::singleShot(kPatienceMs, &loop, &QEventLoop::quit);
        loop.exec();
        return this->seconds() >= end;
    }

    /// The left side of what is recorded.
    QList<float> samples()
    {
        take();
        QList<float> left(bytes_.size() / kFrame);
        for (qsizetype i = 0; i < left.size(); ++i)
            std::memcpy(&left[i], bytes_.constData() + i * kFrame, sizeof(float));
        return left;
    }

private:
    static constexpr int kPatienceMs = 20000;
    static constexpr qsizetype kFrame = PulseDaemon::kChannels * sizeof(float);

    void take() { bytes_ += recorder_.readAllStandardOutput(); }

    double seconds()
    {
        take();
        return static_cast<double>(bytes_.size() / kFrame) / PulseDaemon::kSampleRate;
    }

    QProcess recorder_;
    QByteArray bytes_;
    bool runs_ = false;
};
