// What import and export tell the user, in the host's language.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

namespace interchange {

/// The texts of texts.inc.
enum class TextId : unsigned {
#define TEXT_ROW(name, id, chinese, english) name = id,
#include "texts.inc"
#undef TEXT_ROW
};

/// A text in the host's language of now, with `values` where it has places for them.
std::string text(TextId id, std::initializer_list<std::string_view> values = {});

/// A text about a number of things: of one by `one`, else by the text behind that. `more` goes into
/// its second place.
std::string counted(std::size_t count, TextId one, std::string_view more = {});

/// Appends to a list in one sentence.
void enumerate(std::string& list, const std::string& item);

}  // namespace interchange
