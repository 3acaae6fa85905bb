#include <interchange/import.h>
#include "../texts.h"
#include "filecursor.h"

#include "../colors.h"
#include "../lights.h"
#include "../names.h"
#include "../recordcache.h"
#include "../transforms.h"
#include "meshes.h"
#include "nodekeeper.h"
#include "nodenames.h"
#include "polygonmeshes.h"
#include "scenepalettes.h"

#include <diagnostics/assertion.h>
#include <fltkilnutil/actions.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <kiln/ownedptr.h>
#include <quillon/fltface.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltheader.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltvertexlist.h>

#include <memory>
#include <new>
#include <vector>

namespace interchange {

namespace {

std::string withoutExtension(const std::string& fileName) {
    const std::size_t dot = fileName.rfind('.');
    return fileName.substr(0, dot == 0 ? fileName.npos : dot);
}

/// The objects that nodes show.
class NodeObjects {
public:
    NodeObjects(const FileIndex& file, const ScenePalettes& palettes)
        : file_(file), palettes_(palettes), polygons_(file, palettes.colors()) {}

    OwnedPtr<Object> make(const FileNode& source, const FltRecord* record) {
        switch (source.kind) {
            case kFltFace:
            case kFltLightPoint:
            case kFltIndexedLightPoint:
            case kFltMesh:
                return makeMesh(source);
            case kFltLightSource: {
                const auto& light = static_cast<const FltLightSource&>(*record);
                return OwnedPtr<Object>(makeLight(palettes_.light(light.paletteIndex)));
            }
            default:
                return OwnedPtr<Object>(new DummyObject);
        }
    }

    /// The vertex records of the face or light points made last, or one that stands for all.
    std::span<const FileBytes> vertices() const noexcept { return polygons_.vertices(); }

private:
    OwnedPtr<Object> makeMesh(const FileNode& source) {
        OwnedPtr<TriObject> object(new TriObject);
        Mesh& mesh = object->GetMesh();
        if (source.kind == kFltFace) {
            polygons_.makePolygon(source, mesh);
        } else if (source.kind == kFltMesh) {
            meshes_.read(file_, source, palettes_.colors(), mesh);
        } else {
            polygons_.makePoints(source, mesh);
        }
        return object;
    }

    const FileIndex& file_;
    const ScenePalettes& palettes_;
    PolygonMeshes polygons_;
    MeshReader meshes_;
};

/// Makes the nodes of one file, in file order, each below the one that it belongs to.
class SceneBuilder {
public:
    SceneBuilder(const FileIndex& file, const std::string& fileName, ImpExpReport& report,
                 Interface& host)
        : file_(file),
          report_(report),
          host_(host),
          names_(file, withoutExtension(fileName), host) {}

    INode* build(const std::string& fileName) {
        nodes_.reserve(file_.nodes.size());
        palettes_.makeTextures();
        for (const FileNode& source : file_.nodes) {
            tellProgress();
            makeNode(source);
        }
        keepFileName(*nodes_.front(), fileName);
        return nodes_.front();
    }

private:
    static void keepFileName(INode& database, const std::string& name) {
        if (name.empty()) return;
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(name.data());
        storeSourceChunk(database, SourceChunk::source, {bytes, name.size()});
    }

    void tellProgress() {
        constexpr std::size_t kNodesPerReport = 256;
        if (nodes_.size() % kNodesPerReport != 0) return;
        const auto done = static_cast<double>(nodes_.size());
        const auto all = static_cast<double>(file_.nodes.size());
        if (!report_.Progress(done / all, text(TextId::kBuildingScene).c_str())) throw Cancelled();
    }

    void makeNode(const FileNode& source) {
        const FltRecord* const record = readRecord(source);
        const NodeNames::Name name = names_.nameOf(source);
        INode& node = createNode(source, record, name.text);
        place(node, source, record);
        if (source.kind == kFltFace) showFace(node, static_cast<const FltFace&>(*record));
        store(node, source, record);
        NodeKeeper::Made made;
        made.record = record;
        if (name.isMadeUp) made.madeUpName = name.text;
        if (source.kind == kFltFace || fltIsLightPoint(source.kind)) {
            made.mesh = &static_cast<TriObject*>(node.GetObjectRef())->GetMesh();
            made.vertices = objects_.vertices();
        }
        keeper_.keep(node, source, made);
    }

    /// The record of a node, read at the file's revision; null for a kind without a class. Valid
    /// until the next of that kind.
    const FltRecord* readRecord(const FileNode& source) {
        FltRecord* const record = records_.of(source.kind);
        if (record == nullptr) return nullptr;
        const FileBytes bytes = file_.recordAt(source.record).bytes();
        token_.attach(bytes.data(), static_cast<std::int32_t>(bytes.size()));
        record->readToken(token_, file_.revision);
        return record;
    }

    /// Creates the node below its parent.
    INode& createNode(const FileNode& source, const FltRecord* record, const std::string& name) {
        OwnedPtr<Object> object = objects_.make(source, record);
        INode* const node = host_.CreateObjectNode(object.get(), name.c_str());
        if (node == nullptr) throw std::bad_alloc();
        static_cast<void>(object.release());  // the node's now
        if (source.parent != kNone) {
            INode& parent = *nodes_[source.parent];
            diagnostics::check(parent.AttachChild(node, false), "buildscene", 164);
        }
        nodes_.push_back(node);
        return *node;
    }

    void place(INode& node, const FileNode& source, const FltRecord* record) const {
        if (source.firstAttached == kNone && source.kind != kFltLightSource) return;
        TransformReader transforms;
        for (const AttachedRecord& entry : file_.attachedTo(source)) {
            if (entry.children != kNone) transforms.take(file_.recordAt(entry.record));
        }
        Matrix3 transform = transforms.result();
        if (source.kind == kFltLightSource) {
            transform = placeOf(static_cast<const FltLightSource&>(*record)) * transform;
        }
        if (!transform.IsIdentity()) node.SetLocalTM(0, transform);
    }

    void showFace(INode& node, const FltFace& face) const {
        if (const auto color = fltkilnutil::surfaceColor(face, palettes_.colors()))
            node.SetWireColor(*color);
        if (face.flags & kFltSurfaceHidden) node.Hide(true);
        BitmapTex* const texture = palettes_.texture(face.textureIndex);
        if (texture != nullptr) node.SetTexmap(texture);
    }

    // ------------------------------------------------------------ OpenFlight data

    void store(INode& node, const FileNode& source, const FltRecord* record) const {
        if (!fltEnsureKind(&node, static_cast<FltNodeKind>(source.kind), kFltRevision)) {
            throw std::bad_alloc();
        }
        if (record != nullptr && !putRecord(node, *record)) {
            refuseFile(source.record, text(TextId::kUnkeptRecord));
        }
        if (source.kind == kFltLightSource) {
            const auto& light = static_cast<const FltLightSource&>(*record);
            const KilnLight options = optionsOf(palettes_.light(light.paletteIndex));
            if (!fltPutOptions(&node, options)) throw std::bad_alloc();
        }
        if (source.firstAttached != kNone) storeComment(node, source);
    }

    void storeComment(INode& node, const FileNode& source) const {
        CommentText comment;
        for (const AttachedRecord& entry : file_.attachedTo(source)) {
            if (entry.children == kNone) continue;
            const FltRecordView record = file_.recordAt(entry.record);
            if (record.opcode() == kFltComment) comment.add(record.body());
        }
        const std::string& text = comment.result();
        if (!text.empty() && !fltPutComment(&node, text)) throw std::bad_alloc();
    }

    /// Scenes keep headers in a layout of their own.
    static bool putRecord(INode& node, const FltRecord& record) {
        if (record.opcode() != kFltHeader) return fltPutRecord(&node, record);
        return fltPutRecord(&node, FltHeader(static_cast<const FltHeader&>(record)));
    }

    const FileIndex& file_;
    ImpExpReport& report_;
    Interface& host_;
    RecordCache records_{fltCreateFileRecord};
    FltToken token_;
    NodeNames names_;
    ScenePalettes palettes_{file_, host_};
    NodeObjects objects_{file_, palettes_};
    NodeKeeper keeper_{file_};
    std::vector<INode*> nodes_;  ///< as in the file's index
};

}  // namespace

INode* buildScene(const FileIndex& file, const std::string& fileName, ImpExpReport& report,
                  Interface& host) {
    fltkilnutil::ActionScope scope(fltkilnutil::Action::kImport);
    INode* const database = SceneBuilder(file, fileName, report, host).build(fileName);
    scope.Commit();
    return database;
}

}  // namespace interchange
