#include "support/ForbiddenWriting.h"
#include "support/FullDisk.h"
#include "support/HeardSound.h"
#include "support/OwnProcess.h"
#include "support/ProjectBuilder.h"
#include "support/PulseDaemon.h"
#include "support/Tones.h"
#include "support/WavFile.h"
#include "support/WindowStage.h"
#include "voice/AudioRecorder.h"

#include <QJsonArray>
#include <QTest>

#include <functional>
#include <map>
#include <memory>

using namespace ProjectBuilder;

namespace {

constexpr auto kNoMicrophone = "warn | Grabación | No hay micrófono disponible.";
constexpr auto kCannotOpen = "warn | Grabación | No pude abrir el micrófono.";
constexpr auto kNoRoom =
    "offer | Grabación | No pude guardar la grabación. | Guardar en otro lugar…";
constexpr auto kElsewhere = "askSaveFile | Guardar la grabación | voz_1.wav | WAV (*.wav)";
constexpr auto kPlaysOn = "plays on";

/// A window with a long song and a voice in it, in front of a sound server with a microphone.
class Singer {
public:
    explicit Singer(PulseDaemon& daemon) : daemon_(daemon)
    {
        Project work;
        work.bpm = 120;
        work.tracks = {melodyTrack({melody({note(60, 199.0)}, 0.0, 200.0)})};
        work.audioTracks = {voiceTrack({clip("canto.wav", 0.0, 200.0)})};
        writeBytes(folder() + "/canto.wav", WavFile::bytes(Tones::sine(440.0, 44100, 44100)));
        stage_.saveWork("coplas", work);
        QFile::setPermissions(elsewhere_.path(), QFile::Permissions(0x7777));
    }

    PulseDaemon& daemon() { return daemon_; }

    ScriptedPrompts& prompts() { return stage_.prompts(); }

    QString folder() const { return stage_.home().works() + "/coplas"; }

    /// A file in another folder, where everybody may write.
    QString elsewhere() const { return elsewhere_.filePath("voz.wav"); }

    void open() { stage_.window().openProject("coplas"); }

    /// Begins a take while the song plays.
    void sing()
    {
        stage_.clickRibbon("Grabar");
        singOn();
    }

    bool sings() { return recorder().isRecording(); }

    /// Runs the window until something is said, or for quite a while.
    void listen()
    {
        static_cast<void>(
            QTest::qWaitFor([this] { return !stage_.prompts().calls().isEmpty(); }, 20000));
    }

    void endTake() { stage_.clickRibbon("Grabar"); }

    /// Tries until the server that came back takes part again.
    void singAtLast()
    {
        static_cast<void>(QTest::qWaitFor(
            [this] {
                stage_.clickRibbon("Grabar");
                return sings();
            },
            20000));
        singOn();
        stage_.prompts().takeCalls();
    }

    // ---- What the process says ----

    void tellPrompts()
    {
        for (const QString& call : stage_.prompts().takeCalls())
            OwnProcess::say(call);
    }

    /// Which takes lie whole in the folder of the work, and in the song.
    void tellTakes()
    {
        QStringList takes;
        for (const AudioClip& take : stage_.song().audioTracks[0].clips.mid(1)) {
            const bool isHome = take.audioFilePath != elsewhere();
            const auto wav = WavFile::read(
                bytesOf(isHome ? folder() + '/' + take.audioFilePath : take.audioFilePath));
            const bool whole = wav.ok && wav.samples.size() > 20000;
            takes.append(!whole ? "damaged" : isHome ? take.audioFilePath : "elsewhere");
        }
        OwnProcess::say("takes: " + takes.join(' '));
    }

    void tellPlaying()
    {
        stage_.engine().play(10.0);
        const bool moves =
            QTest::qWaitFor([this] { return stage_.engine().playheadBeat() > 11.0; });
        OwnProcess::say(moves && stage_.engine().isPlaying() ? kPlaysOn : "stands still");
        stage_.engine().pause();
    }

    /// Saves and closes, with whatever the sound server is at.
    int leave()
    {
        OwnProcess::say(stage_.window().saveCurrentProject() ? "saved" : "not saved");
        OwnProcess::say(stage_.window().close() ? "closed" : "not closed");
        const auto saved = stage_.savedWork("coplas")["audioTracks"][0]["clips"].toArray().size();
        OwnProcess::say("clips on disk: " + QString::number(saved));
        tellPrompts();
        stage_.destroyWindow();
        return 0;
    }

private:
    AudioRecorder& recorder() { return *stage_.window().findChild<AudioRecorder*>(); }

    void singOn()
    {
        if (sings() && !hearMore(recorder(), 1.0))
            OwnProcess::say("the microphone is silent");
    }

    PulseDaemon& daemon_;
    QTemporaryDir elsewhere_;
    mutable WindowStage stage_;
};

int serverDies(Singer& singer)
{
    singer.open();
    singer.sing();
    singer.daemon().kill();
    singer.listen();
    OwnProcess::say(singer.sings() ? "sings on" : "take ended");
    singer.tellPrompts();
    singer.tellTakes();
    singer.tellPlaying();
    return singer.leave();
}

int serverComesBack(Singer& singer)
{
    singer.open();
    singer.sing();
    singer.daemon().kill();
    singer.listen();
    singer.tellPrompts();
    singer.daemon().restart();
    singer.tellPlaying();
    singer.singAtLast();
    singer.endTake();
    singer.tellTakes();
    return singer.leave();
}

int microphoneGoes(Singer& singer)
{
    singer.open();
    singer.sing();
    singer.daemon().unloadMicrophone();
    singer.listen();
    OwnProcess::say(singer.sings() ? "sings on" : "take ended");
    singer.tellPrompts();
    singer.tellTakes();
    return singer.leave();
}

int serverHangs(Singer& singer)
{
    singer.open();
    singer.sing();
    singer.daemon().freeze();
    singer.listen();
    OwnProcess::say(singer.sings() ? "sings on" : "take ended");
    singer.tellPrompts();
    singer.tellTakes();
    singer.tellPlaying();
    singer.sing();
    OwnProcess::say(singer.sings() ? "sings on" : "no take");
    singer.tellPrompts();
    return singer.leave();
}

int serverHangsForAMoment(Singer& singer)
{
    singer.open();
    singer.sing();
    singer.daemon().freeze();
    QTest::qWait(500);
    singer.endTake();
    singer.tellPlaying();
    singer.daemon().thaw();
    singer.singAtLast();
    singer.endTake();
    singer.tellTakes();
    return singer.leave();
}

int diskIsFull(Singer& singer)
{
    singer.open();
    singer.sing();
    {
        const FullDisk disk(1000);
        singer.prompts().answerOffer(true);
        singer.prompts().answerPath(singer.elsewhere());
        singer.prompts().answerOffer(false);
        singer.endTake();
    }
    singer.tellPrompts();
    singer.tellTakes();
    return singer.leave();
}

int nothingMayBeWritten(Singer& singer)
{
    singer.open();
    singer.sing();
    {
        const ForbiddenWriting forbidden(singer.folder());
        singer.prompts().answerOffer(true);
        singer.prompts().answerPath(singer.elsewhere());
        singer.endTake();
    }
    singer.tellPrompts();
    singer.tellTakes();
    return singer.leave();
}

int serverHangsFromTheStart(Singer& singer)
{
    singer.daemon().freeze();
    singer.open();
    singer.tellPlaying();
    singer.sing();
    OwnProcess::say(singer.sings() ? "sings on" : "no take");
    singer.tellPrompts();
    return singer.leave();
}

struct Fault {
    const char* name;
    std::function<int(Singer&)> happen;
    QStringList said;
};

const QList<Fault>& faults()
{
    static const QList<Fault> list{
        {"the server dies",
         serverDies,
         {"take ended", kNoMicrophone, "takes: voz_1.wav", kPlaysOn, "saved", "closed",
          "clips on disk: 2"}},
        {"the server comes back",
         serverComesBack,
         {kNoMicrophone, kPlaysOn, "takes: voz_1.wav voz_2.wav", "saved", "closed",
          "clips on disk: 3"}},
        {"the microphone goes",
         microphoneGoes,
         {"take ended", kNoMicrophone, "takes: voz_1.wav", "saved", "closed", "clips on disk: 2"}},
        {"the server hangs",
         serverHangs,
         {"take ended", kNoMicrophone, "takes: voz_1.wav", kPlaysOn, "no take", kCannotOpen,
          "saved", "closed", "clips on disk: 2"}},
        {"the server hangs for a moment",
         serverHangsForAMoment,
         {kPlaysOn, "takes: voz_1.wav voz_2.wav", "saved", "closed", "clips on disk: 3"}},
        {"the server hangs from the start",
         serverHangsFromTheStart,
         {kPlaysOn, "no take", kCannotOpen, "saved", "closed", "clips on disk: 1"}},
        {"the disk is full",
         diskIsFull,
         {kNoRoom, kElsewhere, kNoRoom, "takes: ", "saved", "closed", "clips on disk: 1"}},
        {"nothing may be written",
         nothingMayBeWritten,
         {kNoRoom, kElsewhere, "takes: elsewhere", "saved", "closed", "clips on disk: 2"}}};
    return list;
}

constexpr auto kArgument = "--fault";

int happen(int argc, char** argv)
{
    PulseDaemon daemon;
    daemon.loadMicrophone();
    if (!daemon.problem().isEmpty()) {
        OwnProcess::say(daemon.problem());
        return 2;
    }
    const QApplication application(argc, argv);
    Singer singer(daemon);
    return faults()[QByteArray(argv[2]).toInt()].happen(singer);
}

} // namespace

/// The real window in front of a sound server that goes, hangs or comes back, and with a take for
/// which there is no room, each time in a process of its own. The processes mostly wait, and run
/// side by side.
class TakeFaultsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void theWindowGoesOnAndTheTakeIsKept_data();
    void theWindowGoesOnAndTheTakeIsKept();

private:
    std::map<int, std::unique_ptr<QProcess>> processes_;
};

void TakeFaultsTest::initTestCase()
{
    for (int fault = 0; fault < faults().size(); ++fault) {
        auto& process = processes_[fault] = std::make_unique<QProcess>();
        endWithTest(*process);
        process->start(QCoreApplication::applicationFilePath(),
                       {kArgument, QString::number(fault)});
    }
}

void TakeFaultsTest::theWindowGoesOnAndTheTakeIsKept_data()
{
    QTest::addColumn<int>("fault");
    for (int fault = 0; fault < faults().size(); ++fault)
        QTest::newRow(faults()[fault].name) << fault;
}

void TakeFaultsTest::theWindowGoesOnAndTheTakeIsKept()
{
    QFETCH(int, fault);
    QProcess& process = *processes_[fault];
    const bool ended = process.state() == QProcess::NotRunning || process.waitForFinished(120000);
    const QString said = QString::fromUtf8(process.readAllStandardOutput());
    QVERIFY2(ended, qPrintable("It hangs behind: " + said));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(said.split('\n', Qt::SkipEmptyParts), faults()[fault].said);
    QCOMPARE(process.exitCode(), 0);
}

int main(int argc, char** argv)
{
    if (argc == 3 && QByteArray(argv[1]) == kArgument)
        return happen(argc, argv);
    const QApplication application(argc, argv);
    TakeFaultsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "TakeFaultsTest.moc"
