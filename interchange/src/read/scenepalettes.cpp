#include "scenepalettes.h"

#include <fltkilnutil/texturemaps.h>
#include <interchange/textencoding.h>
#include <quillon/flttexture.h>

namespace interchange {

ScenePalettes::ScenePalettes(const FileIndex& file, Interface& host) : file_(file), host_(host) {
    if (file.colorPalette != 0) {
        colors_.readOfFile(file.recordAt(file.colorPalette).bytes(), file.revision);
    }
    readLights();
}

void ScenePalettes::readLights() {
    for (const std::uint32_t offset : file_.lights) {
        FltLightSourcePalette entry;
        entry.readBytes(file_.recordAt(offset).bytes(), file_.revision);
        lights_.emplace(entry.paletteIndex, entry);
    }
}

void ScenePalettes::makeTextures() {
    for (const std::uint32_t offset : file_.textures) makeTexture(file_.recordAt(offset));
}

void ScenePalettes::makeTexture(const FltRecordView& record) {
    FltTexture entry;
    if (record.length() < entry.lengthThrough(&entry.index)) return;
    entry.readBytes(record.bytes(), file_.revision);
    if (textures_.contains(entry.index)) return;
    OwnedPtr<BitmapTex> map = fltkilnutil::makeTextureMap(textOf(entry.fileName), entry.index);
    const auto place = textures_.emplace(entry.index, map.get()).first;
    host_.AddTexmap(map.get());
    place->second = map.release();
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
