#include <render/camera.h>

#include <gmock/gmock.h>

using namespace render;
using testing::FloatNear;

namespace {

Camera cameraAt(View view, int width = 400, int height = 300) {
    Camera camera;
    camera.setPictureSize(width, height);
    camera.setView(view);
    return camera;
}

TEST(Camera, UsualViewsPutTheAxesWhereADrawingHasThem) {
    struct Case {
        View view;
        Vec3 toTheRight, upwards, nearer;
    };
    const Case cases[] = {
        {View::kTop, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
        {View::kFront, {1, 0, 0}, {0, 0, 1}, {0, -1, 0}},
        {View::kLeft, {0, -1, 0}, {0, 0, 1}, {-1, 0, 0}},
        {View::kRight, {0, 1, 0}, {0, 0, 1}, {1, 0, 0}},
        {View::kBack, {-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
        {View::kBottom, {1, 0, 0}, {0, -1, 0}, {0, 0, -1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.view));
        const Camera camera = cameraAt(c.view);
        const ScreenPoint centre = *camera.project({});
        EXPECT_THAT(centre.x, FloatNear(200, 0.01f));
        EXPECT_THAT(centre.y, FloatNear(150, 0.01f));
        const ScreenPoint right = *camera.project(c.toTheRight);
        EXPECT_GT(right.x, centre.x + 1);
        EXPECT_THAT(right.y, FloatNear(centre.y, 0.01f));
        EXPECT_LT(camera.project(c.upwards)->y, centre.y - 1);
        EXPECT_GT(camera.project(c.nearer)->depth, centre.depth);
    }
}

TEST(Camera, FramesABoxWhollyAndNotTooSmall) {
    Box box;
    box.add({1000, -40, 3});
    box.add({1300, 25, 90});
    for (const View view : {View::kPerspective, View::kTop, View::kFront, View::kLeft}) {
        SCOPED_TRACE(static_cast<int>(view));
        Camera camera = cameraAt(view);
        camera.frame(box);
        float left = 400, right = 0, top = 300, bottom = 0;
        for (unsigned i = 0; i < 8; ++i) {
            const auto p = camera.project(box.corner(i));
            ASSERT_TRUE(p.has_value());
            left = std::min(left, p->x);
            right = std::max(right, p->x);
            top = std::min(top, p->y);
            bottom = std::max(bottom, p->y);
        }
        EXPECT_GE(left, 0);
        EXPECT_GE(top, 0);
        EXPECT_LE(right, 400);
        EXPECT_LE(bottom, 300);
        EXPECT_GT(std::max((right - left) / 400, (bottom - top) / 300), 0.6f);
    }
}

TEST(Camera, PanMovesTheTargetPlaneWithTheMouse) {
    for (const View view : {View::kPerspective, View::kTop}) {
        Camera camera = cameraAt(view);
        const Vec3d point = camera.target() + camera.right() * 7;
        const ScreenPoint before = *camera.project(point);
        camera.pan(30, -12);
        const ScreenPoint after = *camera.project(point);
        EXPECT_THAT(after.x - before.x, FloatNear(30, 0.05f));
        EXPECT_THAT(after.y - before.y, FloatNear(-12, 0.05f));
    }
}

TEST(Camera, ZoomKeepsThePointUnderTheMouse) {
    for (const View view : {View::kPerspective, View::kFront}) {
        Camera camera = cameraAt(view);
        const Vec3d point = camera.target() + camera.right() * 20 + camera.up() * 11;
        const ScreenPoint before = *camera.project(point);
        const double distance = camera.distance();
        camera.zoom(3, before.x, before.y);
        EXPECT_LT(camera.distance(), distance * 0.7f);
        const ScreenPoint after = *camera.project(point);
        EXPECT_THAT(after.x, FloatNear(before.x, 0.05f));
        EXPECT_THAT(after.y, FloatNear(before.y, 0.05f));
        camera.zoom(-3, before.x, before.y);
        EXPECT_NEAR(camera.distance(), distance, 0.01);
    }
}

TEST(Camera, OrbitTurnsAroundTheTargetAndNeverOverTheTop) {
    Camera camera = cameraAt(View::kTop);
    camera.orbit(40, -200);
    EXPECT_EQ(camera.view(), View::kPerspective);
    EXPECT_NEAR(length(camera.eye() - camera.target()), camera.distance(), 0.01);
    camera.orbit(0, 100000);
    EXPECT_LT(camera.forward().z, -0.99f);
    EXPECT_GT(camera.up().z, 0);
    camera.orbit(0, -100000);
    EXPECT_GT(camera.forward().z, 0.99f);
    EXPECT_GT(camera.up().z, 0);
}

TEST(Camera, FocusingOnAPointChangesOnlyWhatTheMouseMoves) {
    Camera camera = cameraAt(View::kPerspective);
    const Vec3d point = camera.target() + camera.forward() * 60.f + camera.right() * 5.f;
    const ScreenPoint before = *camera.project(point);
    camera.focusAt(camera.distanceOf(before.depth));
    const ScreenPoint after = *camera.project(point);
    EXPECT_THAT(after.x, FloatNear(before.x, 0.01f));
    EXPECT_THAT(after.y, FloatNear(before.y, 0.01f));
    camera.pan(25, 10);
    EXPECT_THAT(camera.project(point)->x, FloatNear(before.x + 25, 0.05f))
        << "the point follows the mouse, though it was not at the target's depth";
    const double distance = camera.distance();
    camera.focusAt(std::nanf(""));
    camera.focusAt(-5);
    EXPECT_EQ(camera.distance(), distance);
}

TEST(Camera, CullsWhatCannotBeSeenOnly) {
    const Camera camera = cameraAt(View::kPerspective);
    EXPECT_FALSE(camera.isOutside(camera.toView(camera.target()), 1));
    const Vec3 behind{0, 0, -50};
    EXPECT_TRUE(camera.isOutside(behind, 10));
    EXPECT_FALSE(camera.isOutside(behind, 60));
    const Vec3 aside = camera.toView(camera.target() + camera.right() * 100);
    EXPECT_TRUE(camera.isOutside(aside, 10));
    EXPECT_FALSE(camera.isOutside(aside, 90));
}

// Found from the plane alone, the depths are those of its points.
TEST(CameraTest, DepthsOfAPlaneAreThoseOfItsPoints) {
    Camera camera;
    camera.setPictureSize(640, 480);
    Box box;
    box.add({-100, -100, 0});
    box.add({100, 100, 0});
    const Vec3 normal = normalised(Vec3{0.2f, -0.3f, 1});
    for (const View view : {View::kPerspective, View::kTop, View::kFront}) {
        camera.setView(view);
        camera.frame(box);
        const DepthPlane plane =
            camera.depthPlane(normal, dot(Vec3d(normal), Vec3d{} - camera.eye()));
        for (const Vec3d across : {Vec3d{1, 0, -0.2}, Vec3d{0, 1, 0.3}, Vec3d{0, 0, 0}}) {
            const auto point = camera.project(across * 40);
            ASSERT_TRUE(point);
            EXPECT_NEAR(plane.start + point->x * plane.perX + point->y * plane.perY, point->depth,
                        std::abs(point->depth) * 1e-5);
        }
    }
}

}  // namespace
