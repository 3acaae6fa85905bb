// Our application data chunks on a node.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

class INode;

namespace fltkilnutil {

/// The sub-ids of our chunks. They and the class they go with are in users' scene files.
enum class ChunkId : std::uint32_t {
    Kind = 0,
    Record = 1,
    Comment = 2,
    Options = 3,
    Reserved = 4,  ///< never written, but removed with the others
};

/// The bytes of a chunk, owned by the host.
using Chunk = std::span<std::byte>;

/// Whether the node has the chunk; false for a null node.
bool hasChunk(INode* node, ChunkId id) noexcept;

/// The chunk's bytes, valid until the chunk changes; empty when there is none.
Chunk findChunk(INode* node, ChunkId id) noexcept;

/// A change of one chunk in two steps, so that several chunks change together or not at all.
/// Everything that can fail is in the first.
class ChunkChange {
public:
    ChunkChange() = default;
    /// Takes back what was prepared and not committed.
    ~ChunkChange();
    ChunkChange(const ChunkChange&) = delete;
    ChunkChange& operator=(const ChunkChange&) = delete;

    /// Makes everything ready for the node's chunk to become a copy of `bytes`, which must stay
    /// until then. False for a null node or without memory.
    bool prepare(INode* node, ChunkId id, std::span<const std::byte> bytes) noexcept;

    /// Makes the prepared change. A chunk that was there stays, and keeps its buffer when the
    /// length is the same.
    void commit() noexcept;

private:
    enum class Change { None, Add, Replace, Overwrite };

    INode* node_ = nullptr;
    ChunkId id_{};
    Change change_ = Change::None;
    std::span<const std::byte> bytes_;
    void* block_ = nullptr;  ///< the new buffer, ours until it is in the chunk
};

/// Makes the node's chunk a copy of `bytes`. A chunk that is there stays, and keeps its buffer when
/// the length is the same. False, with nothing changed, for a null node or without memory.
bool storeChunk(INode* node, ChunkId id, std::span<const std::byte> bytes) noexcept;

/// Removes the chunk; false when there is none.
bool removeChunk(INode* node, ChunkId id) noexcept;

}  // namespace fltkilnutil
