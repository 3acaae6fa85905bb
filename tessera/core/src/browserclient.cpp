#include <tessera/browserclient.h>

#include "browserfill.h"
#include "nodecommands.h"
#include "ownedit.h"
#include "siblingorder.h"
#include "treenodes.h"

#include <diagnostics/log.h>
#include <fltkilnutil/actions.h>
#include <fltkilnutil/fltdefinitions.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <tessera/lodviewer.h>
#include <tessera/nodecreation.h>

#include <vector>

namespace tessera {

namespace {

using fltkilnutil::Action, fltkilnutil::ActionScope;

// Lines in the log name the panel, whose event handler this is.
constexpr const char* kSource = "avfltpanel";
constexpr int kClientLine = 483;

/// The scene changes that make the browser's tree or grid stale, in the order of registration. An
/// undo may have changed attributes, of which nothing else tells.
constexpr int kFollowedNotifications[] = {
    NOTIFY_NODE_CREATED, NOTIFY_NODE_DELETED, NOTIFY_NODE_RENAMED, NOTIFY_NODE_LINKED,
    NOTIFY_SCENE_NEW,    NOTIFY_SCENE_OPENED, NOTIFY_SCENE_UNDO,   NOTIFY_SCENE_REDO};

void onSceneChange(void*, NotifyInfo* change) {
    if (change->intcode == NOTIFY_NODE_DELETED)
        forgetNode(static_cast<INode*>(change->callParam));
    else if (change->intcode == NOTIFY_SCENE_NEW || change->intcode == NOTIFY_SCENE_OPENED) {
        forgetAllNodes();
        zufltguisettitle(nullptr);  // the file that was imported is no longer what is shown
    }
    if (!OwnEdit::takes()) zufltguiSceneChanged();
}

void followScene() {
    for (const int code : kFollowedNotifications)
        RegisterNotification(onSceneChange, nullptr, code);
    OwnEdit::reset();
}

NodeHandle handleOf(INode* node) {
    return reinterpret_cast<NodeHandle>(node);
}

/// Stores a 32-bit answer where the browser asks for it.
void answer(std::uintptr_t argument, int value) {
    if (argument) *reinterpret_cast<std::uint32_t*>(argument) = static_cast<std::uint32_t>(value);
}

void redraw(Interface& host) {
    host.RedrawViews(host.GetTime(), REDRAW_NORMAL, nullptr);
}

void refill(Interface& host) {
    emptyTree();
    if (INode* const root = host.GetRootNode()) BrowserFill().add(nullptr, root);
}

/// One event with its items already turned into nodes.
struct Event {
    Interface& host;
    BrowserEvent code;
    BrowserItem firstItem;
    BrowserItem secondItem;
    INode* first;
    INode* second;
    std::uintptr_t argument;
    std::uintptr_t argument2;
};

void selectInHost(const Event& event) {
    if (!event.firstItem)
        event.host.ClearNodeSelection();
    else if (event.first && !event.first->IsRootNode())
        event.host.SelectNode(event.first, false);
    redraw(event.host);
}

void attach(const Event& event) {
    INode* const node = event.first;
    INode* const target = event.second;
    if (!node || !target || FltShownNodes(node).contains(target)) return beep();
    ActionScope scope(Action::kAttach);
    if (!target->AttachChild(node, true)) return beep();
    if (target->IsGroupHead()) node->SetGroupMember(true);
    scope.Commit();
    _zufltguidelnode(event.firstItem);
    BrowserFill().add(event.secondItem, node);
}

void create(const Event& event) {
    if (hasLostNode(event.firstItem)) return beep();
    INode* const node = createFltNode(event.host, static_cast<std::uint16_t>(event.argument),
                                      static_cast<std::uint32_t>(event.argument2), event.first);
    if (node) addItemOf(node, event.firstItem);
}

void rename(const Event& event) {
    if (!event.first || !event.argument) return;
    ActionScope scope(Action::kRename);
    event.first->SetName(reinterpret_cast<const char*>(event.argument));
    scope.Commit();
}

void move(const Event& event, int step) {
    moveAmongSiblings(event.host, event.firstItem, event.secondItem, step,
                      reinterpret_cast<const BrowserItem*>(event.argument));
}

void storeSelected(const Event& event) {
    if (!event.argument2) return;
    INode* const node = event.host.GetSelNode(static_cast<int>(event.argument));
    *reinterpret_cast<NodeHandle*>(event.argument2) = handleOf(node);
}

/// The events whose edits the browser shows by itself.
bool editsScene(BrowserEvent code) {
    switch (code) {
        case BrowserEvent::kMoveDown:
        case BrowserEvent::kMoveUp:
        case BrowserEvent::kAttach:
        case BrowserEvent::kRename:
        case BrowserEvent::kMoveUpTogether:
        case BrowserEvent::kMoveDownTogether:
        case BrowserEvent::kCreate:
            return true;
        default:
            return false;
    }
}

void edit(const Event& event) {
    switch (event.code) {
        case BrowserEvent::kMoveDown:
            return move(event, +1);
        case BrowserEvent::kMoveUp:
            return move(event, -1);
        case BrowserEvent::kMoveUpTogether:
            return move(event, -2);
        case BrowserEvent::kMoveDownTogether:
            return move(event, +2);
        case BrowserEvent::kAttach:
            return attach(event);
        case BrowserEvent::kCreate:
            return create(event);
        default:
            return rename(event);
    }
}

void act(const Event& event) {
    switch (event.code) {
        case BrowserEvent::kSelectInHost:
            return selectInHost(event);
        case BrowserEvent::kClosed:
            EnableAccelerators();
            return leaveScene();
        case BrowserEvent::kCountSwitchChildren:
            if (event.first) answer(event.argument, event.first->NumberOfChildren());
            return;
        case BrowserEvent::kRedraw:
            return redraw(event.host);
        case BrowserEvent::kCountSelected:
            DisableAccelerators();
            return answer(event.argument, event.host.GetSelNodeCount());
        case BrowserEvent::kGetSelected:
            return storeSelected(event);
        case BrowserEvent::kRebuild:
            DisableAccelerators();
            return refill(event.host);
        case BrowserEvent::kActivated:
            return DisableAccelerators();
        case BrowserEvent::kSwitchesChanged:
            return LodViewer(event.host).Refresh();
        case BrowserEvent::kConfirmKind:
        case BrowserEvent::kConfirmForm:
        case BrowserEvent::kReserved4:
        case BrowserEvent::kReserved5:
        case BrowserEvent::kReserved6:
        case BrowserEvent::kReserved12:
            return answer(event.argument, 0);
        default:
            return;
    }
}

/// Whether the edit concerns more items than those it is made on: nodes that references list as
/// well, the children of a reference, which are not listed, or what references find.
bool concernsOtherItems(const Event& event) {
    if (!event.first) return false;
    const INode* const parent = event.first->GetParentNode();
    switch (event.code) {
        case BrowserEvent::kAttach:
            return isListed(parent) || isListed(event.second) || isReference(event.second) ||
                   holdsDefinition(event.first);
        case BrowserEvent::kCreate:
            return isListed(event.first) || isReference(event.first);
        default:
            return isListed(parent);
    }
}

}  // namespace

void browserClient(BrowserEvent event, BrowserItem first, BrowserItem second,
                   std::uintptr_t argument, std::uintptr_t argument2, void* clientData) {
    diagnostics::guarded(kSource, kClientLine, false, [&] {
        if (!clientData) return false;
        const Event sent{*static_cast<Interface*>(clientData),
                         event,
                         first,
                         second,
                         nodeOf(first),
                         nodeOf(second),
                         argument,
                         argument2};
        if (editsScene(event)) {
            const OwnEdit ownEdit(concernsOtherItems(sent));
            edit(sent);
        } else {
            act(sent);
        }
        return true;
    });
}

std::int32_t createBrowser(Interface& host) {
    const std::int32_t status = _zufltguicreate(host.GetKilnHWND(), browserClient, 0, &host);
    offerNodeCommands(status == kBrowserDone ? &kNodeCommands : nullptr);
    return status;
}

void leaveScene() noexcept {
    for (const int code : kFollowedNotifications)
        UnRegisterNotification(onSceneChange, nullptr, code);
    leaveSelection();
    forgetAllNodes();  // what happens to them from now on is not seen
}

void showBrowser(Interface& host) {
    followScene();
    refill(host);
    _zufltguishow(1);
}

}  // namespace tessera
