// Scene files: which one is open, and the dialogs by which a user opens, saves, imports and
// exports.
#pragma once

#include "../ui/logview.h"

#include <framework/cwnd.h>
#include <framework/filedialog.h>
#include <kiln/host/host.h>
#include <workbench/autosave.h>
#include <workbench/recentfiles.h>
#include <workbench/texts.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace workbench {

/// What scene files tell the window that shows the scene.
class SceneFilesClient {
public:
    virtual ~SceneFilesClient() = default;
    /// The scene is another one, or has got more; show all of it.
    virtual void sceneReplaced() = 0;
    /// The file's name, or whether the scene has changes, is another.
    virtual void fileChanged() = 0;
    /// Long work has begun or ended. Meanwhile the scene is half-done, though windows may paint.
    virtual void setBusy(bool busy) = 0;
    /// A line for the log.
    virtual void print(const std::string& line, LogLine kind = LogLine::kPlain) = 0;
};

class SceneFiles {
public:
    /// `recentList` is the file of recent files; empty for none.
    SceneFiles(framework::CWnd& owner, kiln::Core& core, SceneFilesClient& client,
               std::string recentList)
        : owner_(owner), core_(core), client_(client), recent_(std::move(recentList)) {}

    /// "tower.kiln", with a star when there are changes that are not saved.
    std::string title() const;
    /// What the user calls the scene: its file's name, or that of the one it was imported from;
    /// empty for none.
    std::string sceneName() const;
    /// The scene's file; empty for one that has none yet.
    const std::string& path() const { return path_; }
    /// The files that were opened, imported or saved last, newest first.
    const std::vector<std::string>& recent() const { return recent_.paths(); }

    /// Opens a .kiln scene, or any other file that a plug-in imports, in place of the scene. The
    /// message is then a summary. After a failure the scene is as it was.
    kiln::ImportResult openFile(const std::string& path);
    /// Opens a scene that was saved aside. It is one that has no file yet and has changes; what it
    /// refers to is looked for where it came from. False, and the user was told, when it cannot be
    /// opened.
    bool recover(const std::string& aside, const AsideOrigin& origin);
    /// Exports behind a progress dialog. After anything but success a file that was there is as it
    /// was.
    kiln::ImportResult exportFile(const std::string& path, const kiln::ExportChoice& choice);
    /// Where a file of that name would be saved.
    std::string suggestion(const std::string& name) const;
    /// False when the user would rather keep the scene that has changed.
    bool mayLoseScene();
    /// Tells the user about a failure, in a message box.
    void showFailure(TextId what, const std::string& path, const kiln::ImportResult& result);

    /// To be told of the host's notifications: plug-ins and scripts open and save scenes too.
    void followScene(const NotifyInfo& change);

    // Menu commands.

    void newScene();
    void open();
    /// Opens this file, or tells why not, unless the user would rather keep what has changed.
    void openPath(const std::string& path);
    /// Opens the recent file at this position.
    void openRecent(std::size_t position);
    /// To the file that the scene came from, whichever program's format it has.
    bool save();
    /// To a .kiln file, which holds everything.
    bool saveAs();
    void import();
    void exportScene(bool selectedOnly);

private:
    enum class Answer { kGoOn, kAsScene, kCancel };
    using Work = std::function<kiln::ImportResult(const kiln::ProgressFunction&)>;

    std::string lastFolder() const;
    std::string name() const;
    bool isExported(const std::string& path) const;
    bool choosePart(kiln::ExportChoice& choice, std::string& name);
    bool askForPart(std::vector<kiln::FilePart> parts, kiln::ExportChoice& choice,
                    std::string& name);
    bool findOwnPart(const std::string& path, kiln::ExportChoice& choice);
    void openOrTell(const std::string& path);
    bool mayReplace(const std::string& path);
    Answer askAboutLeftOut(const std::string& path, const std::string& leftOut);
    bool saveTo(const std::string& path);
    /// Saves to a file of a plug-in's format, which the scene came from.
    bool saveBack(const std::string& path);
    /// `asOwn`: the file becomes the scene's, which counts as saved.
    kiln::ImportResult writeForeign(const std::string& path, const kiln::ExportChoice& choice,
                                    bool asOwn);
    /// Reads or writes a file behind a progress dialog.
    kiln::ImportResult run(const std::string& title, const Work& work);
    void printResult(const std::string& path, const kiln::ImportResult& result,
                     std::chrono::steady_clock::time_point start);

    framework::CWnd& owner_;
    kiln::Core& core_;
    SceneFilesClient& client_;
    RecentFiles recent_;
    std::string path_;           // of the scene's file; empty for one that has none yet
    std::string sourceName_;     // what the scene was imported from
    bool knowsLeftOut_ = false;  // the user was told what of the scene its file has no place for
};

}  // namespace workbench
