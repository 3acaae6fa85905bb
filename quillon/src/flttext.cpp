#include <base/text.h>
#include <quillon/flttext.h>

#include <algorithm>

void fltSetText(std::span<char> field, std::string_view text) noexcept {
    text = base::clipUtf8(text.substr(0, text.find('\0')), field.size());
    std::fill(std::ranges::copy(text, field.begin()).out, field.end(), '\0');
}

std::string_view fltText(std::span<const char> field) noexcept {
    const auto end = std::find(field.begin(), field.end(), '\0');
    return {field.data(), static_cast<std::size_t>(end - field.begin())};
}
