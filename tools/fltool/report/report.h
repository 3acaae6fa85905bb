// `report`: what is in a model or in a folder of them, as a page or as JSON.
#pragma once

#include <base/language.h>

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace fltool {

struct ReportOptions {
    std::vector<std::string> paths;  ///< files and folders, UTF-8
    std::string output;              ///< empty for the standard output, which takes JSON alone
    std::string target = "general";  ///< as for `check`
    base::Language language = base::Language::kEnglish;  ///< in which the page opens
    bool json = false;
    bool pictures = true;   ///< of few models
    std::string kilnbatch;  ///< that draws them; empty for the one beside this program
};

/// So many models are within the page; the details of more stand in files beside it. Pictures are
/// drawn of no more.
inline constexpr std::size_t kMostInPage = 20;

/// Writes the report, one model after the other: no more than one is in memory with its details,
/// but for those within a page. The output appears, or is replaced, when it is whole. A file that
/// cannot be read is in the report; a path that does not exist throws `CommandError`, and so does
/// an output that cannot be written. Throws `checks::TargetError`.
void report(const ReportOptions& options, std::ostream& out, std::ostream& notes);

}  // namespace fltool
