// Texts for users in the host's language: see base/texttable.h.
#pragma once

#include <base/texts.h>
#include <base/texttable.h>
#include <kiln/language.h>

namespace kiln {

inline base::Language hostLanguage() noexcept {
    return static_cast<base::Language>(GetLanguage());
}

/// The text of `rows` with the number `id`, in UTF-8, with `values` in the places that it has for
/// them. Throws std::bad_alloc.
template <typename Id>
std::string hostText(std::span<const base::TextRow> rows, Id id,
                     std::initializer_list<std::string_view> values = {}) {
    return base::fillText(base::tableText(rows, static_cast<unsigned>(id), hostLanguage()), values);
}

/// A name or value between the quotation marks of the language. Throws std::bad_alloc.
inline std::string quotedText(std::string_view text) {
    return base::quotedText(text, hostLanguage());
}

}  // namespace kiln
