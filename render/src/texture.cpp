#include <render/texture.h>

#include <algorithm>
#include <optional>

namespace render {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;

// The mean of several texels. What cannot be seen has no say in the color.
class Mean {
public:
    void add(std::uint32_t texel) {
        const std::uint32_t alpha = texel >> 24;
        red_ += (texel >> 16 & 0xFF) * alpha;
        green_ += (texel >> 8 & 0xFF) * alpha;
        blue_ += (texel & 0xFF) * alpha;
        alpha_ += alpha;
        ++count_;
    }
    bool canBeSeen() const { return alpha_ != 0; }
    std::uint32_t texel() const {
        if (alpha_ == 0) return 0;
        const auto shade = [&](std::uint64_t sum) {
            return static_cast<std::uint32_t>((sum + alpha_ / 2) / alpha_);
        };
        return static_cast<std::uint32_t>((alpha_ + count_ / 2) / count_) << 24 |
               shade(red_) << 16 | shade(green_) << 8 | shade(blue_);
    }

private:
    std::uint64_t red_ = 0, green_ = 0, blue_ = 0, alpha_ = 0, count_ = 0;
};

/// The power of two that is nearest to `side` from above, within the limit.
int bitsFor(int side, int most) {
    int bits = 0;
    while (bits < most && 1 << bits < side) ++bits;
    return bits;
}

bool isOpaqueGrey(std::uint32_t texel) {
    return texel == (kOpaque | (texel & 0xFF) * 0x010101);
}

/// White, as far as the grey picture is bright.
Picture stencilOf(Picture picture) {
    for (std::uint32_t& texel : picture.texels) texel = texel << 24 | 0xFFFFFF;
    return picture;
}

}  // namespace

Picture resized(const Picture& picture, int width, int height) {
    Picture made{width, height, {}};
    made.texels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const auto first = [](int index, int sides, int side) {
        return static_cast<int>(std::int64_t{index} * side / sides);
    };
    for (int y = 0; y < height; ++y) {
        const int low = first(y, height, picture.height);
        const int high = std::max(first(y + 1, height, picture.height), low + 1);
        for (int x = 0; x < width; ++x) {
            const int left = first(x, width, picture.width);
            const int right = std::max(first(x + 1, width, picture.width), left + 1);
            const auto meanOf = [&](std::uint32_t also) {
                Mean mean;
                for (int v = low; v < high; ++v)
                    for (int u = left; u < right; ++u)
                        mean.add(picture.texels[static_cast<std::size_t>(v) *
                                                    static_cast<std::size_t>(picture.width) +
                                                static_cast<std::size_t>(u)] |
                                 also);
                return mean;
            };
            const Mean mean = meanOf(0);
            // A color that cannot be seen is what the texels around it are mixed with.
            made.texels.push_back(mean.canBeSeen() ? mean.texel()
                                                   : meanOf(kOpaque).texel() & ~kOpaque);
        }
    }
    return made;
}

TextureUse readTextureUse(std::span<const std::uint8_t> bytes) {
    // Words of 32 bits, the highest byte first.
    constexpr std::size_t kMinification = 7, kMagnification = 8, kWrap = 9, kWrapU = 10,
                          kWrapV = 11, kColor = 15, kStencil = 16;
    constexpr std::uint32_t kNothing = ~0U, kPointed = 0, kOneSize = 1, kPointedSizes = 3,
                            kPointedMixed = 4, kSmoothSizes = 5, kFurtherOneSize = 8,
                            kLastFilter = 12;
    const auto word = [&](std::size_t index) {
        if (bytes.size() / 4 <= index) return kNothing;
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i) value = value << 8 | bytes[4 * index + i];
        return value;
    };
    TextureUse use;
    const auto wrapOf = [](std::uint32_t value) -> std::optional<TextureUse::Wrap> {
        switch (value) {
            case 0:
                return TextureUse::Wrap::kRepeat;
            case 1:
                return TextureUse::Wrap::kClamp;
            case 4:
                return TextureUse::Wrap::kMirror;
            default:
                return {};
        }
    };
    // A direction that says nothing does as both do.
    const TextureUse::Wrap both = wrapOf(word(kWrap)).value_or(TextureUse::Wrap::kRepeat);
    use.wrapU = wrapOf(word(kWrapU)).value_or(both);
    use.wrapV = wrapOf(word(kWrapV)).value_or(both);
    use.isPointedNear = word(kMagnification) == kPointed;
    const std::uint32_t smaller = word(kMinification);
    use.isPointedFar = smaller == kPointed || smaller == kPointedSizes || smaller == kPointedMixed;
    if (smaller == kPointed || smaller == kOneSize ||
        (smaller >= kFurtherOneSize && smaller <= kLastFilter))
        use.sizes = TextureUse::Sizes::kLargest;
    else if (smaller == kPointedSizes || smaller == kSmoothSizes)
        use.sizes = TextureUse::Sizes::kNearest;
    use.isStencil = word(kStencil) == 1;
    switch (word(kColor)) {
        case 1:
            use.color = TextureUse::Color::kBlend;
            break;
        case 2:
            use.color = TextureUse::Color::kDecal;
            break;
        case 3:
            use.color = TextureUse::Color::kReplace;
            break;
        case 4:
            use.color = TextureUse::Color::kAdd;
            break;
        default:
            break;
    }
    return use;
}

Texture::Texture(const Picture& picture, int mostBits, const TextureUse& use) : use_(use) {
    const int most = std::clamp(mostBits, 0, kMostBits);
    addLevel(bitsFor(picture.width, most), bitsFor(picture.height, most));
    const bool isStencil = use.isStencil && std::ranges::all_of(picture.texels, isOpaqueGrey);
    hasAlpha_ = isStencil || picture.hasAlpha();
    if (isStencil)
        fit(stencilOf(picture));
    else
        fit(picture);
    while (levels_[static_cast<unsigned>(levelCount_ - 1)].widthBits > 0 ||
           levels_[static_cast<unsigned>(levelCount_ - 1)].heightBits > 0) {
        const Place last = levels_[static_cast<unsigned>(levelCount_ - 1)];
        addLevel(std::max(last.widthBits - 1, 0), std::max(last.heightBits - 1, 0));
        halve(last);
    }
}

void Texture::addLevel(int widthBits, int heightBits) {
    const std::size_t start = texels_.size();
    texels_.resize(start + (std::size_t{1} << (widthBits + heightBits)));
    levels_[static_cast<unsigned>(levelCount_++)] = {start, widthBits, heightBits};
}

void Texture::fit(const Picture& picture) {
    const Place& place = levels_.front();
    texels_ = resized(picture, 1 << place.widthBits, 1 << place.heightBits).texels;
    colorWhatIsClear(place);
}

/// What cannot be seen is mixed with what can be where the two meet: it takes on the color of that.
void Texture::colorWhatIsClear(const Place& place) {
    if (!hasAlpha_) return;
    const int width = 1 << place.widthBits, height = 1 << place.heightBits;
    const auto texelAt = [&](int x, int y) -> std::uint32_t& {
        return texels_[place.start +
                       (static_cast<std::size_t>(y & (height - 1)) << place.widthBits) +
                       static_cast<std::size_t>(x & (width - 1))];
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            std::uint32_t& texel = texelAt(x, y);
            if (texel >> 24 != 0) continue;
            Mean around;
            for (int v = y - 1; v <= y + 1; ++v)
                for (int u = x - 1; u <= x + 1; ++u) around.add(texelAt(u, v));
            texel = around.texel() & ~kOpaque;
        }
}

void Texture::halve(const Place& from) {
    const Place& to = levels_[static_cast<unsigned>(levelCount_ - 1)];
    const int acrossShift = from.widthBits - to.widthBits,
              upShift = from.heightBits - to.heightBits;
    for (std::size_t y = 0; y < std::size_t{1} << to.heightBits; ++y) {
        for (std::size_t x = 0; x < std::size_t{1} << to.widthBits; ++x) {
            Mean mean;
            for (std::size_t v = y << upShift; v < (y + 1) << upShift; ++v)
                for (std::size_t u = x << acrossShift; u < (x + 1) << acrossShift; ++u)
                    mean.add(texels_[from.start + (v << from.widthBits | u)]);
            texels_[to.start + (y << to.widthBits | x)] = mean.texel();
        }
    }
    colorWhatIsClear(to);
}

}  // namespace render
