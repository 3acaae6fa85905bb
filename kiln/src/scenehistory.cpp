#include "scenehistory.h"

#include <kiln/host/core.h>
#include <kiln/notify.h>
#include <kiln/undo.h>

#include <algorithm>
#include <span>

#include "changes.h"
#include "scene.h"

namespace kiln {

namespace {

std::size_t bytesOf(const SelectionList& list) noexcept {
    return list ? std::span(*list).size_bytes() : 0;
}

}  // namespace

SceneHistory* SceneHistory::current_ = nullptr;
std::size_t SceneHistory::limit_ = std::size_t{256} << 20;
std::uint64_t SceneHistory::lastNumber_ = 0;
LargeStepQuestion SceneHistory::question_;

std::size_t HistoryStep::bytes() const noexcept {
    return sizeof *this + name.capacity() + log.bytes() + bytesOf(before) +
           (after == before ? 0 : bytesOf(after));
}

void SceneHistory::end() noexcept {
    if (current_ == this) current_ = nullptr;
    turning_ = true;  // what goes with the steps is no change
    scopes_.clear();
    // The other steps' places may be below what the step that is being recorded has deleted.
    std::list<HistoryStep> newest;
    newest.swap(open_);
    clear();
}

void SceneHistory::addCreation(DWORD handle) {
    if (creations_ && creations_->last() + 1 == handle) {
        creations_->extend();
        return;
    }
    Creations& made = add<Creations>(0, 0, scene_, handle);
    creations_ = &made;
}

void SceneHistory::beginStep(const char* name, DWORD join) {
    std::list<HistoryStep> opened;
    HistoryStep& made = opened.emplace_back();
    if (name) made.name = name;
    made.join = join;
    made.before = scene_.selectionList();
    open_.splice(open_.end(), opened);
    isOfCommand_ = !name;
    oldBefore_ = Scene::lastHandle();
    creations_ = nullptr;
    savedWithin_ = false;
    announced = nullptr;
    answer_ = Answer::kNotAsked;
    measureRoom();
}

void SceneHistory::measureRoom() noexcept {
    const std::size_t other = step() ? step()->bytes() - step()->log.bytes() : 0;
    // Without a history nothing is lost.
    roomForStep_ = limit_ == 0 ? ~std::size_t{0} : limit_ - std::min(limit_, other);
}

void SceneHistory::setLargeStepQuestion(LargeStepQuestion question) {
    question_ = std::move(question);
}

void SceneHistory::askAboutSize() {
    if (answer_ == Answer::kNotAsked) {
        // Whoever deletes a node cannot be kept from it any more.
        if (scene_.isBusy()) return;
        const std::string name = step()->name;
        // A scope, so that the step does not end when somebody looks at the history meanwhile.
        const std::size_t depth = scopes_.size();
        beginScope(nullptr, 0);
        Answer answer = Answer::kRefused;
        try {
            if (!question_ || question_(name)) answer = Answer::kGoOn;
        } catch (...) {
            // Nobody has agreed.
        }
        if (step()) answer_ = answer;
        commit(depth);
    }
    if (!step() || answer_ == Answer::kRefused) throw StepRefused();
}

void SceneHistory::beginScope(const char* name, DWORD join) {
    if (name) endCommand();
    if (scopes_.size() == scopes_.capacity()) scopes_.reserve(2 * scopes_.size() + 1);
    ScopeStart start{{}, kNothingIsNew, scene_.selectionList()};
    if (!step()) beginStep(name, join);
    start.oldBefore = oldBefore_;
    start.mark = step()->log.mark();
    scopes_.push_back(std::move(start));
    oldBefore_ = Scene::lastHandle();
    creations_ = nullptr;
}

void SceneHistory::commit(std::size_t depth) noexcept {
    if (scopes_.size() <= depth) return;
    oldBefore_ = scopes_[depth].oldBefore;
    scopes_.erase(scopes_.begin() + static_cast<std::ptrdiff_t>(depth), scopes_.end());
    if (scopes_.empty() && (!isOfCommand_ || limit_ == 0)) endStep();
}

void SceneHistory::rollBack(std::size_t depth) noexcept {
    if (scopes_.size() <= depth) return;
    // The scope itself stays until all is told: the step must not end before, whatever listeners
    // do.
    const auto first = scopes_.begin() + static_cast<std::ptrdiff_t>(depth);
    scopes_.erase(first + 1, scopes_.end());
    const ScopeStart start = *first;
    oldBefore_ = start.oldBefore;
    creations_ = nullptr;
    ++telling_;
    turning_ = true;
    const std::uint64_t selection = scene_.selectionChanges();
    const auto restoreSelection = [&] {
        scene_.restoreSelection(start.selection);
        if (scene_.selectionChanges() != selection) scene_.notify(NOTIFY_SELECTION_CHANGED);
    };
    const bool changes = step()->log.last() != start.mark.last;
    step()->log.rollBack(start.mark, [&](auto&& tell) {
        turning_ = false;
        if (savedAfter_ != step()->log.last()) savedWithin_ = false;
        tell();
        restoreSelection();
        turning_ = true;
    });
    turning_ = false;
    if (!changes) restoreSelection();
    scopes_.erase(scopes_.begin() + static_cast<std::ptrdiff_t>(depth), scopes_.end());
    --telling_;
    freeDropped();
    if (scopes_.empty() && (!isOfCommand_ || limit_ == 0)) endStep();
}

void SceneHistory::endCommand() noexcept {
    if (scopes_.empty() && step()) endStep();
}

void SceneHistory::endStep() noexcept {
    oldBefore_ = kNothingIsNew;
    creations_ = nullptr;
    HistoryStep& made = *step();
    if (answer_ == Answer::kRefused && !made.log.empty()) {
        answer_ = Answer::kNotAsked;
        // The room is left from the scope of the question.
        scopes_.push_back({{}, kNothingIsNew, made.before});
        rollBack(0);
        endCommand();
        return;
    }
    if (made.log.empty()) {
        open_.clear();
        return;
    }
    dropUndone();
    try {
        made.after = scene_.selectionList();
    } catch (...) {
        made.after = made.before;  // the selection is of less weight than the step
    }
    made.id = ++lastId_;
    if (savedWithin_) savedId_ = savedAfter_ == made.log.last() ? made.id : kNever;
    savedWithin_ = false;
    if (made.join != UNDO_OWN_STEP && !done_.empty() && done_.back().join == made.join) {
        HistoryStep& joined = done_.back();
        bytes_ -= joined.bytes();
        joined.log.join(made.log, joined.joinedMembers);
        joined.after = made.after;
        joined.id = made.id;
        open_.clear();
    } else {
        done_.splice(done_.end(), open_);
    }
    bytes_ += done_.back().bytes();
    keepWithinLimit();
    scene_.notify(NOTIFY_HISTORY_CHANGED);
}

/// The steps that were undone cannot be redone any more.
void SceneHistory::dropUndone() noexcept {
    for (const HistoryStep& step : undone_) bytes_ -= step.bytes();
    dropped_.splice(dropped_.begin(), undone_);
    freeDropped();
}

/// From the back: of undone steps the newest has to go first, of done ones the oldest.
void SceneHistory::freeDropped() noexcept {
    if (telling_ > 0) return;
    const bool wasTurning = std::exchange(turning_, true);  // what goes with them is no change
    while (!dropped_.empty()) dropped_.pop_back();
    turning_ = wasTurning;
}

void SceneHistory::dropOldest() noexcept {
    bytes_ -= done_.front().bytes();
    baseId_ = done_.front().id;
    dropped_.splice(dropped_.begin(), done_, done_.begin());
}

void SceneHistory::keepWithinLimit() noexcept {
    while (bytes_ > limit_ && !done_.empty()) dropOldest();
    freeDropped();
}

void SceneHistory::setLimit(std::size_t bytes) noexcept {
    endCommand();
    limit_ = bytes;
    measureRoom();
    keepWithinLimit();
    if (bytes_ > limit_) dropUndone();
    scene_.notify(NOTIFY_HISTORY_CHANGED);
}

void SceneHistory::clear() noexcept {
    endCommand();
    dropUndone();
    while (!done_.empty()) dropOldest();
    freeDropped();
}

bool SceneHistory::canTurn() const noexcept {
    return scopes_.empty() && !scene_.isBusy();
}

bool SceneHistory::undo() noexcept {
    if (!canTurn()) return false;
    endCommand();
    if (done_.empty()) return false;
    undone_.splice(undone_.begin(), done_, std::prev(done_.end()));
    turn(undone_.front(), undone_.front().before, NOTIFY_SCENE_UNDO);
    return true;
}

bool SceneHistory::redo() noexcept {
    if (!canTurn()) return false;
    endCommand();
    if (undone_.empty()) return false;
    done_.splice(done_.end(), undone_, undone_.begin());
    turn(done_.back(), done_.back().after, NOTIFY_SCENE_REDO);
    return true;
}

void SceneHistory::turn(HistoryStep& step, const SelectionList& selection,
                        int notification) noexcept {
    ++telling_;
    turning_ = true;
    const std::uint64_t selectionBefore = scene_.selectionChanges();
    step.log.turnAll();
    turning_ = false;
    scene_.restoreSelection(selection);
    step.log.tellAll();
    if (scene_.selectionChanges() != selectionBefore) scene_.notify(NOTIFY_SELECTION_CHANGED);
    scene_.notify(notification);
    scene_.notify(NOTIFY_HISTORY_CHANGED);
    --telling_;
    freeDropped();
}

bool SceneHistory::isModified() const noexcept {
    if (step() && !step()->log.empty()) return !savedWithin_ || savedAfter_ != step()->log.last();
    return stateId() != savedId_;
}

void SceneHistory::setModified(bool modified) noexcept {
    endCommand();
    savedWithin_ = false;
    if (modified)
        noteUnrecorded();
    else if (step() && !step()->log.empty()) {
        savedWithin_ = true;
        savedAfter_ = step()->log.last();
        noteUnrecorded();
        // From here on changes of nodes that this step has made count like all others.
        oldBefore_ = Scene::lastHandle();
        for (ScopeStart& scope : scopes_) scope.oldBefore = oldBefore_;
        creations_ = nullptr;
    } else {
        savedId_ = stateId();
    }
}

}  // namespace kiln
