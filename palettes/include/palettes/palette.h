// The palettes that a database has.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace palettes {

enum class Palette : std::uint8_t {
    kColor,
    kMaterial,
    kTexture,
    kMapping,  ///< of textures onto faces
    kLightSource,
    kAppearance,  ///< of light points
    kAnimation,   ///< of light points
};
inline constexpr std::size_t kPaletteCount = 7;

/// One of something for each palette.
template <typename T>
class ForEachPalette {
public:
    T& operator[](Palette palette) noexcept { return all_[static_cast<std::size_t>(palette)]; }
    const T& operator[](Palette palette) const noexcept {
        return all_[static_cast<std::size_t>(palette)];
    }

private:
    std::array<T, kPaletteCount> all_{};
};

/// As scripts name it: "color", "material", "texture", "mapping", "light", "appearance" or
/// "animation".
const char* nameOf(Palette palette) noexcept;
std::optional<Palette> paletteOf(std::string_view name) noexcept;

/// The texts of the palettes.
enum class CoreText : unsigned {
#define TEXT_ROW(name, id, chinese, english) name = id,
#include <palettes/texts.inc>
#undef TEXT_ROW
};

/// The text in the host's language, with `values` in the places that it has for them.
std::string coreText(CoreText which, std::initializer_list<std::string_view> values = {});

/// Why an edit is not made. Nothing is changed then. Scripts are told in English, as of all that
/// goes wrong in them.
class Refusal : public std::runtime_error {
public:
    explicit Refusal(CoreText which, std::initializer_list<std::string_view> values = {});

    /// In the host's language.
    const std::string& text() const noexcept { return text_; }

private:
    std::string text_;
};

}  // namespace palettes
