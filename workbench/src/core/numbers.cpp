#include <workbench/numbers.h>

#include <charconv>
#include <cmath>
#include <cstdio>

namespace workbench {

std::optional<double> numberOf(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos) return std::nullopt;
    text = text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
    if (text.front() == '+') text.remove_prefix(1);
    double value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isAll = error == std::errc() && rest == text.data() + text.size();
    return isAll && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::string shortNumber(double value, int digits) {
    char text[32];
    std::snprintf(text, sizeof text, "%.*g", digits, value + 0.0);
    return text;
}

}  // namespace workbench
