// Who uses the entries of a database's palettes.
#pragma once

#include <palettes/palette.h>

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

class INode;

namespace palettes {

/// How often entries are used, by index; of the colors by entry, whatever their intensity.
struct Usage {
    ForEachPalette<std::unordered_map<std::int32_t, std::uint32_t>> counts;
    /// There are records that may use the palette in ways that are not known: other files that
    /// take it over, materials of 16.x, shaders, and kinds of nodes without a class.
    ForEachPalette<bool> unseen;

    std::uint32_t of(Palette palette, std::int32_t index) const {
        const auto found = counts[palette].find(index);
        return found == counts[palette].end() ? 0 : found->second;
    }
};

/// Walks all nodes of the database once. Throws `std::bad_alloc`.
Usage usageOf(INode& database);

/// The nodes that use an entry, in the order of the scene, each once. Throws `std::bad_alloc`.
std::vector<INode*> usersOf(INode& database, Palette palette, std::int32_t index);

/// The index by which a node uses a palette, the first if there are several; -1 when it does not.
/// Of the colors the color index: the entry times 128, plus the intensity.
std::int32_t indexUsedBy(INode& node, Palette palette);

/// Gives each reference of a node to a palette other than the colors the index that `renumber`
/// says for it. False when the node cannot be changed; it may then be changed in part. Throws
/// `std::bad_alloc`.
using Renumber = std::function<std::int32_t(Palette, std::int32_t)>;
bool renumberReferences(INode& node, const Renumber& renumber);

/// Gives each color index of a node the entry that `renumber` says for it; the intensity stays.
/// Throws as above, and is false for the same.
bool renumberColors(INode& node, const std::function<std::int32_t(std::int32_t entry)>& renumber);

/// Which palettes the file that an external reference shows has from where the reference stands,
/// by the flags of its record.
ForEachPalette<bool> takenOver(std::int32_t flags) noexcept;

}  // namespace palettes
