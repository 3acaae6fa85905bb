// How long the viewport takes to draw a frame of 1280 by 800 pixels while the camera turns: a small
// airfield, and a terrain of 100,000 faces, one node for each 100; plain and with a texture. "fps"
// is what one core gives.
#include <workbench/renderer.h>

#include <benchmark/benchmark.h>

#include <cmath>

using namespace workbench;

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
        const auto colour = static_cast<Colour>(0x508040 + tile % 32 * 0x010201);
        for (std::uint32_t j = 0; j < 5; ++j)
            for (std::uint32_t i = 0; i < 10; ++i) {
                const std::uint32_t a = j * 11 + i;
                const TexturePlace lower[] = {place(a), place(a + 1), place(a + 12)};
                const TexturePlace upper[] = {place(a), place(a + 12), place(a + 11)};
                scene.addTriangle(a, a + 1, a + 12, colour, 3, lower);
                scene.addTriangle(a, a + 12, a + 11, colour, 6, upper);
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
    state.counters["triangles"] = static_cast<double>(renderer.trianglesDrawn());
    state.counters["fps"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void frame(benchmark::State& state) {
    SceneModel scene;
    addTerrain(scene, static_cast<int>(state.range(0)), 4);
    scene.addLight({LightKind::kDirectional, {}, {0.48f, 0.36f, -0.8f}, {1, 1, 0.95f}});
    turn(state, scene, static_cast<DrawMode>(state.range(1)));
}

void textured(benchmark::State& state) {
    Picture picture{256, 256, {}};
    for (std::uint32_t i = 0; i < 256 * 256; ++i)
        picture.texels.push_back(0xFF000000 | (i * 2654435761u >> 8));
    const Texture texture(picture);
    SceneModel scene;
    addTerrain(scene, static_cast<int>(state.range(0)), 4, &texture);
    scene.addLight({LightKind::kDirectional, {}, {0.48f, 0.36f, -0.8f}, {1, 1, 0.95f}});
    turn(state, scene, DrawMode::kShaded);
}

BENCHMARK(textured)->ArgName("faces")->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

BENCHMARK(frame)
    ->ArgNames({"faces", "mode"})
    ->ArgsProduct({{1'000, 100'000, 500'000}, {0, 1, 2}})
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
