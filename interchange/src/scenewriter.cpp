#include "scenewriter.h"

#include "bytes.h"
#include "layouts.h"
#include "lights.h"
#include "names.h"
#include "opcodes.h"
#include "transforms.h"

#include <base/text.h>
#include <diagnostics/assertion.h>
#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <interchange/import.h>
#include <interchange/textencoding.h>
#include <kiln/kiln.h>
#include <quillon/fltface.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltrevision.h>
#include <quillon/flttext.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace interchange {

namespace {

constexpr std::size_t kBody = 4;
constexpr std::size_t kNodesPerReport = 256;

/// A mesh that an object is or becomes; freed again in the latter case.
class MeshOf {
public:
    explicit MeshOf(INode& node) : object_(node.EvalWorldState(0).obj) {
        if (object_ == nullptr || !object_->CanConvertToType(TRIOBJ_CLASS_ID)) return;
        converted_ = object_->ConvertToType(0, TRIOBJ_CLASS_ID);
    }
    ~MeshOf() {
        if (converted_ != nullptr && converted_ != object_) converted_->DeleteThis();
    }
    MeshOf(const MeshOf&) = delete;
    MeshOf& operator=(const MeshOf&) = delete;

    /// Null when there is none, or one that contradicts itself.
    const Mesh* get() const {
        if (converted_ == nullptr) return nullptr;
        const Mesh& mesh = static_cast<const TriObject*>(converted_)->GetMesh();
        return mesh.IsConsistent() ? &mesh : nullptr;
    }

private:
    Object* object_;
    Object* converted_ = nullptr;
};

bool isLightPoint(FltNodeKind kind) {
    return interchange::isLightPoint(static_cast<std::uint16_t>(kind));
}

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

bool hasOwnList(FltNodeKind kind) {
    return kind == FltNodeKind::Face || isLightPoint(kind);
}

/// The levels of a node that hold nodes, as its pieces have them.
struct KeptLevels {
    struct Level {
        std::uint16_t opcode;
        std::uint32_t children;
    };
    std::vector<Level> levels;  ///< in the order in which they begin
    bool hasList = false;       ///< whether there is a vertex list in one of them
    std::uint32_t children = 0;

    explicit KeptLevels(FileBytes pieces) {
        std::vector<std::size_t> open;
        forEachPiece(pieces, [&](const RecordWalk& walk, bool opaque) {
            if (opaque) return;
            if (fltClosingOpcode(walk.opcode()) != 0) {
                open.push_back(levels.size());
                levels.push_back({walk.opcode(), 0});
            } else if (fltIsPop(walk.opcode())) {
                levels[open.back()].children = uint32At(walk.record(), kBody);
                open.pop_back();
            } else if (isVertexList(walk.opcode())) {
                hasList = true;
            }
        });
        for (const Level& level : levels) {
            // Beyond what any scene has the sum is no more than wrong.
            children = level.children > kNone - children ? kNone : children + level.children;
        }
    }

    /// The first level that `opcode` begins; `kNone` when there is none.
    std::uint32_t first(std::uint16_t opcode) const {
        const auto found = std::ranges::find(levels, opcode, &Level::opcode);
        return found == levels.end() ? kNone : static_cast<std::uint32_t>(found - levels.begin());
    }
};

std::string idOf(FltRecord& record) {
    const char* const id = record.id();
    if (id == nullptr) return {};
    return textOf({reinterpret_cast<const std::uint8_t*>(id), 8});
}

}  // namespace

SceneWriter::SceneWriter(const Plan& plan, ImpExpReport& report, std::uint32_t revision)
    : plan_(plan),
      report_(report),
      revision_(revision != 0 ? revision : fltNearestWritable(sourceRevision())),
      losses_(revision_, sourceRevision()),
      polygons_(plan.nodes.size()) {
    palettes_.read(keptFor(plan.nodes.front()));
}

void SceneWriter::tellProgress(std::uint32_t index, double start) {
    if (index % kNodesPerReport != 0) return;
    const double done = static_cast<double>(index) / static_cast<double>(plan_.nodes.size());
    if (!report_.Progress(start + done / 2, "Writing the file")) throw Cancelled();
}

// ------------------------------------------------------------ collecting

void SceneWriter::collect() {
    const auto count = static_cast<std::uint32_t>(plan_.nodes.size());
    for (std::uint32_t i = 0; i < count; ++i) {
        tellProgress(i, 0);
        if (plan_.nodes[i].node != nullptr) collectNode(i);
    }
}

void SceneWriter::collectNode(std::uint32_t index) {
    const PlanNode& node = plan_.nodes[index];
    collectKept(keptFor(node));
    collectLosses(node);
    const bool hasClass = records_.of(static_cast<std::uint16_t>(node.kind)) != nullptr;
    if (hasOwnList(node.kind) || (hasClass && fltIsFaceObject(node.node))) collectMesh(index);
    if (node.kind == FltNodeKind::LightSource) collectLight(index);
    if (node.kind == FltNodeKind::Face) collectTexture(index);
}

void SceneWriter::collectMesh(std::uint32_t index) {
    const PlanNode& node = plan_.nodes[index];
    polygons_[index].first = static_cast<std::uint32_t>(polygonEnds_.size());
    const MeshOf object(*node.node);
    const Mesh* mesh = object.get();
    if (mesh == nullptr) return;
    KilnFace options;
    const bool hasOptions = fltGetOptions(node.node, options);
    Mesh plain;
    if (hasOptions && options.useHostNormals == 0 && !mesh->normals.IsEmpty()) {
        plain = *mesh;
        plain.normals.ZeroCount();
        mesh = &plain;
    }
    tails_.read(keptChunk(*node.node, KeptChunk::corners), *mesh);
    if (isLightPoint(node.kind)) {
        std::vector<std::uint32_t> all(static_cast<std::size_t>(mesh->verts.Count()));
        for (std::uint32_t i = 0; i < all.size(); ++i) all[i] = i;
        const bool textured = mesh->tVerts.Count() == mesh->verts.Count();
        const auto textures = textured ? all : std::vector<std::uint32_t>();
        if (!all.empty()) collectPolygon(*mesh, false, all, textures);
    } else {
        const bool lit = isLitMesh(node);
        meshPolygons_.find(*mesh, hasOptions && options.keepTriangles != 0);
        for (std::size_t i = 0; i < meshPolygons_.count(); ++i) {
            collectPolygon(*mesh, lit, meshPolygons_.corners(i), meshPolygons_.textures(i));
        }
    }
    polygons_[index].count =
        static_cast<std::uint32_t>(polygonEnds_.size()) - polygons_[index].first;
    if (!isLightPoint(node.kind) && isNewMesh(node, *mesh, options)) {
        newFaces_.emplace(index, newFaceOf(*node.node, *mesh, options, palettes_));
    }
}

/// Whether the node says more about its faces than their record. What was read says it all there.
bool SceneWriter::isNewMesh(const PlanNode& node, const Mesh& mesh, const KilnFace& options) {
    if (keptFor(node).revision != 0) return false;
    if (!fltHasRecord(node.node) || options.useMaterial != 0 || options.superFace != 0) return true;
    if (!mesh.colors.IsEmpty() || node.node->GetWireColor() == DEFAULT_WIRE_COLOR) return false;
    return node.kind != FltNodeKind::Face ||
           isColorless(static_cast<const FltFace&>(*recordOf(node)));
}

/// Whether lights shine on the faces of the node's mesh: those without a record are lit.
bool SceneWriter::isLitMesh(const PlanNode& node) {
    if (!fltHasRecord(node.node)) return true;
    return node.kind == FltNodeKind::Face &&
           isLit(static_cast<const FltFace&>(*recordOf(node)).lightMode);
}

void SceneWriter::collectPolygon(const Mesh& mesh, bool lit, std::span<const std::uint32_t> corners,
                                 std::span<const std::uint32_t> textures) {
    polygonBytes_.clear();
    const Point3f normal = normalOf(mesh, corners);
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Point3f* const texture =
            textures.empty() ? nullptr : mesh.tVerts.Addr(static_cast<int>(textures[i]));
        const FileBytes vertex =
            tails_.vertex(mesh, corners[i], texture, lit ? &normal : nullptr, palettes_.colors());
        polygonBytes_.insert(polygonBytes_.end(), vertex.begin(), vertex.end());
    }
    polygonVertices_.clear();
    for (RecordWalk walk(polygonBytes_); walk.next();) {
        polygonVertices_.push_back(vertices_.consider(walk.record()));
    }
    for (const auto& vertex : polygonVertices_) corners_.push_back(vertices_.add(vertex));
    polygonEnds_.push_back(static_cast<std::uint32_t>(corners_.size()));
}

void SceneWriter::collectKept(const Kept& kept) {
    for (RecordWalk walk(kept.pieces); walk.next();) {
        if (isVertex(walk.opcode())) vertices_.add(walk.record());
        losses_.record(walk.opcode());
    }
}

void SceneWriter::collectLosses(const PlanNode& node) {
    losses_.record(static_cast<std::uint16_t>(node.kind));
    if (node.kind == FltNodeKind::Face) {
        losses_.face(static_cast<const FltFace&>(*recordOf(node)));
    } else if (node.kind == FltNodeKind::Header) {
        losses_.header(static_cast<const FltHeader&>(*recordOf(node)));
    }
}

void SceneWriter::collectLight(std::uint32_t index) {
    const PlanNode& node = plan_.nodes[index];
    const auto& record = static_cast<const FltLightSource&>(*recordOf(node));
    KilnLight options;
    if (!fltGetOptions(node.node, options)) {
        const auto* const light = dynamic_cast<const GenLight*>(node.node->EvalWorldState(0).obj);
        if (light == nullptr) return;
        options.palette = paletteFor(*light);
    } else if (options.palette.paletteIndex < 0 && record.paletteIndex >= 0 &&
               !palettes_.hasLight(record.paletteIndex)) {
        return;  // it named an entry that was never there
    }
    const std::int32_t used = palettes_.light(record.paletteIndex, options.palette);
    if (used != record.paletteIndex) lightIndices_[index] = used;
}

/// The record says which picture a face has, unless its picture was made in the scene.
void SceneWriter::collectTexture(std::uint32_t index) {
    const PlanNode& node = plan_.nodes[index];
    Texmap* const map = node.node->GetTexmap();
    if (map == nullptr || map->ClassID() != BMTEX_CLASS_ID) return;
    const auto& record = static_cast<const FltFace&>(*recordOf(node));
    const bool imported = !keptChunk(*map, KeptChunk::records).empty();
    if (imported && (record.textureIndex < 0 || palettes_.hasTexture(record.textureIndex))) return;
    const std::int32_t used = palettes_.texture(static_cast<BitmapTex*>(map)->GetMapName());
    if (used != record.textureIndex) textureIndices_[index] = used;
}

// ------------------------------------------------------------ records

/// What is kept for the node as the kind that it is now.
Kept SceneWriter::keptFor(const PlanNode& node) const {
    if (node.node == nullptr) return {};
    const Kept kept = keptOn(*node.node);
    const bool isOther =
        !kept.bead.empty() && uint16At(kept.bead, 0) != static_cast<std::uint16_t>(node.kind);
    return isOther ? Kept() : kept;
}

/// The node's record, or a new one; null for a kind without a class.
FltRecord* SceneWriter::recordOf(const PlanNode& node) {
    const auto opcode = static_cast<std::uint16_t>(node.kind);
    FltRecord* const record = records_.of(opcode);
    if (record == nullptr || (node.node != nullptr && fltGetRecord(node.node, *record))) {
        return record;
    }
    return records_.fresh(opcode);
}

/// The format revision of the database.
std::uint32_t SceneWriter::sourceRevision() {
    return static_cast<const FltHeader&>(*recordOf(plan_.nodes.front())).revision();
}

FltHeader SceneWriter::header() {
    auto& header = static_cast<FltHeader&>(*recordOf(plan_.nodes.front()));
    header.formatRevision = static_cast<std::int32_t>(revision_);
    return header;
}

/// The header in the length that it was read with, and padded when that is another one. What comes
/// to differ while the file is written, in counters that a short header does not have, stays out.
FileBytes SceneWriter::layOutHeader(const FltHeader& header) {
    constexpr std::size_t kAlignment = 8;
    const Kept kept = keptFor(plan_.nodes.front());
    const FileBytes bytes = merger_.put(header, header.revision(), kept.bead, kept.revision);
    std::size_t length = header_.size();
    if (length == 0) length = bytes.size();
    if (length != kept.bead.size()) length = (length + kAlignment - 1) / kAlignment * kAlignment;
    header_.assign(bytes.begin(), bytes.end());
    header_.resize(length);
    diagnostics::check(length <= 0xFFFF, "scenewriter", 262);
    put16(&header_[2], static_cast<std::uint16_t>(length));
    return header_;
}

void SceneWriter::writeBead(std::uint32_t index, const Kept& kept, Changes& changes) {
    const PlanNode& node = plan_.nodes[index];
    FltRecord* const record = recordOf(node);
    if (record == nullptr) {
        decidePlace(node, kept, changes);
        stream_->writeVerbatim(kept.bead);
        name_ = nameInRecord(kept.bead);
        return;
    }
    if (node.kind == FltNodeKind::LightSource) {
        decideLight(index, kept, static_cast<FltLightSource&>(*record), changes);
    } else {
        decidePlace(node, kept, changes);
    }
    if (const auto texture = textureIndices_.find(index); texture != textureIndices_.end()) {
        static_cast<FltFace&>(*record).textureIndex = static_cast<std::int16_t>(texture->second);
    }
    const bool isFace = node.kind == FltNodeKind::Face;
    if (isFace && kept.revision == 0) {
        writeFace(static_cast<FltFace&>(*record), index);
    } else if (kept.revision == 0) {
        record->write(*stream_);
    } else if (kept.bead.empty() && !isFace) {
        // One that came without a name goes without.
        record->writeToken(stream_->token(), stream_->revision());
        stream_->writeToken(stream_->token());
    } else {
        stream_->writeVerbatim(merger_.put(*record, stream_->revision(), kept.bead, kept.revision));
    }
    name_ = idOf(*record);
}

// ------------------------------------------------------------ places

void SceneWriter::decidePlace(const PlanNode& node, const Kept& kept, Changes& changes) const {
    const Matrix3 place = placeInFile(plan_, node);
    changes.keepsTransforms = place == keptPlace(kept);
    if (!changes.keepsTransforms) changes.matrix = place;
}

/// A light's position and direction are in its record as well as in the scene. Those that were not
/// edited follow the scene.
void SceneWriter::decideLight(std::uint32_t index, const Kept& kept, FltLightSource& light,
                              Changes& changes) {
    if (const auto used = lightIndices_.find(index); used != lightIndices_.end()) {
        light.paletteIndex = used->second;
    }
    const FltRecord* const read = merger_.base(kept.bead, kept.revision);
    const FltLightSource before =
        read != nullptr ? static_cast<const FltLightSource&>(*read) : FltLightSource();
    const Matrix3 place = placeInFile(plan_, plan_.nodes[index]);
    const Matrix3 further = keptPlace(kept);
    changes.keepsTransforms = place == placeOf(before) * further || !hasSamePlace(light, before);
    if (changes.keepsTransforms) return;
    if (further.IsIdentity() && moveTo(light, place)) {
        changes.keepsTransforms = true;
    } else {
        changes.matrix = Inverse(placeOf(light)) * place;
    }
}

// ------------------------------------------------------------ what follows a record

void SceneWriter::decideTexts(const PlanNode& node, const Kept& kept, Changes& changes) {
    CommentText comments;
    forEachPiece(kept.pieces, [&](const RecordWalk& walk, bool opaque) {
        if (opaque) return;
        if (walk.opcode() == kFltLongId) {
            const std::string longId = textOf(walk.body());
            if (!changes.hasLongId && !longId.empty()) name_ = longId;
            changes.hasLongId = true;
        } else if (walk.opcode() == kFltComment) {
            comments.add(walk.body());
            changes.hasComments = true;
        } else if (isTransform(walk.opcode())) {
            changes.hasTransforms = true;
        }
    });
    const std::string name = node.node->GetName();
    changes.keepsLongId = name == name_ || name == kept.givenName;
    if (!changes.keepsLongId && !name.empty()) changes.longId = name;
    std::string comment;
    static_cast<void>(fltGetComment(node.node, comment));
    changes.keepsComments = comment == comments.result();
    if (!changes.keepsComments && !comment.empty()) changes.comment = comment;
}

/// Writes what has no place among the pieces that were read.
void SceneWriter::writeChanges(Changes& changes) {
    if (changes.longId && !changes.hasLongId) writeLongId(changes);
    if (changes.comment && !changes.hasComments) writeComment(changes);
    if (changes.matrix && !changes.hasTransforms) writeMatrix(changes);
}

void SceneWriter::writeText(std::uint16_t opcode, std::string_view text) {
    text = base::clipUtf8(text, kLongestComment);
    FltToken& token = stream_->token();
    token.begin(opcode);
    token.writeBytes(static_cast<std::uint32_t>(text.size()), text.data());
    token.writeInt8(std::uint8_t{0});
    stream_->writeToken(token);
}

void SceneWriter::writeLongId(Changes& changes) {
    if (changes.longId) writeText(kFltLongId, *changes.longId);
    changes.longId.reset();
}

void SceneWriter::writeComment(Changes& changes) {
    if (changes.comment) writeText(kFltComment, *changes.comment);
    changes.comment.reset();
}

void SceneWriter::writeMatrix(Changes& changes) {
    if (changes.matrix) writeMatrix(*changes.matrix);
    changes.matrix.reset();
}

void SceneWriter::writeMatrix(const Matrix3& matrix) {
    list_.clear();
    putPlace(matrix, list_);
    for (RecordWalk walk(list_); walk.next();) stream_->writeVerbatim(walk.record());
}

/// A piece that is no level and no vertex list, or what has taken its place.
void SceneWriter::writePiece(FileBytes piece, Changes& changes) {
    const std::uint16_t opcode = uint16At(piece, 0);
    if (opcode == kFltLongId && !changes.keepsLongId) {
        writeLongId(changes);
    } else if (opcode == kFltComment && !changes.keepsComments) {
        writeComment(changes);
    } else if (isTransform(opcode) && !changes.keepsTransforms) {
        writeMatrix(changes);
    } else if (opcode == kFltVertexPalette) {
        writePalettes();
    } else if (opcode == kFltLightSourcePalette) {
        palettes_.write(*stream_, piece);
    } else if (opcode != kFltUvList || fitsList(piece)) {
        stream_->writeVerbatim(piece);
    }
}

/// Whether a list of texture coordinates has them for each corner of the list before it.
bool SceneWriter::fitsList(FileBytes uvList) const {
    constexpr std::size_t kFirst = 8;
    constexpr std::size_t kPair = 8;
    if (uvList.size() < kFirst) return true;
    const auto layers = static_cast<std::size_t>(std::popcount(uint32At(uvList, kBody)));
    const std::size_t one = layers * kPair * listCorners_;
    return uvList.size() == kFirst + one || uvList.size() == kFirst + 2 * one;
}

// ------------------------------------------------------------ levels

void SceneWriter::writeEmpty(std::uint16_t opcode) {
    std::uint8_t record[4];
    put16(record, opcode);
    put16(record + 2, sizeof record);
    stream_->writeVerbatim(record);
}

void SceneWriter::push(FileBytes record) {
    if (++depth_ > kDeepestLevel) {
        throw ExportError("levels nest deeper than " + std::to_string(kDeepestLevel));
    }
    stream_->writeVerbatim(record);
}

void SceneWriter::push(std::uint16_t opcode) {
    std::uint8_t record[4];
    put16(record, opcode);
    put16(record + 2, sizeof record);
    push(record);
}

void SceneWriter::pop(std::uint16_t opcode) {
    writeEmpty(opcode);
    --depth_;
}

void SceneWriter::writeBody(std::uint32_t index, const Kept& kept, Changes& changes) {
    const PlanNode& node = plan_.nodes[index];
    const KeptLevels levels(kept.pieces);
    const bool isFace = node.kind == FltNodeKind::Face;
    const std::uint16_t childLevel = isFace ? kFltPushSubface : kFltPushLevel;
    Body body;
    body.index = index;
    body.nextChild = index + 1;
    body.levelForAll = levels.children == node.children ? kNone : levels.first(childLevel);
    body.isFace = isFace;
    body.moved = levels.children != node.children;
    body.lacksList = hasOwnList(node.kind) && polygons_[index].count != 0 && !levels.hasList;
    body.lacksFaces = !hasOwnList(node.kind) && polygons_[index].count != 0;
    writeKeptPieces(body, kept, changes);
    if (node.kind == FltNodeKind::Header) writePalettes();
    if (body.lacksList && isFace) writeLevel(body, kFltPushLevel);
    if (body.lacksList || body.lacksFaces || body.nextChild != node.end) {
        writeLevel(body, childLevel);
    }
    if (!isFace || polygons_[index].count < 2) return;
    const bool areSubfaces = isSuperFace(index);
    if (areSubfaces) push(kFltPushSubface);
    writeFaces(index, 1);
    if (areSubfaces) pop(kFltPopSubface);
}

void SceneWriter::writeLevel(Body& body, std::uint16_t opcode) {
    push(opcode);
    writeMissing(body, opcode);
    if (opcode != kFltPushLevel || plan_.nodes[body.index].kind != FltNodeKind::Face) {
        writeChildren(body, plan_.nodes[body.index].children);
    }
    pop(fltClosingOpcode(opcode));
}

/// What the pieces that were read have no place for: the corners, or faces of a mesh that hangs on
/// a node of another kind.
void SceneWriter::writeMissing(Body& body, std::uint16_t opcode) {
    if (opcode != kFltPushLevel) return;
    if (body.lacksList) writeCorners(polygon(body.index, 0));
    if (body.lacksFaces) writeFaces(body.index, 0);
    body.lacksList = body.lacksFaces = false;
}

void SceneWriter::writeKeptPieces(Body& body, const Kept& kept, Changes& changes) {
    std::vector<std::uint32_t> open;
    std::vector<std::uint32_t> vertices;
    std::uint32_t begun = 0;
    forEachPiece(kept.pieces, [&](const RecordWalk& walk, bool opaque) {
        const std::uint16_t opcode = walk.opcode();
        if (isVertex(opcode)) {
            vertices.push_back(vertices_.add(walk.record()));
        } else if (isVertexList(opcode) || (opcode == kContinuation && !vertices.empty())) {
            writeKeptList(body, walk.record(), vertices, opaque);
            vertices.clear();
        } else if (fltClosingOpcode(opcode) != 0) {
            if (!opaque && plan_.nodes[body.index].kind == FltNodeKind::Header) writePalettes();
            push(walk.record());
            if (opaque) return;
            open.push_back(begun++);
            writeMissing(body, opcode);
        } else if (fltIsPop(opcode)) {
            if (!opaque) {
                const std::uint32_t level = open.back();
                open.pop_back();
                writeKeptChildren(body, level, uint32At(walk.record(), kBody));
            }
            pop(opcode);
        } else if (opaque) {
            stream_->writeVerbatim(walk.record());
        } else {
            writePiece(walk.record(), changes);
        }
    });
}

/// The children of a level that was read. When there are more or fewer children than were read
/// nobody knows which belong where, and all go into one level.
void SceneWriter::writeKeptChildren(Body& body, std::uint32_t level, std::uint32_t children) {
    if (!body.moved) {
        writeChildren(body, children);
    } else if (level == body.levelForAll) {
        writeChildren(body, plan_.nodes[body.index].children);
    }
}

void SceneWriter::writeChildren(Body& body, std::uint32_t count) {
    for (; count != 0 && body.nextChild < plan_.nodes[body.index].end; --count) {
        const std::uint32_t child = body.nextChild;
        body.nextChild = plan_.nodes[child].end;
        if (!body.isFace && hasFacesOfItsOwn(child)) {
            writeNewMesh(child);
        } else {
            writeNode(child);
        }
    }
}

/// The faces of a node's mesh from polygon `first` on, which have no node of their own.
void SceneWriter::writeFaces(std::uint32_t index, std::uint32_t first) {
    const PlanNode& node = plan_.nodes[index];
    for (std::uint32_t i = first; i < polygons_[index].count; ++i) {
        FltFace face;
        if (node.kind == FltNodeKind::Face) {
            face = static_cast<const FltFace&>(*recordOf(node));
            const auto texture = textureIndices_.find(index);
            if (texture != textureIndices_.end()) {
                face.textureIndex = static_cast<std::int16_t>(texture->second);
            }
            std::ranges::fill(face.asciiId, '\0');
            const Kept kept = keptFor(node);
            settlePackedColors(face,
                               static_cast<const FltFace*>(merger_.base(kept.bead, kept.revision)));
        }
        writeFace(face, index);
        if (first != 0 && node.kind == FltNodeKind::Face && !isSuperFace(index)) {
            // They stand beside the node's own face, whose transform does not reach them.
            const Matrix3 place = placeInFile(plan_, node);
            if (!place.IsIdentity()) writeMatrix(place);
        }
        push(kFltPushLevel);
        writeCorners(polygon(index, i));
        pop(kFltPopLevel);
    }
}

/// A face of the node's mesh, which gets a name if it has none; one that was not read looks as its
/// node does.
void SceneWriter::writeFace(FltFace& face, std::uint32_t index) {
    if (face.asciiId[0] == '\0') {
        const std::int16_t number = stream_->header().nextFaceId++;
        fltSetText(face.asciiId, std::string(1, 'f').append(std::to_string(number)));
    }
    const auto found = newFaces_.find(index);
    const NewFace look = found == newFaces_.end() ? NewFace() : found->second;
    stream_->writeVerbatim(layOutNewFace(face, look, stream_->revision(), list_));
}

bool SceneWriter::isSuperFace(std::uint32_t index) const {
    const auto found = newFaces_.find(index);
    return found != newFaces_.end() && found->second.isSuperFace;
}

// ------------------------------------------------------------ vertices

std::span<const std::uint32_t> SceneWriter::polygon(std::uint32_t index,
                                                    std::uint32_t number) const {
    const std::uint32_t at = polygons_[index].first + number;
    const std::uint32_t start = at == 0 ? 0 : polygonEnds_[at - 1];
    return std::span(corners_).subspan(start, polygonEnds_[at] - start);
}

void SceneWriter::writeCorners(std::span<const std::uint32_t> corners) {
    listCorners_ = corners.size();
    writeOffsets(kFltVertexList, corners);
}

/// A vertex list that was read, over `vertices`, which stood before it. The node's own one has the
/// corners of its mesh, when that has any.
void SceneWriter::writeKeptList(Body& body, FileBytes list, std::span<const std::uint32_t> vertices,
                                bool opaque) {
    const std::uint16_t opcode = uint16At(list, 0);
    const bool isOwn = !opaque && !body.hadList && opcode != kContinuation &&
                       hasOwnList(plan_.nodes[body.index].kind);
    body.hadList = body.hadList || isOwn;
    if (!isOwn || polygons_[body.index].count == 0) {
        listCorners_ = vertices.size();
        writeOffsets(opcode, vertices);
        return;
    }
    const auto corners = polygon(body.index, 0);
    if (opcode != kFltMorphVertexList || vertices.size() != 2 * corners.size()) {
        writeCorners(corners);
        return;
    }
    // The mesh has the undisturbed corners.
    std::vector<std::uint32_t> pairs(vertices.begin(), vertices.end());
    for (std::size_t i = 0; i < corners.size(); ++i) pairs[2 * i] = corners[i];
    listCorners_ = corners.size();
    writeOffsets(opcode, pairs);
}

void SceneWriter::writeOffsets(std::uint16_t opcode, std::span<const std::uint32_t> offsets) {
    constexpr std::size_t kMost = 16'382;  // in one record, and even for the pairs of morphing
    do {
        const auto part = offsets.first(std::min(offsets.size(), kMost));
        offsets = offsets.subspan(part.size());
        const std::size_t length = kBody + 4 * part.size();
        list_.resize(length);
        put16(list_.data(), opcode);
        put16(list_.data() + 2, static_cast<std::uint16_t>(length));
        for (std::size_t i = 0; i < part.size(); ++i) put32(&list_[kBody + 4 * i], part[i]);
        stream_->writeVerbatim(list_);
        opcode = kContinuation;
    } while (!offsets.empty());
}

void SceneWriter::writePalettes() {
    if (std::exchange(palettesWritten_, true)) return;
    palettes_.writeNew(*stream_);
    if (vertices_.empty()) return;
    FltToken& token = stream_->token();
    token.begin(kFltVertexPalette);
    token.writeInt32(static_cast<std::uint32_t>(token.length() + 4 + vertices_.size()));
    stream_->writeToken(token);
    vertices_.forEachBlock([this](FileBytes records) {
        for (RecordWalk walk(records); walk.next();) stream_->writeVerbatim(walk.record());
    });
}

// ------------------------------------------------------------ nodes

void SceneWriter::write(FltStream& stream) {
    stream_ = &stream;
    const Kept kept = keptFor(plan_.nodes.front());
    Changes changes;
    name_ = idOf(stream.header());
    writeRest(0, kept, changes);
}

void SceneWriter::writeNode(std::uint32_t index) {
    tellProgress(index, 0.5);
    const Kept kept = keptFor(plan_.nodes[index]);
    Changes changes;
    writeBead(index, kept, changes);
    writeRest(index, kept, changes);
}

/// Whether the node stands for several faces, none of which was read and is the node itself.
bool SceneWriter::hasFacesOfItsOwn(std::uint32_t index) const {
    const PlanNode& node = plan_.nodes[index];
    return node.kind == FltNodeKind::Face && polygons_[index].count > 1 && !isSuperFace(index) &&
           keptFor(node).revision == 0;
}

/// A mesh that was made in the scene: an object with its polygons, or a group where more than faces
/// hangs below it.
void SceneWriter::writeNewMesh(std::uint32_t index) {
    tellProgress(index, 0.5);
    const PlanNode& node = plan_.nodes[index];
    bool onlyFaces = true;
    for (std::uint32_t i = index + 1; i < node.end; i = plan_.nodes[i].end) {
        onlyFaces = onlyFaces && plan_.nodes[i].kind == FltNodeKind::Face;
    }
    FltRecord& record = *records_.fresh(onlyFaces ? kFltObject : kFltGroup);
    Changes changes;
    decidePlace(node, {}, changes);
    record.write(*stream_);
    name_ = idOf(record);
    decideTexts(node, {}, changes);
    writeChanges(changes);
    Body body;
    body.index = index;
    body.nextChild = index + 1;
    push(kFltPushLevel);
    writeFaces(index, 0);
    writeChildren(body, node.children);
    pop(kFltPopLevel);
}

void SceneWriter::writeRest(std::uint32_t index, const Kept& kept, Changes& changes) {
    const PlanNode& node = plan_.nodes[index];
    if (node.node != nullptr) {
        if (node.kind == FltNodeKind::Header) {
            changes.keepsTransforms = node.node->GetLocalTM(0) == keptPlace(kept);
        }
        decideTexts(node, kept, changes);
        writeChanges(changes);
    }
    writeBody(index, kept, changes);
}

}  // namespace interchange
