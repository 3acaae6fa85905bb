// A small database for the rules, built in the host's scene.
#pragma once

#include "../support/temporaryfolder.h"

#include <checks/check.h>
#include <checks/mends.h>
#include <checks/scenesource.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/sourcerecords.h>
#include <kiln/host/core.h>
#include <kiln/kiln.h>
#include <kiln/triangulator.h>
#include <quillon/fltface.h>
#include <quillon/fltgroup.h>
#include <quillon/fltheader.h>
#include <quillon/fltobject.h>
#include <quillon/flttoken.h>
#include <quillon/flttransform.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

using Corners = std::vector<Point3>;

/// A square of that side, in the ground plane unless `z` says otherwise.
inline Corners square(double side = 10, double x = 0, double y = 0, double z = 0) {
    return {{x, y, z}, {x + side, y, z}, {x + side, y + side, z}, {x, y + side, z}};
}

/// Header, group, object and a face: nothing is wrong with them.
class CheckScene {
public:
    CheckScene() : host(kiln::Core::create().hostInterface()) {
        kiln::Core::get()->newScene();
        for (const int id : {KILN_IMPORT_DIR, KILN_SCENE_DIR, KILN_IMAGE_DIR})
            kiln::Core::get()->setDirectory(id, folder.file(""));
        // On Windows the captions, and with them the attributes, come from the library beside the
        // test.
        kiln::Core::get()->setDirectory(KILN_PLUGIN_DIR, std::filesystem::current_path().string());
        database = add(nullptr, FltHeader());
        group = add(database, FltGroup());
        object = add(group, FltObject());
        face = addFace(object, square());
    }
    ~CheckScene() { kiln::Core::get()->newScene(); }
    CheckScene(const CheckScene&) = delete;
    CheckScene& operator=(const CheckScene&) = delete;

    /// Adds a node with `record` below `parent` (null for the root).
    template <typename Record>
    INode* add(INode* parent, const Record& record, Object* shown = nullptr) {
        const std::string name = "n" + std::to_string(++count_);
        INode* const node = host.CreateObjectNode(shown ? shown : new DummyObject, name.c_str());
        if (parent != nullptr) parent->AttachChild(node);
        fltPutData(node, static_cast<FltNodeKind>(Record::kOpcode), kFltRevision, record, nullptr);
        return node;
    }
    INode* addFace(INode* parent, const Corners& corners, const FltFace& record = {}) {
        auto* const shown = new TriObject;
        Mesh& mesh = shown->GetMesh();
        std::vector<DWORD> numbers;
        for (const Point3& corner : corners) {
            numbers.push_back(static_cast<DWORD>(mesh.verts.Count()));
            mesh.verts.Append(corner);
        }
        Triangulator triangulator;
        for (const Triangle& triangle : triangulator.cut(corners)) {
            Face cut{{triangle.corner[0], triangle.corner[1], triangle.corner[2]}, 0};
            constexpr DWORD kEdges[] = {EDGE_A, EDGE_B, EDGE_C};
            for (std::size_t i = 0; i < 3; ++i)
                if (triangle.outline[i]) cut.flags |= kEdges[i];
            mesh.faces.Append(cut);
        }
        return add(parent, record, shown);
    }
    Mesh& meshOf(INode* node) { return static_cast<TriObject*>(node->GetObjectRef())->GetMesh(); }

    /// Changes a node's record.
    template <typename Record, typename Change>
    void edit(INode* node, Change&& change) {
        Record record;
        fltGetRecord(node, record);
        change(record);
        fltPutRecord(node, record);
    }

    /// Keeps `records` on the node, as the importer keeps palettes on that of the database.
    void keep(INode* node, std::initializer_list<const FltRecord*> records) {
        fltkilnutil::SourceRecordsWriter kept;
        kept.begin(kFltRevision);
        for (const FltRecord* record : records) {
            FltToken token;
            record->writeToken(token, kFltRevision);
            token.finish();
            kept.record({token.data(), token.length()});
        }
        fltkilnutil::storeSourceChunk(*node, fltkilnutil::SourceChunk::records, kept.bytes());
    }
    /// Marks the face as one that was read without normals.
    void keepPlainCorners(INode* node) {
        const std::uint8_t bytes[] = {0};
        fltkilnutil::storeSourceChunk(*node, fltkilnutil::SourceChunk::corners, bytes);
    }

    checks::Report check(const checks::Target& target = {}) {
        checks::SceneSource source(host);
        checks::Check check(source, target);
        check.finish();
        return check.report();
    }

    const TemporaryFolder folder{u8"tessera-checks-"};
    Interface& host;
    INode* database;
    INode* group;
    INode* object;
    INode* face;

private:
    int count_ = 0;
};

/// The codes of all findings, one a line, with their sentences.
inline std::string listOf(const checks::Report& report) {
    std::string list;
    for (const checks::Finding& finding : report.findings)
        list += std::string(checks::infoOf(finding.rule).code) + " " + finding.node + ": " +
                finding.text(base::Language::kEnglish) + "\n";
    return list;
}
