// Where a model stands within another one.
#pragma once

#include <render/geometry.h>

namespace render {

/// An affine map from the coordinates of a model to those around it.
class Place {
public:
    /// The one that leaves everything where it is.
    Place() : Place({1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {}) {}
    /// `x`, `y` and `z` are what becomes of the axes, `origin` of the origin.
    Place(Vec3d x, Vec3d y, Vec3d z, Vec3d origin);

    Vec3d point(Vec3d p) const { return origin_ + vector(p); }
    /// The same for the way from one point to another.
    Vec3 offset(Vec3 v) const { return axes_[0] * v.x + axes_[1] * v.y + axes_[2] * v.z; }
    /// The normal of a surface with the normal `n`, on the same side of it; of unit length, or zero
    /// for a place without depth.
    Vec3 normal(Vec3 n) const {
        return normalised(normals_[0] * n.x + normals_[1] * n.y + normals_[2] * n.z);
    }
    Box box(const Box& of) const;
    /// By how much lengths grow, or a little more.
    float growth() const { return growth_; }
    bool isFinite() const;
    /// This place within a model that stands at `outer`.
    Place within(const Place& outer) const;

private:
    Vec3d vector(Vec3d v) const { return exact_[0] * v.x + exact_[1] * v.y + exact_[2] * v.z; }

    Vec3d exact_[3], origin_;
    Vec3 axes_[3], normals_[3];
    float growth_;
};

}  // namespace render
