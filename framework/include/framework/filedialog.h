// The platform's dialogs for choosing files. They may throw `std::bad_alloc`.
#pragma once

#include <framework/win32.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace framework {

/// One line of a file dialog's type list: ("OpenFlight files", "*.flt;*.fltz").
struct FileFilter {
    std::string name;
    std::string pattern;
};

/// Asks for an existing file. Nothing when the user cancels. Texts are UTF-8. `folder` is where the
/// dialog begins; empty for where the platform likes.
std::optional<std::string> askOpenFile(HWND owner, std::string_view title,
                                       const std::vector<FileFilter>& filters,
                                       std::string_view folder = {});

/// Asks for a file to write, warning before one is replaced. `extension` (without a dot) is added
/// to a name typed without one; `suggestion` is the name that stands there first, with or without a
/// folder. `filter`, when given, is the position of the type that is chosen at first, and then of
/// the user's.
std::optional<std::string> askSaveFile(HWND owner, std::string_view title,
                                       const std::vector<FileFilter>& filters,
                                       std::string_view extension, std::string_view suggestion = {},
                                       std::size_t* filter = nullptr);

}  // namespace framework
