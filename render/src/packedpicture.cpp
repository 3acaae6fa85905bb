#include "packedpicture.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

namespace render {

namespace {

/// Memory that a file may ask for at once: one that grows without end when it is unpacked is no
/// reason to run out of it.
class Allowance {
public:
    explicit Allowance(std::size_t most) { most_ = most; }
    ~Allowance() { most_ = 0; }
    Allowance(const Allowance&) = delete;
    Allowance& operator=(const Allowance&) = delete;

    bool isExceeded() const { return most_ == kExceeded; }

    static bool covers(std::size_t size) {
        if (most_ == kExceeded || size > most_) most_ = kExceeded;
        return most_ != kExceeded;
    }

private:
    static constexpr std::size_t kExceeded = ~std::size_t{0};
    static thread_local std::size_t most_;
};

thread_local std::size_t Allowance::most_ = 0;

}  // namespace

}  // namespace render

#define STBI_MALLOC(size) (render::Allowance::covers(size) ? std::malloc(size) : nullptr)
#define STBI_REALLOC(block, size) \
    (render::Allowance::covers(size) ? std::realloc(block, size) : nullptr)
#define STBI_FREE(block) std::free(block)
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
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max() / 2))
        throw PictureError(PictureFault::kTooLarge, "too large a picture");
    if (!bytes.empty() && bytes[0] == 0xFF && hasOverfullTable(bytes))
        throw PictureError(PictureFault::kCutShort, "a damaged picture");
    // What the file lacks is read as zeros, with which the library fills pictures up: so it is seen
    // how far it has read. It takes a row at once from some.
    constexpr std::size_t kLongestRow = std::size_t{STBI_MAX_DIMENSIONS} * 4;
    std::vector<stbi_uc> file(bytes.begin(), bytes.end());
    file.resize(bytes.size() + kLongestRow);
    constexpr std::size_t kWorkingRoom = 4 << 20, kMostOfTexel = 8;
    std::size_t most = 2 * file.size() + kWorkingRoom;
    stbi__context context;
    const auto open = [&] {
        stbi__start_mem(&context, file.data(), static_cast<int>(file.size()));
    };
    int width = 0, height = 0, channels = 0;
    {
        const Allowance allowance(most);
        open();
        // A kind that nothing marks is found by what it cannot be.
        if (!stbi__info_main(&context, &width, &height, &channels))
            throw PictureError(PictureFault::kOtherFormat, "no picture of a known format");
    }
    if (width < 1 || height < 1) throw PictureError(PictureFault::kEmpty, "an empty picture");
    const auto across = static_cast<std::size_t>(width), down = static_cast<std::size_t>(height);
    if (across * down > kMostTexels)
        throw PictureError(PictureFault::kTooLarge, "too large a picture");
    most += kMostOfTexel * across * down;
    const Allowance allowance(most);
    open();
    int readWidth = 0, readHeight = 0;
    const std::unique_ptr<stbi_uc, void (*)(void*)> values(
        stbi__load_and_postprocess_8bit(&context, &readWidth, &readHeight, &channels, 4),
        stbi_image_free);
    if (!values) {
        if (allowance.isExceeded())
            throw PictureError(PictureFault::kTooLarge, "unpacked, too large a picture");
        const char* const reason = stbi_failure_reason();
        if (reason && std::string_view(reason) == "outofmem") throw std::bad_alloc();
        throw PictureError(PictureFault::kCutShort, "a damaged picture");
    }
    // The last row of some may lack what fills it up to four bytes.
    constexpr std::ptrdiff_t kPadding = 3;
    const auto size = static_cast<std::ptrdiff_t>(bytes.size());
    if (readWidth != width || readHeight != height ||
        context.img_buffer - file.data() > size + kPadding)
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

std::size_t inflate(std::span<const std::uint8_t> from, std::span<std::uint8_t> to) {
    constexpr std::size_t kMost = std::numeric_limits<int>::max();
    if (from.size() > kMost || to.size() > kMost) return 0;
    const int filled = stbi_zlib_decode_buffer(
        reinterpret_cast<char*>(to.data()), static_cast<int>(to.size()),
        reinterpret_cast<const char*>(from.data()), static_cast<int>(from.size()));
    return static_cast<std::size_t>(std::max(filled, 0));
}

}  // namespace render
