#include <base/language.h>

namespace base {

const char* codeOf(Language language) noexcept {
    return language == Language::kEnglish ? "en" : "zh";
}

std::optional<Language> languageOf(std::string_view code) noexcept {
    for (const Language language : {Language::kChinese, Language::kEnglish})
        if (code == codeOf(language)) return language;
    return std::nullopt;
}

}  // namespace base
