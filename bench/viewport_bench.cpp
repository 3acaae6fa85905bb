// How long the viewport takes to draw a frame of 1280 by 800 pixels while the camera turns: a small
// airfield, and terrains of 100,000 and 500,000 faces, one node for each 100; plain and with a
// texture, by two threads against one; and what is outside of the picture, or far away: 5,000
// places of one model of 500 faces, seen from among them and from above. And how long it takes to
// follow an edit of one node of 100,000, or 1,000 joints that play, against reading them all.
#include <kiln/host/host.h>
#include <kiln/ownedptr.h>
#include <render/renderer.h>
#include <render/scenefeed.h>

#include <cmath>
#include <functional>

#include "fastestruns.h"

using namespace render;

namespace {

constexpr int kWidth = 1280, kHeight = 800;

/// Two threads, each of which draws frames of its own: what two can do on this machine, whatever
/// they share. The time is that of a frame.
constexpr const char* kAtOnce = "two frames at once";

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

/// Each thread of the benchmark draws frames of its own.
void turn(benchmark::State& state, const SceneModel& scene, Camera camera, DrawMode mode,
          unsigned threads) {
    Canvas canvas;
    Renderer renderer;
    canvas.resize(kWidth, kHeight);
    RenderOptions options{mode, true, true, 1};
    options.threads = threads;
    // The first frame finds its memory.
    renderer.draw(scene, camera, options, canvas);
    for (auto _ : state) {
        camera.orbit(1, 0);
        renderer.draw(scene, camera, options, canvas);
        benchmark::DoNotOptimize(canvas.pixels());
    }
}

Camera cameraOn(const SceneModel& scene) {
    Camera camera;
    camera.setPictureSize(kWidth, kHeight);
    camera.frame(scene.box());
    return camera;
}

void addSun(SceneModel& scene) {
    scene.addLight({LightKind::kDirectional, {}, {0.48f, 0.36f, -0.8f}, {1, 1, 0.95f}});
}

std::shared_ptr<const SceneModel> terrain(int faces, const Texture* texture = nullptr) {
    const auto scene = std::make_shared<SceneModel>();
    addTerrain(*scene, faces, 4, texture);
    addSun(*scene);
    return scene;
}

const Texture& noise() {
    static const Texture texture = [] {
        Picture picture{256, 256, {}};
        for (std::uint32_t i = 0; i < 256 * 256; ++i)
            picture.texels.push_back(0xFF000000 | (i * 2654435761u >> 8));
        return Texture(picture);
    }();
    return texture;
}

/// A model of 500 faces of two triangles, each an item as files have them: a house of cards.
std::shared_ptr<const SceneModel> house() {
    const auto model = std::make_shared<SceneModel>();
    for (int i = 0; i < 500; ++i) {
        const double x = i % 10, y = i / 10 % 10, z = i / 100 * 2;
        model->beginItem();
        for (const Vec3d corner : {Vec3d{0, 0, 0}, Vec3d{1, 0, 0}, Vec3d{1, 0, 2}, Vec3d{0, 0, 2}})
            model->addVertex(corner + Vec3d{x, y, z});
        model->setSurface({});
        model->addTriangle(0, 1, 2, 0x806040, 3);
        model->addTriangle(0, 2, 3, 0x806040, 6);
        model->endItem();
    }
    model->prepareStandIn();
    return model;
}

std::shared_ptr<const SceneModel> town() {
    const auto scene = std::make_shared<SceneModel>();
    const auto model = house();
    for (int i = 0; i < 5000; ++i) {
        scene->beginItem();
        const double turn = i * 0.7;
        scene->setPlacement(
            {model, Place({std::cos(turn), std::sin(turn), 0}, {-std::sin(turn), std::cos(turn), 0},
                          {0, 0, 1}, {i % 71 * 60., i / 71 * 60., 0})});
        scene->endItem();
    }
    addSun(*scene);
    return scene;
}

/// 100,000, of which 100 are in a group; the last one.
INode* addBoxes(Interface& host) {
    INode* node = nullptr;
    for (int i = 0; i < 1000; ++i) {
        INode* const group = host.CreateObjectNode(new DummyObject, "group");
        for (int k = 0; k < 100; ++k) {
            // A mesh, as the nodes of imported files have them.
            const OwnedPtr<Object> box(new BoxObject(1, 1, 1));
            node = host.CreateObjectNode(box->ConvertToType(0, TRIOBJ_CLASS_ID), "box");
            node->SetNodeTM(0, TransMatrix({2. * k, 2. * i, 0}));
            group->AttachChild(node);
        }
    }
    return node;
}

/// Of a scene of boxes one gets another color.
void edit(benchmark::State& state, bool isFollowed) {
    Interface& host = kiln::Core::create().hostInterface();
    INode* const node = addBoxes(host);
    SceneFeed feed;
    feed.build(host);
    for (auto _ : state) {
        node->SetWireColor(node->GetWireColor() ^ 1);
        if (!isFollowed)
            feed.build(host);
        else if (!feed.follow(host, {&node, 1}))
            state.SkipWithError("the edit is not followed");
        benchmark::DoNotOptimize(feed.model().triangles().data());
    }
    kiln::Core::destroy();
}

/// How what the viewport shows follows a drag of all boxes: their vertices are where the transforms
/// of the nodes have them now.
enum class Dragged { kFollowed, kReadAnew, kBare };

void drag(benchmark::State& state, Dragged how) {
    Interface& host = kiln::Core::create().hostInterface();
    addBoxes(host);
    std::vector<INode*> boxes;
    const INode* const root = host.GetRootNode();
    for (int i = 0; i < root->NumberOfChildren(); ++i)
        for (int k = 0; k < root->GetChildNode(i)->NumberOfChildren(); ++k)
            boxes.push_back(root->GetChildNode(i)->GetChildNode(k));
    SceneFeed feed;
    feed.build(host);
    std::vector<Point3> bare;
    for (auto _ : state) {
        state.PauseTiming();
        for (INode* const box : boxes)
            box->SetNodeTM(0, box->GetNodeTM(0) * TransMatrix({0.1, 0.2, 0.3}));
        state.ResumeTiming();
        if (how == Dragged::kReadAnew) {
            feed.build(host);
        } else if (how == Dragged::kFollowed) {
            if (!feed.follow(host, {}, boxes)) state.SkipWithError("the drag is not followed");
        } else {
            bare.clear();
            for (INode* const box : boxes) {
                const Matrix3 place = box->GetNodeTM(0);
                const auto& shape = static_cast<const TriObject&>(*box->EvalWorldState(0).obj);
                for (const Point3& vertex : shape.GetMesh().verts)
                    bare.push_back(place.PointTransform(vertex));
            }
            benchmark::DoNotOptimize(bare.data());
        }
        benchmark::DoNotOptimize(feed.model().vertices().data());
    }
    kiln::Core::destroy();
}

/// Says of all dummies that they are joints that turn.
class Joints final : public NodeLookSource {
public:
    std::optional<Matrix3> GetMotion(INode*, const NodeJoint::Values& values) noexcept override {
        return RotAngleAxisMatrix({0, 0, 1}, values[5]);
    }
};

/// The next moment of 1,000 joints that play, each with 100 boxes below it.
void play(benchmark::State& state, bool isFollowed) {
    Interface& host = kiln::Core::create().hostInterface();
    const Joints joints;
    addBoxes(host);
    Poses poses;
    for (int i = 0; i < host.GetRootNode()->NumberOfChildren(); ++i)
        poses[host.GetRootNode()->GetChildNode(i)->GetHandle()] = {};
    SceneFeed feed;
    feed.build(host);
    for (auto _ : state) {
        for (auto& [node, values] : poses) values[5] += 0.1;
        feed.setPoses(poses);
        if (!isFollowed)
            feed.build(host);
        else if (!feed.followPoses(host))
            state.SkipWithError("the joints are not followed");
        benchmark::DoNotOptimize(feed.model().vertices().data());
    }
    kiln::Core::destroy();
}

/// Wall time, since threads share the work.
benchmark::internal::Benchmark* add(const std::string& name,
                                    const std::function<void(benchmark::State&)>& run) {
    return benchmark::RegisterBenchmark(name.c_str(), run)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

void addFrames(const std::string& name, const std::shared_ptr<const SceneModel>& scene,
               const Camera& camera, DrawMode mode) {
    const auto by = [=](unsigned threads) {
        return [=](benchmark::State& state) { turn(state, *scene, camera, mode, threads); };
    };
    add(name + "/library", by(2));
    add(name + "/one thread", by(1));
    add(name + '/' + kAtOnce, by(1))->Threads(2);
}

void registerBenches() {
    add("an edit of one of 100,000 nodes/library", [](auto& state) { edit(state, true); });
    add("an edit of one of 100,000 nodes/all read", [](auto& state) { edit(state, false); });
    const std::string dragged = "100,000 nodes dragged/";
    add(dragged + "library", [](auto& state) { drag(state, Dragged::kFollowed); });
    add(dragged + "all read", [](auto& state) { drag(state, Dragged::kReadAnew); });
    add(dragged + "their vertices moved", [](auto& state) { drag(state, Dragged::kBare); });
    add("1,000 joints of 100,000 nodes that play/library", [](auto& state) { play(state, true); });
    add("1,000 joints of 100,000 nodes that play/all read",
        [](auto& state) { play(state, false); });
    for (const int faces : {1'000, 100'000, 500'000}) {
        const std::string name = std::to_string(faces) + " faces, ";
        const auto plain = terrain(faces), textured = terrain(faces, &noise());
        Camera camera = cameraOn(*plain);
        camera.zoom(2, kWidth / 2.f, kHeight / 2.f);
        addFrames(name + "shaded", plain, camera, DrawMode::kShaded);
        addFrames(name + "shaded with edges", plain, camera, DrawMode::kShadedEdges);
        addFrames(name + "wires", plain, camera, DrawMode::kWireframe);
        addFrames(name + "textured", textured, camera, DrawMode::kShaded);
    }
    const auto places = town();
    Camera camera = cameraOn(*places);
    addFrames("5,000 times 500 faces, from above", places, camera, DrawMode::kShaded);
    const Vec3d middle = places->box().centre();
    camera.lookFrom(middle + Vec3d{-30, -30, 2}, middle + Vec3d{20, 40, 2});
    addFrames("5,000 times 500 faces, from among them", places, camera, DrawMode::kShaded);
}

}  // namespace

int main(int count, char** arguments) {
    bench::Table table("viewport_bench", count, arguments);
    registerBenches();
    bench::FastestRuns runs;
    runs.run(count, arguments);
    runs.print(table, [](const std::string& row) {
        if (row.starts_with("an edit")) return 0.05;
        if (row.starts_with("1,000 joints")) return 1.0;
        if (row.starts_with("100,000 nodes")) return row.ends_with("all read") ? 0.5 : 5.0;
        // Of a small scene most of the time is that of the picture's memory.
        if (row.starts_with("1000 ") || row.starts_with("5,000 ")) return bench::kNoBound;
        return row.ends_with(kAtOnce) ? 1.1 : 1 / 1.8;
    });
    return table.status();
}
