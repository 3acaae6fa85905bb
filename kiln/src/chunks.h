// The chunks of a thing, for reading and writing all of them.
#pragma once

#include <kiln/animatable.h>

/// A chunk in the list of those of one thing, in the order they were added. Chunks and containers
/// are counted like blocks of the host allocator, so that running out of it is one condition.
struct HeldChunk {
    AppDataChunk chunk;
    HeldChunk* next;

    /// The beginning of a thing's list.
    static HeldChunk*& firstOf(Animatable& thing) noexcept { return thing.chunks_; }
    static const HeldChunk* firstOf(const Animatable& thing) noexcept { return thing.chunks_; }

    bool has(const Class_ID& cid, SClass_ID sid, DWORD subId) const noexcept {
        return chunk.subID == subId && chunk.clID == cid && chunk.sclID == sid;
    }
};

namespace kiln {

/// Adds chunks at the end of a thing's list without looking through it for each.
class ChunkAppender {
public:
    explicit ChunkAppender(Animatable& thing) noexcept : link_(&HeldChunk::firstOf(thing)) {
        while (*link_) link_ = &(*link_)->next;
    }

    /// Adds a chunk with ids that the thing has no chunk of, and takes over its block; false
    /// without memory.
    bool append(const AppDataChunk& chunk) noexcept;

private:
    HeldChunk** link_;
};

/// Calls `visit` for each chunk in the order they were first added.
template <typename Visit>
void forEachChunk(const Animatable& thing, Visit&& visit) {
    for (const HeldChunk* held = HeldChunk::firstOf(thing); held; held = held->next)
        visit(held->chunk);
}

}  // namespace kiln
