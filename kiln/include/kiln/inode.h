// A node of the scene graph.
#pragma once

#include <kiln/animatable.h>
#include <kiln/geometry.h>
#include <kiln/object.h>
#include <kiln/timevalue.h>

class Texmap;

/// What a new node has: light grey.
inline constexpr COLORREF DEFAULT_WIRE_COLOR = 0xC0C0C0;

/// A node: a name, a place among parent and children, a transform and an object.
///
/// Nodes are made by `Interface::CreateObjectNode` and belong to the scene. A node pointer is valid
/// until the node is deleted or the scene is emptied; `Interface::IsNodeInScene` tells.
class INode : public Animatable {
public:
    SClass_ID SuperClassID() const override { return NODE_CLASS_ID; }
    Class_ID ClassID() const override { return Class_ID(NODE_CLASS_ID, 0); }

    /// The name in UTF-8; valid until it is changed. Several nodes may have the same name.
    virtual const char* GetName() const = 0;
    /// Renames the node (null counts as empty; bytes that are not UTF-8 become U+FFFD) and sends
    /// `NOTIFY_NODE_RENAMED` when that changes the name. The root keeps its name.
    virtual void SetName(const char* name) = 0;
    /// A number that no other node of this run has; never 0.
    virtual DWORD GetHandle() const = 0;

    /// The scene's root: no parent, no object, never deleted, detached or attached.
    virtual bool IsRootNode() const = 0;
    /// The parent; null for the root. A node without one the user chose hangs on the root.
    virtual INode* GetParentNode() const = 0;
    virtual int NumberOfChildren() const = 0;
    /// The child at `index` in attachment order, null when out of range. Walking the indices in
    /// order costs constant time per step.
    virtual INode* GetChildNode(int index) const = 0;
    /// The index of `child` among the children, -1 when it is not one.
    virtual int GetChildIndex(const INode* child) const = 0;
    /// Makes `child` the last child of this node, taking it from its parent. With `keepPos` its
    /// world transform stays (unless this node's own cannot be inverted), otherwise its local one.
    /// A node that is already a child of this one becomes the last. False, and nothing happens,
    /// when `child` is null, the root, this node or above it, or is being deleted.
    /// Sends `NOTIFY_NODE_LINKED` when the child order changes.
    virtual bool AttachChild(INode* child, bool keepPos = true) = 0;
    /// Takes the node from its parent and makes it the last child of the root; a child of the root
    /// stays where it is, place included. With `keepPos` its world transform stays, otherwise its
    /// local one.
    virtual void Detach(TimeValue t, bool keepPos = true) = 0;
    /// Deletes the node and its subtree, as `Interface::DeleteNode` does.
    virtual void Delete(TimeValue t) = 0;

    /// The world transform.
    virtual Matrix3 GetNodeTM(TimeValue t) const = 0;
    /// Sets the world transform; the children move along. Without an invertible parent transform
    /// `tm` becomes the local transform. The root stays at the identity.
    virtual void SetNodeTM(TimeValue t, const Matrix3& tm) = 0;
    /// The transform relative to the parent.
    virtual Matrix3 GetLocalTM(TimeValue t) const = 0;
    virtual void SetLocalTM(TimeValue t, const Matrix3& tm) = 0;

    /// The object at the end of the node's pipeline. It stays the node's.
    virtual ObjectState EvalWorldState(TimeValue t) const = 0;
    /// The object that the node refers to; null for the root. Several nodes may share one.
    virtual Object* GetObjectRef() const = 0;
    /// Refers to `object` (may be null) instead, releasing the present one.
    virtual void SetObjectRef(Object* object) = 0;
    /// The diffuse texture map, or null.
    virtual Texmap* GetTexmap() const = 0;
    /// Uses `map` (may be null) instead, releasing the present one.
    virtual void SetTexmap(Texmap* map) = 0;

    /// Hides or shows this node alone; children keep their own state.
    virtual void Hide(bool hidden) = 0;
    virtual bool IsHidden() const = 0;
    virtual bool Selected() const = 0;
    /// Wire color, 0x00BBGGRR.
    virtual COLORREF GetWireColor() const = 0;
    virtual void SetWireColor(COLORREF color) = 0;

    /// Host groups: a head stands for the members below it. The flags are what they are set to.
    virtual bool IsGroupHead() const = 0;
    virtual bool IsGroupMember() const = 0;
    virtual void SetGroupHead(bool head) = 0;
    virtual void SetGroupMember(bool member) = 0;

    /// Tells the viewports that what this node shows has changed, where the host cannot see it.
    virtual void InvalidateWS() = 0;
};
