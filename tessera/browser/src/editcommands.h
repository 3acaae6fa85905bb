// The form's commands that change the scene: moving, creating, attaching and renaming nodes.
#pragma once

#include "hierarchytree.h"

#include <framework/controls.h>

#include <functional>
#include <vector>

namespace tessera {

class ClientLink;
class PropertySide;
class SelectionCommands;

/// Checks what the user wants of the scene and sends it to the client as an edit.
class EditCommands {
public:
    EditCommands(const framework::CWnd& form, HierarchyTree& tree, ClientLink& client,
                 PropertySide& properties, SelectionCommands& selection) noexcept
        : form_(form),
          tree_(tree),
          client_(client),
          properties_(properties),
          selection_(selection) {}

    /// Fills the list of kinds that can be created.
    void initialise();
    /// Puts the names of the kinds into that list; the choice stays.
    void nameKinds();

    /// Moves the first selected node among its siblings: `kMoveUp` or `kMoveDown`.
    void move(BrowserEvent direction);
    /// Creates a node of the chosen kind below the selected item.
    void create();
    /// Creates a node of the kind in that row of the table below the first selected item, or beside
    /// it.
    void createBelow(int row);
    void createBeside(int row);
    /// Attaches the node of one item below that of another.
    void attach(HTREEITEM dragged, HTREEITEM target);
    /// Whether all of the nodes, or copies of them, may be attached below the target's; says why
    /// not.
    bool mayAttach(const std::vector<TreeItem*>& items, const TreeItem& target) const;
    /// Attaches them, as one step.
    void attachAll(const std::vector<TreeItem*>& items, HTREEITEM target);
    /// Whether the node of an item may be attached below that of another, for a drag: ask as long
    /// as the scene does not change.
    std::function<bool(HTREEITEM target)> dropTest(HTREEITEM dragged) const;
    /// A label edit has ended; whether its text is accepted.
    bool rename(const TVITEMW& edited);

private:
    void selectCaretOnly();
    void sendAttach(TreeItem& dragged, HTREEITEM target);
    void sendMove(BrowserEvent direction, const TreeItem& item);
    void createIn(const TreeItem& parent, int row);
    bool mayCreate(const TreeItem& parent, int choice) const;
    std::uint16_t confirmedOpcode(HTREEITEM parent, int choice) const;
    void selectLastChild(HTREEITEM parent, NodeHandle node);

    const framework::CWnd& form_;
    HierarchyTree& tree_;
    ClientLink& client_;
    PropertySide& properties_;
    SelectionCommands& selection_;
    framework::CComboBox createKind_;
};

}  // namespace tessera
