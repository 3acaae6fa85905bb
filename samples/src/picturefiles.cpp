#include "picturefiles.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace samples {

namespace {

constexpr std::size_t kSide = kPictureSide;

std::string little(std::size_t value, int size) {
    std::string bytes;
    for (; size > 0; --size, value >>= 8) bytes += static_cast<char>(value);
    return bytes;
}

std::uint32_t channel(std::uint32_t texel, unsigned shift) {
    return texel >> shift & 0xFF;
}

/// Three channels of all rows, with alpha or without.
std::string texels(const Painting& paint, bool withAlpha, bool fromBelow, bool redFirst) {
    std::string bytes;
    for (std::size_t row = 0; row < kSide; ++row)
        for (std::size_t x = 0; x < kSide; ++x) {
            const std::uint32_t color = paint(x, fromBelow ? row : kSide - 1 - row);
            for (const unsigned shift : {0U, 8U, 16U})
                bytes += static_cast<char>(color >> (redFirst ? 16 - shift : shift));
            if (withAlpha) bytes += static_cast<char>(color >> 24);
        }
    return bytes;
}

/// By the library's function for a format.
template <typename Write>
std::string written(const Write& write) {
    std::string bytes;
    const auto append = [](void* to, void* data, int size) {
        static_cast<std::string*>(to)->append(static_cast<const char*>(data),
                                              static_cast<std::size_t>(size));
    };
    if (write(append, &bytes) == 0) throw std::runtime_error("cannot write a picture");
    return bytes;
}

std::string deflated(std::string plain) {
    constexpr int kQuality = 8;
    int size = 0;
    const std::unique_ptr<unsigned char, void (*)(void*)> packed(
        stbi_zlib_compress(reinterpret_cast<unsigned char*>(plain.data()),
                           static_cast<int>(plain.size()), &size, kQuality),
        std::free);
    if (!packed) throw std::bad_alloc();
    return {packed.get(), packed.get() + size};
}

using Block = std::array<std::uint32_t, 16>;  // texels, from the upper left on

/// The number of the choice that is nearest to a value.
template <std::size_t kCount, typename Value, typename Distance>
std::size_t nearest(const std::array<Value, kCount>& choices, const Value& value,
                    const Distance& distance) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < kCount; ++i)
        if (distance(choices[i], value) < distance(choices[best], value)) best = i;
    return best;
}

std::uint32_t distanceOf(std::uint32_t a, std::uint32_t b) {
    std::uint32_t sum = 0;
    for (const unsigned shift : {0U, 8U, 16U}) {
        const auto apart =
            static_cast<int>(channel(a, shift)) - static_cast<int>(channel(b, shift));
        sum += static_cast<std::uint32_t>(apart * apart);
    }
    return sum;
}

/// In 16 bits: 5 of red, 6 of green, 5 of blue.
std::uint32_t narrow(std::uint32_t color) {
    return channel(color, 16) >> 3 << 11 | channel(color, 8) >> 2 << 5 | channel(color, 0) >> 3;
}

std::uint32_t widened(std::uint32_t narrowed) {
    return (narrowed >> 11 & 31) * 255 / 31 << 16 | (narrowed >> 5 & 63) * 255 / 63 << 8 |
           (narrowed & 31) * 255 / 31;
}

/// Two colors, and for each texel which of them, or what between them, is nearest.
std::string colorBlock(const Block& block) {
    const auto brightness = [](std::uint32_t color) {
        return channel(color, 16) * 3 + channel(color, 8) * 6 + channel(color, 0);
    };
    const auto [darkest, brightest] = std::ranges::minmax(block, {}, brightness);
    // The greater first: there are four choices then.
    std::uint32_t first = narrow(brightest), second = narrow(darkest);
    if (first < second) std::swap(first, second);
    const auto between = [&](std::uint32_t ofFirst, std::uint32_t ofSecond) {
        std::uint32_t color = 0;
        for (const unsigned shift : {0U, 8U, 16U})
            color |= (channel(widened(first), shift) * ofFirst +
                      channel(widened(second), shift) * ofSecond) /
                         3
                     << shift;
        return color;
    };
    const std::array choices = {widened(first), widened(second), between(2, 1), between(1, 2)};
    std::size_t indices = 0;
    for (std::size_t i = 0; i < block.size(); ++i)
        indices |= (first == second ? 0 : nearest(choices, block[i], distanceOf)) << 2 * i;
    return little(first, 2) + little(second, 2) + little(indices, 4);
}

std::string sharpAlphaBlock(const Block& block) {
    std::size_t bits = 0;
    for (std::size_t i = 0; i < block.size(); ++i)
        bits |= std::size_t{channel(block[i], 24) >> 4} << 4 * i;
    return little(bits, 8);
}

std::string smoothAlphaBlock(const Block& block) {
    const auto alpha = [](std::uint32_t texel) { return channel(texel, 24); };
    const auto [least, most] = std::ranges::minmax(block, {}, alpha);
    std::array<std::uint32_t, 8> choices = {alpha(most), alpha(least)};
    for (std::uint32_t i = 2; i < 8; ++i)
        choices[i] = (choices[0] * (8 - i) + choices[1] * (i - 1)) / 7;
    std::size_t indices = 0;
    for (std::size_t i = 0; i < block.size(); ++i) {
        const auto apart = [](std::uint32_t a, std::uint32_t b) { return a < b ? b - a : a - b; };
        const std::size_t index =
            choices[0] == choices[1] ? 0 : nearest(choices, alpha(block[i]), apart);
        indices |= index << 3 * i;
    }
    return little(choices[0], 1) + little(choices[1], 1) + little(indices, 6);
}

}  // namespace

std::string sgiPicture(const Painting& paint, unsigned channels) {
    const bool isGrey = channels < 3;
    std::string bytes = {0x01, '\xDA', 0, 1,     0, static_cast<char>(channels == 1 ? 2 : 3),
                         0,    kSide,  0, kSide, 0, static_cast<char>(channels)};
    bytes.resize(512);
    for (unsigned i = 0; i < channels; ++i) {
        const bool isAlpha = i == 3 || (isGrey && i == 1);
        const unsigned shift = isAlpha ? 24 : isGrey ? 0 : 16 - 8 * i;
        for (std::size_t y = 0; y < kSide; ++y)
            for (std::size_t x = 0; x < kSide; ++x)
                bytes += static_cast<char>(paint(x, y) >> shift);
    }
    return bytes;
}

std::string tgaPicture(const Painting& paint) {
    std::string head(18, '\0');
    head[2] = 2;
    head[12] = head[14] = static_cast<char>(kSide);
    head[16] = 32;
    head[17] = 8;
    return head + texels(paint, true, true, false);
}

std::string bmpPicture(const Painting& paint) {
    constexpr std::size_t kHead = 54;
    return "BM" + little(kHead + kSide * kSide * 3, 4) + little(0, 4) + little(kHead, 4) +
           little(40, 4) + little(kSide, 4) + little(kSide, 4) + little(1, 2) + little(24, 2) +
           std::string(24, '\0') + texels(paint, false, true, false);
}

std::string tiffPicture(const Painting& paint) {
    constexpr std::size_t kTile = 48, kTiles = 4, kFields = 10, kHead = 8 + 2 + kFields * 12 + 4;
    const std::string rows = texels(paint, false, false, true);
    std::string places, lengths, tiles;
    for (std::size_t i = 0; i < kTiles; ++i) {
        const std::size_t left = i % 2 * kTile, top = i / 2 * kTile;
        std::string tile(kTile * kTile * 3, '\0');
        for (std::size_t y = 0; y < std::min(kTile, kSide - top); ++y)
            rows.copy(&tile[y * kTile * 3], std::min(kTile, kSide - left) * 3,
                      ((top + y) * kSide + left) * 3);
        const std::string packed = deflated(tile);
        places += little(kHead + 2 * kTiles * 4 + tiles.size(), 4);
        lengths += little(packed.size(), 4);
        tiles += packed;
    }
    const std::array<std::size_t, 3> fields[kFields] = {
        {256, 1, kSide},      {257, 1, kSide},
        {258, 1, 8},          {259, 1, 8},
        {262, 1, 2},          {277, 1, 3},
        {322, 1, kTile},      {323, 1, kTile},
        {324, kTiles, kHead}, {325, kTiles, kHead + kTiles * 4}};
    std::string bytes = "II" + little(42, 2) + little(8, 4) + little(kFields, 2);
    for (const auto& [tag, count, value] : fields)
        bytes += little(tag, 2) + little(4, 2) + little(count, 4) + little(value, 4);
    return bytes + little(0, 4) + places + lengths + tiles;
}

std::string pngPicture(const Painting& paint) {
    const std::string rows = texels(paint, true, false, true);
    return written([&](stbi_write_func* append, void* to) {
        return stbi_write_png_to_func(append, to, kSide, kSide, 4, rows.data(), 4 * kSide);
    });
}

std::string jpegPicture(const Painting& paint) {
    constexpr int kQuality = 95;
    const std::string rows = texels(paint, false, false, true);
    return written([&](stbi_write_func* append, void* to) {
        return stbi_write_jpg_to_func(append, to, kSide, kSide, 3, rows.data(), kQuality);
    });
}

std::string gifPicture(const Painting& paint) {
    constexpr std::uint32_t kShades = 5;  // of each channel
    constexpr int kBits = 7;              // of an index
    // While the table of texts is nearly empty, codes are bytes: it is emptied again and again.
    constexpr std::size_t kCodes = 100;
    constexpr char kClear = '\x80', kEnd = '\x81';
    std::string bytes =
        "GIF89a" + little(kSide, 2) + little(kSide, 2) + little(0xF0 | (kBits - 1), 1);
    bytes += little(0, 2);
    for (std::uint32_t i = 0; i < 1U << kBits; ++i)
        for (const std::uint32_t place : {kShades * kShades, kShades, 1U})
            bytes += static_cast<char>(i / place % kShades * 255 / (kShades - 1));
    bytes += ',' + little(0, 4) + little(kSide, 2) + little(kSide, 2) + little(0, 1);
    bytes += little(kBits, 1);
    std::string codes;
    for (std::size_t i = 0; i < kSide * kSide; ++i) {
        if (i % kCodes == 0) codes += kClear;
        const std::uint32_t color = paint(i % kSide, kSide - 1 - i / kSide);
        std::uint32_t index = 0;
        for (const unsigned shift : {16U, 8U, 0U})
            index = index * kShades + (channel(color, shift) * (kShades - 1) + 127) / 255;
        codes += static_cast<char>(index);
    }
    codes += kEnd;
    for (std::size_t at = 0; at < codes.size(); at += 255) {
        const std::string part = codes.substr(at, 255);
        bytes += little(part.size(), 1) + part;
    }
    return bytes + little(0, 1) + ';';
}

std::string ddsPicture(const Painting& paint, Blocks kind) {
    constexpr std::size_t kHead = 124, kCaps = 0x1000, kHasFormat = 0x1007, kCode = 4;
    std::string bytes = "DDS " + little(kHead, 4) + little(kHasFormat, 4) + little(kSide, 4) +
                        little(kSide, 4) + little(0, 3 * 4) + std::string(11 * 4, '\0') +
                        little(32, 4) + little(kCode, 4) + "DXT" +
                        std::to_string(static_cast<int>(kind)) + std::string(5 * 4, '\0') +
                        little(kCaps, 4) + std::string(4 * 4, '\0');
    for (std::size_t down = 0; down < kSide; down += 4)
        for (std::size_t x = 0; x < kSide; x += 4) {
            Block block;
            for (std::size_t i = 0; i < block.size(); ++i)
                block[i] = paint(x + i % 4, kSide - 1 - down - i / 4);
            if (kind == Blocks::kSharpAlpha) bytes += sharpAlphaBlock(block);
            if (kind == Blocks::kSmoothAlpha) bytes += smoothAlphaBlock(block);
            bytes += colorBlock(block);
        }
    return bytes;
}

}  // namespace samples
