#include "changes.h"

#include <kiln/inode.h>
#include <kiln/scenewatch.h>

#include <new>

#include "scenehistory.h"

/// The watches there are.
struct SceneWatches {
    static inline SceneWatch* first = nullptr;
    /// All have been told, and of changes that nothing can be added to, as at most of very many
    /// changes in a row.
    static inline bool allTold = true;

    /// Of this node, or of what no node stands for. `isMoved`: of its transform alone.
    static void tell(INode* node, bool isMoved = false) noexcept {
        if (allTold) return;
        allTold = true;
        for (SceneWatch* watch = first; watch; watch = watch->next_) {
            if (isMoved)
                addMoved(*watch, node);
            else
                add(*watch, node);
            allTold = allTold && watch->changedOtherwise_;
            tellOf(*watch);
        }
    }
    static void tellOfNothing() noexcept {
        for (SceneWatch* watch = first; watch; watch = watch->next_) tellOf(*watch);
    }

private:
    static void add(SceneWatch& watch, INode* node) noexcept {
        if (watch.changedOtherwise_) return;
        std::size_t& count = watch.nodeCount_;
        if (node && count > 0 && watch.nodes_[count - 1] == node) return;
        if (!node || count == SceneWatch::kMostNodes) return nameNothing(watch);
        watch.nodes_[count++] = node;
    }
    static void addMoved(SceneWatch& watch, INode* node) noexcept {
        std::vector<INode*>& moved = watch.moved_;
        if (watch.changedOtherwise_ || (!moved.empty() && moved.back() == node)) return;
        if (moved.size() == SceneWatch::kMostMoved) return nameNothing(watch);
        try {
            moved.push_back(node);
        } catch (const std::bad_alloc&) {
            nameNothing(watch);
        }
    }
    static void nameNothing(SceneWatch& watch) noexcept {
        watch.changedOtherwise_ = true;
        watch.nodeCount_ = 0;
        watch.moved_.clear();
    }
    static void tellOf(SceneWatch& watch) noexcept {
        if (watch.changed_) return;
        watch.changed_ = true;
        watch.told_(watch.param_);
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
    changed_ = changedOtherwise_ = false;
    nodeCount_ = 0;
    moved_.clear();
    SceneWatches::allTold = false;
    return changed;
}

namespace kiln {

namespace {

std::uint64_t changeCount = 0;
int aside = 0;

/// Of this node, or of what no node stands for. `isMoved`: of its transform alone.
void noteChangeOf(INode* node, bool isMoved = false) noexcept {
    if (aside > 0) return;
    ++changeCount;
    if (SceneHistory* const history = SceneHistory::current()) history->noteChange();
    SceneWatches::tell(node, isMoved);
}

}  // namespace

ChangesAside::ChangesAside() noexcept {
    ++aside;
}

ChangesAside::~ChangesAside() {
    --aside;
}

void noteSceneChanged() noexcept {
    noteChangeOf(nullptr);
}

void noteSceneChanged(Animatable& thing) noexcept {
    noteChangeOf(thing.SuperClassID() == NODE_CLASS_ID ? static_cast<INode*>(&thing) : nullptr);
}

void noteMoved(INode& node) noexcept {
    noteChangeOf(&node, true);
}

void noteSceneReplaced() noexcept {
    ++changeCount;
    SceneWatches::tell(nullptr);
}

std::uint64_t sceneChangeCount() noexcept {
    return changeCount;
}

void noteLookChanged(INode& node) noexcept {
    if (aside == 0) SceneWatches::tell(&node);
}

void noteRedraw() noexcept {
    if (aside == 0) SceneWatches::tellOfNothing();
}

}  // namespace kiln
