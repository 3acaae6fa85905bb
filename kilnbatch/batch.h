// Many files, one after the other or some at a time.
#pragma once

#include "job.h"
#include "workers.h"

#include <filesystem>
#include <string>

namespace kilnbatch {

struct BatchOptions {
    std::string in;       ///< see `FileTree`
    std::string list;     ///< the same
    std::string out;      ///< the folder of the results
    bool exports = true;  ///< otherwise that folder gets only what the batch keeps for itself
    Job job;              ///< done to each file; import and export are the file's
    unsigned jobs = 1;
    TaskLimits limits;
    std::string reportPath;  ///< of JSON lines; empty for none
};

/// Does the job to every file and keeps the user informed: a line for each file, and on a terminal
/// a bar. Returns the program's exit status. Throws `std::runtime_error`, whose text is for the
/// user, before anything is done.
int runBatch(const BatchOptions& options);

}  // namespace kilnbatch
