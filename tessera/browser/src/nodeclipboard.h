// Cutting, copying, pasting, duplicating and deleting nodes in the form's tree.
#pragma once

#include "hierarchytree.h"

#include <vector>

namespace tessera {

class ClientLink;
class EditCommands;
class PropertySide;
class SelectionCommands;

/// The commands on whole nodes, each of which is one step that can be undone. They act on the
/// selected items and everything below them. Cut nodes stay where they are until they are pasted,
/// which attaches them elsewhere; the others are the client's to carry out, where it offers that.
class NodeClipboard {
public:
    NodeClipboard(const framework::CWnd& form, HierarchyTree& tree, ClientLink& client,
                  EditCommands& edits, SelectionCommands& selection) noexcept
        : form_(form), tree_(tree), client_(client), edits_(edits), selection_(selection) {}

    // Whether the command would act. A command that cannot beeps.

    bool canCut() const;
    bool canCopy() const;
    bool canPaste() const;
    bool canDuplicate() const { return canCopy(); }
    bool canDelete() const { return canCopy(); }

    void cut();
    void copy();
    /// Below the first selected item.
    void paste();
    void duplicate();
    void remove();

    /// The nodes that were cut or copied may have gone.
    void forget() noexcept { nodes_.clear(); }

private:
    std::vector<TreeItem*> chosen() const;
    void note(bool cut);
    bool makeCopies(const std::vector<TreeItem*>& originals, const TreeItem* target);

    const framework::CWnd& form_;
    HierarchyTree& tree_;
    ClientLink& client_;
    EditCommands& edits_;
    SelectionCommands& selection_;
    std::vector<NodeHandle> nodes_;
    bool cut_ = false;
};

}  // namespace tessera
