// The form's commands that select items: by hand, from and to the host, by a search.
#pragma once

#include "hierarchytree.h"

#include <fltkilnutil/nodekind.h>
#include <framework/controls.h>

#include <functional>
#include <limits>
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
    /// Selects an item alone, as a click does.
    void selectOnly(HTREEITEM item);
    /// Selects the first items of nodes, and no others, opens the branches that they are in, and
    /// shows the first of them.
    void selectNodes(const std::vector<NodeHandle>& nodes);
    /// The first item of each node that has one, in the order of the tree.
    std::vector<TreeItem*> firstItemsOf(const std::vector<NodeHandle>& nodes) const;

    /// Selects what stands directly below the selected items, or above them, or all nodes of the
    /// kinds of the selected ones, instead of them. Beeps when there is nothing of the sort.
    void selectChildren();
    void selectParents();
    void selectSameKind();

    /// Enables Create while exactly one item is selected.
    void countSelected();
    /// The tree is empty: nothing is selected.
    void forgetCount();

    void expandSelected(bool expand);
    /// Opens the selected branches so far that `level` levels below them are seen, and closes what
    /// is deeper.
    void expandToLevel(int level);
    static constexpr int kAllLevels = std::numeric_limits<int>::max();
    /// Gives the selection to the host, and takes the host's.
    void selectInHost();
    void selectFromHost();
    /// The same with the nodes given. Nothing happens where they are selected already; the keyboard
    /// stays where it is.
    void followHost(const std::vector<NodeHandle>& nodes);
    /// Selects every node of the current kind whose attribute in the grid's focus row has the value
    /// that the caret's node has, and brings the first of the others into view.
    void find();
    /// Called by `find` with how many items it has found.
    std::function<void(std::size_t)> onFound;
    /// Shows the next selected item, or for a negative step the previous one.
    void step(int step);

private:
    void selectItems(const std::vector<TreeItem*>& items);
    std::vector<TreeItem*> selectedTops() const;
    void spread(HTREEITEM old, HTREEITEM now);
    std::vector<NodeHandle> hostSelection() const;
    std::vector<TreeItem*> itemsOf(const std::vector<NodeHandle>& nodes) const;
    void selectInstead(const std::vector<NodeHandle>& nodes);
    std::vector<TreeItem*> markMatches(NodeHandle node, FltNodeKind kind, int attribute);

    const framework::CWnd& form_;
    HierarchyTree& tree_;
    ClientLink& client_;
    PropertySide& properties_;
    framework::CButton subtree_;
    std::size_t selectedCount_ = 0;
};

}  // namespace tessera
