#include <base/replacefile.h>
#include <workbench/backgroundfile.h>

#include <exception>
#include <mutex>
#include <utility>

namespace workbench {

BackgroundFile::BackgroundFile(std::string path)
    : path_(std::move(path)), thread_([this] { run(); }) {}

BackgroundFile::~BackgroundFile() {
    {
        const std::lock_guard lock(mutex_);
        abandoned_ = !ended_;
    }
    changed_.notify_all();
    wait();
}

void BackgroundFile::write(std::string piece) {
    {
        const std::lock_guard lock(mutex_);
        pending_ += piece.size();
        pieces_.push_back(std::move(piece));
    }
    changed_.notify_all();
}

void BackgroundFile::end() {
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_all();
}

BackgroundFile::State BackgroundFile::state() const {
    const std::lock_guard lock(mutex_);
    return state_;
}

std::size_t BackgroundFile::pending() const {
    const std::lock_guard lock(mutex_);
    return pending_;
}

void BackgroundFile::wait() {
    if (thread_.joinable()) thread_.join();
}

void BackgroundFile::run() {
    bool written = false;
    try {
        writeAll();
        written = true;
    } catch (const std::exception&) {
        // The state says so.
    }
    const std::lock_guard lock(mutex_);
    state_ = written && !abandoned_ ? State::kWritten : State::kFailed;
}

// False at the end, and when nobody wants the file any more.
bool BackgroundFile::takePiece(std::string& piece) {
    std::unique_lock lock(mutex_);
    pending_ -= piece.size();
    changed_.wait(lock, [this] { return abandoned_ || ended_ || !pieces_.empty(); });
    if (abandoned_ || pieces_.empty()) return false;
    piece = std::move(pieces_.front());
    pieces_.pop_front();
    return true;
}

void BackgroundFile::writeAll() {
    base::ReplacementWriter file(path_);
    std::string piece;
    while (takePiece(piece)) file.write(piece);
    {
        const std::lock_guard lock(mutex_);
        if (abandoned_) return;
    }
    file.takePlace();
}

}  // namespace workbench
