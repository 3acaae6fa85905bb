// The form's side of the switch mask editor.
#pragma once

#include "cswitch.h"

#include <functional>
#include <memory>

namespace tessera {

class ClientLink;
class HierarchyTree;

/// Whether the current node's masks can be edited, the editor once it has been opened, and the
/// switch record that it edits.
class SwitchSide {
public:
    /// `changed` is called when an edited record has been stored on the current node.
    SwitchSide(const framework::CWnd& form, HierarchyTree& tree, const ClientLink& client,
               std::function<void()> changed);

    /// The node of the item is shown, a switch; or, for null, none that is one. An editor that is
    /// open follows to another switch.
    void edit(HTREEITEM item);
    /// Opens the editor for the current node, when that is a switch with masks that can be edited.
    void open();
    void finishTyping();
    /// Shows the editor's controls in the host's language of now.
    void followLanguage();
    void hideEditor();
    /// Passes the form's close request on to the editor.
    void closeEditor();

private:
    void enable();
    bool readRecord();
    void showEditor();
    void recordChanged(const SwitchRecordBuffer& changed, bool showInViewport);
    bool store(const SwitchRecordBuffer& changed);
    void refuseMask();

    const framework::CWnd& form_;
    HierarchyTree& tree_;
    const ClientLink& client_;
    std::function<void()> changed_;
    HTREEITEM item_ = nullptr;  ///< the current item while its node is a switch
    /// Filled at the client's answer. Names no node while it is not known to hold a good record.
    std::unique_ptr<SwitchRecordBuffer> record_;
    std::unique_ptr<CSwitch> editor_;
};

}  // namespace tessera
