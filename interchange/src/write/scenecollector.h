// Goes through a scene for what a file needs before its nodes.
#pragma once

#include "../vertices.h"
#include "exportprogress.h"
#include "nodereader.h"
#include "polygons.h"
#include "scenecontent.h"

class KilnFace;

namespace interchange {

/// Gathers vertices, palette entries, looks and losses of all nodes of a plan.
class SceneCollector {
public:
    SceneCollector(const Plan& plan, ImpExpReport& report, SceneContent& content)
        : plan_(plan),
          content_(content),
          progress_(plan, report, ExportProgress::Half::collecting) {}

    /// Throws `ExportError` and `Cancelled`.
    void collect();

private:
    void collectNode(std::uint32_t index);
    void collectKept(const SourceRecords& kept);
    void collectLosses(const PlanNode& node);
    void collectMesh(std::uint32_t index, bool wasRead);
    void collectPoints(const Mesh& mesh);
    void collectPolygons(const PlanNode& node, const Mesh& mesh, bool keepTriangles);
    void collectPolygon(const Mesh& mesh, std::span<const std::uint32_t> corners,
                        std::span<const std::uint32_t> textures, const Point3f* normal);
    bool isNewMesh(const PlanNode& node, const Mesh& mesh, const KilnFace& options);
    bool isLitMesh(const PlanNode& node);
    void collectLight(std::uint32_t index);
    void collectTexture(std::uint32_t index);

    const Plan& plan_;
    SceneContent& content_;
    ExportProgress progress_;
    NodeReader nodes_;
    MeshPolygons meshPolygons_;
    VertexTails tails_;
    std::vector<std::uint8_t> vertexBytes_;  ///< the vertices of one polygon
    std::vector<VertexPalette::Candidate> vertices_;
};

}  // namespace interchange
