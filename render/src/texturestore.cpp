#include "texts.h"

#include <base/paths.h>
#include <base/text.h>
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

/// Paths come from either kind of system.
std::string withSlashes(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

/// Whether `path`, with slashes, leads out of the drives: to another computer (//host/share) or
/// past the names of files to the system's devices (//?/, //./, /??/).
bool leavesDrives(std::string_view path) {
    return path.starts_with("//") || path.starts_with("/?");
}

/// The computer that `path`, with slashes, leads to; empty for one that leads to none, or to one
/// that is not plain to see.
std::string hostOf(std::string_view path) {
    if (!path.starts_with("//")) return {};
    const std::string_view host = path.substr(2, path.find('/', 2) - 2);
    return host == "." || host == "?" ? std::string() : base::smallLetters(host);
}

bool isFile(const fs::path& path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

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
    if (!isFile(path)) return {};
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

void TextureStore::addFolder(std::string_view folder) {
    if (folder.empty()) return;
    const auto known = std::find(folders_.begin(), folders_.end(), folder);
    if (known == folders_.end())
        folders_.emplace_back(folder);
    else
        std::rotate(known, known + 1, folders_.end());
}

const Texture* TextureStore::find(const std::string& name, const std::string& folder) {
    if (name.empty()) return nullptr;
    Entry& entry = entries_[folder.empty() ? name : folder + '\0' + name];
    if (!entry.texture && !entry.isDamaged &&
        (entry.foldersTried == 0 || entry.foldersTried <= folders_.size()))
        load(name, folder, entry);
    return entry.texture.get();
}

/// To ask another computer for a file tells it who asks, so the name, which comes from a file, is
/// followed only to one that the folders name too.
std::optional<std::string> TextureStore::locate(const std::string& name,
                                                const std::string& folder) {
    const std::string usual = withSlashes(name);
    const fs::path given = base::pathFrom(usual).make_preferred(), last = given.filename();
    const bool isElsewhere = leavesDrives(usual);
    if (isElsewhere) {
        const std::string host = hostOf(usual);
        const bool isKnown = !host.empty() && std::ranges::any_of(folders_, [&](const auto& known) {
            return hostOf(withSlashes(known)) == host;
        });
        if (isKnown && isFile(given)) return base::textOf(given);
    } else if (given.is_absolute() && isFile(given)) {
        return base::textOf(given);
    }
    const auto within = [&](const std::string& known) {
        const fs::path from = base::pathFrom(known);
        std::optional<fs::path> found;
        if (!isElsewhere && given.is_relative()) found = fileIn(from, given);
        if (!found) found = fileIn(from, last);
        return found;
    };
    if (!folder.empty())
        if (const auto found = within(folder)) return base::textOf(*found);
    for (auto known = folders_.rbegin(); known != folders_.rend(); ++known)
        if (const auto found = within(*known)) return base::textOf(*found);
    return std::nullopt;
}

/// The file of that name, or of one that differs in large and small letters only.
std::optional<fs::path> TextureStore::fileIn(const fs::path& folder, const fs::path& name) {
    if (name.empty()) return std::nullopt;
    if (isFile(folder / name)) return folder / name;
    fs::path found = folder;
    for (const fs::path& part : name) {
        if (part == "." || part == "..") {
            found /= part;
            continue;
        }
        const Listing& listing = listingOf(found);
        const auto entry = listing.find(base::smallLetters(base::textOf(part)));
        if (entry == listing.end()) return std::nullopt;
        found /= base::pathFrom(entry->second);
    }
    return isFile(found) ? std::optional(found) : std::nullopt;
}

/// Read once: a file that comes later is found by its exact name.
const TextureStore::Listing& TextureStore::listingOf(const fs::path& folder) {
    const auto [entry, isNew] = listings_.try_emplace(base::textOf(folder));
    if (!isNew) return entry->second;
    std::error_code error;
    for (fs::directory_iterator file(folder, error), end; !error && file != end;
         file.increment(error)) {
        const std::string name = base::textOf(file->path().filename());
        entry->second.emplace(base::smallLetters(name), name);
    }
    return entry->second;
}

void TextureStore::load(const std::string& name, const std::string& folder, Entry& entry) {
    entry.foldersTried = folders_.size() + 1;
    try {
        const std::optional<std::string> path = locate(name, folder);
        if (!path) {
            if (!std::exchange(entry.isMissed, true))
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
    listings_.clear();
    for (auto& [key, entry] : entries_) {
        if (!entry.path.empty() && textures_.contains(entry.path)) continue;
        const std::size_t end = key.find('\0');
        const bool hasFolder = end != std::string::npos;
        anyChanged = anyChanged || !entry.path.empty() ||
                     locate(hasFolder ? key.substr(end + 1) : key,
                            hasFolder ? key.substr(0, end) : std::string());
        entry.texture = nullptr;
        entry.path.clear();
        entry.isDamaged = false;
        entry.foldersTried = 0;
    }
    return anyChanged;
}

void TextureStore::clear() {
    former_.clear();
    entries_.clear();
    textures_.clear();
    listings_.clear();
    failures_.clear();
    texels_ = 0;
}

}  // namespace render
