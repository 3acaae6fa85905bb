// Handles as the mouse finds them, and what dragging them does to the scene.
#include <workbench/transformhandles.h>
#include <workbench/transforms.h>

#include <gmock/gmock.h>
#include <kiln/host/host.h>

using namespace workbench;
using render::Camera, render::ScreenPoint, render::View;

namespace {

constexpr float kArm = 80, kReach = 5;
constexpr HandlePart kX = HandlePart::kX, kY = HandlePart::kY, kZ = HandlePart::kZ,
                     kAll = HandlePart::kAll, kNone = HandlePart::kNone;

class HandlesTest : public testing::Test {
protected:
    static Camera cameraOn(View view, const Point3& place, double size) {
        Camera camera;
        camera.setPictureSize(400, 300);
        camera.setView(view);
        render::Box box;
        box.add({place.x - size, place.y - size, place.z - size});
        box.add({place.x + size, place.y + size, place.z + size});
        camera.frame(box);
        return camera;
    }
    static void expectNear(const Point3& point, const Point3& expected, double tolerance) {
        EXPECT_NEAR(Length(point - expected), 0, tolerance)
            << point.x << ' ' << point.y << ' ' << point.z;
    }
};

// From above x is to the right, y upwards, and z points at the viewer.
TEST_F(HandlesTest, TheMouseFindsThePartsThatAreSeen) {
    const Camera camera = cameraOn(View::kTop, {}, 10);
    const auto partAt = [&](HandleMode mode, float x, float y) {
        return TransformHandles(mode, {}, kArm).partAt(camera, 200 + x, 150 + y, kReach);
    };
    for (const HandleMode mode : {HandleMode::kMove, HandleMode::kScale}) {
        EXPECT_EQ(partAt(mode, 50, 3), kX);
        EXPECT_EQ(partAt(mode, 84, 0), kX);
        EXPECT_EQ(partAt(mode, -2, -60), kY);
        EXPECT_EQ(partAt(mode, 1, -1), kAll) << "the middle, and not what points at the viewer";
        EXPECT_EQ(partAt(mode, 50, 20), kNone);
        EXPECT_EQ(partAt(mode, -50, 0), kNone);
    }
    EXPECT_EQ(partAt(HandleMode::kRotate, 57, 57), kZ);
    EXPECT_EQ(partAt(HandleMode::kRotate, 96, 0), kAll);
    EXPECT_EQ(partAt(HandleMode::kRotate, 1, 40), kX) << "its ring is seen from the side";
    EXPECT_EQ(partAt(HandleMode::kRotate, 20, 30), kNone);
    EXPECT_EQ(partAt(HandleMode::kNone, 50, 0), kNone);

    // As large on the screen wherever it stands, and not there behind the eye.
    for (const Point3& place : {Point3{6.4e6, 100, 20}, Point3{0, 0, 1e-3}}) {
        const Camera there = cameraOn(View::kPerspective, place, Length(place) / 1000);
        Matrix3 frame;
        frame.SetTrans(place);
        const auto lines = TransformHandles(HandleMode::kMove, frame, kArm).lines(there);
        ASSERT_EQ(lines.size(), 7u);
        const ScreenPoint middle = *there.project({place.x, place.y, place.z});
        EXPECT_NEAR(lines[4].points[1].x, middle.x, 1);
        EXPECT_NEAR(lines[4].points[1].y, middle.y - kArm, 20) << "z is nearly upright";
    }
    Camera away;
    ASSERT_TRUE(away.lookFrom({5, 0, 0}, {6, 0, 0}));
    EXPECT_TRUE(TransformHandles(HandleMode::kMove, {}, kArm).lines(away).empty());
}

// What the mouse has hold of stays under it.
TEST_F(HandlesTest, MovingFollowsTheMouseInAnyView) {
    for (const View view : {View::kPerspective, View::kTop, View::kRight}) {
        for (const double size : {1e-3, 50.0, 1e6}) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(view) << ' ' << size);
            const Point3 place{3 * size, -2 * size, size};
            const Camera camera = cameraOn(view, place, size);
            Matrix3 frame;
            frame.SetTrans(place);
            const TransformHandles handles(HandleMode::kMove, frame, kArm);
            for (const HandlePart part : {kX, kY, kZ, kAll}) {
                const auto lines = handles.lines(camera);
                const auto line = std::ranges::find(lines, part, &HandleLine::part);
                if (line == lines.end()) continue;
                const ScreenPoint from = *camera.project({place.x, place.y, place.z});
                const ScreenPoint end =
                    part == kAll ? ScreenPoint{from.x + 31, from.y + 17} : line->points.back();
                const Matrix3 change = handles.dragged(camera, part, from, end, {}).matrix;
                const Point3 there = change.PointTransform(place);
                const ScreenPoint at = *camera.project({there.x, there.y, there.z});
                EXPECT_NEAR(at.x, end.x, 0.2);
                EXPECT_NEAR(at.y, end.y, 0.2);
            }
        }
    }
    const Camera above = cameraOn(View::kTop, {}, 10);
    const TransformHandles handles(HandleMode::kMove, {}, kArm);
    EXPECT_TRUE(handles.dragged(above, kZ, {200, 150}, {230, 90}, {}).matrix.IsIdentity())
        << "nothing to be seen of that";
    const double unit = above.unitsPerPixel();
    const HandleChange change = handles.dragged(
        above, kX, {200, 150}, {200 + static_cast<float>(2.4 / unit), 170}, {0.5, {0.2, 0.3, 0.4}});
    expectNear(change.matrix.GetTrans(), {2.3, 0, 0}, 1e-9);
    EXPECT_EQ(change.text, "X  2.3")
        << "2.6 comes to 2.5, and what is not moved stays off the grid";
}

TEST_F(HandlesTest, TurningAndScalingGoByTheArm) {
    const Camera camera = cameraOn(View::kTop, {10, 20, 0}, 10);
    Matrix3 frame;
    frame.SetTrans({10, 20, 0});
    const TransformHandles rings(HandleMode::kRotate, frame, kArm);
    // At the right of the ring upwards is counter-clockwise.
    const ScreenPoint right{200 + kArm, 150}, up{200 + kArm, 150 - kArm};
    for (const HandlePart part : {kZ, kAll}) {
        const ScreenPoint hold = part == kAll ? ScreenPoint{200 + 1.2f * kArm, 150} : right;
        const double expected = part == kAll ? 1 / 1.2 : 1;
        const Matrix3 turn = rings.dragged(camera, part, hold, {hold.x, 150 - kArm}, {}).matrix;
        expectNear(turn.PointTransform({11, 20, 0}),
                   {10 + std::cos(expected), 20 + std::sin(expected), 0}, 1e-5);
    }
    EXPECT_EQ(rings.dragged(camera, kZ, right, up, {1, {}}).text, "Z  55°") << "in steps of 5";
    // The ring about x is seen from its edge: the mouse moves what is near.
    const Matrix3 roll = rings.dragged(camera, kX, {200, 150}, {200, 150 + kArm}, {}).matrix;
    EXPECT_GT(roll.PointTransform({10, 20, 1}).z, 0);
    EXPECT_LT(roll.PointTransform({10, 20, 1}).y, 20);

    // Scaling acts along the directions of the handles, about their place.
    Matrix3 turned = RotAngleAxisMatrix({0, 0, 1}, 0.5);
    turned.SetTrans({10, 20, 0});
    const TransformHandles arms(HandleMode::kScale, turned, kArm);
    const ScreenPoint end = arms.lines(camera).front().points.back();
    const HandleChange twice = arms.dragged(camera, kX, {200, 150}, end, {});
    expectNear(twice.matrix.PointTransform(turned.PointTransform({1, 1, 1})),
               turned.PointTransform({2, 1, 1}), 1e-4);
    const HandleChange all = arms.dragged(camera, kAll, {200, 150}, {100, 250}, {1, {}});
    expectNear(all.matrix.PointTransform({20, 20, 10}), {11, 20, 1}, 1e-9);
    EXPECT_EQ(all.text, "10 %") << "never nothing, nor inside out";
}

class DragTest : public HandlesTest {
protected:
    DragTest() : host_(kiln::Core::create().hostInterface()) {
        first_ = host_.CreateObjectNode(new BoxObject(2, 2, 2), "first");
        second_ = host_.CreateObjectNode(new BoxObject(2, 2, 2), "second");
        first_->AttachChild(second_);
        second_->SetNodeTM(0, TransMatrix({5, 0, 0}));
        host_.SelectNode(second_, true);
        host_.SelectNode(first_, false);
        history().clear();
        kiln::Core::get()->setModified(false);
    }
    ~DragTest() override { kiln::Core::destroy(); }

    static kiln::History& history() { return kiln::Core::get()->history(); }

    Interface& host_;
    INode *first_ = nullptr, *second_ = nullptr;
};

TEST_F(DragTest, IsOneStepOrNone) {
    {
        TransformDrag drag(host_, "Move");
        for (int i = 1; i <= 5; ++i) drag.show(TransMatrix({double(i), 0, 0}));
        expectNear(second_->GetNodeTM(0).GetTrans(), {10, 0, 0}, 1e-12);
        drag.keep();
    }
    EXPECT_EQ(history().stepCount(), 1u);
    EXPECT_EQ(history().stepName(0), "Move");
    history().undo();
    expectNear(second_->GetNodeTM(0).GetTrans(), {5, 0, 0}, 0);
    EXPECT_FALSE(kiln::Core::get()->isModified());
    {
        TransformDrag drag(host_, "Move");
        drag.show(TransMatrix({1, 0, 0}));
        EXPECT_TRUE(kiln::Core::get()->isModified());
    }
    expectNear(first_->GetNodeTM(0).GetTrans(), {}, 0);
    EXPECT_FALSE(kiln::Core::get()->isModified()) << "given up, it has left nothing";
    EXPECT_TRUE(history().canRedo()) << "not even in the history";
    TransformDrag still(host_, "Move");
    still.show(TransMatrix({1, 0, 0}));
    still.show({});
    still.keep();
    EXPECT_TRUE(history().canRedo()) << "back where it began it is no step";

    TransformDrag bereft(host_, "Move");
    host_.DeleteNode(second_);
    bereft.show(TransMatrix({0, 0, 3}));
    bereft.keep();
    expectNear(first_->GetNodeTM(0).GetTrans(), {0, 0, 3}, 0);
}

}  // namespace
