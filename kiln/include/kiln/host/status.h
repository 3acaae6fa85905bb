// What an operation of the host came to.
#pragma once

#include <string>
#include <utility>

namespace kiln {

/// Success, or a failure with one sentence for the user (UTF-8).
class Status {
public:
    Status() = default;
    static Status failure(std::string message) {
        Status status;
        status.ok_ = false;
        status.message_ = std::move(message);
        return status;
    }

    bool ok() const noexcept { return ok_; }
    explicit operator bool() const noexcept { return ok_; }
    const std::string& message() const noexcept { return message_; }

private:
    bool ok_ = true;
    std::string message_;
};

}  // namespace kiln
