// The plug-in of the palettes: what the host calls first, and its application object.
#include <framework/cwinapp.h>
#include <kiln/kiln.h>
#include <palettes/palettefunctions.h>

using framework::CWinApp;

namespace {

CWinApp theApp;

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
    return 0;
}

KILN_PLUGIN_EXPORT ClassDesc* LibClassDesc(int) {
    return nullptr;
}

KILN_PLUGIN_EXPORT DWORD LibVersion() {
    return KILN_SDK_VERSION;
}
