#include "recordedchange.h"

#include <algorithm>
#include <vector>

#include "counted.h"
#include "smallheap.h"

namespace kiln {

std::size_t ChangeLog::pageSizeFor(std::size_t size) const noexcept {
    // Most steps consist of a change or two.
    constexpr std::size_t kFirst = 256;
    // From the heap of the scene's pieces: the memory of a step that has gone is there for the next
    // one, and the system need not clear new memory while 10,000 nodes are edited.
    const std::size_t usual = page_ ? std::min(2 * page_->size, SmallHeap::kLargest) : kFirst;
    return std::max(usual, sizeof(Page) + size);
}

void ChangeLog::addPage(std::size_t size) {
    const std::size_t whole = pageSizeFor(size);
    void* const memory = allocateCounted(whole);
    if (!memory) throw std::bad_alloc();
    page_ = new (memory) Page{page_, whole, sizeof(Page)};
    ++pageCount_;
    pageBytes_ += whole;
}

void ChangeLog::dropPage() noexcept {
    Page* const page = page_;
    page_ = page->previous;
    --pageCount_;
    pageBytes_ -= page->size;
    deallocateCounted(page, page->size);
}

void ChangeLog::dropLast() noexcept {
    RecordedChange* const change = last_;
    last_ = change->next_;
    change->~RecordedChange();
}

RecordedChange* ChangeLog::reversed(RecordedChange* change) noexcept {
    RecordedChange* before = nullptr;
    while (change) {
        RecordedChange* const next = std::exchange(change->next_, before);
        before = change;
        change = next;
    }
    return before;
}

void ChangeLog::turnAll() noexcept {
    for (RecordedChange* change = last_; change; change = change->next_) change->turn();
    last_ = reversed(last_);
    done_ = !done_;
}

void ChangeLog::tellAll(const RecordedChange* first) {
    for (const RecordedChange* change = first; change; change = change->next_) change->note();
    for (const RecordedChange* change = first; change; change = change->next_) change->tell();
}

/// Takes the changes behind `mark` back and out of the log; the newest is the first of the result.
RecordedChange* ChangeLog::cut(const Mark& mark) noexcept {
    if (last_ == mark.last) return nullptr;
    RecordedChange* const newest = last_;
    for (RecordedChange* change = newest; change != mark.last; change = last_) {
        change->turn();
        last_ = change->next_;
        if (last_ == mark.last) change->next_ = nullptr;
    }
    held_ = mark.held;
    return newest;
}

void ChangeLog::rewind(const Mark& mark) noexcept {
    while (pageCount_ > std::max<std::size_t>(mark.pageCount, 1)) dropPage();
    page_->used = pageCount_ == mark.pageCount ? mark.pageUsed : sizeof(Page);
}

/// What one change keeps may belong to what another one keeps: of undone changes the newest must go
/// first, of done ones the oldest.
void ChangeLog::destroy(RecordedChange* change) noexcept {
    while (change) {
        RecordedChange* const next = change->next_;
        change->~RecordedChange();
        change = next;
    }
}

void ChangeLog::join(ChangeLog& other, std::unordered_set<const void*>& kept) noexcept {
    const Mark start = mark();
    try {
        for (const RecordedChange* change = last_; kept.empty() && change; change = change->next_)
            kept.insert(change->what());
        if (copyFrom(other, kept)) return;
    } catch (const std::bad_alloc&) {
        // Then they are all kept.
    }
    while (last_ != start.last) dropLast();
    append(other);
}

/// Copies the changes of what is not kept yet; false when that does not do.
bool ChangeLog::copyFrom(const ChangeLog& other, std::unordered_set<const void*>& kept) {
    for (const RecordedChange* change = other.last_; change; change = change->next_)
        if (!change->what()) return false;
    // The newest comes first, and what the oldest keeps is what was before.
    std::vector<const RecordedChange*> changes;
    for (const RecordedChange* change = other.last_; change; change = change->next_)
        changes.push_back(change);
    for (auto change = changes.rbegin(); change != changes.rend(); ++change)
        if (kept.insert((*change)->what()).second && !(*change)->copyTo(*this)) return false;
    return true;
}

void ChangeLog::append(ChangeLog& other) noexcept {
    if (!other.last_) return;
    RecordedChange* oldest = other.last_;
    while (oldest->next_) oldest = oldest->next_;
    oldest->next_ = last_;
    last_ = std::exchange(other.last_, nullptr);
    held_ += std::exchange(other.held_, 0);
    Page* first = other.page_;
    while (first->previous) first = first->previous;
    first->previous = page_;
    page_ = std::exchange(other.page_, nullptr);
    pageCount_ += std::exchange(other.pageCount_, 0);
    pageBytes_ += std::exchange(other.pageBytes_, 0);
}

void ChangeLog::clear() noexcept {
    destroy(reversed(last_));
    last_ = nullptr;
    done_ = true;
    held_ = 0;
    while (page_) dropPage();
}

}  // namespace kiln
