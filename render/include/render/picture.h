// Pictures for surfaces, as files hold them.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace render {

/// A picture in memory.
struct Picture {
    int width = 0, height = 0;
    /// 0xAARRGGBB, rows from bottom to top.
    std::vector<std::uint32_t> texels;
    /// Whether some texel is not opaque.
    bool hasAlpha() const;
};

enum class PictureFault { kUnreadable, kTooLarge, kOtherFormat, kUnknownKind, kEmpty, kCutShort };

/// Why bytes are no picture that can be shown.
class PictureError : public std::runtime_error {
public:
    PictureError(PictureFault fault, const char* what) : std::runtime_error(what), fault_(fault) {}
    PictureFault fault() const noexcept { return fault_; }

private:
    PictureFault fault_;
};

/// Reads an SGI picture (.rgb, .rgba, .int, .inta, .sgi, .bw), plain or run-length encoded, of 8 or
/// 16 bits a channel, with one to four channels: grey, grey and alpha, color, color and alpha.
/// What a packed row lacks is 0; any bytes are read in time and memory that `kMostTexels` bounds.
/// Throws `PictureError`.
Picture readSgiPicture(std::span<const std::uint8_t> bytes);

/// Reads a picture of any of these formats, whatever its file is called: SGI; PNG, JPEG, TGA, BMP
/// and GIF; DDS in blocks of the kinds BC1 to BC3; TIFF, of 16 bits a channel at most. A file that
/// ends before its picture is refused, and so is one that would take much more memory than what it
/// shows. Throws `PictureError`, and `std::bad_alloc`.
Picture readPicture(std::span<const std::uint8_t> bytes);

/// The bytes of a plain SGI picture with 8 bits a channel: of one channel the red of each texel, of
/// two also its alpha, of three its color, of four both. Sides are 1 to 65,535.
std::string encodedSgi(const Picture& picture, int channels);

/// The picture with other sides, at least 1: each texel is the mean of those that it covers, or the
/// one that it lies in. What cannot be seen has no say in the color of what can.
Picture resized(const Picture& picture, int width, int height);

/// Pictures with more texels are refused.
inline constexpr std::size_t kMostTexels = std::size_t{4096} * 4096;

}  // namespace render
