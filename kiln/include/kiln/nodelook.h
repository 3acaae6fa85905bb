// How nodes look: what plug-ins know of their materials and pictures, for the host's viewports.
#pragma once

#include <kiln/geometry.h>
#include <kiln/platform.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

class INode;
class Interface;

/// A color of light: red, green and blue, from 0 to 1.
struct LightColor {
    float red = 0;
    float green = 0;
    float blue = 0;
    bool operator==(const LightColor&) const = default;
};

/// Which parts of a surface are drawn. An outline is that of its polygons, in the node's color; an
/// open one leaves out the edge that leads back to a polygon's first vertex.
enum class SurfaceStyle {
    kBothSides,
    kFrontOnly,
    kClosedOutline,
    kOpenOutline,
    kSurfaceAndOutline
};

/// How a surface turns to the viewer's eye: not at all, about the vertical, or wholly.
enum class SurfaceFacing { kFixed, kUpright, kEye };

/// What light points show for some of their time.
struct LightPointStep {
    float seconds = 0;  ///< above 0
    bool isOn = true;
    std::optional<LightColor> color;  ///< in place of the point's own
    bool operator==(const LightPointStep&) const = default;
};

/// How light points look, and how they change with time. As constructed: small, always on, and seen
/// from everywhere.
struct LightPointLook {
    enum class Shines { kEverywhere, kAhead, kAheadAndBack };

    /// Ahead is the direction of a point's normal; one without a normal shines everywhere.
    Shines shines = Shines::kEverywhere;
    /// How far the light spreads across and along, in degrees from rim to rim; 0 as 180.
    float across = 0, along = 0;
    float roll = 0;                  ///< of both about the direction, in degrees
    std::optional<LightColor> back;  ///< the color in the opposite direction; nothing for the same
    float size = 0;                  ///< diameter in the node's units; 0 for a few pixels
    float leastPixels = 0, mostPixels = 0;  ///< of the diameter; 0 for no limit

    /// On for `onTime` seconds of every `period`, of which the first begins `delay` seconds late;
    /// always where one of them is not above 0.
    float period = 0, delay = 0, onTime = 0;
    /// What a period has one after another, in place of `onTime`, unless there is none. They stay
    /// the source's, until the next question.
    const LightPointStep* steps = nullptr;
    std::size_t stepCount = 0;
    /// The direction goes round this axis in `turn` seconds, counter-clockwise for who sees the
    /// axis point at them, and clockwise where they are below 0; not without these.
    float turn = 0;
    Point3 axis;

    bool turns() const { return turn > 0 || turn < 0; }
    bool changes() const { return period > 0 || turns(); }
};

/// A further picture on a surface, over what lies below it. What becomes of the color below, its
/// attribute file says.
struct PictureLayer {
    /// As `NodeLook::picture`; null leaves the layer out.
    const char* picture = nullptr;
    /// u and v for each vertex of the mesh, of which there are `placeCount`; for another number of
    /// vertices the mesh's own count. Stays the source's, until the next question.
    const float* places = nullptr;
    std::size_t placeCount = 0;
};

/// How one node looks beyond its object and wire color. As constructed: like one of which nobody
/// knows more.
struct NodeLook {
    /// By how much the surface's color is multiplied in the light from everywhere and from lamps.
    LightColor ambient{1, 1, 1};
    LightColor diffuse{1, 1, 1};
    LightColor emissive;  ///< what it shines with itself
    float opacity = 1;    ///< 1 for a surface that nothing shines through

    bool hidden = false;       ///< whether its surface is left out, whatever else it has
    bool lit = true;           ///< whether lights change its color
    bool vertexColors = true;  ///< whether the mesh's colors, if any, stand for the wire color
    bool vertexNormals = true;
    /// Of the surface, in place of the node's wire color; nothing for that.
    std::optional<LightColor> color;
    bool white = false;    ///< neither of them colors it: what is seen is the picture alone
    bool blended = false;  ///< the picture's alpha lets through what lies behind

    /// The picture file on the surface as its author wrote it, UTF-8; null for none. Stays the
    /// source's, until `EndLooks`.
    const char* picture = nullptr;
    /// The layers above the picture, the lowest first: at most `kMostLayers`, of which there are
    /// `layerCount`. The array stays the source's, until the next question.
    static constexpr std::size_t kMostLayers = 7;
    const PictureLayer* layers = nullptr;
    std::size_t layerCount = 0;
    /// A picture that shows in between the texels of the one above from close by; null for none.
    const char* detail = nullptr;
    /// Which of the surfaces in the same place lies upon the others: that of the highest layer.
    int layer = 0;
    SurfaceStyle style = SurfaceStyle::kBothSides;
    SurfaceFacing facing = SurfaceFacing::kFixed;
    float lineWidth = 1;  ///< of outlines, in pixels
    /// Of outlines: a bit for each pixel along a line, the lowest first, again and again.
    std::uint16_t linePattern = 0xFFFF;
    std::optional<LightColor> outline;  ///< with kSurfaceAndOutline; nothing for the node's color

    LightColor specular;  ///< which light is thrown back like by a mirror
    float shininess = 0;  ///< how small its spots are, from 0 to 128

    std::optional<LightPointLook> points;  ///< of light points; nothing for the usual

    /// Of a light: whether it shines, and in which color; nothing for what its object says.
    std::optional<bool> shines;
    std::optional<LightColor> light;
};

/// From how far away something is seen: nearest < distance <= farthest, from the eye to `center`,
/// in the node's coordinates; without one, to the middle of what is shown.
struct ViewRange {
    double nearest = 0;
    double farthest = 0;
    std::optional<Point3> center;
};

/// How light points below a node change with time: by their own looks, not at all, or by these, but
/// each node's beginning at a time of its own.
enum class LightChange : std::uint8_t { kAsTheySay, kNever, kAtRandom };

/// What one node decides for all that hangs below it. As constructed: nothing.
struct NodeBranch {
    /// Which of its children are shown: child i by bit i % 32 of word i / 32, beyond the words
    /// none. Null for all of them. The words stay the source's, until the next call.
    const std::uint32_t* shownChildren = nullptr;
    std::size_t shownWords = 0;
    /// Moves what hangs below it, in the node's coordinates.
    std::optional<Matrix3> motion;
    std::optional<ViewRange> range;
    float opacity = 1;   ///< by which that of surfaces is multiplied
    bool smooth = true;  ///< false: without the normals of vertices
    /// By how much the color of light points is multiplied; 0 leaves them out.
    float lightStrength = 1;
    LightChange lightChange = LightChange::kAsTheySay;
    bool byDay = true;  ///< whether it is to be seen by day
    bool atDusk = true;
    bool atNight = true;
};

/// How a node may move what hangs below it, in a frame of its own. There are nine motions: along
/// the frame's axes, in the node's units; about them, in degrees (pitch about x, roll about y, yaw
/// about z); and by factors along them. Of each three x comes before y before z.
struct NodeJoint {
    static constexpr std::size_t kMotions = 9, kFirstAngle = 3, kFirstScale = 6;
    using Values = std::array<double, kMotions>;

    struct Motion {
        bool isLimited = false;
        double least = 0, greatest = 0;  ///< where it is limited; as its author has them
        double step = 0;                 ///< by which its author would move it; 0 for none
    };

    Values values{};  ///< those of now; a factor of 1 leaves things as they are
    std::array<Motion, kMotions> motions;
};

/// What a node shows of another file. Both texts are UTF-8 and stay the source's, until `EndLooks`
/// or the next question.
struct NodeReference {
    const char* file = nullptr;  ///< as its author wrote it
    const char* part = nullptr;  ///< the name of the node in it that is shown; null for all of it
};

/// A plug-in that knows how some nodes look. The host asks the one that was made last while there
/// is one; the object takes itself back when it goes. Nothing here throws. What is not overridden
/// knows nothing.
class KILNAPI NodeLookSource {
public:
    NodeLookSource() noexcept;
    virtual ~NodeLookSource();
    NodeLookSource(const NodeLookSource&) = delete;
    NodeLookSource& operator=(const NodeLookSource&) = delete;

    /// The host is about to ask for the looks of many nodes; until `EndLooks` the scene stays as it
    /// is. Children of one parent are best asked for one after the other.
    virtual void BeginLooks(Interface* ip) noexcept { (void)ip; }
    virtual void EndLooks() noexcept {}
    /// Puts what is known of the node into `look`, which is as constructed; false for nothing.
    virtual bool GetLook(INode* node, NodeLook& look) noexcept {
        return (void)node, (void)look, false;
    }
    /// Puts what the node decides for all below it into `branch`, which is as constructed; false
    /// for nothing.
    virtual bool GetBranch(INode* node, NodeBranch& branch) noexcept {
        return (void)node, (void)branch, false;
    }
    /// Puts how the node may move what hangs below it into `joint`, which is as constructed; false
    /// for a node that moves nothing. To be asked at any time.
    virtual bool GetJoint(INode* node, NodeJoint& joint) noexcept {
        return (void)node, (void)joint, false;
    }
    /// `NodeBranch::motion` as it would be with these values. To be asked at any time.
    virtual std::optional<Matrix3> GetMotion(INode* node,
                                             const NodeJoint::Values& values) noexcept {
        return (void)node, (void)values, std::nullopt;
    }
    /// Makes the values those of now, as a change of the scene. False, and nothing has changed, for
    /// a node without a joint, values that are not finite, or without memory.
    virtual bool SetJoint(INode* node, const NodeJoint::Values& values) noexcept {
        return (void)node, (void)values, false;
    }
    /// The node whose mesh and subtree this one shows too, as if it stood in this one's place; null
    /// for a node that stands for itself alone. Following these may lead in a circle.
    virtual INode* GetInstanced(INode* node) noexcept { return (void)node, nullptr; }
    /// What a user means who clicks on the node: itself, or the node above it of which it is a
    /// piece. The same for all pieces of one node, and for that node.
    virtual INode* GetWhole(INode* node) noexcept { return node; }
    /// Whether the node, with all below it, is seen only where others show it and not in its own
    /// place.
    virtual bool IsOnlyInstanced(INode* node) noexcept { return (void)node, false; }
    /// Puts into `reference` what the node shows of another file, in its own place; false for
    /// nothing.
    virtual bool GetReference(INode* node, NodeReference& reference) noexcept {
        return (void)node, (void)reference, false;
    }
    /// Until `LeaveReference`, the nodes asked about are those that `node`, a reference, shows: its
    /// own file may have a say in how they look. The same number, until `EndLooks`, for references
    /// by which a node looks the same; 0 for how it looks by itself. They may be within one
    /// another.
    virtual std::uint32_t EnterReference(INode* node) noexcept { return (void)node, 0; }
    virtual void LeaveReference() noexcept {}
};

/// The source to be asked, or null.
KILNAPI NodeLookSource* GetNodeLookSource() noexcept;
