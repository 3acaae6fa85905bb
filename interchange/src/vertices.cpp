#include "vertices.h"

#include "bytes.h"
#include "colors.h"
#include "kept.h"

#include <kiln/mesh.h>
#include <quillon/fltvertex.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace interchange {

namespace {

// An entry: opcode, length, colour name, flags (16 bits each), then what stands behind coordinates.
constexpr std::size_t kEntryHead = 8;

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
    put16(tail + 6, std::uint16_t{color != nullptr ? kFltVertexPackedColor : kFltVertexNoColor});
    put32(tail + 8, color != nullptr ? packedColorOf(*color) : 0xFFFFFFFF);
    put32(tail + 12, 0xFFFFFFFF);
    return entrySize(opcode, length);
}

}  // namespace

void VertexTails::clear() noexcept {
    bytes_.clear();
    starts_.clear();
}

void VertexTails::append(FileBytes vertex) {
    vertex = vertex.first(std::min(vertex.size(), kLongestVertex));
    const std::size_t color = packedColorOffset(uint16At(vertex, 0));
    const std::size_t start = bytes_.size();
    if (start > 0xFFFFFFFF) throw std::length_error("a mesh has too many vertices");
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

FileBytes VertexTails::bytesFor(const Mesh& mesh, bool lit, std::span<const FileBytes> vertices) {
    if (vertices.empty()) return {};
    clear();
    for (const FileBytes vertex : vertices) append(vertex);
    const std::uint16_t kind = kindOf(lit || !mesh.normals.IsEmpty(), !mesh.tVerts.IsEmpty());
    for (std::size_t i = 0; i < starts_.size(); ++i) {
        const COLORREF* const color =
            mesh.colors.IsEmpty() ? nullptr : mesh.colors.Addr(static_cast<int>(i));
        std::uint8_t made[24];
        const std::size_t size = ownTail(kind, color, made);
        if (!std::ranges::equal(tail(i), FileBytes(made, size))) return bytes_;
    }
    return {};
}

void VertexTails::read(FileBytes bytes, const Mesh& mesh) {
    bytes_.assign(bytes.begin(), bytes.end());
    starts_.clear();
    std::size_t at = 0;
    while (bytes.size() - at >= kEntryHead) {
        const std::uint16_t opcode = uint16At(bytes, at);
        const std::size_t size = entrySize(opcode, uint16At(bytes, at + 2));
        if (!FltVertex::isVertex(opcode) || uint16At(bytes, at + 2) < kVertexNormal ||
            size > bytes.size() - at) {
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
        normals = normals || (isWithNormal(opcode) && length >= kVertexNormal + kVertexNormalSize);
        textures = textures ||
                   (isWithTexture(opcode) && length >= vertexTexture(opcode) + kVertexTextureSize);
    }
    return normals == !mesh.normals.IsEmpty() && textures == !mesh.tVerts.IsEmpty();
}

FileBytes VertexTails::vertex(const Mesh& mesh, std::uint32_t index, const Point3f* texture,
                              const Point3f* normal, const FltColorPalette& colorPalette) {
    const auto at = static_cast<int>(index);
    if (!mesh.normals.IsEmpty()) normal = mesh.normals.Addr(at);
    const COLORREF* const color = mesh.colors.IsEmpty() ? nullptr : mesh.colors.Addr(at);
    std::uint8_t made[24];
    FileBytes entry;
    if (starts_.empty()) {
        entry = {made, ownTail(kindOf(normal != nullptr, texture != nullptr), color, made)};
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
    putFloat64(bytes + kVertexPosition, position.x);
    putFloat64(bytes + kVertexPosition + 8, position.y);
    putFloat64(bytes + kVertexPosition + 16, position.z);
    if (isWithNormal(opcode) && normal != nullptr) {
        putFloat32(bytes + kVertexNormal, normal->x);
        putFloat32(bytes + kVertexNormal + 4, normal->y);
        putFloat32(bytes + kVertexNormal + 8, normal->z);
    }
    if (isWithTexture(opcode) && texture != nullptr) {
        putFloat32(bytes + vertexTexture(opcode), texture->x);
        putFloat32(bytes + vertexTexture(opcode) + 4, texture->y);
    }
    record_.resize(uint16At(entry, 2));
    if (color != nullptr &&
        vertexColor(FltVertexView(record_), colorPalette).value_or(kVertexWhite) != *color) {
        setVertexColor(record_, *color);
    }
    return record_;
}

}  // namespace interchange
