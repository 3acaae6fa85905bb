#include <base/texts.h>
#include <base/texttable.h>

#include <algorithm>

namespace base {

std::string fillText(std::string_view text, std::initializer_list<std::string_view> values) {
    std::string filled;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isPlace = text[i] == '{' && i + 2 < text.size() && text[i + 2] == '}';
        const std::size_t index =
            isPlace ? static_cast<std::size_t>(static_cast<unsigned char>(text[i + 1])) - '0'
                    : values.size();
        if (index < values.size()) {
            filled += values.begin()[index];
            i += 2;
        } else {
            filled += text[i];
        }
    }
    return filled;
}

std::string quotedText(std::string_view text, Language language) {
    return fillText(language == Language::kEnglish ? "\"{0}\"" : "“{0}”", {text});
}

std::string compiledText(std::span<const TextRow> rows, unsigned id, Language language) {
    const auto found = std::ranges::find(rows, id, &TextRow::id);
    if (found == rows.end()) return {};
    return language == Language::kEnglish ? found->english : found->chinese;
}

}  // namespace base
