#include "playback/NoteRenderer.h"

#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "music/Beats.h"
#include "music/ChordLookup.h"
#include "music/ChordMapper.h"
#include "music/ChordVoicer.h"
#include "music/Humanizer.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

namespace {

/// A key while the notes are walked from the last to the first.
struct KeyStarts {
    /// Of the note met last, and the first start behind it.
    double start = std::numeric_limits<double>::infinity();
    double next = std::numeric_limits<double>::infinity();
};

/// What a loop block repeats.
struct LoopCycle {
    const LoopVariant* variant;
    /// Beats.
    double length;
    /// Drum layers do not: their pitches name drum sounds.
    bool followsChords;
    /// May be null.
    const GrooveTemplate* groove;
};

/// Of a note, or of a block.
template <typename Record>
bool hasPlace(const Record& record)
{
    return std::isfinite(record.startBeat) && std::isfinite(record.durationBeats);
}

/// A damaged work puts notes beyond all numbers, where none can be heard.
QList<NoteEvent> placed(QList<NoteEvent> notes)
{
    notes.removeIf([](const NoteEvent& note) { return !hasPlace(note); });
    return notes;
}

void sortByStart(QList<NoteEvent>& notes)
{
    std::ranges::stable_sort(notes, {}, &NoteEvent::startBeat);
}

/// The places of the notes in a list, ordered by their starts.
QList<qsizetype> placesByStart(const QList<NoteEvent>& notes)
{
    QList<qsizetype> places(notes.size());
    std::iota(places.begin(), places.end(), 0);
    const auto start = [&](qsizetype place) { return notes.at(place).startBeat; };
    if (!std::ranges::is_sorted(notes, {}, &NoteEvent::startBeat))
        std::ranges::stable_sort(places, {}, start);
    return places;
}

QList<NoteEvent> melodyNotes(const Track& track)
{
    QList<NoteEvent> notes;
    for (const MelodyBlock& block : track.melodyBlocks) {
        for (NoteEvent note : block.notes) {
            const bool hidden = !(note.startBeat < block.durationBeats);
            note.startBeat += block.startBeat;
            if (!hidden)
                notes.append(note);
        }
    }
    return notes;
}

std::optional<double> lengthOf(const LoopVariant& variant, const LoopBlock& block,
                               const LoopLibrary& library, double projectBar)
{
    const Rhythm* rhythm = library.findRhythm(block.rhythmId);
    const double bar = rhythm ? rhythm->timeSignature.beatsPerBar() : projectBar;
    const double length = variant.durationBars * bar;
    return isBarLength(length) ? std::optional(length) : std::nullopt;
}

/// Nothing when the block's content is not installed, or gives no length to repeat.
std::optional<LoopCycle> cycleOf(const LoopBlock& block, const LoopLibrary& library,
                                 double projectBar)
{
    const LoopVariant* variant =
        library.findVariant(block.layerId, block.section, block.variantIndex);
    if (!variant || !hasPlace(block))
        return std::nullopt;
    const LoopLayer* layer = library.findLayer(block.layerId);
    const auto length = lengthOf(*variant, block, library, projectBar);
    if (!length)
        return std::nullopt;
    return LoopCycle{.variant = variant,
                     .length = *length,
                     .followsChords = !layer || layer->pitched,
                     .groove = library.grooveForRhythm(block.rhythmId)};
}

/// Turns the loop blocks of one track into notes, within one bound for all of them.
class LoopUnroller {
public:
    LoopUnroller(const Project& project)
        : key_(project.keySignature), chords_(project.harmonyTrack, project.beatsPerBar())
    {}

    /// The block's notes in absolute beats: the cycle repeated from the block's own start and cut
    /// at its end.
    QList<NoteEvent> unroll(const LoopBlock& block, const LoopCycle& cycle)
    {
        QList<NoteEvent> notes;
        const double end = block.durationBeats - kBeatEpsilon;
        bool sounding = true;
        // Once a whole pass lies behind the end, so do all later ones.
        for (double offset = 0.0; sounding && offset < end; offset += cycle.length)
            sounding = appendPass(block, cycle, offset, notes);
        return notes;
    }

    bool cut() const { return cut_; }

private:
    /// One pass of the cycle; false when none of its notes starts inside the block, or the bound
    /// is reached.
    bool appendPass(const LoopBlock& block, const LoopCycle& cycle, double offset,
                    QList<NoteEvent>& notes)
    {
        visited_ += cycle.variant->notes.size();
        if (visited_ > NoteRenderer::kMaxTrackNotes) {
            cut_ = true;
            return false;
        }
        bool sounding = false;
        for (NoteEvent note : cycle.variant->notes) {
            const double beatInBlock = note.startBeat + offset;
            if (!(beatInBlock < block.durationBeats - kBeatEpsilon))
                continue;
            sounding = true;
            note.startBeat = block.startBeat + beatInBlock;
            note.durationBeats = std::min(note.durationBeats, block.durationBeats - beatInBlock);
            if (cycle.followsChords)
                note.pitch = followingChord(note);
            notes.append(note);
        }
        return sounding;
    }

    /// The chord is the one in force where the note starts, whatever comes while it rings.
    int followingChord(const NoteEvent& note) const
    {
        const HarmonyDegreeEvent* chord = chords_.at(note.startBeat);
        return chord ? ChordMapper::mapPitch(note.pitch, key_, chord->degree)
                     : ChordMapper::transposeToKey(note.pitch, key_);
    }

    KeySignature key_;
    ChordLookup chords_;
    /// Notes of variants looked at so far, sounding or not.
    qsizetype visited_ = 0;
    bool cut_ = false;
};

} // namespace

NoteRenderer::TrackNotes NoteRenderer::render(const Project& project, const Track& track,
                                              const LoopLibrary* library)
{
    const double bar = project.beatsPerBar();
    const QRandomGenerator generator = Humanizer::generatorFor(track.humanize.seed);
    // A groove may throw a note beyond all numbers, too.
    const auto humanized = [&](const QList<NoteEvent>& notes, const GrooveTemplate* groove) {
        return placed(Humanizer::apply(placed(notes), track.humanize, groove, bar, generator));
    };

    TrackNotes rendered{.notes = humanized(melodyNotes(track), nullptr)};
    QList<NoteEvent>& notes = rendered.notes;
    if (library && !track.loopBlocks.isEmpty()) {
        LoopUnroller unroller(project);
        for (const LoopBlock& block : track.loopBlocks) {
            if (const auto cycle = cycleOf(block, *library, bar))
                notes.append(humanized(unroller.unroll(block, *cycle), cycle->groove));
        }
        rendered.cut = unroller.cut();
    }
    sortByStart(notes);
    return rendered;
}

QList<NoteEvent> NoteRenderer::trackNotes(const Project& project, const Track& track,
                                          const LoopLibrary* library)
{
    return render(project, track, library).notes;
}

QList<NoteEvent> NoteRenderer::harmonyNotes(const Project& project)
{
    const double bar = project.beatsPerBar();
    QList<NoteEvent> notes;
    if (!isBarLength(bar))
        return notes;
    for (const HarmonyBlock& block : project.harmonyTrack.blocks) {
        for (const HarmonyDegreeEvent& event : block.events) {
            NoteEvent note{.pitch = 0,
                           .startBeat = block.barIndex * bar + event.startBeat,
                           .durationBeats = event.durationBeats,
                           .velocity = kHarmonyVelocity};
            for (const int pitch : ChordVoicer::chordPitches(project.keySignature, event.degree,
                                                             event.extension, kHarmonyOctave)) {
                note.pitch = pitch;
                notes.append(note);
            }
        }
    }
    notes = placed(std::move(notes));
    sortByStart(notes);
    return notes;
}

std::optional<double> NoteRenderer::loopBeats(const LoopBlock& block, const LoopLibrary& library,
                                              double projectBar)
{
    const LoopVariant* variant =
        library.findVariant(block.layerId, block.section, block.variantIndex);
    return variant ? lengthOf(*variant, block, library, projectBar) : std::nullopt;
}

QList<double> NoteRenderer::releaseBeats(const QList<NoteEvent>& notes)
{
    const QList<qsizetype> places = placesByStart(notes);
    QHash<int, KeyStarts> keys;
    QList<double> releases(notes.size());
    for (auto place = places.crbegin(); place != places.crend(); ++place) {
        const NoteEvent& note = notes.at(*place);
        KeyStarts& key = keys[note.pitch];
        if (note.startBeat < key.start)
            key = {.start = note.startBeat, .next = key.start};
        const double end = note.startBeat + std::max(note.durationBeats, kMinNoteBeats);
        releases[*place] = std::min(end, key.next);
    }
    return releases;
}
