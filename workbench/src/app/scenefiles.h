// Scene files: which one is open, and the dialogs by which a user opens, saves, imports and
// exports.
#pragma once

#include <framework/cwnd.h>
#include <kiln/host/host.h>

#include <string>

namespace workbench {

/// What scene files tell the window that shows the scene.
class SceneFilesClient {
public:
    virtual ~SceneFilesClient() = default;
    /// The scene is another one, or has got more; show all of it.
    virtual void sceneReplaced() = 0;
    /// The file's name, or whether the scene has changes, is another.
    virtual void fileChanged() = 0;
    /// How far long work is; empty when it has ended.
    virtual void showProgress(const std::string& text) = 0;
    /// A line for the log.
    virtual void print(const std::string& line) = 0;
};

class SceneFiles {
public:
    SceneFiles(CWnd& owner, kiln::Core& core, SceneFilesClient& client)
        : owner_(owner), core_(core), client_(client) {}

    /// "tower.kiln", with a star when there are changes that are not saved.
    std::string title() const;

    /// Opens a .kiln scene, or imports any other file into an empty scene. On failure the scene is
    /// as it was or empty, and the message says why. On success `summary` is the importer's or,
    /// for a scene file, a line of our own.
    kiln::Status openFile(const std::string& path, std::string& summary);
    /// False when the user would rather keep the scene that has changed.
    bool mayLoseScene();
    /// Tells the user about a failure, in a message box.
    void showFailure(const std::string& what, const std::string& path, const std::string& reason);

    /// To be told of the host's notifications: plug-ins and scripts open and save scenes too.
    void followScene(const NotifyInfo& change);

    // Menu commands.

    void newScene();
    void open();
    bool save();
    bool saveAs();
    void import();
    void exportScene();

private:
    bool saveTo(const std::string& path);
    kiln::Status importInto(const std::string& path, std::string& summary);

    CWnd& owner_;
    kiln::Core& core_;
    SceneFilesClient& client_;
    std::string path_;        // of the scene file; empty for one that has none yet
    std::string sourceName_;  // what the scene was imported from
};

}  // namespace workbench
