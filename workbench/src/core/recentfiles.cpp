#include <base/text.h>
#include <workbench/recentfiles.h>
#include <workbench/userfile.h>

#include <utility>

namespace workbench {

RecentFiles::RecentFiles(std::string path) : path_(std::move(path)) {
    if (path_.empty()) return;
    paths_ = readUserFile(path_);
    if (paths_.size() > kMost) paths_.resize(kMost);
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
    if (!path_.empty()) writeUserFile(path_, paths_);
}

}  // namespace workbench
