#include "texts.h"

#include <base/file.h>
#include <base/paths.h>
#include <render/texturestore.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <new>
#include <optional>
#include <utility>

namespace render {
namespace {

namespace fs = std::filesystem;

// Beyond this many texels pictures are kept small.
constexpr std::size_t kManyTexels = 64u << 20;
constexpr int kSmallBits = 7;
constexpr std::size_t kMostFailures = 10;
constexpr std::uintmax_t kLargestFile = 256u << 20;

std::vector<std::uint8_t> contentOf(const fs::path& path) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    if (error) throw PictureError(PictureFault::kUnreadable, "cannot be read");
    if (size > kLargestFile) throw PictureError(PictureFault::kTooLarge, "too large a picture");
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    if (!file) throw PictureError(PictureFault::kUnreadable, "cannot be read");
    return bytes;
}

std::optional<fs::file_time_type> timeOf(const std::string& path) {
    std::error_code error;
    const fs::file_time_type time = fs::last_write_time(base::pathFrom(path), error);
    return error ? std::nullopt : std::optional(time);
}

std::string pathOfUse(const std::string& picture) {
    return picture + ".attr";
}

/// How the picture is used, as the file beside it says.
TextureUse useBeside(const std::string& picture) {
    constexpr std::size_t kMost = 4096;  // more than is read
    const fs::path path = base::pathFrom(pathOfUse(picture));
    if (!base::isFile(path)) return {};
    std::vector<std::uint8_t> bytes(kMost);
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(kMost));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    return readTextureUse(bytes);
}

TextId sentenceFor(PictureFault fault) {
    switch (fault) {
        case PictureFault::kUnreadable:
            return TextId::kPictureUnreadable;
        case PictureFault::kTooLarge:
            return TextId::kPictureTooLarge;
        case PictureFault::kOtherFormat:
            return TextId::kPictureOther;
        case PictureFault::kUnknownKind:
            return TextId::kPictureUnknown;
        case PictureFault::kEmpty:
            return TextId::kPictureEmpty;
        case PictureFault::kCutShort:
            return TextId::kPictureCutShort;
    }
    return TextId::kPictureUnreadable;
}

}  // namespace

const Texture* TextureStore::find(const std::string& name, const std::string& folder) {
    if (name.empty()) return nullptr;
    Entry& entry = entries_[folder.empty() ? name : folder + '\0' + name];
    if (!entry.texture && !entry.isDamaged && entry.tried != files_.folderChanges() + 1)
        load(name, folder, entry);
    return entry.texture.get();
}

const Texture& TextureStore::missing() {
    static const Texture board = [] {
        constexpr int kCells = 8, kCell = 4, kSide = kCells * kCell;
        constexpr std::uint32_t kLight = 0xFFE8E0E6, kDark = 0xFFA85C92;
        Picture picture{kSide, kSide, {}};
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x)
                picture.texels.push_back((x / kCell + y / kCell) % 2 == 0 ? kDark : kLight);
        return Texture(picture);
    }();
    return board;
}

void TextureStore::load(const std::string& name, const std::string& folder, Entry& entry) {
    entry.tried = files_.folderChanges() + 1;
    try {
        const std::optional<std::string> path = files_.locate(name, folder);
        if (!path) {
            if (missed_.insert(name).second)
                failures_.push_back(textOf(TextId::kNoSuchPicture, {name}));
            return;
        }
        entry.path = *path;
        Loaded& loaded = textures_[*path];
        loaded.times = FileTimes::of(*path);
        if (!loaded.texture) {
            const Picture picture = readPicture(contentOf(base::pathFrom(*path)));
            const int most = texels_ > kManyTexels ? kSmallBits : Texture::kMostBits;
            loaded.texture = std::make_shared<const Texture>(picture, most, useBeside(*path));
            texels_ += loaded.texture->size();
        }
        entry.texture = loaded.texture;
    } catch (const std::bad_alloc&) {
        entry.isDamaged = true;
        failures_.push_back(textOf(TextId::kPictureOutOfMemory, {name}));
    } catch (const PictureError& error) {
        entry.isDamaged = true;
        failures_.push_back(textOf(sentenceFor(error.fault()), {name}));
    } catch (const std::exception&) {
        entry.isDamaged = true;
        failures_.push_back(textOf(TextId::kPictureUnreadable, {name}));
    }
}

std::vector<std::string> TextureStore::takeFailures() {
    if (failures_.size() > kMostFailures) {
        const std::size_t others = failures_.size() - (kMostFailures - 1);
        failures_.resize(kMostFailures - 1);
        failures_.push_back(textOf(TextId::kMorePictures, {std::to_string(others)}));
    }
    return std::exchange(failures_, {});
}

FileTimes FileTimes::of(const std::string& path) {
    return {timeOf(path), timeOf(pathOfUse(path))};
}

bool TextureStore::noticeChanges() {
    former_.clear();
    bool anyChanged = false;
    std::erase_if(textures_, [&](const auto& known) {
        const auto& [path, loaded] = known;
        if (loaded.times == FileTimes::of(path)) return false;
        if (loaded.texture) texels_ -= loaded.texture->size();
        former_.push_back(loaded.texture);
        return anyChanged = true;
    });
    files_.forgetListings();
    for (auto& [key, entry] : entries_) {
        if (!entry.path.empty() && textures_.contains(entry.path)) continue;
        const std::size_t end = key.find('\0');
        const bool hasFolder = end != std::string::npos;
        anyChanged = anyChanged || !entry.path.empty() ||
                     files_.locate(hasFolder ? key.substr(end + 1) : key,
                                   hasFolder ? key.substr(0, end) : std::string());
        entry.texture = nullptr;
        entry.path.clear();
        entry.isDamaged = false;
        entry.tried = 0;
    }
    return anyChanged;
}

void TextureStore::clear() {
    former_.clear();
    entries_.clear();
    textures_.clear();
    files_.forgetListings();
    failures_.clear();
    missed_.clear();
    texels_ = 0;
}

}  // namespace render
