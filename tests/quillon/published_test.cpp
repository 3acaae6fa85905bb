// The records of the published format that no node carries: literal bytes, the fields that they
// show, and the same bytes again.
#include "support.h"

#include <quillon/fltcolorpalette.h>
#include <quillon/fltfilebeads.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltmesh.h>
#include <quillon/fltmultitexture.h>
#include <quillon/fltrecordtype.h>
#include <quillon/flttexture.h>
#include <quillon/flttransform.h>
#include <quillon/fltvertex.h>
#include <quillon/fltvertexlist.h>
#include <quillon/fltvertexview.h>

namespace {

/// Collects the values of each field.
struct Printer final : FltFieldVisitor {
    std::vector<std::pair<std::string, std::string>> fields;

    void add(const char* name, int index, const auto& value) {
        std::ostringstream text;
        text << value;
        for (auto& [known, values] : fields)
            if (known == name && index >= 0) {
                values.append(1, ',').append(text.str());
                return;
            }
        fields.emplace_back(name, text.str());
    }
    void integer(const char* name, int index, std::int64_t value) override {
        add(name, index, value);
    }
    void real(const char* name, int index, double value) override { add(name, index, value); }
    void text(const char* name, std::string_view value) override { add(name, -1, value); }
};

/// "name=value", with several values of one field behind each other.
std::string shown(const FltRecord& record) {
    Printer printer;
    record.visitFields(printer);
    std::string all;
    for (const auto& [name, values] : printer.fields) {
        if (!all.empty()) all += ' ';
        all.append(name).append(1, '=').append(values);
    }
    return all;
}

std::unique_ptr<FltRecord> recordOf(const Bytes& bytes) {
    return fltRecordType(static_cast<std::uint16_t>(bytes.at(0) << 8 | bytes.at(1)))->create();
}

TEST(PublishedTest, RecordsShowTheirBytesAndGiveThemBack) {
    const std::string face =
        "00000011 0002 03 01 0004 0005 00 04 0006 0007 0008 0009 000A 0000000B 000C 0D 0E 10000000 "
        "02 00:7 FF102030 FE405060 000F 0000 00000085 00000086";
    const std::string faceShown =
        "irColorCode=17 relativePriority=2 drawType=3 textureWhite=1 colorNameIndex=4 "
        "alternateColorNameIndex=5 billboard=4 detailTextureIndex=6 textureIndex=7 materialIndex=8 "
        "surfaceMaterialCode=9 featureId=10 irMaterialCode=11 transparency=12 "
        "lodGenerationControl=13 lineStyleIndex=14 flags=268435456 lightMode=2 "
        "packedPrimaryColor=255,16,32,48 packedAlternateColor=254,64,80,96 textureMappingIndex=15 "
        "primaryColorIndex=133 alternateColorIndex=134";
    const std::pair<std::string, std::string> cases[] = {
        {"0044 0028 0001 1000 3FF0:8 4000:8 4008:8 FF102030 00000085",
         "colorNameIndex=1 flags=4096 position=1,2,3 packedColor=255,16,32,48 colorIndex=133"},
        {"0045 0038 FFFF 2000 3FF0:8 4000:8 4008:8 3F800000 40000000 40400000 FF102030 00000085 "
         "00:4",
         "colorNameIndex=-1 flags=8192 position=1,2,3 normal=1,2,3 packedColor=255,16,32,48 "
         "colorIndex=133"},
        {"0046 0040 0001 8000 3FF0:8 4000:8 4008:8 3F800000 40000000 40400000 3F000000 3E800000 "
         "FF102030 00000085 00:4",
         "colorNameIndex=1 flags=32768 position=1,2,3 normal=1,2,3 texture=0.5,0.25 "
         "packedColor=255,16,32,48 colorIndex=133"},
        {"0047 0030 0001 4000 3FF0:8 4000:8 4008:8 3F000000 3E800000 FF102030 00000085",
         "colorNameIndex=1 flags=16384 position=1,2,3 texture=0.5,0.25 packedColor=255,16,32,48 "
         "colorIndex=133"},
        {"0043 0008 00000140", "length=320"},
        {"0048 000C 00000008 00000040", "offsets=8,64"},
        {"0048 0004", ""},
        {"0059 0018 00000008 00000040 00000048 00000080 00:4", "offsets0=8,72 offsets100=64,128"},
        {"0071 0058 00000003 'steel':12 80000000 3E800000 3F000000 3F400000 3F800000 3FA00000 "
         "3FC00000 3FE00000 40000000 40200000 40400000 40600000 40800000 42000000 3F000000 00:8",
         "index=3 name=steel flags=2147483648 ambient=0.25,0.5,0.75 diffuse=1,1.25,1.5 "
         "specular=1.75,2,2.5 emissive=3,3.5,4 shininess=32 alpha=0.5"},
        {"0042 00C0 3E800000 3F000000 3F400000 3F800000 3FA00000 3FC00000 3FE00000 40000000 "
         "40200000 40400000 40600000 40800000 42000000 3F000000 80000000 'brass':12 00:116",
         "ambient=0.25,0.5,0.75 diffuse=1,1.25,1.5 specular=1.75,2,2.5 emissive=3,3.5,4 "
         "shininess=32 alpha=0.5 flags=2147483648 name=brass"},
        {"0040 00D8 'runway.rgb':200 00000002 00000003 00000004",
         "fileName=runway.rgb index=2 paletteX=3 paletteY=4"},
        {"0070 00B0 00000001 'put':20 00000001 00000002 3FF0:8 00:112 4000:8 0102030405060708 "
         "00:4",
         "index=1 name=put type=1 isWarped=2 matrix=1,0,0,0,0,0,0,0,0,0,0,0,0,0,0,2 "
         "parameters=1,2,3,4,5,6,7,8,0,0,0,0"},
        {"0031 0048 3F800000 00:16 40000000 00:16 40400000 00:16 40800000 00:4",
         "rows=1,0,0,0,0,2,0,0,0,0,3,0,0,0,0,4"},
        {"005E 0048 3F800000 00:56 40800000 00:4", "rows=1,0,0,0,0,0,0,0,0,0,0,0,0,0,0,4"},
        {"004C 0040 00:4 3FF0:8 4000:8 4008:8 4010:8 4014:8 4018:8 42B40000 00:4",
         "from=1,2,3 to=4,5,6 angle=90"},
        {"004E 0038 00:4 3FF0:8 4000:8 4008:8 4010:8 4014:8 4018:8", "from=1,2,3 delta=4,5,6"},
        {"004F 0030 00:4 3FF0:8 4000:8 4008:8 3F800000 40000000 40400000 00:4",
         "center=1,2,3 factors=1,2,3"},
        {"0050 0030 00:4 3FF0:8 4000:8 4008:8 3F800000 40000000 40400000 42B40000",
         "center=1,2,3 axis=1,2,3 angle=90"},
        {"0051 0060 00:4 3FF0:8 4000:8 4008:8 4010:8 4014:8 4018:8 401C:8 4020:8 4022:8 40000000 "
         "40400000 42B40000 00:4",
         "center=1,2,3 reference=4,5,6 target=7,8,9 overallScale=2 scaleAlongLine=3 angle=90"},
        {"0052 0098 00:4 3FF0:8 4000:8 4008:8 4010:8 4014:8 4018:8 401C:8 4020:8 4022:8 4024:8 "
         "4026:8 4028:8 402A:8 402C:8 402E:8 4030:8 4031:8 4032:8",
         "fromOrigin=1,2,3 fromAlign=4,5,6 fromTrack=7,8,9 toOrigin=10,11,12 toAlign=13,14,15 "
         "toTrack=16,17,18"},
        {"004A 0038 00:4 3FF0:8 4000:8 4008:8 4010:8 4014:8 4018:8", "lowest=1,2,3 highest=4,5,6"},
        {"0069 0010 00:4 4000:8", "radius=2"},
        {"0069 0028 00:4 4000:8 3FF0:8 4000:8 4008:8", "radius=2 center=1,2,3"},
        {"006A 0018 00:4 4000:8 4008:8", "radius=2 height=3"},
        {"006A 0030 00:4 4000:8 4008:8 3FF0:8 4000:8 4008:8", "radius=2 height=3 center=1,2,3"},
        {"006C 0020 00:4 3FF0:8 4000:8 4008:8", "center=1,2,3"},
        {"006D 0020 00:4 3FF0:8 4000:8 4008:8", "yaw=1 pitch=2 roll=3"},
        {"0021 0018 'control' 20 'tower' 00:7", "name=control tower"},
        {"003C 0008 0003 0000", "copies=3"},
        {"0084 0010 00000002 'wreck' 00:3", "index=2 text=wreck"},
        {"0034 0018 A0000000 0001 0002 0003 0004 0005 0006 0007 0008",
         "mask=2684354560 textureIndices=1,5 effects=2,6 mappingIndices=3,7 data=4,8"},
        {"0035 0018 80000000 3F000000 3E800000 3F800000 40000000",
         "mask=2147483648 coordinates=0.5,0.25,1,2"},
        {"0054 0058 'mesh1':8 00:4 " + face + " 00:8", "id=mesh1 " + faceShown},
        {"0055 0070 00000002 D8000000 3FF0:8 4000:8 4008:8 00000085 3F800000 40000000 40400000 "
         "3F000000 3E800000 00:24 00000086 00:20 00:4",
         "vertexCount=2 mask=3623878656 positions=1,2,3,0,0,0 colors=133,134 normals=1,2,3,0,0,0 "
         "textures=0.5,0.25,0,0"},
        {"0055 0020 00000001 2C000000 FF102030 3F000000 3E800000 3F800000 40000000",
         "vertexCount=1 mask=738197504 colors=4279246896 textures=0.5,0.25,1,2"},
        {"0056 0010 0001 0001 00000004 00010203",
         "type=1 indexSize=1 indexCount=4 indices=0,1,2,3"},
        {"0056 0010 0002 0002 00000002 01000203",
         "type=2 indexSize=2 indexCount=2 indices=256,515"},
        {"0056 0018 0004 0004 00000003 00000000 00010000 00000002",
         "type=4 indexSize=4 indexCount=3 indices=0,65536,2"},
        {"0064 0020 'ext1':8 'site':8 00 02 0003 0A0B0C0D 00:4",
         "id=ext1 siteId=site revision=2 recordCode=3 data=10,11,12,13,0,0,0,0"},
        {"0082 0020 'lp1':8 00000001 00000002 00000003 00:8",
         "id=lp1 appearanceIndex=1 animationIndex=2 drawOrder=3"},
        {"0083 0018 'sys':8 3F000000 00000002 80000000",
         "id=sys intensity=0.5 animationState=2 flags=2147483648"},
        {"0080 01A0 00:4 'beacon':256 00000001 0002 0003 FF102030 00000004 3F800000 40000000 "
         "40400000 40800000 00000005 00000006 00000007 00000008 40A00000 40C00000 40E00000 "
         "41000000 "
         "41100000 41200000 41300000 41400000 41500000 41600000 00000009 41700000 41800000 "
         "41880000 "
         "41900000 41980000 41A00000 80000000 41A80000 41B00000 41B80000 41C00000 41C80000 "
         "41D00000 "
         "000A 00:6",
         "name=beacon index=1 surfaceMaterialCode=2 featureId=3 backColor=4279246896 displayMode=4 "
         "intensity=1 backIntensity=2 minDefocus=3 maxDefocus=4 fadingMode=5 fogPunchMode=6 "
         "directionalMode=7 rangeMode=8 minPixelSize=5 maxPixelSize=6 actualPixelSize=7 "
         "transparentFalloffPixelSize=8 transparentFalloffExponent=9 transparentFalloffScalar=10 "
         "transparentFalloffClamp=11 fogScalar=12 fogIntensity=13 sizeDifferenceThreshold=14 "
         "directionalType=9 horizontalLobeAngle=15 verticalLobeAngle=16 lobeRollAngle=17 "
         "directionalFalloffExponent=18 directionalAmbientIntensity=19 significance=20 "
         "flags=2147483648 visibilityRange=21 fadeRangeRatio=22 fadeInDuration=23 "
         "fadeOutDuration=24 lodRangeRatio=25 lodScale=26 textureIndex=10"},
        {"0081 0558 00:4 'flash':256 00000001 3F800000 40000000 40400000 3F800000 40000000 "
         "40400000 "
         "80000000 00000003 00000004 00000005 00000006 'sos':1024 00000002 00000001 3F000000 "
         "FF102030 00000002 3F800000 FF405060 00:4",
         "name=flash index=1 period=1 phaseDelay=2 enabledPeriod=3 axis=1,2,3 flags=2147483648 "
         "type=3 morseTiming=4 wordRate=5 characterRate=6 morseText=sos stepCount=2 stepStates=1,2 "
         "stepDurations=0.5,1 stepColors=4279246896,4282404960"},
    };
    for (const auto& [literal, fields] : cases) {
        SCOPED_TRACE(literal.substr(0, 60));
        const Bytes bytes = hex(literal);
        ASSERT_EQ(bytes.size(), static_cast<std::size_t>(bytes[2] << 8 | bytes[3]));
        const auto record = recordOf(bytes);
        ASSERT_NE(record, nullptr);
        decode(*record, bytes);
        EXPECT_EQ(shown(*record), fields);
        EXPECT_EQ(toHex(encode(*record)), toHex(bytes));
    }
}

// Only files have these fields, behind what scenes keep of the record.
TEST(PublishedTest, BeadsOfFilesGoOnBehindThoseOfScenes) {
    FltFileGroup group;
    decode(group, hex("0002 0030 'g1':8 0005 0000 40000000 00:12 00000003 3F800000 3F000000 00:4"));
    EXPECT_EQ(shown(group),
              "id=g1 relativePriority=5 flags=1073741824 specialEffect1=0 specialEffect2=0 "
              "significance=0 layerCode=0 loopCount=3 loopDuration=1 lastFrameDuration=0.5");
    FltFileLod lod;
    decode(lod, hex("0049 0050 'l1':8 00:60 4004:8"));
    EXPECT_EQ(lod.significantSize, 2.5);
    decode(lod, hex("0049 0048 'l1':8 00:60"));
    EXPECT_EQ(lod.significantSize, 0);
}

TEST(PublishedTest, ListsHoldWhatIsThereAndNoMoreThanIsStated) {
    // One vertex of 4 bytes in 8, since records are padded; and one of two, the other in a
    // continuation.
    FltLocalVertexPool pool;
    decode(pool, hex("0055 0014 00000001 20000000 FF102030 00000000"));
    EXPECT_EQ(pool.vertices.size(), 1U);
    decode(pool, hex("0055 0010 00000002 20000000 FF102030"));
    EXPECT_EQ(pool.vertices.size(), 1U);
    EXPECT_EQ(pool.vertexCount, 2U);
    for (const char* nothing : {"0055 0010 FFFFFFFF 00000000 FF102030",  // vertices of no bytes
                                "0055 000A 0000", "0055 0004"}) {
        decode(pool, hex(nothing));
        EXPECT_TRUE(pool.vertices.empty()) << nothing;
    }
    FltMeshPrimitive primitive;
    decode(primitive, hex("0056 0010 0001 0003 00000004 00010203"));
    EXPECT_TRUE(primitive.indices.empty()) << "indices of three bytes";
    FltVertexList list;
    decode(list, hex("0048 000B 00000008 000000"));
    EXPECT_EQ(list.offsets, std::vector<std::uint32_t>{8});
}

TEST(PublishedTest, TextureCoordinatesFitTheListBeforeThem) {
    const auto fits = [](const char* words, std::size_t corners) {
        return FltUvList::fits(hex(words), corners);
    };
    EXPECT_TRUE(fits("0035 0020 80000000 00:24", 3));
    EXPECT_FALSE(fits("0035 0020 80000000 00:24", 2));
    EXPECT_TRUE(fits("0035 0028 80000000 00:32", 2)) << "morphing ones";
    EXPECT_TRUE(fits("0035 0028 A0000000 00:32", 2)) << "two layers";
    EXPECT_FALSE(fits("0035 0024 80000000 00:28", 3)) << "half a pair too many";
    EXPECT_TRUE(fits("0035 0006 8000", 3)) << "nothing says how many it needs";
    EXPECT_FALSE(fits("0035 0008 80000000", 3));
}

TEST(PublishedTest, AColorPaletteHoldsItsColorsBehindReservedBytes) {
    Bytes bytes = hex("0020 1084 00:128 FF0A141E 00:4092");
    FltColorPalette palette;
    decode(palette, bytes);
    ASSERT_EQ(palette.colors.size(), 1024U);
    EXPECT_EQ(palette.colors[0], FltPackedColor::fromComponents(30, 20, 10, 255));
    EXPECT_TRUE(palette.nameTable.empty());
    bytes = hex("0020 1090 00:128 FF0A141E 00:4092 00000001 000C 0000 0007");
    bytes.resize(0x1090);
    decode(palette, bytes);
    EXPECT_EQ(palette.colors.size(), 1024U);
    EXPECT_EQ(palette.nameTable.size(), 12U);
    EXPECT_EQ(toHex(encode(palette)), toHex(bytes));
}

TEST(PublishedTest, AnOlderColorPaletteHasNumbersOf16Bits) {
    Bytes bytes = hex("0020 0294 00:128 0001 0002 0003 00:186 00FE 0005 0006");
    bytes.resize(0x294);
    FltColorPalette palette;
    EXPECT_EQ(FltColorPalette::layoutRevision(bytes, 1420), 1420U);
    EXPECT_GE(FltColorPalette::layoutRevision(bytes, 1500), 1500U);
    palette.readBytes(bytes, 1420);
    EXPECT_TRUE(palette.isOld());
    EXPECT_EQ(palette.colors[0], FltPackedColor::fromComponents(1, 2, 3, 0));
    EXPECT_EQ(palette.fixedColors[0], FltPackedColor::fromComponents(254, 5, 6, 0));
    EXPECT_EQ(palette.entryOf(31 << 7 | 5), 31U);
    EXPECT_EQ(palette.entryOf(4096 + 55), 87U);
    EXPECT_EQ(palette.entryOf(4096 + 56), std::nullopt);
    EXPECT_EQ(palette.indexOf(31, 5), 31U << 7 | 5);
    EXPECT_EQ(palette.indexOf(87, 5), 4096U + 55);
    // One of another length, or with a number beyond a byte, is not read so.
    bytes[4 + 128 + 6] = 1;
    EXPECT_GE(FltColorPalette::layoutRevision(bytes, 1420), 1500U);
    EXPECT_GE(FltColorPalette::layoutRevision(Bytes(0x293), 1420), 1500U);
}

TEST(PublishedTest, AVertexTakesItsKindFromWhatItReads) {
    FltVertex vertex;
    EXPECT_EQ(toHex(encode(vertex)), toHex(hex("0044 0028 FFFF 2000 00:24 FFFFFFFF FFFFFFFF")));
    decode(vertex, hex("0045 0034 FFFF 0000 00:24 3F800000 00:8 FFFFFFFF 00000085"));  // unpadded
    EXPECT_EQ(vertex.opcode(), kFltVertexWithNormal);
    EXPECT_EQ(vertex.normal.x, 1);
    EXPECT_EQ(vertex.colorIndex, 0x85U);
    decode(vertex, hex("0047 0020 FFFF 0000 3FF0:8 00:16"));  // ends behind its position
    EXPECT_EQ(vertex.opcode(), kFltVertexWithTexture);
    EXPECT_EQ(vertex.position.x, 1);
    EXPECT_EQ(vertex.colorIndex, 0U);
    expectAssertion("fltvertex", 48, [&] { decode(vertex, hex("0048 0008 00:4")); });
    expectAssertion("fltrecordof", 38, [] {
        FltMatrix matrix;
        decode(matrix, hex("005E 0008 00:4"));
    });
}

TEST(PublishedTest, AViewOfAVertexReadsWhatTheRecordReads) {
    const struct {
        const char* bytes;
        bool normal, texture, packedColor, colorIndex;
    } cases[] = {
        {"0044 0028 0001 1000 3FF0:8 4000:8 4008:8 FF102030 00000085", false, false, true, true},
        {"0045 0038 FFFF 2000 3FF0:8 4000:8 4008:8 3F800000 40000000 40400000 FF102030 00000085 "
         "00:4",
         true, false, true, true},
        {"0046 0040 0001 8000 3FF0:8 4000:8 4008:8 3F800000 40000000 40400000 3F000000 3E800000 "
         "FF102030 00000085 00:4",
         true, true, true, true},
        {"0047 0030 0001 4000 3FF0:8 4000:8 4008:8 3F000000 3E800000 FF102030 00000085", false,
         true, true, true},
        {"0047 002C 0001 4000 3FF0:8 4000:8 4008:8 3F000000 3E800000 FF102030", false, true, true,
         false},
        {"0046 002F 0001 4000 3FF0:8 4000:8 4008:8 3F800000 40000000 40400000 3F0000", true, false,
         false, false},
        {"0045 0020 0001 4000 3FF0:8 4000:8 4008:8", false, false, false, false},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.bytes);
        const Bytes bytes = hex(test.bytes);
        const FltVertexView view(bytes);
        FltVertex vertex;
        decode(vertex, bytes);
        EXPECT_EQ(view.flags(), vertex.flags);
        EXPECT_EQ(view.position(), vertex.position);
        ASSERT_EQ(view.hasNormal(), test.normal);
        ASSERT_EQ(view.hasTexture(), test.texture);
        ASSERT_EQ(view.hasPackedColor(), test.packedColor);
        ASSERT_EQ(view.hasColorIndex(), test.colorIndex);
        if (test.normal) {
            EXPECT_EQ(view.normal(), vertex.normal);
        }
        if (test.texture) {
            EXPECT_EQ(view.texture(), vertex.texture);
        }
        if (test.packedColor) {
            EXPECT_EQ(view.packedColor(), vertex.packedColor);
        }
        if (test.colorIndex) {
            EXPECT_EQ(view.colorIndex(), vertex.colorIndex);
        }
    }
    EXPECT_EQ(FltVertexView::layoutOf(71).position.end, FltVertexView::kShortest);
}

TEST(PublishedTest, RecordsSayHowFarTheirFieldsReach) {
    FltTexture texture;
    EXPECT_EQ(texture.lengthThrough(&texture.fileName), 204);
    EXPECT_EQ(texture.lengthThrough(&texture.index), 208);
    FltScale scale;
    EXPECT_EQ(scale.lengthThrough(&scale.factors), 44) << "without the reserved bytes behind it";
    FltMatrix matrix;
    EXPECT_EQ(matrix.lengthThrough(&matrix.rows), 68);
}

TEST(PublishedTest, BodiesAreReadAtAnyLength) {
    FltMeshPrimitive primitive;
    primitive.readBody(hex("0004 0002"));
    EXPECT_EQ(primitive.type, FltPrimitiveType::kPolygon);
    EXPECT_EQ(primitive.indexSize, 2);
    EXPECT_TRUE(primitive.indices.empty());
    Bytes longer = hex("0001 0001 00011170");
    longer.resize(8 + 70'000, 7);
    primitive.readBody(longer);
    EXPECT_EQ(primitive.indices.size(), 70'000U);
    EXPECT_EQ(primitive.indices.back(), 7U);
}

TEST(PublishedTest, PaletteOffsetsAreReadWhereTheyStand) {
    const Bytes body = hex("00000008 00000040 000000");
    const FltVertexOffsets offsets(body);
    ASSERT_EQ(offsets.size(), 2U);
    EXPECT_EQ(offsets[1], 0x40U);
    EXPECT_EQ(FltVertexOffsets::perCorner(72), 1U);
    EXPECT_EQ(FltVertexOffsets::perCorner(89), 2U);
}

TEST(PublishedTest, NewRecordsHaveTheirDefaults) {
    EXPECT_EQ(toHex(encode(FltMatrix())), toHex(hex("0031 0048 3F800000 00:16 3F800000 00:16 "
                                                    "3F800000 00:16 3F800000 00:4")));
    EXPECT_EQ(toHex(encode(FltMaterial())), toHex(hex("0071 0058 00:72 3F800000 00:8")));
    EXPECT_EQ(toHex(encode(FltMesh())),
              toHex(hex("0054 0058 00:20 FFFF FFFF 00:2 FFFF FFFF FFFF 00:12 60000000 00:8 "
                        "FFFFFFFF FFFFFFFF FFFF 00:18")));
}

}  // namespace
