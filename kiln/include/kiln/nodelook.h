// How nodes look: what plug-ins know of their materials and pictures, for the host's viewports.
#pragma once

#include <kiln/platform.h>

#include <optional>

class INode;
class Interface;

/// A color of light: red, green and blue, from 0 to 1.
struct LightColor {
    float red = 0;
    float green = 0;
    float blue = 0;
};

/// How one node looks beyond its object and wire color. As constructed: like one of which nobody
/// knows more.
struct NodeLook {
    /// By how much the surface's color is multiplied in the light from everywhere and from lamps.
    LightColor ambient{1, 1, 1};
    LightColor diffuse{1, 1, 1};
    LightColor emissive;  ///< what it shines with itself
    float opacity = 1;    ///< 1 for a surface that nothing shines through

    bool lit = true;           ///< whether lights change its color
    bool vertexColors = true;  ///< whether the mesh's colors, if any, stand for the wire color
    bool vertexNormals = true;
    bool white = false;    ///< neither of them colors it: what is seen is the picture alone
    bool blended = false;  ///< the picture's alpha lets through what lies behind

    /// The picture file on the surface as its author wrote it, UTF-8; null for none. Stays the
    /// source's, until `EndLooks`.
    const char* picture = nullptr;
    /// How many surfaces in the same place it lies upon.
    int layer = 0;

    /// Of a light: whether it shines, and in which color; nothing for what its object says.
    std::optional<bool> shines;
    std::optional<LightColor> light;
};

/// A plug-in that knows how some nodes look. The host asks the one that was made last while there
/// is one; the object takes itself back when it goes. Nothing here throws.
class KILNAPI NodeLookSource {
public:
    NodeLookSource() noexcept;
    virtual ~NodeLookSource();
    NodeLookSource(const NodeLookSource&) = delete;
    NodeLookSource& operator=(const NodeLookSource&) = delete;

    /// The host is about to ask for the looks of many nodes; until `EndLooks` the scene stays as it
    /// is. Children of one parent are best asked for one after the other.
    virtual void BeginLooks(Interface* ip) noexcept = 0;
    virtual void EndLooks() noexcept = 0;
    /// Puts what is known of the node into `look`, which is as constructed; false for nothing.
    virtual bool GetLook(INode* node, NodeLook& look) noexcept = 0;
    /// The node whose mesh and subtree this one shows too, as if it stood in this one's place; null
    /// for a node that stands for itself alone. Following these may lead in a circle.
    virtual INode* GetInstanced(INode* node) noexcept = 0;
    /// Whether the node, with all below it, is seen only where others show it and not in its own
    /// place.
    virtual bool IsOnlyInstanced(INode* node) noexcept = 0;
};

/// The source to be asked, or null.
KILNAPI NodeLookSource* GetNodeLookSource() noexcept;
