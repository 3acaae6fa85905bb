#include "thumbnails.h"

#include <base/file.h>
#include <base/filefinder.h>
#include <render/picture.h>

#include <algorithm>
#include <new>
#include <span>
#include <utility>

namespace palettes {

namespace {

/// Each small pixel is the mean of those that it stands for, over a light ground.
std::vector<std::uint32_t> madeSmall(const render::Picture& picture) {
    constexpr int kSide = Thumbnail::kSide;
    constexpr std::uint32_t kGround = 0xE0;
    std::vector<std::uint32_t> pixels(std::size_t{kSide} * kSide);
    const auto range = [](int i, int whole) {
        const auto begin = static_cast<int>(std::int64_t{whole} * i / kSide);
        const auto end = static_cast<int>(std::int64_t{whole} * (i + 1) / kSide);
        return std::pair(begin, std::max(end, begin + 1));
    };
    for (int y = 0; y < kSide; ++y) {
        const auto [top, bottom] = range(y, picture.height);
        for (int x = 0; x < kSide; ++x) {
            const auto [left, right] = range(x, picture.width);
            std::uint64_t sums[3] = {}, count = 0;
            for (int v = top; v < bottom; ++v) {
                for (int u = left; u < right; ++u, ++count) {
                    const std::size_t at =
                        static_cast<std::size_t>(v) * static_cast<std::size_t>(picture.width) +
                        static_cast<std::size_t>(u);
                    const std::uint32_t texel = picture.texels[at], alpha = texel >> 24;
                    for (unsigned c = 0; c < 3; ++c)
                        sums[c] +=
                            ((texel >> 8 * c & 0xFF) * alpha + kGround * (255 - alpha)) / 255;
                }
            }
            std::uint32_t pixel = 0;
            for (unsigned c = 0; c < 3; ++c)
                pixel |= static_cast<std::uint32_t>(sums[c] / count) << 8 * c;
            // The picture's rows are from bottom to top.
            pixels[static_cast<std::size_t>(kSide - 1 - y) * kSide + static_cast<std::size_t>(x)] =
                pixel;
        }
    }
    return pixels;
}

Thumbnail read(const std::string& file, const std::vector<std::string>& folders) {
    Thumbnail made;
    made.state = Thumbnail::State::kMissing;
    try {
        base::FileFinder files;
        files.setLastFolders(folders);
        made.path = files.locate(file).value_or(std::string());
        if (made.path.empty()) return made;
        made.state = Thumbnail::State::kUnreadable;
        std::string bytes;
        if (base::readFile(made.path, bytes)) return made;
        const render::Picture picture = render::readPicture(
            std::span{reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
        made.width = picture.width;
        made.height = picture.height;
        made.pixels = madeSmall(picture);
        made.state = Thumbnail::State::kReady;
    } catch (const std::exception&) {
        made.pixels.clear();  // it is shown without a picture
    }
    return made;
}

}  // namespace

Thumbnails::Thumbnails(HWND window, UINT message)
    : window_(window),
      message_(message),
      work_(::CreateThreadpoolWork([](PTP_CALLBACK_INSTANCE, void* self,
                                      PTP_WORK) { static_cast<Thumbnails*>(self)->work(); },
                                   this, nullptr)) {
    if (work_ == nullptr) throw std::bad_alloc();
}

// Not a thread of its own that would have to end first: where the plug-in is unloaded no thread
// can.
Thumbnails::~Thumbnails() {
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    ::WaitForThreadpoolWorkCallbacks(work_, TRUE);
    ::CloseThreadpoolWork(work_);
}

void Thumbnails::setFolders(std::vector<std::string> folders) {
    const std::lock_guard lock(mutex_);
    if (folders == folders_) return;
    folders_ = std::move(folders);
    known_.clear();
    wanted_.clear();
}

Thumbnail Thumbnails::of(const std::string& file) {
    const std::lock_guard lock(mutex_);
    const auto [known, isNew] = known_.try_emplace(file);
    if (isNew) {
        wanted_.push_front(file);
        if (!std::exchange(isWorking_, true)) ::SubmitThreadpoolWork(work_);
    }
    return known->second;
}

void Thumbnails::work() noexcept {
    std::unique_lock lock(mutex_);
    while (!ends_ && !wanted_.empty()) {
        const std::string file = wanted_.front();
        wanted_.pop_front();
        const std::vector<std::string> folders = folders_;
        lock.unlock();
        Thumbnail made = read(file, folders);
        lock.lock();
        if (folders == folders_) {
            known_[file] = std::move(made);
            ::PostMessageW(window_, message_, 0, 0);
        }
    }
    isWorking_ = false;
}

}  // namespace palettes
