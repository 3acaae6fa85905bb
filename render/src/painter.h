// Draws the things of a scene into a part of a picture.
#pragma once

#include <render/lighting.h>
#include <render/renderer.h>

#include <cstddef>
#include <vector>

namespace render {

/// Bytes between what different threads write to: two lines of the cache, which processors fetch
/// together.
inline constexpr std::size_t kApart = 128;

inline constexpr Color kSelected = 0xFFC040;

/// A model as it appears in the picture: itself, or where another one shows it.
struct Appearance {
    const SceneModel* model = nullptr;
    bool isPlaced = false;
    bool isOutlined = false;   ///< when placed: with all that is in it
    ItemIndex item = kNoItem;  ///< when placed: what picking finds there
    float opacity = 1;
    std::size_t firstRange = 0;
    Place place = {};

    Vec3d point(Vec3d p) const { return isPlaced ? place.point(p) : p; }
    float length(float l) const { return isPlaced ? l * place.growth() : l; }
};

/// Each thread of a frame has its own; it keeps its working memory from frame to frame.
class alignas(kApart) Painter {
public:
    /// Of the frame and the part of its picture what follows is drawn. All but `part` and
    /// `lighting` are to outlive what is drawn of them.
    void begin(const Camera& camera, const RenderOptions& options, const Lighting& lighting,
               const CanvasPart& part);
    CanvasPart& part() { return part_; }

    /// Draws the surface of an item, or a dot for it; returns how many triangles were in front of
    /// the camera and not culled, in this part or not.
    std::size_t drawItem(const Appearance& appearance, ItemIndex index, bool asDot);
    /// Draws a grid of the points that stand for a model; returns how many there are.
    std::size_t drawStandIn(const Appearance& appearance, int level);
    void drawMark(const Mark& mark, const LightPointLook& look, bool selected);
    /// The corners of a box.
    void drawBrackets(const Box& around);
    void drawGrid();
    void drawAxes();

private:
    /// A corner of a triangle on its way to the screen.
    struct Corner {
        Vec3 view;
        Vec3 color;  ///< red, green and blue, 0 to 255
        TexturePlace texture;
        Vec3 shares;  ///< on a surface with layers: of the corners of the triangle before clipping
    };

    /// How an item is turned to the eye: what was `from` becomes `to`, three directions each.
    struct Turn {
        Vec3 from[3], to[3];

        Vec3 of(Vec3 v) const {
            return to[0] * dot(v, from[0]) + to[1] * dot(v, from[1]) + to[2] * dot(v, from[2]);
        }
    };

    void transform(const Item& item, const Surface& surface);
    bool turnToEye(const Item& item, Facing facing);
    void drawLightPoint(const Mark& mark, const LightPointLook& look, const ScreenPoint& centre,
                        Paint paint);
    bool isDot(const Item& item, const Surface& surface) const;
    void drawDot(const Item& item, const Surface& surface, ItemIndex index);
    void fillSurface(const Item& item, const Surface& surface, ItemIndex index);
    ScreenPoint screenOf(Vec3 view) const;
    /// What becomes of a normal of the model.
    Vec3 turned(Vec3 normal) const {
        if (appearance_->isPlaced) normal = appearance_->place.normal(normal);
        return isTurned_ ? turn_.of(normal) : normal;
    }
    Vec3 forwardTo(Vec3d fromEye) const {
        return camera_->isParallel() ? camera_->forward() : toFloat(fromEye);
    }
    void fillTriangle(const Corner (&corners)[3], const ScreenPoint (&at)[3],
                      const Surface& surface, Fill& fill);
    static Corner between(const Corner& a, const Corner& b, float share);
    void fillClipped(const Corner (&corners)[3], const Vec3 (&points)[3], const Surface& surface,
                     Fill& fill);
    void drawEdges(const Item& item, const Paint& paint, bool frontOnly);
    void findInPicture(const Item& item);
    void findLeftOut(const Item& item);
    void drawFadedEdges(const Item& item, const Surface& surface, ItemIndex index);
    void worldLine(Vec3d a, Vec3d b, const Paint& paint);
    void viewLine(Vec3 a, Vec3 b, const Paint& paint);
    void screenLine(ScreenPoint a, ScreenPoint b, const Paint& paint);
    void wideLine(ScreenPoint a, ScreenPoint b, const Paint& paint);

    // Of the frame being drawn.
    const Camera* camera_ = nullptr;
    const RenderOptions* options_ = nullptr;
    Lighting lighting_;
    CanvasPart part_;

    // Of the item being drawn.
    const SceneModel* scene_ = nullptr;
    const Appearance* appearance_ = nullptr;
    Vec3d origin_, centre_;  // of the item and its sphere, in the world
    Vec3 centreView_;        // that of the sphere, in view space
    float radius_ = 0;
    const Vec3* points_ = nullptr;         // its vertices, relative to its origin
    std::vector<Vec3> turned_;             // the same, in their place and turned to the eye
    std::vector<Vec3> view_;               // in view space
    std::vector<ScreenPoint> screen_;      // and on the screen, where in front of the eye
    std::vector<std::uint8_t> back_;       // by triangle: not filled, as it is seen from behind
    std::vector<std::uint8_t> inPicture_;  // by vertex, of an item whose edges are drawn
    std::vector<std::uint8_t> touched_;    // by vertex: of what the other side of an edge may be
    std::vector<std::uint64_t> leftOut_;   // ends of edges whose triangle is not filled, in order
    bool isWhole_ = false;                 // within the camera's bounds
    Turn turn_;
    const TexturePlace* places_ = nullptr;  // of the corners of the triangle, and of its layers
    bool isTurned_ = false;
    float bias_ = 0;     // of its layer, as a share of the depth
    int lineWidth_ = 1;  // pixels
    std::uint16_t linePattern_ = 0xFFFF;
    std::size_t drawn_ = 0;
};

}  // namespace render
