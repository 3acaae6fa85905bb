// A file that takes another's place when it is complete.
#pragma once

#include <string>

/// A new file beside the one that it is to replace. Until it takes its place the other is as it
/// was; if it never does, it is removed when this object goes. It must be closed by then.
class FltReplaceFile {
public:
    /// Chooses a name beside `path` (UTF-8) that no file has. Creates nothing.
    explicit FltReplaceFile(const std::string& path);
    ~FltReplaceFile();
    FltReplaceFile(const FltReplaceFile&) = delete;
    FltReplaceFile& operator=(const FltReplaceFile&) = delete;

    /// The file to write, UTF-8.
    const std::string& name() const noexcept { return name_; }

    /// Replaces the file at `path` by this one. Throws `std::system_error`, whose text names the
    /// path, when it cannot or when that file is write-protected; that file is then as it was.
    void takePlace();

private:
    std::string path_;
    std::string name_;
};
