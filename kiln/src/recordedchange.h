// What the history of a scene consists of.
#pragma once

#include <kiln/animatable.h>

#include <cstddef>
#include <memory>
#include <new>
#include <unordered_set>
#include <utility>

#include "changes.h"

namespace kiln {

class ChangeLog;

/// One change of a scene that can be taken back and made again: it keeps what the scene had, or
/// has, in its place, and exchanges the two. Neither takes memory, so neither can fail.
class RecordedChange {
public:
    RecordedChange() = default;
    virtual ~RecordedChange() = default;
    RecordedChange(const RecordedChange&) = delete;
    RecordedChange& operator=(const RecordedChange&) = delete;

    /// Exchanges what is kept with what is there. Called in the order the changes were made, or in
    /// the reverse order, so that everything else is as it was then.
    virtual void turn() noexcept = 0;
    /// Says what of the scene the last turn has changed.
    virtual void note() const noexcept { noteSceneChanged(); }
    /// Sends the notifications that follow from the last turn.
    virtual void tell() const {}
    /// The one thing whose former state it keeps, so that a change of it that comes next need not
    /// be recorded; null for others.
    virtual const void* what() const noexcept { return nullptr; }
    /// Adds a copy to a log where nothing between the two matters to it; false for changes that
    /// have to stay in order. Throws `std::bad_alloc`.
    virtual bool copyTo(ChangeLog& log) const {
        (void)log;
        return false;
    }

private:
    friend class ChangeLog;
    RecordedChange* next_ = nullptr;
};

/// One reference to a thing, or to none.
class KeptReference {
public:
    explicit KeptReference(ReferenceTarget* target) noexcept : target_(target) {
        if (target_) target_->AddReference();
    }
    KeptReference(const KeptReference& other) noexcept : KeptReference(other.target_) {}
    ~KeptReference() {
        if (target_) target_->ReleaseReference();
    }
    KeptReference& operator=(const KeptReference&) = delete;

private:
    ReferenceTarget* const target_;
};

/// Keeps a thing alive that changes belong to. Nodes are kept by the changes that make or delete
/// them; what nobody refers to is its maker's.
inline KeptReference kept(Animatable& thing) noexcept {
    ReferenceTarget* const target = thing.AsReferenceTarget();
    return KeptReference(target && target->NumReferences() > 0 ? target : nullptr);
}

/// Changes in the order they were made, one behind the other in few blocks of memory.
class ChangeLog {
public:
    ChangeLog() = default;
    ~ChangeLog() { clear(); }
    ChangeLog(const ChangeLog&) = delete;
    ChangeLog& operator=(const ChangeLog&) = delete;

    /// A place in the log.
    struct Mark {
        RecordedChange* last = nullptr;
        std::size_t held = 0;
        std::size_t pageCount = 0;
        std::size_t pageUsed = 0;
    };

    bool empty() const noexcept { return !last_; }
    /// The newest change, or null. Not for a log that is undone.
    RecordedChange* last() const noexcept { return last_; }
    /// What the changes take, with what they keep elsewhere.
    std::size_t bytes() const noexcept { return pageBytes_ + held_; }
    /// Whether these would be more than `most` with one more change of `size` bytes that keeps
    /// `held` bytes elsewhere.
    bool wouldExceed(std::size_t most, std::size_t size, std::size_t held) const noexcept {
        const std::size_t needed = roomFor(size);
        const bool fits = hasRoom(needed);
        // The usual answer is cheap: they stay as they are.
        if (fits && held == 0) return false;
        return bytes() + held + (fits ? 0 : pageSizeFor(needed)) > most;
    }
    Mark mark() const noexcept { return {last_, held_, pageCount_, page_ ? page_->used : 0}; }

    /// Adds a change that keeps `held` bytes elsewhere and has `tail` bytes behind it. Throws
    /// `std::bad_alloc`.
    template <typename Change, typename... Arguments>
    Change& add(std::size_t held, std::size_t tail, Arguments&&... arguments) {
        static_assert(alignof(Change) <= kAlignment);
        const std::size_t size = roomFor(sizeof(Change) + tail);
        void* const place = room(size);
        auto* const change = new (place) Change(std::forward<Arguments>(arguments)...);
        page_->used += size;
        change->next_ = last_;
        last_ = change;
        held_ += held;
        return *change;
    }
    /// Takes the newest change, which was not made, out again.
    void dropLast() noexcept;

    /// Takes all changes back, newest first, or makes all again, oldest first.
    void turnAll() noexcept;
    /// Says what the last turn has changed, and sends its notifications.
    void tellAll() const { tellAll(last_); }

    /// Takes the changes behind `mark` back, says so, sends their notifications, and drops them.
    template <typename Tell>
    void rollBack(const Mark& mark, Tell&& telling) noexcept {
        RecordedChange* const undone = cut(mark);
        if (!undone) return;
        const Mark before = this->mark();
        telling([&] { tellAll(undone); });
        destroy(undone);
        if (before.last == last_ && before.pageCount == pageCount_ &&
            before.pageUsed == page_->used)
            rewind(mark);
    }
    /// Appends the changes of `other`, which come after these and are done. `kept` has what these
    /// keep already, if anything was joined before: of that nothing more needs to be kept.
    void join(ChangeLog& other, std::unordered_set<const void*>& kept) noexcept;
    void clear() noexcept;

private:
    static constexpr std::size_t kAlignment = 8;

    struct Page {
        Page* previous;
        std::size_t size;  // with this head
        std::size_t used;
    };

    static std::size_t roomFor(std::size_t size) noexcept {
        return (size + kAlignment - 1) & ~(kAlignment - 1);
    }
    bool hasRoom(std::size_t size) const noexcept {
        return page_ && page_->size - page_->used >= size;
    }
    void* room(std::size_t size) {
        if (!hasRoom(size)) addPage(size);
        return reinterpret_cast<std::byte*>(page_) + page_->used;
    }
    std::size_t pageSizeFor(std::size_t size) const noexcept;
    void addPage(std::size_t size);
    void dropPage() noexcept;
    bool copyFrom(const ChangeLog& other, std::unordered_set<const void*>& kept);
    void append(ChangeLog& other) noexcept;
    RecordedChange* cut(const Mark& mark) noexcept;
    void rewind(const Mark& mark) noexcept;
    static RecordedChange* reversed(RecordedChange* change) noexcept;
    static void destroy(RecordedChange* change) noexcept;
    static void tellAll(const RecordedChange* first);

    // Done: the newest, from which the others follow back to the oldest. Undone: the oldest, from
    // which they follow to the newest.
    RecordedChange* last_ = nullptr;
    bool done_ = true;
    std::size_t held_ = 0;
    Page* page_ = nullptr;  // the newest
    std::size_t pageCount_ = 0;
    std::size_t pageBytes_ = 0;
};

/// Another value of a member of a thing.
template <typename T>
class MemberChange final : public RecordedChange {
public:
    MemberChange(const KeptReference& thing, T& member, T value) noexcept
        : kept_(thing), member_(member), value_(std::move(value)) {}

    void turn() noexcept override { std::swap(member_, value_); }
    const void* what() const noexcept override { return &member_; }
    bool copyTo(ChangeLog& log) const override {
        log.add<MemberChange>(0, 0, kept_, member_, value_);
        return true;
    }

private:
    const KeptReference kept_;
    T& member_;
    T value_;
};

}  // namespace kiln
