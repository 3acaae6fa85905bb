#include <quillon/flttext.h>

#include <algorithm>

namespace {

bool continuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

void fltSetText(std::span<char> field, std::string_view text) noexcept {
    text = text.substr(0, text.find('\0'));
    std::size_t length = std::min(text.size(), field.size());
    if (length < text.size())
        while (length > 0 && continuesCharacter(text[length])) --length;
    std::fill(std::copy_n(text.begin(), length, field.begin()), field.end(), '\0');
}

std::string_view fltText(std::span<const char> field) noexcept {
    const auto end = std::find(field.begin(), field.end(), '\0');
    return {field.data(), static_cast<std::size_t>(end - field.begin())};
}
