#include "support.h"

#include <quillon/fltface.h>
#include <quillon/flttext.h>

#include <numeric>
#include <tuple>

namespace {

FltFace distinctFace() {
    FltFace face;
    fltSetText(face.asciiId, "f7");
    face.irColorCode = 0x01020304;
    face.relativePriority = 5;
    face.drawType = 6;
    face.textureWhite = 1;
    face.colorNameIndex = 7;
    face.alternateColorNameIndex = 8;
    face.billboard = 4;
    face.detailTextureIndex = 9;
    face.textureIndex = 10;
    face.materialIndex = 11;
    face.surfaceMaterialCode = 12;
    face.featureId = 13;
    face.irMaterialCode = 14;
    face.transparency = 0xFFFE;
    face.lodGenerationControl = 15;
    face.lineStyleIndex = 16;
    face.flags = 0x84000000;
    face.lightMode = 3;
    face.packedPrimaryColor = face.packedAlternateColor = {};
    face.textureMappingIndex = 17;
    face.primaryColorIndex = 70000;
    face.alternateColorIndex = 70001;
    return face;
}

constexpr const char* kCommonMiddle =
    "00 04 0009 000A 000B 000C 000D 0000000E FFFE 0F 10 84000000 03 00:7 ";

TEST(FaceTest, HasEightyBytesFrom1510On) {
    const std::string expected = std::string("0005 0050 'f7':8 01020304 0005 06 01 0007 0008 ") +
                                 kCommonMiddle + "00:8 0011 0000 00011170 00011171 00:4";
    expectLayout(distinctFace(), expected, 1510);
    expectLayout(distinctFace(), expected, 1580);
}

TEST(FaceTest, HasSixtyFourBytesBefore1510) {
    // The low halves of the color indices stand where the color names are later.
    const std::string expected =
        std::string("0005 0040 'f7':8 01020304 0005 06 01 1170 1171 ") + kCommonMiddle + "00:8";
    EXPECT_EQ(toHex(encode(distinctFace(), 1420)), toHex(hex(expected)));
    EXPECT_EQ(toHex(encode(distinctFace(), 1509)), toHex(hex(expected)));
    FltFace face;
    decode(face, hex(expected), 1509);
    FltFace read = distinctFace();
    read.primaryColorIndex = read.alternateColorIndex = 4464;
    read.colorNameIndex = read.alternateColorNameIndex = -1;
    read.textureMappingIndex = -1;
    EXPECT_EQ(fieldsOf(face), fieldsOf(read));
}

TEST(FaceTest, GivesTheAlternateOfOldFacesThePrimaryIndex) {
    const std::tuple<const char*, std::uint32_t, std::uint32_t> cases[] = {
        {"0005 0007", 5, 5},
        {"FFFF 0007", 0xFFFFFFFF, 0xFFFF},
        {"0005 FFFF", 5, 0xFFFFFFFF},
        {"FFFF FFFF", 0xFFFFFFFF, 0xFFFFFFFF},
    };
    for (const auto& [words, primary, alternate] : cases) {
        FltFace face;
        face.colorNameIndex = face.alternateColorNameIndex = 3;
        decode(face, hex("0005 0040 00:16 " + std::string(words) + " 00:40"), 1420);
        EXPECT_EQ(face.primaryColorIndex, primary) << words;
        EXPECT_EQ(face.alternateColorIndex, alternate) << words;
        EXPECT_EQ(face.colorNameIndex, -1) << words;
        EXPECT_EQ(face.alternateColorNameIndex, -1) << words;
    }
}

TEST(FaceTest, ReadsPackedColorsAndNeverWritesThem) {
    for (const std::uint32_t revision : {1420U, 1580U}) {
        FltFace face;
        decode(face, hex("0005 0050 00:52 01020304 05060708 00:16"), revision);
        EXPECT_EQ(face.packedPrimaryColor, (FltPackedColor{1, 2, 3, 4})) << "alpha first";
        EXPECT_EQ(face.packedAlternateColor, FltPackedColor::fromComponents(8, 7, 6, 5));
        const Bytes bytes = encode(face, revision);
        EXPECT_EQ(toHex({bytes.begin() + 56, bytes.begin() + 64}), toHex(hex("00:8")));
        FltToken token;
        face.writeFileToken(token, revision);
        token.finish();
        Bytes withColors = bytes;
        std::iota(withColors.begin() + 56, withColors.begin() + 64, std::uint8_t{1});
        EXPECT_EQ(toHex(bytesOf(token)), toHex(withColors)) << "but for files";
    }
    EXPECT_EQ(FltPackedColor::fromComponents(-1, -1, -1, -1),
              (FltPackedColor{0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(FaceTest, HasItsDefaults) {
    const FltFace face;
    EXPECT_EQ(toHex(encode(face)),
              toHex(hex("0005 0050 00:16 FFFF FFFF 00:2 FFFF FFFF FFFF 00:12 60000000 00:8 00:8 "
                        "FFFF 00:14")));
    EXPECT_EQ(face.packedPrimaryColor, (FltPackedColor{0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(face.packedAlternateColor, (FltPackedColor{0xFF, 0xFF, 0xFF, 0xFF}));
}

}  // namespace
