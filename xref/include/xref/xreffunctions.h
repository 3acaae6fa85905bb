// References to other files for scripts and for the host's commands.
#pragma once

#include <kiln/fp.h>

namespace xref {

/// The published interface "FltReferences", whose functions scripts call by their bare names.
/// Registered with the host from the module's load to its unload; not owned by the caller.
FPStaticInterface& xrefFunctions();

}  // namespace xref
