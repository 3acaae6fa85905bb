#include <base/file.h>
#include <base/replacefile.h>
#include <base/text.h>
#include <kiln/host/core.h>
#include <render/pictureverb.h>
#include <render/pngfile.h>
#include <render/renderer.h>
#include <render/scenefeed.h>
#include <render/texture.h>

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace render {
namespace {

constexpr int kLargestSide = 8192;
constexpr int kThumbnailSide = 64;

enum Parameter { kPath, kWidth, kHeight, kView, kMode, kEye, kTarget, kTime, kLevels, kSeconds };
constexpr const char* kParameters =
    "path width? height? view? mode? eye? target? time? levels? seconds?";

template <typename T, std::size_t kCount>
using Choices = std::array<std::pair<std::string_view, T>, kCount>;

constexpr Choices<View, 4> kViews{{{"perspective", View::kPerspective},
                                   {"top", View::kTop},
                                   {"front", View::kFront},
                                   {"left", View::kLeft}}};
constexpr Choices<DrawMode, 3> kModes{{{"shaded", DrawMode::kShaded},
                                       {"edges", DrawMode::kShadedEdges},
                                       {"wireframe", DrawMode::kWireframe}}};

constexpr Choices<TimeOfDay, 4> kTimes{{{"any", TimeOfDay::kAny},
                                        {"day", TimeOfDay::kDay},
                                        {"dusk", TimeOfDay::kDusk},
                                        {"night", TimeOfDay::kNight}}};
constexpr Choices<bool, 2> kLevelChoices{{{"all", false}, {"eye", true}}};

/// The choice that an argument names, the first one without it.
template <typename T, std::size_t kCount>
T chosen(const script::Arguments& arguments, Parameter which, const Choices<T, kCount>& choices) {
    if (!arguments.has(which)) return choices.front().second;
    std::string known;
    for (const auto& [name, value] : choices) {
        if (base::smallLetters(arguments.text(which)) == name) return value;
        known += (known.empty() ? "\"" : ", \"") + std::string(name) + '"';
    }
    throw script::Failure("\"" + arguments.text(which) + "\" is none of " + known);
}

int sideOf(const script::Arguments& arguments, std::size_t which, int otherwise) {
    const int side = arguments.has(which) ? arguments.integer(which) : otherwise;
    if (side < 1 || side > kLargestSide)
        throw script::Failure("a picture has sides of 1 to " + std::to_string(kLargestSide));
    return side;
}

Vec3d placeOf(const script::Arguments& arguments, Parameter which) {
    const Point3 point = arguments.point(which);
    return {point.x, point.y, point.z};
}

void writePng(const std::string& path, int width, int height, std::span<const Color> pixels) {
    try {
        base::replaceFile(path, encodedPng(width, height, pixels));
    } catch (const std::system_error& error) {
        throw script::Failure(error.what());
    }
}

/// As the view that the script names, of the whole scene, or from where it says.
void aim(Camera& camera, const Box& scene, const script::Arguments& arguments) {
    camera.setView(chosen(arguments, kView, kViews));
    camera.frame(scene);
    if (arguments.has(kTarget) && !arguments.has(kEye))
        throw script::Failure("a target needs an eye");
    if (!arguments.has(kEye)) return;
    const Vec3d target = arguments.has(kTarget) ? placeOf(arguments, kTarget) : scene.centre();
    if (!camera.lookFrom(placeOf(arguments, kEye), target))
        throw script::Failure("the eye is at the target, or beyond all measure");
}

/// What was missing in the pictures of a scene: said once of each scene.
struct Said {
    const INode* scene = nullptr;
    std::set<std::string> sentences;
};

script::Value drawPicture(script::Engine& engine, const script::Arguments& arguments,
                          const std::string& path, Said& said) {
    kiln::Core* const core = kiln::Core::get();
    if (!core) throw script::Failure("there is no scene");
    const int width = sideOf(arguments, kWidth, 1280), height = sideOf(arguments, kHeight, 800);
    RenderOptions options;
    options.mode = chosen(arguments, kMode, kModes);
    options.time = chosen(arguments, kTime, kTimes);
    if (arguments.has(kLevels) && arguments[kLevels].isNumber()) {
        options.levelDistance = arguments.number(kLevels);
        if (options.levelDistance < 0) throw script::Failure("no distance is below 0");
    } else {
        options.levelsByEye = chosen(arguments, kLevels, kLevelChoices);
    }
    options.seconds = arguments.number(kSeconds, 0);
    options.grid = options.axes = options.helpers = false;
    SceneFeed feed;
    feed.build(core->hostInterface());
    feed.readFiles(core->hostInterface(), [](const std::string&) { return true; });
    if (const INode* const root = core->hostInterface().GetRootNode(); root != said.scene)
        said = {root, {}};
    for (const std::string& failure : feed.takeFailures())
        if (said.sentences.insert(failure).second) engine.print("-- " + failure);
    Camera camera;
    Canvas canvas;
    Renderer renderer;
    camera.setPictureSize(width, height);
    aim(camera, feed.model().box(), arguments);
    canvas.resize(width, height);
    renderer.draw(feed.model(), camera, options, canvas);
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    writePng(path, width, height, {canvas.pixels(), count});
    return script::Value(path);
}

/// Undefined where the file is no picture, since a script does not want to end at one of many.
script::Value drawThumbnail(const script::Arguments& arguments, const std::string& path) {
    std::string bytes;
    if (base::readFile(arguments.text(0), bytes)) return {};
    const int side = sideOf(arguments, 2, kThumbnailSide);
    try {
        const Picture picture =
            readPicture({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
        if (picture.texels.empty()) return {};
        const int bits = static_cast<int>(std::bit_width(static_cast<unsigned>(side))) - 1;
        const Texture texture(picture, std::min(bits, Texture::kMostBits));
        const Texture::Level small = texture.level(0);
        const int width = 1 << small.widthBits, height = 1 << small.heightBits;
        std::vector<std::uint32_t> rows;  // from top to bottom
        for (int row = height; row-- > 0;)
            rows.insert(rows.end(), small.texels + row * width, small.texels + (row + 1) * width);
        writePng(path, width, height, rows);
        return script::Value::ofArray({picture.width, picture.height});
    } catch (const PictureError&) {
        return {};
    }
}

}  // namespace

void addPictureVerb(script::Engine& engine,
                    std::function<std::string(const std::string& path)> placed) {
    const auto target = [placed = std::move(placed)](const std::string& path) {
        if (path.empty()) throw script::Failure("a picture needs a name");
        return placed ? placed(path) : path;
    };
    engine.addVerb(
        "picture", kParameters,
        [&engine, target, said = std::make_shared<Said>()](const script::Arguments& arguments) {
            return drawPicture(engine, arguments, target(arguments.text(kPath)), *said);
        });
    engine.addVerb("thumbnail", "file path side?", [target](const script::Arguments& arguments) {
        return drawThumbnail(arguments, target(arguments.text(1)));
    });
    engine.addVerb("reloadReferences", "", [](const script::Arguments&) {
        kiln::Core* const core = kiln::Core::get();
        if (!core) throw script::Failure("there is no scene");
        core->forgetFileScenes();
        core->hostInterface().RedrawViews(core->hostInterface().GetTime());
        return script::Value(script::Done{});
    });
}

}  // namespace render
