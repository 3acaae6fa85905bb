// Any bytes as a scene file: loaded or refused, and what was loaded is drawn, exported and saved.
//
// The first byte says what the rest is. An even one: the file itself. An odd one: a recipe for a
// file that is sound JSON and hostile in what it says: classes under any super class, attributes
// within attributes, polygons and chunks of any content, numbers out of all range.
#include "expect.h"
#include "input.h"

#include <fltkilnutil/kilnflt.h>
#include <interchange/export.h>
#include <interchange/import.h>
#include <interchange/nodelooks.h>
#include <kiln/host/host.h>
#include <quillon/fltfilereader.h>
#include <render/renderer.h>
#include <render/scenefeed.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "base64.h"

namespace {

constexpr Class_ID kClasses[] = {TRIOBJ_CLASS_ID, BOXOBJ_CLASS_ID,          SPLINESHAPE_CLASS_ID,
                                 DUMMY_CLASS_ID,  OMNI_LIGHT_CLASS_ID,      DIR_LIGHT_CLASS_ID,
                                 BMTEX_CLASS_ID,  {0x6A3C1F07, 0x2E9D0005}, {0x1234, 0x5678}};
constexpr SClass_ID kSuperClasses[] = {GEOMOBJECT_CLASS_ID, SHAPE_CLASS_ID,  HELPER_CLASS_ID,
                                       LIGHT_CLASS_ID,      TEXMAP_CLASS_ID, CUST_ATTRIB_CLASS_ID};
constexpr const char* kNumbers[] = {"0",
                                    "-0.0",
                                    "1",
                                    "-1",
                                    "0.5",
                                    "1e300",
                                    "-1.7976931348623157e308",
                                    "5e-324",
                                    "6378137.3",
                                    "\"0x7ff0000000000000\"",
                                    "\"0x7ff8000000000000\""};
constexpr std::uint16_t kKinds[] = {1, 2, 4, 5, 14, 55, 61, 62, 63, 73, 96, 98, 101, 111};

template <typename T, std::size_t Count>
const T& chosen(const T (&list)[Count], std::uint8_t number) {
    return list[number % Count];
}

/// Writes a scene file after a recipe.
class SceneText {
public:
    explicit SceneText(std::span<const std::uint8_t> recipe) : input_(recipe) {}

    std::string make() {
        text_ = R"({"format":"kiln scene","version":1,"root":{)";
        extras(0);
        text_ += R"(},"texmaps":[)";
        list(input_.byte() % 4, [this](int) { texmap(); });
        text_ += R"(],"objects":[)";
        objects_ = input_.byte() % 8;
        list(objects_, [this](int) { object(); });
        text_ += R"(],"nodes":[)";
        const int nodes = input_.byte() % 16;
        list(nodes, [this](int index) { node(index); });
        text_ += R"(],"selection":[)";
        if (nodes > 0) text_ += std::to_string(input_.byte() % nodes);
        return text_ += "]}";
    }

private:
    template <typename Write>
    void list(int count, Write&& write) {
        for (int i = 0; i < count; ++i) {
            if (i > 0) text_ += ',';
            write(i);
        }
    }
    void number() {
        const std::uint8_t byte = input_.byte();
        text_ += byte < 32 ? chosen(kNumbers, byte) : std::to_string(byte - 128).c_str();
    }
    void numbers(const char* name, int count) {
        text_ += std::string("\"") + name + "\":[";
        list(count, [this](int) { number(); });
        text_ += ']';
    }
    void classId(const Class_ID& id) {
        text_ +=
            "\"class\":[" + std::to_string(id.PartA()) + ',' + std::to_string(id.PartB()) + ']';
    }
    void boolean(const char* name) {
        text_ += std::string(",\"") + name + (input_.byte() & 1 ? "\":true" : "\":false");
    }

    void texmap() {
        text_ += '{';
        classId(input_.byte() & 1 ? BMTEX_CLASS_ID : chosen(kClasses, input_.byte()));
        text_ += R"(,"name":"map","file":"none.rgb")";
        extras(1);
        text_ += '}';
    }

    // With the members of every class, so that any of them can be read.
    void object() {
        const std::uint8_t which = input_.byte();
        const Class_ID& id = chosen(kClasses, which);
        // A wrong one makes all of the file refused, so it is rare.
        const SClass_ID superClass =
            which < 0xF0 ? ownSuperClass(id) : chosen(kSuperClasses, input_.byte());
        text_ += "{\"super\":" + std::to_string(superClass) + ',';
        classId(id);
        text_ += R"(,"color":)" + std::to_string(input_.byte() * 0x10101) + R"(,"intensity":)";
        number();
        boolean("on");
        boolean("closed");
        boolean("renderable");
        text_ += ',';
        if (id == DUMMY_CLASS_ID)
            text_ += R"("size":10)";
        else
            numbers("size", 3);
        text_ += ',';
        numbers("points", 3 * (input_.byte() % 40));
        text_ += R"(,"mesh":{)";
        const int vertices = input_.byte() % 16;
        numbers("vertices", 3 * vertices);
        text_ += R"(,"faces":[)";
        list(vertices > 0 ? input_.byte() % 16 : 0, [&](int) {
            for (int i = 0; i < 3; ++i) text_ += std::to_string(input_.byte() % vertices) + ',';
            text_ += std::to_string(input_.byte()) + ",0";
        });
        text_ += "]}";
        extras(1);
        text_ += '}';
    }
    static SClass_ID ownSuperClass(const Class_ID& id) {
        if (id == SPLINESHAPE_CLASS_ID) return SHAPE_CLASS_ID;
        if (id == DUMMY_CLASS_ID) return HELPER_CLASS_ID;
        if (id == OMNI_LIGHT_CLASS_ID || id == DIR_LIGHT_CLASS_ID) return LIGHT_CLASS_ID;
        return GEOMOBJECT_CLASS_ID;
    }

    void node(int index) {
        text_ += R"({"name":"n","wire":)" + std::to_string(input_.byte() * 257);
        const std::uint8_t dressing = input_.byte();
        if (index > 0 && dressing & 1)
            text_ += R"(,"parent":)" + std::to_string(input_.byte() % index);
        if (objects_ > 0 && dressing & 2)
            text_ += R"(,"object":)" + std::to_string(input_.byte() % objects_);
        if (dressing & 4) {
            text_ += ',';
            numbers("transform", 12);
        }
        if (dressing & 8) text_ += R"(,"hidden":true)";
        extras(1);
        text_ += '}';
    }

    // Chunks and attributes, after other members unless `before` is 0.
    void extras(int before) {
        const std::uint8_t dressing = input_.byte();
        if (dressing & 1) {
            if (before++ > 0) text_ += ',';
            text_ += R"("chunks":[)";
            const FltNodeKind kind{chosen(kKinds, input_.byte())};
            list(dressing >> 4 & 3, [&](int index) { chunk(static_cast<DWORD>(index), kind); });
            text_ += ']';
        }
        if (dressing & 2) {
            if (before > 0) text_ += ',';
            attributes();
        }
    }

    // As the attribute store, or the importer, would have put them there, but for the content.
    void chunk(DWORD sub, FltNodeKind kind) {
        const std::uint8_t dressing = input_.byte();
        const bool isKept = dressing & 1;
        std::vector<std::uint8_t> bytes;
        const auto content = input_.bytes(input_.byte());
        bytes.assign(content.begin(), content.end());
        if (!isKept && sub == 0) {
            bytes.resize(40);
            bytes[4] = static_cast<std::uint8_t>(kind);
        } else if (!isKept && bytes.size() >= 4) {
            const std::size_t length = bytes.size();
            bytes[0] = 0;
            bytes[1] = static_cast<std::uint8_t>(sub == 2 ? 31 : static_cast<int>(kind));
            bytes[2] = 0;
            bytes[3] = static_cast<std::uint8_t>(length);
        }
        text_ += '{';
        classId(isKept ? Class_ID(0x51D8A2C4, 0x7B30E61A) : Class_ID(0x6A3C1F07, 0x2E9D0001));
        text_ += R"(,"super":2576,"sub":)" + std::to_string(sub) + R"(,"length":)" +
                 std::to_string(bytes.size()) + R"(,"data":")" +
                 kiln::toBase64(bytes.data(), bytes.size()) + "\"}";
    }

    // One within the other, and some beside each other.
    void attributes() {
        const std::uint8_t byte = input_.byte();
        const int depth = byte < 0xF0 ? byte % 8 : 8 * (byte & 0xF);  // up to more than is accepted
        for (int i = 0; i < depth; ++i) {
            text_ += R"("attributes":[)";
            for (int beside = input_.byte() & 1; beside > 0; --beside) {
                text_ += '{';
                classId(chosen(kClasses, input_.byte()));
                text_ += R"(,"state":"AAEC"},)";
            }
            text_ += '{';
            classId(chosen(kClasses, input_.byte()));
            text_ += ',';
        }
        text_ += R"("attributes":[])";
        for (int i = 0; i < depth; ++i) text_ += "}]";
    }

    Input input_;
    int objects_ = 0;
    std::string text_;
};

class SilentReport final : public ImpExpReport {
public:
    void Error(const char* message) override { error = message; }
    void Summary(const char*) override {}
    bool Progress(double, const char*) override { return true; }
    bool Cancelled() const override { return false; }

    std::string error;
};

/// A folder of this process, gone when it ends.
struct ScratchFolder {
    std::filesystem::path path = std::filesystem::temp_directory_path() /
                                 ("scenefile_fuzz-" + std::to_string(std::random_device()()));
    ScratchFolder() { std::filesystem::create_directory(path); }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

void draw(Interface& host) {
    render::SceneFeed feed;
    render::Camera camera;
    render::Canvas canvas;
    render::Renderer renderer;
    feed.build(host);
    camera.setPictureSize(64, 48);
    canvas.resize(64, 48);
    camera.frame(feed.model().box());
    renderer.draw(feed.model(), camera, {}, canvas);
}

/// A file that was written can be read, whatever the scene was.
void exportScene(const std::string& path, Interface& host) {
    SilentReport report;
    if (interchange::exportFile(path.c_str(), {}, report, host) != IMPEXP_SUCCESS) {
        expect(!report.error.empty(), "a refusal has a reason");
        return;
    }
    const FltFileBytes file = FltFileBytes::load(path);
    static_cast<void>(interchange::readFileIndex(file.bytes()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static kiln::Core& core = kiln::Core::create();
    static interchange::NodeLooks looks;
    static const ScratchFolder scratch;
    Interface& host = core.hostInterface();
    core.newScene();
    Input input({data, size});
    const bool isRecipe = input.byte() & 1;
    const auto rest = input.rest();
    const std::string text =
        isRecipe ? SceneText(rest).make() : std::string(rest.begin(), rest.end());
    const kiln::ImportResult result = core.loadSceneText(text, "fuzz");
    if (!result) {
        expect(result.message.starts_with("fuzz: "), "a refusal has a reason");
        expect(host.GetNodeCount() == 0, "a refused file leaves no node");
        return 0;
    }
    const std::string loaded = core.sceneText();
    draw(host);
    exportScene((scratch.path / "scene.flt").string(), host);
    expect(core.sceneText() == loaded, "neither drawing nor exporting changes the scene");
    const std::string saved = (scratch.path / "scene.kiln").string();
    expect(core.saveScene(saved).ok(), "what was loaded can be saved");
    expect(core.loadScene(saved).ok(), "what was saved can be loaded");
    expect(core.sceneText() == loaded, "and is the same");
    return 0;
}
