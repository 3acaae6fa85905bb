// Resources by language. The platform's own calls choose by the language of the machine; these by
// the one that they are told. For Windows only.
#pragma once

#include <base/language.h>
#include <windows.h>

#include <string_view>

namespace base {

/// The module file that this code is linked into.
HMODULE ownModule() noexcept;

/// The resource `id` of a type (RT_DIALOG, RT_MENU and so on) in `language` or in none, else the
/// Chinese one, else (in a module of others) whatever the platform finds; null when there is none.
/// It is read only, and lasts as long as `module` is loaded.
const void* findResource(HMODULE module, const wchar_t* type, unsigned id,
                         Language language) noexcept;

/// The string resource `id`, chosen in the same way; empty when there is none.
/// Lasts as long as `module` is loaded.
std::wstring_view findString(HMODULE module, unsigned id, Language language) noexcept;

}  // namespace base
