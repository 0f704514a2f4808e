#include "listen/NoteRows.h"

#include "content/LoopLibrary.h"
#include "model/Track.h"
#include "music/KeySignature.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kHighestPitch = 127;
constexpr int kOctave = 12;
constexpr auto kGuitar = "guitarra_criolla"_L1;

/// The highest keys of the noises in the bank of the recorded guitar; its strings begin above.
constexpr int kLastGolpe = 16;
constexpr int kLastChasquido = 39;

bool isPercussion(const Track& track, const LoopLibrary& library)
{
    const LoopLayer* layer = library.findLayer(track.layerId);
    return layer && !layer->pitched;
}

QString nameOf(const Track& track, int pitch)
{
    if (track.instrumentId == kGuitar && pitch <= kLastChasquido)
        return pitch <= kLastGolpe ? u"golpe"_s : u"chasquido"_s;
    return KeySignature::letterName(pitch) + QString::number(pitch / kOctave - 1);
}

/// Every semitone from the highest to the lowest, without gaps that nobody wants to see.
QList<int> filled(const QList<int>& used)
{
    QList<int> pitches;
    for (const int pitch : used) {
        if (!pitches.isEmpty() && pitches.last() - pitch <= kOctave) {
            for (int between = pitches.last() - 1; between > pitch; --between)
                pitches.append(between);
        }
        pitches.append(pitch);
    }
    return pitches;
}

} // namespace

NoteRows NoteRows::of(const Track& track, const QList<NoteEvent>& notes, const LoopLibrary& library,
                      const QHash<int, QString>& drums)
{
    QList<int> used;
    for (const NoteEvent& note : notes)
        used.append(note.pitch);
    std::ranges::sort(used, std::ranges::greater());
    used.erase(std::ranges::unique(used).begin(), used.end());
    const bool percussion = isPercussion(track, library);
    NoteRows rows{.pitches = percussion ? used : filled(used), .names = {}};
    for (const int pitch : rows.pitches)
        rows.names.append(percussion ? drums.value(pitch, QString::number(pitch))
                                     : nameOf(track, pitch));
    return rows;
}

QList<NoteEvent> drawnNotes(const Track& track, QList<NoteEvent> notes)
{
    for (NoteEvent& note : notes) {
        note.pitch = std::clamp(note.pitch, 0, kHighestPitch);
        if (track.instrumentId == kGuitar && note.pitch <= kLastChasquido)
            note.pitch = note.pitch <= kLastGolpe ? kLastGolpe : kLastChasquido;
    }
    return notes;
}
