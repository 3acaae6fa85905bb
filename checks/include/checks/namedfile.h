// Files that databases name, other databases and pictures: where they are and how large.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace checks {

/// The file's part of the name in an external reference, which may name a node within the file,
/// behind it.
std::string fileOfReference(std::string_view name);

/// Names of other computers and of devices are not followed: to ask for them tells who is asking.
bool isOnOtherComputer(std::string_view name) noexcept;

/// Whether the name begins at a drive or at the root of one, on any platform.
bool isAbsoluteName(std::string_view name) noexcept;

/// The file that `name` (UTF-8) means, where there is one: at its place, below one of `folders`, or
/// in one of them by its last part alone. Empty otherwise, and for names of other computers.
std::filesystem::path findNamedFile(std::string name, const std::vector<std::string>& folders);

struct PictureSize {
    std::uint32_t width;
    std::uint32_t height;
};

/// The size of a picture in the SGI, PNG or BMP format, from its first bytes; none for other
/// formats and for files that cannot be read.
std::optional<PictureSize> pictureSizeOf(const std::filesystem::path& path);

}  // namespace checks
