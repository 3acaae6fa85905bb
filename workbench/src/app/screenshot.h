// Pictures of what is on the screen.
#pragma once

#include <kiln/host/status.h>

#include <string>

namespace workbench {

/// Writes the whole desktop, with every window on it, as a PNG file at `path` (UTF-8). Refused when
/// the picture shows nothing (all of one color) or cannot be written.
kiln::Status saveScreenshot(const std::string& path);

}  // namespace workbench
