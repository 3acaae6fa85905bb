#include "treedrag.h"

#include "ctreectrlex.h"

using framework::CImageList;

namespace tessera {
namespace {

constexpr UINT_PTR kScrollTimer = 0x5C;
constexpr UINT kScrollInterval = 60;  // milliseconds
constexpr int kScrollMargin = 14;     // pixels at 100 % scaling

}  // namespace

// The drag image is placed from the window's corner, the mouse from that of the client area.
POINT TreeDrag::inWindow(POINT client) const noexcept {
    const POINT screen = tree_.ToScreen(client);
    const RECT window = tree_.WindowRect();
    return {screen.x - window.left, screen.y - window.top};
}

void TreeDrag::begin(HTREEITEM item, POINT at) {
    item_ = item;
    setTarget(nullptr);
    accepts_ = tree_.onDrag ? tree_.onDrag(item) : nullptr;
    image_ = tree_.CreateDragImage(item);
    CImageList::DragShow(true);
    image_.SetDragCursorImage(0, {0, 0});
    image_.BeginDrag(0, {0, 0});
    CImageList::DragMove(inWindow(at));
    CImageList::DragEnter(tree_.Handle(), inWindow(at));
    ::SetCapture(tree_.Handle());
    ::SetTimer(tree_.Handle(), kScrollTimer, kScrollInterval, nullptr);
}

void TreeDrag::setTarget(HTREEITEM item) {
    target_ = item;
    accepted_ = item && (!accepts_ || accepts_(item));
}

void TreeDrag::moveTo(POINT at) {
    CImageList::DragMove(inWindow(at));
    const HTREEITEM item = tree_.HitTest(at);
    if (!item || item == target_) {  // over empty space the last target stays
        showCursor();
        return;
    }
    CImageList::DragLeave(tree_.Handle());
    setTarget(item);
    tree_.SelectDropTarget(item);
    tree_.Update();
    CImageList::DragEnter(tree_.Handle(), inWindow(at));
    showCursor();
}

void TreeDrag::showCursor() const {
    ::SetCursor(::LoadCursorW(nullptr, accepted_ ? IDC_ARROW : IDC_NO));
}

bool TreeDrag::onTimer(UINT_PTR id) {
    if (id != kScrollTimer) return false;
    scroll();
    return true;
}

void TreeDrag::scroll() {
    POINT at{};
    ::GetCursorPos(&at);
    at = tree_.ToClient(at);
    const RECT area = tree_.ClientRect();
    const int margin = tree_.Scaled(kScrollMargin);
    if (at.x < area.left || at.x >= area.right) return;
    const bool up = at.y < area.top + margin;
    if (!up && at.y < area.bottom - margin) return;
    CImageList::DragShow(false);
    tree_.Send(WM_VSCROLL, up ? SB_LINEUP : SB_LINEDOWN);
    tree_.Update();
    CImageList::DragShow(true);
    moveTo(at);
}

void TreeDrag::end() {
    ::KillTimer(tree_.Handle(), kScrollTimer);
    CImageList::DragLeave(tree_.Handle());
    CImageList::EndDrag();
    image_.Delete();
    item_ = nullptr;
    accepts_ = nullptr;
    setTarget(nullptr);
    tree_.SelectDropTarget(nullptr);
    ::SetCursor(::LoadCursorW(nullptr, IDC_ARROW));
}

void TreeDrag::cancel() {
    if (!item_) return;
    end();
    if (::GetCapture() == tree_.Handle()) ::ReleaseCapture();
}

void TreeDrag::forgetDeleted() {
    if (!tree_.Find(target_)) setTarget(nullptr);
    if (item_ && !tree_.Find(item_)) cancel();
}

}  // namespace tessera
