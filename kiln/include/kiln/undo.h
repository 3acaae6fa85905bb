// Actions that can be undone.
#pragma once

#include <kiln/platform.h>

#include <cstddef>
#include <cstdint>

class INode;

/// `UndoScope`'s `join` for an action that is a step of its own.
inline constexpr DWORD UNDO_OWN_STEP = 0;

/// An action of the user's: what the scene goes through while this lives becomes one step of the
/// history, which the user undoes and redoes as a whole, or does not happen at all.
///
/// Everything that goes through the SDK is recorded by itself. Who writes into a chunk, a mesh or
/// the like in place announces that first (`Animatable::AboutToChangeAppData`,
/// `ReferenceTarget::AboutToChange`). A scope within another joins it: the outermost one makes the
/// step and names it, the inner one can take back its own part. Scopes end in the reverse order of
/// their beginning. What happens outside of any scope is a step too, one for each command of the
/// host.
///
/// A scope in which nothing changed makes no step. When the scene is replaced, scopes that were
/// open have nothing to commit or take back any more.
class KILNAPI UndoScope {
public:
    /// `name` is what the user reads in the menu after "Undo", in UTF-8 and in the user's language;
    /// it is copied. Null makes no step of its own where there is no other scope: what happens
    /// belongs to the command that the host is carrying out. Scopes with the same `join` other than
    /// `UNDO_OWN_STEP` that follow one another make one step together, which leads back to what was
    /// before the first. Throws `std::bad_alloc`.
    explicit UndoScope(const char* name, DWORD join = UNDO_OWN_STEP);
    /// Takes everything back that happened since the scope began, unless it was committed. The
    /// notifications of that are those of an undo.
    ~UndoScope();
    UndoScope(const UndoScope&) = delete;
    UndoScope& operator=(const UndoScope&) = delete;

    /// Keeps what has happened and ends the scope.
    void Commit() noexcept;
    /// Ends the scope and takes everything back.
    void RollBack() noexcept;

private:
    std::uint64_t history_ = 0;  // which one it belongs to; 0 once it has ended
    std::size_t depth_ = 0;
};

/// Runs `action` in a scope, which keeps what it did unless it returns false or throws. Returns
/// what the action returned.
template <typename Action>
bool RunUndoable(const char* name, Action&& action) {
    UndoScope scope(name);
    const bool done = action();
    if (done) scope.Commit();
    return done;
}

/// Whether a step that keeps so many bytes could be undone afterwards. About a larger one the user
/// is asked in the middle; carried out, it empties the history. True while history is switched off.
KILNAPI bool IsUndoable(std::size_t bytes) noexcept;
/// About how many bytes a step keeps that deletes the node and all below it. Throws
/// `std::bad_alloc`.
KILNAPI std::size_t UndoBytesOfDeleting(INode* node);
