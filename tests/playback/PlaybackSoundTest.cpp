#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "support/ContentFixture.h"
#include "support/ProjectBuilder.h"
#include "support/PulseDaemon.h"
#include "support/Tones.h"
#include "support/WavFile.h"

#include <QCoreApplication>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>

using namespace ProjectBuilder;

namespace {

constexpr int kRate = PulseDaemon::kSampleRate;

/// A wood block of the drum kit: a stroke that is short and sets in at once.
constexpr int kWoodBlock = 76;

/// The beeps of a voice, where a wood block has nothing.
constexpr double kBeepHz = 9000.0;

/// What a stroke may be off its beat, in seconds: the clock ticks every 8 ms, and the sound card
/// is served in blocks.
constexpr double kTolerance = 0.030;

/// What notes and voice may be apart, in seconds: their ways to the sound card differ in length.
constexpr double kApart = 0.3;

QString realBank()
{
    return QCoreApplication::applicationDirPath() + "/resources/soundfonts/velta_bank_gm.sf2";
}

// ---- Songs ---------------------------------------------------------------------------------

Track strokes(const QList<double>& beats)
{
    QList<NoteEvent> notes;
    for (const double beat : beats)
        notes.append(note(kWoodBlock, beat, 0.1, 110));
    return straight(melodyTrack({melody(notes, 0.0, 16.0)}, "gm_bateria"));
}

Track flute(int pitch)
{
    return straight(melodyTrack({melody({note(pitch, 0.0, 4.0)})}, "gm_flauta"));
}

std::unique_ptr<Project> songAt(int bpm, const QList<Track>& tracks,
                                const TimeSignature& meter = {})
{
    return project(tracks, {}, meter, {}, bpm);
}

/// A voice of beeps of 1/20 s, one at each of these seconds.
QByteArray beepingVoice(const QList<double>& seconds)
{
    QList<float> samples = Tones::silence(static_cast<qsizetype>((seconds.last() + 0.1) * kRate));
    const QList<float> beep = Tones::sine(kBeepHz, kRate, kRate / 20, 0.5);
    for (const double second : seconds)
        std::copy(beep.cbegin(), beep.cend(),
                  samples.begin() + static_cast<qsizetype>(second * kRate));
    return WavFile::bytes(samples);
}

// ---- What is heard -------------------------------------------------------------------------

double hzOf(int pitch)
{
    return 440.0 * std::exp2((pitch - 69) / 12.0);
}

QList<float> slice(const QList<float>& samples, double second, double length)
{
    return samples.mid(static_cast<qsizetype>(second * kRate),
                       static_cast<qsizetype>(length * kRate));
}

float peak(const QList<float>& samples)
{
    float most = 0.0F;
    for (const float sample : samples)
        most = std::max(most, std::abs(sample));
    return most;
}

/// In seconds; the end where there is none.
double firstSound(const QList<float>& samples)
{
    const auto first = std::find_if(samples.cbegin(), samples.cend(),
                                    [](float sample) { return std::abs(sample) > 0.02F; });
    return static_cast<double>(first - samples.cbegin()) / kRate;
}

/// Peak of the quietest stretch of this length beside that of the loudest; 0 where there is none.
double quietestPart(const QList<float>& samples, double length)
{
    QList<float> peaks;
    const auto size = static_cast<qsizetype>(length * kRate);
    for (qsizetype i = 0; i + size <= samples.size(); i += size)
        peaks.append(peak(samples.mid(i, size)));
    if (peaks.isEmpty())
        return 0.0;
    const auto [least, most] = std::ranges::minmax(peaks);
    return static_cast<double>(least / most);
}

/// Where sounds set in, in seconds: each rises out of what was heard just before it.
QList<double> onsets(const QList<float>& samples)
{
    constexpr qsizetype kMillisecond = kRate / 1000;
    constexpr int kBefore = 20;
    constexpr int kShortest = 60;
    QList<float> peaks;
    for (qsizetype i = 0; i + kMillisecond <= samples.size(); i += kMillisecond)
        peaks.append(peak(samples.mid(i, kMillisecond)));
    QList<double> found;
    qsizetype last = -kShortest;
    for (qsizetype i = kBefore; i < peaks.size(); ++i) {
        const float before = *std::max_element(peaks.cbegin() + i - kBefore, peaks.cbegin() + i);
        if (peaks[i] < 0.01F || peaks[i] < 3.0F * before || i - last < kShortest)
            continue;
        found.append(static_cast<double>(i * kMillisecond) / kRate);
        last = i;
    }
    return found;
}

struct Heard {
    QList<double> strokes;
    QList<double> beeps;
};

/// The onsets, told apart by what follows each.
Heard strokesAndBeeps(const QList<float>& samples)
{
    Heard heard;
    for (const double onset : onsets(samples)) {
        const bool beep = Tones::strengthAt(slice(samples, onset, 0.03), kRate, kBeepHz) > 0.05;
        (beep ? heard.beeps : heard.strokes).append(onset);
    }
    return heard;
}

QList<double> scaled(QList<double> values, double factor)
{
    for (double& value : values)
        value *= factor;
    return values;
}

QString written(const QList<double>& seconds)
{
    QStringList words;
    for (const double second : seconds)
        words.append(QString::number(second, 'f', 3));
    return words.join(' ');
}

/// Whether the first sound of each bar is louder than all others.
bool accentsAreLouder(const QList<float>& samples, const QList<double>& onsets, int soundsPerBar)
{
    float quietestAccent = 1.0F;
    float loudestOther = 0.0F;
    for (qsizetype i = 0; i < onsets.size(); ++i) {
        const float loudness = peak(slice(samples, onsets[i], 0.05));
        if (i % soundsPerBar == 0)
            quietestAccent = std::min(quietestAccent, loudness);
        else
            loudestOther = std::max(loudestOther, loudness);
    }
    return quietestAccent > loudestOther;
}

/// The largest distance of onsets from where they ought to be, in seconds, when the two series
/// are laid over one another as well as can be: the sound card adds a delay of its own. Infinite
/// if there are more or fewer of them.
double worstDeviation(const QList<double>& heard, const QList<double>& expected)
{
    if (heard.size() != expected.size() || heard.isEmpty())
        return std::numeric_limits<double>::infinity();
    double least = heard[0] - expected[0];
    double most = least;
    for (qsizetype i = 1; i < heard.size(); ++i) {
        least = std::min(least, heard[i] - expected[i]);
        most = std::max(most, heard[i] - expected[i]);
    }
    return (most - least) / 2.0;
}

/// Whether sounds set in where they ought to.
bool inTime(const QList<double>& heard, const QList<double>& expected)
{
    const double worst = worstDeviation(heard, expected);
    qInfo("The worst of %lld is %.1f ms off", static_cast<long long>(heard.size()), 1000.0 * worst);
    if (worst >= kTolerance)
        qInfo("Expected %s, heard %s", qPrintable(written(expected)), qPrintable(written(heard)));
    return worst < kTolerance;
}

/// Whether a voice is heard where it ought to be beside the notes, as far as their ways to the
/// sound card let it.
bool together(double heard, double expected)
{
    qInfo("The voice is %.0f ms behind the notes", 1000.0 * (heard - expected));
    return std::abs(heard - expected) < kApart;
}

/// Whether a measurement comes out right at least once: a machine that is busy with something
/// else may spoil some.
bool once(const std::function<bool()>& measurement)
{
    constexpr int kAttempts = 5;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (measurement())
            return true;
    }
    return false;
}

} // namespace

/// What the engine plays on a real sound server with the real bank, measured in what is recorded
/// there: the samples are the only clock.
class PlaybackSoundTest : public QObject {
    Q_OBJECT

public:
    explicit PlaybackSoundTest(const PulseDaemon& daemon) : daemon_(daemon) {}

private slots:
    void initTestCase();
    void cleanup();

    void strokesSoundAtTheirTimes();
    void notesSoundAtTheirPitches();
    void mutedTrackIsSilent();
    void choosingInstrumentsLeavesNoHole();
    void metronomeClicksOnThePulse_data();
    void metronomeClicksOnThePulse();
    void voiceSoundsBesideTheNotes();
    void voiceSetsOutFromThePlayhead();
    void gainIsHeardWhileTheSongPlays();
    void repeatKeepsThePulse();
    void repeatBringsTheVoiceBack();

private:
    /// Plays from a beat on until so much is recorded.
    QList<float> recorded(Project& song, double seconds, double fromBeat = 0.0);

    const PulseDaemon& daemon_;
    ContentFixture files_;
    std::unique_ptr<MonitorRecording> recording_;
    std::unique_ptr<SoundfontPlayer> player_;
    std::unique_ptr<PlaybackEngine> engine_;
};

void PlaybackSoundTest::initTestCase()
{
    QVERIFY2(daemon_.problem().isEmpty(), qPrintable(daemon_.problem()));
    recording_ = std::make_unique<MonitorRecording>();
    QVERIFY2(recording_->runs(), "Nothing is recorded; the package pulseaudio-utils is needed.");
    player_ = std::make_unique<SoundfontPlayer>(SoundfontPlayer::Mode::Realtime);
    QVERIFY2(player_->loadGmBank(realBank()), qPrintable(realBank()));
    files_.instruments().loadBuiltinGmInstruments();
    engine_ = std::make_unique<PlaybackEngine>(player_.get(), nullptr, &files_.instruments());
    engine_->projectDir = files_.root();
    // The sound card takes a moment to settle.
    QVERIFY(recording_->await(1.0));
}

void PlaybackSoundTest::cleanup()
{
    if (!engine_)
        return;
    engine_->clearLoopRange();
    engine_->setProject(nullptr);
    engine_->setMetronomeEnabled(false);
    player_->allSoundOff();
    recording_->await(0.3);
}

QList<float> PlaybackSoundTest::recorded(Project& song, double seconds, double fromBeat)
{
    engine_->setProject(&song);
    recording_->clear();
    engine_->play(fromBeat);
    return recording_->await(seconds) ? recording_->samples() : QList<float>();
}

// ---- Notes ---------------------------------------------------------------------------------

void PlaybackSoundTest::strokesSoundAtTheirTimes()
{
    const QList<double> beats{0.0, 1.0, 1.5, 2.25, 3.0, 4.0, 4.5, 5.75, 6.25, 7.0, 8.5, 9.0};
    const auto song = songAt(300, {strokes(beats)});
    QVERIFY(once([&] { return inTime(onsets(recorded(*song, 2.2)), scaled(beats, 0.2)); }));
}

void PlaybackSoundTest::notesSoundAtTheirPitches()
{
    const QList<int> pitches{60, 67, 64, 72, 57};
    const Track piano = straight(melodyTrack({melody(notesInARow(pitches), 0.0, 8.0)}, "gm_piano"));
    const auto song = songAt(150, {piano});
    const QList<float> samples = recorded(*song, 2.3);
    const double start = firstSound(samples);
    QVERIFY(start < 2.0);
    for (qsizetype i = 0; i < pitches.size(); ++i) {
        const QList<float> note = slice(samples, start + 0.4 * static_cast<double>(i) + 0.1, 0.25);
        QList<double> strengths;
        for (const int pitch : pitches)
            strengths.append(Tones::strengthAt(note, kRate, hzOf(pitch)));
        const auto strongest = std::max_element(strengths.cbegin(), strengths.cend());
        QCOMPARE(pitches[strongest - strengths.cbegin()], pitches[i]);
    }
}

void PlaybackSoundTest::mutedTrackIsSilent()
{
    const auto song = songAt(120, {flute(69), flute(74)});
    song->tracks[1].muted = true;
    const auto sounding = [&] { return slice(recorded(*song, 1.0), 0.5, 0.5); };
    const QList<float> one = sounding();
    const double heard = Tones::strengthAt(one, kRate, hzOf(69));
    const double silenced = Tones::strengthAt(one, kRate, hzOf(74));
    QVERIFY2(silenced < 0.02 * heard && heard > 0.001, qPrintable(written({heard, silenced})));

    song->tracks[1].muted = false;
    engine_->rescheduleIfPlaying();
    const QList<float> two = sounding();
    QVERIFY(Tones::strengthAt(two, kRate, hzOf(74)) >
            0.2 * Tones::strengthAt(two, kRate, hzOf(69)));
}

void PlaybackSoundTest::choosingInstrumentsLeavesNoHole()
{
    const auto song = songAt(120, {flute(69)});
    QVERIFY(once([&] {
        int chosen = 0;
        QTimer chooser;
        connect(&chooser, &QTimer::timeout, this, [&] {
            player_->selectGmProgram(1 + chosen % 12, chosen % 128);
            ++chosen;
        });
        chooser.start(20);
        const QList<float> samples = recorded(*song, 1.8);
        const QList<float> held = slice(samples, firstSound(samples) + 0.3, 1.0);
        qInfo("%d programs were chosen; the quietest hundredth of a second has %.2f of the loudest",
              chosen, quietestPart(held, 0.01));
        return chosen > 50 && quietestPart(held, 0.01) > 0.5;
    }));
}

void PlaybackSoundTest::metronomeClicksOnThePulse_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("secondsPerClick");
    QTest::addColumn<int>("clicksPerBar");
    QTest::newRow("4/4") << TimeSignature{4, 4, false} << 0.2 << 4;
    QTest::newRow("6/8") << TimeSignature{6, 8, true} << 0.3 << 2;
}

void PlaybackSoundTest::metronomeClicksOnThePulse()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, secondsPerClick);
    QFETCH(int, clicksPerBar);
    const auto song = songAt(300, {}, meter);
    engine_->setMetronomeEnabled(true);
    QVERIFY(once([&] {
        const QList<float> samples = recorded(*song, 6 * secondsPerClick + 0.3);
        const QList<double> clicks = onsets(samples).mid(0, 6);
        return inTime(clicks, scaled({0, 1, 2, 3, 4, 5}, secondsPerClick)) &&
               accentsAreLouder(samples, clicks, clicksPerBar);
    }));
}

// ---- Voices --------------------------------------------------------------------------------

void PlaybackSoundTest::voiceSoundsBesideTheNotes()
{
    ContentFixture::write(files_.root() + "/voz.wav", beepingVoice({0.0, 0.8, 1.3}));
    const auto song = songAt(120, {strokes({0.0, 2.0, 3.0})});
    song->audioTracks = {voiceTrack({clip("voz.wav", 1.0)})};
    QVERIFY(once([&] {
        const Heard heard = strokesAndBeeps(recorded(*song, 2.4));
        return inTime(heard.strokes, {0.0, 1.0, 1.5}) && inTime(heard.beeps, {0.5, 1.3, 1.8}) &&
               together(heard.beeps[0], heard.strokes[0] + 0.5);
    }));
}

void PlaybackSoundTest::voiceSetsOutFromThePlayhead()
{
    ContentFixture::write(files_.root() + "/voz.wav", beepingVoice({0.0, 1.0, 1.5}));
    const auto song = songAt(120, {strokes({1.0, 2.0})});
    song->audioTracks = {voiceTrack({clip("voz.wav", 1.0)})};
    QVERIFY(once([&] {
        const Heard heard = strokesAndBeeps(recorded(*song, 1.6, 2.0));
        return heard.strokes.size() == 1 && inTime(heard.beeps, {0.5, 1.0}) &&
               together(heard.beeps[0], heard.strokes[0] + 0.5);
    }));
}

void PlaybackSoundTest::gainIsHeardWhileTheSongPlays()
{
    ContentFixture::write(files_.root() + "/voz.wav",
                          WavFile::bytes(Tones::sine(kBeepHz, kRate, 6 * kRate, 0.5)));
    const auto song = songAt(120, {strokes({12.0})});
    song->audioTracks = {voiceTrack({clip("voz.wav", 0.0, 12.0)})};
    QVERIFY(once([&] {
        song->audioTracks[0].clips[0].gain = 1.0F;
        QTimer::singleShot(1200, engine_.get(), [&] {
            song->audioTracks[0].clips[0].gain = 0.25F;
            engine_->refreshChannels();
            engine_->rescheduleIfPlaying();
        });
        const QList<float> heard = recorded(*song, 3.0);
        const double start = firstSound(heard);
        const float before = peak(slice(heard, start + 0.4, 0.3));
        const float after = peak(heard.last(std::min<qsizetype>(heard.size(), kRate / 3)));
        qInfo("The voice peaks at %.3f, and at %.3f afterwards", double(before), double(after));
        return after > 0.2F * before && after < 0.3F * before;
    }));
}

// ---- The repeat range ----------------------------------------------------------------------

void PlaybackSoundTest::repeatKeepsThePulse()
{
    // A wrap lands some milliseconds behind the start of the range: no stroke stands there.
    const auto song = songAt(300, {strokes({0.5, 1.5, 2.5, 3.5, 4.5, 5.5})});
    engine_->setLoopRange(1.0, 4.0);
    QVERIFY(once([&] {
        return inTime(onsets(recorded(*song, 2.4, 1.0)).mid(0, 10),
                      scaled({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 0.2));
    }));
}

void PlaybackSoundTest::repeatBringsTheVoiceBack()
{
    ContentFixture::write(files_.root() + "/voz.wav", beepingVoice({0.4}));
    const auto song = songAt(240, {strokes({0.4, 3.2})});
    song->audioTracks = {voiceTrack({clip("voz.wav")})};
    engine_->setLoopRange(0.0, 3.2);
    QVERIFY(once([&] {
        const Heard heard = strokesAndBeeps(recorded(*song, 2.7));
        bool right = heard.strokes.size() >= 3 && heard.beeps.size() >= 3;
        for (int pass = 0; right && pass < 3; ++pass)
            right = together(heard.beeps[pass], heard.strokes[pass] + 0.3);
        return right;
    }));
}

int main(int argc, char** argv)
{
    const PulseDaemon daemon;
    QCoreApplication application(argc, argv);
    PlaybackSoundTest test(daemon);
    return QTest::qExec(&test, argc, argv);
}

#include "PlaybackSoundTest.moc"
