// Where files are looked for that a scene names: pictures, and files that it refers to.
#pragma once

#include <kiln/interface.h>

#include <string>
#include <vector>

/// Directory ids of the folders that the user has files looked for in, of which there are so many
/// at most: this one and those after it, up to the first that is not set.
inline constexpr int KILN_SEARCH_DIR = 64;
inline constexpr int KILN_SEARCH_DIR_COUNT = 32;

/// The folders of the user, in the order of searching; UTF-8.
inline std::vector<std::string> UserSearchFolders(const Interface& host) {
    std::vector<std::string> folders;
    for (int i = 0; i < KILN_SEARCH_DIR_COUNT; ++i) {
        const char* const folder = host.GetDir(KILN_SEARCH_DIR + i);
        if (*folder == 0) break;
        folders.emplace_back(folder);
    }
    return folders;
}

/// All folders that are searched after that of the naming file: those of the last import, scene and
/// picture, and then the user's.
inline std::vector<std::string> SearchFolders(const Interface& host) {
    std::vector<std::string> folders;
    for (const int id : {KILN_IMPORT_DIR, KILN_SCENE_DIR, KILN_IMAGE_DIR})
        if (const char* const folder = host.GetDir(id); *folder != 0) folders.emplace_back(folder);
    for (std::string& folder : UserSearchFolders(host)) folders.push_back(std::move(folder));
    return folders;
}
