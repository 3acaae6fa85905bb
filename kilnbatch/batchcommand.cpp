#include "batch.h"
#include "commands.h"

#include <script/engine.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <thread>

namespace kilnbatch {

namespace {

constexpr double kMegabyte = 1 << 20;

}  // namespace

int runBatchCommand(std::vector<std::string> words) {
    BatchOptions options;
    std::string scriptPath;
    double megabytes = 0;
    CLI::App app("Imports many files, runs a script over each, checks and exports them.",
                 "kilnbatch batch");
    app.allow_windows_style_options(false);
    app.add_option("IN", options.in,
                   "a folder, of which every .flt file is done; a pattern such as "
                   "\"city/**/t*.flt\"; one file; or a list with a path a line")
        ->required();
    app.add_option("OUT", options.out, "the folder that gets the same tree of results")->required();
    app.add_option("--list", options.list, "only the files of this list, paths relative to IN")
        ->type_name("FILE");
    app.add_option("--script", scriptPath,
                   "run this script over each; its \"arguments\" are the file's path below IN")
        ->type_name("FILE");
    CLI::Option* const check =
        app.add_option(
               "--check", options.job.checkTarget,
               "check each for a built-in target such as \"general\", or that of a JSON file")
            ->type_name("TARGET");
    app.add_flag("--check-source", options.job.checksSource,
                 "check each before the script runs, too; what is found then is reported as its "
                 "\"source\"")
        ->needs(check);
    app.add_flag("!--no-export", options.exports, "write no results: check, and run scripts, only");
    app.add_option("--revision", options.job.revision, "revision of the exported files")
        ->type_name("N")
        ->check(CLI::Range(0U, 0xFFFFU));
    app.add_option("--search", options.job.searchFolders,
                   "look for pictures and referenced files in this folder too; may be repeated")
        ->type_name("FOLDER")
        ->allow_extra_args(false);
    app.add_option("--max-steps", options.job.maxSteps, "stop a script that takes more steps")
        ->type_name("N");
    options.jobs = std::max(1U, std::thread::hardware_concurrency());
    constexpr unsigned kMostJobs = 1024;
    app.add_option("--jobs", options.jobs, "files done at the same time; one for each processor")
        ->type_name("N")
        ->check(CLI::Range(1U, kMostJobs));
    app.add_option("--time-limit", options.limits.seconds, "end a file that takes more seconds")
        ->type_name("S")
        ->check(CLI::PositiveNumber);
    app.add_option("--memory-limit", megabytes, "end a file that takes more megabytes of memory")
        ->type_name("MB")
        ->check(CLI::PositiveNumber);
    app.add_option("--report", options.reportPath, "write a JSON object for each file, a line each")
        ->type_name("FILE");
    app.footer(
        "Results that are up to date are left alone.\nExit status: 0 when all files are done "
        "and without errors, 1 otherwise, 130 when it was\ninterrupted, another one for a command "
        "line that is not understood.");
    try {
        std::reverse(words.begin(), words.end());
        app.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    }
    options.limits.bytes = static_cast<std::uint64_t>(megabytes * kMegabyte);
    try {
        if (!scriptPath.empty()) {
            options.job.scriptName = scriptPath;
            options.job.script = script::readScript(scriptPath);
        }
        return runBatch(options);
    } catch (const std::exception& failure) {
        std::fflush(stdout);
        std::fprintf(stderr, "kilnbatch: %s\n", failure.what());
        return 1;
    }
}

}  // namespace kilnbatch
