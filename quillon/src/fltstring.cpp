#include <quillon/fltstring.h>

#include <algorithm>
#include <cstring>
#include <limits>

FltString::FltString() {
    setSize(1);
}

FltString::FltString(const char* text) {
    setText(text);
}

void FltString::setSize(std::int32_t n) {
    resize(std::max(n, 1));
    *address(size() - 1, 1) = 0;
}

void FltString::setText(const char* text) {
    // Text too long for a size of 32 bits asks for the largest one, which is refused.
    constexpr std::size_t kLongest = std::numeric_limits<std::int32_t>::max() - 1;
    const auto length =
        static_cast<std::int32_t>(text == nullptr ? 0 : std::min(std::strlen(text), kLongest));
    setSize(length + 1);
    overwrite(0, length, text);
}
