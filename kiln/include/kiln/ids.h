// Identifiers of classes and interfaces.
#pragma once

#include <kiln/platform.h>

#include <compare>
#include <cstddef>
#include <functional>

/// The kind of plug-in class: which slot of the host it plugs into.
using SClass_ID = DWORD;

/// The identity of one class: two words that its author chose. (0, 0) is no class.
class Class_ID {
public:
    constexpr Class_ID() noexcept = default;
    constexpr Class_ID(DWORD a, DWORD b) noexcept : a_(a), b_(b) {}

    constexpr DWORD PartA() const noexcept { return a_; }
    constexpr DWORD PartB() const noexcept { return b_; }

    constexpr auto operator<=>(const Class_ID&) const noexcept = default;

private:
    DWORD a_ = 0;
    DWORD b_ = 0;
};

/// The identity of one published interface. A class and an interface may share their two words;
/// the types keep them apart.
class Interface_ID {
public:
    constexpr Interface_ID() noexcept = default;
    constexpr Interface_ID(DWORD a, DWORD b) noexcept : a_(a), b_(b) {}

    constexpr DWORD PartA() const noexcept { return a_; }
    constexpr DWORD PartB() const noexcept { return b_; }

    constexpr auto operator<=>(const Interface_ID&) const noexcept = default;

private:
    DWORD a_ = 0;
    DWORD b_ = 0;
};

// Super classes.
inline constexpr SClass_ID NODE_CLASS_ID = 0x1;
inline constexpr SClass_ID GEOMOBJECT_CLASS_ID = 0x10;
inline constexpr SClass_ID LIGHT_CLASS_ID = 0x30;
inline constexpr SClass_ID SHAPE_CLASS_ID = 0x40;
inline constexpr SClass_ID HELPER_CLASS_ID = 0x50;
inline constexpr SClass_ID SCENE_IMPORT_CLASS_ID = 0xA10;
inline constexpr SClass_ID SCENE_EXPORT_CLASS_ID = 0xA20;
inline constexpr SClass_ID TEXMAP_CLASS_ID = 0xC10;
inline constexpr SClass_ID UTILITY_CLASS_ID = 0x1020;
inline constexpr SClass_ID CUST_ATTRIB_CLASS_ID = 0x1160;

// Classes that the host itself provides.
inline constexpr Class_ID TRIOBJ_CLASS_ID{9, 0};            ///< `TriObject`
inline constexpr Class_ID BOXOBJ_CLASS_ID{0x10, 0};         ///< `BoxObject`
inline constexpr Class_ID SPLINESHAPE_CLASS_ID{0x0A, 0};    ///< `SplineShape`
inline constexpr Class_ID DUMMY_CLASS_ID{0x120, 0};         ///< `DummyObject`
inline constexpr Class_ID OMNI_LIGHT_CLASS_ID{0x1011, 0};   ///< `GenLight`, omni
inline constexpr Class_ID SPOT_LIGHT_CLASS_ID{0x1012, 0};   ///< `GenLight`, target spot
inline constexpr Class_ID DIR_LIGHT_CLASS_ID{0x1013, 0};    ///< `GenLight`, directional
inline constexpr Class_ID FSPOT_LIGHT_CLASS_ID{0x1014, 0};  ///< `GenLight`, free spot
inline constexpr Class_ID BMTEX_CLASS_ID{0x240, 0};         ///< `BitmapTex`

template <>
struct std::hash<Class_ID> {
    std::size_t operator()(const Class_ID& id) const noexcept {
        return std::hash<std::uint64_t>{}((std::uint64_t{id.PartA()} << 32) | id.PartB());
    }
};
