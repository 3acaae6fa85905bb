// Small pictures of files, made beside the user's work.
#pragma once

#include <framework/win32.h>

#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace palettes {

/// A picture made small.
struct Thumbnail {
    static constexpr int kSide = 32;

    enum class State : std::uint8_t { kWaiting, kMissing, kUnreadable, kReady };
    State state = State::kWaiting;
    int width = 0, height = 0;  ///< of the picture
    std::string path;           ///< where it was found
    /// 0x00RRGGBB, the top row first, `kSide` by `kSide`.
    std::vector<std::uint32_t> pixels;
};

/// Reads pictures on a thread beside the caller's, each once, and keeps them small. The window gets
/// `message` when there is a new one.
class Thumbnails {
public:
    Thumbnails(HWND window, UINT message);
    ~Thumbnails();
    Thumbnails(const Thumbnails&) = delete;
    Thumbnails& operator=(const Thumbnails&) = delete;

    /// Where pictures are looked for, UTF-8. Others than before begin anew.
    void setFolders(std::vector<std::string> folders);
    /// The picture as far as it is known; what is asked for last is read first.
    Thumbnail of(const std::string& file);

private:
    void work() noexcept;

    HWND window_;
    UINT message_;
    std::mutex mutex_;
    bool ends_ = false;
    bool isWorking_ = false;  ///< or is going to
    std::vector<std::string> folders_;
    std::map<std::string, Thumbnail> known_;
    std::deque<std::string> wanted_;
    PTP_WORK work_;
};

}  // namespace palettes
