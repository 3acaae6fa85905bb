#include <interchange/nodelooks.h>

#include "kept.h"
#include "layouts.h"
#include "opcodes.h"

#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <interchange/textencoding.h>
#include <kiln/kiln.h>
#include <quillon/flttoken.h>

#include <algorithm>

namespace interchange {

namespace {

constexpr float kFullTransparency = 65535;
constexpr int kMostLayers = 8;

FltNodeKind kindOf(INode* node) {
    FltNodeKind kind{};
    return fltGetKind(node, false, kind) ? kind : FltNodeKind{};
}

float shareAt(FileBytes record, std::size_t offset) {
    const float value = float32At(record, offset);
    return value > 0 ? std::min(value, 1.F) : 0.F;  // also for what is no number
}

LightColor colorAt(FileBytes record, std::size_t offset) {
    return {shareAt(record, offset), shareAt(record, offset + 4), shareAt(record, offset + 8)};
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
        if (node == nullptr || !readFace(*node)) return false;
        describe(*node, familyOf(*node), look);
        return true;
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

/// The record of a face, or what that of a mesh says of its surface, to `face_`.
bool NodeLooks::readFace(INode& node) {
    const FltNodeKind kind = kindOf(&node);
    if (kind == FltNodeKind::Face) return fltGetRecord(&node, face_);
    if (static_cast<std::uint16_t>(kind) != kMesh) return false;
    // A mesh has four reserved bytes behind its name, and is otherwise like a face.
    constexpr std::size_t kReserved = 12, kReservedEnd = 16;
    const Kept kept = keptOn(node);
    if (kept.bead.size() < kReservedEnd) return false;
    record_.assign(kept.bead.begin(), kept.bead.begin() + kReserved);
    record_.insert(record_.end(), kept.bead.begin() + kReservedEnd, kept.bead.end());
    record_[1] = kFltFace;
    FltToken token;
    token.attach(record_.data(), static_cast<std::int32_t>(record_.size()));
    face_.readToken(token, kept.revision);
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
    forEachPiece(keptOn(header).pieces, [&](const RecordWalk& walk, bool opaque) {
        const FileBytes record = walk.record();
        if (opaque) return;
        if (walk.opcode() == kFltMaterial && record.size() >= kMaterialAlphaEnd) {
            const Material material{
                colorAt(record, kMaterialAmbient), colorAt(record, kMaterialDiffuse),
                colorAt(record, kMaterialEmissive), shareAt(record, kMaterialAlpha)};
            database.materials.emplace(static_cast<std::int32_t>(uint32At(record, kMaterialIndex)),
                                       material);
        } else if (walk.opcode() == kFltTexture && record.size() >= kTextureIndexEnd) {
            database.textures.emplace(static_cast<std::int32_t>(uint32At(record, kTextureIndex)),
                                      textOf(record.subspan(kRecordHeader, kTextureNameLength)));
        }
    });
    return database;
}

void NodeLooks::describe(INode& node, const Family& family, NodeLook& look) const {
    constexpr std::uint8_t kFixedBlended = 1, kAxisBlended = 2, kPointBlended = 4;
    look.lit = isLit(face_.lightMode);
    const bool hasColor =
        (face_.flags & FltFace::kPackedColors) != 0 || (face_.flags & kFaceNoColor) == 0;
    look.vertexColors =
        !hasColor || face_.lightMode == kVertexColor || face_.lightMode == kLitByVertexColor;
    KilnFace options;
    look.vertexNormals =
        look.lit && (!fltGetOptions(&node, options) || options.useHostNormals != 0);
    look.white = face_.textureWhite != 0;
    look.blended = face_.billboard == kFixedBlended || face_.billboard == kAxisBlended ||
                   face_.billboard == kPointBlended;
    look.opacity = 1 - static_cast<float>(face_.transparency) / kFullTransparency;
    look.layer =
        std::clamp(family.layer + std::max<int>(face_.relativePriority, 0), 0, kMostLayers);
    look.picture = pictureOf(node, family.database);
    if (family.database == nullptr) return;
    const auto material = family.database->materials.find(face_.materialIndex);
    if (material == family.database->materials.end()) return;
    look.opacity *= material->second.alpha;
    if (!look.lit) return;
    look.ambient = material->second.ambient;
    look.diffuse = material->second.diffuse;
    look.emissive = material->second.emissive;
}

/// The record says which picture a face has, unless its picture was made in the scene.
const char* NodeLooks::pictureOf(INode& node, const Database* database) const {
    Texmap* const map = node.GetTexmap();
    if (map != nullptr && map->ClassID() == BMTEX_CLASS_ID &&
        keptChunk(*map, KeptChunk::records).empty()) {
        return static_cast<const BitmapTex*>(map)->GetMapName();
    }
    if (database == nullptr) return nullptr;
    const auto texture = database->textures.find(face_.textureIndex);
    return texture == database->textures.end() ? nullptr : texture->second.c_str();
}

}  // namespace interchange
