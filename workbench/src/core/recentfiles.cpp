#include <workbench/recentfiles.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace workbench {
namespace {

std::filesystem::path pathFrom(const std::string& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

bool samePath(std::string_view a, std::string_view b) {
    const auto lower = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    };
    return std::ranges::equal(a, b, {}, lower, lower);
}

}  // namespace

RecentFiles::RecentFiles(std::string path) : path_(std::move(path)) {
    if (path_.empty()) return;
    std::ifstream file(pathFrom(path_), std::ios::binary);
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
    std::erase_if(paths_, [&](const std::string& one) { return samePath(one, file); });
}

void RecentFiles::save() const {
    if (path_.empty()) return;
    std::error_code ignored;
    std::filesystem::create_directories(pathFrom(path_).parent_path(), ignored);
    std::ofstream file(pathFrom(path_), std::ios::binary | std::ios::trunc);
    for (const std::string& one : paths_) file << one << "\r\n";
}

}  // namespace workbench
