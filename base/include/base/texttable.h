// Tables of texts for users, in both languages. Each stands in a file of rows, `texts.inc`:
//
//     TEXT_ROW(kCannotRead, 2001, "无法读取 {0}", "cannot read {0}")
//
// A row has the text's name, its number, and the Chinese and the English text, in UTF-8. The
// resource compiler reads the file too (see `tessera_texts` in cmake/Tessera.cmake), so a text has
// no quotation mark `"`. `fillText` puts values where `{0}` and the like stand.
#pragma once

#include <base/language.h>
#include <base/texts.h>

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#ifdef _WIN32
#include <base/resources.h>
#include <base/utf16.h>
#endif

namespace base {

struct TextRow {
    unsigned id;
    const char* chinese;
    const char* english;
};

/// The text of `rows` with the number `id`; empty when there is none.
std::string compiledText(std::span<const TextRow> rows, unsigned id, Language language);

/// The text with the number `id`, in UTF-8; empty when there is none. On Windows it comes from the
/// string tables of the module file that the caller is part of, and the rows, which need not even
/// be in that file, only say what is in them; elsewhere it comes from the rows.
inline std::string tableText([[maybe_unused]] std::span<const TextRow> rows, unsigned id,
                             Language language) {
#ifdef _WIN32
    return toUtf8(findString(ownModule(), id, language));
#else
    return compiledText(rows, id, language);
#endif
}

/// The same in the language with that number, as a host gives it, and with `values` where it has
/// places for them (see `fillText`).
inline std::string filledText(std::span<const TextRow> rows, unsigned id, std::uint16_t language,
                              std::initializer_list<std::string_view> values = {}) {
    return fillText(tableText(rows, id, static_cast<Language>(language)), values);
}

}  // namespace base
