// The commands of menu and keyboard.
#pragma once

#include <base/language.h>
#include <framework/cwnd.h>
#include <kiln/host/core.h>

#include <functional>
#include <unordered_map>

namespace workbench {

class SceneFiles;
class SceneView;
class ScriptFiles;
class Utilities;
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
    std::function<void()> toggleHistory;        ///< shows the list of steps, or hides it
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
    /// Runs the command of a key; false when it has none. Keys that mean something where text is
    /// edited count only without `isTyping`.
    bool runKey(MSG& message, bool isTyping);
    /// The same for the keys of the history alone, which are the host's wherever no text is edited.
    bool runHistoryKey(MSG& message);

private:
    void addFileCommands();
    void addHistoryCommands();
    void addEditCommands();
    void addViewCommands();
    void addLanguageCommands();
    void addScriptCommands();

    const CommandTargets targets_;
    std::unordered_map<int, std::function<void()>> actions_;
    HACCEL fileKeys_ = nullptr, sceneKeys_ = nullptr, historyKeys_ = nullptr;
};

}  // namespace workbench
