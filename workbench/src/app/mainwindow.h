// The application's window: it owns the views on the host's scene and is the host's window side.
#pragma once

#include "../ui/commandpanel.h"
#include "../ui/scriptpane.h"
#include "../ui/statusbar.h"
#include "../ui/viewport.h"

#include <workbench/scenefeed.h>
#include <workbench/scriptline.h>

#include <kiln/host/host.h>

#include <string>
#include <vector>

namespace workbench {

class MainWindow : public CWnd, public ViewportClient, public kiln::HostWindow {
public:
    explicit MainWindow(kiln::Core& core);
    ~MainWindow() override;

    /// Creates the window, hidden, about 1280 by 900 pixels at 100 %.
    bool Create();

    /// Lists the utilities of the modules that are loaded now.
    void listUtilities();
    /// Opens a .kiln scene, or imports any other file into an empty scene. On failure the scene is
    /// as it was or empty, and the message says why. On success it is the importer's summary or,
    /// for a scene file, a line of our own.
    kiln::Status openFile(const std::string& path, std::string& summary);
    /// Tells the user about a failure, in a message box.
    void showFailure(const std::string& what, const std::string& path, const std::string& reason);
    /// Adds a line to the script log.
    void print(const std::string& line) { script_.print(line); }

    /// The utility with this class name, or null.
    ClassDesc* utilityNamed(const std::string& name) const;
    /// Accelerators, and the keyboard in rollup pages; true when the message was used.
    bool preTranslate(MSG& message);

    CommandPanel& panel() { return panel_; }
    Viewport& viewport() { return viewport_; }
    kiln::Core& core() { return core_; }
    /// Selects the node with the tallest surface, as a click on it would; false without one.
    bool selectTallest();
    /// Runs a menu command.
    void run(int command);

    // kiln::HostWindow
    HWND mainWindow() override { return Handle(); }
    HWND addRollupPage(HINSTANCE module, int dialogId, DLGPROC procedure, const char* title,
                       LPARAM param, DWORD flags, int category) override;
    void deleteRollupPage(HWND page) override;
    void rollupMouseMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) override;
    void redrawViews(TimeValue t, DWORD flags, Animatable* changed) override;
    void nodeInvalidated(INode* node) override;
    void pushPrompt(const char* text) override;
    void utilityChanged(ClassDesc* utility) override;

protected:
    bool OnCreate(const CREATESTRUCTW& create) override;
    void OnSize(UINT type, int width, int height) override;
    void OnMinMaxInfo(MINMAXINFO& info) override;
    void OnPaint() override;
    bool OnEraseBackground(HDC) override { return true; }
    void OnClose() override;
    void OnDestroy() override;
    void OnSetFocus(HWND former) override;
    bool OnCommand(int id, UINT code, HWND control) override;
    void OnTimer(UINT_PTR id) override;
    void OnLButtonDown(UINT keys, POINT at) override;
    void OnLButtonUp(UINT keys, POINT at) override;
    void OnMouseMove(UINT keys, POINT at) override;
    bool OnSetCursor(HWND under, UINT hitTest, UINT message) override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    // ViewportClient
    const SceneModel& sceneToDraw() override;
    void onPick(ItemIndex item, bool add) override;
    void onHover(ItemIndex item) override;

    bool runFile(int command);
    bool runEdit(int command);
    bool runView(int command);

    void newScene();
    void open();
    bool save();
    bool saveAs();
    bool saveTo(const std::string& path);
    void import();
    void exportScene();
    kiln::Status importInto(const std::string& path, std::string& summary);
    /// False when the user would rather keep the scene that has changed.
    bool mayLoseScene();

    void selectAll();
    void invertSelection();
    void hideSelected();
    void unhideAll();
    void groupSelected();
    void ungroupSelected();
    void deleteSelected();
    std::vector<INode*> selectedNodes() const;
    void redrawScene();

    static void onNotify(void* self, NotifyInfo* info);
    void noteChange(int code);
    void refreshFrame();
    void refreshTitle();
    void refreshStatus();
    void refreshMenu();
    void layout();
    RECT splitterArea() const;
    void about();

    kiln::Core& core_;
    Interface& host_;
    SceneFeed feed_;
    ScriptLine scriptLine_;
    bool sceneStale_ = true;
    bool selectionStale_ = false;
    bool refreshPosted_ = false;

    Viewport viewport_;
    CommandPanel panel_;
    ScriptPane script_;
    StatusBar status_;

    std::string path_;        // of the scene file; empty for one that has none yet
    std::string sourceName_;  // what the scene was imported from, for the title
    std::string prompt_;
    std::vector<ClassDesc*> utilities_;
    int scriptHeight_ = 0;
    bool splitting_ = false;
    HACCEL fileKeys_ = nullptr, sceneKeys_ = nullptr;
};

}  // namespace workbench
