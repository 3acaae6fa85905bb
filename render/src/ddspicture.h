// DDS pictures.
#pragma once

#include <render/picture.h>

namespace render {

bool isDdsPicture(std::span<const std::uint8_t> bytes);

/// Reads the largest level of a DDS picture in blocks of the first three kinds (BC1 to BC3, also
/// called DXT1, DXT3 and DXT5). Throws `PictureError`.
Picture readDdsPicture(std::span<const std::uint8_t> bytes);

}  // namespace render
