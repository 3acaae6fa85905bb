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

// The attribute of the grid's focus row.
std::optional<int> Hierarchy::searchedAttribute() {
    const grid::CellId focus = grid_->FocusCell();
    if (focus.row < 1 || focus.row >= grid_->RowCount() || focus.column < 0 ||
        focus.column > grid_->ColumnCount())
        return std::nullopt;
    return focus.row - 1;
}

void Hierarchy::endEdit(int attribute, const std::string& entered) {
    const HTREEITEM item = current_;
    const NodeHandle node = tree_.Node(item);
    const FltAttrGroup* const set = node ? loadAttributes(node) : nullptr;
    const FltAttrDesc* const descriptor = set ? attributeAt(*set, attribute) : nullptr;
    if (!descriptor) return;
    const std::string value = normalisedValue(descriptor->type, entered);
    const bool controlling = descriptor->controlling != 0;
    const bool stored = global_.IsChecked() && tree_.SelectedCount() >= 2
                            ? storeInSelected(set->kind, attribute, value)
                            : storeValue(node, attribute, value);
    if (controlling)
        renewDependent(node);
    else if (isNormalised(descriptor->type) || !stored)
        showAgain(item);
}

bool Hierarchy::storeValue(NodeHandle node, int attribute, const std::string& value) {
    FltAttrGroup* const set = loadAttributes(node);
    FltAttrDesc* const descriptor = set ? attributeAt(*set, attribute) : nullptr;
    if (!descriptor) return false;
    descriptor->value.setText(value.c_str());
    return fltAttrStore(nodeOf(node), *set);
}

// Nodes of other kinds are passed over.
bool Hierarchy::storeInSelected(FltNodeKind kind, int attribute, const std::string& value) {
    const CWaitCursor wait;
    bool stored = true;
    for (const TreeItem* item : tree_.VisibleSelection())
        if (item->node && isOfKind(item->node, kind))
            stored = storeValue(item->node, attribute, value) && stored;
    return stored;
}

// The one attribute whose value decides about others is followed by the one that it decides about:
// only that row's editor changes.
void Hierarchy::renewDependent(NodeHandle node) {
    constexpr int kDependent = 1;
    const FltAttrGroup* const set = loadAttributes(node);
    if (!set) return;
    if (const FltAttrDesc* descriptor = attributeAt(*set, kDependent))
        grid_->RenewEditor(kDependent, *descriptor, set->kind == FltNodeKind::Switch);
}

// The edit may have ended because the user went elsewhere in the form, and stays there.
void Hierarchy::showAgain(HTREEITEM item) {
    const HWND focus = ::GetFocus();
    const bool elsewhere = focus && focus != grid_->Handle() && ::IsChild(Handle(), focus);
    const BulkOperation keep(keepFocus_, keepFocus_ || elsewhere);
    showNode(item);
}

bool Hierarchy::notifyGrid(NMHDR& header) {
    if (header.code != LVN_ENDLABELEDITW) return false;
    endEdit(CGridCtrl::EditedCell(header).row - 1, CGridCtrl::EditedText(header));
    return true;
}

}  // namespace tessera
