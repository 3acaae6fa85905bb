// What scripts do with the attributes of OpenFlight nodes.
#pragma once

#include <kiln/fp.h>

namespace tessera {

/// The published interface "FltAttributes", whose functions scripts call by their bare names:
/// `getAttr`, `setAttr`, `attrKeys` and `kind`. Registered with the host from the module's load to
/// its unload; not owned by the caller.
FPStaticInterface& attributeVerbs();

}  // namespace tessera
