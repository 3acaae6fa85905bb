// The scene graph's node.
#pragma once

#include <kiln/inode.h>
#include <kiln/texmap.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "changes.h"
#include "names.h"
#include "nodelist.h"
#include "scenehistory.h"

namespace kiln {

class Scene;

class Node final : public INode {
public:
    Node(Scene& scene, DWORD handle, std::string name);
    ~Node() override;

    bool IsRecorded() const noexcept override;

    const char* GetName() const override { return name_.c_str(); }
    void SetName(const char* name) override;
    DWORD GetHandle() const override { return handle_; }

    bool IsRootNode() const override;
    INode* GetParentNode() const override { return parent_; }
    int NumberOfChildren() const override { return static_cast<int>(children_.size()); }
    INode* GetChildNode(int index) const override;
    int GetChildIndex(const INode* child) const override;
    bool AttachChild(INode* child, bool keepPos) override;
    void Detach(TimeValue t, bool keepPos) override;
    void Delete(TimeValue t) override;

    Matrix3 GetNodeTM(TimeValue t) const override;
    void SetNodeTM(TimeValue t, const Matrix3& tm) override;
    Matrix3 GetLocalTM(TimeValue) const override { return place_ ? place_->local : Matrix3(); }
    void SetLocalTM(TimeValue t, const Matrix3& tm) override;

    ObjectState EvalWorldState(TimeValue) const override { return {object_}; }
    Object* GetObjectRef() const override { return object_; }
    void SetObjectRef(Object* object) override;
    Texmap* GetTexmap() const override { return texmap_; }
    void SetTexmap(Texmap* map) override;

    void Hide(bool hidden) override {
        if (change(hidden_, hidden)) noteSceneChanged();
    }
    bool IsHidden() const override { return hidden_; }
    bool Selected() const override { return selectionBlock != nullptr; }
    COLORREF GetWireColor() const override { return wireColor_; }
    void SetWireColor(COLORREF color) override {
        if (change(wireColor_, color)) noteSceneChanged(*this);
    }

    bool IsGroupHead() const override { return groupHead_; }
    bool IsGroupMember() const override { return groupMember_; }
    void SetGroupHead(bool head) override {
        if (change(groupHead_, head)) noteSceneChanged();
    }
    void SetGroupMember(bool member) override {
        if (change(groupMember_, member)) noteSceneChanged();
    }

    void InvalidateWS() override;

    // The core's own side.

    const std::string& name() const noexcept { return name_; }
    NameLinks& nameLinks() noexcept { return nameLinks_; }
    Node* parent() const noexcept { return parent_; }
    const auto& children() const noexcept { return children_; }
    auto& children() noexcept { return children_; }
    /// Hangs a node without parent under this one without checks or notifications.
    void adopt(Node* child);
    /// Takes the node from its parent, its transforms left alone.
    void unlink() noexcept;

    /// How the node stands to its scene.
    enum class State : std::uint8_t {
        kInScene,
        kDying,  ///< being deleted; still in its place
        kGone,   ///< only the history has it
    };
    bool dying() const noexcept { return state_ != State::kInScene; }
    bool gone() const noexcept { return state_ == State::kGone; }
    void setState(State state) noexcept { state_ = state; }
    /// Takes the node from its parent, which keeps the place, and back to it.
    void leavePlace() noexcept;
    void comeBack() noexcept;
    /// Has the parent keep the place of a node that is gone no longer.
    void giveUpPlace() noexcept;
    /// Takes the node to a place that is kept for it, below another parent or the same.
    void exchangePlace(Node*& parent, PlaceInList& place) noexcept;
    void exchangeLocal(Matrix3& local) noexcept;

    NodeBlock* siblingBlock = nullptr;    ///< where the node lies among its siblings
    NodeBlock* selectionBlock = nullptr;  ///< where it lies in the selection; null: not selected

private:
    template <typename T>
    bool change(T& member, T value) {
        if (member == value) return false;
        changeMember(*this, member, value);
        return true;
    }
    bool canAdopt(const Node* child) const noexcept;
    void relink(Node* newParent, bool keepPos);
    const Matrix3& world() const;
    void keepLocal();
    void setLocal(const Matrix3& tm);
    void setWorld(const Matrix3& tm);
    void applyLocal(const Matrix3& tm) noexcept;
    void applyWorld(const Matrix3& tm);
    void invalidateSubtree() noexcept;

    Scene& scene_;
    const DWORD handle_;
    COLORREF wireColor_ = DEFAULT_WIRE_COLOR;
    bool hidden_ = false;
    bool groupHead_ = false;
    bool groupMember_ = false;
    State state_ = State::kInScene;
    std::uint8_t placeInBlock_ = 0;  // while it is gone
    // The world transform is worked out when it is asked for. While a node's is not valid, neither
    // is that of any node below it.
    mutable bool worldValid_ = false;
    struct Place {
        Matrix3 local;
        Matrix3 world;
        Node* next = nullptr;  // while world transforms are being made invalid
    };
    Place& place() const;
    std::string name_;
    NameLinks nameLinks_;
    Node* parent_ = nullptr;
    Object* object_ = nullptr;
    Texmap* texmap_ = nullptr;
    NodeList<&Node::siblingBlock> children_;
    // Most nodes of a scene stand where their parent does, and most are never asked where that is.
    mutable std::unique_ptr<Place> place_;  // null: local is the identity, world not valid
};

/// `top` and all nodes below it, parents before children, siblings in order. Does not recurse.
std::vector<Node*> subtreeOf(Node* top);

}  // namespace kiln
