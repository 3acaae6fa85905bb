#include <render/canvas.h>

#include <array>
#include <bit>
#include <optional>
#include <type_traits>
#include <utility>

namespace render {
namespace {

/// `opacity` is 0 to 256.
inline Color mixed(Color below, Color above, float opacity) {
    const auto share = static_cast<std::uint32_t>(static_cast<int>(opacity + 0.5f));
    if (share >= 256) return above;
    const std::uint32_t rest = 256 - share;
    const std::uint32_t redBlue =
        ((below & 0xFF00FF) * rest + (above & 0xFF00FF) * share) >> 8 & 0xFF00FF;
    const std::uint32_t green = ((below & 0x00FF00) * rest + (above & 0x00FF00) * share) >> 8;
    return redBlue | (green & 0x00FF00);
}

/// `opacity` is 0 to 1.
inline Color mix(Color below, Color above, float opacity) {
    return mixed(below, above, opacity * 256);
}

// The part of the line from a to b inside the rectangle, widened by one pixel for smoothing.
bool clipToPicture(ScreenPoint& a, ScreenPoint& b, float width, float height) {
    const auto isWithin = [&](const ScreenPoint& p) {
        return p.x >= -1 && p.y >= -1 && p.x <= width + 1 && p.y <= height + 1;
    };
    if (isWithin(a) && isWithin(b)) return true;
    const float dx = b.x - a.x, dy = b.y - a.y, dz = b.depth - a.depth;
    float enter = 0, leave = 1;
    const auto clip = [&](float direction, float room) {
        if (direction == 0) return room >= 0;
        const float t = room / direction;
        if (direction < 0)
            enter = std::max(enter, t);
        else
            leave = std::min(leave, t);
        return enter <= leave;
    };
    if (!clip(-dx, a.x + 1) || !clip(dx, width + 1 - a.x) || !clip(-dy, a.y + 1) ||
        !clip(dy, height + 1 - a.y))
        return false;
    const ScreenPoint start = a;
    a = {start.x + dx * enter, start.y + dy * enter, start.depth + dz * enter};
    b = {start.x + dx * leave, start.y + dy * leave, start.depth + dz * leave};
    return true;
}

/// Of a number that an int can hold.
int wholeBelow(float number) {
    const int whole = static_cast<int>(number);
    return whole - (static_cast<float>(whole) > number ? 1 : 0);
}

// First pixel whose centre is at or beyond a coordinate, kept in a range that cannot overflow; what
// is no number, as an infinite slope gives, is `low`.
int firstCentre(float coordinate, int low, int high) {
    const float least = std::max(static_cast<float>(low), coordinate - 0.5f);
    const float most = std::min(least, static_cast<float>(high));
    const int whole = static_cast<int>(most);
    return whole + (static_cast<float>(whole) < most ? 1 : 0);
}

}  // namespace

void Canvas::resize(int width, int height) {
    width_ = std::max(width, 1);
    height_ = std::max(height, 1);
    const std::size_t size = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_);
    pixelMemory_.resize(size);
    depthMemory_.resize(size);
    itemMemory_.resize(size);
    pixels_ = pixelMemory_.data();
    depths_ = depthMemory_.data();
    items_ = itemMemory_.data();
    firstRow_ = firstColumn_ = 0;
    endRow_ = height_;
    endColumn_ = width_;
}

CanvasPart Canvas::rows(int first, int end) {
    CanvasPart some = *this;
    some.firstRow_ = std::clamp(first, 0, height_);
    some.endRow_ = std::clamp(end, some.firstRow_, height_);
    return some;
}

CanvasPart Canvas::columns(int first, int end) {
    CanvasPart some = *this;
    some.firstColumn_ = std::clamp(first, 0, width_);
    some.endColumn_ = std::clamp(end, some.firstColumn_, width_);
    return some;
}

void CanvasPart::clear(Color top, Color bottom) {
    for (int y = firstRow_; y < endRow_; ++y) {
        const Color color = mix(top, bottom, static_cast<float>(y) / static_cast<float>(height_));
        const std::size_t start = at(firstColumn_, y);
        const int count = endColumn_ - firstColumn_;
        std::fill_n(pixels_ + start, count, color);
        std::fill_n(depths_ + start, count, kFarthest);
        std::fill_n(items_ + start, count, kNoItem);
    }
}

ItemIndex Canvas::pick(int x, int y, int reach) const {
    ItemIndex best = kNoItem;
    int bestDistance = reach * reach + 1;
    for (int v = std::max(y - reach, 0); v <= std::min(y + reach, height_ - 1); ++v) {
        for (int u = std::max(x - reach, 0); u <= std::min(x + reach, width_ - 1); ++u) {
            const int distance = (u - x) * (u - x) + (v - y) * (v - y);
            if (distance < bestDistance && item(u, v) != kNoItem) {
                best = item(u, v);
                bestDistance = distance;
            }
        }
    }
    return best;
}

template <typename Span>
void CanvasPart::scan(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c,
                      const Span& span) {
    const ScreenPoint *top = &a, *middle = &b, *bottom = &c;
    if (middle->y < top->y) std::swap(top, middle);
    if (bottom->y < top->y) std::swap(top, bottom);
    if (bottom->y < middle->y) std::swap(middle, bottom);

    const int firstRow = firstCentre(top->y, firstRow_, endRow_),
              endRow = firstCentre(bottom->y, firstRow_, endRow_);
    if (firstRow >= endRow) return;
    const float area =
        (middle->x - top->x) * (bottom->y - top->y) - (bottom->x - top->x) * (middle->y - top->y);
    if (area == 0 || !std::isfinite(area)) return;

    // Every edge is walked from its upper end, so that both its triangles find the same pixels.
    const float longSlope = (bottom->x - top->x) / (bottom->y - top->y);
    const float upperSlope = middle->y > top->y ? (middle->x - top->x) / (middle->y - top->y) : 0;
    const float lowerSlope =
        bottom->y > middle->y ? (bottom->x - middle->x) / (bottom->y - middle->y) : 0;
    const bool longIsLeft = area > 0;

    for (int row = firstRow; row < endRow; ++row) {
        const float centre = static_cast<float>(row) + 0.5f;
        const float longX = top->x + (centre - top->y) * longSlope;
        const float shortX = centre < middle->y ? top->x + (centre - top->y) * upperSlope
                                                : middle->x + (centre - middle->y) * lowerSlope;
        const int left = firstCentre(longIsLeft ? longX : shortX, 0, width_);
        const int right = firstCentre(longIsLeft ? shortX : longX, 0, width_);
        if (left < right) span(row, left, right);
    }
}

namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;

struct FlatShader {
    static constexpr bool kHasAlpha = false;
    Color color;

    void begin(int, int, int) {}
    std::uint32_t at(int) const { return color | kOpaque; }
};

}  // namespace

template <bool kBlended, typename Shader>
void CanvasPart::shade(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c,
                       const Fill& fill, Shader&& shader) {
    using Kind = std::remove_reference_t<Shader>;
    // What lies in the same place differs by less than this, as a share of the depth.
    constexpr float kSamePlace = 1e-5f;
    constexpr std::uint32_t kHalf = 128, kSolid = 250, kFaint = 8;
    [[maybe_unused]] const auto opacity = static_cast<std::uint32_t>(fill.opacity * 256);
    const float least = fill.plane.least, most = fill.plane.most;
    const auto step = static_cast<float>(fill.plane.perX);
    constexpr bool kIsFlat = std::is_same_v<Kind, FlatShader>;
    // The same as for single pixels, of four that have one color.
    [[maybe_unused]] const auto fillFour = [&](std::size_t i, float first, float k) {
        if constexpr (kIsFlat) {
            const __m128 along = _mm_add_ps(_mm_set1_ps(k), _mm_setr_ps(0, 1, 2, 3));
            const __m128 grown =
                _mm_add_ps(_mm_set1_ps(first), _mm_mul_ps(_mm_set1_ps(step), along));
            const __m128 own = _mm_max_ps(_mm_min_ps(grown, _mm_set1_ps(most)), _mm_set1_ps(least));
            const __m128 old = _mm_loadu_ps(depths_ + i);
            const __m128 size = _mm_andnot_ps(_mm_set1_ps(-0.f), old);
            const __m128 isNearer =
                _mm_cmpgt_ps(own, _mm_add_ps(old, _mm_mul_ps(size, _mm_set1_ps(kSamePlace))));
            if (_mm_movemask_ps(isNearer) == 0) return;
            const __m128i mask = _mm_castps_si128(isNearer);
            const auto put = [&](auto* memory, int value) {
                auto* const place = reinterpret_cast<__m128i*>(memory + i);
                _mm_storeu_si128(place,
                                 _mm_or_si128(_mm_and_si128(mask, _mm_set1_epi32(value)),
                                              _mm_andnot_si128(mask, _mm_loadu_si128(place))));
            };
            put(pixels_, static_cast<int>(shader.color));
            put(items_, static_cast<int>(fill.item));
            _mm_storeu_ps(depths_ + i,
                          _mm_or_ps(_mm_and_ps(isNearer, own), _mm_andnot_ps(isNearer, old)));
        }
    };
    scan(a, b, c, [&](int row, int left, int right) {
        // Pixels count from the left end of the triangle's own row: where this part begins must
        // not round them differently.
        int k = std::max(firstColumn_ - left, 0);
        const int end = std::min(right, endColumn_) - left;
        if (k >= end) return;
        const double y = row + 0.5;
        const auto first = static_cast<float>(fill.plane.start + (left + 0.5) * fill.plane.perX +
                                              y * fill.plane.perY);
        shader.begin(row, left, right - left);
        const std::size_t start = at(left, row);
        if constexpr (kIsFlat && !kBlended) {
            for (; k + 4 <= end; k += 4)
                fillFour(start + static_cast<std::size_t>(k), first, static_cast<float>(k));
        }
        for (; k < end; ++k) {
            const std::size_t i = start + static_cast<std::size_t>(k);
            // In this order what is no number becomes the most.
            const float depth =
                std::max(least, std::min(most, first + step * static_cast<float>(k)));
            if (!(depth > depths_[i] + std::abs(depths_[i]) * kSamePlace)) continue;
            const std::uint32_t color = shader.at(k);
            if constexpr (kBlended) {
                const std::uint32_t alpha = (color >> 24) * opacity >> 8;
                if (alpha < kFaint) continue;
                pixels_[i] = mix(pixels_[i], color & 0xFFFFFF, static_cast<float>(alpha) / 255);
                if (alpha >= kHalf || fill.opacity < 1) items_[i] = fill.item;
                if (alpha >= kSolid) depths_[i] = depth;
            } else {
                if constexpr (Kind::kHasAlpha) {
                    if (color >> 24 < kHalf) continue;
                }
                pixels_[i] = color & 0xFFFFFF;
                depths_[i] = depth;
                items_[i] = fill.item;
            }
        }
    });
}

namespace {

// What grows evenly over the screen.
struct ScreenPlane {
    double start = 0, perX = 0, perY = 0;

    double at(double x, double y) const { return start + x * perX + y * perY; }
};

// The planes through values at the corners of a triangle.
class PlaneFinder {
public:
    PlaneFinder(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c)
        : x_(a.x), y_(a.y), abX_(b.x - x_), abY_(b.y - y_), acX_(c.x - x_), acY_(c.y - y_) {
        perArea_ = 1 / (abX_ * acY_ - acX_ * abY_);
    }
    bool isFlat() const { return !std::isfinite(perArea_); }
    ScreenPlane through(double a, double b, double c) const {
        const double ab = b - a, ac = c - a;
        const double perX = (ab * acY_ - ac * abY_) * perArea_;
        const double perY = (ac * abX_ - ab * acX_) * perArea_;
        return {a - x_ * perX - y_ * perY, perX, perY};
    }

private:
    double x_, y_, abX_, abY_, acX_, acY_, perArea_;
};

// Three planes of red, green and blue, each in a lane of its own: blue is the lowest.
class ColorPlanes {
public:
    ColorPlanes(const PlaneFinder& planes, const Vec3& a, const Vec3& b, const Vec3& c)
        : red_(planes.through(a.x, b.x, c.x)),
          green_(planes.through(a.y, b.y, c.y)),
          blue_(planes.through(a.z, b.z, c.z)),
          step_(lanes(blue_.perX, green_.perX, red_.perX, 0)) {}

    void begin(int row, int left) {
        const double x = left + 0.5, y = row + 0.5;
        row_ = lanes(blue_.at(x, y), green_.at(x, y), red_.at(x, y), 255);
    }
    /// Pixel `k` of the row, opaque: each channel, 0 to 255, in 16 bits. What is no number is 0.
    __m128i at(int k) const {
        const __m128 color =
            _mm_add_ps(row_, _mm_mul_ps(step_, _mm_set1_ps(static_cast<float>(k))));
        const __m128 kept = _mm_min_ps(_mm_max_ps(color, _mm_setzero_ps()), _mm_set1_ps(255));
        return _mm_packs_epi32(_mm_cvttps_epi32(kept), _mm_setzero_si128());
    }

private:
    static __m128 lanes(double blue, double green, double red, double alpha) {
        return _mm_setr_ps(static_cast<float>(blue), static_cast<float>(green),
                           static_cast<float>(red), static_cast<float>(alpha));
    }

    ScreenPlane red_, green_, blue_;
    __m128 step_, row_{};
};

/// 0xAARRGGBB, of 16 bits for each channel.
std::uint32_t packed(__m128i channels) {
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(channels, channels)));
}

struct GradientShader {
    static constexpr bool kHasAlpha = false;
    ColorPlanes planes;

    void begin(int row, int left, int) { planes.begin(row, left); }
    std::uint32_t at(int k) const { return packed(planes.at(k)); }
};

/// What becomes of the color below, 0xAARRGGBB both, under a texel. `hour` is as of a fill.
std::uint32_t applied(TextureUse::Color how, std::uint32_t texel, std::uint32_t below, Color hour) {
    using How = TextureUse::Color;
    const std::uint32_t alpha = texel >> 24;
    const auto channelOf = [&](unsigned shift) {
        const std::uint32_t color = texel >> shift & 0xFF, own = below >> shift & 0xFF;
        const std::uint32_t seen = color * ((hour >> shift & 0xFF) + 1) >> 8;
        switch (how) {
            case How::kReplace:
                return seen << shift;
            case How::kDecal:
                return (seen * alpha + own * (255 - alpha)) / 255 << shift;
            case How::kAdd:
                return std::min(seen + own, 255U) << shift;
            case How::kBlend:
                return own * (255 - color) / 255 << shift;
            case How::kModulate:
                break;
        }
        return (color * (own + 1) >> 8) << shift;  // one more, so that white leaves a color
    };
    // Where a decal lets through, the surface is seen, and no hole.
    const std::uint32_t seen = how == How::kDecal     ? below >> 24
                               : how == How::kReplace ? alpha
                                                      : alpha * ((below >> 24) + 1) >> 8;
    return seen << 24 | channelOf(16) | channelOf(8) | channelOf(0);
}

/// How often a texture is there in each direction where another one is once.
struct Repeats {
    double u = 1, v = 1;
};

// The texels of a texture along the rows of a triangle. Texture coordinates over the distance grow
// evenly over the screen. They are divided out every few pixels; between these, an even step is
// close enough.
// With `kUsed` the texture says how it is used; otherwise it repeats.
template <bool kUsed>
class Sampler {
public:
    /// Of a texture whose coordinates are `repeats` times those of the corners.
    Sampler(const PlaneFinder& planes, const TextureCorner (&corners)[3], const Texture& texture,
            Repeats repeats = {})
        : texture_(&texture),
          u_(overDistance(planes, corners, &TextureCorner::u, repeats.u)),
          v_(overDistance(planes, corners, &TextureCorner::v, repeats.v)),
          nearness_(planes.through(corners[0].nearness, corners[1].nearness, corners[2].nearness)) {
    }

    const Texture& texture() const { return *texture_; }

    void begin(int row, int left, int count) {
        x_ = left + 0.5;
        y_ = row + 0.5;
        count_ = count;
        block_ = -1;
    }
    std::uint32_t at(int k) {
        if (k / kBlock != block_) beginBlock(k / kBlock);
        const int i = k % kBlock;
        const std::int32_t u = startU_ + stepU_ * i, v = startV_ + stepV_ * i;
        if (share_ == 0) [[likely]]
            return texelOf(level_, u, v);
        return mixedAt(u, v);
    }
    /// Near the pixel asked for last: the square of the texels of the largest level in a pixel.
    double texels() const { return texels_; }

private:
    static constexpr int kBlock = 16;
    static constexpr auto kPerStep = [] {
        std::array<double, kBlock> shares{};
        for (int i = 1; i < kBlock; ++i) shares[static_cast<std::size_t>(i)] = 1. / i;
        return shares;
    }();

    struct Place {
        double u, v;
        double away;  // one over the nearness
    };

    /// What is left of a number that a whole one is taken from; 0 beyond all measure.
    static double fraction(double value) {
        constexpr double kMost = 1e15;
        if (!(value > -kMost && value < kMost)) return 0;
        const auto whole = static_cast<double>(static_cast<std::int64_t>(value));
        return value - (whole > value ? whole - 1 : whole);
    }

    /// Of two levels: the same place is at half of its coordinates in the one of half the sides,
    /// where half a texel is 128 too.
    [[gnu::noinline]] std::uint32_t mixedAt(std::int32_t u, std::int32_t v) const {
        const int across = level_.widthBits - smaller_.widthBits;
        const int up = level_.heightBits - smaller_.heightBits;
        const std::uint32_t other =
            texelOf(smaller_, ((u + 128) >> across) - 128, ((v + 128) >> up) - 128);
        return Texture::between(texelOf(level_, u, v), other, share_);
    }

    std::uint32_t texelOf(const Texture::Level& level, std::int32_t u, std::int32_t v) const {
        if constexpr (kUsed) return level.at(u, v, texture_->use(), isPointed_);
        return level.at(u, v);
    }

    static ScreenPlane overDistance(const PlaneFinder& planes, const TextureCorner (&corners)[3],
                                    float TextureCorner::*coordinate, double repeats) {
        const auto value = [&](const TextureCorner& corner) {
            return double{corner.*coordinate} * double{corner.nearness} * repeats;
        };
        return planes.through(value(corners[0]), value(corners[1]), value(corners[2]));
    }

    Place placeAt(double x) const {
        const double away = 1 / nearness_.at(x, y_);
        return {u_.at(x, y_) * away, v_.at(x, y_) * away, away};
    }

    void beginBlock(int block) {
        block_ = block;
        const double first = x_ + block * kBlock;
        const int steps = std::min(kBlock, count_ - block * kBlock) - 1;
        const Place a = placeAt(first);
        const Place b = steps > 0 ? placeAt(first + steps) : a;
        chooseLevel(a);
        const double width = 256 << level_.widthBits, height = 256 << level_.heightBits;
        const double perStep = kPerStep[static_cast<std::size_t>(steps)];
        // Half a texel less: a texel's color is that of its middle.
        startU_ = fixed(withinWrap(a.u, texture_->use().wrapU) * width) - 128;
        startV_ = fixed(withinWrap(a.v, texture_->use().wrapV) * height) - 128;
        stepU_ = fixed((b.u - a.u) * perStep * width);
        stepV_ = fixed((b.v - a.v) * perStep * height);
    }

    /// Without what the texture's repetitions do not tell apart.
    static double withinWrap(double value, TextureUse::Wrap wrap) {
        if constexpr (kUsed) {
            if (wrap == TextureUse::Wrap::kClamp) return value;
            if (wrap == TextureUse::Wrap::kMirror) return 2 * fraction(value / 2);
        }
        return fraction(value);
    }

    /// The level of which a pixel covers about one texel; near the next one, that one too.
    void chooseLevel(const Place& place) {
        using Sizes = TextureUse::Sizes;
        constexpr double kMixedFrom = 0.8;  // of the way to the next level
        const double level = levelOf(place);
        const TextureUse& use = texture_->use();
        const int last = texture_->levels() - 1;
        int chosen = level > 0 ? std::min(static_cast<int>(level), last) : 0;
        share_ = 0;
        if constexpr (kUsed) {
            isPointed_ = texels_ > 1 ? use.isPointedFar : use.isPointedNear;
            if (use.sizes == Sizes::kLargest) chosen = 0;
        }
        level_ = texture_->level(chosen);
        const double beyond = level - chosen;
        if (beyond <= kMixedFrom || chosen == last || (kUsed && use.sizes != Sizes::kMixed)) return;
        smaller_ = texture_->level(chosen + 1);
        share_ = static_cast<int>((beyond - kMixedFrom) * (256 / (1 - kMixedFrom)));
    }

    /// 0 where a pixel covers a texel of the largest level, or less of one; half of it is 1, a
    /// quarter 2, and so on.
    double levelOf(const Place& place) {
        const Texture::Level largest = texture_->level(0);
        const double width = 1 << largest.widthBits, height = 1 << largest.heightBits;
        const auto squared = [&](double ofU, double ofV, double ofNearness) {
            const double u = (ofU - place.u * ofNearness) * place.away * width;
            const double v = (ofV - place.v * ofNearness) * place.away * height;
            return u * u + v * v;
        };
        const double across = squared(u_.perX, v_.perX, nearness_.perX);
        const double along = squared(u_.perY, v_.perY, nearness_.perY);
        // Of a surface seen at a slant, between what would blur one way and flicker the other.
        texels_ = std::max(across, along) * 0.6 + std::min(across, along) * 0.4;
        if (!(texels_ > 1)) return 0;
        // The binary logarithm, as if even between powers of two.
        constexpr double kPower = 1. / (std::uint64_t{1} << 52);
        return (static_cast<double>(std::bit_cast<std::int64_t>(texels_)) * kPower - 1023) / 2;
    }

    /// In a range that a block's steps cannot leave; what is no number is its least.
    static std::int32_t fixed(double value) {
        constexpr double kMost = 1 << 26;
        return static_cast<std::int32_t>(std::max(-kMost, std::min(value, kMost)));
    }

    const Texture* texture_;
    ScreenPlane u_, v_, nearness_;
    Texture::Level level_{}, smaller_{};
    int share_ = 0;  // of the smaller one, in 256ths
    bool isPointed_ = false;
    double x_ = 0, y_ = 0, texels_ = 0;
    int count_ = 0, block_ = -1;
    std::int32_t startU_ = 0, startV_ = 0, stepU_ = 0, stepV_ = 0;
};

// With `kUsed` the texture says how it is used; otherwise it repeats and is multiplied.
template <bool kAlpha, bool kUsed>
class TextureShader {
public:
    static constexpr bool kHasAlpha = kAlpha;

    TextureShader(const PlaneFinder& planes, const TextureCorner (&corners)[3],
                  const Texture& texture, Color hour)
        : sampler_(planes, corners, texture),
          colors_(planes, corners[0].color, corners[1].color, corners[2].color),
          hour_(hour) {}

    void begin(int row, int left, int count) {
        colors_.begin(row, left);
        sampler_.begin(row, left, count);
    }
    std::uint32_t at(int k) {
        const std::uint32_t texel = sampler_.at(k);
        const __m128i light = colors_.at(k);
        if constexpr (kUsed) {
            const TextureUse::Color how = sampler_.texture().use().color;
            return applied(how == TextureUse::Color::kBlend ? TextureUse::Color::kModulate : how,
                           texel, packed(light), hour_);
        }
        // One more, so that white leaves a color as it is.
        const __m128i share = _mm_add_epi16(light, _mm_set1_epi16(1));
        return packed(_mm_srli_epi16(_mm_mullo_epi16(Texture::spread(texel), share), 8));
    }

private:
    Sampler<kUsed> sampler_;
    ColorPlanes colors_;
    Color hour_;
};

// The texture, what shows in between its texels, and then each layer over what lies below it.
class LayerShader {
public:
    static constexpr bool kHasAlpha = true;

    LayerShader(const PlaneFinder& planes, const TextureCorner (&corners)[3],
                const Texture* texture, std::span<const CornerLayer> layers, const Texture* detail,
                Color hour)
        : colors_(planes, corners[0].color, corners[1].color, corners[2].color), hour_(hour) {
        if (texture) texture_.emplace(planes, corners, *texture);
        if (texture && detail)
            detail_.emplace(planes, corners, *detail, repeatsOf(*texture, *detail));
        for (const CornerLayer& layer : layers.first(std::min(layers.size(), layers_.size()))) {
            TextureCorner own[3] = {corners[0], corners[1], corners[2]};
            for (int i = 0; i < 3; ++i) own[i].u = layer.u[i], own[i].v = layer.v[i];
            layers_[count_++].emplace(planes, own, *layer.texture);
        }
    }

    void begin(int row, int left, int count) {
        colors_.begin(row, left);
        if (texture_) texture_->begin(row, left, count);
        if (detail_) detail_->begin(row, left, count);
        for (std::size_t i = 0; i < count_; ++i) layers_[i]->begin(row, left, count);
    }
    std::uint32_t at(int k) {
        std::uint32_t color = packed(colors_.at(k));
        if (texture_) {
            std::uint32_t texel = texture_->at(k);
            if (detail_) texel = detailed(texel, k);
            const How how = texture_->texture().use().color;
            color = applied(how == How::kBlend ? How::kModulate : how, texel, color, hour_);
        }
        for (std::size_t i = 0; i < count_; ++i)
            color = applied(layers_[i]->texture().use().color, layers_[i]->at(k), color, hour_);
        return color;
    }

private:
    using How = TextureUse::Color;
    using UsedSampler = Sampler<true>;

    /// A texel of the one is as large as 16 of the other.
    static constexpr int kDetailBits = 4;

    static Repeats repeatsOf(const Texture& texture, const Texture& detail) {
        const Texture::Level one = texture.level(0), other = detail.level(0);
        return {std::ldexp(1., one.widthBits + kDetailBits - other.widthBits),
                std::ldexp(1., one.heightBits + kDetailBits - other.heightBits)};
    }

    /// Middle grey leaves a texel as it is. Nothing shows until a texel is larger than a pixel, and
    /// all of it once a texel of the detail is.
    std::uint32_t detailed(std::uint32_t texel, int k) {
        const double texels = texture_->texels();
        if (!(texels < 1)) return texel;
        const double larger = std::log2(std::max(texels, 1e-9)) / -2;
        const auto share = static_cast<int>(std::min(larger / kDetailBits, 1.) * 256);
        const std::uint32_t own = detail_->at(k);
        const auto channelOf = [&](unsigned shift) {
            const int color = static_cast<int>(texel >> shift & 0xFF);
            const int difference = 2 * static_cast<int>(own >> shift & 0xFF) - 255;
            const int changed = color + color * difference / 255 * share / 256;
            return static_cast<std::uint32_t>(std::clamp(changed, 0, 255)) << shift;
        };
        return (texel & kOpaque) | channelOf(16) | channelOf(8) | channelOf(0);
    }

    ColorPlanes colors_;
    std::optional<UsedSampler> texture_, detail_;
    std::array<std::optional<UsedSampler>, TextureLayers::kMost> layers_;
    std::size_t count_ = 0;
    Color hour_;
};

}  // namespace

void CanvasPart::triangle(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c,
                          Color color, const Fill& fill) {
    if (fill.opacity < 1)
        shade<true>(a, b, c, fill, FlatShader{color});
    else
        shade<false>(a, b, c, fill, FlatShader{color});
}

void CanvasPart::gradient(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c,
                          const Vec3 (&colors)[3], const Fill& fill) {
    const PlaneFinder planes(a, b, c);
    if (planes.isFlat()) return;
    GradientShader shader{ColorPlanes(planes, colors[0], colors[1], colors[2])};
    if (fill.opacity < 1)
        shade<true>(a, b, c, fill, shader);
    else
        shade<false>(a, b, c, fill, shader);
}

void CanvasPart::textured(const TextureCorner (&corners)[3], const Texture& texture, bool blended,
                          const Fill& fill) {
    const ScreenPoint &a = corners[0].place, &b = corners[1].place, &c = corners[2].place;
    const PlaneFinder planes(a, b, c);
    if (planes.isFlat()) return;
    const bool isBlended = blended || fill.opacity < 1;
    if (!texture.use().isPlain()) {
        TextureShader<true, true> shader(planes, corners, texture, fill.hour);
        if (isBlended)
            shade<true>(a, b, c, fill, shader);
        else
            shade<false>(a, b, c, fill, shader);
    } else if (isBlended) {
        shade<true>(a, b, c, fill, TextureShader<true, false>(planes, corners, texture, fill.hour));
    } else if (texture.hasAlpha()) {
        shade<false>(a, b, c, fill,
                     TextureShader<true, false>(planes, corners, texture, fill.hour));
    } else {
        shade<false>(a, b, c, fill,
                     TextureShader<false, false>(planes, corners, texture, fill.hour));
    }
}

void CanvasPart::layered(const TextureCorner (&corners)[3], const Texture* texture,
                         std::span<const CornerLayer> layers, const Texture* detail, bool blended,
                         const Fill& fill) {
    const ScreenPoint &a = corners[0].place, &b = corners[1].place, &c = corners[2].place;
    const PlaneFinder planes(a, b, c);
    if (planes.isFlat()) return;
    LayerShader shader(planes, corners, texture, layers, detail, fill.hour);
    if (blended || fill.opacity < 1)
        shade<true>(a, b, c, fill, shader);
    else
        shade<false>(a, b, c, fill, shader);
}

inline void CanvasPart::plot(int x, int y, float depth, const Paint& paint, float coverage) {
    if (x < firstColumn_ || x >= endColumn_ || y < firstRow_ || y >= endRow_) return;
    const std::size_t i = at(x, y);
    if (paint.plane)
        depth = paint.plane->at(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f);
    if (paint.testDepth) {
        const float compared = depth + std::abs(depth) * paint.depthBias;
        if (compared < depths_[i]) return;
        // Faint pixels at a line's rim do not hide what is drawn behind them afterwards.
        if (coverage > 0.5f && paint.opacity == 1) depths_[i] = std::max(depths_[i], depth);
    }
    pixels_[i] = mix(pixels_[i], paint.color, coverage * paint.opacity);
    if (paint.item != kNoItem && coverage > 0.25f) items_[i] = paint.item;
}

void CanvasPart::line(ScreenPoint a, ScreenPoint b, const Paint& paint) {
    if (!std::isfinite(a.x + a.y + b.x + b.y) || !mayCross(a, b)) return;
    if (clipToPicture(a, b, static_cast<float>(width_), static_cast<float>(height_)))
        plotLine(a, b, paint);
}

void CanvasPart::dot(const ScreenPoint& place, const Paint& paint) {
    if (!(place.x >= 0 && place.y >= 0 && place.x < static_cast<float>(width_) &&
          place.y < static_cast<float>(height_)))
        return;
    plot(static_cast<int>(place.x), static_cast<int>(place.y), place.depth, paint, 1);
}

// The pixels of a line are those of the whole line: which of them are here must not move it. Walks
// along the longer direction and shares each step's ink between two neighbouring pixels.
void CanvasPart::plotLine(const ScreenPoint& a, const ScreenPoint& b, const Paint& paint) {
    const bool steep = std::abs(b.y - a.y) > std::abs(b.x - a.x);
    float u0 = steep ? a.y : a.x, v0 = steep ? a.x : a.y, z0 = a.depth;
    float u1 = steep ? b.y : b.x, v1 = steep ? b.x : b.y, z1 = b.depth;
    if (u0 > u1) {
        std::swap(u0, u1);
        std::swap(v0, v1);
        std::swap(z0, z1);
    }
    const float run = std::max(u1 - u0, 1e-6f);
    const float slope = (v1 - v0) / run, depthSlope = (z1 - z0) / run;
    int first = wholeBelow(u0), last = wholeBelow(u1);
    first = std::max(first, steep ? firstRow_ : firstColumn_);
    last = std::min(last, (steep ? endRow_ : endColumn_) - 1);
    const int firstBeside = steep ? firstColumn_ : firstRow_;
    const int endBeside = steep ? endColumn_ : endRow_;
    if (std::max(v0, v1) < static_cast<float>(firstBeside - 1) ||
        std::min(v0, v1) > static_cast<float>(endBeside + 1))
        return;
    const std::ptrdiff_t along = steep ? width_ : 1, beside = steep ? 1 : width_;
    const auto walk = [&](auto&& putTwo) {
        for (int step = first; step <= last; ++step) {
            const float centre = std::clamp(static_cast<float>(step) + 0.5f, u0, u1);
            // The line is clipped to one pixel around the picture, so that one more keeps it
            // positive and a cast rounds down.
            const float v = v0 + (centre - u0) * slope + 1.5f;
            const float depth = z0 + (centre - u0) * depthSlope;
            const int low = static_cast<int>(v) - 2;
            putTwo(step, low, depth, v - static_cast<float>(low + 2));
        }
    };
    if (!paint.testDepth || paint.plane || paint.item == kNoItem) {
        walk([&](int step, int low, float depth, float share) {
            const int x = steep ? low : step, y = steep ? step : low;
            plot(x, y, depth, paint, 1 - share);
            plot(x + (steep ? 1 : 0), y + (steep ? 0 : 1), depth, paint, share);
        });
        return;
    }
    // What `plot` does, of pixels that are here. With copies of what else would be read again after
    // each pixel.
    const auto room = static_cast<unsigned>(endBeside - firstBeside);
    walk([=, pixels = pixels_, depths = depths_, items = items_, color = paint.color,
          item = paint.item, bias = paint.depthBias, isSolid = paint.opacity == 1,
          ink = paint.opacity * 256](int step, int low, float depth, float share) {
        const float compared = depth + std::abs(depth) * bias;
        const auto put = [&](int place, std::ptrdiff_t i, float coverage) {
            if (static_cast<unsigned>(place - firstBeside) >= room || compared < depths[i]) return;
            if (isSolid && coverage > 0.5f) depths[i] = std::max(depths[i], depth);
            pixels[i] = mixed(pixels[i], color, coverage * ink);
            if (coverage > 0.25f) items[i] = item;
        };
        const std::ptrdiff_t i = step * along + low * beside;
        put(low, i, 1 - share);
        put(low + 1, i + beside, share);
    });
}

void CanvasPart::glow(const ScreenPoint& centre, float radius, const Paint& paint) {
    const float reach = radius * 3;
    if (!(centre.x > -reach && centre.y > -reach && centre.x < static_cast<float>(width_) + reach &&
          centre.y < static_cast<float>(height_) + reach))
        return;
    const int left = std::max(firstColumn_, static_cast<int>(std::floor(centre.x - reach)));
    const int right = std::min(endColumn_, static_cast<int>(std::ceil(centre.x + reach)));
    const int top = std::max(firstRow_, static_cast<int>(std::floor(centre.y - reach)));
    const int bottom = std::min(endRow_, static_cast<int>(std::ceil(centre.y + reach)));
    Paint halo = paint;
    halo.item = kNoItem;
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            const float distance = std::hypot(static_cast<float>(x) + 0.5f - centre.x,
                                              static_cast<float>(y) + 0.5f - centre.y);
            const float disc = std::clamp(radius + 0.5f - distance, 0.f, 1.f);
            const float fade = std::clamp(1 - distance / reach, 0.f, 1.f);
            if (disc > 0.25f)
                plot(x, y, centre.depth, paint, disc);
            else if (fade > 0)
                plot(x, y, centre.depth, halo, std::max(disc, 0.5f * fade * fade));
        }
    }
}

void Canvas::outline(std::span<const std::uint8_t> chosen, int width, Color color) {
    // How far each pixel is from the nearest chosen one, as far as the rim reaches: by sweeping
    // down and up again, each pixel from its neighbours.
    const auto beyond = static_cast<std::uint8_t>(width + 1);
    rim_.assign(pixelMemory_.size(), beyond);
    int left = width_, right = -1, top = height_, bottom = -1;
    for (int y = 0; y < height_; ++y) {
        const std::size_t row = at(0, y);
        for (int x = 0; x < width_; ++x) {
            const ItemIndex item = items_[row + static_cast<std::size_t>(x)];
            if (item == kNoItem || !chosen[item]) continue;
            rim_[row + static_cast<std::size_t>(x)] = 0;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = y;
        }
    }
    left = std::max(left - width, 0);
    right = std::min(right + width, width_ - 1);
    top = std::max(top - width, 0);
    bottom = std::min(bottom + width, height_ - 1);
    const auto nearer = [&](std::size_t i, bool exists, std::size_t neighbour) {
        if (exists && rim_[neighbour] + 1 < rim_[i])
            rim_[i] = static_cast<std::uint8_t>(rim_[neighbour] + 1);
    };
    const auto stride = static_cast<std::size_t>(width_);
    for (int y = top; y <= bottom; ++y) {
        for (int x = left; x <= right; ++x) {
            const std::size_t i = at(x, y);
            nearer(i, x > left, i - 1);
            nearer(i, y > top, i - stride);
        }
    }
    for (int y = bottom; y >= top; --y) {
        for (int x = right; x >= left; --x) {
            const std::size_t i = at(x, y);
            nearer(i, x < right, i + 1);
            nearer(i, y < bottom, i + stride);
            if (rim_[i] != 0 && rim_[i] != beyond)
                pixels_[i] = mix(pixels_[i], color, rim_[i] == width && width > 1 ? 0.6f : 1);
        }
    }
}

}  // namespace render
