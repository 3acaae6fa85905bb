// Finds files by the names that other files have for them.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace base {

/// Files in a few folders, by names that come from either kind of system: with either separator,
/// and with their letters large or small where no file has the exact name. Texts are UTF-8.
class FileFinder {
public:
    /// Searches `folder` too, the one named last before all others. An empty one is none.
    void addFolder(std::string_view folder);
    /// Searches these behind all others, in their order, instead of those named so before.
    void setLastFolders(std::vector<std::string> folders);
    /// Another number after each folder that is searched anew: what is not found may be there.
    std::size_t folderChanges() const noexcept { return changes_; }

    /// The file that `name` means, if there is one: where it says, or in one of the folders, there
    /// where it says or by its last part alone. With a `folder` there first of all. No name leads
    /// to another computer (//host/share) but to those where one of the folders is.
    std::optional<std::string> locate(const std::string& name, const std::string& folder = {});
    /// Folders are read once; after this they are read again.
    void forgetListings() noexcept { listings_.clear(); }

private:
    /// The names of a folder's entries, by their small letters.
    using Listing = std::unordered_map<std::string, std::string>;

    std::optional<std::filesystem::path> fileIn(const std::filesystem::path& folder,
                                                const std::filesystem::path& name);
    const Listing& listingOf(const std::filesystem::path& folder);

    std::vector<std::string> folders_;  // in the order of searching
    std::vector<std::string> lastFolders_;
    std::size_t changes_ = 0;
    std::unordered_map<std::string, Listing> listings_;  // by folder
};

}  // namespace base
