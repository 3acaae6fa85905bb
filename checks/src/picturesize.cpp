#include "picturesize.h"

#include <base/file.h>
#include <quillon/fltbyteorder.h>

#include <array>
#include <cstring>

namespace checks {

std::optional<PictureSize> pictureSizeOf(const std::filesystem::path& path) {
    const base::File file = base::openFile(path, false);
    std::array<std::uint8_t, 32> head{};
    if (!file || std::fread(head.data(), 1, head.size(), file.get()) < 28) return std::nullopt;
    const auto big16 = [&](std::size_t at) {
        std::uint16_t value = 0;
        fltLoadBigEndian(&head[at], value);
        return std::uint32_t{value};
    };
    const auto big32 = [&](std::size_t at) {
        std::uint32_t value = 0;
        fltLoadBigEndian(&head[at], value);
        return value;
    };
    const auto little32 = [&](std::size_t at) { return __builtin_bswap32(big32(at)); };
    constexpr std::uint32_t kSgi = 0x01DA, kPng = 0x89504E47, kBmp = 0x424D;
    if (big16(0) == kSgi) return PictureSize{big16(6), big16(8)};
    if (big32(0) == kPng) return PictureSize{big32(16), big32(20)};
    if (big16(0) == kBmp) {
        // A picture that stands from top to bottom has a height below 0.
        const auto height = static_cast<std::int32_t>(little32(22));
        const std::uint32_t rows = height < 0 ? 0 - little32(22) : little32(22);
        return PictureSize{little32(18), rows};
    }
    return std::nullopt;
}

}  // namespace checks
