// Nodes that move from one database into another, and what they use of its palettes.
#pragma once

#include <palettes/palette.h>

#include <functional>
#include <span>
#include <string>

class INode;
class Texmap;

namespace palettes {

/// Names a file (UTF-8) otherwise.
using Rename = std::function<std::string(const std::string& name)>;

/// Has the nodes from `top` on down, which hang in the database `into` by now and came from `from`,
/// use the palettes of `into`. Of the palettes in `taken` they use the entries whose indices they
/// have already, and look like those. Of the others the entries that they use are found in `into`,
/// or added to it, pictures renamed, and the nodes get their indices; an index that names no entry
/// of `from` names none afterwards. `maps` are the texture maps that the scene has of `from`, which
/// the nodes use no more then.
///
/// One step of the history, or part of that of the scope that is open. Throws `Refusal` where
/// something may use a palette in ways that are not known, or a palette is full, and
/// `std::bad_alloc`; nothing is changed then.
void moveUsers(INode& into, INode& from, INode& top, const ForEachPalette<bool>& taken,
               std::span<Texmap* const> maps, const Rename& rename);

/// Names the pictures in the palette otherwise; what the scene shows stays as it is. Throws as
/// above.
void renamePictures(INode& database, const Rename& rename);

}  // namespace palettes
