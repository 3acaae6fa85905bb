// How often the host is told that the scene has changed.
#pragma once

#include <kiln/scenewatch.h>

#include <utility>

class SceneChanges {
public:
    /// The changes since this was asked last.
    int take() { return std::exchange(changes_, 0); }

    /// How often a viewport would have asked to be redrawn since this was asked last, when it reads
    /// the scene only then: once for any number of changes.
    int takeRedraws() {
        later_.Take();
        return std::exchange(redraws_, 0);
    }

private:
    static void count(void* self) {
        auto& changes = *static_cast<SceneChanges*>(self);
        ++changes.changes_;
        changes.each_.Take();  // the next change is told as well
    }
    static void askForRedraw(void* self) { ++static_cast<SceneChanges*>(self)->redraws_; }

    int changes_ = 0;
    int redraws_ = 0;
    SceneWatch each_{count, this};
    SceneWatch later_{askForRedraw, this};
};
