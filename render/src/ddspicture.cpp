#include "ddspicture.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace render {
namespace {

constexpr std::size_t kHeader = 128, kExtendedHeader = 20;
constexpr int kBlock = 4;  // texels on each side

/// How the texels of a block are kept; the number is that of the format's family.
enum class Blocks { kColors = 1, kAlphaOfTexels = 2, kAlphaBetween = 3 };

using Texels = std::array<std::uint32_t, kBlock * kBlock>;

/// Numbers are little-endian.
std::uint32_t number(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = size; i-- > 0;) value = value << 8 | bytes[at + i];
    return value;
}

bool isText(std::span<const std::uint8_t> bytes, std::size_t at, const char (&text)[5]) {
    return std::memcmp(bytes.data() + at, text, 4) == 0;
}

Blocks blocksOf(std::span<const std::uint8_t> bytes, std::size_t& start) {
    start = kHeader;
    constexpr std::size_t kFormat = 84;
    if (isText(bytes, kFormat, "DXT1")) return Blocks::kColors;
    if (isText(bytes, kFormat, "DXT3")) return Blocks::kAlphaOfTexels;
    if (isText(bytes, kFormat, "DXT5")) return Blocks::kAlphaBetween;
    if (isText(bytes, kFormat, "DX10") && bytes.size() >= kHeader + kExtendedHeader) {
        start = kHeader + kExtendedHeader;
        switch (number(bytes, kHeader, 4)) {
            case 70:
            case 71:
            case 72:
                return Blocks::kColors;
            case 73:
            case 74:
            case 75:
                return Blocks::kAlphaOfTexels;
            case 76:
            case 77:
            case 78:
                return Blocks::kAlphaBetween;
            default:
                break;
        }
    }
    throw PictureError(PictureFault::kUnknownKind, "an unknown kind of DDS picture");
}

/// Red, green and blue of 5, 6 and 5 bits.
std::array<std::uint32_t, 3> channelsOf(std::uint32_t color) {
    return {(color >> 11) * 255 / 31, (color >> 5 & 63) * 255 / 63, (color & 31) * 255 / 31};
}

/// A color between two, `share` parts of `all` from the first.
std::uint32_t between(std::uint32_t a, std::uint32_t b, std::uint32_t share, std::uint32_t all) {
    const auto from = channelsOf(a), to = channelsOf(b);
    std::uint32_t color = 0;
    for (std::size_t i = 0; i < 3; ++i)
        color = color << 8 | (from[i] * (all - share) + to[i] * share) / all;
    return color;
}

/// Two colors, and two bits for each texel: one of them, or one between them. With the lower color
/// first, where that is allowed, one of those between can be seen through.
void readColors(std::span<const std::uint8_t> block, bool mayBeClear, Texels& texels) {
    constexpr std::uint32_t kOpaque = 0xFF000000;
    const std::uint32_t a = number(block, 0, 2), b = number(block, 2, 2);
    std::array<std::uint32_t, 4> colors{between(a, b, 0, 1), between(a, b, 1, 1)};
    if (a > b || !mayBeClear) {
        colors[2] = between(a, b, 1, 3);
        colors[3] = between(a, b, 2, 3);
    } else {
        colors[2] = between(a, b, 1, 2);
    }
    const std::uint32_t places = number(block, 4, 4);
    for (std::size_t i = 0; i < texels.size(); ++i) {
        const std::uint32_t place = places >> 2 * i & 3;
        const bool isClear = mayBeClear && a <= b && place == 3;
        texels[i] = isClear ? 0 : colors[place] | kOpaque;
    }
}

void setAlpha(std::uint32_t& texel, std::uint32_t alpha) {
    texel = (texel & 0xFFFFFF) | alpha << 24;
}

void readAlphaOfTexels(std::span<const std::uint8_t> block, Texels& texels) {
    for (std::size_t i = 0; i < texels.size(); ++i)
        setAlpha(texels[i], (block[i / 2] >> 4 * (i % 2) & 15) * 17u);
}

/// Two values, and three bits for each texel: one of them or one between them; with the lower one
/// first the last two are none and all.
void readAlphaBetween(std::span<const std::uint8_t> block, Texels& texels) {
    const std::uint32_t a = block[0], b = block[1];
    const std::uint32_t steps = a > b ? 7 : 5;
    std::array<std::uint32_t, 8> values{a, b, 0, 0, 0, 0, 0, 255};
    for (std::uint32_t i = 1; i < steps; ++i) values[i + 1] = (a * (steps - i) + b * i) / steps;
    const std::uint64_t places =
        number(block, 2, 4) | static_cast<std::uint64_t>(number(block, 6, 2)) << 32;
    for (std::size_t i = 0; i < texels.size(); ++i)
        setAlpha(texels[i], values[places >> 3 * i & 7]);
}

Texels readBlock(std::span<const std::uint8_t> block, Blocks kind) {
    Texels texels;
    readColors(block.last(8), kind == Blocks::kColors, texels);
    if (kind == Blocks::kAlphaOfTexels) readAlphaOfTexels(block, texels);
    if (kind == Blocks::kAlphaBetween) readAlphaBetween(block, texels);
    return texels;
}

}  // namespace

bool isDdsPicture(std::span<const std::uint8_t> bytes) {
    return bytes.size() >= 4 && isText(bytes, 0, "DDS ");
}

Picture readDdsPicture(std::span<const std::uint8_t> bytes) {
    if (!isDdsPicture(bytes)) throw PictureError(PictureFault::kOtherFormat, "no DDS picture");
    if (bytes.size() < kHeader) throw PictureError(PictureFault::kCutShort, "cut short");
    std::size_t start = 0;
    const Blocks kind = blocksOf(bytes, start);
    const std::size_t height = number(bytes, 12, 4), width = number(bytes, 16, 4);
    if (width == 0 || height == 0) throw PictureError(PictureFault::kEmpty, "an empty picture");
    if (width > kMostTexels || height > kMostTexels || width * height > kMostTexels)
        throw PictureError(PictureFault::kTooLarge, "too large a picture");
    const std::size_t across = (width + kBlock - 1) / kBlock, down = (height + kBlock - 1) / kBlock;
    const std::size_t blockSize = kind == Blocks::kColors ? 8 : 16;
    if ((bytes.size() - start) / blockSize < across * down)
        throw PictureError(PictureFault::kCutShort, "cut short");
    Picture picture{static_cast<int>(width), static_cast<int>(height), {}};
    picture.texels.resize(width * height);
    for (std::size_t at = 0; at < across * down; ++at) {
        const Texels texels = readBlock(bytes.subspan(start + at * blockSize, blockSize), kind);
        const std::size_t left = at % across * kBlock, top = at / across * kBlock;
        for (std::size_t i = 0; i < texels.size(); ++i) {
            const std::size_t x = left + i % kBlock, y = top + i / kBlock;
            // The file's rows run from top to bottom.
            if (x < width && y < height) picture.texels[(height - 1 - y) * width + x] = texels[i];
        }
    }
    return picture;
}

}  // namespace render
