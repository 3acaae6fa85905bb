#include "support.h"

#include <quillon/fltbsearch.h>
#include <quillon/fltopcode.h>

#include <algorithm>

namespace {

TEST(OpcodeTest, NamesWhatIsKnown) {
    EXPECT_EQ(fltOpcodeTable().size(), 71U);
    const std::pair<int, const char*> cases[] = {
        {0, "FLT_END_OF_FILE"},
        {1, "FLT_HEADER"},
        {5, "FLT_FACE"},
        {14, "FLT_DOF"},
        {62, "FLT_INSTANCE_DEF"},
        {69, "FLT_VERTEX_W_NORMAL"},
        {70, "FLT_VERTEX_W_TEXTURE_AND_NORMAL"},
        {71, "FLT_VERTEX_W_TEXTURE"},
        {72, "FLT_VERTEX_LIST"},
        {101, "FLT_LIGHT_SRC"},
        {114, "FLT_COLORNAME_PALETTE"},
        {127, "FLT_ROAD_CONSTRUCTION"},
    };
    for (const auto& [opcode, name] : cases)
        EXPECT_STREQ(fltOpcodeName(static_cast<std::uint16_t>(opcode)), name) << opcode;
}

TEST(OpcodeTest, CallsEverythingElseUndefined) {
    const int gaps[] = {3,   12,  65,  75,  77,  99,  103, 104, 107,   110,
                        117, 118, 119, 120, 121, 124, 128, 140, 32768, 65535};
    for (const int opcode : gaps)
        EXPECT_STREQ(fltOpcodeName(static_cast<std::uint16_t>(opcode)), "UNDEFINED") << opcode;
}

TEST(OpcodeTest, KeepsItsFamilies) {
    const auto family = [](int opcode) {
        for (const FltOpcodeEntry& entry : fltOpcodeTable())
            if (entry.opcode == opcode) return entry.family;
        return FltOpcodeClass{-1};
    };
    EXPECT_EQ(family(1), FltOpcodeClass::kPalette) << "the header is a palette record";
    EXPECT_EQ(family(2), FltOpcodeClass::kPrimary);
    EXPECT_EQ(family(31), FltOpcodeClass::kAncillary);
    EXPECT_EQ(family(61), FltOpcodeClass::kControl) << "instances are control records";
}

std::int32_t compareInts(const void* list, std::int32_t index, const void* key) {
    return static_cast<const int*>(list)[index] - *static_cast<const int*>(key);
}

TEST(BsearchTest, FindsEveryElementAndEveryInsertionPoint) {
    for (std::int32_t count = 0; count <= 12; ++count) {
        std::vector<int> list;
        for (int i = 0; i < count; ++i) list.push_back(2 * i + 1);
        for (int key = 0; key <= 2 * count; ++key) {
            std::uint32_t index = 99;
            const std::int32_t found = fltBsearch(list.data(), count, &key, compareInts, &index);
            const auto expected = std::lower_bound(list.begin(), list.end(), key) - list.begin();
            EXPECT_EQ(found, key % 2) << key << " in " << count;
            EXPECT_EQ(index, expected) << key << " in " << count;
        }
    }
}

TEST(BsearchTest, RefusesMissingArguments) {
    const int key = 1;
    std::uint32_t index = 0;
    expectAssertion("fltbsearch", 38, [&] { fltBsearch(nullptr, 0, &key, compareInts, nullptr); });
    expectAssertion("fltbsearch", 45, [&] { fltBsearch(nullptr, 1, &key, compareInts, &index); });
}

}  // namespace
