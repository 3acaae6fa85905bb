#include "texts.h"

#include <base/texts.h>
#include <base/texttable.h>
#include <kiln/language.h>

namespace kiln {

namespace {

constexpr base::TextRow kTexts[] = {
#define TEXT_ROW(name, id, chinese, english) {id, chinese, english},
#include "texts.inc"
#undef TEXT_ROW
};

}  // namespace

std::string textOf(TextId which, std::initializer_list<std::string_view> values) {
    return base::filledText(kTexts, static_cast<unsigned>(which), GetLanguage(), values);
}

std::string quotedText(std::string_view text) {
    return base::quotedText(text, static_cast<base::Language>(GetLanguage()));
}

}  // namespace kiln
