// How long the viewport takes to draw a frame of 1280 by 800 pixels while the camera turns: a small
// airfield, and a terrain of 100,000 faces, one node for each 100; plain and with a texture, by one
// core.
#include <render/renderer.h>

#include <cmath>

#include "fastestruns.h"

using namespace render;

namespace {

constexpr int kWidth = 1280, kHeight = 800;

double heightAt(double x, double y) {
    return 12 * std::sin(x * 0.021) * std::cos(y * 0.017) + 3 * std::sin(x * 0.13 + y * 0.11);
}

// Square tiles of 10 by 5 cells, two triangles each.
void addTerrain(SceneModel& scene, int faces, double cell, const Texture* texture = nullptr) {
    Surface surface;
    surface.texture = texture;
    const int tiles = faces / 100;
    const int across = std::max(1, static_cast<int>(std::sqrt(tiles)));
    for (int tile = 0; tile < tiles; ++tile) {
        const double left = (tile % across) * 10 * cell, low = (tile / across) * 5 * cell;
        scene.beginItem();
        for (int j = 0; j <= 5; ++j)
            for (int i = 0; i <= 10; ++i)
                scene.addVertex(
                    {left + i * cell, low + j * cell, heightAt(left + i * cell, low + j * cell)});
        scene.setSurface(surface);
        const auto place = [](std::uint32_t corner) {
            return TexturePlace{static_cast<float>(corner % 11), static_cast<float>(corner / 11)};
        };
        const auto color = static_cast<Color>(0x508040 + tile % 32 * 0x010201);
        for (std::uint32_t j = 0; j < 5; ++j)
            for (std::uint32_t i = 0; i < 10; ++i) {
                const std::uint32_t a = j * 11 + i;
                const TexturePlace lower[] = {place(a), place(a + 1), place(a + 12)};
                const TexturePlace upper[] = {place(a), place(a + 12), place(a + 11)};
                scene.addTriangle(a, a + 1, a + 12, color, 3, lower);
                scene.addTriangle(a, a + 12, a + 11, color, 6, upper);
            }
        scene.endItem();
    }
}

void turn(benchmark::State& state, const SceneModel& scene, DrawMode mode) {
    Camera camera;
    Canvas canvas;
    Renderer renderer;
    camera.setPictureSize(kWidth, kHeight);
    canvas.resize(kWidth, kHeight);
    camera.frame(scene.box());
    camera.zoom(2, kWidth / 2.f, kHeight / 2.f);
    for (auto _ : state) {
        camera.orbit(1, 0);
        renderer.draw(scene, camera, {mode, true, true, 1}, canvas);
        benchmark::DoNotOptimize(canvas.pixels());
    }
}

void frame(benchmark::State& state, int faces, DrawMode mode) {
    SceneModel scene;
    addTerrain(scene, faces, 4);
    scene.addLight({LightKind::kDirectional, {}, {0.48f, 0.36f, -0.8f}, {1, 1, 0.95f}});
    turn(state, scene, mode);
}

void textured(benchmark::State& state, int faces) {
    Picture picture{256, 256, {}};
    for (std::uint32_t i = 0; i < 256 * 256; ++i)
        picture.texels.push_back(0xFF000000 | (i * 2654435761u >> 8));
    const Texture texture(picture);
    SceneModel scene;
    addTerrain(scene, faces, 4, &texture);
    scene.addLight({LightKind::kDirectional, {}, {0.48f, 0.36f, -0.8f}, {1, 1, 0.95f}});
    turn(state, scene, DrawMode::kShaded);
}

void add(const std::string& name, int faces, DrawMode mode) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        frame(state, faces, mode);
    })->Unit(benchmark::kMillisecond);
}

void registerBenches() {
    for (const int faces : {1'000, 100'000, 500'000}) {
        const std::string name = std::to_string(faces) + " faces, ";
        add(name + "shaded", faces, DrawMode::kShaded);
        add(name + "shaded with edges", faces, DrawMode::kShadedEdges);
        add(name + "wires", faces, DrawMode::kWireframe);
        if (faces == 500'000) continue;
        benchmark::RegisterBenchmark((name + "textured").c_str(), [=](benchmark::State& state) {
            textured(state, faces);
        })->Unit(benchmark::kMillisecond);
    }
}

}  // namespace

int main(int count, char** arguments) {
    bench::Table table("viewport_bench", count, arguments);
    registerBenches();
    bench::FastestRuns runs;
    runs.run(count, arguments);
    runs.print(table, [](const std::string&) { return bench::kNoBound; });
    return table.status();
}
