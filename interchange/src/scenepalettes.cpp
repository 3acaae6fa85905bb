#include "scenepalettes.h"

#include "kept.h"

#include <interchange/textencoding.h>
#include <kiln/ownedptr.h>
#include <quillon/fltbyteorder.h>
#include <quillon/flttexture.h>

namespace interchange {

ScenePalettes::ScenePalettes(const Outline& outline, Interface& host)
    : outline_(outline), host_(host) {
    if (outline.colorPalette != 0) {
        colors_.readBytes(outline.recordAt(outline.colorPalette).bytes(), outline.revision);
    }
    readLights();
}

void ScenePalettes::readLights() {
    for (const std::uint32_t offset : outline_.lights) {
        FltLightSourcePalette entry;
        entry.readBytes(outline_.recordAt(offset).bytes(), outline_.revision);
        lights_.emplace(entry.paletteIndex, entry);
    }
}

void ScenePalettes::makeTextures() {
    for (const std::uint32_t offset : outline_.textures) makeTexture(outline_.recordAt(offset));
}

void ScenePalettes::makeTexture(const FltRecordView& record) {
    FltTexture entry;
    if (record.length() < entry.lengthThrough(&entry.index)) return;
    entry.readBytes(record.bytes(), outline_.revision);
    if (textures_.contains(entry.index)) return;
    const std::string file = textOf(entry.fileName);
    OwnedPtr<BitmapTex> map(new BitmapTex);
    map->SetMapName(file.c_str());
    map->SetName(file.substr(file.find_last_of("/\\") + 1).c_str());
    std::uint8_t index[sizeof entry.index];
    fltStoreBigEndian(index, entry.index);
    keepChunk(*map, KeptChunk::records, index);
    const auto place = textures_.emplace(entry.index, map.get()).first;
    host_.AddTexmap(map.get());
    place->second = map.release();
}

void ScenePalettes::removeTextures() {
    for (const auto& [index, map] : textures_) host_.RemoveTexmap(map);
    textures_.clear();
}

const FltLightSourcePalette& ScenePalettes::light(std::int32_t index) const {
    const auto found = lights_.find(index);
    return found == lights_.end() ? defaultLight_ : found->second;
}

BitmapTex* ScenePalettes::texture(std::int32_t index) const {
    const auto found = textures_.find(index);
    return found == textures_.end() ? nullptr : found->second;
}

}  // namespace interchange
