#include "support.h"

#include <quillon/flttext.h>

#include <algorithm>
#include <tuple>

namespace {

TEST(TextTest, FillsFixedWidthFields) {
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"empty", "", std::string(8, '\0')},
        {"short", "g7", std::string("g7\0\0\0\0\0\0", 8)},
        {"full, no terminator", "building", "building"},
        {"cut", "buildings", "building"},
        {"up to a NUL", std::string("ab\0cd", 5), std::string("ab\0\0\0\0\0\0", 8)},
        {"two bytes that fit", "abcdef\u00FC", "abcdef\u00FC"},
        {"two bytes that do not", "abcdefg\u00FC", std::string("abcdefg\0", 8)},
        {"three bytes that do not", "abcdef\u8DD1", std::string("abcdef\0\0", 8)},
        {"four bytes that do not", "abcde\U0001F6E9", std::string("abcde\0\0\0", 8)},
        {"nothing but continuations", std::string(9, '\x80'), std::string(8, '\0')},
    };
    for (const auto& [what, text, expected] : cases) {
        char field[8];
        std::fill_n(field, 8, '#');
        fltSetText(field, text);
        EXPECT_EQ(std::string(field, 8), expected) << what;
        EXPECT_EQ(fltText(field), expected.substr(0, expected.find('\0'))) << what;
    }
}

}  // namespace
