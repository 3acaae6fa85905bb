// A heap that counts, for programs that link it.
#pragma once

#include <cstddef>

/// How often this program has allocated with `new` so far.
std::size_t heapAllocations();

/// Lets the next `count` allocations with `new` succeed and the one after them fail.
void failAllocationAfter(std::size_t count);

/// Takes that back; returns whether it has failed by now.
bool endAllocationFailure();
