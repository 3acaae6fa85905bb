// What is saved aside of a scene with unsaved changes, for the time after a crash.
#pragma once

#include <base/filelock.h>
#include <kiln/host/core.h>
#include <kiln/host/scenetext.h>
#include <workbench/backgroundfile.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

/// What a scene file itself does not say of its scene.
struct AsideOrigin {
    std::string name;  ///< what the user calls it; empty for none
    /// Where its references and pictures are looked for, as `KILN_IMPORT_DIR` and `KILN_SCENE_DIR`
    /// were; empty where that is not known.
    std::string importFolder, sceneFolder;
};

/// A place for one scene in the folder of scenes saved aside. It is one program's: a lock file that
/// the program holds says so, and no longer than it runs.
class AsidePlace {
public:
    /// A new place; nothing when the folder cannot be written.
    static std::optional<AsidePlace> make(const std::string& folder);
    /// Those in `folder` that have a scene and whose program has ended, the newest first. Each is
    /// the caller's now.
    static std::vector<AsidePlace> left(const std::string& folder);

    /// The scene file, UTF-8.
    std::string scene() const { return stem_ + ".kiln"; }
    bool hasScene() const;
    /// When the scene was saved aside.
    std::chrono::system_clock::time_point time() const;
    AsideOrigin origin() const;
    void setOrigin(const AsideOrigin& origin) const;
    /// Deletes the scene.
    void clear() const;
    /// Deletes all there is, and ends the lock.
    void remove();

private:
    AsidePlace(std::string stem, base::FileLock lock)
        : stem_(std::move(stem)), lock_(std::move(lock)) {}

    std::string stem_;
    std::optional<base::FileLock> lock_;
};

/// Saves the scene aside while there are changes that are not saved: when the user pauses, and at
/// the latest two minutes after the first of them. It works in slices that nobody feels; what it
/// writes is the scene between two changes. Once there are no unsaved changes it deletes what it
/// has.
class AutoSave {
public:
    using Time = std::chrono::milliseconds;
    static constexpr Time kPause{2'000};    ///< without input
    static constexpr Time kLatest{90'000};  ///< after a change; then there is time to finish
    static constexpr Time kOverdue{110'000};
    static constexpr Time kSlice{6};

    /// `folder` is where scenes are saved aside; empty for nowhere.
    AutoSave(kiln::Core& core, std::string folder) : core_(core), folder_(std::move(folder)) {}

    /// What the user is doing.
    struct Moment {
        Time now;         ///< by any clock that only goes on
        Time sinceInput;  ///< since the last key or mouse message
        bool engaged;     ///< something is being dragged or typed, or the program is at work
    };
    /// To be called a few times each second, and again soon after it has returned true. `name` is
    /// what the user calls the scene.
    bool step(const Moment& moment, const std::string& name);
    /// Whether a scene is on its way to the disk; `step` notes when it is there.
    bool isWriting() const { return file_ != nullptr; }
    /// Saves aside what is not saved, now and all of it.
    void finish(const std::string& name);
    /// Goes on with a place whose scene has been opened: it stays until that scene is saved.
    void adopt(AsidePlace place);
    /// The user has decided about the changes: there is nothing to keep.
    void discard();

private:
    bool isCurrent() const { return saved_ == kiln::sceneChanges(); }
    void begin(const std::string& name);
    bool writeSlice(const std::string& name);
    bool writePieces();
    void noteWritten();

    kiln::Core& core_;
    const std::string folder_;
    std::optional<AsidePlace> place_;
    std::unique_ptr<kiln::SceneText> text_;  // while pieces are missing
    std::unique_ptr<BackgroundFile> file_;
    std::uint64_t writing_ = 0;            // the changes that `file_` will have
    std::optional<std::uint64_t> saved_;   // those that the place's scene has
    std::optional<std::uint64_t> failed_;  // those that could not be written
    std::optional<Time> unsavedSince_;
};

}  // namespace workbench
