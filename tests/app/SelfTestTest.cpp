#include "support/Files.h"
#include "support/Installation.h"

#include <QRegularExpression>

#include <sndfile.h>

namespace {

const QString kCarnavalito = "folklore_carnavalito";

/// A rhythm of one layer, on which the song of the self-test is composed instead.
QByteArray carnavalitoOf(const QByteArray& layer, const QByteArray& notes)
{
    return R"({"rhythm": {"id": "folklore_carnavalito", "timeSignature": {"numerator": 2}},
               "loopLayers": [{"id": "capa", "rhythmId": "folklore_carnavalito", "label": "Capa")" +
           layer + R"(}], "loopVariants": [{"layerId": "capa", "durationBars": 4, "notes": [)" +
           notes + "]}]}";
}

struct AudioFile {
    sf_count_t frames = 0;
    int sampleRate = 0;
    int channels = 0;
    float peak = 0.0F;
};

AudioFile read(const QString& path)
{
    SF_INFO info{};
    SNDFILE* file = sf_open(qUtf8Printable(path), SFM_READ, &info);
    if (!file)
        return {};
    std::vector<float> samples(static_cast<std::size_t>(info.frames * info.channels));
    AudioFile audio{.frames = sf_readf_float(file, samples.data(), info.frames),
                    .sampleRate = info.samplerate,
                    .channels = info.channels};
    sf_close(file);
    for (const float sample : samples)
        audio.peak = std::max(audio.peak, std::abs(sample));
    return audio;
}

} // namespace

class SelfTestTest : public QObject {
    Q_OBJECT

private slots:
    void aSoundInstallationPasses();
    void runningTwiceGivesTheSameBytes();
    void filesHaveTheLengthOfTheSong();
    void withoutAFolderItWritesToTheTemporaryFolder();
    void whateverFollowsIsTheFolder();
    void theSelfTestWinsOverOpening();
    void filesOfAnEarlierRunAreOverwritten();
    void nothingButTheReportReachesTheStreams();
    void aDisplayThatDoesNotAnswerIsNotNeeded();
    void withoutResourcesItFailsAndWritesNothing();
    void oneRhythmIsNotEnough();
    void theReferenceRhythmAndItsGrooveAreNeeded_data();
    void theReferenceRhythmAndItsGrooveAreNeeded();
    void aMissingBankIsSilentAndNoFailure();
    void aLayerThatDoesNotFollowTheChordsFails_data();
    void aLayerThatDoesNotFollowTheChordsFails();
    void everyLayerIsExamined();
    void anUnwritableFolderFailsAtTheFirstExport();
    void resourcesOfTheCurrentFolderAreNotLookedAt();
};

void SelfTestTest::aSoundInstallationPasses()
{
    const Installation velta;
    const Installation::Run run = velta.run({"--selftest", "out"});
    const QStringList lines = run.lines();
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(lines.size(), 7);
    static const QRegularExpression counts("^estilos: [1-9]\\d*, ritmos: ([2-9]|[1-9]\\d+)$");
    QVERIFY2(counts.match(lines[0]).hasMatch(), qPrintable(lines[0]));
    QCOMPARE(lines[1], "acompañamiento sigue los acordes: OK");
    QCOMPARE(lines[2], "acordes silenciados sin tocar el arreglo: OK");
    const auto sizeOf = [&](const char* name) { return QFileInfo(velta.filePath(name)).size(); };
    QCOMPARE(lines[3], QString("MIDI OK: %1 bytes").arg(sizeOf("out/selftest.mid")));
    QCOMPARE(lines[4], QString("WAV OK: %1 bytes").arg(sizeOf("out/selftest.wav")));
    QCOMPARE(lines[5], QString("MP3 OK: %1 bytes").arg(sizeOf("out/selftest.mp3")));
    QCOMPARE(lines[6], "roundtrip JSON: OK");
}

void SelfTestTest::runningTwiceGivesTheSameBytes()
{
    const Installation velta;
    velta.run({"--selftest", "first"});
    velta.run({"--selftest", "second"});
    for (const char* name : {"selftest.mid", "selftest.wav", "selftest.mp3"}) {
        const QByteArray first = bytesOf(velta.filePath(QString("first/") + name));
        QVERIFY(!first.isEmpty());
        QVERIFY2(first == bytesOf(velta.filePath(QString("second/") + name)), name);
    }
}

void SelfTestTest::filesHaveTheLengthOfTheSong()
{
    const Installation velta;
    velta.run({"--selftest", "out"});
    // Eight beats at 112 quarter notes a minute, and two seconds of tail.
    const auto expected = static_cast<sf_count_t>(8 * 60 * 44100.0 / 112) + 88200;

    const AudioFile wav = read(velta.filePath("out/selftest.wav"));
    QCOMPARE(wav.frames, expected);
    QCOMPARE(wav.sampleRate, 44100);
    QCOMPARE(wav.channels, 2);
    QVERIFY(wav.peak > 0.05F);

    // An MP3 is longer by the delay and the padding of its encoder, some frames of 1152 each.
    const AudioFile mp3 = read(velta.filePath("out/selftest.mp3"));
    QCOMPARE(mp3.sampleRate, 44100);
    QCOMPARE(mp3.channels, 2);
    QVERIFY(mp3.frames >= expected && mp3.frames < expected + 4 * 1152);
    QVERIFY(mp3.peak > 0.05F);
}

void SelfTestTest::withoutAFolderItWritesToTheTemporaryFolder()
{
    const Installation velta;
    QCOMPARE(velta.run({"--selftest"}).exitCode, 0);
    QVERIFY(QFile::exists(velta.filePath("velta_selftest/selftest.mp3")));
}

void SelfTestTest::whateverFollowsIsTheFolder()
{
    const Installation velta;
    QCOMPARE(velta.run({"--selftest", "--open"}).exitCode, 0);
    QVERIFY(QFile::exists(velta.filePath("--open/selftest.mp3")));
}

void SelfTestTest::theSelfTestWinsOverOpening()
{
    const Installation velta;
    const Installation::Run run = velta.run({"--open", "tarea", "--selftest", "out"});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.lines().last(), "roundtrip JSON: OK");
}

void SelfTestTest::filesOfAnEarlierRunAreOverwritten()
{
    const Installation velta;
    QDir().mkpath(velta.filePath("out"));
    for (const char* name : {"out/selftest.mid", "out/selftest.wav", "out/selftest.mp3"}) {
        QFile old(velta.filePath(name));
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(4 << 20, 'x'));
    }
    QCOMPARE(velta.run({"--selftest", "out"}).exitCode, 0);
    for (const char* name : {"out/selftest.mid", "out/selftest.wav", "out/selftest.mp3"})
        QVERIFY(!bytesOf(velta.filePath(name)).contains("xxxxxxxxxxxxxxxx"));
}

void SelfTestTest::nothingButTheReportReachesTheStreams()
{
    const Installation velta;
    QCOMPARE(velta.run({"--selftest", "out"}).errors, QString());
}

void SelfTestTest::aDisplayThatDoesNotAnswerIsNotNeeded()
{
    const Installation velta;
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
        const Installation::Run run = velta.run({"--selftest", "out"}, {{name, ":9999"}});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.errors, QString());
    }
}

void SelfTestTest::withoutResourcesItFailsAndWritesNothing()
{
    const Installation velta(Installation::Resources::None);
    const Installation::Run run = velta.run({"--selftest", "out"});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.output, "estilos: 0, ritmos: 0\n"
                         "FALLO: no se cargaron los ritmos preinstalados\n");
    QVERIFY(!QFile::exists(velta.filePath("out")));
    QVERIFY(!QFile::exists(velta.filePath("resources")));
}

void SelfTestTest::oneRhythmIsNotEnough()
{
    const Installation velta;
    QDir installed(velta.filePath("resources/loops/installed"));
    for (const QString& name : installed.entryList(QDir::Files)) {
        if (!name.startsWith(kCarnavalito))
            QVERIFY(installed.remove(name));
    }
    const Installation::Run run = velta.run({"--selftest", "out"});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.output, "estilos: 1, ritmos: 1\n"
                         "FALLO: no se cargaron los ritmos preinstalados\n");
}

void SelfTestTest::theReferenceRhythmAndItsGrooveAreNeeded_data()
{
    QTest::addColumn<QString>("removed");
    QTest::newRow("the rhythm is missing") << "installed/folklore_carnavalito.content.json";
    QTest::newRow("the groove is missing") << "grooves/folklore_carnavalito.groove.json";
}

void SelfTestTest::theReferenceRhythmAndItsGrooveAreNeeded()
{
    QFETCH(QString, removed);
    const Installation velta;
    QVERIFY(QFile::remove(velta.filePath("resources/loops/" + removed)));
    const Installation::Run run = velta.run({"--selftest", "out"});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.lines().last(), "FALLO: falta el Carnavalito o su groove");
    QVERIFY(!QFile::exists(velta.filePath("out")));
}

void SelfTestTest::aMissingBankIsSilentAndNoFailure()
{
    const Installation velta;
    QVERIFY(QFile::remove(velta.filePath("resources/soundfonts/velta_bank_gm.sf2")));
    const Installation::Run run = velta.run({"--selftest", "out"});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.lines().last(), "roundtrip JSON: OK");
    QCOMPARE(run.errors, QString());
    const AudioFile wav = read(velta.filePath("out/selftest.wav"));
    QCOMPARE(wav.frames, static_cast<sf_count_t>(8 * 60 * 44100.0 / 112) + 88200);
    QCOMPARE(wav.peak, 0.0F);
}

void SelfTestTest::aLayerThatDoesNotFollowTheChordsFails_data()
{
    QTest::addColumn<QByteArray>("layer");
    QTest::addColumn<QByteArray>("notes");
    QTest::addColumn<QString>("line");

    const QByteArray pitched = R"(, "pitched": true)";
    QTest::newRow("a layer without a note")
        << pitched << QByteArray() << "FALLO acompañamiento: «Capa» no sonó ninguna nota";
    // Over the tonic of A Minor a written C# sounds as A#, outside the key.
    QTest::newRow("a chromatic note leaves the key")
        << pitched << QByteArray(R"({"pitch": 61}, {"pitch": 60, "startBeat": 2.5})")
        << "FALLO armonía: «Capa» tocó una nota fuera de la tonalidad (70)";
    QTest::newRow("two silent bars sound alike")
        << pitched << QByteArray(R"({"pitch": 60, "startBeat": 5})")
        << "FALLO armonía: «Capa» toca lo mismo en el i que en el iv — no sigue los acordes";
    // F over degree i is D; C over degree iv is D too.
    QTest::newRow("the same notes on both chords")
        << pitched << QByteArray(R"({"pitch": 65}, {"pitch": 60, "startBeat": 2.5})")
        << "FALLO armonía: «Capa» toca lo mismo en el i que en el iv — no sigue los acordes";
}

void SelfTestTest::aLayerThatDoesNotFollowTheChordsFails()
{
    QFETCH(QByteArray, layer);
    QFETCH(QByteArray, notes);
    QFETCH(QString, line);
    const Installation velta;
    QFile package(velta.rhythmPath(kCarnavalito));
    QVERIFY(package.open(QIODevice::WriteOnly | QIODevice::Truncate));
    package.write(carnavalitoOf(layer, notes));
    package.close();
    const Installation::Run run = velta.run({"--selftest", "out"});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.lines().last(), line);
    QVERIFY(!run.output.contains("acompañamiento sigue los acordes: OK"));
    QVERIFY(!QFile::exists(velta.filePath("out")));
}

void SelfTestTest::everyLayerIsExamined()
{
    const Installation velta;
    QFile package(velta.rhythmPath(kCarnavalito));
    QVERIFY(package.open(QIODevice::WriteOnly | QIODevice::Truncate));
    package.write(R"({"rhythm": {"id": "folklore_carnavalito", "timeSignature": {"numerator": 2}},
        "loopLayers": [{"id": "a", "rhythmId": "folklore_carnavalito", "label": "Uno"},
                       {"id": "b", "rhythmId": "folklore_carnavalito", "label": "Dos"}]})");
    package.close();
    const QStringList lines = velta.run({"--selftest", "out"}).lines();
    QCOMPARE(lines.mid(1), (QStringList{"FALLO acompañamiento: «Uno» no sonó ninguna nota",
                                        "FALLO acompañamiento: «Dos» no sonó ninguna nota"}));
}

void SelfTestTest::anUnwritableFolderFailsAtTheFirstExport()
{
    const Installation velta;
    // A file stands where the folder would be: not even root can make it.
    const Installation::Run run = velta.run({"--selftest", velta.filePath("velta")});
    QCOMPARE(run.exitCode, 1);
    QVERIFY(run.lines().last().startsWith("FALLO MIDI: "));
    QVERIFY(run.lines().last().size() > QString("FALLO MIDI: ").size());
}

void SelfTestTest::resourcesOfTheCurrentFolderAreNotLookedAt()
{
    const Installation elsewhere;
    const Installation velta(Installation::Resources::None);
    QProcess process;
    process.setProcessEnvironment(velta.bareEnvironment());
    process.setWorkingDirectory(elsewhere.filePath(""));
    process.start(velta.filePath("velta"), {"--selftest", "out"});
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(process.readAllStandardOutput().startsWith("estilos: 0, ritmos: 0\n"));
}

QTEST_GUILESS_MAIN(SelfTestTest)
#include "SelfTestTest.moc"
