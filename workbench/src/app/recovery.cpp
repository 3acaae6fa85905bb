#include "recovery.h"

#include "scenefiles.h"
#include "wording.h"

#include <base/utf16.h>

#include <cstdio>
#include <ctime>
#include <utility>
#include <vector>

namespace workbench {
namespace {

constexpr UINT_PTR kTimer = 2;
constexpr UINT kMilliseconds = 500, kMillisecondsBetweenSlices = 10;
constexpr ULONGLONG kMillisecondsOfTyping = 1'000;

/// "2026-11-22 06:09", by the user's clock.
std::string textOf(std::chrono::system_clock::time_point time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm local{};
    if (::localtime_s(&local, &seconds) != 0) return {};
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local);
    return text;
}

}  // namespace

Recovery::Recovery(framework::CWnd& window, kiln::Core& core, SceneFiles& files,
                   const std::string& folder)
    : window_(window), core_(core), files_(files), folder_(folder), save_(core, folder) {}

void Recovery::start() {
    lastInput_ = ::GetTickCount64();
    ::SetTimer(window_.Handle(), kTimer, kMilliseconds, nullptr);
}

bool Recovery::offer() {
    if (folder_.empty()) return false;
    for (AsidePlace& place : AsidePlace::left(folder_)) {
        const AsideOrigin origin = place.origin();
        const std::string question = textOf(
            TextId::kRecover,
            {origin.name.empty() ? textOf(TextId::kUntitled) : origin.name, textOf(place.time())});
        const int answer =
            window_.ShowMessage(question, MB_YESNOCANCEL | MB_ICONQUESTION, kProgramName);
        if (answer == IDCANCEL) return false;
        if (answer == IDNO) place.remove();
        if (answer == IDYES && files_.recover(place.scene(), origin)) {
            save_.adopt(std::move(place));
            return true;
        }
    }
    return false;
}

void Recovery::noteMessage(const MSG& message) {
    const bool isKey = message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
    const bool isMouse = message.message >= WM_MOUSEFIRST && message.message <= WM_MOUSELAST;
    if (!isKey && !isMouse) return;
    lastInput_ = ::GetTickCount64();
    if (isKey) lastKey_ = lastInput_;
}

// While a dialog is open, what the scene is about to become may be half-done.
bool Recovery::isEngaged() const {
    return busy_ || ::GetCapture() != nullptr || (::GetKeyState(VK_LBUTTON) & 0x8000) != 0 ||
           !::IsWindowEnabled(window_.Handle()) ||
           ::GetTickCount64() - lastKey_ < kMillisecondsOfTyping;
}

bool Recovery::onTimer(UINT_PTR id) {
    if (id != kTimer) return false;
    const ULONGLONG now = ::GetTickCount64();
    const auto time = [](ULONGLONG milliseconds) {
        return AutoSave::Time(static_cast<AutoSave::Time::rep>(milliseconds));
    };
    const bool more =
        save_.step({time(now), time(now - lastInput_), isEngaged()}, files_.sceneName());
    ::SetTimer(window_.Handle(), kTimer, more ? kMillisecondsBetweenSlices : kMilliseconds,
               nullptr);
    return true;
}

bool Recovery::mayEndSession() {
    if (!core_.isModified()) return true;
    ::ShutdownBlockReasonCreate(window_.Handle(),
                                base::toWide(textOf(TextId::kUnsavedChanges)).c_str());
    return false;
}

bool Recovery::askAtEnd() {
    const bool mayEnd = files_.mayLoseScene();
    ::ShutdownBlockReasonDestroy(window_.Handle());
    return mayEnd;
}

void Recovery::endSession() {
    if (!busy_) save_.finish(files_.sceneName());
}

}  // namespace workbench
