// The vertex palette of a file that is being written.
#pragma once

#include <interchange/fileindex.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace interchange {

/// Collects vertex records. Equal ones stand in the palette once.
class VertexPalette {
public:
    VertexPalette();

    /// A vertex that is about to be added.
    struct Candidate {
        FileBytes vertex;
        std::uint32_t hash;
    };

    /// Gets ready for adding `vertex`. Doing so for some vertices before the first of them is added
    /// saves waiting for memory.
    Candidate consider(FileBytes vertex) const noexcept;
    /// The offset from the start of the palette record by which vertex lists name the vertex.
    /// Throws `ExportError` when the palette would exceed what an offset can count.
    std::uint32_t add(const Candidate& candidate);
    std::uint32_t add(FileBytes vertex) { return add(consider(vertex)); }

    /// The records: how many bytes they are, and whole ones at a time, one after the other.
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    template <typename Visit>
    void forEachBlock(Visit&& visit) const {
        for (const Block& block : blocks_) visit(FileBytes(block.bytes.get(), block.used));
    }

private:
    // The records lie in blocks, which stay where they are when more are needed. A record's place
    // is the number of its block and where in it the record begins.
    static constexpr std::size_t kBlockSize = std::size_t{1} << 20;
    struct Block {
        std::unique_ptr<std::uint8_t[]> bytes;
        std::uint32_t start = 0;  ///< offset of its first record from that of the palette's first
        std::uint32_t used = 0;
    };
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t place = 0;  ///< + 1; 0 for none
    };

    std::uint32_t hashOf(FileBytes bytes) const noexcept;
    bool isAt(std::uint32_t place, FileBytes vertex) const noexcept;
    std::uint32_t offsetOf(std::uint32_t place) const noexcept;
    std::uint32_t find(const Candidate& candidate);
    std::uint32_t append(FileBytes vertex);
    void enlargeTable();

    std::vector<Block> blocks_;
    std::size_t size_ = 0;
    std::vector<Slot> table_;  ///< by hash, a power of two of slots or none
    std::size_t count_ = 0;
    /// By hash: places + 1 of those met lately. Neighbouring polygons share vertices, and this is
    /// small enough to stay at hand.
    std::array<std::uint32_t, 4096> recent_{};
    /// Whoever made a file cannot know these, and so not which vertices fall together in the table.
    /// The order of the palette does not depend on them.
    std::uint64_t secret_[2];
};

}  // namespace interchange
