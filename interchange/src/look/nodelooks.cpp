#include <interchange/nodelooks.h>

#include "../sourcerecords.h"

#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <interchange/textencoding.h>
#include <kiln/kiln.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltmaterial.h>
#include <quillon/flttexture.h>

#include <algorithm>

namespace interchange {

namespace {

constexpr int kMostLayers = 8;

FltNodeKind kindOf(INode* node) {
    FltNodeKind kind{};
    return fltGetKind(node, false, kind) ? kind : FltNodeKind{};
}

/// A share from 0 to 1; what is no number is 0.
float shareOf(float value) {
    return value > 0 ? std::min(value, 1.F) : 0.F;
}

LightColor colorOf(const FltColor3f& color) {
    return {shareOf(color.red), shareOf(color.green), shareOf(color.blue)};
}

}  // namespace

void NodeLooks::BeginLooks(Interface*) noexcept {
    EndLooks();
}

void NodeLooks::EndLooks() noexcept {
    databases_.clear();
    definitions_.clear();
    family_ = {};
}

bool NodeLooks::GetLook(INode* node, NodeLook& look) noexcept {
    try {
        if (node == nullptr) return false;
        switch (static_cast<std::uint16_t>(kindOf(node))) {
            case kFltFace:
                if (!fltGetRecord(node, face_)) return false;
                describe(face_, *node, look);
                return true;
            case kFltLightSource:
                return describeLight(*node, look);
            case kFltMesh:
                if (!readMesh(*node)) return false;
                describe(mesh_, *node, look);
                return true;
            default:
                return false;
        }
    } catch (...) {
        return false;
    }
}

INode* NodeLooks::GetInstanced(INode* node) noexcept {
    try {
        return definitions_.of(node);
    } catch (...) {
        return nullptr;
    }
}

bool NodeLooks::IsOnlyInstanced(INode* node) noexcept {
    return kindOf(node) == FltNodeKind::InstanceDef;
}

bool NodeLooks::describeLight(INode& node, NodeLook& look) {
    FltLightSource record;
    if (fltGetRecord(&node, record)) {
        const auto flags = static_cast<std::uint32_t>(record.flags);
        look.shines = (flags & FltLightSource::kEnabled) != 0;
    }
    KilnLight options;
    if (fltGetOptions(&node, options)) {
        const FltLightSourcePalette& palette = options.palette;
        look.light = {{palette.diffuseRed, palette.diffuseGreen, palette.diffuseBlue}};
    }
    return look.shines || look.light;
}

/// The record of a mesh, which is kept as it was read, to `mesh_`.
bool NodeLooks::readMesh(INode& node) {
    const SourceRecords kept = sourceRecordsOf(node);
    if (kept.record.empty() || kept.record.opcode() != kFltMesh) return false;
    mesh_.readBytes(kept.record.bytes(), kept.revision);
    return true;
}

const NodeLooks::Family& NodeLooks::familyOf(INode& node) {
    INode* const parent = node.GetParentNode();
    if (parent == family_.parent) return family_;
    family_ = {parent, nullptr, 0};
    INode* above = parent;
    for (; above != nullptr && kindOf(above) == FltNodeKind::Face; above = above->GetParentNode()) {
        ++family_.layer;
    }
    while (above != nullptr && kindOf(above) != FltNodeKind::Header) {
        above = above->GetParentNode();
    }
    if (above != nullptr) family_.database = &databaseOf(*above);
    return family_;
}

NodeLooks::Database& NodeLooks::databaseOf(INode& header) {
    const auto known = databases_.find(&header);
    if (known != databases_.end()) return known->second;
    Database& database = databases_[&header];
    const SourceRecords kept = sourceRecordsOf(header);
    for (const SourceRecord& entry : kept.attached) {
        if (entry.isOpaque) continue;
        if (entry.record.opcode() == kFltMaterial) addMaterial(entry.record, database);
        if (entry.record.opcode() == kFltTexture) addTexture(entry.record, database);
    }
    return database;
}

void NodeLooks::addMaterial(const FltRecordView& record, Database& database) {
    FltMaterial material;
    if (record.length() < material.lengthThrough(&material.alpha)) return;
    material.readBytes(record.bytes(), 0);
    database.materials.emplace(material.index,
                               Material{colorOf(material.ambient), colorOf(material.diffuse),
                                        colorOf(material.emissive), shareOf(material.alpha)});
}

void NodeLooks::addTexture(const FltRecordView& record, Database& database) {
    FltTexture texture;
    if (record.length() < texture.lengthThrough(&texture.index)) return;
    texture.readBytes(record.bytes(), 0);
    database.textures.emplace(texture.index, textOf(texture.fileName));
}

/// Describes the node by its record, that of a face or a mesh.
template <typename Record>
void NodeLooks::describe(const Record& record, INode& node, NodeLook& look) {
    const Family& family = familyOf(node);
    look.lit = fltIsLit(record.lightMode);
    const bool hasColor =
        (record.flags & kFltSurfacePackedColors) != 0 || (record.flags & kFltSurfaceNoColor) == 0;
    look.vertexColors = !hasColor || fltShowsVertexColors(record.lightMode);
    KilnFace options;
    look.vertexNormals =
        look.lit && (!fltGetOptions(&node, options) || options.useHostNormals != 0);
    look.white = record.textureWhite != 0;
    look.blended = record.billboard == kFltFixedBlended || record.billboard == kFltAxisBlended ||
                   record.billboard == kFltPointBlended;
    look.opacity = 1 - static_cast<float>(record.transparency) / float{kFltFullTransparency};
    look.layer =
        std::clamp(family.layer + std::max<int>(record.relativePriority, 0), 0, kMostLayers);
    look.picture = pictureOf(node, record.textureIndex, family.database);
    if (family.database == nullptr) return;
    const auto found = family.database->materials.find(record.materialIndex);
    if (found == family.database->materials.end()) return;
    const Material& material = found->second;
    look.opacity *= material.alpha;
    if (!look.lit) return;
    look.ambient = material.ambient;
    look.diffuse = material.diffuse;
    look.emissive = material.emissive;
}

/// The record says which picture a face has, unless its picture was made in the scene.
const char* NodeLooks::pictureOf(INode& node, std::int32_t textureIndex, const Database* database) {
    Texmap* const map = node.GetTexmap();
    if (map != nullptr && map->ClassID() == BMTEX_CLASS_ID &&
        sourceChunk(*map, SourceChunk::records).empty()) {
        return static_cast<const BitmapTex*>(map)->GetMapName();
    }
    if (database == nullptr) return nullptr;
    const auto texture = database->textures.find(textureIndex);
    return texture == database->textures.end() ? nullptr : texture->second.c_str();
}

}  // namespace interchange
