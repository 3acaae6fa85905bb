// The one object behind the published interface "Aviary".
#pragma once

#include <tessera/iaviaryutil.h>

namespace tessera {

/// The interface object, registered with the host from the module's load to its unload. Not owned
/// by the caller.
IAviaryUtil& aviaryUtil();

}  // namespace tessera
