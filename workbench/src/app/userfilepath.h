// Where the program keeps what it remembers of its user.
#pragma once

#include <base/utf16.h>
#include <framework/win32.h>

#include <string>

namespace workbench {

/// The name under which the settings have the language, as `base::codeOf` returns it.
inline constexpr char kLanguageSetting[] = "language";
/// How much memory the history may use, in MB.
inline constexpr char kHistorySetting[] = "historyMegabytes";
/// The folders in which files are looked for, with "|" between them.
inline constexpr char kSearchSetting[] = "searchFolders";
/// What a click in the viewport takes: "objects" or "faces".
inline constexpr char kPickSetting[] = "pick";

/// The path of one of the user's files of this program; empty when the user has no place for them.
inline std::string userFilePath(const std::string& name) {
    wchar_t folder[MAX_PATH];
    const DWORD length = ::GetEnvironmentVariableW(L"APPDATA", folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return {};
    return base::toUtf8(folder) + "\\Workbench\\" + name;
}

}  // namespace workbench
