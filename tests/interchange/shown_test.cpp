// What a picture shows of OpenFlight nodes: each of their features changes its pixels.
#include "../support/scenechanges.h"
#include "../support/temporaryfolder.h"
#include "fltbytes.h"
#include "fltscene.h"
#include "importscene.h"
#include "picturefiles.h"

#include <fltkilnutil/kilnflt.h>
#include <interchange/nodelooks.h>
#include <kiln/host/history.h>
#include <kiln/kiln.h>
#include <kiln/undo.h>
#include <quillon/fltdof.h>
#include <quillon/fltface.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlod.h>
#include <quillon/fltobject.h>
#include <quillon/fltswitch.h>
#include <render/renderer.h>
#include <render/scenefeed.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace {

using render::Vec3d;

class ShownTest : public ImportScene {
protected:
    static constexpr int kSide = 240;

    ShownTest() {
        camera.setPictureSize(kSide, kSide);
        canvas.resize(kSide, kSide);
        options.mode = render::DrawMode::kShaded;
        options.grid = options.axes = options.helpers = false;
        seeFrom({0, 0, 50});
    }

    void seeFrom(Vec3d eye) { ASSERT_TRUE(camera.lookFrom(eye, {0, 0, 0})); }

    template <typename Record>
    INode* node(FltNodeKind kind, const Record& record, INode* parent = nullptr) {
        INode* const made = host.CreateObjectNode(new DummyObject, "node");
        if (parent != nullptr) parent->AttachChild(made, false);
        EXPECT_TRUE(fltPutData(made, kind, kFltRevision, record, nullptr));
        return made;
    }

    /// A square face of 6 by 6 around a place, with its front up or, `upright`, towards -y.
    INode* face(INode* parent, Point3 middle, COLORREF color, const FltFace& record = twoSided(),
                bool upright = false) {
        auto* const object = new TriObject;
        Mesh& mesh = object->GetMesh();
        for (const auto& [u, v] : {std::array{-3, -3}, {3, -3}, {3, 3}, {-3, 3}}) {
            const Point3 place =
                upright ? Point3{double(u), 0, double(v)} : Point3{double(u), double(v), 0};
            mesh.verts.Append(middle + place);
        }
        const DWORD corners[] = {0, 1, 2, 3};
        mesh.AppendPolygon(4, corners);
        INode* const made = host.CreateObjectNode(object, "face");
        if (parent != nullptr) parent->AttachChild(made, false);
        made->SetWireColor(color);
        EXPECT_TRUE(fltPutData(made, FltNodeKind::Face, kFltRevision, record, nullptr));
        return made;
    }

    static FltFace twoSided() {
        FltFace record;
        record.drawType = kFltSolidTwoSided;
        return record;
    }

    void draw() {
        feed.build(host);
        renderer.draw(feed.model(), camera, options, canvas);
    }

    /// The node whose pixel is at a place of the world; null for the background.
    INode* nodeAt(Vec3d world, int reach = 0) const {
        const auto place = camera.project(world);
        return place ? feed.nodeOf(canvas.pick(static_cast<int>(place->x),
                                               static_cast<int>(place->y), reach))
                     : nullptr;
    }
    render::Color colorAt(Vec3d world) const {
        const auto place = *camera.project(world);
        return canvas.pixel(static_cast<int>(place.x), static_cast<int>(place.y));
    }
    static unsigned red(render::Color color) { return color >> 16 & 0xFF; }
    static unsigned green(render::Color color) { return color >> 8 & 0xFF; }

    interchange::NodeLooks source;
    render::SceneFeed feed;
    render::Camera camera;
    render::Canvas canvas;
    render::Renderer renderer;
    render::RenderOptions options;
};

TEST_F(ShownTest, SwitchesShowTheChildrenOfTheirCurrentMask) {
    FltSwitch record;
    INode* const top = node(FltNodeKind::Switch, record);
    INode* const inner = node(FltNodeKind::Group, FltObject(), top);
    INode* const left = face(inner, {-10, 0, 0}, 0xFF);
    INode* const right = face(top, {10, 0, 0}, 0xFF);
    const auto shown = [&] {
        EXPECT_TRUE(fltPutRecord(top, record));
        draw();
        return std::pair{nodeAt({-10, 0, 0}) == left, nodeAt({10, 0, 0}) == right};
    };
    EXPECT_EQ(shown(), std::pair(true, true)) << "without masks";
    for (const std::uint32_t word : {1U, 2U, 0U}) record.maskWords.append(word);
    EXPECT_EQ(shown(), std::pair(true, false)) << "with all below the child";
    record.currentMask = 1;
    EXPECT_EQ(shown(), std::pair(false, true));
    record.currentMask = 2;
    EXPECT_EQ(shown(), std::pair(false, false));
    for (const int beyond : {3, -1}) {
        record.currentMask = beyond;
        EXPECT_EQ(shown(), std::pair(true, false)) << "the first mask for " << beyond;
    }
    // With two words for each mask the second begins at the third word, of which the list has one.
    record.wordsPerMask = 2;
    record.currentMask = 1;
    EXPECT_EQ(shown(), std::pair(true, false));
    EXPECT_EQ(feed.counts().nodes, 4) << "what is not shown is still there";
}

TEST_F(ShownTest, ASwitchShowsAChildBeyondTheFirstWordByItsBit) {
    FltSwitch record;
    record.wordsPerMask = 2;
    for (const std::uint32_t word : {0U, 0U, 0U, 2U}) record.maskWords.append(word);
    record.currentMask = 1;
    INode* const top = node(FltNodeKind::Switch, record);
    for (int i = 0; i < 33; ++i) node(FltNodeKind::Group, FltObject(), top);
    INode* const seen = face(top, {0, 0, 0}, 0xFF);
    face(top, {10, 0, 0}, 0xFF);
    draw();
    EXPECT_EQ(nodeAt({0, 0, 0}), seen);
    EXPECT_EQ(nodeAt({10, 0, 0}), nullptr);
    for (int i = 0; i < 40; ++i) node(FltNodeKind::Group, FltObject(), top);
    INode* const without = face(top, {-10, 0, 0}, 0xFF);
    draw();
    EXPECT_NE(nodeAt({-10, 0, 0}), without) << "a child without a bit";
}

TEST_F(ShownTest, DegreesOfFreedomMoveWhatIsBelowThemInTheirFrame) {
    FltDof record;
    INode* const dof = node(FltNodeKind::Dof, record);
    dof->SetNodeTM(0, TransMatrix({0, -5, 0}));
    INode* const square = face(dof, {10, 0, 0}, 0xFF);
    const auto at = [&](Vec3d world) {
        EXPECT_TRUE(fltPutRecord(dof, record));
        draw();
        return nodeAt(world) == square;
    };
    EXPECT_TRUE(at({10, -5, 0})) << "as it was modelled, scales of 0 being none";
    record.yawCurrent = 90;
    EXPECT_TRUE(at({0, 5, 0})) << "about the node's origin";
    EXPECT_EQ(nodeAt({10, -5, 0}), nullptr);
    // Pitch comes first: about x it leaves the square in place, about y after yaw it would not.
    record.pitchCurrent = 180;
    EXPECT_TRUE(at({0, 5, 0}));
    record.rollCurrent = 180;
    EXPECT_TRUE(at({0, -15, 0})) << "roll about y before yaw about z";
    record = {};
    record.pitchCurrent = record.rollCurrent = 90;
    seeFrom({0, -60, 0});
    EXPECT_TRUE(at({0, -5, -10})) << "roll behind pitch";
    seeFrom({0, 0, 50});
    record = {};
    record.origin = {10, 0, 0};
    record.pointOnXAxis = {10, 1, 0};
    record.pointInXyPlane = {9, 0, 0};
    record.xTranslationCurrent = 7;
    EXPECT_TRUE(at({10, 2, 0})) << "along the frame's x axis, which is the world's y";
    record.xTranslationCurrent = 0;
    record.yScaleCurrent = 3;
    EXPECT_TRUE(at({18, -5, 0})) << "scaled about the frame's origin";
    EXPECT_EQ(nodeAt({10, 0, 0}), nullptr) << "along its y axis alone";
    record.pointInXyPlane = record.pointOnXAxis;
    EXPECT_TRUE(at({10, -5, 0})) << "three points in one line are no frame";
    EXPECT_EQ(nodeAt({18, -5, 0}), nullptr);
}

TEST_F(ShownTest, DegreesOfFreedomAreMovedWithoutTheirRecordsAndSetAsAStep) {
    FltDof record;
    record.flags = static_cast<std::int32_t>(0x84000000);
    record.xTranslationMax = 12;
    record.yawMin = -5;
    record.yawIncrement = 0.5;
    record.yScaleCurrent = 1.5;
    INode* const dof = node(FltNodeKind::Dof, record);
    INode* const square = face(dof, {10, 0, 0}, 0xFF);
    NodeJoint joint;
    ASSERT_TRUE(source.GetJoint(dof, joint));
    EXPECT_EQ(joint.values, (NodeJoint::Values{0, 0, 0, 0, 0, 0, 1, 1.5, 1}));
    EXPECT_TRUE(joint.motions[0].isLimited && joint.motions[5].isLimited);
    EXPECT_FALSE(joint.motions[1].isLimited || joint.motions[4].isLimited);
    EXPECT_EQ(joint.motions[0].greatest, 12);
    EXPECT_EQ(joint.motions[5].least, -5);
    EXPECT_EQ(joint.motions[5].step, 0.5);
    EXPECT_FALSE(source.GetJoint(square, joint) || source.GetJoint(nullptr, joint));

    NodeJoint::Values values = joint.values;
    values[5] = 90;
    feed.setPoses({{dof->GetHandle(), values}});
    draw();
    EXPECT_EQ(nodeAt({0, 15, 0}), square);
    const auto read = [&] {
        FltDof now;
        EXPECT_TRUE(fltGetRecord(dof, now));
        return now;
    };
    EXPECT_EQ(read().yawCurrent, 0) << "the record says what it said";
    values[1] = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(source.SetJoint(dof, values));
    values[1] = 0;
    EXPECT_FALSE(source.SetJoint(square, values) || source.SetJoint(nullptr, values));
    core.history().endCommand();
    {
        UndoScope step("set");
        ASSERT_TRUE(source.SetJoint(dof, values));
        step.Commit();
    }
    EXPECT_EQ(read().yawCurrent, 90);
    EXPECT_EQ(read().yScaleCurrent, 1.5);
    EXPECT_EQ(read().xScaleCurrent, 0) << "what says nothing goes on doing so";
    feed.setPoses({});
    draw();
    EXPECT_EQ(nodeAt({0, 15, 0}), square);
    core.history().undo();
    EXPECT_EQ(read().yawCurrent, 0);
}

TEST_F(ShownTest, LevelsOfDetailShowInTheirRangeOfTheEye) {
    FltLod record;
    record.switchOutDistance = 40;
    record.switchInDistance = 50;
    INode* const outer = node(FltNodeKind::Lod, record);
    INode* const square = face(outer, {0, 0, 0}, 0xFF);
    const auto shownFrom = [&](double height) {
        seeFrom({0, 0, height});
        draw();
        return nodeAt({0, 0, 0}) == square;
    };
    EXPECT_TRUE(shownFrom(60)) << "all levels show where the eye does not choose";
    options.levelsByEye = true;
    EXPECT_FALSE(shownFrom(60));
    EXPECT_TRUE(shownFrom(49.9));
    EXPECT_TRUE(shownFrom(40.1));
    EXPECT_FALSE(shownFrom(39.9));
    record.flags = FltLod::kFrozenCenter;
    record.centerZ = -15;
    ASSERT_TRUE(fltPutRecord(outer, record));
    EXPECT_TRUE(shownFrom(30)) << "to the frozen centre";
    EXPECT_FALSE(shownFrom(50));
    square->Hide(true);
    INode* const other = face(node(FltNodeKind::Lod, record), {0, 0, 0}, 0xFF);
    seeFrom({0, 0, 50});
    draw();
    EXPECT_EQ(nodeAt({0, 0, 0}), other) << "the preview, which hides whole levels, comes first";
}

// Disabled in its record, it is dark where nothing else shines; the last light is not replaced by
// the viewer's lamp while another one is on.
TEST_F(ShownTest, ADisabledSunIsDarkAtOnce) {
    FltFace lit = twoSided();
    lit.lightMode = 2;  // by lights, with the color of the face
    face(nullptr, {0, 0, 0}, 0xFFFFFF, lit);
    const auto lightFrom = [&](const Matrix3& place) {
        INode* const light = host.CreateObjectNode(new GenLight(DIR_LIGHT_CLASS_ID), "sun");
        light->SetNodeTM(0, place);
        return light;
    };
    INode* const sun = lightFrom(TransMatrix({0, 0, 100}));
    ASSERT_TRUE(fltEnsureKind(sun, FltNodeKind::LightSource, kFltRevision));
    lightFrom(RotAngleAxisMatrix({1, 0, 0}, 3.14159265) * TransMatrix({0, 0, -100}));
    FltLightSource record;
    const auto brightness = [&](bool enabled) {
        record.flags = enabled ? static_cast<std::int32_t>(FltLightSource::kEnabled) : 0;
        SceneChanges changes;
        EXPECT_TRUE(fltPutRecord(sun, record));
        EXPECT_EQ(changes.takeRedraws(), 1);
        draw();
        return red(colorAt({0, 0, 0}));
    };
    const unsigned shining = brightness(true);
    EXPECT_GT(shining, brightness(false) + 60);
    EXPECT_EQ(brightness(true), shining);
}

TEST_F(ShownTest, ObjectsShowInTheirHoursAndLetThrough) {
    FltObject record;
    record.flags = static_cast<std::int32_t>(FltObject::kNotAtNight);
    INode* const object = node(FltNodeKind::Object, record);
    INode* const square = face(object, {0, 0, 0}, 0xFFFFFF);
    const auto shownAt = [&](render::TimeOfDay time) {
        options.time = time;
        EXPECT_TRUE(fltPutRecord(object, record));
        draw();
        return nodeAt({0, 0, 0}) == square;
    };
    using render::TimeOfDay;
    EXPECT_TRUE(shownAt(TimeOfDay::kAny) && shownAt(TimeOfDay::kDay) && shownAt(TimeOfDay::kDusk));
    EXPECT_FALSE(shownAt(TimeOfDay::kNight));
    record.flags = static_cast<std::int32_t>(FltObject::kNotByDay | FltObject::kNotAtDusk);
    EXPECT_TRUE(shownAt(TimeOfDay::kNight));
    EXPECT_FALSE(shownAt(TimeOfDay::kDay) || shownAt(TimeOfDay::kDusk));
    record.flags = static_cast<std::int32_t>(FltObject::kShadow);
    EXPECT_TRUE(shownAt(TimeOfDay::kDay)) << "a shadow of the sun";
    EXPECT_FALSE(shownAt(TimeOfDay::kNight));

    options.time = TimeOfDay::kAny;
    record = {};
    ASSERT_TRUE(fltPutRecord(object, record));
    draw();
    const render::Color solid = colorAt({0, 0, 0});
    square->Hide(true);
    draw();
    const render::Color sky = colorAt({0, 0, 0});
    square->Hide(false);
    record.transparency = static_cast<std::int16_t>(0x8000);
    ASSERT_TRUE(fltPutRecord(object, record));
    draw();
    EXPECT_NEAR(red(colorAt({0, 0, 0})), (red(solid) + red(sky)) / 2, 3);
    record.transparency = -1;
    ASSERT_TRUE(fltPutRecord(object, record));
    draw();
    EXPECT_NEAR(red(colorAt({0, 0, 0})), red(sky), 2);
}

TEST_F(ShownTest, FacesAreDrawnAsTheirDrawTypeSays) {
    FltFace record;
    INode* const square = face(nullptr, {0, 0, 0}, 0xFF, record);
    const auto shown = [&](std::uint8_t drawType, Vec3d world, Vec3d eye = {0, 0, 50}) {
        record.drawType = drawType;
        EXPECT_TRUE(fltPutRecord(square, record));
        seeFrom(eye);
        draw();
        return nodeAt(world, 1) == square;
    };
    const Vec3d below{0, 0, -50};
    EXPECT_TRUE(shown(kFltSolidOneSided, {0, 0, 0}));
    EXPECT_FALSE(shown(kFltSolidOneSided, {0, 0, 0}, below)) << "its back";
    EXPECT_TRUE(shown(kFltSolidTwoSided, {0, 0, 0}, below));
    square->SetNodeTM(0, ScaleMatrix({-1, 1, 1}));
    EXPECT_TRUE(shown(kFltSolidOneSided, {0, 0, 0})) << "mirrored it keeps its front";
    EXPECT_FALSE(shown(kFltSolidOneSided, {0, 0, 0}, below));
    square->SetNodeTM(0, Matrix3());
    for (const std::uint8_t outline : {kFltClosedOutline, kFltOpenOutline}) {
        EXPECT_FALSE(shown(outline, {0, 0, 0})) << "it is hollow";
        EXPECT_FALSE(shown(outline, {1, 1, 0})) << "without the edges between triangles";
        EXPECT_TRUE(shown(outline, {3, 0, 0}));
        EXPECT_EQ(shown(outline, {-3, 0, 0}), outline == kFltClosedOutline) << "the last edge";
    }
    EXPECT_TRUE(shown(kFltSolidTwoSided, {0, 0, 0}));
    const render::Color plain = colorAt({2.95, 0, 0});
    // The alternate color, which the file of the scene's database has.
    FltBytes file("f");
    Bytes colors;
    colors.zeros(128).u32(0xFF00FF00).zeros(1023 * 4);
    file.record(kFltColorPalette, colors);
    INode* const top = import(file);
    top->AttachChild(square);
    record.flags = kFltSurfaceNoColor;
    record.alternateColorIndex = 127;
    EXPECT_TRUE(shown(kFltSolidAndOutline, {0, 0, 0}));
    EXPECT_GT(green(colorAt({2.95, 0, 0})), green(plain) + 60);
}

TEST_F(ShownTest, TemplatesTurnFacesToTheEye) {
    FltFace record = twoSided();
    INode* const square = face(nullptr, {0, 0, 0}, 0xFF, record, true);
    const auto shownFrom = [&](std::uint8_t billboard, Vec3d eye, Vec3d world) {
        record.billboard = billboard;
        EXPECT_TRUE(fltPutRecord(square, record));
        seeFrom(eye);
        draw();
        return nodeAt(world) == square;
    };
    const Vec3d east{50, 0, 0}, above{0, -8, 50};
    EXPECT_TRUE(shownFrom(kFltFixedBlended, {0, -50, 0}, {2, 0, 2})) << "from where it looks";
    EXPECT_FALSE(shownFrom(kFltFixedBlended, east, {0, 2, 2})) << "from its edge";
    EXPECT_TRUE(shownFrom(kFltAxisBlended, east, {0, 2, 2}));
    EXPECT_TRUE(shownFrom(kFltPointBlended, east, {0, 2, 2}));
    EXPECT_FALSE(shownFrom(kFltAxisBlended, above, {0, 2, 0})) << "it stays upright";
    EXPECT_TRUE(shownFrom(kFltPointBlended, above, {0, 2, 0}));
}

TEST_F(ShownTest, OfFacesInOnePlaceTheHigherPriorityLiesAbove) {
    INode* const first = face(nullptr, {0, 0, 0}, 0xFF);
    INode* const second = face(nullptr, {0, 0, 0}, 0xFF00);
    const auto above = [&](std::int16_t ofFirst, std::int16_t ofSecond) {
        for (const auto& [square, priority] :
             {std::pair{first, ofFirst}, std::pair{second, ofSecond}}) {
            FltFace record = twoSided();
            record.relativePriority = priority;
            EXPECT_TRUE(fltPutRecord(square, record));
        }
        // From far and at a slant no pixel of the other shows through.
        for (const Vec3d eye : {Vec3d{0, 0, 50}, Vec3d{300, 10, 60}, Vec3d{5, 40, 3}}) {
            seeFrom(eye);
            draw();
            const INode* const seen = nodeAt({0, 0, 0});
            for (int y = 0; y < kSide; ++y)
                for (int x = 0; x < kSide; ++x) {
                    const INode* const here = feed.nodeOf(canvas.item(x, y));
                    EXPECT_TRUE(here == nullptr || here == seen) << x << ' ' << y;
                }
        }
        return nodeAt({0, 0, 0});
    };
    EXPECT_EQ(above(0, 1), second);
    EXPECT_EQ(above(1, 0), first);
    EXPECT_EQ(above(0, -1), first);
    EXPECT_EQ(above(-1, 0), second) << "a negative one lies below";
    EXPECT_EQ(above(-2, -1), second);
}

TEST_F(ShownTest, LightPointsShineWhereTheirLobesReach) {
    FltLightPoint record;
    INode* const point = node(FltNodeKind::LightPoint, record);
    auto* const object = new TriObject;
    object->GetMesh().verts.Append(Point3{0, 0, 0});
    object->GetMesh().colors.Append(0x0000FF);
    object->GetMesh().normals.Append(Point3f{0, -1, 0});
    point->SetObjectRef(object);
    const auto shownFrom = [&](Vec3d eye) {
        EXPECT_TRUE(fltPutRecord(point, record));
        seeFrom(eye);
        draw();
        return nodeAt({0, 0, 0}, 1) == point;
    };
    const Vec3d ahead{0, -50, 1}, behind{0, 50, 1}, aside{-20, -50, 1}, above{0, -50, 20};
    EXPECT_TRUE(shownFrom(ahead) && shownFrom(behind)) << "in all directions";
    record.directionalType = 1;
    record.horizontalLobeAngle = 50;
    record.verticalLobeAngle = 20;
    EXPECT_TRUE(shownFrom(ahead) && shownFrom(aside));
    EXPECT_FALSE(shownFrom(behind));
    EXPECT_FALSE(shownFrom(above));
    record.lobeRollAngle = 90;
    EXPECT_TRUE(shownFrom(above));
    EXPECT_FALSE(shownFrom(aside));
    record.directionalType = 2;
    record.backColor = 0xFF00FF00;
    EXPECT_TRUE(shownFrom(behind));
    EXPECT_GT(green(colorAt({0, 0, 0})), red(colorAt({0, 0, 0})));
    record.flags = FltLightPoint::kNoBackColor;
    EXPECT_TRUE(shownFrom(behind));
    EXPECT_GT(red(colorAt({0, 0, 0})), green(colorAt({0, 0, 0}))) << "the front's";
    record.flags = 0;
    EXPECT_TRUE(shownFrom(ahead));
    EXPECT_GT(red(colorAt({0, 0, 0})), green(colorAt({0, 0, 0})));
    object->GetMesh().normals.ZeroCount();
    EXPECT_TRUE(shownFrom(above)) << "without a direction";

    EXPECT_EQ(nodeAt({5, 0, 0}), nullptr);
    record.actualPixelSize = 12;
    EXPECT_TRUE(shownFrom(ahead));
    EXPECT_EQ(nodeAt({5, 0, 0}), point) << "a size in the world";
    record.maxPixelSize = 5;
    EXPECT_TRUE(shownFrom(ahead));
    EXPECT_EQ(nodeAt({5, 0, 0}), nullptr) << "limited on the screen";
    record.animationPeriod = 2;
    record.animationEnabledPeriod = 0.5;
    record.animationPhaseDelay = 1;
    EXPECT_TRUE(shownFrom(ahead)) << "the flag says whether it flashes";
    record.flags = FltLightPoint::kFlashes;
    EXPECT_FALSE(shownFrom(ahead));
    options.seconds = 5.25;
    EXPECT_TRUE(shownFrom(ahead));
    EXPECT_TRUE(feed.model().changes());
}

/// A red light point that shines to -y, of two entries of the palettes.
class IndexedPointsTest : public ShownTest {
protected:
    void open(FltLightPointAppearance appearance, FltLightPointAnimation animation) {
        samples::FltScene scene;
        scene.colors = {{255, 0, 0}};
        scene.addPalette(appearance);
        scene.addPalette(animation);
        FltIndexedLightPoint record;
        record.appearanceIndex = record.animationIndex = 0;
        scene.root.add(record).directed({0, -1, 0}).setPoints({{0, 0, 0}}, 0);
        const std::string path = folder.file("points.flt");
        ASSERT_TRUE(samples::writeScene(scene, path));
        core.newScene();
        point = import(FltFileBytes::load(path).bytes())->GetChildNode(0);
    }
    /// The color that is seen then: "red", "green", "blue", or "none".
    const char* seenAt(double seconds, Vec3d eye = {0, -50, 1}) {
        options.seconds = seconds;
        seeFrom(eye);
        draw();
        if (nodeAt({0, 0, 0}, 1) != point) return "none";
        const render::Color color = colorAt({0, 0, 0});
        if (red(color) > 128) return "red";
        return green(color) > 128 ? "green" : "blue";
    }

    const TemporaryFolder folder;
    INode* point = nullptr;
};

TEST_F(IndexedPointsTest, LookAsTheirAppearanceSays) {
    FltLightPointAppearance appearance;
    appearance.intensity = 1;
    appearance.minPixelSize = 3;
    open(appearance, {});
    EXPECT_STREQ(seenAt(0), "red");
    EXPECT_STREQ(seenAt(0, {0, 50, 1}), "red");
    const Vec3d beside{1.5, 0, 0};
    EXPECT_NE(nodeAt(beside), point);
    appearance.minPixelSize = 30;
    appearance.directionalType = 2;
    appearance.horizontalLobeAngle = appearance.verticalLobeAngle = 60;
    appearance.backColor = 0xFFFF0000;
    open(appearance, {});
    EXPECT_STREQ(seenAt(0, {50, 0, 1}), "none");
    EXPECT_STREQ(seenAt(0, {0, 50, 1}), "blue");
    EXPECT_STREQ(seenAt(0), "red");
    EXPECT_EQ(nodeAt(beside), point) << "no smaller than that";
}

TEST_F(IndexedPointsTest, ChangeAsTheirAnimationSays) {
    FltLightPointAppearance appearance;
    appearance.intensity = 1;
    appearance.minPixelSize = 8;
    FltLightPointAnimation animation;
    animation.type = FltLightPointAnimation::kFlashingSequence;
    animation.phaseDelay = 0.25F;
    const float endless = std::numeric_limits<float>::infinity();
    animation.steps = {{0, 1, 0},       {1, 1, 0}, {2, 1, 0xFF00FF00}, {0, -1, 0},
                       {1, endless, 0}, {0, 1, 0}, {1, 2, 0}};
    animation.stepCount = 7;
    open(appearance, animation);
    for (const double period : {0., 6., 600.}) {
        EXPECT_STREQ(seenAt(period + 1), "red");
        EXPECT_STREQ(seenAt(period + 2), "none");
        EXPECT_STREQ(seenAt(period + 3), "green");
        EXPECT_STREQ(seenAt(period + 4), "red");
        EXPECT_STREQ(seenAt(period + 5), "none");
        EXPECT_STREQ(seenAt(period + 6), "none");
    }

    animation = {};
    animation.type = FltLightPointAnimation::kStrobe;
    animation.period = 4;
    animation.enabledPeriod = 1;
    animation.phaseDelay = 2;
    open(appearance, animation);
    EXPECT_STREQ(seenAt(2.5), "red");
    EXPECT_STREQ(seenAt(3.5), "none");
    EXPECT_STREQ(seenAt(6.5), "red");

    appearance.directionalType = 1;
    appearance.horizontalLobeAngle = appearance.verticalLobeAngle = 60;
    animation.type = FltLightPointAnimation::kRotating;
    animation.period = 8;
    animation.axis = {0, 0, 1};
    open(appearance, animation);
    EXPECT_STREQ(seenAt(0), "red");
    EXPECT_STREQ(seenAt(4), "none");
    EXPECT_STREQ(seenAt(0, {50, 0, 1}), "none");
    EXPECT_STREQ(seenAt(2, {50, 0, 1}), "none");
    EXPECT_STREQ(seenAt(6, {50, 0, 1}), "red") << "clockwise, seen from above";
    EXPECT_STREQ(seenAt(16), "red");
    animation.flags = FltLightPointAnimation::kRotatesCounterClockwise;
    open(appearance, animation);
    EXPECT_STREQ(seenAt(2, {50, 0, 1}), "red");
    EXPECT_STREQ(seenAt(6, {50, 0, 1}), "none");
}

/// Points that send a text, and what their look has of it.
class MorsePointsTest : public IndexedPointsTest {
protected:
    MorsePointsTest() {
        appearance.intensity = 1;
        appearance.minPixelSize = 8;
        animation.type = FltLightPointAnimation::kMorseCode;
    }
    std::vector<LightPointStep> stepsOf(std::string_view text) {
        std::ranges::fill(animation.morseText, '\0');
        std::ranges::copy(text, animation.morseText);
        open(appearance, animation);
        NodeLook look;
        source.BeginLooks(&host);
        EXPECT_TRUE(source.GetLook(point, look));
        period = look.points->period;
        return {look.points->steps, look.points->steps + look.points->stepCount};
    }
    /// A sign for each dot of time: "=" where it is on.
    std::string signsOf(std::string_view text, double dot) {
        std::string signs;
        for (const LightPointStep& step : stepsOf(text)) {
            const double dots = double{step.seconds} / dot;
            EXPECT_NEAR(dots, std::round(dots), 1e-4);
            signs.append(static_cast<std::size_t>(std::lround(dots)), step.isOn ? '=' : '.');
        }
        EXPECT_NEAR(double{period}, static_cast<double>(signs.size()) * dot, 1e-4);
        return signs;
    }

    FltLightPointAppearance appearance;
    FltLightPointAnimation animation;
    float period = 0;
};

TEST_F(MorsePointsTest, SendDotsAndDashesWithPausesOfOneThreeAndSevenDots) {
    animation.wordRate = 12;
    animation.characterRate = 24;  // of no account without Farnsworth timing
    animation.phaseDelay = 1;
    const std::string word = "=.===.===.=...=.===...=.===.=...=.=...=.=.=.......";
    ASSERT_EQ(word.size(), 50U);
    EXPECT_EQ(signsOf("SOS Paris", 0.1), "=.=.=...===.===.===...=.=.=......." + word);
    for (const double time : {0., period * 1., period * 100.}) {
        EXPECT_STREQ(seenAt(time + 1.05), "red");
        EXPECT_STREQ(seenAt(time + 1.15), "none");
        EXPECT_STREQ(seenAt(time + 1.65), "none") << "between letters";
        EXPECT_STREQ(seenAt(time + 1.85), "red");
        EXPECT_STREQ(seenAt(time + 2.05), "red") << "a dash";
        EXPECT_STREQ(seenAt(time + 2.15), "none");
    }
    // What the code does not have parts words, however much of it there is.
    EXPECT_EQ(signsOf(" e* \xC3\xA9\t#T", 0.1), "=.......===.......");
    EXPECT_EQ(signsOf("5/@?", 0.1),
              "=.=.=.=.=...===.=.=.===.=...=.===.===.=.===.=...=.=.===.===.=.=.......");
    EXPECT_TRUE(stepsOf(" *").empty());
    EXPECT_STREQ(seenAt(5), "red") << "without a text it stays on";
}

TEST_F(MorsePointsTest, SendAtTheRatesOfTheirRecord) {
    EXPECT_EQ(signsOf("e", 0.15), "=.......") << "without any, as beacons do";
    animation.characterRate = 24;
    EXPECT_EQ(signsOf("e", 0.05), "=.......");
    animation.wordRate = 12;
    EXPECT_EQ(signsOf("e", 0.1), "=.......");
    animation.morseTiming = FltLightPointAnimation::kFarnsworth;
    const std::vector<LightPointStep> steps = stepsOf("paris");
    EXPECT_NEAR(period, 5, 1e-4) << "twelve words a minute";
    ASSERT_EQ(steps.size(), 28U);
    EXPECT_NEAR(steps[1].seconds, 0.05, 1e-5) << "within a letter";
    EXPECT_NEAR(steps[2].seconds, 0.15, 1e-5);
    EXPECT_NEAR(steps[7].seconds, 3 * 3.45 / 19, 1e-5) << "between letters";
    EXPECT_NEAR(steps[27].seconds, 7 * 3.45 / 19, 1e-5) << "between words";
    animation.characterRate = 6;
    EXPECT_EQ(signsOf("e", 0.1), "=.......") << "pauses are no shorter than usual";
    animation.wordRate = -12;
    EXPECT_EQ(signsOf("e", 0.2), "=.......");
    // A text as long as its field, which has no end.
    EXPECT_EQ(stepsOf(std::string(1024, '0')).size(), 1024U * 10);
}

/// A picture with one texel of each color, from left to right.
std::vector<std::uint8_t> pictureOf(std::initializer_list<std::uint32_t> colors) {
    std::vector<std::uint8_t> bytes = {0x01, 0xDA, 0, 1, 0, 3, 0, 0, 0, 1, 0, 3};
    bytes[7] = static_cast<std::uint8_t>(colors.size());
    bytes.resize(512);
    for (const unsigned shift : {16U, 8U, 0U})
        for (const std::uint32_t color : colors)
            bytes.push_back(static_cast<std::uint8_t>(color >> shift));
    return bytes;
}

/// Files of faces of 6 by 6 about (0, 0), (10, 0) and so on, with texture layers.
class LayersTest : public ShownTest {
protected:
    /// One texel red, one white, over what is below in that way.
    void addPicture(const std::string& name, std::uint8_t environment) {
        std::vector<std::uint8_t> use(64);
        use[15 * 4 + 3] = environment;  // texels without smooth colors in between
        const std::string path = folder.write(std::u8string(name.begin(), name.end()).c_str(),
                                              pictureOf({0xFF0000, 0xFFFFFF}));
        folder.write(std::u8string(name.begin(), name.end()).append(u8".attr").c_str(), use);
        file.record(kFltTexture, Bytes().field(path, 200).u32(count++).zeros(8));
    }
    /// Behind the pictures. `layers` are those of the mask, by their textures. The picture is once
    /// on the face for each bit of `coordinates`, mirrored for those of `mirrored`.
    void addFace(std::uint32_t mask, std::initializer_list<unsigned> layers,
                 std::uint32_t coordinates, std::uint32_t mirrored = 0, unsigned effect = 0) {
        if (placed == 0) addVertices();
        Bytes multi;
        multi.u32(mask);
        for (const unsigned texture : layers) multi.u16(texture).u16(effect).zeros(4);
        file.face("f", 0x10000000, 0xFF808080).record(kFltMultiTexture, multi).push();
        file.list({4 * placed, 4 * placed + 1, 4 * placed + 2, 4 * placed + 3});
        Bytes list;
        list.u32(coordinates);
        for (int corner = 0; corner < 4; ++corner)
            for (std::uint32_t bit = 0x80000000; bit != 0; bit >>= 1) {
                if ((coordinates & bit) == 0) continue;
                const bool isRight = corner == 1 || corner == 2;
                list.f32(isRight != ((mirrored & bit) != 0) ? 1.F : 0.F);
                list.f32(corner > 1 ? 1.F : 0.F);
            }
        if (coordinates != 0) file.record(kFltUvList, list);
        file.pop();
        ++placed;
    }
    void open() {
        file.pop();
        import(file);
        ASSERT_TRUE(camera.lookFrom({35, 0, 120}, {35, 0.01, 0}));
        draw();
    }
    /// In the middle of the left and of the right texel.
    std::pair<render::Color, render::Color> at(int face) const {
        return {colorAt({10. * face - 1.5, 0, 0}), colorAt({10. * face + 1.5, 0, 0})};
    }

    const TemporaryFolder folder;
    FltBytes file{"f"};

private:
    void addVertices() {
        constexpr std::uint32_t kMost = 8;
        file.record(kFltVertexPalette, Bytes().u32(8 + 40 * 4 * kMost));
        for (std::uint32_t i = 0; i < kMost; ++i)
            for (const auto& [x, y] : {std::pair{-3, -3}, {3, -3}, {3, 3}, {-3, 3}})
                file.record(kFltVertexWithColor,
                            Bytes().zeros(4).f64(x + 10. * i).f64(y).f64(0).zeros(8));
        file.push();
    }

    std::uint32_t count = 0, placed = 0;
};

TEST_F(LayersTest, LieOverWhatIsBelowAsTheirPicturesSay) {
    constexpr std::uint32_t kFirst = 0x80000000, kThird = 0x20000000;
    enum : unsigned { kModulate, kBlend, kDecal, kReplace, kAdd };
    for (const unsigned how : {kModulate, kBlend, kDecal, kReplace, kAdd})
        addPicture("picture" + std::to_string(how), static_cast<std::uint8_t>(how));
    addFace(kFirst, {99}, kFirst);
    for (const unsigned how : {kModulate, kBlend, kDecal, kAdd}) addFace(kFirst, {how}, kFirst);
    addFace(kFirst, {kModulate}, kFirst, kFirst);
    addFace(kFirst | kThird, {kModulate, kAdd}, kFirst | kThird, kThird);
    addFace(kFirst, {kModulate}, 0);
    open();
    const auto [plain, right] = at(0);
    EXPECT_EQ(plain, right) << "there is no such texture";
    const render::Color grey = plain & 0xFF, white = 0xFFFFFF;
    EXPECT_GT(grey, 60U);
    EXPECT_LT(grey, 200U);
    EXPECT_EQ(at(1), std::pair(grey << 16, plain));
    EXPECT_EQ(at(2), std::pair(grey << 8 | grey, render::Color{0})) << "it lets the rest through";
    EXPECT_EQ(at(3), std::pair(render::Color{0xFF0000}, white));
    EXPECT_EQ(at(4), std::pair(0xFF0000 | grey << 8 | grey, white));
    EXPECT_EQ(at(5), std::pair(plain, grey << 16)) << "by coordinates of its own";
    EXPECT_EQ(at(6), std::pair(white, 0xFF0000 | grey << 8 | grey)) << "the third over the first";
    EXPECT_EQ(at(7), std::pair(plain, plain)) << "without coordinates there is nowhere to be";
}

TEST_F(LayersTest, ThatAreBumpMapsColorNothing) {
    constexpr std::uint32_t kFirst = 0x80000000;
    addPicture("bumps", 3);
    for (const unsigned effect : {0U, 1U, 101U}) addFace(kFirst, {0}, kFirst, 0, effect);
    open();
    EXPECT_EQ(at(0).first, 0xFF0000U);
    EXPECT_NE(at(1).first, 0xFF0000U);
    EXPECT_EQ(at(2).first, 0xFF0000U) << "one of a user's own";
}

TEST_F(LayersTest, OfMeshesGoByTheCoordinatesOfTheirVertices) {
    addPicture("red", 3);
    file.push();
    Bytes mesh, multi, pool, rest, primitive;
    mesh.field("mesh", 8).zeros(4 + 8).u16(0xFFFF).u16(0xFFFF).zeros(2).u16(0xFFFF);
    mesh.u16(0xFFFF).u16(0xFFFF).zeros(2 + 2 + 4).u16(0).zeros(2).u32(0).u8(0).zeros(31);
    multi.u32(0x20000000).u16(0).zeros(6);
    // Positions and coordinates of the third layer; the last vertex goes on in another record.
    pool.u32(4).u32(0x81000000);
    for (int corner = 0; corner < 4; ++corner) {
        const bool isRight = corner == 1 || corner == 2;
        (corner < 3 ? pool : rest).f64(isRight ? 3 : -3).f64(corner > 1 ? 3 : -3).f64(0);
        (corner < 3 ? pool : rest).f32(isRight ? 1.F : 0.F).f32(corner > 1 ? 1.F : 0.F);
    }
    primitive.u16(4).u16(1).u32(4).u8(0).u8(1).u8(2).u8(3);
    file.record(kFltMesh, mesh).record(kFltMultiTexture, multi);
    file.record(kFltLocalVertexPool, pool).record(kFltContinuation, rest).push();
    file.record(kFltMeshPrimitive, primitive).pop();
    open();
    EXPECT_EQ(at(0).first & 0xFF, 0U) << std::hex << at(0).first;
    EXPECT_GT(at(0).second & 0xFF, 60U);
}

TEST_F(LayersTest, ADetailShowsInBetweenTheTexelsFromCloseBy) {
    addPicture("base", 0);
    addPicture("detail", 0);
    INode* const top = import(file);
    FltFace record = twoSided();
    record.textureIndex = 0;
    record.textureWhite = 1;
    INode* const square = face(top, {0, 0, 0}, 0xFFFFFF, record);
    Mesh& mesh = static_cast<TriObject*>(square->GetObjectRef())->GetMesh();
    for (const auto& [u, v] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}})
        mesh.tVerts.Append(Point3f(static_cast<float>(u), static_cast<float>(v), 0));
    for (const Face& one : mesh.faces) mesh.tvFaces.Append({{one.v[0], one.v[1], one.v[2]}});
    const auto changesOfColor = [&](std::int16_t detail, double distance) {
        record.detailTextureIndex = detail;
        EXPECT_TRUE(fltPutRecord(square, record));
        seeFrom({0, 0, distance});
        draw();
        int changes = 0;
        for (int x = 1; x < kSide; ++x)
            changes += canvas.pixel(x, kSide / 2) != canvas.pixel(x - 1, kSide / 2);
        return changes;
    };
    const int plain = changesOfColor(-1, 5);
    EXPECT_EQ(changesOfColor(7, 5), plain) << "there is no such texture";
    EXPECT_GT(changesOfColor(1, 5), plain + 4);
}

/// A face of 6 by 6 about the origin, with a texture of the database that can be chosen.
class PicturesTest : public ShownTest {
protected:
    /// Red and green above, blue and, where it can be seen through, nothing below.
    static std::uint32_t quarters(std::size_t x, std::size_t y) {
        constexpr std::size_t kHalf = samples::kPictureSide / 2;
        if (y >= kHalf) return x < kHalf ? 0xFFFF0000 : 0xFF00FF00;
        return x < kHalf ? 0xFF0000FF : 0x00FFFFFF;
    }
    static std::vector<std::pair<std::string, std::string>> filesOfEachFormat() {
        using samples::Blocks;
        return {{"a.int", samples::sgiPicture(quarters, 1)},
                {"a.inta", samples::sgiPicture(quarters, 2)},
                {"a.rgb", samples::sgiPicture(quarters, 3)},
                {"a.rgba", samples::sgiPicture(quarters, 4)},
                {"a.tga", samples::tgaPicture(quarters)},
                {"a.bmp", samples::bmpPicture(quarters)},
                {"a.tif", samples::tiffPicture(quarters)},
                {"a.png", samples::pngPicture(quarters)},
                {"a.jpg", samples::jpegPicture(quarters)},
                {"a.gif", samples::gifPicture(quarters)},
                {"1.dds", samples::ddsPicture(quarters, Blocks::kOpaque)},
                {"3.dds", samples::ddsPicture(quarters, Blocks::kSharpAlpha)},
                {"5.dds", samples::ddsPicture(quarters, Blocks::kSmoothAlpha)}};
    }
    void write(const std::string& name, const std::string& bytes) const {
        folder.write(std::u8string(name.begin(), name.end()).c_str(),
                     std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
    }
    /// With these names in its palette.
    void open(const std::vector<std::string>& names) {
        FltBytes file("f");
        unsigned index = 0;
        for (const std::string& name : names)
            file.record(kFltTexture,
                        Bytes().field(folder.file(name.c_str()), 200).u32(index++).zeros(8));
        square = face(import(file), {0, 0, 0}, 0xFFFFFF);
        Mesh& mesh = static_cast<TriObject*>(square->GetObjectRef())->GetMesh();
        for (const auto& [u, v] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}})
            mesh.tVerts.Append(Point3f(static_cast<float>(u), static_cast<float>(v), 0));
        for (const Face& one : mesh.faces) mesh.tvFaces.Append({{one.v[0], one.v[1], one.v[2]}});
        seeFrom({0, -0.01, 12});
    }
    void show(std::size_t texture) {
        FltFace record = twoSided();
        record.textureIndex = static_cast<std::int16_t>(texture);
        record.textureWhite = 1;
        EXPECT_TRUE(fltPutRecord(square, record));
        draw();
    }
    /// What is in the upper left, upper right, lower left and lower right: the channels that are
    /// strong, "-" where nothing of the face is.
    std::string seen() const {
        std::string all;
        for (const Vec3d& place :
             {Vec3d{-1.5, 1.5, 0}, Vec3d{1.5, 1.5, 0}, Vec3d{-1.5, -1.5, 0}, Vec3d{1.5, -1.5, 0}}) {
            const render::Color color = colorAt(place);
            if (nodeAt(place) != square) all += '-';
            for (const auto& [shift, letter] : {std::pair{16U, 'r'}, {8U, 'g'}, {0U, 'b'}})
                if (nodeAt(place) == square && (color >> shift & 0xFF) > 128) all += letter;
            all += ' ';
        }
        return all;
    }
    /// Whether the face has the squares of two colors that stand for a picture.
    bool showsStandIn() const {
        std::set<render::Color> colors;
        for (int i = -24; i < 24; ++i) colors.insert(colorAt({i * 0.1 + 0.05, 0.3, 0}));
        return nodeAt({0.3, 0.3, 0}) == square && colors.size() >= 2 &&
               seen().find("r g b") == std::string::npos;
    }

    const TemporaryFolder folder;
    INode* square = nullptr;
};

TEST_F(PicturesTest, OfEachFormatLieOnTheirFacesTheRightWayUp) {
    const auto files = filesOfEachFormat();
    std::vector<std::string> names;
    for (const auto& [name, bytes] : files) {
        write(name, bytes);
        names.push_back(name);
    }
    open(names);
    for (std::size_t i = 0; i < names.size(); ++i) {
        show(i);
        // Grey ones have of each texel its blue.
        const char* const expected = names[i] == "a.int"    ? "  rgb rgb "
                                     : names[i] == "a.inta" ? "  rgb - "
                                     : names[i] == "a.rgba" || names[i] == "a.tga" ||
                                             names[i] == "a.png" || names[i] == "3.dds" ||
                                             names[i] == "5.dds"
                                         ? "r g b - "
                                         : "r g b rgb ";
        EXPECT_EQ(seen(), expected) << names[i];
        EXPECT_FALSE(showsStandIn()) << names[i];
        std::filesystem::remove(folder.path() / names[i]);
        ASSERT_TRUE(feed.noticeChanges()) << names[i];
        show(i);
        EXPECT_TRUE(showsStandIn()) << names[i] << " is gone";
        EXPECT_EQ(feed.takeFailures().size(), 1U) << names[i];
    }
}

// Cut short, with sides beyond all measure, and with nothing in it.
TEST_F(PicturesTest, ThatAreDamagedAreAStandInAndALine) {
    std::vector<std::string> names;
    const auto add = [&](const std::string& name, const std::string& bytes) {
        names.push_back(name);
        write(name, bytes);
    };
    for (const auto& [name, bytes] : filesOfEachFormat()) {
        add("empty " + name, {});
        add("short " + name, bytes.substr(0, 15));
        add("half " + name, bytes.substr(0, bytes.size() / 2));
    }
    const auto huge = [&](std::size_t which, std::initializer_list<std::size_t> bytesOfSides) {
        auto [name, bytes] = filesOfEachFormat()[which];
        for (const std::size_t at : bytesOfSides) bytes[at] = '\x7F';
        add("huge " + name, bytes);
    };
    huge(2, {6, 8});
    huge(4, {13, 15});
    huge(5, {20, 24});
    huge(7, {18, 22});
    huge(9, {7, 9});
    huge(10, {14, 18});
    open(names);
    for (std::size_t i = 0; i < names.size(); ++i) {
        show(i);
        EXPECT_TRUE(showsStandIn()) << names[i];
        const std::vector<std::string> lines = feed.takeFailures();
        ASSERT_EQ(lines.size(), 1U) << names[i];
        EXPECT_NE(lines[0].find(names[i]), std::string::npos) << lines[0];
    }
}

TEST_F(ShownTest, LightPointSystemsSwitchWeakenAndSteadyWhatIsBelow) {
    FltBytes file("f");
    file.push();
    const auto addSystem = [&](float intensity, std::uint32_t state, std::uint32_t flags) {
        file.record(kFltLightPointSystem,
                    Bytes().field("s", 8).f32(intensity).u32(state).u32(flags));
    };
    constexpr std::uint32_t kOn = 0, kOff = 1, kRandom = 2, kEnabled = 0x80000000;
    addSystem(1, kOn, kEnabled);
    addSystem(0.5, kOff, kEnabled);
    addSystem(1, kOn, 0);
    addSystem(1, kRandom, kEnabled);
    file.pop();
    INode* const top = import(file);
    FltLightPoint record;
    record.flags = FltLightPoint::kFlashes;
    record.animationPeriod = 2;
    record.animationEnabledPeriod = 1;
    const auto addPoint = [&](int system, double x, double y) {
        INode* const point = node(FltNodeKind::LightPoint, record, top->GetChildNode(system));
        auto* const object = new TriObject;
        object->GetMesh().verts.Append(Point3{x, y, 0});
        object->GetMesh().colors.Append(0x0000FF);
        point->SetObjectRef(object);
        return point;
    };
    INode* const plain = addPoint(0, -10, 0);
    INode* const steady = addPoint(1, 0, 0);
    addPoint(2, 10, 0);
    draw();
    EXPECT_EQ(nodeAt({-10, 0, 0}, 1), plain);
    EXPECT_EQ(nodeAt({0, 0, 0}, 1), steady);
    EXPECT_EQ(nodeAt({10, 0, 0}, 1), nullptr) << "not enabled";
    EXPECT_NEAR(red(colorAt({0, 0, 0})), red(colorAt({-10, 0, 0})) / 2., 24);
    EXPECT_LT(red(colorAt({0, 0, 0})), 160U);
    options.seconds = 1.5;
    draw();
    EXPECT_EQ(nodeAt({-10, 0, 0}, 1), nullptr);
    EXPECT_EQ(nodeAt({0, 0, 0}, 1), steady) << "it does not flash";
    options.seconds = 0;
    for (int i = 0; i < 12; ++i) addPoint(3, -11 + 2. * i, 10);
    const auto seen = [&] {
        draw();
        std::vector<INode*> nodes;
        for (int i = 0; i < 12; ++i)
            if (INode* const point = nodeAt({-11 + 2. * i, 10, 0})) nodes.push_back(point);
        return nodes;
    };
    const std::vector<INode*> lit = seen();
    EXPECT_GT(lit.size(), 2U);
    EXPECT_LT(lit.size(), 10U) << "each at a time of its own";
    host.DeleteNode(plain);
    EXPECT_EQ(seen(), lit) << "whatever else comes and goes";
}

TEST_F(ShownTest, OutlinesAreAsWideAsTheirLineStyleSays) {
    FltBytes file("f");
    for (const unsigned width : {1U, 7U})
        file.record(kFltLineStylePalette, Bytes().u16(width).u16(0xFFFF).u32(width));
    file.record(kFltLineStylePalette, Bytes().u16(20).u16(0x000F).u32(1));
    file.record(kFltLineStylePalette, Bytes().u16(21).u16(0).u32(1));
    INode* const top = import(file);
    FltFace record = twoSided();
    record.drawType = kFltClosedOutline;
    INode* const square = face(top, {0, 0, 0}, 0xFFFFFF, record);
    const auto covered = [&](std::uint8_t style) {
        record.lineStyleIndex = style;
        EXPECT_TRUE(fltPutRecord(square, record));
        draw();
        int count = 0;
        for (int y = 0; y < kSide; ++y) count += feed.nodeOf(canvas.item(kSide / 2, y)) == square;
        return count;
    };
    const int thin = covered(1);
    EXPECT_GE(thin, 2) << "two edges";
    EXPECT_LE(thin, 4);
    EXPECT_EQ(covered(9), thin) << "a style that there is not";
    EXPECT_NEAR(covered(7), thin + 12, 2);
    const auto allCovered = [&](std::uint8_t style) {
        covered(style);
        int count = 0;
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x) count += feed.nodeOf(canvas.item(x, y)) == square;
        return count;
    };
    const int whole = allCovered(1);
    EXPECT_GT(whole, 100);
    EXPECT_NEAR(allCovered(20), whole / 4, whole / 8) << "four pixels of sixteen";
    EXPECT_EQ(allCovered(21), 0) << "none";
}

TEST_F(ShownTest, MaterialsThrowLightBackLikeMirrors) {
    FltBytes file("f");
    const auto material = [&](std::uint32_t index, float specular) {
        Bytes body;
        body.u32(index).zeros(16);
        for (const float value : {0.3F, 0.3F, 0.3F, 0.3F, 0.3F, 0.3F, specular, specular, specular,
                                  0.F, 0.F, 0.F, 40.F, 1.F})
            body.f32(value);
        file.record(kFltMaterial, body.zeros(4));
    };
    material(0, 0);
    material(1, 1);
    INode* const top = import(file);
    FltFace record = twoSided();
    INode* const square = face(top, {0, 0, 0}, 0xFFFFFF);
    auto* const sun = new GenLight(OMNI_LIGHT_CLASS_ID);
    host.CreateObjectNode(sun, "sun")->SetNodeTM(0, TransMatrix({30, 0, 30}));
    const auto brightness = [&](std::int16_t of, Vec3d eye) {
        record.lightMode = 2;
        record.materialIndex = of;
        EXPECT_TRUE(fltPutRecord(square, record));
        seeFrom(eye);
        draw();
        return red(colorAt({0, 0, 0}));
    };
    EXPECT_GT(brightness(1, {-30, 0, 30}), brightness(0, {-30, 0, 30}) + 60);
    EXPECT_NEAR(brightness(1, {30, 0, 9}), brightness(0, {30, 0, 9}), 4) << "beside the mirror";
}

}  // namespace
