// The vertex palette of a file that is being written.
#pragma once

#include <interchange/outline.h>

#include <array>
#include <cstdint>
#include <vector>

namespace interchange {

/// Collects vertex records. Equal ones stand in the palette once.
class VertexPalette {
public:
    VertexPalette();

    /// The offset from the start of the palette record by which vertex lists name `vertex`.
    /// Throws `ExportError` when the palette would exceed what an offset can count.
    std::uint32_t add(FileBytes vertex);

    /// The records, one after the other.
    FileBytes vertices() const noexcept { return bytes_; }
    bool empty() const noexcept { return bytes_.empty(); }

private:
    std::uint64_t hashOf(FileBytes bytes) const noexcept;
    std::uint32_t find(FileBytes vertex, std::uint64_t hash);
    void enlargeTable();

    std::vector<std::uint8_t> bytes_;
    std::vector<std::uint32_t> table_;  ///< by hash: offset in `bytes_` + 1, or 0
    /// By hash: those met lately, as in `table_`. Neighbouring polygons share vertices, and this is
    /// small enough to stay at hand.
    std::array<std::uint32_t, 4096> recent_{};
    std::size_t count_ = 0;
    /// Whoever made a file cannot know these, and so not which vertices fall together in the table.
    /// The order of the palette does not depend on them.
    std::uint64_t secret_[2];
};

}  // namespace interchange
