// The plug-in that checks scenes: what the host calls first, and its application object.
#include "checkpanel.h"
#include "texts.h"

#include <checks/checkfunctions.h>
#include <framework/cwinapp.h>
#include <framework/module.h>
#include <kiln/kiln.h>
#include <kiln/language.h>

#include <string>

using checks::CheckPanel, checks::TextId;
using framework::CWinApp, framework::ModuleScope, framework::moduleInstance;

namespace {

constexpr Class_ID kUtilityId(0x3B6E90D5, 0x1C47A82F);

class CheckClassDesc final : public ClassDesc2 {
public:
    bool IsPublic() override { return true; }
    /// Always the one static object, which the host never frees.
    void* Create(bool) override { return static_cast<UtilityObj*>(&CheckPanel::instance()); }
    const char* ClassName() override {
        const ModuleScope scope;
        try {
            name_ = checks::textOf(TextId::kUtility);
        } catch (...) {
            name_.clear();
        }
        return name_.c_str();
    }
    SClass_ID SuperClassID() override { return UTILITY_CLASS_ID; }
    Class_ID ClassID() override { return kUtilityId; }
    const char* Category() override { return ""; }
    const char* InternalName() override { return "FltCheckUtil"; }
    HINSTANCE HInstance() override { return moduleInstance(); }

private:
    std::string name_;
};

CheckClassDesc theClassDesc;

void followLanguage(void*, NotifyInfo*) {
    const ModuleScope scope;
    try {
        CheckPanel::instance().window().followLanguage();
    } catch (...) {
        // Without memory it goes on in the language before.
    }
}

class CheckApp : public CWinApp {
public:
    bool InitInstance() override {
        framework::setLanguageSource(
            []() noexcept { return static_cast<base::Language>(GetLanguage()); });
        RegisterNotification(followLanguage, nullptr, NOTIFY_LANGUAGE_CHANGED);
        return true;
    }
    int ExitInstance() override {
        UnRegisterNotification(followLanguage, nullptr, NOTIFY_LANGUAGE_CHANGED);
        CheckPanel::instance().window().DestroyWindow();
        return CWinApp::ExitInstance();
    }
};

CheckApp theApp;

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    return CWinApp::DllMain(reason);
}

KILN_PLUGIN_EXPORT const char* LibDescription() {
    // Keeps the published functions in the module.
    checks::checkFunctions();
    return "OpenFlight checks";
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
