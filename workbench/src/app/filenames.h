// Parts of file names, as text (UTF-8).
#pragma once

#include <base/text.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace workbench {

/// The last component of a path.
inline std::string fileName(std::string_view path) {
    return std::string(path.substr(path.find_last_of("/\\:") + 1));
}

/// What stands before the last component, without a separator at its end; empty for a bare name.
inline std::string folderOf(std::string_view path) {
    const std::size_t end = path.find_last_of("/\\");
    return end == std::string_view::npos ? std::string() : std::string(path.substr(0, end));
}

/// The last component without its extension.
inline std::string baseName(std::string_view path) {
    const std::string name = fileName(path);
    return name.substr(0, name.rfind('.'));
}

/// The text with "_" for what names of files cannot have.
inline std::string asFileName(std::string text) {
    std::ranges::replace_if(
        text,
        [](char c) { return (c >= 0 && c < ' ') || std::strchr("<>:\"/\\|?*", c) != nullptr; },
        '_');
    return text;
}

/// Whether the path ends in the extension, a name without a dot.
inline bool hasExtension(std::string_view path, std::string_view extension) {
    const std::string name = fileName(path);
    const std::size_t dot = name.rfind('.');
    return dot != std::string::npos &&
           base::sameTextIgnoringCase(std::string_view(name).substr(dot + 1), extension);
}

}  // namespace workbench
