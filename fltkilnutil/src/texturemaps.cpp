#include <fltkilnutil/texturemaps.h>

#include <fltkilnutil/sourcerecords.h>
#include <quillon/fltbyteorder.h>

namespace fltkilnutil {

void setPicture(BitmapTex& map, const std::string& file) {
    map.SetMapName(file.c_str());
    map.SetName(file.substr(file.find_last_of("/\\") + 1).c_str());
}

OwnedPtr<BitmapTex> makeTextureMap(const std::string& file, std::int32_t index) {
    OwnedPtr<BitmapTex> map(new BitmapTex);
    setPicture(*map, file);
    markTextureMap(*map, index);
    return map;
}

void markTextureMap(BitmapTex& map, std::int32_t index) {
    std::uint8_t mark[sizeof index];
    fltStoreBigEndian(mark, index);
    storeSourceChunk(map, SourceChunk::records, mark);
}

std::int32_t markedIndex(const BitmapTex& map) noexcept {
    const FileBytes mark = sourceChunk(map, SourceChunk::records);
    std::int32_t index = -1;
    if (mark.size() >= sizeof index) fltLoadBigEndian(mark.data(), index);
    return index;
}

BitmapTex* textureMapOf(Texmap* map) noexcept {
    if (map == nullptr || map->ClassID() != BMTEX_CLASS_ID ||
        sourceChunk(*map, SourceChunk::records).empty())
        return nullptr;
    return static_cast<BitmapTex*>(map);
}

}  // namespace fltkilnutil
