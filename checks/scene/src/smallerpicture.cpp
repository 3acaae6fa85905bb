#include "smallerpicture.h"

#include <base/file.h>
#include <base/paths.h>
#include <base/replacefile.h>
#include <quillon/fltbyteorder.h>
#include <render/picture.h>

#include <algorithm>
#include <bit>
#include <span>

namespace checks {

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kLargestFile = std::uintmax_t{256} << 20;

std::uint8_t* bytesOf(std::string& text) {
    return reinterpret_cast<std::uint8_t*>(text.data());
}

std::optional<std::string> contentOf(const fs::path& path) {
    std::error_code failure;
    std::string bytes;
    if (!base::isFile(path) || fs::file_size(path, failure) > kLargestFile || failure ||
        base::readFile(base::textOf(path), bytes))
        return std::nullopt;
    return bytes;
}

/// How many channels an SGI picture has of those that mean something; 0 for another format.
int sgiChannels(std::string& file) {
    constexpr std::uint16_t kSgi = 0x01DA;
    constexpr std::size_t kDimensions = 4, kChannels = 10;
    if (file.size() < kChannels + 2) return 0;
    std::uint16_t mark = 0, dimensions = 0, channels = 0;
    fltLoadBigEndian(bytesOf(file), mark);
    fltLoadBigEndian(bytesOf(file) + kDimensions, dimensions);
    fltLoadBigEndian(bytesOf(file) + kChannels, channels);
    if (mark != kSgi) return 0;
    return dimensions < 3 ? 1 : std::clamp<int>(channels, 1, 4);
}

bool isFree(const fs::path& path) {
    std::error_code unknown;
    return fs::symlink_status(path, unknown).type() == fs::file_type::not_found;
}

fs::path attributesOf(const fs::path& picture) {
    return base::pathFrom(base::textOf(picture) + ".attr");
}

/// What an attribute file says, of a picture with these sides: it begins with them, 32 bits each.
std::string withSides(std::string attributes, int width, int height) {
    constexpr std::size_t kHeight = 4, kSides = 8;
    if (attributes.size() < kSides) return {};
    fltStoreBigEndian(bytesOf(attributes), width);
    fltStoreBigEndian(bytesOf(attributes) + kHeight, height);
    return attributes;
}

}  // namespace

void SmallerPicture::write() const {
    if (!bytes.empty()) base::replaceFile(base::textOf(path), bytes);
    if (!attributes.empty()) base::replaceFile(base::textOf(attributesOf(path)), attributes);
}

std::optional<SmallerPicture> smallerPicture(const fs::path& path, std::uint32_t most) {
    std::optional<std::string> file = contentOf(path);
    if (!file || most == 0) return std::nullopt;
    render::Picture picture;
    try {
        // NOLINTNEXTLINE(clang-analyzer-cplusplus.InnerPointer): the text stays as it is.
        picture = render::readPicture({bytesOf(*file), file->size()});
    } catch (const render::PictureError&) {
        return std::nullopt;
    }
    const auto sideFor = [&](int side) {
        return static_cast<int>(std::bit_floor(std::min(static_cast<std::uint32_t>(side), most)));
    };
    const int width = sideFor(picture.width), height = sideFor(picture.height);
    if (picture.texels.empty() || (width == picture.width && height == picture.height))
        return std::nullopt;
    const int sgi = sgiChannels(*file), channels = sgi != 0 ? sgi : picture.hasAlpha() ? 4 : 3;
    SmallerPicture made;
    made.bytes = render::encodedSgi(render::resized(picture, width, height), channels);
    std::string name = base::textOf(path.stem()), ending = base::textOf(path.extension());
    if (sgi == 0) {
        // Pictures of one name in two formats get one each.
        if (!ending.empty()) name.append("_").append(ending, 1);
        ending = channels == 4 ? ".rgba" : ".rgb";
    }
    name.append("_").append(std::to_string(width)).append("x").append(std::to_string(height));
    for (int i = 2;; ++i) {
        made.path = path.parent_path() / base::pathFrom(name + ending);
        if (isFree(made.path)) break;
        if (contentOf(made.path) == made.bytes) {
            made.bytes.clear();
            break;
        }
        constexpr int kMostTries = 100;
        if (i > kMostTries) return std::nullopt;
        if (i > 2) name.resize(name.rfind('_'));
        name.append("_").append(std::to_string(i));
    }
    if (isFree(attributesOf(made.path)))
        made.attributes =
            withSides(contentOf(attributesOf(path)).value_or(std::string()), width, height);
    return made;
}

}  // namespace checks
