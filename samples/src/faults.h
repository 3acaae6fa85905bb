// The sample of what can be wrong with a database.
#pragma once

#include <string>

namespace samples {

/// Writes faults.flt into `folder` (UTF-8), with at least one fault of each kind that a check for
/// revision 15.5 looks for, each in a group that is named after it, and the files that belong to
/// it: faults-tile.flt and faults.rgb. False when one of them cannot be written.
[[nodiscard]] bool writeFaults(const std::string& folder);

}  // namespace samples
