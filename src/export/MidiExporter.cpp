#include "export/MidiExporter.h"

#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "export/ExportError.h"
#include "export/ExportFile.h"
#include "model/Project.h"
#include "playback/ChannelPlan.h"
#include "playback/NoteRenderer.h"

#include <QByteArray>
#include <QList>

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>

namespace {

constexpr int kDivision = 480;
constexpr int kDrumChannel = 9;
constexpr int kLastChannel = 15;

/// Largest number that a variable-length quantity holds in its four bytes.
constexpr qint64 kMaxQuantity = 0x0FFFFFFF;

/// Largest number of chunks that a header can tell.
constexpr qsizetype kMaxChunks = 0xFFFF;

struct MidiEvent {
    /// Absolute time.
    qint64 tick = 0;
    /// As they stand in the file, without the delta time.
    QByteArray bytes;
};

// ---- Bytes ---------------------------------------------------------------------------------

char byteOf(qint64 value)
{
    return static_cast<char>(static_cast<unsigned char>(value & 0xFF));
}

QByteArray bigEndian(qint64 value, int bytes)
{
    QByteArray result;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        result.append(byteOf(value >> shift));
    return result;
}

QByteArray variableLength(qint64 value)
{
    const qint64 quantity = std::clamp<qint64>(value, 0, kMaxQuantity);
    QByteArray result;
    for (int shift = 21; shift > 0; shift -= 7) {
        if (quantity >> shift)
            result.append(byteOf(0x80 | ((quantity >> shift) & 0x7F)));
    }
    result.append(byteOf(quantity & 0x7F));
    return result;
}

QByteArray channelMessage(int status, int channel, int first)
{
    QByteArray bytes;
    bytes.append(byteOf(status | channel));
    bytes.append(byteOf(first & 0x7F));
    return bytes;
}

QByteArray channelMessage(int status, int channel, int first, int second)
{
    return channelMessage(status, channel, first) + byteOf(second);
}

// ---- Events --------------------------------------------------------------------------------

QByteArray trackName(const QString& name)
{
    const QByteArray utf8 = name.toUtf8();
    return QByteArrayLiteral("\xFF\x03") + variableLength(utf8.size()) + utf8;
}

QByteArray setTempo(qint32 bpm)
{
    const auto microseconds = static_cast<qint64>(60000000.0 / std::max(bpm, 1));
    return QByteArrayLiteral("\xFF\x51\x03") + bigEndian(microseconds, 3);
}

QByteArray timeSignature(const TimeSignature& meter)
{
    constexpr char kClocksPerClick = 24;
    constexpr char kThirtySecondsPerQuarter = 8;
    // The whole part of the logarithm to base 2.
    const int exponent =
        meter.denominator > 0
            ? static_cast<int>(std::bit_width(static_cast<quint32>(meter.denominator))) - 1
            : 0;
    return QByteArrayLiteral("\xFF\x58\x04") + byteOf(meter.numerator) + byteOf(exponent) +
           kClocksPerClick + kThirtySecondsPerQuarter;
}

/// The tick of a beat, held where a four-byte quantity can reach it.
qint64 tickOf(double beat)
{
    constexpr auto kMost = static_cast<double>(kMaxQuantity);
    return std::llround(std::clamp(beat * kDivision, 0.0, kMost));
}

void appendNotes(QList<MidiEvent>& events, const QList<NoteEvent>& notes, int channel)
{
    events.reserve(events.size() + 2 * notes.size());
    const QList<double> releases = NoteRenderer::releaseBeats(notes);
    for (qsizetype i = 0; i < notes.size(); ++i) {
        const NoteEvent& note = notes.at(i);
        events.append({tickOf(note.startBeat), channelMessage(0x90, channel, note.pitch,
                                                              std::clamp(note.velocity, 1, 127))});
        events.append({tickOf(releases.at(i)), channelMessage(0x80, channel, note.pitch, 0)});
    }
}

/// The events in the order of their ticks; those of one tick stay in the order given.
QByteArray buildTrackChunk(QList<MidiEvent> events)
{
    std::ranges::stable_sort(events, {}, &MidiEvent::tick);
    QByteArray data;
    qint64 now = 0;
    for (const MidiEvent& event : events) {
        data += variableLength(event.tick - now) + event.bytes;
        now = event.tick;
    }
    data += variableLength(0) + QByteArrayLiteral("\xFF\x2F\x00");
    return QByteArrayLiteral("MTrk") + bigEndian(data.size(), 4) + data;
}

// ---- Channels ------------------------------------------------------------------------------

/// Hands out channels in order: the drum channel to percussion alone, the last one to all that
/// come too late for one of their own.
class ChannelCounter {
public:
    int forMelodic()
    {
        if (next_ == kDrumChannel)
            ++next_;
        return std::min(next_++, kLastChannel);
    }

private:
    int next_ = 0;
};

// ---- Chunks --------------------------------------------------------------------------------

QByteArray conductorChunk(const Project& project)
{
    const QString name = project.name.isEmpty() ? QStringLiteral("Velta") : project.name;
    return buildTrackChunk({{0, trackName(name)},
                            {0, setTempo(project.bpm)},
                            {0, timeSignature(project.timeSignature)}});
}

QByteArray trackChunk(const Track& track, const QList<NoteEvent>& notes,
                      const InstrumentLibrary* instruments, ChannelCounter& channels)
{
    const Instrument* instrument = instruments ? instruments->find(track.instrumentId) : nullptr;
    const bool drums = instrument && instrument->category == InstrumentCategory::Percussion;
    const int channel = drums ? kDrumChannel : channels.forMelodic();

    QList<MidiEvent> events{{0, trackName(track.name)}};
    if (instrument && !drums)
        events.append(
            {0, channelMessage(0xC0, channel, instruments->effectiveGmProgram(*instrument))});
    appendNotes(events, notes, channel);
    return buildTrackChunk(events);
}

QByteArray harmonyChunk(const QList<NoteEvent>& notes, ChannelCounter& channels)
{
    const int channel = channels.forMelodic();
    QList<MidiEvent> events{{0, trackName(QStringLiteral("Acordes"))},
                            {0, channelMessage(0xC0, channel, kHarmonyProgram)}};
    appendNotes(events, notes, channel);
    return buildTrackChunk(events);
}

/// The chunks of all tracks, or nothing when the song is beyond the bounds of rendering or the
/// progress is to stop.
std::optional<QList<QByteArray>> buildChunks(const Project& project, const LoopLibrary* library,
                                             const InstrumentLibrary* instruments,
                                             const ExportProgress& progress)
{
    ChannelCounter channels;
    QList<QByteArray> chunks{conductorChunk(project)};
    qsizetype noteCount = 0;
    for (const Track& track : project.tracks) {
        if (!progress(static_cast<double>(chunks.size()) /
                      static_cast<double>(project.tracks.size() + 1)))
            return std::nullopt;
        const auto [notes, cut] = NoteRenderer::render(project, track, library);
        noteCount += notes.size();
        if (cut || noteCount > NoteRenderer::kMaxSongNotes)
            return std::nullopt;
        chunks.append(trackChunk(track, notes, instruments, channels));
    }
    if (!project.harmonyTrack.isEmpty())
        chunks.append(harmonyChunk(NoteRenderer::harmonyNotes(project), channels));
    if (chunks.size() > kMaxChunks)
        return std::nullopt;
    return chunks;
}

QByteArray header(qsizetype chunkCount)
{
    constexpr int kFormat = 1;
    return QByteArrayLiteral("MThd") + bigEndian(6, 4) + bigEndian(kFormat, 2) +
           bigEndian(chunkCount, 2) + bigEndian(kDivision, 2);
}

bool writeAll(QIODevice& device, const QList<QByteArray>& chunks)
{
    const auto written = [&](const QByteArray& bytes) {
        return device.write(bytes) == bytes.size();
    };
    return written(header(chunks.size())) && std::ranges::all_of(chunks, written);
}

} // namespace

bool MidiExporter::exportProject(const Project& project, const LoopLibrary* library,
                                 const InstrumentLibrary* instruments, const QString& path,
                                 QString* error, const ExportProgress& progress)
{
    bool stopped = false;
    const auto chunks = buildChunks(project, library, instruments, [&](double done) {
        stopped = !goesOn(progress, done);
        return !stopped;
    });
    if (!chunks) {
        if (!stopped)
            setError(error, tr("La obra es demasiado larga para exportarla."));
        return false;
    }
    ExportFile file(path);
    if (!file.open() || !writeAll(file.device(), *chunks) || !file.commit()) {
        setError(error, file.errorString());
        return false;
    }
    return true;
}
