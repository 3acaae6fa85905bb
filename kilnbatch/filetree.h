// The files of a batch.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kilnbatch {

/// What a batch keeps for itself below the folder of its results.
inline constexpr const char* kBatchFolder = ".kilnbatch";

/// Whether `path` fits `pattern`, both with "/" between folders: "*" stands for any characters of
/// one name and "?" for one byte, "**" for any characters and folders.
bool fitsPattern(std::string_view path, std::string_view pattern);

/// The .flt files that the word IN of a command line names: those below a folder, those that fit a
/// pattern, one file, or those of a list, which has one path a line, relative to the list's folder.
class FileTree {
public:
    /// With a list of its own, only its files, relative to the folder that is then `in`. Paths are
    /// UTF-8. Throws `std::runtime_error`, whose text is for the user.
    explicit FileTree(const std::string& in, const std::string& list = {});

    /// The folder that all files are below.
    const std::filesystem::path& root() const noexcept { return root_; }

    /// Leaves out what is below `folder`.
    void leaveOut(const std::filesystem::path& folder) { leftOut_ = folder; }

    /// The next file, relative to the root, folder by folder in the order of their names; nothing
    /// after the last one. A file of a list need not be there. At any time only the names of the
    /// folders that lead to it are kept. Links to folders are not followed, nor is what batches
    /// keep for themselves.
    std::optional<std::filesystem::path> next();

    /// Folders that cannot be read, as far as the walk has come; a sentence for each.
    const std::vector<std::string>& unreadable() const noexcept { return unreadable_; }

    /// Begins again.
    void rewind();

private:
    struct Folder {
        std::filesystem::path path;                  ///< relative to the root
        std::vector<std::filesystem::path> entries;  ///< names, last one first
    };

    void readList(const std::string& list);
    void enter(const std::filesystem::path& folder);
    bool isWanted(const std::filesystem::path& relative) const;

    std::filesystem::path root_;
    std::string pattern_;            ///< relative to the root; empty for any name
    std::vector<std::string> list_;  ///< UTF-8
    bool isList_ = false;
    std::filesystem::path leftOut_;
    std::size_t listed_ = 0;
    bool begun_ = false;
    std::vector<Folder> open_;
    std::vector<std::string> unreadable_;
};

}  // namespace kilnbatch
