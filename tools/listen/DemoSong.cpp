#include "listen/DemoSong.h"

#include "content/LoopLibrary.h"
#include "model/Project.h"

#include <algorithm>

using RhythmDemo::Loop;

namespace {

constexpr int kLongestSide = 4;

/// A chord a bar. The second degree, which is diminished in minor, is not among them.
const QList<int> kProgression{1, 1, 4, 1, 1, 6, 4, 5, 6, 4, 1, 5, 1, 4, 5, 1};

const Loop* find(const QList<Loop>& loops, LoopSection section, int index)
{
    const auto found = std::ranges::find_if(loops, [section, index](const Loop& loop) {
        return loop.section == section && loop.variantIndex == index;
    });
    return found == loops.end() ? nullptr : &*found;
}

/// The parts in their order, the Normal ones still without their bars.
QList<DemoSong::Part> outline(const QList<Loop>& loops)
{
    QList<DemoSong::Part> parts;
    const auto add = [&loops, &parts](LoopSection section, int index) {
        const Loop* loop = find(loops, section, index);
        if (!loop)
            return;
        const bool normal = section == LoopSection::Normal;
        parts.append({*loop, normal ? 0 : std::min(loop->bars, kLongestSide)});
    };
    add(LoopSection::Intro, 1);
    add(LoopSection::Normal, 1);
    add(LoopSection::Normal, 2);
    add(LoopSection::Intermedio, 1);
    add(LoopSection::Normal, 3);
    add(LoopSection::Normal, 4);
    add(LoopSection::Final, 1);
    return parts;
}

bool isNormal(const DemoSong::Part& part)
{
    return part.loop.section == LoopSection::Normal;
}

/// Shares bars among the Normal parts, by two where that goes: phrases are even. The everyday form
/// is heard longest.
void share(QList<DemoSong::Part>& parts, int bars)
{
    QList<DemoSong::Part*> normal;
    for (DemoSong::Part& part : parts) {
        if (isNormal(part))
            normal.append(&part);
    }
    std::ranges::stable_sort(
        normal, {}, [](const DemoSong::Part* part) { return part->loop.variantIndex % 2; });
    const int step = bars >= 2 * normal.size() ? 2 : 1;
    for (int given = 0; given < bars; given += step)
        normal.at(given / step % normal.size())->bars += std::min(step, bars - given);
}

} // namespace

QList<DemoSong::Part> DemoSong::partsOf(const QList<Loop>& loops)
{
    QList<Part> parts = outline(loops);
    if (std::ranges::none_of(parts, isNormal))
        return {};
    int left = kBars;
    for (const Part& part : parts)
        left -= part.bars;
    share(parts, left);
    return parts;
}

std::unique_ptr<Project> DemoSong::of(const LoopLibrary& library, const Rhythm& rhythm,
                                      const RhythmDemo::Setting& setting)
{
    const QList<Part> parts = partsOf(RhythmDemo::loopsOf(library, rhythm.id));
    if (parts.isEmpty())
        return nullptr;
    auto song = RhythmDemo::chordsOf(rhythm, setting, kProgression, 1);
    const double bar = song->beatsPerBar();
    for (const LoopLayer& layer : library.layersForRhythm(rhythm.id)) {
        Track track = RhythmDemo::trackOf(layer);
        double start = 0.0;
        for (const Part& part : parts) {
            if (library.findVariant(layer.id, part.loop.section, part.loop.variantIndex))
                track.loopBlocks.append(
                    RhythmDemo::blockOf(layer, part.loop, start, part.bars * bar));
            start += part.bars * bar;
        }
        if (!track.loopBlocks.isEmpty())
            song->tracks.append(track);
    }
    return song;
}
