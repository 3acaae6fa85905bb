#include "selectionfollower.h"

#include "clientlink.h"
#include "formplace.h"
#include "selectioncommands.h"

#include <base/scopedvalue.h>

#include <utility>

namespace tessera {

void SelectionFollower::initialise() {
    on_ = loadFollowsSelection();
}

bool SelectionFollower::canFollow() const noexcept {
    return client_.commands() != nullptr;
}

void SelectionFollower::turn(bool on) {
    if (on == on_) return;
    on_ = on;
    saveFollowsSelection(on);
    attend(shown_);
}

void SelectionFollower::attend(bool shown) {
    shown_ = shown;
    if (const NodeCommands* const commands = client_.commands())
        commands->watchSelection(isFollowing(), client_.clientData());
    hostChanged();
}

void SelectionFollower::hostChanged() {
    if (!isFollowing() || sending_) return;
    hostChanged_ = true;
    post();
}

void SelectionFollower::marksSeen() {
    if (isFollowing() && tree_.isUsable() && passedOn_ != tree_.Model().marks()) post();
}

void SelectionFollower::post() {
    if (!posted_) posted_ = form_.Post(kSettles);
}

void SelectionFollower::settle() {
    posted_ = false;
    // A tree that is stale is filled anew, and then the host's selection counts.
    if (!isFollowing() || !tree_.isUsable()) return;
    if (std::exchange(hostChanged_, false)) {
        takeFromHost();
    } else if (passedOn_ != tree_.Model().marks()) {
        const base::ScopedValue sending(sending_, true);
        selection_.selectInHost();
    }
    passedOn_ = tree_.Model().marks();
}

void SelectionFollower::takeFromHost() {
    const NodeCommands& commands = *client_.commands();
    std::vector<NodeHandle> nodes(commands.selected(nullptr, 0, client_.clientData()));
    commands.selected(nodes.data(), nodes.size(), client_.clientData());
    selection_.followHost(nodes);
}

}  // namespace tessera
