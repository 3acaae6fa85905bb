// The plug-ins of a batch.
#pragma once

#include <string>
#include <vector>

namespace kilnbatch {

/// Makes the plug-ins known to the core, which must exist: those of `folder` (UTF-8; empty for the
/// folder "plugins" beside the program) where there are module files, otherwise those that are
/// linked in. Returns one sentence for each that could not be used.
std::vector<std::string> loadPlugins(const std::string& folder);

}  // namespace kilnbatch
