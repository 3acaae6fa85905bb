// The form's side of the attribute grid: showing a node's attributes and taking edits.
#include "attributestore.h"
#include "bulkoperation.h"
#include "cgridex.h"
#include "cswitch.h"
#include "valuetext.h"

#include <framework/cwaitcursor.h>
#include <resources/resource.h>

namespace tessera {
namespace {

constexpr COLORREF kGridBackground = 0xe0ffff;  // light yellow: blue, green, red

}  // namespace

Hierarchy::Hierarchy() : grid_(std::make_unique<CGridEx>()) {}
Hierarchy::~Hierarchy() = default;

bool Hierarchy::create(HWND parent) {
    CGridCtrl::RegisterGridClass();
    return Create(IDD_HIERARCHY, parent);
}

void Hierarchy::initialiseGrid() {
    grid_->SubclassDlgItem(IDC_GRID, Handle());
    grid_->SetEditable(true);
    grid_->SetDragAndDrop(true);
    grid_->SetBackground(kGridBackground);
    grid_->Reset();
    grid_->SizeColumns();
}

void Hierarchy::fitColumns() {
    grid_->ExpandColumnsToFit();
}

void Hierarchy::reduceGrid() {
    grid_->Reset();
}

void Hierarchy::showAttributes(const FltAttrGroup& set) {
    // The masks of a switch have an editor of their own.
    grid_->ShowAttributes(set, set.kind == FltNodeKind::Switch);
}

// Each taker refuses what was typed for an item that is current no more or has gone.
void Hierarchy::finishTyping() {
    grid_->EndEdit(true);
    if (comment_.HasFocus()) storeComment();
    tree_.EndEditLabel(false);
    if (switchEditor_) switchEditor_->FinishTyping();
}

// The attribute of the grid's focus row.
std::optional<int> Hierarchy::searchedAttribute() {
    const grid::CellId focus = grid_->FocusCell();
    if (focus.row < 1 || focus.row >= grid_->RowCount() || focus.column < 0 ||
        focus.column > grid_->ColumnCount())
        return std::nullopt;
    return focus.row - 1;
}

// False when there is nothing that could take the value.
bool Hierarchy::endEdit(int attribute, const std::string& entered) {
    const HTREEITEM item = current_;
    const NodeHandle node = tree_.Node(item);
    FltAttrGroup* const set = node ? loadAttributes(node) : nullptr;
    FltAttrDesc* const descriptor = set ? attributeAt(*set, attribute) : nullptr;
    if (!descriptor) return false;
    const std::string value = normalisedValue(*descriptor, entered);
    if (global_.IsChecked() && tree_.SelectedCount() >= 2)
        editSelected(*set, *descriptor, value);
    else
        editAttribute(node, *set, *descriptor, value);
    // What is normalised is shown again in any case; a text or choice only when the node has not
    // taken it as it was entered, which the cell shows already.
    const bool asEntered = loadAttributes(node) == set && descriptor->value.text() == entered;
    if (descriptor->controlling != 0 && asEntered)
        renewDependent(*set);
    else if (isNormalised(*descriptor) || !asEntered)
        showAgain(item);
    return true;
}

// Nodes of other kinds are passed over.
void Hierarchy::editSelected(FltAttrGroup& set, FltAttrDesc& attribute, const std::string& value) {
    const CWaitCursor wait;
    for (const TreeItem* item : tree_.VisibleSelection())
        if (item->node) editAttribute(item->node, set, attribute, value);
}

// The one attribute whose value decides about others is followed by the one that it decides about:
// only that row's editor changes.
void Hierarchy::renewDependent(const FltAttrGroup& set) {
    constexpr int kDependent = 1;
    if (const FltAttrDesc* descriptor = attributeAt(set, kDependent))
        grid_->RenewEditor(kDependent, *descriptor, set.kind == FltNodeKind::Switch);
}

// The user stays in the grid, or wherever it was that leaving the grid ended the edit.
void Hierarchy::showAgain(HTREEITEM item) {
    const BulkOperation keep(keepFocus_);
    showNode(item);
}

bool Hierarchy::notifyGrid(NMHDR& header, LRESULT& result) {
    if (header.code != LVN_ENDLABELEDITW) return false;
    constexpr LRESULT kRefused = -1;
    if (!endEdit(CGridCtrl::EditedCell(header).row - 1, CGridCtrl::EditedText(header)))
        result = kRefused;
    return true;
}

}  // namespace tessera
