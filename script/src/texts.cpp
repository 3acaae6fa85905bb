#include "texts.h"

namespace script {

namespace {

constexpr base::TextRow kTexts[] = {
#define TEXT_ROW(name, id, chinese, english) {id, chinese, english},
#include "texts.inc"
#undef TEXT_ROW
};

}  // namespace

std::string textOf(TextId which, std::initializer_list<std::string_view> values) {
    return kiln::hostText(kTexts, which, values);
}

}  // namespace script
