#include "../script/enginefixture.h"
#include "../support/temporaryfolder.h"

#include <base/paths.h>
#include <render/pictureverb.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace {

class PictureVerbTest : public EngineTest {
protected:
    PictureVerbTest() { render::addPictureVerb(engine); }

    std::string path(const char8_t* name) const { return folder_.file(name); }
    static std::string bytesOf(const std::string& path) {
        std::ifstream file(base::pathFrom(path), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// What the verb writes, called with these arguments after the path.
    std::string picture(const std::string& arguments) {
        const std::string file = path(u8"图 picture.png");
        EXPECT_EQ(good("picture \"" + file + "\" " + arguments), '"' + file + '"');
        return bytesOf(file);
    }

    const TemporaryFolder folder_;
};

TEST_F(PictureVerbTest, DrawsTheSceneInTheSizeAndFromTheSideThatAreAskedFor) {
    good("createBox length:40");
    const std::string picture1 = picture("width:320 height:200");
    EXPECT_EQ(picture1.substr(0, 8), "\x89PNG\r\n\x1A\n");
    EXPECT_EQ(picture1.substr(16, 8), std::string("\0\0\x01\x40\0\0\0\xC8", 8));
    EXPECT_EQ(picture("width:320 height:200 view:\"Perspective\""), picture1);
    std::vector<std::string> others = {picture1};
    for (const char* const arguments :
         {"view:\"top\"", "view:\"front\"", "view:\"left\"", "mode:\"edges\"", "mode:\"wireframe\"",
          "eye:[90, 0, 5]", "eye:[90, 0, 5] target:[0, 9, 0]"}) {
        others.push_back(picture("width:320 height:200 " + std::string(arguments)));
        EXPECT_EQ(std::count(others.begin(), others.end(), others.back()), 1) << arguments;
    }
    good("createBox position:[0, 60, 0]");
    EXPECT_NE(picture("width:320 height:200"), picture1) << "of the scene as it is now";
}

/// Shows one picture that is not there on every node with texture coordinates.
class MissingPicture final : public NodeLookSource {
public:
    bool GetLook(INode*, NodeLook& look) noexcept override {
        look.picture = "none.rgb";
        return true;
    }
};

TEST_F(PictureVerbTest, SaysOnceOfASceneWhatIsMissing) {
    const MissingPicture source;
    const auto addSurface = [&] {
        auto* const object = new TriObject;
        Mesh& mesh = object->GetMesh();
        for (const Point3& p : {Point3{0, 0, 0}, Point3{9, 0, 0}, Point3{0, 9, 0}}) {
            mesh.verts.Append(p);
            mesh.tVerts.Append(Point3f{0, 0, 0});
        }
        const DWORD corners[] = {0, 1, 2};
        mesh.AppendPolygon(3, corners);
        mesh.tvFaces.Append(TVFace{{0, 1, 2}});
        host.CreateObjectNode(object, "surface");
    };
    const std::string line = "-- none.rgb: no such picture\n";
    addSurface();
    for (int i = 0; i < 3; ++i) picture("width:64 height:40");
    EXPECT_EQ(printed, line);
    core.newScene();
    addSurface();
    picture("width:64 height:40");
    EXPECT_EQ(printed, line + line);
}

TEST_F(PictureVerbTest, RefusesWhatCannotBeDrawnOrWrittenAndLeavesTheFile) {
    const std::string file = path(u8"old.png");
    folder_.write(u8"old.png", std::vector<std::uint8_t>{1, 2});
    const std::string call = "picture \"" + file + "\" ";
    for (const auto& [arguments, reason] :
         {std::pair{"width:0", "sides of 1 to 8192"},
          {"height:8193", "sides of 1 to 8192"},
          {"view:\"below\"", "\"perspective\", \"top\", \"front\", \"left\""},
          {"mode:\"x\"", "none of"},
          {"time:\"noon\"", "\"any\", \"day\", \"dusk\", \"night\""},
          {"levels:-1", "no distance"},
          {"target:[0, 0, 0]", "needs an eye"},
          {"eye:[1, 2, 3] target:[1, 2, 3]", "the eye is at the target"}})
        EXPECT_THAT(bad(call + arguments), testing::HasSubstr(reason));
    EXPECT_EQ(bytesOf(file), "\1\2");
    EXPECT_THAT(bad("picture \"\""), testing::HasSubstr("needs a name"));
    EXPECT_THAT(bad("picture \"" + path(u8"") + "\""), testing::HasSubstr("cannot write"));
}

TEST_F(PictureVerbTest, MakesThumbnailsOfPicturesAndOfNothingElse) {
    good("createBox length:40");
    picture("width:320 height:200");
    const std::string file = path(u8"图 picture.png"), thumbnail = path(u8"small.png");
    const auto small = [&](const std::string& from, const std::string& side) {
        return good("thumbnail \"" + from + "\" \"" + thumbnail + "\" " + side);
    };
    EXPECT_EQ(small(file, "20"), "#(320, 200)");
    EXPECT_EQ(bytesOf(thumbnail).substr(16, 8), std::string("\0\0\0\x10\0\0\0\x10", 8));
    EXPECT_EQ(small(file, ""), "#(320, 200)");
    const std::string before = bytesOf(thumbnail);
    folder_.write(u8"no.rgb", std::vector<std::uint8_t>{1, 2});
    EXPECT_EQ(small(path(u8"no.rgb"), ""), "undefined");
    EXPECT_EQ(small(path(u8"missing.rgb"), ""), "undefined");
    EXPECT_EQ(bytesOf(thumbnail), before);
}

}  // namespace
