// The hourglass during long work.
#pragma once

#include <framework/win32.h>

namespace framework {

/// Shows the wait cursor for as long as it lives, then the one that was there.
class CWaitCursor {
public:
    CWaitCursor() noexcept : former_(::SetCursor(::LoadCursorW(nullptr, IDC_WAIT))) {}
    ~CWaitCursor() { ::SetCursor(former_); }
    CWaitCursor(const CWaitCursor&) = delete;
    CWaitCursor& operator=(const CWaitCursor&) = delete;

private:
    HCURSOR former_;
};

}  // namespace framework
