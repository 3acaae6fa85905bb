// Telling the browser's own selection changes from the user's.
#pragma once

#include <utility>

namespace tessera {

/// Sets a flag for as long as it lives, then puts back what was there.
class BulkOperation {
public:
    explicit BulkOperation(bool& flag) noexcept : flag_(flag), former_(std::exchange(flag, true)) {}
    ~BulkOperation() { flag_ = former_; }
    BulkOperation(const BulkOperation&) = delete;
    BulkOperation& operator=(const BulkOperation&) = delete;

private:
    bool& flag_;
    bool former_;
};

}  // namespace tessera
