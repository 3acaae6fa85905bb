#include "commandtable.h"

#include "../ui/viewport.h"
#include "commands.h"
#include "editcommands.h"
#include "filenames.h"
#include "scenefiles.h"
#include "sceneview.h"
#include "scriptfiles.h"
#include "utilities.h"
#include "wording.h"

#include <tessera_version.h>

#include <iterator>
#include <string>
#include <utility>
#include <vector>

using framework::CWnd;

namespace workbench {
namespace {

constexpr BYTE kPlain = FVIRTKEY, kCtrl = FVIRTKEY | FCONTROL, kShift = FVIRTKEY | FSHIFT;

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
    {kPlain, VK_F8, CMD_VIEW_FRAME_RATE},
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
    {kPlain, VK_DELETE, CMD_EDIT_DELETE},
    {kPlain, 'Z', CMD_VIEW_ALL},
    {kShift, 'Z', CMD_VIEW_SELECTED},
    {kPlain, 'P', CMD_VIEW_PERSPECTIVE},
    {kPlain, 'T', CMD_VIEW_TOP},
    {kPlain, 'F', CMD_VIEW_FRONT},
    {kPlain, 'L', CMD_VIEW_LEFT},
    {kPlain, VK_F2, CMD_VIEW_SHADED},
    {kPlain, VK_F3, CMD_VIEW_SHADED_EDGES},
    {kPlain, VK_F4, CMD_VIEW_WIREFRAME},
    {kPlain, 'G', CMD_VIEW_GRID},
};

void deleteSelected(CWnd& window, Interface& host) {
    const std::vector<INode*> nodes = selectedNodes(host);
    if (nodes.empty()) return;
    const std::string question = nodes.size() == 1
                                     ? textOf(TextId::kDeleteNode, {nodes.front()->GetName()})
                                     : textOf(TextId::kDeleteNodes, {grouped(nodes.size())});
    if (window.ShowMessage(question, MB_OKCANCEL | MB_ICONWARNING, kProgramName) == IDOK)
        deleteNodes(host, nodes);
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
    addEditCommands();
    addViewCommands();
    addLanguageCommands();
    addScriptCommands();
    fileKeys_ = ::CreateAcceleratorTableW(kFileKeys, static_cast<int>(std::size(kFileKeys)));
    sceneKeys_ = ::CreateAcceleratorTableW(kSceneKeys, static_cast<int>(std::size(kSceneKeys)));
}

CommandTable::~CommandTable() {
    ::DestroyAcceleratorTable(fileKeys_);
    ::DestroyAcceleratorTable(sceneKeys_);
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

bool CommandTable::runKey(MSG& message, bool isTyping) {
    const HWND window = targets_.window.Handle();
    return ::TranslateAcceleratorW(window, fileKeys_, &message) ||
           (!isTyping && ::TranslateAcceleratorW(window, sceneKeys_, &message));
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
}

void CommandTable::addEditCommands() {
    Interface& host = targets_.core.hostInterface();
    ShownScene& scene = targets_.scene.scene();
    CWnd& window = targets_.window;
    actions_[CMD_EDIT_SELECT_ALL] = [&host, &scene] { selectAll(host, scene.nodes()); };
    actions_[CMD_EDIT_SELECT_NONE] = [&host] { host.ClearNodeSelection(); };
    actions_[CMD_EDIT_SELECT_INVERT] = [&host, &scene] { invertSelection(host, scene.nodes()); };
    actions_[CMD_EDIT_HIDE] = [&host] { hideSelected(host); };
    actions_[CMD_EDIT_UNHIDE_ALL] = [&host] { unhideAll(host); };
    actions_[CMD_EDIT_GROUP] = [&host] { groupSelected(host); };
    actions_[CMD_EDIT_UNGROUP] = [&host] { ungroupSelected(host); };
    actions_[CMD_EDIT_DELETE] = [&host, &window] { deleteSelected(window, host); };
}

void CommandTable::addViewCommands() {
    Viewport& viewport = targets_.viewport;
    actions_[CMD_VIEW_ALL] = [&viewport] { viewport.viewAll(); };
    actions_[CMD_VIEW_SELECTED] = [&viewport] { viewport.viewSelected(); };
    for (const auto& [command, view] : {std::pair{CMD_VIEW_PERSPECTIVE, View::kPerspective},
                                        {CMD_VIEW_TOP, View::kTop},
                                        {CMD_VIEW_FRONT, View::kFront},
                                        {CMD_VIEW_LEFT, View::kLeft}})
        actions_[command] = [&viewport, which = view] { viewport.setView(which); };
    for (const auto& [command, mode] : {std::pair{CMD_VIEW_SHADED, DrawMode::kShaded},
                                        {CMD_VIEW_SHADED_EDGES, DrawMode::kShadedEdges},
                                        {CMD_VIEW_WIREFRAME, DrawMode::kWireframe}})
        actions_[command] = [&viewport, which = mode] {
            viewport.options().mode = which;
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
