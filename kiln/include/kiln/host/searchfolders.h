// The application's side of the folders that files are looked for in.
#pragma once

#include <kiln/host/core.h>
#include <kiln/searchfolders.h>

#include <cstddef>

namespace kiln {

/// Has files looked for in these folders (UTF-8); empty ones, and those that are too many, are left
/// out.
inline void setSearchFolders(Core& core, const std::vector<std::string>& folders) {
    int id = KILN_SEARCH_DIR;
    const int end = KILN_SEARCH_DIR + KILN_SEARCH_DIR_COUNT;
    for (const std::string& folder : folders)
        if (!folder.empty() && id < end) core.setDirectory(id++, folder);
    while (id < end) core.setDirectory(id++, {});
}

}  // namespace kiln
