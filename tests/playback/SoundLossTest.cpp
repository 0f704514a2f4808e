#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "support/ContentFixture.h"
#include "support/ProjectBuilder.h"
#include "support/PulseDaemon.h"
#include "support/Tones.h"
#include "support/WavFile.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QProcess>
#include <QTest>

#include <functional>
#include <map>
#include <memory>
#include <utility>

using namespace ProjectBuilder;

// ---- The process that loses its sound ------------------------------------------------------

namespace {

/// What a lost process answers with.
enum Answer { kPlayedOn = 0, kNoServer = 2, kNoBank = 3, kStoodStill = 4 };

struct Loss {
    const char* name;
    std::function<void(PulseDaemon&)> before;
    std::function<void(PulseDaemon&)> during;
};

const QList<Loss>& losses()
{
    const auto nothing = [](PulseDaemon&) {};
    const auto kill = [](PulseDaemon& daemon) { daemon.kill(); };
    const auto unload = [](PulseDaemon& daemon) { daemon.unloadSink(); };
    static const QList<Loss> list{{"no sound server from the start", kill, nothing},
                                  {"no sound card from the start", unload, nothing},
                                  {"the sound server dies", nothing, kill},
                                  {"the sound card is pulled out", nothing, unload},
                                  {"card and server go", unload, kill}};
    return list;
}

/// Two bars of drums and, if wanted, a voice over both.
std::unique_ptr<Project> song(const ContentFixture& files, bool withVoice)
{
    QList<NoteEvent> notes;
    for (int i = 0; i < 16; ++i)
        notes.append(note(36 + i, 0.5 * i, 0.5));
    auto result =
        project({straight(melodyTrack({melody(notes, 0.0, 8.0)}, "gm_bateria"))}, {}, {}, {}, 480);
    if (withVoice) {
        ContentFixture::write(files.filePath("voz.wav"),
                              WavFile::bytes(Tones::sine(440.0, 44100, 44100)));
        result->audioTracks = {voiceTrack({clip("voz.wav")})};
    }
    return result;
}

/// Runs the event loop until the playhead has gone back into the repeat range so many times.
bool awaitWraps(PlaybackEngine& engine, int wraps)
{
    double last = engine.playheadBeat();
    const auto counting =
        QObject::connect(&engine, &PlaybackEngine::playheadChanged, &engine, [&](double beat) {
            wraps -= beat < last ? 1 : 0;
            last = beat;
        });
    const bool done = QTest::qWaitFor([&] { return wraps <= 0; }, 20000);
    QObject::disconnect(counting);
    return done && engine.isPlaying();
}

/// Plays, loses the sound while it plays, plays on, and starts anew without it.
Answer playThrough(const Loss& loss, bool withVoice, PulseDaemon& daemon)
{
    if (!daemon.problem().isEmpty())
        return kNoServer;
    loss.before(daemon);
    ContentFixture files;
    files.instruments().loadBuiltinGmInstruments();
    SoundfontPlayer player(SoundfontPlayer::Mode::Realtime);
    if (!player.loadGmBank(QCoreApplication::applicationDirPath() +
                           "/resources/soundfonts/velta_bank_gm.sf2"))
        return kNoBank;
    const auto project = song(files, withVoice);
    PlaybackEngine engine(&player, nullptr, &files.instruments());
    engine.projectDir = files.filePath(QString());
    engine.setMetronomeEnabled(true);
    engine.setProject(project.get());
    engine.setLoopRange(0.0, 4.0);
    engine.play();
    if (!awaitWraps(engine, 1))
        return kStoodStill;
    loss.during(daemon);
    if (!awaitWraps(engine, 3))
        return kStoodStill;
    engine.pause();
    engine.play();
    return awaitWraps(engine, 1) ? kPlayedOn : kStoodStill;
}

int playThrough(int argc, char** argv)
{
    // As the program does.
    QLoggingCategory::setFilterRules("*.debug=false\n*.info=false\n*.warning=false");
    PulseDaemon daemon;
    const QCoreApplication application(argc, argv);
    const Loss& loss = losses()[QByteArray(argv[2]).toInt()];
    return playThrough(loss, QByteArray(argv[3]) == "voice", daemon);
}

} // namespace

// ---- The test ------------------------------------------------------------------------------

/// What becomes of playback, each time in a process of its own, when the sound goes away. The
/// processes mostly wait, and run side by side.
class SoundLossTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void playbackGoesOnInSilence_data();
    void playbackGoesOnInSilence();

private:
    /// By loss and then by whether there is a voice.
    std::map<std::pair<int, bool>, std::unique_ptr<QProcess>> processes_;
};

void SoundLossTest::initTestCase()
{
    for (int loss = 0; loss < losses().size(); ++loss) {
        for (const bool voice : {false, true}) {
            auto& process = processes_[{loss, voice}] = std::make_unique<QProcess>();
            endWithTest(*process);
            process->start(QCoreApplication::applicationFilePath(),
                           {"--lose", QString::number(loss), voice ? "voice" : "notes"});
        }
    }
}

void SoundLossTest::playbackGoesOnInSilence_data()
{
    QTest::addColumn<int>("loss");
    QTest::addColumn<bool>("voice");
    for (int loss = 0; loss < losses().size(); ++loss) {
        QTest::addRow("%s", losses()[loss].name) << loss << false;
        QTest::addRow("%s, with a voice", losses()[loss].name) << loss << true;
    }
}

void SoundLossTest::playbackGoesOnInSilence()
{
    QFETCH(int, loss);
    QFETCH(bool, voice);
    QProcess& process = *processes_[{loss, voice}];
    QVERIFY2(process.state() == QProcess::NotRunning || process.waitForFinished(60000),
             "It hangs.");
    QCOMPARE(process.readAllStandardError(), QByteArray());
    QCOMPARE(process.readAllStandardOutput(), QByteArray());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), int(kPlayedOn));
}

int main(int argc, char** argv)
{
    if (argc == 4 && QByteArray(argv[1]) == "--lose")
        return playThrough(argc, argv);
    QCoreApplication application(argc, argv);
    SoundLossTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "SoundLossTest.moc"
