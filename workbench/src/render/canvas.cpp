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

template <typename Span>
void Canvas::scan(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c,
                  const Span& span) {
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
    const float perArea = 1 / area;
    const float depthX = ((middle->depth - top->depth) * (bottom->y - top->y) -
                          (bottom->depth - top->depth) * (middle->y - top->y)) *
                         perArea;
    const float depthY = ((bottom->depth - top->depth) * (middle->x - top->x) -
                          (middle->depth - top->depth) * (bottom->x - top->x)) *
                         perArea;

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
        if (left >= right) continue;
        span(row, left, right,
             top->depth + (static_cast<float>(left) + 0.5f - top->x) * depthX +
                 (centre - top->y) * depthY,
             depthX);
    }
}

void Canvas::triangle(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c,
                      Colour colour, ItemIndex item) {
    scan(a, b, c, [&](int row, int left, int right, float depth, float depthStep) {
        const std::size_t end = at(right, row);
        for (std::size_t i = at(left, row); i < end; ++i, depth += depthStep) {
            if (depth > depths_[i]) {
                depths_[i] = depth;
                colours_[i] = colour;
                items_[i] = item;
            }
        }
    });
}

void Canvas::gradient(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c,
                      const Vec3 (&colours)[3], ItemIndex item) {
    const float area = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
    if (area == 0 || !std::isfinite(area)) return;
    // The colour is a plane over the screen too.
    const float perArea = 1 / area;
    const Vec3 ab = colours[1] - colours[0], ac = colours[2] - colours[0];
    const Vec3 stepX = (ab * (c.y - a.y) - ac * (b.y - a.y)) * perArea;
    const Vec3 stepY = (ac * (b.x - a.x) - ab * (c.x - a.x)) * perArea;
    const auto channel = [](float value) {
        return static_cast<Colour>(std::clamp(value, 0.f, 255.f));
    };
    scan(a, b, c, [&](int row, int left, int right, float depth, float depthStep) {
        Vec3 colour = colours[0] + stepX * (static_cast<float>(left) + 0.5f - a.x) +
                      stepY * (static_cast<float>(row) + 0.5f - a.y);
        const std::size_t end = at(right, row);
        for (std::size_t i = at(left, row); i < end; ++i, depth += depthStep) {
            if (depth > depths_[i]) {
                depths_[i] = depth;
                colours_[i] = channel(colour.x) << 16 | channel(colour.y) << 8 | channel(colour.z);
                items_[i] = item;
            }
            colour = colour + stepX;
        }
    });
}

inline void Canvas::plot(int x, int y, float depth, const Paint& paint, float coverage) {
    if (static_cast<unsigned>(x) >= static_cast<unsigned>(width_) ||
        static_cast<unsigned>(y) >= static_cast<unsigned>(height_))
        return;
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
        // The line is clipped to one pixel around the picture, so that one more keeps it positive
        // and a cast rounds down.
        const float v = v0 + (centre - u0) * slope + 1.5f;
        const float depth = z0 + (centre - u0) * depthSlope;
        const int low = static_cast<int>(v) - 2;
        const float share = v - static_cast<float>(low + 2);
        if (steep) {
            plot(low, step, depth, paint, 1 - share);
            plot(low + 1, step, depth, paint, share);
        } else {
            plot(step, low, depth, paint, 1 - share);
            plot(step, low + 1, depth, paint, share);
        }
    }
}

void Canvas::glow(const ScreenPoint& centre, float radius, const Paint& paint) {
    const float reach = radius * 3;
    if (!(centre.x > -reach && centre.y > -reach && centre.x < static_cast<float>(width_) + reach &&
          centre.y < static_cast<float>(height_) + reach))
        return;
    const int left = static_cast<int>(std::floor(centre.x - reach));
    const int right = static_cast<int>(std::ceil(centre.x + reach));
    const int top = static_cast<int>(std::floor(centre.y - reach));
    const int bottom = static_cast<int>(std::ceil(centre.y + reach));
    Paint halo = paint;
    halo.item = kNoItem;
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            const float distance = std::hypot(static_cast<float>(x) + 0.5f - centre.x,
                                              static_cast<float>(y) + 0.5f - centre.y);
            const float disc = std::clamp(radius + 0.5f - distance, 0.f, 1.f);
            const float fade = std::clamp(1 - distance / reach, 0.f, 1.f);
            if (disc > 0.25f)
                plot(x, y, centre.depth, paint, disc);
            else if (fade > 0)
                plot(x, y, centre.depth, halo, std::max(disc, 0.5f * fade * fade));
        }
    }
}

void Canvas::outline(std::span<const std::uint8_t> chosen, int width, Colour colour) {
    // How far each pixel is from the nearest chosen one, as far as the rim reaches: by sweeping
    // down and up again, each pixel from its neighbours.
    const auto beyond = static_cast<std::uint8_t>(width + 1);
    rim_.assign(colours_.size(), beyond);
    int left = width_, right = -1, top = height_, bottom = -1;
    for (int y = 0; y < height_; ++y) {
        const std::size_t row = at(0, y);
        for (int x = 0; x < width_; ++x) {
            const ItemIndex item = items_[row + static_cast<std::size_t>(x)];
            if (item == kNoItem || !chosen[item]) continue;
            rim_[row + static_cast<std::size_t>(x)] = 0;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = y;
        }
    }
    left = std::max(left - width, 0);
    right = std::min(right + width, width_ - 1);
    top = std::max(top - width, 0);
    bottom = std::min(bottom + width, height_ - 1);
    const auto nearer = [&](std::size_t i, bool exists, std::size_t neighbour) {
        if (exists && rim_[neighbour] + 1 < rim_[i])
            rim_[i] = static_cast<std::uint8_t>(rim_[neighbour] + 1);
    };
    const auto stride = static_cast<std::size_t>(width_);
    for (int y = top; y <= bottom; ++y) {
        for (int x = left; x <= right; ++x) {
            const std::size_t i = at(x, y);
            nearer(i, x > left, i - 1);
            nearer(i, y > top, i - stride);
        }
    }
    for (int y = bottom; y >= top; --y) {
        for (int x = right; x >= left; --x) {
            const std::size_t i = at(x, y);
            nearer(i, x < right, i + 1);
            nearer(i, y < bottom, i + stride);
            if (rim_[i] != 0 && rim_[i] != beyond)
                colours_[i] = mix(colours_[i], colour, rim_[i] == width && width > 1 ? 0.6f : 1);
        }
    }
}

}  // namespace workbench
