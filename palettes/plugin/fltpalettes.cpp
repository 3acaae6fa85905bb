// The plug-in of the palettes: what the host calls first, and its application object.
#include "palettepanel.h"
#include "texts.h"

#include <kiln/kiln.h>
#include <palettes/palettefunctions.h>
#include <plugin/pluginapp.h>
#include <plugin/utilityclass.h>

using palettes::PalettePanel, palettes::TextId;

namespace {

plugin::UtilityClass theClass{[]() -> UtilityObj& { return PalettePanel::instance(); },
                              Class_ID(0x3B6E90D6, 0x1C47A830),
                              [] { return palettes::textOf(TextId::kUtility); }, "FltPalettesUtil"};

class PaletteApp final : public plugin::PluginApp {
    void followLanguage() override { PalettePanel::instance().followLanguage(); }
    void destroyWindow() override { PalettePanel::instance().destroyWindows(); }
};

PaletteApp theApp;

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    return plugin::PluginApp::DllMain(reason);
}

KILN_PLUGIN_EXPORT const char* LibDescription() {
    // Keeps the published functions in the module.
    palettes::paletteFunctions();
    return theClass.ClassName();
}

KILN_PLUGIN_EXPORT int LibNumberClasses() {
    return 1;
}

KILN_PLUGIN_EXPORT ClassDesc* LibClassDesc(int index) {
    return index == 0 ? &theClass : nullptr;
}

KILN_PLUGIN_EXPORT DWORD LibVersion() {
    return KILN_SDK_VERSION;
}
