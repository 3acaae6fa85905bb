// The history as plug-ins and the application see it.
#include <kiln/host/core.h>
#include <kiln/host/diagnostics.h>
#include <kiln/host/history.h>
#include <kiln/subtree.h>
#include <kiln/undo.h>

#include <iterator>

#include "nodebytes.h"
#include "scenehistory.h"

using kiln::SceneHistory;

UndoScope::UndoScope(const char* name, DWORD join) {
    SceneHistory* const history = SceneHistory::current();
    if (!history) return;
    depth_ = history->depth();
    history->beginScope(name, join);
    history_ = history->number();
}

UndoScope::~UndoScope() {
    RollBack();
}

void UndoScope::Commit() noexcept {
    SceneHistory* const history = SceneHistory::current();
    if (history_ != 0 && history && history->number() == history_) history->commit(depth_);
    history_ = 0;
}

void UndoScope::RollBack() noexcept {
    SceneHistory* const history = SceneHistory::current();
    if (history_ != 0 && history && history->number() == history_) history->rollBack(depth_);
    history_ = 0;
}

bool IsUndoable(std::size_t bytes) noexcept {
    return SceneHistory::limit() == 0 || bytes <= SceneHistory::limit();
}

std::size_t UndoBytesOfDeleting(INode* node) {
    std::size_t bytes = 0;
    ForEachInSubtree(node, [&](const INode& one) { bytes += kiln::bytesOf(one); });
    return bytes;
}

namespace kiln {

void setLargeStepQuestion(LargeStepQuestion question) {
    SceneHistory::setLargeStepQuestion(std::move(question));
}

namespace {

const HistoryStep& stepAt(const SceneHistory& history, std::size_t index) {
    const std::size_t done = history.done().size();
    return index < done
               ? *std::next(history.done().begin(), static_cast<std::ptrdiff_t>(index))
               : *std::next(history.undone().begin(), static_cast<std::ptrdiff_t>(index - done));
}

/// Steps that are not closed yet count too: they are closed before they are looked at.
SceneHistory& steps() noexcept {
    SceneHistory& history = *SceneHistory::current();
    history.endCommand();
    return history;
}

}  // namespace

WithoutHistory::WithoutHistory() noexcept {
    steps().clear();
    SceneHistory::current()->pause();
}

WithoutHistory::~WithoutHistory() {
    SceneHistory::current()->resume();
    SceneHistory::current()->noteUnrecorded();
}

std::size_t History::stepCount() const noexcept {
    const SceneHistory& history = steps();
    return history.done().size() + history.undone().size();
}

std::size_t History::doneCount() const noexcept {
    return steps().done().size();
}

std::string History::stepName(std::size_t index) const {
    return index < stepCount() ? stepAt(steps(), index).name : std::string();
}

bool History::undo() noexcept {
    return steps().undo();
}

bool History::redo() noexcept {
    return steps().redo();
}

bool History::goTo(std::size_t doneCount) noexcept {
    if (doneCount > stepCount()) return false;
    while (this->doneCount() > doneCount)
        if (!undo()) return false;
    while (this->doneCount() < doneCount)
        if (!redo()) return false;
    return true;
}

void History::endCommand() noexcept {
    steps();
}

void History::clear() noexcept {
    SceneHistory& history = steps();
    if (history.depth() == 0 && !history.telling()) history.clear();
}

std::size_t History::bytes() const noexcept {
    return steps().bytes();
}

std::size_t History::limit() const noexcept {
    return SceneHistory::limit();
}

void History::setLimit(std::size_t bytes) noexcept {
    SceneHistory::current()->setLimit(bytes);
}

}  // namespace kiln
