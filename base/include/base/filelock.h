// Files that say that a program is running.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace base {

/// A file that one program has for itself, for as long as this object lives: no longer than the
/// program, however that ends.
class FileLock {
public:
    /// Makes the file at `path` (UTF-8) or takes the one that is there; nothing when another
    /// program, or another lock of this one, has it, or it cannot be made.
    static std::optional<FileLock> take(const std::string& path);

    FileLock(FileLock&& other) noexcept : handle_(std::exchange(other.handle_, kNone)) {}
    FileLock& operator=(FileLock&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~FileLock();

private:
    using Handle = std::intptr_t;
    static constexpr Handle kNone = -1;
    explicit FileLock(Handle handle) noexcept : handle_(handle) {}

    Handle handle_ = kNone;
};

}  // namespace base
