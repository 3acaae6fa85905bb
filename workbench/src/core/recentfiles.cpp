#include <base/paths.h>
#include <base/replacefile.h>
#include <base/text.h>
#include <workbench/recentfiles.h>

#include <filesystem>
#include <fstream>
#include <system_error>

namespace workbench {

RecentFiles::RecentFiles(std::string path) : path_(std::move(path)) {
    if (path_.empty()) return;
    std::ifstream file(base::pathFrom(path_), std::ios::binary);
    for (std::string line; paths_.size() < kMost && std::getline(file, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) paths_.push_back(line);
    }
}

void RecentFiles::add(std::string_view file) {
    const std::string added(file);
    erase(added);
    paths_.insert(paths_.begin(), added);
    if (paths_.size() > kMost) paths_.resize(kMost);
    save();
}

void RecentFiles::remove(std::string_view file) {
    erase(std::string(file));
    save();
}

void RecentFiles::erase(std::string_view file) {
    std::erase_if(paths_,
                  [&](const std::string& one) { return base::sameTextIgnoringCase(one, file); });
}

void RecentFiles::save() const {
    if (path_.empty()) return;
    std::error_code ignored;
    std::filesystem::create_directories(base::pathFrom(path_).parent_path(), ignored);
    std::string lines;
    for (const std::string& one : paths_) lines += one + "\r\n";
    try {
        base::replaceFile(path_, lines);
    } catch (const std::system_error&) {
        // The list lasts until the program ends.
    }
}

}  // namespace workbench
