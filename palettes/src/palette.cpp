#include <palettes/palette.h>

#include <base/text.h>
#include <base/texttable.h>
#include <kiln/language.h>

#include <algorithm>
#include <iterator>

namespace palettes {

namespace {

constexpr base::TextRow kTexts[] = {
#define TEXT_ROW(name, id, chinese, english) {id, chinese, english},
#include <palettes/texts.inc>
#undef TEXT_ROW
};

// In the order of the palettes.
constexpr const char* kNames[kPaletteCount] = {"color", "material",   "texture",  "mapping",
                                               "light", "appearance", "animation"};

}  // namespace

const char* nameOf(Palette palette) noexcept {
    return kNames[static_cast<std::size_t>(palette)];
}

std::optional<Palette> paletteOf(std::string_view name) noexcept {
    const auto* const found = std::ranges::find_if(
        kNames, [&](const char* known) { return base::sameTextIgnoringCase(known, name); });
    if (found == std::end(kNames)) return std::nullopt;
    return static_cast<Palette>(found - kNames);
}

std::string coreText(CoreText which, std::initializer_list<std::string_view> values) {
    return base::filledText(kTexts, static_cast<unsigned>(which), GetLanguage(), values);
}

Refusal::Refusal(CoreText which, std::initializer_list<std::string_view> values)
    : std::runtime_error(base::filledText(kTexts, static_cast<unsigned>(which),
                                          static_cast<std::uint16_t>(base::Language::kEnglish),
                                          values)),
      text_(coreText(which, values)) {}

}  // namespace palettes
