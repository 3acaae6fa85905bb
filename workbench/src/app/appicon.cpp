#include "appicon.h"

#include <framework/gdi.h>
#include <workbench/renderer.h>

#include <cstring>
#include <vector>

namespace workbench {
namespace {

constexpr Colour kCubeColour = 0x4FA3E0;
constexpr int kSamples = 4;  // pixels of the drawing per pixel of the icon, each way

Canvas drawCube(int size) {
    SceneModel scene;
    scene.beginItem();
    Box box;
    box.add({-1, -1, -1});
    box.add({1, 1, 1});
    for (unsigned i = 0; i < 8; ++i) scene.addVertex(box.corner(i));
    constexpr std::uint32_t kSides[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                                            {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    for (const auto& side : kSides) {
        scene.addTriangle(side[0], side[1], side[2], kCubeColour);
        scene.addTriangle(side[0], side[2], side[3], kCubeColour);
    }
    scene.endItem();
    Camera camera;
    camera.setPictureSize(size, size);
    camera.frame(scene.box());
    camera.zoom(1, static_cast<float>(size) / 2, static_cast<float>(size) / 2);
    Canvas canvas;
    canvas.resize(size, size);
    RenderOptions options;
    options.mode = DrawMode::kShaded;
    options.grid = options.axes = false;
    Renderer().draw(scene, camera, options, canvas);
    return canvas;
}

// The mean colour of one icon pixel, with the covered share as its opacity.
std::uint32_t averaged(const Canvas& canvas, int x, int y) {
    unsigned sum[3] = {}, covered = 0;
    for (int v = 0; v < kSamples; ++v) {
        for (int u = 0; u < kSamples; ++u) {
            const int px = x * kSamples + u, py = y * kSamples + v;
            if (canvas.item(px, py) == kNoItem) continue;
            ++covered;
            for (unsigned c = 0; c < 3; ++c) sum[c] += canvas.pixel(px, py) >> (8 * c) & 0xFF;
        }
    }
    if (covered == 0) return 0;
    const unsigned alpha = covered * 255 / (kSamples * kSamples);
    return alpha << 24 | sum[2] / covered << 16 | sum[1] / covered << 8 | sum[0] / covered;
}

}  // namespace

HICON makeAppIcon(int size) {
    std::uint32_t* pixel = nullptr;
    const GdiBitmap colour = makePixelBitmap(size, size, pixel);
    const GdiBitmap mask(::CreateBitmap(size, size, 1, 1, nullptr));
    if (!colour || !mask) return nullptr;
    const Canvas canvas = drawCube(size * kSamples);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) *pixel++ = averaged(canvas, x, y);
    ICONINFO icon{TRUE, 0, 0, mask.get(), colour.get()};
    return ::CreateIconIndirect(&icon);
}

}  // namespace workbench
