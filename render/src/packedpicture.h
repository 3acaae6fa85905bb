// PNG, JPEG, TGA, BMP and GIF pictures.
#pragma once

#include <render/picture.h>

namespace render {

/// Reads any of them; of a GIF picture the first frame. Throws `PictureError`.
Picture readPackedPicture(std::span<const std::uint8_t> bytes);

}  // namespace render
