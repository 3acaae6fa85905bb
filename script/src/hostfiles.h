// Scene files, imports and exports.
#pragma once

#include <script/engine.h>

namespace script {

void addFileVerbs(Engine& engine);

}  // namespace script
