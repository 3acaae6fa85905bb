// Whether a file is still what it was.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace base {

/// Tells contents apart that differ by accident; somebody who means to can make two alike.
class ContentHash {
public:
    /// Goes on with `bytes`, in pieces of any size.
    void add(std::string_view bytes) noexcept;
    std::uint64_t value() const noexcept;

private:
    static constexpr std::size_t kLanes = 4;  // which a processor works on at the same time
    using Lanes = std::array<std::uint64_t, kLanes>;

    void mix(const char* blocks, std::size_t count) noexcept;

    Lanes lanes_ = {1, 2, 3, 4};
    std::uint64_t length_ = 0;
    char rest_[sizeof(Lanes)] = {};  // the bytes behind the last whole block
};

/// A file as it was at some time: when it was written last, its length and its content.
class FileStamp {
public:
    /// Of the file at `path` (UTF-8), whose content is yet to be set; nothing when there is none.
    /// To be taken before a file is read, so that a change in between is noticed.
    static std::optional<FileStamp> of(const std::string& path);
    /// The same with the content that the file has now, for which it is read.
    static std::optional<FileStamp> read(const std::string& path);
    void setContent(const ContentHash& content) noexcept { content_ = content.value(); }

    /// Whether the file at `path` has another content now. False when there is none, or when it
    /// cannot be read: then nobody knows. It is only read when its time says that it was written.
    bool isOutdated(const std::string& path) const;

private:
    std::filesystem::file_time_type time_;
    std::uintmax_t length_ = 0;
    std::uint64_t content_ = 0;
};

}  // namespace base
