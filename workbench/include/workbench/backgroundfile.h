// A file that is written by a thread of its own.
#pragma once

#include <base/waiting.h>

#include <cstddef>
#include <deque>
#include <string>
#include <thread>

namespace workbench {

/// Replaces the file at a path as `base::FileReplacement` does, without anybody having to wait for
/// the disk. If it goes before its end has been asked for, the file is as it was.
class BackgroundFile {
public:
    /// `path` is UTF-8.
    explicit BackgroundFile(std::string path);
    /// Waits for what was asked for.
    ~BackgroundFile();
    BackgroundFile(const BackgroundFile&) = delete;
    BackgroundFile& operator=(const BackgroundFile&) = delete;

    void write(std::string piece);
    /// Nothing follows; what was written takes the file's place.
    void end();

    enum class State { kWriting, kWritten, kFailed };
    State state() const;
    /// How many bytes the disk has not taken yet.
    std::size_t pending() const;
    /// Waits until what was asked for is done, or has failed.
    void wait();

private:
    void run();
    bool takePiece(std::string& piece);
    void writeAll();

    const std::string path_;
    mutable base::Mutex mutex_;
    base::Condition changed_;
    std::deque<std::string> pieces_;
    std::size_t pending_ = 0;
    bool ended_ = false, abandoned_ = false;
    State state_ = State::kWriting;
    std::thread thread_;  // the last: it uses the others
};

}  // namespace workbench
