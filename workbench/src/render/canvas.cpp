#include <workbench/canvas.h>

#include <utility>

namespace workbench {
namespace {

Colour mix(Colour below, Colour above, float opacity) {
    const auto share = static_cast<std::uint32_t>(opacity * 256 + 0.5f);
    if (share >= 256) return above;
    const std::uint32_t rest = 256 - share;
    const std::uint32_t redBlue =
        ((below & 0xFF00FF) * rest + (above & 0xFF00FF) * share) >> 8 & 0xFF00FF;
    const std::uint32_t green = ((below & 0x00FF00) * rest + (above & 0x00FF00) * share) >> 8;
    return redBlue | (green & 0x00FF00);
}

// The part of the line from a to b inside the rectangle, widened by one pixel for smoothing.
bool clipToPicture(ScreenPoint& a, ScreenPoint& b, float width, float height) {
    const float dx = b.x - a.x, dy = b.y - a.y, dz = b.depth - a.depth;
    float enter = 0, leave = 1;
    const auto clip = [&](float direction, float room) {
        if (direction == 0) return room >= 0;
        const float t = room / direction;
        if (direction < 0)
            enter = std::max(enter, t);
        else
            leave = std::min(leave, t);
        return enter <= leave;
    };
    if (!clip(-dx, a.x + 1) || !clip(dx, width + 1 - a.x) || !clip(-dy, a.y + 1) ||
        !clip(dy, height + 1 - a.y))
        return false;
    const ScreenPoint start = a;
    a = {start.x + dx * enter, start.y + dy * enter, start.depth + dz * enter};
    b = {start.x + dx * leave, start.y + dy * leave, start.depth + dz * leave};
    return true;
}

// First pixel whose centre is at or beyond a coordinate, kept in a range that cannot overflow.
int firstCentre(float coordinate, int low, int high) {
    return static_cast<int>(std::ceil(
        std::clamp(coordinate - 0.5f, static_cast<float>(low), static_cast<float>(high))));
}

}  // namespace

void Canvas::resize(int width, int height) {
    width_ = std::max(width, 1);
    height_ = std::max(height, 1);
    const std::size_t size = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_);
    colours_.resize(size);
    depths_.resize(size);
    items_.resize(size);
}

void Canvas::clear(Colour top, Colour bottom) {
    for (int y = 0; y < height_; ++y) {
        const Colour colour = mix(top, bottom, static_cast<float>(y) / static_cast<float>(height_));
        std::fill_n(colours_.begin() + static_cast<std::ptrdiff_t>(at(0, y)), width_, colour);
    }
    std::fill(depths_.begin(), depths_.end(), kFarthest);
    std::fill(items_.begin(), items_.end(), kNoItem);
}

ItemIndex Canvas::pick(int x, int y, int reach) const {
    ItemIndex best = kNoItem;
    int bestDistance = reach * reach + 1;
    for (int v = std::max(y - reach, 0); v <= std::min(y + reach, height_ - 1); ++v) {
        for (int u = std::max(x - reach, 0); u <= std::min(x + reach, width_ - 1); ++u) {
            const int distance = (u - x) * (u - x) + (v - y) * (v - y);
            if (distance < bestDistance && item(u, v) != kNoItem) {
                best = item(u, v);
                bestDistance = distance;
            }
        }
    }
    return best;
}

void Canvas::triangle(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c,
                      Colour colour, ItemIndex item) {
    const ScreenPoint *top = &a, *middle = &b, *bottom = &c;
    if (middle->y < top->y) std::swap(top, middle);
    if (bottom->y < top->y) std::swap(top, bottom);
    if (bottom->y < middle->y) std::swap(middle, bottom);

    const int firstRow = firstCentre(top->y, 0, height_),
              endRow = firstCentre(bottom->y, 0, height_);
    if (firstRow >= endRow) return;
    const float area =
        (middle->x - top->x) * (bottom->y - top->y) - (bottom->x - top->x) * (middle->y - top->y);
    if (area == 0 || !std::isfinite(area)) return;

    // The depth is a plane over the screen.
    const float depthX = ((middle->depth - top->depth) * (bottom->y - top->y) -
                          (bottom->depth - top->depth) * (middle->y - top->y)) /
                         area;
    const float depthY = ((bottom->depth - top->depth) * (middle->x - top->x) -
                          (middle->depth - top->depth) * (bottom->x - top->x)) /
                         area;

    // Every edge is walked from its upper end, so that both its triangles find the same pixels.
    const float longSlope = (bottom->x - top->x) / (bottom->y - top->y);
    const float upperSlope = middle->y > top->y ? (middle->x - top->x) / (middle->y - top->y) : 0;
    const float lowerSlope =
        bottom->y > middle->y ? (bottom->x - middle->x) / (bottom->y - middle->y) : 0;
    const bool longIsLeft = area > 0;

    for (int row = firstRow; row < endRow; ++row) {
        const float centre = static_cast<float>(row) + 0.5f;
        const float longX = top->x + (centre - top->y) * longSlope;
        const float shortX = centre < middle->y ? top->x + (centre - top->y) * upperSlope
                                                : middle->x + (centre - middle->y) * lowerSlope;
        const int left = firstCentre(longIsLeft ? longX : shortX, 0, width_);
        const int right = firstCentre(longIsLeft ? shortX : longX, 0, width_);
        float depth = top->depth + (static_cast<float>(left) + 0.5f - top->x) * depthX +
                      (centre - top->y) * depthY;
        const std::size_t end = at(0, row) + static_cast<std::size_t>(std::max(left, right));
        for (std::size_t i = at(left, row); i < end; ++i, depth += depthX) {
            if (depth > depths_[i]) {
                depths_[i] = depth;
                colours_[i] = colour;
                items_[i] = item;
            }
        }
    }
}

void Canvas::line(ScreenPoint a, ScreenPoint b, const Paint& paint) {
    if (!std::isfinite(a.x + a.y + b.x + b.y)) return;
    if (clipToPicture(a, b, static_cast<float>(width_), static_cast<float>(height_)))
        plotLine(a, b, paint);
}

// Walks along the longer direction and shares each step's ink between two neighbouring pixels.
void Canvas::plotLine(const ScreenPoint& a, const ScreenPoint& b, const Paint& paint) {
    const bool steep = std::abs(b.y - a.y) > std::abs(b.x - a.x);
    float u0 = steep ? a.y : a.x, v0 = steep ? a.x : a.y, z0 = a.depth;
    float u1 = steep ? b.y : b.x, v1 = steep ? b.x : b.y, z1 = b.depth;
    if (u0 > u1) {
        std::swap(u0, u1);
        std::swap(v0, v1);
        std::swap(z0, z1);
    }
    const float run = std::max(u1 - u0, 1e-6f);
    const float slope = (v1 - v0) / run, depthSlope = (z1 - z0) / run;
    const int first = static_cast<int>(std::floor(u0)), last = static_cast<int>(std::floor(u1));
    for (int step = first; step <= last; ++step) {
        const float centre = std::clamp(static_cast<float>(step) + 0.5f, u0, u1);
        const float v = v0 + (centre - u0) * slope - 0.5f;
        const float depth = z0 + (centre - u0) * depthSlope;
        const int low = static_cast<int>(std::floor(v));
        const float share = v - static_cast<float>(low);
        if (steep) {
            plot(low, step, depth, paint, 1 - share);
            plot(low + 1, step, depth, paint, share);
        } else {
            plot(step, low, depth, paint, 1 - share);
            plot(step, low + 1, depth, paint, share);
        }
    }
}

void Canvas::rectangle(int left, int top, int right, int bottom, float depth, const Paint& paint) {
    for (int y = std::max(top, 0); y < std::min(bottom, height_); ++y)
        for (int x = std::max(left, 0); x < std::min(right, width_); ++x)
            plot(x, y, depth, paint, 1);
}

void Canvas::plot(int x, int y, float depth, const Paint& paint, float coverage) {
    if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
    const std::size_t i = at(x, y);
    if (paint.testDepth) {
        const float compared = depth + std::abs(depth) * paint.depthBias;
        if (compared < depths_[i]) return;
        // Faint pixels at a line's rim do not hide what is drawn behind them afterwards.
        if (coverage > 0.5f && paint.opacity == 1) depths_[i] = std::max(depths_[i], depth);
    }
    colours_[i] = mix(colours_[i], paint.colour, coverage * paint.opacity);
    if (paint.item != kNoItem && coverage > 0.25f) items_[i] = paint.item;
}

}  // namespace workbench
