// The files that were opened last, kept from one run to the next.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// A list of paths, newest first, in a text file with one UTF-8 path a line. A list that cannot be
/// read is empty, one that cannot be written lasts until the program ends: nobody needs to hear of
/// either. Paths that differ in the case of ASCII letters only are the same.
class RecentFiles {
public:
    static constexpr std::size_t kMost = 8;

    /// Reads the list at `path`; an empty path keeps it in memory only.
    explicit RecentFiles(std::string path);

    const std::vector<std::string>& paths() const { return paths_; }
    /// Puts a file first.
    void add(std::string_view file);
    void remove(std::string_view file);

private:
    void erase(std::string_view file);
    void save() const;

    std::string path_;
    std::vector<std::string> paths_;
};

}  // namespace workbench
