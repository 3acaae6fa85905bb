// What is said of references to other files, in the host's language.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace xref {

enum class TextId : unsigned {
#define TEXT_ROW(name, id, chinese, english) name = id,
#include "texts.inc"
#undef TEXT_ROW
};

std::string textOf(TextId which, std::initializer_list<std::string_view> values = {});

}  // namespace xref
