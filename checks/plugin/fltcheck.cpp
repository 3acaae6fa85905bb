// The plug-in that checks scenes: what the host calls first, and its application object.
#include "checkpanel.h"
#include "geometrypanel.h"
#include "texts.h"

#include <checks/checkfunctions.h>
#include <checks/geometryfunctions.h>
#include <framework/cwinapp.h>
#include <framework/module.h>
#include <kiln/kiln.h>
#include <kiln/language.h>

#include <iterator>
#include <string>

using checks::CheckPanel, checks::GeometryPanel, checks::TextId;
using framework::CWinApp, framework::ModuleScope, framework::moduleInstance;

namespace {

/// A utility of which there is one static object.
class UtilityClassDesc final : public ClassDesc2 {
public:
    UtilityClassDesc(UtilityObj& (*utility)(), const Class_ID& id, TextId name,
                     const char* internalName)
        : utility_(utility), id_(id), nameId_(name), internalName_(internalName) {}

    bool IsPublic() override { return true; }
    /// Always the static object, which the host never frees.
    void* Create(bool) override { return &utility_(); }
    const char* ClassName() override {
        const ModuleScope scope;
        try {
            name_ = checks::textOf(nameId_);
        } catch (...) {
            name_.clear();
        }
        return name_.c_str();
    }
    SClass_ID SuperClassID() override { return UTILITY_CLASS_ID; }
    Class_ID ClassID() override { return id_; }
    const char* Category() override { return ""; }
    const char* InternalName() override { return internalName_; }
    HINSTANCE HInstance() override { return moduleInstance(); }

private:
    UtilityObj& (*utility_)();
    Class_ID id_;
    TextId nameId_;
    const char* internalName_;
    std::string name_;
};

UtilityClassDesc theClasses[] = {
    {[]() -> UtilityObj& { return CheckPanel::instance(); }, Class_ID(0x3B6E90D5, 0x1C47A82F),
     TextId::kUtility, "FltCheckUtil"},
    {[]() -> UtilityObj& { return GeometryPanel::instance(); }, Class_ID(0x3B6E90D5, 0x1C47A830),
     TextId::kGeometry, "FltGeometryUtil"},
};

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
    checks::geometryFunctions();
    return "OpenFlight checks";
}

KILN_PLUGIN_EXPORT int LibNumberClasses() {
    return static_cast<int>(std::size(theClasses));
}

KILN_PLUGIN_EXPORT ClassDesc* LibClassDesc(int index) {
    return index >= 0 && index < LibNumberClasses() ? &theClasses[index] : nullptr;
}

KILN_PLUGIN_EXPORT DWORD LibVersion() {
    return KILN_SDK_VERSION;
}
