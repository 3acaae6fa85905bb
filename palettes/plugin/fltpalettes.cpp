// The plug-in of the palettes: what the host calls first, and its application object.
#include "palettepanel.h"
#include "texts.h"

#include <framework/cwinapp.h>
#include <framework/module.h>
#include <kiln/kiln.h>
#include <kiln/language.h>
#include <palettes/palettefunctions.h>

#include <string>

using framework::CWinApp, framework::ModuleScope, framework::moduleInstance;
using palettes::PalettePanel, palettes::TextId;

namespace {

constexpr Class_ID kUtilityId(0x3B6E90D6, 0x1C47A830);

class PaletteClassDesc final : public ClassDesc2 {
public:
    bool IsPublic() override { return true; }
    /// Always the one static object, which the host never frees.
    void* Create(bool) override { return static_cast<UtilityObj*>(&PalettePanel::instance()); }
    const char* ClassName() override {
        const ModuleScope scope;
        try {
            name_ = palettes::textOf(TextId::kUtility);
        } catch (...) {
            name_.clear();
        }
        return name_.c_str();
    }
    SClass_ID SuperClassID() override { return UTILITY_CLASS_ID; }
    Class_ID ClassID() override { return kUtilityId; }
    const char* Category() override { return ""; }
    const char* InternalName() override { return "FltPalettesUtil"; }
    HINSTANCE HInstance() override { return moduleInstance(); }

private:
    std::string name_;
};

PaletteClassDesc theClassDesc;

void followLanguage(void*, NotifyInfo*) {
    const ModuleScope scope;
    try {
        PalettePanel::instance().window().followLanguage();
    } catch (...) {
        // Without memory it goes on in the language before.
    }
}

class PaletteApp : public CWinApp {
public:
    bool InitInstance() override {
        framework::setLanguageSource(
            []() noexcept { return static_cast<base::Language>(GetLanguage()); });
        RegisterNotification(followLanguage, nullptr, NOTIFY_LANGUAGE_CHANGED);
        return true;
    }
    int ExitInstance() override {
        UnRegisterNotification(followLanguage, nullptr, NOTIFY_LANGUAGE_CHANGED);
        PalettePanel::instance().window().DestroyWindow();
        return CWinApp::ExitInstance();
    }
};

PaletteApp theApp;

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    return CWinApp::DllMain(reason);
}

KILN_PLUGIN_EXPORT const char* LibDescription() {
    // Keeps the published functions in the module.
    palettes::paletteFunctions();
    return "OpenFlight palettes";
}

KILN_PLUGIN_EXPORT int LibNumberClasses() {
    return 1;
}

KILN_PLUGIN_EXPORT ClassDesc* LibClassDesc(int index) {
    return index == 0 ? &theClassDesc : nullptr;
}

KILN_PLUGIN_EXPORT DWORD LibVersion() {
    return KILN_SDK_VERSION;
}
