// PNG, JPEG, TGA, BMP and GIF pictures, and what is deflated in others.
#pragma once

#include <render/picture.h>

namespace render {

/// Reads any of them; of a GIF picture the first frame. Throws `PictureError`.
Picture readPackedPicture(std::span<const std::uint8_t> bytes);

/// Unpacks a zlib stream to the start of `to`, and takes no other memory. Returns how much of it
/// was filled: nothing where the stream is damaged, ends early or holds more.
std::size_t inflate(std::span<const std::uint8_t> from, std::span<std::uint8_t> to);

}  // namespace render
