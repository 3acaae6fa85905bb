// What is seen of a light point: its lobe, its size, and when it is on.
#include "../../render/src/lightpoints.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace render;

namespace {

constexpr Vec3 kAhead{0, 1, 0};

/// Towards an eye that is so many degrees beside and above the direction ahead.
Vec3 towards(float beside, float above) {
    const auto slope = [](float degrees) {
        return std::tan(degrees * std::numbers::pi_v<float> / 180);
    };
    return normalised(Vec3{slope(beside), 1, slope(above)});
}

LightPointLook lobe(float across, float along, float roll = 0) {
    LightPointLook look;
    look.shines = LightPointLook::Shines::kAhead;
    look.across = across;
    look.along = along;
    look.roll = roll;
    return look;
}

bool isSeen(const LightPointLook& look, float beside, float above) {
    return sideSeen(look, kAhead, towards(beside, above), 0) == LightSide::kFront;
}

}  // namespace

TEST(LightPoints, LobesAreEllipsesThatRollAboutTheirDirection) {
    EXPECT_TRUE(isSeen(lobe(60, 10), 28, 0));
    EXPECT_FALSE(isSeen(lobe(60, 10), 32, 0));
    EXPECT_TRUE(isSeen(lobe(60, 10), 0, 4));
    EXPECT_FALSE(isSeen(lobe(60, 10), 0, 6));
    EXPECT_FALSE(isSeen(lobe(60, 10), 20, 4.5F)) << "its corners are round";
    // Counter-clockwise for who looks into the light.
    EXPECT_TRUE(isSeen(lobe(60, 10, 45), -15, 15));
    EXPECT_FALSE(isSeen(lobe(60, 10, 45), 15, 15));
    EXPECT_TRUE(isSeen(lobe(60, 10, -45), 15, 15));
    EXPECT_TRUE(isSeen(lobe(60, 10, 90), 0, 28));
    EXPECT_TRUE(isSeen(lobe(0, 0), 85, 0)) << "0 is 180 degrees";
    EXPECT_EQ(sideSeen(lobe(0, 0), kAhead, Vec3{0, -1, 0}, 0), LightSide::kNone);
}

TEST(LightPoints, SizesAreDiametersWithinTheirLimits) {
    LightPointLook look;
    EXPECT_EQ(radiusOf(look, 4, 1.5F), 1.5F);
    look.size = 6;
    EXPECT_EQ(radiusOf(look, 4, 1.5F), 12);
    look.mostPixels = 10;
    EXPECT_EQ(radiusOf(look, 4, 1.5F), 5);
    EXPECT_EQ(radiusOf(look, 1, 1.5F), 3);
    look.leastPixels = 8;
    EXPECT_EQ(radiusOf(look, 1, 1.5F), 4);
    look.mostPixels = 0;
    EXPECT_EQ(radiusOf(look, 1e30F, 1.5F), 512) << "no more than covers a picture";
    look.size = NAN;
    EXPECT_EQ(radiusOf(look, 1, 1.5F), 4);
}

TEST(LightPoints, AreOnForAPartOfTheirPeriodThatBeginsLate) {
    LightPointLook look;
    look.period = 4;
    const auto isOn = [&](double seconds) {
        return sideSeen(look, {}, {1, 0, 0}, seconds) != LightSide::kNone;
    };
    EXPECT_TRUE(isOn(0) && isOn(3)) << "without a time to be on it does not flash";
    look.onTime = 1;
    look.delay = 0.5F;
    EXPECT_FALSE(isOn(0.25));
    EXPECT_TRUE(isOn(0.75));
    EXPECT_FALSE(isOn(1.75));
    EXPECT_TRUE(isOn(4.75));
    const LightPointStep steps[] = {{1, true, {}}, {3, false, {}}};
    look.steps = steps;
    look.stepCount = 2;
    look.delay = 0;
    EXPECT_TRUE(isOn(0));
    EXPECT_FALSE(isOn(1)) << "the next step begins where one ends";
    EXPECT_TRUE(isOn(4));
}
