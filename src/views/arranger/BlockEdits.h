#pragma once

#include <QList>

#include <compare>
#include <optional>

class Project;

/// What a block of the arranger stands for.
enum class BlockKind { Melody = 0, Loop = 1, Audio = 2, Chord = 3 };

/// Which record of a project a block stands for. It may be stale: then there is nothing behind it.
struct BlockRef {
    BlockKind kind = BlockKind::Melody;
    /// Of a track or an audio track; for a chord, the number of its bar.
    int trackIndex = 0;
    /// In the list of its track or bar.
    int blockIndex = 0;

    friend auto operator<=>(const BlockRef&, const BlockRef&) = default;
};

/// Where a record lies, in beats.
struct BlockSpan {
    double start = 0.0;
    double length = 0.0;

    friend bool operator==(const BlockSpan&, const BlockSpan&) = default;
};

/// What the gestures of the arranger do to a project. A stale reference does nothing.
namespace BlockEdits {

/// Whether a list has such an index.
template <typename List>
bool holds(const List& list, int index)
{
    return index >= 0 && index < list.size();
}

/// Where a record lies.
std::optional<BlockSpan> spanOf(const Project& project, const BlockRef& block);

/// Each leaves the other as it is, and a chord alone: that one has to make room for itself.
void setStart(Project& project, const BlockRef& block, double start);
void setLength(Project& project, const BlockRef& block, double length);

/// Removes a record. Its track stays, even without any blocks.
void remove(Project& project, const BlockRef& block);

/// Removes some records, each of them named once.
void removeAll(Project& project, QList<BlockRef> blocks);

/// The way of the mouse over some scene pixels, in beats: whole steps.
double wayOver(double scenePixels, double step);

/// A span some beats off, not before the start of the song.
BlockSpan moved(const BlockSpan& original, double beats);

/// A span with its end some beats off, not shorter than a step.
BlockSpan resized(const BlockSpan& original, double beats, double step);

} // namespace BlockEdits
