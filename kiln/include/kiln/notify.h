// Notifications of what happens to the scene.
#pragma once

#include <kiln/platform.h>

/// The scene was emptied by New or Reset. Parameter: null. A single notification stands for all
/// nodes that went; none is sent per node.
inline constexpr int NOTIFY_SCENE_NEW = 0x06;
/// A reset has also put time, selection and view settings back; follows `NOTIFY_SCENE_NEW`.
/// Parameter: null.
inline constexpr int NOTIFY_SCENE_RESET = 0x07;
/// A scene file was opened in place of the scene. Parameter: its path (const char*). None is sent
/// per node.
inline constexpr int NOTIFY_SCENE_OPENED = 0x08;
/// The scene was saved. Parameter: its path (const char*).
inline constexpr int NOTIFY_SCENE_SAVED = 0x09;
/// A node got another name. Parameter: the INode*.
inline constexpr int NOTIFY_NODE_RENAMED = 0x0A;
/// An import has ended, with success or not. Parameter: the path (const char*).
inline constexpr int NOTIFY_IMPORT_ENDED = 0x0B;
/// The scene is about to be emptied or replaced: node pointers are valid for the last time.
/// Parameter: null.
inline constexpr int NOTIFY_SCENE_PRE_CLEAR = 0x0C;
/// A node was linked to another parent, unlinked, or moved among its siblings. Parameter: the
/// INode*.
inline constexpr int NOTIFY_NODE_LINKED = 0x1E;
/// The set of selected nodes changed. Parameter: null.
inline constexpr int NOTIFY_SELECTION_CHANGED = 0x1F;
/// A node was created; it hangs on the root and has its object. Parameter: the INode*.
inline constexpr int NOTIFY_NODE_CREATED = 0x3B;
/// A node is about to be deleted, sent for each node of a subtree, parents first, while the whole
/// subtree is still in place. The scene cannot be changed around it any more. Parameter: the
/// INode*, valid for the last time, unless an undo brings the node back.
inline constexpr int NOTIFY_NODE_DELETED = 0x3C;
/// A step was undone, or done again. Before it the notifications of the changes that follow from it
/// were sent, when all was done already: nodes that came back are in their places
/// (`NOTIFY_NODE_CREATED`), those that went have gone (`NOTIFY_NODE_DELETED`; what they are can
/// still be asked). A scope that is rolled back sends those too. Parameter: null.
inline constexpr int NOTIFY_SCENE_UNDO = 0x51;
inline constexpr int NOTIFY_SCENE_REDO = 0x52;
/// The steps that can be undone or redone are others now. Parameter: null.
inline constexpr int NOTIFY_HISTORY_CHANGED = 0x53;

/// The host speaks another language (`GetLanguage`); the utility panel is opened anew
/// by the host. A window of a
/// plug-in that is open speaks its own to the end, or is opened anew. Parameter: null.
inline constexpr int NOTIFY_LANGUAGE_CHANGED = 0x50;

struct NotifyInfo {
    int intcode;      ///< one of the codes above
    void* callParam;  ///< what the code says
};

/// A handler; `param` is what it was registered with. Must not throw.
using NOTIFYPROC = void (*)(void* param, NotifyInfo* info);

/// Has `proc` called with `param` whenever `code` is sent. Registering the same three again changes
/// nothing. Handlers are called in the order they were registered; one that is registered during
/// a notification is not called for that one. False when `proc` is null or there is no memory.
KILNAPI bool RegisterNotification(NOTIFYPROC proc, void* param, int code) noexcept;
/// Undoes the registration; from then on the handler is not called, not even for a notification
/// that is under way. False when there was none.
KILNAPI bool UnRegisterNotification(NOTIFYPROC proc, void* param, int code) noexcept;
/// Sends `code` with `callParam` to all its handlers.
KILNAPI void BroadcastNotification(int code, void* callParam = nullptr) noexcept;
