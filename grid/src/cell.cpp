#include <grid/cell.h>

#include <cstring>

namespace grid {

void Cell::SetText(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    if (text.empty()) {
        text_.reset();
        return;
    }
    auto copy = std::make_unique<char[]>(text.size() + 1);
    std::memcpy(copy.get(), text.data(), text.size());
    text_ = std::move(copy);
}

}  // namespace grid
