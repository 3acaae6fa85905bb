#include "support.h"

#include <quillon/fltlightpoint.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlightsourcepalette.h>
#include <quillon/flttext.h>

#include <limits>

namespace {

TEST(LightPointTest, LaysOutItsWords) {
    FltLightPoint point;
    fltSetText(point.asciiId, "lp1");
    point.surfaceMaterialCode = 1;
    point.featureId = 2;
    point.backColor = 0xFF112233;
    point.displayMode = 1;
    point.fadingMode = 3;
    point.fogPunchMode = 4;
    point.directionalMode = 5;
    point.rangeMode = 6;
    point.directionalType = 7;
    point.calligraphicDrawOrder = 8;
    point.flags = 0x80604000;
    float value = 1;
    for (float FltLightPoint::*field :
         std::initializer_list<float FltLightPoint::*>{&FltLightPoint::intensity,
                                                       &FltLightPoint::backIntensity,
                                                       &FltLightPoint::minDefocus,
                                                       &FltLightPoint::maxDefocus,
                                                       &FltLightPoint::minPixelSize,
                                                       &FltLightPoint::maxPixelSize,
                                                       &FltLightPoint::actualPixelSize,
                                                       &FltLightPoint::transparentFalloffPixelSize,
                                                       &FltLightPoint::transparentFalloffExponent,
                                                       &FltLightPoint::transparentFalloffScalar,
                                                       &FltLightPoint::transparentFalloffClamp,
                                                       &FltLightPoint::fogScalar,
                                                       &FltLightPoint::reserved,
                                                       &FltLightPoint::sizeDifferenceThreshold,
                                                       &FltLightPoint::horizontalLobeAngle,
                                                       &FltLightPoint::verticalLobeAngle,
                                                       &FltLightPoint::lobeRollAngle,
                                                       &FltLightPoint::directionalFalloffExponent,
                                                       &FltLightPoint::directionalAmbientIntensity,
                                                       &FltLightPoint::animationPeriod,
                                                       &FltLightPoint::animationPhaseDelay,
                                                       &FltLightPoint::animationEnabledPeriod,
                                                       &FltLightPoint::significance})
        point.*field = value++;
    point.axisX = 0.5;
    point.axisY = -1;
    point.axisZ = 2;
    expectLayout(point,
                 "006F 00A0 'lp1':8 0001 0002 FF112233 00000001 3F800000 40000000 40400000 "
                 "40800000 00000003 00000004 00000005 00000006 40A00000 40C00000 40E00000 41000000 "
                 "41100000 41200000 41300000 41400000 41500000 41600000 00000007 41700000 41800000 "
                 "41880000 41900000 41980000 41A00000 41A80000 41B00000 41B80000 00000008 80604000 "
                 "3F000000 BF800000 40000000 00:4");
    expectLayout(FltLightPoint(), "006F 00A0 00:156");
}

TEST(LightPointTest, NarrowsItsAxis) {
    FltLightPoint point;
    point.axisX = 0.1;
    point.axisZ = 1;
    const Bytes bytes = encode(point);
    EXPECT_EQ(toHex({bytes.begin() + 144, bytes.begin() + 156}),
              toHex(hex("3DCCCCCD 00000000 3F800000")));
    decode(point, bytes);
    EXPECT_EQ(point.axisX, 0.100000001490116119384765625);
    EXPECT_EQ(point.axisZ, 1);

    // Only what is infinite is stored as infinite, and what is no number stays none.
    point.axisX = 1e300;
    point.axisY = -1e39;
    point.axisZ = -std::numeric_limits<double>::infinity();
    const Bytes large = encode(point);
    EXPECT_EQ(toHex({large.begin() + 144, large.begin() + 156}),
              toHex(hex("7F7FFFFF FF7FFFFF FF800000")));
    point.axisX = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(encode(point)[144], 0x7F);
    EXPECT_EQ(encode(point)[145], 0xC0);
}

TEST(LightPointTest, MovesItsWordsBitForBit) {
    // Signalling not-a-numbers in float words, the reserved one among them.
    std::string words;
    for (int i = 0; i < 32; ++i) words += "7FA12345 ";
    const std::string record = "006F 00A0 00:12 " + words + "00:16";
    FltLightPoint point;
    decode(point, hex(record));
    EXPECT_EQ(toHex(encode(point)), toHex(hex(record)));
    EXPECT_NE(fieldsOf(point).find("reserved -1 2141266757\n"), std::string::npos)
        << "a word of unknown meaning is shown as a whole number";
}

TEST(LightSourceTest, LaysOutItsFields) {
    FltLightSource source;
    fltSetText(source.asciiId, "ls1");
    source.paletteIndex = 3;
    source.flags = 0x50000000;
    source.positionX = 1;
    source.positionY = 2;
    source.positionZ = 3;
    source.yaw = 4;
    source.pitch = 5;
    expectLayout(source,
                 "0065 0040 'ls1':8 00:4 00000003 00:4 50000000 00:4 3FF0:8 4000:8 4008:8 40800000 "
                 "40A00000");
    expectLayout(FltLightSource(), "0065 0040 00:12 FFFFFFFF 00:12 00:24 43070000 42340000");
}

TEST(LightSourcePaletteTest, LaysOutItsFields) {
    FltLightSourcePalette entry;
    entry.paletteIndex = 2;
    fltSetText(entry.name, "twenty characters ok");
    float value = 1;
    for (float FltLightSourcePalette::*field :
         {&FltLightSourcePalette::ambientRed, &FltLightSourcePalette::ambientGreen,
          &FltLightSourcePalette::ambientBlue, &FltLightSourcePalette::ambientAlpha,
          &FltLightSourcePalette::diffuseRed, &FltLightSourcePalette::diffuseGreen,
          &FltLightSourcePalette::diffuseBlue, &FltLightSourcePalette::diffuseAlpha,
          &FltLightSourcePalette::specularRed, &FltLightSourcePalette::specularGreen,
          &FltLightSourcePalette::specularBlue, &FltLightSourcePalette::specularAlpha,
          &FltLightSourcePalette::spotExponentialDropoff, &FltLightSourcePalette::spotCutoffAngle,
          &FltLightSourcePalette::yaw, &FltLightSourcePalette::pitch,
          &FltLightSourcePalette::constantAttenuation, &FltLightSourcePalette::linearAttenuation,
          &FltLightSourcePalette::quadraticAttenuation})
        entry.*field = value++;
    entry.lightType = 0x11;
    entry.activeDuringModeling = 0x22;
    expectLayout(entry,
                 "0066 00F0 00000002 00:8 'twenty' 20 'characters' 20 'ok' 00:4 3F800000 40000000 "
                 "40400000 40800000 40A00000 40C00000 40E00000 41000000 41100000 41200000 41300000 "
                 "41400000 00000011 00:40 41500000 41600000 41700000 41800000 41880000 41900000 "
                 "41980000 00000022 00:76");
    expectLayout(FltLightSourcePalette(),
                 "0066 00F0 FFFFFFFF 00:8 00:20 00:4 00:16 3F800000 3F800000 3F800000 00:4 "
                 "3F800000 3F800000 3F800000 00:4 00000000 00:40 00:4 42B40000 43070000 42340000 "
                 "3F800000 00:4 00:4 00000001 00:76");
}

}  // namespace
