#include <tessera/lodviewer.h>

#include <fltkilnutil/kilnflt.h>
#include <quillon/fltswitch.h>
#include <tessera/iaviaryutil.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace tessera {

namespace {

IAviaryUtil* aviary() {
    return static_cast<IAviaryUtil*>(GetCOREInterface(kAviaryInterfaceId));
}

/// The nodes that make up the hierarchy: walked through, never shown or hidden for themselves.
bool isStructural(FltNodeKind kind) { return fltIsBead(kind) || kind == FltNodeKind::LightPoint; }

void setHidden(INode* node, bool hidden) {
    node->Hide(hidden);
    node->InvalidateWS();
}

/// Pushes the children so that the first is visited first.
template <typename Push>
void pushChildren(INode* node, Push push) {
    for (int i = node->NumberOfChildren(); i-- > 0;) push(node->GetChildNode(i));
}

}  // namespace

bool LodViewer::MostDetail() {
    Collect();
    return lodDistances_.size() >= 2 && applyBand(0);
}

bool LodViewer::LeastDetail() {
    Collect();
    return lodDistances_.size() >= 2 && applyBand(lodDistances_.size() - 2);
}

bool LodViewer::MoreDetail() {
    IAviaryUtil* const published = aviary();
    if (!published || !published->IsLodDistanceSet()) return MostDetail();
    const double current = published->GetLodDistance();
    Collect();
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
    Collect();
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
    Collect();
    Apply(published->GetLodDistance());
}

bool LodViewer::applyBand(std::size_t lower) {
    Apply((lodDistances_[lower] + lodDistances_[lower + 1]) * 0.5);
    return true;
}

void LodViewer::Collect() {
    lodTable_.clear();
    lodDistances_.clear();
    pending_.clear();
    pending_.push_back({host_.GetRootNode(), false});
    while (!pending_.empty()) {
        INode* const node = pending_.back().node;
        pending_.pop_back();
        if (!node) continue;
        FltNodeKind kind;
        FltLod lod;
        if (fltGetKind(node, true, kind) && kind == FltNodeKind::Lod && fltGetRecord(node, lod)) {
            // A damaged record may hold anything; what cannot be ordered is no distance.
            for (const double distance : {lod.switchOutDistance, lod.switchInDistance})
                if (!std::isnan(distance)) lodDistances_.push_back(distance);
            lodTable_.push_back({node, lod});
        }
        pushChildren(node, [this](INode* child) { pending_.push_back({child, false}); });
    }
    std::sort(lodTable_.begin(), lodTable_.end(),
              [](const LodEntry& a, const LodEntry& b) { return std::less<>()(a.node, b.node); });
    std::sort(lodDistances_.begin(), lodDistances_.end());
    lodDistances_.erase(std::unique(lodDistances_.begin(), lodDistances_.end()),
                        lodDistances_.end());
}

void LodViewer::Apply(double distance) {
    walk(host_.GetRootNode(), distance);
    host_.RedrawViews(0, REDRAW_NORMAL, nullptr);
    if (IAviaryUtil* const published = aviary()) published->StoreLodDistance(distance);
}

const FltLod* LodViewer::findLod(INode* node) const {
    const auto found = std::lower_bound(
        lodTable_.begin(), lodTable_.end(), node,
        [](const LodEntry& entry, INode* wanted) { return std::less<>()(entry.node, wanted); });
    return found != lodTable_.end() && found->node == node ? &found->lod : nullptr;
}

// Scenes may be deeper than the call stack is, so the nodes to come are kept in a list.
void LodViewer::walk(INode* root, double distance) {
    pending_.clear();
    pending_.push_back({root, false});
    while (!pending_.empty()) {
        const Pending next = pending_.back();
        pending_.pop_back();
        if (next.node) visit(next, distance);
    }
}

void LodViewer::visit(const Pending& pending, double distance) {
    FltNodeKind kind;
    if (!fltGetKind(pending.node, true, kind)) {
        visitChildren(pending.node, pending.inRange);
        return;
    }
    if (kind == FltNodeKind::Switch) {
        visitSwitch(pending.node, pending.inRange);
        return;
    }
    if (kind == FltNodeKind::Lod) {
        if (const FltLod* const lod = findLod(pending.node)) {
            visitLod(pending.node, *lod, distance);
            return;
        }
    }
    if (!isStructural(kind) && pending.inRange) setHidden(pending.node, false);
    visitChildren(pending.node, pending.inRange);
}

void LodViewer::visitChildren(INode* node, bool inRange) {
    pushChildren(node, [=, this](INode* child) { pending_.push_back({child, inRange}); });
}

void LodViewer::visitLod(INode* node, const FltLod& lod, double distance) {
    if (lod.switchOutDistance < distance && distance <= lod.switchInDistance)
        visitChildren(node, true);
    else
        hideBelow(node);
}

void LodViewer::visitSwitch(INode* node, bool inRange) {
    FltSwitch record;
    if (!fltGetRecord(node, record)) return;
    // 64 bits hold every product of two 32-bit numbers, whatever a damaged record says.
    const std::int64_t first = std::int64_t{record.currentMask} * std::int64_t{record.wordsPerMask};
    const std::int64_t words = record.maskWords.count();
    if (first < 0 || first >= words) return;
    const std::int64_t children =
        std::min<std::int64_t>(node->NumberOfChildren(), (words - first) * 32);
    for (std::int64_t c = children; c-- > 0;) {
        const std::uint32_t word = *record.maskWords.at(static_cast<std::int32_t>(first + c / 32));
        if (word >> (c % 32) & 1u)
            pending_.push_back({node->GetChildNode(static_cast<int>(c)), inRange});
    }
}

void LodViewer::hideBelow(INode* node) {
    const std::size_t mark = pending_.size();
    visitChildren(node, false);
    while (pending_.size() > mark) {
        INode* const hidden = pending_.back().node;
        pending_.pop_back();
        if (!hidden) continue;
        setHidden(hidden, true);
        visitChildren(hidden, false);
    }
}

}  // namespace tessera
