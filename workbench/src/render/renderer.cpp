#include <workbench/renderer.h>

#include <array>
#include <cmath>
#include <utility>

namespace workbench {
namespace {

constexpr Colour kSkyTop = 0x4A5560, kSkyBottom = 0x7A858F;
constexpr Colour kGridMinor = 0x8A949C, kGridMajor = 0xAEB7BE;
constexpr Colour kEdge = 0x20262B;
constexpr Colour kSelected = 0xFFC040;
constexpr Colour kAxisX = 0xE0554F, kAxisY = 0x66C25A, kAxisZ = 0x5A8FF0;

constexpr float kAmbient = 0.42f, kDiffuse = 0.66f;
constexpr float kEdgeBias = 6e-4f;   // edges lie upon their own surface
constexpr float kGridBias = -2e-4f;  // the grid gives way to ground that lies in its plane

Colour scaled(Colour colour, float share) {
    const auto channel = [&](unsigned shift) {
        const float value = static_cast<float>(colour >> shift & 0xFF) * share;
        return static_cast<Colour>(std::clamp(value, 0.f, 255.f)) << shift;
    };
    return channel(16) | channel(8) | channel(0);
}

// Clips a convex polygon at the near plane; a triangle leaves three or four corners, or none.
int clipNear(const Vec3 (&corners)[3], float nearDistance, Vec3 (&out)[4]) {
    int count = 0;
    for (int i = 0; i < 3; ++i) {
        const Vec3 &a = corners[i], &b = corners[(i + 1) % 3];
        const bool aInside = a.z >= nearDistance, bInside = b.z >= nearDistance;
        if (aInside) out[count++] = a;
        if (aInside != bInside) out[count++] = a + (b - a) * ((nearDistance - a.z) / (b.z - a.z));
    }
    return count;
}

}  // namespace

void Renderer::draw(const SceneModel& scene, const Camera& camera, const RenderOptions& options,
                    Canvas& canvas) {
    camera_ = &camera;
    canvas_ = &canvas;
    options_ = options;
    trianglesDrawn_ = 0;
    // A lamp over the viewer's left shoulder, so that walls at right angles differ.
    light_ = normalised(camera.up() * 0.45f - camera.right() * 0.3f - camera.forward());

    canvas.clear(kSkyTop, kSkyBottom);
    const auto items = scene.items();
    for (ItemIndex i = 0; i < items.size(); ++i)
        if (items[i].triangleCount > 0 &&
            !camera.isOutside(items[i].sphereCentre, items[i].sphereRadius))
            drawSurface(scene, items[i], i);
    if (options.grid) drawGrid();
    for (const Mark& mark : scene.marks()) drawMark(mark, items[mark.item].selected);
    for (const Item& item : items)
        if (item.selected && !item.selectionBox.empty()) drawBrackets(item.selectionBox);
    if (options.axes) drawAxes();
}

void Renderer::transform(const SceneModel& scene, const Item& item) {
    view_.resize(item.vertexCount);
    screen_.resize(item.vertexCount);
    const Vec3* world = scene.vertices().data() + item.firstVertex;
    const float nearDistance = camera_->nearDistance();
    for (std::uint32_t i = 0; i < item.vertexCount; ++i) {
        view_[i] = camera_->toView(world[i]);
        if (view_[i].z >= nearDistance) screen_[i] = camera_->toScreen(view_[i]);
    }
}

void Renderer::drawSurface(const SceneModel& scene, const Item& item, ItemIndex index) {
    transform(scene, item);
    const bool wire = options_.mode == DrawMode::kWireframe;
    if (!wire) {
        const Triangle* triangle = scene.triangles().data() + item.firstTriangle;
        for (std::uint32_t i = 0; i < item.triangleCount; ++i)
            fillTriangle(triangle[i], item.firstVertex, index, toEye(scene, triangle[i]));
    }
    if (item.selected)
        drawEdges(scene, item, {kSelected, 1, index, kEdgeBias * 2, true});
    else if (wire)
        drawEdges(scene, item, {scene.triangles()[item.firstTriangle].colour, 1, index, 0, true});
    else if (options_.mode == DrawMode::kShadedEdges)
        drawFadedEdges(scene, item, index);
}

Colour Renderer::shaded(const Triangle& triangle, Vec3 towardsEye) const {
    const float facing = dot(triangle.normal, towardsEye) < 0 ? -1.f : 1.f;
    const float lit = std::max(0.f, facing * dot(triangle.normal, light_));
    return scaled(triangle.colour, kAmbient + kDiffuse * lit);
}

// The edges of what is only a few pixels large would leave nothing of its colour.
void Renderer::drawFadedEdges(const SceneModel& scene, const Item& item, ItemIndex index) {
    constexpr float kEdgeOpacity = 0.55f, kNoEdgesBelow = 4, kFullEdgesFrom = 14;  // radius, pixels
    const float radius = item.sphereRadius * camera_->pixelsPerUnitAt(item.sphereCentre);
    const float share = (radius - kNoEdgesBelow) / (kFullEdgesFrom - kNoEdgesBelow);
    if (share <= 0) return;
    drawEdges(scene, item, {kEdge, kEdgeOpacity * std::min(share, 1.f), index, kEdgeBias, true});
}

Vec3 Renderer::toEye(const SceneModel& scene, const Triangle& triangle) const {
    if (camera_->isParallel()) return camera_->forward() * -1;
    return camera_->eye() - scene.vertices()[triangle.vertex[0]];
}

void Renderer::fillTriangle(const Triangle& triangle, std::uint32_t base, ItemIndex index,
                            Vec3 towardsEye) {
    const std::uint32_t a = triangle.vertex[0] - base, b = triangle.vertex[1] - base,
                        c = triangle.vertex[2] - base;
    const float nearDistance = camera_->nearDistance();
    const bool aInside = view_[a].z >= nearDistance, bInside = view_[b].z >= nearDistance,
               cInside = view_[c].z >= nearDistance;
    if (!aInside && !bInside && !cInside) return;
    ++trianglesDrawn_;
    const Colour colour = shaded(triangle, towardsEye);
    if (aInside && bInside && cInside)
        canvas_->triangle(screen_[a], screen_[b], screen_[c], colour, index);
    else
        fillClipped({view_[a], view_[b], view_[c]}, colour, index);
}

void Renderer::fillClipped(const Vec3 (&corners)[3], Colour colour, ItemIndex index) {
    Vec3 kept[4];
    const int count = clipNear(corners, camera_->nearDistance(), kept);
    for (int i = 2; i < count; ++i)
        canvas_->triangle(camera_->toScreen(kept[0]), camera_->toScreen(kept[i - 1]),
                          camera_->toScreen(kept[i]), colour, index);
}

void Renderer::drawEdges(const SceneModel& scene, const Item& item, const Paint& paint) {
    const float nearDistance = camera_->nearDistance();
    const Triangle* triangle = scene.triangles().data() + item.firstTriangle;
    for (std::uint32_t i = 0; i < item.triangleCount; ++i) {
        for (unsigned edge = 0; edge < 3; ++edge) {
            if ((triangle[i].edges >> edge & 1) == 0) continue;
            const std::uint32_t a = triangle[i].vertex[edge] - item.firstVertex;
            const std::uint32_t b = triangle[i].vertex[(edge + 1) % 3] - item.firstVertex;
            if (view_[a].z >= nearDistance && view_[b].z >= nearDistance)
                canvas_->line(screen_[a], screen_[b], paint);
            else
                viewLine(view_[a], view_[b], paint);
        }
    }
}

void Renderer::viewLine(Vec3 a, Vec3 b, const Paint& paint) {
    const float nearDistance = camera_->nearDistance();
    if (a.z < nearDistance && b.z < nearDistance) return;
    if (a.z < nearDistance) std::swap(a, b);
    if (b.z < nearDistance) b = a + (b - a) * ((nearDistance - a.z) / (b.z - a.z));
    canvas_->line(camera_->toScreen(a), camera_->toScreen(b), paint);
}

void Renderer::worldLine(Vec3 a, Vec3 b, const Paint& paint) {
    viewLine(camera_->toView(a), camera_->toView(b), paint);
}

void Renderer::drawMark(const Mark& mark, bool selected) {
    const auto centre = camera_->project(mark.position);
    if (!centre) return;
    const float width = static_cast<float>(canvas_->width());
    const float height = static_cast<float>(canvas_->height());
    if (centre->x < -16 || centre->y < -16 || centre->x > width + 16 || centre->y > height + 16)
        return;
    const int x = static_cast<int>(centre->x), y = static_cast<int>(centre->y);
    const Paint paint{selected ? kSelected : mark.colour, 1, mark.item, kEdgeBias, true};
    if (mark.kind == MarkKind::kLightPoint) {
        const int size = std::max(2, static_cast<int>(2 * options_.pixelScale));
        canvas_->rectangle(x - size / 2, y - size / 2, x + size - size / 2, y + size - size / 2,
                           centre->depth, paint);
        return;
    }
    // A helper is an upright cross, a light a star.
    const float arm = 5 * options_.pixelScale, slant = arm * 0.7f;
    const auto stroke = [&](float dx, float dy) {
        canvas_->line({centre->x - dx, centre->y - dy, centre->depth},
                      {centre->x + dx, centre->y + dy, centre->depth}, paint);
    };
    stroke(arm, 0);
    stroke(0, arm);
    if (mark.kind == MarkKind::kLight) {
        stroke(slant, slant);
        stroke(slant, -slant);
    }
}

// The corners of a box, each drawn a quarter of the way along its three edges.
void Renderer::drawBrackets(const Box& around) {
    // A little outside, so that it is not lost among the edges of a box.
    const Vec3 margin = (around.max - around.min) * 0.03f;
    Box box;
    box.add(around.min - margin);
    box.add(around.max + margin);
    const Paint paint{0xFFFFFF, 1, kNoItem, kEdgeBias, false};
    const Vec3 quarter = (box.max - box.min) * 0.22f;
    for (unsigned i = 0; i < 8; ++i) {
        const Vec3 corner = box.corner(i);
        const float sx = i & 1 ? -1.f : 1.f, sy = i & 2 ? -1.f : 1.f, sz = i & 4 ? -1.f : 1.f;
        worldLine(corner, corner + Vec3{quarter.x * sx, 0, 0}, paint);
        worldLine(corner, corner + Vec3{0, quarter.y * sy, 0}, paint);
        worldLine(corner, corner + Vec3{0, 0, quarter.z * sz}, paint);
    }
}

// Lines of the ground plane around the target, their spacing a power of ten that stays readable.
// Front and left views show the ground as a line, so there the grid stands upright.
void Renderer::drawGrid() {
    constexpr int kReach = 50;
    const float spacing = std::pow(10.f, std::ceil(std::log10(camera_->unitsPerPixel() * 14)));
    Vec3 u{1, 0, 0}, v{0, 1, 0};
    if (camera_->view() == View::kFront) v = {0, 0, 1};
    if (camera_->view() == View::kLeft) u = {0, 0, 1};
    const Vec3 target = camera_->target();
    const float middleU = std::round(dot(target, u) / spacing);
    const float middleV = std::round(dot(target, v) / spacing);
    const auto place = [&](float gridU, float gridV) {
        return u * (gridU * spacing) + v * (gridV * spacing);
    };
    const auto paintOf = [&](float line, int offset) {
        const bool major = std::fmod(line, 10.f) == 0;
        const float fade = 1 - static_cast<float>(std::abs(offset)) / (kReach + 1);
        return Paint{major ? kGridMajor : kGridMinor, (major ? 0.8f : 0.45f) * fade, kNoItem,
                     kGridBias, true};
    };
    for (int i = -kReach; i <= kReach; ++i) {
        const float lineU = middleU + static_cast<float>(i),
                    lineV = middleV + static_cast<float>(i);
        worldLine(place(lineU, middleV - kReach), place(lineU, middleV + kReach),
                  paintOf(lineU, i));
        worldLine(place(middleU - kReach, lineV), place(middleU + kReach, lineV),
                  paintOf(lineV, i));
    }
}

// The directions of the world's axes, in the lower left corner, each with its letter.
void Renderer::drawAxes() {
    struct Stroke {
        float x0, y0, x1, y1;
    };
    struct Axis {
        Vec3 direction;
        Colour colour;
        std::array<Stroke, 3> letter;
    };
    static constexpr Axis kAxes[] = {
        {{1, 0, 0}, kAxisX, {{{-1, -1, 1, 1}, {-1, 1, 1, -1}, {0, 0, 0, 0}}}},
        {{0, 1, 0}, kAxisY, {{{-1, -1, 0, 0}, {1, -1, 0, 0}, {0, 0, 0, 1}}}},
        {{0, 0, 1}, kAxisZ, {{{-1, -1, 1, -1}, {1, -1, -1, 1}, {-1, 1, 1, 1}}}},
    };
    const float scale = options_.pixelScale, size = 34 * scale, glyph = 3.5f * scale;
    const ScreenPoint origin{52 * scale, static_cast<float>(canvas_->height()) - 52 * scale, 0};
    for (const Axis& axis : kAxes) {
        const Paint paint{axis.colour, 1, kNoItem, 0, false};
        const float dx = dot(axis.direction, camera_->right());
        const float dy = -dot(axis.direction, camera_->up());
        if (std::abs(dx) + std::abs(dy) < 0.05f) continue;  // points at the viewer
        // Twice, half a pixel apart, for weight.
        for (const float shift : {-0.5f, 0.5f}) {
            const float across = shift * scale;
            canvas_->line({origin.x + across, origin.y + across, 0},
                          {origin.x + dx * size + across, origin.y + dy * size + across, 0}, paint);
        }
        const float x = origin.x + dx * size * 1.28f, y = origin.y + dy * size * 1.28f;
        for (const Stroke& s : axis.letter) {
            if (s.x0 == s.x1 && s.y0 == s.y1) continue;
            for (const float across : {0.f, 0.7f})
                canvas_->line({x + s.x0 * glyph + across, y + s.y0 * glyph, 0},
                              {x + s.x1 * glyph + across, y + s.y1 * glyph, 0}, paint);
        }
    }
}

}  // namespace workbench
