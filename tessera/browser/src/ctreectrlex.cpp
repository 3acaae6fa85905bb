#include "ctreectrlex.h"

#include "formbusy.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace tessera {
namespace {

constexpr int kDragThreshold = 9;  // pixels

// Parts of an item that the model has a copy of.
constexpr UINT kShown = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE;

/// What marks items while the keyboard is elsewhere: clearly the mark, and clearly not the active
/// one. Gray would say that nothing can be done with them.
COLORREF paleHighlight(COLORREF background) {
    const COLORREF strong = ::GetSysColor(COLOR_HIGHLIGHT);
    const auto mixed = [](int a, int b) { return static_cast<BYTE>((a + 3 * b) / 4); };
    return RGB(mixed(GetRValue(strong), GetRValue(background)),
               mixed(GetGValue(strong), GetGValue(background)),
               mixed(GetBValue(strong), GetBValue(background)));
}

bool isDown(int key) {
    return (::GetKeyState(key) & 0x8000) != 0;
}

}  // namespace

// ---------------------------------------------------------------- items

NodeHandle CTreeCtrlEx::Node(HTREEITEM item) {
    const TreeItem* found = Find(item);
    return found ? found->node : 0;
}

bool CTreeCtrlEx::IsExpanded(const TreeItem& item) const {
    return item.firstChild && (ItemState(item.handle, TVIS_EXPANDED) & TVIS_EXPANDED) != 0;
}

HTREEITEM CTreeCtrlEx::Add(HTREEITEM parent, std::string_view text, NodeHandle node, int image) {
    const int shown = image < 0 ? 0 : image;
    HTREEITEM after = TVI_LAST;
    if (refill_.isUnderWay()) {
        TreeItem* const above = Find(parent);
        if (const TreeItem* item = refill_.takeBack(above, text, node, shown)) return item->handle;
        if (refill_.isGivenUpAdding(above)) return nullptr;
        if (const TreeItem* last = model_.last(above); model_.firstWaiting(above))
            after = last ? last->handle : TVI_FIRST;
    }
    const HTREEITEM handle =
        Insert(text, parent ? parent : TVI_ROOT, after, static_cast<LPARAM>(node), shown, shown);
    if (TreeItem* const item = Find(handle)) {
        item->text = text;
        item->image = shown;
    }
    return handle;
}

// All at once: deleting them one by one, the control looks each up among all items.
void CTreeCtrlEx::DeleteChildren(HTREEITEM handle) {
    TreeItem* const parent = Find(handle);
    if (!parent || (!parent->firstChild && !parent->firstWaiting)) return;
    const RedrawPause pause(*this);
    const auto changing = Changing();
    // The control would move the caret here when the last of them is deleted.
    const TreeItem* const caret = Find(Caret());
    if (caret && caret != parent && TreeModel::isWithin(*caret, *parent)) Select(handle);
    while (parent->firstChild) model_.remove(*parent->firstChild);
    while (parent->firstWaiting) model_.dropWaiting(parent);
    ForgetDeleted();
    DeleteAllBelow(handle);
}

void CTreeCtrlEx::DeleteAllBelow(HTREEITEM handle) {
    Send(TVM_EXPAND, TVE_COLLAPSE | TVE_COLLAPSERESET, reinterpret_cast<LPARAM>(handle));
    // Otherwise the item keeps its button, as if expanding it added children. Not every version of
    // the control finds out by itself that there are none.
    SetChildren(handle, I_CHILDRENAUTO);
    if (ShowsButton(handle)) SetChildren(handle, 0);
}

void CTreeCtrlEx::ForgetDeleted() {
    selection_.forgetDeleted();
    if (!Find(press_.item)) press_ = {};
    drag_.forgetDeleted();
}

void CTreeCtrlEx::ScrollTo(HTREEITEM item) const {
    Send(TVM_SELECTITEM, TVGN_FIRSTVISIBLE, reinterpret_cast<LPARAM>(item));
}

// ---------------------------------------------------------------- another control

namespace {

/// An empty control beside `model`, hidden, that looks and behaves like it. It has no id yet.
HWND makeLike(HWND model) {
    RECT area{};
    ::GetWindowRect(model, &area);
    const HWND parent = ::GetParent(model);
    ::MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&area), 2);
    const auto style = static_cast<DWORD>(::GetWindowLongW(model, GWL_STYLE));
    const HWND made = ::CreateWindowExW(
        static_cast<DWORD>(::GetWindowLongW(model, GWL_EXSTYLE)), WC_TREEVIEWW, nullptr,
        style & ~static_cast<DWORD>(WS_VISIBLE), area.left, area.top, framework::widthOf(area),
        framework::heightOf(area), parent, nullptr,
        reinterpret_cast<HINSTANCE>(::GetWindowLongPtrW(model, GWLP_HINSTANCE)), nullptr);
    if (!made) return nullptr;
    struct Property {
        UINT get;
        UINT set;
        WPARAM which = 0;
        bool inLParam = true;  ///< what is set, beside the same `which`
    };
    constexpr Property kProperties[] = {{WM_GETFONT, WM_SETFONT, 0, false},
                                        {TVM_GETIMAGELIST, TVM_SETIMAGELIST, TVSIL_NORMAL},
                                        {TVM_GETIMAGELIST, TVM_SETIMAGELIST, TVSIL_STATE},
                                        {TVM_GETITEMHEIGHT, TVM_SETITEMHEIGHT, 0, false},
                                        {TVM_GETINDENT, TVM_SETINDENT, 0, false},
                                        {TVM_GETBKCOLOR, TVM_SETBKCOLOR},
                                        {TVM_GETTEXTCOLOR, TVM_SETTEXTCOLOR}};
    for (const Property& property : kProperties) {
        const LRESULT value = ::SendMessageW(model, property.get, property.which, 0);
        ::SendMessageW(made, property.set,
                       property.inLParam ? property.which : static_cast<WPARAM>(value),
                       property.inLParam ? value : 0);
    }
    return made;
}

}  // namespace

bool CTreeCtrlEx::ChangeControl(const std::function<void(HWND former, HWND made)>& prepare) {
    const HWND former = Handle();
    const HWND made = makeLike(former);
    if (!made) return false;
    std::erase_if(retired_, [](const auto& tree) { return !tree->HasWindow(); });
    auto retired = std::make_unique<RetiredTree>();
    retired_.reserve(retired_.size() + 1);

    const bool focus = HasFocus();
    CancelDrag();
    std::vector<HTREEITEM> items = model_.release();
    ForgetDeleted();
    ++branchChanges_;
    drawingPause_.reset();  // which hides a window that is shown
    const bool shown = (Style() & WS_VISIBLE) != 0;

    constexpr LONG_PTR kNoId = -1;
    ::SetWindowLongPtrW(made, GWLP_ID, Id());
    ::SetWindowLongPtrW(former, GWLP_ID, kNoId);
    ::SetWindowPos(made, former, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    prepare(former, made);
    Detach();
    SubclassWindow(made);
    if (shown) Show(SW_SHOWNA);
    if (focus) SetFocus();
    if (paused_ > 0) {
        drawingPause_.emplace(made);
        SetRedraw(false);
    }
    retired->Retire(former, std::move(items));
    retired->onGone = [this] { DeleteNextRetired(); };
    retired_.push_back(std::move(retired));
    if (retired_.size() == 1) DeleteNextRetired();
    return true;
}

// One after the other.
void CTreeCtrlEx::DeleteNextRetired() {
    const auto next =
        std::ranges::find_if(retired_, [](const auto& tree) { return tree->HasWindow(); });
    if (next != retired_.end()) (*next)->BeginDeleting();
}

// ---------------------------------------------------------------- messages past the model

LRESULT CTreeCtrlEx::SendToControl(UINT message, WPARAM wParam, const void* pointer) {
    return Default(message, wParam, reinterpret_cast<LPARAM>(pointer));
}

LRESULT CTreeCtrlEx::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const FormBusy busy;
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
        case TVM_GETITEMSTATE:
            return GetStateThrough(message, wParam, lParam);
        case WM_DESTROY:
            if (leavesItems_) return 0;
            break;
        case TVM_GETCOUNT:
            if (!model_.hasWaiting()) break;
            return static_cast<LRESULT>(model_.size());
        case TVM_GETNEXTITEM:
            // While items wait to be added again, they are still the control's.
            if (wParam != TVGN_ROOT || !model_.hasWaiting()) break;
            return reinterpret_cast<LRESULT>(model_.first() ? model_.first()->handle : nullptr);
        case TVM_EXPAND:
        case TVM_ENSUREVISIBLE:
            ++branchChanges_;
            break;
        case TVM_SELECTITEM: {
            ++branchChanges_;
            const LRESULT result = CTreeCtrl::WindowProc(message, wParam, lParam);
            selection_.caretMoved();
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
    TreeItem* const after = last ? nullptr : Find(PreviousSibling(handle));
    TreeItem* const parent = top ? nullptr : Find(insertion.hParent);
    const bool hasNode = (given.mask & TVIF_PARAM) != 0;
    const NodeHandle node = hasNode ? static_cast<NodeHandle>(given.lParam) : 0;
    try {
        TreeItem& item = model_.insert(handle, parent, after, !last && !after, node);
        if ((given.mask & TVIF_STATE) != 0 && (given.state & TVIS_SELECTED) != 0)
            selection_.set(item, true);
    } catch (...) {
        SendToControl(TVM_DELETEITEM, 0, handle);
        throw;
    }
    return handle;
}

LRESULT CTreeCtrlEx::DeleteThrough(UINT message, WPARAM wParam, LPARAM lParam) {
    const auto handle = reinterpret_cast<HTREEITEM>(lParam);
    const bool all = !handle || handle == TVI_ROOT;
    if (all && refill_.emptied()) return TRUE;
    if (all)
        model_.clear();
    else if (TreeItem* item = Find(handle))
        model_.remove(*item);
    else
        return FALSE;
    ForgetDeleted();
    const LRESULT result = CTreeCtrl::WindowProc(message, wParam, lParam);
    selection_.caretMoved();
    return result;
}

UINT CTreeCtrlEx::WithMark(UINT state, HTREEITEM item) {
    const TreeItem* found = Find(item);
    if (!found) return state;
    return found->selected ? state | TVIS_SELECTED : state & ~static_cast<UINT>(TVIS_SELECTED);
}

// The narrow structures differ from the wide ones in the type of the text pointer only.
LRESULT CTreeCtrlEx::SetThrough(UINT message, WPARAM wParam, LPARAM lParam) {
    TVITEMEXW item{};
    const auto& given = *reinterpret_cast<const TVITEMW*>(lParam);
    const bool marks = (given.mask & TVIF_STATE) != 0 && (given.stateMask & TVIS_SELECTED) != 0;
    TreeItem* const found = Find(given.hItem);
    if (found && (given.mask & kShown) != 0) {
        const LRESULT result = CTreeCtrl::WindowProc(message, wParam, lParam);
        int selectedImage = 0;
        if (!ItemImages(found->handle, found->image, selectedImage) ||
            found->image != selectedImage)
            found->image = TreeItem::kUnknownImage;
        found->text = ItemText(found->handle);
        model_.noteChange();
        if (!marks) return result;
    }
    if (!found || !marks) return CTreeCtrl::WindowProc(message, wParam, lParam);
    selection_.set(*found, (given.state & TVIS_SELECTED) != 0);
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

LRESULT CTreeCtrlEx::GetStateThrough(UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT state = CTreeCtrl::WindowProc(message, wParam, lParam);
    const auto mask = static_cast<UINT>(lParam);
    const UINT marked = WithMark(static_cast<UINT>(state), reinterpret_cast<HTREEITEM>(wParam));
    return static_cast<LRESULT>(marked & mask) | (state & ~static_cast<LRESULT>(mask));
}

// ---------------------------------------------------------------- drawing

LRESULT CTreeCtrlEx::Draw(NMTVCUSTOMDRAW& draw) {
    if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    const auto item = reinterpret_cast<HTREEITEM>(draw.nmcd.dwItemSpec);
    if (item == drag_.target() && drag_.accepted()) return DrawDropTarget(draw);
    if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT) return CDRF_DODEFAULT;
    const TreeItem* const shown = Find(item);
    const bool marked = shown && shown->selected;
    const bool focus = HasFocus();
    const bool dimmed = !IsEnabled() || (dimming_ && !(shown && shown->found));
    // Otherwise the control insists on its own colors for the caret.
    draw.nmcd.uItemState &= ~static_cast<UINT>(CDIS_SELECTED);
    draw.clrText = ::GetSysColor(marked && focus ? COLOR_HIGHLIGHTTEXT
                                 : dimmed        ? COLOR_GRAYTEXT
                                                 : COLOR_WINDOWTEXT);
    draw.clrTextBk = !marked ? Background()
                     : focus ? ::GetSysColor(COLOR_HIGHLIGHT)
                             : paleHighlight(Background());
    return CDRF_DODEFAULT;
}

// A frame around the label: what is filled is selected.
LRESULT CTreeCtrlEx::DrawDropTarget(NMTVCUSTOMDRAW& draw) const {
    const auto item = reinterpret_cast<HTREEITEM>(draw.nmcd.dwItemSpec);
    if (draw.nmcd.dwDrawStage == CDDS_ITEMPREPAINT) {
        draw.nmcd.uItemState &= ~static_cast<UINT>(CDIS_SELECTED);
        draw.clrText = ::GetSysColor(COLOR_WINDOWTEXT);
        draw.clrTextBk = ::GetSysColor(COLOR_WINDOW);
        return CDRF_NOTIFYPOSTPAINT;
    }
    RECT frame{};
    if (draw.nmcd.dwDrawStage != CDDS_ITEMPOSTPAINT || !ItemRect(item, frame, true))
        return CDRF_DODEFAULT;
    for (int i = 0; i < Scaled(2); ++i) {
        ::FrameRect(draw.nmcd.hdc, &frame, ::GetSysColorBrush(COLOR_HIGHLIGHT));
        ::InflateRect(&frame, -1, -1);
    }
    return CDRF_DODEFAULT;
}

// The picture of a drag lies over what is painted.
void CTreeCtrlEx::OnPaint() {
    if (IsDragging()) framework::CImageList::DragShow(false);
    Default();
    if (IsDragging()) framework::CImageList::DragShow(true);
}

void CTreeCtrlEx::DimOthers(bool on) {
    dimming_ = on;
    InvalidateUnlessPaused();
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

void CTreeCtrlEx::InvalidateUnlessPaused() const {
    if (paused_ == 0) Invalidate(false);
}

// The selected items have another color without the focus.
void CTreeCtrlEx::OnSetFocus(HWND) {
    Default();
    Invalidate();
}

void CTreeCtrlEx::OnKillFocus(HWND) {
    Default();
    Invalidate();
}

void CTreeCtrlEx::OnEnable(bool) {
    Default();
    Invalidate();
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
    press_ = {item, at, selection_.contains(item)};
    ::SetCapture(Handle());  // so that the button's release is not missed
    if (!press_.pending) selection_.click(item, shift, control);
}

void CTreeCtrlEx::OnLButtonUp(UINT keys, POINT) {
    const HTREEITEM dragged = drag_.item();
    const HTREEITEM target = drag_.target();
    const Press press = std::exchange(press_, {});
    if (dragged) drag_.end();
    if (::GetCapture() == Handle()) ::ReleaseCapture();
    Default();
    if (dragged && onDrop) onDrop(dragged, target);
    if (press.pending && Find(press.item))
        selection_.click(press.item, (keys & MK_SHIFT) != 0, (keys & MK_CONTROL) != 0);
}

bool CTreeCtrlEx::WantsDrag(POINT at) const noexcept {
    // A drop attaches one node, so several selected items are not dragged.
    return press_.item && selection_.count() <= 1 &&
           (std::abs(at.x - press_.at.x) >= kDragThreshold ||
            std::abs(at.y - press_.at.y) >= kDragThreshold);
}

void CTreeCtrlEx::OnMouseMove(UINT, POINT at) {
    if (IsDragging())
        drag_.moveTo(at);
    else if (WantsDrag(at))
        drag_.begin(std::exchange(press_, {}).item, at);
    Default();
}

void CTreeCtrlEx::OnRButtonDown(UINT, POINT at) {
    rightButtonHeld_ = isDown(VK_RBUTTON);
    UINT where = 0;
    const HTREEITEM item = HitTest(at, &where);
    if (item && (where & TVHT_ONITEM) != 0 && selection_.count() < 2) Select(item);
    Default();
}

void CTreeCtrlEx::OnTimer(UINT_PTR id) {
    if (!drag_.onTimer(id)) Default();
}

void CTreeCtrlEx::OnCaptureChanged(HWND gaining) {
    if (gaining != Handle()) {
        CancelDrag();
        press_ = {};
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
    if (key == VK_ESCAPE && IsDragging()) {
        CancelDrag();
    } else if (vertical && isDown(VK_SHIFT)) {
        selection_.extendTo(key == VK_UP ? PreviousVisible(Caret()) : NextVisible(Caret()));
        NotifyKeyDown(key);
    } else if (vertical && !isDown(VK_CONTROL)) {  // with Ctrl the control scrolls
        MoveCaretByKey();
    } else {
        Default();
    }
}

void CTreeCtrlEx::MoveCaretByKey() {
    const HTREEITEM former = Caret();
    selection_.clear(true);
    Default();
    // At the end of the tree the caret stays, and so does its mark.
    if (former && Caret() == former) {
        if (TreeItem* item = Find(former)) selection_.set(*item, true);
        selection_.notify(former, former);
    }
}

void CTreeCtrlEx::NotifyKeyDown(UINT key) {
    NMTVKEYDOWN notification{};
    notification.hdr = {Handle(), static_cast<UINT_PTR>(Id()), static_cast<UINT>(TVN_KEYDOWN)};
    notification.wVKey = static_cast<WORD>(key);
    ::SendMessageW(Parent(), WM_NOTIFY, notification.hdr.idFrom,
                   reinterpret_cast<LPARAM>(&notification));
}

}  // namespace tessera
