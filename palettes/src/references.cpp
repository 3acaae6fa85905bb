#include <palettes/references.h>

#include <palettes/database.h>

#include "recordpatch.h"

#include <diagnostics/assertion.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <fltkilnutil/vertextails.h>
#include <kiln/kiln.h>
#include <quillon/fltface.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltmesh.h>
#include <quillon/fltmultitexture.h>
#include <quillon/fltrecordtype.h>
#include <quillon/fltxref.h>

#include <memory>
#include <optional>

namespace palettes {

namespace {

using fltkilnutil::FileBytes, fltkilnutil::SourceChunk, fltkilnutil::SourceRecord,
    fltkilnutil::SourceRecords;

// Each calls `visit(palette, field)` for the fields of a record that name entries. Those without an
// entry are negative.

void visitFields(FltPolygonRec& surface, auto&& visit) {
    visit(Palette::kTexture, surface.textureIndex);
    visit(Palette::kTexture, surface.detailTextureIndex);
    visit(Palette::kMaterial, surface.materialIndex);
    visit(Palette::kMapping, surface.textureMappingIndex);
}

void visitFields(FltIndexedLightPoint& light, auto&& visit) {
    visit(Palette::kAppearance, light.appearanceIndex);
    visit(Palette::kAnimation, light.animationIndex);
}

void visitFields(FltLightSource& light, auto&& visit) {
    visit(Palette::kLightSource, light.paletteIndex);
}

void visitFields(FltMultiTexture& layers, auto&& visit) {
    for (FltTextureLayer& layer : layers.layers) {
        if (layer.textureIndex != FltTextureLayer::kNone)
            visit(Palette::kTexture, layer.textureIndex);
        if (layer.mappingIndex != FltTextureLayer::kNone)
            visit(Palette::kMapping, layer.mappingIndex);
    }
}

void visitFields(FltLightPointAppearance& look, auto&& visit) {
    visit(Palette::kTexture, look.textureIndex);
}

/// Of faces and meshes: the color indices that count.
void visitColors(auto& surface, auto&& visit) {
    if (surface.flags & kFltSurfacePackedColors) return;
    if (!(surface.flags & kFltSurfaceNoColor)) visit(surface.primaryColorIndex);
    if (!(surface.flags & kFltSurfaceNoAlternateColor)) visit(surface.alternateColorIndex);
}

/// Records that serve many nodes.
struct Records {
    FltFace face;
    FltMesh mesh;
    FltIndexedLightPoint light;
    FltLightSource source;
    FltMultiTexture layers;
    FltLightPointAppearance look;
    FltXRef xref;
};

/// Reads a record that is kept as it was read; false for bytes that its class refuses.
bool read(FltRecord& record, const FltRecordView& view, std::uint32_t revision) {
    if (view.empty() || view.opcode() != record.opcode()) return false;
    try {
        record.readBytes(view.bytes(), revision);
        return true;
    } catch (const diagnostics::AviaryAssertion&) {
        return false;
    }
}

bool isUnseen(std::uint16_t opcode) noexcept {
    return opcode >= kFltShaderPalette && opcode <= kFltExtendedMaterialReflectionMap;
}

/// Finds what nodes use. One object serves many nodes.
class Finder {
public:
    /// Calls `use(palette, index)` for what the node uses, of the colors with the color index, and
    /// `unseen(palette)` where that cannot be told.
    void find(INode& node, auto&& use, auto&& unseen) {
        const auto visit = [&](Palette palette, auto field) {
            if (std::int32_t{field} >= 0) use(palette, std::int32_t{field});
        };
        const auto visitColor = [&](std::uint32_t index) {
            if (index >> FltColorPalette::kIntensityBits < FltColorPalette::kEntries)
                use(Palette::kColor, static_cast<std::int32_t>(index));
        };
        const auto allUnseen = [&] {
            for (std::size_t i = 0; i < kPaletteCount; ++i) unseen(static_cast<Palette>(i));
        };
        FltNodeKind kind{};
        if (!fltGetKind(&node, false, kind)) return;
        const SourceRecords& kept = reader_.read(node);
        switch (static_cast<std::uint16_t>(kind)) {
            case kFltFace:
                if (!fltGetRecord(&node, all_.face)) break;
                visitFields(all_.face, visit);
                visitColors(all_.face, visitColor);
                break;
            case kFltMesh:
                if (!read(all_.mesh, kept.record, kept.revision)) break;
                visitFields(all_.mesh, visit);
                visitColors(all_.mesh, visitColor);
                break;
            case kFltIndexedLightPoint:
                if (read(all_.light, kept.record, kept.revision)) visitFields(all_.light, visit);
                break;
            case kFltLightSource:
                if (fltGetRecord(&node, all_.source)) visitFields(all_.source, visit);
                break;
            case kFltExternalRef:
                if (fltGetRecord(&node, all_.xref)) findTakenOver(unseen);
                break;
            default: {
                const FltRecordType* const type = fltRecordType(static_cast<std::uint16_t>(kind));
                if (type == nullptr || type->create == nullptr) allUnseen();
            }
        }
        findAttached(kept, visit, visitColor, allUnseen);
        FileBytes tails = fltkilnutil::sourceChunk(node, SourceChunk::corners);
        for (FileBytes tail; !(tail = fltkilnutil::vertexTailAt(tails)).empty();
             tails = tails.subspan(tail.size()))
            if (const auto index = fltkilnutil::vertexTailColorIndex(tail)) visitColor(*index);
    }

private:
    /// The palettes that a file is shown with instead of its own.
    void findTakenOver(auto&& unseen) {
        const ForEachPalette<bool> isTaken = takenOver(all_.xref.flags);
        for (std::size_t i = 0; i < kPaletteCount; ++i)
            if (isTaken[static_cast<Palette>(i)]) unseen(static_cast<Palette>(i));
    }

    void findAttached(const SourceRecords& kept, auto&& visit, auto&& visitColor,
                      auto&& allUnseen) {
        for (const SourceRecord& entry : kept.attached) {
            if (entry.isOpaque) continue;
            const std::uint16_t opcode = entry.record.opcode();
            if (opcode == kFltMultiTexture && read(all_.layers, entry.record, kept.revision)) {
                visitFields(all_.layers, visit);
            } else if (opcode == kFltLightPointAppearance &&
                       read(all_.look, entry.record, kept.revision)) {
                visitFields(all_.look, visit);
            } else if (opcode == kFltLocalVertexPool) {
                findInPool(entry.record, visitColor);
            } else if (FltVertexView::isViewable(entry.record)) {
                const FltVertexView vertex(entry.record);
                if (vertex.hasColorIndex() &&
                    !(vertex.flags() & (kFltVertexPackedColor | kFltVertexNoColor)))
                    visitColor(vertex.colorIndex());
            } else if (isUnseen(opcode)) {
                allUnseen();
            }
        }
    }

    void findInPool(const FltRecordView& record, auto&& visitColor) {
        FltLocalVertexPool pool;
        if (!read(pool, record, 0) || !(pool.mask & kFltPoolColorIndex)) return;
        for (const FltPoolVertex& vertex : pool.vertices) visitColor(vertex.color);
    }

    Records all_;
    fltkilnutil::SourceRecordsReader reader_;
};

/// Visits the nodes of one database.
void forEachNode(INode& database, auto&& visit) {
    ForEachInSubtree(&database, [&](INode& node) {
        if (&node != &database && databaseOf(&node) == &node) return WalkStep::kPastThis;
        visit(node);
        return WalkStep::kOn;
    });
}

/// The entries that indices name in a database.
class EntriesOf {
public:
    explicit EntriesOf(INode& database) {
        try {
            const Database read(database);
            if (read.hasOldColors()) oldColors_ = read.colors();
        } catch (const Refusal&) {
            // What cannot be read is of the present form, if it is any.
        }
    }

    std::int32_t operator()(Palette palette, std::int32_t index) const noexcept {
        if (palette != Palette::kColor) return index;
        const auto color = static_cast<std::uint32_t>(index);
        if (!oldColors_) return static_cast<std::int32_t>(color >> FltColorPalette::kIntensityBits);
        return static_cast<std::int32_t>(oldColors_->entryOf(color).value_or(0xFFFFFFFF));
    }

private:
    std::optional<FltColorPalette> oldColors_;
};

/// The record with other indices; empty when they stay.
template <typename Record>
std::vector<std::uint8_t> renumbered(const FltRecordView& view, std::uint32_t revision,
                                     const auto& change) {
    Record record;
    if (!read(record, view, revision)) return {};
    const Record before = record;
    bool isChanged = false;
    visitFields(record, [&](Palette palette, auto& field) { isChanged |= change(palette, field); });
    if (!isChanged) return {};
    return patched(view, before, record, revision);
}

/// Has an edit of what is kept on a node replace records: `change(kept, replace)` calls
/// `replace(record, by)`, which leaves the record for empty bytes.
void replaceKept(INode& node, auto&& change) {
    fltkilnutil::SourceRecordsEdit edit(node);
    change(edit.kept(), [&](const FltRecordView& record, const std::vector<std::uint8_t>& by) {
        if (!by.empty()) edit.replace(record, by);
    });
    edit.store(edit.kept().revision);
}

/// Renumbers what is kept on a node as it was read.
void renumberKept(INode& node, std::uint16_t kind, const auto& change) {
    replaceKept(node, [&](const SourceRecords& kept, auto&& replace) {
        if (kind == kFltMesh)
            replace(kept.record, renumbered<FltMesh>(kept.record, kept.revision, change));
        if (kind == kFltIndexedLightPoint)
            replace(kept.record,
                    renumbered<FltIndexedLightPoint>(kept.record, kept.revision, change));
        for (const SourceRecord& entry : kept.attached) {
            if (entry.isOpaque) continue;
            if (entry.record.opcode() == kFltMultiTexture)
                replace(entry.record,
                        renumbered<FltMultiTexture>(entry.record, kept.revision, change));
            if (entry.record.opcode() == kFltLightPointAppearance)
                replace(entry.record,
                        renumbered<FltLightPointAppearance>(entry.record, kept.revision, change));
        }
    });
}

/// Renumbers the record that a scene stores; false when it cannot be stored.
template <typename Record>
bool renumberStored(INode& node, const auto& change) {
    Record record;
    if (!fltGetRecord(&node, record)) return true;
    bool isChanged = false;
    visitFields(record, [&](Palette palette, auto& field) { isChanged |= change(palette, field); });
    return !isChanged || fltPutRecord(&node, record);
}

/// The record of a kept vertex with another color; empty when it stays.
std::vector<std::uint8_t> recoloredVertex(const FltRecordView& record, const auto& change) {
    const FltVertexView vertex(record);
    if (!vertex.hasColorIndex() ||
        (vertex.flags() & (kFltVertexPackedColor | kFltVertexNoColor)) != 0)
        return {};
    std::uint32_t index = vertex.colorIndex();
    if (!change(index)) return {};
    std::vector<std::uint8_t> bytes(record.bytes().begin(), record.bytes().end());
    fltStoreBigEndian(&bytes[FltVertexView::layoutOf(record.opcode()).colorIndex.begin], index);
    return bytes;
}

/// A pool of vertices with other colors; empty when they stay.
std::vector<std::uint8_t> recoloredPool(const FltRecordView& record, const auto& change) {
    FltLocalVertexPool pool;
    if (!read(pool, record, 0) || !(pool.mask & kFltPoolColorIndex)) return {};
    const FltLocalVertexPool before = pool;
    bool isChanged = false;
    for (FltPoolVertex& vertex : pool.vertices) isChanged |= change(vertex.color);
    return isChanged ? patched(record, before, pool, 0) : std::vector<std::uint8_t>();
}

void recolorKept(INode& node, const auto& change) {
    replaceKept(node, [&](const SourceRecords& kept, auto&& replace) {
        FltMesh mesh;
        if (read(mesh, kept.record, kept.revision)) {
            const FltMesh before = mesh;
            bool isOther = false;
            visitColors(mesh, [&](std::uint32_t& index) { isOther |= change(index); });
            if (isOther) replace(kept.record, patched(kept.record, before, mesh, kept.revision));
        }
        for (const SourceRecord& entry : kept.attached) {
            if (entry.isOpaque) continue;
            if (entry.record.opcode() == kFltLocalVertexPool)
                replace(entry.record, recoloredPool(entry.record, change));
            else if (FltVertexView::isViewable(entry.record))
                replace(entry.record, recoloredVertex(entry.record, change));
        }
    });
}

void recolorTails(INode& node, const auto& change) {
    const FileBytes kept = fltkilnutil::sourceChunk(node, SourceChunk::corners);
    std::vector<std::uint8_t> tails(kept.begin(), kept.end());
    bool isChanged = false;
    std::size_t place = 0;
    for (FileBytes tail; !(tail = fltkilnutil::vertexTailAt(kept.subspan(place))).empty();
         place += tail.size()) {
        auto index = fltkilnutil::vertexTailColorIndex(tail);
        if (!index || !change(*index)) continue;
        fltkilnutil::setVertexTailColorIndex(std::span(tails).subspan(place, tail.size()), *index);
        isChanged = true;
    }
    if (isChanged) fltkilnutil::storeSourceChunk(node, SourceChunk::corners, tails);
}

}  // namespace

ForEachPalette<bool> takenOver(std::int32_t flags) noexcept {
    constexpr std::pair<std::uint32_t, Palette> kBits[] = {
        {kFltOverrideColors, Palette::kColor},
        {kFltOverrideMaterials, Palette::kMaterial},
        {kFltOverrideTextures, Palette::kTexture},
        {kFltOverrideTextures, Palette::kMapping},
        {kFltOverrideLightSources, Palette::kLightSource},
        {kFltOverrideLightPoints, Palette::kAppearance},
        {kFltOverrideLightPoints, Palette::kAnimation},
    };
    ForEachPalette<bool> taken;
    for (const auto& [bit, palette] : kBits)
        taken[palette] = (static_cast<std::uint32_t>(flags) & bit) != 0;
    return taken;
}

Usage usageOf(INode& database) {
    Usage usage;
    const EntriesOf entryOf(database);
    Finder finder;
    forEachNode(database, [&](INode& node) {
        finder.find(
            node,
            [&](Palette palette, std::int32_t index) {
                ++usage.counts[palette][entryOf(palette, index)];
            },
            [&](Palette palette) { usage.unseen[palette] = true; });
    });
    return usage;
}

std::vector<INode*> usersOf(INode& database, Palette palette, std::int32_t index) {
    std::vector<INode*> users;
    const EntriesOf entryOf(database);
    Finder finder;
    forEachNode(database, [&](INode& node) {
        bool uses = false;
        finder.find(
            node,
            [&](Palette used, std::int32_t by) {
                uses |= used == palette && entryOf(used, by) == index;
            },
            [](Palette) {});
        if (uses) users.push_back(&node);
    });
    return users;
}

std::int32_t indexUsedBy(INode& node, Palette palette) {
    std::int32_t found = -1;
    Finder().find(
        node,
        [&](Palette used, std::int32_t index) {
            if (used == palette && found < 0) found = index;
        },
        [](Palette) {});
    return found;
}

bool renumberReferences(INode& node, const Renumber& renumber) {
    FltNodeKind kind{};
    if (!fltGetKind(&node, false, kind)) return true;
    const auto change = [&](Palette palette, auto& field) {
        if (std::int32_t{field} < 0) return false;
        const std::int32_t index = renumber(palette, field);
        if (index == field) return false;
        field = static_cast<std::remove_reference_t<decltype(field)>>(index);
        return true;
    };
    renumberKept(node, static_cast<std::uint16_t>(kind), change);
    if (kind == FltNodeKind::Face) return renumberStored<FltFace>(node, change);
    if (kind != FltNodeKind::LightSource) return true;
    KilnLight options;
    if (fltGetOptions(&node, options) &&
        change(Palette::kLightSource, options.palette.paletteIndex) &&
        !fltPutOptions(&node, options))
        return false;
    return renumberStored<FltLightSource>(node, change);
}

bool renumberColors(INode& node, const std::function<std::int32_t(std::int32_t)>& renumber) {
    constexpr unsigned kBits = FltColorPalette::kIntensityBits;
    const auto change = [&](std::uint32_t& index) {
        if (index >> kBits >= FltColorPalette::kEntries) return false;
        const auto entry = static_cast<std::int32_t>(index >> kBits);
        const std::int32_t becomes = renumber(entry);
        if (becomes == entry) return false;
        index = static_cast<std::uint32_t>(becomes) << kBits |
                (index & FltColorPalette::kFullIntensity);
        return true;
    };
    recolorKept(node, change);
    recolorTails(node, change);
    FltNodeKind kind{};
    FltFace face;
    if (!fltGetKind(&node, false, kind) || kind != FltNodeKind::Face || !fltGetRecord(&node, face))
        return true;
    bool isChanged = false;
    visitColors(face, [&](std::uint32_t& index) { isChanged |= change(index); });
    return !isChanged || fltPutRecord(&node, face);
}

}  // namespace palettes
