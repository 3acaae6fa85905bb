#include "texts.h"

#include <base/texttable.h>
#include <kiln/language.h>

namespace interchange {

namespace {

constexpr base::TextRow kTexts[] = {
#define TEXT_ROW(name, id, chinese, english) {id, chinese, english},
#include "texts.inc"
#undef TEXT_ROW
};

}  // namespace

std::string text(TextId id, std::initializer_list<std::string_view> values) {
    return base::filledText(kTexts, static_cast<unsigned>(id), GetLanguage(), values);
}

std::string counted(std::size_t count, TextId one, std::string_view more) {
    const auto number = static_cast<unsigned>(one) + (count == 1 ? 0 : 1);
    return text(static_cast<TextId>(number), {std::to_string(count), more});
}

void enumerate(std::string& list, const std::string& item) {
    list = list.empty() ? item : text(TextId::kAnd, {list, item});
}

}  // namespace interchange
