#include <render/canvas.h>

#include <gmock/gmock.h>

#include <random>

using namespace render;

namespace {

constexpr Color kRed = 0xFF0000, kBlue = 0x0000FF;

struct Blank : Canvas {
    Blank(int width, int height) {
        resize(width, height);
        clear(0, 0);
    }
};

// The plane through three points.
Fill over(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c, ItemIndex item) {
    Fill fill;
    fill.item = item;
    const double area = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
    const double ab = b.depth - a.depth, ac = c.depth - a.depth;
    fill.plane.perX = (ab * (c.y - a.y) - ac * (b.y - a.y)) / area;
    fill.plane.perY = (ac * (b.x - a.x) - ab * (c.x - a.x)) / area;
    fill.plane.start = a.depth - a.x * fill.plane.perX - a.y * fill.plane.perY;
    fill.plane.enclose(a, b, c);
    return fill;
}

void fill(Canvas& canvas, const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c,
          Color color, ItemIndex item) {
    canvas.triangle(a, b, c, color, over(a, b, c, item));
}

int count(const Canvas& canvas, Color color) {
    int found = 0;
    for (int y = 0; y < canvas.height(); ++y)
        for (int x = 0; x < canvas.width(); ++x) found += canvas.pixel(x, y) == color;
    return found;
}

TEST(Canvas, TriangleCoversThePixelsWhoseCentresItHolds) {
    Blank canvas(8, 8);
    fill(canvas, {1, 1, 0}, {6, 1, 0}, {1, 6, 0}, kRed, 3);
    EXPECT_EQ(count(canvas, kRed), 4 + 3 + 2 + 1) << "pixels with their centre under x + y = 7";
    EXPECT_EQ(canvas.pixel(1, 1), kRed);
    EXPECT_EQ(canvas.item(1, 1), 3u);
    EXPECT_EQ(canvas.pixel(0, 1), 0u);
    EXPECT_EQ(canvas.pixel(1, 0), 0u);
    EXPECT_EQ(canvas.item(6, 6), kNoItem);
}

// Random fans around a point inside the picture cover it wholly, and no pixel twice.
TEST(Canvas, NeighbouringTrianglesMeetWithoutGapOrOverlap) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> inside(4, 28);
    for (int round = 0; round < 50; ++round) {
        const ScreenPoint middle{inside(random), inside(random), 0};
        const ScreenPoint ring[] = {
            {-5, -5, 0}, {inside(random), -5, 0}, {37, -5, 0}, {37, inside(random), 0},
            {37, 37, 0}, {inside(random), 37, 0}, {-5, 37, 0}, {-5, inside(random), 0}};
        std::vector<int> hits(32 * 32, 0);
        for (std::size_t i = 0; i < std::size(ring); ++i) {
            Blank canvas(32, 32);
            const ScreenPoint& next = ring[(i + 1) % std::size(ring)];
            if (i % 2)
                fill(canvas, ring[i], next, middle, kRed, 0);
            else
                fill(canvas, next, ring[i], middle, kRed, 0);
            for (int y = 0; y < 32; ++y)
                for (int x = 0; x < 32; ++x)
                    hits[static_cast<std::size_t>(y * 32 + x)] += canvas.item(x, y) == 0;
        }
        ASSERT_THAT(hits, testing::Each(1)) << "round " << round;
    }
}

TEST(Canvas, NearerWinsWhateverTheOrder) {
    for (const bool nearFirst : {true, false}) {
        Blank canvas(20, 20);
        const auto draw = [&](bool nearOne) {
            // Two crossing planes: red is nearer on the left, blue on the right.
            if (nearOne)
                fill(canvas, {-40, 0, 9}, {60, 0, -1}, {10, 60, 4}, kRed, 1);
            else
                fill(canvas, {-40, 0, -1}, {60, 0, 9}, {10, 60, 4}, kBlue, 2);
        };
        draw(nearFirst);
        draw(!nearFirst);
        EXPECT_EQ(canvas.pixel(5, 10), kRed);
        EXPECT_EQ(canvas.item(5, 10), 1u);
        EXPECT_EQ(canvas.pixel(14, 10), kBlue);
        EXPECT_EQ(canvas.item(14, 10), 2u);
    }
}

TEST(Canvas, DrawsPartsOfWhatLeavesThePictureAndSurvivesNonsense) {
    Blank canvas(16, 16);
    const float huge = 1e30f, none = std::nanf("");
    fill(canvas, {-1e6f, -1e6f, 0}, {1e6f, -1e6f, 0}, {0, 1e6f, 0}, kRed, 0);
    EXPECT_EQ(count(canvas, kRed), 256);
    fill(canvas, {huge, huge, 0}, {-huge, huge, 0}, {0, -huge, huge}, kBlue, 0);
    fill(canvas, {none, 1, 0}, {5, none, 0}, {2, 9, none}, kBlue, 0);
    fill(canvas, {3, 3, 0}, {3, 3, 0}, {3, 3, 0}, kBlue, 0);
    // An edge that is infinitely flat, from the very centre of a row.
    const float below = std::nextafter(0.5f, 1.f), furtherBelow = std::nextafter(below, 1.f);
    for (const float distant : {-1e32f, 1e32f})
        fill(canvas, {0, 0.5f, 0}, {1, below, 0}, {distant, furtherBelow, 0}, kBlue, 0);
    canvas.line({none, 0, 0}, {5, 5, 0}, {kBlue});
    canvas.line({-huge, -huge, 0}, {huge, huge, 0}, {kBlue});
    canvas.gradient({huge, huge, 0}, {-huge, huge, 0}, {0, -huge, huge}, {}, {});
    canvas.gradient({none, 1, 0}, {5, none, 0}, {2, 9, none}, {}, {});
    const Texture texture({1, 1, {0xFFFFFFFF}});
    canvas.textured({{{huge, huge, 0}, 1, huge, none, {}},
                     {{-huge, huge, 0}, 0, 1, 0, {}},
                     {{0, -huge, huge}, -1, 0, huge, {}}},
                    texture, false, {});
    const float large = 1e30f;
    canvas.textured({{{0, 0, 1}, 1, large, 0, {}},
                     {{9, 0, 1}, 1, 0, large, {}},
                     {{0, 9, 1}, 1, -large, none, {}}},
                    texture, true, over({0, 0, 1}, {9, 0, 1}, {0, 9, 1}, 0));
    canvas.glow({none, 3, 0}, 2, {kBlue});
    canvas.glow({-1e9f, 1e9f, 0}, 2, {kBlue});
    canvas.glow({15.5f, 15.5f, 1}, 2, {kBlue});
    EXPECT_EQ(canvas.pixel(15, 15), kBlue);
    EXPECT_EQ(canvas.pixel(8, 8), kRed);
}

TEST(Canvas, LineIsClippedNotBent) {
    Blank canvas(40, 40);
    canvas.line({-1000, 20.5f, 0}, {1000, 20.5f, 0}, {kBlue, 1, 5});
    for (int x = 0; x < 40; ++x) ASSERT_EQ(canvas.pixel(x, 20), kBlue) << x;
    EXPECT_EQ(count(canvas, kBlue), 40);
    EXPECT_EQ(canvas.item(39, 20), 5u);
}

TEST(Canvas, LineHidesBehindSurfacesUnlessTold) {
    Blank canvas(20, 20);
    fill(canvas, {0, 0, 5}, {10, 0, 5}, {0, 60, 5}, kRed, 1);
    canvas.line({0, 5.5f, 4}, {20, 5.5f, 4}, {kBlue});
    EXPECT_EQ(canvas.pixel(2, 5), kRed);
    EXPECT_EQ(canvas.pixel(15, 5), kBlue);
    canvas.line({0, 6.5f, 4}, {20, 6.5f, 4}, {kBlue, 1, kNoItem, 0, false});
    EXPECT_EQ(canvas.pixel(2, 6), kBlue);
    EXPECT_EQ(canvas.item(2, 6), 1u) << "a line of no item leaves the surface to be picked";
}

TEST(Canvas, AGradientMeetsItsCornersColorsAndCoversWhatATriangleDoes) {
    const ScreenPoint a{2, 2, 1}, b{60, 5, 1}, c{8, 58, 1};
    Blank plain(64, 64), shaded(64, 64);
    fill(plain, a, b, c, kRed, 1);
    shaded.gradient(a, b, c, {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}}, over(a, b, c, 1));
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) ASSERT_EQ(plain.item(x, y), shaded.item(x, y));
    const auto channel = [&](int x, int y, unsigned shift) {
        return static_cast<int>(shaded.pixel(x, y) >> shift & 0xFF);
    };
    EXPECT_GT(channel(3, 3, 16), 240);
    EXPECT_GT(channel(57, 5, 8), 235);
    EXPECT_GT(channel(8, 56, 0), 235);
    EXPECT_NEAR(channel(23, 21, 16), 85, 8) << "a third of each in the middle";
    EXPECT_NEAR(channel(23, 21, 8), 85, 8);
}

TEST(Canvas, OutlineRunsAroundWhatIsChosenAndNeverOverIt) {
    Blank canvas(30, 30);
    fill(canvas, {10, 10, 1}, {20, 10, 1}, {10, 20, 1}, kRed, 1);
    fill(canvas, {20, 10, 1}, {20, 20, 1}, {10, 20, 1}, kRed, 1);
    fill(canvas, {0, 0, 2}, {13, 0, 2}, {0, 13, 2}, 0x00FF00, 0);  // in front of a corner
    const int before = count(canvas, kRed);
    const std::uint8_t chosen[] = {0, 1};
    canvas.outline(chosen, 1, kBlue);
    EXPECT_EQ(count(canvas, kRed), before);
    EXPECT_EQ(canvas.pixel(15, 9), kBlue);
    EXPECT_EQ(canvas.pixel(15, 20), kBlue);
    EXPECT_EQ(canvas.pixel(9, 15), kBlue);
    EXPECT_EQ(canvas.pixel(20, 15), kBlue);
    EXPECT_EQ(canvas.pixel(15, 8), 0u);
    EXPECT_EQ(canvas.pixel(25, 25), 0u);
    EXPECT_EQ(canvas.item(15, 9), kNoItem) << "a rim is not picked";
}

/// The greatest difference along a row of stripes a texel wide, of which a pixel covers so many.
int contrast(float texels, const TextureUse& use) {
    constexpr int kStripes = 256;
    Picture picture{kStripes, kStripes, {}};
    for (int i = 0; i < kStripes * kStripes; ++i)
        picture.texels.push_back(i % 2 == 0 ? 0xFFFFFFFF : 0xFF000000);
    const Texture texture(picture, Texture::kMostBits, use);
    constexpr float kSide = 64;
    const float end = texels * 2 * kSide / kStripes;
    const Vec3 white{255, 255, 255};
    const ScreenPoint a{0, 0, 1}, b{2 * kSide, 0, 1}, c{0, 2 * kSide, 1};
    Blank canvas(64, 64);
    canvas.textured({{a, 1, 0, 0, white}, {b, 1, end, 0, white}, {c, 1, 0, end, white}}, texture,
                    false, over(a, b, c, 1));
    Color least = 255, most = 0;
    for (int x = 0; x < 64; ++x) {
        least = std::min(least, canvas.pixel(x, 20) & 0xFF);
        most = std::max(most, canvas.pixel(x, 20) & 0xFF);
    }
    return static_cast<int>(most - least);
}

TEST(Canvas, ATextureGoesOverFromOneOfItsSizesToTheNextUnlessToldOtherwise) {
    EXPECT_GT(contrast(1.5f, {}), 100);
    for (float before = 1.78f; before < 1.96f; before += 0.03f) {
        const int here = contrast(before, {}), next = contrast(before + 0.03f, {});
        EXPECT_GT(here, next) << before;
        EXPECT_LT(here - next, 80) << before;
    }
    EXPECT_LT(contrast(2.1f, {}), 4);
    TextureUse use;
    use.sizes = TextureUse::Sizes::kNearest;
    EXPECT_GT(contrast(1.95f, use), 240);
    EXPECT_LT(contrast(2.1f, use), 4);
    use.sizes = TextureUse::Sizes::kLargest;
    EXPECT_GT(contrast(2.7f, use), 200);
    EXPECT_LT(contrast(0.1f, {}) - contrast(0.1f, use), 4);
    use = {};
    use.wrapU = TextureUse::Wrap::kMirror;
    EXPECT_LT(contrast(2.1f, use), 4);
}

// On a rim that goes on for ever, the end of the picture is as far away as anything.
TEST(Canvas, TheRimOfAClampedTextureGoesOnWhateverTheDistance) {
    TextureUse use;
    use.wrapU = TextureUse::Wrap::kClamp;
    const Texture texture({2, 1, {0xFF000000 | kRed, 0xFF000000 | kBlue}}, 1, use);
    const Vec3 white{255, 255, 255};
    const ScreenPoint a{0, 0, 1}, b{40, 0, 1}, c{0, 40, 1};
    for (const float away : {1.f, 1e4f, 1e9f}) {
        Blank canvas(20, 20);
        canvas.textured({{a, 1, away, 0, white}, {b, 1, away, 0, white}, {c, 1, away, 0, white}},
                        texture, false, over(a, b, c, 1));
        for (int x = 0; x < 20; ++x) EXPECT_EQ(canvas.pixel(x, 3), kBlue) << away << ' ' << x;
    }
}

// A point as large as what it stands for, drawn as a light is.
void dot(Canvas& canvas, float x, float y, Color color, ItemIndex item) {
    canvas.glow({x, y, 0}, 1, {color, 1, item});
}

TEST(Canvas, PicksTheNearestWithinReach) {
    Blank canvas(30, 30);
    dot(canvas, 11, 11, kRed, 4);
    dot(canvas, 15, 11, kBlue, 9);
    EXPECT_EQ(canvas.pick(11, 11, 3), 4u);
    EXPECT_EQ(canvas.pick(13, 11, 0), kNoItem);
    EXPECT_EQ(canvas.pick(16, 12, 3), 9u);
    EXPECT_EQ(canvas.pick(8, 9, 3), 4u);
    EXPECT_EQ(canvas.pick(25, 25, 3), kNoItem);
    EXPECT_EQ(canvas.pick(-100, -100, 3), kNoItem);
}

}  // namespace
