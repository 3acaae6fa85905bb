// A progress line for large files.
#pragma once

#include <cstddef>

namespace fltool {

/// Shows on the error output how far a file has been read, when that is a terminal and the file is
/// large enough to keep its user waiting. The line is gone when the object is.
class Progress {
public:
    /// `size` is the file's, in bytes. With `quietOnTerminal` a standard output that is itself a
    /// terminal, and so shows how things go, keeps the line away.
    explicit Progress(std::size_t size, bool quietOnTerminal = false);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// `offset` bytes have been read.
    void reached(std::size_t offset) {
        if (offset >= next_) show(offset);
    }

private:
    void show(std::size_t offset);

    std::size_t size_;
    std::size_t next_;  ///< where the line changes next
    bool shown_ = false;
};

}  // namespace fltool
