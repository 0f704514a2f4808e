#pragma once

#include "model/Project.h"

#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <iterator>
#include <limits>
#include <memory>

/// Projects for tests: every record in one line, a comparison that names what differs, and a
/// seeded generator of whole projects.
namespace ProjectBuilder {

// ---- Records -------------------------------------------------------------------------------

inline NoteEvent note(int pitch, double startBeat, double durationBeats = 1.0, int velocity = 100)
{
    return {.pitch = pitch,
            .startBeat = startBeat,
            .durationBeats = durationBeats,
            .velocity = velocity};
}

/// Notes of one beat each, one after the other.
inline QList<NoteEvent> notesInARow(const QList<int>& pitches)
{
    QList<NoteEvent> notes;
    for (const int pitch : pitches)
        notes.append(note(pitch, static_cast<double>(notes.size())));
    return notes;
}

inline MelodyBlock melody(const QList<NoteEvent>& notes, double startBeat = 0.0,
                          double durationBeats = 4.0)
{
    return {.startBeat = startBeat, .durationBeats = durationBeats, .notes = notes};
}

inline LoopBlock loop(const QString& rhythmId, const QString& layerId, double startBeat,
                      double durationBeats, LoopSection section = LoopSection::Normal,
                      int variantIndex = 1)
{
    return {.startBeat = startBeat,
            .durationBeats = durationBeats,
            .rhythmId = rhythmId,
            .layerId = layerId,
            .section = section,
            .variantIndex = variantIndex};
}

inline Track melodyTrack(const QList<MelodyBlock>& blocks, const QString& instrumentId = {})
{
    Track track;
    track.name = QStringLiteral("Melodía");
    track.instrumentId = instrumentId;
    track.melodyBlocks = blocks;
    return track;
}

/// An accompaniment track for the layer of its first block.
inline Track loopTrack(const QList<LoopBlock>& blocks, const QString& instrumentId = {})
{
    Track track;
    track.name = QStringLiteral("Acompañamiento");
    track.instrumentId = instrumentId;
    track.isAccompaniment = true;
    track.layerId = blocks.isEmpty() ? QString() : blocks.first().layerId;
    track.loopBlocks = blocks;
    return track;
}

/// The track without humanizing, so that its notes sound exactly as they are written.
inline Track straight(Track track)
{
    track.humanize.enabled = false;
    return track;
}

inline HarmonyDegreeEvent chord(int degree, double startBeat, double durationBeats,
                                ChordExtension extension = ChordExtension::Triad)
{
    return {.degree = degree,
            .extension = extension,
            .startBeat = startBeat,
            .durationBeats = durationBeats};
}

/// One chord a bar from bar 0 on, each as long as its bar; a degree of 0 leaves its bar empty.
inline HarmonyTrack harmony(const QList<int>& degrees, double beatsPerBar = 4.0)
{
    HarmonyTrack track;
    qint32 bar = 0;
    for (const int degree : degrees) {
        if (degree != 0)
            track.blocks.append({.barIndex = bar, .events = {chord(degree, 0.0, beatsPerBar)}});
        ++bar;
    }
    return track;
}

inline AudioClip clip(const QString& audioFilePath, double offsetBeats = 0.0,
                      double durationBeats = 0.0)
{
    AudioClip result;
    result.audioFilePath = audioFilePath;
    result.offsetBeats = offsetBeats;
    result.durationBeats = durationBeats;
    return result;
}

inline AudioTrack voiceTrack(const QList<AudioClip>& clips)
{
    AudioTrack track;
    track.name = QStringLiteral("Voz");
    track.clips = clips;
    return track;
}

// ---- Whole projects ------------------------------------------------------------------------

inline std::unique_ptr<Project> project(const QList<Track>& tracks = {},
                                        const HarmonyTrack& harmony = {},
                                        const TimeSignature& meter = {},
                                        const KeySignature& key = {}, int bpm = 120)
{
    auto result = std::make_unique<Project>();
    result->bpm = bpm;
    result->timeSignature = meter;
    result->keySignature = key;
    result->tracks = tracks;
    result->harmonyTrack = harmony;
    return result;
}

/// The first element in which two lists differ, as "list[index]"; empty when they are equal.
template <typename Record>
QString firstUnequal(const QList<Record>& a, const QList<Record>& b, const char* list)
{
    if (a.size() != b.size())
        return QStringLiteral("%1: %2 and %3 elements")
            .arg(QLatin1StringView(list))
            .arg(a.size())
            .arg(b.size());
    const auto at = std::mismatch(a.cbegin(), a.cend(), b.cbegin()).first;
    return at == a.cend()
               ? QString()
               : QStringLiteral("%1[%2]").arg(QLatin1StringView(list)).arg(at - a.cbegin());
}

/// The name of the first field in which two projects differ; empty when they are equal.
inline QString firstDifference(const Project& a, const Project& b)
{
    const auto name = [](bool differs, const char* field) {
        return differs ? QString::fromLatin1(field) : QString();
    };
    for (const QString& difference :
         {name(a.name != b.name, "name"), name(a.bpm != b.bpm, "bpm"),
          name(a.timeSignature != b.timeSignature, "timeSignature"),
          name(a.keySignature != b.keySignature, "keySignature"),
          firstUnequal(a.tracks, b.tracks, "tracks"),
          firstUnequal(a.audioTracks, b.audioTracks, "audioTracks"),
          firstUnequal(a.harmonyTrack.blocks, b.harmonyTrack.blocks, "harmonyTrack.blocks"),
          name(!(a.harmonyTrack == b.harmonyTrack), "harmonyTrack"),
          firstUnequal<QString>(a.collapsedGroups, b.collapsedGroups, "collapsedGroups")}) {
        if (!difference.isEmpty())
            return difference;
    }
    return {};
}

// ---- Generated projects --------------------------------------------------------------------

/// What the numbers of generated projects are.
enum class Numbers {
    /// What a pupil may have made.
    Musical,
    /// Any finite values; enumerators are known ones.
    AnyFinite,
    /// Mostly absurd ones, such as NaN, infinities, the ends of the ranges and unknown
    /// enumerators.
    Hostile,
};

/// Draws projects from a seeded stream: equal seeds give equal projects.
class Generator {
public:
    explicit Generator(quint32 seed, Numbers numbers = Numbers::Musical)
        : random_(seed), numbers_(numbers)
    {}

    /// Replaces the content of a project. No list is longer than `longest`.
    void fill(Project& project, int longest = 4)
    {
        project.name = text();
        project.bpm = integer(40, 240);
        project.timeSignature = meter();
        project.keySignature = {.rootPitchClass = integer(0, 11), .mode = enumerator<KeyMode>(4)};
        project.tracks = list(longest, &Generator::track);
        project.audioTracks = list(longest, &Generator::audioTrack);
        project.harmonyTrack = harmonyTrack(longest);
        project.collapsedGroups = list(longest, &Generator::text);
    }

    std::unique_ptr<Project> project(int longest = 4)
    {
        auto result = std::make_unique<Project>();
        fill(*result, longest);
        return result;
    }

    TimeSignature meter()
    {
        static constexpr std::array<std::array<int, 2>, 8> kMeters{
            {{4, 4}, {3, 4}, {2, 4}, {2, 2}, {6, 8}, {9, 8}, {12, 8}, {7, 8}}};
        const auto& [numerator, denominator] = kMeters[below(kMeters.size())];
        return {.numerator = integer(numerator, numerator),
                .denominator = integer(denominator, denominator),
                .isCompound = flag()};
    }

    NoteEvent note()
    {
        return {.pitch = integer(24, 96),
                .startBeat = beats(0.0, 32.0),
                .durationBeats = beats(0.0625, 4.0),
                .velocity = integer(1, 127)};
    }

    HarmonyDegreeEvent chord()
    {
        return {.degree = integer(1, 7),
                .extension = enumerator<ChordExtension>(3),
                .startBeat = beats(0.0, 4.0),
                .durationBeats = beats(0.25, 4.0)};
    }

    Track track(int longest)
    {
        Track track;
        track.name = text();
        track.instrumentId = text();
        track.volume = level();
        track.muted = flag();
        track.solo = flag();
        track.isAccompaniment = flag();
        track.layerId = text();
        track.humanize = {.enabled = flag(), .intensity = level(), .seed = random_.generate()};
        track.melodyBlocks = list(longest, &Generator::melodyBlock);
        track.loopBlocks = list(longest, &Generator::loopBlock);
        return track;
    }

    AudioTrack audioTrack(int longest)
    {
        AudioTrack track;
        track.name = text();
        track.volume = level();
        track.muted = flag();
        track.solo = flag();
        track.clips = list(longest, &Generator::clip);
        return track;
    }

    HarmonyTrack harmonyTrack(int longest)
    {
        HarmonyTrack track;
        track.muted = flag();
        track.volume = level();
        track.blocks = list(longest, &Generator::harmonyBlock);
        return track;
    }

private:
    MelodyBlock melodyBlock(int longest)
    {
        return {.startBeat = beats(0.0, 64.0),
                .durationBeats = beats(0.0, 16.0),
                .notes = list(longest, &Generator::note)};
    }

    LoopBlock loopBlock()
    {
        return {.startBeat = beats(0.0, 64.0),
                .durationBeats = beats(0.0, 16.0),
                .rhythmId = text(),
                .layerId = text(),
                .section = enumerator<LoopSection>(4),
                .variantIndex = integer(1, 4)};
    }

    AudioClip clip()
    {
        return {.audioFilePath = text(),
                .offsetBeats = beats(0.0, 64.0),
                .durationBeats = beats(0.0, 16.0),
                .gain = level(),
                .fadeInSeconds = level(),
                .fadeOutSeconds = level(),
                .tune = {.enabled = flag(), .intensity = level()}};
    }

    HarmonyBlock harmonyBlock(int longest)
    {
        return {.barIndex = integer(0, 15), .events = list(longest, &Generator::chord)};
    }

    template <typename Record>
    QList<Record> list(int longest, Record (Generator::*draw)())
    {
        QList<Record> records;
        for (auto left = below(static_cast<std::size_t>(longest) + 1); left > 0; --left)
            records.append((this->*draw)());
        return records;
    }

    template <typename Record>
    QList<Record> list(int longest, Record (Generator::*draw)(int))
    {
        QList<Record> records;
        for (auto left = below(static_cast<std::size_t>(longest) + 1); left > 0; --left)
            records.append((this->*draw)(longest));
        return records;
    }

    std::size_t below(std::size_t count)
    {
        return static_cast<std::size_t>(random_.bounded(static_cast<quint32>(count)));
    }

    bool flag() { return below(2) == 1; }

    qint32 integer(qint32 least, qint32 most)
    {
        static constexpr std::array<qint32, 10> kAbsurd{
            std::numeric_limits<qint32>::min(), -1000000, -1, 0, 1, 3, 127, 128, 1000000,
            std::numeric_limits<qint32>::max()};
        if (numbers_ == Numbers::Musical || (numbers_ == Numbers::Hostile && below(3) == 0))
            return least + static_cast<qint32>(below(static_cast<std::size_t>(most - least) + 1));
        if (numbers_ == Numbers::Hostile)
            return kAbsurd[below(kAbsurd.size())];
        return std::bit_cast<qint32>(random_.generate());
    }

    double beats(double least, double most)
    {
        using Limits = std::numeric_limits<double>;
        static constexpr std::array<double, 14> kAbsurd{Limits::quiet_NaN(),
                                                        Limits::infinity(),
                                                        -Limits::infinity(),
                                                        Limits::max(),
                                                        -Limits::max(),
                                                        Limits::min(),
                                                        1e300,
                                                        -1e300,
                                                        1e9,
                                                        2147483648.0,
                                                        1e-300,
                                                        -0.0,
                                                        0.0,
                                                        -1.0};
        if (numbers_ == Numbers::Musical || (numbers_ == Numbers::Hostile && below(3) == 0))
            return least + std::floor((most - least) * random_.generateDouble() * 48.0) / 48.0;
        if (numbers_ == Numbers::Hostile)
            return kAbsurd[below(kAbsurd.size())];
        return finite<double>([this] { return random_.generate64(); });
    }

    float level()
    {
        using Limits = std::numeric_limits<float>;
        static constexpr std::array<float, 8> kAbsurd{Limits::quiet_NaN(),
                                                      Limits::infinity(),
                                                      -Limits::infinity(),
                                                      Limits::max(),
                                                      -1.0F,
                                                      -0.0F,
                                                      1e-40F,
                                                      1e30F};
        if (numbers_ == Numbers::Musical || (numbers_ == Numbers::Hostile && below(3) == 0))
            return static_cast<float>(random_.generateDouble());
        if (numbers_ == Numbers::Hostile)
            return kAbsurd[below(kAbsurd.size())];
        return finite<float>([this] { return random_.generate(); });
    }

    /// A number of any bit pattern that is a finite one.
    template <typename Number, typename Bits>
    static Number finite(Bits drawBits)
    {
        Number number;
        do {
            number = std::bit_cast<Number>(drawBits());
        } while (!std::isfinite(number));
        return number;
    }

    template <typename Enum>
    Enum enumerator(qint32 count)
    {
        if (numbers_ == Numbers::Hostile)
            return static_cast<Enum>(integer(0, count - 1));
        return static_cast<Enum>(below(static_cast<std::size_t>(count)));
    }

    QString text()
    {
        static const std::array<QString, 10> kTexts{
            QString(),
            QStringLiteral("Chacarera"),
            QStringLiteral("bombo"),
            QStringLiteral("Canción de cuna para Ñandú"),
            QStringLiteral("con \"comillas\" y \\barras\\/"),
            QStringLiteral("dos\nlíneas\ty tabulador"),
            QStringLiteral("\u0001\u001f\u007f\u2028"),
            QStringLiteral("\U0001F3B5 \U0001F941"),
            QStringLiteral("../../voz.wav"),
            QString(300, QLatin1Char('x'))};
        return kTexts[below(kTexts.size())];
    }

    QRandomGenerator random_;
    Numbers numbers_;
};

} // namespace ProjectBuilder
