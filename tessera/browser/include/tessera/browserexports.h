// The hierarchy browser as its client sees it: the exported functions, and the events that it
// sends.
//
// The browser is a window that shows a scene as a tree. It knows no scene: it holds node handles
// from its client, and sends everything that changes or queries the scene to the client's
// one callback. There is at most one form; every function may be called without one and then does
// nothing. All of them belong to the user-interface thread. Texts are UTF-8 and copied. None of
// them throws: what fails inside is the function's plain failure.
#pragma once

#include <cstddef>
#include <cstdint>

// The platform's own names. NOLINTBEGIN(bugprone-reserved-identifier)
struct _TREEITEM;  // what HTREEITEM points to
struct HWND__;     // what HWND points to
// NOLINTEND(bugprone-reserved-identifier)

namespace tessera {

/// An item of the browser's tree: `HTREEITEM` by another name, so that the header needs no window
/// system. Null means "no item".
using BrowserItem = _TREEITEM*;

/// A window: `HWND` by another name.
using BrowserWindow = HWND__*;

/// What the client calls a node. The browser hands it back and reads the node's attributes through
/// the attribute store, to which it is the address of an `INode`. 0 means "no node".
using NodeHandle = std::uintptr_t;

/// What the browser tells or asks its client. The comments name the two items and the two arguments
/// of the callback where they are not zero.
enum class BrowserEvent : std::uint32_t {
    kSelectInHost = 0,       ///< no item: clear the selection; (item, its parent): add it
    kMoveDown = 1,           ///< (item, its parent): one place later among its siblings
    kMoveUp = 2,             ///< (item, its parent): one place earlier
    kAttach = 3,             ///< (dragged item, target): re-parent under the target
    kReserved4 = 4,          ///< never sent
    kReserved5 = 5,          ///< never sent
    kReserved6 = 6,          ///< never sent
    kClosed = 7,             ///< the user closed the form
    kRename = 8,             ///< (item, its parent), argument: the new name, `const char*`
    kMoveUpTogether = 9,     ///< never sent by this form: move a list of siblings up
    kMoveDownTogether = 10,  ///< never sent by this form: move a list of siblings down
    kCreate = 11,            ///< (parent item), arguments: opcode, sign-extended; format revision
    kReserved12 = 12,        ///< never sent
    kCountSwitchChildren = 13,  ///< (item), argument: `std::uint32_t*` that takes the child count
    kRedraw = 14,               ///< redraw the viewports
    kCountSelected = 15,    ///< argument: `std::uint32_t*` that takes the number of selected nodes
    kGetSelected = 16,      ///< arguments: index; `NodeHandle*` that takes the node
    kRebuild = 17,          ///< clear the tree and add every node again
    kActivated = 18,        ///< the user activated the form
    kSwitchesChanged = 19,  ///< update the scene from changed switch data
    kConfirmKind = 20,      ///< (parent item), argument: `std::uint32_t*` to clear, see below
    kConfirmForm = 21,      ///< argument: `std::uint32_t*` to clear, see below
    kItemState = 22,        ///< (item), argument: 2 when the item is selected, else 0
};

/// The client. `clientData` is what was bound with it.
///
/// `kConfirmForm` and `kConfirmKind` are a handshake: the argument points to a 32-bit 1 that a
/// client which knows the event sets to 0. Left alone, it refuses the form, or turns the creation
/// into that of an object.
using BrowserCallback = void (*)(BrowserEvent event, BrowserItem first, BrowserItem second,
                                 std::uintptr_t argument, std::uintptr_t argument2,
                                 void* clientData);

/// What a client may offer beyond the events. `remove` and `copy` are one step each that can be
/// undone, happen as a whole or not at all, and show in the tree what they have done. Their items
/// have nodes and are not at the top level; none of those to delete or to copy lies below another.
struct NodeCommands {
    /// Deletes the items' nodes with everything below them. False when nothing was deleted.
    bool (*remove)(const BrowserItem* items, std::size_t count, void* clientData);
    /// Copies each item's node with everything below it, as the last child of the node of the item
    /// in `parents` (`beside`: that is the node's own parent). `made` takes the copies' handles.
    /// False when nothing was copied.
    bool (*copy)(const BrowserItem* items, const BrowserItem* parents, std::size_t count,
                 bool beside, NodeHandle* made, void* clientData);
    /// Has the form told of changes of the host's selection (`hostSelectionChanged`), or no longer.
    void (*watchSelection)(bool watch, void* clientData);
    /// How many nodes are selected in the host; as many of them as there is room for go to `nodes`.
    std::size_t (*selected)(NodeHandle* nodes, std::size_t room, void* clientData);
    /// The distances of a level of detail were edited: a preview of the levels follows, within the
    /// step that is open.
    void (*levelEdited)(void* clientData);
};

/// Has the form, if there is one, offer these commands of its client (null: none), until another
/// client is bound. The struct is kept by address.
void offerNodeCommands(const NodeCommands* commands) noexcept;

/// The host's selection has changed.
void hostSelectionChanged() noexcept;

/// The results of `_zufltguicreate`.
enum BrowserStatus : std::int32_t {
    kBrowserDone = 0,
    kBrowserRefused = 1,       ///< the client did not answer `kConfirmForm`
    kBrowserNoMemory = 2,      ///< the form could not be allocated
    kBrowserDialogFailed = 3,  ///< the dialog could not be created
    kBrowserFormMissing = 4,   ///< no form exists afterwards
};

}  // namespace tessera

extern "C" {

/// Creates the form, hidden, if there is none, as a popup owned by `parent` (null for none), and
/// binds `callback` and `clientData`, replacing earlier ones. `reserved` is ignored. The client is
/// asked first, with `kConfirmForm`; a null `callback` cannot agree and is refused.
/// Returns a `tessera::BrowserStatus`.
std::int32_t _zufltguicreate(tessera::BrowserWindow parent, tessera::BrowserCallback callback,
                             std::int32_t reserved, void* clientData);

/// Shows the form with an empty property side and all commands enabled (non-zero), or hides it (0).
/// Returns whether a form exists.
bool _zufltguishow(std::uint8_t show);

/// Destroys the form. The client is not told.
void _zufltguidestroy();

/// Adds an item with `text` as the last child of `parent`, or as the last top-level item when that
/// is null, with the icon of the node's kind. Returns the item, null without a form; also null when
/// so much of a large tree was not added again that the form will ask for all of it anew.
tessera::BrowserItem _zufltguiaddnode(tessera::BrowserItem parent, const char* text,
                                      tessera::NodeHandle node);

/// Deletes `item` with everything below it; null clears the whole tree. Returns whether a form
/// exists. Within an edit that the form has sent, deleting or adding a large part of a large tree
/// leaves it as it is instead, and the form asks for all of it anew when the edit is over.
bool _zufltguidelnode(tessera::BrowserItem item);

/// Deletes everything below `item`, as `_zufltguidelnode` does. Returns whether a form exists and
/// the item is not null.
bool _zufltguidelchildren(tessera::BrowserItem item);

/// The handle with which `item` was added; 0 for "Scene Root", for null, without a form, and while
/// the tree is being cleared.
tessera::NodeHandle _zufltguinode2hdl(tessera::BrowserItem item);

/// Makes `item` the tree's caret item and shows its node. Always returns false, on purpose: the
/// result has no meaning.
bool _zufltguiselectnode(tessera::BrowserItem item);

/// Asks the client to rebuild the tree, clears the property side and enables all commands. Called
/// within an event by which the client changes the scene (attach, move, rename, create), it takes
/// effect once the form is done with the edit, whose node it then selects again.
void zufltguirefresh();

/// The scene changed behind the tree: clears the property side and disables every command but
/// Refresh. The tree stays as it is.
void zufltguiSceneChanged();

/// Moves the form to (0, 0) of the screen, keeping its size.
void zufltguiresetpos();

/// Puts `text`, such as the name of the last imported file, in the form's caption behind the
/// product's name; null or empty means the product's name without more. Also for a form created
/// later.
void zufltguisettitle(const char* text);

/// Shows the about box.
void qofltAboutShow();
}
