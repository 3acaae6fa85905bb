// How OpenFlight nodes look, for the host's viewports.
#pragma once

#include <fltkilnutil/fltdefinitions.h>
#include <kiln/nodelook.h>
#include <quillon/fltface.h>
#include <quillon/fltmesh.h>
#include <quillon/fltrecordrange.h>

#include <cstdint>
#include <map>
#include <string>

namespace interchange {

/// Reads from the records of faces and meshes, as they are now, and from the palettes of their
/// database: material, texture, transparency, light mode, texture white, template and nesting. An
/// instance reference shows the definition that `FltDefinitions` finds for it; a definition is seen
/// nowhere else. A light source shines as its record and its palette entry say.
///
/// Faces that lights do not reach have no use for a material but its transparency. A face with a
/// color of its own hides the colors of its vertices unless its light mode asks for them.
class NodeLooks final : public NodeLookSource {
public:
    void BeginLooks(Interface* ip) noexcept override;
    void EndLooks() noexcept override;
    bool GetLook(INode* node, NodeLook& look) noexcept override;
    INode* GetInstanced(INode* node) noexcept override;
    bool IsOnlyInstanced(INode* node) noexcept override;

private:
    struct Material {
        LightColor ambient, diffuse, emissive;
        float alpha = 1;
    };

    /// What the nodes of one database share.
    struct Database {
        std::map<std::int32_t, Material> materials;
        std::map<std::int32_t, std::string> textures;
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
    bool readMesh(INode& node);
    template <typename Record>
    void describe(const Record& record, INode& node, NodeLook& look);
    static const char* pictureOf(INode& node, std::int32_t textureIndex, const Database* database);

    std::map<INode*, Database> databases_;
    FltDefinitions definitions_;
    Family family_;  ///< of the node asked for last
    FltFace face_;
    FltMesh mesh_;
};

}  // namespace interchange
