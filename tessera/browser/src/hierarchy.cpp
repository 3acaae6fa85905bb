#include "hierarchy.h"

#include "cgridex.h"
#include "clientlink.h"
#include "contextmenus.h"
#include "controlhelp.h"
#include "editcommands.h"
#include "formbusy.h"
#include "formlayout.h"
#include "nodeclipboard.h"
#include "propertyside.h"
#include "selectioncommands.h"
#include "selectioncount.h"
#include "selectionfollower.h"
#include "switchside.h"
#include "treesearch.h"
#include "usermessages.h"

#include <base/utf16.h>
#include <diagnostics/log.h>
#include <framework/strings.h>
#include <resources/resource.h>

#include <windowsx.h>
#include <algorithm>

#include <cstdio>
#include <new>

using framework::CWaitCursor, framework::loadString;
using grid::CGridCtrl;

namespace tessera {
namespace {

constexpr std::array kPictures = {IDC_UP,         IDC_DOWN,       IDC_EXPAND, IDC_COLLAPSE,
                                  IDC_SELECT_GET, IDC_SELECT_SET, IDC_FIND,   IDC_TOOL};

// In this order. Two of the numbers have no control on the form and are passed over. Refresh is not
// among them: it is the way back after a scene change.
constexpr std::array kCommands = {IDC_TREE,     IDC_UP,         IDC_DOWN,       1098,
                                  1099,         IDC_SELECT_SET, IDC_SELECT_GET, IDC_EXPAND,
                                  IDC_COLLAPSE, IDC_FIND,       IDC_CREATE};

constexpr int kLongestCaption = 512;  // characters of it that go to the log

constexpr int kNormalDpi = 96;

constexpr UINT_PTR kFollowTimer = 1;
constexpr UINT kFollowInterval = 50;  // milliseconds, as the following two
constexpr ULONGLONG kQuiet = 200;
constexpr ULONGLONG kLongestQuiet = 5000;

std::string platformMessage(DWORD error) {
    std::array<wchar_t, 256> text{};
    const DWORD length =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                         0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    return base::toUtf8({text.data(), length});
}

}  // namespace

Hierarchy::Hierarchy()
    : client_(std::make_unique<ClientLink>(*this)),
      layout_(std::make_unique<FormLayout>(*this)),
      switchSide_(std::make_unique<SwitchSide>(*this, tree_, *client_,
                                               [this] { properties_->showAgain(); })),
      properties_(std::make_unique<PropertySide>(*this, tree_, *client_, *switchSide_)),
      selection_(std::make_unique<SelectionCommands>(*this, tree_, *client_, *properties_)),
      edits_(std::make_unique<EditCommands>(*this, tree_, *client_, *properties_, *selection_)),
      search_(std::make_unique<TreeSearch>(*this, tree_, *layout_, *properties_)),
      clipboard_(std::make_unique<NodeClipboard>(*this, tree_, *client_, *edits_, *selection_)),
      count_(std::make_unique<SelectionCount>(*this, tree_)),
      follower_(std::make_unique<SelectionFollower>(*this, tree_, *client_, *selection_)),
      menus_(std::make_unique<ContextMenus>(ContextMenus::Parts{
          *this, tree_, *edits_, *selection_, *clipboard_, *properties_, *search_, *follower_})),
      quiet_(kQuiet) {}

Hierarchy::~Hierarchy() = default;

bool Hierarchy::create(HWND parent) {
    CGridCtrl::RegisterGridClass();
    return Create(IDD_HIERARCHY, parent);
}

bool Hierarchy::OnInitDialog() {
    // First, so that the controls' own objects come in front of it.
    describeControls(*this);
    EnableToolTips();
    try {
        tree_.initialise(*this);
        tree_.onDrop = [this](HTREEITEM dragged, HTREEITEM target) {
            edits_->attach(dragged, target);
        };
        tree_.onDrag = [this](HTREEITEM dragged) { return edits_->dropTest(dragged); };
        tree_.onGivenUp = [this] { changeTree(); };
        selection_->initialise();
        edits_->initialise();
        properties_->initialise();
    } catch (const std::bad_alloc&) {
        ShowMessage(platformMessage(ERROR_NOT_ENOUGH_MEMORY), MB_OK | MB_ICONSTOP);
        return false;
    }
    for (std::size_t i = 0; i < pictures_.size(); ++i)
        pictures_[i].AutoLoad(kPictures[i], Handle());
    addSystemCommands();
    follower_->initialise();
    selection_->onFound = [this](std::size_t count) { count_->found(count); };
    layout_->initialise();
    properties_->fit();
    return true;
}

// An empty control and one more filling, where deleting what is in this one would take longer.
void Hierarchy::changeTree() {
    tree_.ChangeControl([this](HWND former, HWND made) {
        layout_->replaced(former, made);
        MoveToolTip(former, made);
        describeControls(*this);
    });
    tree_.Refill().beginAnew();
    client_->send(BrowserEvent::kRebuild);
}

void Hierarchy::addSystemCommands() {
    const HMENU menu = ::GetSystemMenu(Handle(), FALSE);
    ::AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    for (const UINT command : {IDM_FOLLOW, IDM_ABOUT}) ::AppendMenuW(menu, MF_STRING, command, L"");
    showSystemCommands();
}

void Hierarchy::showSystemCommands() const {
    const HMENU menu = ::GetSystemMenu(Handle(), FALSE);
    const auto show = [menu](UINT command, UINT text, UINT state) {
        ::ModifyMenuW(menu, command, MF_BYCOMMAND | MF_STRING | state, command,
                      base::toWide(loadString(text)).c_str());
    };
    show(IDM_FOLLOW, IDS_MENU_FOLLOW,
         (follower_->isOn() ? MF_CHECKED : 0U) | (follower_->canFollow() ? 0U : MF_GRAYED));
    show(IDM_ABOUT, IDS_ABOUT_COMMAND, 0);
}

// In place, so that tree, selection and what is open stay. Nothing of a language is left behind but
// what is made anew each time: tool tips and messages.
void Hierarchy::followLanguage() {
    if (stale_) properties_->forget();  // the node may have gone
    properties_->finishTyping();
    const SIZE base = FollowLanguage();
    if (base.cx == 0) return;
    layout_->renew(base);
    search_->arrange();
    count_->renew();
    showSystemCommands();
    edits_->nameKinds();
    search_->followLanguage();
    count_->renew();
    properties_->followLanguage();
    switchSide_->followLanguage();
    describeControls(*this);
    Invalidate();
}

// ---------------------------------------------------------------- what the exports do

void Hierarchy::bind(BrowserCallback callback, void* clientData) noexcept {
    client_->bind(callback, clientData);
}

void Hierarchy::offer(const NodeCommands* commands) noexcept {
    client_->offer(commands);
}

void Hierarchy::hostSelectionChanged() {
    follower_->hostChanged();
}

void Hierarchy::show(bool shown) {
    if (!shown) {
        properties_->finishTyping();
        switchSide_->hideEditor();
        rememberPlace();
        follower_->attend(false);
        Hide();
        return;
    }
    place();
    unattended_ = false;
    if (stale_) refresh();
    tree_.endFilling();
    resetProperties(true);
    Show(SW_SHOWNORMAL);
    follower_->attend(true);
    ::SetForegroundWindow(Handle());  // also when it was there already, behind another
}

HTREEITEM Hierarchy::addNode(HTREEITEM parent, const char* text, NodeHandle node) {
    if (leavesTree(TreeRefill::effortOfAdding(tree_.Find(parent)))) return nullptr;
    return tree_.addNode(parent, text, node);
}

NodeHandle Hierarchy::nodeOfItem(HTREEITEM item) {
    return tree_.nodeOf(item);
}

void Hierarchy::deleteNode(HTREEITEM item) {
    if (!item) return clear();
    if (client_->isTreeLeft()) return;
    const TreeItem* const found = tree_.Find(item);
    if (!found || leavesTree(tree_.Refill().effortOfDeleting(*found, true))) return;
    {
        const auto bulk = tree_.bulkOperation();
        tree_.DeleteItem(item);
    }
    properties_->show(nullptr);
    selection_->countSelected();
}

// Whether the tree stays as it is until a refresh that follows, since the change takes longer.
bool Hierarchy::leavesTree(double effort) {
    const bool before = client_->isTreeLeft();
    const bool left = client_->refreshesInstead(effort);
    if (left && !before) {
        stale_ = true;
        properties_->forget();  // its node may have gone
        properties_->show(nullptr);
    }
    return left;
}

void Hierarchy::clear() {
    client_->treeEmptied();
    properties_->finishTyping();
    properties_->forget();
    tree_.clear(*this);
    stale_ = false;
    selection_->forgetCount();
    switchSide_->edit(nullptr);
}

void Hierarchy::deleteChildren(HTREEITEM item) {
    const TreeItem* const found = tree_.Find(item);
    if (!found || leavesTree(tree_.Refill().effortOfDeleting(*found, false))) return;
    {
        const auto bulk = tree_.bulkOperation();
        tree_.DeleteChildren(item);
    }
    const HTREEITEM current = properties_->current();
    if (current && !tree_.Find(current)) properties_->show(tree_.Caret());
    selection_->countSelected();
}

void Hierarchy::selectNode(HTREEITEM item) {
    selection_->select(item);
}

void Hierarchy::resetPosition() {
    layout_->resetPosition();
}

void Hierarchy::refresh() {
    if (client_->postponesRefresh()) return;
    properties_->finishTyping();
    const CWaitCursor wait;
    const auto arrangement = tree_.Branches().remember(nullptr);
    {
        const RedrawPause pause(tree_);
        client_->send(BrowserEvent::kRebuild);
        tree_.endFilling();
        tree_.Branches().restore(arrangement, nullptr);
    }
    tree_.Branches().scrollBack(arrangement);  // without drawing the control may not scroll so far
    if (unattended_) stale_ = true;
    properties_->show(nullptr);
    resetProperties(true);
    follower_->hostChanged();
    diagnostics::log("OnRefresh %s\n", Text(kLongestCaption).c_str());
}

// The edited nodes are selected again, each at its own place.
void Hierarchy::refreshAfterEdit() {
    const std::vector<NodeHandle> edited = client_->takeShownAfter();
    refresh();
    if (edited.size() == 1)
        selectNodeOf(edited.front());
    else
        selection_->selectNodes(edited);
}

// Selects the first item of a node; false when there is none.
bool Hierarchy::selectNodeOf(NodeHandle node) {
    for (const TreeItem* at = tree_.Model().first(); at && node; at = TreeModel::following(*at)) {
        if (at->node != node) continue;
        selectNode(at->handle);
        return true;
    }
    return false;
}

// ---------------------------------------------------------------- changes of the scene

// The nodes of the tree may have been deleted, so none is current any more, and what was being
// typed for one is lost. Scenes change node by node: only the first change does that.
void Hierarchy::sceneChanged() {
    stale_ = true;
    clipboard_->forget();
    changedAt_ = ::GetTickCount64();
    followSceneLater();
    if (!tree_.isUsable() && !properties_->current()) return;
    shownBefore_ = tree_.nodeOf(properties_->current());
    properties_->forget();
    tree_.setUsable(false);
    resetProperties(false);
}

void Hierarchy::followSceneLater() {
    if (following_ || !IsVisible()) return;
    following_ = ::SetTimer(Handle(), kFollowTimer, kFollowInterval, nullptr) != 0;
}

// The host is not at work with the scene, as far as that can be seen: nothing has changed for a
// while, it shows no progress or question that disables its window, and nobody holds the mouse.
bool Hierarchy::isSceneQuiet() const {
    const HWND owner = ::GetWindow(Handle(), GW_OWNER);
    return ::GetTickCount64() - changedAt_ >= quiet_ && (!owner || ::IsWindowEnabled(owner)) &&
           IsEnabled() && !::GetCapture();
}

void Hierarchy::OnTimer(UINT_PTR id) {
    if (id == PropertySide::kCompareTimer) {
        const bool more = !stale_ && IsVisible() && properties_->compareSome();
        if (!more) ::KillTimer(Handle(), id);
        return;
    }
    if (id != kFollowTimer) return CDialog::OnTimer(id);
    const bool needed = stale_ && IsVisible();
    if (needed && !isSceneQuiet()) return;
    ::KillTimer(Handle(), kFollowTimer);
    following_ = false;
    if (needed) followScene();
}

// A refresh that leaves the keyboard where it is and, if it is still there, the same node current.
// The longer it takes, the longer it waits the next time.
void Hierarchy::followScene() {
    const ULONGLONG start = ::GetTickCount64();
    const HWND focus = focusBefore_;
    const bool treeFocus = focus == tree_.Handle();
    {
        const auto keep = properties_->keepFocus();
        refresh();
        const HTREEITEM top = tree_.FirstVisible();
        if (!stale_ && selectNodeOf(std::exchange(shownBefore_, 0)) && top) tree_.ScrollTo(top);
    }
    if (focus && ::GetFocus() == Item(IDC_REFRESH))
        ::SetFocus(treeFocus ? tree_.Handle() : focus);  // another control may show the tree now
    quiet_ = std::clamp(2 * (::GetTickCount64() - start), kQuiet, kLongestQuiet);
}

// Clears the property side and enables or disables the commands.
void Hierarchy::resetProperties(bool enabled) {
    properties_->finishTyping();
    tree_.setUsable(enabled);
    const HWND focus = ::GetFocus();
    for (const int id : kCommands) EnableItem(id, enabled);
    properties_->clear();
    // The keyboard must not be left with a control that has just been disabled.
    focusBefore_ = nullptr;
    if (focus && ::IsChild(Handle(), focus) && !::IsWindowEnabled(focus)) {
        ::SetFocus(Item(IDC_REFRESH));
        focusBefore_ = focus;
    }
}

// ---------------------------------------------------------------- the window

LRESULT Hierarchy::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const FormBusy busy;
    if (message == WM_SYSCOMMAND && (wParam & 0xFFF0) == IDM_FOLLOW) {
        follower_->turn(!follower_->isOn());
        return 0;
    }
    if (message == WM_INITMENU) showSystemCommands();
    if (message == ContextMenus::kCarryOut) {
        menus_->carryOut(static_cast<int>(wParam));
        return 0;
    }
    if (message == SelectionFollower::kSettles) {
        follower_->settle();
        return 0;
    }
    if (message == WM_SYSCOMMAND && (wParam & 0xFFF0) == IDM_ABOUT) {
        qofltAboutShow();
        return 0;
    }
    if (message == WM_CONTEXTMENU &&
        menus_->show(reinterpret_cast<HWND>(wParam), {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}))
        return 0;
    if (message == HierarchyTree::kFillingEnds) {
        tree_.endFilling();
        return 0;
    }
    if (message == ClientLink::kRefreshAfterEdit) {
        refreshAfterEdit();
        return 0;
    }
    return CDialog::WindowProc(message, wParam, lParam);
}

void Hierarchy::OnSize(UINT, int width, int height) {
    Default();
    if (!layout_->follow(width, height)) return;
    search_->arrange();
    count_->renew();
    properties_->fit();
    Invalidate();
}

void Hierarchy::OnMinMaxInfo(MINMAXINFO& info) {
    Default();
    layout_->limit(info);
}

void Hierarchy::OnActivate(UINT state, HWND, bool) {
    Default();
    if (state != WA_INACTIVE) client_->send(BrowserEvent::kActivated);
}

// Hidden and not destroyed: that is up to the client.
void Hierarchy::OnClose() {
    properties_->finishTyping();
    switchSide_->closeEditor();
    client_->send(BrowserEvent::kClosed);
    unattended_ = stale_ = true;
    follower_->attend(false);
    rememberPlace();
    Hide();
}

void Hierarchy::destroy() {
    const base::ScopedValue destroying(destroyed_, true);
    DestroyWindow();
}

// A form that goes with its owner, the host's window, goes because the host ends.
void Hierarchy::OnDestroy() {
    rememberPlace();
    if (!destroyed_) tree_.LeaveItems();
    Default();
}

// Escape. The form is closed by its close box and its system menu only.
void Hierarchy::OnCancel() {
    properties_->cancelTyping();
}

bool Hierarchy::PreTranslateMessage(MSG& message) {
    const FormBusy busy;
    if (menus_->onKey(message) || accessKey(message) || movesDivision(message)) return true;
    if (message.message != WM_KEYDOWN) return false;
    if (message.wParam == VK_ESCAPE && tree_.IsDragging()) {
        tree_.CancelDrag();
        return true;
    }
    if (search_->onKey(message)) return true;
    switch (message.wParam) {
        case VK_ESCAPE:
            // A field of several lines would have the form closed.
            return properties_->cancelComment();
        case VK_F3:
            selection_->step(::GetKeyState(VK_SHIFT) < 0 ? -1 : 1);
            return true;
        case VK_F5:
            refresh();
            return true;
        default:
            return false;
    }
}

// Each value in the grid has a tip of its own.
int Hierarchy::ToolTipPart(HWND control, POINT screen) const {
    return control == Item(IDC_GRID) ? properties_->rowAt(screen) : 0;
}

// Alt and a letter. A command is carried out, any other control gets the keyboard.
bool Hierarchy::accessKey(const MSG& message) {
    if (message.message != WM_SYSCHAR) return false;
    const int id = controlOfKey(static_cast<wchar_t>(message.wParam));
    const HWND control = id != 0 ? Item(id) : nullptr;
    if (!control) return false;
    if (!::IsWindowEnabled(control))
        beepSimply();
    else if (::SendMessageW(control, WM_GETDLGCODE, 0, 0) & DLGC_BUTTON)
        ::SendMessageW(control, BM_CLICK, 0, 0);
    else
        ::SetFocus(control);
    return true;
}

// ---------------------------------------------------------------- its place and its splitter

// The first time, where it was left the last time, in this scaling. Without that it opens where the
// template says, clear of the dialog that has the keyboard: its buttons are wanted beside the form.
void Hierarchy::place() {
    if (!keptPlace_) {
        if (const auto kept = loadFormPlace(Scaled(kNormalDpi))) {
            WINDOWPLACEMENT placement{};
            placement.length = sizeof placement;
            ::GetWindowPlacement(Handle(), &placement);
            placement.showCmd = SW_HIDE;
            placement.rcNormalPosition = kept->window;
            ::SetWindowPlacement(Handle(), &placement);
            layout_->setSplitter(kept->splitter);
            properties_->setCaptionShare(kept->captionShare);
        } else {
            const HWND focus = ::GetFocus();
            const HWND page = focus ? ::GetParent(focus) : nullptr;
            RECT used{};
            if (page && (::GetWindowLongW(page, GWL_STYLE) & WS_CHILD))
                ::GetWindowRect(page, &used);
            layout_->keepClearOf(used);
        }
        keptPlace_ = placeNow();
    }
    layout_->keepOnScreen();
}

FormPlace Hierarchy::placeNow() const {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof placement;
    ::GetWindowPlacement(Handle(), &placement);
    return {placement.rcNormalPosition, layout_->splitter(), properties_->captionShare()};
}

// Only what the user has changed is kept.
void Hierarchy::rememberPlace() {
    if (!keptPlace_ || *keptPlace_ == placeNow()) return;
    keptPlace_ = placeNow();
    saveFormPlace(Scaled(kNormalDpi), *keptPlace_);
}

void Hierarchy::OnLButtonDown(UINT, POINT at) {
    if (layout_->isOverSplitter(at))
        layout_->beginPull(at);
    else
        Default();
}

void Hierarchy::OnMouseMove(UINT, POINT at) {
    if (layout_->isPulling() && layout_->pull(at)) splitterMoved();
    Default();
}

void Hierarchy::OnLButtonUp(UINT, POINT) {
    if (layout_->isPulling()) ::ReleaseCapture();
    Default();
}

void Hierarchy::OnLButtonDblClk(UINT, POINT at) {
    if (!layout_->isOverSplitter(at)) {
        Default();
        return;
    }
    layout_->setSplitter(0);
    splitterMoved();
}

void Hierarchy::OnCaptureChanged(HWND) {
    layout_->endPull();
    Default();
}

bool Hierarchy::OnSetCursor(HWND under, UINT hitTest, UINT) {
    POINT at{};
    ::GetCursorPos(&at);
    if (under != Handle() || hitTest != HTCLIENT || !layout_->isOverSplitter(ToClient(at)))
        return Default() != 0;
    ::SetCursor(::LoadCursorW(nullptr, IDC_SIZEWE));
    return true;
}

// Alt and an arrow: the splitter; with Shift the line between captions and values. Alt+Home puts
// the splitter back.
bool Hierarchy::movesDivision(const MSG& message) {
    constexpr int kStep = 8;        // pixels at 100 % scaling
    constexpr int kShareStep = 20;  // thousandths
    if (message.message != WM_SYSKEYDOWN || ::GetKeyState(VK_CONTROL) < 0) return false;
    const bool columns = ::GetKeyState(VK_SHIFT) < 0;
    const bool home = message.wParam == VK_HOME && !columns;
    if (!home && message.wParam != VK_LEFT && message.wParam != VK_RIGHT) return false;
    // Otherwise letting go of Alt would open the system menu.
    ::DefWindowProcW(message.hwnd, message.message, message.wParam, message.lParam);
    const int way = message.wParam == VK_RIGHT ? 1 : -1;
    if (home) {
        layout_->setSplitter(0);
        splitterMoved();
    } else if (columns) {
        properties_->moveColumns(way * kShareStep);
    } else if (layout_->moveSplitter(way * Scaled(kStep))) {
        splitterMoved();
    }
    return true;
}

void Hierarchy::splitterMoved() {
    search_->arrange();
    count_->renew();
    properties_->fit();
    Invalidate();
    Update();
}

// ---------------------------------------------------------------- notifications of the controls

bool Hierarchy::OnCommand(int id, UINT code, HWND) {
    return search_->onCommand(id, code) || properties_->onCommand(id, code) ||
           (code == BN_CLICKED && pushed(id));
}

bool Hierarchy::pushed(int id) {
    switch (id) {
        case IDC_REFRESH:
            refresh();
            return true;
        case IDC_UP:
            edits_->move(BrowserEvent::kMoveUp);
            return true;
        case IDC_DOWN:
            edits_->move(BrowserEvent::kMoveDown);
            return true;
        case IDC_EXPAND:
        case IDC_COLLAPSE:
            selection_->expandSelected(id == IDC_EXPAND);
            return true;
        case IDC_SELECT_SET:
            selection_->selectInHost();
            return true;
        case IDC_SELECT_GET:
            selection_->selectFromHost();
            return true;
        case IDC_FIND:
            selection_->find();
            return true;
        case IDC_CREATE:
            edits_->create();
            return true;
        case IDC_TOOL:
            switchSide_->open();
            return true;
        default:
            return false;
    }
}

bool Hierarchy::OnNotify(int id, NMHDR& header, LRESULT& result) {
    if (header.code == TTN_NEEDTEXTW || header.code == TTN_NEEDTEXTA) return answerToolTip(header);
    if (header.hwndFrom == tree_.Handle()) return notifyTree(header, result);
    if (id == IDC_GRID) return properties_->onGridNotify(header, result);
    if (id == IDC_ITEM_SPIN && header.code == UDN_DELTAPOS) {
        selection_->step(reinterpret_cast<const NMUPDOWN&>(header).iDelta);
        result = TRUE;  // the control's own position means nothing
        return true;
    }
    return false;
}

bool Hierarchy::notifyTree(NMHDR& header, LRESULT& result) {
    switch (header.code) {
        case TVN_SELCHANGEDA:
        case TVN_SELCHANGEDW: {
            tree_.Selection().caretMoved();
            if (tree_.IsChanging()) return true;
            const auto& change = reinterpret_cast<const NMTREEVIEWW&>(header);
            selection_->caretChanged(change.itemOld.hItem, change.itemNew.hItem);
            return true;
        }
        case NM_CUSTOMDRAW:
            search_->update();
            count_->update();
            follower_->marksSeen();
            if (properties_->wantsComparison()) properties_->compareSoon();
            result = tree_.Draw(reinterpret_cast<NMTVCUSTOMDRAW&>(header));
            return true;
        case TVN_ITEMEXPANDEDW:
            count_->branchToggled();
            return false;
        case TVN_KEYDOWN:
            if (reinterpret_cast<const NMTVKEYDOWN&>(header).wVKey != VK_F2) return false;
            tree_.EditLabel(tree_.Caret());
            return true;
        case TVN_ENDLABELEDITW:
            result = edits_->rename(reinterpret_cast<const NMTVDISPINFOW&>(header).item);
            return true;
        default:
            return false;
    }
}

// The tip is the control's number. What it is for, or what the value under the pointer means, is
// the tip's title.
bool Hierarchy::answerToolTip(NMHDR& header) {
    diagnostics::log("TTN\n");
    const int id = ToolTipControlId(header);
    POINT pointer{};
    ::GetCursorPos(&pointer);
    const std::string meaning = id == IDC_GRID ? properties_->meaningAt(pointer) : "";
    SetToolTipTitle(meaning.empty() ? controlHelp(id) : meaning);
    if (header.code == TTN_NEEDTEXTA) {
        auto& text = reinterpret_cast<NMTTDISPINFOA&>(header).szText;
        std::snprintf(text, std::size(text), "Control ID = %d", id);
    } else {
        auto& text = reinterpret_cast<NMTTDISPINFOW&>(header).szText;
        const std::wstring wide = base::toWide("Control ID = " + std::to_string(id));
        wide.copy(text, std::size(text) - 1);
        text[std::min(wide.size(), std::size(text) - 1)] = 0;
    }
    return true;
}

}  // namespace tessera
