#pragma once

#include "replacedimport.h"

#include <utility>
#include <vector>

/// Hears the beeps of the module, which must have been loaded, in place of the user. One at a time.
class Beeps {
public:
    Beeps() { heard_.clear(); }

    /// The sounds since the last call, as the platform numbers them.
    static std::vector<UINT> take() { return std::exchange(heard_, {}); }

private:
    static BOOL WINAPI beep(UINT sound) {
        heard_.push_back(sound);
        return TRUE;
    }

    static inline std::vector<UINT> heard_;
    ReplacedImport beep_{GetModuleHandleW(L"Tessera.dlu"), "MessageBeep", &beep};
};

/// What a refusal sounds like.
inline const std::vector<UINT> kRefusal{0xFFFFFFFF};
