// The palettes for scripts and other programs.
#pragma once

#include <kiln/fp.h>

namespace palettes {

/// The published interface "FltPalettes": what the palettes of a node's database hold, who uses
/// it, and edits. Registered with the host from the module's load to its unload; not owned by the
/// caller.
FPStaticInterface& paletteFunctions();

}  // namespace palettes
