// The built program, as a process of its own.
#include "files.h"

#include <cstdlib>

#ifdef _WIN32
#include <process.h>
#else
#include <sys/wait.h>
#endif

namespace {

int exitCodeOf(const char* command, const std::filesystem::path& file) {
#ifdef _WIN32
    const std::filesystem::path program(FLTOOL_PROGRAM);
    const std::wstring quoted = L'"' + file.wstring() + L'"';
    const std::wstring word(command, command + std::char_traits<char>::length(command));
    return static_cast<int>(
        _wspawnl(_P_WAIT, program.c_str(), L"fltool", word.c_str(), quoted.c_str(), nullptr));
#else
    const std::string line =
        std::string(FLTOOL_PROGRAM) + ' ' + command + " \"" + file.string() + "\" >/dev/null 2>&1";
    const int status = std::system(line.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
}

TEST(ProcessTest, TakesPathsBeyondAsciiAndGivesTheExitCode) {
    const Folder folder;
    folder.write("good.flt", kHeader);
    folder.write("bad.flt", kHeader + "000A 0004");
    EXPECT_EQ(exitCodeOf("check", folder.path() / "good.flt"), 0);
    EXPECT_EQ(exitCodeOf("check", folder.path() / "bad.flt"), 1);
    EXPECT_EQ(exitCodeOf("check", folder.path() / "missing.flt"), 2);
}

TEST(CommandLineTest, HelpsAndRefusesInOneLine) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--help"},
                                               {"dump", "--help"},
                                               {"check", "-h"},
                                               {"convert", "--help"},
                                               {"report", "--help"},
                                               {"stats", "--help"}}) {
        const Outcome outcome = runTool(arguments);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_THAT(outcome.out,
                    testing::HasSubstr("fltool " + (arguments.size() > 1 ? arguments[0] : "")));
        EXPECT_EQ(outcome.error, "");
    }
    EXPECT_EQ(runTool({"--version"}).out, "fltool 2.0.0.2\n");
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{},
                                               {"draw"},
                                               {"dump"},
                                               {"dump", "a", "b"},
                                               {"dump", "--opcode", "70000", "a"},
                                               {"dump", "--opcode", "x", "a"},
                                               {"convert", "a"},
                                               {"check", "a\nb"}}) {
        const Outcome outcome = runTool(arguments);
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.error, IsOneErrorLine());
    }
    EXPECT_EQ(runTool({"draw", "a"}).error, "fltool: no such command: draw (see fltool --help)\n");
}

}  // namespace
