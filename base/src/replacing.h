// What the platform does to replace a file. All tell in `reason` why they could not.
#pragma once

#include <filesystem>
#include <system_error>

namespace base::replacing {

/// The file at `path`, or at the end of the links that begin there. It need not exist.
std::filesystem::path targetOf(std::filesystem::path path, std::error_code& reason);

/// Refuses a target that is there and is no file, or is write-protected.
void check(const std::filesystem::path& target, std::error_code& reason);

/// Makes the empty file `temporary`, which must not exist. While there is a target only its writer
/// may read what replaces it.
bool create(const std::filesystem::path& temporary, const std::filesystem::path& target,
            std::error_code& reason);

/// Writes `temporary` down to the disk, with the permissions of the target if that exists.
void flush(const std::filesystem::path& temporary, const std::filesystem::path& target,
           std::error_code& reason);

/// Puts `temporary` in the target's place in one step.
void rename(const std::filesystem::path& temporary, const std::filesystem::path& target,
            std::error_code& reason);

}  // namespace base::replacing
