// The attributes of OpenFlight nodes, for scripts.
#pragma once

#include <script/engine.h>

namespace script {

/// getAttr, setAttr and attrKeys over the attribute keys, and the node property `kind`.
void addAttributeVerbs(Engine& engine);

}  // namespace script
