#include <render/canvas.h>

#include <gmock/gmock.h>

#include <functional>
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

constexpr int kTexels = 256;

/// As many texels to a side, grey.
Picture greyPicture(const std::function<int(int x, int y)>& brightness) {
    Picture picture{kTexels, kTexels, {}};
    for (int y = 0; y < kTexels; ++y)
        for (int x = 0; x < kTexels; ++x)
            picture.texels.push_back(0xFF000000 | static_cast<Color>(brightness(x, y)) * 0x010101U);
    return picture;
}

/// A picture full of a texture, of which a pixel covers so many texels in each direction.
struct Textured : Blank {
    Textured(const Texture& texture, float texelsU, float texelsV, float from = 0)
        : Blank(kSide, kSide) {
        const float u = from + texelsU * 2 * kSide / kTexels;
        const float v = from + texelsV * 2 * kSide / kTexels;
        const ScreenPoint a{0, 0, 1}, b{2 * kSide, 0, 1}, c{0, 2 * kSide, 1};
        const Vec3 white{255, 255, 255};
        textured({{a, 1, from, from, white}, {b, 1, u, from, white}, {c, 1, from, v, white}},
                 texture, false, over(a, b, c, 1));
    }
    int grey(int x, int y) const { return static_cast<int>(pixel(x, y) & 0xFF); }
    /// The greatest difference.
    int contrast() const {
        int least = 255, most = 0;
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x) {
                least = std::min(least, grey(x, y));
                most = std::max(most, grey(x, y));
            }
        return most - least;
    }

    static constexpr int kSide = 64;
};

/// The greatest difference of stripes a texel wide, of which a pixel covers so many.
int contrast(float texels, const TextureUse& use) {
    const Texture texture(greyPicture([](int x, int) { return x % 2 == 0 ? 255 : 0; }),
                          Texture::kMostBits, use);
    return Textured(texture, texels, texels).contrast();
}

TextureUse ofSizes(TextureUse::Sizes sizes) {
    TextureUse use;
    use.sizes = sizes;
    return use;
}

TEST(Canvas, ATextureGoesOverFromOneOfItsSizesToTheNextUnlessToldOtherwise) {
    const TextureUse nearest = ofSizes(TextureUse::Sizes::kNearest);
    const TextureUse largest = ofSizes(TextureUse::Sizes::kLargest);
    EXPECT_GT(contrast(1.5f, {}), 100);
    for (const float texels : {1.2f, 1.5f, 1.75f})
        EXPECT_EQ(contrast(texels, {}), contrast(texels, largest)) << texels;
    for (float before = 1.78f; before < 1.96f; before += 0.03f) {
        const int here = contrast(before, {}), next = contrast(before + 0.03f, {});
        EXPECT_GT(here, next) << before;
        EXPECT_LT(here - next, 80) << before;
    }
    EXPECT_LT(contrast(2.1f, {}), 4);
    EXPECT_GT(contrast(1.95f, nearest), 240);
    EXPECT_LT(contrast(2.1f, nearest), 4);
    EXPECT_GT(contrast(2.7f, largest), 200);
    EXPECT_LT(contrast(0.1f, {}) - contrast(0.1f, largest), 4);
    TextureUse mirrored;
    mirrored.wrapU = TextureUse::Wrap::kMirror;
    EXPECT_LT(contrast(2.1f, mirrored), 4);
}

// A slope looks the same in each of them, so nothing moves on the way.
TEST(Canvas, TheSizesOfATextureLieOverOneAnother) {
    for (const bool isUpright : {false, true}) {
        const Picture slope = greyPicture([isUpright](int x, int y) {
            return std::clamp(((isUpright ? y : x) - 96) * 16, 0, 255);
        });
        const Texture mixed(slope);
        const Texture exact(slope, Texture::kMostBits, ofSizes(TextureUse::Sizes::kLargest));
        const Textured seen(mixed, 1.95f, 1.95f, 0.25f), expected(exact, 1.95f, 1.95f, 0.25f);
        for (int i = 0; i < Textured::kSide; ++i) {
            const int x = isUpright ? 20 : i, y = isUpright ? i : 20;
            EXPECT_NEAR(seen.grey(x, y), expected.grey(x, y), 5) << isUpright << ' ' << i;
        }
    }
}

TEST(Canvas, FromVeryFarATextureIsItsMean) {
    const Texture halves(greyPicture([](int x, int) { return x < kTexels / 2 ? 255 : 0; }));
    for (const float texels : {256.f, 700.f, 1e6f}) {
        const Textured seen(halves, texels, texels);
        EXPECT_EQ(seen.contrast(), 0) << texels;
        EXPECT_NEAR(seen.grey(20, 20), 128, 1) << texels;
    }
}

// Stripes four texels wide stay apart where they are seen as wide as they are, and narrow ones do
// not flicker along the way.
TEST(Canvas, ATextureSeenAtASlantIsNeitherBlurredNorFlickers) {
    const auto stripes = [](int width, bool isUpright) {
        return Texture(greyPicture(
            [=](int x, int y) { return (isUpright ? x : y) / width % 2 == 0 ? 255 : 0; }));
    };
    EXPECT_GT(Textured(stripes(4, true), 0.5f, 8).contrast(), 200);
    EXPECT_LT(Textured(stripes(1, false), 0.5f, 7).contrast(), 4);
    EXPECT_GT(Textured(stripes(4, false), 8, 0.5f).contrast(), 200);
    EXPECT_LT(Textured(stripes(1, true), 7, 0.5f).contrast(), 4);
}

// A ground that goes from afar, where two sizes are mixed, to the eye.
TEST(Canvas, WhatIsNearIsNotMixedWithWhatWasSeenFarther) {
    const Picture stripes = greyPicture([](int x, int) { return x % 2 == 0 ? 255 : 0; });
    const auto drawn = [&](Canvas& canvas, const TextureUse& use) {
        const Texture texture(stripes, Texture::kMostBits, use);
        const ScreenPoint a{0, 0, 1}, b{128, 0, 1}, c{0, 128, 1};
        const Vec3 white{255, 255, 255};
        constexpr float kFar = 0.05f, kNear = kFar + 128 * 0.002f, kAcross = 3.f / kTexels * kFar;
        canvas.textured({{a, kFar, 0, kAcross / kFar, white},
                         {b, kFar, 128 * kAcross / kFar, kAcross / kFar, white},
                         {c, kNear, 0, kAcross / kNear, white}},
                        texture, false, over(a, b, c, 1));
    };
    Blank seen(64, 64), exact(64, 64);
    drawn(seen, {});
    drawn(exact, ofSizes(TextureUse::Sizes::kLargest));
    int different = 0;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            if (seen.pixel(x, y) != exact.pixel(x, y)) {
                ++different;
                EXPECT_LT(y, 30) << x;
            }
    EXPECT_GT(different, 200);
}

TEST(Canvas, TexelsAreSmoothOrNotFromNearAndFromFar) {
    const auto isSmooth = [](float texels, bool isPointedNear, bool isPointedFar) {
        TextureUse use = ofSizes(TextureUse::Sizes::kLargest);
        use.isPointedNear = isPointedNear;
        use.isPointedFar = isPointedFar;
        const Texture texture(greyPicture([](int x, int) { return x % 2 == 0 ? 255 : 0; }),
                              Texture::kMostBits, use);
        const Textured seen(texture, texels, texels);
        int between = 0;
        for (int x = 0; x < Textured::kSide; ++x)
            between += seen.grey(x, 20) > 10 && seen.grey(x, 20) < 245;
        return between > 10;
    };
    constexpr float kNear = 0.1f, kFar = 1.3f;
    for (const bool isPointed : {false, true}) {
        EXPECT_EQ(isSmooth(kNear, isPointed, !isPointed), !isPointed);
        EXPECT_EQ(isSmooth(kFar, !isPointed, isPointed), !isPointed);
    }
}

/// The color of a triangle that is all in one place of a texture, over white.
struct OnePlace {
    float u = 0.5f, v = 0.5f;
    Vec3 color{255, 255, 255};
    Color hour = 0xFFFFFF;
    bool blended = false;

    Color of(const Texture* texture, const Texture* layer = nullptr) const {
        Canvas canvas;
        canvas.resize(20, 20);
        canvas.clear(0xFFFFFF, 0xFFFFFF);
        const ScreenPoint a{0, 0, 1}, b{40, 0, 1}, c{0, 40, 1};
        const TextureCorner corners[3] = {
            {a, 1, u, v, color}, {b, 1, u, v, color}, {c, 1, u, v, color}};
        Fill fill = over(a, b, c, 1);
        fill.hour = hour;
        CornerLayer above;
        above.texture = layer;
        if (texture && !layer)
            canvas.textured(corners, *texture, blended, fill);
        else
            canvas.layered(corners, texture, std::span(&above, layer ? 1 : 0), nullptr, blended,
                           fill);
        return canvas.pixel(10, 10);
    }
};

// On a rim that goes on for ever, the end of the picture is as far away as anything.
TEST(Canvas, APlaceOutsideOfATextureIsThatWhichItsUseSays) {
    using Wrap = TextureUse::Wrap;
    struct Case {
        Wrap wrap;
        float place;
        Color expected;
    };
    for (const bool isUpright : {false, true})
        for (const auto& [wrap, place, expected] :
             {Case{Wrap::kRepeat, 0.25f, kRed}, Case{Wrap::kRepeat, 0.75f, kBlue},
              Case{Wrap::kRepeat, 1.25f, kRed}, Case{Wrap::kRepeat, -0.25f, kBlue},
              Case{Wrap::kMirror, 0.25f, kRed}, Case{Wrap::kMirror, 1.25f, kBlue},
              Case{Wrap::kMirror, 1.75f, kRed}, Case{Wrap::kMirror, 3.25f, kBlue},
              Case{Wrap::kMirror, -0.25f, kRed}, Case{Wrap::kClamp, 1, kBlue},
              Case{Wrap::kClamp, 1e4f, kBlue}, Case{Wrap::kClamp, 1e9f, kBlue},
              Case{Wrap::kClamp, -1e9f, kRed}}) {
            const std::vector<std::uint32_t> texels{0xFF000000 | kRed, 0xFF000000 | kBlue};
            TextureUse use;
            (isUpright ? use.wrapV : use.wrapU) = wrap;
            const Texture texture(isUpright ? Picture{1, 2, texels} : Picture{2, 1, texels}, 1,
                                  use);
            OnePlace at;
            (isUpright ? at.v : at.u) = place;
            EXPECT_EQ(at.of(&texture), expected)
                << isUpright << ": " << static_cast<int>(wrap) << ' ' << place;
        }
}

Texture oneTexel(std::uint32_t texel, TextureUse::Color how) {
    TextureUse use;
    use.color = how;
    return Texture({1, 1, {texel}}, 1, use);
}

// What is lit has the light of the hour already; what takes its place gets it.
TEST(Canvas, PicturesThatReplaceTheLightGetThatOfTheHour) {
    using How = TextureUse::Color;
    struct Case {
        How how;
        float below;
        Color asTexture, asLayer;
    };
    for (const auto& [how, below, asTexture, asLayer] :
         {Case{How::kModulate, 255, 0xFFFFFF, 0xFFFFFF}, Case{How::kBlend, 255, 0xFFFFFF, 0},
          Case{How::kDecal, 255, 0x7F7F7F, 0x7F7F7F}, Case{How::kReplace, 255, 0x7F7F7F, 0x7F7F7F},
          Case{How::kAdd, 0, 0x7F7F7F, 0x7F7F7F}}) {
        const Texture white = oneTexel(0xFFFFFFFF, how), plain = oneTexel(0xFFFFFFFF, {});
        OnePlace at;
        at.color = {below, below, below};
        at.hour = 0x7F7F7F;
        EXPECT_EQ(at.of(&white), asTexture) << static_cast<int>(how);
        EXPECT_EQ(at.of(nullptr, &white), asLayer) << static_cast<int>(how);
        at.color = {255, 255, 255};
        if (how != How::kAdd) {
            EXPECT_EQ(at.of(&white, &plain), asTexture) << static_cast<int>(how);
        }
    }
}

// A texel of the one is as large as 16 of the other, however many there are of each.
TEST(Canvas, ADetailIsRepeatedByTheTexelsOfBothPictures) {
    const Texture white({1, 4, std::vector<std::uint32_t>(4, 0xFFFFFFFF)});
    const Texture stripes({1, 2, {0xFF000000, 0xFFFFFFFF}});
    const ScreenPoint a{0, 0, 1}, b{128, 0, 1}, c{0, 128, 1};
    const Vec3 light{255, 255, 255};
    Blank canvas(64, 64);
    canvas.layered({{a, 1, 0, 0, light}, {b, 1, 0, 0, light}, {c, 1, 0, 0.25f, light}}, &white, {},
                   &stripes, false, over(a, b, c, 1));
    int changes = 0;
    for (int y = 1; y < 64; ++y)
        changes += (canvas.pixel(20, y) & 0xFF) / 128 != (canvas.pixel(20, y - 1) & 0xFF) / 128;
    EXPECT_NEAR(changes, 8, 1) << "half a texel has eight of the detail";
}

// Black of two pictures, over white.
TEST(Canvas, LayersLetThroughWhatTheyAndThePicturesBelowDo) {
    using How = TextureUse::Color;
    struct Case {
        How how;
        std::uint32_t below, above;  ///< alpha
        int expected;
    };
    for (const auto& [how, below, above, expected] :
         {Case{How::kModulate, 0x80, 0x80, 191}, Case{How::kModulate, 0xFF, 0x80, 127},
          Case{How::kDecal, 0xFF, 0, 0}, Case{How::kDecal, 0x80, 0xFF, 127},
          Case{How::kReplace, 0x80, 0xFF, 0}, Case{How::kReplace, 0xFF, 0x80, 127}}) {
        const Texture texture = oneTexel(below << 24, {}), layer = oneTexel(above << 24, how);
        OnePlace at;
        at.blended = true;
        EXPECT_NEAR(static_cast<int>(at.of(&texture, &layer) & 0xFF), expected, 2)
            << static_cast<int>(how) << ' ' << below << ' ' << above;
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
