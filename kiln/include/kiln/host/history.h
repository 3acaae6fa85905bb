// The steps that the user can undo and redo.
#pragma once

#include <kiln/platform.h>

#include <cstddef>
#include <string>

namespace kiln {

/// The history of the scene that is shown: the steps that led to it, of which those undone last may
/// be redone. A scene that is made or opened begins with none. See `UndoScope` for how steps come
/// to be. `NOTIFY_HISTORY_CHANGED` is sent whenever the steps change.
class KILNAPI History {
public:
    /// Steps from the oldest to the newest, undone ones included.
    std::size_t stepCount() const noexcept;
    /// How many of them are done; the others can be redone.
    std::size_t doneCount() const noexcept;
    /// The name of a step (below `stepCount()`); empty for changes made outside of any scope.
    std::string stepName(std::size_t index) const;

    bool canUndo() const noexcept { return doneCount() > 0; }
    bool canRedo() const noexcept { return doneCount() < stepCount(); }
    /// Takes the newest step that is done back, or does the oldest that is undone again. The scene
    /// is then, byte for byte when saved, what it was. False when there is none, within a scope,
    /// and while nodes are being deleted. Sends the notifications of the changes that follow from
    /// it, once all is done, and then `NOTIFY_SCENE_UNDO` or `NOTIFY_SCENE_REDO`.
    bool undo() noexcept;
    bool redo() noexcept;
    /// Undoes or redoes until so many steps are done; false when that cannot be.
    bool goTo(std::size_t doneCount) noexcept;

    /// Ends the step that collects what happens outside of scopes. The application calls it after
    /// each command: after each message of its loop, or whatever it takes its commands from.
    void endCommand() noexcept;
    /// Forgets all steps, and frees what they keep.
    void clear() noexcept;

    /// What the steps keep, in bytes, and how much that may be: 256 MB at first, for all scenes of
    /// the process. The oldest steps go first. 0 switches the history off: scopes can still be
    /// rolled back, but make no steps.
    std::size_t bytes() const noexcept;
    std::size_t limit() const noexcept;
    void setLimit(std::size_t bytes) noexcept;

private:
    friend class Core;
    History() = default;
};

}  // namespace kiln
