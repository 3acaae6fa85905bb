#include "filetree.h"

#include <base/file.h>
#include <base/paths.h>
#include <base/text.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <system_error>

namespace kilnbatch {

namespace {

namespace fs = std::filesystem;

bool isModel(const fs::path& path) {
    return base::sameTextIgnoringCase(base::textOf(path.extension()), ".flt");
}

/// Whether a path from a list stays below the folder that it is relative to.
bool staysBelow(const fs::path& path) {
    return !path.empty() && !path.has_root_path() && *path.begin() != "..";
}

std::string missing(const std::string& path, std::error_code reason) {
    return "cannot read " + path + ": " + reason.message();
}

}  // namespace

bool fitsPattern(std::string_view path, std::string_view pattern) {
    if (pattern.empty()) return path.empty();
    if (pattern.starts_with("**")) {
        const std::string_view rest =
            pattern.substr(pattern.find_first_not_of('*', 2) == std::string_view::npos
                               ? pattern.size()
                               : pattern.find_first_not_of('*', 2));
        // "**/" also stands for no folder at all.
        if (rest.starts_with('/') && fitsPattern(path, rest.substr(1))) return true;
        for (std::size_t taken = 0; taken <= path.size(); ++taken)
            if (fitsPattern(path.substr(taken), rest)) return true;
        return false;
    }
    if (pattern[0] == '*') {
        for (std::size_t taken = 0;; ++taken) {
            if (fitsPattern(path.substr(taken), pattern.substr(1))) return true;
            if (taken == path.size() || path[taken] == '/') return false;
        }
    }
    if (path.empty() || (pattern[0] == '?' ? path[0] == '/' : path[0] != pattern[0])) return false;
    return fitsPattern(path.substr(1), pattern.substr(1));
}

FileTree::FileTree(const std::string& in, const std::string& list) {
    const fs::path path = base::pathFrom(in);
    std::error_code reason;
    const fs::file_status status = fs::status(path, reason);
    if (fs::is_directory(status)) {
        root_ = path;
        if (!list.empty()) readList(list);
    } else if (!list.empty()) {
        throw std::runtime_error("a list needs a folder, which " + in + " is not");
    } else if (fs::is_regular_file(status)) {
        root_ = path.has_parent_path() ? path.parent_path() : ".";
        if (isModel(path)) {
            list_ = {base::genericTextOf(path.filename())};
            isList_ = true;
        } else {
            readList(in);
        }
    } else if (const std::size_t wild = in.find_first_of("*?"); wild != std::string::npos) {
        const std::size_t slash = in.substr(0, wild).find_last_of('/');
        root_ =
            slash == std::string::npos ? fs::path(".") : base::pathFrom(in.substr(0, slash + 1));
        pattern_ = slash == std::string::npos ? in : in.substr(slash + 1);
    } else {
        throw std::runtime_error(
            missing(in, reason ? reason : std::make_error_code(std::errc::invalid_argument)));
    }
}

void FileTree::readList(const std::string& list) {
    std::string text;
    if (const std::error_code reason = base::readFile(list, text))
        throw std::runtime_error(missing(list, reason));
    isList_ = true;
    std::set<std::string> known;
    std::size_t number = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        std::string line = text.substr(at, end - at);
        at = end + 1;
        ++number;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) continue;
        const fs::path path = base::pathFrom(line).lexically_normal();
        if (!staysBelow(path) || !isModel(path))
            throw std::runtime_error(list + ":" + std::to_string(number) + ": \"" + line +
                                     "\" is no .flt file below " + base::textOf(root_));
        if (known.insert(base::genericTextOf(path)).second)
            list_.push_back(base::genericTextOf(path));
    }
}

void FileTree::enter(const fs::path& folder) {
    Folder entered{folder, {}};
    const fs::path path = root_ / folder;
    std::error_code reason;
    for (fs::directory_iterator entry(path, reason), end; !reason && entry != end;
         entry.increment(reason))
        entered.entries.push_back(entry->path().filename());
    if (reason) unreadable_.push_back(missing(base::textOf(path), reason));
    std::ranges::sort(entered.entries, std::ranges::greater());
    open_.push_back(std::move(entered));
}

bool FileTree::isWanted(const fs::path& relative) const {
    return isModel(relative) &&
           (pattern_.empty() || fitsPattern(base::genericTextOf(relative), pattern_));
}

std::optional<fs::path> FileTree::next() {
    if (isList_) {
        if (listed_ == list_.size()) return std::nullopt;
        return base::pathFrom(list_[listed_++]);
    }
    if (!begun_) enter({});
    begun_ = true;
    while (!open_.empty()) {
        if (open_.back().entries.empty()) {
            open_.pop_back();
            continue;
        }
        const fs::path relative = open_.back().path / open_.back().entries.back();
        open_.back().entries.pop_back();
        std::error_code ignored;
        const fs::path path = root_ / relative;
        const fs::file_status link = fs::symlink_status(path, ignored);
        if (fs::is_directory(link)) {
            const bool isOwn = relative.filename() == kBatchFolder;
            if (!isOwn && (leftOut_.empty() || !fs::equivalent(path, leftOut_, ignored)))
                enter(relative);
        } else if (isWanted(relative) && fs::is_regular_file(path, ignored)) {
            return relative;
        }
    }
    return std::nullopt;
}

void FileTree::rewind() {
    listed_ = 0;
    begun_ = false;
    open_.clear();
    unreadable_.clear();
}

}  // namespace kilnbatch
