// Knowing when a form may be freed.
#pragma once

#include <base/scopedvalue.h>

namespace tessera {

/// Lives while a window procedure of the form, its key filter or an export is on the stack. The
/// client may destroy the form from within any event; its object must then outlive the calls that
/// led there.
class FormBusy {
public:
    FormBusy() noexcept : deeper_(depth_, depth_ + 1) {}

    /// How many are alive.
    static int depth() noexcept { return depth_; }

private:
    static inline int depth_ = 0;
    base::ScopedValue<int> deeper_;
};

}  // namespace tessera
