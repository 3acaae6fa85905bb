// Moving, turning and scaling by numbers.
#include <workbench/transforms.h>

#include <gtest/gtest.h>
#include <kiln/host/host.h>

#include <cmath>

using namespace workbench;

namespace {

class TransformsTest : public testing::Test {
protected:
    TransformsTest() : host_(kiln::Core::create().hostInterface()) {
        first_ = host_.CreateObjectNode(new BoxObject(2, 2, 2), "first");
        second_ = host_.CreateObjectNode(new BoxObject(2, 2, 2), "second");
        below_ = host_.CreateObjectNode(new BoxObject(2, 2, 2), "below");
        first_->AttachChild(below_);
        first_->SetNodeTM(0, TransMatrix({1, 2, 3}));
        second_->SetNodeTM(0, TransMatrix({10, 0, 0}));
        host_.SelectNode(below_, true);  // goes along with the first one
        host_.SelectNode(first_, false);
        host_.SelectNode(second_, false);
    }
    ~TransformsTest() override { kiln::Core::destroy(); }

    static Point3 placeOf(INode* node) { return node->GetNodeTM(0).GetTrans(); }
    static void expectNear(const Point3& point, const Point3& expected) {
        EXPECT_NEAR(Length(point - expected), 0, 1e-9)
            << point.x << ' ' << point.y << ' ' << point.z;
    }

    Interface& host_;
    INode *first_ = nullptr, *second_ = nullptr, *below_ = nullptr;
};

TEST_F(TransformsTest, MoveAllByTheSameWayAndEachOnce) {
    ASSERT_TRUE(selectedPlace(host_));
    expectNear(*selectedPlace(host_), {1, 2, 3});
    moveSelected(host_, {1, 0, 0});
    expectNear(placeOf(first_), {2, 2, 3});
    expectNear(placeOf(below_), {2, 2, 3});
    expectNear(placeOf(second_), {11, 0, 0});
    moveSelectedTo(host_, {0, 0, 5});
    expectNear(placeOf(first_), {0, 0, 5});
    expectNear(placeOf(second_), {9, -2, 2});
    host_.ClearNodeSelection();
    EXPECT_FALSE(selectedPlace(host_));
    moveSelectedTo(host_, {7, 7, 7});
    expectNear(placeOf(first_), {0, 0, 5});
}

TEST_F(TransformsTest, TurnAndScaleAboutTheirOwnPlaces) {
    rotateSelected(host_, {90, 0, 90});  // about x first
    expectNear(placeOf(first_), {1, 2, 3});
    expectNear(second_->GetNodeTM(0).PointTransform({0, 1, 0}), {10, 0, 1});
    expectNear(second_->GetNodeTM(0).PointTransform({1, 0, 0}), {10, 1, 0});
    scaleSelected(host_, {2, 3, 4});
    expectNear(second_->GetNodeTM(0).PointTransform({1, 0, 0}), {10, 2, 0});
    expectNear(second_->GetNodeTM(0).PointTransform({0, 1, 0}), {10, 0, 3});
    expectNear(placeOf(second_), {10, 0, 0});
}

TEST_F(TransformsTest, AGridTakesTheNearestOfItsPoints) {
    expectNear(onGrid({1.2, -1.6, 2.5}, 1), {1, -2, 3});
    expectNear(onGrid({1.2, -1.6, 7}, 0.5), {1, -1.5, 7});
    for (const double none : {0.0, -1.0, std::nan("")})
        expectNear(onGrid({1.2, 0, 0}, none), {1.2, 0, 0});
}

}  // namespace
