#include "scenefiles.h"

#include "../ui/partdialog.h"
#include "../ui/progressdialog.h"
#include "filenames.h"
#include "wording.h"

#include <base/paths.h>
#include <framework/cwaitcursor.h>

#include <algorithm>
#include <filesystem>

using framework::CWaitCursor, framework::FileFilter, framework::askOpenFile, framework::askSaveFile;

namespace workbench {
namespace {

std::vector<FileFilter> sceneFilters() {
    return {{textOf(TextId::kKilnScenes) + " (*.kiln)", "*.kiln"},
            {textOf(TextId::kAllFiles) + " (*.*)", "*.*"}};
}

std::string patternOf(const kiln::FileKind& kind) {
    std::string pattern;
    for (const std::string& extension : kind.extensions)
        pattern.append(pattern.empty() ? "*." : ";*.").append(extension);
    return pattern;
}

std::vector<FileFilter> filtersOf(const std::vector<kiln::FileKind>& kinds) {
    std::vector<FileFilter> filters;
    for (const kiln::FileKind& kind : kinds) {
        const std::string pattern = patternOf(kind);
        filters.push_back({kind.description + " (" + pattern + ")", pattern});
    }
    return filters;
}

/// The lines of the export dialog's type list, and the version that each stands for.
struct ExportTypes {
    explicit ExportTypes(const std::vector<kiln::FileKind>& kinds) {
        for (const kiln::FileKind& kind : kinds) {
            const std::string pattern = patternOf(kind);
            const bool choice = !kind.versions.empty();
            add(choice ? textOf(TextId::kSameVersion, {kind.description}) : kind.description,
                pattern, 0);
            for (const kiln::FileVersion& version : kind.versions)
                add(kind.description + " " + version.name, pattern, version.number);
        }
    }

    std::vector<FileFilter> filters;
    std::vector<DWORD> versions;

private:
    void add(const std::string& name, const std::string& pattern, DWORD version) {
        filters.push_back({name + " (" + pattern + ")", pattern});
        versions.push_back(version);
    }
};

std::string sentenceFor(ImpExpCause cause) {
    switch (cause) {
        case ImpExpCause::kUnreadable:
            return textOf(TextId::kUnreadable);
        case ImpExpCause::kTruncated:
            return textOf(TextId::kTruncated);
        case ImpExpCause::kDamaged:
            return textOf(TextId::kDamaged);
        case ImpExpCause::kVersion:
            return textOf(TextId::kVersion);
        case ImpExpCause::kUnwritable:
            return textOf(TextId::kUnwritable);
        case ImpExpCause::kOutOfMemory:
            return textOf(TextId::kOutOfMemory);
        case ImpExpCause::kOther:
            break;
    }
    return "";
}

// Not one that cannot be looked for.
bool isGone(const std::string& path) {
    std::error_code unknown;
    return !std::filesystem::exists(base::pathFrom(path), unknown) && !unknown;
}

bool isSceneFile(const std::string& path) {
    return hasExtension(path, "kiln");
}

class Busy {
public:
    explicit Busy(SceneFilesClient& client) : client_(client) { client_.setBusy(true); }
    ~Busy() { client_.setBusy(false); }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    SceneFilesClient& client_;
};

}  // namespace

std::string SceneFiles::sceneName() const {
    return path_.empty() ? sourceName_ : fileName(path_);
}

std::string SceneFiles::title() const {
    std::string name = sceneName();
    if (name.empty())
        name = textOf(TextId::kUntitled);
    else if (path_.empty())
        name = textOf(TextId::kImported, {name});
    return name + (core_.isModified() ? " *" : "");
}

void SceneFiles::showFailure(TextId what, const std::string& path,
                             const kiln::ImportResult& result) {
    std::string text = textOf(what);
    text.append("\n\n").append(path);
    const std::string sentence = sentenceFor(result.cause);
    if (!sentence.empty()) text.append("\n\n").append(sentence);
    if (!result.message.empty())
        text.append("\n\n").append(textOf(TextId::kDetails, {result.message}));
    owner_.ShowMessage(text, MB_OK | MB_ICONERROR, kProgramName);
}

bool SceneFiles::mayLoseScene() {
    if (!core_.isModified()) return true;
    const std::string name = path_.empty() ? sourceName_ : fileName(path_);
    const std::string question =
        name.empty() ? textOf(TextId::kSceneChanged) : textOf(TextId::kFileChanged, {name});
    switch (owner_.ShowMessage(question, MB_YESNOCANCEL | MB_ICONQUESTION, kProgramName)) {
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
    if (change.intcode == NOTIFY_SCENE_SAVED) return;
    sourceName_.clear();
    knowsLeftOut_ = false;
}

void SceneFiles::newScene() {
    if (!mayLoseScene()) return;
    core_.newScene();
    client_.sceneReplaced();
}

// Where the user was last.
std::string SceneFiles::lastFolder() const {
    return recent().empty() ? std::string() : folderOf(recent().front());
}

// The scene's name; the dialog adds the extension.
std::string SceneFiles::name() const {
    return baseName(path_.empty() ? sourceName_ : path_);
}

// The name beside where the user was last.
std::string SceneFiles::suggestion(const std::string& name) const {
    const std::string folder = lastFolder();
    return folder.empty() || name.empty() ? name : folder + "\\" + name;
}

// ---------------------------------------------------------------- opening

void SceneFiles::open() {
    if (!mayLoseScene()) return;
    std::vector<FileFilter> filters = filtersOf(core_.importKinds());
    const std::vector<FileFilter> own = sceneFilters();
    filters.insert(filters.begin(), own.front());
    std::string all;
    for (const FileFilter& filter : filters)
        all.append(all.empty() ? "" : ";").append(filter.pattern);
    filters.insert(filters.begin(), {textOf(TextId::kAllScenes) + " (" + all + ")", all});
    filters.push_back(own.back());
    if (const auto path =
            askOpenFile(owner_.Handle(), textOf(TextId::kOpen), filters, lastFolder()))
        openOrTell(*path);
}

void SceneFiles::openRecent(std::size_t position) {
    if (position < recent().size()) openPath(std::string(recent()[position]));
}

void SceneFiles::openPath(const std::string& path) {
    if (isGone(path) || mayLoseScene()) openOrTell(path);
}

void SceneFiles::openOrTell(const std::string& path) {
    const kiln::ImportResult result = openFile(path);
    if (result.ok() || result.code == IMPEXP_CANCEL) return;
    showFailure(TextId::kCannotOpen, path, result);
}

kiln::ImportResult SceneFiles::openFile(const std::string& path) {
    const auto start = std::chrono::steady_clock::now();
    const std::string formerPath = path_, formerSource = sourceName_;
    const bool own = isSceneFile(path);
    kiln::ImportResult result = run(
        textOf(TextId::kOpening, {fileName(path)}), [&](const kiln::ProgressFunction& progress) {
            return own ? core_.loadScene(path, progress) : core_.openImported(path, progress);
        });
    if (own && result.ok())
        result.message =
            textOf(TextId::kOpenedNodes,
                   {counted(static_cast<std::size_t>(core_.hostInterface().GetNodeCount()),
                            TextId::kOneNode, TextId::kNodes)});
    if (!result.ok()) {
        // The scene that came back is another one to those who were told of a new one.
        path_ = formerPath;
        sourceName_ = formerSource;
        if (isGone(path)) recent_.remove(path);
        return result;
    }
    if (!own && isExported(path))
        path_ = path;
    else if (!own)
        sourceName_ = fileName(path);
    recent_.add(path);
    printResult(path, result, start);
    client_.sceneReplaced();
    return result;
}

bool SceneFiles::recover(const std::string& aside, const AsideOrigin& origin) {
    const std::string formerFolder = core_.hostInterface().GetDir(KILN_SCENE_DIR);
    const kiln::ImportResult result = run(
        textOf(TextId::kOpening, {origin.name}),
        [&](const kiln::ProgressFunction& progress) { return core_.loadScene(aside, progress); });
    if (result.code == IMPEXP_FAIL) showFailure(TextId::kCannotOpen, aside, result);
    if (!result.ok()) return false;
    core_.setDirectory(KILN_SCENE_DIR,
                       origin.sceneFolder.empty() ? formerFolder : origin.sceneFolder);
    if (!origin.importFolder.empty()) core_.setDirectory(KILN_IMPORT_DIR, origin.importFolder);
    path_.clear();
    sourceName_ = origin.name;
    core_.setModified(true);
    client_.sceneReplaced();
    return true;
}

// ---------------------------------------------------------------- import and export

kiln::ImportResult SceneFiles::run(const std::string& title, const Work& work) {
    const CWaitCursor wait;
    const Busy busy(client_);
    ProgressDialog dialog(owner_.Handle(), title);
    return work([&](double fraction, const char*) { return dialog.step(fraction); });
}

void SceneFiles::printResult(const std::string& path, const kiln::ImportResult& result,
                             std::chrono::steady_clock::time_point start) {
    client_.print(textOf(TextId::kLogFile, {fileName(path), result.message, secondsSince(start)}));
}

void SceneFiles::import() {
    const auto path = askOpenFile(owner_.Handle(), textOf(TextId::kImport),
                                  filtersOf(core_.importKinds()), lastFolder());
    if (!path) return;
    const auto start = std::chrono::steady_clock::now();
    const kiln::ImportResult result = run(
        textOf(TextId::kImporting, {fileName(*path)}),
        [&](const kiln::ProgressFunction& progress) { return core_.importFile(*path, progress); });
    if (result.code == IMPEXP_CANCEL) return client_.print(textOf(TextId::kLogImportCancelled));
    if (!result.ok()) return showFailure(TextId::kCannotImport, *path, result);
    if (path_.empty() && sourceName_.empty()) sourceName_ = fileName(*path);
    recent_.add(*path);
    printResult(*path, result, start);
    client_.sceneReplaced();
}

// Whether a plug-in writes files of that name.
bool SceneFiles::isExported(const std::string& path) const {
    for (const kiln::FileKind& kind : core_.exportKinds())
        for (const std::string& extension : kind.extensions)
            if (hasExtension(path, extension)) return true;
    return false;
}

bool SceneFiles::choosePart(kiln::ExportChoice& choice, std::string& name) {
    std::vector<kiln::FilePart> parts;
    for (const kiln::FileKind& kind : core_.exportKinds()) {
        if (parts.size() > 1 || kind.extensions.empty()) continue;
        parts = core_.exportParts("file." + kind.extensions.front(), choice.options);
    }
    return parts.size() < 2 || askForPart(std::move(parts), choice, name);
}

// Asks which part to write when a file holds less than the scene has; `name` becomes that of the
// part's file. False when the user cancels.
bool SceneFiles::askForPart(std::vector<kiln::FilePart> parts, kiln::ExportChoice& choice,
                            std::string& name) {
    // What the user has selected is likely meant.
    Interface& host = core_.hostInterface();
    const INode* above = host.GetSelNodeCount() > 0 ? host.GetSelNode(0) : nullptr;
    std::size_t chosen = 0;
    for (; above != nullptr; above = above->GetParentNode()) {
        const auto found = std::ranges::find(parts, above, &kiln::FilePart::node);
        if (found != parts.end()) chosen = static_cast<std::size_t>(found - parts.begin());
    }
    PartDialog dialog(owner_.Handle(), std::move(parts), chosen);
    if (dialog.DoModal() != IDOK) return false;
    const kiln::FilePart& part = dialog.chosen();
    choice.part = part.node;
    name = asFileName(part.fileName.empty() ? part.name : baseName(part.fileName));
    return true;
}

void SceneFiles::exportScene(bool selectedOnly) {
    const std::vector<kiln::FileKind> kinds = core_.exportKinds();
    if (kinds.empty() || kinds.front().extensions.empty()) return;
    kiln::ExportChoice choice;
    choice.options = selectedOnly ? SCENE_EXPORT_SELECTED : 0;
    std::string suggested = name();
    if (!choosePart(choice, suggested)) return;
    const ExportTypes types(kinds);
    std::size_t type = 0;
    const auto path = askSaveFile(
        owner_.Handle(), textOf(selectedOnly ? TextId::kExportSelected : TextId::kExport),
        types.filters, kinds.front().extensions.front(), suggestion(suggested), &type);
    if (!path) return;
    const DWORD version = type < types.versions.size() ? types.versions[type] : 0;
    choice.options |= version << SCENE_EXPORT_VERSION_SHIFT;
    const kiln::ImportResult result = exportFile(*path, choice);
    if (result.code == IMPEXP_CANCEL) return client_.print(textOf(TextId::kLogExportCancelled));
    if (!result.ok()) showFailure(TextId::kCannotExport, *path, result);
}

kiln::ImportResult SceneFiles::exportFile(const std::string& path,
                                          const kiln::ExportChoice& choice) {
    const bool home = base::sameTextIgnoringCase(path, path_);
    const bool whole = (choice.options & SCENE_EXPORT_SELECTED) == 0;
    kiln::ImportResult result = writeForeign(path, choice, home && whole);
    // The file that the scene came from holds less than the scene now.
    if (result.ok() && home && !whole) core_.setModified(true);
    return result;
}

kiln::ImportResult SceneFiles::writeForeign(const std::string& path,
                                            const kiln::ExportChoice& choice, bool asOwn) {
    const auto start = std::chrono::steady_clock::now();
    kiln::ImportResult result =
        run(textOf(asOwn ? TextId::kSaving : TextId::kExporting, {fileName(path)}),
            [&](const kiln::ProgressFunction& progress) {
                return asOwn ? core_.saveExported(path, choice, progress)
                             : core_.exportFile(path, choice, progress);
            });
    if (result.ok()) printResult(path, result, start);
    return result;
}

// ---------------------------------------------------------------- saving

bool SceneFiles::save() {
    if (path_.empty()) return saveAs();
    const std::string path = path_;  // which another one may follow meanwhile
    return isSceneFile(path) ? saveTo(path) : saveBack(path);
}

bool SceneFiles::saveAs() {
    const auto path = askSaveFile(owner_.Handle(), textOf(TextId::kSaveAs), sceneFilters(), "kiln",
                                  suggestion(name()));
    return path && saveTo(*path);
}

// False when the user would rather keep what somebody else has made of the file.
bool SceneFiles::mayReplace(const std::string& path) {
    if (!core_.fileWasChanged(path)) return true;
    return owner_.ShowMessage(textOf(TextId::kChangedOnDisk, {fileName(path)}),
                              MB_YESNO | MB_DEFBUTTON2 | MB_ICONWARNING, kProgramName) == IDYES;
}

// The part that the file held before; the user is asked where that is not clear.
bool SceneFiles::findOwnPart(const std::string& path, kiln::ExportChoice& choice) {
    std::vector<kiln::FilePart> parts = core_.exportParts(path);
    if (parts.size() < 2) return true;
    const auto isOwn = [&](const kiln::FilePart& part) {
        return base::sameTextIgnoringCase(part.fileName, fileName(path));
    };
    std::string ignored;
    if (std::ranges::count_if(parts, isOwn) != 1)
        return askForPart(std::move(parts), choice, ignored);
    choice.part = std::ranges::find_if(parts, isOwn)->node;
    return true;
}

// Asks once for each scene whether it may lose what its file has no place for.
SceneFiles::Answer SceneFiles::askAboutLeftOut(const std::string& path,
                                               const std::string& leftOut) {
    if (leftOut.empty() || knowsLeftOut_) return Answer::kGoOn;
    std::string list = "• ";
    for (const char c : leftOut) list.append(c == '\n' ? "\n• " : std::string(1, c));
    switch (owner_.ShowMessage(textOf(TextId::kNoPlaceInFile, {fileName(path), list}),
                               MB_YESNOCANCEL | MB_ICONWARNING, kProgramName)) {
        case IDYES:
            knowsLeftOut_ = true;
            return Answer::kGoOn;
        case IDNO:
            return Answer::kAsScene;
        default:
            return Answer::kCancel;
    }
}

bool SceneFiles::saveBack(const std::string& path) {
    kiln::ExportChoice choice;
    if (!mayReplace(path) || !findOwnPart(path, choice)) return false;
    const std::string leftOut = core_.leftOutOfExport(path, choice);
    const Answer answer = askAboutLeftOut(path, leftOut);
    if (answer != Answer::kGoOn) return answer == Answer::kAsScene && saveAs();
    const kiln::ImportResult result = writeForeign(path, choice, true);
    if (result.code == IMPEXP_CANCEL) client_.print(textOf(TextId::kLogSavingCancelled));
    if (result.code == IMPEXP_FAIL) showFailure(TextId::kCannotSave, path, result);
    if (!result.ok()) return false;
    if (!leftOut.empty()) {
        std::string list = leftOut;
        std::ranges::replace(list, '\n', ';');
        client_.print(textOf(TextId::kLogNoPlace, {fileName(path), list}), LogLine::kWarning);
    }
    recent_.add(path);
    client_.fileChanged();
    return true;
}

bool SceneFiles::saveTo(const std::string& path) {
    if (!mayReplace(path)) return false;
    const kiln::ImportResult result = run(
        textOf(TextId::kSaving, {fileName(path)}),
        [&](const kiln::ProgressFunction& progress) { return core_.saveScene(path, progress); });
    if (result.code == IMPEXP_CANCEL) client_.print(textOf(TextId::kLogSavingCancelled));
    if (result.code == IMPEXP_FAIL) showFailure(TextId::kCannotSave, path, result);
    if (!result.ok()) return false;
    recent_.add(path);
    client_.print(textOf(TextId::kLogSaved, {fileName(path)}));
    client_.fileChanged();
    return true;
}

}  // namespace workbench
