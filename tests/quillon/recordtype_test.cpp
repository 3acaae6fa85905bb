#include "support.h"

#include <quillon/fltrecordtype.h>

#include <algorithm>
#include <tuple>

namespace {

TEST(RecordTypeTest, SaysWhatEachRecordBelongsTo) {
    using enum FltRecordPlace;
    const std::tuple<std::uint16_t, const char*, FltRecordPlace, int> cases[] = {
        {1, "FLT_HEADER", kFile, 0},
        {5, "FLT_FACE", kNode, 0},
        {10, "FLT_PUSH_LEVEL", kLevel, 11},
        {11, "FLT_POP_LEVEL", kLevel, 0},
        {19, "FLT_PUSH_SUBFACE", kLevel, 20},
        {21, "FLT_PUSH_EXTENSION", kLevel, 22},
        {23, "FLT_CONTINUATION", kPart, 0},
        {31, "FLT_COMMENT", kPart, 0},
        {32, "FLT_COLOR_PALETTE", kFile, 0},
        {61, "FLT_INSTANCE_REF", kNode, 0},
        {62, "FLT_INSTANCE_DEF", kNode, 0},
        {69, "FLT_VERTEX_W_NORMAL", kFile, 0},
        {72, "FLT_VERTEX_LIST", kPart, 0},
        {84, "FLT_MESH", kNode, 0},
        {85, "FLT_LOCAL_VERTEX_POOL", kPart, 0},
        {122, "FLT_PUSH_ATTRIBUTE", kLevel, 123},
        {131, "FLT_LIGHT_POINT_SYSTEM", kNode, 0},
        {147, "FLT_EXTENDED_MATERIAL_REFLECTION_MAP", kFile, 0},
    };
    for (const auto& [opcode, name, place, closer] : cases) {
        const FltRecordType* const type = fltRecordType(opcode);
        ASSERT_NE(type, nullptr) << opcode;
        EXPECT_STREQ(type->name, name);
        EXPECT_EQ(type->place, place) << name;
        EXPECT_EQ(fltClosingOpcode(opcode), closer) << name;
        EXPECT_EQ(fltIsPop(opcode), place == kLevel && closer == 0) << name;
    }
    for (const int unknown : {3, 144, 155, 256, 65535}) {
        EXPECT_EQ(fltRecordType(static_cast<std::uint16_t>(unknown)), nullptr) << unknown;
        EXPECT_STREQ(fltRecordName(static_cast<std::uint16_t>(unknown)), "UNDEFINED");
    }
}

TEST(RecordTypeTest, EveryRowMakesARecordOfItsOwnOpcodeAndFamily) {
    std::size_t inScenes = 0;
    for (const FltRecordType& type : fltRecordTypes()) {
        SCOPED_TRACE(type.name);
        EXPECT_EQ(fltRecordType(type.opcode), &type) << "one row for each opcode";
        EXPECT_STREQ(fltOpcodeName(type.opcode), type.isNamedInScenes() ? type.name : "UNDEFINED");
        inScenes += type.isNamedInScenes() ? 1 : 0;
        if (type.create == nullptr) continue;
        const std::unique_ptr<FltRecord> record = type.create();
        EXPECT_EQ(record->opcode(), type.opcode);
        const bool isOfFamily[] = {dynamic_cast<FltControlRec*>(record.get()) != nullptr,
                                   dynamic_cast<FltPaletteRec*>(record.get()) != nullptr,
                                   dynamic_cast<FltPrimaryRec*>(record.get()) != nullptr,
                                   dynamic_cast<FltAncillaryRec*>(record.get()) != nullptr};
        EXPECT_TRUE(isOfFamily[static_cast<int>(type.family)]);
    }
    EXPECT_EQ(inScenes, fltOpcodeTable().size());
}

TEST(RecordTypeTest, FindsTheIdOfNodesThatHaveOne) {
    const std::pair<const char*, std::string_view> cases[] = {
        {"0002 0010 'group':8 01:4", {"group\0\0\0", 8}},
        {"0054 000F 'mesh':8 000000", {"mesh\0\0\0\0", 8}},
        {"0002 0007 'abc'", "abc"},
        {"0002 0004", ""},
        {"003F 000C 'file.flt':8", ""},
        {"003D 0008 0000 0001", ""},
        {"003E 0008 0000 0001", ""},
    };
    for (const auto& [words, id] : cases) {
        const Bytes bytes = hex(words);
        const auto found = fltIdOf(FltRecordView::at(bytes, 0));
        EXPECT_EQ(std::string(found.begin(), found.end()), id) << words;
    }
}

}  // namespace
