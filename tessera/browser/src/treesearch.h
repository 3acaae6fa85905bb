// The line above the tree in which the user types to find nodes.
#pragma once

#include "hierarchytree.h"

#include <framework/controls.h>

#include <cstddef>

namespace tessera {

class FormLayout;
class PropertySide;

/// Finds nodes by a part of their name or of the name of their kind, without regard to case.
///
/// While the line is open and not empty, the items that do not match are dimmed. Typing shows the
/// first match from the caret on; the commands go on from there, around the end of the tree. A
/// match becomes the selection as by a click, in whatever branch it is.
class TreeSearch {
public:
    TreeSearch(const framework::CWnd& form, HierarchyTree& tree, FormLayout& layout,
               PropertySide& properties) noexcept
        : form_(form), tree_(tree), layout_(layout), properties_(properties) {}

    /// Opens the line, with what was last searched for, and gives it the keyboard.
    void open();
    /// Closes it: the tree is as large as before, and nothing in it is dimmed.
    void close();
    bool isOpen() const noexcept { return open_; }

    /// Shows the match after the caret, or before it. Beeps when there is none.
    void next(bool forward);

    /// A key of the form's; whether it was one of the search's.
    bool onKey(const MSG& message);
    /// A notification of the line's field; false for any other.
    bool onCommand(int id, UINT code);

    /// The tree is about to be painted: brings the matches up to date with its items.
    void update();
    /// Puts the line into the room that the layout has for it.
    void arrange() const;
    void followLanguage() const;

private:
    /// What a walk over the tree finds around an item.
    struct Around {
        TreeItem* before = nullptr;  ///< the match before it, or the last one of all
        TreeItem* after = nullptr;   ///< the match after it, or the first one of all
        std::size_t place = 0;       ///< which of the matches it is itself, from 1; 0 for none
    };

    void create();
    void evaluate();
    Around around(const TreeItem* item) const;
    void show(TreeItem& item);
    void showCount() const;

    const framework::CWnd& form_;
    HierarchyTree& tree_;
    FormLayout& layout_;
    PropertySide& properties_;
    framework::CEdit field_;
    framework::CWnd count_;
    bool open_ = false;
    std::size_t matches_ = 0;
    unsigned seen_ = 0;  ///< the state of the tree's items that the matches are of
};

}  // namespace tessera
