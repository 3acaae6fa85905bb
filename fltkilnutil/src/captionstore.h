// The captions in memory.
#pragma once

#include <fltkilnutil/captions.h>

#include <cstdint>

namespace fltkilnutil {

/// 512 cells of text; cell i holds caption 101 + i. The texts stay where they are.
class CaptionStore {
public:
    /// Copies captions 101, 102, ... up to the first that the reader does not have. Longer ones
    /// than a cell holds are cut at a character boundary. Cells behind stay empty texts.
    explicit CaptionStore(const CaptionReader& reader);

    /// The caption with `id`, or an empty text; never null.
    const char* text(std::uint32_t id) const noexcept;

private:
    static constexpr std::uint32_t kFirstId = 101;
    static constexpr std::uint32_t kCells = 512;
    static constexpr std::uint32_t kTextSize = 256;

    char cells_[kCells][kTextSize + 1] = {};
};

}  // namespace fltkilnutil
