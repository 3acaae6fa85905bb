#pragma once

#include "replacedimport.h"

#include <malloc.h>
#include <cstdlib>
#include <cstring>
#include <vector>

/// While it lives, what the module frees is overwritten and not given out again, so that whoever
/// still uses it goes astray. Access violations are counted, also those that the platform hides
/// because they happen in a window procedure or a hook. One at a time.
class OverwrittenMemory {
public:
    OverwrittenMemory() : handler_(AddVectoredExceptionHandler(1, count)) { violations_ = 0; }
    ~OverwrittenMemory() {
        RemoveVectoredExceptionHandler(handler_);
        for (void* const block : kept_) std::free(block);
        kept_.clear();
    }
    OverwrittenMemory(const OverwrittenMemory&) = delete;
    OverwrittenMemory& operator=(const OverwrittenMemory&) = delete;

    bool isThere() const { return free_.isThere(); }
    int violations() const { return violations_; }

private:
    static void overwrite(void* block) {
        constexpr int kFreed = 0xDD;  // no address that can be read begins with it
        if (!block) return;
        std::memset(block, kFreed, _msize(block));
        kept_.push_back(block);
    }
    static LONG CALLBACK count(EXCEPTION_POINTERS* raised) {
        if (raised->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION) ++violations_;
        return EXCEPTION_CONTINUE_SEARCH;
    }

    static inline std::vector<void*> kept_;
    static inline int violations_ = 0;
    PVOID handler_;
    ReplacedImport free_{GetModuleHandleW(L"Tessera.dlu"), "free", &overwrite};
};
