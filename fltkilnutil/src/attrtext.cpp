#include <fltkilnutil/attrtext.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <system_error>

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

/// The number at the start of `text` without what `from_chars` does not take: white space and a
/// plus sign.
std::string_view numberStart(std::string_view text) noexcept {
    const std::size_t start = text.find_first_not_of(kWhiteSpace);
    if (start == std::string_view::npos) return {};
    text.remove_prefix(start);
    if (text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') return {};
    }
    return text;
}

/// Whether the decimal number, without a sign, is less than 1: told by the power of ten of its
/// first digit that is not zero, however many digits stand before and behind.
bool isBelowOne(std::string_view number) noexcept {
    const std::size_t exponent = number.find_first_of("eE");
    const std::string_view digits = number.substr(0, exponent);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    const std::size_t leading = digits.find_first_of("123456789");
    if (leading == std::string_view::npos) return true;
    auto power = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(leading);
    if (leading < point) --power;
    if (exponent != std::string_view::npos) power += fltParseInteger(number.substr(exponent + 1));
    return power < 0;
}

}  // namespace

std::size_t fltFormatInteger(std::int32_t value, char (&text)[kFltNumberTextSize]) noexcept {
    char* const end = std::to_chars(text, text + kFltNumberTextSize - 1, value).ptr;
    *end = '\0';
    return static_cast<std::size_t>(end - text);
}

std::size_t fltFormatReal(double value, char (&text)[kFltNumberTextSize]) noexcept {
    constexpr int kPrecision = 6;
    char* const end = std::to_chars(text, text + kFltNumberTextSize - 1, value,
                                    std::chars_format::general, kPrecision)
                          .ptr;
    *end = '\0';
    return static_cast<std::size_t>(end - text);
}

std::int32_t fltParseInteger(std::string_view text) noexcept {
    text = numberStart(text);
    std::int32_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc::result_out_of_range) return value;
    using Limits = std::numeric_limits<std::int32_t>;
    return text.front() == '-' ? Limits::min() : Limits::max();
}

double fltParseReal(std::string_view text) noexcept {
    text = numberStart(text);
    const std::size_t first = !text.empty() && text.front() == '-' ? 1 : 0;
    if (first >= text.size() || !(isDigit(text[first]) || text[first] == '.')) return 0;
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc::result_out_of_range) return value;
    const std::string_view number(text.data() + first,
                                  static_cast<std::size_t>(result.ptr - text.data()) - first);
    const double magnitude = isBelowOne(number) ? 0 : std::numeric_limits<double>::max();
    return first == 1 ? -magnitude : magnitude;
}
