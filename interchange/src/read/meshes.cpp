#include "meshes.h"

#include "../colors.h"

#include <kiln/mesh.h>

#include <algorithm>

namespace interchange {

namespace {

void addVertex(const FltPoolVertex& vertex, std::uint32_t mask, const FltColorPalette& colors,
               Mesh& mesh) {
    constexpr COLORREF kWhite = 0xFFFFFF;
    mesh.verts.Append(Point3{vertex.position.x, vertex.position.y, vertex.position.z});
    if (mask & kFltPoolPackedColor) {
        mesh.colors.Append(vertex.color & 0xFFFFFF);  // without alpha it is the host's
    } else if (mask & kFltPoolColorIndex) {
        mesh.colors.Append(indexedColor(vertex.color, colors).value_or(kWhite));
    }
    if (mask & kFltPoolNormal) {
        mesh.normals.Append(Point3f(vertex.normal.x, vertex.normal.y, vertex.normal.z));
    }
    if (mask & kFltPoolBaseTexture) {
        mesh.tVerts.Append(Point3f(vertex.texture[0].u, vertex.texture[0].v, 0));
    }
}

}  // namespace

void MeshReader::read(const FileIndex& file, const FileNode& source, const FltColorPalette& colors,
                      Mesh& mesh) {
    const AttachedRange attached = file.attachedTo(source);
    for (auto entry = attached.begin(); entry != attached.end();) {
        const FltRecordView record = file.recordAt(entry->record);
        const bool isOpaque = entry->children == kNone;
        ++entry;
        const std::uint16_t opcode = record.opcode();
        if (isOpaque || (opcode != kFltLocalVertexPool && opcode != kFltMeshPrimitive)) continue;
        // What does not fit one record goes on in those behind it.
        body_.assign(record.body().begin(), record.body().end());
        for (; entry != attached.end(); ++entry) {
            const FltRecordView more = file.recordAt(entry->record);
            if (more.opcode() != kFltContinuation) break;
            body_.insert(body_.end(), more.body().begin(), more.body().end());
        }
        if (opcode == kFltMeshPrimitive) {
            readPrimitive(mesh);
        } else if (mesh.verts.IsEmpty()) {
            readPool(colors, mesh);
        }
    }
    if (!mesh.tVerts.IsEmpty()) {
        for (const Face& face : mesh.faces)
            mesh.tvFaces.Append({{face.v[0], face.v[1], face.v[2]}});
    }
}

void MeshReader::readPool(const FltColorPalette& colors, Mesh& mesh) {
    pool_.readBody(body_);
    if ((pool_.mask & kFltPoolPosition) == 0) return;
    mesh.verts.Resize(static_cast<int>(pool_.vertices.size()));
    for (const FltPoolVertex& vertex : pool_.vertices) {
        addVertex(vertex, pool_.mask, colors, mesh);
    }
}

void MeshReader::readPrimitive(Mesh& mesh) {
    primitive_.readBody(body_);
    const auto vertices = static_cast<std::uint32_t>(mesh.verts.Count());
    const std::vector<std::uint32_t>& indices = primitive_.indices;
    if (std::ranges::any_of(indices, [&](std::uint32_t index) { return index >= vertices; }))
        return;
    switch (primitive_.type) {
        case FltPrimitiveType::kTriangleStrip:
            for (std::size_t i = 2; i < indices.size(); ++i) {
                const bool isOdd = i % 2 != 0;
                addTriangle(mesh, indices[isOdd ? i - 1 : i - 2], indices[isOdd ? i - 2 : i - 1],
                            indices[i], EDGE_ALL);
            }
            break;
        case FltPrimitiveType::kTriangleFan:
            for (std::size_t i = 2; i < indices.size(); ++i) {
                addTriangle(mesh, indices[0], indices[i - 1], indices[i], EDGE_ALL);
            }
            break;
        case FltPrimitiveType::kQuadStrip:
            for (std::size_t i = 3; i < indices.size(); i += 2) {
                addTriangle(mesh, indices[i - 3], indices[i - 2], indices[i], EDGE_A | EDGE_B);
                addTriangle(mesh, indices[i - 3], indices[i], indices[i - 1], EDGE_B | EDGE_C);
            }
            break;
        case FltPrimitiveType::kPolygon:
            addPolygon(mesh);
            break;
        default:
            break;
    }
}

void MeshReader::addPolygon(Mesh& mesh) {
    const std::vector<std::uint32_t>& indices = primitive_.indices;
    corners_.clear();
    for (const std::uint32_t index : indices) {
        corners_.push_back(mesh.verts[static_cast<int>(index)]);
    }
    for (const Triangle& triangle : triangulator_.cut(corners_)) {
        Face face = faceOf(triangle);
        for (DWORD& corner : face.v) corner = indices[corner];
        mesh.faces.Append(face);
    }
}

void MeshReader::addTriangle(Mesh& mesh, std::uint32_t a, std::uint32_t b, std::uint32_t c,
                             std::uint32_t edges) {
    mesh.faces.Append(Face{{a, b, c}, static_cast<DWORD>(edges)});
}

}  // namespace interchange
