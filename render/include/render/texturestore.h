// The pictures that surfaces show, from their files.
#pragma once

#include <render/texture.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace render {

/// Finds and keeps textures by the names that scenes have for them. A name that leads to no picture
/// is tried once for each folder that becomes known.
class TextureStore {
public:
    /// Searches `folder` (UTF-8) too, the one named last before all others. An empty one is none.
    void addFolder(std::string_view folder);
    /// The texture of that file name (UTF-8), or null. A picture stands where its name says, or in
    /// one of the folders, there where the name says or by its last part alone, with its letters
    /// large or small. No name leads to
    /// another computer (//host/share) but to those where one of the folders is. Valid until
    /// `clear`.
    const Texture* find(const std::string& name);
    /// What could not be shown since this was asked last, one sentence each; where it is much, the
    /// last one counts the others.
    std::vector<std::string> takeFailures();
    /// Forgets textures and failures; folders stay known.
    void clear();

private:
    struct Entry {
        std::unique_ptr<Texture> texture;
        std::size_t foldersTried = 0;
        bool isDamaged = false;
    };

    /// The names of a folder's entries, by their small letters.
    using Listing = std::unordered_map<std::string, std::string>;

    void load(const std::string& name, Entry& entry);
    std::optional<std::filesystem::path> locate(const std::string& name);
    std::optional<std::filesystem::path> fileIn(const std::filesystem::path& folder,
                                                const std::filesystem::path& name);
    const Listing& listingOf(const std::filesystem::path& folder);

    std::vector<std::string> folders_;
    std::unordered_map<std::string, Listing> listings_;  // by folder
    std::unordered_map<std::string, Entry> entries_;
    std::vector<std::string> failures_;
    std::size_t texels_ = 0;
};

}  // namespace render
