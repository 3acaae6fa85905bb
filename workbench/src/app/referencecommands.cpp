#include "referencecommands.h"

#include "../ui/searchfoldersdialog.h"
#include "filenames.h"
#include "scenefiles.h"
#include "sceneview.h"
#include "userfilepath.h"
#include "wording.h"

#include <framework/cwaitcursor.h>
#include <framework/filedialog.h>
#include <kiln/host/script.h>
#include <kiln/host/searchfolders.h>
#include <kiln/nodelook.h>
#include <kiln/undo.h>
#include <workbench/settings.h>

#include <utility>

using framework::CWaitCursor, framework::FileFilter;

namespace workbench {
namespace {

// No name of a folder has it.
constexpr char kBetweenFolders = '|';

constexpr char kFileVerb[] = "referencedFile", kLocalVerb[] = "makeLocal",
               kCollapseVerb[] = "collapse";

/// Calls a function that plug-ins publish as a verb.
kiln::Status call(const char* verb, const std::vector<kiln::ScriptArgument>& arguments,
                  FPValue& result) {
    const std::optional<kiln::PublishedVerb> found = kiln::findVerb(verb);
    if (!found) return kiln::Status::failure(textOf(TextId::kNoReferencePlugin));
    return kiln::callFunction(*found->target, found->function->name, arguments, result);
}

}  // namespace

std::vector<std::string> searchFoldersIn(const Settings& settings) {
    std::vector<std::string> folders;
    std::string all = settings.value(kSearchSetting);
    while (!all.empty()) {
        const std::size_t end = all.find(kBetweenFolders);
        folders.push_back(all.substr(0, end));
        all.erase(0, end == std::string::npos ? end : end + 1);
    }
    return folders;
}

ReferenceCommands::ReferenceCommands(framework::CWnd& window, kiln::Core& core, SceneFiles& files,
                                     SceneView& scene, Settings& settings, Print print)
    : window_(window),
      core_(core),
      files_(files),
      scene_(scene),
      settings_(settings),
      print_(std::move(print)) {
    kiln::setSearchFolders(core, searchFoldersIn(settings));
}

std::vector<INode*> ReferenceCommands::selectedReferences() const {
    std::vector<INode*> references;
    NodeLookSource* const source = GetNodeLookSource();
    Interface& host = core_.hostInterface();
    for (int i = 0; source && i < host.GetSelNodeCount(); ++i) {
        NodeReference reference;
        if (source->GetReference(host.GetSelNode(i), reference))
            references.push_back(host.GetSelNode(i));
    }
    return references;
}

bool ReferenceCommands::canCollapse() const {
    return core_.hostInterface().GetSelNodeCount() == 1 && kiln::findVerb(kCollapseVerb);
}

bool ReferenceCommands::tell(const kiln::Status& status) {
    if (!status.ok()) window_.ShowMessage(status.message(), MB_OK | MB_ICONWARNING, kProgramName);
    return status.ok();
}

void ReferenceCommands::open() {
    const std::vector<INode*> references = selectedReferences();
    if (references.empty()) return;
    FPValue path;
    if (!tell(call(kFileVerb, {{"", FPValue::Node(references.front())}}, path))) return;
    if (path.type == TYPE_STRING && path.s)
        files_.openPath(path.s);
    else
        window_.ShowMessage(textOf(TextId::kReferenceMissing, {references.front()->GetName()}),
                            MB_OK | MB_ICONWARNING, kProgramName);
}

void ReferenceCommands::reload() {
    lookAgain();
}

void ReferenceCommands::lookAgain() {
    core_.forgetFileScenes();
    scene_.scene().readAgain();
}

void ReferenceCommands::makeLocal() {
    const CWaitCursor wait;
    UndoScope step(textOf(TextId::kStepMakeLocal).c_str());
    for (INode* const node : selectedReferences()) {
        FPValue ignored;
        if (!tell(call(kLocalVerb, {{"", FPValue::Node(node)}}, ignored))) return;
    }
    step.Commit();
}

void ReferenceCommands::collapse() {
    if (!canCollapse()) return;
    INode* const node = core_.hostInterface().GetSelNode(0);
    std::vector<FileFilter> filters;
    for (const kiln::FileKind& kind : core_.exportKinds())
        for (const std::string& extension : kind.extensions)
            filters.push_back({kind.description + " (*." + extension + ")", "*." + extension});
    if (filters.empty()) return;
    const std::string extension = filters.front().pattern.substr(2);
    const auto path = framework::askSaveFile(
        window_.Handle(), textOf(TextId::kCollapseTitle, {node->GetName()}), filters, extension,
        files_.suggestion(std::string(node->GetName()) + "." + extension));
    if (!path) return;
    const CWaitCursor wait;
    FPValue name;
    // Who chose a file that is there was asked about it.
    const kiln::Status status = call(kCollapseVerb,
                                     {{"", FPValue::Node(node)},
                                      {"", FPValue::StringCopy(path->c_str())},
                                      {"", FPValue::Bool(true)}},
                                     name);
    if (!tell(status)) return;
    print_(textOf(TextId::kLogSaved, {*path}), LogLine::kPlain);
    lookAgain();  // what was read of an older file is no more
}

void ReferenceCommands::listMissing() {
    const std::vector<std::string> missing = scene_.scene().missing();
    if (missing.empty()) print_("-- " + textOf(TextId::kNothingMissing), LogLine::kPlain);
    for (const std::string& one : missing) print_("-- " + one, LogLine::kWarning);
}

void ReferenceCommands::editSearchFolders() {
    SearchFoldersDialog dialog(window_.Handle(), searchFoldersIn(settings_));
    if (dialog.DoModal() != IDOK) return;
    std::string all;
    for (const std::string& folder : dialog.folders())
        all.append(all.empty() ? "" : std::string(1, kBetweenFolders)).append(folder);
    settings_.set(kSearchSetting, all);
    kiln::setSearchFolders(core_, dialog.folders());
    lookAgain();
}

}  // namespace workbench
