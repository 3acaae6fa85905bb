// How the form reaches its client.
#pragma once

#include "treemodel.h"

#include <framework/cwnd.h>
#include <tessera/browserexports.h>

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace tessera {

/// The client's callback, and the refresh that the client may ask for while it is called.
class ClientLink {
public:
    /// Posted to the form when a refresh is to come after an edit.
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
    /// with it. `shownAfter`, as it is then, is selected after a refresh that comes of it; `effort`
    /// is that of the control, as far as it is known beforehand. Returns what the command does;
    /// false where there are none.
    bool edit(const std::vector<NodeHandle>& shownAfter, double effort,
              const std::function<bool(const NodeCommands&)>& command);

    /// Sends several edits: a refresh that comes of them comes once, after the last.
    void sendTogether(const std::vector<NodeHandle>& shownAfter,
                      const std::function<void()>& sendEdits) {
        sendTogether(shownAfter, 0, sendEdits);
    }

    /// The nodes to select after the refresh that has been posted.
    std::vector<NodeHandle> takeShownAfter() noexcept { return std::exchange(shownAfter_, {}); }

    /// Whether a refresh has to wait, since an edit is being sent: form and control still use the
    /// items. The refresh is then asked for once the edit is over.
    bool postponesRefresh() noexcept;

    /// The client changes the tree, which is that effort for its control. True when what an edit
    /// that is being sent has come to is so much that a refresh takes less time: it comes after the
    /// edit, and until then the tree stays as it is.
    bool refreshesInstead(double effort) noexcept;
    bool isTreeLeft() const noexcept { return treeLeft_; }
    /// The tree is filled anew.
    void treeEmptied() noexcept { treeLeft_ = false; }

private:
    void sendTogether(const std::vector<NodeHandle>& shownAfter, double effort,
                      const std::function<void()>& sendEdits);
    void endEdits(const std::vector<NodeHandle>& shownAfter) noexcept;

    const framework::CWnd& form_;
    BrowserCallback callback_ = nullptr;
    void* clientData_ = nullptr;
    const NodeCommands* commands_ = nullptr;
    bool editing_ = false;        ///< an edit is being sent
    bool refreshWanted_ = false;  ///< meanwhile
    bool treeLeft_ = false;       ///< as it was, until the refresh
    double effort_ = 0;           ///< of the control, for the edit
    std::vector<NodeHandle> shownAfter_;
};

}  // namespace tessera
