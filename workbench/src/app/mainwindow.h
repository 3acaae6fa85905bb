// The application's window.
#pragma once

#include "../ui/historywindow.h"
#include "../ui/jointswindow.h"
#include "../ui/levelswindow.h"
#include "../ui/transformdialog.h"
#include "commandtable.h"
#include "hostside.h"
#include "menubar.h"
#include "notifications.h"
#include "panefocus.h"
#include "panes.h"
#include "recovery.h"
#include "referencecommands.h"
#include "scenefiles.h"
#include "sceneview.h"
#include "scriptfiles.h"
#include "statustexts.h"
#include "utilities.h"

#include <kiln/host/host.h>
#include <workbench/savedviews.h>
#include <workbench/settings.h>

#include <string>
#include <vector>

namespace workbench {

/// Owns what the program consists of, takes the platform's messages and hands them on.
class MainWindow : public framework::CWnd, public SceneViewClient, public SceneFilesClient {
public:
    /// Keeps the language in `settings`, which outlive this.
    MainWindow(kiln::Core& core, Settings& settings);
    ~MainWindow() override;

    /// Creates the window, hidden, about 1280 by 900 pixels at 100 %.
    bool Create();

    /// Lists the utilities of the modules that are loaded now.
    void listUtilities();
    /// Draws every window of the program now, without handling other messages.
    void drawNow();
    /// Accelerators, and the keyboard in rollup pages; true when the message was used.
    bool preTranslate(MSG& message);
    /// Runs a menu command.
    void run(int command) { commands_.run(command); }

    CommandPanel& panel() { return panes_.panel(); }
    Viewport& viewport() { return panes_.viewport(); }
    SceneView& view() { return view_; }
    SceneFiles& files() { return files_; }
    Recovery& recovery() { return recovery_; }
    ScriptFiles& scripts() { return scripts_; }
    const Utilities& utilities() const { return utilities_; }
    kiln::Core& core() { return core_; }

    // SceneFilesClient
    void print(const std::string& line, LogLine kind = LogLine::kPlain) override {
        panes_.script().print(line, kind);
    }

protected:
    bool OnCreate(const CREATESTRUCTW& create) override;
    void OnSize(UINT type, int width, int height) override;
    void OnMinMaxInfo(MINMAXINFO& info) override;
    void OnPaint() override;
    bool OnEraseBackground(HDC) override { return true; }
    void OnClose() override;
    void OnDestroy() override;
    void OnActivate(UINT state, HWND other, bool minimised) override;
    void OnSetFocus(HWND former) override;
    bool OnCommand(int id, UINT code, HWND control) override;
    bool OnNotify(int id, NMHDR& header, LRESULT& result) override;
    void OnTimer(UINT_PTR id) override;
    void OnLButtonDown(UINT keys, POINT at) override;
    void OnLButtonUp(UINT keys, POINT at) override;
    void OnMouseMove(UINT keys, POINT at) override;
    bool OnSetCursor(HWND under, UINT hitTest, UINT message) override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    // SceneViewClient
    void sceneOutdated() override;
    void sceneDrawn(const std::vector<std::string>& failures) override;
    void nodeHovered(const INode* node) override { status_.showHovered(node); }
    void viewMenuWanted(POINT screen) override;

    // SceneFilesClient
    void sceneReplaced() override;
    void fileChanged() override { refreshFrame(); }
    void setBusy(bool busy) override {
        view_.scene().hold(busy);
        recovery_.setBusy(busy);
        busy_ = busy;
    }

    /// Keeps the language, and shows everything that is open in it.
    void speak(base::Language language);
    void noteChange(const NotifyInfo& change);
    /// Has title and status bar brought up to date once the present message is done.
    void refreshFrame();
    void refreshTitle();
    /// Looks for the views of the scene's file, unless it is about to be another one.
    void followViews();
    void refreshStatus();
    void raiseOwned();
    void finishTyping();
    /// Shows the list of steps beside the viewport, or hides it.
    void toggleHistory();
    /// Opens the guide at the place of the window that has the keyboard.
    void showGuide();
    /// Has a click take objects or faces, and keeps that.
    void togglePickWholes();
    void readSomeFiles();
    /// Has handles keep to the grid, or not.
    void toggleSnap();

    kiln::Core& core_;
    Settings& settings_;
    GridSnap snap_;
    SavedViews views_;
    SceneView view_;
    Panes panes_;
    PaneFocus paneFocus_;
    StatusTexts status_;
    Utilities utilities_;
    SceneFiles files_;
    ReferenceCommands references_;
    Recovery recovery_;
    ScriptFiles scripts_;
    HistoryWindow history_;
    TransformDialog transform_;
    LevelsWindow levels_;
    JointsWindow joints_;
    CommandTable commands_;
    MenuBar menu_;
    HostSide hostSide_;
    Notifications notifications_;
    bool refreshPosted_ = false;
    bool historyChanged_ = false;  // since it was last listed
    bool sessionEnds_ = false;
    bool busy_ = false;
    bool sceneIsOther_ = false;  // than when its views were looked for
};

}  // namespace workbench
