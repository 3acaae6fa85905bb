// Starts the built workbench, as its own process, on a scene of one box.
#pragma once

#include "../support/temporaryfolder.h"

#include <framework/win32.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Waits until `holds`; false after half a minute.
bool eventually(const std::function<bool()>& holds);

/// A window's text, of this process or another.
std::string textOf(HWND window);

/// A file that collects what a program writes to its standard output.
class OutputFile {
public:
    explicit OutputFile(std::wstring path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    HANDLE handle() const { return handle_; }
    std::string text() const;

private:
    std::wstring path_;
    HANDLE handle_;
};

class WorkbenchTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Starts the program with a folder of plug-ins, and more of the command line.
    void launch(const std::wstring& plugins, const std::wstring& more = {});
    /// The same, and waits for the window; without `more`, until the scene is open.
    void start(const std::wstring& plugins, const std::wstring& more = {});
    /// The program's exit code, once it has ended by itself.
    DWORD exitCode();

    /// Types a line into the script field and returns what was added to the log.
    std::string script(const std::string& line);
    /// Writes a script and returns its path, as a script would write it.
    std::string scriptFile(const std::string& text);
    // Presses a button of the message box that appears, and returns what the box said.
    std::string answerMessage(int button);
    // A file of the sample plug-in, which says how its import ends.
    std::string sampleFile(const char* name, const char* text) const;
    bool logSays(const std::string& text) const;
    /// Answers the file dialog `title`, once it has come up, with `path`; a file that is there may
    /// be replaced.
    static bool answerFileDialog(const wchar_t* title, const std::string& path);
    /// Clicks a point of the viewport.
    void click(int x, int y) const;
    /// True once the title names the scene: scripts that are typed before it meet another one.
    bool showsItsScene() const;
    /// What the screen shows around the middle of the viewport, where the box is.
    std::vector<DWORD> middleOfViewport() const;
    /// The same, once it shows more than a background and does not change any more.
    std::vector<DWORD> middleAtRest() const;
    /// The dialog of the open rollup page, or null.
    HWND page() const;
    /// Opens the form of the built module with the mouse; null when it does not come.
    HWND openBrowserForm() const;

    const TemporaryFolder temporary_;
    const std::filesystem::path& folder_ = temporary_.path();
    std::wstring scene_;
    std::unique_ptr<OutputFile> output_;
    PROCESS_INFORMATION process_{};
    HWND window_ = nullptr, viewport_ = nullptr, panel_ = nullptr, log_ = nullptr, line_ = nullptr;

private:
    static void makeScene(const std::string& path);
};
