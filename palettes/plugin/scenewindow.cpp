#include "scenewindow.h"

#include "texts.h"

#include <framework/cwaitcursor.h>
#include <framework/gdi.h>
#include <kiln/kiln.h>
#include <quillon/fltfilereader.h>

#include <commdlg.h>

#include <system_error>

using framework::CWaitCursor, framework::heightOf, framework::widthOf;

namespace palettes {

namespace {

constexpr UINT_PTR kQuietTimer = 1;
constexpr UINT kQuietMilliseconds = 200;

}  // namespace

SceneWindow::~SceneWindow() = default;

bool SceneWindow::create(UINT dialog, Interface& host) {
    host_ = &host;
    if (!watch_)
        watch_ = std::make_unique<SceneWatch>(
            [](void* window) { static_cast<SceneWindow*>(window)->refreshLater(); }, this);
    return HasWindow() || Create(dialog, host.GetKilnHWND());
}

void SceneWindow::present(HWND focus) {
    refresh();
    Show(SW_SHOWNORMAL);
    ::SetForegroundWindow(Handle());
    ::SetFocus(focus);
}

bool SceneWindow::OnInitDialog() {
    const RECT window = WindowRect(), client = ClientRect();
    smallest_ = {widthOf(window), heightOf(window)};
    controls_.note(Handle(), {client.right, client.bottom});
    nameTexts();
    return true;
}

void SceneWindow::followLanguage() {
    if (!HasWindow()) return;
    const SIZE base = FollowLanguage();
    if (base.cx != 0) controls_.note(Handle(), base);
    nameTexts();
    layout();
    refresh();
}

// The window goes with the host's; another one begins anew.
void SceneWindow::OnDestroy() {
    watch_.reset();
    controls_.forget();
    Default();
}

// ---------------------------------------------------------------- the scene

// The change may be half made: the scene is read later.
void SceneWindow::refreshLater() {
    isStale_ = true;
    if (HasWindow()) ::SetTimer(Handle(), kQuietTimer, kQuietMilliseconds, nullptr);
}

void SceneWindow::OnTimer(UINT_PTR timer) {
    if (timer != kQuietTimer || isEditing()) return;
    ::KillTimer(Handle(), kQuietTimer);
    // A hidden window is filled when it is shown, and what was read since says what it said.
    if (IsVisible() && isStale_) refresh();
}

void SceneWindow::refresh() {
    const CWaitCursor wait;
    isStale_ = false;
    watch_->Take();
    readScene();
}

bool SceneWindow::attempt(const std::function<void()>& edit) {
    const CWaitCursor wait;
    std::string reason;
    try {
        edit();
    } catch (const Refusal& refusal) {
        reason = refusal.text();
    } catch (const std::system_error& error) {
        reason = error.what();
    } catch (const FltFileError& error) {
        reason = error.what();
    }
    refresh();
    if (reason.empty()) return true;
    ::MessageBeep(MB_OK);
    say(textOf(TextId::kRefused, {reason}));
    return false;
}

void SceneWindow::say(const std::string& text) {
    if (ItemText(status_) != text) SetItemText(status_, text);
}

std::optional<Rgb> SceneWindow::askColor(Rgb now) const {
    static COLORREF own[16];
    CHOOSECOLORW asked{};
    asked.lStructSize = sizeof asked;
    asked.hwndOwner = Handle();
    asked.rgbResult = RGB(now.red, now.green, now.blue);
    asked.lpCustColors = own;
    asked.Flags = CC_RGBINIT | CC_FULLOPEN;
    if (!::ChooseColorW(&asked)) return std::nullopt;
    return Rgb{GetRValue(asked.rgbResult), GetGValue(asked.rgbResult), GetBValue(asked.rgbResult)};
}

// ---------------------------------------------------------------- the window

void SceneWindow::OnSize(UINT type, int, int) {
    Default();
    if (type != SIZE_MINIMIZED) layout();
}

void SceneWindow::OnMinMaxInfo(MINMAXINFO& info) {
    if (smallest_.cx != 0) info.ptMinTrackSize = {smallest_.cx, smallest_.cy};
}

void SceneWindow::layout() {
    if (!controls_.place()) return;
    arranged();
    Invalidate();
}

}  // namespace palettes
