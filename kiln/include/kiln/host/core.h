// The host's own side of the core: its life, its scene files, imports, panel and settings.
#pragma once

#include <kiln/classdesc.h>
#include <kiln/host/history.h>
#include <kiln/host/hostwindow.h>
#include <kiln/host/status.h>
#include <kiln/interface.h>
#include <kiln/sceneio.h>
#include <kiln/timevalue.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kiln {

/// What reading or writing a file came to.
struct ImportResult {
    int code = IMPEXP_FAIL;  ///< `IMPEXP_SUCCESS`, `IMPEXP_FAIL` or `IMPEXP_CANCEL`
    std::string message;     ///< the summary after success, otherwise why it failed; may be empty
    ImpExpCause cause = ImpExpCause::kOther;  ///< of a failure
    bool ok() const noexcept { return code == IMPEXP_SUCCESS; }
    explicit operator bool() const noexcept { return ok(); }
};

/// Asked now and then while a file is read or written; false cancels it.
using ProgressFunction = std::function<bool(double fraction, const char* what)>;

/// A version of a file format that an exporter writes.
struct FileVersion {
    DWORD number;      ///< for `SCENE_EXPORT_VERSION_SHIFT`
    std::string name;  ///< "15.8"
};

/// A file kind that a registered importer or exporter handles.
struct FileKind {
    ClassDesc* owner;
    std::string description;              ///< "OpenFlight scene"
    std::vector<std::string> extensions;  ///< without a dot
    std::vector<FileVersion> versions;    ///< of an exporter, newest first; may be empty
};

/// A part of the scene of which a file holds one.
struct FilePart {
    INode* node;
    std::string name;      ///< the node's
    std::string fileName;  ///< of the file that it was read from, without its folder; may be empty
};

/// What an export writes.
struct ExportChoice {
    DWORD options = 0;      ///< see `SceneExport`
    INode* part = nullptr;  ///< one of `Core::exportParts`; null where there are not several
    /// Instead of `part`: the name of its node or of its file, which must be no other's.
    std::string partName = {};
};

/// What a file holds that the scene refers to.
struct FileScene {
    INode* root = nullptr;  ///< of a scene of its own; null when it could not be read
    ImportResult result;
};

/// The core, of which there is at most one. `GetCOREInterface()` is null before `create` and after
/// `destroy`.
class KILNAPI Core {
public:
    /// Makes the core with an empty scene, or returns the one there is.
    static Core& create();
    /// The core, or null.
    static Core* get() noexcept;
    /// Closes the core and ends it. Does nothing without one. Published interfaces, notifications
    /// of linked code and name makers outlive it.
    static void destroy();
    /// Closes the utility, empties the scene, forgets those of files and unloads the modules: what
    /// has to go while the host's windows are there, which in turn go before the core.
    void close();

    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    Interface& hostInterface() noexcept;

    /// The application's windows; null for none (as at first). Must outlive the core or be set to
    /// null before it goes.
    void setHostWindow(HostWindow* window) noexcept;
    HostWindow& hostWindow() noexcept;  ///< a window that does nothing while none is set

    void setTime(TimeValue t) noexcept;
    /// Sets a directory of `Interface::GetDir`; separators at the end are dropped. False for an
    /// unknown id.
    bool setDirectory(int id, const std::string& path);

    /// Has the host and its plug-ins speak `language`, one of `kiln/language.h`; at first Chinese.
    /// Sends `NOTIFY_LANGUAGE_CHANGED` when it is another. False for an unknown one. The language
    /// outlives the core.
    static bool setLanguage(WORD language);

    /// The steps of the scene that is shown, whichever that is.
    History& history() noexcept { return history_; }

    // The scene.

    /// Empties the scene. Sends `NOTIFY_SCENE_PRE_CLEAR` and `NOTIFY_SCENE_NEW`.
    void newScene();
    /// Empties the scene and puts the time back to 0. Sends also `NOTIFY_SCENE_RESET`.
    void resetScene();
    /// Opens a .kiln file in place of the scene. A file that cannot be read or is damaged is
    /// refused with a message that says where. The new scene is read beside the one that is shown:
    /// after anything but success that one is as it was.
    /// Sends `NOTIFY_SCENE_PRE_CLEAR` and `NOTIFY_SCENE_OPENED`.
    ImportResult loadScene(const std::string& path, const ProgressFunction& progress = {});
    /// Writes the scene to a temporary file beside `path` and renames it to `path`. After anything
    /// but success a file that was there before is as it was. Sends `NOTIFY_SCENE_SAVED`.
    ImportResult saveScene(const std::string& path, const ProgressFunction& progress = {});
    /// Whether `path` is the file that the scene was opened from or saved to last, and its content
    /// is another by now.
    bool fileWasChanged(const std::string& path) const;
    /// The scene as the text of a .kiln file, and back, without a file and without its
    /// notifications of saving; `path` stands in messages.
    std::string sceneText() const;
    ImportResult loadSceneText(const std::string& text, const std::string& path);
    /// Whether the scene is another than was made, opened or saved: undoing back to that makes it
    /// unmodified again. Changes that a plug-in makes inside a chunk go unseen until it says so
    /// with `Animatable::NotifyAppDataChanged`.
    bool isModified() const noexcept;
    void setModified(bool modified) noexcept;

    // Import and export.

    std::vector<FileKind> importKinds() const;
    std::vector<FileKind> exportKinds() const;
    /// Runs the registered importer for the extension of `path`, as one step of the history. After
    /// anything but success everything that it did is taken back.
    ImportResult importFile(const std::string& path, const ProgressFunction& progress = {});
    /// Opens a file of a registered importer in place of the scene. After anything but success the
    /// scene is as it was, down to its selection; after success it counts as unmodified, and `path`
    /// is its file.
    /// Sends `NOTIFY_SCENE_PRE_CLEAR` and `NOTIFY_SCENE_NEW` before the import, and again when the
    /// scene that was there comes back.
    ImportResult openImported(const std::string& path, const ProgressFunction& progress = {});
    /// The parts of the scene that the exporter for the extension of `path` may be told to write,
    /// in the scene's order; empty without an exporter.
    std::vector<FilePart> exportParts(const std::string& path, DWORD options = 0);
    /// Runs the registered exporter for the extension of `path`. Fails and lists the parts where
    /// the choice is not one of them.
    ImportResult exportFile(const std::string& path, const ExportChoice& choice = {},
                            const ProgressFunction& progress = {});
    /// What that export would leave out of the file, in the words of the exporter, one thing a
    /// line; empty for nothing, and where the export itself would fail.
    std::string leftOutOfExport(const std::string& path, const ExportChoice& choice = {});
    /// The same as `exportFile`, for a scene that has its home in a foreign file: after success
    /// `path` is the scene's file, which counts as unmodified, and `NOTIFY_SCENE_SAVED` is sent.
    ImportResult saveExported(const std::string& path, const ExportChoice& choice = {},
                              const ProgressFunction& progress = {});

    // Files that the scene refers to.

    /// That many of them are read, with so many nodes together; what is beyond is refused.
    static constexpr std::size_t kMostFileScenes = 4096;
    static constexpr std::size_t kMostFileNodes = 3'000'000;
    /// Reads a file by its importer into a scene of its own, beside the one that is shown: nobody
    /// hears of it, nothing is recorded, and the nodes are only to be looked at. A file is read
    /// once; the answer stays until `forgetFileScenes`, which another scene leads to. Refused, and
    /// not remembered, while the scene is being changed by an undo or a deletion.
    FileScene readFileScene(const std::string& path);
    /// The file that was read, or null. Valid until the next one is read or forgotten.
    const FileScene* fileScene(const std::string& path) const;
    void forgetFileScenes() noexcept;
    /// Another number after each file that is read or forgotten.
    std::uint64_t fileSceneChanges() const noexcept;
    std::size_t fileSceneNodes() const noexcept;

    // The utility panel.

    /// Opens the utility that `utility` describes, closing the one that is open. Refused when it is
    /// no utility or makes no object.
    Status openUtility(ClassDesc* utility);
    void closeUtility();
    /// The open utility's descriptor, or null.
    ClassDesc* openedUtility() const noexcept;

private:
    friend class SceneAside;
    friend class SceneText;
    Core();
    ~Core();
    struct Impl;
    Impl* impl_;
    History history_;
};

}  // namespace kiln
