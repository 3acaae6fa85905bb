// Draws a scene model through a camera into a canvas.
#pragma once

#include <render/canvas.h>
#include <render/lighting.h>

namespace render {

enum class DrawMode { kShaded, kShadedEdges, kWireframe };

struct RenderOptions {
    DrawMode mode = DrawMode::kShadedEdges;
    bool grid = true;
    bool axes = true;
    bool helpers = true;  ///< marks of helpers and lights
    /// Lines and marks are this many pixels to what they are at 96 dots per inch.
    float pixelScale = 1;
};

/// Keeps its working memory between frames; a frame of a scene drawn before takes none.
class Renderer {
public:
    /// Draws one frame; the canvas keeps what picking needs until the next. The camera must have
    /// been told the canvas's size.
    void draw(const SceneModel& scene, const Camera& camera, const RenderOptions& options,
              Canvas& canvas);

    /// Triangles that the last frame passed to the canvas: those in front of the camera and not
    /// culled.
    std::size_t trianglesDrawn() const { return trianglesDrawn_; }

private:
    /// A corner of a triangle on its way to the screen.
    struct Corner {
        Vec3 view;
        Vec3 color;  ///< red, green and blue, 0 to 255
        TexturePlace texture;
    };

    void drawSurfaces(const SceneModel& scene);
    void drawTranslucent(const SceneModel& scene);
    void drawSurface(const SceneModel& scene, const Item& item, ItemIndex index);
    void fillSurface(const SceneModel& scene, const Item& item, ItemIndex index);
    DepthPlane planeOf(const Triangle& triangle, Vec3d fromEye) const;
    ScreenPoint screenOf(Vec3 view) const;
    void fillTriangle(const Corner (&corners)[3], const Surface& surface, Fill& fill);
    void fillClipped(const Corner (&corners)[3], const Surface& surface, Fill& fill);
    static int clipNear(const Corner (&corners)[3], float nearDistance, Corner (&out)[4]);
    void drawEdges(const SceneModel& scene, const Item& item, const Paint& paint);
    void drawFadedEdges(const SceneModel& scene, const Item& item, ItemIndex index);
    void drawMark(const Mark& mark, bool selected);
    void drawOutline(std::span<const Item> items);
    void drawBrackets(const Box& around);
    void drawGrid();
    void drawAxes();
    void transform(const SceneModel& scene, const Item& item);
    void worldLine(Vec3d a, Vec3d b, const Paint& paint);
    void viewLine(Vec3 a, Vec3 b, const Paint& paint);
    // Of the frame being drawn.
    const Camera* camera_ = nullptr;
    Canvas* canvas_ = nullptr;
    RenderOptions options_;
    Lighting lighting_;

    std::vector<Vec3> view_;           // the current item's vertices in view space
    std::vector<ScreenPoint> screen_;  // and on the screen, where in front of the eye
    float bias_ = 0;                   // of the current item's layer, as a share of the depth
    std::vector<std::pair<float, ItemIndex>> translucent_;  // by distance, the farthest first
    std::vector<std::uint8_t> chosen_;                      // by item: whether it is outlined
    std::size_t trianglesDrawn_ = 0;
};

}  // namespace render
