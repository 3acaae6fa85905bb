// Script files: the commands by which a user runs them.
#pragma once

#include "../ui/logview.h"

#include <framework/cwnd.h>
#include <kiln/host/status.h>
#include <workbench/scriptline.h>

#include <functional>
#include <string>

namespace workbench {

class ScriptFiles {
public:
    using Print = std::function<void(const std::string& line, LogLine kind)>;

    /// `print` adds a line to the log; `owner` owns the dialogs.
    ScriptFiles(framework::CWnd& owner, Interface& host, Print print);

    /// Runs single lines, with the same variables.
    ScriptLine& line() { return line_; }
    /// Where scripts put pictures whose path says no folder: the current one unless this is set.
    void setPictureFolder(const std::string& folder) { pictureFolder_ = folder; }
    const std::string& pictureFolder() const { return pictureFolder_; }

    /// Runs a script file. The log gets what it prints, or what is wrong with it: file, line and
    /// column. Escape, held down over the owner, ends it.
    kiln::Status run(const std::string& path);

    // Menu commands.

    /// Asks which file to run.
    void ask();
    /// Runs the file that was run last; asks when there is none.
    void runAgain();
    bool hasRun() const { return !path_.empty(); }

private:
    framework::CWnd& owner_;
    ScriptLine line_;
    Print print_;
    std::string pictureFolder_;
    std::string path_;  // of the script that was run last
};

}  // namespace workbench
