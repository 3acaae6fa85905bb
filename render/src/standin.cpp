#include <render/standin.h>

#include <render/scenemodel.h>
#include <render/texture.h>

#include <utility>

namespace render {
namespace {

/// Of what stands for a model, in all its grids.
constexpr std::size_t kMostSamples = 200'000;
constexpr std::uint64_t kMostItems = 100'000;
/// Fewer are drawn as fast as points.
constexpr std::uint64_t kFewestItems = 64;

/// One grid over the model's box.
class Grid {
public:
    Grid(int level, Vec3d corner, double extent)
        : cells_(1U << level),
          corner_(corner),
          size_(extent / static_cast<double>(cells_)),
          indices_(cells_ * cells_ * cells_) {}

    /// All by their areas, of which there is `area` in all.
    void add(Vec3d place, const StandIn::Sides& sides, float area) {
        const auto along = [&](double value, double from) {
            const auto cell = static_cast<std::size_t>(std::max(0., (value - from) / size_));
            return std::min(cell, cells_ - 1);
        };
        const std::size_t x = along(place.x, corner_.x), y = along(place.y, corner_.y),
                          z = along(place.z, corner_.z);
        std::uint32_t& index = indices_[(z * cells_ + y) * cells_ + x];
        if (index == 0) {
            const Vec3d middle{static_cast<double>(x) + 0.5, static_cast<double>(y) + 0.5,
                               static_cast<double>(z) + 0.5};
            const Vec3d half = Vec3d{1, 1, 1} * (static_cast<double>(cells_) / 2);
            points_.push_back({toFloat((middle - half) * size_), {}});
            areas_.push_back(0);
            index = static_cast<std::uint32_t>(points_.size());
        }
        areas_[index - 1] += area;
        for (std::size_t i = 0; i < sides.size(); ++i) points_[index - 1].sides[i].add(sides[i], 1);
    }
    /// `middle` is that of the box.
    void add(const Grid& finer, Vec3d middle) {
        for (std::size_t i = 0; i < finer.points_.size(); ++i)
            add(middle + Vec3d(finer.points_[i].place), finer.points_[i].sides, finer.areas_[i]);
    }

    /// Of cells that hold less than would fill one of their sides as many are left out as there is
    /// too little, always the same ones.
    std::vector<StandIn::Point> points() const {
        const double full = size_ * size_;
        std::vector<StandIn::Point> kept;
        for (std::size_t i = 0; i < points_.size(); ++i) {
            const auto chance = static_cast<std::uint32_t>((i + 1) * 2654435769U) >> 8;
            if (kept.empty() || areas_[i] >= full * (chance / double{1 << 24}))
                kept.push_back(points_[i]);
        }
        // Of any size of a model the numbers are small.
        const auto perFull = static_cast<float>(1 / full);
        for (StandIn::Point& point : kept)
            for (StandIn::Side& side : point.sides) {
                const StandIn::Side all = std::exchange(side, {});
                side.add(all, perFull);
            }
        return kept;
    }

private:
    std::size_t cells_;
    Vec3d corner_;
    double size_;
    std::vector<std::uint32_t> indices_;  // of points, from 1
    std::vector<StandIn::Point> points_;
    std::vector<float> areas_;
};

/// Takes samples of all surfaces of a model, and of those that are placed in it.
class Sampler {
public:
    Sampler(Grid& grid, double spacing) : grid_(grid), spacing_(spacing) {}

    /// False for a model that points cannot stand for.
    bool add(const SceneModel& model, const Place& place) {
        for (const Item& item : model.items()) {
            if (++samples_ > kMostSamples) return false;
            const bool isPlaced = item.placement != kNoPlacement;
            if (isPlaced && !addPlaced(model.placements()[item.placement], place)) return false;
            if (item.triangleCount > 0 && !addItem(model, item, place)) return false;
        }
        return true;
    }

private:
    /// By the points that stand for it, where these are close together.
    bool addPlaced(const Placement& placement, const Place& outer) {
        const Place place = placement.place.within(outer);
        const StandIn* const points = placement.model->standIn();
        if (!points) return add(*placement.model, place);
        const double size = points->extent() * double{place.growth()};
        int level = 0;
        while (level <= StandIn::kFinest && size / (1 << level) > spacing_) ++level;
        if (level > StandIn::kFinest) return add(*placement.model, place);
        const double cell = size / (1 << level);
        const auto scale = static_cast<float>(cell * cell);
        samples_ += points->points(level).size();
        for (const StandIn::Point& point : points->points(level)) {
            StandIn::Sides turned;
            float all = 0;
            for (std::size_t i = 0; i < point.sides.size(); ++i) {
                addTurned(turned, point.sides[i], place.normal(StandIn::outOf(i)), scale);
                all += point.sides[i].area * scale;
            }
            // Most surfaces look to two sides.
            grid_.add(place.point(points->centre() + Vec3d(point.place)), turned, all / 2);
        }
        return samples_ <= kMostSamples;
    }

    static void addTurned(StandIn::Sides& sides, const StandIn::Side& side, Vec3 normal,
                          float scale) {
        for (std::size_t i = 0; i < sides.size(); ++i) {
            const float toSide = dot(normal, StandIn::outOf(i));
            if (!(toSide > 0)) continue;
            sides[i].add(side, toSide * toSide * scale);
        }
    }

    bool addItem(const SceneModel& model, const Item& item, const Place& place) {
        const Surface& surface = model.surfaceOf(item);
        if (surface.style == DrawStyle::kOutline || surface.layers != 0) return false;
        Vec3 tint = surface.diffuse;
        float solid = 1;
        if (surface.texture) {
            const Texture& texture = *surface.texture;
            const std::uint32_t mean = texture.level(texture.levels() - 1).at(0, 0);
            tint = product(tint, vec3Of(mean)) * (1 / 255.f);
            solid = static_cast<float>(mean >> 24) / 255;
        }
        for (const Triangle& triangle :
             model.triangles().subspan(item.firstTriangle, item.triangleCount)) {
            Vec3d corners[3];
            for (int i = 0; i < 3; ++i)
                corners[i] = place.point(item.origin + Vec3d(model.vertices()[triangle.vertex[i]]));
            const Vec3 color = product(colorOf(model, item, triangle), tint);
            const StandIn::Side look{surface.lit ? color : Vec3{}, surface.lit ? Vec3{} : color,
                                     surface.emissive * 255.f, 1};
            if (!addTriangle(corners, sidesOf(surface, place.normal(triangle.normal)), look, solid))
                return false;
        }
        return true;
    }

    static Vec3 colorOf(const SceneModel& model, const Item& item, const Triangle& triangle) {
        if (!item.hasFinish) return vec3Of(triangle.color);
        Vec3 sum;
        for (const std::uint32_t vertex : triangle.vertex) {
            const Finish& finish = model.finishes()[item.firstFinish + vertex - item.firstVertex];
            sum = sum + vec3Of(finish.colored ? finish.color : triangle.color);
        }
        return sum * (1 / 3.f);
    }

    /// Shares of a surface by where it looks.
    static std::array<float, 6> sidesOf(const Surface& surface, Vec3 normal) {
        std::array<float, 6> shares{};
        const bool both = surface.style != DrawStyle::kFrontOnly;
        for (std::size_t i = 0; i < shares.size(); ++i) {
            const float toSide = dot(normal, StandIn::outOf(i));
            if (surface.facing != Facing::kFixed)
                shares[i] = 1;
            else if (both || toSide > 0)
                shares[i] = toSide * toSide;
        }
        return shares;
    }

    bool addTriangle(const Vec3d (&corners)[3], const std::array<float, 6>& shares,
                     const StandIn::Side& look, float solid) {
        const Vec3d ab = corners[1] - corners[0], ac = corners[2] - corners[0];
        const double longest = std::max({length(ab), length(ac), length(ac - ab)});
        const auto pieces = static_cast<std::size_t>(
            std::clamp(std::ceil(longest / spacing_), 1., double{4 << StandIn::kFinest}));
        samples_ += pieces * pieces;
        if (samples_ > kMostSamples) return false;
        const double each = 1 / static_cast<double>(pieces);
        const auto area =
            static_cast<float>(length(cross(ab, ac)) / 2 * each * each * double{solid});
        StandIn::Sides sides;
        for (std::size_t i = 0; i < sides.size(); ++i) sides[i].add(look, shares[i] * area);
        const auto addAt = [&](double along, double aside) {
            grid_.add(corners[0] + ab * (along * each) + ac * (aside * each), sides, area);
        };
        for (std::size_t i = 0; i < pieces; ++i)
            for (std::size_t k = 0; k < pieces - i; ++k) {
                const auto along = static_cast<double>(i), aside = static_cast<double>(k);
                addAt(along + 1 / 3., aside + 1 / 3.);
                if (i + k + 1 < pieces) addAt(along + 2 / 3., aside + 2 / 3.);
            }
        return true;
    }

    Grid& grid_;
    double spacing_;
    std::size_t samples_ = 0;
};

}  // namespace

StandIn::StandIn(const SceneModel& model) {
    const Box& box = model.box();
    if (model.sample() == kNoItem || !model.isPlain()) return;
    if (model.weight() < kFewestItems || model.weight() > kMostItems) return;
    const Vec3d size = box.max - box.min;
    extent_ = std::max({size.x, size.y, size.z});
    centre_ = box.centre();
    if (!(extent_ > 0) || !std::isfinite(extent_)) return;
    const Vec3d corner = centre_ - Vec3d{extent_, extent_, extent_} * 0.5;
    Grid grid(kFinest, corner, extent_);
    if (!Sampler(grid, extent_ / (1 << kFinest) * 0.7).add(model, {})) return;
    for (int level = kFinest; level >= 0; --level) {
        levels_[static_cast<std::size_t>(level)] = grid.points();
        if (level == 0) break;
        Grid coarser(level - 1, corner, extent_);
        coarser.add(grid, centre_);
        grid = std::move(coarser);
    }
}

int StandIn::levelFor(float pixels) {
    // Of points less than 0.7 of a pixel apart each pixel has one, however they are turned.
    int level = 0;
    for (float apart = pixels; level <= kFinest && !(apart < 0.7f); apart /= 2) ++level;
    return level;
}

}  // namespace render
