#include "scenecollector.h"

#include "../lights.h"

#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <kiln/kiln.h>
#include <quillon/fltface.h>
#include <quillon/fltheader.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltvertex.h>

#include <cmath>
#include <numeric>

namespace interchange {

namespace {

/// The mesh that a node's object is or becomes.
class MeshOf {
public:
    explicit MeshOf(INode& node) : converted_(node.EvalWorldState(0).obj, 0, TRIOBJ_CLASS_ID) {}

    /// Null when there is none, or one that contradicts itself.
    const Mesh* get() const {
        if (converted_.get() == nullptr) return nullptr;
        const Mesh& mesh = static_cast<const TriObject*>(converted_.get())->GetMesh();
        return mesh.IsConsistent() ? &mesh : nullptr;
    }

private:
    ConvertedObject converted_;
};

/// The direction that a polygon faces; (0, 0, 0) for one without area.
Point3f normalOf(const Mesh& mesh, std::span<const std::uint32_t> corners) {
    const auto corner = [&](std::size_t i) { return mesh.verts[static_cast<int>(corners[i])]; };
    Point3 sum;
    for (std::size_t i = 2; i < corners.size(); ++i) {
        sum = sum + CrossProd(corner(i - 1) - corner(0), corner(i) - corner(0));
    }
    const Point3 normal = Normalize(sum);
    return std::isfinite(normal.x + normal.y + normal.z) ? Point3f(normal) : Point3f();
}

}  // namespace

void SceneCollector::collect() {
    content_.palettes.read(nodes_.kept(plan_.nodes.front()));
    const auto count = static_cast<std::uint32_t>(plan_.nodes.size());
    for (std::uint32_t i = 0; i < count; ++i) {
        progress_.tell(i);
        if (plan_.nodes[i].node != nullptr) collectNode(i);
    }
}

void SceneCollector::collectNode(std::uint32_t index) {
    const PlanNode& node = plan_.nodes[index];
    const SourceRecords& kept = nodes_.kept(node);
    collectKept(kept);
    collectLosses(node);
    if (hasOwnList(node.kind) || (nodes_.hasClass(node.kind) && fltIsFaceObject(node.node))) {
        collectMesh(index, kept.revision != 0);
    }
    if (node.kind == FltNodeKind::LightSource) collectLight(index);
    if (node.kind == FltNodeKind::Face) collectTexture(index);
}

void SceneCollector::collectKept(const SourceRecords& kept) {
    for (const SourceRecord& entry : kept.attached) {
        if (FltVertex::isVertex(entry.record.opcode())) content_.vertices.add(entry.record.bytes());
        content_.losses.record(entry.record.opcode());
    }
}

void SceneCollector::collectLosses(const PlanNode& node) {
    if (!content_.losses.mayHappen()) return;
    content_.losses.record(static_cast<std::uint16_t>(node.kind));
    if (node.kind == FltNodeKind::Face) {
        content_.losses.face(nodes_.recordAs<FltFace>(node));
    } else if (node.kind == FltNodeKind::Header) {
        content_.losses.header(nodes_.recordAs<FltHeader>(node));
    }
}

// ------------------------------------------------------------ meshes

void SceneCollector::collectMesh(std::uint32_t index, bool wasRead) {
    const PlanNode& node = plan_.nodes[index];
    const MeshOf object(*node.node);
    const Mesh* mesh = object.get();
    if (mesh == nullptr) return;
    content_.polygons.begin(index);
    KilnFace options;
    const bool hasOptions = fltGetOptions(node.node, options);
    Mesh plain;
    if (hasOptions && options.useHostNormals == 0 && !mesh->normals.IsEmpty()) {
        plain = *mesh;
        plain.normals.ZeroCount();
        mesh = &plain;
    }
    tails_.read(sourceChunk(*node.node, SourceChunk::corners), *mesh);
    if (fltIsLightPoint(static_cast<std::uint16_t>(node.kind))) return collectPoints(*mesh);
    collectPolygons(node, *mesh, hasOptions && options.keepTriangles != 0);
    if (!wasRead && isNewMesh(node, *mesh, options)) {
        content_.newFaces.emplace(index, newFaceOf(*node.node, *mesh, options, content_.palettes));
    }
}

/// Points, which are the corners of one polygon in a file.
void SceneCollector::collectPoints(const Mesh& mesh) {
    std::vector<std::uint32_t> all(static_cast<std::size_t>(mesh.verts.Count()));
    std::iota(all.begin(), all.end(), 0U);
    const bool textured = mesh.tVerts.Count() == mesh.verts.Count();
    const auto textures = textured ? all : std::vector<std::uint32_t>();
    if (!all.empty()) collectPolygon(mesh, all, textures, nullptr);
}

void SceneCollector::collectPolygons(const PlanNode& node, const Mesh& mesh, bool keepTriangles) {
    const bool needsNormals = mesh.normals.IsEmpty() && isLitMesh(node);
    meshPolygons_.find(mesh, keepTriangles);
    for (std::size_t i = 0; i < meshPolygons_.count(); ++i) {
        const auto corners = meshPolygons_.corners(i);
        const Point3f normal = needsNormals ? normalOf(mesh, corners) : Point3f();
        collectPolygon(mesh, corners, meshPolygons_.textures(i), needsNormals ? &normal : nullptr);
    }
}

void SceneCollector::collectPolygon(const Mesh& mesh, std::span<const std::uint32_t> corners,
                                    std::span<const std::uint32_t> textures,
                                    const Point3f* normal) {
    vertexBytes_.clear();
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Point3f* const texture =
            textures.empty() ? nullptr : mesh.tVerts.Addr(static_cast<int>(textures[i]));
        tails_.appendVertex(mesh, corners[i], texture, normal, content_.palettes.colors(),
                            vertexBytes_);
    }
    vertices_.clear();
    for (const FltRecordView vertex : FltRecordRange(vertexBytes_)) {
        vertices_.push_back(content_.vertices.consider(vertex.bytes()));
    }
    for (const auto& vertex : vertices_) content_.polygons.addCorner(content_.vertices.add(vertex));
    content_.polygons.end();
}

/// Whether the node, which was not read, says more about its faces than their record.
bool SceneCollector::isNewMesh(const PlanNode& node, const Mesh& mesh, const KilnFace& options) {
    if (!fltHasRecord(node.node) || options.useMaterial != 0 || options.superFace != 0) return true;
    if (!mesh.colors.IsEmpty() || node.node->GetWireColor() == DEFAULT_WIRE_COLOR) return false;
    return node.kind != FltNodeKind::Face || isColorless(nodes_.recordAs<FltFace>(node));
}

/// Whether lights shine on the faces of the node's mesh: those without a record are lit.
bool SceneCollector::isLitMesh(const PlanNode& node) {
    if (!fltHasRecord(node.node)) return true;
    return node.kind == FltNodeKind::Face && fltIsLit(nodes_.recordAs<FltFace>(node).lightMode);
}

// ------------------------------------------------------------ palette entries

void SceneCollector::collectLight(std::uint32_t index) {
    const PlanNode& node = plan_.nodes[index];
    const auto& record = nodes_.recordAs<FltLightSource>(node);
    KilnLight options;
    if (!fltGetOptions(node.node, options)) {
        const auto* const light = dynamic_cast<const GenLight*>(node.node->EvalWorldState(0).obj);
        if (light == nullptr) return;
        options.palette = paletteFor(*light);
    } else if (options.palette.paletteIndex < 0 && record.paletteIndex >= 0 &&
               !content_.palettes.hasLight(record.paletteIndex)) {
        return;  // it named an entry that was never there
    }
    const std::int32_t used = content_.palettes.light(record.paletteIndex, options.palette);
    if (used != record.paletteIndex) content_.lights[index] = used;
}

/// The record says which picture a face has, unless its picture was made in the scene.
void SceneCollector::collectTexture(std::uint32_t index) {
    const PlanNode& node = plan_.nodes[index];
    Texmap* const map = node.node->GetTexmap();
    if (map == nullptr || map->ClassID() != BMTEX_CLASS_ID) return;
    const std::int16_t named = nodes_.recordAs<FltFace>(node).textureIndex;
    const bool imported = !sourceChunk(*map, SourceChunk::records).empty();
    if (imported && (named < 0 || content_.palettes.hasTexture(named))) return;
    const std::int32_t used = content_.palettes.texture(static_cast<BitmapTex*>(map)->GetMapName());
    if (used != named) content_.textures[index] = used;
}

}  // namespace interchange
