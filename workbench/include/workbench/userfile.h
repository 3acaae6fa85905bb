// The text files that the program keeps for its user from one run to the next.
#pragma once

#include <string>
#include <vector>

namespace workbench {

/// The lines of a text file without their ends, and without empty ones; none when it cannot be
/// read.
std::vector<std::string> readUserFile(const std::string& path);
/// Writes the lines, and the folder that they are in. Nobody is told when that does not work.
void writeUserFile(const std::string& path, const std::vector<std::string>& lines);

}  // namespace workbench
