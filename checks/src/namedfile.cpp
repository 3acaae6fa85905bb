#include <checks/namedfile.h>

#include <base/file.h>
#include <base/paths.h>
#include <quillon/fltbyteorder.h>

#include <algorithm>
#include <array>

namespace checks {

namespace fs = std::filesystem;

std::string fileOfReference(std::string_view name) {
    return std::string(name.substr(0, name.find('<')));
}

bool isOnOtherComputer(std::string_view name) noexcept {
    const auto isSlash = [](char character) { return character == '/' || character == '\\'; };
    return name.size() > 1 && isSlash(name[0]) && isSlash(name[1]);
}

bool isAbsoluteName(std::string_view name) noexcept {
    if (name.empty()) return false;
    return name[0] == '/' || name[0] == '\\' || (name.size() > 1 && name[1] == ':');
}

fs::path findNamedFile(std::string name, const std::vector<std::string>& folders) {
    if (name.empty() || isOnOtherComputer(name)) return {};
    std::ranges::replace(name, '\\', '/');
    fs::path path = base::pathFrom(name);
    if (isAbsoluteName(name)) {
        if (base::isFile(path)) return path;
    }
    for (const std::string& folder : folders) {
        fs::path beside = base::pathFrom(folder) / path.relative_path();
        if (base::isFile(beside)) return beside;
        // As other programs do: by its name alone.
        fs::path byName = base::pathFrom(folder) / path.filename();
        if (base::isFile(byName)) return byName;
    }
    return {};
}

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
