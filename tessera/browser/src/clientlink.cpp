#include "clientlink.h"

#include "treerefill.h"

namespace tessera {

void ClientLink::bind(BrowserCallback callback, void* clientData) noexcept {
    callback_ = callback;
    clientData_ = clientData;
    commands_ = nullptr;
}

void ClientLink::send(BrowserEvent event, BrowserItem first, BrowserItem second,
                      std::uintptr_t argument, std::uintptr_t argument2) const {
    if (callback_) callback_(event, first, second, argument, argument2, clientData_);
}

void ClientLink::sendEdit(BrowserEvent event, const TreeItem& edited, BrowserItem second,
                          std::uintptr_t argument, std::uintptr_t argument2) {
    sendTogether({edited.node}, [&] { send(event, edited.handle, second, argument, argument2); });
}

bool ClientLink::edit(const std::vector<NodeHandle>& shownAfter, double effort,
                      const std::function<bool(const NodeCommands&)>& command) {
    if (!commands_) return false;
    bool done = false;
    sendTogether(shownAfter, effort, [&] { done = command(*commands_); });
    return done;
}

// The refresh is posted: the control itself may have begun the edit and must end it first. A posted
// message still comes before the tree is painted.
void ClientLink::sendTogether(const std::vector<NodeHandle>& shownAfter, double effort,
                              const std::function<void()>& sendEdits) {
    if (editing_) return sendEdits();
    struct Editing {
        ClientLink& link;
        const std::vector<NodeHandle>& shownAfter;
        ~Editing() { link.endEdits(shownAfter); }
    };
    const Editing editing{*this, shownAfter};
    editing_ = true;
    // Less than too much is counted as it comes, and not twice.
    effort_ = TreeRefill::isTooMuch(effort) ? effort : 0;
    sendEdits();
}

void ClientLink::endEdits(const std::vector<NodeHandle>& shownAfter) noexcept {
    editing_ = false;
    if (!std::exchange(refreshWanted_, false) || !form_.HasWindow()) return;
    try {
        shownAfter_ = shownAfter;
    } catch (...) {
        shownAfter_.clear();
    }
    form_.Post(kRefreshAfterEdit);
}

bool ClientLink::postponesRefresh() noexcept {
    if (editing_) refreshWanted_ = true;
    return editing_;
}

bool ClientLink::refreshesInstead(double effort) noexcept {
    if (treeLeft_ || !editing_) return treeLeft_;
    effort_ += effort;
    treeLeft_ = TreeRefill::isTooMuch(effort_);
    if (treeLeft_) refreshWanted_ = true;
    return treeLeft_;
}

}  // namespace tessera
