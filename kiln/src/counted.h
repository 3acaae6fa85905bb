// Blocks of the host allocator for the core's own use, whose sizes it knows.
#pragma once

#include <cstddef>

namespace kiln {

/// Like `KILN_malloc`, for a `size` above 0; aligned as `KILN_newPiece` says. Null without memory,
/// and when an `AllocationLimit` says so.
void* allocateCounted(std::size_t size) noexcept;
void deallocateCounted(void* block, std::size_t size) noexcept;

}  // namespace kiln
