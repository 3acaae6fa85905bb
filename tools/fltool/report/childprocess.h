// Another program.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace fltool {

/// The folder of this program; empty when nobody can tell.
std::filesystem::path ownFolder();

/// Runs `program` with `arguments` and waits for its end. What it prints goes into the file at
/// `output`. Returns its exit code; -1 when it did not start, crashed, or was ended after `most`.
/// An argument must not have quotation marks.
int runProgram(const std::filesystem::path& program,
               const std::vector<std::filesystem::path>& arguments,
               const std::filesystem::path& output, std::chrono::seconds most);

}  // namespace fltool
