// The check for scripts and other programs.
#pragma once

#include <kiln/fp.h>

namespace checks {

/// The published interface "FltCheck": `run` checks the scene for a target, the others ask for what
/// the last run has found, by index from 1 on as scripts count, or mend it. Registered with the
/// host from the module's load to its unload; not owned by the caller.
FPStaticInterface& checkFunctions();

}  // namespace checks
