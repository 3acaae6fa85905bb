// The commands on nodes that show other files.
#pragma once

#include "../ui/logview.h"

#include <framework/cwnd.h>
#include <kiln/host/core.h>

#include <functional>
#include <string>
#include <vector>

namespace workbench {

class SceneFiles;
class SceneView;
class Settings;

/// What is done with references is done by the plug-in that knows them, by the functions that it
/// publishes for scripts. The user is told what it refuses.
class ReferenceCommands {
public:
    using Print = std::function<void(const std::string& line, LogLine kind)>;

    /// All outlive this.
    ReferenceCommands(framework::CWnd& window, kiln::Core& core, SceneFiles& files,
                      SceneView& scene, Settings& settings, Print print);

    /// Whether some selected node refers to a file, and whether a plug-in can make references.
    bool hasReference() const { return !selectedReferences().empty(); }
    bool canCollapse() const;

    /// Opens the file of the selected reference in place of the scene.
    void open();
    /// Reads all files that the scene refers to again.
    void reload();
    /// Has what the selected references show stand in the scene.
    void makeLocal();
    /// Asks for a file to write the selected node to, for which a reference then stands.
    void collapse();
    /// Lists in the log what references do not find.
    void listMissing();
    /// Has the user say in which folders files are looked for.
    void editSearchFolders();

private:
    std::vector<INode*> selectedReferences() const;
    void lookAgain();
    bool tell(const kiln::Status& status);

    framework::CWnd& window_;
    kiln::Core& core_;
    SceneFiles& files_;
    SceneView& scene_;
    Settings& settings_;
    Print print_;
};

/// The folders that the user has had searched, from one run to the next.
std::vector<std::string> searchFoldersIn(const Settings& settings);

}  // namespace workbench
