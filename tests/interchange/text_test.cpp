#include <gtest/gtest.h>
#include <interchange/textencoding.h>

#include <string>

namespace {

std::string textOf(std::string_view bytes) {
    return interchange::textOf({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

}  // namespace

TEST(Text, BecomesUtf8WhateverItWas) {
    using namespace std::string_view_literals;
    const struct {
        const char* name;
        std::string_view bytes;
        std::string_view text;
    } cases[] = {
        {"ends at its terminator", "tower\0garbage\xFF"sv, "tower"},
        {"blanks and controls", "two\x01\r\nlines \n\t\0"sv, "two\nlines"},
        {"UTF-8", "塔台\0"sv, "塔台"},
        {"UTF-8 cut by the field's end", "hangar\xE6\x9C"sv, "hangar"},
        {"GB 2312", "\xCB\xFE\xCC\xA8 A\0"sv, "塔台 A"},
        {"GB 2312 cut by the field's end", "\xCB\xFE\xCC\xA8\xBB"sv, "塔台"},
        {"Latin-1", "K\xF6ln\0"sv, "Köln"},
        {"Latin-1 where GB 2312 would need a pair", "caf\xE9\0"sv, "café"},
        {"overlong form is no UTF-8", "\xC0\x80 x\0"sv, "À x"},
        {"surrogate is no UTF-8", "\xED\xA0\x80 x\0"sv, "\xC3\xAD\xC2\xA0 x"},
    };
    for (const auto& test : cases) EXPECT_EQ(textOf(test.bytes), test.text) << test.name;
}
