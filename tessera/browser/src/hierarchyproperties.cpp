// The property side of the form: the current node's name and comment.
#include "attributestore.h"
#include "hierarchy.h"

#include <fltkilnutil/kilnflt.h>
#include <resources/resource.h>

#include <utility>

namespace tessera {
namespace {

// A comment keeps at most this many characters when it is edited here.
constexpr int kLongestComment = 8096;

// An edit control shows only pairs of carriage return and line feed as line ends.
std::string withLineEnds(const std::string& text) {
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')) shown += '\r';
        shown += text[i];
    }
    return shown;
}

}  // namespace

void Hierarchy::limitComment() {
    comment_.SetLimit(kLongestComment);
}

// Every change of the current item ends here.
void Hierarchy::showNode(HTREEITEM item) {
    finishTyping();
    current_ = item;
    const TreeItem* const found = tree_.Find(item);
    if (!found) {
        current_ = nullptr;
        showNothing("");
        return;
    }
    if (!found->node) {
        showNothing("");
        return;
    }
    const std::optional<FltNodeKind> kind = recordKind(found->node);
    const FltAttrGroup* const set = kind ? loadAttributes(found->node) : nullptr;
    if (!set) {
        showNothing("Non-OpenFlight Selection");
        return;
    }
    showName(*set);
    showAttributes(*set);
    comment_.Enable();
    showComment(found->node);
    focusTree();
    editSwitch(*kind == FltNodeKind::Switch, item);
}

void Hierarchy::showNothing(const char* name) {
    setName(name);
    showComment(0);
    reduceGrid();
    focusTree();
    editSwitch(false, nullptr);
}

void Hierarchy::showName(const FltAttrGroup& set) {
    setName(std::string(set.caption ? set.caption : "") + ":" + tree_.ItemText(current_));
}

// The field is for reading only, so it still shows what it was last given; to ask it takes almost
// as long as to set it.
void Hierarchy::setName(std::string name) {
    if (shownName_ == name) return;
    name_.SetText(name);
    shownName_ = std::move(name);
}

// Gives the keyboard to the tree, but takes it from nobody else's window while the form is hidden.
void Hierarchy::focusTree() {
    if (IsVisible() && !keepFocus_) tree_.SetFocus();
}

/// No node: empty and not to be written in.
void Hierarchy::showComment(NodeHandle node) {
    std::string text;
    if (node) fltGetComment(nodeOf(node), text);
    const std::string shown = withLineEnds(text);
    if (comment_.Text() != shown) comment_.SetFittedText(shown);
    comment_.Enable(node != 0);
    shownComment_ = comment_.Text(kLongestComment);
}

// Only what the user changed is written, so that walking over a node gives it no comment.
void Hierarchy::storeComment() {
    const NodeHandle node = tree_.Node(current_);
    if (!node || !comment_.IsEnabled()) return;
    const std::string text = comment_.Text(kLongestComment);
    if (text == shownComment_) return;
    if (fltPutComment(nodeOf(node), text)) shownComment_ = text;
}

}  // namespace tessera
