#include "texts.h"

#include <base/texts.h>
#include <base/texttable.h>
#include <kiln/language.h>

namespace checks {

namespace {

constexpr base::TextRow kTexts[] = {
#define TEXT_ROW(name, id, chinese, english) {id, chinese, english},
#include "texts.inc"
#undef TEXT_ROW
};

}  // namespace

std::string textOf(TextId which, std::initializer_list<std::string_view> values) {
    const auto language = static_cast<base::Language>(GetLanguage());
    return base::fillText(base::tableText(kTexts, static_cast<unsigned>(which), language), values);
}

}  // namespace checks
