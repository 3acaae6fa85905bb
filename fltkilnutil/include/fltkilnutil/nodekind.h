// The record kinds that a node of the scene can be.
#pragma once

#include <array>
#include <cstdint>

/// The kind of an OpenFlight node: the opcode of the record that it carries.
///
/// Any 16-bit opcode is a valid value, since a script may tag a node with a kind that has no name
/// here; such a node simply carries no record of ours.
enum class FltNodeKind : std::uint16_t {
    Header = 1,
    Group = 2,
    Object = 4,
    Face = 5,  ///< a mesh node of the host
    Dof = 14,
    Bsp = 55,
    InstanceRef = 61,
    InstanceDef = 62,
    XRef = 63,
    Lod = 73,
    Switch = 96,
    ClipRegion = 98,
    LightSource = 101,  ///< a light node of the host
    LightPoint = 111,
};

/// The prefixes that created nodes are named with; the first one is for every kind without a
/// prefix of its own.
inline constexpr std::array<char[4], 10> kFltNamePrefixes = {
    {"q", "lp", "s", "o", "l", "g", "x", "d", "c", "b"}};

/// The name prefix of a new node of `kind`; never null, lives for ever.
const char* fltNamePrefix(FltNodeKind kind) noexcept;

/// Whether `kind` is a bead: a hierarchy record other than header, face and the two light kinds.
bool fltIsBead(FltNodeKind kind) noexcept;
