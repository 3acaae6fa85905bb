#include <framework/text.h>
#include <gtest/gtest.h>

TEST(Text, KeepsEveryCharacterOnTheWayToThePlatformAndBack) {
    const std::string text = "Aviary 层次 \xF0\x9F\x8C\x8D\0end";
    EXPECT_EQ(toWide("层"), L"\x5C42");
    EXPECT_EQ(toWide("\xF0\x9F\x8C\x8D"), L"\xD83C\xDF0D");
    EXPECT_EQ(toUtf8(toWide(text)), text);
    const std::string_view withNul("a\0b", 3);
    EXPECT_EQ(toUtf8(toWide(withNul)), withNul);
    EXPECT_EQ(toWide(""), L"");
}

TEST(Text, ReplacesWhatIsNoText) {
    EXPECT_EQ(toWide("a\xFFz"), L"a\xFFFDz");
    // A name cut within a character, as old files hold them.
    EXPECT_EQ(toWide("a\xE5\xB1").substr(0, 2), L"a\xFFFD");
    EXPECT_EQ(toUtf8(std::wstring(L"a\xD800z")), "a\xEF\xBF\xBDz");
}

TEST(Text, IsCutBetweenCharactersOnly) {
    EXPECT_EQ(clipUtf8("层次", 6), "层次");
    EXPECT_EQ(clipUtf8("层次", 5), "层");
    EXPECT_EQ(clipUtf8("层次", 2), "");
    EXPECT_EQ(clipUtf8("abc", 2), "ab");
}
