// How large the picture in a file is, from its first bytes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace checks {

struct PictureSize {
    std::uint32_t width;
    std::uint32_t height;
};

/// The size of a picture in the SGI, PNG or BMP format; none for other formats and for files that
/// cannot be read.
std::optional<PictureSize> pictureSizeOf(const std::filesystem::path& path);

}  // namespace checks
