#include "nodebytes.h"

#include <cstring>

#include "chunks.h"
#include "node.h"

namespace kiln {

namespace {

template <typename T>
std::size_t bytesOf(const Tab<T>& items) noexcept {
    return static_cast<std::size_t>(items.Count()) * sizeof(T);
}

std::size_t bytesOfExtras(const Animatable& thing) noexcept {
    std::size_t bytes = 0;
    forEachChunk(thing,
                 [&](const AppDataChunk& chunk) { bytes += sizeof(HeldChunk) + chunk.length; });
    const ICustAttribContainer* const attributes = thing.GetCustAttribContainer();
    for (int i = 0; attributes && i < attributes->GetNumCustAttribs(); ++i)
        bytes += sizeof(CustAttrib) + bytesOfExtras(*attributes->GetCustAttrib(i));
    return bytes;
}

std::size_t bytesOf(const Object& object) noexcept {
    std::size_t bytes = sizeof object + bytesOfExtras(object);
    if (const auto* const tri = dynamic_cast<const TriObject*>(&object)) {
        const Mesh& mesh = tri->GetMesh();
        bytes += sizeof mesh + bytesOf(mesh.verts) + bytesOf(mesh.faces) + bytesOf(mesh.tVerts) +
                 bytesOf(mesh.tvFaces) + bytesOf(mesh.normals) + bytesOf(mesh.colors);
    } else if (const auto* const spline = dynamic_cast<const SplineShape*>(&object)) {
        bytes += bytesOf(spline->GetPoints());
    }
    return bytes;
}

}  // namespace

std::size_t bytesOf(const INode& node) noexcept {
    const Object* const object = node.GetObjectRef();
    const bool isOwn = object && object->NumReferences() == 1;
    return sizeof(Node) + std::strlen(node.GetName()) + bytesOfExtras(node) +
           (isOwn ? bytesOf(*object) : 0);
}

}  // namespace kiln
