#include <workbench/settings.h>
#include <workbench/userfile.h>

#include <utility>
#include <vector>

namespace workbench {

Settings::Settings(std::string path) : path_(std::move(path)) {
    if (path_.empty()) return;
    for (const std::string& line : readUserFile(path_)) {
        const std::size_t sign = line.find('=');
        if (sign != std::string::npos) values_[line.substr(0, sign)] = line.substr(sign + 1);
    }
}

std::string Settings::value(std::string_view name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? std::string() : found->second;
}

void Settings::set(std::string_view name, std::string_view value) {
    values_[std::string(name)] = value;
    if (path_.empty()) return;
    std::vector<std::string> lines;
    for (const auto& [key, text] : values_) lines.push_back(key + "=" + text);
    writeUserFile(path_, lines);
}

}  // namespace workbench
