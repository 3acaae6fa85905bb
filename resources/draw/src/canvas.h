#pragma once

#include <cstddef>
#include <vector>

#include "color.h"
#include "shapes.h"

namespace draw {

// A picture under work: straight colors with coverage, row by row from the top, clear at first.
class Canvas {
public:
    // `scale` is how many pixels, in each direction, one pixel of the shapes takes here.
    Canvas(int width, int height, double scale = 1)
        : width_(width),
          height_(height),
          scale_(scale),
          pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                  Color{0, 0, 0, 0}) {}

    int width() const { return width_; }
    int height() const { return height_; }

    const Color& at(int x, int y) const { return pixels_[index(x, y)]; }
    Color& at(int x, int y) { return pixels_[index(x, y)]; }

    // Paints the shape over what is there; edges are smoothed.
    template <typename Shape>
    void fill(const Shape& shape, Color color) {
        fill(shape, color, color);
    }

    // The same with a color that runs from `top` at the picture's upper edge to `bottom` at its
    // lower one.
    template <typename Shape>
    void fill(const Shape& shape, Color top, Color bottom) {
        for (int y = 0; y < height_; ++y) {
            const Color color = mix(top, bottom, (y + 0.5) / height_);
            for (int x = 0; x < width_; ++x) blend(x, y, color, coverage(shape, x, y));
        }
    }

    // Lays another picture over this one, its corner at (left, top); what sticks out is lost.
    void overlay(const Canvas& other, int left, int top) {
        for (int y = 0; y < other.height_; ++y) {
            for (int x = 0; x < other.width_; ++x) {
                const bool inside =
                    x + left >= 0 && x + left < width_ && y + top >= 0 && y + top < height_;
                if (inside) blend(x + left, y + top, other.at(x, y), 1);
            }
        }
    }

    // Puts `color` behind everything.
    void flatten(Color color) {
        for (Color& pixel : pixels_) {
            const double alpha = pixel.alpha;
            pixel = mix(color, Color{pixel.red, pixel.green, pixel.blue, 1}, alpha);
            pixel.alpha = 1;
        }
    }

private:
    static constexpr int kSamples = 8;  // per pixel and direction

    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
               static_cast<std::size_t>(x);
    }

    template <typename Shape>
    double coverage(const Shape& shape, int x, int y) const {
        int hits = 0;
        for (int j = 0; j < kSamples; ++j) {
            for (int i = 0; i < kSamples; ++i) {
                hits += shape.contains(
                    {(x + (i + 0.5) / kSamples) / scale_, (y + (j + 0.5) / kSamples) / scale_});
            }
        }
        return static_cast<double>(hits) / (kSamples * kSamples);
    }

    void blend(int x, int y, Color color, double share) {
        const double over = color.alpha * share;
        if (over <= 0) return;
        Color& under = at(x, y);
        const double alpha = over + under.alpha * (1 - over);
        const Color result = mix(under, color, over / alpha);
        under = {result.red, result.green, result.blue, alpha};
    }

    int width_;
    int height_;
    double scale_;
    std::vector<Color> pixels_;
};

}  // namespace draw
