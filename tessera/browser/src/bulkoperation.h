// Flags that hold for a while.
#pragma once

#include <utility>

namespace tessera {

/// Sets a flag for as long as it lives, then puts back what was there: so the form tells its own
/// selection changes from the user's.
class BulkOperation {
public:
    explicit BulkOperation(bool& flag, bool value = true) noexcept
        : flag_(flag), former_(std::exchange(flag, value)) {}
    ~BulkOperation() { flag_ = former_; }
    BulkOperation(const BulkOperation&) = delete;
    BulkOperation& operator=(const BulkOperation&) = delete;

private:
    bool& flag_;
    bool former_;
};

}  // namespace tessera
