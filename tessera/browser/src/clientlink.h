// How the form reaches its client.
#pragma once

#include "treemodel.h"

#include <framework/cwnd.h>
#include <tessera/browserexports.h>

#include <cstdint>
#include <functional>

namespace tessera {

/// The client's callback, and the refresh that the client may ask for while it is called.
class ClientLink {
public:
    /// Posted to the form when the client has asked for a refresh while it was sent an edit; wParam
    /// is the edited node's handle.
    static constexpr UINT kRefreshAfterEdit = WM_APP + 2;

    explicit ClientLink(const framework::CWnd& form) noexcept : form_(form) {}

    void bind(BrowserCallback callback, void* clientData) noexcept;
    bool isBound() const noexcept { return callback_ != nullptr; }
    void* clientData() const noexcept { return clientData_; }

    /// What the client offers beyond the events; null for nothing.
    void offer(const NodeCommands* commands) noexcept { commands_ = commands; }
    const NodeCommands* commands() const noexcept { return commands_; }

    void send(BrowserEvent event, BrowserItem first = nullptr, BrowserItem second = nullptr,
              std::uintptr_t argument = 0, std::uintptr_t argument2 = 0) const;

    /// Sends an event by which the client changes the scene and the tree with it.
    void sendEdit(BrowserEvent event, const TreeItem& edited, BrowserItem second,
                  std::uintptr_t argument = 0, std::uintptr_t argument2 = 0);

    /// Has the client carry out one of its commands, by which it changes the scene and the tree
    /// with it. `shownAfter` is selected after a refresh that the client asks for meanwhile.
    /// Returns what the command does; false where there are none.
    bool edit(NodeHandle shownAfter, const std::function<bool(const NodeCommands&)>& command);

    /// Whether a refresh has to wait, since an edit is being sent: form and control still use the
    /// items. The refresh is then asked for once the edit is over.
    bool postponesRefresh() noexcept;

private:
    void refreshIfWanted(NodeHandle shownAfter);

    const framework::CWnd& form_;
    BrowserCallback callback_ = nullptr;
    void* clientData_ = nullptr;
    const NodeCommands* commands_ = nullptr;
    bool editing_ = false;        ///< an edit is being sent
    bool refreshWanted_ = false;  ///< by the client, meanwhile
};

}  // namespace tessera
