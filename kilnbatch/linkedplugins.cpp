#include "plugins.h"

#include <checks/checkfunctions.h>
#include <checks/geometryfunctions.h>
#include <kiln/host/host.h>
#include <palettes/palettefunctions.h>
#include <tessera/attributeverbs.h>
#include <tessera/aviaryutil.h>
#include <xref/xreffunctions.h>

KILN_PLUGIN_EXPORT const char* LibDescription();
KILN_PLUGIN_EXPORT int LibNumberClasses();
KILN_PLUGIN_EXPORT ClassDesc* LibClassDesc(int index);
KILN_PLUGIN_EXPORT DWORD LibVersion();

namespace kilnbatch {

std::vector<std::string> loadPlugins(const std::string&) {
    // Published from here on.
    tessera::aviaryUtil();
    tessera::attributeVerbs();
    checks::checkFunctions();
    checks::geometryFunctions();
    palettes::paletteFunctions();
    xref::xrefFunctions();
    const kiln::Status status = kiln::registerModule(
        "OpenFlight interchange", {LibDescription, LibNumberClasses, LibClassDesc, LibVersion});
    if (status.ok()) return {};
    return {status.message()};
}

}  // namespace kilnbatch
