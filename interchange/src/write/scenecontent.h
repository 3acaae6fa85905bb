// What a scene brings into a file beside its nodes: everything that has to be known before the
// first node is written.
#pragma once

#include "filepalettes.h"
#include "losses.h"
#include "newfaces.h"
#include "vertexpalette.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

namespace interchange {

/// The polygons of nodes, which are known by their indices in the plan. Corners are offsets into
/// the vertex palette.
class NodePolygons {
public:
    explicit NodePolygons(std::size_t nodes) : ofNode_(nodes) {}

    /// What is added from now on belongs to that node, which has none yet.
    void begin(std::uint32_t node);
    void addCorner(std::uint32_t offset) { corners_.push_back(offset); }
    /// Ends a polygon.
    void end();

    std::uint32_t count(std::uint32_t node) const noexcept { return ofNode_[node].count; }
    std::span<const std::uint32_t> corners(std::uint32_t node, std::uint32_t polygon) const;

private:
    struct Range {
        std::uint32_t first = 0;  ///< in `ends_`
        std::uint32_t count = 0;
    };
    std::vector<Range> ofNode_;
    std::vector<std::uint32_t> ends_;  ///< in `corners_`
    std::vector<std::uint32_t> corners_;
    std::uint32_t node_ = 0;  ///< whose polygons are being added
};

/// What was collected. Nodes are known by their indices in the plan.
struct SceneContent {
    SceneContent(std::size_t nodes, Losses lost) : polygons(nodes), losses(std::move(lost)) {}

    /// The index that the node's record is to have instead of its own; nothing where it stays.
    std::optional<std::int32_t> lightOf(std::uint32_t node) const { return at(lights, node); }
    std::optional<std::int32_t> textureOf(std::uint32_t node) const { return at(textures, node); }
    /// What the node says of its faces; nothing in particular for most.
    NewFace lookOf(std::uint32_t node) const { return at(newFaces, node).value_or(NewFace()); }

    FilePalettes palettes;
    VertexPalette vertices;
    NodePolygons polygons;
    std::map<std::uint32_t, std::int32_t> lights;    ///< entries of the light source palette
    std::map<std::uint32_t, std::int32_t> textures;  ///< entries of the texture palette
    std::map<std::uint32_t, NewFace> newFaces;
    Losses losses;  ///< what the file cannot say

private:
    template <typename T>
    static std::optional<T> at(const std::map<std::uint32_t, T>& map, std::uint32_t node) {
        const auto found = map.find(node);
        return found == map.end() ? std::nullopt : std::optional<T>(found->second);
    }
};

}  // namespace interchange
