// A picture with depth: pixels, how near each is, and what each shows.
#pragma once

#include <render/camera.h>
#include <render/scenemodel.h>
#include <render/texture.h>

#include <limits>
#include <span>
#include <vector>

namespace render {

/// What a drawing operation does with the pixels it covers.
struct Paint {
    Color color = 0;
    float opacity = 1;
    ItemIndex item = kNoItem;  ///< what picking finds there; kNoItem leaves what was there
    /// Added to the depth for the comparison, as a share of it; positive draws over a surface that
    /// lies in the same place.
    float depthBias = 0;
    bool testDepth = true;
    /// The surface that a line lies in, if that is known: beside the line's middle its pixels are
    /// then as near as the surface there.
    const DepthPlane* plane = nullptr;
};

/// How a triangle is filled.
struct Fill {
    ItemIndex item = kNoItem;  ///< what picking finds there
    DepthPlane plane;
    float opacity = 1;  ///< what is below 1 lets through what was drawn there before
    /// By which pictures that take the place of lit colors are multiplied; white is full light.
    Color hour = 0xFFFFFF;
};

/// A corner of a textured triangle.
struct TextureCorner {
    ScreenPoint place;
    /// One over the distance from the eye along the view direction, or 1 in a parallel view; or
    /// in proportion to that.
    float nearness = 1;
    float u = 0, v = 0;  ///< 1 is one repetition of the texture
    Vec3 color;          ///< by which the texture is multiplied, 0 to 255
};

/// A further picture on a triangle: where its corners are on it.
struct CornerLayer {
    const Texture* texture = nullptr;
    float u[3] = {}, v[3] = {};
};

/// Some rows and columns of a picture with all that is drawn in them; what falls outside of them is
/// left out, and no pixel depends on which of them are drawn together. Rows run from top to bottom
/// without padding, one 32-bit word per pixel (0x00RRGGBB), which is what a top-down 32-bit
/// device-independent bitmap holds. The memory is that of a `Canvas`.
class CanvasPart {
public:
    /// Of no picture.
    CanvasPart() = default;

    /// Of the whole picture.
    int width() const { return width_; }
    int height() const { return height_; }
    const Color* pixels() const { return pixels_; }
    Color pixel(int x, int y) const { return pixels_[at(x, y)]; }
    /// Larger is nearer; kFarthest where nothing was drawn.
    float depth(int x, int y) const { return depths_[at(x, y)]; }
    ItemIndex item(int x, int y) const { return items_[at(x, y)]; }
    static constexpr float kFarthest = std::numeric_limits<float>::lowest();

    /// Fills with a gradient from top to bottom of the picture, and forgets depths and items.
    void clear(Color top, Color bottom);
    /// False when a triangle is known to hold no pixel's centre in this part.
    bool mayCover(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c) const;
    /// Fills the pixels whose centres lie in the triangle; triangles that share an edge neither
    /// overlap nor leave a gap. Either orientation is filled. Of surfaces in the same place the one
    /// that was drawn first stays.
    void triangle(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c, Color color,
                  const Fill& fill);
    /// The same with a color for each corner and all between them inside. `colors` are red, green
    /// and blue of the three corners, 0 to 255.
    void gradient(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c,
                  const Vec3 (&colors)[3], const Fill& fill);
    /// The same with a texture, in perspective. What is less than half opaque in it is left out;
    /// with `blended` it lets through what was drawn there before.
    void textured(const TextureCorner (&corners)[3], const Texture& texture, bool blended,
                  const Fill& fill);
    /// The same with further pictures over the texture, which may be null, the lowest first, and
    /// one that shows in between the texture's texels, which may be null.
    void layered(const TextureCorner (&corners)[3], const Texture* texture,
                 std::span<const CornerLayer> layers, const Texture* detail, bool blended,
                 const Fill& fill);
    /// Draws a smooth line one pixel wide. Off-screen parts cost nothing.
    void line(ScreenPoint a, ScreenPoint b, const Paint& paint);
    /// The same of one whose ends lie in the picture.
    void lineWithin(const ScreenPoint& a, const ScreenPoint& b, const Paint& paint) {
        if (mayCross(a, b)) plotLine(a, b, paint);
    }
    /// The one pixel at a place.
    void dot(const ScreenPoint& place, const Paint& paint);
    /// A shining point: a disc of `radius` pixels in a halo three times as wide, all at one depth.
    void glow(const ScreenPoint& centre, float radius, const Paint& paint);

protected:
    std::size_t at(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
               static_cast<std::size_t>(x);
    }

    int width_ = 0, height_ = 0;
    int firstRow_ = 0, endRow_ = 0;
    int firstColumn_ = 0, endColumn_ = 0;
    Color* pixels_ = nullptr;
    float* depths_ = nullptr;
    ItemIndex* items_ = nullptr;

private:
    friend class Canvas;

    /// Calls `span(y, left, right)` for each row of the triangle, with all its columns.
    template <typename Span>
    void scan(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c, const Span& span);
    /// Fills a triangle with what `shader` returns for each pixel: `begin(y, left, count)`, then
    /// `at(i)` for some of them, 0xAARRGGBB.
    template <bool kBlended, typename Shader>
    void shade(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c, const Fill& fill,
               Shader&& shader);
    void plot(int x, int y, float depth, const Paint& paint, float coverage);
    bool mayCross(const ScreenPoint& a, const ScreenPoint& b) const;
    void plotLine(const ScreenPoint& a, const ScreenPoint& b, const Paint& paint);
};

/// A whole picture.
class Canvas : public CanvasPart {
public:
    Canvas() = default;
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    /// Makes the picture this size; memory is only taken when it has never been so large before.
    void resize(int width, int height);
    /// The rows or columns from `first` to before `end`, until the next `resize`. Parts that have
    /// no pixel in common can be drawn into at the same time.
    CanvasPart rows(int first, int end);
    CanvasPart columns(int first, int end);

    /// The item nearest to a pixel within `reach` pixels, or kNoItem. A pixel of its own wins over
    /// a neighbour.
    ItemIndex pick(int x, int y, int reach) const;
    /// Draws a rim of `width` pixels around the pixels of the items whose entry in `chosen` is not
    /// 0; entries are by item number.
    void outline(std::span<const std::uint8_t> chosen, int width, Color color);

private:
    std::vector<Color> pixelMemory_;
    std::vector<float> depthMemory_;
    std::vector<ItemIndex> itemMemory_;
    std::vector<std::uint8_t> rim_;  // working memory of outline
};

/// Whether a line may have pixels here.
inline bool CanvasPart::mayCross(const ScreenPoint& a, const ScreenPoint& b) const {
    const auto isBeside = [](float p, float q, int first, int end) {
        return std::max(p, q) < static_cast<float>(first - 2) ||
               std::min(p, q) > static_cast<float>(end + 2);
    };
    return !isBeside(a.y, b.y, firstRow_, endRow_) && !isBeside(a.x, b.x, firstColumn_, endColumn_);
}

inline bool CanvasPart::mayCover(const ScreenPoint& a, const ScreenPoint& b,
                                 const ScreenPoint& c) const {
    // Pixels, by which rounding may move an edge within the picture.
    constexpr float kSlack = 1 / 64.f;
    const auto holdsCentre = [](float p, float q, float r, int first, int end) {
        const float low = std::min({p, q, r}) - 0.5f - kSlack;
        const float high = std::max({p, q, r}) - 0.5f + kSlack;
        // In this order what is no number may.
        if (low >= static_cast<float>(end) || high < static_cast<float>(first)) return false;
        if (!(low > 0 && high - low < 1)) return true;
        return static_cast<int>(low) != static_cast<int>(high);
    };
    return holdsCentre(a.y, b.y, c.y, firstRow_, endRow_) &&
           holdsCentre(a.x, b.x, c.x, firstColumn_, endColumn_);
}

}  // namespace render
