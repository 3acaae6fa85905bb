#include "clientlink.h"

#include <base/scopedvalue.h>

#include <utility>

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

// The refresh is posted: the control itself may have begun the edit and must end it first. A posted
// message still comes before the tree is painted.
void ClientLink::sendEdit(BrowserEvent event, const TreeItem& edited, BrowserItem second,
                          std::uintptr_t argument, std::uintptr_t argument2) {
    const NodeHandle node = edited.node;
    {
        const base::ScopedValue editing(editing_, true);
        send(event, edited.handle, second, argument, argument2);
    }
    refreshIfWanted(node);
}

bool ClientLink::edit(NodeHandle shownAfter,
                      const std::function<bool(const NodeCommands&)>& command) {
    if (!commands_) return false;
    bool done = false;
    {
        const base::ScopedValue editing(editing_, true);
        done = command(*commands_);
    }
    refreshIfWanted(shownAfter);
    return done;
}

void ClientLink::refreshIfWanted(NodeHandle shownAfter) {
    if (std::exchange(refreshWanted_, false) && form_.HasWindow())
        form_.Post(kRefreshAfterEdit, shownAfter);
}

bool ClientLink::postponesRefresh() noexcept {
    if (editing_) refreshWanted_ = true;
    return editing_;
}

}  // namespace tessera
