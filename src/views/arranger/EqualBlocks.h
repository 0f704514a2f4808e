#pragma once

#include "model/AudioTrack.h"
#include "model/Track.h"
#include "views/arranger/BlockEdits.h"

#include <functional>

/// Blocks on which an equal one would lie unseen, and be heard once more.
namespace EqualBlocks {

bool covers(const MelodyBlock& present, const MelodyBlock& block);
bool covers(const LoopBlock& present, const LoopBlock& block);
bool covers(const AudioClip& present, const AudioClip& block);

/// The first block that covers another one of its lane, of those that `counts` says yes to; nothing
/// for a chord, which leaves room for no other, and where there is none.
std::optional<BlockRef> coverOf(const Project& project, const BlockRef& block,
                                const std::function<bool(const BlockRef&)>& counts);

} // namespace EqualBlocks
