// What is drawn of a model that takes up a few pixels: points in the colors of what is around them.
#pragma once

#include <render/geometry.h>

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace render {

class Lighting;
class Place;
class SceneModel;

/// The surfaces of a model, added up in the cells of grids, a coarse one for few pixels and finer
/// ones for more. Of each cell that has some it keeps how much of them looks to each side of the
/// model, and in which color, so that the points are lit, and seen, as the surfaces would be.
class StandIn {
public:
    /// The finest grid has that many cells to a side, as a power of two.
    static constexpr int kFinest = 4;

    /// What looks to one side: its area, as a share of that of a cell's side; and by this, the
    /// color of what the scene's lights fall on, of what they do not, and that with which it
    /// shines, 0 to 255.
    struct Side {
        Vec3 lit, unlit, shine;
        float area = 0;

        /// Both together; the second one by an area.
        void add(const Side& other, float by) {
            lit = lit + other.lit * by;
            unlit = unlit + other.unlit * by;
            shine = shine + other.shine * by;
            area += other.area * by;
        }
    };
    /// Towards x, y and z, and away from each.
    using Sides = std::array<Side, 6>;
    /// Where one of them looks to, in the model.
    static Vec3 outOf(std::size_t side) {
        const float sign = side < 3 ? 1.f : -1.f;
        return {side % 3 == 0 ? sign : 0, side % 3 == 1 ? sign : 0, side % 3 == 2 ? sign : 0};
    }

    struct Point {
        Vec3 place;  ///< relative to `centre()`
        Sides sides;
    };

    /// Of a model that is complete. It is empty where points would not do: for what is seen at
    /// times, lets light through, is drawn as lines, or is too little or too much to be added up.
    explicit StandIn(const SceneModel& model);

    bool empty() const { return levels_[0].empty(); }
    Vec3d centre() const { return centre_; }
    /// The longest side of the model's box.
    double extent() const { return extent_; }
    /// The coarsest grid whose points leave no gaps where the longest side is that many pixels
    /// long; above `kFinest` where none does.
    static int levelFor(float pixels);
    std::span<const Point> points(int level) const {
        return levels_[static_cast<std::size_t>(level)];
    }

private:
    std::array<std::vector<Point>, kFinest + 1> levels_;
    Vec3d centre_;
    double extent_ = 0;
};

}  // namespace render
