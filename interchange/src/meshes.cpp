#include "meshes.h"

#include "colors.h"
#include "opcodes.h"

#include <kiln/mesh.h>

#include <algorithm>
#include <bit>

namespace interchange {

namespace {

constexpr std::size_t kBody = 4;
constexpr std::size_t kPoolHead = 8;       // vertex count, attribute mask
constexpr std::size_t kPrimitiveHead = 8;  // type, index size, index count

// Bits of the attribute mask, in the order in which a vertex has them.
constexpr std::uint32_t kPosition = 0x80000000;
constexpr std::uint32_t kColorIndex = 0x40000000;
constexpr std::uint32_t kPackedColor = 0x20000000;
constexpr std::uint32_t kNormal = 0x10000000;
constexpr std::uint32_t kBaseTexture = 0x08000000;
constexpr std::uint32_t kAllTextures = 0x0FF00000;

constexpr std::uint16_t kTriangleStrip = 1;
constexpr std::uint16_t kTriangleFan = 2;
constexpr std::uint16_t kQuadStrip = 3;
constexpr std::uint16_t kPolygon = 4;

/// The size of a pool's vertex.
std::size_t strideOf(std::uint32_t mask) {
    return (mask & kPosition ? 24U : 0U) + (mask & (kColorIndex | kPackedColor) ? 4U : 0U) +
           (mask & kNormal ? 12U : 0U) +
           8U * static_cast<unsigned>(std::popcount(mask & kAllTextures));
}

}  // namespace

void MeshReader::read(FileBytes bytes, const Outline& outline, const OutlineNode& source,
                      FileBytes colorPalette, Mesh& mesh) {
    for (std::uint32_t i = source.firstPiece; i != kNone;) {
        const OutlinePiece& piece = outline.pieces[i];
        const std::uint16_t opcode = uint16At(bytes, piece.record);
        i = piece.next;
        if (piece.children == kNone || (opcode != kLocalVertexPool && opcode != kMeshPrimitive)) {
            continue;
        }
        // What does not fit one record goes on in those behind it.
        const FileBytes first = recordAt(bytes, piece.record).subspan(kBody);
        joined_.assign(first.begin(), first.end());
        for (; i != kNone && uint16At(bytes, outline.pieces[i].record) == kContinuation;
             i = outline.pieces[i].next) {
            const FileBytes more = recordAt(bytes, outline.pieces[i].record).subspan(kBody);
            joined_.insert(joined_.end(), more.begin(), more.end());
        }
        if (opcode == kMeshPrimitive) {
            readPrimitive(joined_, mesh);
        } else if (mesh.verts.IsEmpty()) {
            readPool(joined_, colorPalette, mesh);
        }
    }
    if (!mesh.tVerts.IsEmpty()) {
        for (const Face& face : mesh.faces)
            mesh.tvFaces.Append({{face.v[0], face.v[1], face.v[2]}});
    }
}

void MeshReader::readPool(FileBytes pool, FileBytes colorPalette, Mesh& mesh) {
    if (pool.size() < kPoolHead) return;
    const std::uint32_t mask = uint32At(pool, 4);
    if (!(mask & kPosition)) return;
    const std::size_t stride = strideOf(mask);
    const std::size_t count =
        std::min<std::size_t>(uint32At(pool, 0), (pool.size() - kPoolHead) / stride);
    mesh.verts.Resize(static_cast<int>(count));
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t at = kPoolHead + i * stride;
        mesh.verts.Append(
            Point3{float64At(pool, at), float64At(pool, at + 8), float64At(pool, at + 16)});
        at += 24;
        if (mask & (kColorIndex | kPackedColor)) {
            const std::uint32_t value = uint32At(pool, at);
            mesh.colors.Append(mask & kPackedColor
                                   ? static_cast<COLORREF>(value & 0xFFFFFF)
                                   : indexedColor(value, colorPalette).value_or(0xFFFFFF));
            at += 4;
        }
        if (mask & kNormal) {
            mesh.normals.Append(
                Point3f(float32At(pool, at), float32At(pool, at + 4), float32At(pool, at + 8)));
            at += 12;
        }
        if (mask & kBaseTexture) {
            mesh.tVerts.Append(Point3f(float32At(pool, at), float32At(pool, at + 4), 0));
        }
    }
}

void MeshReader::readPrimitive(FileBytes primitive, Mesh& mesh) {
    if (primitive.size() < kPrimitiveHead) return;
    const std::uint16_t size = uint16At(primitive, 2);
    if (size != 1 && size != 2 && size != 4) return;
    const std::size_t count =
        std::min<std::size_t>(uint32At(primitive, 4), (primitive.size() - kPrimitiveHead) / size);
    const auto vertices = static_cast<std::uint32_t>(mesh.verts.Count());
    indices_.clear();
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = kPrimitiveHead + i * size;
        const std::uint32_t index = size == 1   ? primitive[at]
                                    : size == 2 ? uint16At(primitive, at)
                                                : uint32At(primitive, at);
        if (index >= vertices) return;
        indices_.push_back(index);
    }
    switch (uint16At(primitive, 0)) {
        case kTriangleStrip:
            for (std::size_t i = 2; i < count; ++i) {
                const bool odd = i % 2 != 0;
                addTriangle(mesh, indices_[odd ? i - 1 : i - 2], indices_[odd ? i - 2 : i - 1],
                            indices_[i], EDGE_ALL);
            }
            break;
        case kTriangleFan:
            for (std::size_t i = 2; i < count; ++i) {
                addTriangle(mesh, indices_[0], indices_[i - 1], indices_[i], EDGE_ALL);
            }
            break;
        case kQuadStrip:
            for (std::size_t i = 3; i < count; i += 2) {
                addTriangle(mesh, indices_[i - 3], indices_[i - 2], indices_[i], EDGE_A | EDGE_B);
                addTriangle(mesh, indices_[i - 3], indices_[i], indices_[i - 1], EDGE_B | EDGE_C);
            }
            break;
        case kPolygon:
            addPolygon(mesh);
            break;
        default:
            break;
    }
}

void MeshReader::addPolygon(Mesh& mesh) {
    corners_.clear();
    for (const std::uint32_t index : indices_) {
        corners_.push_back(mesh.verts[static_cast<int>(index)]);
    }
    for (const Triangle& triangle : triangulator_.cut(corners_)) {
        addTriangle(mesh, indices_[triangle.corner[0]], indices_[triangle.corner[1]],
                    indices_[triangle.corner[2]],
                    (triangle.outline[0] ? EDGE_A : 0) | (triangle.outline[1] ? EDGE_B : 0) |
                        (triangle.outline[2] ? EDGE_C : 0));
    }
}

void MeshReader::addTriangle(Mesh& mesh, std::uint32_t a, std::uint32_t b, std::uint32_t c,
                             std::uint32_t edges) {
    mesh.faces.Append(Face{{a, b, c}, static_cast<DWORD>(edges)});
}

}  // namespace interchange
