#include "tiffpicture.h"

#include "packedpicture.h"

#include <algorithm>
#include <array>
#include <map>

namespace render {
namespace {

enum Tag : std::uint32_t {
    kWidth = 256,
    kHeight = 257,
    kBitsPerSample = 258,
    kCompression = 259,
    kPhotometric = 262,
    kStripOffsets = 273,
    kSamplesPerPixel = 277,
    kRowsPerStrip = 278,
    kStripLengths = 279,
    kPlanes = 284,
    kPredictor = 317,
    kColorMap = 320,
    kTileWidth = 322,
    kTileHeight = 323,
    kTileOffsets = 324,
    kTileLengths = 325,
    kSampleFormat = 339
};
enum Compression : std::uint32_t {
    kPlain = 1,
    kLzw = 5,
    kDeflate = 8,
    kPacked = 32773,
    kOldDeflate = 32946
};
enum Photometric : std::uint32_t { kWhiteIsZero = 0, kBlackIsZero = 1, kRgb = 2, kPalette = 3 };

[[noreturn]] void refuse(PictureFault fault, const char* what) {
    throw PictureError(fault, what);
}

class TiffReader {
public:
    explicit TiffReader(std::span<const std::uint8_t> bytes)
        : bytes_(bytes), isBig_(bytes[0] == 'M') {
        const std::size_t at = number(4, 4);
        const std::size_t count = number(at, 2);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t entry = at + 2 + 12 * i;
            fields_[number(entry, 2)] = {number(entry + 2, 2), number(entry + 4, 4), entry + 8};
        }
    }

    Picture read() {
        width_ = value(kWidth, 0, 0);
        height_ = value(kHeight, 0, 0);
        if (width_ == 0 || height_ == 0) refuse(PictureFault::kEmpty, "an empty picture");
        if (width_ > kMostTexels || height_ > kMostTexels || width_ * height_ > kMostTexels)
            refuse(PictureFault::kTooLarge, "too large a picture");
        readKind();
        placeBlocks();
        readPalette();
        Picture picture{static_cast<int>(width_), static_cast<int>(height_), {}};
        picture.texels.resize(width_ * height_);
        std::size_t index = 0;
        for (std::size_t top = 0; top < height_; top += blockHeight_) {
            const std::size_t rows = std::min(blockHeight_, height_ - top);
            for (std::size_t left = 0; left < width_; left += blockWidth_, ++index) {
                const std::size_t columns = std::min(blockWidth_, width_ - left);
                readBlock(index, isTiled_ ? blockHeight_ : rows);
                for (std::size_t y = 0; y < rows; ++y)
                    store(y, std::span(picture.texels)
                                 .subspan((height_ - 1 - top - y) * width_ + left, columns));
            }
        }
        return picture;
    }

private:
    struct Field {
        std::size_t type, count, place;
    };

    std::size_t number(std::size_t at, std::size_t size) const {
        if (at > bytes_.size() || bytes_.size() - at < size)
            refuse(PictureFault::kCutShort, "cut short");
        std::size_t value = 0;
        for (std::size_t i = 0; i < size; ++i)
            value = value << 8 | bytes_[at + (isBig_ ? i : size - 1 - i)];
        return value;
    }

    std::size_t value(Tag tag, std::size_t index, std::size_t otherwise) const {
        const auto found = fields_.find(tag);
        if (found == fields_.end() || index >= found->second.count) return otherwise;
        const Field& field = found->second;
        const std::size_t size = field.type == 3 ? 2 : field.type == 4 ? 4 : 1;
        // What does not fit into four bytes stands elsewhere.
        const std::size_t start = field.count > 4 / size ? number(field.place, 4) : field.place;
        return number(start + index * size, size);
    }

    void readPalette() {
        if (photometric_ != kPalette) return;
        const std::size_t size = std::size_t{1} << bits_;
        for (std::size_t i = 0; i < size; ++i)
            for (std::size_t channel = 0; channel < 3; ++channel)
                palette_[i] =
                    palette_[i] << 8 |
                    static_cast<std::uint32_t>(value(kColorMap, channel * size + i, 0) >> 8 & 0xFF);
    }

    void readKind() {
        photometric_ = value(kPhotometric, 0, kBlackIsZero);
        samples_ = value(kSamplesPerPixel, 0, 1);
        bits_ = value(kBitsPerSample, 0, 1);
        const bool hasBytes = bits_ == 8 || (bits_ == 16 && photometric_ != kPalette);
        const bool sharesBytes = bits_ == 1 || bits_ == 2 || bits_ == 4;
        constexpr std::size_t kMostSamples = 8, kUnsigned = 1, kUndefined = 4;
        const std::size_t planes = value(kPlanes, 0, 1), predictor = value(kPredictor, 0, 1);
        const std::size_t format = value(kSampleFormat, 0, kUnsigned);
        bool isKnown = photometric_ <= kPalette && samples_ >= colors() &&
                       samples_ <= kMostSamples && (planes == 1 || planes == 2) &&
                       (hasBytes || (sharesBytes && samples_ == 1)) &&
                       (format == kUnsigned || format == kUndefined) && predictor <= 2;
        for (std::size_t i = 1; isKnown && i < samples_; ++i)
            isKnown = value(kBitsPerSample, i, bits_) == bits_;
        if (!isKnown) refuse(PictureFault::kUnknownKind, "an unknown kind of TIFF picture");
        // A channel beyond the colors that says nothing of itself is alpha in practice.
        hasAlpha_ = samples_ > colors();
        planes_ = planes == 2 ? colors() + (hasAlpha_ ? 1 : 0) : 1;
        isPredicted_ = predictor == 2 && hasBytes;
    }

    /// Strips are blocks as wide as the picture, the last of which may be lower. All tiles have
    /// one size, whatever of them lies in the picture.
    void placeBlocks() {
        isTiled_ = fields_.contains(kTileWidth);
        blockWidth_ = isTiled_ ? value(kTileWidth, 0, 0) : width_;
        blockHeight_ = isTiled_
                           ? value(kTileHeight, 0, 0)
                           : std::clamp<std::size_t>(value(kRowsPerStrip, 0, height_), 1, height_);
        if (blockWidth_ == 0 || blockHeight_ == 0)
            refuse(PictureFault::kEmpty, "tiles without texels");
        const auto count = [](std::size_t size, std::size_t each) {
            return (size + each - 1) / each;
        };
        const std::size_t across = count(width_, blockWidth_), down = count(height_, blockHeight_);
        // As many as the largest picture has of the least tiles. What of them lies outside may be
        // as much again as the largest picture.
        constexpr std::size_t kMostBlocks = kMostTexels / (16 * 16);
        if (blockWidth_ > kMostTexels / blockHeight_ || across * down > kMostBlocks ||
            across * blockWidth_ > 2 * kMostTexels / (down * blockHeight_))
            refuse(PictureFault::kTooLarge, "too large a picture");
        blocksOfPlane_ = across * down;
        pixelBits_ = planes_ > 1 || samples_ == 1 ? bits_ : bits_ * samples_;
        rowBytes_ = (blockWidth_ * pixelBits_ + 7) / 8;
    }

    /// Of so many rows, with all of its planes, to `block_`.
    void readBlock(std::size_t index, std::size_t rows) {
        planeBytes_ = rows * rowBytes_;
        block_.clear();
        for (std::size_t plane = 0; plane < planes_; ++plane) {
            unpackBlock(plane * blocksOfPlane_ + index, planeBytes_);
            if (part_.size() < planeBytes_) refuse(PictureFault::kCutShort, "cut short");
            part_.resize(planeBytes_);
            if (plane == 0)
                block_.swap(part_);
            else
                block_.insert(block_.end(), part_.begin(), part_.end());
        }
        if (!isPredicted_) return;
        for (std::size_t row = 0; row < block_.size(); row += rowBytes_)
            addUp(std::span(block_).subspan(row, rowBytes_));
    }

    /// The bytes of a block of one plane to `part_`: no fewer than `size` where it is whole.
    void unpackBlock(std::size_t index, std::size_t size) {
        part_.clear();
        const std::size_t start =
            value(isTiled_ ? kTileOffsets : kStripOffsets, index, bytes_.size());
        std::span<const std::uint8_t> from = bytes_.subspan(std::min(start, bytes_.size()));
        from = from.first(std::min(
            value(isTiled_ ? kTileLengths : kStripLengths, index, from.size()), from.size()));
        const std::size_t compression = value(kCompression, 0, kPlain);
        if (compression == kPlain) from = from.first(std::min(size, from.size()));
        // Blocks may share bytes, but not so many that reading them all would take forever.
        constexpr std::size_t kMostReadings = 16, kMostDeflated = 1032;
        bytesRead_ += from.size();
        if (bytesRead_ / kMostReadings > bytes_.size())
            refuse(PictureFault::kTooLarge, "unpacked, too large a picture");
        switch (compression) {
            case kPlain:
                part_.assign(from.begin(), from.end());
                break;
            case kPacked:
                unpack(from, size, part_);
                break;
            case kLzw:
                expand(from, size, part_);
                break;
            case kDeflate:
            case kOldDeflate:
                if (size / kMostDeflated > from.size()) return;
                part_.resize(size);
                part_.resize(inflate(from, part_));
                break;
            default:
                refuse(PictureFault::kUnknownKind, "an unknown kind of TIFF picture");
        }
    }

    /// Of a row of differences makes what they are differences of.
    void addUp(std::span<std::uint8_t> row) const {
        const std::size_t step = pixelBits_ / 8;
        if (bits_ == 8) {
            for (std::size_t i = step; i < row.size(); ++i)
                row[i] = static_cast<std::uint8_t>(row[i] + row[i - step]);
            return;
        }
        const std::size_t high = isBig_ ? 0 : 1, low = 1 - high;
        for (std::size_t i = step; i < row.size(); i += 2) {
            const auto at = [&](std::size_t place) {
                return row[place + high] << 8 | row[place + low];
            };
            const int sum = at(i) + at(i - step);
            row[i + high] = static_cast<std::uint8_t>(sum >> 8);
            row[i + low] = static_cast<std::uint8_t>(sum);
        }
    }

    /// Runs of one byte, and bytes as they are.
    static void unpack(std::span<const std::uint8_t> from, std::size_t size,
                       std::vector<std::uint8_t>& to) {
        for (std::size_t at = 0; at < from.size() && to.size() < size;) {
            const std::size_t head = from[at++];
            if (head < 128) {
                const std::size_t count = std::min(head + 1, from.size() - at);
                to.insert(to.end(), from.begin() + static_cast<std::ptrdiff_t>(at),
                          from.begin() + static_cast<std::ptrdiff_t>(at + count));
                at += count;
            } else if (head > 128 && at < from.size()) {
                to.insert(to.end(), 257 - head, from[at++]);
            }
        }
    }

    /// Codes of 9 to 12 bits, the highest bit first, for texts of which each but the first is one
    /// from before and a byte.
    static void expand(std::span<const std::uint8_t> from, std::size_t size,
                       std::vector<std::uint8_t>& to) {
        constexpr std::uint32_t kClear = 256, kEnd = 257, kFirst = 258, kMost = 4096;
        // Where each text ended up in `to`.
        std::array<std::size_t, kMost> starts{}, lengths{};
        std::uint32_t next = kFirst, width = 9, buffer = 0, held = 0;
        std::size_t lastStart = 0, lastLength = 0;
        std::size_t at = 0;
        while (to.size() < size) {
            while (held < width && at < from.size()) {
                buffer = buffer << 8 | from[at++];
                held += 8;
            }
            if (held < width) return;
            held -= width;
            const std::uint32_t code = buffer >> held & ((1U << width) - 1);
            if (code == kEnd) return;
            if (code == kClear) {
                next = kFirst;
                width = 9;
                lastLength = 0;
                continue;
            }
            const std::size_t start = to.size();
            if (code < 256) {
                to.push_back(static_cast<std::uint8_t>(code));
            } else if (code < next) {
                for (std::size_t i = 0; i < lengths[code]; ++i) to.push_back(to[starts[code] + i]);
            } else if (code == next && lastLength > 0) {
                for (std::size_t i = 0; i < lastLength; ++i) to.push_back(to[lastStart + i]);
                to.push_back(to[lastStart]);
            } else {
                return;
            }
            // The text before, and the first byte of this one, lie one behind the other.
            if (lastLength > 0 && next < kMost) {
                starts[next] = lastStart;
                lengths[next++] = lastLength + 1;
            }
            lastStart = start;
            lastLength = to.size() - start;
            if (next + 1 >= 1U << width && width < 12) ++width;
        }
    }

    std::size_t colors() const { return photometric_ == kRgb ? 3 : 1; }

    /// Of a row of the block.
    void store(std::size_t row, std::span<std::uint32_t> texels) const {
        // Of 16 bits the upper ones count.
        const std::size_t upper = bits_ == 16 && !isBig_ ? 1 : 0;
        const std::size_t ofChannel = planes_ > 1 ? planeBytes_ : bits_ / 8;
        const std::uint32_t mask = (1U << std::min<std::size_t>(bits_, 8)) - 1;
        const std::uint8_t* const from = &block_[row * rowBytes_];
        for (std::size_t x = 0; x < texels.size(); ++x) {
            const std::size_t bit = x * pixelBits_;
            const auto channel = [&](std::size_t number) -> std::uint32_t {
                return from[bit / 8 + number * ofChannel + upper];
            };
            // Several in a byte have the first in the highest bits.
            const std::uint32_t value =
                bits_ < 8 ? channel(0) >> (8 - bits_ - bit % 8) & mask : channel(0);
            std::uint32_t color = value * 255 / mask * 0x010101;
            if (photometric_ == kRgb) color = value << 16 | channel(1) << 8 | channel(2);
            if (photometric_ == kPalette) color = palette_[value];
            if (photometric_ == kWhiteIsZero) color ^= 0xFFFFFF;
            texels[x] = (hasAlpha_ ? channel(colors()) : 255) << 24 | color;
        }
    }

    const std::span<const std::uint8_t> bytes_;
    const bool isBig_;
    std::map<std::size_t, Field> fields_;
    std::size_t width_ = 0, height_ = 0, photometric_ = 0, samples_ = 0, bits_ = 0;
    bool hasAlpha_ = false, isPredicted_ = false, isTiled_ = false;
    std::size_t planes_ = 1;  ///< that are read; of one, all channels of a texel stand together
    std::size_t blockWidth_ = 0, blockHeight_ = 0, blocksOfPlane_ = 0;
    std::size_t pixelBits_ = 0, rowBytes_ = 0;  ///< in a plane of a block
    std::size_t planeBytes_ = 0;                ///< of the block that was read last
    std::size_t bytesRead_ = 0;                 ///< in all blocks
    std::vector<std::uint8_t> block_, part_;
    std::array<std::uint32_t, 256> palette_{};
};

}  // namespace

bool isTiffPicture(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 8) return false;
    constexpr std::array<std::uint8_t, 4> kLittle{'I', 'I', 42, 0}, kBig{'M', 'M', 0, 42};
    return std::ranges::equal(bytes.first(4), kLittle) || std::ranges::equal(bytes.first(4), kBig);
}

Picture readTiffPicture(std::span<const std::uint8_t> bytes) {
    if (!isTiffPicture(bytes)) refuse(PictureFault::kOtherFormat, "no TIFF picture");
    return TiffReader(bytes).read();
}

}  // namespace render
