#include <base/file.h>
#include <base/filestamp.h>
#include <base/paths.h>

#include <algorithm>
#include <cstring>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

namespace base {

namespace {

std::uint64_t mixed(std::uint64_t state, std::uint64_t word) noexcept {
    constexpr std::uint64_t kFactor = 0xFF51AFD7ED558CCD;
    state = (state ^ word) * kFactor;
    return state ^ state >> 32;
}

/// When it was written, and its length.
std::optional<std::pair<std::filesystem::file_time_type, std::uintmax_t>> lookAt(
    const std::string& path) {
    std::error_code reason;
    const std::filesystem::path file = pathFrom(path);
    const auto time = std::filesystem::last_write_time(file, reason);
    if (reason) return std::nullopt;
    const std::uintmax_t length = std::filesystem::file_size(file, reason);
    if (reason) return std::nullopt;
    return std::pair(time, length);
}

/// Nothing when the file cannot be read.
std::optional<std::uint64_t> contentOf(const std::string& path) {
    const File file = openFile(pathFrom(path), false);
    if (!file) return std::nullopt;
    ContentHash content;
    std::vector<char> piece(std::size_t{1} << 16);
    while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), file.get()))
        content.add({piece.data(), count});
    return content.value();
}

}  // namespace

void ContentHash::mix(const char* blocks, std::size_t count) noexcept {
    Lanes lanes = lanes_;
    for (; count > 0; --count, blocks += sizeof lanes) {
        Lanes words;
        std::memcpy(words.data(), blocks, sizeof words);
        for (std::size_t i = 0; i < kLanes; ++i) lanes[i] = mixed(lanes[i], words[i]);
    }
    lanes_ = lanes;
}

void ContentHash::add(std::string_view bytes) noexcept {
    const std::size_t kept = length_ % sizeof rest_;
    length_ += bytes.size();
    if (kept > 0) {
        const std::size_t more = bytes.copy(rest_ + kept, sizeof rest_ - kept);
        bytes.remove_prefix(more);
        if (kept + more < sizeof rest_) return;
        mix(rest_, 1);
    }
    const std::size_t blocks = bytes.size() / sizeof rest_;
    mix(bytes.data(), blocks);
    bytes.remove_prefix(blocks * sizeof rest_);
    bytes.copy(rest_, bytes.size());
}

std::uint64_t ContentHash::value() const noexcept {
    ContentHash end = *this;
    std::fill(end.rest_ + length_ % sizeof rest_, end.rest_ + sizeof rest_, '\0');
    end.mix(end.rest_, 1);
    std::uint64_t value = length_;
    for (const std::uint64_t lane : end.lanes_) value = mixed(value, lane);
    return value;
}

std::optional<FileStamp> FileStamp::of(const std::string& path) {
    const auto seen = lookAt(path);
    if (!seen) return std::nullopt;
    FileStamp stamp;
    std::tie(stamp.time_, stamp.length_) = *seen;
    return stamp;
}

std::optional<FileStamp> FileStamp::read(const std::string& path) {
    std::optional<FileStamp> stamp = of(path);
    const std::optional<std::uint64_t> content = contentOf(path);
    if (!stamp || !content) return std::nullopt;
    stamp->content_ = *content;
    return stamp;
}

bool FileStamp::isOutdated(const std::string& path) const {
    const auto seen = lookAt(path);
    if (!seen) return false;
    const auto& [time, length] = *seen;
    if (length != length_) return true;
    if (time == time_) return false;
    return contentOf(path).value_or(content_) != content_;
}

}  // namespace base
