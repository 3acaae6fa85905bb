// What is done to one scene: opening, running a script, checking, exporting.
#pragma once

#include <kiln/host/core.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace script {
class Engine;
}

namespace kilnbatch {

/// What a check has found, as the plug-in that checks scenes says it.
struct Finding {
    std::string severity;
    std::string code;
    std::string node;  ///< its name, "scene" for the scene as a whole
    std::string text;
};

struct Findings {
    std::vector<Finding> list;
    int errors = 0;  ///< of all that was found, whether it is listed or not
    int warnings = 0;
    int hints = 0;
};

/// Paths are UTF-8; what is empty is left out. Done in the order of the members.
struct Job {
    /// Where files are looked for that the scene names, behind their own folders.
    std::vector<std::string> searchFolders;
    std::string scene;
    std::string importPath;
    std::string scriptName;  ///< in messages
    std::string script;      ///< the text
    std::vector<std::string> arguments;
    std::uint64_t maxSteps = 0;
    bool mustBeUndoable = false;  ///< the script ends with an error where a step would not be
    std::string checkTarget;
    bool checksSource = false;  ///< before the script too
    std::string reportPath;     ///< of the check
    std::string exportPath;
    std::uint32_t revision = 0;  ///< of the exported file, x 100
    std::string database;

    bool printsValue = false;                                 ///< of the script's last expression
    std::function<void(std::string_view line)> output = {};   ///< what plug-ins and the script say
    std::function<void(const Findings&)> foundInSource = {};  ///< called before the script
    std::function<void(const Findings&)> found = {};          ///< called after a check
};

/// Ends the core after everything that refers to its scene.
struct Host {
    kiln::Core& core;
    Host();
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
};

/// Has what `runJob` does end soon, with a failure. May be called by a handler of a signal.
void interrupt() noexcept;
bool wasInterrupted() noexcept;

/// Offers scripts what they have in kilnbatch.
void prepare(script::Engine& engine, const Job& job);

/// Does the job with the scene of `core`. Returns what failed, or nothing; what was done before
/// stays done.
std::string runJob(kiln::Core& core, const Job& job);

}  // namespace kilnbatch
