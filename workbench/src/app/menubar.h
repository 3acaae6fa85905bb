// The main window's menu: what is enabled and checked, and the entries that come and go.
#pragma once

#include <framework/cwnd.h>
#include <kiln/classdesc.h>
#include <kiln/host/core.h>

#include <span>
#include <string>

namespace workbench {

class ReferenceCommands;
class ScriptFiles;
class SavedViews;
class Viewport;

class MenuBar {
public:
    /// All of them outlive this.
    MenuBar(framework::CWnd& window, kiln::Core& core, Viewport& viewport, ScriptFiles& scripts,
            const SavedViews& views, const ReferenceCommands& references)
        : window_(window),
          core_(core),
          viewport_(viewport),
          scripts_(scripts),
          views_(views),
          references_(references) {}

    /// Loads the menu in the present language and sets it as the window's. The about boxes of
    /// utilities have to be listed anew.
    void attach();
    /// To be called before the menu is shown. `recent`: the files opened last.
    /// `historyShown`: whether the list of steps is open. `picksWholes`: whether a click takes
    /// objects. `snaps`: whether handles keep to the grid.
    void refresh(std::span<const std::string> recent, bool historyShown, bool picksWholes,
                 bool snaps);
    /// Shows the viewport's context menu; what is chosen comes to the window as a command.
    void showForView(POINT screen);
    /// Lists the about boxes of utilities after the program's own, in the last menu.
    void listAboutBoxes(std::span<ClassDesc2* const> utilities);

private:
    void enableEntries(HMENU menu);
    void nameSteps();
    void showStep(UINT command, const std::string& text, bool on);
    void checkEntries();
    void listRecent(std::span<const std::string> recent);
    void check(UINT command, bool on);

    framework::CWnd& window_;
    kiln::Core& core_;
    Viewport& viewport_;
    ScriptFiles& scripts_;
    const SavedViews& views_;
    const ReferenceCommands& references_;
    HMENU menu_ = nullptr;
};

}  // namespace workbench
