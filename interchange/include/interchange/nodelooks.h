// How OpenFlight nodes look, for the host's viewports.
#pragma once

#include <fltkilnutil/fltdefinitions.h>
#include <interchange/filereference.h>
#include <kiln/nodelook.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltdof.h>
#include <quillon/fltface.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlod.h>
#include <quillon/fltmesh.h>
#include <quillon/fltobject.h>
#include <quillon/fltrecordrange.h>
#include <quillon/fltswitch.h>

#include <cstdint>
#include <map>
#include <string>

namespace interchange {

/// Reads from the records of faces and meshes, as they are now, and from the palettes of their
/// database: material, texture, transparency, light mode, texture white, template and nesting. An
/// instance reference shows the definition that `FltDefinitions` finds for it; a definition is seen
/// nowhere else. A light source shines as its record and its palette entry say.
///
/// A switch shows the children whose bits its current mask sets: without masks all of them, with a
/// current mask that does not exist those of the first. A degree of freedom moves what is below it
/// by its current values; a scale of 0, which a record has that says nothing, is none. A level of
/// detail shows between its distances, an object in its hours, one that is a shadow by day only.
///
/// Faces that lights do not reach have no use for a material but its transparency. A face with a
/// color of its own hides the colors of its vertices unless its light mode asks for them.
class NodeLooks final : public NodeLookSource {
public:
    void BeginLooks(Interface* ip) noexcept override;
    void EndLooks() noexcept override;
    bool GetLook(INode* node, NodeLook& look) noexcept override;
    bool GetBranch(INode* node, NodeBranch& branch) noexcept override;
    INode* GetInstanced(INode* node) noexcept override;
    INode* GetWhole(INode* node) noexcept override;
    bool IsOnlyInstanced(INode* node) noexcept override;
    bool GetReference(INode* node, NodeReference& reference) noexcept override;

private:
    struct Material {
        LightColor ambient, diffuse, emissive, specular;
        float shininess = 0;
        float alpha = 1;
    };

    /// What the nodes of one database share.
    struct Database {
        std::map<std::int32_t, Material> materials;
        std::map<std::int32_t, std::string> textures;
        std::map<std::int32_t, LightPointLook> appearances;
        std::map<std::int32_t, FltLightPointAnimation> animations;
        FltColorPalette colors;
    };

    /// What siblings have in common.
    struct Family {
        const INode* parent = nullptr;
        Database* database = nullptr;  ///< null outside of any
        int layer = 0;
    };

    const Family& familyOf(INode& node);
    Database& databaseOf(INode& header);
    static void addMaterial(const FltRecordView& record, Database& database);
    static void addTexture(const FltRecordView& record, Database& database);
    static bool describeLight(INode& node, NodeLook& look);
    bool describeIndexedPoint(INode& node, NodeLook& look);
    bool readMesh(INode& node);
    bool describeSwitch(INode& node, NodeBranch& branch);
    bool describeLod(INode& node, NodeBranch& branch);
    bool describeObject(INode& node, NodeBranch& branch);
    template <typename Record>
    void describe(const Record& record, INode& node, NodeLook& look);
    template <typename Record>
    static std::optional<LightColor> outlineOf(const Record& record, INode& node,
                                               const Database* database);
    static const char* pictureOf(INode& node, std::int32_t textureIndex, const Database* database);

    std::map<INode*, Database> databases_;
    FltDefinitions definitions_;
    Family family_;  ///< of the node asked for last
    FltFace face_;
    FltSwitch switch_;
    FltDof dof_;
    FltLod lod_;
    FltObject object_;
    FltMesh mesh_;
    FltLightPoint lightPoint_;
    FileReference reference_;  ///< that was asked for last
};

}  // namespace interchange
