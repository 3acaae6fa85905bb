#include "packedpicture.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <string_view>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_NO_STDIO
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_TGA
#define STBI_ONLY_BMP
#define STBI_ONLY_GIF
#define STBI_MAX_DIMENSIONS 16384
#include <stb/stb_image.h>

namespace render {

namespace {

constexpr std::size_t kCodeLengths = 16;
constexpr int kMostCodes = 256;

/// Whether the JPEG segment at the start of `bytes`, behind its marker, defines a Huffman table of
/// more codes than there are bytes. The library makes room for as many, and does not count.
bool definesOverfullTable(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 2) return false;
    int left = (bytes[0] << 8 | bytes[1]) - 2;
    std::size_t at = 2;
    while (left > 0) {
        if (bytes.size() <= at) return false;
        // What a cut table lacks the library takes for zeros.
        const std::size_t lengths = std::min(bytes.size() - at - 1, kCodeLengths);
        int codes = 0;
        for (const std::uint8_t count : bytes.subspan(at + 1, lengths)) codes += count;
        if (codes > kMostCodes) return true;
        const std::size_t length = 1 + kCodeLengths + static_cast<std::size_t>(codes);
        if (bytes.size() - at < length) return false;
        at += length;
        left -= static_cast<int>(length);
    }
    return false;
}

/// Wherever in the file such a segment may be taken to stand.
bool hasOverfullTable(std::span<const std::uint8_t> bytes) {
    constexpr std::uint8_t kDefinition[] = {0xFF, 0xC4};
    auto at = bytes.begin();
    while ((at = std::search(at, bytes.end(), std::begin(kDefinition), std::end(kDefinition))) !=
           bytes.end()) {
        at += std::size(kDefinition);
        if (definesOverfullTable({at, bytes.end()})) return true;
    }
    return false;
}

}  // namespace

Picture readPackedPicture(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw PictureError(PictureFault::kTooLarge, "too large a picture");
    if (!bytes.empty() && bytes[0] == 0xFF && hasOverfullTable(bytes))
        throw PictureError(PictureFault::kCutShort, "a damaged picture");
    const auto size = static_cast<int>(bytes.size());
    int width = 0, height = 0, channels = 0;
    // A kind that nothing marks is found by what it cannot be.
    if (!stbi_info_from_memory(bytes.data(), size, &width, &height, &channels))
        throw PictureError(PictureFault::kOtherFormat, "no picture of a known format");
    if (width < 1 || height < 1) throw PictureError(PictureFault::kEmpty, "an empty picture");
    const auto across = static_cast<std::size_t>(width), down = static_cast<std::size_t>(height);
    if (across * down > kMostTexels)
        throw PictureError(PictureFault::kTooLarge, "too large a picture");
    int readWidth = 0, readHeight = 0;
    const std::unique_ptr<stbi_uc, void (*)(void*)> values(
        stbi_load_from_memory(bytes.data(), size, &readWidth, &readHeight, &channels, 4),
        stbi_image_free);
    if (!values) {
        const char* const reason = stbi_failure_reason();
        if (reason && std::string_view(reason) == "outofmem") throw std::bad_alloc();
        throw PictureError(PictureFault::kCutShort, "a damaged picture");
    }
    if (readWidth != width || readHeight != height)
        throw PictureError(PictureFault::kCutShort, "a damaged picture");
    Picture picture{width, height, {}};
    picture.texels.reserve(across * down);
    for (std::size_t y = down; y-- > 0;) {
        const stbi_uc* value = values.get() + y * across * 4;
        for (std::size_t x = 0; x < across; ++x, value += 4) {
            picture.texels.push_back(static_cast<std::uint32_t>(value[3]) << 24 |
                                     static_cast<std::uint32_t>(value[0]) << 16 |
                                     static_cast<std::uint32_t>(value[1]) << 8 | value[2]);
        }
    }
    return picture;
}

}  // namespace render
