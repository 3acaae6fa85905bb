// A picture as surfaces show it: repeated in both directions, and smooth from near and far.
#pragma once

#include <render/picture.h>

#include <algorithm>
#include <array>

#include <emmintrin.h>

namespace render {

/// How a surface uses a picture, as the file beside it says.
struct TextureUse {
    enum class Color { kModulate, kBlend, kDecal, kReplace, kAdd };

    bool clampU = false, clampV = false;  ///< the rim goes on outside, instead of repetitions
    bool isPointed = false;               ///< each texel has one color, instead of smooth ones
    /// What becomes of the color below. To blend is for layers; elsewhere it is to modulate.
    Color color = Color::kModulate;

    bool isPlain() const { return *this == TextureUse{}; }
    bool operator==(const TextureUse&) const = default;
};

/// From the attribute file of a picture; what such a file does not say, or cannot mean, is plain.
TextureUse readTextureUse(std::span<const std::uint8_t> bytes);

/// The picture and smaller ones of it, each with half the sides of the one before. Sides are powers
/// of two, and so smaller or a little larger than the picture's own.
class Texture {
public:
    static constexpr int kMostBits = 10;  ///< sides of at most 1024

    /// The four bytes of a texel, each in 16 bits.
    static __m128i spread(std::uint32_t texel) {
        return _mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(texel)), _mm_setzero_si128());
    }

    struct Level {
        const std::uint32_t* texels;  ///< 0xAARRGGBB, rows from bottom to top
        int widthBits, heightBits;

        /// The color at a place in 256ths of texels, between the four texels around it. Places
        /// outside repeat the picture.
        std::uint32_t at(std::int32_t u, std::int32_t v) const {
            const auto maskU = (1u << widthBits) - 1, maskV = (1u << heightBits) - 1;
            const auto left = static_cast<std::uint32_t>(u >> 8) & maskU;
            const auto low = static_cast<std::uint32_t>(v >> 8) & maskV;
            const std::uint32_t* const row = texels + (low << widthBits);
            const std::uint32_t* const above = texels + (((low + 1) & maskV) << widthBits);
            const std::uint32_t right = (left + 1) & maskU;
            return mixed(row[left], row[right], above[left], above[right], u & 0xFF, v & 0xFF);
        }

        /// The same for one that is used in its own way.
        std::uint32_t at(std::int32_t u, std::int32_t v, const TextureUse& use) const {
            const std::int32_t width = 1 << widthBits, height = 1 << heightBits;
            if (use.isPointed) u += 128, v += 128;
            const auto place = [](std::int32_t at, std::int32_t size, bool clamped) {
                return clamped ? std::clamp(at, 0, size - 1) : at & (size - 1);
            };
            const auto texel = [&](std::int32_t x, std::int32_t y) {
                return texels[(place(y, height, use.clampV) << widthBits) +
                              place(x, width, use.clampU)];
            };
            const std::int32_t x = u >> 8, y = v >> 8;
            if (use.isPointed) return texel(x, y);
            return mixed(texel(x, y), texel(x + 1, y), texel(x, y + 1), texel(x + 1, y + 1),
                         u & 0xFF, v & 0xFF);
        }

    private:
        /// The lower two by one share of 256, as the upper two, and both of these by the other.
        static std::uint32_t mixed(std::uint32_t left, std::uint32_t right, std::uint32_t aboveLeft,
                                   std::uint32_t aboveRight, std::int32_t shareU,
                                   std::int32_t shareV) {
            const auto both = [](std::uint32_t a, std::uint32_t b) {
                return _mm_unpacklo_epi64(spread(a), spread(b));
            };
            const auto share = [](int value) {
                return _mm_set1_epi16(static_cast<std::int16_t>(value));
            };
            const __m128i columns = _mm_srli_epi16(
                _mm_add_epi16(_mm_mullo_epi16(both(left, right), share(256 - shareV)),
                              _mm_mullo_epi16(both(aboveLeft, aboveRight), share(shareV))),
                8);
            const __m128i shares = _mm_unpacklo_epi64(share(256 - shareU), share(shareU));
            const __m128i parts = _mm_mullo_epi16(columns, shares);
            const __m128i mean = _mm_srli_epi16(_mm_add_epi16(parts, _mm_srli_si128(parts, 8)), 8);
            return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(mean, mean)));
        }
    };

    /// `mostBits` limits the sides further. The picture must not be empty.
    explicit Texture(const Picture& picture, int mostBits = kMostBits, const TextureUse& use = {});

    const TextureUse& use() const { return use_; }

    /// Whether some of it can be seen through.
    bool hasAlpha() const { return hasAlpha_; }
    /// Texels of all levels.
    std::size_t size() const { return texels_.size(); }
    int levels() const { return levelCount_; }
    /// Level 0 is the largest.
    Level level(int index) const {
        const Place& place = levels_[static_cast<unsigned>(index)];
        return {texels_.data() + place.start, place.widthBits, place.heightBits};
    }

private:
    struct Place {
        std::size_t start;
        int widthBits, heightBits;
    };

    void addLevel(int widthBits, int heightBits);
    void fit(const Picture& picture);
    void halve(const Place& from);

    std::vector<std::uint32_t> texels_;
    std::array<Place, kMostBits + 1> levels_{};
    int levelCount_ = 0;
    bool hasAlpha_ = false;
    TextureUse use_;
};

}  // namespace render
