#include "fixture.h"

#include <kiln/host/scenetext.h>

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>

namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

std::string readAll(const std::string& path) {
    std::ifstream file(std::filesystem::path(std::u8string(path.begin(), path.end())),
                       std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

struct KeptAttribute final : CustAttrib {
    Class_ID ClassID() const override { return {0x6A3C1F07, 0x2E9D0005}; }
    std::vector<BYTE> SaveState() const override { return {1, 2, 0, 255}; }
};

class SceneFileTest : public HostTest {
protected:
    // One of everything, with the numbers that are hard to write down.
    void fillScene() {
        INode* const head = addNode("Kopf \xE6\xB0\xB4 \"\\\n");
        head->SetGroupHead(true);
        head->SetWireColor(0x123456);
        head->SetLocalTM(0, Matrix3({0.1, 1.0 / 3, -0.0}, {5e-324, 1.7976931348623157e308, 2},
                                    {std::numeric_limits<double>::infinity(), 0, 1},
                                    {std::nan("7"), 1e-7, 123456789.123456789}));
        std::string bytes;
        for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
        head->AddAppDataChunk({0x6A3C1F07, 0x2E9D0001}, 0xA10, 1, 256, hostBlock(bytes));
        head->AddAppDataChunk({0x6A3C1F07, 0x2E9D0001}, 0xA10, 2, 0, nullptr);
        head->AddAppDataChunk({0xFFFFFFFF, 0}, 0, 0xFFFFFFFF, 1, hostBlock("x"));

        auto* const tri = new TriObject;
        Mesh& mesh = tri->GetMesh();
        for (const Point3& point : {Point3{0.1, 0.2, 0.3}, Point3{1, 0, 0}, Point3{0, 1, 0}}) {
            mesh.verts.Append(point);
            mesh.normals.Append(Point3f(0, 0, 1));
            mesh.tVerts.Append(Point3f(point));
            mesh.colors.Append(COLORREF{0x80FF00});
        }
        mesh.faces.Append(Face{{0, 1, 2}, EDGE_A | EDGE_C, 5});
        mesh.tvFaces.Append(TVFace{{2, 1, 0}});
        INode* const first = host.CreateObjectNode(tri, "mesh");
        INode* const second = host.CreateObjectNode(tri, "instance");
        for (INode* const member : {first, second}) {
            head->AttachChild(member, false);
            member->SetGroupMember(true);
        }
        first->Hide(true);

        auto* const map = new BitmapTex;
        map->SetName("wall");
        map->SetMapName("C:\\maps\\wall.rgb");
        map->AllocCustAttribContainer()->AppendCustAttrib(new KeptAttribute);
        second->SetTexmap(map);  // in use, but not in the scene's list
        auto* const listed = new BitmapTex;
        listed->SetName("listed");
        host.AddTexmap(listed);

        host.CreateObjectNode(new BoxObject(1, 2, 3.5), "box");
        auto* const light = new GenLight(FSPOT_LIGHT_CLASS_ID);
        light->SetIntensity(0.7);
        light->SetUseLight(false);
        host.CreateObjectNode(light, "light");
        auto* const line = new SplineShape;
        line->GetPoints().Append(Point3{1, 2, 3});
        line->SetClosed(true);
        host.CreateObjectNode(line, "line");
        host.CreateObjectNode(nullptr, "");
        root->AddAppDataChunk({1, 1}, 1, 1, 2, hostBlock("ok"));
        host.SelectNode(second);
        host.SelectNode(head, false);
    }
};

TEST_F(SceneFileTest, ReadsBackBitForBit) {
    fillScene();
    TemporaryFolder folder;
    const std::string path = folder.file(u8"Szene \u6C34.kiln");
    const Matrix3 transform = root->GetChildNode(0)->GetLocalTM(0);
    const Mesh mesh =
        static_cast<TriObject*>(host.GetINodeByName("mesh")->GetObjectRef())->GetMesh();
    ASSERT_TRUE(core.saveScene(path));
    EXPECT_EQ(folder.fileCount(), 1u) << "the temporary file is gone";
    EXPECT_FALSE(core.isModified());
    core.newScene();
    const kiln::ImportResult status = core.loadScene(path);
    ASSERT_TRUE(status) << status.message;
    EXPECT_FALSE(core.isModified());

    root = host.GetRootNode();
    EXPECT_EQ(bytesOf(root->GetAppDataChunk({1, 1}, 1, 1)), "ok");
    INode* const head = root->GetChildNode(0);
    EXPECT_STREQ(head->GetName(), "Kopf \xE6\xB0\xB4 \"\\\n");
    const Matrix3 read = head->GetLocalTM(0);
    using Bits = std::array<std::uint64_t, 12>;
    EXPECT_EQ(std::bit_cast<Bits>(read), std::bit_cast<Bits>(transform));
    EXPECT_THAT(childNames(head), ElementsAre("mesh", "instance"));
    INode* const first = head->GetChildNode(0);
    INode* const second = head->GetChildNode(1);
    EXPECT_EQ(first->GetObjectRef(), second->GetObjectRef());
    EXPECT_EQ(static_cast<TriObject*>(first->GetObjectRef())->GetMesh(), mesh);
    EXPECT_TRUE(first->IsHidden() && !second->IsHidden());
    EXPECT_TRUE(head->IsGroupHead() && second->IsGroupMember() && !head->IsGroupMember());
    EXPECT_EQ(head->GetWireColor(), 0x123456u);

    // A class whose plug-in is not there: identity and state stay.
    ASSERT_NE(second->GetTexmap(), nullptr);
    const CustAttrib* const kept = second->GetTexmap()->GetCustAttribContainer()->GetCustAttrib(0);
    EXPECT_EQ(kept->ClassID(), Class_ID(0x6A3C1F07, 0x2E9D0005));
    EXPECT_EQ(kept->SaveState(), (std::vector<BYTE>{1, 2, 0, 255}));
    EXPECT_EQ(host.GetTexmapCount(), 1);
    EXPECT_EQ(host.GetSelNode(0), second);
    EXPECT_EQ(host.GetSelNode(1), head);

    // Everything else: the file written again is the same to the byte.
    EXPECT_EQ(core.sceneText(), readAll(path));
}

TEST_F(SceneFileTest, SavingReplacesTheOldFileOrLeavesIt) {
    addNode("one");
    TemporaryFolder folder;
    const std::string path = folder.file(u8"scene.kiln");
    ASSERT_TRUE(core.saveScene(path));
    const std::string before = readAll(path);
    addNode("two");
    ASSERT_TRUE(core.saveScene(path));
    EXPECT_NE(readAll(path), before);

    const std::string nowhere = folder.file(u8"none/scene.kiln");
    EXPECT_THAT(core.saveScene(nowhere).message, StartsWith(nowhere + ": cannot be written: "));
    // A folder of that name cannot be replaced by a file.
    std::filesystem::create_directories(folder.path() / "folder.kiln" / "full");
    core.setModified(true);
    EXPECT_FALSE(core.saveScene(folder.file(u8"folder.kiln")));
    EXPECT_TRUE(core.isModified());
    EXPECT_EQ(folder.fileCount(), 2u) << "no temporary file stays";
    EXPECT_THAT(core.loadScene(nowhere).message, StartsWith(nowhere + ": cannot be opened: "));
}

struct DamageCase {
    std::string find;     // replaced at its first place ...
    std::string replace;  // ... by this
    std::string message;  // how the complaint goes on after the path
};

TEST_F(SceneFileTest, RefusesDamageAndSaysWhere) {
    fillScene();
    const std::string good = core.sceneText();
    ASSERT_TRUE(core.loadSceneText(good, "good"));
    const DamageCase cases[] = {
        {"\"kiln scene\"", "\"other\"", "is damaged at format: is not that of a scene file"},
        {"\"version\": 1", "\"version\": 2", "is damaged at version: 2 is not known"},
        {"\"version\": 1,", "", "is damaged at the file: \"version\" is missing"},
        {"\"version\": 1", "\"version\": -1", "is damaged at version: must be a whole number"},
        {"AAECAwQF", "AAEC*wQF", "is damaged at nodes[0].chunks[0].data: is not base64"},
        {"\"length\":256", "\"length\":255",
         "is damaged at nodes[0].chunks[0].data: does not have"},
        {"\"sub\":2", "\"sub\":1", "is damaged at nodes[0].chunks[1]: is there twice"},
        {"\"parent\":0", "\"parent\":1", "is damaged at nodes[1].parent: 1 is out of range"},
        {"\"object\":0", "\"object\":99", "is damaged at nodes[0].object: 99 is out of range"},
        {"\"wire\":1193046", "\"wire\":4294967296", "is damaged at nodes[0].wire: "},
        {"\"faces\":[0,1,2", "\"faces\":[0,1,3", "is damaged at objects[1].mesh: indices"},
        {"\"faces\":[0,1,2", "\"faces\":[0,1", "is damaged at objects[1].mesh.faces: must have"},
        {"\"transform\":[0.1,", "\"transform\":[",
         "is damaged at nodes[0].transform: must have 12"},
        {"0x7ff0000000000000", "0x7ff00000000000zz",
         "is damaged at nodes[0].transform[6]: must be"},
        {"\"super\":16,", "\"super\":17,", "is damaged at objects[1].super: is not that of"},
        {"\"name\":\"mesh\"", "\"name\":3", "is damaged at nodes[1].name: must be a text"},
        {"\"hidden\":true", "\"hidden\":1", "is damaged at nodes[1].hidden: must be true or false"},
        {"\"selection\": [2", "\"selection\": [90", "is damaged at selection[0]: 90 is out of"},
        {"\"nodes\": [\n", "\"nodes\": [\n]", "is damaged: parse error at line "},
    };
    for (const DamageCase& one : cases) {
        std::string bad = good;
        const std::size_t at = bad.find(one.find);
        ASSERT_NE(at, std::string::npos) << one.find;
        bad.replace(at, one.find.size(), one.replace);
        const kiln::ImportResult status = core.loadSceneText(bad, "a.kiln");
        EXPECT_THAT(status.message, StartsWith("a.kiln: " + one.message)) << one.find;
    }
    EXPECT_EQ(core.sceneText(), good) << "the scene stays as it was";
}

// A file with these texture maps, objects and nodes.
std::string fileOf(const std::string& maps, const std::string& objects, const std::string& nodes) {
    return "{\"format\":\"kiln scene\",\"version\":1,\"root\":{},\"texmaps\":[" + maps +
           "],\"objects\":[" + objects + "],\"nodes\":[" + nodes + "],\"selection\":[]}";
}

// Every file cut short and every file with one changed byte loads or is refused, nothing else.
TEST_F(SceneFileTest, SurvivesAnyDamage) {
    fillScene();
    const std::string good = core.sceneText();
    for (std::size_t length = 0; length + 2 < good.size(); length += 7)
        ASSERT_FALSE(core.loadSceneText(good.substr(0, length), "cut.kiln"));
    unsigned seed = 7;
    for (std::size_t at = 0; at < good.size(); ++at) {
        seed = seed * 1664525u + 1013904223u;
        std::string bad = good;
        bad[at] = static_cast<char>(seed >> 24);
        if (core.loadSceneText(bad, "bad.kiln")) {
            ASSERT_TRUE(core.loadSceneText(core.sceneText(), "again.kiln"));
        }
    }
    EXPECT_FALSE(core.loadSceneText(std::string(1000000, '['), "deep.kiln"));
}

// Objects are converted by their class ids alone, so what has a mesh's id must be one.
TEST_F(SceneFileTest, RefusesObjectsThatClaimAClassOfTheHost) {
    const struct {
        SClass_ID superClass;
        Class_ID id;
    } own[] = {{GEOMOBJECT_CLASS_ID, TRIOBJ_CLASS_ID}, {GEOMOBJECT_CLASS_ID, BOXOBJ_CLASS_ID},
               {SHAPE_CLASS_ID, SPLINESHAPE_CLASS_ID}, {HELPER_CLASS_ID, DUMMY_CLASS_ID},
               {LIGHT_CLASS_ID, OMNI_LIGHT_CLASS_ID},  {LIGHT_CLASS_ID, FSPOT_LIGHT_CLASS_ID}};
    for (const auto& [superClass, id] : own) {
        for (const SClass_ID claimed :
             {GEOMOBJECT_CLASS_ID, SHAPE_CLASS_ID, HELPER_CLASS_ID, LIGHT_CLASS_ID}) {
            const std::string object = "{\"super\":" + std::to_string(claimed) + ",\"class\":[" +
                                       std::to_string(id.PartA()) + ",0]}";
            const kiln::ImportResult status = core.loadSceneText(
                fileOf("", object, "{\"name\":\"n\",\"object\":0,\"wire\":0}"), "a.kiln");
            const char* const why = claimed == superClass
                                        ? "a.kiln: is damaged at objects[0]: \""
                                        : "a.kiln: is damaged at objects[0].class: is a class of";
            EXPECT_THAT(status.message, StartsWith(why)) << id.PartA() << " as " << claimed;
        }
    }
    EXPECT_TRUE(
        core.loadSceneText(fileOf("{\"class\":[9,0],\"name\":\"of a plug-in\"}", "", ""), "a.kiln"))
        << "texture maps are never taken for objects";
}

// One custom attribute within another, so many deep.
std::string nestedAttributes(int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) text += "\"attributes\":[{\"class\":[1,2],";
    text += "\"chunks\":[]";
    for (int i = 0; i < depth; ++i) text += "}]";
    return text;
}

TEST_F(SceneFileTest, RefusesAttributesWithinAttributesWithoutEnd) {
    const auto load = [&](int depth) {
        return core.loadSceneText(
            fileOf("", "", "{\"name\":\"n\",\"wire\":0," + nestedAttributes(depth) + "}"),
            "deep.kiln");
    };
    ASSERT_TRUE(load(64));
    const std::string deepest = core.sceneText();
    ASSERT_TRUE(core.loadSceneText(deepest, "again.kiln"));
    EXPECT_EQ(core.sceneText(), deepest);
    for (const int depth : {65, 100'000})
        EXPECT_THAT(load(depth).message, testing::HasSubstr(": attributes are more than 64 deep"));
    EXPECT_EQ(core.sceneText(), deepest);

    // What could not be read again is not written either.
    const TemporaryFolder folder;
    const std::string path = folder.file("deep.kiln");
    ASSERT_TRUE(core.saveScene(path));
    Animatable* thing = host.GetRootNode()->GetChildNode(0);
    while (thing->GetCustAttribContainer())
        thing = thing->GetCustAttribContainer()->GetCustAttrib(0);
    thing->AllocCustAttribContainer()->AppendCustAttrib(new KeptAttribute);
    EXPECT_THAT(core.saveScene(path).message,
                StartsWith(path + ": cannot be written: attributes are more than 64 deep"));
    EXPECT_EQ(readAll(path), deepest);
}

TEST_F(SceneFileTest, ReadsLongListsOfChunksInOrder) {
    constexpr int kMany = 2000;
    std::string chunks;
    for (int i = 0; i < kMany; ++i)
        chunks += (i ? "," : "") + std::string("{\"class\":[1,2],\"super\":3,\"sub\":") +
                  std::to_string(i) + ",\"length\":1,\"data\":\"QQ==\"}";
    const auto load = [&](const std::string& list) {
        return core.loadSceneText(
            fileOf("", "", "{\"name\":\"n\",\"wire\":0,\"chunks\":[" + list + "]}"), "a.kiln");
    };
    ASSERT_TRUE(load(chunks));
    const INode* const node = host.GetRootNode()->GetChildNode(0);
    EXPECT_EQ(node->NumAppDataChunks(), kMany);
    EXPECT_EQ(bytesOf(node->GetAppDataChunk({1, 2}, 3, kMany - 1)), "A");
    for (int i = 0; i < kMany; ++i)
        ASSERT_EQ(node->GetAppDataChunk(i)->subID, static_cast<DWORD>(i));
    const std::string text = core.sceneText();
    ASSERT_TRUE(core.loadSceneText(text, "again.kiln"));
    EXPECT_EQ(core.sceneText(), text);
    const std::string first = chunks.substr(0, chunks.find('}') + 1);
    EXPECT_THAT(load(chunks + ',' + first).message,
                StartsWith("a.kiln: is damaged at nodes[0].chunks[2000]: is there twice"));
}

// A mesh of these points, each with the same texture coordinates.
std::string meshOf(const std::string& vertices, const std::string& textureVertices) {
    return "{\"super\":16,\"class\":[9,0],\"mesh\":{\"vertices\":[" + vertices +
           "],\"faces\":[],\"textureVertices\":[" + textureVertices + "]}}";
}

TEST_F(SceneFileTest, ReadsEveryNumberToTheNearest) {
    const char* const numbers[] = {
        "0", "-0", "0.0", "-0.0", "7", "-12.50", "1E2", "1e+2", "100e-2", "0.1",
        "0.30000000000000004", "3.14159265358979323846264338327950288", "9007199254740993",
        "123456789012345678901234567890", "2.2250738585072011e-308", "5e-324", "1e-400",
        "0.000000000000000000000000000000000001e36", "1.7976931348623157e308",
        // Singles: one digit too many, and between two of them, exactly and nearly.
        "0.33333334", "16777217", "16777217.000000001", "16777216.999999999",
        "1.00000005960464477539", "1.000000059604644776", "1.000000059604644775", "1e-45",
        "1.17549435e-38", "3.4028235e38"};
    for (const char* const number : numbers) {
        const std::string text(number);
        const std::string three = text + ", " + text + " ," + text;
        const bool isSingle = std::abs(std::strtod(number, nullptr)) < 3.5e38;
        const kiln::ImportResult result =
            core.loadSceneText(fileOf("", meshOf(three, isSingle ? three : ""),
                                      "{\"name\":\"n\",\"object\":0,\"wire\":0}"),
                               "a.kiln");
        ASSERT_TRUE(result) << result.message;
        const Mesh& mesh =
            static_cast<TriObject*>(host.GetRootNode()->GetChildNode(0)->GetObjectRef())->GetMesh();
        for (const double value : {mesh.verts[0].x, mesh.verts[0].z})
            EXPECT_EQ(std::bit_cast<std::uint64_t>(value),
                      std::bit_cast<std::uint64_t>(std::strtod(number, nullptr)))
                << number;
        if (!isSingle) continue;
        for (const float value : {mesh.tVerts[0].x, mesh.tVerts[0].z})
            EXPECT_EQ(std::bit_cast<std::uint32_t>(value),
                      std::bit_cast<std::uint32_t>(std::strtof(number, nullptr)))
                << number;
    }
    for (const char* const wrong : {"01", "-", "+1", ".5", "1.", "1.e2", "1e", "1e+", "1-2", "1 2",
                                    "1,,2", "0x1", "1e999", "-1e400", "nan", "1/2", ",1"}) {
        EXPECT_FALSE(
            core.loadSceneText(fileOf("", meshOf(std::string(wrong) + ",2,3", ""), ""), "a.kiln"))
            << wrong;
        EXPECT_FALSE(
            core.loadSceneText(fileOf("", meshOf(std::string("2,3,") + wrong, ""), ""), "a.kiln"))
            << wrong;
    }
}

TEST_F(SceneFileTest, ReadsTextsWithEscapes) {
    const struct {
        const char* text;
        const char* name;  // null: refused
    } cases[] = {{R"(a\u0062\/\"\\\b\f\n\r\tz)", "ab/\"\\\b\f\n\r\tz"},
                 {R"(\u6c34\uD83D\uDE00\u00e9)", "\xE6\xB0\xB4\xF0\x9F\x98\x80\xC3\xA9"},
                 {"\xE6\xB0\xB4", "\xE6\xB0\xB4"},
                 {R"(\x)", nullptr},
                 {R"(\u12g4)", nullptr},
                 {R"(\uD83D)", nullptr},
                 {R"(\uDE00\uD83D)", nullptr},
                 {R"(\u12)", nullptr},
                 {"\xE6\xB0", nullptr},
                 {"\xFF", nullptr},
                 {"a\nb", nullptr}};
    for (const auto& [text, name] : cases) {
        const kiln::ImportResult result = core.loadSceneText(
            fileOf("", "", "{\"n\\u0061me\":\"" + std::string(text) + "\",\"wire\":0}"), "a.kiln");
        EXPECT_EQ(result.ok(), name != nullptr) << text << result.message;
        if (name) {
            EXPECT_STREQ(host.GetRootNode()->GetChildNode(0)->GetName(), name);
        }
    }
}

// As it was written before numbers became shorter, members in another order among them.
TEST_F(SceneFileTest, OpensFilesOfEarlierVersions) {
    const std::string text =
        "\xEF\xBB\xBF{\r\n\"version\" : 1,\n\"format\": \"kiln scene\",\n\"comment\": [{\"by\": "
        "null}, [1, 2], \"x\"],\n\"root\": {},\n\"objects\": [\n"
        "{\"mesh\":{\"faces\":[0,1,2,3,0],\"vertices\":[0.0,-0.0,1.0,2780.0,50.0,"
        "0.3450996018133852,1e+300,0.0,\"0x7ff0000000000000\"],\"textureVertices\":["
        "0.3333333432674408,0.10000000149011612,0.0]},\"class\":[9,0],\"super\":16}\n],\n"
        "\"texmaps\": [],\n\"nodes\": [\n{\"wire\":1,\"object\":0,\"name\":\"a\"},\n"
        "{\"name\":\"b\",\"parent\":0,\"hidden\":true,\"wire\":2}\n],\n\"selection\": [1, 0]\n}\n";
    const kiln::ImportResult result = core.loadSceneText(text, "old.kiln");
    ASSERT_TRUE(result) << result.message;
    INode* const node = host.GetRootNode()->GetChildNode(0);
    const Mesh& mesh = static_cast<TriObject*>(node->GetObjectRef())->GetMesh();
    EXPECT_TRUE(std::signbit(mesh.verts[0].y));
    EXPECT_EQ(mesh.verts[1], (Point3{2780, 50, 0.3450996018133852}));
    EXPECT_EQ(mesh.verts[2].z, std::numeric_limits<double>::infinity());
    EXPECT_EQ(mesh.tVerts[0], Point3f(1.0F / 3, 0.1F, 0));
    EXPECT_EQ(host.GetSelNode(0), node->GetChildNode(0));
    EXPECT_TRUE(node->GetChildNode(0)->IsHidden());
}

// More than is in memory at one time: one line is, and all lines together are.
TEST_F(SceneFileTest, ReadsAndWritesBeyondOnePieceOfTheFile) {
    auto* const tri = new TriObject;
    for (int i = 0; i < 150'000; ++i)
        tri->GetMesh().verts.Append(Point3{i / 7.0, std::sin(i), -1.0 * i});
    host.CreateObjectNode(tri, "large");
    for (int i = 0; i < 20'000; ++i)
        addNode(("a node of many with a long name, number " + std::to_string(i)).c_str());
    const std::string text = core.sceneText();
    ASSERT_GT(text.size(), 5'000'000u);
    const TemporaryFolder folder;
    const std::string path = folder.file(u8"large.kiln");
    ASSERT_TRUE(core.saveScene(path));
    EXPECT_EQ(readAll(path), text);
    const kiln::ImportResult result = core.loadScene(path);
    ASSERT_TRUE(result) << result.message;
    EXPECT_EQ(core.sceneText(), text);

    // Places are told from the beginning of the file.
    std::string bad = text;
    bad.replace(bad.rfind("\"wire\":"), 7, "\"wird\":");
    const std::size_t last = bad.rfind("{\"name\"");
    const std::string line = std::to_string(
        1 + std::count(bad.begin(), bad.begin() + static_cast<std::ptrdiff_t>(last), '\n'));
    EXPECT_THAT(
        core.loadSceneText(bad, "a.kiln").message,
        StartsWith("a.kiln: is damaged at nodes[20000]: \"wire\" is missing (line " + line + ")"));
    bad[last + 2] = '\n';
    EXPECT_THAT(core.loadSceneText(bad, "a.kiln").message,
                StartsWith("a.kiln: is damaged: parse error at line " + line +
                           ", column 3: a text has no"));
}

// Whoever writes a scene in the background writes so much at a time.
TEST_F(SceneFileTest, WritesALargeMeshInSmallPieces) {
    auto* const tri = new TriObject;
    Mesh& mesh = tri->GetMesh();
    for (int i = 0; i < 8'192; ++i) {
        mesh.verts.Append(Point3{i / 7.0, 1.0 * i, -1.0 / (i + 1)});
        mesh.normals.Append(Point3f(0, 0, static_cast<float>(i)));
    }
    for (DWORD i = 0; i < 12'289; ++i) {
        mesh.faces.Append(Face{{i % 8'192, i % 8'191, i % 8'190}, EDGE_A, i});
        mesh.tvFaces.Append(TVFace{{0, 0, 0}});
    }
    mesh.tVerts.Append(Point3f(0.5F, 1, 0));
    INode* const node = host.CreateObjectNode(tri, "large");
    node->AddAppDataChunk({1, 1}, 1, 1, 2, hostBlock("ok"));

    std::string text;
    kiln::SceneText pieces;
    kiln::SceneText::Progress progress;
    do {
        std::string piece;
        progress = pieces.next(piece);
        EXPECT_LT(piece.size(), 300'000u);
        text += piece;
    } while (progress == kiln::SceneText::Progress::kMore);
    ASSERT_EQ(progress, kiln::SceneText::Progress::kComplete);
    const Mesh before = mesh;
    ASSERT_TRUE(core.loadSceneText(text, "large.kiln"));
    INode* const only = host.GetRootNode()->GetChildNode(0);
    const auto* const loaded = static_cast<TriObject*>(only->GetObjectRef());
    const auto same = [](const auto& one, const auto& other) {
        return std::ranges::equal(one, other);
    };
    EXPECT_TRUE(same(loaded->GetMesh().verts, before.verts));
    EXPECT_TRUE(same(loaded->GetMesh().faces, before.faces));
    EXPECT_TRUE(same(loaded->GetMesh().tVerts, before.tVerts));
    EXPECT_TRUE(same(loaded->GetMesh().tvFaces, before.tvFaces));
    EXPECT_TRUE(same(loaded->GetMesh().normals, before.normals));
    EXPECT_TRUE(loaded->GetMesh().colors.IsEmpty());
    EXPECT_EQ(only->NumAppDataChunks(), 1);
}

TEST_F(SceneFileTest, SaysWhatKindOfFailureItIs) {
    fillScene();
    const std::string good = core.sceneText();
    const TemporaryFolder folder;
    const auto causeOf = [&](const std::string& text) {
        return core.loadSceneText(text, "a").cause;
    };
    EXPECT_EQ(causeOf(good.substr(0, good.size() / 2)), ImpExpCause::kTruncated);
    EXPECT_EQ(causeOf(""), ImpExpCause::kTruncated);
    EXPECT_EQ(causeOf(good + "x"), ImpExpCause::kDamaged);
    EXPECT_EQ(causeOf("[]"), ImpExpCause::kDamaged);
    std::string newer = good;
    newer.replace(newer.find("\"version\": 1"), 12, "\"version\": 9");
    EXPECT_EQ(causeOf(newer), ImpExpCause::kVersion);
    EXPECT_EQ(core.loadScene(folder.file(u8"none.kiln")).cause, ImpExpCause::kUnreadable);
    EXPECT_EQ(core.loadScene(folder.path().string()).cause, ImpExpCause::kUnreadable);
    EXPECT_EQ(core.saveScene(folder.file(u8"none/a.kiln")).cause, ImpExpCause::kUnwritable);
    EXPECT_EQ(core.sceneText(), good) << "the scene stays as it was";
}

TEST_F(SceneFileTest, CancellingLeavesSceneAndFile) {
    for (int i = 0; i < 20'000; ++i) addNode(("n" + std::to_string(i)).c_str());
    const TemporaryFolder folder;
    const std::string path = folder.file(u8"a.kiln");
    double last = 0;
    int asked = 0;
    const kiln::ProgressFunction count = [&](double fraction, const char*) {
        EXPECT_GE(fraction, last);
        EXPECT_LE(fraction, 1.0);
        last = fraction;
        return ++asked > 0;
    };
    ASSERT_TRUE(core.saveScene(path, count));
    EXPECT_GT(asked, 2);
    EXPECT_EQ(last, 1.0);
    const std::string saved = readAll(path);
    addNode("another");
    const std::string scene = core.sceneText();
    for (const int after : {1, 3}) {
        asked = 0;
        const kiln::ProgressFunction cancel = [&](double, const char*) { return ++asked < after; };
        EXPECT_EQ(core.saveScene(path, cancel).code, IMPEXP_CANCEL);
        asked = 0;
        EXPECT_EQ(core.loadScene(path, cancel).code, IMPEXP_CANCEL);
        EXPECT_TRUE(core.isModified());
        EXPECT_EQ(readAll(path), saved);
        EXPECT_EQ(core.sceneText(), scene);
        EXPECT_EQ(folder.fileCount(), 1u);
    }
    last = asked = 0;
    ASSERT_TRUE(core.loadScene(path, count));
    EXPECT_GT(last, 0.5);
}

TEST_F(SceneFileTest, KnowsWhenSomebodyElseHasChangedTheFile) {
    const TemporaryFolder folder;
    const std::string path = folder.file(u8"a.kiln"), other = folder.file(u8"b.kiln");
    const auto overwrite = [](const std::string& file, const std::string& text) {
        std::ofstream(std::filesystem::path(std::u8string(file.begin(), file.end())),
                      std::ios::binary)
            << text;
    };
    const auto touch = [](const std::string& file) {
        const std::filesystem::path touched(std::u8string(file.begin(), file.end()));
        std::filesystem::last_write_time(
            touched, std::filesystem::last_write_time(touched) + std::chrono::seconds(5));
    };
    addNode("one");
    EXPECT_FALSE(core.fileWasChanged(path)) << "there is none";
    ASSERT_TRUE(core.saveScene(path));
    ASSERT_TRUE(core.saveScene(other));
    ASSERT_TRUE(core.loadScene(path));
    for (int way = 0; way < 2; ++way) {  // opened, then saved
        std::string text = readAll(path);
        EXPECT_FALSE(core.fileWasChanged(path));
        touch(path);
        EXPECT_FALSE(core.fileWasChanged(path)) << "the content is the same";
        overwrite(path, text + " ");
        EXPECT_TRUE(core.fileWasChanged(path)) << "longer";
        text[text.size() - 10] ^= 1;
        overwrite(path, text);
        touch(path);
        EXPECT_TRUE(core.fileWasChanged(path)) << "of the same length";
        EXPECT_FALSE(core.fileWasChanged(other)) << "not the file of this scene";
        ASSERT_TRUE(core.saveScene(path));
        EXPECT_FALSE(core.fileWasChanged(path));
    }
    ASSERT_FALSE(core.loadScene(folder.file(u8"none.kiln")));
    overwrite(path, "{}");
    EXPECT_TRUE(core.fileWasChanged(path))
        << "a scene that could not be opened has changed nothing";
    std::filesystem::remove(std::filesystem::path(std::u8string(path.begin(), path.end())));
    EXPECT_FALSE(core.fileWasChanged(path)) << "nothing would be overwritten";
    overwrite(path, "{}");
    core.newScene();
    EXPECT_FALSE(core.fileWasChanged(path)) << "not the file of this scene";
}

}  // namespace
