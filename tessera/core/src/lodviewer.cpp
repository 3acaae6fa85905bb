#include <tessera/lodviewer.h>

#include <fltkilnutil/actions.h>
#include <fltkilnutil/kilnflt.h>
#include <tessera/iaviaryutil.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <utility>

namespace tessera {

namespace {

IAviaryUtil* aviary() {
    return static_cast<IAviaryUtil*>(GetCOREInterface(kAviaryInterfaceId));
}

/// The nodes that make up the hierarchy: walked through, never shown or hidden for themselves.
bool isStructural(FltNodeKind kind) {
    return fltIsBead(kind) || kind == FltNodeKind::LightPoint;
}

/// Hiding costs the viewports a redraw, so a node that is as it should be is left alone.
void setHidden(INode* node, bool hidden) {
    if (node->IsHidden() == hidden) return;
    node->Hide(hidden);
    node->InvalidateWS();
}

}  // namespace

bool LodViewer::MostDetail() {
    Collect(host_.GetRootNode());
    return lodDistances_.size() >= 2 && applyBand(0);
}

bool LodViewer::LeastDetail() {
    Collect(host_.GetRootNode());
    return lodDistances_.size() >= 2 && applyBand(lodDistances_.size() - 2);
}

bool LodViewer::MoreDetail() {
    IAviaryUtil* const published = aviary();
    if (!published || !published->IsLodDistanceSet()) return MostDetail();
    const double current = published->GetLodDistance();
    Collect(host_.GetRootNode());
    if (lodDistances_.size() < 2) return false;
    const auto found = std::lower_bound(lodDistances_.begin(), lodDistances_.end(), current);
    auto index = found - lodDistances_.begin();
    if (found == lodDistances_.end() || *found != current) --index;
    return index >= 1 && applyBand(static_cast<std::size_t>(index - 1));
}

bool LodViewer::LessDetail() {
    IAviaryUtil* const published = aviary();
    if (!published || !published->IsLodDistanceSet()) return LeastDetail();
    const double current = published->GetLodDistance();
    Collect(host_.GetRootNode());
    if (lodDistances_.size() < 2) return false;
    // Unlike in MoreDetail, a distance between two others stands for the upper of them: the
    // current distance normally lies inside a band, and this way both steps move exactly one.
    const auto found = std::lower_bound(lodDistances_.begin(), lodDistances_.end(), current);
    const auto index = static_cast<std::size_t>(found - lodDistances_.begin());
    return index + 1 < lodDistances_.size() && applyBand(index);
}

void LodViewer::Refresh() {
    IAviaryUtil* const published = aviary();
    if (!published || !published->IsLodDistanceSet()) return;
    Collect(host_.GetRootNode());
    Apply(published->GetLodDistance());
}

bool LodViewer::applyBand(std::size_t lower) {
    Apply(std::midpoint(lodDistances_[lower], lodDistances_[lower + 1]));  // finite, as they are
    return true;
}

void LodViewer::Collect(INode* root) {
    lodTable_.clear();
    lodDistances_.clear();
    walk(root, [this](INode* node, Reach) { collect(node); });
    // Nodes often lie in memory in the order of the scene.
    const auto isBefore = [](const LodEntry& a, const LodEntry& b) {
        return std::less<>()(a.node, b.node);
    };
    if (!std::is_sorted(lodTable_.begin(), lodTable_.end(), isBefore))
        std::sort(lodTable_.begin(), lodTable_.end(), isBefore);
    foundLast_ = 0;
    std::sort(lodDistances_.begin(), lodDistances_.end());
    lodDistances_.erase(std::unique(lodDistances_.begin(), lodDistances_.end()),
                        lodDistances_.end());
}

// No host object counts as a level of detail, so nothing needs to be derived.
void LodViewer::collect(INode* node) {
    FltNodeKind kind;
    if (fltGetKind(node, false, kind) && kind == FltNodeKind::Lod) {
        FltLod lod;
        if (fltGetRecord(node, lod)) {
            addDistance(lod.switchOutDistance);
            addDistance(lod.switchInDistance);
            lodTable_.push_back({node, lod});
        }
    }
    enter(node, Reach::kOutOfRange);
}

/// A damaged record may hold a number that is not finite; that is no distance. Most repeated
/// distances are left out here already.
void LodViewer::addDistance(double distance) {
    constexpr std::ptrdiff_t kLookedBack = 8;
    if (!std::isfinite(distance)) return;
    const auto end = lodDistances_.end();
    const auto begin = end - std::min(kLookedBack, end - lodDistances_.begin());
    if (std::find(begin, end, distance) == end) lodDistances_.push_back(distance);
}

void LodViewer::Apply(double distance) {
    using fltkilnutil::Action, fltkilnutil::ActionScope, fltkilnutil::kDetailPreviewJoin;
    ActionScope scope(Action::kShowDetail, kDetailPreviewJoin);
    walk(host_.GetRootNode(),
         [=, this](INode* node, Reach reach) { visit(node, reach, distance); });
    scope.Commit();
    host_.RedrawViews(0, REDRAW_NORMAL, nullptr);
    if (IAviaryUtil* const published = aviary()) published->StoreLodDistance(distance);
}

const FltLod* LodViewer::findLod(INode* node) {
    // The next entry is the one that is usually asked for.
    if (foundLast_ + 1 < lodTable_.size() && lodTable_[foundLast_ + 1].node == node)
        return &lodTable_[++foundLast_].lod;
    const auto found = std::lower_bound(
        lodTable_.begin(), lodTable_.end(), node,
        [](const LodEntry& entry, INode* wanted) { return std::less<>()(entry.node, wanted); });
    if (found == lodTable_.end() || found->node != node) return nullptr;
    foundLast_ = static_cast<std::size_t>(found - lodTable_.begin());
    return &found->lod;
}

/// Visits `root`, and then whatever the visits enter: each child after its parent and before its
/// next sibling. Scenes may be deeper than the call stack is, so the way down is kept in a list.
template <typename Visit>
void LodViewer::walk(INode* root, Visit visit) {
    levels_.clear();
    masks_.clear();
    if (root) visit(root, Reach::kOutOfRange);
    while (!levels_.empty()) {
        const Reach reach = levels_.back().reach;
        if (INode* const child = nextChild()) {
            visit(child, reach);
            continue;
        }
        if (levels_.back().masked) masks_.pop_back();
        levels_.pop_back();
    }
}

INode* LodViewer::nextChild() {
    Level& level = levels_.back();
    if (level.masked) return nextMaskedChild(level);
    if (level.nextChild == level.childCount) return nullptr;
    return level.node->GetChildNode(level.nextChild++);
}

INode* LodViewer::nextMaskedChild(Level& level) {
    constexpr int kWordBits = 32;
    const auto& words = masks_.back().record.maskWords;
    for (;; ++level.nextChild) {
        const std::int64_t at = masks_.back().firstWord + level.nextChild / kWordBits;
        if (at >= words.count()) return nullptr;
        const std::uint32_t word = *words.at(static_cast<std::int32_t>(at));
        if (word >> (level.nextChild % kWordBits) & 1u)
            return level.node->GetChildNode(level.nextChild++);
    }
}

void LodViewer::enter(INode* node, Reach reach) {
    if (const int count = node->NumberOfChildren(); count > 0)
        levels_.push_back({node, 0, count, reach, false});
}

void LodViewer::visit(INode* node, Reach reach, double distance) {
    if (reach == Reach::kHidden) {
        setHidden(node, true);
        return enter(node, reach);
    }
    // Only a node that may be shown is asked for the kind of its host object.
    FltNodeKind kind;
    if (!fltGetKind(node, reach == Reach::kInRange, kind)) return enter(node, reach);
    if (kind == FltNodeKind::Switch) return visitSwitch(node, reach);
    if (kind == FltNodeKind::Lod) {
        if (const FltLod* const lod = findLod(node)) {
            const bool shows =
                lod->switchOutDistance < distance && distance <= lod->switchInDistance;
            return enter(node, shows ? Reach::kInRange : Reach::kHidden);
        }
    }
    if (reach == Reach::kInRange && !isStructural(kind)) setHidden(node, false);
    enter(node, reach);
}

/// Enters the children that the current mask shows; the others stay as they are.
void LodViewer::visitSwitch(INode* node, Reach reach) {
    Mask mask;
    if (!fltGetRecord(node, mask.record)) return;
    // 64 bits hold every product of two 32-bit numbers, whatever a damaged record says.
    mask.firstWord = std::int64_t{mask.record.currentMask} * std::int64_t{mask.record.wordsPerMask};
    if (mask.firstWord < 0) return;
    masks_.push_back(std::move(mask));
    levels_.push_back({node, 0, node->NumberOfChildren(), reach, true});
}

}  // namespace tessera
