// Levels of detail and switches, when all that they show is known.
#include "gathered.h"

#include <quillon/fltopcode.h>
#include <quillon/fltswitch.h>

#include <algorithm>
#include <bit>

namespace checks {

namespace {

/// Levels with one centre below one node: they take each other's place.
class LodSets {
public:
    explicit LodSets(Gathered& all) : all_(all) {}

    void check() {
        // By parent; within one, by what is shown the nearest.
        std::vector<std::uint32_t> order(all_.lods.size());
        for (std::uint32_t i = 0; i < order.size(); ++i) order[i] = i;
        std::ranges::stable_sort(order, [&](std::uint32_t a, std::uint32_t b) {
            const std::uint32_t parentA = parentOf(a), parentB = parentOf(b);
            return parentA != parentB ? parentA < parentB : before(lod(a).center, lod(b).center);
        });
        for (std::size_t begin = 0; begin < order.size();) {
            std::size_t end = begin + 1;
            while (end < order.size() && parentOf(order[end]) == parentOf(order[begin]) &&
                   length(lod(order[end]).center - lod(order[begin]).center) <= all_.tolerance())
                ++end;
            checkSet(std::span(order).subspan(begin, end - begin));
            begin = end;
        }
    }

private:
    const KeptLod& lod(std::uint32_t i) const { return all_.lods[i]; }
    std::uint32_t parentOf(std::uint32_t i) const { return all_.nodes[lod(i).node].parent; }
    const Bead& beadOf(std::uint32_t i) const { return all_.beads[all_.nodes[lod(i).node].bead]; }
    static bool before(const FltPoint3d& a, const FltPoint3d& b) {
        if (a.x != b.x) return a.x < b.x;
        return a.y != b.y ? a.y < b.y : a.z < b.z;
    }

    void checkSet(std::span<std::uint32_t> set) {
        Box box;
        bool isOpen = false;
        double farthest = 0;
        for (const std::uint32_t i : set) {
            box.add(beadOf(i).box);
            isOpen = isOpen || beadOf(i).isOpen;
            farthest = std::max(farthest, lod(i).in);
        }
        const double radius = box.radius();
        if (!box.isEmpty() && !isOpen) {
            const double off = length(lod(set[0]).center - box.middle());
            if (off > radius + all_.tolerance())
                for (const std::uint32_t i : set)
                    all_.found(Rule::LOD_CENTER, lod(i).node, off, radius);
            if (farthest < radius) {
                const auto last =
                    std::ranges::max(set, {}, [&](std::uint32_t i) { return lod(i).in; });
                all_.foundDetail(Rule::LOD_SIZE, lod(last).node,
                                 std::bit_cast<std::int64_t>(radius), farthest, radius);
            }
        }
        checkRanges(set);
    }

    /// From the nearest range to the farthest; equal ones are parts of one level.
    void checkRanges(std::span<std::uint32_t> set) {
        std::ranges::stable_sort(set, [&](std::uint32_t a, std::uint32_t b) {
            return lod(a).out != lod(b).out ? lod(a).out < lod(b).out : lod(a).in < lod(b).in;
        });
        const KeptLod* shown = nullptr;
        for (const std::uint32_t i : set) {
            const KeptLod& next = lod(i);
            if (next.in <= next.out) continue;
            if (shown != nullptr && next.out == shown->out && next.in == shown->in) continue;
            if (shown != nullptr) {
                const double step = 1e-6 * std::max(std::abs(shown->in), 1.0);
                if (next.out > shown->in + step) {
                    all_.foundDetail(Rule::LOD_GAP, next.node,
                                     std::bit_cast<std::int64_t>(shown->in), shown->in, next.out);
                } else if (next.out < shown->in - step &&
                           shown->in - next.out >
                               std::max(shown->transition, next.transition) + step) {
                    all_.foundDetail(Rule::LOD_OVERLAP, next.node,
                                     std::bit_cast<std::int64_t>(shown->in), next.out,
                                     std::min(shown->in, next.in));
                }
            }
            if (shown == nullptr || next.in > shown->in) shown = &next;
        }
    }

    Gathered& all_;
};

/// A level that its own range, or a level above it, never lets show.
void checkReach(Gathered& all, const std::vector<std::uint32_t>& lodOf, const KeptLod& lod) {
    if (lod.in == lod.out)
        return all.found(Rule::LOD_UNREACHABLE, lod.node, "both distances are the same");
    for (std::uint32_t above = all.nodes[lod.node].parent; above != kNone;
         above = all.nodes[above].parent) {
        if (all.nodes[above].kind != kFltLod) continue;
        const auto found = std::ranges::lower_bound(lodOf, above);
        if (found == lodOf.end() || *found != above) return;
        const KeptLod& outer = all.lods[static_cast<std::size_t>(found - lodOf.begin())];
        const double apart = length(outer.center - lod.center);
        if (lod.in <= outer.out - apart || lod.out >= outer.in + apart)
            all.found(Rule::LOD_UNREACHABLE, lod.node,
                      "the level above is shown from " + Gathered::textOf(outer.out) + " to " +
                          Gathered::textOf(outer.in));
        return;
    }
}

void checkSwitch(Gathered& all, const KeptSwitch& kept) {
    const std::uint32_t children = all.nodes[kept.node].children;
    if (kept.words.empty()) return all.found(Rule::SWITCH_EMPTY, kept.node, "masks");
    if (children == 0) return all.found(Rule::SWITCH_EMPTY, kept.node, "children");
    constexpr std::uint32_t kBits = FltSwitch::kMaskBitsPerWord;
    const auto perMask = static_cast<std::uint32_t>(kept.wordsPerMask);
    const std::uint64_t bits = std::uint64_t{perMask} * kBits;
    if (bits < children) all.found(Rule::SWITCH_MASK_SHORT, kept.node, bits, children);
    std::vector<std::uint32_t> shown(perMask);
    for (std::size_t i = 0; i < kept.words.size(); ++i) shown[i % perMask] |= kept.words[i];
    bool stray = false;
    for (std::uint32_t word = 0; word < perMask; ++word) {
        const std::uint32_t used = FltSwitch::bitsInUse(children, word);
        stray = stray || (shown[word] & ~used) != 0;
        for (std::uint32_t never = used & ~shown[word]; never != 0; never &= never - 1)
            all.found(Rule::SWITCH_NEVER, kept.node,
                      word * kBits + static_cast<std::uint32_t>(std::countr_zero(never)) + 1);
    }
    // What masks have no bit for they do not show.
    for (std::uint64_t child = bits; child < children; ++child)
        all.found(Rule::SWITCH_NEVER, kept.node, child + 1);
    if (stray) all.found(Rule::SWITCH_STRAY_BITS, kept.node, children);
}

}  // namespace

void checkLods(Gathered& all) {
    LodSets(all).check();
    std::vector<std::uint32_t> lodOf;  // ascending, as they were walked
    for (const KeptLod& lod : all.lods) lodOf.push_back(lod.node);
    for (const KeptLod& lod : all.lods) {
        checkReach(all, lodOf, lod);
        const std::uint64_t polygons = all.beads[all.nodes[lod.node].bead].polygons;
        if (polygons > all.target.limits.lodFaces)
            all.found(Rule::BUDGET, lod.node, "polygons", polygons, all.target.limits.lodFaces);
    }
}

void checkSwitches(Gathered& all) {
    for (const KeptSwitch& kept : all.switches) checkSwitch(all, kept);
    for (std::uint32_t i = 0; i < all.nodes.size(); ++i) {
        const KeptNode& node = all.nodes[i];
        // A child of a switch that shows nothing is a state of it.
        const bool isState = node.parent != kNone && all.nodes[node.parent].kind == kFltSwitch;
        if (node.children == 0 && !isState && (node.kind == kFltGroup || node.kind == kFltObject))
            all.found(Rule::GROUP_EMPTY, i);
    }
}

}  // namespace checks
