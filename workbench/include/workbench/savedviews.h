// The views of scenes that the user has saved, kept from one run to the next.
#pragma once

#include <render/camera.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace workbench {

/// Some views for each file, in a text file of the user's with one view a line in UTF-8: place,
/// kind of view, target, distance and angles, and the path of the scene's file, apart by tabs.
/// Lines that say nothing of the kind are dropped. What cannot be read or written lasts until the
/// program ends. Paths that differ in the case of ASCII letters only are the same.
class SavedViews {
public:
    /// Of each scene.
    static constexpr std::size_t kPlaces = 4;
    /// Scenes that are remembered: those whose views were saved last.
    static constexpr std::size_t kMostScenes = 200;

    /// Reads the file at `path`; an empty path keeps the views in memory only.
    explicit SavedViews(std::string path);

    /// The scene is this file's now; an empty name for one that has no file yet. With `keep` its
    /// views stay with it, as when it is saved under another name.
    void setScene(const std::string& file, bool keep);

    const std::optional<render::CameraStand>& at(std::size_t place) const { return shown_[place]; }
    void save(std::size_t place, const render::CameraStand& view);

private:
    using Views = std::array<std::optional<render::CameraStand>, kPlaces>;

    void store();

    const std::string path_;
    std::string scene_;                                 // the file of the scene
    Views shown_;                                       // its views
    std::vector<std::pair<std::string, Views>> known_;  // of all files, newest first
};

}  // namespace workbench
