#include <interchange/import.h>
#include <interchange/textencoding.h>
#include <interchange/triangulator.h>

#include "colors.h"
#include "lights.h"

#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <quillon/fltface.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfilereader.h>
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

constexpr std::size_t kIdOffset = 4;
constexpr std::size_t kIdLength = 8;
constexpr std::size_t kBody = 4;

/// What one comment record of the node can hold, with room for its header and padding.
constexpr std::size_t kLongestComment = 65'500;

bool hasId(std::uint16_t kind) {
    return kind != kFltExternalRef && kind != kFltInstanceRef && kind != kFltInstanceDef;
}

FileBytes bodyOf(FileBytes bytes, std::uint32_t record) {
    return recordAt(bytes, record).subspan(kBody);
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

    INode* build(const std::string& name) {
        nodes_.reserve(outline_.nodes.size());
        try {
            for (const OutlineNode& source : outline_.nodes) {
                tellProgress();
                makeNode(source, name);
            }
        } catch (...) {
            // The database's node takes all others along, but for one that is not linked yet.
            if (unlinked_ != nullptr) host_.DeleteNode(unlinked_);
            if (!nodes_.empty()) host_.DeleteNode(nodes_.front());
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
        FltRecord& record = readRecord(source);
        const std::string name =
            source.kind == kFltHeader ? headerName(source, databaseName) : nodeName(source);
        INode* node = createNode(source, record, name);
        if (source.parent != kNone) {
            if (!nodes_[source.parent]->AttachChild(node, false)) throw std::bad_alloc();
        }
        nodes_.push_back(node);
        unlinked_ = nullptr;
        place(*node, source, record);
        if (source.kind == kFltFace) dress(*node, static_cast<const FltFace&>(record));
        store(*node, source, record);
    }

    /// The record of a node, read at the file's revision. One record object per kind serves all.
    FltRecord& readRecord(const OutlineNode& source) {
        std::unique_ptr<FltRecord>& record = records_[source.kind];
        if (!record) record = fltCreateRecord(source.kind);
        const FileBytes bytes = recordAt(bytes_, source.record);
        token_.attach(bytes.data(), static_cast<std::int32_t>(bytes.size()));
        record->readToken(token_, outline_.revision);
        return *record;
    }

    // ------------------------------------------------------------ names

    std::string nodeName(const OutlineNode& source) {
        std::string name = ownName(source);
        return name.empty() ? defaultName(source.kind) : name;
    }

    std::string headerName(const OutlineNode& source, const std::string& databaseName) {
        std::string name = ownName(source);
        const bool saysNothing = name.empty() || (source.longId == 0 && name == "db");
        return saysNothing && !databaseName.empty() ? databaseName : name;
    }

    /// What the file calls the node; empty when it says nothing.
    std::string ownName(const OutlineNode& source) {
        if (source.longId != 0) {
            std::string name = textOf(bodyOf(bytes_, source.longId));
            if (!name.empty()) return name;
        }
        const FileBytes record = recordAt(bytes_, source.record);
        if (!hasId(source.kind) || record.size() < kIdOffset + 1) return {};
        return textOf(record.subspan(kIdOffset, std::min(kIdLength, record.size() - kIdOffset)));
    }

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

    INode* createNode(const OutlineNode& source, const FltRecord& record, const std::string& name) {
        std::unique_ptr<Object, DeleteThis> object(makeObject(source, record));
        unlinked_ = host_.CreateObjectNode(object.get(), name.c_str());
        if (unlinked_ == nullptr) throw std::bad_alloc();
        object.release();
        return unlinked_;
    }

    Object* makeObject(const OutlineNode& source, const FltRecord& record) {
        switch (source.kind) {
            case kFltFace:
                return makePolygon(source).release();
            case kFltLightPoint:
                return makePoints(source).release();
            case kFltLightSource:
                return makeLight(paletteOf(static_cast<const FltLightSource&>(record)));
            default:
                return new DummyObject;
        }
    }

    std::unique_ptr<TriObject, DeleteThis> makePolygon(const OutlineNode& source) {
        std::unique_ptr<TriObject, DeleteThis> object(new TriObject);
        Mesh& mesh = object->GetMesh();
        mesh.verts.Resize(static_cast<int>(source.cornerCount));
        for (const std::uint32_t vertex : cornersOf(source)) mesh.verts.Append(positionAt(vertex));
        cutPolygon(mesh);
        return object;
    }

    /// A mesh of nothing but vertices, with their colours.
    std::unique_ptr<TriObject, DeleteThis> makePoints(const OutlineNode& source) {
        constexpr COLORREF kWhite = 0xFFFFFF;
        std::unique_ptr<TriObject, DeleteThis> object(new TriObject);
        Mesh& mesh = object->GetMesh();
        for (const std::uint32_t vertex : cornersOf(source)) {
            const Point3 position = positionAt(vertex);
            if (!isFinite(position)) continue;
            mesh.verts.Append(position);
            mesh.colors.Append(vertexColor(vertex, bytes_, outline_).value_or(kWhite));
        }
        return object;
    }

    std::span<const std::uint32_t> cornersOf(const OutlineNode& source) const {
        return std::span(outline_.corners).subspan(source.firstCorner, source.cornerCount);
    }

    static bool isFinite(const Point3& point) {
        return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
    }

    Point3 positionAt(std::uint32_t vertex) const {
        return {float64At(bytes_, vertex + 8), float64At(bytes_, vertex + 16),
                float64At(bytes_, vertex + 24)};
    }

    /// Turns the corners into triangles. A polygon without area has none, and then no vertices
    /// either: nothing could show them.
    void cutPolygon(Mesh& mesh) {
        const auto count = static_cast<std::size_t>(mesh.verts.Count());
        const std::span<const Triangle> triangles =
            triangulator_.cut(std::span(std::as_const(mesh).verts.Addr(0), count));
        if (triangles.empty()) mesh.verts.ZeroCount();
        mesh.faces.Resize(static_cast<int>(triangles.size()));
        for (const Triangle& triangle : triangles) mesh.faces.Append(faceOf(triangle));
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

    void dress(INode& node, const FltFace& face) {
        constexpr std::uint32_t kHidden = 0x04000000;
        if (const auto color = colorOf(face, bytes_, outline_)) node.SetWireColor(*color);
        if (face.flags & kHidden) node.Hide(true);
    }

    // ------------------------------------------------------------ places

    void place(INode& node, const OutlineNode& source, const FltRecord& record) {
        Matrix3 transform;
        if (source.kind == kFltLightSource) {
            transform = placeOf(static_cast<const FltLightSource&>(record));
        }
        if (source.matrix != 0) transform = transform * matrixAt(source.matrix);
        if (!transform.IsIdentity()) node.SetLocalTM(0, transform);
    }

    /// The affine part of a matrix record, which is for row vectors as the host's matrices are. One
    /// with a number that is not finite moves nothing.
    Matrix3 matrixAt(std::uint32_t record) const {
        Matrix3 matrix;
        for (int row = 0; row < 4; ++row) {
            const std::size_t start = record + kBody + static_cast<std::size_t>(row) * 16;
            const Point3 values{float32At(bytes_, start), float32At(bytes_, start + 4),
                                float32At(bytes_, start + 8)};
            if (!std::isfinite(values.x + values.y + values.z)) return {};
            matrix.SetRow(row, values);
        }
        return matrix;
    }

    // ------------------------------------------------------------ OpenFlight data

    void store(INode& node, const OutlineNode& source, const FltRecord& record) {
        if (!fltEnsureKind(&node, static_cast<FltNodeKind>(source.kind), kFltRevision)) {
            throw std::bad_alloc();
        }
        if (!fltPutRecord(&node, record)) {
            throw FltFileError("damaged at byte offset " + std::to_string(source.record) +
                                   ": a record too long to be kept on a node",
                               source.record);
        }
        if (source.kind == kFltLightSource) {
            const KilnLight options =
                optionsOf(paletteOf(static_cast<const FltLightSource&>(record)));
            if (!fltPutOptions(&node, options)) throw std::bad_alloc();
        }
        const std::string comment = commentOf(source);
        if (!comment.empty() && !fltPutComment(&node, comment)) throw std::bad_alloc();
    }

    /// The node's comments, one per line.
    std::string commentOf(const OutlineNode& source) const {
        std::string text;
        for (std::uint32_t i = source.firstComment; i != kNone; i = outline_.comments[i].next) {
            if (i != source.firstComment) text += '\n';
            text += textOf(bodyOf(bytes_, outline_.comments[i].record));
            if (text.size() > kLongestComment) break;
        }
        text.resize(startOf(text, kLongestComment).size());
        return text;
    }

    FileBytes bytes_;
    const Outline& outline_;
    ImpExpReport& report_;
    Interface& host_;
    std::vector<INode*> nodes_;  ///< by index of the outline
    INode* unlinked_ = nullptr;  ///< a new node that is not below its parent yet
    std::array<std::unique_ptr<FltRecord>, 128> records_;  ///< by kind
    FltToken token_;
    std::unique_ptr<NameMaker> nameMaker_;
    Triangulator triangulator_;
    std::map<std::int32_t, FltLightSourcePalette> lights_;
    FltLightSourcePalette defaultLight_;
};

}  // namespace

INode* buildScene(FileBytes bytes, const Outline& outline, const std::string& name,
                  ImpExpReport& report, Interface& host) {
    return SceneBuilder(bytes, outline, report, host).build(name);
}

}  // namespace interchange
