#include <base/paths.h>
#include <base/replacefile.h>
#include <workbench/userfile.h>

#include <filesystem>
#include <fstream>
#include <system_error>

namespace workbench {

std::vector<std::string> readUserFile(const std::string& path) {
    std::vector<std::string> lines;
    std::ifstream file(base::pathFrom(path), std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

void writeUserFile(const std::string& path, const std::vector<std::string>& lines) {
    std::error_code ignored;
    std::filesystem::create_directories(base::pathFrom(path).parent_path(), ignored);
    std::string text;
    for (const std::string& line : lines) text += line + "\r\n";
    try {
        base::replaceFile(path, text);
    } catch (const std::system_error&) {
        // What it says lasts until the program ends.
    }
}

}  // namespace workbench
