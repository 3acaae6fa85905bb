#include "../support/spokenlanguage.h"
#include "attrscene.h"

#include <fltkilnutil/captions.h>
#include <fltkilnutil/kilnflt.h>
#include <quillon/fltclipregion.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

namespace {

using AttrTable = AttrScene;

std::vector<FltAttrGroup*> allGroups() {
    std::vector<FltAttrGroup*> groups;
    for (FltAttrGroup* const* group = fltAttrGroups(); *group != nullptr; ++group)
        groups.push_back(*group);
    return groups;
}

TEST_F(AttrTable, GroupsComeInTheirOrderOfLookup) {
    std::vector<int> kinds;
    for (const FltAttrGroup* group : allGroups()) kinds.push_back(static_cast<int>(group->kind));
    EXPECT_THAT(kinds, testing::ElementsAre(55, 98, 14, 5, 2, 1, 111, 101, 73, 4, 96, 63, 61, 62));
    EXPECT_EQ(fltAttrGroupFind(static_cast<FltNodeKind>(0)), nullptr);
    EXPECT_EQ(fltAttrGroupFind(static_cast<FltNodeKind>(102)), nullptr);
}

TEST_F(AttrTable, EveryRowHasItsOwnCaptionAndChoicesToPickFrom) {
    for (const FltAttrGroup* group : allGroups()) {
        EXPECT_STRNE(group->caption, "");
        std::set<std::string_view> captions;
        for (const FltAttrDesc* row = group->descriptors; !row->isTerminator(); ++row) {
            EXPECT_STRNE(row->caption, "") << row->key;
            EXPECT_TRUE(captions.insert(row->caption).second) << row->caption;
            EXPECT_EQ(row->choices.empty(), row->type != FltAttrType::Enumeration) << row->caption;
            // A choice is stored by its text, so two of the same text could not be told apart.
            const std::set<std::string_view> texts(row->choices.begin(), row->choices.end());
            EXPECT_EQ(texts.size(), row->choices.size()) << row->caption;
            EXPECT_EQ(texts.count(""), 0U) << row->caption;
        }
    }
}

TEST_F(AttrTable, ChoicesKeepTheOrderThatUsersKnow) {
    using testing::ElementsAre;
    const auto choices = [](FltNodeKind kind, const char* key) {
        const auto& texts = row(kind, key).choices;
        return std::vector<std::string>(texts.begin(), texts.end());
    };
    EXPECT_THAT(choices(FltNodeKind::Header, "FltProjection"),
                ElementsAre("平面地球", "梯形投影", "圆形地球", "兰伯特投影", "UTM 投影",
                            "地心坐标", "大地坐标"));
    EXPECT_THAT(choices(FltNodeKind::LightPoint, "FltLtPtDirectonType"),
                ElementsAre("全向", "双向", "单向"));
    EXPECT_THAT(choices(FltNodeKind::Face, "FltTerrain"), ElementsAre("否", "是"));
    std::int32_t value = -1;
    const FltAttrEnum* const projections = row(FltNodeKind::Header, "FltProjection").enumeration;
    EXPECT_TRUE(fltAttrEnumValue(projections, "地心坐标", value));
    EXPECT_EQ(value, 6);
    EXPECT_FALSE(fltAttrEnumValue(projections, "地心", value));
    EXPECT_FALSE(fltAttrEnumValue(projections, "", value));
    EXPECT_EQ(value, 6);
}

TEST_F(AttrTable, RowsAreFoundByKeyWithinTheirKind) {
    EXPECT_STREQ(row(FltNodeKind::Lod, "FltLodMin").caption, "切入距离");
    EXPECT_NE(fltAttrFindRow(FltNodeKind::Face, "FltSmc"),
              fltAttrFindRow(FltNodeKind::LightPoint, "FltSmc"));
    EXPECT_EQ(fltAttrFindRow(FltNodeKind::Lod, "FltSmc"), nullptr);
    EXPECT_EQ(fltAttrFindRow(FltNodeKind::LightSource, ""), nullptr);
    EXPECT_EQ(fltAttrFindRow(static_cast<FltNodeKind>(7), "FltSmc"), nullptr);
}

TEST_F(AttrTable, FieldsAreReadAndWrittenByWidthAndMask) {
    struct Block : FltNodeOptions {
        void write(FltToken&) const override {}
        void read(FltToken&) override {}
        std::uint32_t word = 0;
        std::uint32_t neighbour = 0x55555555;
    };
    const FltAttrField field{
        [](void* block) -> void* {
            return &static_cast<Block*>(static_cast<FltNodeOptions*>(block))->word;
        },
        4};
    const FltAttrEnum choices[] = {{0, "a"}, {0x60, "b"}, {0, nullptr}};
    using enum FltAttrWidth;
    const struct {
        FltAttrWidth width;
        std::uint32_t mask;
        FltAttrType type;
        const FltAttrEnum* enumeration;
        std::uint32_t before;
        std::uint32_t read;
        std::uint32_t written;
        std::uint32_t after;
    } cases[] = {
        {Int32, 0, FltAttrType::Integer, nullptr, 0x80000001, 0x80000001, 7, 7},
        {Int32, 0xF0, FltAttrType::Integer, nullptr, 0xFFFFFF2F, 1, 0x30, 0xFFFFFF3F},
        {Int32, 0xF0, FltAttrType::Enumeration, choices, 0xFFFFFF6F, 0x60, 0, 0xFFFFFF0F},
        {Int32, 0x80, FltAttrType::Boolean, nullptr, 0xFFFFFF7F, 0, 5, 0xFFFFFFFF},
        {Word32, 0x80, FltAttrType::Integer, nullptr, 0xFF, 0xFF, 0x80, 0xFF},
        {Bool32, 0, FltAttrType::Integer, nullptr, 0xFF0000FF, 0xFF0000FF, 3, 3},
        {Bool32, 0x80000000, FltAttrType::Boolean, nullptr, 0x80000001, 1, 0, 1},
        {Int16, 0, FltAttrType::Integer, nullptr, 0x1234FFFF, 0xFFFFFFFF, 0x10002, 0x12340002},
        {Int16, 0xFF, FltAttrType::Integer, nullptr, 0x12348001, 1, 2, 0x12348002},
        {Uint16, 0, FltAttrType::Integer, nullptr, 0x1234FFFF, 0xFFFF, 1, 0x12340001},
        {Int8, 0, FltAttrType::Integer, nullptr, 0x123456FF, 0xFFFFFFFF, 0x101, 0x12345601},
        {Uint8, 0, FltAttrType::Integer, nullptr, 0x123456FF, 0xFF, 1, 0x12345601},
        {Uint8, 0x0F, FltAttrType::Integer, nullptr, 0x123456F1, 1, 2, 0x123456F2},
        {Float32, 0, FltAttrType::Float, nullptr, 0x3F800000, 0, 9, 0x3F800000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "width " << static_cast<int>(c.width) << " mask "
                                        << std::hex << c.mask << " before " << c.before);
        const FltAttrDesc desc("caption", FltAttrTarget::Options, "key", c.type, "0", field,
                               c.width, c.mask, c.enumeration, false);
        Block block;
        block.word = c.before;
        EXPECT_EQ(fltAttrGetField(block, desc), c.read);
        fltAttrSetField(block, desc, c.written);
        EXPECT_EQ(block.word, c.after);
        EXPECT_EQ(block.neighbour, 0x55555555U);
        FltAttrGroup* const group = fltAttrGroupFind(FltNodeKind::Group);
        EXPECT_EQ(fltAttrGetField(*group->record, desc), 0U) << "a block of the other target";
    }
}

// The captions are shown by the grid on one line; a missing id would cut off all behind it.
TEST_F(AttrTable, CaptionsRunFrom101To411WithoutAGap) {
    const fltkilnutil::CaptionReader captions = fltkilnutil::openCaptionLibrary();
    ASSERT_TRUE(captions);
    using enum base::Language;
    std::string text;
    for (const base::Language language : {kChinese, kEnglish}) {
        for (std::uint32_t id = 101; id <= 411; ++id) {
            text.clear();
            EXPECT_TRUE(captions(language, id, text)) << id;
            EXPECT_FALSE(text.empty()) << id;
            EXPECT_LE(text.size(), 256U) << id;
        }
        EXPECT_FALSE(captions(language, 100, text));
        EXPECT_FALSE(captions(language, 412, text));
    }
    ASSERT_TRUE(captions(kChinese, 114, text));
    EXPECT_EQ(text, "是");
    ASSERT_TRUE(captions(kChinese, 411, text));
    EXPECT_EQ(text, "实例参考");
    ASSERT_TRUE(captions(kEnglish, 363, text));
    EXPECT_EQ(text, "Degree of Freedom");
}

// Whoever holds on to a row, its caption or a choice keeps it: the texts change in place.
TEST_F(AttrTable, FollowsTheHostsLanguage) {
    const FltAttrGroup* const lod = fltAttrGroupFind(FltNodeKind::Lod);
    const FltAttrDesc& in = row(FltNodeKind::Lod, "FltLodMin");
    const char* const yes = row(FltNodeKind::Face, "FltTerrain").choices[1];
    EXPECT_STREQ(in.caption, "切入距离");
    {
        const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
        EXPECT_EQ(fltAttrGroupFind(FltNodeKind::Lod), lod);
        EXPECT_STREQ(lod->caption, "Level of Detail");
        EXPECT_STREQ(in.caption, "Switch-in distance");
        EXPECT_STREQ(yes, "Yes");
        EXPECT_STREQ(row(FltNodeKind::Group, "FltGrpRelPriority").caption, "Relative priority");
        for (const FltAttrGroup* group : allGroups())
            for (const FltAttrDesc* any = group->descriptors; !any->isTerminator(); ++any)
                EXPECT_TRUE(std::ranges::all_of(std::string_view(any->caption), [](char c) {
                    return c >= ' ' && c <= '~';
                })) << any->caption;
    }
    fltAttrGroupFind(FltNodeKind::Lod);
    EXPECT_STREQ(in.caption, "切入距离");
    EXPECT_STREQ(yes, "是");
}

// Scripts and what was being typed when the language changed name choices in either one.
TEST_F(AttrTable, FindsAChoiceByItsTextInEitherLanguage) {
    for (const WORD language : {KILN_LANGUAGE_CHINESE, KILN_LANGUAGE_ENGLISH}) {
        const SpokenLanguage spoken(language);
        std::size_t choices = 0;
        for (const FltAttrGroup* group : allGroups())
            for (const FltAttrDesc* any = group->descriptors; !any->isTerminator(); ++any)
                for (const FltAttrEnum* entry = any->enumeration; entry && entry->text; ++entry) {
                    for (const char* text : {entry->text, entry->otherText}) {
                        std::int32_t value = entry->value + 1;
                        EXPECT_TRUE(fltAttrEnumValue(any->enumeration, text, value)) << text;
                        EXPECT_EQ(value, entry->value) << any->caption << ": " << text;
                    }
                    ++choices;
                }
        EXPECT_GT(choices, 150U);
    }
}

TEST_F(AttrTable, StoresAChoiceNamedInTheOtherLanguage) {
    INode* const region = kindNode(FltNodeKind::ClipRegion);
    EXPECT_TRUE(edit(region, FltNodeKind::ClipRegion, "FltClipTop", "Yes"));
    fltAttrLoad(region, 1580);
    EXPECT_EQ(value(FltNodeKind::ClipRegion, "FltClipTop"), "是");
    FltClipRegion record;
    ASSERT_TRUE(fltGetRecord(region, record));
    record.edgeClip2 = 7;
    ASSERT_TRUE(fltPutRecord(region, record));
    EXPECT_TRUE(edit(region, FltNodeKind::ClipRegion, "FltClipTop", "Yes"));
    ASSERT_TRUE(fltGetRecord(region, record));
    EXPECT_EQ(record.edgeClip2, 7) << "yes already: left alone, as it is by its own text";
}

}  // namespace
