#include "treerefill.h"

#include "ctreectrlex.h"

#include <base/utf16.h>

#include <algorithm>
#include <utility>

namespace tessera {
namespace {

// A sibling is recognised behind up to this many that are no longer there.
constexpr int kMostGone = 64;
// After this many differences the items are taken over by their places, whatever they showed.
constexpr int kMostDifferences = 1000;
// Items that a control goes through in about a fifth of a second; with more, another one is filled.
constexpr double kMostEffort = 5e8;
// A list that shrinks while its items are deleted is soon gone through.
constexpr double kEffortOfDeleting = 0.25;
// After deleting one that is shown the control counts all that are, which are scattered in memory.
constexpr double kEffortOfCounting = 5;

}  // namespace

TreeRefill::Scope::Scope(TreeRefill& refill) noexcept : refill_(refill) {
    if (refill_.scopes_++ == 0) refill_.expected_ = true;
}

TreeRefill::Scope::~Scope() {
    if (--refill_.scopes_ > 0) return;
    refill_.expected_ = refill_.underWay_ = refill_.givenUp_ = false;
    if (!refill_.tree_.HasWindow()) return;
    refill_.deleteWaiting();
    refill_.tree_.ForgetDeleted();
    refill_.tree_.Selection().caretMoved();
}

// As after deleting all items, the control has no caret and its branches are closed. Adding and
// deleting items below a closed branch also takes it less time.
bool TreeRefill::emptied() {
    if (!std::exchange(expected_, false)) return false;
    underWay_ = true;
    differences_ = 0;
    effort_ = 0;
    recognised_ = false;
    TreeModel& model = tree_.Model();
    before_ = static_cast<double>(model.allItems());
    tree_.EndEditLabel(true);
    tree_.Selection().moveCaret(nullptr);
    for (const TreeItem* top = model.first(); top; top = top->next)
        tree_.SendToControl(TVM_EXPAND, TVE_COLLAPSE, top->handle);
    model.keepWaiting();
    tree_.ForgetDeleted();
    return true;
}

double TreeRefill::effortOfDeleting(std::size_t count) const noexcept {
    return kEffortOfDeleting * static_cast<double>(count) *
           static_cast<double>(tree_.Model().allItems());
}

double TreeRefill::effortOfDeleting(const TreeItem& top, bool itself) const {
    const TreeItem* above = itself ? top.parent : &top;
    while (above && tree_.IsExpanded(*above)) above = above->parent;
    const double effort = effortOfDeleting(TreeModel::sizeOf(top) - (itself ? 0 : 1));
    return above ? effort
                 : effort + kEffortOfCounting * static_cast<double>(tree_.Model().allItems());
}

double TreeRefill::effortOfAdding(const TreeItem* parent) noexcept {
    return parent ? static_cast<double>(parent->madeBehind) : 0;
}

double TreeRefill::effortOfAddingLike(const TreeItem& top, const TreeItem& parent) const {
    const auto below = static_cast<double>(TreeModel::sizeOf(top) - 1);
    return effortOfAdding(&parent) + below * static_cast<double>(tree_.Model().allItems());
}

bool TreeRefill::isTooMuch(double effort) noexcept {
    return effort > kMostEffort;
}

bool TreeRefill::givesUp(double effort) {
    effort_ += effort;
    if (underWay_ && isTooMuch(effort_)) givenUp_ = true;
    return givenUp_;
}

bool TreeRefill::isGivenUp() {
    return givenUp_ || givesUp(effortOfDeleting(tree_.Model().waiting()));
}

bool TreeRefill::isGivenUpAdding(const TreeItem* parent) {
    // The others would be gone through in another control as well.
    return givenUp_ || givesUp(std::min(effortOfAdding(parent), before_));
}

void TreeRefill::beginAnew() noexcept {
    underWay_ = givenUp_ = false;
    effort_ = 0;
}

// The node's item among those that wait below `parent`, null when there is none. Items in front of
// it are deleted: their nodes are no longer there.
TreeItem* TreeRefill::matching(TreeItem* parent, NodeHandle node) {
    int gone = 0;
    const TreeItem* same = tree_.Model().firstWaiting(parent);
    while (same && same->node != node && gone < kMostGone) {
        same = same->next;
        ++gone;
    }
    if (!same || same->node != node) return nullptr;
    std::size_t deleting = 0;
    for (TreeItem* at = tree_.Model().firstWaiting(parent); at != same; at = at->next)
        deleting += TreeModel::sizeOf(*at);
    if (givesUp(effortOfDeleting(deleting))) return nullptr;
    differences_ += gone;
    for (; gone > 0; --gone) deleteFirstWaiting(parent);
    return tree_.Model().firstWaiting(parent);
}

TreeItem* TreeRefill::takeBack(TreeItem* parent, std::string_view text, NodeHandle node,
                               int image) {
    if (givenUp_ || !tree_.Model().firstWaiting(parent)) return nullptr;
    const bool found = matching(parent, node) != nullptr;
    if (givenUp_) return nullptr;
    if (parent && !std::exchange(recognised_, true) && !found) {  // another scene
        if (!isGivenUp()) deleteWaiting();
        return nullptr;
    }
    if (!found && parent && ++differences_ < kMostDifferences) return nullptr;
    TreeItem& item = tree_.Model().putBack(parent);
    if (item.node != node || item.text != text || item.image != image)
        showAnew(item, text, node, image);
    return &item;
}

void TreeRefill::showAnew(TreeItem& item, std::string_view text, NodeHandle node, int image) {
    if (item.node != node && item.firstWaiting)
        tree_.SendToControl(TVM_EXPAND, TVE_COLLAPSE, item.handle);
    std::wstring wideText = base::toWide(text);
    TVITEMW shown{};
    shown.mask = TVIF_HANDLE | TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    shown.hItem = item.handle;
    shown.pszText = wideText.data();
    shown.lParam = static_cast<LPARAM>(node);
    shown.iImage = shown.iSelectedImage = image;
    tree_.SendToControl(TVM_SETITEMW, 0, &shown);
    item.node = node;
    item.text = text;
    item.image = image;
}

void TreeRefill::deleteFirstWaiting(TreeItem* parent) {
    const auto changing = tree_.Changing();
    TreeModel& model = tree_.Model();
    const HTREEITEM handle = model.firstWaiting(parent)->handle;
    model.dropWaiting(parent);
    tree_.SendToControl(TVM_DELETEITEM, 0, handle);
}

void TreeRefill::deleteWaiting() {
    TreeModel& model = tree_.Model();
    if (!model.hasWaiting()) return;
    const auto changing = tree_.Changing();
    while (model.firstWaiting(nullptr)) deleteFirstWaiting(nullptr);
    for (TreeItem* at = model.first(); at; at = TreeModel::following(*at)) {
        if (at->firstWaiting && !at->firstChild) {
            while (at->firstWaiting) model.dropWaiting(at);
            tree_.DeleteAllBelow(at->handle);
        }
        while (at->firstWaiting) deleteFirstWaiting(at);
    }
}

}  // namespace tessera
