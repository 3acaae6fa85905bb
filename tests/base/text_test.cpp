#include <base/paths.h>
#include <base/text.h>
#include <gtest/gtest.h>

#ifdef _WIN32
#include <base/utf16.h>
#endif

TEST(Text, IsCutBetweenCharactersOnly) {
    EXPECT_EQ(base::clipUtf8("层次", 6), "层次");
    EXPECT_EQ(base::clipUtf8("层次", 5), "层");
    EXPECT_EQ(base::clipUtf8("层次", 2), "");
    EXPECT_EQ(base::clipUtf8("abc", 2), "ab");
}

TEST(Text, ReplacesEachByteThatIsNoUtf8) {
    const std::string r = "\xEF\xBF\xBD";
    const struct {
        const char* name;
        std::string text;
        std::string valid;
    } cases[] = {
        {"plain", "wall 2", "wall 2"},
        {"of every length", "aé层\xF0\x9F\x8C\x8D", "aé层\xF0\x9F\x8C\x8D"},
        {"no lead", "a\x80z", "a" + r + "z"},
        {"cut by the end", "a\xE5\xB1", "a" + r + r},
        {"cut by another", "\xE5\xB1z", r + r + "z"},
        {"overlong in two, three and four bytes", "\xC0\x80\xE0\x9F\x80\xF0\x8F\x80\x80",
         r + r + r + r + r + r + r + r + r},
        {"surrogate, and what stands beside them", "\xED\xA0\x80\xED\x9F\xBF",
         r + r + r + "\xED\x9F\xBF"},
        {"beyond the last, and the last", "\xF4\x90\x80\x80\xF4\x8F\xBF\xBF",
         r + r + r + r + "\xF4\x8F\xBF\xBF"},
    };
    for (const auto& test : cases) EXPECT_EQ(base::validUtf8(test.text), test.valid) << test.name;
}

TEST(Text, ComparesOnlyLettersWithoutCase) {
    EXPECT_TRUE(base::sameTextIgnoringCase("FLT层", "flt层"));
    EXPECT_FALSE(base::sameTextIgnoringCase("flt", "flt "));
    EXPECT_FALSE(base::sameTextIgnoringCase("[", "{")) << "32 apart, as letters are";
    EXPECT_EQ(base::smallLetters("A[Z层É"), "a[z层É");
}

TEST(Text, PathsComeBackAsTheyWere) {
    for (const char* const path : {"", "a/b.flt", "水 层/塔.flt"})
        EXPECT_EQ(base::genericTextOf(base::pathFrom(path)), path);
    EXPECT_NO_THROW(base::pathFrom("cut \xE5\xB1"));
}

#ifdef _WIN32
TEST(Text, KeepsEveryCharacterOnTheWayToThePlatformAndBack) {
    const std::string text = "Aviary 层次 \xF0\x9F\x8C\x8D end";
    EXPECT_EQ(base::toWide("层"), L"\x5C42");
    EXPECT_EQ(base::toWide("\xF0\x9F\x8C\x8D"), L"\xD83C\xDF0D");
    EXPECT_EQ(base::toUtf8(base::toWide(text)), text);
    const std::string_view withNul("a\0b", 3);
    EXPECT_EQ(base::toUtf8(base::toWide(withNul)), withNul);
    EXPECT_EQ(base::toWide(""), L"");
}

TEST(Text, GivesThePlatformAReplacementForWhatIsNoText) {
    EXPECT_EQ(base::toWide("a\xFFz"), L"a\xFFFDz");
    // A name cut within a character, as old files hold them.
    EXPECT_EQ(base::toWide("a\xE5\xB1").substr(0, 2), L"a\xFFFD");
    EXPECT_EQ(base::toUtf8(std::wstring(L"a\xD800z")), "a\xEF\xBF\xBDz");
}
#endif
