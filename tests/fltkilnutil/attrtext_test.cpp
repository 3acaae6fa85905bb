#include <fltkilnutil/attrtext.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>

namespace {

std::string formatReal(double value) {
    char text[kFltNumberTextSize];
    return {text, fltFormatReal(value, text)};
}

TEST(AttrText, RealsReadAsThePrintfFamilyWritesThemOnEveryPlatform) {
    const struct {
        double value;
        const char* text;
    } cases[] = {
        {0, "0"},
        {-0.0, "-0"},
        {0.1, "0.1"},
        {45.123456789012, "45.1235"},
        {100000, "100000"},
        {1000000, "1e+06"},  // two exponent digits, where one platform's own printf has three
        {-1e8, "-1e+08"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {1e300, "1e+300"},
        {std::numeric_limits<double>::infinity(), "inf"},
        {-std::numeric_limits<double>::denorm_min(), "-4.94066e-324"},
    };
    for (const auto& c : cases) EXPECT_EQ(formatReal(c.value), c.text);
}

TEST(AttrText, IntegersAreTheLeadingDigits) {
    const struct {
        const char* text;
        std::int32_t value;
    } cases[] = {
        {"12abc", 12},
        {" \t-7", -7},
        {"+5", 5},
        {"+-5", 0},
        {"", 0},
        {"-", 0},
        {"abc", 0},
        {"0x10", 0},
        {"2147483647", 2147483647},
        {"99999999999", std::numeric_limits<std::int32_t>::max()},
        {"-99999999999", std::numeric_limits<std::int32_t>::min()},
    };
    for (const auto& c : cases) EXPECT_EQ(fltParseInteger(c.text), c.value) << c.text;
    EXPECT_EQ(fltParseInteger(std::string(400, '0') + "7"), 7);
}

TEST(AttrText, RealsAreTheLeadingDecimalNumber) {
    const struct {
        const char* text;
        double value;
    } cases[] = {
        {"2.50", 2.5},
        {" +.5m", 0.5},
        {"-.5", -0.5},
        {"1e3x", 1000},
        {"1e", 1},
        {"", 0},
        {" ", 0},
        {"-", 0},
        {"abc", 0},
        {"nan", 0},
        {"inf", 0},
        {"0x1p4", 0},
        {"1,5", 1},
        {"1e-999", 0},
        {"0e999", 0},
        {"1e999", std::numeric_limits<double>::max()},
        {"-1e999", std::numeric_limits<double>::lowest()},
        {"1e99999999999999999999", std::numeric_limits<double>::max()},
        {"1e-99999999999999999999", 0},
        {"45.123456789012", 45.123456789012},
    };
    for (const auto& c : cases) EXPECT_EQ(fltParseReal(c.text), c.value) << c.text;
    EXPECT_TRUE(std::signbit(fltParseReal("-0")));

    const std::string zeros(400, '0');
    const std::pair<std::string, double> longOnes[] = {
        {"1" + zeros, std::numeric_limits<double>::max()},
        {"-" + zeros + "1" + zeros, std::numeric_limits<double>::lowest()},
        {zeros + "1.5", 1.5},
        {"1" + zeros + "e-10", std::numeric_limits<double>::max()},
        {"1" + zeros + "e-400", 1},
        {"0." + zeros + "1", 0},
        {"." + zeros + "1e10", 0},
        {"0." + zeros + "1e401", 1},
        {"0." + zeros + "1e+800", std::numeric_limits<double>::max()},
        {zeros + "." + zeros, 0},
    };
    for (const auto& [text, value] : longOnes) EXPECT_EQ(fltParseReal(text), value) << text;
}

}  // namespace
