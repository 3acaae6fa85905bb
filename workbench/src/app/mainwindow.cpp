#include "mainwindow.h"

#include "appicon.h"
#include "commands.h"
#include "editcommands.h"
#include "filenames.h"
#include "windowverbs.h"
#include "wording.h"

#include <framework/module.h>
#include <framework/text.h>

#include <algorithm>
#include <array>

namespace workbench {
namespace {

constexpr wchar_t kClassName[] = L"WorkbenchMain";
constexpr char kProgramName[] = "Workbench";
constexpr UINT kViewportId = 10, kPanelId = 11, kScriptId = 12, kStatusId = 13;
constexpr UINT kRefreshMessage = WM_APP + 1, kRaiseMessage = WM_APP + 2;
constexpr UINT_PTR kModifiedTimer = 1;
constexpr int kScriptHeight = 132;
constexpr int kSplitter = 5;

constexpr int kNotifications[] = {NOTIFY_SCENE_PRE_CLEAR, NOTIFY_SCENE_NEW,
                                  NOTIFY_SCENE_RESET,     NOTIFY_SCENE_OPENED,
                                  NOTIFY_SCENE_SAVED,     NOTIFY_SELECTION_CHANGED};

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

bool isPress(UINT message) {
    return message == WM_LBUTTONDOWN || message == WM_NCLBUTTONDOWN || message == WM_RBUTTONDOWN ||
           message == WM_MBUTTONDOWN;
}

// Where the list of recent files is kept; empty when the user has no such place.
std::string recentList() {
    wchar_t folder[MAX_PATH];
    const DWORD length = ::GetEnvironmentVariableW(L"APPDATA", folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return {};
    return toUtf8(folder) + "\\Workbench\\recent.txt";
}

}  // namespace

MainWindow::MainWindow(kiln::Core& core)
    : core_(core),
      host_(core.hostInterface()),
      scene_(host_, [this] { onOutdated(); }),
      scriptLine_(host_),
      files_(*this, core, *this, recentList()),
      scripts_(*this, scriptLine_, [this](const std::string& line) { print(line); }),
      viewport_(*this) {
    addWindowVerbs(*this, scriptLine_);
    fileKeys_ = ::CreateAcceleratorTableW(kFileKeys, static_cast<int>(std::size(kFileKeys)));
    sceneKeys_ = ::CreateAcceleratorTableW(kSceneKeys, static_cast<int>(std::size(kSceneKeys)));
    for (const int code : kNotifications) RegisterNotification(onNotify, this, code);
    core_.setHostWindow(this);
}

MainWindow::~MainWindow() {
    core_.setHostWindow(nullptr);
    for (const int code : kNotifications) UnRegisterNotification(onNotify, this, code);
    ::DestroyAcceleratorTable(fileKeys_);
    ::DestroyAcceleratorTable(sceneKeys_);
}

bool MainWindow::Create() {
    const HICON icon = makeAppIcon(::GetSystemMetrics(SM_CXICON));
    RegisterWindowClass(kClassName, CS_DBLCLKS, nullptr, icon);
    const int dpi = windowDpi(nullptr);
    RECT work;
    ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    const int width = std::min(::MulDiv(1280, dpi, 96), widthOf(work));
    const int height = std::min(::MulDiv(900, dpi, 96), heightOf(work));
    if (!CreateEx(0, kClassName, kProgramName, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                  {work.left, work.top, work.left + width, work.top + height}, nullptr))
        return false;
    Send(WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
    Send(WM_SETICON, ICON_SMALL,
         reinterpret_cast<LPARAM>(makeAppIcon(::GetSystemMetrics(SM_CXSMICON))));
    return true;
}

bool MainWindow::OnCreate(const CREATESTRUCTW&) {
    ::SetMenu(Handle(), ::LoadMenuW(moduleInstance(), MAKEINTRESOURCEW(IDR_MAIN_MENU)));
    scriptHeight_ = Scaled(kScriptHeight);
    if (!viewport_.Create(Handle(), kViewportId) || !panel_.Create(Handle(), kPanelId) ||
        !script_.Create(Handle(), kScriptId) || !status_.Create(Handle(), kStatusId))
        return false;
    script_.setEvaluator([this](const std::string& line) {
        const ScriptResult result = scriptLine_.evaluate(line);
        refreshFrame();
        return result.text;
    });
    ::SetTimer(Handle(), kModifiedTimer, 500, nullptr);
    refreshFrame();
    return true;
}

void MainWindow::OnDestroy() {
    ::PostQuitMessage(0);
}

// ---------------------------------------------------------------- layout

void MainWindow::layout() {
    const RECT area = ClientRect();
    const int width = widthOf(area);
    status_.place(width);
    const int height = heightOf(area) - status_.height(), gap = Scaled(kSplitter);
    const int panelLeft = std::max(width - panel_.wantedWidth(), 0);
    scriptHeight_ =
        std::clamp(scriptHeight_, Scaled(50), std::max(height - Scaled(120), Scaled(50)));
    const int scriptTop = std::max(height - scriptHeight_, 0);
    viewport_.MoveTo({0, 0, std::max(panelLeft - gap, 0), std::max(scriptTop - gap, 0)});
    script_.MoveTo({0, scriptTop, std::max(panelLeft - gap, 0), height});
    panel_.MoveTo({panelLeft, 0, width, height});
}

RECT MainWindow::splitterArea() const {
    const RECT view = viewport_.AreaInParent(), script = script_.AreaInParent();
    return {view.left, view.bottom, view.right, script.top};
}

void MainWindow::OnSize(UINT type, int, int) {
    if (type == SIZE_MINIMIZED || !status_.HasWindow()) return;
    layout();
    Invalidate(false);
}

void MainWindow::OnMinMaxInfo(MINMAXINFO& info) {
    info.ptMinTrackSize = {Scaled(640), Scaled(420)};
}

void MainWindow::OnPaint() {
    PAINTSTRUCT paint;
    const HDC dc = ::BeginPaint(Handle(), &paint);
    ::FillRect(dc, &paint.rcPaint, ::GetSysColorBrush(COLOR_BTNFACE));
    ::EndPaint(Handle(), &paint);
}

void MainWindow::OnLButtonDown(UINT, POINT at) {
    const RECT splitter = splitterArea();
    if (!::PtInRect(&splitter, at)) return;
    splitting_ = true;
    ::SetCapture(Handle());
}

void MainWindow::OnMouseMove(UINT, POINT at) {
    if (!splitting_ || ::GetCapture() != Handle()) return;
    scriptHeight_ = heightOf(ClientRect()) - status_.height() - static_cast<int>(at.y);
    layout();
}

void MainWindow::OnLButtonUp(UINT, POINT) {
    if (splitting_) ::ReleaseCapture();
    splitting_ = false;
}

bool MainWindow::OnSetCursor(HWND under, UINT hitTest, UINT message) {
    POINT at;
    ::GetCursorPos(&at);
    at = ToClient(at);
    const RECT splitter = splitterArea();
    if (under != Handle() || hitTest != HTCLIENT || !::PtInRect(&splitter, at))
        return CWnd::OnSetCursor(under, hitTest, message);
    ::SetCursor(::LoadCursorW(nullptr, IDC_SIZENS));
    return true;
}

// ---------------------------------------------------------------- keyboard

bool MainWindow::preTranslate(MSG& message) {
    if (isPress(message.message)) Post(kRaiseMessage);
    if (message.message < WM_KEYFIRST || message.message > WM_KEYLAST) return false;
    if (!::IsWindowEnabled(Handle())) return false;
    const bool ours = ::IsChild(Handle(), message.hwnd) || message.hwnd == Handle();
    const HWND page = ours ? panel_.pageOf(message.hwnd) : nullptr;
    // A plug-in that takes the keys away means them for its own windows: a key in the viewport is
    // still the host's.
    if (AcceleratorsEnabled() || (ours && !page)) {
        if (::TranslateAcceleratorW(Handle(), fileKeys_, &message)) return true;
        if (!script_.owns(message.hwnd) && ::TranslateAcceleratorW(Handle(), sceneKeys_, &message))
            return true;
    }
    if (page) return ::IsDialogMessageW(page, &message) != FALSE;
    return ours && message.wParam == VK_TAB && ::IsDialogMessageW(Handle(), &message);
}

void MainWindow::OnSetFocus(HWND) {
    viewport_.SetFocus();
}

// ---------------------------------------------------------------- the host's window side

HWND MainWindow::addRollupPage(HINSTANCE module, int dialogId, DLGPROC procedure, const char* title,
                               LPARAM param, DWORD flags, int category) {
    return panel_.addRollup(module, dialogId, procedure, title ? title : "", param,
                            (flags & APPENDROLL_CLOSED) != 0, category);
}

void MainWindow::deleteRollupPage(HWND page) {
    panel_.deleteRollup(page);
}

void MainWindow::rollupMouseMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    panel_.rollupMouse(page, message, wParam, lParam);
}

void MainWindow::pushPrompt(const char* text) {
    prompt_ = text ? text : "";
    status_.setText(StatusBar::kMessage, prompt_);
}

void MainWindow::utilityChanged(ClassDesc* utility) {
    const auto found = std::find(utilities_.begin(), utilities_.end(), utility);
    panel_.setOpenUtility(found == utilities_.end()
                              ? -1
                              : static_cast<int>(std::distance(utilities_.begin(), found)));
}

void MainWindow::listUtilities() {
    utilities_ = kiln::classesOf(UTILITY_CLASS_ID);
    std::vector<std::string> names;
    for (ClassDesc* utility : utilities_) names.emplace_back(utility->ClassName());
    panel_.setUtilities(names, [this](int position) {
        ClassDesc* wanted = utilities_[static_cast<std::size_t>(position)];
        if (core_.openedUtility() == wanted) return core_.closeUtility();
        const kiln::Status status = core_.openUtility(wanted);
        if (!status.ok()) ShowMessage(status.message(), MB_OK | MB_ICONERROR, kProgramName);
    });
    utilityChanged(core_.openedUtility());
    listAboutBoxes();
}

// The about boxes of the utilities follow the program's own in the last menu.
void MainWindow::listAboutBoxes() {
    const HMENU bar = ::GetMenu(Handle());
    const HMENU help = ::GetSubMenu(bar, ::GetMenuItemCount(bar) - 1);
    while (::GetMenuItemCount(help) > 1) ::DeleteMenu(help, 1, MF_BYPOSITION);
    aboutBoxes_.clear();
    for (ClassDesc* utility : utilities_) {
        auto* const known = dynamic_cast<ClassDesc2*>(utility);
        if (!known || !known->HasAbout()) continue;
        const UINT command = CMD_HELP_ABOUT_UTILITY + static_cast<UINT>(aboutBoxes_.size());
        const std::wstring text = toWide(std::string("关于 ") + utility->ClassName());
        ::AppendMenuW(help, MF_STRING, command, text.c_str());
        aboutBoxes_.push_back(known);
    }
}

bool MainWindow::showAboutOf(int command) {
    const auto position = static_cast<std::size_t>(command - CMD_HELP_ABOUT_UTILITY);
    if (command < CMD_HELP_ABOUT_UTILITY || position >= aboutBoxes_.size()) return false;
    aboutBoxes_[position]->ShowAbout();
    return true;
}

ClassDesc* MainWindow::utilityNamed(const std::string& name) const {
    for (ClassDesc* utility : utilities_)
        if (name == utility->ClassName()) return utility;
    return nullptr;
}

// ---------------------------------------------------------------- scene and selection

void MainWindow::onNotify(void* self, NotifyInfo* info) {
    static_cast<MainWindow*>(self)->noteChange(*info);
}

void MainWindow::noteChange(const NotifyInfo& change) {
    files_.followScene(change);
    if (change.intcode == NOTIFY_SELECTION_CHANGED) scene_.selectionChanged();
    if (change.intcode == NOTIFY_SCENE_PRE_CLEAR) scene_.forget();
    refreshFrame();
}

void MainWindow::onOutdated() {
    viewport_.redraw();
    refreshFrame();
}

const SceneModel& MainWindow::sceneToDraw() {
    const SceneModel& model = scene_.model();
    for (const std::string& failure : scene_.takeFailures()) print("-- " + failure);
    refreshFrame();
    return model;
}

void MainWindow::onPick(ItemIndex item, bool add) {
    INode* node = scene_.nodeOf(item);
    if (node && add && node->Selected())
        host_.DeSelectNode(node);
    else if (node)
        host_.SelectNode(node, !add);
    else if (!add)
        host_.ClearNodeSelection();
}

bool MainWindow::selectTallest() {
    const auto items = sceneToDraw().items();
    ItemIndex tallest = kNoItem;
    double most = -1;
    for (ItemIndex i = 0; i < items.size(); ++i) {
        const double height = items[i].box.max.z - items[i].box.min.z;
        if (items[i].triangleCount > 0 && height > most) {
            most = height;
            tallest = i;
        }
    }
    if (tallest == kNoItem) return false;
    onPick(tallest, false);
    return host_.GetSelNodeCount() == 1;
}

void MainWindow::onHover(ItemIndex item) {
    const INode* node = scene_.nodeOf(item);
    status_.setText(StatusBar::kMessage, node ? node->GetName() : prompt_);
}

// ---------------------------------------------------------------- title, status, menu

void MainWindow::refreshFrame() {
    if (refreshPosted_ || !HasWindow()) return;
    refreshPosted_ = Post(kRefreshMessage);
}

LRESULT MainWindow::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kRefreshMessage) {
        refreshPosted_ = false;
        refreshTitle();
        refreshStatus();
        return 0;
    }
    if (message == kRaiseMessage) {
        raiseOwned();
        return 0;
    }
    if (message == WM_INITMENU) refreshMenu();
    return CWnd::WindowProc(message, wParam, lParam);
}

// The windows of plug-ins stay in front of the main window. The system sees to that, but on the
// virtual desktop of some versions of Wine a click brings a window before those that it owns.
void MainWindow::raiseOwned() {
    std::vector<HWND> owned;
    for (HWND window = ::GetTopWindow(nullptr); window; window = ::GetWindow(window, GW_HWNDNEXT))
        if (::GetWindow(window, GW_OWNER) == Handle() && ::IsWindowVisible(window))
            owned.push_back(window);
    for (auto window = owned.rbegin(); window != owned.rend(); ++window)
        ::SetWindowPos(*window, HWND_TOP, 0, 0, 0, 0,
                       SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_NOOWNERZORDER);
}

void MainWindow::OnTimer(UINT_PTR id) {
    if (id == kModifiedTimer) refreshTitle();
}

void MainWindow::drawNow() {
    constexpr DWORD kMillisecondsToShow = 200;  // until what is drawn is on the screen
    viewport_.redraw();
    refreshTitle();
    ::EnumThreadWindows(
        ::GetCurrentThreadId(),
        [](HWND window, LPARAM) -> BOOL {
            return ::RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        },
        0);
    refreshStatus();  // counts what the viewport has drawn
    status_.Update();
    ::MsgWaitForMultipleObjects(0, nullptr, FALSE, kMillisecondsToShow, 0);
}

void MainWindow::refreshTitle() {
    const std::string title = files_.title() + " - " + kProgramName;
    if (Text() != title) SetText(title);
}

void MainWindow::refreshStatus() {
    const SceneCounts& counts = scene_.counts();
    std::string nodes = grouped(static_cast<std::size_t>(counts.nodes)) + " 个节点";
    if (counts.hidden > 0)
        nodes += "（隐藏 " + grouped(static_cast<std::size_t>(counts.hidden)) + "）";
    status_.setText(StatusBar::kNodes, nodes);
    status_.setText(StatusBar::kFaces, grouped(counts.faces) + " 个面");
    const int selected = host_.GetSelNodeCount();
    std::string selection = "未选择";
    if (selected == 1) selection = std::string("已选择：") + host_.GetSelNode(0)->GetName();
    if (selected > 1)
        selection = "已选择 " + grouped(static_cast<std::size_t>(selected)) + " 个节点";
    status_.setText(StatusBar::kSelection, selection);
    status_.setText(StatusBar::kTime, "时间 " + std::to_string(host_.GetTime()));
}

void MainWindow::refreshMenu() {
    const HMENU menu = ::GetMenu(Handle());
    const auto enable = [&](UINT command, bool on) {
        ::EnableMenuItem(menu, command, MF_BYCOMMAND | (on ? MF_ENABLED : MF_GRAYED));
    };
    const bool selected = host_.GetSelNodeCount() > 0, any = host_.GetNodeCount() > 0;
    for (const UINT command : {CMD_EDIT_SELECT_NONE, CMD_EDIT_DELETE, CMD_EDIT_HIDE, CMD_EDIT_GROUP,
                               CMD_EDIT_UNGROUP, CMD_VIEW_SELECTED})
        enable(command, selected);
    enable(CMD_EDIT_SELECT_ALL, any);
    enable(CMD_EDIT_SELECT_INVERT, any);
    enable(CMD_FILE_IMPORT, !core_.importKinds().empty());
    enable(CMD_SCRIPT_RUN_AGAIN, scripts_.hasRun());
    const bool exports = any && !core_.exportKinds().empty();
    enable(CMD_FILE_EXPORT, exports);
    enable(CMD_FILE_EXPORT_SELECTED, exports && selected);
    ::CheckMenuRadioItem(menu, CMD_VIEW_PERSPECTIVE, CMD_VIEW_LEFT,
                         CMD_VIEW_PERSPECTIVE + static_cast<UINT>(viewport_.camera().view()),
                         MF_BYCOMMAND);
    ::CheckMenuRadioItem(menu, CMD_VIEW_SHADED, CMD_VIEW_WIREFRAME,
                         CMD_VIEW_SHADED + static_cast<UINT>(viewport_.options().mode),
                         MF_BYCOMMAND);
    const auto check = [&](UINT command, bool on) {
        ::CheckMenuItem(menu, command, MF_BYCOMMAND | (on ? MF_CHECKED : MF_UNCHECKED));
    };
    check(CMD_VIEW_GRID, viewport_.options().grid);
    check(CMD_VIEW_FRAME_RATE, viewport_.showsFrameRate());
    listRecentFiles();
}

// The digit before a path is its key.
void MainWindow::listRecentFiles() {
    constexpr int kFileMenu = 0, kRecentMenu = 2;
    const HMENU menu = ::GetSubMenu(::GetSubMenu(::GetMenu(Handle()), kFileMenu), kRecentMenu);
    while (::GetMenuItemCount(menu) > 0) ::DeleteMenu(menu, 0, MF_BYPOSITION);
    UINT command = CMD_FILE_RECENT;
    for (const std::string& path : files_.recent()) {
        std::string text("&");
        text.append(std::to_string(command - CMD_FILE_RECENT + 1)).append("  ");
        for (const char c : path) text.append(c == '&' ? 2 : 1, c);
        ::AppendMenuW(menu, MF_STRING, command++, toWide(text).c_str());
    }
    if (files_.recent().empty())
        ::AppendMenuW(menu, MF_STRING | MF_GRAYED, CMD_FILE_RECENT_NONE, L"（空）");
}

// ---------------------------------------------------------------- commands

void MainWindow::run(int command) {
    OnCommand(command, 0, nullptr);
}

bool MainWindow::OnCommand(int id, UINT code, HWND control) {
    if (control && code != 0) return false;
    if (id >= CMD_FILE_RECENT && id <= CMD_FILE_RECENT_LAST) {
        files_.openRecent(static_cast<std::size_t>(id - CMD_FILE_RECENT));
        return true;
    }
    return runFile(id) || runEdit(id) || runView(id) || runScript(id) || showAboutOf(id);
}

bool MainWindow::runFile(int command) {
    switch (command) {
        case CMD_FILE_NEW:
            files_.newScene();
            return true;
        case CMD_FILE_OPEN:
            files_.open();
            return true;
        case CMD_FILE_SAVE:
            files_.save();
            return true;
        case CMD_FILE_SAVE_AS:
            files_.saveAs();
            return true;
        case CMD_FILE_IMPORT:
            files_.import();
            return true;
        case CMD_FILE_EXPORT:
            files_.exportScene(false);
            return true;
        case CMD_FILE_EXPORT_SELECTED:
            files_.exportScene(true);
            return true;
        case CMD_FILE_EXIT:
            Post(WM_CLOSE);
            return true;
        case CMD_HELP_ABOUT:
            about();
            return true;
        default:
            return false;
    }
}

bool MainWindow::runEdit(int command) {
    switch (command) {
        case CMD_EDIT_SELECT_ALL:
            selectAll(host_, scene_.nodes());
            return true;
        case CMD_EDIT_SELECT_NONE:
            host_.ClearNodeSelection();
            return true;
        case CMD_EDIT_SELECT_INVERT:
            invertSelection(host_, scene_.nodes());
            return true;
        case CMD_EDIT_HIDE:
            hideSelected(host_);
            return true;
        case CMD_EDIT_UNHIDE_ALL:
            unhideAll(host_);
            return true;
        case CMD_EDIT_GROUP:
            groupSelected(host_);
            return true;
        case CMD_EDIT_UNGROUP:
            ungroupSelected(host_);
            return true;
        case CMD_EDIT_DELETE:
            deleteSelected();
            return true;
        default:
            return false;
    }
}

bool MainWindow::runScript(int command) {
    switch (command) {
        case CMD_SCRIPT_RUN:
            scripts_.ask();
            return true;
        case CMD_SCRIPT_RUN_AGAIN:
            scripts_.runAgain();
            return true;
        default:
            return false;
    }
}

bool MainWindow::runView(int command) {
    switch (command) {
        case CMD_VIEW_ALL:
            viewport_.viewAll();
            return true;
        case CMD_VIEW_SELECTED:
            viewport_.viewSelected();
            return true;
        case CMD_VIEW_PERSPECTIVE:
            viewport_.setView(View::kPerspective);
            return true;
        case CMD_VIEW_TOP:
            viewport_.setView(View::kTop);
            return true;
        case CMD_VIEW_FRONT:
            viewport_.setView(View::kFront);
            return true;
        case CMD_VIEW_LEFT:
            viewport_.setView(View::kLeft);
            return true;
        case CMD_VIEW_SHADED:
            viewport_.options().mode = DrawMode::kShaded;
            break;
        case CMD_VIEW_SHADED_EDGES:
            viewport_.options().mode = DrawMode::kShadedEdges;
            break;
        case CMD_VIEW_WIREFRAME:
            viewport_.options().mode = DrawMode::kWireframe;
            break;
        case CMD_VIEW_FRAME_RATE:
            viewport_.showFrameRate(!viewport_.showsFrameRate());
            break;
        case CMD_VIEW_GRID:
            viewport_.options().grid = !viewport_.options().grid;
            break;
        default:
            return false;
    }
    viewport_.redraw();
    return true;
}

void MainWindow::OnClose() {
    if (files_.mayLoseScene()) DestroyWindow();
}

void MainWindow::sceneReplaced() {
    viewport_.viewAll();
    refreshFrame();
}

void MainWindow::deleteSelected() {
    const std::vector<INode*> nodes = selectedNodes(host_);
    if (nodes.empty()) return;
    std::string what = "所选的 " + grouped(nodes.size()) + " 个节点";
    if (nodes.size() == 1) what = std::string("“").append(nodes.front()->GetName()).append("”");
    if (ShowMessage("要删除" + what + "及其下的一切吗？此操作不能撤消。",
                    MB_OKCANCEL | MB_ICONWARNING, kProgramName) != IDOK)
        return;
    deleteNodes(host_, nodes);
}

void MainWindow::about() {
    std::string text = "Workbench 2.0\n\n一个小型三维建模宿主，用于运行插件模块。\n\n模块：";
    for (const kiln::ModuleInfo& module : kiln::modules())
        text += "\n    " + fileName(module.path) + ": " + module.description;
    if (kiln::modules().empty()) text += "\n    无";
    ShowMessage(text, MB_OK | MB_ICONINFORMATION, "关于 Workbench");
}

}  // namespace workbench
