// Open files.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

namespace base {

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
/// Owns an open file. Who needs to know whether all was written closes the released file.
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Opens `path` in binary, for reading or, emptying what is there, for writing. Null with `errno`
/// set on failure.
File openFile(const std::filesystem::path& path, bool forWriting) noexcept;

/// Whether there is a file at `path`; false where nobody can tell.
bool isFile(const std::filesystem::path& path) noexcept;

/// Reads the whole file at `path` (UTF-8) into `bytes`; returns why it could not.
std::error_code readFile(const std::string& path, std::string& bytes);

}  // namespace base
