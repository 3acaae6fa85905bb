#include "commandline.h"

#include "commands.h"
#include "report/report.h"

#include <quillon/fltfilereader.h>
#include <quillon/fltrevision.h>
#include <tessera_version.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <ostream>
#include <system_error>

namespace fltool {

namespace {

// One line, whatever is in it: a message may quote arguments or system texts.
std::string oneLine(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return text;
}

CLI::Option* addFile(CLI::App& command, const char* name, std::string& file, const char* what) {
    return command.add_option(name, file, what)->required();
}

/// The command line's grammar, and what it asked for once parsed.
struct CommandLine {
    CLI::App app{"Looks into OpenFlight files, checks and converts them.", "fltool"};
    CLI::App* dumpCommand = app.add_subcommand("dump", "Show every record with its fields");
    CLI::App* checkCommand = app.add_subcommand("check", "Look for damage and inconsistencies");
    CLI::App* convertCommand = app.add_subcommand("convert", "Write a file at another revision");
    CLI::App* statsCommand = app.add_subcommand("stats", "Count records, bytes and depth");

    CLI::App* reportCommand =
        app.add_subcommand("report", "Show what is in models, on a page for the browser");

    DumpOptions dumpOptions;
    std::vector<int> opcodes;
    ConvertOptions convertOptions;
    std::string file;
    CheckOptions checkOptions;
    ReportOptions reportOptions;
    std::string language = "en";

    CommandLine() {
        app.require_subcommand(1);
        app.set_version_flag("--version", "fltool " TESSERA_VERSION, "Print the version and exit");
        app.get_formatter()->column_width(24);

        // A path may begin with a slash on Windows too.
        for (CLI::App* command :
             {dumpCommand, checkCommand, convertCommand, statsCommand, reportCommand})
            command->allow_windows_style_options(false);

        addFile(*dumpCommand, "FILE", file, "The file to show");
        dumpCommand->add_flag("--json", dumpOptions.json, "One JSON array of records");
        dumpCommand->add_option("--opcode", opcodes, "Only records of this opcode; repeatable")
            ->allow_extra_args(false)
            ->type_name("N")
            ->check(CLI::Range(0, 0xFFFF));

        addFile(*checkCommand, "FILE", file, "The file to check");
        checkCommand
            ->add_option("--target", checkOptions.target,
                         "Also what this target asks for: \"general\", \"15.8\" or another "
                         "built-in one, or a JSON file")
            ->type_name("NAME|FILE");
        checkCommand->add_flag("--json", checkOptions.json, "One JSON object with all findings");
        checkCommand->footer(
            "Exit code: 0 clean, 1 findings (with a target: damage or errors), 2 the file cannot "
            "be read.");

        addFile(*convertCommand, "IN", convertOptions.input, "The file to read");
        addFile(*convertCommand, "OUT", convertOptions.output, "The file to write; may be IN");
        convertCommand
            ->add_option("--revision", convertOptions.revision,
                         "Revision to write, 1420 to 1580 or 1600 to 1660 (1580 when not given)")
            ->type_name("N")
            ->check(CLI::Range(kFltOldestRevision, kFltNewest15Revision) |
                    CLI::Range(kFltOldest16Revision, kFltNewestRevision));

        addFile(*statsCommand, "FILE", file, "The file to count");
        addReport();
    }

    void addReport() {
        reportCommand->add_option("PATH", reportOptions.paths, "Files, and folders of them")
            ->required();
        reportCommand->add_option("-o,--output", reportOptions.output, "The page to write")
            ->type_name("FILE");
        reportCommand
            ->add_option("--lang", language, "The language in which the page opens: en or zh")
            ->type_name("LANG")
            ->check(CLI::IsMember({"en", "zh"}));
        reportCommand
            ->add_option("--target", reportOptions.target,
                         "What to check for: \"general\" when not given, \"15.8\" or another "
                         "built-in one, or a JSON file")
            ->type_name("NAME|FILE");
        reportCommand->add_flag("--json", reportOptions.json,
                                "The facts as one JSON object, to the standard output without -o");
        reportCommand->add_flag("!--no-pictures", reportOptions.pictures, "Draw no pictures");
        reportCommand
            ->add_option("--kilnbatch", reportOptions.kilnbatch,
                         "The program that draws; the one beside this when not given")
            ->type_name("FILE");
    }

    void parse(std::vector<std::string> arguments) {
        // Said here, because the parser would only ask for a command.
        if (!arguments.empty() && !arguments[0].starts_with('-') && !isCommand(arguments[0]))
            throw CLI::ParseError("no such command: " + arguments[0], CLI::ExitCodes::ExtrasError);
        std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
        app.parse(std::move(arguments));
    }

    bool isCommand(const std::string& name) {
        const auto commands = app.get_subcommands([](CLI::App*) { return true; });
        return std::any_of(commands.begin(), commands.end(),
                           [&](const CLI::App* command) { return command->get_name() == name; });
    }

    int execute(std::ostream& out, std::ostream& notes) {
        if (dumpCommand->parsed()) {
            dumpOptions.file = file;
            for (const int opcode : opcodes)
                dumpOptions.opcodes.insert(static_cast<std::uint16_t>(opcode));
            dump(dumpOptions, out, notes);
        } else if (checkCommand->parsed()) {
            checkOptions.file = file;
            if (check(checkOptions, out) > 0) return kFindings;
        } else if (convertCommand->parsed()) {
            convert(convertOptions, out, notes);
        } else if (reportCommand->parsed()) {
            if (language == "zh") reportOptions.language = base::Language::kChinese;
            report(reportOptions, out, notes);
        } else {
            stats(file, out, notes);
        }
        return kDone;
    }
};

int fail(std::ostream& out, std::ostream& error, const std::string& message) {
    out.flush();
    error << "fltool: " << oneLine(message) << '\n' << std::flush;
    return kFailed;
}

int parseAndExecute(const std::vector<std::string>& arguments, std::ostream& out,
                    std::ostream& error) {
    CommandLine commandLine;
    try {
        commandLine.parse(arguments);
    } catch (const CLI::CallForHelp&) {
        out << commandLine.app.help() << std::flush;
        return kDone;
    } catch (const CLI::CallForVersion& version) {
        out << version.what() << '\n' << std::flush;
        return kDone;
    } catch (const CLI::ParseError& problem) {
        return fail(out, error, std::string(problem.what()) + " (see fltool --help)");
    }
    const int code = commandLine.execute(out, error);
    if (!out.flush()) return fail(out, error, "cannot write the output");
    return code;
}

}  // namespace

std::string strayText(std::size_t count) {
    return count == 1 ? "1 stray byte behind the last record"
                      : std::to_string(count) + " stray bytes behind the last record";
}

void noteStrayBytes(std::size_t count, std::ostream& notes) {
    if (count != 0) notes << "fltool: left out " << strayText(count) << '\n';
}

int run(const std::vector<std::string>& arguments, std::ostream& out,
        std::ostream& error) noexcept {
    try {
        return parseAndExecute(arguments, out, error);
    } catch (const std::exception& problem) {
        return fail(out, error, problem.what());
    }
}

}  // namespace fltool
