// How OpenFlight nodes look, for the host's viewports.
#pragma once

#include <fltkilnutil/fltdefinitions.h>
#include <fltkilnutil/sourcerecords.h>
#include <interchange/filereference.h>
#include <kiln/nodelook.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltdof.h>
#include <quillon/fltface.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightpointsystem.h>
#include <quillon/fltlod.h>
#include <quillon/fltmesh.h>
#include <quillon/fltmultitexture.h>
#include <quillon/fltobject.h>
#include <quillon/fltrecordrange.h>
#include <quillon/fltswitch.h>

#include <array>
#include <compare>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

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
/// Layers of textures and their coordinates are those that were read with the face: nothing in the
/// host stands for them. A light point system that is not enabled shows none of its points.
///
/// Palettes that a reference overrides are those of the file that refers. Colors of vertices and of
/// light points stay what they are: they are not looked up again.
///
/// Faces that lights do not reach have no use for a material but its transparency. A face with a
/// color of its own hides the colors of its vertices unless its light mode asks for them.
class NodeLooks final : public NodeLookSource {
public:
    void BeginLooks(Interface* ip) noexcept override;
    void EndLooks() noexcept override;
    bool GetLook(INode* node, NodeLook& look) noexcept override;
    bool GetBranch(INode* node, NodeBranch& branch) noexcept override;
    bool GetJoint(INode* node, NodeJoint& joint) noexcept override;
    std::optional<Matrix3> GetMotion(INode* node,
                                     const NodeJoint::Values& values) noexcept override;
    bool SetJoint(INode* node, const NodeJoint::Values& values) noexcept override;
    INode* GetInstanced(INode* node) noexcept override;
    INode* GetWhole(INode* node) noexcept override;
    bool IsOnlyInstanced(INode* node) noexcept override;
    bool GetReference(INode* node, NodeReference& reference) noexcept override;
    std::uint32_t EnterReference(INode* node) noexcept override;
    void LeaveReference() noexcept override;

private:
    struct Material {
        LightColor ambient, diffuse, emissive, specular;
        float shininess = 0;
        float alpha = 1;
    };

    struct LineStyle {
        std::int32_t width = 1;
        std::uint16_t pattern = 0xFFFF;
    };

    /// What the nodes of one database share.
    struct Database {
        std::map<std::int32_t, Material> materials;
        std::map<std::int32_t, std::string> textures;
        std::map<std::int32_t, LineStyle> lineStyles;
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

    /// Whose palettes count in place of a file's own; null for those that are its own.
    struct Overrides {
        const Database* colors = nullptr;
        const Database* materials = nullptr;
        const Database* textures = nullptr;
        const Database* lineStyles = nullptr;
        const Database* lightPoints = nullptr;

        auto operator<=>(const Overrides&) const = default;
    };

    /// The database of which a palette counts for nodes of `own`, which may be null.
    const Database* databaseFor(const Database* Overrides::*palette, const Database* own) const {
        const Database* const other = overrides_.empty() ? nullptr : overrides_.back().*palette;
        return other ? other : own;
    }
    Overrides overridesBy(INode& reference);
    const Family& familyOf(INode& node);
    Database& databaseOf(INode& header);
    static void addMaterial(const FltRecordView& record, Database& database);
    static void addTexture(const FltRecordView& record, Database& database);
    static void addLineStyle(const FltRecordView& record, Database& database);
    static bool describeLight(INode& node, NodeLook& look);
    bool describeIndexedPoint(INode& node, NodeLook& look);
    bool readMesh(INode& node);
    void readPool(const fltkilnutil::SourceRecords& kept);
    bool describeSwitch(INode& node, NodeBranch& branch);
    bool describeLod(INode& node, NodeBranch& branch);
    bool describeObject(INode& node, NodeBranch& branch);
    bool describeLightSystem(INode& node, NodeBranch& branch);
    template <typename Record>
    void describeTextures(const Record& record, INode& node, NodeLook& look);
    void describeLayers(INode& node, const Database& database, NodeLook& look);
    template <typename Record>
    void describe(const Record& record, INode& node, NodeLook& look);
    template <typename Record>
    static std::optional<LightColor> outlineOf(const Record& record, INode& node,
                                               const Database* database);
    static const char* pictureOf(INode& node, std::int32_t textureIndex, const Database* database,
                                 bool isOverridden);

    std::map<INode*, Database> databases_;
    FltDefinitions definitions_;
    std::vector<Overrides> overrides_;  ///< of the references that have been entered
    std::map<Overrides, std::uint32_t> overrideNumbers_;
    Family family_;  ///< of the node asked for last
    FltFace face_;
    FltSwitch switch_;
    FltDof dof_;
    FltLod lod_;
    FltObject object_;
    FltMesh mesh_;
    FltLocalVertexPool pool_;  ///< of the node asked for last
    std::vector<std::uint8_t> poolBody_;
    FltLightPoint lightPoint_;
    std::vector<LightPointStep> steps_;  ///< of the node asked for last
    FltMultiTexture multiTexture_;
    FltUvList uvList_;
    fltkilnutil::SourceRecordsReader kept_;
    std::array<PictureLayer, NodeLook::kMostLayers> layers_;  ///< of the node asked for last
    std::array<std::vector<float>, NodeLook::kMostLayers> places_;
    FileReference reference_;  ///< that was asked for last
};

}  // namespace interchange
