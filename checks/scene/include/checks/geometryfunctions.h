// The geometry of the scene's nodes for scripts.
#pragma once

class FPStaticInterface;

namespace checks {

/// "FltGeometry"; whoever names it keeps it in a module that links this statically.
FPStaticInterface& geometryFunctions();

}  // namespace checks
