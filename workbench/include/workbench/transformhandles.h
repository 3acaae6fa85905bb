// The handles in the viewport by which the mouse moves, turns and scales what is selected.
#pragma once

#include <kiln/geometry.h>
#include <render/camera.h>

#include <string>
#include <vector>

namespace workbench {

enum class HandleMode { kNone, kMove, kRotate, kScale };

/// What can be taken hold of: an axis, or all of them. All of them together move along the screen,
/// turn about the line of sight, and scale evenly.
enum class HandlePart { kNone, kX, kY, kZ, kAll };

/// What is drawn of a part: a line through some points of the screen, in pixels, or with `isFilled`
/// the surface within it.
struct HandleLine {
    HandlePart part;
    bool isFilled;
    std::vector<render::ScreenPoint> points;
};

/// How far apart the places, angles and factors are that a drag stops at; a `step` of 0 leaves
/// it free. `start` is the place that is to come out on the grid.
struct HandleGrid {
    double step = 0;
    Point3 start;
};

/// What a drag makes of the scene.
struct HandleChange {
    Matrix3 matrix;    ///< of the world
    std::string text;  ///< how much it is, for the user
};

/// Handles at one place, as a camera sees them. They are equally large on the screen wherever they
/// stand. What points at the viewer is left out.
class TransformHandles {
public:
    /// `frame`: the place, and three directions of unit length at right angles. `pixels`: how long
    /// an arm is on the screen.
    TransformHandles(HandleMode mode, const Matrix3& frame, float pixels)
        : mode_(mode), frame_(frame), pixels_(pixels) {}

    HandleMode mode() const { return mode_; }
    /// The same handles where a change has put them.
    TransformHandles moved(const HandleChange& change) const;

    /// None where the place is behind the eye.
    std::vector<HandleLine> lines(const render::Camera& camera) const;
    /// The part within `reach` pixels of a pixel.
    HandlePart partAt(const render::Camera& camera, float x, float y, float reach) const;
    /// What comes of dragging a part from one pixel to another.
    HandleChange dragged(const render::Camera& camera, HandlePart part, render::ScreenPoint from,
                         render::ScreenPoint to, const HandleGrid& grid) const;

private:
    class Drawing;

    Point3 place() const { return frame_.GetTrans(); }
    HandleChange moveBy(const render::Camera& camera, HandlePart part, render::ScreenPoint from,
                        render::ScreenPoint to, const HandleGrid& grid) const;
    HandleChange turnBy(const render::Camera& camera, HandlePart part, render::ScreenPoint from,
                        render::ScreenPoint to, const HandleGrid& grid) const;
    HandleChange scaleBy(const render::Camera& camera, HandlePart part, render::ScreenPoint from,
                         render::ScreenPoint to, const HandleGrid& grid) const;

    HandleMode mode_;
    Matrix3 frame_;
    float pixels_;
};

}  // namespace workbench
