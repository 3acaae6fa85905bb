#include "showing.h"

#include <diagnostics/assertion.h>
#include <fltkilnutil/indexedcolor.h>
#include <fltkilnutil/sourcerecords.h>
#include <fltkilnutil/texturemaps.h>
#include <kiln/kiln.h>

namespace palettes {

namespace {

/// The face with its packed colors, which are kept with the record of its file. They count as long
/// as its color has the index that they came with.
FltFace withPackedColors(const INode& node, FltFace face) {
    const fltkilnutil::SourceRecords kept = fltkilnutil::sourceRecordsOf(node);
    if (!kept.record.empty() && kept.record.opcode() == kFltFace) try {
            FltFace read;
            read.readBytes(kept.record.bytes(), kept.revision);
            if (read.primaryColorIndex == face.primaryColorIndex) {
                face.packedPrimaryColor = read.packedPrimaryColor;
                return face;
            }
        } catch (const diagnostics::AviaryAssertion&) {
            // Nothing that could be read: it has none.
        }
    face.flags &= ~kFltSurfacePackedColors;
    return face;
}

}  // namespace

void Showing::showColor(INode& node, const FltFace& face) {
    const bool isPacked = (face.flags & kFltSurfacePackedColors) != 0;
    const auto color = fltkilnutil::surfaceColor(isPacked ? withPackedColors(node, face) : face,
                                                 database_.colors());
    node.SetWireColor(color.value_or(DEFAULT_WIRE_COLOR));
}

void Showing::showTexture(INode& node, const FltFace& face) {
    const auto [known, isNew] = maps_.try_emplace(face.textureIndex, nullptr);
    if (isNew) known->second = mapOf(face.textureIndex);
    node.SetTexmap(known->second);
}

/// The scene's map for a picture that is an entry.
Texmap* Showing::mapOf(std::int32_t index) {
    const Entry* const entry = database_.find(Palette::kTexture, index);
    if (entry == nullptr || !entry->counts()) return nullptr;
    Interface& host = *GetCOREInterface();
    for (int i = 0; i < host.GetTexmapCount(); ++i) {
        BitmapTex* const map = fltkilnutil::textureMapOf(host.GetTexmap(i));
        if (map != nullptr && entry->name == map->GetMapName()) return map;
    }
    OwnedPtr<BitmapTex> map = fltkilnutil::makeTextureMap(entry->name, entry->index);
    host.AddTexmap(map.get());
    return map.release();
}

}  // namespace palettes
