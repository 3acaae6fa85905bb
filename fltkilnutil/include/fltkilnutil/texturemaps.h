// The host's texture maps that stand for entries of a texture palette.
#pragma once

#include <kiln/kiln.h>
#include <kiln/ownedptr.h>

#include <cstdint>
#include <string>

namespace fltkilnutil {

/// A map of the picture `file` (UTF-8), marked as the entry of that index. The mark tells it from
/// the pictures that a user gives to nodes, which files get entries of their own for.
OwnedPtr<BitmapTex> makeTextureMap(const std::string& file, std::int32_t index);

/// Marks the map as the entry of that index.
void markTextureMap(BitmapTex& map, std::int32_t index);

/// The index with which it is marked; -1 without a mark.
std::int32_t markedIndex(const BitmapTex& map) noexcept;

/// The map as one that stands for an entry; null when it does not.
BitmapTex* textureMapOf(Texmap* map) noexcept;

/// Gives the map another picture, and a name after it.
void setPicture(BitmapTex& map, const std::string& file);

}  // namespace fltkilnutil
