#include <base/file.h>
#include <base/filefinder.h>
#include <base/paths.h>
#include <base/text.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace base {

namespace {

namespace fs = std::filesystem;

std::string withSlashes(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

/// Whether `path`, with slashes, leads out of the drives: to another computer (//host/share) or
/// past the names of files to the system's devices (//?/, //./, /??/).
bool leavesDrives(std::string_view path) {
    return path.starts_with("//") || path.starts_with("/?");
}

/// The computer that `path`, with slashes, leads to; empty for one that leads to none, or to one
/// that is not plain to see.
std::string hostOf(std::string_view path) {
    if (!path.starts_with("//")) return {};
    const std::string_view host = path.substr(2, path.find('/', 2) - 2);
    return host == "." || host == "?" ? std::string() : smallLetters(host);
}

}  // namespace

void FileFinder::addFolder(std::string_view folder) {
    if (folder.empty()) return;
    const auto known = std::ranges::find(folders_, folder);
    if (known == folders_.end()) {
        folders_.emplace(folders_.begin(), folder);
        ++changes_;
    } else {
        std::rotate(folders_.begin(), known, known + 1);
    }
}

void FileFinder::setLastFolders(std::vector<std::string> folders) {
    if (folders == lastFolders_) return;
    lastFolders_ = std::move(folders);
    ++changes_;
}

/// To ask another computer for a file tells it who asks, so the name, which comes from a file, is
/// followed only to one that the folders name too.
std::optional<std::string> FileFinder::locate(const std::string& name, const std::string& folder) {
    const std::string usual = withSlashes(name);
    const fs::path given = pathFrom(usual).make_preferred(), last = given.filename();
    const bool isElsewhere = leavesDrives(usual);
    if (isElsewhere) {
        const std::string host = hostOf(usual);
        const auto isThere = [&](const auto& known) { return hostOf(withSlashes(known)) == host; };
        const bool isKnown = !host.empty() && (std::ranges::any_of(folders_, isThere) ||
                                               std::ranges::any_of(lastFolders_, isThere));
        if (isKnown && isFile(given)) return textOf(given);
    } else if (given.is_absolute() && isFile(given)) {
        return textOf(given);
    }
    const auto within = [&](const std::string& known) {
        const fs::path from = pathFrom(known);
        std::optional<fs::path> found;
        if (!isElsewhere && given.is_relative()) found = fileIn(from, given);
        if (!found) found = fileIn(from, last);
        return found;
    };
    if (!folder.empty())
        if (const auto found = within(folder)) return textOf(*found);
    for (const auto* const folders : {&folders_, &lastFolders_})
        for (const std::string& known : *folders)
            if (const auto found = within(known)) return textOf(*found);
    return std::nullopt;
}

/// The file of that name, or of one that differs in large and small letters only.
std::optional<fs::path> FileFinder::fileIn(const fs::path& folder, const fs::path& name) {
    if (name.empty()) return std::nullopt;
    if (isFile(folder / name)) return folder / name;
    fs::path found = folder;
    for (const fs::path& part : name) {
        if (part == "." || part == "..") {
            found /= part;
            continue;
        }
        const Listing& listing = listingOf(found);
        const auto entry = listing.find(smallLetters(textOf(part)));
        if (entry == listing.end()) return std::nullopt;
        found /= pathFrom(entry->second);
    }
    return isFile(found) ? std::optional(found) : std::nullopt;
}

/// Read once: a file that comes later is found by its exact name.
const FileFinder::Listing& FileFinder::listingOf(const fs::path& folder) {
    const auto [entry, isNew] = listings_.try_emplace(textOf(folder));
    if (!isNew) return entry->second;
    std::error_code error;
    for (fs::directory_iterator file(folder, error), end; !error && file != end;
         file.increment(error)) {
        const std::string name = textOf(file->path().filename());
        entry->second.emplace(smallLetters(name), name);
    }
    return entry->second;
}

}  // namespace base
