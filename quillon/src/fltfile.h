// Files by UTF-8 path.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>

namespace quillon {

/// The path that UTF-8 `text` names, in the platform's own form.
std::filesystem::path nativePath(const std::string& text);

/// Opens `path` in binary, for reading or, replacing what is there, for writing. Null with `errno`
/// set on failure.
std::FILE* openFile(const std::filesystem::path& path, bool forWriting) noexcept;

}  // namespace quillon
