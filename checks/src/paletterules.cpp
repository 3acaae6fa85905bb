// What the records that belong to a node say.
#include "gathered.h"

#include <diagnostics/assertion.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightsourcepalette.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltmultitexture.h>
#include <quillon/fltrecordtype.h>
#include <quillon/fltrevision.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>

#include <algorithm>

namespace checks {

namespace {

void add(Gathered& all, std::uint32_t number, Palette palette, std::int32_t index,
         std::string_view name, bool isInvisible = false) {
    auto& entries = all.databaseOf(number).palettes[static_cast<std::size_t>(palette)];
    // Of several entries with one index the first is the one that counts.
    const auto [entry, isNew] = entries.try_emplace(index);
    if (!isNew) return;
    entry->second = {number, std::string(name), false, isInvisible};
}

/// Reads the record, as far as `last`, one of its fields; false when it ends before that.
template <typename Record, typename Field>
bool read(Record& record, const FltRecordView& view, std::uint32_t revision,
          const Field Record::*last) {
    if (view.length() < record.lengthThrough(&(record.*last))) return false;
    record.readBytes(view.bytes(), revision);
    return true;
}

void useLayers(Gathered& all, std::uint32_t number, const FltMultiTexture& record) {
    Database& database = all.databaseOf(number);
    auto& textures = database.palettes[static_cast<std::size_t>(Palette::kTexture)];
    auto& mappings = database.palettes[static_cast<std::size_t>(Palette::kMapping)];
    constexpr std::uint16_t kNoIndex = 0xFFFF;
    for (const FltTextureLayer& layer : record.layers) {
        if (const auto found = mappings.find(layer.mappingIndex); found != mappings.end())
            found->second.isUsed = true;
        if (layer.textureIndex == kNoIndex) continue;
        if (const auto found = textures.find(layer.textureIndex); found != textures.end()) {
            found->second.isUsed = true;
        } else {
            all.foundDetail(Rule::INDEX_RANGE, number, layer.textureIndex, "texture of a layer",
                            std::int32_t{layer.textureIndex});
        }
    }
}

void take(Gathered& all, std::uint32_t number, const FltRecordView& view, std::uint32_t revision) {
    switch (view.opcode()) {
        case kFltTexture: {
            FltTexture record;
            if (read(record, view, revision, &FltTexture::index))
                add(all, number, Palette::kTexture, record.index, fltText(record.fileName));
            return;
        }
        case kFltMaterial: {
            FltMaterial record;
            if (!read(record, view, revision, &FltMaterial::alpha)) return;
            add(all, number, Palette::kMaterial, record.index, fltText(record.name),
                record.alpha <= 0);
            return;
        }
        case kFltMaterialTable: {
            FltMaterialTable record;
            record.readBytes(view.bytes(), revision);
            for (std::size_t i = 0; i < record.materials.size(); ++i) {
                const FltTableMaterial& material = record.materials[i];
                add(all, number, Palette::kMaterial, static_cast<std::int32_t>(i),
                    fltText(material.name), false);
                // The table has its places whether they are used or not.
                all.databaseOf(number)
                    .palettes[static_cast<std::size_t>(Palette::kMaterial)]
                             [static_cast<std::int32_t>(i)]
                    .isUsed = true;
            }
            return;
        }
        case kFltLightSourcePalette: {
            FltLightSourcePalette record;
            if (read(record, view, revision, &FltLightSourcePalette::name))
                add(all, number, Palette::kLightSource, record.paletteIndex, fltText(record.name));
            return;
        }
        case kFltTextureMappingPalette: {
            FltTextureMapping record;
            if (read(record, view, revision, &FltTextureMapping::name))
                add(all, number, Palette::kMapping, record.index, fltText(record.name));
            return;
        }
        case kFltLightPointAppearance: {
            FltLightPointAppearance record;
            if (!read(record, view, revision, &FltLightPointAppearance::index)) return;
            add(all, number, Palette::kAppearance, record.index, fltText(record.name));
            auto& textures =
                all.databaseOf(number).palettes[static_cast<std::size_t>(Palette::kTexture)];
            if (const auto found = textures.find(record.textureIndex); found != textures.end())
                found->second.isUsed = true;
            return;
        }
        case kFltLightPointAnimation: {
            FltLightPointAnimation record;
            if (read(record, view, revision, &FltLightPointAnimation::index))
                add(all, number, Palette::kAnimation, record.index, fltText(record.name));
            return;
        }
        case kFltMultiTexture: {
            FltMultiTexture record;
            record.readBytes(view.bytes(), revision);
            return useLayers(all, number, record);
        }
        default:
            // Materials of 16.x and shaders name textures too.
            if (view.opcode() >= kFltShaderPalette &&
                view.opcode() <= kFltExtendedMaterialReflectionMap)
                all.databaseOf(number).usesUnknown = true;
            return;
    }
}

/// Once for each node and kind of record.
void judgeAge(Gathered& all, std::uint32_t number, std::uint16_t opcode) {
    if (!all.target.revision) return;
    const FltNewerRecord* const newer = fltNewerRecord(opcode);
    if (newer != nullptr && newer->revision > *all.target.revision)
        all.found(Rule::RECORD_TOO_NEW, number, fltRecordName(opcode), revisionText(newer->revision),
                  revisionText(*all.target.revision));
}

}  // namespace

void judgeAttached(Gathered& all, std::uint32_t number, const Node& node) {
    judgeAge(all, number, node.kind);
    std::uint16_t before = node.kind;
    for (const FltRecordView& view : node.attached) {
        if (view.opcode() != before) judgeAge(all, number, before = view.opcode());
        try {
            take(all, number, view, node.revision);
        } catch (const diagnostics::AviaryAssertion&) {
            // Counts that no record can hold: there is no entry then.
        }
    }
}

}  // namespace checks
