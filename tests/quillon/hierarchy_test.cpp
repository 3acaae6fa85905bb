#include "support.h"

#include <quillon/fltbsp.h>
#include <quillon/fltclipregion.h>
#include <quillon/fltdof.h>
#include <quillon/fltgeometry.h>
#include <quillon/fltgroup.h>
#include <quillon/fltinstance.h>
#include <quillon/fltlod.h>
#include <quillon/fltobject.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>
#include <quillon/fltxref.h>

#include <cmath>
#include <tuple>

namespace {

template <typename Record>
Record named(const char* id) {
    Record record;
    fltSetText(record.asciiId, id);
    return record;
}

TEST(HierarchyTest, LaysOutGroups) {
    auto group = named<FltGroup>("grp");
    group.relativePriority = -2;
    group.flags = 0x40000000;
    group.specialEffect1 = 3;
    group.specialEffect2 = 4;
    group.significance = 5;
    group.layerCode = -6;
    expectLayout(group, "0002 0020 'grp':8 FFFE 0000 40000000 0003 0004 0005 FA 00:5");
    expectLayout(FltGroup(), "0002 0020 00:28");
}

TEST(HierarchyTest, LaysOutObjects) {
    auto object = named<FltObject>("eightchr");
    object.flags = static_cast<std::int32_t>(0x80000000);
    object.relativePriority = 1;
    object.transparency = 2;
    object.specialEffect1 = 3;
    object.specialEffect2 = 4;
    object.significance = 5;
    expectLayout(object, "0004 0020 'eightchr' 80000000 0001 0002 0003 0004 0005 00:6");
}

TEST(HierarchyTest, LaysOutLevelsOfDetail) {
    auto lod = named<FltLod>("l1");
    lod.switchInDistance = 1;
    lod.switchOutDistance = 2;
    lod.specialEffect1 = 3;
    lod.specialEffect2 = 4;
    lod.flags = 5;
    lod.centerX = 6;
    lod.centerY = 7;
    lod.centerZ = 8;
    lod.transitionRange = 9;
    expectLayout(lod,
                 "0049 0048 'l1':8 00:4 3FF0:8 4000:8 0003 0004 00000005 4018:8 401C:8 4020:8 "
                 "4022:8");
    expectLayout(FltLod(), "0049 0048 00:12 40F86A:8 00:48");
}

TEST(HierarchyTest, LaysOutDegreesOfFreedom) {
    auto dof = named<FltDof>("d1");
    dof.origin = {1, 2, 3};
    dof.pointOnXAxis = {4, 5, 6};
    dof.pointInXyPlane = {7, 8, 9};
    double value = 10;
    for (double FltDof::*limit : {&FltDof::zTranslationMin,
                                  &FltDof::zTranslationMax,
                                  &FltDof::zTranslationCurrent,
                                  &FltDof::zTranslationIncrement,
                                  &FltDof::yTranslationMin,
                                  &FltDof::yTranslationMax,
                                  &FltDof::yTranslationCurrent,
                                  &FltDof::yTranslationIncrement,
                                  &FltDof::xTranslationMin,
                                  &FltDof::xTranslationMax,
                                  &FltDof::xTranslationCurrent,
                                  &FltDof::xTranslationIncrement,
                                  &FltDof::pitchMin,
                                  &FltDof::pitchMax,
                                  &FltDof::pitchCurrent,
                                  &FltDof::pitchIncrement,
                                  &FltDof::rollMin,
                                  &FltDof::rollMax,
                                  &FltDof::rollCurrent,
                                  &FltDof::rollIncrement,
                                  &FltDof::yawMin,
                                  &FltDof::yawMax,
                                  &FltDof::yawCurrent,
                                  &FltDof::yawIncrement,
                                  &FltDof::zScaleMin,
                                  &FltDof::zScaleMax,
                                  &FltDof::zScaleCurrent,
                                  &FltDof::zScaleIncrement,
                                  &FltDof::yScaleMin,
                                  &FltDof::yScaleMax,
                                  &FltDof::yScaleCurrent,
                                  &FltDof::yScaleIncrement,
                                  &FltDof::xScaleMin,
                                  &FltDof::xScaleMax,
                                  &FltDof::xScaleCurrent,
                                  &FltDof::xScaleIncrement})
        dof.*limit = value++;
    dof.flags = 0x7C;
    expectLayout(dof,
                 "000E 0180 'd1':8 00:4 "
                 "3FF0:8 4000:8 4008:8 4010:8 4014:8 4018:8 401C:8 4020:8 4022:8 "
                 "4024:8 4026:8 4028:8 402A:8 402C:8 402E:8 4030:8 4031:8 4032:8 4033:8 4034:8 "
                 "4035:8 4036:8 4037:8 4038:8 4039:8 403A:8 403B:8 403C:8 403D:8 403E:8 403F:8 "
                 "4040:8 404080:8 4041:8 404180:8 4042:8 404280:8 4043:8 404380:8 4044:8 404480:8 "
                 "4045:8 404580:8 4046:8 404680:8 "
                 "0000007C 00:4");
    expectLayout(FltDof(), "000E 0180 00:12 00:24 3FF0:8 00:16 00:8 3FF0:8 00:8 00:296");
}

TEST(HierarchyTest, ReplacesFramePointsThatWereNeverSet) {
    constexpr double kUnset = -1e8;
    FltDof dof;
    dof.origin = dof.pointOnXAxis = dof.pointInXyPlane = {kUnset, kUnset, kUnset};
    const Bytes bytes = encode(dof);
    EXPECT_EQ(toHex({bytes.begin() + 16, bytes.begin() + 24}), toHex(hex("C197D784:8")))
        << "written as it is";
    decode(dof, bytes);
    EXPECT_EQ(dof.origin, (FltPoint3d{0, 0, 0}));
    EXPECT_EQ(dof.pointOnXAxis, (FltPoint3d{1, 0, 0}));
    EXPECT_EQ(dof.pointInXyPlane, (FltPoint3d{0, 1, 0}));

    dof.origin = {kUnset, kUnset, 0};
    dof.pointOnXAxis = {kUnset, kUnset, std::nextafter(kUnset, 0)};
    const FltDof before = dof;
    decode(dof, encode(dof));
    EXPECT_EQ(dof.origin, before.origin) << "two coordinates do not make a point unset";
    EXPECT_EQ(dof.pointOnXAxis, before.pointOnXAxis);
}

TEST(SwitchTest, TellsWhatARecordSaysOfItsMasks) {
    const auto of = [](const char* bytes) { return FltSwitch::statedMasks(hex(bytes)); };
    const auto stated = of("0060 0024 00:8 00:4 00000000 00000002 00000001 00:8");
    EXPECT_EQ(stated.masks, 2);
    EXPECT_EQ(stated.wordsPerMask, 1);
    EXPECT_EQ(stated.wordsPresent, 2);
    EXPECT_TRUE(stated.arePresent());
    EXPECT_FALSE(of("0060 0020 00:8 00:4 00000000 00000002 00000001 00:4").arePresent());
    EXPECT_FALSE(of("0060 0020 00:8 00:4 00000000 FFFFFFFF FFFFFFFF 00:4").arePresent());
    EXPECT_FALSE(of("0060 0020 00:8 00:4 00000000 7FFFFFFF 7FFFFFFF 00:4").arePresent());
    EXPECT_TRUE(of("0060 001B 00:8 00:4 00000000 7FFFFFFF 7FFFFF").arePresent())
        << "it ends before it says so";
}

TEST(SwitchTest, LaysOutMasks) {
    auto record = named<FltSwitch>("f1");
    record.currentMask = 1;
    record.wordsPerMask = 2;
    for (std::uint32_t word = 1; word <= 6; ++word) record.maskWords.append(word << 24 | word);
    expectLayout(record,
                 "0060 0038 'f1':8 00:4 00000001 00000003 00000002 01000001 02000002 03000003 "
                 "04000004 05000005 06000006 00:4");
    record.wordsPerMask = 0;
    const Bytes bytes = encode(record);
    EXPECT_EQ(toHex({bytes.begin() + 20, bytes.begin() + 32}), toHex(hex("00:8 01000001")))
        << "no masks, and yet all words";
    expectLayout(FltSwitch(), "0060 0020 00:8 00:4 00000000 00000000 00000001 00:4");
}

TEST(SwitchTest, SizesItsMasks) {
    struct Masks {
        int words, current;
    };
    const struct {
        Masks before;
        int bits, wordsPerMask, masks;
        Masks after;
    } cases[] = {
        {{.words = 0, .current = 0}, 3, 1, 1, {.words = 1, .current = 0}},
        {{.words = 0, .current = 5}, 33, 2, 1, {.words = 2, .current = 0}},
        {{.words = 0, .current = 0}, 64, 2, 1, {.words = 2, .current = 0}},
        {{.words = 3, .current = 2}, 32, 1, 3, {.words = 3, .current = 2}},
        {{.words = 3, .current = 1}, 40, 2, 1, {.words = 3, .current = 0}},
        {{.words = 3, .current = 1}, 0, 0, 0, {.words = 3, .current = 0}},
        {{.words = 3, .current = -1}, -40, 0, 0, {.words = 3, .current = -1}},
        {{.words = 1, .current = 0}, 100, 4, 0, {.words = 1, .current = 0}},
    };
    for (const auto& [before, bits, wordsPerMask, masks, after] : cases) {
        SCOPED_TRACE(std::to_string(before.words) + " words, " + std::to_string(bits) + " bits");
        FltSwitch record;
        for (int i = 0; i < before.words; ++i) record.maskWords.append(0x55);
        record.currentMask = before.current;
        record.setMaskBits(bits);
        EXPECT_EQ(record.wordsPerMask, wordsPerMask);
        EXPECT_EQ(record.maskCount(), masks);
        EXPECT_EQ(record.maskWords.count(), after.words);
        EXPECT_EQ(record.currentMask, after.current);
        for (int i = 0; i < after.words; ++i)
            EXPECT_EQ(*record.maskWords.at(i), before.words == 0 ? 0xFFFFFFFF : 0x55);
    }
    FltSwitch record;
    expectAssertion("fltswitch", 88, [&] { record.setMaskBits(0x7FFFFFFF); });
    EXPECT_EQ(record.maskWords.count(), 0);
}

TEST(SwitchTest, TrustsNoCountInTheFile) {
    const std::tuple<const char*, int> refused[] = {
        {"FFFFFFFF 00000001", 137}, {"00000001 FFFFFFFF", 137}, {"00003FF9 00000001", 139},
        {"7FFFFFFF 7FFFFFFF", 139}, {"00010000 00010000", 139},
    };
    FltSwitch record;
    for (const auto& [counts, line] : refused)
        expectAssertion("fltswitch", line, [&, text = std::string(counts)] {
            decode(record, hex("0060 0020 00:16 " + text + " 00:4"));
        });
    decode(record, hex("0060 0020 00:16 00000002 00000001 12345678"));
    ASSERT_EQ(record.maskWords.count(), 2);
    EXPECT_EQ(*record.maskWords.at(0), 0x12345678U);
    EXPECT_EQ(*record.maskWords.at(1), 0U) << "a word past the record's end";
    decode(record, hex("0060 0020 00:16 00000000 7FFFFFFF 00:4"));
    EXPECT_EQ(record.maskWords.count(), 0);

    record.maskWords.resize(FltSwitch::kMaxMaskWords + 1);
    expectAssertion("fltswitch", 121, [&] { encode(record); });
    record.wordsPerMask = -1;
    expectAssertion("fltswitch", 114, [&] { encode(record); });
}

TEST(BspTest, LaysOutItsPlane) {
    auto bsp = named<FltBsp>("b1");
    bsp.planeA = 1;
    bsp.planeB = 2;
    bsp.planeC = 3;
    bsp.planeD = 4;
    expectLayout(bsp, "0037 0030 'b1':8 00:4 3FF0:8 4000:8 4008:8 4010:8");
    expectLayout(FltBsp(), "0037 0030 00:12 00:16 BFF0:8 00:8");
}

TEST(BspTest, NormalisesPlanesByTheFourVector) {
    const FltPlane bsp = fltPlaneFromPoints({0, 0, 0}, {0, 1, 0}, {1, 0, 0});
    EXPECT_EQ(bsp.a, 0);
    EXPECT_EQ(bsp.b, 0);
    EXPECT_EQ(bsp.c, -1);
    EXPECT_EQ(bsp.d, 0);
    EXPECT_FALSE(std::signbit(bsp.d));

    // z = 1 has the normal (0, 0, 1) and the distance -1: divided by the square root of two.
    const FltPlane shifted = fltPlaneFromPoints({0, 0, 1}, {1, 0, 1}, {0, 1, 1});
    EXPECT_DOUBLE_EQ(shifted.c, 1 / std::sqrt(2.0));
    EXPECT_DOUBLE_EQ(shifted.d, -1 / std::sqrt(2.0));

    const FltPlane slanted = fltPlaneFromPoints({2, 0, 0}, {0, 3, 0}, {0, 0, 5});
    EXPECT_NEAR(slanted.a * 2 + slanted.d, 0, 1e-15);
    EXPECT_NEAR(slanted.b * 3 + slanted.d, 0, 1e-15);
    EXPECT_NEAR(slanted.c * 5 + slanted.d, 0, 1e-15);
}

TEST(ClipRegionTest, TransposesItsPlanesInTheFile) {
    auto clip = named<FltClipRegion>("c1");
    clip.edgeClip0 = 1;
    clip.edgeClip1 = 2;
    clip.edgeClip2 = 3;
    clip.edgeClip3 = 4;
    clip.edgeClip4 = 5;
    double value = 1;
    for (double FltClipRegion::*coordinate :
         {&FltClipRegion::corner0X, &FltClipRegion::corner0Y, &FltClipRegion::corner0Z,
          &FltClipRegion::corner1X, &FltClipRegion::corner1Y, &FltClipRegion::corner1Z,
          &FltClipRegion::corner2X, &FltClipRegion::corner2Y, &FltClipRegion::corner2Z,
          &FltClipRegion::corner3X, &FltClipRegion::corner3Y, &FltClipRegion::corner3Z})
        clip.*coordinate = value++;
    for (double FltClipRegion::*coefficient :
         {&FltClipRegion::plane0A, &FltClipRegion::plane0B, &FltClipRegion::plane0C,
          &FltClipRegion::plane0D, &FltClipRegion::plane1A, &FltClipRegion::plane1B,
          &FltClipRegion::plane1C, &FltClipRegion::plane1D, &FltClipRegion::plane2A,
          &FltClipRegion::plane2B, &FltClipRegion::plane2C, &FltClipRegion::plane2D,
          &FltClipRegion::plane3A, &FltClipRegion::plane3B, &FltClipRegion::plane3C,
          &FltClipRegion::plane3D, &FltClipRegion::plane4A, &FltClipRegion::plane4B,
          &FltClipRegion::plane4C, &FltClipRegion::plane4D})
        clip.*coefficient = value++;
    expectLayout(clip,
                 "0062 0118 'c1':8 00:6 01 02 03 04 05 00 "
                 "3FF0:8 4000:8 4008:8 4010:8 4014:8 4018:8 401C:8 4020:8 4022:8 4024:8 4026:8 "
                 "4028:8 "
                 "402A:8 4031:8 4035:8 4039:8 403D:8 402C:8 4032:8 4036:8 403A:8 403E:8 402E:8 "
                 "4033:8 4037:8 403B:8 403F:8 4030:8 4034:8 4038:8 403C:8 4040:8 ");
    std::string unset;
    for (int i = 0; i < 12; ++i) unset += "C197D784:8 ";
    expectLayout(FltClipRegion(), "0062 0118 00:20 " + unset + "00:160");
}

TEST(XRefTest, KeepsFullNamesWithoutATerminator) {
    FltXRef reference;
    expectLayout(reference, "003F 00D8 00:212");
    const std::string name = "props/" + std::string(190, 'x') + ".flt";
    fltSetText(reference.fileName, name);
    reference.flags = static_cast<std::int32_t>(0xE3000000);
    expectLayout(reference, "003F 00D8 '" + name + "' 00:4 E3000000 00:4");
    EXPECT_EQ(fltText(reference.fileName), name);
    EXPECT_EQ(reference.id(), nullptr);
}

TEST(InstanceTest, LaysOutBothKinds) {
    FltInstanceDef definition;
    definition.instanceNumber = -300;
    expectLayout(definition, "003E 0008 0000 FED4");
    FltInstanceRef reference;
    reference.instanceNumber = 7;
    expectLayout(reference, "003D 0008 0000 0007");
}

TEST(HierarchyTest, ChecksTheOpcodeWhereItIsChecked) {
    const std::tuple<int, const char*, int> checked[] = {
        {2, "fltgroup", 61},         {4, "fltobject", 63},
        {73, "fltlod", 61},          {61, "fltinstance", 44},
        {62, "fltinstance", 44},     {5, "fltface", 97},
        {101, "fltlightsource", 61}, {102, "fltlightsourcepalette", 60},
    };
    for (const auto& [opcode, file, line] : checked)
        expectAssertion(file, line, [opcode = opcode] {
            decode(*fltCreateRecord(static_cast<std::uint16_t>(opcode)), hex("0001 0008 00:4"));
        });
    for (const int opcode : {14, 96, 55, 98, 63, 111})
        EXPECT_NO_THROW(
            decode(*fltCreateRecord(static_cast<std::uint16_t>(opcode)), hex("0001 0008 00:4")))
            << opcode;
}

TEST(HierarchyTest, ReadsLongerAndShorterRecordsThanItsOwn) {
    FltGroup group;
    decode(group, hex("0002 002C 'runway':8 0001 0000 00000002 0003 0004 0005 06 00 11111111:20"));
    EXPECT_EQ(fltText(group.asciiId), "runway");
    EXPECT_EQ(group.layerCode, 6);
    decode(group, hex("0002 0017 'runway':8 0001 0000 00000002 0003 04"));
    EXPECT_EQ(group.specialEffect1, 3);
    EXPECT_EQ(group.specialEffect2, 0x0400);
    EXPECT_EQ(group.significance, 0);
    EXPECT_EQ(group.layerCode, 0);
}

TEST(FactoryTest, MakesEveryClassAndNothingElse) {
    std::string known;
    for (unsigned opcode = 0; opcode < 0x10000; ++opcode)
        if (const auto record = fltCreateRecord(static_cast<std::uint16_t>(opcode))) {
            EXPECT_EQ(record->opcode(), opcode);
            known += std::to_string(opcode) + " ";
        }
    EXPECT_EQ(known, "1 2 4 5 14 31 55 61 62 63 73 96 98 101 102 111 ");
}

}  // namespace
