// The plug-in that checks scenes: what the host calls first, and its application object.
#include "checkpanel.h"
#include "geometrypanel.h"
#include "texts.h"

#include <checks/checkfunctions.h>
#include <checks/geometryfunctions.h>
#include <kiln/kiln.h>
#include <plugin/pluginapp.h>
#include <plugin/utilityclass.h>

#include <iterator>

using checks::CheckPanel, checks::GeometryPanel, checks::TextId;

namespace {

plugin::UtilityClass theClasses[] = {
    {[]() -> UtilityObj& { return CheckPanel::instance(); }, Class_ID(0x3B6E90D5, 0x1C47A82F),
     [] { return checks::textOf(TextId::kUtility); }, "FltCheckUtil"},
    {[]() -> UtilityObj& { return GeometryPanel::instance(); }, Class_ID(0x3B6E90D5, 0x1C47A830),
     [] { return checks::textOf(TextId::kGeometry); }, "FltGeometryUtil"},
};

class CheckApp final : public plugin::PluginApp {
    void followLanguage() override { CheckPanel::instance().window().followLanguage(); }
    void destroyWindow() override { CheckPanel::instance().window().DestroyWindow(); }
};

CheckApp theApp;

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    return plugin::PluginApp::DllMain(reason);
}

KILN_PLUGIN_EXPORT const char* LibDescription() {
    // Keeps the published functions in the module.
    checks::checkFunctions();
    checks::geometryFunctions();
    return theClasses[0].ClassName();
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
