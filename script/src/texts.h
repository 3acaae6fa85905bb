// What the script library says of scenes and files, in the language that the host speaks. What it
// says of scripts themselves is English, as their language is.
#pragma once

#include <base/texts.h>
#include <kiln/language.h>

#include <initializer_list>
#include <string>
#include <string_view>

namespace script {

enum class TextId : unsigned {
#define TEXT_ROW(name, id, chinese, english) name = id,
#include "texts.inc"
#undef TEXT_ROW
};

/// The text in UTF-8, with `values` in the places that it has for them.
std::string textOf(TextId which, std::initializer_list<std::string_view> values = {});

/// A name or value between the quotation marks of the language.
inline std::string quotedText(std::string_view text) {
    return base::quotedText(text, static_cast<base::Language>(GetLanguage()));
}

}  // namespace script
