// What tests and the application can see and provoke in the host allocator.
#pragma once

#include <kiln/platform.h>

#include <cstddef>

namespace kiln {

/// Blocks of the host allocator that have not been freed.
KILNAPI std::size_t allocatedBlocks() noexcept;

/// Whether small blocks come from the core's own heap (as at first) or from the system's (as at
/// first under the address sanitizer). To be chosen before the first block is made.
KILNAPI void useSmallHeap(bool use) noexcept;

/// Lets the next `count` allocations succeed and all later ones fail, until this object goes.
/// Chunks and containers are made with the host allocator, so attaching them fails too.
class KILNAPI AllocationLimit {
public:
    explicit AllocationLimit(std::size_t count) noexcept;
    ~AllocationLimit();
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
};

/// Has nothing recorded in the history of the scene that is shown, scopes included, and forgets its
/// steps. For benchmarks; the scene stays the same one meanwhile.
class KILNAPI WithoutHistory {
public:
    WithoutHistory() noexcept;
    ~WithoutHistory();
    WithoutHistory(const WithoutHistory&) = delete;
    WithoutHistory& operator=(const WithoutHistory&) = delete;
};

}  // namespace kiln
