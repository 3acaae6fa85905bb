#include "scenefiles.h"

#include "filenames.h"
#include "wording.h"

#include <framework/cwaitcursor.h>
#include <framework/filedialog.h>

namespace workbench {
namespace {

constexpr char kProgramName[] = "Workbench";

const std::vector<FileFilter> kSceneFilters = {{"Kiln scenes (*.kiln)", "*.kiln"},
                                               {"All files (*.*)", "*.*"}};

std::vector<FileFilter> filtersOf(const std::vector<kiln::FileKind>& kinds) {
    std::vector<FileFilter> filters;
    for (const kiln::FileKind& kind : kinds) {
        std::string pattern;
        for (const std::string& extension : kind.extensions)
            pattern += (pattern.empty() ? "*." : ";*.") + extension;
        filters.push_back({kind.description + " (" + pattern + ")", pattern});
    }
    return filters;
}

}  // namespace

std::string SceneFiles::title() const {
    std::string name = fileName(path_);
    if (name.empty()) name = sourceName_.empty() ? "Untitled" : sourceName_ + " (imported)";
    return name + (core_.isModified() ? " *" : "");
}

void SceneFiles::showFailure(const std::string& what, const std::string& path,
                             const std::string& reason) {
    owner_.ShowMessage(what + "\n\n" + path + "\n\n" + reason, MB_OK | MB_ICONERROR, kProgramName);
}

bool SceneFiles::mayLoseScene() {
    if (!core_.isModified()) return true;
    const std::string name = !path_.empty()        ? fileName(path_)
                             : sourceName_.empty() ? "the scene"
                                                   : "the scene imported from " + sourceName_;
    switch (owner_.ShowMessage("Save the changes to " + name + " first?",
                               MB_YESNOCANCEL | MB_ICONQUESTION, kProgramName)) {
        case IDYES:
            return save();
        case IDNO:
            return true;
        default:
            return false;
    }
}

void SceneFiles::followScene(const NotifyInfo& change) {
    const bool named =
        change.intcode == NOTIFY_SCENE_OPENED || change.intcode == NOTIFY_SCENE_SAVED;
    if (!named && change.intcode != NOTIFY_SCENE_NEW) return;
    path_ = named ? static_cast<const char*>(change.callParam) : "";
    if (change.intcode != NOTIFY_SCENE_SAVED) sourceName_.clear();
}

void SceneFiles::newScene() {
    if (!mayLoseScene()) return;
    core_.newScene();
    client_.sceneReplaced();
}

void SceneFiles::open() {
    if (!mayLoseScene()) return;
    std::vector<FileFilter> filters = kSceneFilters;
    const std::vector<FileFilter> foreign = filtersOf(core_.importKinds());
    filters.insert(filters.begin() + 1, foreign.begin(), foreign.end());
    const auto path = askOpenFile(owner_.Handle(), "Open", filters);
    if (!path) return;
    std::string summary;
    const kiln::Status status = openFile(*path, summary);
    if (!status.ok()) showFailure("The file could not be opened.", *path, status.message());
}

kiln::Status SceneFiles::openFile(const std::string& path, std::string& summary) {
    const CWaitCursor wait;
    const auto start = std::chrono::steady_clock::now();
    kiln::Status status;
    if (hasExtension(path, "kiln")) {
        status = core_.loadScene(path);
        if (!status.ok()) return status;
        summary =
            "opened " + counted(static_cast<std::size_t>(core_.hostInterface().GetNodeCount()),
                                "node", "nodes");
    } else {
        core_.newScene();
        status = importInto(path, summary);
        if (!status.ok()) return status;
        sourceName_ = fileName(path);
    }
    client_.print("-- " + fileName(path) + ": " + summary + " in " + secondsSince(start));
    client_.sceneReplaced();
    return status;
}

kiln::Status SceneFiles::importInto(const std::string& path, std::string& summary) {
    const std::string name = fileName(path);
    int shown = -1;
    const kiln::ImportResult result =
        core_.importFile(path, [&](double fraction, const char* what) {
            const int percent = static_cast<int>(fraction * 100);
            if (percent != shown) {
                shown = percent;
                client_.showProgress("Importing " + name + ": " + std::to_string(percent) + " % " +
                                     (what ? what : "") + " (Esc cancels)");
            }
            return (::GetAsyncKeyState(VK_ESCAPE) & 0x8000) == 0 ||
                   ::GetForegroundWindow() != owner_.Handle();
        });
    client_.showProgress({});
    if (result.ok()) {
        summary = result.message;
        return {};
    }
    if (result.code == IMPEXP_CANCEL) return kiln::Status::failure("The import was cancelled.");
    return kiln::Status::failure(result.message.empty() ? "The importer gave no reason."
                                                        : result.message);
}

void SceneFiles::import() {
    const auto path = askOpenFile(owner_.Handle(), "Import", filtersOf(core_.importKinds()));
    if (!path) return;
    const CWaitCursor wait;
    std::string summary;
    const kiln::Status status = importInto(*path, summary);
    if (!status.ok())
        return showFailure("The file could not be imported.", *path, status.message());
    client_.print("-- " + fileName(*path) + ": " + summary);
    client_.sceneReplaced();
}

void SceneFiles::exportScene() {
    const std::vector<kiln::FileKind> kinds = core_.exportKinds();
    if (kinds.empty() || kinds.front().extensions.empty()) return;
    const auto path = askSaveFile(owner_.Handle(), "Export", filtersOf(kinds),
                                  kinds.front().extensions.front(), baseName(path_));
    if (!path) return;
    const CWaitCursor wait;
    const kiln::ImportResult result = core_.exportFile(*path);
    if (!result.ok()) return showFailure("The file could not be exported.", *path, result.message);
    client_.print("-- " + fileName(*path) + ": " + result.message);
}

bool SceneFiles::save() {
    return path_.empty() ? saveAs() : saveTo(path_);
}

bool SceneFiles::saveAs() {
    const std::string name = baseName(path_.empty() ? sourceName_ : path_);
    const auto path = askSaveFile(owner_.Handle(), "Save As", kSceneFilters, "kiln", name);
    return path && saveTo(*path);
}

bool SceneFiles::saveTo(const std::string& path) {
    const CWaitCursor wait;
    const kiln::Status status = core_.saveScene(path);
    if (!status.ok()) {
        showFailure("The scene could not be saved.", path, status.message());
        return false;
    }
    client_.print("-- saved " + fileName(path));
    client_.fileChanged();
    return true;
}

}  // namespace workbench
