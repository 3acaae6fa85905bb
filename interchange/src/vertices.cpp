#include "vertices.h"

#include "bytes.h"
#include "colors.h"
#include "kept.h"

#include <kiln/mesh.h>
#include <quillon/fltopcode.h>

#include <algorithm>
#include <new>

namespace interchange {

namespace {

constexpr std::size_t kPosition = 8;
constexpr std::size_t kNormal = 32;  // also the texture coordinates of vertices without a normal
constexpr std::size_t kNormalSize = 12;
constexpr std::size_t kTextureSize = 8;

// An entry: opcode, length, colour name, flags (16 bits each), then what stands behind coordinates.
constexpr std::size_t kEntryHead = 8;

bool isWithNormal(std::uint16_t opcode) {
    return opcode == kFltVertexWithNormal || opcode == kFltVertexWithTextureAndNormal;
}

bool isWithTexture(std::uint16_t opcode) {
    return opcode == kFltVertexWithTexture || opcode == kFltVertexWithTextureAndNormal;
}

std::size_t texturePlace(std::uint16_t opcode) {
    return isWithNormal(opcode) ? kNormal + kNormalSize : kNormal;
}

/// The size of an entry for a vertex of that kind and length.
std::size_t entrySize(std::uint16_t opcode, std::size_t length) {
    const std::size_t color = packedColorOffset(opcode);
    return kEntryHead + (length > color ? length - color : 0);
}

std::uint16_t kindOf(bool normal, bool texture) {
    if (texture) return normal ? kFltVertexWithTextureAndNormal : kFltVertexWithTexture;
    return normal ? kFltVertexWithNormal : kFltVertexWithColor;
}

/// The tail of a vertex that the exporter makes itself, with the colour of the mesh or without.
std::size_t ownTail(std::uint16_t opcode, const COLORREF* color, std::uint8_t (&tail)[24]) {
    // Those with a normal are padded to a multiple of 8.
    const std::size_t length = packedColorOffset(opcode) + (isWithNormal(opcode) ? 12 : 8);
    std::ranges::fill(tail, std::uint8_t{0});
    put16(tail, opcode);
    put16(tail + 2, static_cast<std::uint16_t>(length));
    put16(tail + 6, color != nullptr ? kVertexPackedColor : kVertexNoColor);
    put32(tail + 8, color != nullptr ? packedColorOf(*color) : 0xFFFFFFFF);
    put32(tail + 12, 0xFFFFFFFF);
    return entrySize(opcode, length);
}

}  // namespace

bool hasNormal(FileBytes vertex) noexcept {
    return isWithNormal(uint16At(vertex, 0)) && vertex.size() >= kNormal + kNormalSize;
}

bool hasTexture(FileBytes vertex) noexcept {
    const std::uint16_t opcode = uint16At(vertex, 0);
    return isWithTexture(opcode) && vertex.size() >= texturePlace(opcode) + kTextureSize;
}

Point3 positionOf(FileBytes vertex) noexcept {
    return {float64At(vertex, kPosition), float64At(vertex, kPosition + 8),
            float64At(vertex, kPosition + 16)};
}

Point3f normalOf(FileBytes vertex) noexcept {
    return {float32At(vertex, kNormal), float32At(vertex, kNormal + 4),
            float32At(vertex, kNormal + 8)};
}

Point3f textureOf(FileBytes vertex) noexcept {
    const std::size_t place = texturePlace(uint16At(vertex, 0));
    return {float32At(vertex, place), float32At(vertex, place + 4), 0};
}

std::size_t packedColorOffset(std::uint16_t opcode) noexcept {
    return texturePlace(opcode) + (isWithTexture(opcode) ? kTextureSize : 0);
}

void VertexTails::clear() noexcept {
    bytes_.clear();
    starts_.clear();
}

void VertexTails::append(FileBytes vertex) {
    vertex = vertex.first(std::min(vertex.size(), kLongestVertex));
    const std::size_t color = packedColorOffset(uint16At(vertex, 0));
    const std::size_t start = bytes_.size();
    if (start > 0xFFFFFFFF) throw std::bad_alloc();
    starts_.push_back(static_cast<std::uint32_t>(start));
    bytes_.insert(bytes_.end(), vertex.begin(), vertex.begin() + kEntryHead);
    put16(&bytes_[start + 2], static_cast<std::uint16_t>(vertex.size()));
    if (vertex.size() > color) {
        bytes_.insert(bytes_.end(), vertex.begin() + static_cast<std::ptrdiff_t>(color),
                      vertex.end());
    }
}

FileBytes VertexTails::tail(std::size_t index) const noexcept {
    const std::size_t start = starts_[index];
    const std::size_t end = index + 1 < starts_.size() ? starts_[index + 1] : bytes_.size();
    return FileBytes(bytes_).subspan(start, end - start);
}

FileBytes VertexTails::bytesFor(const Mesh& mesh) {
    if (starts_.empty()) return {};
    const std::uint16_t kind = kindOf(!mesh.normals.IsEmpty(), !mesh.tVerts.IsEmpty());
    bool alike = true;
    bool own = true;
    for (std::size_t i = 0; i < starts_.size() && (alike || own); ++i) {
        const COLORREF* const color =
            mesh.colors.IsEmpty() ? nullptr : mesh.colors.Addr(static_cast<int>(i));
        std::uint8_t made[24];
        const std::size_t size = ownTail(kind, color, made);
        own = own && std::ranges::equal(tail(i), FileBytes(made, size));
        alike = alike && std::ranges::equal(tail(i), tail(0));
    }
    if (own) return {};
    if (alike) bytes_.resize(tail(0).size());
    return bytes_;
}

void VertexTails::read(FileBytes bytes, const Mesh& mesh) {
    bytes_.assign(bytes.begin(), bytes.end());
    starts_.clear();
    std::size_t at = 0;
    while (bytes.size() - at >= kEntryHead) {
        const std::uint16_t opcode = uint16At(bytes, at);
        const std::size_t size = entrySize(opcode, uint16At(bytes, at + 2));
        if (!isVertex(opcode) || uint16At(bytes, at + 2) < kNormal || size > bytes.size() - at) {
            break;
        }
        starts_.push_back(static_cast<std::uint32_t>(at));
        at += size;
    }
    if (at != bytes.size() || !fits(mesh)) clear();
}

/// Whether these can be the tails of the mesh's vertices, which may have changed meanwhile.
bool VertexTails::fits(const Mesh& mesh) const noexcept {
    const auto count = static_cast<std::size_t>(mesh.verts.Count());
    if (starts_.size() != 1 && starts_.size() != count) return false;
    bool normals = false;
    bool textures = false;
    for (const std::uint32_t start : starts_) {
        const std::uint16_t opcode = uint16At(bytes_, start);
        const std::size_t length = uint16At(bytes_, start + 2);
        normals = normals || (isWithNormal(opcode) && length >= kNormal + kNormalSize);
        textures =
            textures || (isWithTexture(opcode) && length >= texturePlace(opcode) + kTextureSize);
    }
    return normals == !mesh.normals.IsEmpty() && textures == !mesh.tVerts.IsEmpty();
}

FileBytes VertexTails::vertex(const Mesh& mesh, std::uint32_t index, const Point3f* texture,
                              FileBytes colorPalette) {
    const auto at = static_cast<int>(index);
    const COLORREF* const color = mesh.colors.IsEmpty() ? nullptr : mesh.colors.Addr(at);
    std::uint8_t made[24];
    FileBytes entry;
    if (starts_.empty()) {
        entry = {made, ownTail(kindOf(!mesh.normals.IsEmpty(), texture != nullptr), color, made)};
    } else {
        entry = tail(starts_.size() == 1 ? 0 : index);
    }
    const std::uint16_t opcode = uint16At(entry, 0);
    const std::size_t colorPlace = packedColorOffset(opcode);
    record_.assign(std::max<std::size_t>(uint16At(entry, 2), colorPlace), 0);
    std::ranges::copy(entry.first(kEntryHead), record_.begin());
    std::ranges::copy(entry.subspan(kEntryHead),
                      record_.begin() + static_cast<std::ptrdiff_t>(colorPlace));
    std::uint8_t* const bytes = record_.data();
    const Point3& position = mesh.verts[at];
    putFloat64(bytes + kPosition, position.x);
    putFloat64(bytes + kPosition + 8, position.y);
    putFloat64(bytes + kPosition + 16, position.z);
    if (isWithNormal(opcode) && !mesh.normals.IsEmpty()) {
        const Point3f& normal = mesh.normals[at];
        putFloat32(bytes + kNormal, normal.x);
        putFloat32(bytes + kNormal + 4, normal.y);
        putFloat32(bytes + kNormal + 8, normal.z);
    }
    if (isWithTexture(opcode) && texture != nullptr) {
        putFloat32(bytes + texturePlace(opcode), texture->x);
        putFloat32(bytes + texturePlace(opcode) + 4, texture->y);
    }
    record_.resize(uint16At(entry, 2));
    if (color != nullptr && vertexColor(record_, colorPalette).value_or(kVertexWhite) != *color) {
        setVertexColor(record_, *color);
    }
    return record_;
}

}  // namespace interchange
