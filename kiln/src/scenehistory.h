// The history of a scene: what is recorded while it changes, and the steps that come of it.
#pragma once

#include <kiln/host/largesteps.h>
#include <kiln/platform.h>

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "recordedchange.h"

namespace kiln {

class Node;
class Scene;

/// Nodes in the order of their selection; null for none. Shared, as most steps leave it alone.
using SelectionList = std::shared_ptr<const std::vector<Node*>>;

/// The creation of nodes with handles that follow one another.
class Creations final : public RecordedChange {
public:
    Creations(Scene& scene, DWORD handle) noexcept : scene_(scene), first_(handle) {}
    ~Creations() override;

    void turn() noexcept override;
    void tell() const override;
    DWORD last() const noexcept { return first_ + count_ - 1; }
    void extend() noexcept { ++count_; }

private:
    Scene& scene_;
    const DWORD first_;
    DWORD count_ = 1;
    bool out_ = false;  // the nodes are out of the scene, and this owns them
};

/// A step of the history.
struct HistoryStep {
    ChangeLog log;
    std::string name;
    DWORD join = 0;
    std::uint64_t id = 0;  // of the state that it leads to
    SelectionList before, after;
    std::unordered_set<const void*> joinedMembers;  // what it keeps, if others have joined it

    std::size_t bytes() const noexcept;
};

/// Records the changes of one scene.
///
/// What a new node goes through before the scope ends in which it was made need not be recorded:
/// the node goes, and comes back, as a whole.
class SceneHistory {
public:
    explicit SceneHistory(Scene& scene) noexcept : scene_(scene), number_(++lastNumber_) {}
    ~SceneHistory() { end(); }
    SceneHistory(const SceneHistory&) = delete;
    SceneHistory& operator=(const SceneHistory&) = delete;

    /// That of the scene that is shown, or null.
    static SceneHistory* current() noexcept { return current_; }
    static void setCurrent(SceneHistory* history) noexcept { current_ = history; }
    /// `current()`, if what happens now is recorded.
    static SceneHistory* recording() noexcept {
        return current_ && current_->isRecording() ? current_ : nullptr;
    }
    bool isRecording() const noexcept {
        return pauses_ == 0 && !turning_ && (limit_ > 0 || !scopes_.empty());
    }
    /// Whether the node with that handle was made within the innermost scope.
    bool isNew(DWORD handle) const noexcept { return handle > oldBefore_; }

    // Recording. Each throws `std::bad_alloc`, or `StepRefused`, and then nothing has happened.

    /// Begins the step of what happens outside of scopes, if need be.
    void prepare() {
        if (!step()) beginStep(nullptr, 0);
    }
    /// Adds a change, still to be made.
    template <typename Change, typename... Arguments>
    Change& add(std::size_t held, std::size_t tail, Arguments&&... arguments) {
        prepare();
        if (step()->log.wouldExceed(roomForStep_, sizeof(Change) + tail, held)) [[unlikely]]
            askAboutSize();
        Change& change = step()->log.add<Change>(held, tail, std::forward<Arguments>(arguments)...);
        creations_ = nullptr;
        return change;
    }
    /// Asks whether a change may be made that keeps so many bytes elsewhere, where it is too large
    /// for the history: before anybody is told of the change. Throws like `add`.
    void expect(std::size_t held) {
        prepare();
        if (step()->log.wouldExceed(roomForStep_, 0, held)) askAboutSize();
    }
    void dropLast() noexcept { step()->log.dropLast(); }
    /// Whether the change that was made last within the innermost scope keeps `what`.
    bool keeps(const void* what) const noexcept {
        const RecordedChange* const last = step() ? step()->log.last() : nullptr;
        return last && last != firstOfScope() && !(savedWithin_ && last == savedAfter_) &&
               last->what() == what;
    }
    /// A node was made.
    void addCreation(DWORD handle);
    /// Whether nothing has happened since this node was made, but for changes of its own.
    bool wasJustMade(DWORD handle) const noexcept {
        return creations_ && creations_->last() == handle;
    }

    // Scopes.

    std::uint64_t number() const noexcept { return number_; }
    std::size_t depth() const noexcept { return scopes_.size(); }
    void beginScope(const char* name, DWORD join);
    /// Ends the scopes from `depth` on.
    void commit(std::size_t depth) noexcept;
    void rollBack(std::size_t depth) noexcept;
    /// Records nothing from here on, for as long as there is one.
    void pause() noexcept { ++pauses_; }
    void resume() noexcept { --pauses_; }
    bool isPaused() const noexcept { return pauses_ > 0; }

    // Steps.

    const std::list<HistoryStep>& done() const noexcept { return done_; }
    const std::list<HistoryStep>& undone() const noexcept { return undone_; }
    bool undo() noexcept;
    bool redo() noexcept;
    void endCommand() noexcept;
    void clear() noexcept;
    /// Frees everything. Before the scene does.
    void end() noexcept;
    std::size_t bytes() const noexcept { return bytes_; }
    static std::size_t limit() noexcept { return limit_; }
    void setLimit(std::size_t bytes) noexcept;
    static void setLargeStepQuestion(LargeStepQuestion question);
    /// Whether notifications of an undo or a rollback are being sent.
    bool telling() const noexcept { return telling_ > 0; }

    // Whether the scene is as it was saved.

    bool isModified() const noexcept;
    /// Whatever the scene is now, that is (or is not) what is saved.
    void setModified(bool modified) noexcept;
    /// A change that is not recorded.
    void noteUnrecorded() noexcept { savedId_ = kNever; }
    /// A change, recorded or not.
    void noteChange() noexcept {
        if (limit_ == 0 && scopes_.empty() && pauses_ == 0) noteUnrecorded();
    }

    const Animatable* announced = nullptr;  ///< the thing about which an announcement came last

private:
    struct ScopeStart {
        ChangeLog::Mark mark;
        DWORD oldBefore;
        SelectionList selection;
    };

    /// What is to become of the open step, which is too large.
    enum class Answer : std::uint8_t { kNotAsked, kGoOn, kRefused };

    static constexpr std::uint64_t kNever = ~std::uint64_t{0};
    static constexpr DWORD kNothingIsNew = ~DWORD{0};

    HistoryStep* step() noexcept { return open_.empty() ? nullptr : &open_.front(); }
    const HistoryStep* step() const noexcept { return open_.empty() ? nullptr : &open_.front(); }
    const RecordedChange* firstOfScope() const noexcept {
        return scopes_.empty() ? nullptr : scopes_.back().mark.last;
    }
    void beginStep(const char* name, DWORD join);
    void askAboutSize();
    void measureRoom() noexcept;
    void endStep() noexcept;
    void dropUndone() noexcept;
    void dropOldest() noexcept;
    void freeDropped() noexcept;
    void keepWithinLimit() noexcept;
    std::uint64_t stateId() const noexcept { return done_.empty() ? baseId_ : done_.back().id; }
    bool canTurn() const noexcept;
    void turn(HistoryStep& step, const SelectionList& selection, int notification) noexcept;

    static SceneHistory* current_;
    static std::size_t limit_;
    static std::uint64_t lastNumber_;
    static LargeStepQuestion question_;

    Scene& scene_;
    const std::uint64_t number_;
    std::list<HistoryStep> done_, undone_;  // oldest first
    std::list<HistoryStep> open_;           // the step that is being recorded, or none
    bool isOfCommand_ = false;              // that one collects what happens outside of scopes
    std::size_t roomForStep_ = 0;           // how much the log of that one may take
    Answer answer_ = Answer::kNotAsked;     // about that one
    std::list<HistoryStep> dropped_;        // until their notifications have been sent
    std::vector<ScopeStart> scopes_;
    Creations* creations_ = nullptr;  // the last change of the innermost scope, if it is one
    DWORD oldBefore_ = kNothingIsNew;
    int pauses_ = 0;
    int telling_ = 0;
    bool turning_ = false;
    std::size_t bytes_ = 0;
    std::uint64_t lastId_ = 0, baseId_ = 0, savedId_ = 0;
    // Saved while a step was being recorded: after which change.
    bool savedWithin_ = false;
    const RecordedChange* savedAfter_ = nullptr;
};

/// The history that a change of `thing` belongs to; null for none.
inline SceneHistory* historyFor(const Animatable& thing) noexcept {
    SceneHistory* const history = SceneHistory::recording();
    return history && thing.IsRecorded() ? history : nullptr;
}

/// Gives a member of a thing another value. Throws `std::bad_alloc`, and then nothing has changed.
template <typename T>
void changeMember(Animatable& thing, T& member, T value, std::size_t held = 0) {
    SceneHistory* const history = historyFor(thing);
    if (!history || history->keeps(&member))
        std::swap(member, value);
    else
        history->add<MemberChange<T>>(held, 0, kept(thing), member, std::move(value)).turn();
}

/// Records nothing in the scene that is shown while it lives.
class RecordingPause {
public:
    RecordingPause() noexcept : history_(SceneHistory::current()) {
        if (history_) history_->pause();
    }
    ~RecordingPause() {
        if (history_) history_->resume();
    }
    RecordingPause(const RecordingPause&) = delete;
    RecordingPause& operator=(const RecordingPause&) = delete;

private:
    SceneHistory* const history_;
};

}  // namespace kiln
