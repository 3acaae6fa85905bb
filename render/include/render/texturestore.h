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

/// When the file of a picture, and the one that says how it is used, were written.
struct FileTimes {
    std::optional<std::filesystem::file_time_type> picture, use;

    static FileTimes of(const std::string& path);
    bool operator==(const FileTimes&) const = default;
};

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
    /// With a `folder` (UTF-8), that of the file that names it, there first of all.
    const Texture* find(const std::string& name, const std::string& folder = {});
    /// The file (UTF-8) that such a name means, a picture's or another, if there is one.
    std::optional<std::string> locate(const std::string& name, const std::string& folder = {});
    /// How many folders are known: what is not found may be in one that comes later.
    std::size_t folderCount() const { return folders_.size(); }
    /// What could not be shown since this was asked last, one sentence each; where it is much, the
    /// last one counts the others.
    std::vector<std::string> takeFailures();
    /// Whether some file of a texture is another than was read, or is there now; it is read anew
    /// when it is asked for again. The textures there were stay valid until this is asked again.
    bool noticeChanges();
    /// Forgets textures and failures; folders stay known.
    void clear();

private:
    struct Entry {
        std::shared_ptr<const Texture> texture;
        std::string path = {};  ///< of the file; empty while there is none
        std::size_t foldersTried = 0;
        bool isDamaged = false;
        bool isMissed = false;  ///< and that was said
    };

    /// The texture of a file, and when that was written.
    struct Loaded {
        std::shared_ptr<const Texture> texture;
        FileTimes times;
    };

    /// The names of a folder's entries, by their small letters.
    using Listing = std::unordered_map<std::string, std::string>;

    void load(const std::string& name, const std::string& folder, Entry& entry);
    std::optional<std::filesystem::path> fileIn(const std::filesystem::path& folder,
                                                const std::filesystem::path& name);
    const Listing& listingOf(const std::filesystem::path& folder);

    std::vector<std::string> folders_;
    std::unordered_map<std::string, Listing> listings_;  // by folder
    std::unordered_map<std::string, Entry> entries_;     // by folder and name
    /// By the paths of their files, which several names may lead to.
    std::unordered_map<std::string, Loaded> textures_;
    std::vector<std::shared_ptr<const Texture>> former_;
    std::vector<std::string> failures_;
    std::size_t texels_ = 0;
};

}  // namespace render
