#include <workbench/renderer.h>

#include <gmock/gmock.h>

using namespace workbench;

namespace {

constexpr Colour kGrey = 0xC0C0C0;

ItemIndex addCube(SceneModel& scene, Vec3 centre, float size) {
    const ItemIndex item = scene.beginItem();
    Box box;
    box.add(centre - Vec3{size, size, size} * 0.5f);
    box.add(centre + Vec3{size, size, size} * 0.5f);
    for (unsigned i = 0; i < 8; ++i) scene.addVertex(box.corner(i));
    constexpr std::uint32_t kSides[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                                            {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    for (const auto& side : kSides) {
        scene.addTriangle(side[0], side[1], side[2], kGrey, 3);
        scene.addTriangle(side[0], side[2], side[3], kGrey, 6);
    }
    scene.endItem();
    return item;
}

class RendererTest : public testing::Test {
protected:
    RendererTest() {
        camera_.setPictureSize(kWidth, kHeight);
        canvas_.resize(kWidth, kHeight);
    }

    void draw(DrawMode mode = DrawMode::kShaded) {
        renderer_.draw(scene_, camera_, {mode, false, false, 1}, canvas_);
    }

    ItemIndex itemAt(Vec3 world) const {
        const auto p = camera_.project(world);
        return p ? canvas_.pick(static_cast<int>(p->x), static_cast<int>(p->y), 0) : kNoItem;
    }

    static constexpr int kWidth = 320, kHeight = 240;
    SceneModel scene_;
    Camera camera_;
    Canvas canvas_;
    Renderer renderer_;
};

TEST_F(RendererTest, PicksTheFrontmostThing) {
    const ItemIndex front = addCube(scene_, {0, -20, 0}, 10);
    const ItemIndex back = addCube(scene_, {0, 20, 0}, 16);
    camera_.setView(View::kFront);
    camera_.frame(scene_.box());
    draw();
    EXPECT_EQ(itemAt({0, -20, 0}), front);
    EXPECT_EQ(itemAt({7, 12, 7}), back);
    EXPECT_EQ(canvas_.pick(2, 2, 1), kNoItem);
}

TEST_F(RendererTest, SidesOfACubeDifferInBrightness) {
    addCube(scene_, {}, 10);
    camera_.frame(scene_.box());
    draw();
    std::vector<Colour> seen;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            if (canvas_.item(x, y) != kNoItem) seen.push_back(canvas_.pixel(x, y));
    std::sort(seen.begin(), seen.end());
    seen.erase(std::unique(seen.begin(), seen.end()), seen.end());
    EXPECT_EQ(seen.size(), 3u);
}

TEST_F(RendererTest, WireframeLeavesFacesOpenAndHidesInnerEdges) {
    addCube(scene_, {}, 10);
    camera_.setView(View::kFront);
    camera_.frame(scene_.box());
    draw(DrawMode::kWireframe);
    EXPECT_EQ(itemAt({0, -5, 0.7f}), kNoItem) << "neither surface nor the diagonal of the side";
    const auto edge = *camera_.project({0, -5, 5});
    EXPECT_EQ(canvas_.pick(static_cast<int>(edge.x), static_cast<int>(edge.y), 2), 0u);
}

TEST_F(RendererTest, EdgesAreLeftOutWhereTheyWouldHideTheSurface) {
    addCube(scene_, {}, 10);
    const auto sameInBothModes = [&] {
        draw(DrawMode::kShaded);
        const std::vector<Colour> plain(canvas_.pixels(), canvas_.pixels() + kWidth * kHeight);
        draw(DrawMode::kShadedEdges);
        return std::equal(plain.begin(), plain.end(), canvas_.pixels());
    };
    camera_.frame(scene_.box());
    EXPECT_FALSE(sameInBothModes());
    camera_.zoom(-25, kWidth / 2.f, kHeight / 2.f);
    EXPECT_TRUE(sameInBothModes());
    EXPECT_NE(canvas_.pick(kWidth / 2, kHeight / 2, 3), kNoItem) << "it is still there";
}

TEST_F(RendererTest, SelectionIsMarkedWithoutTakingOtherThingsPixels) {
    const ItemIndex cube = addCube(scene_, {}, 10);
    camera_.frame(scene_.box());
    draw();
    const std::vector<Colour> plain(canvas_.pixels(), canvas_.pixels() + kWidth * kHeight);
    scene_.setSelected(cube, true);
    draw();
    int changed = 0;
    for (int i = 0; i < kWidth * kHeight; ++i)
        changed += plain[static_cast<std::size_t>(i)] != canvas_.pixels()[i];
    EXPECT_GT(changed, 200);
    EXPECT_LT(changed, kWidth * kHeight / 4);
}

// Standing inside a floor that reaches behind the viewer, the part in front is drawn.
TEST_F(RendererTest, ClipsWhatReachesBehindTheViewer) {
    scene_.beginItem();
    const float far = 1e5f;
    for (const Vec3 p :
         {Vec3{-far, -far, 0}, Vec3{far, -far, 0}, Vec3{far, far, 0}, Vec3{-far, far, 0}})
        scene_.addVertex(p);
    scene_.addTriangle(0, 1, 2, kGrey, 3);
    scene_.addTriangle(0, 2, 3, kGrey, 6);
    scene_.endItem();
    camera_.frame({});
    for (const DrawMode mode : {DrawMode::kShaded, DrawMode::kShadedEdges, DrawMode::kWireframe}) {
        draw(mode);
        if (mode == DrawMode::kWireframe) continue;
        EXPECT_EQ(canvas_.item(kWidth / 2, kHeight - 2), 0u);
        EXPECT_EQ(canvas_.item(kWidth / 2, kHeight / 2), 0u);
    }
}

TEST_F(RendererTest, MarksArePickedAndCulledSurfacesCostNothing) {
    const ItemIndex helper = scene_.beginItem();
    scene_.addMark(MarkKind::kHelper, {0, 0, 0}, kGrey);
    scene_.endItem();
    const ItemIndex light = scene_.beginItem();
    scene_.addMark(MarkKind::kLightPoint, {8, 0, 0}, kGrey);
    scene_.endItem();
    camera_.frame(scene_.box());
    addCube(scene_, camera_.eye() - camera_.forward() * 100, 10);
    draw();
    EXPECT_EQ(itemAt({0, 0, 0}), helper);
    EXPECT_EQ(itemAt({8, 0, 0}), light);
    EXPECT_EQ(renderer_.trianglesDrawn(), 0u);
}

TEST_F(RendererTest, LeavesOutTrianglesThatCannotBeDrawn) {
    scene_.beginItem();
    scene_.addVertex({0, 0, 0});
    scene_.addVertex({1, 0, 0});
    scene_.addVertex({0, std::numeric_limits<float>::infinity(), 0});
    scene_.addTriangle(0, 1, 2, kGrey);
    scene_.addTriangle(0, 1, 3, kGrey);
    scene_.addMark(MarkKind::kLight, {std::nanf(""), 0, 0}, kGrey);
    scene_.endItem();
    EXPECT_TRUE(scene_.triangles().empty());
    EXPECT_TRUE(scene_.marks().empty());
    camera_.frame(scene_.box());
    draw();
    EXPECT_EQ(canvas_.pick(kWidth / 2, kHeight / 2, kHeight), kNoItem);
}

}  // namespace
