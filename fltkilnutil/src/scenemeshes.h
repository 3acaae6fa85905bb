// The meshes of nodes, each once.
#pragma once

#include <fltkilnutil/scenegeometry.h>
#include <kiln/kiln.h>

#include <span>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace fltkilnutil {

/// All nodes at and below `tops`, each once, parents before their children.
std::vector<INode*> nodesIn(std::span<INode* const> tops);

/// A mesh that may be changed, and the first node that shows it.
struct SceneMesh {
    INode* node = nullptr;
    TriObject* object = nullptr;
    bool keepsCorners = false;  ///< something that is kept on the node counts its corners

    const Mesh& mesh() const noexcept { return object->GetMesh(); }
};

/// The meshes with polygons that `nodes` show, without those that another node shows too. Nodes
/// whose meshes are left out are counted in `passedOver`.
std::vector<SceneMesh> meshesOf(Interface& host, const std::vector<INode*>& nodes,
                                std::uint32_t& passedOver);

/// Gives the object that mesh, unless it has it already. `order` is that of its vertices. False
/// when nothing changed; throws `std::bad_alloc` where the change could not be undone.
bool putMesh(const SceneMesh& at, Mesh&& mesh, const VertexOrder* order = nullptr);

/// Finds points that lie within a distance of each other.
class PointGrid {
public:
    explicit PointGrid(double distance) : distance_(distance) {}

    /// The number of the first point within the distance of `point`, which is one itself when there
    /// was none. Points that are not finite are always new.
    std::uint32_t add(const Point3& point);
    const Point3& at(std::uint32_t number) const { return points_[number]; }
    std::size_t size() const noexcept { return points_.size(); }

private:
    std::uint32_t findIn(std::uint64_t cell, const Point3& point) const;

    double distance_;
    std::vector<Point3> points_;
    std::vector<std::uint32_t> next_;                         ///< of the same cell
    std::unordered_map<std::uint64_t, std::uint32_t> first_;  ///< by the cell's hash
};

}  // namespace fltkilnutil
