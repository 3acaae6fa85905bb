// workbench.exe: the stand-in 3D host.
#include "mainwindow.h"
#include "userfilepath.h"
#include "walk.h"

#include <base/utf16.h>
#include <framework/cwinapp.h>
#include <framework/module.h>
#include <kiln/host/largesteps.h>
#include <kiln/language.h>
#include <tessera_version.h>
#include <workbench/settings.h>
#include <workbench/texts.h>

#include <shellapi.h>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using framework::CWinApp, framework::setLanguageSource;

namespace workbench {
namespace {

constexpr char kUsage[] =
    "usage: workbench.exe [FILE] [--plugins DIR] [--utility NAME]\n"
    "                     [--script FILE] [--screenshots DIR] [--language en|zh] [--help]\n"
    "                     [--version]\n"
    "\n"
    "  FILE               a .kiln scene, or a file that a plug-in imports\n"
    "  --plugins DIR      load the plug-ins of this folder (default: plugins, beside the program)\n"
    "  --utility NAME     open this utility\n"
    "  --script FILE      then run this script\n"
    "  --screenshots DIR  walk through the main views without a person, write PNG files, and end;\n"
    "                     the exit code is 0 when every step worked\n"
    "  --language en|zh   speak English or Chinese, now and when started next (default: the "
    "language\n"
    "                     chosen last, Chinese at first; a walk does not look at that, and keeps\n"
    "                     nothing)\n"
    "  --help             print this text and end\n"
    "  --version          print the version and end\n";

struct Options {
    std::string file, plugins, utility, script, screenshots;
    std::optional<base::Language> language;
    std::string answer;  ///< to be printed, with nothing else done
    std::string error;   ///< what is wrong with the command line; empty when nothing is
};

std::vector<std::string> arguments() {
    std::vector<std::string> all;
    int count = 0;
    wchar_t** words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    for (int i = 1; words && i < count; ++i) all.push_back(base::toUtf8(words[i]));
    ::LocalFree(words);
    return all;
}

Options parse(const std::vector<std::string>& words) {
    Options options;
    std::string language;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        std::string* value = word == "--plugins"       ? &options.plugins
                             : word == "--utility"     ? &options.utility
                             : word == "--script"      ? &options.script
                             : word == "--screenshots" ? &options.screenshots
                             : word == "--language"    ? &language
                                                       : nullptr;
        if (value && i + 1 < words.size())
            *value = words[++i];
        else if (value)
            options.error = word + " needs a value";
        else if (word == "--help")
            options.answer = kUsage;
        else if (word == "--version")
            options.answer = "workbench " TESSERA_VERSION "\n";
        else if (word.rfind("--", 0) == 0)
            options.error = "unknown option " + word;
        else if (!options.file.empty())
            options.error = "one file at a time";
        else
            options.file = word;
    }
    if (!language.empty()) options.language = base::languageOf(language);
    if (!language.empty() && !options.language) options.error = "--language takes en or zh";
    if (!options.screenshots.empty() && options.file.empty())
        options.error = "--screenshots needs a file to show";
    return options;
}

/// Lets the output of a program with windows reach the console that it was started from, where it
/// has not been given another place.
void useConsoleOfStarter() {
    if (::GetStdHandle(STD_OUTPUT_HANDLE) || ::GetStdHandle(STD_ERROR_HANDLE)) return;
    if (!::AttachConsole(ATTACH_PARENT_PROCESS)) return;
    std::freopen("CONOUT$", "w", stdout);
    std::freopen("CONOUT$", "w", stderr);
}

std::string programFolder() {
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return base::toUtf8(path.substr(0, path.find_last_of(L'\\')));
}

std::string absolutePath(const std::string& path) {
    wchar_t full[MAX_PATH];
    const DWORD length = ::GetFullPathNameW(base::toWide(path).c_str(), MAX_PATH, full, nullptr);
    return length > 0 && length < MAX_PATH ? base::toUtf8(full) : path;
}

class WorkbenchApp : public CWinApp {
public:
    bool InitInstance() override;
    int ExitInstance() override;
    bool PreTranslateMessage(MSG& message) override {
        // What plug-ins did for the last message is a step of the history.
        if (kiln::Core* const core = kiln::Core::get()) core->history().endCommand();
        if (message.message == WM_APP && !message.hwnd && walk_) {
            ::PostQuitMessage(std::exchange(walk_, nullptr)->run());
            return true;
        }
        return window_ && window_->preTranslate(message);
    }

    void OnException(std::exception_ptr exception) override;

private:
    void setLanguage(const Options& options);
    void loadPlugins(const std::string& folder);
    void openAtStart(const Options& options);

    Settings settings_{userFilePath("settings.txt")};
    std::unique_ptr<MainWindow> window_;
    std::unique_ptr<Walk> walk_;
};

// The user goes on working; the log says what has failed.
void WorkbenchApp::OnException(std::exception_ptr exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const kiln::StepRefused&) {
        // As the user wanted it.
    } catch (const std::exception& error) {
        std::fprintf(stderr, "workbench: %s\n", error.what());
        if (window_)
            window_->print(textOf(TextId::kLogInternalError, {error.what()}), LogLine::kError);
    }
}

bool WorkbenchApp::InitInstance() {
    const Options options = parse(arguments());
    if (!options.answer.empty() || !options.error.empty()) useConsoleOfStarter();
    if (!options.answer.empty()) {
        std::fputs(options.answer.c_str(), stdout);
        ::PostQuitMessage(0);
        return true;
    }
    if (!options.error.empty()) {
        std::fprintf(stderr, "workbench: %s\n\n%s", options.error.c_str(), kUsage);
        return false;
    }
    setLanguage(options);
    kiln::Core& core = kiln::Core::create();
    const std::string plugins =
        options.plugins.empty() ? programFolder() + "\\plugins" : absolutePath(options.plugins);
    core.setDirectory(KILN_PLUGIN_DIR, plugins);
    window_ = std::make_unique<MainWindow>(core, settings_);
    if (!window_->Create()) return false;
    loadPlugins(plugins);
    window_->Show(SW_SHOW);
    window_->viewport().SetFocus();
    window_->Update();
    if (!options.screenshots.empty()) {
        walk_ = std::make_unique<Walk>(*window_, absolutePath(options.file),
                                       absolutePath(options.screenshots), options.utility,
                                       options.script.empty() ? "" : absolutePath(options.script),
                                       [this](MSG& message) {
                                           if (PreTranslateMessage(message)) return;
                                           ::TranslateMessage(&message);
                                           ::DispatchMessageW(&message);
                                       });
        return ::PostThreadMessageW(::GetCurrentThreadId(), WM_APP, 0, 0) != FALSE;
    }
    openAtStart(options);
    return true;
}

// A walk shows the same to everybody, whatever they have set.
void WorkbenchApp::setLanguage(const Options& options) {
    const bool isWalk = !options.screenshots.empty();
    std::optional<base::Language> language = options.language;
    if (language && !isWalk) settings_.set(kLanguageSetting, base::codeOf(*language));
    if (!language && !isWalk) language = base::languageOf(settings_.value(kLanguageSetting));
    setLanguageSource([]() noexcept { return static_cast<base::Language>(GetLanguage()); });
    kiln::Core::setLanguage(static_cast<WORD>(language.value_or(base::Language::kChinese)));
}

void WorkbenchApp::loadPlugins(const std::string& folder) {
    const kiln::ModuleScan scan = kiln::scanModules(folder);
    for (const kiln::ModuleInfo& module : kiln::modules())
        window_->print(textOf(TextId::kLogLoaded, {module.description, module.path}));
    for (const std::string& refusal : scan.refusals) {
        window_->print("-- " + refusal, LogLine::kError);
        std::fprintf(stderr, "workbench: %s\n", refusal.c_str());
    }
    window_->listUtilities();
}

void WorkbenchApp::openAtStart(const Options& options) {
    const bool isRecovered = window_->recovery().offer();
    window_->recovery().start();
    if (!options.file.empty() && !isRecovered) {
        const std::string path = absolutePath(options.file);
        const kiln::ImportResult result = window_->files().openFile(path);
        if (!result.ok() && result.code != IMPEXP_CANCEL)
            window_->files().showFailure(TextId::kCannotOpen, path, result);
    }
    if (!options.utility.empty() && !window_->panel().pressUtility(options.utility))
        window_->print(textOf(TextId::kLogNoUtility, {options.utility}), LogLine::kWarning);
    if (!options.script.empty()) window_->scripts().run(absolutePath(options.script));
}

int WorkbenchApp::ExitInstance() {
    const int code = CWinApp::ExitInstance();
    walk_.reset();
    // The modules go while the window is still there to take their pages from.
    if (kiln::Core* const core = kiln::Core::get()) core->close();
    window_.reset();
    kiln::Core::destroy();
    return code;
}

WorkbenchApp theApp;

}  // namespace
}  // namespace workbench

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    return CWinApp::RunProgram();
}
