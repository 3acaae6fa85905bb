#include "ctreectrlex.h"

#include "formbusy.h"

#include <framework/text.h>
#include <windowsx.h>

#include <cstdlib>
#include <cstring>
#include <unordered_set>
#include <utility>

using tessera::TreeModel;

namespace {

constexpr int kDragThreshold = 9;        // pixels
constexpr UINT_PTR kScrollTimer = 0x5C;  // while dragging
constexpr UINT kScrollInterval = 60;     // milliseconds
constexpr int kScrollMargin = 14;        // pixels at 100 % scaling
// Below this many branches, changing them one by one in view costs less than the detour.
constexpr std::size_t kManyBranches = 8;
// How many siblings may have gone at one place for the next of them still to be recognised.
constexpr int kMostGone = 64;
// After this many differences the items are taken over by their places, whatever they showed.
constexpr int kMostDifferences = 1000;

bool isDown(int key) {
    return (::GetKeyState(key) & 0x8000) != 0;
}

// Counts up while it lives.
class CountUp {
public:
    explicit CountUp(int& counter) : counter_(counter) { ++counter_; }
    ~CountUp() { --counter_; }
    CountUp(const CountUp&) = delete;
    CountUp& operator=(const CountUp&) = delete;

private:
    int& counter_;
};

}  // namespace

// ---------------------------------------------------------------- items

tessera::NodeHandle CTreeCtrlEx::Node(HTREEITEM item) {
    const Item* found = Find(item);
    return found ? found->node : 0;
}

HTREEITEM CTreeCtrlEx::Add(HTREEITEM parent, std::string_view text, tessera::NodeHandle node,
                           int image) {
    const int shown = image < 0 ? 0 : image;
    HTREEITEM after = TVI_LAST;
    if (model_.hasWaiting()) {
        Item* const above = Find(parent);
        if (Item* const item = TakeBack(above, text, node, shown)) return item->handle;
        if (const Item* last = model_.last(above); model_.firstWaiting(above))
            after = last ? last->handle : TVI_FIRST;
    }
    const HTREEITEM handle =
        Insert(text, parent ? parent : TVI_ROOT, after, static_cast<LPARAM>(node), shown, shown);
    if (Item* const item = Find(handle)) {
        item->text = text;
        item->image = shown;
    }
    return handle;
}

// ---------------------------------------------------------------- refilling

CTreeCtrlEx::Refill::Refill(CTreeCtrlEx& tree) : tree_(tree) {
    if (tree_.refills_++ == 0) tree_.mayWait_ = true;
}

CTreeCtrlEx::Refill::~Refill() {
    if (--tree_.refills_ > 0) return;
    tree_.mayWait_ = false;
    if (!tree_.HasWindow()) return;
    tree_.DropWaiting();
    tree_.ForgetDeleted();
    tree_.CaretChanged();
}

// As after an emptying, the control has no caret then and shows what is added closed. That also
// keeps what is added and deleted out of its sight, where it takes less time.
void CTreeCtrlEx::KeepWaiting() {
    mayWait_ = false;
    differences_ = 0;
    recognised_ = false;
    EndEditLabel(true);
    MoveCaret(nullptr);
    for (const Item* top = model_.first(); top; top = top->next)
        Default(TVM_EXPAND, TVE_COLLAPSE, reinterpret_cast<LPARAM>(top->handle));
    model_.keepWaiting();
    ForgetDeleted();
}

// An item that waits below `parent` and shows what is to be added; null when there is none. Those
// before it have gone.
CTreeCtrlEx::Item* CTreeCtrlEx::TakeBack(Item* parent, std::string_view text,
                                         tessera::NodeHandle node, int image) {
    if (!model_.firstWaiting(parent)) return nullptr;
    int gone = 0;
    const Item* same = model_.firstWaiting(parent);
    while (same && same->node != node && gone < kMostGone) {
        same = same->next;
        ++gone;
    }
    if (same && same->node != node) same = nullptr;
    if (parent && !std::exchange(recognised_, true) && !same) {
        DropWaiting();  // another scene
        return nullptr;
    }
    if (same) {
        differences_ += gone;
        for (; gone > 0; --gone) DropFirstWaiting(parent);
    } else if (parent && ++differences_ < kMostDifferences) {
        return nullptr;
    }
    Item& item = model_.putBack(parent);
    if (item.node != node || item.text != text || item.image != image)
        ShowAnew(item, text, node, image);
    return &item;
}

void CTreeCtrlEx::ShowAnew(Item& item, std::string_view text, tessera::NodeHandle node, int image) {
    if (item.node != node && item.firstWaiting)
        Default(TVM_EXPAND, TVE_COLLAPSE, reinterpret_cast<LPARAM>(item.handle));
    std::wstring wideText = toWide(text);
    TVITEMW shown{};
    shown.mask = TVIF_HANDLE | TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    shown.hItem = item.handle;
    shown.pszText = wideText.data();
    shown.lParam = static_cast<LPARAM>(node);
    shown.iImage = shown.iSelectedImage = image;
    Default(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&shown));
    item.node = node;
    item.text = text;
    item.image = image;
}

void CTreeCtrlEx::DropFirstWaiting(Item* parent) {
    const CountUp changing(changing_);
    const HTREEITEM handle = model_.firstWaiting(parent)->handle;
    model_.dropWaiting(parent);
    Default(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(handle));
}

void CTreeCtrlEx::DropWaiting() {
    if (!model_.hasWaiting()) return;
    const CountUp changing(changing_);
    while (model_.firstWaiting(nullptr)) DropFirstWaiting(nullptr);
    for (Item* at = model_.first(); at; at = TreeModel::following(*at)) {
        if (at->firstWaiting && !at->firstChild) {
            while (at->firstWaiting) model_.dropWaiting(at);
            DeleteAllBelow(at->handle);
        }
        while (at->firstWaiting) DropFirstWaiting(at);
    }
}

bool CTreeCtrlEx::IsExpanded(const Item& item) const {
    return item.firstChild && (ItemState(item.handle, TVIS_EXPANDED) & TVIS_EXPANDED) != 0;
}

// Everything that adds, deletes or marks items passes here, so the model cannot miss it.
LRESULT CTreeCtrlEx::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const tessera::FormBusy busy;
    switch (message) {
        case TVM_INSERTITEMA:
        case TVM_INSERTITEMW:
            return reinterpret_cast<LRESULT>(
                InsertThrough(message, *reinterpret_cast<const TVINSERTSTRUCTW*>(lParam)));
        case TVM_DELETEITEM:
            return DeleteThrough(message, wParam, lParam);
        case TVM_SETITEMA:
        case TVM_SETITEMW:
            return SetThrough(message, wParam, lParam);
        case TVM_GETITEMA:
        case TVM_GETITEMW:
            return GetThrough(message, wParam, lParam);
        case TVM_GETCOUNT:
            if (!model_.hasWaiting()) break;
            return static_cast<LRESULT>(model_.size());
        case TVM_GETITEMSTATE: {
            const LRESULT state = CTreeCtrl::WindowProc(message, wParam, lParam);
            const auto mask = static_cast<UINT>(lParam);
            const UINT shown =
                WithMark(static_cast<UINT>(state), reinterpret_cast<HTREEITEM>(wParam));
            return static_cast<LRESULT>(shown & mask) | (state & ~static_cast<LRESULT>(mask));
        }
        case TVM_SELECTITEM: {
            const LRESULT result = CTreeCtrl::WindowProc(message, wParam, lParam);
            CaretChanged();
            return result;
        }
        default:
            break;
    }
    return CTreeCtrl::WindowProc(message, wParam, lParam);
}

// A large scene is added item by item: sending the message takes as long as the control's work on
// it.
HTREEITEM CTreeCtrlEx::InsertItem(const TVINSERTSTRUCTW& insertion) {
    return InsertThrough(TVM_INSERTITEMW, insertion);
}

HTREEITEM CTreeCtrlEx::InsertThrough(UINT message, const TVINSERTSTRUCTW& insertion) {
    const auto handle =
        reinterpret_cast<HTREEITEM>(Default(message, 0, reinterpret_cast<LPARAM>(&insertion)));
    if (!handle) return nullptr;
    const TVITEMW& given = insertion.item;
    const bool top = !insertion.hParent || insertion.hParent == TVI_ROOT;
    const bool last = insertion.hInsertAfter == TVI_LAST;
    Item* const after = last ? nullptr : Find(PreviousSibling(handle));
    Item* const parent = top ? nullptr : Find(insertion.hParent);
    const auto node = (given.mask & TVIF_PARAM) != 0
                          ? static_cast<tessera::NodeHandle>(given.lParam)
                          : tessera::NodeHandle{0};
    try {
        Item& item = model_.insert(handle, parent, after, !last && !after, node);
        if ((given.mask & TVIF_STATE) != 0 && (given.state & TVIS_SELECTED) != 0)
            SetSelected(item, true);
    } catch (...) {
        Default(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(handle));
        throw;
    }
    return handle;
}

LRESULT CTreeCtrlEx::DeleteThrough(UINT message, WPARAM wParam, LPARAM lParam) {
    const auto handle = reinterpret_cast<HTREEITEM>(lParam);
    const bool all = !handle || handle == TVI_ROOT;
    if (all && mayWait_) {
        KeepWaiting();
        return TRUE;
    }
    if (all)
        model_.clear();
    else if (Item* item = Find(handle))
        model_.remove(*item);
    else
        return FALSE;
    ForgetDeleted();
    const LRESULT result = CTreeCtrl::WindowProc(message, wParam, lParam);
    CaretChanged();
    return result;
}

void CTreeCtrlEx::ForgetDeleted() {
    if (!Find(anchor_)) anchor_ = nullptr;
    if (!Find(caret_)) caret_ = nullptr;
    if (!Find(pressed_)) {
        pressed_ = nullptr;
        pressPending_ = false;
    }
    if (!Find(dropTarget_)) dropTarget_ = nullptr;
    if (dragged_ && !Find(dragged_)) CancelDrag();
}

// The control's own selected bit is that of its caret. Marking an item there takes it a pass over
// all that is expanded, so the marks of all others live in the model alone; whoever asks the
// control for an item's state gets the model's answer, and `Draw` paints it.

UINT CTreeCtrlEx::WithMark(UINT state, HTREEITEM item) {
    const Item* found = Find(item);
    if (!found) return state;
    return found->selected ? state | TVIS_SELECTED : state & ~static_cast<UINT>(TVIS_SELECTED);
}

// The narrow structures differ from the wide ones in the type of the text pointer only.
LRESULT CTreeCtrlEx::SetThrough(UINT message, WPARAM wParam, LPARAM lParam) {
    TVITEMEXW item{};
    const auto& given = *reinterpret_cast<const TVITEMW*>(lParam);
    const bool marks = (given.mask & TVIF_STATE) != 0 && (given.stateMask & TVIS_SELECTED) != 0;
    Item* const found = Find(given.hItem);
    if (found && (given.mask & (TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE)) != 0)
        found->image = Item::kUnknownImage;
    if (!found || !marks) return CTreeCtrl::WindowProc(message, wParam, lParam);
    SetSelected(*found, (given.state & TVIS_SELECTED) != 0);
    std::memcpy(&item, &given,
                (given.mask & TVIF_INTEGRAL) != 0 ? sizeof(TVITEMEXW) : sizeof(TVITEMW));
    item.stateMask &= ~static_cast<UINT>(TVIS_SELECTED);
    if (item.stateMask == 0) item.mask &= ~static_cast<UINT>(TVIF_STATE);
    if ((item.mask & ~static_cast<UINT>(TVIF_HANDLE)) == 0) return TRUE;
    return CTreeCtrl::WindowProc(message, wParam, reinterpret_cast<LPARAM>(&item));
}

LRESULT CTreeCtrlEx::GetThrough(UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = CTreeCtrl::WindowProc(message, wParam, lParam);
    auto& item = *reinterpret_cast<TVITEMW*>(lParam);
    if (result && (item.mask & TVIF_STATE) != 0) item.state = WithMark(item.state, item.hItem);
    return result;
}

LRESULT CTreeCtrlEx::Draw(NMTVCUSTOMDRAW& draw) {
    if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT) return CDRF_DODEFAULT;
    const auto item = reinterpret_cast<HTREEITEM>(draw.nmcd.dwItemSpec);
    if (item == dropTarget_) return CDRF_DODEFAULT;
    const bool marked = IsSelected(item);
    const bool focus = HasFocus();
    // Otherwise the control insists on its own colours for the caret.
    draw.nmcd.uItemState &= ~static_cast<UINT>(CDIS_SELECTED);
    draw.clrText = ::GetSysColor(marked && focus ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT);
    draw.clrTextBk =
        !marked ? Background() : ::GetSysColor(focus ? COLOR_HIGHLIGHT : COLOR_BTNSHADOW);
    return CDRF_DODEFAULT;
}

void CTreeCtrlEx::PauseRedraw() {
    if (paused_++ > 0) return;
    drawingPause_.emplace(Handle());
    SetRedraw(false);
}

void CTreeCtrlEx::ResumeRedraw() {
    if (--paused_ > 0) return;
    SetRedraw(true);
    drawingPause_.reset();
}

// ---------------------------------------------------------------- selection

// The control marks the new caret item and takes the mark from the old one.
void CTreeCtrlEx::CaretChanged() {
    const HTREEITEM now = Caret();
    if (now == caret_) return;
    if (Item* old = Find(std::exchange(caret_, now))) model_.setSelected(*old, false);
    if (Item* item = Find(now)) model_.setSelected(*item, true);
}

void CTreeCtrlEx::MoveCaret(HTREEITEM item) {
    const CountUp changing(changing_);
    Select(item);
}

bool CTreeCtrlEx::IsSelected(HTREEITEM item) {
    const Item* found = Find(item);
    return found && found->selected;
}

void CTreeCtrlEx::SetSelected(Item& item, bool selected) {
    if (item.selected == selected) return;
    model_.setSelected(item, selected);
    if (paused_ == 0) Invalidate(false);
}

// Visits the visible items in order, leaving out branches without any of the wanted ones, until
// `visit` gives false.
template <typename Visit>
void CTreeCtrlEx::WalkVisible(const std::vector<Item*>& wanted, Visit visit) {
    if (wanted.empty()) return;
    const std::vector<Item*> above = TreeModel::ancestorsBottomUp(wanted);
    const std::unordered_set<const Item*> branches(above.begin(), above.end());
    for (Item* at = model_.first(); at;) {
        if (!visit(*at)) return;
        at = at->firstChild && branches.count(at) != 0 && IsExpanded(*at)
                 ? TreeModel::following(*at)
                 : TreeModel::skipping(*at);
    }
}

std::vector<CTreeCtrlEx::Item*> CTreeCtrlEx::VisibleItems() {
    std::vector<Item*> items;
    for (Item* at = model_.first(); at; at = at->firstChild && IsExpanded(*at)
                                                 ? TreeModel::following(*at)
                                                 : TreeModel::skipping(*at))
        items.push_back(at);
    return items;
}

std::vector<CTreeCtrlEx::Item*> CTreeCtrlEx::VisibleSelection() {
    // Where much is selected, looking at everything is quicker than looking for it.
    if (model_.selectedCount() > model_.size() / 4) {
        std::vector<Item*> items = VisibleItems();
        std::erase_if(items, [](const Item* item) { return !item->selected; });
        return items;
    }
    std::vector<Item*> found;
    WalkVisible(model_.selected(), [&](Item& item) {
        if (item.selected) found.push_back(&item);
        return true;
    });
    return found;
}

CTreeCtrlEx::Item* CTreeCtrlEx::FirstSelected() {
    Item* found = nullptr;
    WalkVisible(model_.selected(), [&](Item& item) {
        if (item.selected) found = &item;
        return !found;
    });
    return found;
}

CTreeCtrlEx::Item* CTreeCtrlEx::NextSelected(HTREEITEM from, bool forward) {
    Item* const start = Find(from);
    if (!start) return nullptr;
    std::vector<Item*> wanted = model_.selected();
    wanted.push_back(start);
    Item* before = nullptr;
    Item* after = nullptr;
    bool passed = false;
    WalkVisible(wanted, [&](Item& item) {
        if (&item == start)
            passed = true;
        else if (item.selected)
            (passed ? after : before) = &item;
        return !after && (forward || !passed);
    });
    if (!passed) return nullptr;
    return forward ? after : before;
}

void CTreeCtrlEx::SelectAlso(HTREEITEM item, bool keep) {
    const HTREEITEM former = Caret();
    if (former == item) {
        if (!keep) MoveCaret(nullptr);
        return;
    }
    MoveCaret(item);
    anchor_ = item;
    if (Item* old = Find(former)) SetSelected(*old, true);
}

void CTreeCtrlEx::ClearSelection(bool keepCaret) {
    if (!keepCaret) MoveCaret(nullptr);
    for (Item* item : model_.selected()) SetSelected(*item, false);
}

void CTreeCtrlEx::SpreadMark(HTREEITEM item) {
    Item* const top = Find(item);
    if (!top) return;
    for (Item* at = TreeModel::following(*top, top); at; at = TreeModel::following(*at, top))
        SetSelected(*at, top->selected);
}

void CTreeCtrlEx::ClickSelect(HTREEITEM item, bool shift, bool control) {
    const HTREEITEM old = Caret();
    if (shift)
        SelectRange(item);
    else if (control)
        ToggleSelected(item);
    else
        SelectOnly(item);
    NotifySelectionChanged(old, item);
}

// Marks the visible items from the anchor to `item`, and those only.
void CTreeCtrlEx::SelectRange(HTREEITEM item) {
    if (!anchor_) anchor_ = Caret();
    MoveCaret(item);
    const std::vector<Item*> all = VisibleItems();
    const auto position = [&all](HTREEITEM wanted, std::size_t otherwise) {
        for (std::size_t i = 0; i < all.size(); ++i)
            if (all[i]->handle == wanted) return i;
        return otherwise;
    };
    std::size_t to = position(item, 0);
    // An anchor that has been collapsed out of view since gives a range of one.
    std::size_t from = position(anchor_, to);
    if (from > to) std::swap(from, to);
    for (std::size_t i = 0; i < all.size(); ++i) SetSelected(*all[i], i >= from && i <= to);
}

void CTreeCtrlEx::ToggleSelected(HTREEITEM item) {
    Item* const old = Find(Caret());
    const bool oldSelected = old && old->selected;
    const bool wasSelected = IsSelected(item);
    MoveCaret(item);
    if (old) SetSelected(*old, oldSelected);
    if (Item* clicked = Find(item)) SetSelected(*clicked, !wasSelected);
    if (!anchor_) anchor_ = item;
}

void CTreeCtrlEx::SelectOnly(HTREEITEM item) {
    ClearSelection(false);
    MoveCaret(item);
    if (Item* clicked = Find(item)) SetSelected(*clicked, true);
    anchor_ = item;
}

void CTreeCtrlEx::NotifySelectionChanged(HTREEITEM old, HTREEITEM now) {
    NMTREEVIEWW notification{};
    notification.hdr = {Handle(), static_cast<UINT_PTR>(Id()), static_cast<UINT>(TVN_SELCHANGEDA)};
    notification.action = TVC_BYMOUSE;
    const auto fill = [this](TVITEMW& item, HTREEITEM handle) {
        item.mask = TVIF_HANDLE | TVIF_STATE | TVIF_PARAM;
        item.hItem = handle;
        item.stateMask = TVIS_SELECTED;
        item.state = IsSelected(handle) ? TVIS_SELECTED : 0U;
        item.lParam = static_cast<LPARAM>(Node(handle));
    };
    fill(notification.itemOld, old);
    fill(notification.itemNew, now);
    ::SendMessageW(Parent(), WM_NOTIFY, notification.hdr.idFrom,
                   reinterpret_cast<LPARAM>(&notification));
}

// ---------------------------------------------------------------- branches

void CTreeCtrlEx::ExpandAll(const std::vector<Item*>& tops) {
    ChangeBranches(BranchesBottomUp(tops), TVE_EXPAND);
}

void CTreeCtrlEx::CollapseAll(const std::vector<Item*>& tops) {
    ChangeBranches(BranchesBottomUp(tops), TVE_COLLAPSE);
}

std::vector<CTreeCtrlEx::Item*> CTreeCtrlEx::BranchesBottomUp(const std::vector<Item*>& tops) {
    std::vector<Item*> branches;
    for (auto top = tops.rbegin(); top != tops.rend(); ++top)
        for (Item* at : TreeModel::bottomUp(**top))
            if (at->firstChild) branches.push_back(at);
    return branches;
}

// Expands or collapses the branches, given bottom-up. Everything that opens or shuts several of
// them comes here.
//
// The control goes over all its visible items at every change of a visible branch, and when one is
// collapsed over all that are still expanded behind it. So they are changed from the last to the
// first, out of its sight: below top-level items that are collapsed meanwhile.
void CTreeCtrlEx::ChangeBranches(const std::vector<Item*>& branches, UINT code) {
    if (branches.empty()) return;
    const RedrawPause pause(*this);
    const std::unordered_set<const Item*> changed(branches.begin(), branches.end());
    std::vector<Item*> hidden;
    if (branches.size() >= kManyBranches)
        for (Item* top = model_.first(); top; top = top->next)
            if (IsExpanded(*top)) hidden.push_back(top);
    if (2 * hidden.size() >= branches.size()) hidden.clear();

    // The control moves its caret to what it collapses, and with it the mark.
    const bool collapses = code == TVE_COLLAPSE;
    const auto inView = [&](HTREEITEM item) {
        for (const Item* at = collapses ? Find(item) : nullptr; at; at = at->parent)
            if (changed.contains(at->parent)) item = at->parent->handle;
        return item;
    };
    const HTREEITEM caret = Caret();
    const HTREEITEM newCaret = inView(caret);
    const HTREEITEM firstShown = inView(FirstVisible());
    std::vector<std::pair<Item*, bool>> marks;
    for (Item* at = Find(caret); at; at = at->parent) marks.emplace_back(at, at->selected);
    {
        const CountUp changing(changing_);
        for (const Item* top : hidden) Expand(top->handle, TVE_COLLAPSE);
        for (const Item* at : branches) Expand(at->handle, code);
        for (const Item* top : hidden)
            if (!changed.contains(top)) Expand(top->handle, TVE_EXPAND);
        if (Caret() != newCaret) Select(newCaret);
        caret_ = newCaret;
        for (const auto& [item, selected] : marks) SetSelected(*item, selected);
        if (!hidden.empty())
            Send(TVM_SELECTITEM, TVGN_FIRSTVISIBLE, reinterpret_cast<LPARAM>(firstShown));
    }
    if (newCaret != caret) NotifySelectionChanged(caret, newCaret);
}

void CTreeCtrlEx::Reveal(const std::vector<Item*>& items) {
    ChangeBranches(TreeModel::ancestorsBottomUp(items), TVE_EXPAND);
}

CTreeCtrlEx::Arrangement CTreeCtrlEx::Remember(Item* top) {
    Arrangement arrangement;
    arrangement.firstShown = Node(FirstVisible());
    for (Item* at = top ? top : model_.first(); at;) {
        const bool open = IsExpanded(*at);
        if (open && at->node) arrangement.open.insert(at->node);
        at = open ? TreeModel::following(*at, top) : TreeModel::skipping(*at, top);
    }
    return arrangement;
}

void CTreeCtrlEx::Restore(const Arrangement& arrangement, Item* top) {
    const RedrawPause pause(*this);
    std::vector<Item*> tops;
    for (Item* at = top ? top : model_.first(); at; at = top ? nullptr : at->next)
        tops.push_back(at);
    std::vector<Item*> branches = BranchesBottomUp(tops);
    std::erase_if(branches, [&](const Item* at) { return !arrangement.open.contains(at->node); });
    ChangeBranches(branches, TVE_EXPAND);
    if (!arrangement.firstShown) return;
    for (Item* at = model_.first(); at; at = TreeModel::following(*at)) {
        if (at->node != arrangement.firstShown) continue;
        Send(TVM_SELECTITEM, TVGN_FIRSTVISIBLE, reinterpret_cast<LPARAM>(at->handle));
        return;
    }
}

// All at once: one by one, the control looks each of them up among all items and closes the gap.
void CTreeCtrlEx::DeleteChildren(HTREEITEM handle) {
    Item* const parent = Find(handle);
    if (!parent || (!parent->firstChild && !parent->firstWaiting)) return;
    const RedrawPause pause(*this);
    const CountUp changing(changing_);
    // The caret goes where the control would put it after the last of them.
    const Item* const caret = Find(Caret());
    if (caret && caret != parent && TreeModel::isWithin(*caret, *parent)) Select(handle);
    while (parent->firstChild) model_.remove(*parent->firstChild);
    while (parent->firstWaiting) model_.dropWaiting(parent);
    ForgetDeleted();
    DeleteAllBelow(handle);
}

// In the control alone.
void CTreeCtrlEx::DeleteAllBelow(HTREEITEM handle) {
    Send(TVM_EXPAND, TVE_COLLAPSE | TVE_COLLAPSERESET, reinterpret_cast<LPARAM>(handle));
    // Otherwise it keeps its button, for children that were only taken out of memory. Not every
    // version of the control can find out by itself that there are none.
    SetChildren(handle, I_CHILDRENAUTO);
    if (ShowsButton(handle)) SetChildren(handle, 0);
}

// ---------------------------------------------------------------- mouse

void CTreeCtrlEx::OnLButtonDown(UINT keys, POINT at) {
    UINT where = 0;
    const HTREEITEM item = HitTest(at, &where);
    const bool shift = (keys & MK_SHIFT) != 0;
    const bool control = (keys & MK_CONTROL) != 0;
    // With a modifier held the click extends the selection even on the caret's label.
    if (item && (where & TVHT_ONITEMLABEL) != 0 && item == Caret() && !shift && !control) {
        SetFocus();
        EditLabel(item);
        return;
    }
    if (!item || (where & TVHT_ONITEM) == 0) {
        Default();
        return;
    }
    SetFocus();
    pressed_ = item;
    pressPoint_ = at;
    pressPending_ = IsSelected(item);
    ::SetCapture(Handle());  // so that the button's release is not missed
    if (!pressPending_) ClickSelect(item, shift, control);
}

void CTreeCtrlEx::OnLButtonUp(UINT keys, POINT) {
    const HTREEITEM dragged = dragged_;
    const HTREEITEM target = dropTarget_;
    const HTREEITEM pressed = std::exchange(pressed_, nullptr);
    const bool pending = std::exchange(pressPending_, false);
    if (dragged) EndDragging();
    if (::GetCapture() == Handle()) ::ReleaseCapture();
    Default();
    if (dragged && onDrop) onDrop(dragged, target);
    if (pending && Find(pressed))
        ClickSelect(pressed, (keys & MK_SHIFT) != 0, (keys & MK_CONTROL) != 0);
}

bool CTreeCtrlEx::WantsDrag(POINT at) const noexcept {
    // A drop attaches one node, so several selected items are not dragged.
    return pressed_ && SelectedCount() <= 1 &&
           (std::abs(at.x - pressPoint_.x) >= kDragThreshold ||
            std::abs(at.y - pressPoint_.y) >= kDragThreshold);
}

void CTreeCtrlEx::OnMouseMove(UINT, POINT at) {
    if (dragged_) {
        DragTo(at);
    } else if (WantsDrag(at)) {
        pressPending_ = false;
        BeginDrag(std::exchange(pressed_, nullptr), at);
    }
    Default();
}

void CTreeCtrlEx::OnRButtonDown(UINT, POINT at) {
    UINT where = 0;
    const HTREEITEM item = HitTest(at, &where);
    if (item && (where & TVHT_ONITEM) != 0 && SelectedCount() < 2) Select(item);
    Default();
}

// ---------------------------------------------------------------- dragging

// The drag image is placed from the window's corner, the mouse from that of the client area.
POINT CTreeCtrlEx::InWindow(POINT client) const noexcept {
    const POINT screen = ToScreen(client);
    const RECT window = WindowRect();
    return {screen.x - window.left, screen.y - window.top};
}

void CTreeCtrlEx::BeginDrag(HTREEITEM item, POINT at) {
    dragged_ = item;
    dropTarget_ = nullptr;
    dragImage_ = CreateDragImage(item);
    CImageList::DragShow(true);
    dragImage_.SetDragCursorImage(0, {0, 0});
    dragImage_.BeginDrag(0, {0, 0});
    CImageList::DragMove(InWindow(at));
    CImageList::DragEnter(Handle(), InWindow(at));
    ::SetCapture(Handle());
    ::SetTimer(Handle(), kScrollTimer, kScrollInterval, nullptr);
}

void CTreeCtrlEx::DragTo(POINT at) {
    CImageList::DragMove(InWindow(at));
    const HTREEITEM item = HitTest(at);
    if (!item || item == dropTarget_) return;  // over empty space the last target stays
    CImageList::DragLeave(Handle());
    dropTarget_ = item;
    SelectDropTarget(item);
    Update();
    CImageList::DragEnter(Handle(), InWindow(at));
}

void CTreeCtrlEx::ScrollWhileDragging() {
    POINT at{};
    ::GetCursorPos(&at);
    at = ToClient(at);
    const RECT area = ClientRect();
    const int margin = Scaled(kScrollMargin);
    if (at.x < area.left || at.x >= area.right) return;
    const bool up = at.y < area.top + margin;
    if (!up && at.y < area.bottom - margin) return;
    CImageList::DragShow(false);
    Send(WM_VSCROLL, up ? SB_LINEUP : SB_LINEDOWN);
    Update();
    CImageList::DragShow(true);
    DragTo(at);
}

void CTreeCtrlEx::OnTimer(UINT_PTR id) {
    if (id == kScrollTimer)
        ScrollWhileDragging();
    else
        Default();
}

// Takes everything of a drag away; what was dragged and where to is up to the caller.
void CTreeCtrlEx::EndDragging() {
    ::KillTimer(Handle(), kScrollTimer);
    CImageList::DragLeave(Handle());
    CImageList::EndDrag();
    dragImage_.Delete();
    dragged_ = nullptr;
    dropTarget_ = nullptr;
    SelectDropTarget(nullptr);
}

void CTreeCtrlEx::CancelDrag() {
    if (!dragged_) return;
    EndDragging();
    if (::GetCapture() == Handle()) ::ReleaseCapture();
}

void CTreeCtrlEx::OnCaptureChanged(HWND gaining) {
    if (gaining != Handle()) {
        CancelDrag();
        pressed_ = nullptr;
        pressPending_ = false;
    }
    Default();
}

void CTreeCtrlEx::OnCancelMode() {
    CancelDrag();
    Default();
}

// ---------------------------------------------------------------- keyboard

void CTreeCtrlEx::OnKeyDown(UINT key, UINT, UINT) {
    const bool vertical = key == VK_UP || key == VK_DOWN;
    if (key == VK_ESCAPE && dragged_)
        CancelDrag();
    else if (vertical && isDown(VK_SHIFT))
        ExtendByKey(key);
    else if (vertical && !isDown(VK_CONTROL))  // with Ctrl the control scrolls
        MoveCaretByKey();
    else
        Default();
}

void CTreeCtrlEx::ExtendByKey(UINT key) {
    const HTREEITEM former = Caret();
    const HTREEITEM next = key == VK_UP ? PreviousVisible(former) : NextVisible(former);
    if (former && next) {
        const bool wasSelected = IsSelected(next);
        MoveCaret(next);
        if (Item* old = Find(former); old && !wasSelected) SetSelected(*old, true);
        NotifySelectionChanged(former, next);
    }
    NotifyKeyDown(key);
}

void CTreeCtrlEx::MoveCaretByKey() {
    const HTREEITEM former = Caret();
    ClearSelection(true);
    Default();
    // At the end of the tree the caret stays, and so does its mark.
    if (former && Caret() == former) {
        if (Item* item = Find(former)) SetSelected(*item, true);
        NotifySelectionChanged(former, former);
    }
}

void CTreeCtrlEx::NotifyKeyDown(UINT key) {
    NMTVKEYDOWN notification{};
    notification.hdr = {Handle(), static_cast<UINT_PTR>(Id()), static_cast<UINT>(TVN_KEYDOWN)};
    notification.wVKey = static_cast<WORD>(key);
    ::SendMessageW(Parent(), WM_NOTIFY, notification.hdr.idFrom,
                   reinterpret_cast<LPARAM>(&notification));
}

// The selected items have another colour without the focus.
void CTreeCtrlEx::OnSetFocus(HWND) {
    Default();
    Invalidate();
}

void CTreeCtrlEx::OnKillFocus(HWND) {
    Default();
    Invalidate();
}
