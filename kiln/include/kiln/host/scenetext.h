// The text of a scene file, for who must not wait for all of it.
#pragma once

#include <kiln/platform.h>

#include <cstdint>
#include <memory>
#include <string>

namespace kiln {

/// How many changes of scenes there were. It is another number after each; no two are the same.
KILNAPI std::uint64_t sceneChanges() noexcept;

/// The text of a .kiln file of the scene that is shown, piece by piece. All pieces together are the
/// scene as it was when the first was made: a change in between ends it.
class KILNAPI SceneText {
public:
    SceneText();
    ~SceneText();
    SceneText(const SceneText&) = delete;
    SceneText& operator=(const SceneText&) = delete;

    enum class Progress {
        kMore,
        kComplete,
        kOutdated,  ///< the scene has changed, or cannot be written; there will be no more
    };
    /// Appends the next piece, at most a line of the file, to `text`. Throws `std::bad_alloc`.
    Progress next(std::string& text);
    /// The changes that are in it, as `sceneChanges` counts them.
    std::uint64_t changes() const noexcept { return changes_; }

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
    std::uint64_t changes_;
};

}  // namespace kiln
