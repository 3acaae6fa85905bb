#include <interchange/import.h>
#include <interchange/textencoding.h>
#include <kiln/triangulator.h>

#include "colors.h"
#include "kept.h"
#include "layouts.h"
#include "lights.h"
#include "meshes.h"
#include "names.h"
#include "opcodes.h"
#include "transforms.h"
#include "vertices.h"

#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <quillon/fltface.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltheader.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltopcode.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <memory>
#include <new>
#include <span>
#include <utility>
#include <vector>

namespace interchange {

namespace {

constexpr std::size_t kBody = 4;

/// Whether `record` says what `written` says, which knows only the fields of our own. Zeros that
/// one has more than the other say nothing, unless they are more than padding: a longer record has
/// room for what we do not know.
bool saysNoMore(FileBytes record, FileBytes written) {
    constexpr std::size_t kAlignment = 8;
    const std::size_t padded = (written.size() + kAlignment - 1) / kAlignment * kAlignment;
    if (record.size() > padded) return false;
    const std::size_t common = std::min(record.size(), written.size());
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    return std::ranges::equal(record.first(common).subspan(kBody),
                              written.first(common).subspan(kBody)) &&
           std::ranges::all_of(record.subspan(common), isZero) &&
           std::ranges::all_of(written.subspan(common), isZero);
}

struct DeleteThis {
    template <typename T>
    void operator()(T* object) const noexcept {
        object->DeleteThis();
    }
};

/// Makes the nodes of one file, in file order, each below the one that it belongs to.
class SceneBuilder {
public:
    SceneBuilder(FileBytes bytes, const Outline& outline, ImpExpReport& report, Interface& host)
        : bytes_(bytes), outline_(outline), report_(report), host_(host) {}

    INode* build(const std::string& fileName) {
        const std::size_t dot = fileName.rfind('.');
        const std::string name = fileName.substr(0, dot == 0 ? fileName.npos : dot);
        nodes_.reserve(outline_.nodes.size());
        try {
            makeTextures();
            for (const OutlineNode& source : outline_.nodes) {
                tellProgress();
                makeNode(source, name);
            }
            if (!fileName.empty()) {
                const auto* const bytes = reinterpret_cast<const std::uint8_t*>(fileName.data());
                keepChunk(*nodes_.front(), KeptChunk::source, {bytes, fileName.size()});
            }
        } catch (...) {
            // The database's node takes all others along, but for one that is not linked yet.
            if (unlinked_ != nullptr) host_.DeleteNode(unlinked_);
            if (!nodes_.empty()) host_.DeleteNode(nodes_.front());
            for (const auto& [index, map] : textures_) host_.RemoveTexmap(map);
            throw;
        }
        return nodes_.front();
    }

private:
    void tellProgress() {
        constexpr std::size_t kNodesPerReport = 256;
        if (nodes_.size() % kNodesPerReport != 0) return;
        const auto done = static_cast<double>(nodes_.size());
        const auto all = static_cast<double>(outline_.nodes.size());
        if (!report_.Progress(done / all, "Building the scene")) throw Cancelled();
    }

    void makeNode(const OutlineNode& source, const std::string& databaseName) {
        const FltRecord* const record = readRecord(source);
        bool given = false;
        const std::string name = nameOf(source, databaseName, given);
        INode* node = createNode(source, record, name);
        if (source.parent != kNone) {
            if (!nodes_[source.parent]->AttachChild(node, false)) throw std::bad_alloc();
        }
        nodes_.push_back(node);
        unlinked_ = nullptr;
        place(*node, source, record);
        if (source.kind == kFltFace) dress(*node, static_cast<const FltFace&>(*record));
        store(*node, source, record);
        keep(*node, source, record, given ? name : std::string());
    }

    /// The record of a node, read at the file's revision; null for a kind without a class. One
    /// record object per kind serves all.
    FltRecord* readRecord(const OutlineNode& source) {
        if (source.kind >= records_.size()) return nullptr;
        std::unique_ptr<FltRecord>& record = records_[source.kind];
        if (!record) record = fltCreateFileRecord(source.kind);
        if (!record) return nullptr;
        const FileBytes bytes = recordAt(bytes_, source.record);
        token_.attach(bytes.data(), static_cast<std::int32_t>(bytes.size()));
        record->readToken(token_, outline_.revision);
        return record.get();
    }

    // ------------------------------------------------------------ names

    /// The node's name, and whether the file does not say it.
    std::string nameOf(const OutlineNode& source, const std::string& databaseName, bool& given) {
        if (source.longId != 0) {
            std::string name = textOf(bodyOf(source.longId));
            if (!name.empty()) return name;
        }
        std::string name = nameInRecord(recordAt(bytes_, source.record));
        if (source.kind == kFltHeader) {
            given = isNoDatabaseName(name) && !databaseName.empty();
            return given ? databaseName : name;
        }
        given = name.empty();
        return given ? defaultName(source.kind) : name;
    }

    FileBytes bodyOf(std::uint32_t record) const { return recordAt(bytes_, record).subspan(kBody); }

    std::string defaultName(std::uint16_t kind) {
        if (!nameMaker_) {
            nameMaker_.reset(host_.NewNameMaker(true));
            // A number always follows, as in the nodes that scripts create.
            for (const auto& prefix : kFltNamePrefixes) nameMaker_->AddName(prefix);
        }
        CStr name(fltNamePrefix(static_cast<FltNodeKind>(kind)));
        nameMaker_->MakeUniqueName(name);
        return name.str();
    }

    // ------------------------------------------------------------ objects

    INode* createNode(const OutlineNode& source, const FltRecord* record, const std::string& name) {
        std::unique_ptr<Object, DeleteThis> object(makeObject(source, record));
        unlinked_ = host_.CreateObjectNode(object.get(), name.c_str());
        if (unlinked_ == nullptr) throw std::bad_alloc();
        static_cast<void>(object.release());  // the node's now
        return unlinked_;
    }

    Object* makeObject(const OutlineNode& source, const FltRecord* record) {
        vertices_.clear();
        switch (source.kind) {
            case kFltFace:
                return makePolygon(source).release();
            case kFltLightPoint:
            case kIndexedLightPoint:
                return makePoints(source).release();
            case kFltLightSource:
                return makeLight(paletteOf(static_cast<const FltLightSource&>(*record)));
            case kMesh:
                return makeMesh(source);
            default:
                return new DummyObject;
        }
    }

    Object* makeMesh(const OutlineNode& source) {
        std::unique_ptr<TriObject, DeleteThis> object(new TriObject);
        meshReader_.read(bytes_, outline_, source, colorPalette_, object->GetMesh());
        return object.release();
    }

    std::unique_ptr<TriObject, DeleteThis> makePolygon(const OutlineNode& source) {
        std::unique_ptr<TriObject, DeleteThis> object(new TriObject);
        Mesh& mesh = object->GetMesh();
        takeVertices(source, [](FileBytes) { return true; });
        addVertices(mesh, featuresOf());
        cutPolygon(mesh);
        return object;
    }

    /// A mesh of nothing but vertices, with their colours.
    std::unique_ptr<TriObject, DeleteThis> makePoints(const OutlineNode& source) {
        std::unique_ptr<TriObject, DeleteThis> object(new TriObject);
        takeVertices(source, [](FileBytes vertex) { return isFinite(positionOf(vertex)); });
        Features features = featuresOf();
        features.colors = true;
        addVertices(object->GetMesh(), features);
        return object;
    }

    template <typename Wanted>
    void takeVertices(const OutlineNode& source, Wanted&& wanted) {
        vertices_.clear();
        for (const std::uint32_t offset : cornersOf(source)) {
            const FileBytes vertex = recordAt(bytes_, offset);
            if (wanted(vertex)) vertices_.push_back(vertex);
        }
        alike_ = areAlike(vertices_);
    }

    /// The vertices, or one that stands for all.
    std::span<const FileBytes> differentVertices() const {
        return std::span(vertices_).first(alike_ && !vertices_.empty() ? 1 : vertices_.size());
    }

    /// What at least one vertex of a node has beside its position.
    struct Features {
        bool normals = false;
        bool textures = false;
        bool colors = false;
    };

    Features featuresOf() const {
        Features features;
        for (const FileBytes vertex : differentVertices()) {
            features.normals = features.normals || hasNormal(vertex);
            features.textures = features.textures || hasTexture(vertex);
            features.colors = features.colors || vertexColor(vertex, colorPalette_).has_value();
        }
        return features;
    }

    void addVertices(Mesh& mesh, const Features& features) const {
        addToAll(mesh.verts, positionOf);
        if (features.normals) {
            addToAll(mesh.normals, [](FileBytes vertex) {
                return hasNormal(vertex) ? normalOf(vertex) : Point3f();
            });
        }
        if (features.textures) {
            addToAll(mesh.tVerts, [](FileBytes vertex) {
                return hasTexture(vertex) ? textureOf(vertex) : Point3f();
            });
        }
        if (features.colors) {
            addToAll(mesh.colors, [this](FileBytes vertex) {
                return vertexColor(vertex, colorPalette_).value_or(kVertexWhite);
            });
        }
    }

    /// Fills `list`, which is empty, with what `part` gives of each vertex.
    template <typename T, typename Part>
    void addToAll(Tab<T>& list, Part&& part) const {
        list.SetCount(static_cast<int>(vertices_.size()));
        std::ranges::transform(vertices_, list.begin(), part);
    }

    std::span<const std::uint32_t> cornersOf(const OutlineNode& source) const {
        return std::span(outline_.corners).subspan(source.firstCorner, source.cornerCount);
    }

    static bool isFinite(const Point3& point) {
        return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
    }

    /// Turns the corners into triangles. A polygon without area has none, and then no vertices
    /// either: nothing could show them.
    void cutPolygon(Mesh& mesh) {
        const auto count = static_cast<std::size_t>(mesh.verts.Count());
        const std::span<const Triangle> triangles =
            triangulator_.cut(std::span(std::as_const(mesh).verts.Addr(0), count));
        if (triangles.empty()) {
            mesh.Clear();
            vertices_.clear();
            return;
        }
        const auto faces = static_cast<int>(triangles.size());
        mesh.faces.Resize(faces);
        for (const Triangle& triangle : triangles) mesh.faces.Append(faceOf(triangle));
        if (mesh.tVerts.IsEmpty()) return;
        mesh.tvFaces.Resize(faces);
        for (const Triangle& triangle : triangles) {
            const auto& [a, b, c] = triangle.corner;
            mesh.tvFaces.Append(TVFace{{a, b, c}});
        }
    }

    static Face faceOf(const Triangle& triangle) {
        Face face;
        std::ranges::copy(triangle.corner, face.v);
        face.flags = (triangle.outline[0] ? EDGE_A : 0) | (triangle.outline[1] ? EDGE_B : 0) |
                     (triangle.outline[2] ? EDGE_C : 0);
        return face;
    }

    const FltLightSourcePalette& paletteOf(const FltLightSource& source) {
        if (lights_.empty()) readLights();
        const auto found = lights_.find(source.paletteIndex);
        return found == lights_.end() ? defaultLight_ : found->second;
    }

    void readLights() {
        for (const std::uint32_t offset : outline_.lights) {
            const FileBytes bytes = recordAt(bytes_, offset);
            token_.attach(bytes.data(), static_cast<std::int32_t>(bytes.size()));
            FltLightSourcePalette palette;
            palette.readToken(token_, outline_.revision);
            lights_.emplace(palette.paletteIndex, palette);
        }
    }

    /// A picture for each entry of the texture palette, marked as one that was read.
    void makeTextures() {
        constexpr std::size_t kNameLength = 200;
        constexpr std::size_t kIndex = kBody + kNameLength;
        for (const std::uint32_t offset : outline_.textures) {
            const FileBytes record = recordAt(bytes_, offset);
            if (record.size() < kIndex + 4) continue;
            const auto index = static_cast<std::int32_t>(uint32At(record, kIndex));
            if (textures_.contains(index)) continue;
            const std::string file = textOf(record.subspan(kBody, kNameLength));
            std::unique_ptr<BitmapTex, DeleteThis> map(new BitmapTex);
            map->SetMapName(file.c_str());
            map->SetName(file.substr(file.find_last_of("/\\") + 1).c_str());
            keepChunk(*map, KeptChunk::records, record.subspan(kIndex, 4));
            const auto place = textures_.emplace(index, map.get()).first;
            host_.AddTexmap(map.get());
            place->second = map.release();
        }
    }

    void dress(INode& node, const FltFace& face) {
        constexpr std::uint32_t kHidden = 0x04000000;
        if (const auto color = colorOf(face, colorPalette_)) node.SetWireColor(*color);
        if (face.flags & kHidden) node.Hide(true);
        const auto texture = textures_.find(face.textureIndex);
        if (texture != textures_.end()) node.SetTexmap(texture->second);
    }

    // ------------------------------------------------------------ places

    void place(INode& node, const OutlineNode& source, const FltRecord* record) {
        if (source.firstPiece == kNone && source.kind != kFltLightSource) return;
        TransformReader transforms;
        for (std::uint32_t i = source.firstPiece; i != kNone; i = outline_.pieces[i].next) {
            const OutlinePiece& piece = outline_.pieces[i];
            if (piece.children != kNone) transforms.take(recordAt(bytes_, piece.record));
        }
        Matrix3 transform = transforms.result();
        if (source.kind == kFltLightSource) {
            transform = placeOf(static_cast<const FltLightSource&>(*record)) * transform;
        }
        if (!transform.IsIdentity()) node.SetLocalTM(0, transform);
    }

    // ------------------------------------------------------------ OpenFlight data

    void store(INode& node, const OutlineNode& source, const FltRecord* record) {
        if (!fltEnsureKind(&node, static_cast<FltNodeKind>(source.kind), kFltRevision)) {
            throw std::bad_alloc();
        }
        if (record != nullptr && !putRecord(node, *record)) {
            throw FltFileError("damaged at byte offset " + std::to_string(source.record) +
                                   ": a record too long to be kept on a node",
                               source.record);
        }
        if (source.kind == kFltLightSource) {
            const KilnLight options =
                optionsOf(paletteOf(static_cast<const FltLightSource&>(*record)));
            if (!fltPutOptions(&node, options)) throw std::bad_alloc();
        }
        CommentText comment;
        for (std::uint32_t i = source.firstPiece; i != kNone; i = outline_.pieces[i].next) {
            const OutlinePiece& piece = outline_.pieces[i];
            if (piece.children != kNone && uint16At(bytes_, piece.record) == kFltComment) {
                comment.add(bodyOf(piece.record));
            }
        }
        const std::string& text = comment.result();
        if (!text.empty() && !fltPutComment(&node, text)) throw std::bad_alloc();
    }

    /// Scenes keep headers in a layout of their own.
    static bool putRecord(INode& node, const FltRecord& record) {
        if (record.opcode() != kFltHeader) return fltPutRecord(&node, record);
        return fltPutRecord(&node, FltHeader(static_cast<const FltHeader&>(record)));
    }

    // ------------------------------------------------------------ what else the file says

    void keep(INode& node, const OutlineNode& source, const FltRecord* record,
              const std::string& givenName) {
        const Mesh* const mesh = meshOf(node, source);
        if (mesh != nullptr) {
            const FileBytes tails =
                tails_.bytesFor(*mesh, isLitFace(source, record), differentVertices());
            if (!tails.empty()) keepChunk(node, KeptChunk::corners, tails);
        }
        const bool losesVertices =
            mesh != nullptr && static_cast<std::uint32_t>(mesh->verts.Count()) < source.cornerCount;
        const bool keepsBead = needsBead(source, record);
        // A header's record is always kept, which says nothing of how its program writes levels.
        const bool keepsAll = keepsBead && source.kind != kFltHeader;
        const bool keepsPieces = keepsAll || losesVertices || !isPlain(source);
        if (!keepsBead && givenName.empty() && !keepsPieces) return;
        kept_.begin(outline_.revision);
        if (keepsBead) kept_.bead(recordAt(bytes_, source.record));
        if (!givenName.empty()) kept_.givenName(givenName);
        if (keepsPieces) keepPieces(source, losesVertices);
        keepChunk(node, KeptChunk::records, kept_.bytes());
    }

    static bool isLitFace(const OutlineNode& source, const FltRecord* record) {
        return source.kind == kFltFace && isLit(static_cast<const FltFace&>(*record).lightMode);
    }

    static const Mesh* meshOf(INode& node, const OutlineNode& source) {
        if (source.kind != kFltFace && !isLightPoint(source.kind)) return nullptr;
        return &static_cast<TriObject*>(node.GetObjectRef())->GetMesh();
    }

    /// Whether the record says something that ours does not hold. A light source's is always kept,
    /// to tell a light that was moved in the scene from one whose position was edited, and a
    /// header's, which comes back in the length that it had.
    bool needsBead(const OutlineNode& source, const FltRecord* record) {
        if (record == nullptr || source.kind == kFltLightSource || source.kind == kFltHeader) {
            return true;
        }
        // Also where its packed colours are zeros, which is what a copy in the scene has for them.
        if (source.kind == kFltFace &&
            (static_cast<const FltFace&>(*record).flags & FltFace::kPackedColors) != 0) {
            return true;
        }
        record->writeToken(written_, outline_.revision);
        return !saysNoMore(recordAt(bytes_, source.record),
                           {written_.data(), std::size_t{written_.length()}});
    }

    /// Whether the node's pieces are those that export makes of the node without being told: a
    /// level for its children, or one for its corners.
    bool isPlain(const OutlineNode& source) const {
        if (source.plain) return true;
        std::uint32_t i = source.firstPiece;
        if (i == kNone) return true;
        const auto opcode = [&] { return uint16At(bytes_, outline_.pieces[i].record); };
        if (opcode() != kFltPushLevel) return false;
        i = outline_.pieces[i].next;
        const bool hasList = outline_.pieces[i].record == source.list;
        if (hasList) {
            if (opcode() == kFltMorphVertexList || source.cornerCount == 0) return false;
            i = outline_.pieces[i].next;
        }
        if (opcode() != kFltPopLevel || outline_.pieces[i].next != kNone) return false;
        const bool hasChildren = outline_.pieces[i].children != 0;
        return source.kind == kFltFace ? hasList && !hasChildren : hasList || hasChildren;
    }

    void keepPieces(const OutlineNode& source, bool losesVertices) {
        if (source.plain) {
            const FileBytes record = recordAt(bytes_, source.record);
            kept_.record(
                recordAt(bytes_, source.record + static_cast<std::uint32_t>(record.size())));
            keepList(recordAt(bytes_, source.list), true, losesVertices);
            kept_.marker(kFltPopLevel, 0);
            return;
        }
        std::size_t opaque = 0;  // depth within levels that hold no nodes
        bool inList = false;
        for (std::uint32_t i = source.firstPiece; i != kNone; i = outline_.pieces[i].next) {
            const OutlinePiece& piece = outline_.pieces[i];
            const FileBytes record = recordAt(bytes_, piece.record);
            const std::uint16_t opcode = uint16At(record, 0);
            const bool wasInList = std::exchange(inList, isVertexList(opcode));
            if (fltClosingOpcode(opcode) != 0) {
                if (opaque != 0 || beginsOpaque(opcode)) ++opaque;
                kept_.record(record);
            } else if (fltIsPop(opcode)) {
                keepPop(opcode, piece.children, opaque);
            } else if (isVertexList(opcode)) {
                keepList(record, piece.record == source.list, losesVertices);
            } else if (opcode == kContinuation && wasInList) {
                keepVertices(record);
                inList = true;
            } else if (opcode == kFltVertexPalette) {
                if (opaque == 0 && piece.record == outline_.vertexPalette) kept_.marker(opcode);
            } else if (!isVertex(opcode)) {
                kept_.record(record);
            }
        }
    }

    void keepPop(std::uint16_t opcode, std::uint32_t children, std::size_t& opaque) {
        if (opaque == 0) {
            kept_.marker(opcode, children);
        } else {
            kept_.marker(opcode);
            --opaque;
        }
    }

    void keepList(FileBytes record, bool own, bool losesVertices) {
        if (own && !losesVertices && uint16At(record, 0) == kFltVertexList) {
            kept_.marker(kFltVertexList);
        } else {
            keepVertices(record);
        }
    }

    /// Keeps the vertices that a list or its continuation names, then the list with their numbers.
    /// One that names something else stays behind as an empty list.
    void keepVertices(FileBytes list) {
        const std::size_t count = (list.size() - kBody) / 4;
        const auto vertexOf = [&](std::size_t i) {
            return std::uint64_t{outline_.vertexPalette} + uint32At(list, kBody + 4 * i);
        };
        for (std::size_t i = 0; i < count; ++i) {
            if (!isVertexAt(bytes_, outline_, vertexOf(i))) {
                kept_.marker(uint16At(list, 0));
                return;
            }
        }
        for (std::size_t i = 0; i < count; ++i) {
            kept_.record(recordAt(bytes_, static_cast<std::uint32_t>(vertexOf(i))), kLongestVertex);
        }
        kept_.numbers(uint16At(list, 0), static_cast<std::uint32_t>(count));
    }

    FileBytes bytes_;
    const Outline& outline_;
    ImpExpReport& report_;
    Interface& host_;
    std::vector<INode*> nodes_;  ///< by index of the outline
    INode* unlinked_ = nullptr;  ///< a new node that is not below its parent yet
    std::array<std::unique_ptr<FltRecord>, 128> records_;  ///< by kind
    FltToken token_;
    FltToken written_;
    std::unique_ptr<NameMaker> nameMaker_;
    Triangulator triangulator_;
    MeshReader meshReader_;
    std::vector<FileBytes> vertices_;  ///< of the mesh under construction
    bool alike_ = false;               ///< whether they are
    VertexTails tails_;
    KeptWriter kept_;
    const FileBytes colorPalette_ =
        outline_.colorPalette == 0 ? FileBytes() : recordAt(bytes_, outline_.colorPalette);
    std::map<std::int32_t, BitmapTex*> textures_;  ///< by index of the palette
    std::map<std::int32_t, FltLightSourcePalette> lights_;
    FltLightSourcePalette defaultLight_;
};

}  // namespace

INode* buildScene(FileBytes bytes, const Outline& outline, const std::string& fileName,
                  ImpExpReport& report, Interface& host) {
    return SceneBuilder(bytes, outline, report, host).build(fileName);
}

}  // namespace interchange
