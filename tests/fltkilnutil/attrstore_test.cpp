// What storing does beyond writing a value: the fields and bits that it must leave alone, and the
// rows that are odd on purpose.
#include "attrscene.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>

using namespace testing_chunks;

namespace {

using AttrStore = AttrScene;

std::uint32_t wordAt(const Bytes& bytes, std::size_t offset) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i) word = word << 8 | bytes.at(offset + i);
    return word;
}

TEST_F(AttrStore, EditingOneRowRoundsNoOther) {
    const RecordBytes record = RecordBytes(1, 328)
                                   .text(4, "db")
                                   .int32(12, 1580)
                                   .float64(220, 45.123456789012)
                                   .float64(228, -0.0)
                                   .float64(236, 1.0 / 3);
    INode* const header = recordNode(FltNodeKind::Header, record);
    ASSERT_TRUE(edit(header, FltNodeKind::Header, "FltUnits", "千米"));
    EXPECT_EQ(chunkBytes(header, kRecordChunk), RecordBytes(record).int8(62, 1));
    EXPECT_EQ(value(FltNodeKind::Header, "FltOriginLat"), "45.1235");
    ASSERT_TRUE(edit(header, FltNodeKind::Header, "FltOriginLat", "45.5"));
    EXPECT_EQ(chunkBytes(header, kRecordChunk), RecordBytes(record).int8(62, 1).float64(220, 45.5));

    const RecordBytes point = RecordBytes(111, 160)
                                  .float32(24, 1.0F / 3)
                                  .int32(28, 0x7FC00001)   // a not-a-number with a payload
                                  .int32(32, 0x7F800000);  // infinity
    INode* const light = recordNode(FltNodeKind::LightPoint, point);
    ASSERT_TRUE(edit(light, FltNodeKind::LightPoint, "FltLtPtSizeThreshold", "2"));
    EXPECT_EQ(chunkBytes(light, kRecordChunk), RecordBytes(point).float32(92, 2));
}

TEST_F(AttrStore, BitsAndRangesOfOneWordAreIndependent) {
    const struct {
        FltNodeKind kind;
        RecordBytes record;
        std::size_t flags;
        std::uint32_t before;
        const char* key;
        const char* text;
        std::uint32_t after;
    } cases[] = {
        {FltNodeKind::Face, RecordBytes(5, 80), 44, 0xFFFFFFFF, "FltHidden", "否", 0xFBFFFFFF},
        {FltNodeKind::Face, RecordBytes(5, 80), 44, 0, "FltHidden", "是", 0x04000000},
        {FltNodeKind::Face, RecordBytes(5, 80), 44, 0x84000001, "FltFootprint", "是", 0x8C000001},
        {FltNodeKind::Lod, RecordBytes(73, 72), 36, 0x5FFFFFFF, "FltLodFrozen", "是", 0x7FFFFFFF},
        {FltNodeKind::LightPoint, RecordBytes(111, 160), 140, 0x02000010, "FltLtPtRandomize",
         "从不", 0x00000010},
        {FltNodeKind::LightPoint, RecordBytes(111, 160), 140, 0xFFFFFFFF, "FltLtPtRandomize", "低",
         0xF9FFFFFF},
        {FltNodeKind::LightPoint, RecordBytes(111, 160), 140, 0xFFFFFFFF, "FltLtPtQuality", "中",
         0xFFFBFFFF},
        {FltNodeKind::LightPoint, RecordBytes(111, 160), 140, 0, "FltLtPtQuality", "高",
         0x00040000},
    };
    for (const auto& c : cases) {
        INode* const node = recordNode(c.kind, RecordBytes(c.record).int32(c.flags, c.before));
        ASSERT_TRUE(edit(node, c.kind, c.key, c.text)) << c.key;
        EXPECT_EQ(chunkBytes(node, kRecordChunk), RecordBytes(c.record).int32(c.flags, c.after))
            << c.key << " " << std::hex << c.before;
    }
}

TEST_F(AttrStore, AValueWithoutAnEntryShowsNothingAndStays) {
    INode* const face =
        recordNode(FltNodeKind::Face, RecordBytes(5, 80).int8(18, 7).int8(48, 0xFF));
    ASSERT_NE(fltAttrLoad(face, 1580), nullptr);
    EXPECT_EQ(value(FltNodeKind::Face, "FltDrawType"), "");
    EXPECT_EQ(value(FltNodeKind::Face, "FltLightMode"), "");
    ASSERT_TRUE(edit(face, FltNodeKind::Face, "FltSmc", "1"));
    ASSERT_TRUE(edit(face, FltNodeKind::Face, "FltDrawType", "no such choice"));
    EXPECT_EQ(chunkBytes(face, kRecordChunk),
              RecordBytes(5, 80).int8(18, 7).int16(32, 1).int8(48, 0xFF));
}

TEST_F(AttrStore, ABooleanByteThatIsNotOneStays) {
    INode* const clip = recordNode(FltNodeKind::ClipRegion, RecordBytes(98, 280).int8(18, 0xFE));
    ASSERT_TRUE(edit(clip, FltNodeKind::ClipRegion, "FltClipBottom", "是"));
    EXPECT_EQ(chunkBytes(clip, kRecordChunk), RecordBytes(98, 280).int8(18, 0xFE));
    ASSERT_TRUE(edit(clip, FltNodeKind::ClipRegion, "FltClipBottom", "否"));
    EXPECT_EQ(chunkBytes(clip, kRecordChunk), RecordBytes(98, 280));
}

TEST_F(AttrStore, NumbersAreParsedAndCutToTheirField) {
    INode* const group = recordNode(FltNodeKind::Group, RecordBytes(2, 32));
    ASSERT_TRUE(edit(group, FltNodeKind::Group, "FltGrpSignificance", " 12abc"));
    ASSERT_TRUE(edit(group, FltNodeKind::Group, "FltGrpSpecial1", "65535"));
    ASSERT_TRUE(edit(group, FltNodeKind::Group, "FltGrpLayer", "257"));
    EXPECT_EQ(chunkBytes(group, kRecordChunk),
              RecordBytes(2, 32).int16(20, 0xFFFF).int16(24, 12).int8(26, 1));
    ASSERT_NE(fltAttrLoad(group, 1580), nullptr);
    EXPECT_EQ(value(FltNodeKind::Group, "FltGrpSpecial1"), "-1");
    ASSERT_TRUE(edit(group, FltNodeKind::Group, "FltGrpSignificance", "abc"));
    EXPECT_EQ(chunkBytes(group, kRecordChunk), RecordBytes(2, 32).int16(20, 0xFFFF).int8(26, 1));
}

TEST_F(AttrStore, ASwitchThatCouldNotBeReadBackIsNotStored) {
    const Bytes record = RecordBytes(96, 32).int32(20, 1).int32(24, 1).int32(28, 0xF0);
    INode* const node = recordNode(FltNodeKind::Switch, record);
    EXPECT_FALSE(edit(node, FltNodeKind::Switch, "FltSwitchMaskWidth", "-1"));
    EXPECT_EQ(chunkBytes(node, kRecordChunk), record);
    EXPECT_TRUE(edit(node, FltNodeKind::Switch, "FltSwitchCurr", "3"));
    EXPECT_EQ(chunkBytes(node, kRecordChunk),
              RecordBytes(96, 32).int32(16, 3).int32(20, 1).int32(24, 1).int32(28, 0xF0));
}

TEST_F(AttrStore, TextIsCutAtItsFieldAndAtACharacter) {
    INode* const xref = recordNode(FltNodeKind::XRef, RecordBytes(63, 216));
    const std::string full(200, 'n');
    ASSERT_TRUE(edit(xref, FltNodeKind::XRef, "FltXRefFilename", (full + "more").c_str()));
    EXPECT_EQ(chunkBytes(xref, kRecordChunk), RecordBytes(63, 216).text(4, full));
    ASSERT_NE(fltAttrLoad(xref, 1580), nullptr);
    EXPECT_EQ(value(FltNodeKind::XRef, "FltXRefFilename"), full);

    const std::string almost(199, 'n');
    ASSERT_TRUE(edit(xref, FltNodeKind::XRef, "FltXRefFilename", (almost + "塔").c_str()));
    EXPECT_EQ(chunkBytes(xref, kRecordChunk), RecordBytes(63, 216).text(4, almost));
}

// The constant attenuation is a 32-bit float declared as a double. It is shown as the float, but
// stored as the lower half of the double of its text whenever the whole record is stored. Its
// neighbour behind must come through unharmed.
TEST_F(AttrStore, TheConstantAttenuationIsStoredAsADoubleOverItsFloat) {
    const std::size_t kConstant = 148;
    const std::size_t kLinear = 152;
    INode* const light = recordNode(FltNodeKind::LightSource, RecordBytes(101, 64));
    const RecordBytes palette = RecordBytes(102, 240)
                                    .float32(kConstant, 0.1F)
                                    .float32(kLinear, 1.0F / 3)
                                    .float32(156, 0.7F);
    setChunk(light, kOptionsChunk, palette);

    FltAttrGroup* group = fltAttrLoad(light, 1580);
    ASSERT_NE(group, nullptr);
    FltAttrDesc& constant = group->descriptors[5];
    FltAttrDesc& linear = group->descriptors[6];
    EXPECT_STREQ(constant.value.text(), "0.1");
    EXPECT_STREQ(linear.value.text(), "0.333333");
    ASSERT_TRUE(fltAttrStore(light, *group));
    const auto lowerHalf = static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(0.1));
    ASSERT_EQ(lowerHalf, 0x9999999AU);
    EXPECT_EQ(chunkBytes(light, kOptionsChunk), RecordBytes(palette).int32(kConstant, lowerHalf));

    constant.value.setText("1");
    linear.value.setText("0.25");
    ASSERT_TRUE(fltAttrStore(light, *group));
    const Bytes stored = chunkBytes(light, kOptionsChunk);
    EXPECT_EQ(wordAt(stored, kConstant), 0U);
    EXPECT_EQ(stored, RecordBytes(palette).int32(kConstant, 0).float32(kLinear, 0.25F));
}

TEST_F(AttrStore, EditingAnotherRowLeavesTheConstantAttenuationAlone) {
    const std::size_t kCutoff = 136;
    const std::size_t kConstant = 148;
    INode* const light = kindNode(FltNodeKind::LightSource);
    FltAttrGroup& group = *fltAttrGroupFind(FltNodeKind::LightSource);
    const auto edit = [&](int row, const char* text) {
        return fltAttrEdit(light, 1580, group, group.descriptors[row], text);
    };
    ASSERT_TRUE(edit(3, "30"));
    Bytes palette = chunkBytes(light, kOptionsChunk);
    EXPECT_EQ(wordAt(palette, kCutoff), std::bit_cast<std::uint32_t>(30.0F));
    EXPECT_EQ(wordAt(palette, kConstant), std::bit_cast<std::uint32_t>(1.0F)) << "of a fresh light";

    ASSERT_TRUE(edit(5, "0.1"));
    palette = chunkBytes(light, kOptionsChunk);
    EXPECT_EQ(wordAt(palette, kConstant), 0x9999999AU) << "edited itself, it is stored as declared";
    ASSERT_TRUE(edit(3, "40"));
    EXPECT_EQ(wordAt(chunkBytes(light, kOptionsChunk), kConstant), 0x9999999AU);
}

TEST_F(AttrStore, ARowOfALoadedNodeIsStoredAlone) {
    const std::size_t kCutoff = 136;
    const std::size_t kConstant = 148;
    INode* const light = recordNode(FltNodeKind::LightSource, RecordBytes(101, 64));
    const RecordBytes palette = RecordBytes(102, 240).float32(kConstant, 0.1F);
    setChunk(light, kOptionsChunk, palette);
    FltAttrGroup* const group = fltAttrLoad(light, 1580);
    ASSERT_NE(group, nullptr);
    FltAttrDesc& cutoff = group->descriptors[3];
    ASSERT_TRUE(fltAttrStoreRow(light, *group, cutoff, "030.0"));
    EXPECT_EQ(chunkBytes(light, kOptionsChunk), RecordBytes(palette).float32(kCutoff, 30));
    EXPECT_STREQ(cutoff.value.text(), "30") << "as it would be loaded";

    // Another node in between, and the loaded one is of another kind now.
    INode* const plain = kindNode(FltNodeKind::Group);
    EXPECT_FALSE(fltAttrStoreRow(plain, *group, cutoff, "40"));
    EXPECT_FALSE(fltAttrStoreRow(nullptr, *group, cutoff, "40"));
    EXPECT_EQ(chunk(plain, kRecordChunk), nullptr);
    EXPECT_EQ(chunk(plain, kOptionsChunk), nullptr);
}

TEST_F(AttrStore, ARowStoredAloneDecidesAboutTheNext) {
    INode* const point = recordNode(FltNodeKind::LightPoint, RecordBytes(111, 160));
    FltAttrGroup* const group = fltAttrLoad(point, 1580);
    ASSERT_NE(group, nullptr);
    FltAttrDesc* const rows = group->descriptors;
    ASSERT_TRUE(fltAttrStoreRow(point, *group, rows[0], rows[0].choices.at(1)));
    EXPECT_EQ(rows[1].visible, 1U);
    ASSERT_TRUE(fltAttrStoreRow(point, *group, rows[0], "none of the choices"));
    EXPECT_STREQ(rows[0].value.text(), rows[0].choices.at(1)) << "the node kept its own";
}

TEST_F(AttrStore, AFiniteNumberNeverBecomesInfinite) {
    INode* const point = recordNode(FltNodeKind::LightPoint, RecordBytes(111, 160));
    ASSERT_TRUE(edit(point, FltNodeKind::LightPoint, "FltLtPtIntensity", "1e39"));
    ASSERT_TRUE(edit(point, FltNodeKind::LightPoint, "FltLtPtBackIntensity", "-1e999"));
    ASSERT_TRUE(edit(point, FltNodeKind::LightPoint, "FltLtPtRotationX", "1e300"));
    EXPECT_EQ(
        chunkBytes(point, kRecordChunk),
        RecordBytes(111, 160).int32(24, 0x7F7FFFFF).int32(28, 0xFF7FFFFF).int32(144, 0x7F7FFFFF));
    INode* const lod = recordNode(FltNodeKind::Lod, RecordBytes(73, 72));
    ASSERT_TRUE(edit(lod, FltNodeKind::Lod, "FltLodMin", "1e999"));
    EXPECT_EQ(chunkBytes(lod, kRecordChunk),
              RecordBytes(73, 72).float64(16, std::numeric_limits<double>::max()));
}

TEST_F(AttrStore, LightPointModeDecidesWhetherItsParameterCanBeEdited) {
    INode* const point = recordNode(FltNodeKind::LightPoint, RecordBytes(111, 160));
    FltAttrGroup* const group = fltAttrLoad(point, 1580);
    ASSERT_NE(group, nullptr);
    FltAttrDesc* const rows = group->descriptors;
    EXPECT_EQ(rows[0].controlling, 1U);
    EXPECT_EQ(rows[1].visible, 0U);
    rows[0].value.setText(rows[0].choices.at(1));
    rows[1].value.setText("-7");
    ASSERT_TRUE(fltAttrStore(point, *group));
    EXPECT_EQ(rows[1].visible, 1U);
    EXPECT_EQ(chunkBytes(point, kOptionsChunk),
              RecordBytes(111, 16).int32(8, 1).int32(12, 0x0000FFF9));

    setChunk(point, kOptionsChunk, RecordBytes(111, 16).int32(8, 2).int32(12, 0x00018005));
    ASSERT_EQ(fltAttrLoad(point, 1580), group);
    EXPECT_EQ(rows[1].visible, 0U);
    EXPECT_STREQ(rows[0].value.text(), "");
    EXPECT_STREQ(rows[1].value.text(), "-32763");
    ASSERT_TRUE(fltAttrStore(point, *group));
    EXPECT_EQ(chunkBytes(point, kOptionsChunk),
              RecordBytes(111, 16).int32(8, 2).int32(12, 0x00018005));
}

}  // namespace
