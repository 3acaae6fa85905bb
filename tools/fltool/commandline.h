// The program without its process: arguments in, exit code out.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace fltool {

/// What the program tells its caller.
enum ExitCode : int {
    kDone = 0,      ///< nothing to complain of
    kFindings = 1,  ///< `check` found something
    kFailed = 2,    ///< wrong arguments, or a file that cannot be read or written
};

/// Runs the command that `arguments` (UTF-8, without the program's name) ask for. Results go to
/// `out`; an error is one line on `error`. Never throws.
int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& error) noexcept;

}  // namespace fltool
