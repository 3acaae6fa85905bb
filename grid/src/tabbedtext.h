// Tab-separated text, as spreadsheets exchange it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace grid {

/// One cell's text as it stands in tab-separated text.
std::string quotedForTabs(std::string_view text);

/// Rows of cells. Takes LF, CR and CRLF as line ends; one at the very end begins no further row.
std::vector<std::vector<std::string>> splitTabs(std::string_view text);

}  // namespace grid
