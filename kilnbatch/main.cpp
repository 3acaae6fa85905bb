// kilnbatch: runs scripts over a scene, without windows.
#include "plugins.h"

#ifdef _WIN32
#include <base/utf16.h>
#endif
#include <kiln/host/host.h>
#include <kiln/language.h>
#include <render/pictureverb.h>
#include <script/engine.h>
#include <tessera_version.h>
#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kStackForScripts = 3u << 20;

volatile std::sig_atomic_t interrupted = 0;

void interrupt(int) {
    interrupted = 1;
}

struct Options {
    std::string expression;
    std::string scene;
    std::string importPath;
    std::string exportPath;
    std::uint32_t revision = 0;
    std::string database;
    std::string checkTarget;
    std::string reportPath;
    std::string plugins;
    std::uint64_t maxSteps = 0;
    bool listVerbs = false;
    std::vector<std::string> words;  // the script's file, then its arguments
};

/// Ends the core after everything that refers to its scene.
struct Host {
    kiln::Core& core = kiln::Core::create();
    Host() = default;
    ~Host() { kiln::Core::destroy(); }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
};

/// Whether an import or export is to go on.
bool goOn(double, const char*) {
    return interrupted == 0;
}

int complain(const std::string& what) {
    std::fflush(stdout);
    std::fprintf(stderr, "kilnbatch: %s\n", what.c_str());
    return 1;
}

/// Takes the script's text and name off `options`. Throws `script::Failure`.
std::string takeScript(Options& options, std::string& name) {
    if (!options.expression.empty() || options.words.empty() || options.listVerbs) {
        name = "-e";
        return options.expression;
    }
    name = options.words.front();
    options.words.erase(options.words.begin());
    if (name == "-") return std::string(std::istreambuf_iterator<char>(std::cin), {});
    return script::readScript(name);
}

void prepare(script::Engine& engine, const Options& options,
             const std::vector<std::string>& arguments) {
    script::addHostVerbs(engine);
    render::addPictureVerb(engine);
    script::Limits limits;
    limits.steps = options.maxSteps;
    limits.stackBytes = kStackForScripts;
    engine.setLimits(limits);
    engine.setStop([] { return interrupted != 0; });
    engine.setOutput([](std::string_view line) {
        std::fwrite(line.data(), 1, line.size(), stdout);
        std::fputc('\n', stdout);
        std::fflush(stdout);  // whoever watches a long batch sees each line at once
    });
    engine.setVariable("arguments", script::Value::ofArray({arguments.begin(), arguments.end()}));
}

void printResult(const script::Value& value) {
    if (value.isUndefined() || value.as<script::Done>()) return;
    std::printf("%s\n", value.printed().c_str());
}

/// Opens the scene and imports the file that the command line names; returns what failed, or
/// nothing.
std::string openFiles(kiln::Core& core, const Options& options) {
    if (!options.scene.empty())
        if (const kiln::ImportResult opened = core.loadScene(options.scene); !opened)
            return opened.message;
    if (options.importPath.empty()) return {};
    const kiln::ImportResult result = core.importFile(options.importPath, goOn);
    if (!result.ok()) return result.message;
    std::printf("%s\n", result.message.c_str());
    return {};
}

/// Exports to the file that the command line names; returns what failed, or nothing.
std::string writeFiles(kiln::Core& core, const Options& options) {
    if (options.exportPath.empty()) return {};
    const DWORD version = static_cast<DWORD>(options.revision) << SCENE_EXPORT_VERSION_SHIFT;
    const kiln::ImportResult result =
        core.exportFile(options.exportPath, {version, nullptr, options.database}, goOn);
    if (!result.ok()) return result.message;
    std::printf("%s\n", result.message.c_str());
    return {};
}

/// A call of the published interface that checks scenes.
FPValue callCheck(const char* function, std::vector<kiln::ScriptArgument> arguments = {}) {
    FPInterfaceDesc* const check = kiln::findInterface("FltCheck");
    if (check == nullptr) throw script::Failure("no plug-in checks scenes");
    FPValue result;
    const kiln::Status status = kiln::callFunction(*check, function, arguments, result);
    if (!status) throw script::Failure(status.message());
    return result;
}

/// Checks the scene, prints the findings, a line each, and writes the report that the command line
/// names. False when there are errors. Throws `script::Failure`.
bool checkScene(const Options& options) {
    const auto text = [](const char* value) {
        return std::vector<kiln::ScriptArgument>{{"", FPValue::StringCopy(value)}};
    };
    const int count = callCheck("run", text(options.checkTarget.c_str())).i;
    for (int i = 1; i <= count; ++i) {
        const auto at = [i](const char* function) {
            return callCheck(function, {{"", FPValue::Int(i)}});
        };
        INode* const node = at("node").n;
        std::printf("%s %s %s: %s\n", at("severity").s, at("code").s,
                    node != nullptr ? node->GetName() : "scene", at("text").s);
    }
    const int errors = callCheck("total", text("error")).i;
    std::printf("%d errors, %d warnings, %d hints\n", errors, callCheck("total", text("warning")).i,
                callCheck("total", text("hint")).i);
    if (!options.reportPath.empty()) callCheck("save", text(options.reportPath.c_str()));
    return errors == 0;
}

int runBatch(Options options) {
    kiln::Core::setLanguage(KILN_LANGUAGE_ENGLISH);
    Host host;
    for (const std::string& refusal : kilnbatch::loadPlugins(options.plugins)) complain(refusal);
    const bool fromFile =
        options.expression.empty() && !options.words.empty() && !options.listVerbs;
    std::string text, name;
    try {
        text = takeScript(options, name);
    } catch (const script::Failure& failure) {
        return complain(failure.what());
    }
    if (const std::string failure = openFiles(host.core, options); !failure.empty())
        return complain(failure);
    script::Engine engine;
    prepare(engine, options, options.words);
    if (options.listVerbs) {
        for (const std::string& line : engine.verbs()) std::printf("%s\n", line.c_str());
        return 0;
    }
    try {
        const script::Value value = engine.run(text, name);
        if (!fromFile) printResult(value);
    } catch (const script::Error& error) {
        return complain(error.what());
    }
    bool isClean = true;
    try {
        if (!options.checkTarget.empty()) isClean = checkScene(options);
    } catch (const script::Failure& failure) {
        return complain(failure.what());
    }
    const std::string failure = writeFiles(host.core, options);
    if (!failure.empty()) return complain(failure);
    return isClean ? 0 : 1;
}

int runProgram(std::vector<std::string> words) {
    Options options;
    CLI::App app("Runs a script over a scene, without windows.", "kilnbatch");
    app.allow_windows_style_options(false);  // a path may begin with a slash
    app.add_option("-e", options.expression, "run TEXT instead of a file and print its value")
        ->type_name("TEXT");
    app.add_option("--scene", options.scene, "open this .kiln scene first")->type_name("FILE");
    app.add_option("--import", options.importPath, "then import this file, such as A.flt")
        ->type_name("FILE");
    app.add_option("--export", options.exportPath, "export to this file when the script has ended")
        ->type_name("FILE");
    app.add_option("--revision", options.revision,
                   "revision of the exported file, such as 1580; that of the scene by default")
        ->type_name("N")
        ->check(CLI::Range(0U, 0xFFFFU));
    app.add_option("--database", options.database,
                   "what to export where the scene has several: the name of the database or of "
                   "the file that it came from")
        ->type_name("NAME");
    CLI::Option* const check =
        app.add_option("--check", options.checkTarget,
                       "check the scene when the script has ended: for a built-in target such as "
                       "\"general\" or \"15.8\", or for that of a JSON file")
            ->type_name("TARGET");
    app.add_option("--report", options.reportPath, "write what was found to this JSON file")
        ->type_name("FILE")
        ->needs(check);
    app.add_option("--plugins", options.plugins,
                   "load plug-ins from here instead of the folder \"plugins\" beside the program")
        ->type_name("FOLDER");
    app.add_option("--max-steps", options.maxSteps, "stop a script that takes more steps")
        ->type_name("N");
    app.add_flag("--verbs", options.listVerbs, "list the verbs that scripts can call");
    app.add_option("script", options.words,
                   "a script (.ks), \"-\" for standard input; what follows is its \"arguments\"")
        ->type_name("SCRIPT [ARGUMENT...]");
    app.set_version_flag("--version", "kilnbatch " TESSERA_VERSION, "print the version");
    app.positionals_at_end(false);
    app.footer(
        "Exit status: 0 when all of it was done, 1 when an error ended it or --check "
        "found errors,\nanother one for a command line that is not understood.");
    try {
        std::reverse(words.begin(), words.end());
        app.parse(std::move(words));
        if (options.expression.empty() && options.words.empty() && !options.listVerbs &&
            options.exportPath.empty() && options.checkTarget.empty())
            throw CLI::RequiredError("A script, -e, --check or --export");
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    }
    std::signal(SIGINT, interrupt);
    return runBatch(std::move(options));
}

}  // namespace

#ifdef _WIN32
int wmain(int count, wchar_t** words) {
    SetConsoleOutputCP(CP_UTF8);
    std::vector<std::string> given;
    for (int i = 1; i < count; ++i) given.push_back(base::toUtf8(words[i]));
    return runProgram(std::move(given));
}
#else
int main(int count, char** words) try {
    return runProgram({words + std::min(count, 1), words + count});
} catch (const std::exception& failure) {
    std::fprintf(stderr, "kilnbatch: %s\n", failure.what());
    return 1;
}
#endif
