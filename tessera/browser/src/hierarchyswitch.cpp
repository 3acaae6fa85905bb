// The form's side of the switch editor.
#include "attributestore.h"
#include "bulkoperation.h"
#include "cswitch.h"
#include "hierarchy.h"

#include <fltkilnutil/kilnflt.h>
#include <resources/resource.h>

#include <cstdint>

namespace tessera {
namespace {

// Damaged records are made whole, so that there is a mask to show.
void sizeMasks(SwitchRecordBuffer& buffer) {
    FltSwitch& record = buffer.record;
    record.setMaskBits(static_cast<std::int32_t>(buffer.childCount));
    while (record.maskCount() < 1) record.maskWords.append(0xFFFFFFFF);
    if (record.currentMask < 0) record.currentMask = 0;
}

// Whether a record has room for the masks, one at least.
bool canBeStored(const SwitchRecordBuffer& buffer) {
    constexpr std::int32_t kMost = FltSwitch::kMaxWrittenMaskWords;
    return buffer.record.maskWords.count() <= kMost && buffer.childCount <= kMost * 32u;
}

void centre(const CWnd& window, const RECT& over) {
    const RECT area = window.WindowRect();
    const int width = area.right - area.left;
    const int height = area.bottom - area.top;
    const int x = (over.left + over.right - width) / 2;
    const int y = (over.top + over.bottom - height) / 2;
    window.MoveTo({x, y, x + width, y + height});
}

}  // namespace

void Hierarchy::editSwitch(bool on, HTREEITEM item) {
    const bool changed = on != switchEditing_ || (on && item != switchItem_);
    switchEditing_ = on;
    switchItem_ = on ? item : nullptr;
    if (!changed) return;
    EnableItem(IDC_TOOL, on);
    if (!switchEditor_ || !switchEditor_->HasWindow()) return;
    switchEditor_->EnableControls(on);
    if (on && switchEditor_->IsVisible() && !openSwitchEditor())
        switchEditor_->EnableControls(false);
}

bool Hierarchy::openSwitchEditor() {
    const HTREEITEM item = current_;
    const NodeHandle node = tree_.Node(item);
    if (!hasClient() || !node || !isOfKind(node, FltNodeKind::Switch) || !loadAttributes(node))
        return false;
    // An editor that is open keeps its own until this one is known to be good.
    SwitchRecordBuffer buffer;
    buffer.node = node;
    send(BrowserEvent::countSwitchChildren, item, nullptr,
         reinterpret_cast<std::uintptr_t>(&buffer));
    if (!HasWindow() || current_ != item || !fltGetRecord(nodeOf(node), buffer.record))
        return false;
    if (buffer.childCount == 0) {
        message(IDS_SWITCH_WITHOUT_CHILDREN);
        return false;
    }
    if (!canBeStored(buffer)) {
        message(IDS_SWITCH_TOO_LARGE);
        return false;
    }
    sizeMasks(buffer);
    if (!switchRecord_) switchRecord_ = std::make_unique<SwitchRecordBuffer>();
    *switchRecord_ = buffer;
    return showSwitchEditor();
}

bool Hierarchy::showSwitchEditor() {
    if (!switchEditor_)
        switchEditor_ = std::make_unique<CSwitch>(
            *switchRecord_,
            [this](SwitchRecordBuffer& changed, bool show) { switchChanged(changed, show); },
            [this] { refuseMask(); });
    if (switchEditor_->HasWindow()) {
        switchEditor_->Display();
    } else {
        if (!switchEditor_->Create(Handle())) return false;
        centre(*switchEditor_, WindowRect());
    }
    if (HasWindow()) switchEditor_->Show();
    return true;
}

void Hierarchy::switchChanged(const SwitchRecordBuffer& changed, bool showInViewport) {
    if (!storeSwitch(changed)) return;
    {
        const BulkOperation keep(keepFocus_);
        showNode(current_);
    }
    if (!showInViewport) return;
    send(BrowserEvent::switchesChanged);
    send(BrowserEvent::redraw);
}

// The message is the form's, and so is what it keeps the user from. The editor is disabled for as
// long, or the same button would show the same message again.
void Hierarchy::refuseMask() {
    const HWND editor = switchEditor_->Handle();
    const HWND focus = ::GetFocus();
    ::EnableWindow(editor, FALSE);
    message(IDS_SWITCH_TOO_LARGE);
    if (!::IsWindow(editor)) return;
    ::EnableWindow(editor, TRUE);
    ::SetActiveWindow(editor);
    ::SetFocus(focus);
}

// The node may have gone or become something else while the editor was open.
bool Hierarchy::storeSwitch(const SwitchRecordBuffer& changed) {
    if (tree_.Node(switchItem_) != changed.node) return false;
    if (!isOfKind(changed.node, FltNodeKind::Switch)) return false;
    return fltPutRecord(nodeOf(changed.node), changed.record);
}

}  // namespace tessera
