// A picture as surfaces show it: repeated in both directions, and smooth from near and far.
#pragma once

#include <render/picture.h>

#include <algorithm>
#include <array>

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
            const auto shareU = static_cast<std::uint32_t>(u & 0xFF);
            return mixed(mixed(row[left], row[right], shareU),
                         mixed(above[left], above[right], shareU),
                         static_cast<std::uint32_t>(v & 0xFF));
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
            const auto shareU = static_cast<std::uint32_t>(u & 0xFF);
            return mixed(mixed(texel(x, y), texel(x + 1, y), shareU),
                         mixed(texel(x, y + 1), texel(x + 1, y + 1), shareU),
                         static_cast<std::uint32_t>(v & 0xFF));
        }

    private:
        /// Two channels at a time.
        static std::uint32_t mixed(std::uint32_t a, std::uint32_t b, std::uint32_t share) {
            constexpr std::uint32_t kOdd = 0x00FF00FF;
            const std::uint32_t rest = 256 - share;
            return (((a & kOdd) * rest + (b & kOdd) * share) >> 8 & kOdd) |
                   (((a >> 8 & kOdd) * rest + (b >> 8 & kOdd) * share) & ~kOdd);
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
