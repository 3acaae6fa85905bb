// The property side of the form: the current node's name, comment and attributes.
#pragma once

#include "hierarchy.h"
#include "valuecomparison.h"

#include <fltkilnutil/fltattr.h>
#include <framework/controls.h>

#include <memory>
#include <optional>
#include <string>

namespace tessera {

class ClientLink;
class SwitchSide;

/// Shows the node of the current item and takes the user's edits of it. "Current" is the item whose
/// node is shown; it need not be the tree's caret item.
class PropertySide {
public:
    PropertySide(const framework::CWnd& form, HierarchyTree& tree, const ClientLink& client,
                 SwitchSide& switchSide);
    ~PropertySide();

    /// Connects the controls of the form. Throws `std::bad_alloc`.
    void initialise();
    /// Fits scroll bar and columns to the controls' sizes. The columns keep the shares that the
    /// user gave them; those of their own become nearly equal while the grid is wide.
    void fit();

    /// The part of the grid's width that its captions take, in thousandths.
    int captionShare() const;
    void setCaptionShare(int thousandths);
    /// Gives so many thousandths more to the captions, as long as either column keeps a tenth.
    void moveColumns(int thousandths);

    HTREEITEM current() const noexcept { return current_; }
    /// Makes the item current and shows its node; null shows none. Every change of the current item
    /// comes here.
    void show(HTREEITEM item);
    /// Shows the current node again and leaves the keyboard where it is.
    void showAgain();
    /// While the result lives, showing a node does not move the keyboard to the tree.
    [[nodiscard]] base::ScopedValue<bool> keepFocus() noexcept { return {keepFocus_, true}; }
    /// Leaves no item current. What is shown stays until `clear`.
    void forget() noexcept { current_ = nullptr; }
    /// Shows no node.
    void clear();
    /// The text of the current item has changed.
    void itemRenamed(HTREEITEM item);
    /// Shows what is shown in the host's language of now, and leaves the keyboard where it is.
    void followLanguage();

    /// Stores what is being typed into a cell, the comment, a label or the mask field. Called
    /// before another node is shown and before the tree is refreshed or the form is closed. What
    /// was typed for an item that is no longer current or has been deleted is not stored.
    void finishTyping();

    /// Takes back what is being typed in the form.
    void cancelTyping();
    /// The same for the comment alone; false when that has not got the keyboard.
    bool cancelComment();

    /// Whether the values must be compared with those of other selected nodes again; once the
    /// selection has changed, or the node is shown anew.
    bool wantsComparison() const;
    /// Sets the form's timer of that number, which is then to call `compareSome` until that is
    /// done.
    void compareSoon() const;
    static constexpr UINT_PTR kCompareTimer = 2;
    /// Compares for a short time; false when it is done.
    bool compareSome();

    /// What the value under a point of the screen means, and which row that is; empty and 0 when
    /// there is none.
    std::string meaningAt(POINT screen) const;
    int rowAt(POINT screen) const;

    /// The attribute of the grid's focus row, if there is one.
    std::optional<int> focusedAttribute() const;

    // Commands on the selected rows of the grid.

    bool hasChosenRows() const;
    /// Whether one of them can be edited.
    bool canReset() const;
    /// Puts their values on the clipboard, or captions and values.
    void copyValues(bool withCaptions) const;
    /// Gives those that can be edited the values of a new node of the kind, as one edit: of the
    /// current node, or with Global of all selected ones. Beeps when there is none.
    void resetValues();

    // Sections of the grid: that of the focus cell, or all.

    /// Nothing where the focus cell is in none.
    std::optional<bool> isSectionFolded() const;
    bool hasSections() const;
    void foldSection(bool folded);
    void foldAllSections(bool folded);

    /// Below the grid's focus cell, on the screen.
    POINT belowFocusCell() const;

    /// A notification of the comment field or the grid; false for any other.
    bool onCommand(int id, UINT code);
    bool onGridNotify(NMHDR& header, LRESULT& result);

private:
    void shareOut(int thousandths);
    void showNode(NodeHandle node);
    void showSet(const FltAttrGroup& set);
    void showNone(const std::string& name);
    void showName(const FltAttrGroup& set);
    void setName(std::string name);
    void showComment(NodeHandle node);
    void storeComment();
    bool endEdit(int attribute, const std::string& entered);
    void editSelected(FltAttrGroup& set, FltAttrDesc& attribute, const std::string& value);
    void renewDependent(const FltAttrGroup& set);
    void focusTree();
    std::string lengthUnit() const;
    void valuesChanged();

    const framework::CWnd& form_;
    HierarchyTree& tree_;
    const ClientLink& client_;
    SwitchSide& switchSide_;
    const std::unique_ptr<Hierarchy::CGridEx> grid_;
    framework::CButton global_;
    framework::CEdit name_;
    framework::CEdit comment_;
    int firstShare_ = 0;  ///< of the captions, as they were at first
    int ownShare_ = 0;    ///< the last that the form chose; another one is the user's
    HTREEITEM current_ = nullptr;
    NodeHandle shownNode_ = 0;  ///< whose cells may be selected in the grid
    bool keepFocus_ = false;    ///< showing a node must not move the keyboard to the tree
    std::string shownName_;
    std::string shownComment_;
    ValueComparison comparison_;
    const FltAttrGroup* comparedSet_ = nullptr;  ///< of the node that is shown; null for none
    bool shownAnew_ = false;                     ///< since the comparison began
};

}  // namespace tessera
