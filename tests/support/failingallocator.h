#pragma once

#include "replacedimport.h"

#include <cstdlib>

/// Stands before the allocator that the module imports and lets one allocation fail.
class FailingAllocator {
public:
    bool isThere() const { return malloc_.isThere(); }
    /// The next allocation but `count` fails.
    static void failAfter(int count) { left_ = count; }
    static bool hasFailed() { return left_ < 0; }
    static void failNever() { left_ = -1; }

private:
    static void* allocate(std::size_t size) {
        return left_ >= 0 && left_-- == 0 ? nullptr : std::malloc(size);
    }

    static inline int left_ = -1;
    ReplacedImport malloc_{GetModuleHandleW(L"Tessera.dlu"), "malloc", &allocate};
};
