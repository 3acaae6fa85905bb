// Which files a program reads.
#pragma once

#include <filesystem>
#include <map>
#include <optional>

namespace base {

/// While this object lives, knows every file that is opened for reading with `openFile` and what is
/// built upon it, or looked for with `isFile`; on Windows those of its own module file. There is at
/// most one at a time, for one thread.
class FileReads {
public:
    using Time = std::filesystem::file_time_type;

    FileReads();
    ~FileReads();
    FileReads(const FileReads&) = delete;
    FileReads& operator=(const FileReads&) = delete;

    /// Absolute paths, each with the time at which the file had been written when it was first
    /// asked for; none for one that was not there.
    const std::map<std::filesystem::path, std::optional<Time>>& files() const noexcept {
        return files_;
    }
    /// False when there was no memory for one of them.
    bool areComplete() const noexcept { return areComplete_; }

    /// Tells whoever listens that `path` is about to be read or looked for.
    static void note(const std::filesystem::path& path) noexcept;

private:
    std::map<std::filesystem::path, std::optional<Time>> files_;
    bool areComplete_ = true;
};

}  // namespace base
