// What the viewport draws: the host's scene, flattened into world space.
#pragma once

#include <render/geometry.h>
#include <render/place.h>
#include <render/standin.h>

#include <kiln/nodelook.h>

#include <algorithm>
#include <array>
#include <compare>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace render {

/// The number of a thing that can be picked: an index into SceneModel::items().
using ItemIndex = std::uint32_t;
constexpr ItemIndex kNoItem = 0xFFFFFFFFu;

/// Things without a surface are shown as a mark of constant size on the screen.
/// One that is missing stands for what could not be read.
enum class MarkKind : std::uint8_t { kHelper, kLight, kLightPoint, kMissing };

/// Whether marks of this kind belong to what a scene shows, and not to the ways of working with it.
constexpr bool isShownAlways(MarkKind kind) {
    return kind == MarkKind::kLightPoint || kind == MarkKind::kMissing;
}

class Texture;

/// Which sides and edges of a surface are drawn. An outline is that of its polygons, in their
/// color.
enum class DrawStyle : std::uint8_t { kBothSides, kFrontOnly, kOutline, kSurfaceAndOutline };

/// How a surface turns to the eye, about the middle of its box: not at all, about the world's
/// vertical, or wholly.
enum class Facing : std::uint8_t { kFixed, kUpright, kEye };

/// The pictures on a surface beside its own texture.
struct TextureLayers {
    static constexpr std::size_t kMost = NodeLook::kMostLayers;

    std::array<const Texture*, kMost> textures{};  ///< not owned; the lowest first
    std::size_t count = 0;
    const Texture* detail = nullptr;  ///< not owned; in between the texels of the texture, or null

    bool empty() const { return count == 0 && !detail; }
    bool operator==(const TextureLayers&) const = default;
};

/// How light makes colors of a surface, and which part of it is drawn.
struct Surface {
    /// What the surface reflects of the light from everywhere and from lamps, and what it shines
    /// with itself; red, green and blue, 1 is all.
    Vec3 ambient{1, 1, 1}, diffuse{1, 1, 1}, emissive;
    Vec3 specular;  ///< what it throws back like a mirror, in spots that `shininess` makes smaller
    float shininess = 0;
    float opacity = 1;
    bool lit = true;        ///< by the scene's lights; otherwise always about as bright
    bool blended = false;   ///< the texture's alpha lets through what lies behind
    std::int8_t layer = 0;  ///< drawn over surfaces of lower layers in the same place
    DrawStyle style = DrawStyle::kBothSides;
    Facing facing = Facing::kFixed;
    std::uint8_t lineWidth = 1;  ///< of an outline, in pixels
    /// Which pixels of an outline are drawn: a bit for each, the lowest first, again and again.
    std::uint16_t linePattern = 0xFFFF;
    Color outline = 0;                 ///< with kSurfaceAndOutline
    const Texture* texture = nullptr;  ///< not owned; for triangles with texture coordinates
    std::uint32_t layers = 0;          ///< their number in the model; 0 for none

    bool isTranslucent() const { return opacity < 1 || (blended && texture); }
    bool operator==(const Surface&) const = default;
};

/// A place in a texture; 1 is one repetition.
struct TexturePlace {
    float u = 0, v = 0;
};

/// Times of day at which an item is to be seen: bits.
enum Hours : std::uint8_t { kDay = 1, kDusk = 2, kNight = 4, kAllHours = kDay | kDusk | kNight };

/// The number of a range of distances; 0 stands for any.
using RangeIndex = std::uint32_t;

/// From how far away a level of detail is seen: nearest < distance <= farthest.
struct Range {
    double nearest = 0, farthest = 0;
    Vec3d centre;           ///< from which distances are measured
    RangeIndex within = 0;  ///< the range that has to show, too
};

/// The number of a model that stands within another one.
using PlacementIndex = std::uint32_t;
constexpr PlacementIndex kNoPlacement = 0xFFFFFFFFu;

/// One host node's share of the model.
struct Item {
    std::uint32_t firstVertex = 0, vertexCount = 0;
    std::uint32_t firstTriangle = 0, triangleCount = 0;
    /// Of the finishes of its vertices, when it has them.
    std::uint32_t firstFinish = 0;
    bool hasFinish = false;
    std::uint32_t surface = 0;  ///< index of its surface
    /// Of the texture coordinates of its triangles' corners, when it has them.
    std::uint32_t firstTexturePlace = 0;
    bool isTextured = false;
    std::uint8_t layerCount = 0;  ///< each with texture coordinates of its own
    bool selected = false;
    bool outlined = false;  ///< selected, or below something that is
    std::uint8_t hours = kAllHours;
    RangeIndex range = 0;
    PlacementIndex placement = kNoPlacement;  ///< instead of a surface of its own
    Vec3 front;                               ///< of what turns to the eye: its first normal
    Vec3d origin;        ///< its vertices are relative to this point of the world
    Box box;             ///< of its own surface or mark
    Box selectionBox;    ///< what its corner brackets enclose when it is selected
    Vec3d sphereCentre;  ///< of the surface, for culling
    float sphereRadius = 0;

    bool hasSurface() const { return triangleCount > 0 || placement != kNoPlacement; }
    /// Of each triangle: three of the texture, and then of each layer.
    std::size_t placesOfTriangle() const {
        return isTextured ? 3 * (1 + std::size_t{layerCount}) : 0;
    }
};

/// Three vertices in counter-clockwise order, seen from the front.
struct Triangle {
    static constexpr std::uint8_t kAllEdges = 7;
    static constexpr unsigned kSharedShift = 3;

    std::uint32_t vertex[3];
    Color color;
    Vec3 normal;  ///< unit length, or zero for a degenerate triangle
    /// Bit i: the edge from vertex i to the next is a polygon's edge; bit i + kSharedShift: it is
    /// one that an earlier triangle of the item draws.
    std::uint8_t edges;
};

/// The same for an edge in both directions: the lower of its vertices is in the upper half.
constexpr std::uint64_t endsOf(std::uint32_t a, std::uint32_t b) {
    return std::uint64_t{a < b ? a : b} << 32 | (a < b ? b : a);
}

/// What a vertex has of its own beside its place.
struct Finish {
    Vec3 normal;  ///< unit length; zero for that of the triangle
    Color color = 0;
    bool colored = false;  ///< otherwise the color is the triangle's
};

struct Mark {
    Vec3d position;
    Color color;
    ItemIndex item;
    MarkKind kind;
    std::uint32_t look = 0;  ///< of a light point: its number in the model; 0 for the usual
    Vec3 normal = {};        ///< of a light point: its direction, if it has one
};

enum class LightKind : std::uint8_t { kDirectional, kPoint, kSpot };

/// What lights the scene.
struct Light {
    LightKind kind = LightKind::kDirectional;
    Vec3d position;
    Vec3 direction;  ///< in which it shines, unit length; of no meaning for a point light
    Vec3 strength;   ///< red, green and blue; 1 is full
};

class SceneModel;

/// A model that stands within another one. Any number of them may show the same.
struct Placement {
    std::shared_ptr<const SceneModel> model;
    Place place;
    float opacity = 1;
};

/// Items that follow one another, or blocks of these: what is seen of none of them costs nothing.
struct Block {
    Box box;  ///< of their surfaces
    Vec3d centre;
    float radius = -1;           ///< below 0 without surfaces
    ItemIndex sample = kNoItem;  ///< one of those that have a surface
    bool isPlain = true;         ///< opaque, at any time and from any distance
};

/// Built anew when the scene has changed, the vectors keeping their room from one time to the next,
/// or item by item (`reopenItem`). Turning the camera reads it only.
class SceneModel {
public:
    /// Items or blocks in a block.
    static constexpr std::size_t kInBlock = 16;
    /// Wider lines, in pixels, reach too far out of what they belong to for it to be plain.
    static constexpr float kThinLine = 4;

    void clear();

    /// Starts the next item; the surface and marks added next belong to it.
    ItemIndex beginItem();
    /// Empties an item that was closed: what is added next belongs to it, as after `beginItem`,
    /// until `endItem`. Its place among the items stays, and whether it is selected. False, and
    /// nothing happens, for one that the model cannot take back: with light points, or placed light
    /// points that change.
    bool reopenItem(ItemIndex item);
    /// Brings up to date what the model says of all its items, after some of them were reopened.
    /// False when they do not fit in: the model then has to be built anew.
    bool endReopening();
    /// Moves items that are closed, until `endMoving`; nothing but `move...` is called meanwhile.
    /// Each is false where there is another number of things than the item has, or one that is not
    /// finite: the model then has to be built anew.
    ///
    /// The item's vertices, and their normals where they have some.
    bool moveItem(ItemIndex item, std::span<const Vec3d> vertices, std::span<const Vec3> normals);
    /// Afterwards, the item's marks. No normals, or one for each.
    bool moveMarks(ItemIndex item, std::span<const Vec3d> places, std::span<const Vec3> normals);
    std::size_t markCount(ItemIndex item) const { return marksOf(item).size(); }
    bool movePlacement(ItemIndex item, const Place& place);
    bool moveLight(std::size_t light, Vec3d position, Vec3 direction);
    void endMoving();
    /// Adds a vertex of the current item, in world space; returns its index within the item.
    std::uint32_t addVertex(Vec3d world);
    /// Sets the finishes of the current item's vertices, one for each in their order. Called once
    /// all of them have been added.
    void setFinishes(std::span<const Finish> finishes);
    /// A number for these, for surfaces.
    std::uint32_t addLayers(const TextureLayers& layers);
    /// Sets for the current item a surface other than the plain one, before its triangles.
    void setSurface(const Surface& surface);
    /// Adds a triangle by the indices that addVertex returned. An index that does not exist, or a
    /// vertex that is not a finite point, leaves the triangle out. On a surface with a texture or
    /// layers `places` are those of its corners, and then for each layer; null for none.
    void addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, Color color,
                     std::uint8_t edges = Triangle::kAllEdges,
                     const TexturePlace* places = nullptr);
    /// When, and from how far away, the current item is to be seen.
    void setHours(std::uint8_t hours) { items_[open_].hours = hours; }
    void setRange(RangeIndex range) { items_[open_].range = range; }
    /// Adds a range of distances. Its centre may be set later, when it is known.
    RangeIndex addRange(const Range& range);
    void changeRange(RangeIndex index, const Range& range) { ranges_[index] = range; }
    void setRangeCentre(RangeIndex range, Vec3d centre) { ranges_[range].centre = centre; }
    /// Levels of detail are chosen by hiding what is below them, and not by the eye.
    void setLevelsHidden() { levelsHidden_ = true; }
    void addMark(MarkKind kind, Vec3d world, Color color) { addMark(kind, world, color, open_); }
    /// The same, of an item that may be closed.
    void addMark(MarkKind kind, Vec3d world, Color color, ItemIndex item);
    /// A look of light points; the ones added next have it. Its steps are copied; where there are
    /// millions in all, it has none and does not change.
    std::uint32_t addLightLook(const LightPointLook& look);
    void addLightPoint(Vec3d world, Color color, std::uint32_t look, Vec3 normal);
    /// A light that is not finite is left out.
    void addLight(const Light& light);
    /// Has the current item, which has nothing else, show another model. One that is placed beyond
    /// all measure, or shows nothing, is left out.
    void setPlacement(Placement placement);
    /// Closes the current item. Its selection box is its own box until setSelectionBox.
    void endItem();

    /// `outlined`: whether the item or something above it is selected.
    void setSelected(ItemIndex item, bool selected, bool outlined) {
        Item& changed = items_[item];
        chosen_ -= changed.selected || changed.outlined;
        changed.selected = selected;
        changed.outlined = outlined;
        chosen_ += selected || outlined;
    }
    /// Has `standIn` show the model as it is now, until it changes. For one that is placed in
    /// others.
    void prepareStandIn() { standIn_ = std::make_shared<const StandIn>(*this); }
    void setSelectionBox(ItemIndex item, const Box& box) { items_[item].selectionBox = box; }

    std::span<const Item> items() const { return items_; }
    std::span<const Vec3> vertices() const { return vertices_; }
    std::span<const Finish> finishes() const { return finishes_; }
    std::span<const Triangle> triangles() const { return triangles_; }
    const Surface& surfaceOf(const Item& item) const { return surfaces_[item.surface]; }
    const TextureLayers& layersOf(const Surface& surface) const { return layers_[surface.layers]; }
    /// As many for each triangle as its item says.
    std::span<const TexturePlace> texturePlaces() const { return texturePlaces_; }
    std::span<const Mark> marks() const { return marks_; }
    std::span<const LightPointLook> lightLooks() const { return lightLooks_; }
    /// Whether some light point, of models within too, changes with time.
    bool changes() const { return changes_; }
    std::span<const Light> lights() const { return lights_; }
    /// By their numbers; a range comes behind the one that it is within.
    std::span<const Range> ranges() const { return ranges_; }
    bool levelsHidden() const { return levelsHidden_; }
    std::span<const Placement> placements() const { return placements_; }
    /// An item with a surface; kNoItem without any.
    ItemIndex sample() const { return sample_; }
    /// Whether nothing is lost when a dot stands for all of it from afar.
    bool isPlain() const { return isPlain_; }
    /// Whether an item is selected or outlined.
    bool hasChosen() const { return chosen_ > 0; }
    /// What is drawn of it where it takes up a few pixels, or null.
    const StandIn* standIn() const {
        return standIn_ && !standIn_->empty() ? standIn_.get() : nullptr;
    }
    /// How many items there are, with those of the models within; the largest number for more.
    std::uint64_t weight() const { return weight_; }

    /// Calls `enter` with blocks, and within those for which it returns true `see` with the
    /// numbers of items, all in the order of the items. The last few belong to no block.
    template <typename Enter, typename See>
    void walk(const Enter& enter, const See& see) const {
        walk(0, items_.size(), levels_.size(), enter, see);
    }
    /// The same for the items from `first`, a multiple of `kPart`, to before `end`, another one or
    /// how many items there are.
    template <typename Enter, typename See>
    void walkPart(std::size_t first, std::size_t end, const Enter& enter, const See& see) const {
        walk(first, end, std::min(levels_.size(), kPartLevels), enter, see);
    }
    static constexpr std::size_t kPart = kInBlock * kInBlock;

    /// Encloses everything that shows; lights and helpers count only when there is nothing else.
    const Box& box() const { return box_.empty() ? helperBox_ : box_; }
    /// Encloses the selected items; empty without any.
    Box selectedBox() const;

private:
    struct SeenEdge {
        std::uint64_t ends;
        std::uint32_t triangle;
        std::uint32_t edge;
        auto operator<=>(const SeenEdge&) const = default;
    };

    /// What an item had before it was reopened.
    struct Reopened {
        Item item;
        std::size_t mark = 0;  ///< the number of its mark
        bool hasMark = false;  ///< that nothing has taken the place of
    };

    std::span<const Mark> marksOf(ItemIndex item) const;
    void measure(Item& item) const;
    void addUpBlocks();
    void dropDoubleEdges(const Item& item);
    void takeOldPlace(Item& item);
    void replaceMark(const Mark& mark);
    Box boxOfMarks(bool shownAlways) const;
    void addBlocks();
    Block blockOf(ItemIndex index) const;
    Block blockAt(std::size_t level, std::size_t index) const;

    static constexpr std::size_t kPartLevels = 2;

    template <typename Enter, typename See>
    void walk(std::size_t next, std::size_t end, std::size_t level, const Enter& enter,
              const See& see) const {
        std::size_t span = 1;
        for (std::size_t i = 0; i < level; ++i) span *= kInBlock;
        for (; level-- > 0; span /= kInBlock)
            for (; next + span <= end; next += span) walkBlock(level, next / span, enter, see);
        for (; next < end; ++next) see(static_cast<ItemIndex>(next));
    }

    template <typename Enter, typename See>
    void walkBlock(std::size_t level, std::size_t block, const Enter& enter, const See& see) const {
        if (!enter(levels_[level][block])) return;
        const std::size_t first = block * kInBlock;
        for (std::size_t i = first; i < first + kInBlock; ++i)
            if (level == 0)
                see(static_cast<ItemIndex>(i));
            else
                walkBlock(level - 1, i, enter, see);
    }

    std::vector<Item> items_;
    std::vector<Vec3> vertices_;
    std::vector<Finish> finishes_;
    std::vector<Triangle> triangles_;
    std::vector<Surface> surfaces_{1};
    std::vector<TextureLayers> layers_{1};
    std::vector<TexturePlace> texturePlaces_;
    std::vector<Mark> marks_;
    std::vector<LightPointLook> lightLooks_{1};
    /// Where those of the looks are; of looks near one another with the same ones, once.
    std::vector<std::shared_ptr<const std::vector<LightPointStep>>> lightSteps_;
    std::size_t lightStepCount_ = 0;
    bool changes_ = false;
    std::vector<Light> lights_;
    std::vector<Range> ranges_{1};
    std::vector<Placement> placements_;
    /// Blocks of items, blocks of these, and so on, without those that are not full.
    std::vector<std::vector<Block>> levels_;
    ItemIndex sample_ = kNoItem;
    bool isPlain_ = true;
    std::uint64_t weight_ = 0;
    bool levelsHidden_ = false;
    std::size_t chosen_ = 0;  // items that are selected or outlined
    std::shared_ptr<const StandIn> standIn_;
    ItemIndex open_ = kNoItem;
    std::optional<Reopened> reopened_;
    bool fits_ = true;                 // all that was reopened
    std::size_t waste_ = 0;            // what no item has any more
    std::vector<SeenEdge> seenEdges_;  // working memory
    std::vector<std::size_t> moved_;   // items, and then their blocks
    bool marksMoved_ = false;
    Box box_;  // of surfaces and shownMarkBox_
    Box shownMarkBox_, helperBox_;
};

}  // namespace render
