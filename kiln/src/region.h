// Large pieces of memory from the system.
#pragma once

#include <cstddef>

namespace kiln {

inline constexpr std::size_t kRegionSize = std::size_t{2} << 20;

/// `kRegionSize` bytes of zeros at a multiple of `kRegionSize`, in large pages where the system has
/// them: a big scene is then there without a page fault for every few of its nodes. Null without
/// memory.
void* takeRegion() noexcept;
void giveRegionBack(void* region) noexcept;

}  // namespace kiln
