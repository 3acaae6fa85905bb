// Writing to open files.
#pragma once

#include <cstddef>
#include <cstdio>

namespace quillon {

/// Writes `size` bytes to `file` in one call, without its lock where the platform can: a file is
/// one thread's at a time. What the disk refuses is on the file's error indicator, where closing
/// it finds it.
inline void writeBytes(std::FILE* file, const void* bytes, std::size_t size) noexcept {
#ifdef _WIN32
    static_cast<void>(std::fwrite(bytes, 1, size, file));
#else
    static_cast<void>(fwrite_unlocked(bytes, 1, size, file));
#endif
}

}  // namespace quillon
