// Texts with places for values.
#pragma once

#include <base/language.h>

#include <initializer_list>
#include <string>
#include <string_view>

namespace base {

/// `text` with "{0}" replaced by the first of `values`, "{1}" by the second and so on. What names
/// no value stays as it is, and so does what a value holds. Throws std::bad_alloc.
std::string fillText(std::string_view text, std::initializer_list<std::string_view> values);

/// A name or value between the quotation marks of a language, which texts of a table cannot hold
/// themselves in English.
std::string quotedText(std::string_view text, Language language);

}  // namespace base
