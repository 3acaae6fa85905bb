// Pictures of a model and of its textures, drawn by kilnbatch.
#pragma once

#include "facts.h"

#include <filesystem>
#include <string>

namespace fltool {

/// The program that draws: the one at `named` (UTF-8), or kilnbatch beside this program. Empty when
/// it is not there.
std::filesystem::path findKilnbatch(const std::string& named);

/// Has `kilnbatch` draw the model from four sides and at its levels of detail, and its textures
/// small. What cannot be drawn is left out; returns why, in English, or nothing.
std::string drawPictures(Facts& facts, const std::filesystem::path& kilnbatch);

}  // namespace fltool
