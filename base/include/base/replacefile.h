// Files that are written whole or not at all.
#pragma once

#include <base/file.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace base {

/// A new file beside the one that it is to replace. Until it takes its place that one is as it was,
/// also when the program or the machine stops; if it never does, it is removed with this object.
///
/// Where a link leads to the file, the link stays and the file that it leads to is replaced.
/// Refused is what has no files to replace: folders, devices, and files that are write-protected,
/// which renaming alone would not mind.
class FileReplacement {
public:
    /// Makes an empty file under a name that no other file has. `path` is UTF-8. Throws
    /// `std::system_error`, whose text begins with "cannot write" and the path.
    explicit FileReplacement(const std::string& path);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// The file to write, UTF-8. It is closed before the object goes.
    const std::string& name() const noexcept { return name_; }

    /// Brings what was written down to the disk and replaces the file, whose permissions stay.
    /// Throws as the constructor does; the file to replace is then as it was.
    void takePlace();

private:
    std::string path_;              // as it was given
    std::filesystem::path target_;  // where links lead
    std::filesystem::path temporary_;
    std::string name_;
};

/// A replacement that is written piece by piece.
class ReplacementWriter {
public:
    /// Throws as `FileReplacement`, as all of its functions do.
    explicit ReplacementWriter(const std::string& path);

    void write(std::string_view bytes);
    /// Closes what was written and has it take the file's place.
    void takePlace();

private:
    [[noreturn]] void refuseWriting() const;

    std::string path_;
    FileReplacement replacement_;
    File file_;
};

/// Replaces the file at `path` (UTF-8), or makes it, with `bytes` for its content. Throws as
/// `FileReplacement`, and the old file is then as it was.
void replaceFile(const std::string& path, std::string_view bytes);

}  // namespace base
