#include <render/picture.h>

#include "ddspicture.h"
#include "packedpicture.h"
#include "tiffpicture.h"

#include <algorithm>

namespace render {

bool Picture::hasAlpha() const {
    constexpr std::uint32_t kOpaque = 0xFF000000;
    return std::any_of(texels.begin(), texels.end(),
                       [](std::uint32_t texel) { return (texel & kOpaque) != kOpaque; });
}

namespace {

// The file begins with a header of this size; all numbers are big-endian.
constexpr std::size_t kHeader = 512;
constexpr std::uint32_t kMagic = 474;

class SgiReader {
public:
    explicit SgiReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {
        if (bytes.size() < kHeader || number(0, 2) != kMagic)
            throw PictureError(PictureFault::kOtherFormat, "no SGI picture");
        encoded_ = bytes[2] == 1;
        wide_ = bytes[3] == 2;
        if (bytes[2] > 1 || bytes[3] < 1 || bytes[3] > 2)
            throw PictureError(PictureFault::kUnknownKind, "an unknown kind of SGI picture");
        const std::uint32_t dimensions = number(4, 2);
        width_ = number(6, 2);
        height_ = dimensions > 1 ? number(8, 2) : 1;
        channels_ = dimensions > 2 ? number(10, 2) : 1;
        if (width_ == 0 || height_ == 0 || channels_ == 0)
            throw PictureError(PictureFault::kEmpty, "an empty picture");
        if (std::size_t{width_} * height_ > kMostTexels)
            throw PictureError(PictureFault::kTooLarge, "too large a picture");
        // Each row of each channel has its place and its length, one table behind the other.
        const std::size_t rows = std::size_t{height_} * channels_;
        const std::size_t row = encoded_ ? 8 : std::size_t{width_} * (wide_ ? 2 : 1);
        if ((bytes.size() - kHeader) / row < rows) refuse();
    }

    Picture read() {
        Picture picture;
        picture.width = static_cast<int>(width_);
        picture.height = static_cast<int>(height_);
        picture.texels.assign(std::size_t{width_} * height_, 0xFF000000);
        row_.resize(width_);
        // Further channels mean nothing to us.
        for (std::uint32_t channel = 0; channel < std::min(channels_, 4u); ++channel) {
            for (std::uint32_t y = 0; y < height_; ++y) {
                readRow(channel, y);
                store(channel, &picture.texels[std::size_t{y} * width_]);
            }
        }
        return picture;
    }

private:
    [[noreturn]] static void refuse() { throw PictureError(PictureFault::kCutShort, "cut short"); }

    std::uint32_t number(std::size_t at, std::size_t size) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < size; ++i) value = value << 8 | bytes_[at + i];
        return value;
    }

    /// A row's values to `row_`; what a packed one lacks stays 0.
    void readRow(std::uint32_t channel, std::uint32_t y) {
        std::fill(row_.begin(), row_.end(), std::uint8_t{0});
        const std::size_t index = std::size_t{channel} * height_ + y;
        const std::size_t size = wide_ ? 2 : 1;
        if (!encoded_) {
            copy(bytes_.subspan(kHeader + index * width_ * size), 0, width_);
            return;
        }
        const std::size_t tables = kHeader, rows = std::size_t{height_} * channels_;
        const std::size_t start = number(tables + 4 * index, 4);
        const std::size_t length = number(tables + 4 * (rows + index), 4);
        if (start > bytes_.size() || length > bytes_.size() - start) refuse();
        unpack(bytes_.subspan(start, length));
    }

    // Each run begins with a count: with its high bit as many values follow, otherwise one, which
    // is repeated. A count of 0 ends the row.
    void unpack(std::span<const std::uint8_t> packed) {
        const std::size_t size = wide_ ? 2 : 1;
        std::size_t x = 0;
        while (packed.size() >= size && x < width_) {
            const std::uint8_t head = packed[size - 1];
            const std::size_t count = std::min<std::size_t>(head & 0x7F, width_ - x);
            packed = packed.subspan(size);
            if (count == 0) return;
            if (head & 0x80) {
                x += copy(packed, x, count);
                packed = packed.subspan(std::min(count * size, packed.size()));
            } else {
                if (packed.size() < size) return;
                std::fill_n(row_.begin() + static_cast<std::ptrdiff_t>(x), count, packed[0]);
                packed = packed.subspan(size);
                x += count;
            }
        }
    }

    /// Of 16 bits the upper 8 are what can be seen. Returns how many values there were.
    std::size_t copy(std::span<const std::uint8_t> values, std::size_t x, std::size_t count) {
        const std::size_t size = wide_ ? 2 : 1;
        const std::size_t there = std::min(count, values.size() / size);
        for (std::size_t i = 0; i < there; ++i) row_[x + i] = values[i * size];
        return there;
    }

    void store(std::uint32_t channel, std::uint32_t* texels) const {
        const bool grey = channels_ < 3;
        const bool alpha = channel == 3 || (grey && channel == 1);
        const std::uint32_t places = alpha  ? 0x01000000u
                                     : grey ? 0x010101u
                                            : 0x010000u >> 8 * channel;
        for (std::size_t x = 0; x < width_; ++x) {
            if (alpha) texels[x] &= 0x00FFFFFF;
            texels[x] |= row_[x] * places;
        }
    }

    std::span<const std::uint8_t> bytes_;
    bool encoded_ = false, wide_ = false;
    std::uint32_t width_ = 0, height_ = 0, channels_ = 0;
    std::vector<std::uint8_t> row_;
};

}  // namespace

std::string encodedSgi(const Picture& picture, int channels) {
    const auto width = static_cast<unsigned>(picture.width),
               height = static_cast<unsigned>(picture.height),
               planes = static_cast<unsigned>(channels);
    std::string bytes(kHeader, '\0');
    const auto put = [&](std::size_t at, unsigned value) {
        bytes[at] = static_cast<char>(value >> 8);
        bytes[at + 1] = static_cast<char>(value);
    };
    constexpr unsigned kPlainBytes = 1, kBrightest = 255;
    put(0, kMagic);
    put(2, kPlainBytes);
    put(4, planes == 1 ? 2 : 3);
    put(6, width);
    put(8, height);
    put(10, planes);
    put(18, kBrightest);
    for (unsigned channel = 0; channel < planes; ++channel) {
        const bool isAlpha = channel == 3 || (planes == 2 && channel == 1);
        const unsigned shift = isAlpha ? 24 : 16 - 8 * channel;
        for (const std::uint32_t texel : picture.texels) bytes += static_cast<char>(texel >> shift);
    }
    return bytes;
}

Picture readSgiPicture(std::span<const std::uint8_t> bytes) {
    return SgiReader(bytes).read();
}

Picture readPicture(std::span<const std::uint8_t> bytes) {
    if (bytes.size() >= 2 && (bytes[0] << 8 | bytes[1]) == kMagic) return readSgiPicture(bytes);
    if (isDdsPicture(bytes)) return readDdsPicture(bytes);
    if (isTiffPicture(bytes)) return readTiffPicture(bytes);
    return readPackedPicture(bytes);
}

}  // namespace render
