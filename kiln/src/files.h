// Whole files at once.
#pragma once

#include <kiln/host/status.h>

#include <string>

namespace kiln {

/// Reads the file at `path` (UTF-8) into `text`.
Status readFile(const std::string& path, std::string& text);

/// Writes `text` to a temporary file beside `path`, down to the disk, and renames it to `path`.
/// After a failure the temporary file is gone and what was at `path` is as it was.
Status replaceFile(const std::string& path, const std::string& text);

}  // namespace kiln
