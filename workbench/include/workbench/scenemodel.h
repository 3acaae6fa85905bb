// What the viewport draws: the host's scene, flattened into world space.
#pragma once

#include <workbench/geometry.h>

#include <compare>
#include <cstdint>
#include <span>
#include <vector>

namespace workbench {

/// The number of a thing that can be picked: an index into SceneModel::items().
using ItemIndex = std::uint32_t;
constexpr ItemIndex kNoItem = 0xFFFFFFFFu;

/// Things without a surface are shown as a mark of constant size on the screen.
enum class MarkKind : std::uint8_t { kHelper, kLight, kLightPoint };

/// One host node's share of the model.
struct Item {
    std::uint32_t firstVertex = 0, vertexCount = 0;
    std::uint32_t firstTriangle = 0, triangleCount = 0;
    /// Of the finishes of its vertices, when it has them.
    std::uint32_t firstFinish = 0;
    bool hasFinish = false;
    bool selected = false;
    bool outlined = false;  ///< selected, or below something that is
    Vec3d origin;           ///< its vertices are relative to this point of the world
    Box box;                ///< of its own surface or mark
    Box selectionBox;       ///< what its corner brackets enclose when it is selected
    Vec3d sphereCentre;     ///< of the surface, for culling
    float sphereRadius = 0;
};

/// Three vertices in counter-clockwise order, seen from the front.
struct Triangle {
    static constexpr std::uint8_t kAllEdges = 7;

    std::uint32_t vertex[3];
    Colour colour;
    Vec3 normal;         ///< unit length, or zero for a degenerate triangle
    std::uint8_t edges;  ///< bit i: the edge from vertex i to the next is a polygon's edge
};

/// What a vertex has of its own beside its place.
struct Finish {
    Vec3 normal;  ///< unit length; zero for that of the triangle
    Colour colour = 0;
    bool coloured = false;  ///< otherwise the colour is the triangle's
};

struct Mark {
    Vec3d position;
    Colour colour;
    ItemIndex item;
    MarkKind kind;
};

enum class LightKind : std::uint8_t { kDirectional, kPoint, kSpot };

/// What lights the scene.
struct Light {
    LightKind kind = LightKind::kDirectional;
    Vec3d position;
    Vec3 direction;  ///< in which it shines, unit length; of no meaning for a point light
    Vec3 strength;   ///< red, green and blue; 1 is full
};

/// Built anew whenever the scene has changed; the vectors keep their room from one time to the
/// next. Turning the camera reads it only.
class SceneModel {
public:
    void clear();

    /// Starts the next item; the surface and marks added next belong to it.
    ItemIndex beginItem();
    /// Adds a vertex of the current item, in world space; gives its index within the item.
    std::uint32_t addVertex(Vec3d world);
    /// Gives the vertices of the current item finishes, one for each in their order. Called once
    /// all of them have been added.
    void setFinishes(std::span<const Finish> finishes);
    /// Adds a triangle by the indices that addVertex gave. An index that does not exist, or a
    /// vertex that is not a finite point, leaves the triangle out.
    void addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, Colour colour,
                     std::uint8_t edges = Triangle::kAllEdges);
    void addMark(MarkKind kind, Vec3d world, Colour colour);
    /// A light that is not finite is left out.
    void addLight(const Light& light);
    /// Closes the current item. Its selection box is its own box until setSelectionBox.
    void endItem();

    /// `outlined`: whether the item or something above it is selected.
    void setSelected(ItemIndex item, bool selected, bool outlined) {
        items_[item].selected = selected;
        items_[item].outlined = outlined;
    }
    void setSelectionBox(ItemIndex item, const Box& box) { items_[item].selectionBox = box; }

    std::span<const Item> items() const { return items_; }
    std::span<const Vec3> vertices() const { return vertices_; }
    std::span<const Finish> finishes() const { return finishes_; }
    std::span<const Triangle> triangles() const { return triangles_; }
    std::span<const Mark> marks() const { return marks_; }
    std::span<const Light> lights() const { return lights_; }
    /// Encloses everything that shows; lights and helpers count only when there is nothing else.
    const Box& box() const { return box_.empty() ? helperBox_ : box_; }
    /// Encloses the selected items; empty without any.
    Box selectedBox() const;

private:
    struct SeenEdge {
        std::uint64_t ends;  // the lower vertex in the upper half
        std::uint32_t triangle;
        std::uint32_t edge;
        auto operator<=>(const SeenEdge&) const = default;
    };

    void dropDoubleEdges(const Item& item);

    std::vector<Item> items_;
    std::vector<Vec3> vertices_;
    std::vector<Finish> finishes_;
    std::vector<Triangle> triangles_;
    std::vector<Mark> marks_;
    std::vector<Light> lights_;
    std::vector<SeenEdge> seenEdges_;  // working memory
    Box box_, helperBox_;
};

}  // namespace workbench
