// The records of palettes among those that are kept for a database, and nodes' colors.
#pragma once

#include "classes.h"
#include "recordpatch.h"

#include <fltkilnutil/sourcerecords.h>
#include <kiln/platform.h>

#include <functional>
#include <utility>

class INode;

namespace palettes {

using Bytes = std::vector<std::uint8_t>;

/// The record of an entry after `change(record)`, which is told its class's record.
template <typename Change>
Bytes changedEntry(const FltRecordView& view, Palette palette, std::uint32_t revision,
                   Change&& change) {
    return withClass(palette, [&](auto its) {
        typename decltype(its)::Record before;
        before.readBytes(view.bytes(), revision);
        auto after = before;
        change(its, after);
        return patched(view, before, after, revision);
    });
}

/// The record of an entry with another index.
inline Bytes withIndex(const FltRecordView& view, Palette palette, std::uint32_t revision,
                       std::int32_t index) {
    return changedEntry(view, palette, revision,
                        [&](auto its, auto& record) { record.*decltype(its)::kIndex = index; });
}

/// What a color index shows in the host's form: before, and now.
using Recolor = std::function<std::pair<COLORREF, COLORREF>(std::uint32_t index)>;
/// Faces and vertices that show what indices did before show what they do now. Throws
/// `std::bad_alloc`.
void recolor(INode& node, const Recolor& colors);

}  // namespace palettes
