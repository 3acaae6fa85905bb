// What a rubber band takes.
#include <render/renderer.h>
#include <workbench/selectionband.h>

#include <gmock/gmock.h>

#include <cmath>

using namespace workbench;
using namespace render;
using testing::ElementsAre, testing::IsEmpty;

namespace {

/// Seen from above: a small square in the middle, a large one behind it, and a mark to the right.
class SelectionBandTest : public testing::Test {
protected:
    SelectionBandTest() {
        addSquare(2, 1);
        addSquare(20, 0);
        model_.beginItem();
        model_.addMark(MarkKind::kHelper, {16, 0, 0}, 0xFFFFFF);
        model_.endItem();
        camera_.setPictureSize(400, 400);
        camera_.setView(View::kTop);
        Box box;
        box.add({-20, -20, 0});
        box.add({20, 20, 1});
        camera_.frame(box);
        canvas_.resize(400, 400);
        renderer_.draw(model_, camera_, {}, canvas_);
    }

    void addSquare(double size, double height) {
        const double half = size / 2;
        model_.beginItem();
        for (const auto& [x, y] :
             {std::pair{-half, -half}, {half, -half}, {half, half}, {-half, half}})
            model_.addVertex({x, y, height});
        model_.addTriangle(0, 1, 2, 0x808080);
        model_.addTriangle(0, 2, 3, 0x808080);
        model_.endItem();
    }

    /// The picture of a part of the ground.
    PixelArea around(double left, double right, double halfHeight) const {
        const auto from = *camera_.project({left, halfHeight, 0}),
                   to = *camera_.project({right, -halfHeight, 0});
        return {static_cast<int>(std::floor(from.x)), static_cast<int>(std::floor(from.y)),
                static_cast<int>(std::ceil(to.x)), static_cast<int>(std::ceil(to.y))};
    }

    SceneModel model_;
    Camera camera_;
    Canvas canvas_;
    Renderer renderer_;
};

TEST_F(SelectionBandTest, TakesWhatLiesWholeInIt) {
    EXPECT_THAT(itemsWithin(model_, camera_, around(-3, 3, 3)), ElementsAre(0u));
    EXPECT_THAT(itemsWithin(model_, camera_, around(-11, 11, 11)), ElementsAre(0u, 1u));
    EXPECT_THAT(itemsWithin(model_, camera_, around(-11, 17, 11)), ElementsAre(0u, 1u, 2u));
    EXPECT_THAT(itemsWithin(model_, camera_, around(-9, 17, 11)), ElementsAre(0u, 2u))
        << "a corner is outside";
    EXPECT_THAT(itemsWithin(model_, camera_, around(5, 6, 1)), IsEmpty());
    camera_.setView(View::kPerspective);
    camera_.frame(model_.box());
    camera_.zoom(60, 200, 200);  // into it: corners are behind the viewer
    EXPECT_THAT(itemsWithin(model_, camera_, {0, 0, 400, 400}),
                testing::Not(testing::Contains(1u)));
}

TEST_F(SelectionBandTest, OrWhatIsSeenInIt) {
    EXPECT_THAT(itemsTouched(canvas_, around(5, 6, 1)), ElementsAre(1u));
    EXPECT_THAT(itemsTouched(canvas_, around(-0.5, 0.5, 0.5)), ElementsAre(0u))
        << "the large one is behind it";
    EXPECT_THAT(itemsTouched(canvas_, around(-0.5, 6, 1)), ElementsAre(0u, 1u));
    EXPECT_THAT(itemsTouched(canvas_, {-50, -50, 900, 900}), ElementsAre(0u, 1u, 2u));
    EXPECT_THAT(itemsTouched(canvas_, {300, 10, 200, 20}), IsEmpty());
}

}  // namespace
