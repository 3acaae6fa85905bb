// A heap that counts, for programs that link it.
#pragma once

#include <cstddef>

/// How often this program has allocated with `new` so far.
std::size_t heapAllocations();
