// What the workbench says to its user, in the language that the host speaks.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace workbench {

enum class TextId : unsigned {
#define TEXT_ROW(name, id, chinese, english) name = id,
#include "texts.inc"
#undef TEXT_ROW
};

/// The text in UTF-8, with `values` in the places that it has for them.
std::string textOf(TextId which, std::initializer_list<std::string_view> values = {});

}  // namespace workbench
