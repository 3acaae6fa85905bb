// Our application data chunks on a node.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <variant>

class INode;
struct AppDataChunk;

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

/// Whether the chunk is one of ours.
bool isOurChunk(const AppDataChunk& chunk) noexcept;

/// The chunk's bytes, valid until the chunk changes; empty when there is none.
Chunk findChunk(INode* node, ChunkId id) noexcept;

/// A change of some chunks of one node in two steps, so that they change together or not at all.
/// Everything that can fail is in the first.
class NodeChange {
public:
    /// A null node has nothing to change.
    explicit NodeChange(INode* node) noexcept : node_(node) {}
    /// Undoes what was prepared and not committed.
    ~NodeChange();
    NodeChange(const NodeChange&) = delete;
    NodeChange& operator=(const NodeChange&) = delete;

    /// Prepares the node's chunk to become a copy of `bytes`, which must stay until the commit. At
    /// most once for each of up to `kMostChunks` chunks. False for a null node or without memory.
    bool prepare(ChunkId id, std::span<const std::byte> bytes) noexcept;

    /// Makes the prepared changes and tells the host of them once. A chunk that was there stays,
    /// and keeps its buffer when the length is the same. Chunks that hold their bytes already do
    /// not count as changes: a scene that stays the same is not asked to be saved. False, with
    /// nothing changed, when there is no memory to keep what was there for an undo.
    bool commit() noexcept;

    /// Writes `bytes` over the first ones of a chunk that is at least as long, and tells the host
    /// if they differ. False, with nothing changed, as for `commit`.
    bool overwrite(ChunkId id, std::span<const std::byte> bytes) noexcept;

    static constexpr std::size_t kMostChunks = 3;

private:
    struct Addition {
        ChunkId id;
    };
    struct Replacement {
        AppDataChunk* chunk;
        void* block;  ///< the new buffer, ours until it is in the chunk
        std::size_t length;
    };
    struct Overwriting {
        AppDataChunk* chunk;
        std::span<const std::byte> bytes;
    };
    using Step = std::variant<Addition, Replacement, Overwriting>;

    bool add(ChunkId id, std::span<const std::byte> bytes) noexcept;
    /// Writes over the first bytes of the chunk, with which `bytes` may overlap.
    bool overwrite(const AppDataChunk& chunk, std::span<const std::byte> bytes) noexcept;

    INode* node_;
    std::array<Step, kMostChunks> steps_;
    std::size_t count_ = 0;
};

/// Makes the node's chunk a copy of `bytes`. A chunk that is there stays, and keeps its buffer when
/// the length is the same. False, with nothing changed, for a null node or without memory.
bool storeChunk(INode* node, ChunkId id, std::span<const std::byte> bytes) noexcept;

/// Removes the chunk; false when there is none.
bool removeChunk(INode* node, ChunkId id) noexcept;

}  // namespace fltkilnutil
