#include "listen/Balance.h"

#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "export/AudioExporter.h"
#include "listen/Loudness.h"
#include "listen/LoudnessMeter.h"
#include "listen/RhythmDemo.h"
#include "model/Project.h"
#include "music/Beats.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr double kSilence = -std::numeric_limits<double>::infinity();

/// A stroke is measured over 50 ms, looked at twice as often.
constexpr unsigned long kStrokeMs = 50;
constexpr std::size_t kHopFrames = static_cast<std::size_t>(kSampleRate) / 40;
/// Between strokes there is silence, which says nothing about them.
constexpr double kDecayDb = 30.0;
constexpr double kPercentile = 0.95;
/// Softer than this, a layer does not play in the song.
constexpr double kSilentDb = -90.0;

std::vector<double> windowsOf(const QList<float>& mix)
{
    std::vector<double> windows;
    const LoudnessMeter meter = loudnessMeter(EBUR128_MODE_M);
    if (!meter)
        return windows;
    const auto frames = static_cast<std::size_t>(mix.size() / 2);
    for (std::size_t at = 0; at < frames; at += kHopFrames) {
        ebur128_add_frames_float(meter.get(), mix.constData() + 2 * at,
                                 std::min(kHopFrames, frames - at));
        double level = kSilence;
        ebur128_loudness_window(meter.get(), kStrokeMs, &level);
        windows.push_back(level);
    }
    return windows;
}

double strokesOf(const QList<float>& mix)
{
    std::vector<double> windows = windowsOf(mix);
    const auto loudest = std::ranges::max_element(windows);
    if (loudest == windows.end() || !std::isfinite(*loudest))
        return kSilence;
    const double floor = *loudest - kDecayDb;
    std::erase_if(windows, [floor](double level) { return !(level >= floor); });
    const auto place =
        static_cast<std::ptrdiff_t>(kPercentile * static_cast<double>(windows.size() - 1));
    std::ranges::nth_element(windows, windows.begin() + place);
    return windows[static_cast<std::size_t>(place)];
}

Balance::Stem stemOf(const QJsonObject& stem)
{
    return {.rhythmId = stem["rhythmId"_L1].toString(),
            .layerId = stem["layerId"_L1].toString(),
            .role = stem["role"_L1].toString(),
            .targetDb = stem["targetDb"_L1].toDouble(),
            .byStrokes = stem["byStrokes"_L1].toBool()};
}

qsizetype trackOf(const Project& song, const QString& layerId)
{
    const auto track = std::ranges::find(song.tracks, layerId, &Track::layerId);
    return track == song.tracks.end() ? -1 : std::distance(song.tracks.begin(), track);
}

QList<Balance::Measured> comparedWithBass(QList<Balance::Measured> measured)
{
    const auto bass = std::ranges::find_if(
        measured, [](const Balance::Measured& one) { return one.stem.role == "bajo"_L1; });
    if (bass == measured.end())
        return {};
    const Balance::Level reference = bass->level;
    for (Balance::Measured& one : measured) {
        one.aboveBassDb = one.stem.byStrokes ? one.level.strokes - reference.strokes
                                             : one.level.loudness - reference.loudness;
    }
    return measured;
}

} // namespace

std::optional<Balance::Stems> Balance::readStems(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonObject written = QJsonDocument::fromJson(file.readAll()).object();
    if (!written["stems"_L1].isArray())
        return std::nullopt;
    Stems stems{.stems = {}, .toleranceDb = written["toleranceDb"_L1].toDouble()};
    for (const auto& stem : written["stems"_L1].toArray())
        stems.stems.append(stemOf(stem.toObject()));
    return stems;
}

Balance::Level Balance::levelOf(const QList<float>& mix)
{
    return {.loudness = Loudness::of(mix).lufs, .strokes = strokesOf(mix)};
}

std::unique_ptr<Project> Balance::song(const LoopLibrary& library, const Rhythm& rhythm)
{
    const QList<RhythmDemo::Loop> loops = RhythmDemo::loopsOf(library, rhythm.id);
    const auto everyday = std::ranges::find_if(loops, [](const RhythmDemo::Loop& loop) {
        return loop.section == LoopSection::Normal && loop.variantIndex == 2;
    });
    if (everyday == loops.end())
        return std::make_unique<Project>();
    return RhythmDemo::song(library, rhythm, *everyday,
                            {.key = {.rootPitchClass = 0, .mode = KeyMode::Major}});
}

QList<Balance::Measured> Balance::measure(const QList<Stem>& stems, const Rhythm& rhythm,
                                          const LoopLibrary& library,
                                          InstrumentLibrary& instruments, const QString& gmBank)
{
    QList<Measured> measured;
    const auto whole = song(library, rhythm);
    for (const Stem& stem : stems) {
        const qsizetype track = trackOf(*whole, stem.layerId);
        if (stem.rhythmId != rhythm.id || track < 0)
            continue;
        const QList<float> mix = AudioExporter::renderFullMix(
            *RhythmDemo::alone(*whole, track), QString(), &library, &instruments, gmBank, nullptr);
        if (const Level level = levelOf(mix); level.strokes > kSilentDb)
            measured.append({.stem = stem, .level = level});
    }
    return comparedWithBass(std::move(measured));
}
