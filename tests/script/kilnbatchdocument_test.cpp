// Runs what docs/scripting.md shows by the program kilnbatch, which loads the real plug-ins.
#include "../support/temporaryfolder.h"
#include "document.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

constexpr DWORD kPatience = 90'000;
constexpr char kMark[] = "-- example ";

/// All examples as one script, since starting a program is slow here: each begins with a new scene
/// and with a line that says which it is.
std::string allExamples(const std::vector<Example>& examples) {
    std::string text = "fn prepare = (\n" + examples.front().text + ")\n";
    for (const Example& example : examples) {
        text += "newScene()\nprint \"" + std::string(kMark) + std::to_string(example.line) + "\"\n";
        text += &example == &examples.front() ? "prepare()\n" : "prepare()\n" + example.text;
    }
    return text;
}

std::string expectedOf(const std::vector<Example>& examples) {
    std::string text;
    for (const Example& example : examples)
        text += kMark + std::to_string(example.line) + "\n" + example.printed;
    return text;
}

struct Outcome {
    DWORD exitCode = STILL_ACTIVE;
    std::string output;
};

Outcome runKilnbatch(const std::filesystem::path& script, const std::filesystem::path& output) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const HANDLE file = ::CreateFileW(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                      CREATE_ALWAYS, 0, nullptr);
    STARTUPINFOW info{};
    info.cb = sizeof info;
    info.dwFlags = STARTF_USESTDHANDLES;
    info.hStdOutput = info.hStdError = file;
    std::wstring line =
        L"\"" + std::filesystem::path(KILNBATCH).wstring() + L"\" \"" + script.wstring() + L"\"";
    PROCESS_INFORMATION process{};
    Outcome outcome;
    if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &info,
                         &process)) {
        if (::WaitForSingleObject(process.hProcess, kPatience) != WAIT_OBJECT_0)
            ::TerminateProcess(process.hProcess, 99);
        ::GetExitCodeProcess(process.hProcess, &outcome.exitCode);
        ::CloseHandle(process.hProcess);
        ::CloseHandle(process.hThread);
    }
    ::CloseHandle(file);
    std::ifstream printed(output);
    outcome.output.assign(std::istreambuf_iterator<char>(printed), {});
    return outcome;
}

TEST(KilnbatchDocumentTest, EveryExampleRunsOverTheRealPlugins) {
    const std::vector<Example> examples = documentedExamples();
    ASSERT_GT(examples.size(), 10u);
    const TemporaryFolder folder;
    const std::filesystem::path script = folder.path() / "all.ks";
    std::ofstream(script, std::ios::binary) << allExamples(examples);
    const Outcome outcome = runKilnbatch(script, folder.path() / "output.txt");
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(outcome.output, expectedOf(examples));
}

}  // namespace
