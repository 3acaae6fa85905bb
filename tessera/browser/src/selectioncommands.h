// The form's commands that select items: by hand, from and to the host, by a search.
#pragma once

#include "hierarchytree.h"

#include <fltkilnutil/nodekind.h>
#include <framework/controls.h>

#include <vector>

namespace tessera {

class ClientLink;
class PropertySide;

class SelectionCommands {
public:
    SelectionCommands(const framework::CWnd& form, HierarchyTree& tree, ClientLink& client,
                      PropertySide& properties) noexcept
        : form_(form), tree_(tree), client_(client), properties_(properties) {}

    /// Connects the control of the form.
    void initialise();

    /// The tree tells of another caret item.
    void caretChanged(HTREEITEM old, HTREEITEM now);
    /// Makes an item the caret and shows its node, as the client asks.
    void select(HTREEITEM item);
    /// Enables Create while exactly one item is selected.
    void countSelected();
    /// The tree is empty: nothing is selected.
    void forgetCount();

    void expandSelected(bool expand);
    /// Gives the selection to the host, and takes the host's.
    void selectInHost();
    void selectFromHost();
    /// Selects every node of the current kind whose attribute in the grid's focus row has the value
    /// that the caret's node has.
    void find();
    /// Shows the next selected item, or for a negative step the previous one.
    void step(int step);

private:
    void spread(HTREEITEM old, HTREEITEM now);
    std::vector<NodeHandle> hostSelection() const;
    std::vector<TreeItem*> itemsOf(const std::vector<NodeHandle>& nodes) const;
    void markMatches(NodeHandle node, FltNodeKind kind, int attribute);

    const framework::CWnd& form_;
    HierarchyTree& tree_;
    ClientLink& client_;
    PropertySide& properties_;
    framework::CButton subtree_;
    std::size_t selectedCount_ = 0;
};

}  // namespace tessera
