// Nodes of the scene as records in a stream.
#pragma once

#include "beads.h"
#include "filepalettes.h"
#include "kept.h"
#include "losses.h"
#include "newfaces.h"
#include "plan.h"
#include "polygons.h"
#include "vertexpalette.h"
#include "vertices.h"

#include <quillon/fltheader.h>
#include <quillon/fltstream.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class FltLightSource;
class FltFace;
class KilnFace;
class ImpExpReport;

namespace interchange {

/// Writes what a plan holds. First `collect`, which fills the palettes, then `write`.
class SceneWriter final : public FltHeaderForm {
public:
    /// For a file of `revision`, one that can be written; 0 for that of the plan's header, or the
    /// nearest that can.
    SceneWriter(const Plan& plan, ImpExpReport& report, std::uint32_t revision);

    /// Gathers vertices, lights and textures of all nodes. Throws `ExportError` and `Cancelled`.
    void collect();

    /// The header that the file begins with.
    FltHeader header();

    /// Writes everything behind the header into a stream opened with that header and this as its
    /// form. Throws as `collect`.
    void write(FltStream& stream);

    FileBytes layOutHeader(const FltHeader& header) override;

    /// What the file cannot say of what was collected.
    const Losses& losses() const noexcept { return losses_; }

private:
    /// What stands behind a node's record: whether it is as it was read, or what it is instead.
    struct Changes {
        std::optional<std::string> longId;
        std::optional<std::string> comment;
        std::optional<Matrix3> matrix;
        bool keepsLongId = false;
        bool keepsComments = false;
        bool keepsTransforms = false;
        // Whether there is a place for them among the pieces that were read.
        bool hasLongId = false;
        bool hasComments = false;
        bool hasTransforms = false;
    };

    /// How far the levels of a node are.
    struct Body {
        std::uint32_t index = 0;
        std::uint32_t nextChild = 0;
        std::uint32_t levelForAll = kNone;  ///< for `moved`: the level that gets all children
        bool moved = false;                 ///< other children than those that were read
        bool isFace = false;                ///< what is below it are subfaces
        bool hadList = false;
        bool lacksList = false;   ///< corners that have no place yet
        bool lacksFaces = false;  ///< polygons that have no place yet
    };

    void tellProgress(std::uint32_t index, double start);

    void collectNode(std::uint32_t index);
    void collectMesh(std::uint32_t index);
    bool isNewMesh(const PlanNode& node, const Mesh& mesh, const KilnFace& options);
    bool isLitMesh(const PlanNode& node);
    void collectPolygon(const Mesh& mesh, bool lit, std::span<const std::uint32_t> corners,
                        std::span<const std::uint32_t> textures);
    void collectKept(const Kept& kept);
    void collectLosses(const PlanNode& node);
    void collectLight(std::uint32_t index);
    void collectTexture(std::uint32_t index);

    Kept keptFor(const PlanNode& node) const;
    FltRecord* recordOf(const PlanNode& node);
    std::uint32_t sourceRevision();
    void decidePlace(const PlanNode& node, const Kept& kept, Changes& changes) const;
    void decideLight(std::uint32_t index, const Kept& kept, FltLightSource& light,
                     Changes& changes);
    void decideTexts(const PlanNode& node, const Kept& kept, Changes& changes);

    bool hasFacesOfItsOwn(std::uint32_t index) const;
    void writeNode(std::uint32_t index);
    void writeNewMesh(std::uint32_t index);
    void writeBead(std::uint32_t index, const Kept& kept, Changes& changes);
    void writeRest(std::uint32_t index, const Kept& kept, Changes& changes);
    void writeChanges(Changes& changes);
    void writeText(std::uint16_t opcode, std::string_view text);
    void writeLongId(Changes& changes);
    void writeComment(Changes& changes);
    void writeMatrix(Changes& changes);
    void writeMatrix(const Matrix3& matrix);
    void writePiece(FileBytes piece, Changes& changes);
    bool fitsList(FileBytes uvList) const;

    void writeBody(std::uint32_t index, const Kept& kept, Changes& changes);
    void writeKeptPieces(Body& body, const Kept& kept, Changes& changes);
    void writeLevel(Body& body, std::uint16_t opcode);
    void writeMissing(Body& body, std::uint16_t opcode);
    void writeKeptChildren(Body& body, std::uint32_t level, std::uint32_t children);
    void writeChildren(Body& body, std::uint32_t count);
    void writeFaces(std::uint32_t index, std::uint32_t first);
    void writeFace(FltFace& face, std::uint32_t index);
    bool isSuperFace(std::uint32_t index) const;
    void push(FileBytes record);
    void push(std::uint16_t opcode);
    void pop(std::uint16_t opcode);
    void writeEmpty(std::uint16_t opcode);

    std::span<const std::uint32_t> polygon(std::uint32_t index, std::uint32_t number) const;
    void writeCorners(std::span<const std::uint32_t> corners);
    void writeKeptList(Body& body, FileBytes list, std::span<const std::uint32_t> vertices,
                       bool opaque);
    void writeOffsets(std::uint16_t opcode, std::span<const std::uint32_t> offsets);
    void writePalettes();

    /// The polygons of a node: a range of `polygonEnds_`.
    struct Polygons {
        std::uint32_t first = 0;
        std::uint32_t count = 0;
    };

    const Plan& plan_;
    ImpExpReport& report_;
    FltStream* stream_ = nullptr;
    RecordCache records_{fltCreateRecord};
    std::uint32_t revision_;
    Losses losses_;
    FilePalettes palettes_;
    VertexPalette vertices_;
    std::vector<std::uint8_t> polygonBytes_;  ///< the vertices of one polygon
    std::vector<VertexPalette::Candidate> polygonVertices_;
    bool palettesWritten_ = false;
    std::vector<Polygons> polygons_;                        ///< by index of the plan
    std::vector<std::uint32_t> polygonEnds_;                ///< in `corners_`
    std::vector<std::uint32_t> corners_;                    ///< offsets into the vertex palette
    std::map<std::uint32_t, std::int32_t> lightIndices_;    ///< by index of the plan
    std::map<std::uint32_t, std::int32_t> textureIndices_;  ///< by index of the plan
    std::map<std::uint32_t, NewFace> newFaces_;             ///< by index of the plan
    BeadMerger merger_;
    MeshPolygons meshPolygons_;
    VertexTails tails_;
    std::string name_;             ///< what the file calls the node that is being written
    std::size_t listCorners_ = 0;  ///< of the vertex list written last
    std::vector<std::uint8_t> list_;
    std::vector<std::uint8_t> header_;
    std::size_t depth_ = 0;
};

}  // namespace interchange
