#include "mainwindow.h"

#include "commands.h"
#include "guide.h"
#include "userfilepath.h"
#include "windowverbs.h"
#include "wording.h"

#include <base/paths.h>
#include <base/utf16.h>
#include <framework/cdialog.h>
#include <framework/controls.h>
#include <framework/module.h>
#include <kiln/host/largesteps.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

using framework::CWnd, framework::heightOf, framework::isTextField, framework::moduleInstance,
    framework::resourceLanguage, framework::widthOf, framework::windowDpi;

namespace workbench {
namespace {

constexpr wchar_t kClassName[] = L"WorkbenchMain";
constexpr UINT kRefreshMessage = WM_APP + 1, kRaiseMessage = WM_APP + 2,
               kAskAtEndMessage = WM_APP + 3;
constexpr UINT_PTR kModifiedTimer = 1;
constexpr UINT kModifiedMilliseconds = 500;
constexpr UINT_PTR kReadTimer = 3;
constexpr UINT kMillisecondsBetweenReads = 10;
constexpr UINT_PTR kFlashTimer = 4;
constexpr UINT kMillisecondsOfFlash = 100;
constexpr ULONGLONG kMillisecondsOfReading = 60;
constexpr std::size_t kMegabyte = std::size_t{1} << 20;

// The program's icon in a size of the system's. Shared: it stays the program's.
HICON programIcon(int sizeMetric) {
    constexpr int kIconId = 1;
    const int size = ::GetSystemMetrics(sizeMetric);
    return static_cast<HICON>(::LoadImageW(moduleInstance(), MAKEINTRESOURCEW(kIconId), IMAGE_ICON,
                                           size, size, LR_SHARED));
}

/// In MB; nothing when the user has set none, or nonsense.
std::optional<std::size_t> historyLimit(const Settings& settings) {
    constexpr std::size_t kMost = std::size_t{1} << 20;
    const std::string text = settings.value(kHistorySetting);
    std::size_t megabytes = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, megabytes);
    if (text.empty() || error != std::errc() || rest != end || megabytes > kMost) return {};
    return megabytes;
}

/// Asked in the middle of an action, so that no window may be used meanwhile.
bool mayGoOn(const std::string& step) {
    const std::string what =
        step.empty() ? textOf(TextId::kThisStep) : textOf(TextId::kNamedStep, {step});
    return CWnd().ShowMessage(textOf(TextId::kTooLargeToUndo, {what}),
                              MB_OKCANCEL | MB_ICONWARNING | MB_DEFBUTTON2 | MB_TASKMODAL,
                              kProgramName) == IDOK;
}

bool isPress(UINT message) {
    return message == WM_LBUTTONDOWN || message == WM_NCLBUTTONDOWN || message == WM_RBUTTONDOWN ||
           message == WM_MBUTTONDOWN;
}

}  // namespace

MainWindow::MainWindow(kiln::Core& core, Settings& settings)
    : core_(core),
      settings_(settings),
      views_(userFilePath("views.txt")),
      view_(core.hostInterface(), *this, snap_),
      panes_(*this, view_),
      paneFocus_(*this, panes_),
      status_(core.hostInterface(), panes_.status()),
      utilities_(core, panes_.panel(), *this),
      files_(*this, core, *this, userFilePath("recent.txt")),
      references_(*this, core, files_, view_, settings,
                  [this](const std::string& line, LogLine kind) { print(line, kind); }),
      recovery_(*this, core, files_, userFilePath("recovery")),
      scripts_(*this, core.hostInterface(),
               [this](const std::string& line, LogLine kind) { print(line, kind); }),
      history_(core.history(),
               [this](std::size_t megabytes) {
                   settings_.set(kHistorySetting, std::to_string(megabytes));
               }),
      transform_(core.hostInterface(), snap_),
      levels_(core.hostInterface(), panes_.viewport(),
              [this] { commands_.run(CMD_EDIT_UNHIDE_ALL); }),
      joints_(core.hostInterface(), view_.scene(), panes_.viewport()),
      commands_({*this, core, files_, scripts_, view_, panes_.viewport(), utilities_, views_,
                 references_, paneFocus_, [this] { toggleSnap(); }, [this] { toggleHistory(); },
                 [this] { transform_.toggle(Handle(), viewport().WindowRect()); },
                 [this] { levels_.toggle(Handle(), viewport().WindowRect()); },
                 [this] { joints_.toggle(Handle(), viewport().WindowRect()); },
                 [this] { showGuide(); }, [this] { togglePickWholes(); },
                 [this](base::Language language) { speak(language); }}),
      menu_(*this, core, panes_.viewport(), scripts_, views_, references_),
      hostSide_(core, *this, panes_.panel(), status_, utilities_, panes_.viewport()),
      notifications_(
          {NOTIFY_SCENE_PRE_CLEAR, NOTIFY_SCENE_NEW, NOTIFY_SCENE_RESET, NOTIFY_SCENE_OPENED,
           NOTIFY_SCENE_SAVED, NOTIFY_SELECTION_CHANGED, NOTIFY_HISTORY_CHANGED},
          [this](const NotifyInfo& change) { noteChange(change); }) {
    addWindowVerbs(*this, scripts_.line());
    view_.pickWholes(settings.value(kPickSetting) != "faces");
    if (const auto megabytes = historyLimit(settings))
        core.history().setLimit(*megabytes * kMegabyte);
    kiln::setLargeStepQuestion(mayGoOn);
}

MainWindow::~MainWindow() {
    kiln::setLargeStepQuestion({});
}

bool MainWindow::Create() {
    const HICON icon = programIcon(SM_CXICON);
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
    Send(WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(programIcon(SM_CXSMICON)));
    return true;
}

bool MainWindow::OnCreate(const CREATESTRUCTW&) {
    menu_.attach();
    if (!panes_.create()) return false;
    panes_.script().setEvaluator([this](const std::string& line) {
        const ScriptResult result = scripts_.line().evaluate(line);
        refreshFrame();
        return ScriptPane::Answer{result.text, result.ok ? LogLine::kPlain : LogLine::kError};
    });
    ::SetTimer(Handle(), kModifiedTimer, kModifiedMilliseconds, nullptr);
    refreshFrame();
    return true;
}

void MainWindow::OnDestroy() {
    // Who closes the window was asked about changes before, unless the session ends without.
    if (!sessionEnds_) recovery_.discard();
    ::PostQuitMessage(0);
}

void MainWindow::OnClose() {
    if (files_.mayLoseScene()) DestroyWindow();
}

void MainWindow::listUtilities() {
    utilities_.list();
    menu_.listAboutBoxes(utilities_.withAbout());
}

// ---------------------------------------------------------------- language

// Windows of plug-ins are theirs to renew, but for the pages of the utility: it is opened anew.
void MainWindow::speak(base::Language language) {
    settings_.set(kLanguageSetting, base::codeOf(language));
    if (language == resourceLanguage()) return;
    ClassDesc* const open = core_.openedUtility();
    core_.closeUtility();
    kiln::Core::setLanguage(static_cast<WORD>(language));
    menu_.attach();
    listUtilities();
    if (open) utilities_.open(open);
    refreshTitle();
    refreshStatus();
    panes_.showLanguage();
    history_.followLanguage();
    transform_.followLanguage();
    levels_.followLanguage();
    joints_.followLanguage();
    viewport().redraw();
    ::RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
    if (!::GetFocus()) viewport().SetFocus();
}

// ---------------------------------------------------------------- layout

void MainWindow::OnSize(UINT type, int, int) {
    if (type == SIZE_MINIMIZED) return;
    panes_.layout();
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
    panes_.beginDrag(at);
}

void MainWindow::OnMouseMove(UINT, POINT at) {
    panes_.drag(at);
}

void MainWindow::OnLButtonUp(UINT, POINT) {
    panes_.endDrag();
}

bool MainWindow::OnSetCursor(HWND under, UINT hitTest, UINT message) {
    POINT at;
    ::GetCursorPos(&at);
    if (under != Handle() || hitTest != HTCLIENT || !panes_.isOverSplitter(ToClient(at)))
        return CWnd::OnSetCursor(under, hitTest, message);
    ::SetCursor(::LoadCursorW(nullptr, IDC_SIZENS));
    return true;
}

// ---------------------------------------------------------------- keyboard and commands

bool MainWindow::preTranslate(MSG& message) {
    recovery_.noteMessage(message);
    if (isPress(message.message)) Post(kRaiseMessage);
    if (message.message < WM_KEYFIRST || message.message > WM_KEYLAST) return false;
    if (!::IsWindowEnabled(Handle()) || viewport().isHandleHeld()) return false;
    if (!isTextField(message.hwnd) && commands_.runHistoryKey(message)) return true;
    if (commands_.runFileKey(message)) return true;
    const bool ours = ::IsChild(Handle(), message.hwnd) || message.hwnd == Handle();
    const HWND page = ours ? panel().pageOf(message.hwnd) : nullptr;
    // A plug-in that takes the keys away means them for its own windows: a key in the viewport is
    // still the host's.
    if ((AcceleratorsEnabled() || (ours && !page)) && !panes_.script().owns(message.hwnd) &&
        commands_.runSceneKey(message))
        return true;
    if (ours && !page && commands_.runPaneKey(message)) return true;
    const bool used =
        page ? framework::CDialog::Navigate(page, message)
             : ours && (panel().pressByEnter(message) ||
                        (message.wParam == VK_TAB && ::IsDialogMessageW(Handle(), &message)));
    if (used) panel().reveal(::GetFocus());
    return used;
}

void MainWindow::OnActivate(UINT state, HWND, bool) {
    Default();
    if (state == WA_INACTIVE) return;
    Post(kRaiseMessage);
    view_.scene().noticeFiles();
}

void MainWindow::OnSetFocus(HWND) {
    viewport().SetFocus();
}

bool MainWindow::OnCommand(int id, UINT code, HWND control) {
    constexpr UINT kByKey = 1;
    if (control && code != 0) return false;
    // One that moves the keyboard takes it from the field by itself, and finds it there later.
    const bool movesKeyboard = id >= CMD_VIEW_NEXT_PANE && id <= CMD_VIEW_SCRIPT_LINE;
    if (code == kByKey && !movesKeyboard) finishTyping();
    return commands_.run(id);
}

bool MainWindow::OnNotify(int, NMHDR& header, LRESULT&) {
    if (header.hwndFrom != panes_.status().Handle() || header.code != NM_CLICK) return false;
    POINT at;
    ::GetCursorPos(&at);
    if (!panes_.status().isOver(StatusBar::kMissing, at)) return false;
    references_.listMissing();
    return true;
}

// What is being typed into a field of a plug-in belongs to the scene before a command of a key acts
// on it: such fields take their text over when the keyboard leaves them.
void MainWindow::finishTyping() {
    const HWND field = ::GetFocus();
    if (isTextField(field) && !panes_.script().owns(field)) ::SetFocus(::GetParent(field));
}

// ---------------------------------------------------------------- what the scene becomes

void MainWindow::noteChange(const NotifyInfo& change) {
    files_.followScene(change);
    if (change.intcode == NOTIFY_SELECTION_CHANGED) {
        view_.scene().selectionChanged();
        joints_.selectionChanged();
    }
    if (change.intcode == NOTIFY_SCENE_PRE_CLEAR) {
        viewport().endDrag();
        sceneIsOther_ = true;
        view_.scene().forget();
        joints_.forget();
    }
    if (change.intcode == NOTIFY_HISTORY_CHANGED) historyChanged_ = true;
    refreshFrame();
}

void MainWindow::sceneOutdated() {
    levels_.sceneChanged();
    viewport().redraw();
    refreshFrame();
}

void MainWindow::sceneDrawn(const std::vector<std::string>& failures) {
    for (const std::string& failure : failures) print("-- " + failure, LogLine::kWarning);
    if (!view_.scene().unreadFiles().empty())
        ::SetTimer(Handle(), kReadTimer, kMillisecondsBetweenReads, nullptr);
    if (view_.scene().changes()) ::SetTimer(Handle(), kFlashTimer, kMillisecondsOfFlash, nullptr);
    refreshFrame();
}

// Files that the scene refers to are read between messages, the timer's being the last of these.
void MainWindow::readSomeFiles() {
    ::KillTimer(Handle(), kReadTimer);
    const ULONGLONG begun = ::GetTickCount64();
    bool isFirst = true;
    std::size_t number = 0;
    const auto mayGoOn = [&](const std::string& path) {
        ++number;
        if (core_.fileScene(path)) return true;
        const bool hasTime = ::GetTickCount64() - begun <= kMillisecondsOfReading;
        if (!std::exchange(isFirst, false) && !hasTime) return false;
        const std::string name = base::textOf(base::pathFrom(path).filename());
        const std::string all = std::to_string(view_.scene().unreadFiles().size());
        status_.setPrompt(
            textOf(TextId::kReadingFile, {name, std::to_string(number), all}).c_str());
        panes_.status().Update();
        return true;
    };
    view_.scene().readFiles(mayGoOn);
    if (view_.scene().unreadFiles().empty())
        status_.setPrompt(nullptr);
    else
        ::SetTimer(Handle(), kReadTimer, kMillisecondsBetweenReads, nullptr);
}

void MainWindow::sceneReplaced() {
    viewport().viewAll();
    refreshFrame();
}

// ---------------------------------------------------------------- title and status

void MainWindow::refreshFrame() {
    if (refreshPosted_ || !HasWindow()) return;
    refreshPosted_ = Post(kRefreshMessage);
}

LRESULT MainWindow::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case kRefreshMessage:
            refreshPosted_ = false;
            refreshTitle();
            refreshStatus();
            transform_.refresh();
            levels_.refresh();
            joints_.refresh();
            followViews();
            // Only then: what the user looks at in the list stays in hand meanwhile.
            if (std::exchange(historyChanged_, false)) history_.refresh();
            return 0;
        case kRaiseMessage:
            raiseOwned();
            return 0;
        case WM_QUERYENDSESSION:
            if (recovery_.mayEndSession()) return TRUE;
            Post(kAskAtEndMessage);
            return FALSE;
        case kAskAtEndMessage:
            if (recovery_.askAtEnd()) DestroyWindow();
            return 0;
        case WM_ENDSESSION:
            sessionEnds_ = wParam != 0;
            if (sessionEnds_) recovery_.endSession();
            return 0;
        case WM_INITMENU:
            menu_.refresh(files_.recent(), history_.IsVisible(), view_.picksWholes(), snap_.isOn);
            break;
        default:
            break;
    }
    return CWnd::WindowProc(message, wParam, lParam);
}

void MainWindow::OnTimer(UINT_PTR id) {
    if (recovery_.onTimer(id)) return;
    if (id == kModifiedTimer) refreshTitle();
    if (id == kReadTimer) readSomeFiles();
    if (id == kFlashTimer) {
        ::KillTimer(Handle(), kFlashTimer);
        viewport().redraw();
    }
}

void MainWindow::refreshTitle() {
    const std::string title = files_.title() + " - " + kProgramName;
    if (Text() != title) SetText(title);
}

void MainWindow::followViews() {
    if (!busy_) views_.setScene(files_.path(), !std::exchange(sceneIsOther_, false));
}

void MainWindow::refreshStatus() {
    status_.refresh(view_.scene().counts(), view_.scene().missingCount());
}

void MainWindow::drawNow() {
    constexpr DWORD kMillisecondsToShow = 200;  // until what is drawn is on the screen
    viewport().redraw();
    refreshTitle();
    ::EnumThreadWindows(
        ::GetCurrentThreadId(),
        [](HWND window, LPARAM) -> BOOL {
            return ::RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        },
        0);
    refreshStatus();
    panes_.status().Update();
    ::MsgWaitForMultipleObjects(0, nullptr, FALSE, kMillisecondsToShow, 0);
}

void MainWindow::togglePickWholes() {
    view_.pickWholes(!view_.picksWholes());
    settings_.set(kPickSetting, view_.picksWholes() ? "objects" : "faces");
}

void MainWindow::toggleSnap() {
    snap_.isOn = !snap_.isOn;
    transform_.refresh();
}

void MainWindow::viewMenuWanted(POINT screen) {
    menu_.showForView(screen);
}

void MainWindow::showGuide() {
    const HWND focus = ::GetFocus();
    GuidePart part = GuidePart::kFiles;
    if (focus == viewport().Handle()) part = GuidePart::kViewport;
    if (panes_.script().owns(focus)) part = GuidePart::kScripts;
    if (focus == panel().Handle() || ::IsChild(panel().Handle(), focus)) part = GuidePart::kPanel;
    if (focus && ::GetAncestor(focus, GA_ROOT) != Handle()) part = GuidePart::kPlugin;
    openGuide(*this, part);
}

void MainWindow::toggleHistory() {
    history_.toggle(Handle(), viewport().WindowRect());
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

}  // namespace workbench
