// The classes of the entries: what the palettes have in common, by the names that each gives it.
#pragma once

#include <palettes/palette.h>

#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightsourcepalette.h>
#include <quillon/fltmaterial.h>
#include <quillon/flttexture.h>

#include <cstdint>
#include <type_traits>
#include <utility>

namespace palettes {

/// The greatest index that nodes can name, and the fields: the index, its name, and the last one
/// that every entry has.
template <Palette palette>
struct EntryClass;

template <>
struct EntryClass<Palette::kMaterial> {
    using Record = FltMaterial;
    static constexpr std::int32_t kMost = 0x7FFF;
    static constexpr auto kIndex = &FltMaterial::index;
    static constexpr auto kName = &FltMaterial::name;
    static constexpr auto kLast = &FltMaterial::alpha;
};
template <>
struct EntryClass<Palette::kTexture> {
    using Record = FltTexture;
    static constexpr std::int32_t kMost = 0x7FFF;
    static constexpr auto kIndex = &FltTexture::index;
    static constexpr auto kName = &FltTexture::fileName;
    static constexpr auto kLast = &FltTexture::paletteY;
};
template <>
struct EntryClass<Palette::kMapping> {
    using Record = FltTextureMapping;
    static constexpr std::int32_t kMost = 0x7FFF;
    static constexpr auto kIndex = &FltTextureMapping::index;
    static constexpr auto kName = &FltTextureMapping::name;
    static constexpr auto kLast = &FltTextureMapping::matrix;
};
template <>
struct EntryClass<Palette::kLightSource> {
    using Record = FltLightSourcePalette;
    static constexpr std::int32_t kMost = 0x7FFFFFFF;
    static constexpr auto kIndex = &FltLightSourcePalette::paletteIndex;
    static constexpr auto kName = &FltLightSourcePalette::name;
    static constexpr auto kLast = &FltLightSourcePalette::activeDuringModeling;
};
template <>
struct EntryClass<Palette::kAppearance> {
    using Record = FltLightPointAppearance;
    static constexpr std::int32_t kMost = 0x7FFFFFFF;
    static constexpr auto kIndex = &FltLightPointAppearance::index;
    static constexpr auto kName = &FltLightPointAppearance::name;
    static constexpr auto kLast = &FltLightPointAppearance::lodScale;
};
template <>
struct EntryClass<Palette::kAnimation> {
    using Record = FltLightPointAnimation;
    static constexpr std::int32_t kMost = 0x7FFFFFFF;
    static constexpr auto kIndex = &FltLightPointAnimation::index;
    static constexpr auto kName = &FltLightPointAnimation::name;
    static constexpr auto kLast = &FltLightPointAnimation::stepCount;
};

/// Calls `visit` with the `EntryClass` of a palette, which is not that of the colors.
template <typename Visit>
decltype(auto) withClass(Palette palette, Visit&& visit) {
    switch (palette) {
        case Palette::kTexture:
            return visit(EntryClass<Palette::kTexture>());
        case Palette::kMapping:
            return visit(EntryClass<Palette::kMapping>());
        case Palette::kLightSource:
            return visit(EntryClass<Palette::kLightSource>());
        case Palette::kAppearance:
            return visit(EntryClass<Palette::kAppearance>());
        case Palette::kAnimation:
            return visit(EntryClass<Palette::kAnimation>());
        default:
            return visit(EntryClass<Palette::kMaterial>());
    }
}

}  // namespace palettes
