#include "switchside.h"

#include "attributestore.h"
#include "clientlink.h"
#include "hierarchytree.h"
#include "usermessages.h"

#include <fltkilnutil/actions.h>
#include <fltkilnutil/kilnflt.h>
#include <resources/resource.h>

#include <cstdint>
#include <utility>

using framework::CWnd;

namespace tessera {
namespace {

// Completes damaged records, so that there is a mask to show.
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

SwitchSide::SwitchSide(const CWnd& form, HierarchyTree& tree, const ClientLink& client,
                       std::function<void()> changed)
    : form_(form), tree_(tree), client_(client), changed_(std::move(changed)) {}

void SwitchSide::edit(HTREEITEM item) {
    if (std::exchange(item_, item) == item) return;
    if (item && editor_ && editor_->IsVisible())
        open();
    else
        enable();
}

// The editor can be used while it holds the masks of the current node.
void SwitchSide::enable() {
    form_.EnableItem(IDC_TOOL, item_ != nullptr);
    if (editor_) editor_->EnableControls(item_ && tree_.Node(item_) == record_->node);
}

void SwitchSide::open() {
    if (readRecord()) showEditor();
    enable();
}

void SwitchSide::finishTyping() {
    if (editor_) editor_->FinishTyping();
}

void SwitchSide::followLanguage() {
    if (!editor_) return;
    editor_->FollowLanguage();
    editor_->NameControls();
}

void SwitchSide::hideEditor() {
    if (editor_) editor_->Hide();
}

void SwitchSide::closeEditor() {
    if (editor_) editor_->Send(WM_CLOSE);
}

// Fills the buffer from the current node. False when that has no masks that can be edited.
bool SwitchSide::readRecord() {
    const HTREEITEM item = item_;
    const NodeHandle node = tree_.Node(item);
    if (!client_.isBound() || !node || !isOfKind(node, FltNodeKind::Switch) ||
        !loadAttributes(node))
        return false;
    if (!record_) record_ = std::make_unique<SwitchRecordBuffer>();
    SwitchRecordBuffer& buffer = *record_;
    buffer.childCount = 0;
    buffer.node = 0;
    client_.send(BrowserEvent::kCountSwitchChildren, item, nullptr,
                 reinterpret_cast<std::uintptr_t>(&buffer));
    FltSwitch record;
    if (!form_.HasWindow() || item_ != item || !fltGetRecord(nodeOf(node), record)) return false;
    if (buffer.childCount == 0) {
        showMessage(form_, IDS_SWITCH_WITHOUT_CHILDREN);
        return false;
    }
    if (!canBeStored(record, buffer.childCount)) {
        showMessage(form_, IDS_SWITCH_TOO_LARGE);
        return false;
    }
    sizeMasks(record, buffer.childCount);
    buffer.record = record;
    buffer.node = node;
    return true;
}

void SwitchSide::showEditor() {
    if (!editor_)
        editor_ = std::make_unique<CSwitch>(
            *record_,
            [this](SwitchRecordBuffer& changed, bool show) { recordChanged(changed, show); },
            [this] { refuseMask(); });
    if (editor_->HasWindow()) {
        editor_->Display();
    } else {
        if (!editor_->Create(form_.Handle())) return;
        centre(*editor_, form_.WindowRect());
    }
    if (form_.HasWindow()) editor_->Show();
}

void SwitchSide::recordChanged(const SwitchRecordBuffer& changed, bool showInViewport) {
    if (!store(changed)) return;
    changed_();
    if (!showInViewport) return;
    client_.send(BrowserEvent::kSwitchesChanged);
    client_.send(BrowserEvent::kRedraw);
}

// The node may have been deleted or become something else while the editor was open. After a change
// of the scene nobody knows whether it is still there.
bool SwitchSide::store(const SwitchRecordBuffer& changed) {
    if (!tree_.isUsable() || !item_ || tree_.Node(item_) != changed.node) return false;
    if (!isOfKind(changed.node, FltNodeKind::Switch)) return false;
    using fltkilnutil::Action, fltkilnutil::ActionScope;
    ActionScope scope(Action::kEditMasks);
    const bool stored = fltPutRecord(nodeOf(changed.node), changed.record);
    if (stored) scope.Commit();
    return stored;
}

// The message is the form's, and so are the windows that it disables. The editor is disabled for as
// long, or the same button would show the same message again.
void SwitchSide::refuseMask() {
    const HWND editor = editor_->Handle();
    const HWND focus = ::GetFocus();
    ::EnableWindow(editor, FALSE);
    showMessage(form_, IDS_SWITCH_TOO_LARGE);
    if (!::IsWindow(editor)) return;
    ::EnableWindow(editor, TRUE);
    ::SetActiveWindow(editor);
    ::SetFocus(focus);
}

}  // namespace tessera
