// The form of the hierarchy browser.
#pragma once

#include "formplace.h"
#include "hierarchytree.h"

#include <framework/cbitmapbutton.h>
#include <framework/cdialog.h>
#include <tessera/browserexports.h>

#include <array>
#include <memory>
#include <optional>

namespace tessera {

class ClientLink;
class ContextMenus;
class EditCommands;
class FormLayout;
class NodeClipboard;
class PropertySide;
class SelectionCommands;
class SelectionCount;
class SelectionFollower;
class SwitchSide;
class TreeSearch;

/// The window with the scene's tree on the left and the current node's attributes on the right.
///
/// It never touches the scene: everything that changes or queries it goes to the client. The form
/// itself is the window: it passes what its controls and the exports tell on to its parts, and
/// knows whether the tree can be trusted.
class Hierarchy : public framework::CDialog {
public:
    class CGridEx;

    Hierarchy();
    ~Hierarchy() override;

    /// Creates the dialog, hidden. False when the platform refuses.
    bool create(HWND parent);
    /// Destroys its window.
    void destroy();

    // What the exports do; they are described there.
    void bind(BrowserCallback callback, void* clientData) noexcept;
    void offer(const NodeCommands* commands) noexcept;
    void hostSelectionChanged();
    void show(bool shown);
    HTREEITEM addNode(HTREEITEM parent, const char* text, NodeHandle node);
    void deleteNode(HTREEITEM item);
    void deleteChildren(HTREEITEM item);
    NodeHandle nodeOfItem(HTREEITEM item);
    void selectNode(HTREEITEM item);
    void refresh();
    void resetPosition();
    void sceneChanged();
    void followLanguage();

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    bool OnInitDialog() override;
    void OnSize(UINT type, int width, int height) override;
    void OnMinMaxInfo(MINMAXINFO& info) override;
    void OnClose() override;
    void OnOK() override {}
    void OnCancel() override;
    void OnActivate(UINT state, HWND other, bool minimised) override;
    void OnTimer(UINT_PTR id) override;
    void OnDestroy() override;
    void OnLButtonDown(UINT keys, POINT at) override;
    void OnLButtonUp(UINT keys, POINT at) override;
    void OnLButtonDblClk(UINT keys, POINT at) override;
    void OnMouseMove(UINT keys, POINT at) override;
    void OnCaptureChanged(HWND gaining) override;
    bool OnSetCursor(HWND under, UINT hitTest, UINT message) override;
    bool OnCommand(int id, UINT code, HWND control) override;
    bool OnNotify(int id, NMHDR& header, LRESULT& result) override;
    bool PreTranslateMessage(MSG& message) override;
    int ToolTipPart(HWND control, POINT screen) const override;

private:
    void changeTree();
    void addSystemCommands();
    void showSystemCommands() const;
    void place();
    FormPlace placeNow() const;
    void rememberPlace();
    void splitterMoved();
    bool movesDivision(const MSG& message);
    void resetProperties(bool enabled);
    void refreshAfterEdit();
    bool leavesTree(double effort);
    bool selectNodeOf(NodeHandle node);
    void followSceneLater();
    bool isSceneQuiet() const;
    void followScene();
    void clear();
    bool pushed(int id);
    bool notifyTree(NMHDR& header, LRESULT& result);
    bool answerToolTip(NMHDR& header);
    bool accessKey(const MSG& message);

    HierarchyTree tree_;
    const std::unique_ptr<ClientLink> client_;
    const std::unique_ptr<FormLayout> layout_;
    const std::unique_ptr<SwitchSide> switchSide_;
    const std::unique_ptr<PropertySide> properties_;
    const std::unique_ptr<SelectionCommands> selection_;
    const std::unique_ptr<EditCommands> edits_;
    const std::unique_ptr<TreeSearch> search_;
    const std::unique_ptr<NodeClipboard> clipboard_;
    const std::unique_ptr<SelectionCount> count_;
    const std::unique_ptr<SelectionFollower> follower_;
    const std::unique_ptr<ContextMenus> menus_;
    std::array<framework::CBitmapButton, 8> pictures_;
    bool destroyed_ = false;  ///< by the client, and not with its owner
    bool stale_ = false;      ///< nodes of the tree may have been deleted
    /// Not shown since it was made or closed: a client need not tell it of the scene.
    bool unattended_ = true;

    /// Where it was put when it was first shown, and what has been kept since.
    std::optional<FormPlace> keptPlace_;

    // From a change of the scene until the form follows it.
    bool following_ = false;      ///< the timer runs
    ULONGLONG changedAt_ = 0;     ///< the last change, in the platform's milliseconds
    ULONGLONG quiet_;             ///< how long the scene must have been left alone
    NodeHandle shownBefore_ = 0;  ///< the node that was current
    HWND focusBefore_ = nullptr;  ///< the control that had the keyboard and was disabled
};

}  // namespace tessera
