#include "filepalettes.h"
#include "../texts.h"

#include "plan.h"

#include <base/text.h>
#include <fltkilnutil/kilnflt.h>
#include <interchange/textencoding.h>
#include <quillon/fltmaterial.h>
#include <quillon/fltstream.h>
#include <quillon/flttext.h>
#include <quillon/flttexture.h>

#include <algorithm>
#include <utility>

namespace interchange {

namespace {

// A face names its picture and its material in 16 bits.
constexpr std::int32_t kLastTexture = 0x7FFF;
constexpr std::int32_t kLastMaterial = 0x7FFF;

std::string bytesOf(const FltLightSourcePalette& entry) {
    FltToken token;
    entry.writeToken(token, kFltRevision);
    return std::string(reinterpret_cast<const char*>(token.data()), token.length());
}

bool areEqual(FltLightSourcePalette a, const FltLightSourcePalette& b) {
    a.paletteIndex = b.paletteIndex;
    return bytesOf(a) == bytesOf(b);
}

/// The smallest index from `start` on that no entry has. Entries are only ever added, so the next
/// search can start at what this one found.
template <typename Map>
std::int32_t freeIndex(const Map& entries, std::int32_t start) {
    while (entries.contains(start)) ++start;
    return start;
}

}  // namespace

void FilePalettes::read(const SourceRecords& kept) {
    revision_ = kept.revision;
    for (const SourceRecord& entry : kept.attached) {
        if (entry.isOpaque) continue;
        switch (entry.record.opcode()) {
            case kFltColorPalette:
                readColors(entry.record);
                break;
            case kFltLightSourcePalette:
                readLight(entry.record);
                break;
            case kFltTexture:
                readTexture(entry.record);
                break;
            case kFltMaterial:
                readMaterial(entry.record);
                break;
            default:
                break;
        }
    }
}

/// Of several color palettes the first is the one that counts.
void FilePalettes::readColors(const FltRecordView& record) {
    if (std::exchange(hasColors_, true)) return;
    colors_.readOfFile(record.bytes(), revision_);
}

void FilePalettes::readLight(const FltRecordView& record) {
    const FltRecord* const base = merger_.base(record, revision_);
    if (base == nullptr) return;
    const auto& entry = static_cast<const FltLightSourcePalette&>(*base);
    lights_.insert({entry.paletteIndex, {record, entry, false, false}});
}

void FilePalettes::readTexture(const FltRecordView& record) {
    FltTexture texture;
    if (record.length() < texture.lengthThrough(&texture.index)) return;
    texture.readBytes(record.bytes(), revision_);
    addTexture(texture.index, textOf(texture.fileName));
}

void FilePalettes::readMaterial(const FltRecordView& record) {
    FltMaterial material;
    if (record.length() < material.lengthThrough(&material.index)) return;
    material.readBytes(record.bytes(), revision_);
    materials_.insert(material.index);
}

void FilePalettes::addTexture(std::int32_t index, const std::string& name) {
    if (!textures_.emplace(index, name).second) return;
    if (index >= 0 && index <= kLastTexture) textureOf_.emplace(name, index);
}

std::int32_t FilePalettes::light(std::int32_t index, const FltLightSourcePalette& wanted) {
    if (index < 0) index = freeLight_ = freeIndex(lights_, freeLight_);
    const auto found = lights_.find(index);
    if (found == lights_.end()) {
        Light light{{}, wanted, true, true};
        light.entry.paletteIndex = index;
        lights_.insert({index, light});
        return index;
    }
    Light& light = found->second;
    const bool claimed = std::exchange(light.claimed, true);
    if (areEqual(wanted, light.entry)) return index;
    if (claimed) return this->light(-1, wanted);
    light.entry = wanted;
    light.entry.paletteIndex = index;
    light.edited = true;
    return index;
}

std::int32_t FilePalettes::texture(const std::string& fileName) {
    const std::string name(base::clipUtf8(fileName, sizeof FltTexture::fileName - 1));
    if (const auto found = textureOf_.find(name); found != textureOf_.end()) return found->second;
    const std::int32_t index = freeTexture_ = freeIndex(textures_, freeTexture_);
    if (index > kLastTexture) {
        throw ExportError(text(TextId::kManyPictures));
    }
    addTexture(index, name);
    newTextures_.insert(index);
    return index;
}

std::int16_t FilePalettes::material(COLORREF color) {
    const auto known = newMaterials_.find(color);
    if (known != newMaterials_.end()) return known->second;
    freeMaterial_ = freeIndex(materials_, freeMaterial_);
    if (freeMaterial_ > kLastMaterial) {
        throw ExportError(text(TextId::kManyMaterials));
    }
    materials_.insert(freeMaterial_);
    const auto index = static_cast<std::int16_t>(freeMaterial_);
    newMaterials_.emplace(color, index);
    return index;
}

void FilePalettes::write(FltStream& stream, const FltRecordView& record) {
    const FltRecord* const base = merger_.base(record, revision_);
    const auto found =
        base == nullptr
            ? lights_.end()
            : lights_.find(static_cast<const FltLightSourcePalette&>(*base).paletteIndex);
    // Of several entries with one index the first is the one that counts.
    if (found != lights_.end() && found->second.edited &&
        found->second.read.bytes().data() == record.bytes().data()) {
        writeLight(stream, found->second);
        return;
    }
    stream.writeVerbatim(record.bytes());
}

void FilePalettes::writeNew(FltStream& stream) {
    for (const std::int32_t index : newTextures_) {
        FltTexture texture;
        fltSetText(texture.fileName, textures_[index]);
        texture.index = index;
        texture.write(stream);
    }
    for (const auto& [color, index] : newMaterials_) writeMaterial(stream, index, color);
    for (const auto& [index, light] : lights_) {
        if (light.read.empty()) writeLight(stream, light);
    }
}

void FilePalettes::writeMaterial(FltStream& stream, std::int16_t index, COLORREF color) {
    const auto share = [&](unsigned shift) {
        return static_cast<float>(color >> shift & 0xFF) / 255;
    };
    FltMaterial material;
    material.index = index;
    fltSetText(material.name, std::string(1, 'm').append(std::to_string(index)));
    material.ambient = material.diffuse = {share(0), share(8), share(16)};
    material.write(stream);
}

void FilePalettes::writeLight(FltStream& stream, const Light& light) {
    if (light.read.empty()) {
        light.entry.writeToken(stream.token(), stream.revision());
        stream.writeToken(stream.token());
    } else {
        stream.writeVerbatim(merger_.put(light.entry, stream.revision(), light.read, revision_));
    }
}

}  // namespace interchange
