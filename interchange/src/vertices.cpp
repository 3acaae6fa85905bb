#include "vertices.h"
#include "texts.h"

#include "colors.h"

#include <fltkilnutil/vertextails.h>
#include <kiln/mesh.h>
#include <quillon/fltrecordbytes.h>
#include <quillon/flttoken.h>
#include <quillon/fltvertex.h>
#include <quillon/fltvertexedit.h>

#include <algorithm>
#include <stdexcept>

using fltkilnutil::vertexTailAt, fltkilnutil::vertexTailColorPlace, fltkilnutil::vertexTailHeadSize;

namespace interchange {

namespace {

bool has(const FltVertexView::Layout::Place& place, std::size_t length) noexcept {
    return place.begin != place.end && length >= place.end;
}

}  // namespace

void VertexTails::clear() noexcept {
    bytes_.clear();
    starts_.clear();
    recordOf_ = kNone;
}

/// An entry for the vertex, as far as it is kept.
void VertexTails::appendTail(FileBytes vertex) {
    if (bytes_.size() > 0xFFFFFFFF) throw std::length_error(text(TextId::kManyMeshVertices));
    starts_.push_back(static_cast<std::uint32_t>(bytes_.size()));
    const FileBytes kept = vertex.first(std::min(vertex.size(), kLongestVertex));
    record_.assign(kept.begin(), kept.end());
    fltStateLength(record_);
    const std::size_t color =
        std::min(vertexTailColorPlace(fltRecordHead(vertex).opcode), record_.size());
    const auto head = FileBytes(record_).first(vertexTailHeadSize());
    const auto rest = FileBytes(record_).subspan(color);
    bytes_.insert(bytes_.end(), head.begin(), head.end());
    bytes_.insert(bytes_.end(), rest.begin(), rest.end());
}

FileBytes VertexTails::tail(std::size_t index) const noexcept {
    const std::size_t start = starts_[index];
    const std::size_t end = index + 1 < starts_.size() ? starts_[index + 1] : bytes_.size();
    return FileBytes(bytes_).subspan(start, end - start);
}

FileBytes VertexTails::bytesFor(const Mesh& mesh, bool lit, std::span<const FileBytes> vertices) {
    if (vertices.empty()) return {};
    if (isMade(mesh, lit, vertices)) return {};
    clear();
    for (const FileBytes vertex : vertices) appendTail(vertex);
    return bytes_;
}

/// Whether the exporter makes such vertices from the mesh alone, but for their coordinates.
bool VertexTails::isMade(const Mesh& mesh, bool lit, std::span<const FileBytes> vertices) {
    recordOf_ = kNone;
    const FileBytes made = ownVertex(lit || !mesh.normals.IsEmpty(), !mesh.tVerts.IsEmpty());
    const std::size_t color = vertexTailColorPlace(fltRecordHead(made).opcode);
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const FileBytes read = vertices[i];
        if (read.size() != made.size()) return false;
        record_.assign(made.begin(), made.end());
        if (!mesh.colors.IsEmpty()) setVertexColor(record_, mesh.colors[static_cast<int>(i)]);
        const FileBytes expected = record_;
        if (!std::ranges::equal(read.first(vertexTailHeadSize()),
                                expected.first(vertexTailHeadSize())) ||
            !std::ranges::equal(read.subspan(color), expected.subspan(color))) {
            return false;
        }
    }
    return true;
}

void VertexTails::read(FileBytes bytes, const Mesh& mesh) {
    clear();
    bytes_.assign(bytes.begin(), bytes.end());
    std::size_t at = 0;
    for (;;) {
        const FileBytes entry = vertexTailAt(bytes.subspan(at));
        if (entry.empty()) break;
        starts_.push_back(static_cast<std::uint32_t>(at));
        at += entry.size();
    }
    if (at != bytes.size() || !fits(mesh)) clear();
}

/// Whether these can be the tails of the mesh's vertices, which may have changed meanwhile.
bool VertexTails::fits(const Mesh& mesh) const noexcept {
    const auto count = static_cast<std::size_t>(mesh.verts.Count());
    if (starts_.size() != 1 && starts_.size() != count) return false;
    bool normals = false;
    bool textures = false;
    for (std::size_t i = 0; i < starts_.size(); ++i) {
        const FltRecordHead head = fltRecordHead(tail(i));
        const FltVertexView::Layout& layout = FltVertexView::layoutOf(head.opcode);
        normals = normals || has(layout.normal, head.length);
        textures = textures || has(layout.texture, head.length);
    }
    return normals == !mesh.normals.IsEmpty() && textures == !mesh.tVerts.IsEmpty();
}

/// A vertex as the exporter makes it from a mesh without colors, padded to a multiple of 8.
FileBytes VertexTails::ownVertex(bool withNormal, bool withTexture) {
    std::vector<std::uint8_t>& bytes = own_[(withNormal ? 2U : 0U) + (withTexture ? 1U : 0U)];
    if (bytes.empty()) {
        FltVertex vertex(withNormal, withTexture);
        vertex.colorNameIndex = 0;
        FltToken token;
        vertex.writeToken(token, 0);
        token.finish();
        bytes.assign(token.data(), token.data() + token.length());
    }
    return bytes;
}

/// The record of an entry with zeros for coordinates. It may end before its color, and then has
/// bytes behind its end, up to there.
FileBytes VertexTails::keptVertex(std::size_t index) {
    if (recordOf_ == index) return record_;
    const FileBytes entry = tail(index);
    const FltRecordHead head = fltRecordHead(entry);
    record_.assign(std::max<std::size_t>(head.length, vertexTailColorPlace(head.opcode)), 0);
    std::ranges::copy(entry.first(vertexTailHeadSize()), record_.begin());
    std::ranges::copy(
        entry.subspan(vertexTailHeadSize()),
        record_.begin() + static_cast<std::ptrdiff_t>(vertexTailColorPlace(head.opcode)));
    recordOf_ = index;
    return record_;
}

void VertexTails::appendVertex(const Mesh& mesh, std::uint32_t index, const Point3f* texture,
                               const Point3f* normal, const FltColorPalette& colorPalette,
                               std::vector<std::uint8_t>& bytes) {
    const auto at = static_cast<int>(index);
    if (!mesh.normals.IsEmpty()) normal = mesh.normals.Addr(at);
    const FileBytes prototype = starts_.empty() ? ownVertex(normal != nullptr, texture != nullptr)
                                                : keptVertex(starts_.size() == 1 ? 0 : index);
    const std::size_t start = bytes.size();
    bytes.insert(bytes.end(), prototype.begin(), prototype.end());
    const FltRecordHead head = fltRecordHead(prototype);
    const FltVertexView::Layout& layout = FltVertexView::layoutOf(head.opcode);
    FltVertexEdit edit(&bytes[start], layout);
    const Point3& position = mesh.verts[at];
    edit.position({position.x, position.y, position.z});
    if (layout.normal.begin != layout.normal.end && normal != nullptr) {
        edit.normal({normal->x, normal->y, normal->z});
    }
    if (layout.texture.begin != layout.texture.end && texture != nullptr) {
        edit.texture({texture->x, texture->y});
    }
    bytes.resize(start + head.length);
    if (mesh.colors.IsEmpty()) return;
    const COLORREF color = mesh.colors[at];
    const auto record = std::span(bytes).subspan(start);
    if (starts_.empty() ||
        vertexColor(FltVertexView(record), colorPalette).value_or(kVertexWhite) != color) {
        setVertexColor(record, color);
    }
}

}  // namespace interchange
