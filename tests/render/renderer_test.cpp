#include <render/renderer.h>

#include <gmock/gmock.h>

using namespace render;

namespace {

constexpr Color kGrey = 0xC0C0C0;

ItemIndex addCube(SceneModel& scene, Vec3d centre, double size, const Surface& surface = {}) {
    const ItemIndex item = scene.beginItem();
    scene.setSurface(surface);
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

// From a hundred thousandth to a thousand million units: the same picture, to the pixel.
TEST_F(RendererTest, ModelsOfAnySizeLookTheSame) {
    const auto pictureOf = [&](View view, double size) {
        scene_.clear();
        addCube(scene_, {0, 0, 0}, 100 * size);
        addCube(scene_, {200 * size, 70 * size, 0}, 3 * size);
        addCube(scene_, {-80 * size, -60 * size, 50 * size}, 0.7 * size);
        camera_.setView(view);
        camera_.frame(scene_.box());
        draw();
        return std::vector<Color>(canvas_.pixels(), canvas_.pixels() + kWidth * kHeight);
    };
    for (const View view : {View::kPerspective, View::kTop}) {
        const std::vector<Color> usual = pictureOf(view, 1);
        for (const int power : {-24, -17, 13, 24})
            EXPECT_EQ(pictureOf(view, std::ldexp(1., power)), usual) << power;
    }
}

// A stone before the eye, the ground to the horizon and a mountain far away, of which the
// user has clicked the mountain: nothing is cut off, before the eye or far away.
TEST_F(RendererTest, TheNearAndTheFarAreWholeInOnePicture) {
    for (const double reach : {1e3, 1e6}) {
        SCOPED_TRACE(reach);
        scene_.clear();
        addCube(scene_, {0, 0, -reach}, 2 * reach);  // its top is the ground
        const ItemIndex stone = addCube(scene_, {0, 1.5, 0.1}, 0.2);
        const ItemIndex mountain = addCube(scene_, {0, 0.9 * reach, 0}, 0.1 * reach);
        ASSERT_TRUE(camera_.lookFrom({0, 0, 1}, {0, 1, 0.75}));
        camera_.focusAt(static_cast<float>(0.9 * reach));
        ASSERT_NEAR(camera_.distance(), 0.9 * reach, 1);
        draw();
        EXPECT_EQ(itemAt({0, 1.5, 0.2}), stone);
        EXPECT_EQ(itemAt({0.05, 1.4, 0.15}), stone);
        EXPECT_EQ(itemAt({0, 0.85 * reach, 0.01 * reach}), mountain);
        // Where the ground ends: from there down to the lower edge there is no gap.
        const double slope = 1 / reach;
        for (const double side : {-0.5, 0.0, 0.4}) {
            const auto horizon = camera_.project({side, 1, 1 - slope});
            ASSERT_TRUE(horizon);
            const int x = static_cast<int>(horizon->x);
            for (int y = static_cast<int>(horizon->y) + 2; y < kHeight; ++y)
                ASSERT_NE(canvas_.item(x, y), kNoItem) << x << ' ' << y;
            if (side != 0) {
                for (int y = 0; y < static_cast<int>(horizon->y) - 2; ++y)
                    ASSERT_EQ(canvas_.item(x, y), kNoItem) << x << ' ' << y;
            }
        }
    }
}

TEST_F(RendererTest, SidesOfACubeDifferInBrightness) {
    addCube(scene_, {}, 10);
    camera_.frame(scene_.box());
    draw();
    std::vector<Color> seen;
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
        const std::vector<Color> plain(canvas_.pixels(), canvas_.pixels() + kWidth * kHeight);
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
    const std::vector<Color> plain(canvas_.pixels(), canvas_.pixels() + kWidth * kHeight);
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
    const float distant = 1e5f;
    for (const Vec3 p : {Vec3{-distant, -distant, 0}, Vec3{distant, -distant, 0},
                         Vec3{distant, distant, 0}, Vec3{-distant, distant, 0}})
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

// Of edges that reach behind the viewer, or far beside the picture, what is in it stays where it
// is.
TEST_F(RendererTest, EdgesGoOnStraightOutOfThePicture) {
    const Vec3d corners[] = {{-1, 4, 0}, {1, 4, 0}, {0.5, -50, 0}, {9000, 60, 0}};
    ASSERT_TRUE(camera_.lookFrom({0, 0, 1}, {0, 1, 0.75}));
    scene_.beginItem();
    for (const Vec3d& corner : corners) scene_.addVertex(corner);
    scene_.addTriangle(0, 1, 2, kGrey);
    scene_.addTriangle(1, 0, 3, kGrey);
    scene_.endItem();
    draw(DrawMode::kWireframe);
    const auto isDrawn = [&](std::size_t from, std::size_t to, double share) {
        const Vec3d at = corners[from] + (corners[to] - corners[from]) * share;
        const auto place = camera_.project(at);
        EXPECT_TRUE(place);
        return place &&
               canvas_.pick(static_cast<int>(place->x), static_cast<int>(place->y), 1) == 0;
    };
    for (const double share : {0.002, 0.01, 0.02, 0.03, 0.04}) {
        EXPECT_TRUE(isDrawn(0, 2, share)) << share;
        EXPECT_TRUE(isDrawn(1, 2, share)) << share;
    }
    for (const double share : {0.00002, 0.00005, 0.0001}) {
        EXPECT_TRUE(isDrawn(0, 3, share)) << share;
        EXPECT_TRUE(isDrawn(1, 3, share)) << share;
    }
    EXPECT_EQ(canvas_.pick(2, 2, 1), kNoItem) << "nothing goes elsewhere";
}

// Whichever of its two sides is left out, or comes first.
TEST_F(RendererTest, WhatIsSeenFromOneSideHasAllEdgesOfTheSidesThatAreSeen) {
    Surface surface;
    surface.style = DrawStyle::kFrontOnly;
    addCube(scene_, {}, 10, surface);
    camera_.frame(scene_.box());
    int seen = 0, atRim = 0;
    for (int turn = 0; turn < 12; ++turn) {
        camera_.orbit(100, turn == 6 ? 200 : 0);
        draw();
        const std::vector<Color> plain(canvas_.pixels(), canvas_.pixels() + kWidth * kHeight);
        draw(DrawMode::kShadedEdges);
        const auto isFront = [&](Vec3d normal) { return dot(normal, camera_.eye()) > 5.2; };
        for (int axis = 0; axis < 3; ++axis)
            for (int i = 0; i < 4; ++i) {
                double Vec3d::*const along[] = {&Vec3d::x, &Vec3d::y, &Vec3d::z};
                Vec3d one, other;
                one.*along[(axis + 1) % 3] = i & 1 ? 1 : -1;
                other.*along[(axis + 2) % 3] = i & 2 ? 1 : -1;
                if (!isFront(one) && !isFront(other)) continue;
                const ScreenPoint middle = *camera_.project((one + other) * 5);
                bool isDrawn = false;
                for (int y = static_cast<int>(middle.y) - 1; y <= static_cast<int>(middle.y) + 1;
                     ++y)
                    for (int x = static_cast<int>(middle.x) - 1;
                         x <= static_cast<int>(middle.x) + 1; ++x)
                        isDrawn = isDrawn || plain[static_cast<std::size_t>(y * kWidth + x)] !=
                                                 canvas_.pixel(x, y);
                EXPECT_TRUE(isDrawn) << turn << ": " << axis << ", " << i;
                ++seen;
                atRim += isFront(one) != isFront(other);
            }
    }
    EXPECT_GT(atRim, 40);
    EXPECT_GT(seen, atRim);
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
TEST_F(RendererTest, TheScenesLightsLightItInTheirColors) {
    const auto floor = [&](double x, Color color) {
        const ItemIndex item = scene_.beginItem();
        for (const Vec3d p :
             {Vec3d{x, 0, 0}, Vec3d{x + 10, 0, 0}, Vec3d{x + 10, 10, 0}, Vec3d{x, 10, 0}})
            scene_.addVertex(p);
        scene_.addTriangle(0, 1, 2, color);
        scene_.addTriangle(0, 2, 3, color);
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
        const Color c = canvas_.pixel(static_cast<int>(p.x), static_cast<int>(p.y));
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

// What shines by itself is as bright as by day: lamps, light points and materials.
TEST_F(RendererTest, ByNightItIsDarkButForWhatShines) {
    scene_.addLight({LightKind::kDirectional, {}, {0, 0, -1}, {1, 1, 1}});
    scene_.addLight({LightKind::kSpot, {-20, 0, 8}, {0, 0, -1}, {1, 1, 1}});
    Surface unlit, shining;
    unlit.lit = false;
    shining.emissive = {0.5f, 0.5f, 0.5f};
    TextureUse use;
    use.color = TextureUse::Color::kReplace;
    const Texture picture({1, 1, {0xFFC0C0C0}}, Texture::kMostBits, use);
    Surface pictured, outlined, edged;
    pictured.texture = &picture;
    outlined.style = DrawStyle::kOutline;
    edged.style = DrawStyle::kSurfaceAndOutline;
    edged.outline = 0xFFFFFF;
    const Vec3d places[] = {{-20, 0, 0}, {0, 0, 0},  {8, 0, 0}, {16, 0, 0},
                            {24, 0, 0},  {32, 0, 0}, {40, 0, 0}};
    for (const Vec3d place : places) {
        scene_.beginItem();
        for (const Vec3d corner : {Vec3d{-3, -3, 0}, Vec3d{3, -3, 0}, Vec3d{0, 3, 0}})
            scene_.addVertex(place + corner);
        if (place.x == 8) scene_.setSurface(unlit);
        if (place.x == 16) scene_.setSurface(shining);
        if (place.x == 24) scene_.setSurface(pictured);
        if (place.x == 32) scene_.setSurface(outlined);
        if (place.x == 40) scene_.setSurface(edged);
        scene_.addTriangle(0, 1, 2, kGrey);
        scene_.endItem();
    }
    scene_.beginItem();
    scene_.addLightPoint({0, 12, 0}, 0xFFFFFF, 0, {});
    scene_.endItem();
    camera_.setView(View::kTop);
    camera_.frame(scene_.box());
    const auto brightness = [&](TimeOfDay time) {
        RenderOptions options{DrawMode::kShaded, false, false, 1};
        options.time = time;
        renderer_.draw(scene_, camera_, options, canvas_);
        std::vector<int> seen;
        for (const Vec3d place :
             {places[0], places[1], places[2], places[3], Vec3d{0, 12, 0}, places[4],
              places[5] - Vec3d{0, 3, 0}, places[6] - Vec3d{0, 3, 0}}) {
            const auto at = *camera_.project(place);
            seen.push_back(static_cast<int>(
                canvas_.pixel(static_cast<int>(at.x), static_cast<int>(at.y)) >> 8 & 0xFF));
        }
        seen.push_back(static_cast<int>(canvas_.pixel(2, 2) >> 8 & 0xFF));
        return seen;
    };
    const std::vector<int> any = brightness(TimeOfDay::kAny), dusk = brightness(TimeOfDay::kDusk),
                           night = brightness(TimeOfDay::kNight);
    EXPECT_EQ(brightness(TimeOfDay::kDay), any);
    for (const std::size_t dark : {1U, 2U, 5U, 6U, 7U, 8U}) {
        EXPECT_LT(night[dark] * 3, any[dark]) << dark;
        EXPECT_GT(dusk[dark], night[dark]) << dark;
        EXPECT_LT(dusk[dark], any[dark]) << dark;
    }
    EXPECT_GT(night[0], night[1] * 2) << "below the lamp";
    EXPECT_GT(night[3], 120) << "it shines";
    EXPECT_EQ(night[4], any[4]) << "the light point";
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
        return std::vector<Color>(canvas_.pixels(), canvas_.pixels() + kWidth * kHeight);
    };
    for (const View view : {View::kPerspective, View::kTop}) {
        const std::vector<Color> here = picture({}, view);
        const std::vector<Color> there = picture({4194304, -2097152, 4194304}, view);
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

/// A level square of that size, one texture across, a little to the side of the origin.
void addFloor(SceneModel& scene, double size, double height, Color color,
              const Surface& surface = {}) {
    scene.beginItem();
    for (const Vec3d& p : {Vec3d{-size, -size, height}, Vec3d{size, -size, height},
                           Vec3d{size, size, height}, Vec3d{-size, size, height}})
        scene.addVertex(p + Vec3d{size * 0.1, 0, 0});
    scene.setSurface(surface);
    const TexturePlace lower[] = {{0, 0}, {1, 0}, {1, 1}}, upper[] = {{0, 0}, {1, 1}, {0, 1}};
    scene.addTriangle(0, 1, 2, color, 3, lower);
    scene.addTriangle(0, 2, 3, color, 6, upper);
    scene.endItem();
}

// Markings on a wide ground, of other corners than it has, seen from close up to far away.
TEST_F(RendererTest, UpperLayersLieOnWhatIsInTheSamePlace) {
    addFloor(scene_, 5000, 0, kGrey);
    Surface marking;
    marking.layer = 1;
    addFloor(scene_, 700, 0, 0x00FF00, marking);
    Box box;
    for (const View view : {View::kPerspective, View::kTop}) {
        for (const double size : {2., 60., 400.}) {
            camera_.setView(view);
            box = {};
            box.add({-size, -size, 0});
            box.add({size, size, 0});
            camera_.frame(box);
            if (view == View::kPerspective) camera_.orbit(70, -60);
            draw();
            int seen = 0;
            for (int i = -150; i <= 150; ++i) {
                for (int j = -150; j <= 150; ++j) {
                    // Close together in the middle, where the camera is near.
                    const double x = i * std::abs(i) / 37.5, y = j * std::abs(j) / 37.5;
                    const auto at = camera_.project({x, y, 0});
                    if (!at || at->x < 1 || at->y < 1 || at->x > kWidth - 1 || at->y > kHeight - 1)
                        continue;
                    ++seen;
                    ASSERT_EQ(canvas_.item(static_cast<int>(at->x), static_cast<int>(at->y)), 1u)
                        << size << ": " << x << ", " << y;
                }
            }
            EXPECT_GT(seen, 200) << size;
        }
    }
}

// Layers far thinner than what a marking needs, without any word about them.
TEST_F(RendererTest, KeepsApartWhatIsAlmostInTheSamePlace) {
    addFloor(scene_, 5000, 0, kGrey);
    addFloor(scene_, 700, 0.02, 0x00FF00);
    Box box;
    box.add({-20, -20, 0});
    box.add({20, 20, 0});
    camera_.frame(box);
    draw();
    int seen = 0;
    for (double x = -100; x <= 100; x += 3) {
        const auto at = camera_.project({x, 100, 0.02});
        if (!at || at->x <= 0 || at->x >= kWidth || at->y <= 0 || at->y >= kHeight) continue;
        ++seen;
        EXPECT_EQ(canvas_.item(static_cast<int>(at->x), static_cast<int>(at->y)), 1u) << x;
    }
    EXPECT_GT(seen, 5);
}

TEST_F(RendererTest, TexturesLieInPerspective) {
    // Four colors, each a quarter of the floor.
    Picture quarters{64, 64, {}};
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            quarters.texels.push_back(0xFF000000 | (x < 32 ? 0xFF0000u : 0u) |
                                      (y < 32 ? 0x0000FFu : 0u) | 0x000800u);
    const Texture texture(quarters);
    Surface surface;
    surface.texture = &texture;
    surface.lit = false;
    addFloor(scene_, 100, 0, 0xFFFFFF, surface);
    camera_.frame(scene_.box());
    camera_.orbit(20, -20);
    for (const float nearer : {0.f, 6.f}) {  // the second time corners are behind the viewer
        camera_.zoom(nearer, kWidth / 2.f, kHeight / 2.f);
        draw();
        int seen = 0;
        for (int i = -9; i <= 9; ++i) {
            for (int j = -9; j <= 9; ++j) {
                const double x = i * 10 + 5, y = j * 10 + 5;
                const auto at = camera_.project({x + 10, y, 0});
                if (!at || at->x < 0 || at->y < 0 || at->x >= kWidth || at->y >= kHeight) continue;
                if (std::abs(x) > 80 || std::abs(y) > 80) continue;  // the edges repeat
                const Color color = canvas_.pixel(static_cast<int>(at->x), static_cast<int>(at->y));
                ++seen;
                EXPECT_EQ((color >> 16) > 128, x < 0) << x << ", " << y;
                EXPECT_EQ((color & 0xFF) > 128, y < 0) << x << ", " << y;
            }
        }
        EXPECT_GT(seen, 10);
    }
}

TEST_F(RendererTest, WhatIsTransparentLetsThroughWhatIsBehind) {
    addFloor(scene_, 100, 0, 0x0000FF);
    Surface glass;
    glass.opacity = 0.5f;
    addFloor(scene_, 50, 20, 0xFF0000, glass);
    const Texture holed({2, 1, {0xFFFFFFFF, 0x00FFFFFF}});
    Surface fence;
    fence.texture = &holed;
    addFloor(scene_, 50, 40, 0x00FF00, fence);
    camera_.setView(View::kTop);
    camera_.frame(scene_.box());
    draw();
    const auto at = [&](double x, double y) {
        const ScreenPoint p = *camera_.project({x, y, 40});
        return std::pair(static_cast<int>(p.x), static_cast<int>(p.y));
    };
    const auto [throughX, throughY] = at(30 + 5, 7);  // the hole of the fence, above the glass
    const Color through = canvas_.pixel(throughX, throughY);
    EXPECT_GT(through >> 16, 60u);
    EXPECT_GT(through & 0xFF, 60u);
    EXPECT_EQ(canvas_.item(throughX, throughY), 1u) << "glass can be picked";
    const auto [wireX, wireY] = at(-20 + 5, 7);
    EXPECT_EQ(canvas_.item(wireX, wireY), 2u);
}

// What lies on a pane is seen through it from both sides, where the farther one would come first.
TEST_F(RendererTest, TransparentLayersLieOnWhatIsBelowThem) {
    Surface pane, marking;
    pane.opacity = marking.opacity = 0.5f;
    marking.layer = 1;
    addFloor(scene_, 10, 0, 0xFF0000, pane);
    addFloor(scene_, 40, 0, 0x0000FF, marking);
    addFloor(scene_, 5, 6, 0x00FF00, pane);
    for (const double side : {-60., 60.}) {
        ASSERT_TRUE(camera_.lookFrom({side, 1, 30}, {}));
        draw();
        const ScreenPoint at = *camera_.project({-8, 0, 0});
        const Color seen = canvas_.pixel(static_cast<int>(at.x), static_cast<int>(at.y));
        EXPECT_GT(seen & 0xFF, (seen >> 16) + 30) << side;
    }
    camera_.setView(View::kTop);
    camera_.frame(scene_.items().front().box);
    draw();
    const ScreenPoint at = *camera_.project({1, 0, 6});
    const Color seen = canvas_.pixel(static_cast<int>(at.x), static_cast<int>(at.y));
    EXPECT_GT(seen & 0xFF, seen >> 8 & 0xFF) << "the layer comes before the distance";
}

TEST_F(RendererTest, OutlinesAreAsWideAsTheyAreToldWhereSurfacesAreShown) {
    ASSERT_TRUE(camera_.lookFrom({20, -30, 9}, {1, 0, 0}));
    const auto covered = [&](DrawMode mode, std::uint8_t width) {
        scene_.clear();
        Surface outline;
        outline.style = DrawStyle::kOutline;
        outline.lineWidth = width;
        addFloor(scene_, 10, 0, 0x00FF00, outline);
        draw(mode);
        int count = 0;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) count += canvas_.item(x, y) == 0;
        return count;
    };
    const int thin = covered(DrawMode::kShaded, 1);
    EXPECT_GT(thin, 300);
    EXPECT_GT(covered(DrawMode::kShaded, 9), 3 * thin);
    EXPECT_EQ(covered(DrawMode::kWireframe, 9), covered(DrawMode::kWireframe, 1));
}

// Places that a file may hold, at which no distance is a number.
TEST_F(RendererTest, WhatIsBeyondAllMeasureLeavesTheOrderOfTheOthers) {
    constexpr int kFloors = 40, kTop = kFloors - 1;
    Surface glass;
    glass.opacity = 0.5f;
    ItemIndex uppermost = kNoItem;
    Box box;
    for (int i = 0; i < kFloors; ++i) {
        const int height = i * 17 % kFloors;
        addFloor(scene_, 10, height, kGrey, glass);
        if (height == kTop) uppermost = static_cast<ItemIndex>(scene_.items().size() - 1);
        box.include(scene_.items().back().box);
        scene_.beginItem();
        for (const Vec3d& p : {Vec3d{1, -1, 1}, Vec3d{1.1, -1, 1}, Vec3d{1, -1.1, 1}})
            scene_.addVertex(p * 1e39);
        scene_.setSurface(glass);
        scene_.addTriangle(0, 1, 2, kGrey);
        scene_.endItem();
    }
    ASSERT_EQ(scene_.triangles().size(), 3u * kFloors);
    for (const View view : {View::kTop, View::kPerspective}) {
        camera_.setView(view);
        camera_.frame(box);
        draw();
        EXPECT_EQ(itemAt({0, 0, kTop}), uppermost);
    }
}

TEST_F(RendererTest, MaterialsColorTheLight) {
    Surface shining;
    shining.ambient = shining.diffuse = {0, 0, 0};
    shining.emissive = {0, 0.5f, 0};
    addFloor(scene_, 10, 0, 0xFFFFFF, shining);
    camera_.setView(View::kTop);
    camera_.frame(scene_.box());
    draw();
    EXPECT_EQ(canvas_.pixel(kWidth / 2, kHeight / 2), 0x007F00u);
    scene_.clear();
    Surface half;
    half.ambient = {};
    half.diffuse = {0.5f, 1, 1};
    addFloor(scene_, 10, 0, 0x808080, half);
    draw();
    const Color color = canvas_.pixel(kWidth / 2, kHeight / 2);
    EXPECT_NEAR(color >> 16, (color & 0xFF) / 2., 1);
    scene_.clear();
}

TEST_F(RendererTest, ThePictureIsTheSameByAnyNumberOfThreads) {
    Picture picture{8, 8, {}};
    for (std::uint32_t i = 0; i < 64; ++i) picture.texels.push_back(0xFF000000 | i * 0x030507);
    const Texture texture(picture);
    Camera fromAbove = camera_, fromTheGround = camera_;
    const auto addThings = [&](double spread) {
        scene_.clear();
        for (int i = 0; i < 40; ++i) {
            const ItemIndex cube =
                addCube(scene_, {i % 7 * 9. * spread, i / 7 * 11., i % 3 * 8.}, 4 + i % 5);
            if (i == 20) scene_.setSelected(cube, true, true);
            scene_.beginItem();
            Surface surface;
            surface.opacity = i % 2 == 0 ? 0.5f : 1;
            surface.texture = &texture;
            surface.style = i % 4 == 1 ? DrawStyle::kFrontOnly : DrawStyle::kSurfaceAndOutline;
            surface.facing = i % 3 == 0 ? Facing::kEye : Facing::kFixed;
            for (const Vec3d corner : {Vec3d{0, 0, 0}, Vec3d{30, 0, 3}, Vec3d{0, 40, 9}})
                scene_.addVertex(corner + Vec3d{i * 2. * spread, i * 1., i * 0.5});
            scene_.setSurface(surface);
            const TexturePlace places[] = {{0, 0}, {5, 0}, {0, 5}};
            const std::uint32_t turned = i % 8 == 1 ? 1 : 0;  // its front looks elsewhere
            scene_.addTriangle(0, 1 + turned, 2 - turned, kGrey, Triangle::kAllEdges, places);
            scene_.addMark(MarkKind::kLightPoint, {i * 2. * spread, 3, 9}, 0xFFFF00);
            scene_.endItem();
        }
        scene_.addLight({LightKind::kPoint, {20, 20, 30}, {}, {1, 1, 1}});
    };
    addThings(1);
    fromAbove.frame(scene_.box());
    fromAbove.zoom(4, kWidth / 2.f, kHeight / 2.f);
    ASSERT_TRUE(fromTheGround.lookFrom({270, -270, 9}, {270, 0, 9}));
    struct Case {
        const Camera& camera;
        DrawMode mode;
        double spread;  ///< of things that stand side by side, which are shared out by columns
    };
    for (const auto& [camera, mode, spread] :
         {Case{fromAbove, DrawMode::kShadedEdges, 1}, Case{fromAbove, DrawMode::kWireframe, 1},
          Case{fromTheGround, DrawMode::kShadedEdges, 6}}) {
        addThings(spread);
        RenderOptions options{mode, true, true, 1};
        options.threads = 1;
        renderer_.draw(scene_, camera, options, canvas_);
        const std::size_t size = std::size_t{kWidth} * kHeight;
        const std::vector<Color> alone(canvas_.pixels(), canvas_.pixels() + size);
        const std::size_t triangles = renderer_.trianglesDrawn();
        for (const unsigned threads : {2u, 3u, 16u, 400u}) {
            options.threads = threads;
            Canvas shared;
            shared.resize(kWidth, kHeight);
            renderer_.draw(scene_, camera, options, shared);
            EXPECT_TRUE(std::equal(alone.begin(), alone.end(), shared.pixels())) << threads;
            EXPECT_EQ(renderer_.trianglesDrawn(), triangles) << threads;
            for (int y = 0; y < kHeight; ++y)
                for (int x = 0; x < kWidth; ++x)
                    ASSERT_TRUE(shared.item(x, y) == canvas_.item(x, y) &&
                                shared.depth(x, y) == canvas_.depth(x, y));
        }
    }
}

TEST_F(RendererTest, ARangeEndsWithItsFarthestDistanceAndBeginsBehindItsNearest) {
    double fixed = -1;
    const auto drawn = [&](double nearest, double farthest, bool within) {
        scene_.clear();
        RangeIndex outer = 0;
        if (within) outer = scene_.addRange({0, 1, {}, 0});
        const RangeIndex range = scene_.addRange({nearest, farthest, {}, outer});
        const ItemIndex cube = addCube(scene_, {}, 10);
        EXPECT_EQ(cube, 0u);
        scene_.setRange(range);
        RenderOptions options;
        options.levelsByEye = fixed < 0;
        options.levelDistance = fixed;
        renderer_.draw(scene_, camera_, options, canvas_);
        return renderer_.trianglesDrawn() > 0;
    };
    camera_.lookFrom({30, -40, 20}, {});
    const double distance = length(camera_.eye());
    EXPECT_TRUE(drawn(0, distance, false));
    EXPECT_FALSE(drawn(distance, 2 * distance, false));
    EXPECT_FALSE(drawn(0, 0.999 * distance, false));
    EXPECT_FALSE(drawn(0, distance, true)) << "within one that does not show";
    fixed = 0.5;  // wherever the eye is
    EXPECT_TRUE(drawn(0, 0.6, true));
    EXPECT_FALSE(drawn(0.5, distance, false));
}

// What is placed looks as if its vertices had been there.
TEST_F(RendererTest, APlacedModelLooksLikeOneThatStandsThere) {
    Picture picture{8, 8, {}};
    for (std::uint32_t i = 0; i < 64; ++i) picture.texels.push_back(0xFF000000 | i * 0x030507);
    const Texture texture(picture);
    // Turned, mirrored, and stretched; in the other one each vertex is where that puts it.
    const Vec3d x{0, 2, 0}, y{1, 0, 0}, z{0, 0, 3}, origin{5, -3, 2};
    const auto fill = [&](SceneModel& scene, const auto& placed) {
        for (int i = 0; i < 40; ++i) {
            scene.beginItem();
            for (const Vec3d corner : {Vec3d{0, 0, 0}, Vec3d{5, 0, 1}, Vec3d{0, 4, 3}})
                scene.addVertex(placed(corner + Vec3d{i % 5 * 6., i / 5 * 5., i * 0.25}));
            Surface surface;
            surface.texture = i % 2 == 0 ? &texture : nullptr;
            surface.opacity = i % 7 == 0 ? 0.5f : 1;
            surface.facing = i % 5 == 0 ? Facing::kUpright : Facing::kFixed;
            scene.setSurface(surface);
            const TexturePlace places[] = {{0, 0}, {2, 0}, {0, 2}};
            // The place mirrors.
            if (&scene == &scene_)
                scene.addTriangle(0, 2, 1, kGrey + static_cast<Color>(i) * 5, 7,
                                  std::array{places[0], places[2], places[1]}.data());
            else
                scene.addTriangle(0, 1, 2, kGrey + static_cast<Color>(i) * 5, 7, places);
            scene.endItem();
        }
    };
    const auto model = std::make_shared<SceneModel>();
    fill(*model, [](Vec3d p) { return p; });
    SceneModel placing;
    for (int i = 0; i < 3; ++i) {
        placing.beginItem();
        if (i == 1) placing.setPlacement({model, Place(x, y, z, origin)});
        placing.endItem();
    }
    placing.setSelected(1, false, true);
    fill(scene_, [&](Vec3d p) { return origin + x * p.x + y * p.y + z * p.z; });
    EXPECT_EQ(placing.box().min, scene_.box().min);
    scene_.addLight({LightKind::kPoint, {20, 20, 60}, {}, {1, 1, 1}});
    placing.addLight(scene_.lights()[0]);
    Canvas other;
    other.resize(kWidth, kHeight);
    for (const double distance : {60., 400.}) {
        ASSERT_TRUE(camera_.lookFrom(scene_.box().centre() + Vec3d{-0.5, -0.7, 0.6} * distance,
                                     scene_.box().centre()));
        RenderOptions options;
        options.mode = DrawMode::kShaded;
        renderer_.draw(scene_, camera_, options, canvas_);
        const std::size_t triangles = renderer_.trianglesDrawn();
        placing.setSelected(1, false, false);
        renderer_.draw(placing, camera_, options, other);
        EXPECT_NEAR(double(renderer_.trianglesDrawn()), double(triangles), 2);
        int different = 0, covered = 0;
        for (int row = 0; row < kHeight; ++row)
            for (int column = 0; column < kWidth; ++column) {
                const Color a = canvas_.pixel(column, row), b = other.pixel(column, row);
                int apart = 0;
                for (const unsigned shift : {0u, 8u, 16u})
                    apart = std::max(apart, std::abs(static_cast<int>(a >> shift & 0xFF) -
                                                     static_cast<int>(b >> shift & 0xFF)));
                different += apart > 6;
                if (canvas_.item(column, row) == kNoItem) continue;
                ++covered;
                EXPECT_EQ(other.item(column, row) == kNoItem ? 1u : other.item(column, row), 1u);
            }
        EXPECT_GT(covered, distance < 100 ? 2000 : 50);
        EXPECT_LT(different, 10 + covered / 200) << "but for pixels at the rims";
        placing.setSelected(1, false, true);
        renderer_.draw(placing, camera_, options, other);
        EXPECT_TRUE(std::find(other.pixels(), other.pixels() + kWidth * kHeight, 0xFFC040u) !=
                    other.pixels() + kWidth * kHeight)
            << "it is outlined as a whole";
    }
}

// Blocks of items are left out, or shown, as their items would be.
TEST_F(RendererTest, WhatIsOutsideOrFarAwayCostsNothing) {
    for (int i = 0; i < 1000; ++i) addCube(scene_, {i % 32 * 20., i / 32 * 20., 0}, 8);
    const auto drawn = [&](Vec3d eye, Vec3d target) {
        EXPECT_TRUE(camera_.lookFrom(eye, target));
        draw();
        return renderer_.trianglesDrawn();
    };
    const std::size_t all = drawn({310, -500, 900}, {310, 310, 0});
    EXPECT_EQ(all, 12000u);
    // Each cube that is in the picture is drawn, whatever its block.
    for (const int i : {0, 15, 16, 511, 999}) {
        const Vec3d at{i % 32 * 20., i / 32 * 20., 0};
        EXPECT_LT(drawn(at + Vec3d{0, -30, 30}, at), 12000u);
        EXPECT_EQ(itemAt(at + Vec3d{0, 0, 4}), static_cast<ItemIndex>(i));
    }
    EXPECT_EQ(drawn({310, -500, 900}, {310, -5000, 9000}), 0u);
    EXPECT_LT(drawn({310, -600000, 400000}, {310, 310, 0}), 40u) << "a dot for many";
    const auto place = camera_.project({310, 310, 0});
    ASSERT_TRUE(place);
    EXPECT_NE(canvas_.pick(static_cast<int>(place->x), static_cast<int>(place->y), 1), kNoItem);
}

/// A red tower with a green roof over a grey yard, of 600 items.
std::shared_ptr<SceneModel> tower() {
    const auto model = std::make_shared<SceneModel>();
    const auto addCard = [&](Vec3d at, Vec3d along, Vec3d up, Color color) {
        model->beginItem();
        for (const Vec3d corner : {at, at + along, at + along + up, at + up})
            model->addVertex(corner);
        model->addTriangle(0, 1, 2, color, 3);
        model->addTriangle(0, 2, 3, color, 6);
        model->endItem();
    };
    for (int i = 0; i < 10; ++i)
        for (int k = 0; k < 10; ++k) {
            for (const double side : {3., 7.}) {
                addCard({3 + i * 0.4, side, k * 2.}, {0.4, 0, 0}, {0, 0, 2}, 0xD02010);
                addCard({side, 3 + i * 0.4, k * 2.}, {0, 0.4, 0}, {0, 0, 2}, 0xD02010);
            }
            addCard({3 + i * 0.4, 3 + k * 0.4, 20}, {0.4, 0, 0}, {0, 0.4, 0}, 0x20C030);
            addCard({i * 1., k * 1., 0}, {1, 0, 0}, {0, 1, 0}, 0x909090);
        }
    return model;
}

// What stands for a model of a few pixels has its colors, its outline and its holes.
TEST_F(RendererTest, AModelOfAFewPixelsLooksAsIfAllOfItWereDrawn) {
    const auto model = tower();
    const auto placing = [&](SceneModel& scene, const std::shared_ptr<SceneModel>& placed) {
        for (int i = 0; i < 400; ++i) {
            scene.beginItem();
            const double c = std::cos(i * 0.7), s = std::sin(i * 0.7);
            scene.setPlacement(
                {placed, Place({c, s, 0}, {-s, c, 0}, {0, 0, 1}, {i % 20 * 24., i / 20 * 24., 0})});
            scene.endItem();
        }
        scene.addLight({LightKind::kDirectional, {}, {0.48f, 0.36f, -0.8f}, {1, 1, 1}});
    };
    SceneModel whole;
    placing(whole, tower());
    model->prepareStandIn();
    ASSERT_TRUE(model->standIn());
    placing(scene_, model);
    Canvas other;
    other.resize(kWidth, kHeight);
    const Vec3d middle = scene_.box().centre();
    for (const Vec3d eye :
         {Vec3d{0, -30, 900}, Vec3d{0, -30, 600}, Vec3d{-500, -600, 300}, Vec3d{100, -900, 60}}) {
        ASSERT_TRUE(camera_.lookFrom(middle + eye, middle));
        draw();
        const std::size_t triangles = renderer_.trianglesDrawn();
        renderer_.draw(whole, camera_, {DrawMode::kShaded, false, false, 1}, other);
        EXPECT_LT(triangles * 3, renderer_.trianglesDrawn());
        // Colors of squares of pixels, as far as an eye would take them apart.
        constexpr int kSquare = 8;
        int covered = 0, coveredWhole = 0;
        double apart = 0, worst = 0;
        for (int top = 0; top < kHeight; top += kSquare)
            for (int left = 0; left < kWidth; left += kSquare) {
                double sums[3] = {};
                for (int y = top; y < top + kSquare; ++y)
                    for (int x = left; x < left + kSquare; ++x) {
                        covered += canvas_.item(x, y) != kNoItem;
                        coveredWhole += other.item(x, y) != kNoItem;
                        for (unsigned i = 0; i < 3; ++i)
                            sums[i] += static_cast<double>(canvas_.pixel(x, y) >> i * 8 & 0xFF) -
                                       static_cast<double>(other.pixel(x, y) >> i * 8 & 0xFF);
                    }
                for (const double sum : sums) {
                    const double mean = std::abs(sum) / (kSquare * kSquare);
                    apart += mean / 3;
                    worst = std::max(worst, mean);
                }
            }
        apart /= kWidth * kHeight / (kSquare * kSquare);
        EXPECT_GT(coveredWhole, 2000);
        EXPECT_NEAR(covered, coveredWhole, coveredWhole * 0.25);
        EXPECT_LT(apart, 3) << "of 255, on an average";
        EXPECT_LT(worst, 30);
    }
}

// One whose finest points would be more than its items: the coarser ones fill what is between them.
TEST_F(RendererTest, FewPointsOfAModelLeaveNoGaps) {
    const auto cube = [] {
        const auto model = std::make_shared<SceneModel>();
        const Vec3d axes[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
        for (std::size_t side = 0; side < 6; ++side)
            for (int card = 0; card < 64; ++card) {
                const Vec3d along = axes[(side + 1) % 3], up = axes[(side + 2) % 3];
                const Vec3d at =
                    axes[side % 3] * (side < 3 ? 8. : 0.) + along * (card % 8) + up * (card / 8);
                model->beginItem();
                for (const Vec3d corner : {at, at + along, at + along + up, at + up})
                    model->addVertex(corner);
                model->addTriangle(0, 1, 2, 0xD02010, 3);
                model->addTriangle(0, 2, 3, 0xD02010, 6);
                model->endItem();
            }
        return model;
    };
    const auto placing = [](SceneModel& scene, const std::shared_ptr<SceneModel>& placed) {
        for (int i = 0; i < 100; ++i) {
            scene.beginItem();
            scene.setPlacement(
                {placed, Place({1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {i % 10 * 16., i / 10 * 16., 0})});
            scene.endItem();
        }
    };
    const auto model = cube();
    model->prepareStandIn();
    ASSERT_TRUE(model->standIn());
    ASSERT_GT(model->standIn()->points(StandIn::kFinest).size(), model->weight());
    ASSERT_LT(model->standIn()->points(StandIn::kFinest - 1).size(), model->weight());
    placing(scene_, model);
    SceneModel whole;
    placing(whole, cube());
    Canvas other;
    other.resize(kWidth, kHeight);
    const Vec3d middle = scene_.box().centre();
    for (const double height : {230., 250.}) {
        ASSERT_TRUE(camera_.lookFrom(middle + Vec3d{0, -30, height}, middle));
        draw();
        const std::size_t drawn = renderer_.trianglesDrawn();
        renderer_.draw(whole, camera_, {DrawMode::kShaded, false, false, 1}, other);
        EXPECT_LT(drawn, renderer_.trianglesDrawn()) << height;
        int gaps = 0, covered = 0;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                if (other.item(x, y) == kNoItem) continue;
                ++covered;
                gaps += canvas_.item(x, y) == kNoItem;
            }
        EXPECT_GT(covered, 5000) << height;
        EXPECT_LT(gaps, covered / 8) << height;
    }
}

// Walls before towers: what they hide is not drawn, and no pixel tells.
TEST_F(RendererTest, WhatIsHiddenCostsNothingAndThePictureIsTheSame) {
    const auto model = tower();
    for (int i = 0; i < 400; ++i) {
        scene_.beginItem();
        scene_.setPlacement({model, Place({1, 0, 0}, {0, 1, 0}, {0, 0, 1},
                                          {i % 20 * 4., i / 20 * 13., i % 7 * 0.3})});
        scene_.endItem();
    }
    // One that reaches out above them, with a light.
    const auto tall = std::make_shared<SceneModel>();
    addCube(*tall, {0, 0, 20}, 8);
    tall->beginItem();
    tall->addLightPoint({4, 0, 3}, 0xFFFFFF, 0, {});
    tall->endItem();
    for (int i = 0; i < 6; ++i) {
        scene_.beginItem();
        scene_.setPlacement({tall, Place({1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {i * 14., 270, 0})});
        scene_.endItem();
    }
    struct Case {
        DrawMode mode;
        Vec3d eye;
        std::size_t fewer;  ///< times
    };
    for (const Case& view : {Case{DrawMode::kShaded, {40, -8, 11}, 4},
                             Case{DrawMode::kShadedEdges, {40, -20, 17}, 1}}) {
        ASSERT_TRUE(camera_.lookFrom(view.eye, {40, 60, view.eye.z}));
        RenderOptions options{view.mode, true, true, 1};
        options.cullsHidden = false;
        renderer_.draw(scene_, camera_, options, canvas_);
        const std::size_t all = renderer_.trianglesDrawn();
        options.cullsHidden = true;
        options.threads = 3;
        Canvas other;
        other.resize(kWidth, kHeight);
        renderer_.draw(scene_, camera_, options, other);
        EXPECT_LT(renderer_.trianglesDrawn() * view.fewer, all);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                ASSERT_TRUE(other.pixel(x, y) == canvas_.pixel(x, y) &&
                            other.item(x, y) == canvas_.item(x, y) &&
                            other.depth(x, y) == canvas_.depth(x, y))
                    << x << ' ' << y;
    }
}

// Whether a model stands in the scene, or in one that does: as clear, and as chosen.
TEST_F(RendererTest, ModelsWithinModelsLookLikeTheOuterOnes) {
    const auto cube = std::make_shared<SceneModel>();
    addCube(*cube, {0, 0, 20}, 30);
    const auto outer = std::make_shared<SceneModel>();
    outer->beginItem();
    outer->setPlacement({cube, Place({1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {}), 1});
    outer->endItem();
    const auto pictureOf = [&](const std::shared_ptr<const SceneModel>& model, float opacity,
                               bool isChosen) {
        scene_.clear();
        const ItemIndex placed = scene_.beginItem();
        scene_.setPlacement({model, Place({1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {}), opacity});
        scene_.endItem();
        addFloor(scene_, 100, 0, 0x00FF00);
        scene_.setSelected(placed, isChosen, isChosen);
        draw(DrawMode::kShadedEdges);
        return std::vector<Color>(canvas_.pixels(), canvas_.pixels() + kWidth * kHeight);
    };
    addFloor(scene_, 100, 0, 0x00FF00);
    camera_.setView(View::kTop);
    camera_.frame(scene_.box());
    draw();
    const auto middle = static_cast<std::size_t>(kHeight / 2 * kWidth + kWidth / 2 + 5);
    const Color floor = canvas_.pixels()[middle];
    const std::vector<Color> clear = pictureOf(cube, 0.5f, false);
    EXPECT_NE(clear[middle], floor);
    EXPECT_GT(clear[middle] >> 8 & 0xFF, (clear[middle] >> 16 & 0xFF) + 20) << "the floor is seen";
    EXPECT_EQ(pictureOf(outer, 0.5f, false), clear);
    const std::vector<Color> chosen = pictureOf(cube, 1, true);
    EXPECT_NE(chosen, pictureOf(cube, 1, false));
    EXPECT_EQ(pictureOf(outer, 1, true), chosen);
}

// What cannot be added up is drawn itself.
TEST_F(RendererTest, WhatPointsCannotStandForIsDrawn) {
    const auto isStoodFor = [](const auto& change) {
        SceneModel model;
        for (int i = 0; i < 70; ++i) addCube(model, {}, 10);
        model.beginItem();
        for (const Vec3d corner : {Vec3d{0, 0, 0}, Vec3d{30, 0, 3}, Vec3d{0, 40, 9}})
            model.addVertex(corner);
        Surface surface;
        change(model, surface);
        model.setSurface(surface);
        model.addTriangle(0, 1, 2, kGrey);
        model.endItem();
        model.prepareStandIn();
        return model.standIn() != nullptr;
    };
    EXPECT_TRUE(isStoodFor([](SceneModel&, Surface&) {}));
    EXPECT_FALSE(isStoodFor([](SceneModel& model, Surface&) { model.setHours(kNight); }));
    EXPECT_FALSE(isStoodFor([](SceneModel&, Surface& surface) { surface.opacity = 0.5f; }));
    EXPECT_FALSE(
        isStoodFor([](SceneModel&, Surface& surface) { surface.style = DrawStyle::kOutline; }));
    EXPECT_FALSE(
        isStoodFor([](SceneModel& model, Surface&) { model.addLightPoint({}, kGrey, 0, {}); }));
    SceneModel changed;
    for (int i = 0; i < 70; ++i) addCube(changed, {i * 10., 0, 0}, 5);
    changed.prepareStandIn();
    EXPECT_TRUE(changed.standIn());
    addCube(changed, {}, 20);
    EXPECT_FALSE(changed.standIn()) << "it is not that model any more";
    SceneModel nothing;
    nothing.prepareStandIn();
    EXPECT_FALSE(nothing.standIn());
}

TEST_F(RendererTest, WhatIsSmallerThanAPixelIsOne) {
    const ItemIndex cube = addCube(scene_, {}, 1);
    camera_.lookFrom({0, -2000, 100}, {});
    draw();
    EXPECT_EQ(itemAt({}), cube);
    EXPECT_EQ(renderer_.trianglesDrawn(), 1u);
    camera_.lookFrom({0, -20, 1}, {});
    draw();
    EXPECT_EQ(renderer_.trianglesDrawn(), 12u);
}

// It lets through what is behind, and its back is lit as its front.
TEST_F(RendererTest, WhatIsSmallerThanAPixelLooksLikeWhatIsLarger) {
    scene_.addLight({LightKind::kDirectional, {}, {0, 0, 1}, {1, 1, 1}});
    const auto colorOf = [&](float opacity, double distance) {
        SceneModel scene;
        scene.addLight(scene_.lights()[0]);
        scene.beginItem();
        for (const Vec3d corner :
             {Vec3d{-1, -1, 0}, Vec3d{1, -1, 0}, Vec3d{1, 1, 0}, Vec3d{-1, 1, 0}})
            scene.addVertex(corner);
        Surface surface;
        surface.opacity = opacity;
        scene.setSurface(surface);
        for (const std::uint32_t i : {0U, 1U}) {
            scene.addTriangle(0, 1 + i, 2 + i, 0xC00000);
            scene.addTriangle(0, 1 + i, 2 + i, 0xC00000);
        }
        scene.endItem();
        camera_.lookFrom({0, 0.01, -distance}, {});
        renderer_.draw(scene, camera_, {DrawMode::kShaded, false, false, 1}, canvas_);
        const ScreenPoint at = *camera_.project({});
        return static_cast<int>(canvas_.pixel(static_cast<int>(at.x), static_cast<int>(at.y)) >>
                                16);
    };
    EXPECT_NEAR(colorOf(1, 4000), colorOf(1, 10), 2);
    EXPECT_LT(colorOf(0.5f, 4000), colorOf(1, 4000) - 20);
}

}  // namespace
