#include <checks/scenesource.h>

#include <diagnostics/assertion.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/meshgeometry.h>
#include <fltkilnutil/sourcerecords.h>
#include <kiln/kiln.h>
#include <kiln/searchfolders.h>
#include <quillon/fltfactory.h>
#include <quillon/fltrecordtype.h>
#include <quillon/fltvertexlist.h>
#include <quillon/fltvertexview.h>

#include <map>

namespace checks {

namespace {

FltPoint3d pointOf(const Point3& p) noexcept {
    return {p.x, p.y, p.z};
}

Transform transformOf(const Matrix3& matrix) {
    Transform transform;
    for (int i = 0; i < 4; ++i)
        transform.rows[static_cast<std::size_t>(i)] = pointOf(matrix.GetRow(i));
    return transform;
}

/// The mesh that an object shows: its own, or one that it is converted into.
class ShownMesh {
public:
    explicit ShownMesh(Object* object) : object_(object) {
        if (object == nullptr || !object->CanConvertToType(TRIOBJ_CLASS_ID)) return;
        shown_ = object->ConvertToType(0, TRIOBJ_CLASS_ID);
    }
    ~ShownMesh() {
        if (shown_ != nullptr && shown_ != object_) shown_->DeleteThis();
    }
    ShownMesh(const ShownMesh&) = delete;
    ShownMesh& operator=(const ShownMesh&) = delete;

    const Mesh* get() const noexcept {
        return shown_ == nullptr ? nullptr : &static_cast<TriObject*>(shown_)->GetMesh();
    }

private:
    Object* object_;
    Object* shown_ = nullptr;
};

}  // namespace

class SceneSource::Walk {
public:
    explicit Walk(Interface& host) : host_(host) {
        way_.push_back({host.GetRootNode(), 0, kNone, {}});
    }

    bool next(Node& node) {
        while (!way_.empty()) {
            Level& level = way_.back();
            INode* const child = level.node->GetChildNode(level.next++);
            if (child == nullptr) {
                way_.pop_back();
                continue;
            }
            FltNodeKind kind{};
            const bool isOurs = fltGetKind(child, true, kind);
            const Matrix3 place = child->GetLocalTM(0) * level.passed;
            const std::uint32_t parent = level.number;
            const bool hasChildren = child->NumberOfChildren() > 0;
            if (!isOurs) {
                if (hasChildren) way_.push_back({child, 0, parent, place});
                continue;
            }
            if (hasChildren) way_.push_back({child, 0, count_, {}});
            ++count_;
            describe(*child, static_cast<std::uint16_t>(kind), place, node);
            node.parent = parent;
            return true;
        }
        return false;
    }

    Interface& host() const noexcept { return host_; }

private:
    struct Level {
        INode* node;
        int next;              ///< child
        std::uint32_t number;  ///< of the OpenFlight node whose children these are
        Matrix3 passed;        ///< the transforms of nodes that were passed over
    };

    void describe(INode& host, std::uint16_t kind, const Matrix3& place, Node& node) {
        node = {};
        node.place = host.GetHandle();
        node.kind = kind;
        const fltkilnutil::SourceRecords& kept = reader_.read(host);
        attached_.clear();
        for (const fltkilnutil::SourceRecord& entry : kept.attached)
            if (!entry.isOpaque) attached_.push_back(entry.record);
        node.attached = attached_;
        node.name = host.GetName();
        // What a file does not say need not be right.
        if (!kept.givenName.empty() && kept.givenName == node.name) node.name = {};
        if (fltGetParameter(&host, node.revision)) node.record = recordOf(host, kind, kept);
        if (!place.IsIdentity()) {
            node.hasTransform = true;
            node.transform = transformOf(place);
        }
        if (kind == kFltFace || kind == kFltMesh || fltIsLightPoint(kind)) {
            readPolygons(host, kind, kept);
            node.polygons = &polygons_;
        }
    }

    const FltRecord* recordOf(INode& host, std::uint16_t kind,
                              const fltkilnutil::SourceRecords& kept) {
        std::unique_ptr<FltRecord>& record = records_[kind];
        if (!record) record = fltCreateRecord(kind);
        if (record) return fltGetRecord(&host, *record) ? record.get() : nullptr;
        // Kinds that scenes do not store are kept as they were read.
        const FltRecordType* const type = fltRecordType(kind);
        if (type == nullptr || type->create == nullptr || kept.record.empty()) return nullptr;
        std::unique_ptr<FltRecord>& read = readRecords_[kind];
        if (!read) read = type->create();
        try {
            read->readBytes(kept.record.bytes(), kept.revision);
            return read.get();
        } catch (const diagnostics::AviaryAssertion&) {
            return nullptr;
        }
    }

    void readPolygons(INode& host, std::uint16_t kind, const fltkilnutil::SourceRecords& kept) {
        polygons_.clear();
        const ShownMesh shown(host.EvalWorldState(0).obj);
        const Mesh* const mesh = shown.get();
        if (mesh == nullptr || mesh->verts.IsEmpty()) {
            if (kind == kFltFace) readKeptPolygon(kept);
            return;
        }
        polygons_.hasNormals = mesh->normals.Count() == mesh->verts.Count();
        polygons_.hasTexture =
            !mesh->tvFaces.IsEmpty() || (mesh->tVerts.Count() == mesh->verts.Count());
        polygons_.makesNormals =
            fltkilnutil::sourceChunk(host, fltkilnutil::SourceChunk::corners).empty();
        if (fltIsLightPoint(kind)) {
            for (const Point3& vertex : mesh->verts) polygons_.corners.push_back(pointOf(vertex));
            return;
        }
        if (fltkilnutil::isOnePolygon(*mesh)) {
            for (const Point3& vertex : mesh->verts) polygons_.corners.push_back(pointOf(vertex));
            endPolygon();
            return;
        }
        readTriangles(*mesh);
    }

    void readTriangles(const Mesh& mesh) {
        const auto vertices = static_cast<DWORD>(mesh.verts.Count());
        used_.assign(vertices, false);
        std::uint32_t unused = vertices;
        for (const Face& face : mesh.faces) {
            bool isThere = true;
            for (const DWORD corner : face.v) {
                if (corner >= vertices) {
                    polygons_.badIndex = corner;
                    isThere = false;
                } else if (!used_[corner]) {
                    used_[corner] = true;
                    --unused;
                }
            }
            if (!isThere) continue;
            for (const DWORD corner : face.v)
                polygons_.corners.push_back(pointOf(mesh.verts[static_cast<int>(corner)]));
            endPolygon();
        }
        polygons_.unused = unused;
    }

    /// A polygon that has no triangles, because it has no area, is kept as it was read.
    void readKeptPolygon(const fltkilnutil::SourceRecords& kept) {
        bool hasNormals = true, hasTexture = true;
        for (const fltkilnutil::SourceRecord& entry : kept.attached) {
            if (entry.isOpaque) continue;
            if (FltVertexView::isViewable(entry.record)) {
                const FltVertexView vertex(entry.record);
                polygons_.corners.push_back(vertex.position());
                hasNormals = hasNormals && vertex.hasNormal();
                hasTexture = hasTexture && vertex.hasTexture();
            } else if (fltkilnutil::isVertexList(entry.record.opcode())) {
                break;
            }
        }
        polygons_.hasNormals = hasNormals && !polygons_.corners.empty();
        polygons_.hasTexture = hasTexture && !polygons_.corners.empty();
        endPolygon();
    }

    void endPolygon() {
        polygons_.ends.push_back(static_cast<std::uint32_t>(polygons_.corners.size()));
    }

    Interface& host_;
    std::vector<Level> way_;
    std::uint32_t count_ = 0;
    fltkilnutil::SourceRecordsReader reader_;
    std::vector<FltRecordView> attached_;
    std::map<std::uint16_t, std::unique_ptr<FltRecord>> records_;  ///< one of each class, reused
    std::map<std::uint16_t, std::unique_ptr<FltRecord>> readRecords_;
    Polygons polygons_;
    std::vector<bool> used_;
};

SceneSource::SceneSource(Interface& host) : walk_(std::make_unique<Walk>(host)) {}

SceneSource::~SceneSource() = default;

bool SceneSource::next(Node& node) {
    return walk_->next(node);
}

std::size_t SceneSource::estimate() const {
    return static_cast<std::size_t>(walk_->host().GetNodeCount());
}

std::string SceneSource::nameAt(std::uint64_t place) const {
    const INode* const node = walk_->host().GetINodeByHandle(static_cast<DWORD>(place));
    return node == nullptr ? std::string() : std::string(node->GetName());
}

std::vector<std::string> SceneSource::folders() const {
    return SearchFolders(walk_->host());
}

std::string SceneSource::fileOf(std::uint64_t place) const {
    const INode* const node = walk_->host().GetINodeByHandle(static_cast<DWORD>(place));
    const std::string folder = walk_->host().GetDir(KILN_IMPORT_DIR);
    if (node == nullptr || folder.empty()) return {};
    const fltkilnutil::FileBytes name =
        fltkilnutil::sourceChunk(*node, fltkilnutil::SourceChunk::source);
    if (name.empty()) return {};
    return folder + '/' + std::string(reinterpret_cast<const char*>(name.data()), name.size());
}

}  // namespace checks
