// Picture files of each format that databases name, 64 by 64 texels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace samples {

inline constexpr std::size_t kPictureSide = 64;

/// Alpha, red, green and blue of a texel, from the highest byte on; its row counted from below.
using Painting = std::function<std::uint32_t(std::size_t x, std::size_t y)>;

/// Of red, and of green, blue and alpha as far as there are channels; of one or two it is grey,
/// which is what is blue, and its alpha.
std::string sgiPicture(const Painting& paint, unsigned channels);
std::string tgaPicture(const Painting& paint);
std::string bmpPicture(const Painting& paint);
/// In deflated tiles, which reach beyond it.
std::string tiffPicture(const Painting& paint);
std::string pngPicture(const Painting& paint);
std::string jpegPicture(const Painting& paint);
/// In at most 125 colors, opaque.
std::string gifPicture(const Painting& paint);

/// How alpha is stored beside the colors of blocks of 4 by 4 texels.
enum class Blocks { kOpaque = 1, kSharpAlpha = 3, kSmoothAlpha = 5 };
std::string ddsPicture(const Painting& paint, Blocks kind);

}  // namespace samples
