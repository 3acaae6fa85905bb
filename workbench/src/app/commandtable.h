// The commands of menu and keyboard.
#pragma once

#include <base/language.h>
#include <framework/cwnd.h>
#include <kiln/host/core.h>

#include <functional>
#include <unordered_map>

namespace workbench {

class PaneFocus;
class ReferenceCommands;
class SceneFiles;
class SceneView;
class ScriptFiles;
class Utilities;
class SavedViews;
class Viewport;

/// What commands act upon.
struct CommandTargets {
    framework::CWnd& window;
    kiln::Core& core;
    SceneFiles& files;
    ScriptFiles& scripts;
    SceneView& scene;
    Viewport& viewport;
    Utilities& utilities;
    SavedViews& views;
    ReferenceCommands& references;
    PaneFocus& panes;
    std::function<void()> toggleSnap;           ///< brings what handles move to the grid, or not
    std::function<void()> toggleHistory;        ///< shows the list of steps, or hides it
    std::function<void()> toggleTransform;      ///< shows the fields for moving, or hides them
    std::function<void()> toggleLevels;         ///< shows the levels of detail, or hides them
    std::function<void()> toggleJoints;         ///< shows the degrees of freedom, or hides them
    std::function<void()> openGuide;            ///< at the place of the window with the keyboard
    std::function<void()> togglePickWholes;     ///< between objects and faces, for a click
    std::function<void(base::Language)> speak;  ///< has all windows speak that language
};

class CommandTable {
public:
    /// The targets outlive this.
    explicit CommandTable(const CommandTargets& targets);
    ~CommandTable();
    CommandTable(const CommandTable&) = delete;
    CommandTable& operator=(const CommandTable&) = delete;

    /// Runs the command with this number; false when there is none.
    bool run(int command);
    // Each runs the command of a key; false when it has none.

    /// Keys that nobody types: those of files and the like.
    bool runFileKey(MSG& message);
    /// Keys that mean something else where text is edited.
    bool runSceneKey(MSG& message);
    /// The access keys of the main window's panes.
    bool runPaneKey(MSG& message);
    /// The keys of the history, which are the host's wherever no text is edited.
    bool runHistoryKey(MSG& message);

private:
    void addFileCommands();
    void addHistoryCommands();
    void addEditCommands();
    void addReferenceCommands();
    void addViewCommands();
    void addLanguageCommands();
    void addScriptCommands();

    const CommandTargets targets_;
    std::unordered_map<int, std::function<void()>> actions_;
    HACCEL fileKeys_ = nullptr, sceneKeys_ = nullptr, paneKeys_ = nullptr, historyKeys_ = nullptr;
};

}  // namespace workbench
