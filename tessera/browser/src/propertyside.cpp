#include "propertyside.h"

#include "attributestore.h"
#include "cgridex.h"
#include "clientlink.h"
#include "hierarchytree.h"
#include "switchside.h"
#include "usermessages.h"
#include "valuetext.h"

#include <fltkilnutil/actions.h>
#include <fltkilnutil/kilnflt.h>
#include <framework/cwaitcursor.h>
#include <framework/strings.h>
#include <resources/resource.h>

#include <algorithm>
#include <cmath>
#include <utility>

using fltkilnutil::Action, fltkilnutil::ActionScope;
using framework::CWaitCursor, framework::CWnd, framework::loadString, framework::widthOf;
using grid::CGridCtrl;

namespace tessera {
namespace {

constexpr COLORREF kGridBackground = 0xe0ffff;  // light yellow: blue, green, red

// A comment keeps at most this many characters when it is edited here.
constexpr int kLongestComment = 8096;

constexpr int kValueColumn = 1;

// A grid of so many pixels at 100 % is wide. Captions and values then share it like that, in
// thousandths: what the headings have as a share would leave long captions in empty space.
constexpr int kWideGrid = 560;
constexpr int kWideCaptionShare = 450;

// An edit control shows only pairs of carriage return and line feed as line ends.
std::string withLineEnds(const std::string& text) {
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')) shown += '\r';
        shown += text[i];
    }
    return shown;
}

// The masks of a switch have an editor of their own.
bool isReadOnly(const FltAttrGroup& set) {
    return set.kind == FltNodeKind::Switch;
}

}  // namespace

PropertySide::PropertySide(const CWnd& form, HierarchyTree& tree, const ClientLink& client,
                           SwitchSide& switchSide)
    : form_(form),
      tree_(tree),
      client_(client),
      switchSide_(switchSide),
      grid_(std::make_unique<Hierarchy::CGridEx>()),
      comparison_(tree) {
    grid_->lengthUnit = [this] { return lengthUnit(); };
}
PropertySide::~PropertySide() = default;

void PropertySide::initialise() {
    global_.Attach(form_.Item(IDC_GLOBAL));
    name_.Attach(form_.Item(IDC_NAME));
    shownName_ = name_.Text();
    comment_.Attach(form_.Item(IDC_COMMENT));
    comment_.SetLimit(kLongestComment);
    grid_->SubclassDlgItem(IDC_GRID, form_.Handle());
    grid_->SetEditable(true);
    grid_->SetDragAndDrop(true);
    grid_->SetBackground(kGridBackground);
    grid_->Reset();
    grid_->SizeColumns();
    firstShare_ = ownShare_ = captionShare();
}

void PropertySide::fit() {
    comment_.FitScrollBar();
    const bool isWide = widthOf(grid_->ClientRect()) >= grid_->Scaled(kWideGrid);
    const int wanted = isWide ? kWideCaptionShare : firstShare_;
    if (captionShare() == ownShare_ && wanted != ownShare_) {
        shareOut(wanted);
        ownShare_ = wanted;
    }
    grid_->ExpandColumnsToFit();
}

int PropertySide::captionShare() const {
    return static_cast<int>(std::lround(1000 * grid_->ColumnShare(0)));
}

void PropertySide::setCaptionShare(int thousandths) {
    if (thousandths == kWideCaptionShare || thousandths == firstShare_) ownShare_ = thousandths;
    shareOut(thousandths);
    fit();
}

void PropertySide::moveColumns(int thousandths) {
    constexpr int kLeast = 100;
    const int now = captionShare();
    const int wanted = std::clamp(now + thousandths, kLeast, 1000 - kLeast);
    if (wanted == now) return;
    grid_->EndEdit(true);
    shareOut(wanted);
}

void PropertySide::shareOut(int thousandths) {
    grid_->SetColumnWidth(0, thousandths);
    grid_->SetColumnWidth(1, 1000 - thousandths);
    grid_->ExpandColumnsToFit();
}

void PropertySide::finishTyping() {
    grid_->EndEdit(true);
    if (comment_.HasFocus()) storeComment();
    tree_.EndEditLabel(false);
    switchSide_.finishTyping();
}

void PropertySide::cancelTyping() {
    grid_->EndEdit(false);
    tree_.EndEditLabel(true);
    cancelComment();
}

bool PropertySide::cancelComment() {
    if (!comment_.HasFocus()) return false;
    if (comment_.Text(kLongestComment) != shownComment_) {
        comment_.SetFittedText(shownComment_);
        comment_.Select(0, -1);
    }
    return true;
}

// ---------------------------------------------------------------- showing a node

void PropertySide::show(HTREEITEM item) {
    finishTyping();
    const TreeItem* const found = tree_.Find(item);
    current_ = found ? item : nullptr;
    const NodeHandle node = found ? found->node : 0;
    const bool isOther = node != std::exchange(shownNode_, node);
    showNode(node);
    // Only once the keyboard is where it goes: with it in the grid the focus cell stays selected.
    if (isOther) grid_->Deselect();
}

void PropertySide::showNode(NodeHandle node) {
    if (!node) return showNone("");
    const bool hasRecord = recordKind(node).has_value();
    const FltAttrGroup* const set = hasRecord ? loadAttributes(node) : nullptr;
    if (!set) return showNone(loadString(IDS_NO_RECORD));
    showSet(*set);
    focusTree();
    switchSide_.edit(set->kind == FltNodeKind::Switch ? current_ : nullptr);
}

// The set holds the current node's values.
void PropertySide::showSet(const FltAttrGroup& set) {
    comparedSet_ = &set;
    showName(set);
    valuesChanged();
    grid_->ShowAttributes(set, isReadOnly(set));
    comment_.Enable();
    showComment(tree_.Node(current_));
}

void PropertySide::showNone(const std::string& name) {
    comparedSet_ = nullptr;
    setName(name);
    showComment(0);
    grid_->Reset();
    focusTree();
    switchSide_.edit(nullptr);
}

void PropertySide::clear() {
    comparedSet_ = nullptr;
    switchSide_.edit(nullptr);
    setName("");
    showComment(0);
    grid_->Reset();
}

void PropertySide::showAgain() {
    const auto keep = keepFocus();
    show(current_);
}

void PropertySide::itemRenamed(HTREEITEM item) {
    if (item != current_) return;
    if (const FltAttrGroup* set = loadAttributes(tree_.Node(current_))) showName(*set);
}

void PropertySide::followLanguage() {
    grid_->NameColumns();
    showAgain();
}

void PropertySide::showName(const FltAttrGroup& set) {
    setName(std::string(set.caption ? set.caption : "") + ":" + tree_.ItemText(current_));
}

// The field cannot be typed into, so it still shows the text that it was set to; asking it takes
// almost as long as setting it.
void PropertySide::setName(std::string name) {
    if (shownName_ == name) return;
    name_.SetText(name);
    shownName_ = std::move(name);
}

// Moves the keyboard to the tree, but not away from another window while the form is hidden.
void PropertySide::focusTree() {
    if (form_.IsVisible() && !keepFocus_) tree_.SetFocus();
}

// ---------------------------------------------------------------- what the values mean

bool PropertySide::wantsComparison() const {
    return comparedSet_ && current_ && (shownAnew_ || comparison_.isStale());
}

void PropertySide::compareSoon() const {
    constexpr UINT kInterval = 30;  // milliseconds
    ::SetTimer(form_.Handle(), kCompareTimer, kInterval, nullptr);
}

bool PropertySide::compareSome() {
    const NodeHandle node = tree_.Node(current_);
    if (!comparedSet_ || !node) return false;
    if (wantsComparison()) {
        shownAnew_ = false;
        comparison_.begin(node, loadAttributes(node) == comparedSet_ ? comparedSet_ : nullptr);
        grid_->MarkDiffering({});
    }
    if (comparison_.step()) grid_->MarkDiffering(comparison_.differing());
    return !comparison_.isDone();
}

void PropertySide::valuesChanged() {
    shownAnew_ = true;
    if (tree_.Selection().count() >= 2) compareSoon();
}

// The choice that the header above the node has made.
std::string PropertySide::lengthUnit() const {
    constexpr int kUnits = 1;
    for (const TreeItem* item = tree_.Find(current_); item; item = item->parent) {
        if (!item->node || !isOfKind(item->node, FltNodeKind::Header)) continue;
        const FltAttrGroup* const header = loadAttributes(item->node);
        const FltAttrDesc* const units = header ? attributeAt(*header, kUnits) : nullptr;
        if (units && *units->value.text()) return units->value.text();
    }
    return loadString(IDS_UNIT_DATABASE);
}

int PropertySide::rowAt(POINT screen) const {
    return std::max(grid_->CellAt(grid_->ToClient(screen)).row, 0);
}

std::string PropertySide::meaningAt(POINT screen) const {
    return grid_->Describe(rowAt(screen));
}

std::optional<bool> PropertySide::isSectionFolded() const {
    const auto section = grid_->SectionOf(grid_->FocusCell().row);
    if (!section) return std::nullopt;
    return grid_->Sections()[*section].folded;
}

bool PropertySide::hasSections() const {
    return !grid_->Sections().empty();
}

void PropertySide::foldSection(bool folded) {
    if (const auto section = grid_->SectionOf(grid_->FocusCell().row))
        grid_->UserFolds(*section, folded);
}

void PropertySide::foldAllSections(bool folded) {
    grid_->UserFoldsAll(folded);
}

// ---------------------------------------------------------------- the comment

// Without a node it is empty and disabled.
void PropertySide::showComment(NodeHandle node) {
    std::string text;
    if (node) fltGetComment(nodeOf(node), text);
    const std::string shown = withLineEnds(text);
    if (comment_.Text() != shown) comment_.SetFittedText(shown);
    comment_.Enable(node != 0);
    shownComment_ = comment_.Text(kLongestComment);
}

// Only what the user changed is written: a node that was merely shown must not get a comment.
void PropertySide::storeComment() {
    const NodeHandle node = tree_.Node(current_);
    if (!node || !comment_.IsEnabled()) return;
    const std::string text = comment_.Text(kLongestComment);
    if (text == shownComment_) return;
    ActionScope scope(Action::kEditComment);
    if (!fltPutComment(nodeOf(node), text)) return;
    scope.Commit();
    shownComment_ = text;
}

bool PropertySide::onCommand(int id, UINT code) {
    if (id != IDC_COMMENT) return false;
    if (code == EN_KILLFOCUS)
        storeComment();
    else if (code == EN_CHANGE)
        comment_.FitScrollBar();
    return code == EN_KILLFOCUS || code == EN_CHANGE;
}

// ---------------------------------------------------------------- the grid

std::optional<int> PropertySide::focusedAttribute() const {
    const grid::CellId focus = grid_->FocusCell();
    if (focus.row < 1 || focus.row >= grid_->RowCount() || focus.column < 0 ||
        focus.column > grid_->ColumnCount())
        return std::nullopt;
    return focus.row - 1;
}

bool PropertySide::hasChosenRows() const {
    const grid::CellRange chosen = grid_->Selection();
    return !chosen.IsEmpty() && chosen.first.row >= 1;
}

bool PropertySide::canReset() const {
    const grid::CellRange chosen = grid_->Selection();
    if (!hasChosenRows()) return false;
    for (int row = chosen.first.row; row <= chosen.last.row; ++row)
        if (grid_->CanEdit({row, kValueColumn})) return true;
    return false;
}

void PropertySide::copyValues(bool withCaptions) const {
    if (!hasChosenRows()) return beepSimply();
    const grid::CellRange chosen = grid_->Selection();
    const int firstColumn = withCaptions ? 0 : kValueColumn;
    grid_->CopyRange({{chosen.first.row, firstColumn}, {chosen.last.row, kValueColumn}});
}

void PropertySide::resetValues() {
    grid_->EndEdit(true);
    if (!canReset()) return beepSimply();
    const grid::CellRange chosen = grid_->Selection();
    const NodeHandle node = tree_.Node(current_);
    ActionScope scope(Action::kEditAttribute);
    for (int row = chosen.first.row; row <= chosen.last.row; ++row) {
        FltAttrGroup* const set = node ? loadAttributes(node) : nullptr;
        FltAttrDesc* const attribute = set ? attributeAt(*set, row - 1) : nullptr;
        if (attribute && grid_->CanEdit({row, kValueColumn}))
            endEdit(row - 1, fltAttrDefault(*set, *attribute));
    }
    scope.Commit();
    showAgain();
}

POINT PropertySide::belowFocusCell() const {
    const grid::CellId focus = grid_->FocusCell();
    const auto section = grid_->SectionOf(focus.row);
    std::optional<RECT> cell = grid_->CellRect(focus);
    if (!cell && section) cell = grid_->SectionRect(*section);
    return grid_->ToScreen(cell ? POINT{cell->left, cell->bottom} : POINT{});
}

bool PropertySide::onGridNotify(NMHDR& header, LRESULT& result) {
    if (header.code != LVN_ENDLABELEDITW) return false;
    constexpr LRESULT kRefused = -1;
    if (!endEdit(CGridCtrl::EditedCell(header).row - 1, CGridCtrl::EditedText(header)))
        result = kRefused;
    return true;
}

// False when there is no attribute to store the value in. For a single node the set is loaded once
// and one row of it stored once, and the grid shows what the set holds then.
bool PropertySide::endEdit(int attribute, const std::string& entered) {
    const NodeHandle node = tree_.Node(current_);
    FltAttrGroup* const set = node ? loadAttributes(node) : nullptr;
    FltAttrDesc* const row = set ? attributeAt(*set, attribute) : nullptr;
    if (!row) return false;
    const std::string value = normalisedValue(*row, entered);
    bool loaded = false;
    ActionScope scope(Action::kEditAttribute);
    if (global_.IsChecked() && tree_.Selection().count() >= 2)
        editSelected(*set, *row, value);
    else
        loaded = storeAttribute(node, *set, *row, value);
    if (set->kind == FltNodeKind::Lod && client_.commands())
        client_.commands()->levelEdited(client_.clientData());
    scope.Commit();
    if (!loaded && loadAttributes(node) != set) {
        showAgain();  // it is no longer a node of the kind
        return true;
    }
    // A normalised value is always shown again; a text or choice only when the node holds another
    // one than was entered, since the cell shows that already.
    const bool asEntered = row->value.text() == entered;
    valuesChanged();
    if (row->controlling != 0 && asEntered)
        renewDependent(*set);
    else if (isNormalised(*row) || !asEntered)
        showSet(*set);
    return true;
}

// Nodes of other kinds are passed over.
void PropertySide::editSelected(FltAttrGroup& set, FltAttrDesc& attribute,
                                const std::string& value) {
    const CWaitCursor wait;
    for (const TreeItem* item : tree_.Selection().visible())
        if (item->node) editAttribute(item->node, set, attribute, value);
}

// The one attribute whose value decides about others is followed by the one that it decides about:
// only that row's editor changes.
void PropertySide::renewDependent(const FltAttrGroup& set) {
    constexpr int kDependent = 1;
    if (const FltAttrDesc* row = attributeAt(set, kDependent))
        grid_->RenewEditor(kDependent, *row, isReadOnly(set));
}

}  // namespace tessera
