#include "painter.h"

#include "lightpoints.h"

#include <array>
#include <cmath>
#include <utility>

namespace render {
namespace {

constexpr Color kGridMinor = 0x8A949C, kGridMajor = 0xAEB7BE;
constexpr Color kEdge = 0x20262B;
constexpr Color kAxisX = 0xE0554F, kAxisY = 0x66C25A, kAxisZ = 0x5A8FF0;

constexpr float kEdgeBias = 6e-4f;     // edges lie upon their own surface
constexpr float kLayerBias = 1.5e-4f;  // each layer lies upon the one below
constexpr float kGridBias = -2e-4f;    // ground that lies in the plane of the grid hides it

Color colorOf(Vec3 channels) {
    // In this order what is no number becomes 0.
    const auto byte = [](float value) {
        return static_cast<Color>(std::min(std::max(0.f, value), 255.f));
    };
    return byte(channels.x) << 16 | byte(channels.y) << 8 | byte(channels.z);
}

/// That of a triangle, of which `fromEye` is one of the corners. `bias` is that of its layer.
DepthPlane planeOf(const Camera& camera, float bias, Vec3 normal, Vec3d fromEye) {
    DepthPlane plane = camera.depthPlane(normal, dot(Vec3d(normal), fromEye));
    if (camera.isParallel()) {
        plane.start += double{bias} * camera.distance();
    } else {
        const double nearer = 1 + double{bias};
        plane.start *= nearer;
        plane.perX *= nearer;
        plane.perY *= nearer;
    }
    return plane;
}

/// What is in there already has no meaning.
template <typename T>
void makeRoom(std::vector<T>& memory, std::size_t size) {
    if (memory.size() < size) memory.resize(size);
}

}  // namespace

void Painter::begin(const Camera& camera, const RenderOptions& options, const Lighting& lighting,
                    const CanvasPart& part) {
    camera_ = &camera;
    options_ = &options;
    lighting_ = lighting;
    part_ = part;
    bias_ = 0;
}

ScreenPoint Painter::screenOf(Vec3 view) const {
    ScreenPoint point = camera_->toScreen(view);
    point.depth +=
        bias_ * (camera_->isParallel() ? static_cast<float>(camera_->distance()) : point.depth);
    return point;
}

void Painter::transform(const Item& item, const Surface& surface) {
    bias_ = kLayerBias * static_cast<float>(surface.layer);
    makeRoom(view_, item.vertexCount);
    makeRoom(screen_, item.vertexCount);
    points_ = scene_->vertices().data() + item.firstVertex;
    if (appearance_->isPlaced) {
        makeRoom(turned_, item.vertexCount);
        for (std::uint32_t i = 0; i < item.vertexCount; ++i)
            turned_[i] = appearance_->place.offset(points_[i]);
        points_ = turned_.data();
    }
    isTurned_ = surface.facing != Facing::kFixed && turnToEye(item, surface.facing);
    if (isTurned_) {
        const Vec3 middle = toFloat(centre_ - origin_);
        makeRoom(turned_, item.vertexCount);
        for (std::uint32_t i = 0; i < item.vertexCount; ++i)
            turned_[i] = middle + turn_.of(points_[i] - middle);
        points_ = turned_.data();
    }
    const float nearDistance = camera_->nearDistance();
    const Vec3 offset = camera_->toView(origin_);
    for (std::uint32_t i = 0; i < item.vertexCount; ++i) {
        view_[i] = offset + camera_->toView(points_[i]);
        if (view_[i].z >= nearDistance) screen_[i] = screenOf(view_[i]);
    }
}

// False for what has no front, or is to turn about the vertical and has none at its sides.
bool Painter::turnToEye(const Item& item, Facing facing) {
    Vec3 front = appearance_->isPlaced ? appearance_->place.normal(item.front) : item.front;
    Vec3 back = forwardTo(centre_ - camera_->eye());
    if (facing == Facing::kUpright) front.z = back.z = 0;
    front = normalised(front);
    const Vec3 eye = normalised(back * -1.f);
    if (front == Vec3{} || eye == Vec3{}) return false;
    // What lies flat has its upper edge in the north.
    const auto frame = [](Vec3 ahead, Vec3(&directions)[3]) {
        const Vec3 across = cross(Vec3{0, 0, 1}, ahead);
        directions[0] = length(across) > 1e-4f ? normalised(across) : Vec3{1, 0, 0};
        directions[1] = cross(ahead, directions[0]);
        directions[2] = ahead;
    };
    frame(front, turn_.from);
    frame(eye, turn_.to);
    return true;
}

std::size_t Painter::drawItem(const Appearance& appearance, ItemIndex number, bool asDot) {
    appearance_ = &appearance;
    scene_ = appearance.model;
    const Item& item = scene_->items()[number];
    const Surface& surface = scene_->surfaceOf(item);
    const ItemIndex index = appearance.isPlaced ? appearance.item : number;
    const bool isOutlined = appearance.isPlaced ? appearance.isOutlined : item.outlined;
    origin_ = appearance.point(item.origin);
    centre_ = appearance.point(item.sphereCentre);
    centreView_ = camera_->toView(centre_);
    radius_ = appearance.length(item.sphereRadius);
    isTurned_ = false;
    drawn_ = 0;
    if (asDot || isDot(item, surface)) {
        drawDot(item, surface, index);
        return 1;
    }
    transform(item, surface);
    isWhole_ = camera_->isWithinBounds(centreView_, radius_);
    const bool wire = options_->mode == DrawMode::kWireframe;
    const bool edges = options_->mode == DrawMode::kShadedEdges;
    const bool filled = !wire && surface.style != DrawStyle::kOutline;
    const Color own = scene_->triangles()[item.firstTriangle].color;
    if (filled) fillSurface(item, surface, index);
    const bool isOutline =
        surface.style == DrawStyle::kOutline || surface.style == DrawStyle::kSurfaceAndOutline;
    const auto atThisHour = [&](Color color) {
        return colorOf(product(vec3Of(color), lighting_.hour()));
    };
    const bool isStyled = isOutline && !wire && !isOutlined;
    lineWidth_ = isStyled ? surface.lineWidth : 1;
    linePattern_ = isStyled ? surface.linePattern : std::uint16_t{0xFFFF};
    if (isOutlined && (wire || edges))
        drawEdges(item, {kSelected, 1, index, kEdgeBias * 2, true}, false);
    else if (wire)
        drawEdges(item, {own, 1, index, 0, true}, false);
    else if (!filled)
        drawEdges(item, {atThisHour(own), 1, index, kEdgeBias, true}, false);
    else if (surface.style == DrawStyle::kSurfaceAndOutline)
        drawEdges(item, {atThisHour(surface.outline), 1, index, kEdgeBias, true}, true);
    else if (edges)
        drawFadedEdges(item, surface, index);
    bias_ = 0;
    lineWidth_ = 1;
    linePattern_ = 0xFFFF;
    return wire ? item.triangleCount : drawn_;
}

// What is no larger than a pixel is one, whatever it is made of.
bool Painter::isDot(const Item& item, const Surface& surface) const {
    constexpr float kLargest = 0.5f;   // radius, pixels
    constexpr std::uint32_t kFew = 4;  // triangles that are as fast
    return item.triangleCount >= kFew && appearance_->opacity >= 1 && !surface.isTranslucent() &&
           radius_ * camera_->pixelsPerUnitInView(centreView_) < kLargest &&
           centreView_.z >= camera_->nearDistance();
}

void Painter::drawDot(const Item& item, const Surface& surface, ItemIndex index) {
    if (centreView_.z < camera_->nearDistance()) return;
    lighting_.setOrigin(origin_);
    const Triangle& triangle = scene_->triangles()[item.firstTriangle];
    const Vec3 away = forwardTo(centre_ - camera_->eye());
    Vec3 normal = turned(triangle.normal);
    if (dot(normal, away) > 0) normal = normal * -1.f;
    const Vec3 light = lighting_.at(toFloat(centre_ - origin_), normal, surface);
    Vec3 color = vec3Of(triangle.color);
    if (surface.texture) {
        const Texture& texture = *surface.texture;
        color = product(color, vec3Of(texture.level(texture.levels() - 1).at(0, 0))) * (1 / 255.f);
    }
    Paint paint{colorOf(product(color, light) + surface.emissive * 255.f), 1, index, 0, true};
    part_.dot(camera_->toScreen(centreView_), paint);
}

// Light and the direction of the eye are about the same all over what is so small.
std::size_t Painter::drawStandIn(const Appearance& appearance, int level) {
    struct Seen {
        std::size_t side;
        float share;  // of an area, that is seen
        Vec3 light, ofUnlit;
    };
    const StandIn& standIn = *appearance.model->standIn();
    const Vec3d centre = appearance.point(standIn.centre());
    const Vec3 middle = camera_->toView(centre);
    const Vec3 towardsEye = normalised(forwardTo(centre - camera_->eye())) * -1.f;
    const bool isWire = options_->mode == DrawMode::kWireframe;
    lighting_.setOrigin(centre);
    std::array<Seen, 6> seen;
    std::size_t count = 0;
    Surface unlit;
    unlit.lit = false;
    for (std::size_t side = 0; side < 6; ++side) {
        const Vec3 normal = appearance.place.normal(StandIn::outOf(side));
        const float share = dot(normal, towardsEye);
        if (share > 0)
            seen[count++] = {side, share,
                             isWire ? Vec3{1, 1, 1} : lighting_.at({}, normal, Surface{}),
                             isWire ? Vec3{1, 1, 1} : lighting_.at({}, normal, unlit)};
    }
    // The axes of the model in view space.
    const Vec3 axes[3] = {camera_->toView(appearance.place.offset({1, 0, 0})),
                          camera_->toView(appearance.place.offset({0, 1, 0})),
                          camera_->toView(appearance.place.offset({0, 0, 1}))};
    // A point stands for a cell of the grid: the pixels are its whose middles are, as with
    // surfaces.
    const float cell = static_cast<float>(standIn.extent()) / static_cast<float>(1 << level);
    const float half = cell / 2 * camera_->pixelsPerUnitInView(middle);
    // Where it is turned it must not make the model larger.
    const float most = std::max(half * 1.25f, 0.5f);
    const auto reachOf = [&](float Vec3::*along) {
        const float sides =
            std::abs(axes[0].*along) + std::abs(axes[1].*along) + std::abs(axes[2].*along);
        return std::min(half * sides, most);
    };
    const float beside = reachOf(&Vec3::x), above = reachOf(&Vec3::y);
    const bool isDot = level == 0 || (beside <= 0.5f && above <= 0.5f);
    const auto holdsMiddle = [](float place, float reach) {
        return std::abs(place - std::floor(place) - 0.5f) <= reach;
    };
    const auto isNear = [](float place, int pixels) {
        constexpr float kBeside = 16;
        return place > -kBeside && place < static_cast<float>(pixels) + kBeside;
    };
    Paint paint{0, 1, appearance.item, 0, true};
    const auto points = standIn.points(level);
    for (const StandIn::Point& point : points) {
        Vec3 color;
        float area = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const StandIn::Side& side = point.sides[seen[i].side];
            color = color + (product(side.lit, seen[i].light) +
                             product(side.unlit, seen[i].ofUnlit) + side.shine) *
                                seen[i].share;
            area += side.area * seen[i].share;
        }
        const Vec3 view =
            middle + axes[0] * point.place.x + axes[1] * point.place.y + axes[2] * point.place.z;
        if (!(area > 0) || view.z < camera_->nearDistance()) continue;
        const ScreenPoint place = camera_->toScreen(view);
        paint.color = colorOf(color * (1 / area));
        if (isDot) {
            const bool isOwn =
                level == 0 || (holdsMiddle(place.x, beside) && holdsMiddle(place.y, above));
            if (isOwn) part_.dot(place, paint);
            continue;
        }
        if (!isNear(place.x, part_.width()) || !isNear(place.y, part_.height())) continue;
        const auto middleOf = [](int pixel) { return static_cast<float>(pixel) + 0.5f; };
        const auto firstFrom = [](float edge) { return static_cast<int>(std::ceil(edge - 0.5f)); };
        const float right = place.x + beside, bottom = place.y + above;
        for (int y = firstFrom(place.y - above); middleOf(y) <= bottom; ++y)
            for (int x = firstFrom(place.x - beside); middleOf(x) <= right; ++x)
                part_.dot({middleOf(x), middleOf(y), place.depth}, paint);
    }
    return points.size();
}

void Painter::fillSurface(const Item& item, const Surface& surface, ItemIndex index) {
    const SceneModel& scene = *scene_;
    lighting_.setOrigin(origin_);
    const Vec3d eye = camera_->eye() - origin_;
    const Vec3* local = points_;
    back_.assign(item.triangleCount, 0);
    const Finish* finishes = item.hasFinish ? scene.finishes().data() + item.firstFinish : nullptr;
    const TexturePlace* places =
        item.isTextured ? scene.texturePlaces().data() + item.firstTexturePlace : nullptr;
    const std::size_t eachPlaces = item.placesOfTriangle();
    const Triangle* triangles = scene.triangles().data() + item.firstTriangle;
    const float nearDistance = camera_->nearDistance();
    const Vec3 shining = surface.emissive * 255.f;
    const bool glints = surface.lit && surface.specular != Vec3{};
    const bool isEven = !finishes && !lighting_.isLocal() && !glints;  // lit so all over
    const bool isFlat = isEven && !places;
    const bool isOneSided = surface.style == DrawStyle::kFrontOnly;
    Fill fill{index, {}, surface.opacity * appearance_->opacity, colorOf(lighting_.hour() * 255.f)};
    for (std::uint32_t t = 0; t < item.triangleCount; ++t) {
        const Triangle& triangle = triangles[t];
        std::uint32_t corner[3];
        for (int i = 0; i < 3; ++i) corner[i] = triangle.vertex[i] - item.firstVertex;
        const Vec3 &a = view_[corner[0]], &b = view_[corner[1]], &c = view_[corner[2]];
        const int inFront = (a.z >= nearDistance) + (b.z >= nearDistance) + (c.z >= nearDistance);
        if (inFront == 0) continue;
        const bool isElsewhere =
            isWhole_ && !part_.mayCover(screen_[corner[0]], screen_[corner[1]], screen_[corner[2]]);
        if (isElsewhere && !isOneSided) {
            ++drawn_;
            continue;
        }
        const Vec3d fromEye = Vec3d(local[corner[0]]) - eye;
        const Vec3 faceNormal = turned(triangle.normal);
        const bool isBack = dot(faceNormal, forwardTo(fromEye)) > 0;
        if (isBack && isOneSided) {
            back_[t] = 1;
            continue;
        }
        ++drawn_;
        if (isElsewhere) continue;
        const float side = isBack ? -1.f : 1.f;
        const Vec3 color = vec3Of(triangle.color);
        fill.plane = planeOf(*camera_, bias_, faceNormal, fromEye);
        Vec3 colors[3];
        if (isEven) {
            const Vec3 light = lighting_.at(local[corner[0]], faceNormal * side, surface);
            colors[0] = colors[1] = colors[2] = product(color, light) + shining;
        }
        if (isFlat && isWhole_) {
            fill.plane.enclose(screen_[corner[0]], screen_[corner[1]], screen_[corner[2]]);
            part_.triangle(screen_[corner[0]], screen_[corner[1]], screen_[corner[2]],
                           colorOf(colors[0]), fill);
            continue;
        }
        for (unsigned i = 0; i < 3 && !isEven; ++i) {
            const Finish finish = finishes ? finishes[corner[i]] : Finish{};
            const bool smooth = dot(finish.normal, finish.normal) > 0.5f;
            Vec3 normal = faceNormal * side;
            if (smooth) normal = turned(finish.normal) * side;
            const Vec3 light = lighting_.at(local[corner[i]], normal, surface);
            colors[i] = product(finish.colored ? vec3Of(finish.color) : color, light) + shining;
            if (glints)
                colors[i] =
                    colors[i] + lighting_.glintAt(local[corner[i]], normal, surface) * 255.f;
        }
        if (places) places_ = places + eachPlaces * t;
        const auto cornerOf = [&](unsigned i) {
            return Corner{view_[corner[i]],
                          colors[i],
                          places ? places_[i] : TexturePlace{},
                          {i == 0 ? 1.f : 0.f, i == 1 ? 1.f : 0.f, i == 2 ? 1.f : 0.f}};
        };
        const Corner corners[] = {cornerOf(0), cornerOf(1), cornerOf(2)};
        if (isWhole_)
            fillTriangle(corners, {screen_[corner[0]], screen_[corner[1]], screen_[corner[2]]},
                         surface, fill);
        else
            fillClipped(corners, {local[corner[0]], local[corner[1]], local[corner[2]]}, surface,
                        fill);
    }
}

// `at` are the places of its corners on the screen.
void Painter::fillTriangle(const Corner (&corners)[3], const ScreenPoint (&at)[3],
                           const Surface& surface, Fill& fill) {
    fill.plane.enclose(at[0], at[1], at[2]);
    const Vec3 colors[3] = {corners[0].color, corners[1].color, corners[2].color};
    if (!surface.texture && surface.layers == 0)
        return part_.gradient(at[0], at[1], at[2], colors, fill);
    TextureCorner textured[3];
    for (int i = 0; i < 3; ++i)
        textured[i] = {at[i], camera_->isParallel() ? 1 : at[i].depth, corners[i].texture.u,
                       corners[i].texture.v, colors[i]};
    if (surface.layers == 0)
        return part_.textured(textured, *surface.texture, surface.blended, fill);
    const TextureLayers& layers = scene_->layersOf(surface);
    CornerLayer over[TextureLayers::kMost];
    for (std::size_t layer = 0; layer < layers.count; ++layer) {
        const TexturePlace* const of = places_ + 3 * (layer + 1);
        over[layer].texture = layers.textures[layer];
        for (int i = 0; i < 3; ++i) {
            over[layer].u[i] = dot(corners[i].shares, {of[0].u, of[1].u, of[2].u});
            over[layer].v[i] = dot(corners[i].shares, {of[0].v, of[1].v, of[2].v});
        }
    }
    part_.layered(textured, surface.texture, std::span(over, layers.count), layers.detail,
                  surface.blended, fill);
}

Painter::Corner Painter::between(const Corner& a, const Corner& b, float share) {
    return {a.view + (b.view - a.view) * share,
            a.color + (b.color - a.color) * share,
            {a.texture.u + (b.texture.u - a.texture.u) * share,
             a.texture.v + (b.texture.v - a.texture.v) * share},
            a.shares + (b.shares - a.shares) * share};
}

// Cuts a triangle off at the camera's bounds: up to eight corners are left, or none. What reaches
// from before the eye to the horizon takes more than single precision.
// `points` are the corners relative to the item's origin.
void Painter::fillClipped(const Corner (&corners)[3], const Vec3 (&points)[3],
                          const Surface& surface, Fill& fill) {
    constexpr std::size_t kMost = 16;  // rounding may make a few more than the eight
    struct Kept {
        Vec3d view;
        Corner corner;
    };
    const Vec3d right = camera_->right(), up = camera_->up(), forward = camera_->forward();
    const Vec3d origin = origin_ - camera_->eye();
    std::array<Kept, kMost> kept, former;
    std::size_t count = 3;
    for (std::size_t i = 0; i < 3; ++i) {
        const Vec3d fromEye = origin + Vec3d(points[i]);
        kept[i] = {{dot(fromEye, right), dot(fromEye, up), dot(fromEye, forward)}, corners[i]};
    }
    for (int bound = 0; bound < Camera::kBounds; ++bound) {
        former = kept;
        const std::size_t before = std::exchange(count, 0);
        for (std::size_t i = 0; i < before && count + 2 <= kMost; ++i) {
            const Kept &a = former[i], &b = former[(i + 1) % before];
            const double roomA = camera_->roomWithin(bound, a.view);
            const double roomB = camera_->roomWithin(bound, b.view);
            if (roomA >= 0) kept[count++] = a;
            if ((roomA >= 0) == (roomB >= 0)) continue;
            const double share = roomA / (roomA - roomB);
            kept[count++] = {a.view + (b.view - a.view) * share,
                             between(a.corner, b.corner, static_cast<float>(share))};
        }
    }
    for (std::size_t i = 0; i < count; ++i) kept[i].corner.view = toFloat(kept[i].view);
    for (std::size_t i = 2; i < count; ++i)
        fillTriangle({kept[0].corner, kept[i - 1].corner, kept[i].corner},
                     {screenOf(kept[0].corner.view), screenOf(kept[i - 1].corner.view),
                      screenOf(kept[i].corner.view)},
                     surface, fill);
}

// The edges of what is only a few pixels large would leave nothing of its color.
void Painter::drawFadedEdges(const Item& item, const Surface& surface, ItemIndex index) {
    constexpr float kEdgeOpacity = 0.55f, kNoEdgesBelow = 6, kFullEdgesFrom = 28;  // radius, pixels
    const float radius = radius_ * camera_->pixelsPerUnitInView(centreView_);
    const float share = (radius - kNoEdgesBelow) / (kFullEdgesFrom - kNoEdgesBelow);
    if (share <= 0) return;
    drawEdges(item, {kEdge, kEdgeOpacity * std::min(share, 1.f), index, kEdgeBias, true},
              surface.style == DrawStyle::kFrontOnly);
}

// With `frontOnly` not those of triangles that were left out as seen from behind. What these were
// to draw for others, which are seen, is drawn by the others.
void Painter::drawEdges(const Item& item, const Paint& paint, bool frontOnly) {
    const bool isThin = lineWidth_ == 1 && linePattern_ == 0xFFFF;
    findInPicture(item);
    leftOut_.clear();
    if (frontOnly) findLeftOut(item);
    const Triangle* triangle = scene_->triangles().data() + item.firstTriangle;
    for (std::uint32_t i = 0; i < item.triangleCount; ++i) {
        if (frontOnly && back_[i]) continue;
        const unsigned shared = leftOut_.empty() ? 0 : triangle[i].edges >> Triangle::kSharedShift;
        for (unsigned edge = 0; edge < 3; ++edge) {
            const bool isOwn = (triangle[i].edges >> edge & 1) != 0;
            if (!isOwn && (shared >> edge & 1) == 0) continue;
            const std::uint32_t a = triangle[i].vertex[edge] - item.firstVertex;
            const std::uint32_t b = triangle[i].vertex[(edge + 1) % 3] - item.firstVertex;
            if (!isOwn && !std::ranges::binary_search(leftOut_, endsOf(a, b))) continue;
            if (!inPicture_[a] || !inPicture_[b])
                viewLine(view_[a], view_[b], paint);
            else if (isThin)
                part_.lineWithin(screen_[a], screen_[b], paint);
            else
                screenLine(screen_[a], screen_[b], paint);
        }
    }
}

// Once for each vertex: most are the ends of several edges.
void Painter::findInPicture(const Item& item) {
    makeRoom(inPicture_, item.vertexCount);
    const float nearDistance = camera_->nearDistance();
    const float width = static_cast<float>(part_.width());
    const float height = static_cast<float>(part_.height());
    for (std::uint32_t i = 0; i < item.vertexCount; ++i) {
        const ScreenPoint& p = screen_[i];
        inPicture_[i] =
            view_[i].z >= nearDistance && p.x >= 0 && p.y >= 0 && p.x <= width && p.y <= height;
    }
}

// Of triangles that are left out, the edges whose ends are those of triangles that are seen, too:
// few of a large surface.
void Painter::findLeftOut(const Item& item) {
    constexpr std::uint8_t kBySeen = 1, kByLeftOut = 2;
    const std::span triangles = scene_->triangles().subspan(item.firstTriangle, item.triangleCount);
    touched_.assign(item.vertexCount, 0);
    std::uint8_t all = 0;
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        const std::uint8_t by = back_[i] ? kByLeftOut : kBySeen;
        all |= by;
        for (const std::uint32_t vertex : triangles[i].vertex)
            touched_[vertex - item.firstVertex] |= by;
    }
    if (all != (kBySeen | kByLeftOut)) return;
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        if (!back_[i]) continue;
        for (unsigned edge = 0; edge < 3; ++edge) {
            if ((triangles[i].edges >> edge & 1) == 0) continue;
            const std::uint32_t a = triangles[i].vertex[edge] - item.firstVertex;
            const std::uint32_t b = triangles[i].vertex[(edge + 1) % 3] - item.firstVertex;
            if ((touched_[a] & touched_[b] & kBySeen) != 0) leftOut_.push_back(endsOf(a, b));
        }
    }
    std::ranges::sort(leftOut_);
}

void Painter::viewLine(Vec3 a, Vec3 b, const Paint& paint) {
    if (camera_->clipToPicture(a, b)) screenLine(screenOf(a), screenOf(b), paint);
}

// One with a pattern is drawn in pieces, one for each run of bits.
void Painter::screenLine(ScreenPoint a, ScreenPoint b, const Paint& paint) {
    if (linePattern_ == 0xFFFF) return wideLine(a, b, paint);
    constexpr int kBits = 16;
    const float length = std::max(std::abs(b.x - a.x), std::abs(b.y - a.y));
    const auto isSet = [&](int pixel) { return (linePattern_ >> pixel % kBits & 1) != 0; };
    const auto at = [&](float along) {
        const float share = std::min(along / length, 1.f);
        return ScreenPoint{std::lerp(a.x, b.x, share), std::lerp(a.y, b.y, share),
                           std::lerp(a.depth, b.depth, share)};
    };
    for (int pixel = 0, end = 0; static_cast<float>(pixel) < length; pixel = end) {
        end = pixel + 1;
        while (isSet(end) == isSet(pixel) && end - pixel < kBits) ++end;
        // A line covers the pixels of both its ends.
        const auto last = static_cast<float>(end - 1);
        if (isSet(pixel)) wideLine(at(static_cast<float>(pixel)), at(last + 0.001f), paint);
    }
}

// A wide one is several beside one another.
void Painter::wideLine(ScreenPoint a, ScreenPoint b, const Paint& paint) {
    if (lineWidth_ == 1) return part_.line(a, b, paint);
    const bool steep = std::abs(b.y - a.y) > std::abs(b.x - a.x);
    float ScreenPoint::*const across = steep ? &ScreenPoint::x : &ScreenPoint::y;
    const float shift = static_cast<float>(lineWidth_ - 1) / 2;
    a.*across -= shift;
    b.*across -= shift;
    for (int i = 0; i < lineWidth_; ++i) {
        part_.line(a, b, paint);
        a.*across += 1;
        b.*across += 1;
    }
}

void Painter::worldLine(Vec3d a, Vec3d b, const Paint& paint) {
    viewLine(camera_->toView(a), camera_->toView(b), paint);
}

void Painter::drawLightPoint(const Mark& mark, const LightPointLook& look,
                             const ScreenPoint& centre, Paint paint) {
    const Vec3 towardsEye = normalised(forwardTo(mark.position - camera_->eye())) * -1.f;
    const LightSide side = sideSeen(look, mark.normal, towardsEye, options_->seconds);
    if (side == LightSide::kNone) return;
    const auto show = [&](const LightColor& color) {
        // A selected one keeps the color that says so.
        if (paint.color == mark.color)
            paint.color = colorOf(Vec3{color.red, color.green, color.blue} * 255.f);
    };
    const LightPointStep* const step = stepAt(look, options_->seconds);
    if (step && step->color)
        show(*step->color);
    else if (side == LightSide::kBack && look.back)
        show(*look.back);
    const float radius =
        radiusOf(look, camera_->pixelsPerUnitAt(mark.position), 1.4f * options_->pixelScale);
    part_.glow(centre, radius, paint);
}

void Painter::drawMark(const Mark& mark, const LightPointLook& look, bool selected) {
    const auto centre = camera_->project(mark.position);
    if (!centre) return;
    const float width = static_cast<float>(part_.width());
    const float height = static_cast<float>(part_.height());
    if (centre->x < -16 || centre->y < -16 || centre->x > width + 16 || centre->y > height + 16)
        return;
    const Paint paint{selected ? kSelected : mark.color, 1, mark.item, kEdgeBias, true};
    if (mark.kind == MarkKind::kLightPoint) return drawLightPoint(mark, look, *centre, paint);
    // A helper is an upright cross, a light a star, what is missing a crossed box.
    const float arm = 5 * options_->pixelScale, slant = arm * 0.7f;
    const auto stroke = [&](float dx, float dy, float x = 0, float y = 0) {
        part_.line({centre->x + x - dx, centre->y + y - dy, centre->depth},
                   {centre->x + x + dx, centre->y + y + dy, centre->depth}, paint);
    };
    if (mark.kind == MarkKind::kMissing) {
        const float side = arm * 1.6f;
        for (const float to : {-side, side}) {
            stroke(side, 0, 0, to);
            stroke(0, side, to, 0);
            stroke(side, to);
        }
        return;
    }
    stroke(arm, 0);
    stroke(0, arm);
    if (mark.kind == MarkKind::kLight) {
        stroke(slant, slant);
        stroke(slant, -slant);
    }
}

// The corners of a box, each drawn a quarter of the way along its three edges.
void Painter::drawBrackets(const Box& around) {
    // A little outside, so that it is not lost among the edges of a box.
    const Vec3d margin = (around.max - around.min) * 0.03;
    Box box;
    box.add(around.min - margin);
    box.add(around.max + margin);
    const Paint paint{0xFFFFFF, 1, kNoItem, kEdgeBias, false};
    const Vec3d quarter = (box.max - box.min) * 0.22;
    for (unsigned i = 0; i < 8; ++i) {
        const Vec3d corner = box.corner(i);
        const double sx = i & 1 ? -1 : 1, sy = i & 2 ? -1 : 1, sz = i & 4 ? -1 : 1;
        worldLine(corner, corner + Vec3d{quarter.x * sx, 0, 0}, paint);
        worldLine(corner, corner + Vec3d{0, quarter.y * sy, 0}, paint);
        worldLine(corner, corner + Vec3d{0, 0, quarter.z * sz}, paint);
    }
}

// Lines of the ground plane around the target, their spacing a power of ten that stays readable.
// Front and left views show the ground as a line, so there the grid stands upright.
void Painter::drawGrid() {
    constexpr int kReach = 50;
    const double spacing = std::pow(10., std::ceil(std::log10(camera_->unitsPerPixel() * 14)));
    Vec3d u{1, 0, 0}, v{0, 1, 0};
    if (camera_->view() == View::kFront || camera_->view() == View::kBack) v = {0, 0, 1};
    if (camera_->view() == View::kLeft || camera_->view() == View::kRight) u = {0, 0, 1};
    const Vec3 normal = toFloat(cross(u, v));
    const DepthPlane plane =
        camera_->depthPlane(normal, dot(Vec3d(normal), Vec3d{} - camera_->eye()));
    const Vec3d target = camera_->target();
    const double middleU = std::round(dot(target, u) / spacing);
    const double middleV = std::round(dot(target, v) / spacing);
    const auto place = [&](double gridU, double gridV) {
        return u * (gridU * spacing) + v * (gridV * spacing);
    };
    const auto paintOf = [&](double line, int offset) {
        const bool major = std::fmod(line, 10) == 0;
        const float fade = 1 - static_cast<float>(std::abs(offset)) / (kReach + 1);
        return Paint{major ? kGridMajor : kGridMinor,
                     (major ? 0.8f : 0.45f) * fade,
                     kNoItem,
                     kGridBias,
                     true,
                     &plane};
    };
    for (int i = -kReach; i <= kReach; ++i) {
        const double lineU = middleU + i, lineV = middleV + i;
        worldLine(place(lineU, middleV - kReach), place(lineU, middleV + kReach),
                  paintOf(lineU, i));
        worldLine(place(middleU - kReach, lineV), place(middleU + kReach, lineV),
                  paintOf(lineV, i));
    }
}

// The directions of the world's axes, in the lower left corner, each with its letter.
void Painter::drawAxes() {
    struct Stroke {
        float x0, y0, x1, y1;
    };
    struct Axis {
        Vec3 direction;
        Color color;
        std::array<Stroke, 3> letter;
    };
    static constexpr Axis kAxes[] = {
        {{1, 0, 0}, kAxisX, {{{-1, -1, 1, 1}, {-1, 1, 1, -1}, {0, 0, 0, 0}}}},
        {{0, 1, 0}, kAxisY, {{{-1, -1, 0, 0}, {1, -1, 0, 0}, {0, 0, 0, 1}}}},
        {{0, 0, 1}, kAxisZ, {{{-1, -1, 1, -1}, {1, -1, -1, 1}, {-1, 1, 1, 1}}}},
    };
    const float scale = options_->pixelScale, size = 34 * scale, glyph = 3.5f * scale;
    const ScreenPoint origin{52 * scale, static_cast<float>(part_.height()) - 52 * scale, 0};
    for (const Axis& axis : kAxes) {
        const Paint paint{axis.color, 1, kNoItem, 0, false};
        const float dx = dot(axis.direction, camera_->right());
        const float dy = -dot(axis.direction, camera_->up());
        if (std::abs(dx) + std::abs(dy) < 0.05f) continue;  // points at the viewer
        // Twice, half a pixel apart, for weight.
        for (const float shift : {-0.5f, 0.5f}) {
            const float across = shift * scale;
            part_.line({origin.x + across, origin.y + across, 0},
                       {origin.x + dx * size + across, origin.y + dy * size + across, 0}, paint);
        }
        const float x = origin.x + dx * size * 1.28f, y = origin.y + dy * size * 1.28f;
        for (const Stroke& s : axis.letter) {
            if (s.x0 == s.x1 && s.y0 == s.y1) continue;
            for (const float across : {0.f, 0.7f})
                part_.line({x + s.x0 * glyph + across, y + s.y0 * glyph, 0},
                           {x + s.x1 * glyph + across, y + s.y1 * glyph, 0}, paint);
        }
    }
}

}  // namespace render
