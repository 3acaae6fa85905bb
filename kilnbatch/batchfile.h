// One file of a batch, done in a process of its own.
#pragma once

#include "job.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>

namespace kilnbatch {

/// Where a batch reads and writes.
struct BatchFolders {
    std::filesystem::path in;
    std::filesystem::path out;      ///< empty when nothing is exported
    std::filesystem::path stamps;   ///< a tree as that of the results
    std::filesystem::path scratch;  ///< of this run, on the same disk as the results
};

/// Does `job` to the file `name` (UTF-8, relative) unless its result is up to date, with the scene
/// of `core`, which must be empty. `options` is a hash of what decides beside the files; `place` is
/// its own among the tasks that run. Returns what is reported: "result" is "done", "unchanged" or
/// "failed".
nlohmann::json doFile(kiln::Core& core, const BatchFolders& folders, const Job& job,
                      const std::string& options, const std::string& name, unsigned place);

}  // namespace kilnbatch
