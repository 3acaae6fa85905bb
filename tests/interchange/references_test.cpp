// What a scene shows of the files that it refers to.
#include "../support/temporaryfolder.h"
#include "fltbytes.h"
#include "fltscene.h"
#include "importscene.h"
#include "picturefiles.h"

#include <base/paths.h>
#include <gmock/gmock.h>
#include <interchange/filereference.h>
#include <kiln/host/searchfolders.h>
#include <kiln/subtree.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltlinestyle.h>
#include <quillon/fltobject.h>
#include <quillon/fltopcode.h>
#include <quillon/fltsurface.h>
#include <quillon/flttext.h>
#include <quillon/fltxref.h>
#include <render/renderer.h>
#include <render/scenefeed.h>
#include <tessera/aviaryutil.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <set>

KILN_PLUGIN_EXPORT const char* LibDescription();
KILN_PLUGIN_EXPORT int LibNumberClasses();
KILN_PLUGIN_EXPORT ClassDesc* LibClassDesc(int index);
KILN_PLUGIN_EXPORT DWORD LibVersion();

namespace {

/// A square of 4 by 4 about (`x`, 0, 0), below a group.
void addSquare(FltBytes& file, std::string_view group, std::initializer_list<std::uint32_t> list) {
    file.group(group).push().polygon("p", list).pop();
}

FltBytes model(std::initializer_list<std::string_view> references, double x = 0) {
    FltBytes file;
    file.palette({{x - 2, -2, 0},
                  {x + 2, -2, 0},
                  {x + 2, 2, 0},
                  {x - 2, 2, 0},
                  {x + 18, -2, 0},
                  {x + 22, -2, 0},
                  {x + 22, 2, 0},
                  {x + 18, 2, 0}});
    file.push();
    addSquare(file, "here", {0, 1, 2, 3});
    addSquare(file, "there", {4, 5, 6, 7});
    for (const std::string_view name : references)
        file.record(kFltExternalRef, Bytes().field(name, 200).zeros(12));
    return file.pop(), file;
}

class ReferencesTest : public ImportScene {
protected:
    ReferencesTest() {
        static const kiln::Status registered = kiln::registerModule(
            "FltInterchange", {&LibDescription, &LibNumberClasses, &LibClassDesc, &LibVersion});
        EXPECT_TRUE(registered.ok()) << registered.message();
        camera.setPictureSize(kSide, kSide);
        canvas.resize(kSide, kSide);
        options.mode = render::DrawMode::kShaded;
        options.grid = options.axes = options.helpers = false;
        EXPECT_TRUE(camera.lookFrom({10, 0, 80}, {10, 0.01, 0}));
    }

    /// Imports a file with these references, each moved 10 along y from the one before.
    INode* open(std::initializer_list<std::string_view> references) {
        FltBytes file;
        file.push();
        float y = 0;
        for (const std::string_view name : references) {
            file.record(kFltExternalRef, Bytes().field(name, 200).zeros(12));
            file.matrix(0, y, 0);
            y += 10;
        }
        file.pop();
        EXPECT_TRUE(core.importFile(folder.write(u8"main.flt", file)).ok());
        return host.GetRootNode()->GetChildNode(0);
    }
    void draw() {
        feed.build(host);
        feed.readFiles(host, [](const std::string&) { return true; });
        renderer.draw(feed.model(), camera, options, canvas);
    }
    INode* nodeAt(double x, double y) const {
        const auto place = camera.project({x, y, 0});
        return place ? feed.nodeOf(
                           canvas.item(static_cast<int>(place->x), static_cast<int>(place->y)))
                     : nullptr;
    }

    static constexpr int kSide = 240;
    const TemporaryFolder folder;
    render::SceneFeed feed;
    render::Camera camera;
    render::Canvas canvas;
    render::Renderer renderer;
    render::RenderOptions options;
};

TEST_F(ReferencesTest, FilesAreShownWhereTheReferenceStandsAndSelectedAsAWhole) {
    std::filesystem::create_directory(folder.path() / "Models");
    folder.write(u8"Models/House.FLT", model({"inner.flt"}));
    folder.write(u8"Models/inner.flt", model({}, 40));
    INode* const top = open({"models\\house.flt", "MODELS/house.flt<there>"});
    INode* const first = top->GetChildNode(0);
    INode* const second = top->GetChildNode(1);
    tessera::aviaryUtil().SetLastImport("before");
    const int nodes = host.GetNodeCount();
    const std::size_t steps = core.history().stepCount();
    core.setModified(false);
    draw();
    EXPECT_EQ(nodeAt(0, 0), first);
    EXPECT_EQ(nodeAt(20, 0), first);
    EXPECT_EQ(nodeAt(40, 0), first) << "a file in a file, found beside it";
    EXPECT_EQ(nodeAt(20, 10), second) << "the part that is named, where its file has it";
    EXPECT_EQ(nodeAt(0, 10), nullptr) << "without the rest of the file";
    EXPECT_EQ(nodeAt(10, 0), nullptr);
    EXPECT_EQ(feed.counts().faces, 5u);
    EXPECT_EQ(feed.counts().nodes, nodes);
    EXPECT_THAT(feed.takeFailures(), testing::IsEmpty());
    // Looking at files leaves the scene as it is.
    EXPECT_EQ(host.GetNodeCount(), nodes);
    EXPECT_EQ(core.history().stepCount(), steps);
    EXPECT_FALSE(core.isModified());
    EXPECT_STREQ(tessera::aviaryUtil().GetLastImport(), "before");
    // What changes of a reference shows; the files are not read again.
    first->SetNodeTM(0, TransMatrix({0, -10, 0}));
    feed.build(host);
    EXPECT_THAT(feed.unread(), testing::IsEmpty());
    renderer.draw(feed.model(), camera, options, canvas);
    EXPECT_EQ(nodeAt(0, -10), first);
    EXPECT_EQ(nodeAt(0, 0), nullptr);
    core.newScene();
    draw();
    EXPECT_TRUE(feed.model().box().empty());
}

/// A square of 4 by 4 about (10, 0, 0), below a joint at the origin.
FltBytes arm() {
    FltBytes file = FltBytes().palette({{8, -2, 0}, {12, -2, 0}, {12, 2, 0}, {8, 2, 0}});
    Bytes joint;
    joint.field("joint", 8).zeros(4);
    for (const double value : {0., 0., 0., 1., 0., 0., 0., 1., 0.}) joint.f64(value);
    file.push().record(kFltDof, joint.zeros(288 + 8));
    return file.push().polygon("p", {0, 1, 2, 3}).pop().pop(), file;
}

// A file is there once, however often it is shown: all of its places move together.
TEST_F(ReferencesTest, JointsInFilesMoveWhereverTheFileIsShown) {
    folder.write(u8"arm.flt", arm());
    folder.write(u8"hall.flt", model({"arm.flt"}, 60));
    INode* const top = open({"arm.flt", "arm.flt", "hall.flt"});
    draw();
    std::set<INode*> joints;
    for (INode* const root : feed.fileTops())
        ForEachInSubtree(root, [&](INode& node) {
            NodeJoint joint;
            if (GetNodeLookSource()->GetJoint(&node, joint)) joints.insert(&node);
        });
    ASSERT_EQ(joints.size(), 1u);
    const auto pixels = [&] {
        renderer.draw(feed.model(), camera, options, canvas);
        return std::vector<render::Color>(canvas.pixels(), canvas.pixels() + kSide * kSide);
    };
    const auto atRest = pixels();
    const render::Box box = feed.model().box();
    const render::FilePoses turned{{*joints.begin(), {0, 0, 0, 0, 0, 90, 1, 1, 1}}};
    feed.setPoses({}, turned);
    ASSERT_TRUE(feed.followPoses(host));
    const auto moved = pixels();
    EXPECT_EQ(nodeAt(10, 0), nullptr);
    EXPECT_EQ(nodeAt(0, 10), top->GetChildNode(0));
    EXPECT_EQ(nodeAt(0, 20), top->GetChildNode(1));
    EXPECT_EQ(nodeAt(0, 30), top->GetChildNode(2)) << "a file in a file";
    EXPECT_GT(feed.model().box().max.y, box.max.y + 8) << "or it would be left out at the rim";
    feed.build(host);
    EXPECT_TRUE(pixels() == moved) << "nor does reading the scene put them back";
    render::SceneFeed fresh;
    fresh.setPoses({}, turned);
    fresh.build(host);
    EXPECT_EQ(fresh.model().box(), feed.model().box());
    renderer.draw(fresh.model(), camera, options, canvas);
    EXPECT_TRUE(std::equal(moved.begin(), moved.end(), canvas.pixels())) << "as read so";
    feed.setPoses({});
    ASSERT_TRUE(feed.followPoses(host));
    EXPECT_TRUE(pixels() == atRest);
    feed.setPoses({}, turned);
    feed.build(host);
    EXPECT_TRUE(pixels() == moved);
    EXPECT_EQ(feed.model().box(), fresh.model().box());
}

TEST_F(ReferencesTest, FilesThatChangeOnDiskAreReadAgain) {
    const auto write = [&](double x, int hours) {
        const std::string path = folder.write(u8"model.flt", model({}, x));
        const auto file = base::pathFrom(path);
        std::filesystem::last_write_time(
            file, std::filesystem::last_write_time(file) + std::chrono::hours(hours));
    };
    write(0, 0);
    INode* const node = open({"model.flt", "later.flt"})->GetChildNode(0);
    draw();
    EXPECT_EQ(nodeAt(0, 0), node);
    EXPECT_FALSE(feed.noticeChanges());
    write(4, 1);
    draw();
    EXPECT_EQ(nodeAt(0, 0), node) << "nobody has looked";
    EXPECT_TRUE(feed.noticeChanges());
    draw();
    EXPECT_EQ(nodeAt(0, 0), nullptr);
    EXPECT_EQ(nodeAt(4, 0), node);
    folder.write(u8"later.flt", model({}));
    EXPECT_TRUE(feed.noticeChanges()) << "one that was missing";
    // A user who has all of them read again need not wait for another time of a file.
    draw();
    write(8, 1);
    EXPECT_TRUE(feed.follow(host, {}));
    core.forgetFileScenes();
    EXPECT_FALSE(feed.follow(host, {})) << "what it shows of files is gone";
    draw();
    EXPECT_EQ(nodeAt(8, 0), node);
}

// A file with red as its color 1 and a scene with blue, each with a material that shines.
TEST_F(ReferencesTest, FlagsOfAReferenceSayWhosePalettesCount) {
    const auto palettes = [](FltBytes& to, std::uint32_t color, std::array<float, 3> shine) {
        Bytes colors;
        colors.zeros(128).u32(0xFF000000).u32(color).zeros(4 * 1022);
        to.record(kFltColorPalette, colors);
        Bytes material;
        material.u32(0).zeros(16);
        for (int i = 0; i < 9; ++i) material.f32(0);
        for (const float part : shine) material.f32(part);
        to.record(kFltMaterial, material.f32(0).f32(1).zeros(4));
    };
    const auto square = [](FltBytes& to, std::uint32_t first, std::uint8_t lightMode,
                           unsigned material) {
        Bytes body;
        body.field("f", 8).zeros(14).u16(0xFFFF).u16(0xFFFF).u16(material).zeros(12);
        body.u32(kFltSurfaceNoAlternateColor).u8(lightMode).zeros(15).u16(0xFFFF).zeros(2);
        body.u32(127 + 128).zeros(8);
        to.record(kFltFace, body).push().list({first, first + 1, first + 2, first + 3}).pop();
    };
    const auto points = [](FltBytes& to) {
        to.palette({{-2, -2, 0},
                    {2, -2, 0},
                    {2, 2, 0},
                    {-2, 2, 0},
                    {18, -2, 0},
                    {22, -2, 0},
                    {22, 2, 0},
                    {18, 2, 0}});
    };
    FltBytes inner;
    palettes(inner, 0xFF0000FF, {1, 0, 0});
    points(inner);
    inner.push();
    square(inner, 0, 0, 0xFFFF);
    square(inner, 4, 2, 0);
    folder.write(u8"inner.flt", inner.pop());
    FltBytes outer;
    palettes(outer, 0xFF00FF00, {0, 1, 0});
    outer.push();
    outer.record(kFltExternalRef, Bytes().field("inner.flt", 200).zeros(12));
    folder.write(u8"outer.flt", outer.pop());
    FltBytes passing;
    palettes(passing, 0xFF00FF00, {0, 1, 0});
    passing.push().record(
        kFltExternalRef, Bytes().field("inner.flt", 200).zeros(4).u32(kFltOverrideColors).zeros(4));
    folder.write(u8"passing.flt", passing.pop());
    folder.write(u8"again.flt", inner);
    FltBytes file;
    palettes(file, 0xFFFF0000, {0, 0, 1});
    file.push();
    float y = 0;
    for (const auto& [name, flags] : {std::pair{"inner.flt", 0U},
                                      {"inner.flt", 0U + kFltOverrideColors},
                                      {"inner.flt", 0U + kFltOverrideMaterials},
                                      {"outer.flt", 0U + kFltOverrideColors},
                                      {"passing.flt", 0U + kFltOverrideColors},
                                      {"again.flt", 0U}}) {
        file.record(kFltExternalRef, Bytes().field(name, 200).zeros(4).u32(flags).zeros(4));
        file.matrix(0, y, 0);
        y += 10;
    }
    EXPECT_TRUE(core.importFile(folder.write(u8"main.flt", file.pop())).ok());
    draw();
    const auto strongest = [&](double x, double row) {
        const auto place = *camera.project({x, 10 * row, 0});
        const render::Color color =
            canvas.pixel(static_cast<int>(place.x), static_cast<int>(place.y));
        const std::array parts = {color >> 16 & 0xFF, color >> 8 & 0xFF, color & 0xFF};
        return "rgb"[std::ranges::max_element(parts) - parts.begin()];
    };
    EXPECT_EQ(strongest(0, 0), 'r') << "its own";
    EXPECT_EQ(strongest(20, 0), 'r');
    EXPECT_EQ(strongest(0, 1), 'b') << "the scene's colors";
    EXPECT_EQ(strongest(20, 1), 'r') << "and its own material";
    EXPECT_EQ(strongest(0, 2), 'r');
    EXPECT_EQ(strongest(20, 2), 'b') << "the scene's material";
    EXPECT_EQ(strongest(0, 3), 'r') << "a reference within that says nothing has it as it is";
    camera.lookFrom({10, 30, 80}, {10, 30.01, 0});
    draw();
    EXPECT_EQ(strongest(0, 4), 'b') << "one that says so passes on what it was given";
    EXPECT_EQ(strongest(0, 5), 'r') << "and what comes behind has its own again";
}

// The file's own: a red picture, thin lines and a light for all sides; the scene's: a blue picture,
// wide lines and a light that shines downwards.
TEST_F(ReferencesTest, FlagsCountForPicturesLinesAndLightPointsEach) {
    const auto palettes = [&](bool isInner) {
        const char* const picture = isInner ? "red.rgb" : "blue.rgb";
        const std::string bytes = samples::sgiPicture(
            [&](std::size_t, std::size_t) { return isInner ? 0xFFFF0000U : 0xFF0000FFU; }, 3);
        folder.write(isInner ? u8"red.rgb" : u8"blue.rgb",
                     std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
        samples::FltScene scene;
        scene.colors = {{255, 255, 255}};
        scene.addTexture(picture);
        FltLineStyle line;
        line.index = 1;
        line.width = isInner ? 1 : 17;
        scene.addPalette(line);
        FltLightPointAppearance light;
        light.intensity = 1;
        light.minPixelSize = 8;
        light.directionalType = isInner ? 0 : 1;
        scene.addPalette(light);
        return scene;
    };
    samples::FltScene inner = palettes(true);
    samples::Node& object = inner.root.add(FltObject());
    object.addFace({{-2, -2, 0}, {2, -2, 0}, {2, 2, 0}, {-2, 2, 0}}, 0, 0);
    object.addFace({{18, -2, 0}, {22, -2, 0}, {22, 2, 0}, {18, 2, 0}}, 0)
        .changeFace([](FltFace& face) {
            face.drawType = kFltClosedOutline;
            face.lineStyleIndex = 1;
        });
    FltIndexedLightPoint light;
    light.appearanceIndex = 0;
    light.animationIndex = -1;
    inner.root.add(light).directed({0, 0, -1}).setPoints({{10, 0, 0}}, 0);
    samples::writeSceneFile(inner, folder.path() / "inner.flt");
    samples::FltScene outer = palettes(false);
    float y = 0;
    for (const std::uint32_t flags : {0U, 0U + kFltOverrideTextures, 0U + kFltOverrideLineStyles,
                                      0U + kFltOverrideLightPoints}) {
        FltXRef reference;
        fltSetText(reference.fileName, "inner.flt");
        reference.flags = static_cast<std::int32_t>(flags);
        outer.root.add(reference).transform(
            {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, y, 0, 1}}});
        y += 10;
    }
    samples::writeSceneFile(outer, folder.path() / "main.flt");
    ASSERT_TRUE(core.importFile(folder.file("main.flt")).ok());
    draw();
    EXPECT_THAT(feed.takeFailures(), testing::IsEmpty());
    for (int row = 0; row < 4; ++row) {
        const auto place = *camera.project({0, 10. * row, 0});
        const render::Color color =
            canvas.pixel(static_cast<int>(place.x), static_cast<int>(place.y));
        EXPECT_EQ((color & 0xFF) > (color >> 16), row == 1) << row;
        EXPECT_EQ(nodeAt(16.8, 10. * row) != nullptr, row == 2) << row;
        EXPECT_EQ(nodeAt(10, 10. * row) == nullptr, row == 3) << row;
    }
}

TEST_F(ReferencesTest, WhatIsMissingOrDamagedIsMarkedAndSaidOnce) {
    folder.write(u8"damaged.flt", Bytes().text("no such file"));
    folder.write(u8"good.flt", model({}));
    INode* const top = open({"none.flt", "damaged.flt", "good.flt<nowhere>", "picture.rgb"});
    folder.write(u8"picture.rgb", Bytes().u8(1));
    draw();
    std::vector<std::string> failures = feed.takeFailures();
    EXPECT_THAT(failures, testing::UnorderedElementsAre(
                              testing::HasSubstr("none.flt"), testing::HasSubstr("damaged.flt"),
                              testing::HasSubstr("nowhere"), testing::HasSubstr("picture.rgb")));
    // Crossed boxes, which picking finds.
    EXPECT_EQ(
        std::ranges::count(feed.model().marks(), render::MarkKind::kMissing, &render::Mark::kind),
        4);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(nodeAt(0, 10. * i), top->GetChildNode(i));
    draw();
    EXPECT_THAT(feed.takeFailures(), testing::IsEmpty());
}

TEST_F(ReferencesTest, TheUsersFoldersAreSearchedBehindThatOfTheFile) {
    for (const char* const name : {"library", "Other"})
        std::filesystem::create_directory(folder.path() / name);
    folder.write(u8"library/HOUSE.flt", model({}, 40));
    folder.write(u8"Other/house.flt", model({}, 60));
    INode* const house = open({"house.flt"})->GetChildNode(0);
    draw();
    EXPECT_THAT(feed.takeFailures(), testing::SizeIs(1)) << "it is in no folder that is searched";
    kiln::setSearchFolders(core, {"", folder.file("library"), folder.file("Other")});
    draw();
    EXPECT_EQ(nodeAt(40, 0), house) << "the first of them, whatever the case of the letters";
    // Another order, and one that is beside the file that names it.
    kiln::setSearchFolders(core, {folder.file("Other"), folder.file("library")});
    feed.clear();
    draw();
    EXPECT_EQ(nodeAt(40, 0), nullptr);
    folder.write(u8"house.flt", model({}));
    feed.clear();
    draw();
    EXPECT_EQ(nodeAt(0, 0), house);
    kiln::setSearchFolders(core, {});
    EXPECT_THAT(SearchFolders(host), testing::ElementsAre(folder.file("")));
}

TEST_F(ReferencesTest, FilesThatShowEachOtherEnd) {
    folder.write(u8"a.flt", model({"b.flt", "a.flt"}));
    folder.write(u8"b.flt", model({"a.flt"}, 40));
    INode* const top = open({"a.flt", "b.flt"});
    draw();
    EXPECT_EQ(nodeAt(0, 0), top->GetChildNode(0));
    EXPECT_EQ(nodeAt(40, 0), top->GetChildNode(0));
    EXPECT_EQ(nodeAt(0, 10), top->GetChildNode(1)) << "each is shown within the other";
    // The first without what it is in itself; the second with the first as that was made.
    EXPECT_EQ(feed.counts().faces, (2u + 2) + (2u + 4));
}

TEST(FileReferenceTest, TakesTheNameOfANodeFromTheEnd) {
    using interchange::parsedReference;
    for (const auto& [name, file, part] : {std::tuple{"a/b.flt", "a/b.flt", ""},
                                           {"b.flt<oak 1>", "b.flt", "oak 1"},
                                           {"b.flt <oak", "b.flt", "oak"},
                                           {"b.flt<>", "b.flt", ""},
                                           {"<oak>", "", "oak"}}) {
        EXPECT_EQ(parsedReference(name).file, file) << name;
        EXPECT_EQ(parsedReference(name).part, part) << name;
    }
}

}  // namespace
