// Where the captions of the attribute table come from.
#pragma once

#include <base/language.h>

#include <cstdint>
#include <functional>
#include <string>

namespace fltkilnutil {

/// Gives the caption with an id in a language, as UTF-8; false when there is none.
using CaptionReader =
    std::function<bool(base::Language language, std::uint32_t id, std::string& text)>;

inline constexpr const char* kCaptionLibrary = "FltKilnUtilRes.dll";

/// Opens the caption library; an empty function when it cannot be loaded.
///
/// On Windows that is the resource library in the host's directory 0, loaded as data and released
/// with the reader. Elsewhere the captions are compiled in.
CaptionReader openCaptionLibrary();

#ifndef _WIN32
/// Makes the compiled-in captions as missing as the library is for a user who did not install it.
/// Counts until the table is built, at the first look-up.
void setCaptionLibraryInstalled(bool installed) noexcept;
#endif

}  // namespace fltkilnutil
