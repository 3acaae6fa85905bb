// What a module (program or library) switches to while its own code runs: where its resources come
// from and which version of the common controls its windows use.
#pragma once

#include <base/language.h>
#include <base/scopedvalue.h>
#include <framework/win32.h>

namespace framework {

/// The handle of the program or library that this code is linked into.
HINSTANCE moduleInstance() noexcept;

/// Where dialogs, strings and bitmaps are looked up: the module itself unless `setResourceInstance`
/// named another. UI thread only.
HINSTANCE resourceInstance() noexcept;

/// Looks resources up in `instance` (not owned) until the next call or the end of the innermost
/// `ModuleScope`. Null means the module itself.
void setResourceInstance(HINSTANCE instance) noexcept;

/// The language of the dialogs, menus and strings that are opened next: what the source says, and
/// Chinese without one. UI thread only.
base::Language resourceLanguage() noexcept;

/// Has `source` asked for the language from now on; null for none. Each module has its own.
void setLanguageSource(base::Language (*source)() noexcept) noexcept;

/// While it lives, resources come from this module and windows are created under the activation
/// context of the manifest that this module carries as resource 2 (a module without one keeps the
/// caller's context). The destructor restores what was there, on every way out, also by exception.
/// Every exported function of a library opens one; window procedures of this layer do so
/// themselves. Scopes nest and must end in the reverse order of their creation. Cheap: about two
/// calls.
class ModuleScope {
public:
    ModuleScope() noexcept;
    ~ModuleScope();
    ModuleScope(const ModuleScope&) = delete;
    ModuleScope& operator=(const ModuleScope&) = delete;

private:
    base::ScopedValue<HINSTANCE> resources_;
    ULONG_PTR cookie_ = 0;
    bool activated_ = false;
};

}  // namespace framework
