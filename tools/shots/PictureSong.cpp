#include "shots/PictureSong.h"

#include "content/LoopLibrary.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr double kBar = 4.0;
constexpr int kBars = 4;
constexpr int kLoops = 2;

HarmonyTrack chords()
{
    HarmonyTrack track;
    qint32 bar = 0;
    for (const qint32 degree : {1, 6, 4, 5}) {
        HarmonyBlock block;
        block.barIndex = bar++;
        HarmonyDegreeEvent chord;
        chord.degree = degree;
        chord.durationBeats = kBar;
        block.events = {chord};
        track.blocks.append(block);
    }
    return track;
}

MelodyBlock melodyOf(const QList<qint32>& pitches, double beats)
{
    MelodyBlock block;
    block.durationBeats = kBars * kBar;
    double start = 0.0;
    for (const qint32 pitch : pitches) {
        block.notes.append({.pitch = pitch, .startBeat = start, .durationBeats = beats});
        start += beats;
    }
    return block;
}

Track melody(const QString& name, const QString& instrumentId, const MelodyBlock& block)
{
    Track track;
    track.name = name;
    track.instrumentId = instrumentId;
    track.melodyBlocks = {block};
    return track;
}

Track loopTrack(const Rhythm& rhythm, const LoopLayer& layer)
{
    Track track;
    track.name = u"%1 · %2"_s.arg(rhythm.displayName, layer.label);
    track.instrumentId = layer.instrumentId;
    track.isAccompaniment = true;
    track.layerId = layer.id;
    for (int bar = 0; bar < kBars; bar += 2)
        track.loopBlocks.append({.startBeat = bar * kBar,
                                 .durationBeats = 2 * kBar,
                                 .rhythmId = rhythm.id,
                                 .layerId = layer.id,
                                 .section = LoopSection::Normal,
                                 .variantIndex = 1});
    return track;
}

AudioTrack voice()
{
    AudioTrack track;
    track.name = u"Mi voz"_s;
    AudioClip clip;
    clip.audioFilePath = u"voz_1.wav"_s;
    clip.offsetBeats = kBar;
    clip.durationBeats = 2 * kBar;
    track.clips = {clip};
    return track;
}

} // namespace

Song pictureSong(const LoopLibrary& library)
{
    Song song;
    song.name = u"Zamba de la escuela"_s;
    song.bpm = 96;
    song.harmonyTrack = chords();
    song.tracks = {
        melody(u"Melodía"_s, u"gm_0"_s,
               melodyOf({67, 69, 67, 64, 60, 62, 64, 60, 65, 67, 69, 65, 67, 71, 72, 67}, 1.0)),
        melody(u"Segunda voz"_s, u"gm_73"_s, melodyOf({64, 60, 69, 67, 65, 69, 71, 74}, 2.0))};
    const auto rhythm =
        std::ranges::find(library.rhythms(), TimeSignature(), &Rhythm::timeSignature);
    if (rhythm != library.rhythms().end()) {
        const QList<LoopLayer> layers = library.layersForRhythm(rhythm->id);
        for (const LoopLayer& layer : layers.first(std::min<qsizetype>(layers.size(), kLoops)))
            song.tracks.append(loopTrack(*rhythm, layer));
    }
    song.audioTracks = {voice()};
    return song;
}
