// The form as a window: creation, layout, notifications, life.
#include "hierarchy.h"

#include "attributestore.h"
#include "bulkoperation.h"
#include "cswitch.h"
#include "formbusy.h"
#include "recordkinds.h"

#include <diagnostics/log.h>
#include <framework/cwaitcursor.h>
#include <framework/strings.h>
#include <framework/text.h>
#include <resources/resource.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <new>
#include <utility>

namespace tessera {
namespace {

constexpr COLORREF kTreeBackground = 0xe1e1e1;
constexpr COLORREF kTransparent = 0xffffff;
constexpr int kIconWidth = 16;
constexpr int kIconHeight = 15;

// What the form's growth goes to. Everything else keeps its size, and all keep their corner.
struct Growth {
    int id;
    bool wide;
    bool high;
};
constexpr std::array kGrowths = {
    Growth{IDC_COMMENT, true, false},       Growth{IDC_GRID, true, true},
    Growth{IDC_TREE, false, true},          Growth{IDC_TREE_GROUP, false, true},
    Growth{IDC_PROPERTY_GROUP, true, true},
};

// The form can shrink until the grid has this many pixels left, at 100 % scaling.
constexpr int kSmallestGridWidth = 120;
constexpr int kSmallestGridHeight = 80;

// In this order. Two of the numbers have no control on the form and are passed over. Refresh is not
// among them: it is the way back after a scene change.
constexpr std::array kCommands = {IDC_TREE,     IDC_UP,         IDC_DOWN,       1098,
                                  1099,         IDC_SELECT_SET, IDC_SELECT_GET, IDC_EXPAND,
                                  IDC_COLLAPSE, IDC_FIND,       IDC_CREATE};

// Posted to the form itself. The second has it select the node of wParam again.
constexpr UINT kFillingEnds = WM_APP + 1;
constexpr UINT kRefreshAfterEdit = WM_APP + 2;

constexpr int kLongestCaption = 512;  // characters of it that go to the log

SIZE sizeOf(const RECT& area) {
    return {area.right - area.left, area.bottom - area.top};
}

std::string platformMessage(DWORD error) {
    std::array<wchar_t, 256> text{};
    const DWORD length =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                         0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    return toUtf8({text.data(), length});
}

}  // namespace

void Hierarchy::bind(BrowserCallback callback, void* clientData) noexcept {
    callback_ = callback;
    clientData_ = clientData;
}

LRESULT Hierarchy::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const FormBusy busy;
    if (message == WM_SYSCOMMAND && (wParam & 0xFFF0) == IDM_ABOUT) {
        qofltAboutShow();
        return 0;
    }
    if (message == kFillingEnds) {
        filling_.reset();
        return 0;
    }
    if (message == kRefreshAfterEdit) {
        refreshAfterEdit(wParam);
        return 0;
    }
    return CDialog::WindowProc(message, wParam, lParam);
}

// ---------------------------------------------------------------- setting up

bool Hierarchy::OnInitDialog() {
    EnableToolTips();
    tree_.SubclassDlgItem(IDC_TREE, Handle());
    tree_.onDrop = [this](HTREEITEM dragged, HTREEITEM target) { drop(dragged, target); };
    comment_.Attach(Item(IDC_COMMENT));
    createKind_.Attach(Item(IDC_CREATE_KIND));
    global_.Attach(Item(IDC_GLOBAL));
    name_.Attach(Item(IDC_NAME));
    shownName_ = name_.Text();
    subtree_.Attach(Item(IDC_SUBTREE));
    try {
        initialiseTree();
        initialiseGrid();
    } catch (const std::bad_alloc&) {
        ShowMessage(platformMessage(ERROR_NOT_ENOUGH_MEMORY), MB_OK | MB_ICONSTOP);
        return false;
    }
    limitComment();
    loadPictures();
    addAboutCommand();
    alignControls();
    comment_.FitScrollBar();
    size_ = sizeOf(ClientRect());
    CWnd grid;
    grid.Attach(Item(IDC_GRID));
    const SIZE window = sizeOf(WindowRect());
    const SIZE room = sizeOf(grid.WindowRect());
    smallestTrack_ = {window.cx - std::max(0L, room.cx - Scaled(kSmallestGridWidth)),
                      window.cy - std::max(0L, room.cy - Scaled(kSmallestGridHeight))};
    return true;
}

void Hierarchy::initialiseTree() {
    tree_.Add(nullptr, "Scene Root", 0, kindRowByIcon(IconKind::sceneRoot));
    tree_.SetBackground(kTreeBackground);
    for (int row = 0; row < creatableKindCount(); ++row) createKind_.Add(kindName(row));
    createKind_.Select(0);
    constexpr int kCount = static_cast<int>(kRecordKindCount);
    // Pixels are repeated, never mixed: at 150 % the icons are as at 100 %, from 175 % on double.
    const int times = std::max(1, (Scaled(100) + 25) / 100);
    images_.Create(times * kIconWidth, times * kIconHeight, ILC_COLOR24 | ILC_MASK, kCount, kCount);
    for (const RecordKind& row : kRecordKinds) images_.AddResource(row.bitmap, kTransparent);
    images_.SetOverlayImage(kOverlayRow, 1);
    tree_.SetImageList(images_.Handle());
}

void Hierarchy::loadPictures() {
    up_.AutoLoad(IDC_UP, Handle());
    down_.AutoLoad(IDC_DOWN, Handle());
    expand_.AutoLoad(IDC_EXPAND, Handle());
    collapse_.AutoLoad(IDC_COLLAPSE, Handle());
    selectGet_.AutoLoad(IDC_SELECT_GET, Handle());
    selectSet_.AutoLoad(IDC_SELECT_SET, Handle());
    find_.AutoLoad(IDC_FIND, Handle());
    tool_.AutoLoad(IDC_TOOL, Handle());
}

void Hierarchy::addAboutCommand() {
    const HMENU menu = ::GetSystemMenu(Handle(), FALSE);
    ::AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    ::AppendMenuW(menu, MF_STRING, IDM_ABOUT, toWide(loadString(IDS_ABOUT_COMMAND)).c_str());
}

// ---------------------------------------------------------------- layout

// Two controls choose a size of their own, which fits the template's at 100 % scaling only: the
// spinner its width, the list its height.
void Hierarchy::alignControls() {
    CWnd spinner;
    spinner.Attach(Item(IDC_ITEM_SPIN));
    const RECT name = name_.AreaInParent();
    spinner.MoveTo({name.right, name.top, comment_.AreaInParent().right, name.bottom});
    CWnd button;
    button.Attach(Item(IDC_CREATE));
    const RECT beside = button.AreaInParent();
    const RECT list = createKind_.AreaInParent();
    const int top = (beside.top + beside.bottom - (list.bottom - list.top)) / 2;
    ::SetWindowPos(createKind_.Handle(), nullptr, list.left, top, 0, 0,
                   SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Hierarchy::OnSize(UINT, int width, int height) {
    Default();
    if (width < 2 || height < 2) return;  // minimised
    if (size_.cx == 0) return;            // not laid out yet
    layOut(width - size_.cx, height - size_.cy);
    size_ = {width, height};
    Invalidate();
}

void Hierarchy::layOut(int growX, int growY) {
    HDWP moves = ::BeginDeferWindowPos(static_cast<int>(kGrowths.size()));
    for (const Growth& growth : kGrowths) {
        CWnd control;
        control.Attach(Item(growth.id));
        const SIZE size = sizeOf(control.WindowRect());
        const int width = std::max(0L, size.cx + (growth.wide ? growX : 0));
        const int height = std::max(0L, size.cy + (growth.high ? growY : 0));
        if (moves)
            moves = ::DeferWindowPos(moves, control.Handle(), nullptr, 0, 0, width, height,
                                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    if (moves) ::EndDeferWindowPos(moves);
    comment_.FitScrollBar();
    fitColumns();
}

void Hierarchy::OnMinMaxInfo(MINMAXINFO& info) {
    Default();
    info.ptMinTrackSize = {std::max(info.ptMinTrackSize.x, smallestTrack_.cx),
                           std::max(info.ptMinTrackSize.y, smallestTrack_.cy)};
}

// Neither minimised nor maximised any more. A hidden form stays hidden.
void Hierarchy::restorePlacement() {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof placement;
    ::GetWindowPlacement(Handle(), &placement);
    placement.showCmd = SW_SHOWNORMAL;
    const bool visible = IsVisible();
    ::SetWindowPlacement(Handle(), &placement);
    if (!visible) Hide();
}

void Hierarchy::resetPosition() {
    // The recorded size is that of the client area.
    if (::IsIconic(Handle()) || ::IsZoomed(Handle())) restorePlacement();
    RECT area{0, 0, size_.cx, size_.cy};
    ::AdjustWindowRectEx(&area, Style(), FALSE,
                         static_cast<DWORD>(::GetWindowLongPtrW(Handle(), GWL_EXSTYLE)));
    const SIZE window = sizeOf(area);
    MoveTo({0, 0, window.cx, window.cy});
    Invalidate();
}

// ---------------------------------------------------------------- life

void Hierarchy::show(bool shown) {
    if (!shown) {
        finishTyping();
        if (switchEditor_) switchEditor_->Hide();
        Hide();
        return;
    }
    unattended_ = false;
    if (stale_) refresh();
    filling_.reset();
    resetProperties(true);
    Show(SW_SHOWNORMAL);
    ::SetForegroundWindow(Handle());  // also when it was there already, behind another
}

void Hierarchy::OnActivate(UINT state, HWND, bool) {
    Default();
    if (state != WA_INACTIVE) send(BrowserEvent::activated);
}

// Hidden and not destroyed: the client decides when the form goes.
void Hierarchy::OnClose() {
    finishTyping();
    if (switchEditor_) switchEditor_->Send(WM_CLOSE);
    send(BrowserEvent::closed);
    unattended_ = stale_ = true;
    Hide();
}

void Hierarchy::OnCancel() {
    OnClose();
}

bool Hierarchy::PreTranslateMessage(MSG& message) {
    const FormBusy busy;
    if (message.message != WM_KEYDOWN) return false;
    switch (message.wParam) {
        case VK_ESCAPE:
            if (!tree_.IsDragging()) return false;
            tree_.CancelDrag();
            return true;
        case VK_F3:
            spin(::GetKeyState(VK_SHIFT) < 0 ? -1 : 1);
            return true;
        case VK_F5:
            refresh();
            return true;
        default:
            return false;
    }
}

void Hierarchy::resetProperties(bool enabled) {
    finishTyping();
    commandsEnabled_ = enabled;
    for (const int id : kCommands) EnableItem(id, enabled);
    // The keyboard must not be left with a control that has just been disabled.
    const HWND focus = ::GetFocus();
    if (focus && ::IsChild(Handle(), focus) && !::IsWindowEnabled(focus))
        ::SetFocus(Item(IDC_REFRESH));
    editSwitch(false, nullptr);
    setName("");
    showComment(0);
    reduceGrid();
}

// The nodes that the tree names may have gone, so none is current any more, and what was being
// typed for one is lost. Scenes change node by node: only the first change does anything.
void Hierarchy::sceneChanged() {
    stale_ = true;
    if (!commandsEnabled_ && !current_) return;
    current_ = nullptr;
    commandsEnabled_ = false;
    resetProperties(false);
}

void Hierarchy::refresh() {
    if (editing_) {
        refreshWanted_ = true;
        return;
    }
    finishTyping();
    {
        const CWaitCursor wait;
        const RedrawPause pause(tree_);
        const CTreeCtrlEx::Arrangement arrangement = tree_.Remember(nullptr);
        {
            const CTreeCtrlEx::Refill refill(tree_);
            send(BrowserEvent::rebuild);
        }
        filling_.reset();
        tree_.Restore(arrangement, nullptr);
    }
    if (unattended_) stale_ = true;
    showNode(nullptr);
    resetProperties(true);
    diagnostics::log("OnRefresh %s\n", Text(kLongestCaption).c_str());
}

void Hierarchy::send(BrowserEvent event, HTREEITEM first, HTREEITEM second, std::uintptr_t argument,
                     std::uintptr_t argument2) {
    if (callback_) callback_(event, first, second, argument, argument2, clientData_);
}

// The message comes before the tree is painted, and after whoever began the edit has ended, which
// may be the control itself.
void Hierarchy::sendEdit(BrowserEvent event, HTREEITEM first, HTREEITEM second,
                         std::uintptr_t argument, std::uintptr_t argument2) {
    const NodeHandle edited = tree_.Node(first);
    {
        const BulkOperation editing(editing_);
        send(event, first, second, argument, argument2);
    }
    if (std::exchange(refreshWanted_, false) && HasWindow()) Post(kRefreshAfterEdit, edited);
}

// The node stays in hand, at its own place.
void Hierarchy::refreshAfterEdit(NodeHandle edited) {
    refresh();
    for (const TreeItem* at = tree_.Model().first(); at && edited; at = TreeModel::following(*at)) {
        if (at->node != edited) continue;
        selectNode(at->handle);
        return;
    }
}

void Hierarchy::message(unsigned stringId) {
    const std::string text = loadString(stringId);
    ShowMessage(text);
}

// ---------------------------------------------------------------- items

HTREEITEM Hierarchy::addNode(HTREEITEM parent, const char* text, NodeHandle node) {
    if (parent == TVI_ROOT) parent = nullptr;
    if (parent && !tree_.Find(parent)) return nullptr;
    const int image = parent ? iconOf(node) : kindRowByIcon(IconKind::sceneRoot);
    return tree_.Add(parent, text ? text : "", node, image);
}

void Hierarchy::deleteNode(HTREEITEM item) {
    if (!item) {
        clear();
        return;
    }
    if (!tree_.Find(item)) return;
    {
        const BulkOperation bulk(bulk_);
        tree_.DeleteItem(item);
    }
    showNode(nullptr);
    countSelected();
}

void Hierarchy::clear() {
    finishTyping();
    if (!filling_) {
        filling_.emplace(tree_);
        Post(kFillingEnds);
    }
    clearing_ = true;
    current_ = nullptr;
    tree_.DeleteAll();
    clearing_ = false;
    stale_ = false;
    selectedCount_ = 0;
    EnableItem(IDC_CREATE, false);
    editSwitch(false, nullptr);
}

void Hierarchy::deleteChildren(HTREEITEM item) {
    if (!tree_.Find(item)) return;
    {
        const BulkOperation bulk(bulk_);
        tree_.DeleteChildren(item);
    }
    if (current_ && !tree_.Find(current_)) showNode(tree_.Caret());
    countSelected();
}

NodeHandle Hierarchy::nodeOfItem(HTREEITEM item) {
    return clearing_ ? 0 : tree_.Node(item);
}

void Hierarchy::selectNode(HTREEITEM item) {
    if (item && !tree_.Find(item)) return;
    filling_.reset();
    const HTREEITEM old = tree_.Caret();
    {
        const BulkOperation bulk(bulk_);
        // Where branches open or the tree scrolls, it would draw its bars each time.
        std::optional<DrawingPause> pause;
        if (!tree_.IsInView(item)) pause.emplace(tree_.Handle());
        tree_.Select(item);
    }
    showNode(item);
    if (!bulk_ && old != item) spreadMarks(old, item);
    countSelected();
    tree_.Invalidate();
}

// ---------------------------------------------------------------- notifications

bool Hierarchy::OnCommand(int id, UINT code, HWND) {
    if (id == IDC_COMMENT && code == EN_KILLFOCUS) {
        storeComment();
        return true;
    }
    if (id == IDC_COMMENT && code == EN_CHANGE) {
        comment_.FitScrollBar();
        return true;
    }
    return code == BN_CLICKED && pushed(id);
}

bool Hierarchy::OnNotify(int id, NMHDR& header, LRESULT& result) {
    if (header.code == TTN_NEEDTEXTW || header.code == TTN_NEEDTEXTA) return giveToolTip(header);
    if (header.hwndFrom == tree_.Handle()) return notifyTree(header, result);
    if (id == IDC_GRID) return notifyGrid(header, result);
    if (id == IDC_ITEM_SPIN && header.code == UDN_DELTAPOS) {
        spin(reinterpret_cast<const NMUPDOWN&>(header).iDelta);
        result = TRUE;  // the control's own position means nothing
        return true;
    }
    return false;
}

bool Hierarchy::notifyTree(NMHDR& header, LRESULT& result) {
    switch (header.code) {
        case TVN_SELCHANGEDA:
        case TVN_SELCHANGEDW: {
            tree_.CaretChanged();
            if (tree_.IsChanging()) return true;
            const auto& change = reinterpret_cast<const NMTREEVIEWW&>(header);
            selectionChanged(change.itemOld.hItem, change.itemNew.hItem);
            return true;
        }
        case NM_CUSTOMDRAW:
            result = tree_.Draw(reinterpret_cast<NMTVCUSTOMDRAW&>(header));
            return true;
        case TVN_KEYDOWN:
            if (reinterpret_cast<const NMTVKEYDOWN&>(header).wVKey != VK_F2) return false;
            tree_.EditLabel(tree_.Caret());
            return true;
        case TVN_ENDLABELEDITW:
            result = rename(reinterpret_cast<const NMTVDISPINFOW&>(header).item);
            return true;
        default:
            return false;
    }
}

// The tip is the control's number.
bool Hierarchy::giveToolTip(NMHDR& header) {
    diagnostics::log("TTN\n");
    const int id = ToolTipControlId(header);
    if (header.code == TTN_NEEDTEXTA) {
        auto& text = reinterpret_cast<NMTTDISPINFOA&>(header).szText;
        std::snprintf(text, std::size(text), "Control ID = %d", id);
    } else {
        auto& text = reinterpret_cast<NMTTDISPINFOW&>(header).szText;
        const std::wstring wide = toWide("Control ID = " + std::to_string(id));
        wide.copy(text, std::size(text) - 1);
        text[std::min(wide.size(), std::size(text) - 1)] = 0;
    }
    return true;
}

void Hierarchy::selectionChanged(HTREEITEM old, HTREEITEM now) {
    if (bulk_ || clearing_) return;
    showNode(now);
    spreadMarks(old, now);
    countSelected();
}

void Hierarchy::spreadMarks(HTREEITEM old, HTREEITEM now) {
    if (!subtree_.IsChecked()) return;
    const CWaitCursor wait;
    const RedrawPause pause(tree_);
    const BulkOperation bulk(bulk_);
    // The new item may lie below the old one, whose mark it must not take.
    const bool selected = tree_.IsSelected(now);
    tree_.SpreadMark(old);
    if (TreeItem* item = tree_.Find(now)) tree_.SetSelected(*item, selected);
    tree_.SpreadMark(now);
}

void Hierarchy::countSelected() {
    const std::size_t count = tree_.SelectedCount();
    if (count == selectedCount_) return;
    selectedCount_ = count;
    EnableItem(IDC_CREATE, count == 1 && commandsEnabled_);
}

}  // namespace tessera
