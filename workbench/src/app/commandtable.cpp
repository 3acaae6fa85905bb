#include "commandtable.h"

#include "../ui/keysdialog.h"
#include "../ui/viewport.h"
#include "commands.h"
#include "editcommands.h"
#include "filenames.h"
#include "panefocus.h"
#include "referencecommands.h"
#include "scenefiles.h"
#include "sceneview.h"
#include "scriptfiles.h"
#include "utilities.h"
#include "wording.h"

#include <framework/cwaitcursor.h>
#include <kiln/selection.h>
#include <kiln/subtree.h>
#include <kiln/undo.h>
#include <tessera_version.h>
#include <workbench/savedviews.h>

#include <iterator>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

using framework::CWaitCursor, framework::CWnd;

namespace workbench {
namespace {

constexpr BYTE kPlain = FVIRTKEY, kCtrl = FVIRTKEY | FCONTROL, kShift = FVIRTKEY | FSHIFT,
               kAlt = FVIRTKEY | FALT;

// Keys that nobody types into a field; they work wherever the focus is.
ACCEL kFileKeys[] = {
    {kCtrl, 'N', CMD_FILE_NEW},
    {kCtrl, 'O', CMD_FILE_OPEN},
    {kCtrl, 'S', CMD_FILE_SAVE},
    {kCtrl | FSHIFT, 'S', CMD_FILE_SAVE_AS},
    {kCtrl, 'I', CMD_FILE_IMPORT},
    {kCtrl, 'E', CMD_FILE_EXPORT},
    {kCtrl | FSHIFT, 'E', CMD_FILE_EXPORT_SELECTED},
    {kCtrl, 'R', CMD_SCRIPT_RUN},
    {kCtrl | FSHIFT, 'R', CMD_SCRIPT_RUN_AGAIN},
    {kPlain, VK_F5, CMD_REFERENCE_RELOAD},
    {kShift, VK_F5, CMD_REFERENCE_MISSING},
    {kPlain, VK_F6, CMD_VIEW_NEXT_PANE},
    {kShift, VK_F6, CMD_VIEW_PREVIOUS_PANE},
    {kPlain, VK_F8, CMD_VIEW_FRAME_RATE},
    {kPlain, VK_F1, CMD_HELP_GUIDE},
    {kShift, VK_F1, CMD_HELP_KEYS},
};
// Keys that mean something else where text is edited.
ACCEL kSceneKeys[] = {
    {kCtrl, 'A', CMD_EDIT_SELECT_ALL},
    {kCtrl, 'D', CMD_EDIT_SELECT_NONE},
    {kCtrl | FSHIFT, 'I', CMD_EDIT_SELECT_INVERT},
    {kCtrl, 'G', CMD_EDIT_GROUP},
    {kCtrl | FSHIFT, 'G', CMD_EDIT_UNGROUP},
    {kPlain, 'H', CMD_EDIT_HIDE},
    {kShift, 'H', CMD_EDIT_UNHIDE_ALL},
    {kPlain, 'I', CMD_EDIT_ISOLATE},
    {kCtrl, 'M', CMD_EDIT_TRANSFORM},
    {kPlain, 'Q', CMD_EDIT_HANDLES_NONE},
    {kPlain, 'W', CMD_EDIT_HANDLES_MOVE},
    {kPlain, 'E', CMD_EDIT_HANDLES_ROTATE},
    {kPlain, 'S', CMD_EDIT_HANDLES_SCALE},
    {kShift, 'G', CMD_EDIT_SNAP},
    {kPlain, VK_DELETE, CMD_EDIT_DELETE},
    {kPlain, 'Z', CMD_VIEW_ALL},
    {kShift, 'Z', CMD_VIEW_SELECTED},
    {kPlain, 'P', CMD_VIEW_PERSPECTIVE},
    {kPlain, 'T', CMD_VIEW_TOP},
    {kPlain, 'F', CMD_VIEW_FRONT},
    {kPlain, 'L', CMD_VIEW_LEFT},
    {kPlain, 'R', CMD_VIEW_RIGHT},
    {kPlain, 'K', CMD_VIEW_BACK},
    {kPlain, 'B', CMD_VIEW_BOTTOM},
    {kPlain, VK_F2, CMD_VIEW_SHADED},
    {kPlain, VK_F3, CMD_VIEW_SHADED_EDGES},
    {kPlain, VK_F4, CMD_VIEW_WIREFRAME},
    {kPlain, 'G', CMD_VIEW_GRID},
    {kCtrl, 'L', CMD_VIEW_LEVELS},
    {kCtrl, 'J', CMD_VIEW_JOINTS},
    {kPlain, '1', CMD_VIEW_RECALL},
    {kPlain, '2', CMD_VIEW_RECALL + 1},
    {kPlain, '3', CMD_VIEW_RECALL + 2},
    {kPlain, '4', CMD_VIEW_RECALL + 3},
    {kCtrl, '1', CMD_VIEW_SAVE},
    {kCtrl, '2', CMD_VIEW_SAVE + 1},
    {kCtrl, '3', CMD_VIEW_SAVE + 2},
    {kCtrl, '4', CMD_VIEW_SAVE + 3},
};
// Keys of the main window's own panes; windows of plug-ins use the same letters.
ACCEL kPaneKeys[] = {
    {kAlt, 'U', CMD_VIEW_UTILITIES},
    {kAlt, 'R', CMD_VIEW_SCRIPT_LINE},
};
ACCEL kHistoryKeys[] = {
    {kCtrl, 'Z', CMD_EDIT_UNDO},
    {kCtrl, 'Y', CMD_EDIT_REDO},
    {kCtrl | FSHIFT, 'Z', CMD_EDIT_REDO},
    {kCtrl, 'H', CMD_EDIT_HISTORY},
};

/// An action of the user's as a step of the history; taken back if it throws.
template <typename Action>
void asStep(TextId name, const Action& action) {
    UndoScope step(textOf(name).c_str());
    action();
    step.Commit();
}

// Asked only while there is no history; about what is too large for it the core asks.
bool mayDelete(CWnd& window, kiln::Core& core, const std::vector<INode*>& nodes) {
    if (core.history().limit() > 0) return true;
    const std::string question = nodes.size() == 1
                                     ? textOf(TextId::kDeleteNode, {nodes.front()->GetName()})
                                     : textOf(TextId::kDeleteNodes, {grouped(nodes.size())});
    return window.ShowMessage(question, MB_OKCANCEL | MB_ICONWARNING, kProgramName) == IDOK;
}

void deleteSelected(CWnd& window, kiln::Core& core) {
    Interface& host = core.hostInterface();
    const std::vector<INode*> nodes = SelectedNodes(host);
    if (nodes.empty() || !mayDelete(window, core, nodes)) return;
    asStep(TextId::kStepDelete, [&] { deleteNodes(host, nodes); });
}

void about(CWnd& window) {
    std::string text = textOf(TextId::kAboutProgram, {kProgramName, TESSERA_VERSION});
    for (const kiln::ModuleInfo& module : kiln::modules())
        text += "\n    " + fileName(module.path) + ": " + module.description;
    if (kiln::modules().empty()) text += "\n    " + textOf(TextId::kNoModules);
    window.ShowMessage(text, MB_OK | MB_ICONINFORMATION, textOf(TextId::kAbout, {kProgramName}));
}

}  // namespace

CommandTable::CommandTable(const CommandTargets& targets) : targets_(targets) {
    addFileCommands();
    addHistoryCommands();
    addEditCommands();
    addReferenceCommands();
    addViewCommands();
    addLanguageCommands();
    addScriptCommands();
    fileKeys_ = ::CreateAcceleratorTableW(kFileKeys, static_cast<int>(std::size(kFileKeys)));
    sceneKeys_ = ::CreateAcceleratorTableW(kSceneKeys, static_cast<int>(std::size(kSceneKeys)));
    paneKeys_ = ::CreateAcceleratorTableW(kPaneKeys, static_cast<int>(std::size(kPaneKeys)));
    historyKeys_ =
        ::CreateAcceleratorTableW(kHistoryKeys, static_cast<int>(std::size(kHistoryKeys)));
}

CommandTable::~CommandTable() {
    ::DestroyAcceleratorTable(fileKeys_);
    ::DestroyAcceleratorTable(sceneKeys_);
    ::DestroyAcceleratorTable(paneKeys_);
    ::DestroyAcceleratorTable(historyKeys_);
}

bool CommandTable::run(int command) {
    if (command >= CMD_FILE_RECENT && command <= CMD_FILE_RECENT_LAST) {
        targets_.files.openRecent(static_cast<std::size_t>(command - CMD_FILE_RECENT));
        return true;
    }
    const auto found = actions_.find(command);
    if (found != actions_.end()) {
        found->second();
        return true;
    }
    const auto& utilities = targets_.utilities.withAbout();
    const auto position = static_cast<std::size_t>(command - CMD_HELP_ABOUT_UTILITY);
    if (command < CMD_HELP_ABOUT_UTILITY || position >= utilities.size()) return false;
    utilities[position]->ShowAbout();
    return true;
}

bool CommandTable::runFileKey(MSG& message) {
    return ::TranslateAcceleratorW(targets_.window.Handle(), fileKeys_, &message) != 0;
}

bool CommandTable::runSceneKey(MSG& message) {
    return ::TranslateAcceleratorW(targets_.window.Handle(), sceneKeys_, &message) != 0;
}

bool CommandTable::runPaneKey(MSG& message) {
    return ::TranslateAcceleratorW(targets_.window.Handle(), paneKeys_, &message) != 0;
}

bool CommandTable::runHistoryKey(MSG& message) {
    return ::TranslateAcceleratorW(targets_.window.Handle(), historyKeys_, &message) != 0;
}

void CommandTable::addFileCommands() {
    SceneFiles& files = targets_.files;
    CWnd& window = targets_.window;
    actions_[CMD_FILE_NEW] = [&files] { files.newScene(); };
    actions_[CMD_FILE_OPEN] = [&files] { files.open(); };
    actions_[CMD_FILE_SAVE] = [&files] { files.save(); };
    actions_[CMD_FILE_SAVE_AS] = [&files] { files.saveAs(); };
    actions_[CMD_FILE_IMPORT] = [&files] { files.import(); };
    actions_[CMD_FILE_EXPORT] = [&files] { files.exportScene(false); };
    actions_[CMD_FILE_EXPORT_SELECTED] = [&files] { files.exportScene(true); };
    actions_[CMD_FILE_EXIT] = [&window] { window.Post(WM_CLOSE); };
    actions_[CMD_HELP_ABOUT] = [&window] { about(window); };
    actions_[CMD_HELP_GUIDE] = [this] { targets_.openGuide(); };
    actions_[CMD_HELP_KEYS] = [&window] {
        KeysDialog(window.Handle(), ::GetMenu(window.Handle())).DoModal();
    };
}

void CommandTable::addHistoryCommands() {
    kiln::History& history = targets_.core.history();
    actions_[CMD_EDIT_UNDO] = [&history] {
        const CWaitCursor wait;
        history.undo();
    };
    actions_[CMD_EDIT_REDO] = [&history] {
        const CWaitCursor wait;
        history.redo();
    };
    actions_[CMD_EDIT_HISTORY] = [this] { targets_.toggleHistory(); };
}

void CommandTable::addEditCommands() {
    Interface& host = targets_.core.hostInterface();
    ShownScene& scene = targets_.scene.scene();
    actions_[CMD_EDIT_SELECT_ALL] = [&host, &scene] { selectAll(host, scene.nodes()); };
    actions_[CMD_EDIT_SELECT_NONE] = [&host] { host.ClearNodeSelection(); };
    actions_[CMD_EDIT_SELECT_INVERT] = [&host, &scene] { invertSelection(host, scene.nodes()); };
    for (const auto& [command, name, action] :
         {std::tuple{CMD_EDIT_HIDE, TextId::kStepHide, &hideSelected},
          {CMD_EDIT_UNHIDE_ALL, TextId::kStepUnhideAll, &unhideAll},
          {CMD_EDIT_GROUP, TextId::kStepGroup, &groupSelected},
          {CMD_EDIT_UNGROUP, TextId::kStepUngroup, &ungroupSelected}})
        actions_[command] = [&host, step = name, run = action] {
            asStep(step, [&] { run(host); });
        };
    actions_[CMD_EDIT_ISOLATE] = [&host, &scene] {
        const CWaitCursor wait;
        asStep(TextId::kStepIsolate, [&] { isolateSelected(host, scene.nodes()); });
    };
    actions_[CMD_EDIT_TRANSFORM] = [this] { targets_.toggleTransform(); };
    for (const auto& [command, mode] : {std::pair{CMD_EDIT_HANDLES_NONE, HandleMode::kNone},
                                        {CMD_EDIT_HANDLES_MOVE, HandleMode::kMove},
                                        {CMD_EDIT_HANDLES_ROTATE, HandleMode::kRotate},
                                        {CMD_EDIT_HANDLES_SCALE, HandleMode::kScale}})
        actions_[command] = [this, which = mode] { targets_.viewport.showHandles(which); };
    actions_[CMD_EDIT_SNAP] = [this] { targets_.toggleSnap(); };
    actions_[CMD_EDIT_PICK_OBJECTS] = [this] { targets_.togglePickWholes(); };
    actions_[CMD_EDIT_DELETE] = [this] { deleteSelected(targets_.window, targets_.core); };
}

void CommandTable::addReferenceCommands() {
    ReferenceCommands& references = targets_.references;
    actions_[CMD_REFERENCE_OPEN] = [&references] { references.open(); };
    actions_[CMD_REFERENCE_RELOAD] = [&references] { references.reload(); };
    actions_[CMD_REFERENCE_LOCAL] = [&references] { references.makeLocal(); };
    actions_[CMD_REFERENCE_COLLAPSE] = [&references] { references.collapse(); };
    actions_[CMD_REFERENCE_MISSING] = [&references] { references.listMissing(); };
    actions_[CMD_REFERENCE_FOLDERS] = [&references] { references.editSearchFolders(); };
}

void CommandTable::addViewCommands() {
    Viewport& viewport = targets_.viewport;
    actions_[CMD_VIEW_ALL] = [&viewport] { viewport.viewAll(); };
    actions_[CMD_VIEW_SELECTED] = [&viewport] { viewport.viewSelected(); };
    for (const auto& [command, view] : {std::pair{CMD_VIEW_PERSPECTIVE, render::View::kPerspective},
                                        {CMD_VIEW_TOP, render::View::kTop},
                                        {CMD_VIEW_FRONT, render::View::kFront},
                                        {CMD_VIEW_LEFT, render::View::kLeft},
                                        {CMD_VIEW_RIGHT, render::View::kRight},
                                        {CMD_VIEW_BACK, render::View::kBack},
                                        {CMD_VIEW_BOTTOM, render::View::kBottom}})
        actions_[command] = [&viewport, which = view] { viewport.setView(which); };
    SavedViews& views = targets_.views;
    for (std::size_t place = 0; place < SavedViews::kPlaces; ++place) {
        const int number = static_cast<int>(place);
        actions_[CMD_VIEW_SAVE + number] = [&viewport, &views, place] {
            views.save(place, viewport.camera().stand());
        };
        actions_[CMD_VIEW_RECALL + number] = [&viewport, &views, place] {
            viewport.showView(views.at(place));
        };
    }
    actions_[CMD_VIEW_NEXT_PANE] = [this] { targets_.panes.step(1); };
    actions_[CMD_VIEW_PREVIOUS_PANE] = [this] { targets_.panes.step(-1); };
    actions_[CMD_VIEW_UTILITIES] = [this] { targets_.panes.goToUtilities(); };
    actions_[CMD_VIEW_SCRIPT_LINE] = [this] { targets_.panes.goToScriptLine(); };
    actions_[CMD_VIEW_LEVELS] = [this] { targets_.toggleLevels(); };
    actions_[CMD_VIEW_JOINTS] = [this] { targets_.toggleJoints(); };
    for (const auto& [command, mode] : {std::pair{CMD_VIEW_SHADED, render::DrawMode::kShaded},
                                        {CMD_VIEW_SHADED_EDGES, render::DrawMode::kShadedEdges},
                                        {CMD_VIEW_WIREFRAME, render::DrawMode::kWireframe}})
        actions_[command] = [&viewport, which = mode] {
            viewport.options().mode = which;
            viewport.redraw();
        };
    for (const auto& [command, time] : {std::pair{CMD_VIEW_ANY_TIME, render::TimeOfDay::kAny},
                                        {CMD_VIEW_DAY, render::TimeOfDay::kDay},
                                        {CMD_VIEW_DUSK, render::TimeOfDay::kDusk},
                                        {CMD_VIEW_NIGHT, render::TimeOfDay::kNight}})
        actions_[command] = [&viewport, which = time] {
            viewport.options().time = which;
            viewport.redraw();
        };
    actions_[CMD_VIEW_LEVELS_BY_EYE] = [&viewport] {
        viewport.options().levelsByEye = !viewport.options().levelsByEye;
        viewport.redraw();
    };
    actions_[CMD_VIEW_FRAME_RATE] = [&viewport] {
        viewport.showFrameRate(!viewport.showsFrameRate());
        viewport.redraw();
    };
    actions_[CMD_VIEW_GRID] = [&viewport] {
        viewport.options().grid = !viewport.options().grid;
        viewport.redraw();
    };
}

void CommandTable::addLanguageCommands() {
    actions_[CMD_VIEW_CHINESE] = [this] { targets_.speak(base::Language::kChinese); };
    actions_[CMD_VIEW_ENGLISH] = [this] { targets_.speak(base::Language::kEnglish); };
}

void CommandTable::addScriptCommands() {
    ScriptFiles& scripts = targets_.scripts;
    actions_[CMD_SCRIPT_RUN] = [&scripts] { scripts.ask(); };
    actions_[CMD_SCRIPT_RUN_AGAIN] = [&scripts] { scripts.runAgain(); };
}

}  // namespace workbench
