// Pictures made as small as a target asks for, beside those that are too large.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace checks {

/// A picture that is to stand beside another one, with its attribute file.
struct SmallerPicture {
    std::filesystem::path path;
    std::string bytes;       ///< empty where the file is there already
    std::string attributes;  ///< empty for none to write

    /// Throws `std::system_error` where it cannot.
    void write() const;
};

/// One for the picture at `path`: each side the greatest power of two that it holds and that is at
/// most `most`. It is a plain SGI picture with the channels of the other, named after it and its
/// sides. No file that is there is written again: one with the same bytes serves, and next to
/// another one the name gets a number. The attribute file of the picture, where it has one, comes
/// along with the new sides.
///
/// Nothing where the picture cannot be read or needs no other sides. Throws `std::bad_alloc`.
std::optional<SmallerPicture> smallerPicture(const std::filesystem::path& path, std::uint32_t most);

}  // namespace checks
