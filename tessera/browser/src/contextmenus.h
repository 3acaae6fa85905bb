// The menus that the right mouse button and the menu key open over the tree and the grid.
#pragma once

#include "hierarchytree.h"

namespace tessera {

class EditCommands;
class NodeClipboard;
class PropertySide;
class SelectionCommands;
class SelectionFollower;
class TreeSearch;

/// Shows the menus and carries out what is chosen from them, and knows the keys of the same
/// commands, which the menus name.
class ContextMenus {
public:
    /// The parts of the form that carry the commands out.
    struct Parts {
        const framework::CWnd& form;
        HierarchyTree& tree;
        EditCommands& edits;
        SelectionCommands& selection;
        NodeClipboard& clipboard;
        PropertySide& properties;
        TreeSearch& search;
        SelectionFollower& follower;
    };

    explicit ContextMenus(const Parts& parts) noexcept : parts_(parts) {}

    /// Shows the menu of a control, at a point of the screen, or (-1, -1) for the keyboard's menu
    /// key. False for a control that has none.
    bool show(HWND control, POINT at);

    /// A key of the form's; whether it was one of a command for the control that has the keyboard,
    /// or one that opens its menu. Both happen once messages are handled again.
    bool onKey(const MSG& message) const;

    /// Posted to the form, to carry a command out; wParam is the command.
    static constexpr UINT kCarryOut = WM_APP + 4;
    void carryOut(int command);

private:
    void showTreeMenu(POINT at);
    void showGridMenu(POINT at);
    POINT besideCaret() const;

    const Parts parts_;
};

}  // namespace tessera
