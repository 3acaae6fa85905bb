// Changes of the scene, told once.
#pragma once

#include <kiln/platform.h>

/// Hears that the scene has changed, whoever changed it: what there is, names, places, transforms,
/// objects, texture maps, visibility, wire colors, chunks and custom attributes. Any number of
/// changes is told once, until `Take` asks for them. The selection is not part of it.
class KILNAPI SceneWatch {
public:
    /// What is called at the first change. The change may be half made: take note, ask for a
    /// redraw, and read the scene later. Must not throw, change the scene, or make or end a watch.
    using Told = void (*)(void* param);

    SceneWatch(Told told, void* param) noexcept;
    ~SceneWatch();
    SceneWatch(const SceneWatch&) = delete;
    SceneWatch& operator=(const SceneWatch&) = delete;

    /// Whether there were changes since this was asked last. The next one is told again.
    bool Take() noexcept;
    /// Whether `Take` would say so.
    bool HasChanged() const noexcept { return changed_; }

private:
    friend struct SceneWatches;

    const Told told_;
    void* const param_;
    bool changed_ = false;
    SceneWatch* next_;
};
