#include <base/texttable.h>
#include <gtest/gtest.h>

namespace {

enum TextId : unsigned {
#define TEXT_ROW(name, id, chinese, english) name = id,
#include "texts.inc"
#undef TEXT_ROW
};

constexpr base::TextRow kTexts[] = {
#define TEXT_ROW(name, id, chinese, english) {id, chinese, english},
#include "texts.inc"
#undef TEXT_ROW
};

using enum base::Language;

}  // namespace

TEST(TextTable, HasEachTextInBothLanguages) {
    EXPECT_EQ(base::tableText(kTexts, kCannotRead, kEnglish), "cannot read {0}: {1}");
    EXPECT_EQ(base::tableText(kTexts, kCannotRead, kChinese), "无法读取 {0}：{1}");
    EXPECT_EQ(base::tableText(kTexts, kFaces, kEnglish), "{0} faces\n");
    EXPECT_EQ(base::tableText(kTexts, kFaces, kChinese), "{0} 个面\n");
    EXPECT_EQ(base::tableText(kTexts, 41, kEnglish), "");
}
