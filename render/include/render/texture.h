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
    /// What is outside of the picture: it again, its rim, or it again, every other time mirrored.
    enum class Wrap { kRepeat, kClamp, kMirror };
    /// Which of its sizes are seen from afar: two of them mixed, one of them, or always the
    /// largest.
    enum class Sizes { kMixed, kNearest, kLargest };

    Wrap wrapU = Wrap::kRepeat, wrapV = Wrap::kRepeat;
    /// Each texel has one color, instead of smooth ones: where it is larger than a pixel, and where
    /// it is smaller.
    bool isPointedNear = false, isPointedFar = false;
    Sizes sizes = Sizes::kMixed;
    /// A grey picture is white, and its brightness says how much of that can be seen.
    bool isStencil = false;
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

    /// The one by a share of 256, as the other.
    static std::uint32_t between(std::uint32_t one, std::uint32_t other, std::int32_t share) {
        const auto part = [](std::uint32_t texel, std::int32_t of) {
            return _mm_mullo_epi16(spread(texel), _mm_set1_epi16(static_cast<std::int16_t>(of)));
        };
        const __m128i sum = _mm_add_epi16(part(one, 256 - share), part(other, share));
        const __m128i mean = _mm_srli_epi16(sum, 8);
        return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(mean, mean)));
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

        /// The same for one that is used in its own way, smooth or not.
        std::uint32_t at(std::int32_t u, std::int32_t v, const TextureUse& use,
                         bool isPointed) const {
            using Wrap = TextureUse::Wrap;
            const std::int32_t width = 1 << widthBits, height = 1 << heightBits;
            if (isPointed) u += 128, v += 128;
            const auto place = [](std::int32_t at, std::int32_t size, Wrap wrap) {
                if (wrap == Wrap::kClamp) return std::clamp(at, 0, size - 1);
                const std::int32_t within = at & (size - 1);
                return wrap == Wrap::kMirror && (at & size) != 0 ? size - 1 - within : within;
            };
            const auto texel = [&](std::int32_t x, std::int32_t y) {
                return texels[(place(y, height, use.wrapV) << widthBits) +
                              place(x, width, use.wrapU)];
            };
            const std::int32_t x = u >> 8, y = v >> 8;
            if (isPointed) return texel(x, y);
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
    void colorWhatIsClear(const Place& place);

    std::vector<std::uint32_t> texels_;
    std::array<Place, kMostBits + 1> levels_{};
    int levelCount_ = 0;
    bool hasAlpha_ = false;
    TextureUse use_;
};

}  // namespace render
