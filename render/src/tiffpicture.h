// Pictures in TIFF files.
#pragma once

#include <render/picture.h>

namespace render {

/// Whether the bytes begin as those of a TIFF file, of either byte order.
bool isTiffPicture(std::span<const std::uint8_t> bytes);

/// Reads the first picture of a TIFF file: grey, palette or color, with alpha or without; 8 or 16
/// bits a channel, of which the upper 8 count, or 1, 2 or 4 bits of grey or a palette; in strips or
/// tiles, channels together or in planes; plain, packed, in LZW or deflated. Throws `PictureError`.
Picture readTiffPicture(std::span<const std::uint8_t> bytes);

}  // namespace render
