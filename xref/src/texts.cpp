#include "texts.h"

#include <base/texttable.h>
#include <kiln/language.h>

namespace xref {

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

}  // namespace xref
