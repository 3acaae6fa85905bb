// The pictures that surfaces show, from their files.
#pragma once

#include <base/filefinder.h>
#include <render/texture.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
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
    /// Where it looks for files.
    base::FileFinder& files() noexcept { return files_; }
    const base::FileFinder& files() const noexcept { return files_; }
    /// The texture of that file name (UTF-8), or null. Valid until `clear`.
    /// With a `folder` (UTF-8), that of the file that names it, there first of all.
    const Texture* find(const std::string& name, const std::string& folder = {});
    /// What is shown in place of a picture that is missing or damaged: a checkerboard of 8 by 8.
    static const Texture& missing();
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
        std::size_t tried = 0;  ///< one more than `folderChanges` when it was looked for last
        bool isDamaged = false;
    };

    /// The texture of a file, and when that was written.
    struct Loaded {
        std::shared_ptr<const Texture> texture;
        FileTimes times;
    };

    void load(const std::string& name, const std::string& folder, Entry& entry);

    base::FileFinder files_;
    std::unordered_map<std::string, Entry> entries_;  // by folder and name
    /// By the paths of their files, which several names may lead to.
    std::unordered_map<std::string, Loaded> textures_;
    std::vector<std::shared_ptr<const Texture>> former_;
    std::vector<std::string> failures_;
    std::unordered_set<std::string> missed_;  // names, in whatever folder
    std::size_t texels_ = 0;
};

}  // namespace render
