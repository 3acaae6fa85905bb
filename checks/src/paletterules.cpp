// What the records that belong to a node say.
#include "gathered.h"
#include "texts.h"

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

void add(Database& database, std::uint32_t number, Palette palette, std::int32_t index,
         std::string_view name, bool isInvisible = false) {
    // Of several entries with one index the first is the one that counts.
    const auto [entry, isNew] = database.entriesOf(palette).try_emplace(index);
    if (isNew) entry->second = {number, std::string(name), false, isInvisible};
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
    for (const FltTextureLayer& layer : record.layers) {
        database.use(Palette::kMapping, layer.mappingIndex);
        if (layer.textureIndex != FltTextureLayer::kNone &&
            !database.use(Palette::kTexture, layer.textureIndex))
            all.foundDetail(Rule::INDEX_RANGE, number, layer.textureIndex, "texture of a layer",
                            std::int32_t{layer.textureIndex});
    }
}

void take(Gathered& all, std::uint32_t number, const FltRecordView& view, std::uint32_t revision) {
    Database& database = all.databaseOf(number);
    // Enters the entry of a palette that the record is, unless it ends before `last`.
    const auto enter = [&](Palette palette, auto record, const auto last, const auto index,
                           const auto name) {
        if (read(record, view, revision, last))
            add(database, number, palette, record.*index, fltText(record.*name));
        return record;
    };
    switch (view.opcode()) {
        case kFltTexture:
            enter(Palette::kTexture, FltTexture(), &FltTexture::index, &FltTexture::index,
                  &FltTexture::fileName);
            return;
        case kFltMaterial: {
            FltMaterial record;
            if (read(record, view, revision, &FltMaterial::alpha))
                add(database, number, Palette::kMaterial, record.index, fltText(record.name),
                    record.alpha <= 0);
            return;
        }
        case kFltMaterialTable: {
            FltMaterialTable record;
            record.readBytes(view.bytes(), revision);
            for (std::size_t i = 0; i < record.materials.size(); ++i) {
                const auto index = static_cast<std::int32_t>(i);
                add(database, number, Palette::kMaterial, index, fltText(record.materials[i].name));
                // The table has its places whether they are used or not.
                database.use(Palette::kMaterial, index);
            }
            return;
        }
        case kFltLightSourcePalette:
            enter(Palette::kLightSource, FltLightSourcePalette(), &FltLightSourcePalette::name,
                  &FltLightSourcePalette::paletteIndex, &FltLightSourcePalette::name);
            return;
        case kFltTextureMappingPalette:
            enter(Palette::kMapping, FltTextureMapping(), &FltTextureMapping::name,
                  &FltTextureMapping::index, &FltTextureMapping::name);
            return;
        case kFltLightPointAppearance: {
            const std::int32_t texture =
                enter(Palette::kAppearance, FltLightPointAppearance(),
                      &FltLightPointAppearance::index, &FltLightPointAppearance::index,
                      &FltLightPointAppearance::name)
                    .textureIndex;
            // The palette of textures may stand behind.
            if (!database.use(Palette::kTexture, texture))
                database.openIndices.push_back({kNone, Palette::kTexture, texture});
            return;
        }
        case kFltLightPointAnimation:
            enter(Palette::kAnimation, FltLightPointAnimation(), &FltLightPointAnimation::index,
                  &FltLightPointAnimation::index, &FltLightPointAnimation::name);
            return;
        case kFltMultiTexture: {
            FltMultiTexture record;
            record.readBytes(view.bytes(), revision);
            return useLayers(all, number, record);
        }
        default:
            // Materials of 16.x and shaders name textures too.
            if (view.opcode() >= kFltShaderPalette &&
                view.opcode() <= kFltExtendedMaterialReflectionMap)
                database.usesUnknown = true;
            return;
    }
}

/// Once for each node and kind of record.
void checkAge(Gathered& all, std::uint32_t number, std::uint16_t opcode) {
    if (!all.target.revision) return;
    const FltNewerRecord* const newer = fltNewerRecord(opcode);
    if (newer != nullptr && newer->revision > *all.target.revision)
        all.found(Rule::RECORD_TOO_NEW, number, recordWord(opcode), revisionText(newer->revision),
                  revisionText(*all.target.revision));
}

}  // namespace

void checkAttached(Gathered& all, std::uint32_t number, const Node& node) {
    checkAge(all, number, node.kind);
    std::uint16_t before = node.kind;
    for (const FltRecordView& view : node.attached) {
        if (view.opcode() != before) checkAge(all, number, before = view.opcode());
        try {
            take(all, number, view, node.revision);
        } catch (const diagnostics::AviaryAssertion&) {
            // Counts that no record can hold: there is no entry then.
        }
    }
}

}  // namespace checks
