// Paths to and from UTF-8.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace base {

/// The path that `utf8` names. On Windows bytes that are not UTF-8 become U+FFFD; elsewhere a path
/// is any bytes.
std::filesystem::path pathFrom(std::string_view utf8);

/// The text of a path, with the platform's own separators.
std::string textOf(const std::filesystem::path& path);
/// The same with "/" between folders.
std::string genericTextOf(const std::filesystem::path& path);

}  // namespace base
