// The host as a plug-in sees it.
#pragma once

#include <kiln/inode.h>
#include <kiln/namemaker.h>
#include <kiln/platform.h>
#include <kiln/tab.h>
#include <kiln/texmap.h>
#include <kiln/timevalue.h>

class FPInterface;

/// `Interface::RedrawViews` flags.
inline constexpr DWORD REDRAW_BEGIN = 1;
inline constexpr DWORD REDRAW_INTERACTIVE = 2;
inline constexpr DWORD REDRAW_END = 4;
inline constexpr DWORD REDRAW_NORMAL = 8;

/// Directory ids of `Interface::GetDir`. Those of scenes, imports and exports are where the last
/// one was.
inline constexpr int KILN_PLUGIN_DIR = 0;  ///< plug-ins and the resource libraries beside them
inline constexpr int KILN_SCENE_DIR = 1;
inline constexpr int KILN_IMPORT_DIR = 2;
inline constexpr int KILN_EXPORT_DIR = 3;
inline constexpr int KILN_IMAGE_DIR = 4;
inline constexpr int KILN_DIR_COUNT = 5;

/// The host. There is one, from the host's start to its end; everything on it is called on the
/// user-interface thread, and nothing on it throws unless memory runs out.
class Interface {
public:
    virtual ~Interface() = default;

    // The scene.

    virtual INode* GetRootNode() = 0;
    /// Makes a node that shows `object` (may be null), takes a reference to it, and hangs it on the
    /// root at the identity, named after the object's class and a number that makes the name
    /// unique. Sends `NOTIFY_NODE_CREATED`. Null when there is no memory; the object is then still
    /// the caller's.
    virtual INode* CreateObjectNode(Object* object) = 0;
    /// The same with a name of the caller's, unique or not.
    virtual INode* CreateObjectNode(Object* object, const char* name) = 0;
    /// Detaches and deletes the node and its subtree, chunks included; objects and texture maps go
    /// with their last node. Sends `NOTIFY_NODE_DELETED` for each. The root stays.
    virtual void DeleteNode(INode* node) = 0;
    /// Whether `node` is one of this scene's, root included; it may be a pointer to a node that has
    /// gone.
    virtual bool IsNodeInScene(const INode* node) const = 0;
    /// A node by its handle or by its name (the one that has had it longest); null for none.
    virtual INode* GetINodeByHandle(DWORD handle) = 0;
    virtual INode* GetINodeByName(const char* name) = 0;
    /// How many nodes there are, without the root.
    virtual int GetNodeCount() const = 0;
    /// A name maker that the caller deletes; with `initialize` it also avoids the names of nodes
    /// that the scene has now or gets later.
    virtual NameMaker* NewNameMaker(bool initialize = true) = 0;

    // Texture maps of the scene, whether a node uses them or not.

    virtual int GetTexmapCount() const = 0;
    virtual Texmap* GetTexmap(int index) const = 0;
    /// Adds a map and takes a reference to it; one that is there already is not added again.
    virtual void AddTexmap(Texmap* map) = 0;
    /// Drops the scene's own reference; nodes keep theirs. False when it is not there.
    virtual bool RemoveTexmap(Texmap* map) = 0;

    // Selection.

    virtual int GetSelNodeCount() const = 0;
    /// The selected node at `index`, in the order of selection; null when out of range.
    virtual INode* GetSelNode(int index) const = 0;
    /// Selects `node`, after clearing the selection when `clearSel`. The root cannot be selected.
    virtual void SelectNode(INode* node, bool clearSel = true) = 0;
    virtual void DeSelectNode(INode* node) = 0;
    virtual void ClearNodeSelection() = 0;

    // Groups.

    /// Makes a group: a dummy head at the middle of the nodes, which become its children and
    /// members, world positions kept. Without `name` it is one like "Group001". Nodes below others
    /// of the list stay where they are. Null when no node of the list can be grouped.
    virtual INode* GroupNodes(const Tab<INode*>& nodes, const char* name = nullptr) = 0;
    /// Dissolves a group: its children go to the head's parent, world positions kept, and the head
    /// is deleted. False when `head` is not a head.
    virtual bool UngroupNode(INode* head) = 0;

    // Time and views.

    virtual TimeValue GetTime() const = 0;
    /// Asks for the viewports to be drawn anew, which they are anyway after a change that the host
    /// sees (`SceneWatch`). `changed` names what changed, null for anything.
    virtual void RedrawViews(TimeValue t, DWORD flags = REDRAW_NORMAL,
                             Animatable* changed = nullptr) = 0;
    /// Has the active viewport show what is selected, as large as it fits; everything where nothing
    /// with a size is selected.
    virtual void ZoomToSelection() = 0;

    // Windows. All of these do nothing, and return null, in a host without windows.

    virtual HWND GetKilnHWND() const = 0;
    /// Adds a rollup page made from dialog `dialogId` of `module` to the command panel. `title` is
    /// UTF-8; `param` arrives with WM_INITDIALOG; pages stand in the order of `category`, lower
    /// ones first. Null when it cannot.
    virtual HWND AddRollupPage(HINSTANCE module, int dialogId, DLGPROC dialogProcedure,
                               const char* title, LPARAM param = 0, DWORD flags = 0,
                               int category = 0) = 0;
    virtual void DeleteRollupPage(HWND page) = 0;
    /// Hands a mouse message on a page's empty area to the panel, which scrolls by dragging.
    virtual void RollupMouseMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) = 0;
    /// Shows a line in the host's status bar; null clears it.
    virtual void PushPrompt(const char* text) = 0;

    // Places.

    /// The directory with that id, UTF-8, without a separator at its end; empty when it is not set
    /// or the id is unknown. Valid until it is set anew.
    virtual const char* GetDir(int id) const = 0;
};

/// `AddRollupPage` flags.
inline constexpr DWORD APPENDROLL_CLOSED = 1;  ///< the page is rolled up at first

/// The host, or null while there is none.
KILNAPI Interface* GetCOREInterface() noexcept;
/// The static interface with that id, whoever published it; null when there is none.
KILNAPI FPInterface* GetCOREInterface(const Interface_ID& id) noexcept;
/// `GetDir` of the host; empty while there is none.
KILNAPI const char* GetDir(int id) noexcept;
