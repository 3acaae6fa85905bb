// Pictures in TIFF files.
#pragma once

#include <render/picture.h>

namespace render {

/// Whether the bytes begin as those of a TIFF file, of either byte order.
bool isTiffPicture(std::span<const std::uint8_t> bytes);

/// Reads the first picture of a baseline TIFF file: grey, palette or color, with alpha or without,
/// 8 bits a channel, or 1 bit of black and white; in strips, plain, packed or in LZW. What is
/// missing at the end of a strip is 0. Throws `PictureError`.
Picture readTiffPicture(std::span<const std::uint8_t> bytes);

}  // namespace render
