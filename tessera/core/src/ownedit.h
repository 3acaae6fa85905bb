// Edits of the scene by the browser's client, which the browser shows by itself.
#pragma once

class INode;

namespace tessera {

/// While one lives, changes of the scene are our own, and the browser is not told of them. Where
/// what the edit shows by itself is not enough, the tree is filled again when it is over, even if
/// it failed half way.
class OwnEdit {
public:
    /// `concernsOtherItems`: the edit concerns more items than those it is made on.
    explicit OwnEdit(bool concernsOtherItems) noexcept;
    ~OwnEdit();
    OwnEdit(const OwnEdit&) = delete;
    OwnEdit& operator=(const OwnEdit&) = delete;

    /// The scene has changed: whether it was an edit of our own, which takes note of it.
    static bool takes() noexcept;
    /// No edit is under way.
    static void reset() noexcept;

private:
    const bool concernsOtherItems_;
};

/// Whether there is a definition of an instance in the subtree, which references elsewhere show.
bool holdsDefinition(INode* top);
/// Whether the node is a reference to an instance.
bool isReference(INode* node);

}  // namespace tessera
