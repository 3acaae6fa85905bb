// Pictures as PNG files.
#pragma once

#include <render/geometry.h>

#include <span>
#include <string>

namespace render {

/// The bytes of a PNG file, the same for the same pixels. Rows run from top to bottom; the highest
/// byte of a pixel is not looked at. There are `width` times `height` pixels, at least one. Throws
/// `std::bad_alloc`.
std::string encodedPng(int width, int height, std::span<const Color> pixels);

}  // namespace render
