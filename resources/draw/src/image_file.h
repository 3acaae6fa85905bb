#pragma once

#include <cstdint>
#include <vector>

#include "canvas.h"

namespace draw {

// A Windows bitmap file of 24 bits per pixel; the canvas must have no clear pixel left.
std::vector<std::uint8_t> bitmapFile(const Canvas& canvas);

// A Windows icon file with one picture of 32 bits per pixel for each canvas, transparency kept.
std::vector<std::uint8_t> iconFile(const std::vector<Canvas>& canvases);

}  // namespace draw
