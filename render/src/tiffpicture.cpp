#include "tiffpicture.h"

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
    kExtraSamples = 338
};
enum Compression : std::uint32_t { kPlain = 1, kLzw = 5, kPacked = 32773 };
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
        photometric_ = value(kPhotometric, 0, kBlackIsZero);
        samples_ = value(kSamplesPerPixel, 0, 1);
        bits_ = value(kBitsPerSample, 0, 1);
        const std::size_t colors = photometric_ == kRgb ? 3 : 1;
        const bool isKnown = photometric_ <= kPalette && samples_ >= colors && samples_ <= 8 &&
                             (bits_ == 8 || (bits_ == 1 && samples_ == 1 && photometric_ < kRgb)) &&
                             value(kPlanes, 0, 1) == 1 && !fields_.contains(kTileWidth);
        if (!isKnown) refuse(PictureFault::kUnknownKind, "an unknown kind of TIFF picture");
        rowBytes_ = (width_ * samples_ * bits_ + 7) / 8;
        readPalette();
        Picture picture{static_cast<int>(width_), static_cast<int>(height_), {}};
        picture.texels.resize(width_ * height_);
        const std::size_t rows =
            std::clamp<std::size_t>(value(kRowsPerStrip, 0, height_), 1, height_);
        std::vector<std::uint8_t> strip;
        for (std::size_t first = 0; first < height_; first += rows) {
            const std::size_t count = std::min(rows, height_ - first);
            readStrip(first / rows, count * rowBytes_, strip);
            for (std::size_t y = 0; y < count; ++y)
                store(&strip[y * rowBytes_], &picture.texels[(height_ - 1 - first - y) * width_]);
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
        for (std::size_t i = 0; i < palette_.size(); ++i)
            for (std::size_t channel = 0; channel < 3; ++channel)
                palette_[i] = palette_[i] << 8 |
                              static_cast<std::uint32_t>(
                                  value(kColorMap, channel * palette_.size() + i, 0) >> 8 & 0xFF);
    }

    void readStrip(std::size_t index, std::size_t size, std::vector<std::uint8_t>& strip) {
        strip.clear();
        const std::size_t start = value(kStripOffsets, index, bytes_.size());
        std::span<const std::uint8_t> from =
            bytes_.subspan(std::min<std::size_t>(start, bytes_.size()));
        from = from.first(
            std::min<std::size_t>(value(kStripLengths, index, from.size()), from.size()));
        switch (value(kCompression, 0, kPlain)) {
            case kPlain:
                strip.assign(from.begin(), from.begin() + static_cast<std::ptrdiff_t>(
                                                              std::min(size, from.size())));
                break;
            case kPacked:
                unpack(from, size, strip);
                break;
            case kLzw:
                expand(from, size, strip);
                break;
            default:
                refuse(PictureFault::kUnknownKind, "an unknown kind of TIFF picture");
        }
        if (strip.size() < size) refuse(PictureFault::kCutShort, "cut short");
        strip.resize(size);
        if (value(kPredictor, 0, 1) == 2 && bits_ == 8)
            for (std::size_t row = 0; row < size; row += rowBytes_)
                for (std::size_t i = row + samples_; i < row + rowBytes_; ++i)
                    strip[i] = static_cast<std::uint8_t>(strip[i] + strip[i - samples_]);
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

    void store(const std::uint8_t* from, std::uint32_t* texels) const {
        const std::size_t colors = photometric_ == kRgb ? 3 : 1;
        // A channel beyond the colors that says nothing of itself is alpha in practice.
        const bool hasAlpha = samples_ > colors && bits_ == 8;
        for (std::size_t x = 0; x < width_; ++x) {
            const std::uint8_t* const sample = from + x * samples_;
            std::uint32_t color = 0, alpha = 255;
            if (bits_ == 1) {
                color = (from[x / 8] >> (7 - x % 8) & 1) * 0xFFFFFFu;
            } else if (photometric_ == kRgb) {
                color = static_cast<std::uint32_t>(sample[0] << 16 | sample[1] << 8 | sample[2]);
            } else if (photometric_ == kPalette) {
                color = palette_[sample[0]];
            } else {
                color = sample[0] * 0x010101u;
            }
            if (photometric_ == kWhiteIsZero) color ^= 0xFFFFFF;
            if (hasAlpha) alpha = sample[colors];
            texels[x] = alpha << 24 | color;
        }
    }

    const std::span<const std::uint8_t> bytes_;
    const bool isBig_;
    std::map<std::size_t, Field> fields_;
    std::size_t width_ = 0, height_ = 0, photometric_ = 0, samples_ = 0, bits_ = 0, rowBytes_ = 0;
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
