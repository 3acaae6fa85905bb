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
void sizeMasks(FltSwitch& record, std::uint32_t childCount) {
    record.setMaskBits(static_cast<std::int32_t>(childCount));
    while (record.maskCount() < 1) record.maskWords.append(0xFFFFFFFF);
    if (record.currentMask < 0) record.currentMask = 0;
}

// Whether a record has room for the masks, one at least.
bool canBeStored(const FltSwitch& record, std::uint32_t childCount) {
    constexpr std::int32_t kMost = FltSwitch::kMaxWrittenMaskWords;
    return record.maskWords.count() <= kMost && childCount <= kMost * 32u;
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
    if (on && switchEditor_ && switchEditor_->IsVisible())
        openSwitchEditor();
    else
        enableSwitchEditing();
}

// The editor can be used while it holds the masks of the node that is being edited.
void Hierarchy::enableSwitchEditing() {
    EnableItem(IDC_TOOL, switchEditing_);
    if (switchEditor_)
        switchEditor_->EnableControls(switchEditing_ &&
                                      tree_.Node(switchItem_) == switchRecord_->node);
}

void Hierarchy::openSwitchEditor() {
    if (readSwitch()) showSwitchEditor();
    enableSwitchEditing();
}

// Fills the form's buffer from the current node. False when that has no masks to be edited.
bool Hierarchy::readSwitch() {
    const HTREEITEM item = current_;
    const NodeHandle node = tree_.Node(item);
    if (!hasClient() || !node || !isOfKind(node, FltNodeKind::Switch) || !loadAttributes(node))
        return false;
    if (!switchRecord_) switchRecord_ = std::make_unique<SwitchRecordBuffer>();
    SwitchRecordBuffer& buffer = *switchRecord_;
    buffer.childCount = 0;
    buffer.node = 0;
    send(BrowserEvent::countSwitchChildren, item, nullptr,
         reinterpret_cast<std::uintptr_t>(&buffer));
    FltSwitch record;
    if (!HasWindow() || current_ != item || !fltGetRecord(nodeOf(node), record)) return false;
    if (buffer.childCount == 0) {
        message(IDS_SWITCH_WITHOUT_CHILDREN);
        return false;
    }
    if (!canBeStored(record, buffer.childCount)) {
        message(IDS_SWITCH_TOO_LARGE);
        return false;
    }
    sizeMasks(record, buffer.childCount);
    buffer.record = record;
    buffer.node = node;
    return true;
}

void Hierarchy::showSwitchEditor() {
    if (!switchEditor_)
        switchEditor_ = std::make_unique<CSwitch>(
            *switchRecord_,
            [this](SwitchRecordBuffer& changed, bool show) { switchChanged(changed, show); },
            [this] { refuseMask(); });
    if (switchEditor_->HasWindow()) {
        switchEditor_->Display();
    } else {
        if (!switchEditor_->Create(Handle())) return;
        centre(*switchEditor_, WindowRect());
    }
    if (HasWindow()) switchEditor_->Show();
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
    if (current_ != switchItem_ || tree_.Node(current_) != changed.node) return false;
    if (!isOfKind(changed.node, FltNodeKind::Switch)) return false;
    return fltPutRecord(nodeOf(changed.node), changed.record);
}

}  // namespace tessera
