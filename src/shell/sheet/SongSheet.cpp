#include "shell/sheet/SongSheet.h"

#include "model/Project.h"
#include "music/Beats.h"
#include "music/ChordNames.h"
#include "views/MusicWords.h"

#include <algorithm>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

/// A note and where it lies in the song, in beats.
struct SungNote {
    double beat;
    int pitch;
};

/// The notes that are heard of a track, in time, and from below where some begin together.
QList<SungNote> notesOf(const Track& track)
{
    QList<SungNote> notes;
    for (const MelodyBlock& block : track.melodyBlocks) {
        for (const NoteEvent& note : block.notes) {
            const double beat = block.startBeat + note.startBeat;
            if (note.startBeat < block.durationBeats && std::isfinite(beat) && beat >= 0.0)
                notes.append({beat, note.pitch});
        }
    }
    std::ranges::sort(notes, [](const SungNote& a, const SungNote& b) {
        return a.beat != b.beat ? a.beat < b.beat : a.pitch < b.pitch;
    });
    return notes;
}

/// Notes that begin together are one word: "Do+Mi".
void addNote(QList<SheetWord>& words, double place, const QString& name)
{
    constexpr double kTogether = 1e-6;
    if (!words.isEmpty() && place - words.constLast().place < kTogether)
        words.last().text += u'+' + name;
    else
        words.append({place, name});
}

QList<SheetWord> chordsOf(const Project& project, int bar)
{
    QList<SheetWord> words;
    const HarmonyBlock* block = project.harmonyTrack.blockForBar(bar);
    const double beats = project.beatsPerBar();
    for (const HarmonyDegreeEvent& chord : block ? block->events : QList<HarmonyDegreeEvent>()) {
        const QString label =
            ChordNames::labelOf(project.keySignature, chord.degree, chord.extension);
        if (!label.isEmpty() && chord.startBeat >= 0.0 && chord.startBeat < beats - kBeatEpsilon)
            words.append({chord.startBeat / beats, label});
    }
    std::ranges::stable_sort(words, {}, &SheetWord::place);
    return words;
}

/// Up to the last bar with a chord, a note, or whatever else is heard.
int barsOf(const Project& project)
{
    if (!isBarLength(project.beatsPerBar()))
        return 0;
    double bars = project.filledEndBeat() / project.beatsPerBar();
    for (const HarmonyBlock& block : project.harmonyTrack.blocks) {
        if (!block.events.isEmpty())
            bars = std::max(bars, block.barIndex + 1.0);
    }
    return static_cast<int>(std::min<double>(std::ceil(bars), SongSheet::kMostBars));
}

} // namespace

SongSheet SongSheet::of(const Project& project)
{
    SongSheet sheet;
    const TimeSignature& meter = project.timeSignature;
    sheet.title = project.name;
    sheet.heading = u"%1 · ♩ = %2 · %3/%4"_s.arg(MusicWords::key(project.keySignature))
                        .arg(project.bpm)
                        .arg(meter.numerator)
                        .arg(meter.denominator);
    sheet.bars.resize(barsOf(project));
    for (qsizetype bar = 0; bar < sheet.bars.size(); ++bar)
        sheet.bars[bar].chords = chordsOf(project, static_cast<int>(bar));
    for (const Track& track : project.tracks) {
        const QList<SungNote> notes = notesOf(track);
        if (track.isAccompaniment || notes.isEmpty())
            continue;
        sheet.melodies.append(track.name);
        for (SheetBar& bar : sheet.bars)
            bar.melodies.resize(sheet.melodies.size());
        for (const SungNote& note : notes) {
            const auto bar = barAt(note.beat + kBeatEpsilon, project.beatsPerBar());
            if (!bar || *bar >= sheet.bars.size())
                break;
            const double place = note.beat / project.beatsPerBar() - *bar;
            addNote(sheet.bars[*bar].melodies.last(), std::max(place, 0.0),
                    KeySignature::solfegeName(note.pitch));
        }
    }
    return sheet;
}
