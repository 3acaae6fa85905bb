// The command lines of the program.
#pragma once

#include <string>
#include <vector>

namespace kilnbatch {

/// Does what the words behind "batch" ask for; returns the program's exit status.
int runBatchCommand(std::vector<std::string> words);

}  // namespace kilnbatch
