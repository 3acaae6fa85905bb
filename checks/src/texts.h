// Texts of the rules' library beside the rules' own sentences.
#pragma once

#include <base/language.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace checks {

enum class TextNumber : unsigned {
#define TEXT_ROW(name, id, chinese, english) name = id,
#include "texts.inc"
#undef TEXT_ROW
};

std::string textOf(TextNumber text, base::Language language,
                   std::initializer_list<std::string_view> values = {});

/// What a record is called in a sentence, in English; its name where there is no word for it.
std::string recordWord(std::uint16_t opcode);

/// A word that findings hold in English, in `language`, with the numbers in it; itself where it is
/// none.
std::string wordOf(const std::string& english, base::Language language);

}  // namespace checks
