// A walk through the main views without a person, for pictures.
#pragma once

#include <framework/win32.h>
#include <kiln/host/status.h>
#include <workbench/texts.h>

#include <functional>
#include <initializer_list>
#include <string>

class ClassDesc;

namespace workbench {

class MainWindow;

/// Opens a file, opens a utility and its browser, and takes a screenshot at every stage. What it
/// does to windows of plug-ins it does as a user could: by pressing buttons and selecting items.
class Walk {
public:
    /// At the end it runs `script`, a file, unless that is empty; the pictures that the script
    /// takes go to `folder` too. `pump` handles one message as the program's loop does.
    Walk(MainWindow& window, std::string file, std::string folder, std::string utility,
         std::string script, std::function<void(MSG&)> pump);

    /// Returns the exit code: 0 when every step worked. Each step is a line on the standard output;
    /// the last line of a good walk is what the importer said about the file.
    int run();

private:
    /// What a button of a plug-in says, in each language.
    using Labels = std::initializer_list<const wchar_t*>;

    void step(const char* name, const std::function<kiln::Status()>& action);
    kiln::Status shot(const char* name);
    /// Handles messages until the windows have come to rest.
    void settle();

    kiln::Status openFile();
    kiln::Status openUtility();
    kiln::Status openUtility(ClassDesc& wanted);
    HWND openUtilityWith(Labels labels);
    kiln::Status openBrowser();
    kiln::Status arrange();
    kiln::Status expandTree();
    kiln::Status selectInTree();
    /// A picture for the first item of each icon, named after the icon.
    kiln::Status shootKinds();
    kiln::Status shootTool();
    kiln::Status shootAbout();
    kiln::Status shootCheck();
    /// The palettes, a picture for each tab, and the look of what is selected.
    kiln::Status shootPalettes();
    kiln::Status shootJoints();
    kiln::Status selectInViewport();
    kiln::Status closeUp();
    /// Turns the camera once around, and says how many frames a second it drew.
    kiln::Status turnAround();
    kiln::Status shootViews();
    /// Pictures of the dialogs, each of which is cancelled.
    kiln::Status shootDialogs();
    kiln::Status shootDialog(int command, TextId title, const char* name);
    kiln::Status shootProgress();
    /// Shows the greatest detail alone, where the utility's page has a button for that.
    kiln::Status previewDetail();
    /// Puts a box beside what is selected.
    kiln::Status edit();
    /// Steps of many kinds on the tallest node, each by its command.
    kiln::Status changeInSteps();
    kiln::Status undoAll();
    kiln::Status undoAndRedo();
    /// Exports the scene, where a plug-in does that, and opens the file that it wrote.
    kiln::Status exportAndOpen();
    kiln::Status runScript();

    MainWindow& window_;
    std::string file_, folder_, utility_, script_;
    std::function<void(MSG&)> pump_;
    std::string summary_;
    HWND form_ = nullptr;
    HWND tree_ = nullptr;
    bool failed_ = false;
};

}  // namespace workbench
