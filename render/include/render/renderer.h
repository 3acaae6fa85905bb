// Draws a scene model through a camera into a canvas.
#pragma once

#include <render/canvas.h>

#include <memory>
#include <vector>

namespace render {

enum class DrawMode { kShaded, kShadedEdges, kWireframe };

/// Whose hour it is: what is not to be seen then is left out, and it is darker at dusk and by
/// night, but for lamps, light points and what shines. At any hour all of it is shown, as bright as
/// by day.
enum class TimeOfDay { kAny, kDay, kDusk, kNight };

struct RenderOptions {
    DrawMode mode = DrawMode::kShadedEdges;
    bool grid = true;
    bool axes = true;
    /// Lines and marks are this many pixels to what they are at 96 dots per inch.
    float pixelScale = 1;
    bool helpers = true;  ///< marks of helpers and lights
    TimeOfDay time = TimeOfDay::kAny;
    double seconds = 0;  ///< since light points began to flash and turn
    /// Each level of detail shows in its range of distances from the eye, unless levels are chosen
    /// by hiding; otherwise all of them show.
    bool levelsByEye = false;
    /// The same as if the eye were so far from each of them, wherever it is; none below 0.
    double levelDistance = -1;
    /// Leaves out early what is behind placed models. The picture is the same.
    bool cullsHidden = true;
    /// That draw at once; 0 for as many as there are processors. The picture is the same.
    unsigned threads = 0;
};

/// Keeps its working memory and its threads between frames; a frame of a scene drawn before takes
/// none.
class Renderer {
public:
    Renderer();
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    /// Draws one frame; the canvas keeps what picking needs until the next. The camera must have
    /// been told the canvas's size. Throws `std::bad_alloc`.
    void draw(const SceneModel& scene, const Camera& camera, const RenderOptions& options,
              Canvas& canvas);

    /// Triangles that the last frame passed to the canvas: those in front of the camera and not
    /// culled.
    std::size_t trianglesDrawn() const { return trianglesDrawn_; }

private:
    struct Frame;

    std::unique_ptr<Frame> frame_;
    std::size_t trianglesDrawn_ = 0;
};

}  // namespace render
