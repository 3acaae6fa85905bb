// Small text helpers. All texts are UTF-8.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace kiln {

/// Equal but for the case of the letters A to Z.
bool sameTextIgnoringCase(std::string_view a, std::string_view b) noexcept;

/// `text` with every byte that is not part of well-formed UTF-8 replaced by U+FFFD.
std::string validUtf8(std::string_view text);

/// A path from UTF-8 and back.
std::filesystem::path pathFrom(std::string_view utf8);
std::string textOf(const std::filesystem::path& path);

}  // namespace kiln
