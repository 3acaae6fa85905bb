#include "module_internal.h"

#include <base/resources.h>
#include <framework/module.h>

namespace framework {

namespace {

HINSTANCE g_resources = nullptr;
base::Language (*g_languageSource)() noexcept = nullptr;

constexpr WORD kIsolationAwareManifest = 2;

// Kept until the process ends: window procedures may still run while static objects are being
// destroyed, and the context of an unloaded module does no harm.
HANDLE createModuleContext() noexcept {
    ACTCTXW description{};
    description.cbSize = sizeof description;
    description.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
    description.hModule = moduleInstance();
    description.lpResourceName = MAKEINTRESOURCEW(kIsolationAwareManifest);
    return ::CreateActCtxW(&description);
}

HANDLE moduleContext() noexcept {
    static const HANDLE context = createModuleContext();
    return context;
}

}  // namespace

HINSTANCE moduleInstance() noexcept {
    return base::ownModule();
}

HINSTANCE resourceInstance() noexcept {
    return g_resources ? g_resources : moduleInstance();
}

void setResourceInstance(HINSTANCE instance) noexcept {
    g_resources = instance;
}

base::Language resourceLanguage() noexcept {
    return g_languageSource ? g_languageSource() : base::Language::kChinese;
}

void setLanguageSource(base::Language (*source)() noexcept) noexcept {
    g_languageSource = source;
}

ModuleScope::ModuleScope() noexcept : resources_(g_resources, nullptr) {
    const HANDLE context = moduleContext();
    activated_ = context != INVALID_HANDLE_VALUE && ::ActivateActCtx(context, &cookie_);
}

ModuleScope::~ModuleScope() {
    if (activated_) ::DeactivateActCtx(0, cookie_);
}

void ensureCommonControls() noexcept {
    static const bool ready = [] {
        const INITCOMMONCONTROLSEX classes{sizeof classes,
                                           ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
        return ::InitCommonControlsEx(&classes) != FALSE;
    }();
    static_cast<void>(ready);
}

}  // namespace framework
