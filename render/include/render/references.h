// The files that a scene refers to.
#pragma once

#include <base/filefinder.h>
#include <kiln/nodelook.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace render {

/// Which nodes of other files the references of a scene show. Files are found as pictures are: in
/// the folder of the file that names them, and then in those that are searched. What has been
/// read of them belongs to the core (`kiln::Core::readFileScene`).
class References {
public:
    /// `files` finds the files, and must outlive this.
    explicit References(base::FileFinder& files) : files_(files) {}

    /// The scene is about to be read anew, with the references that it has then.
    void begin();

    struct Target {
        INode* node = nullptr;                ///< null: nothing, or nothing yet
        const std::string* folder = nullptr;  ///< of its file; valid until `clear`
        bool isMissing = false;               ///< there will be nothing
    };
    /// What a reference in a file of `folder` shows; that folder is empty for the scene itself.
    Target find(const std::string& folder, const NodeReference& reference);

    /// The paths of the files that have been asked for since `begin` and have not been read.
    const std::vector<std::string>& unread() const { return unread_; }
    /// Reads one of those. False when that cannot be done now.
    bool read(const std::string& path);
    /// Whether a file is another than was read, or is there now: then all are read anew.
    bool noticeChanges();
    /// How many nodes are in the files that have been read.
    static std::size_t nodesRead();
    /// Another number after each file that is read, as of `begin`.
    std::uint64_t filesRead() const { return changes_; }
    /// Whether the files that have been read are those of `begin`.
    bool isCurrent() const;
    /// What is missing, one sentence each.
    std::vector<std::string> missing() const;
    std::size_t missingCount() const { return missing_.size(); }
    /// What is missing and was not said before, one sentence each.
    std::vector<std::string> takeFailures();
    void clear();

private:
    struct File {
        std::string path = {}, folder = {};  ///< an empty path: not found
        std::size_t tried = 0;  ///< one more than `folderChanges` when it was looked for
    };
    using Part = std::pair<INode*, std::string>;

    File& fileOf(const std::string& folder, const std::string& name);
    INode* partOf(INode* root, const char* name);
    void fail(const std::string& folder, std::string sentence);

    base::FileFinder& files_;
    std::map<std::pair<std::string, std::string>, File> found_;  // by folder and name
    std::map<Part, INode*> parts_;                               // of files, null for none
    std::uint64_t changes_ = 0;                                  // when these were found
    std::vector<std::string> unread_;
    std::unordered_set<std::string> asked_;                         // the same
    std::map<std::string, std::filesystem::file_time_type> times_;  // of the files that were read
    std::set<std::pair<std::string, std::string>> missing_;         // by folder; sentences
    std::size_t folderChanges_ = 0;                                 // when files were found
    std::map<std::string, bool> said_;  // the sentences, and whether they were taken
};

}  // namespace render
