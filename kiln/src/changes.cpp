#include "changes.h"

#include <kiln/scenewatch.h>

#include "scenehistory.h"

/// The watches there are.
struct SceneWatches {
    static inline SceneWatch* first = nullptr;
    static inline bool allTold = true;  // as at most of very many changes in a row

    static void tell() noexcept {
        if (allTold) return;
        allTold = true;
        for (SceneWatch* watch = first; watch; watch = watch->next_) {
            if (watch->changed_) continue;
            watch->changed_ = true;
            watch->told_(watch->param_);
        }
    }
};

SceneWatch::SceneWatch(Told told, void* param) noexcept
    : told_(told), param_(param), next_(SceneWatches::first) {
    SceneWatches::first = this;
    SceneWatches::allTold = false;
}

SceneWatch::~SceneWatch() {
    SceneWatch** link = &SceneWatches::first;
    while (*link != this) link = &(*link)->next_;
    *link = next_;
}

bool SceneWatch::Take() noexcept {
    const bool changed = changed_;
    changed_ = false;
    SceneWatches::allTold = false;
    return changed;
}

namespace kiln {

namespace {

std::uint64_t changeCount = 0;
int aside = 0;

}  // namespace

ChangesAside::ChangesAside() noexcept {
    ++aside;
}

ChangesAside::~ChangesAside() {
    --aside;
}

void noteSceneChanged() noexcept {
    if (aside > 0) return;
    ++changeCount;
    if (SceneHistory* const history = SceneHistory::current()) history->noteChange();
    SceneWatches::tell();
}

void noteSceneReplaced() noexcept {
    ++changeCount;
    SceneWatches::tell();
}

std::uint64_t sceneChangeCount() noexcept {
    return changeCount;
}

void noteLookChanged() noexcept {
    if (aside == 0) SceneWatches::tell();
}

}  // namespace kiln
