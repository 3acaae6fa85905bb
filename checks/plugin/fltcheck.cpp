// The plug-in that checks scenes. It has no classes yet: what it offers is published for scripts.
#include <checks/checkfunctions.h>

#include <kiln/kiln.h>

KILN_PLUGIN_EXPORT const char* LibDescription() {
    // Keeps the published functions in the module.
    checks::checkFunctions();
    return "OpenFlight checks";
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
