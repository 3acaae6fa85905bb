// The application's window: it owns the views on the host's scene and is the host's window side.
#pragma once

#include "../ui/commandpanel.h"
#include "../ui/scriptpane.h"
#include "../ui/statusbar.h"
#include "../ui/viewport.h"
#include "scenefiles.h"
#include "scriptfiles.h"

#include <workbench/scriptline.h>
#include <workbench/shownscene.h>

#include <kiln/host/host.h>

#include <string>
#include <vector>

namespace workbench {

class MainWindow : public CWnd,
                   public ViewportClient,
                   public SceneFilesClient,
                   public kiln::HostWindow {
public:
    explicit MainWindow(kiln::Core& core);
    ~MainWindow() override;

    /// Creates the window, hidden, about 1280 by 900 pixels at 100 %.
    bool Create();

    /// Lists the utilities of the modules that are loaded now.
    void listUtilities();
    /// Where scripts put pictures whose path says no folder: the current one unless this is set.
    void setPictureFolder(const std::string& folder) { pictureFolder_ = folder; }
    const std::string& pictureFolder() const { return pictureFolder_; }
    /// Draws every window of the program now, without handling other messages.
    void drawNow();
    /// Adds a line to the script log.
    void print(const std::string& line) override { script_.print(line); }

    /// The utility with this class name, or null.
    ClassDesc* utilityNamed(const std::string& name) const;
    /// Accelerators, and the keyboard in rollup pages; true when the message was used.
    bool preTranslate(MSG& message);

    CommandPanel& panel() { return panel_; }
    Viewport& viewport() { return viewport_; }
    SceneFiles& files() { return files_; }
    ScriptFiles& scripts() { return scripts_; }
    kiln::Core& core() { return core_; }
    /// Selects the node with the tallest surface, as a click on it would; false without one.
    bool selectTallest();
    /// Encloses what is selected; empty without a selection.
    Box selectedBox() { return sceneToDraw().selectedBox(); }
    /// Runs a menu command.
    void run(int command);

    // kiln::HostWindow
    HWND mainWindow() override { return Handle(); }
    HWND addRollupPage(HINSTANCE module, int dialogId, DLGPROC procedure, const char* title,
                       LPARAM param, DWORD flags, int category) override;
    void deleteRollupPage(HWND page) override;
    void rollupMouseMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) override;
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
    bool runScript(int command);

    // SceneFilesClient
    void sceneReplaced() override;
    void fileChanged() override { refreshFrame(); }
    void setBusy(bool busy) override { scene_.hold(busy); }

    void deleteSelected();
    void onOutdated();

    static void onNotify(void* self, NotifyInfo* info);
    void noteChange(const NotifyInfo& change);
    void refreshFrame();
    void refreshTitle();
    void refreshStatus();
    void refreshMenu();
    void listRecentFiles();
    void raiseOwned();
    void layout();
    RECT splitterArea() const;
    void about();
    void listAboutBoxes();
    bool showAboutOf(int command);

    kiln::Core& core_;
    Interface& host_;
    ShownScene scene_;
    ScriptLine scriptLine_;
    SceneFiles files_;
    ScriptFiles scripts_;
    bool refreshPosted_ = false;

    Viewport viewport_;
    CommandPanel panel_;
    ScriptPane script_;
    StatusBar status_;

    std::string pictureFolder_;
    std::string prompt_;
    std::vector<ClassDesc*> utilities_;
    std::vector<ClassDesc2*> aboutBoxes_;  // of the help menu, in its order
    int scriptHeight_ = 0;
    bool splitting_ = false;
    HACCEL fileKeys_ = nullptr, sceneKeys_ = nullptr;
};

}  // namespace workbench
