// The form of the hierarchy browser.
#pragma once

#include "ctreectrlex.h"

#include <fltkilnutil/fltattr.h>
#include <framework/cbitmapbutton.h>
#include <framework/cdialog.h>
#include <framework/cwaitcursor.h>
#include <tessera/browserexports.h>

#include <memory>
#include <optional>
#include <string>

class CSwitch;

namespace tessera {

struct SwitchRecordBuffer;

/// The window with the scene's tree on the left and the current node's attributes on the right.
///
/// It never touches the scene: everything that changes or queries it goes to the client. "Current"
/// is the item whose node is shown on the right; it need not be the tree's caret item.
class Hierarchy : public CDialog {
public:
    Hierarchy();
    ~Hierarchy() override;

    /// Creates the dialog, hidden. False when the platform refuses.
    bool create(HWND parent);

    void bind(BrowserCallback callback, void* clientData) noexcept;

    // What the exports do; they are described there.
    void show(bool shown);
    HTREEITEM addNode(HTREEITEM parent, const char* text, NodeHandle node);
    void deleteNode(HTREEITEM item);
    void deleteChildren(HTREEITEM item);
    NodeHandle nodeOfItem(HTREEITEM item);
    void selectNode(HTREEITEM item);
    /// While an edit is being sent this waits: the form and the control still use the items.
    void refresh();
    void resetPosition();

    /// Clears the property side, disables the commands and trusts no node of the tree until the
    /// next `refresh`.
    void sceneChanged();

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    bool OnInitDialog() override;
    void OnSize(UINT type, int width, int height) override;
    void OnMinMaxInfo(MINMAXINFO& info) override;
    void OnClose() override;
    void OnOK() override {}
    void OnCancel() override;
    void OnActivate(UINT state, HWND other, bool minimised) override;
    bool OnCommand(int id, UINT code, HWND control) override;
    bool OnNotify(int id, NMHDR& header, LRESULT& result) override;
    bool PreTranslateMessage(MSG& message) override;

private:
    /// Clears the property side and enables or disables the commands.
    void resetProperties(bool enabled);
    class CGridEx;

    // Setting up and laying out.
    void initialiseTree();
    void initialiseGrid();
    void loadPictures();
    void alignControls();
    void addAboutCommand();
    void layOut(int growX, int growY);
    void fitColumns();
    void restorePlacement();

    // The client.
    bool hasClient() const noexcept { return callback_ != nullptr; }
    void send(BrowserEvent event, HTREEITEM first = nullptr, HTREEITEM second = nullptr,
              std::uintptr_t argument = 0, std::uintptr_t argument2 = 0);
    /// Sends an event by which the client changes the scene and the tree with it.
    void sendEdit(BrowserEvent event, HTREEITEM first, HTREEITEM second,
                  std::uintptr_t argument = 0, std::uintptr_t argument2 = 0);
    void refreshAfterEdit(NodeHandle edited);
    void message(unsigned stringId);

    // Commands.
    bool pushed(int id);
    void moveSelected(BrowserEvent event);
    void sendRebuilding(BrowserEvent event, HTREEITEM item, HTREEITEM parent);
    void selectCaretOnly();
    void expandSelected(bool expand);
    void selectInHost();
    void selectFromHost();
    std::vector<NodeHandle> hostSelection();
    void find();
    std::optional<int> searchedAttribute();
    void markMatches(NodeHandle node, FltNodeKind kind, int row);
    void create();
    bool mayCreate(const TreeItem& parent, int choice);
    void spin(int step);
    void drop(HTREEITEM dragged, HTREEITEM target);
    void selectLastChild(HTREEITEM parent, NodeHandle node);
    bool mayAttach(const TreeItem& dragged, const TreeItem& target);
    bool rename(const TVITEMW& edited);

    // Notifications.
    bool notifyTree(NMHDR& header, LRESULT& result);
    bool notifyGrid(NMHDR& header, LRESULT& result);
    bool giveToolTip(NMHDR& header);
    void selectionChanged(HTREEITEM old, HTREEITEM now);
    void spreadMarks(HTREEITEM old, HTREEITEM now);
    void countSelected();
    void clear();

    // The property side.
    /// Takes what is being typed into a cell, the comment, a label or the mask field. Whatever
    /// leaves, refreshes, refills or closes comes by here first.
    void finishTyping();
    void showNode(HTREEITEM item);
    void showNothing(const char* name);
    void showName(const FltAttrGroup& set);
    void setName(std::string name);
    void showAttributes(const FltAttrGroup& set);
    void limitComment();
    void showComment(NodeHandle node);
    void storeComment();
    void reduceGrid();
    bool endEdit(int attribute, const std::string& entered);
    void editSelected(FltAttrGroup& set, FltAttrDesc& attribute, const std::string& value);
    void renewDependent(const FltAttrGroup& set);
    void showAgain(HTREEITEM item);
    void focusTree();

    // The switch editor.
    void editSwitch(bool on, HTREEITEM item);
    void enableSwitchEditing();
    void openSwitchEditor();
    bool readSwitch();
    void showSwitchEditor();
    void switchChanged(const SwitchRecordBuffer& changed, bool showInViewport);
    void refuseMask();
    bool storeSwitch(const SwitchRecordBuffer& changed);

    std::unique_ptr<CGridEx> grid_;
    BrowserCallback callback_ = nullptr;
    void* clientData_ = nullptr;
    CTreeCtrlEx tree_;
    /// Lives from when the tree was emptied until it is shown or an item of it selected, or else
    /// until messages are handled again: meanwhile the client fills it.
    struct Filling {
        explicit Filling(CTreeCtrlEx& tree) : pause(tree) {}
        CWaitCursor wait;
        RedrawPause pause;
    };
    std::optional<Filling> filling_;
    SIZE size_{};           ///< of the client area, as the controls are laid out for
    SIZE smallestTrack_{};  ///< of the window
    bool clearing_ = false;
    bool bulk_ = false;
    bool editing_ = false;        ///< an edit is being sent
    bool refreshWanted_ = false;  ///< by the client, meanwhile
    HTREEITEM current_ = nullptr;
    CEdit comment_;
    CComboBox createKind_;
    CButton global_;
    CEdit name_;
    CBitmapButton up_, down_, expand_, collapse_, selectGet_, selectSet_, find_, tool_;
    std::size_t selectedCount_ = 0;
    bool switchEditing_ = false;
    HTREEITEM switchItem_ = nullptr;
    /// Filled at the client's answer. Names no node while it is not known to hold a good record.
    std::unique_ptr<SwitchRecordBuffer> switchRecord_;
    std::unique_ptr<CSwitch> switchEditor_;
    CButton subtree_;
    CImageList images_;
    bool commandsEnabled_ = true;
    bool stale_ = false;  ///< the tree may name nodes that have gone
    /// Not shown since it was made or closed: a client need not tell it of the scene.
    bool unattended_ = true;
    bool keepFocus_ = false;  ///< showing a node must not give the keyboard to the tree
    std::string shownName_;
    std::string shownComment_;
};

}  // namespace tessera
