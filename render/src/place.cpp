#include <render/place.h>

namespace render {

Place::Place(Vec3d x, Vec3d y, Vec3d z, Vec3d origin) : exact_{x, y, z}, origin_(origin) {
    // Across the images of two axes, whatever becomes of their lengths.
    const Vec3d across[3] = {cross(y, z), cross(z, x), cross(x, y)};
    const double volume = dot(x, across[0]);
    double most = 0;
    for (int i = 0; i < 3; ++i) {
        axes_[i] = toFloat(exact_[i]);
        normals_[i] = volume != 0 ? toFloat(across[i] * (1 / volume)) : Vec3{};
        // No eigenvalue of a matrix is larger than the sums of its rows.
        double sum = 0;
        for (const Vec3d& other : exact_) sum += std::abs(dot(exact_[i], other));
        most = std::max(most, sum);
    }
    growth_ = static_cast<float>(std::sqrt(most));
}

Box Place::box(const Box& of) const {
    Box box;
    for (unsigned i = 0; i < 8 && !of.empty(); ++i) box.add(point(of.corner(i)));
    return box;
}

bool Place::isFinite() const {
    bool all = std::isfinite(growth_);
    for (const Vec3d& v : {exact_[0], exact_[1], exact_[2], origin_})
        all = all && std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
    for (const Vec3& n : normals_)
        all = all && std::isfinite(n.x) && std::isfinite(n.y) && std::isfinite(n.z);
    return all;
}

Place Place::within(const Place& outer) const {
    return {outer.vector(exact_[0]), outer.vector(exact_[1]), outer.vector(exact_[2]),
            outer.point(origin_)};
}

}  // namespace render
