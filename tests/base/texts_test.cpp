#include <base/language.h>
#include <base/texts.h>
#include <gtest/gtest.h>

TEST(FillText, PutsEachValueWhereItsNumberStands) {
    EXPECT_EQ(base::fillText("{1} of {0}{1}", {"a", "层"}), "层 of a层");
    EXPECT_EQ(base::fillText("{2} {x} {} { {0", {"a", "b"}), "{2} {x} {} { {0");
    EXPECT_EQ(base::fillText("{0}", {"{0}{1}"}), "{0}{1}");
    EXPECT_EQ(base::fillText("", {"a"}), "");
}

TEST(QuotedText, HasTheMarksOfTheLanguage) {
    EXPECT_EQ(base::quotedText("a{0}", base::Language::kChinese), "“a{0}”");
    EXPECT_EQ(base::quotedText("a{0}", base::Language::kEnglish), "\"a{0}\"");
}

TEST(Language, HasACode) {
    EXPECT_EQ(base::languageOf("en"), base::Language::kEnglish);
    EXPECT_EQ(base::languageOf("zh"), base::Language::kChinese);
    EXPECT_FALSE(base::languageOf("EN"));
    EXPECT_FALSE(base::languageOf(""));
}
