// kilnbatch: runs scripts over a scene, without windows.
#include "commands.h"
#include "job.h"
#include "plugins.h"

#ifdef _WIN32
#include <base/utf16.h>
#endif
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

void onInterrupt(int) {
    kilnbatch::interrupt();
}

struct Options {
    kilnbatch::Job job;
    std::string expression;
    std::string plugins;
    bool listVerbs = false;
    std::vector<std::string> words;  // the script's file, then its arguments
};

int complain(const std::string& what) {
    std::fflush(stdout);
    std::fprintf(stderr, "kilnbatch: %s\n", what.c_str());
    return 1;
}

void printLine(std::string_view line) {
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);  // whoever watches a long batch sees each line at once
}

/// Puts the script's text and name, and what follows it, into the job. Throws `script::Failure`.
void takeScript(Options& options) {
    kilnbatch::Job& job = options.job;
    job.arguments = options.words;
    job.printsValue = !options.expression.empty();
    if (job.printsValue || options.words.empty() || options.listVerbs) {
        job.scriptName = "-e";
        job.script = options.expression;
        return;
    }
    job.scriptName = options.words.front();
    job.arguments.erase(job.arguments.begin());
    job.script = job.scriptName == "-" ? std::string(std::istreambuf_iterator<char>(std::cin), {})
                                       : script::readScript(job.scriptName);
}

void printFindings(const kilnbatch::Findings& findings) {
    for (const kilnbatch::Finding& finding : findings.list)
        std::printf("%s %s %s: %s\n", finding.severity.c_str(), finding.code.c_str(),
                    finding.node.c_str(), finding.text.c_str());
    std::printf("%d errors, %d warnings, %d hints\n", findings.errors, findings.warnings,
                findings.hints);
}

int runOne(Options options) {
    kilnbatch::Host host;
    for (const std::string& refusal : kilnbatch::loadPlugins(options.plugins)) complain(refusal);
    try {
        takeScript(options);
    } catch (const script::Failure& failure) {
        return complain(failure.what());
    }
    bool isClean = true;
    options.job.output = printLine;
    options.job.found = [&](const kilnbatch::Findings& findings) {
        printFindings(findings);
        isClean = findings.errors == 0;
    };
    if (options.listVerbs) {
        script::Engine engine;
        kilnbatch::prepare(engine, options.job);
        for (const std::string& line : engine.verbs()) std::printf("%s\n", line.c_str());
        return 0;
    }
    const std::string failure = kilnbatch::runJob(host.core, options.job);
    if (!failure.empty()) return complain(failure);
    return isClean ? 0 : 1;
}

int runProgram(std::vector<std::string> words) {
    if (!words.empty() && words.front() == "batch") {
        words.erase(words.begin());
        return kilnbatch::runBatchCommand(std::move(words));
    }
    Options options;
    CLI::App app("Runs a script over a scene, without windows.", "kilnbatch");
    app.allow_windows_style_options(false);  // a path may begin with a slash
    app.add_option("-e", options.expression, "run TEXT instead of a file and print its value")
        ->type_name("TEXT");
    app.add_option("--scene", options.job.scene, "open this .kiln scene first")->type_name("FILE");
    app.add_option("--import", options.job.importPath, "then import this file, such as A.flt")
        ->type_name("FILE");
    app.add_option("--export", options.job.exportPath,
                   "export to this file when the script has ended")
        ->type_name("FILE");
    app.add_option("--revision", options.job.revision,
                   "revision of the exported file, such as 1580; that of the scene by default")
        ->type_name("N")
        ->check(CLI::Range(0U, 0xFFFFU));
    app.add_option("--database", options.job.database,
                   "what to export where the scene has several: the name of the database or of "
                   "the file that it came from")
        ->type_name("NAME");
    CLI::Option* const check =
        app.add_option("--check", options.job.checkTarget,
                       "check the scene when the script has ended: for a built-in target such as "
                       "\"general\" or \"15.8\", or for that of a JSON file")
            ->type_name("TARGET");
    app.add_option("--report", options.job.reportPath, "write what was found to this JSON file")
        ->type_name("FILE")
        ->needs(check);
    app.add_option("--search", options.job.searchFolders,
                   "look for pictures and referenced files in this folder too; may be repeated")
        ->type_name("FOLDER")
        ->allow_extra_args(false);
    app.add_option("--plugins", options.plugins,
                   "load plug-ins from here instead of the folder \"plugins\" beside the program")
        ->type_name("FOLDER");
    app.add_option("--max-steps", options.job.maxSteps, "stop a script that takes more steps")
        ->type_name("N");
    app.add_flag("--undoable", options.job.mustBeUndoable,
                 "end a script with an error where a step would be too large to be undone; it is "
                 "only said otherwise");
    app.add_flag("--verbs", options.listVerbs, "list the verbs that scripts can call");
    app.add_option("script", options.words,
                   "a script (.ks), \"-\" for standard input; what follows is its \"arguments\"")
        ->type_name("SCRIPT [ARGUMENT...]");
    app.set_version_flag("--version", "kilnbatch " TESSERA_VERSION, "print the version");
    app.positionals_at_end(false);
    app.footer(
        "\"kilnbatch batch IN OUT\" does many files; \"kilnbatch batch --help\" says how.\n"
        "Exit status: 0 when all of it was done, 1 when an error ended it or --check "
        "found errors,\nanother one for a command line that is not understood.");
    try {
        std::reverse(words.begin(), words.end());
        app.parse(std::move(words));
        if (options.expression.empty() && options.words.empty() && !options.listVerbs &&
            options.job.exportPath.empty() && options.job.checkTarget.empty())
            throw CLI::RequiredError("A script, -e, --check or --export");
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    }
    std::signal(SIGINT, onInterrupt);
    return runOne(std::move(options));
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
