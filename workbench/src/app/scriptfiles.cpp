#include "scriptfiles.h"

#include "filenames.h"

#include <framework/cwaitcursor.h>
#include <framework/filedialog.h>
#include <workbench/texts.h>

#include <utility>
#include <vector>

using framework::CWaitCursor, framework::CWnd, framework::FileFilter, framework::askOpenFile;

namespace workbench {
namespace {

constexpr ULONGLONG kMillisecondsBetweenLooks = 100;

std::vector<FileFilter> scriptFilters() {
    return {{textOf(TextId::kScripts) + " (*.ks)", "*.ks"},
            {textOf(TextId::kAllFiles) + " (*.*)", "*.*"}};
}

/// Whether Escape is held down over a window. Looking costs more than a step of a script does.
class EscapeKey {
public:
    explicit EscapeKey(const CWnd& window) : window_(window) {}

    bool operator()() {
        const ULONGLONG now = ::GetTickCount64();
        if (now - lastLook_ < kMillisecondsBetweenLooks) return false;
        lastLook_ = now;
        return ::GetForegroundWindow() == window_.Handle() &&
               (::GetAsyncKeyState(VK_ESCAPE) & 0x8000) != 0;
    }

private:
    const CWnd& window_;
    ULONGLONG lastLook_ = 0;
};

}  // namespace

ScriptFiles::ScriptFiles(CWnd& owner, Interface& host, Print print)
    : owner_(owner), line_(host), print_(std::move(print)) {
    line_.setStop(EscapeKey(owner));
    line_.setPrinter([this](const std::string& line) { print_(line, LogLine::kPlain); });
}

kiln::Status ScriptFiles::run(const std::string& path) {
    const CWaitCursor wait;
    path_ = path;
    print_(textOf(TextId::kLogRunning, {fileName(path)}), LogLine::kPlain);
    const ScriptResult result = line_.runFile(path);
    if (!result.text.empty()) print_(result.text, result.ok ? LogLine::kPlain : LogLine::kError);
    if (!result.ok) return kiln::Status::failure(result.text);
    print_(textOf(TextId::kLogScriptDone, {fileName(path)}), LogLine::kPlain);
    return {};
}

void ScriptFiles::ask() {
    if (const auto path = askOpenFile(owner_.Handle(), textOf(TextId::kRunScript), scriptFilters()))
        run(*path);
}

void ScriptFiles::runAgain() {
    if (path_.empty()) return ask();
    run(std::string(path_));
}

}  // namespace workbench
