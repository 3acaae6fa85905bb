#include <workbench/renderer.h>

#include <gmock/gmock.h>

using namespace workbench;

namespace {

constexpr Colour kGrey = 0xC0C0C0;

ItemIndex addCube(SceneModel& scene, Vec3d centre, double size) {
    const ItemIndex item = scene.beginItem();
    Box box;
    box.add(centre - Vec3d{size, size, size} * 0.5);
    box.add(centre + Vec3d{size, size, size} * 0.5);
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

    ItemIndex itemAt(Vec3d world) const {
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
    scene_.setSelected(cube, true, true);
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

// Side by side, a red and a white floor seen from above.
TEST_F(RendererTest, TheScenesLightsLightItInTheirColours) {
    const auto floor = [&](double x, Colour colour) {
        const ItemIndex item = scene_.beginItem();
        for (const Vec3d p :
             {Vec3d{x, 0, 0}, Vec3d{x + 10, 0, 0}, Vec3d{x + 10, 10, 0}, Vec3d{x, 10, 0}})
            scene_.addVertex(p);
        scene_.addTriangle(0, 1, 2, colour);
        scene_.addTriangle(0, 2, 3, colour);
        scene_.endItem();
        return item;
    };
    floor(0, 0xC00000);
    floor(40, kGrey);
    camera_.setView(View::kTop);
    camera_.frame(scene_.box());
    struct Seen {
        int red, green, blue;
    };
    const auto seenAt = [&](Vec3d world) {
        const auto p = *camera_.project(world);
        const Colour c = canvas_.pixel(static_cast<int>(p.x), static_cast<int>(p.y));
        return Seen{static_cast<int>(c >> 16 & 0xFF), static_cast<int>(c >> 8 & 0xFF),
                    static_cast<int>(c & 0xFF)};
    };
    draw();
    const Seen unlit = seenAt({45, 5, 0});
    EXPECT_GT(unlit.red, 140) << "without lights there is one of our own";
    EXPECT_EQ(unlit.red, unlit.blue);
    EXPECT_GT(seenAt({5, 5, 0}).red, 140);
    EXPECT_EQ(seenAt({5, 5, 0}).green, 0);

    // From the side nothing but the little light from everywhere falls on a floor.
    scene_.addLight({LightKind::kDirectional, {}, {1, 0, 0}, {1, 1, 1}});
    draw();
    const Seen grazed = seenAt({45, 5, 0});
    EXPECT_LT(grazed.red, unlit.red - 40);
    scene_.addLight({LightKind::kDirectional, {}, {0, 0, -1}, {0, 0, 1}});
    draw();
    EXPECT_GT(seenAt({45, 5, 0}).blue, grazed.blue + 60);
    EXPECT_EQ(seenAt({45, 5, 0}).red, grazed.red);
    EXPECT_EQ(seenAt({5, 5, 0}).blue, 0) << "red does not throw back blue";

    // A spot over one floor leaves the other as it was.
    scene_.addLight({LightKind::kSpot, {5, 5, 15}, {0, 0, -1}, {1, 1, 1}});
    const Seen red = seenAt({5, 5, 0}), grey = seenAt({45, 5, 0});
    draw();
    EXPECT_GT(seenAt({5, 5, 0}).red, red.red + 30);
    EXPECT_EQ(seenAt({45, 5, 0}).red, grey.red);
    scene_.addLight({LightKind::kPoint, {std::nan(""), 0, 0}, {}, {1, 1, 1}});
    EXPECT_EQ(scene_.lights().size(), 3u) << "a light that is nowhere is left out";
}

TEST_F(RendererTest, NormalsOfVerticesMakeAnEdgeRound) {
    const ItemIndex item = addCube(scene_, {}, 10);
    camera_.setView(View::kFront);
    camera_.frame(scene_.box());
    draw();
    const auto middle = static_cast<int>(camera_.project({0, -5, 0.5})->y);
    const auto at = [&](int x) { return canvas_.pixel(x, middle) & 0xFF; };
    const auto left = static_cast<int>(camera_.project({-4.5, -5, 0})->x);
    const auto right = static_cast<int>(camera_.project({4.5, -5, 0})->x);
    EXPECT_EQ(at(left), at(right)) << "a flat side is of one brightness";

    std::vector<Finish> finishes(scene_.items()[item].vertexCount);
    for (unsigned i = 0; i < finishes.size(); ++i)
        finishes[i].normal = normalised(Vec3{i & 1 ? 1.f : -1.f, i & 2 ? 1.f : -1.f, 0});
    scene_.setFinishes(finishes);
    draw();
    EXPECT_GT(at(left), at(right) + 20) << "the lamp is on the left";
}

// What stands on the earth's surface in a scene with its origin at the earth's centre is drawn
// exactly as the same thing at the origin, in every pixel.
TEST_F(RendererTest, AThingFarFromTheOriginIsDrawnAsOneAtTheOrigin) {
    const auto picture = [&](Vec3d place, View view) {
        scene_.clear();
        addCube(scene_, place, 0.5);
        addCube(scene_, place + Vec3d{0.6, 0.2, 0.1}, 0.25);
        camera_ = {};
        camera_.setPictureSize(kWidth, kHeight);
        camera_.setView(view);
        camera_.frame(scene_.box());
        camera_.zoom(2, 100, 100);
        draw(DrawMode::kShadedEdges);
        return std::vector<Colour>(canvas_.pixels(), canvas_.pixels() + kWidth * kHeight);
    };
    for (const View view : {View::kPerspective, View::kTop}) {
        const std::vector<Colour> here = picture({}, view);
        const std::vector<Colour> there = picture({4194304, -2097152, 4194304}, view);
        int different = 0;
        for (std::size_t i = 0; i < here.size(); ++i) different += here[i] != there[i];
        EXPECT_LT(different, 40);
    }
}

TEST_F(RendererTest, OutlinesWhatHangsBelowASelectedGroup) {
    const ItemIndex cube = addCube(scene_, {}, 10);
    const ItemIndex other = addCube(scene_, {30, 0, 0}, 10);
    camera_.frame(scene_.box());
    const auto rim = [&] {
        draw();
        int found = 0;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                found += canvas_.pixel(x, y) == 0xFFC040 && canvas_.item(x, y) == kNoItem;
        return found;
    };
    EXPECT_EQ(rim(), 0);
    scene_.setSelected(cube, false, true);
    const int one = rim();
    EXPECT_GT(one, 40);
    scene_.setSelected(other, false, true);
    EXPECT_GT(rim(), one + 40);
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
