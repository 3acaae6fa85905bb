#include <checks/check.h>

#include "gathered.h"

#include <quillon/fltface.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlod.h>
#include <quillon/fltmesh.h>
#include <quillon/fltopcode.h>
#include <quillon/fltrecord.h>
#include <quillon/fltunits.h>
#include <quillon/fltvertexlist.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace checks {

class Check::Work {
public:
    Work(Source& source, const Target& target, KnownReferences* known)
        : all_(target, source, known != nullptr ? *known : own_) {
        all_.report.target = target.name;
        estimate_ = source.estimate();
        // Room that is not used costs nothing, and growing costs half as much again.
        constexpr std::size_t kUsualCorners = 4;
        all_.nodes.reserve(estimate_);
        all_.polygons.reserve(estimate_);
        all_.corners.reserve(kUsualCorners * estimate_);
        if (all_.isOn(Rule::NAME_DUPLICATE)) all_.names.reserve(estimate_);
    }

    /// A piece of the work, small but for sorting; false when all is done.
    bool step() {
        switch (phase_) {
            case 0:
                for (int i = 0; i < kPiece; ++i)
                    if (!walkOne()) return endPhase();
                return true;
            case 1:
                addUpBeads();
                return endPhase();
            case 2:
                return polygons(checkPolygon);
            case 3:
                return polygons(checkSubface);
            case 4:
                return search(searchDuplicates);
            case 5:
                return search(searchOverlaps);
            case 6:
                checkLods(all_);
                checkSwitches(all_);
                return endPhase();
            case 7:
                checkNames(all_);
                checkDatabases(all_);
                return endPhase();
            case 8:
                checkFiles(all_);
                return endPhase();
            case 9:
                sortFindings();
                return endPhase();
            default:
                return false;
        }
    }

    double progress() const noexcept {
        if (phase_ > 9) return 1;
        const auto share = [](std::size_t part, std::size_t whole) {
            return whole == 0
                       ? 1.0
                       : std::min(1.0, static_cast<double>(part) / static_cast<double>(whole));
        };
        // The walk takes about half of the time, the polygons most of the rest.
        if (phase_ == 0) return 0.5 * share(all_.nodes.size(), estimate_);
        if (phase_ <= 3) return 0.5 + 0.1 * (phase_ - 1) + 0.1 * share(next_, all_.polygons.size());
        return 0.8 + 0.03 * (phase_ - 3);
    }

    const Report& report() const noexcept { return all_.report; }

private:
    static constexpr int kPiece = 256;

    bool endPhase() {
        next_ = 0;
        return ++phase_ <= 9;
    }

    bool polygons(void (*check)(Gathered&, std::size_t)) {
        for (int i = 0; i < kPiece; ++i) {
            if (next_ >= all_.polygons.size()) return endPhase();
            check(all_, next_++);
        }
        return true;
    }

    bool search(std::unique_ptr<Coincidences> (*begin)(Gathered&)) {
        if (!search_) search_ = begin(all_);
        if (search_ && search_->step()) return true;
        search_.reset();
        return endPhase();
    }

    bool walkOne() {
        Node node;
        if (!all_.source.next(node)) return false;
        const auto number = static_cast<std::uint32_t>(all_.nodes.size());
        all_.nodes.push_back(keep(node, number));
        checkNode(all_, number, node);
        checkAttached(all_, number, node);
        if (node.polygons != nullptr) keepPolygons(node, number);
        return true;
    }

    KeptNode keep(const Node& node, std::uint32_t number) {
        KeptNode kept;
        kept.place = node.place;
        kept.parent = node.parent < number ? node.parent : kNone;
        kept.kind = node.kind;
        KeptNode* const parent = kept.parent == kNone ? nullptr : &all_.nodes[kept.parent];
        if (parent != nullptr) {
            ++parent->children;
            kept.depth = static_cast<std::uint16_t>(std::min(parent->depth + 1, 0xFFFF));
            kept.database = parent->database;
        }
        const bool isApart = parent == nullptr || node.kind == kFltLod ||
                             node.kind == kFltInstanceDef || node.kind == kFltHeader ||
                             parent->kind == kFltSwitch;
        kept.context = isApart ? number : parent->context;
        if (node.kind == kFltHeader && all_.databases.size() < 0xFFFF) {
            kept.database = static_cast<std::uint16_t>(all_.databases.size());
            all_.databases.emplace_back().node = number;
        }
        // A face has a bead of its own only where it is moved, or stands alone.
        if (parent != nullptr && isSurface(node.kind) && !node.hasTransform) {
            kept.bead = parent->bead;
        } else {
            kept.bead = static_cast<std::uint32_t>(all_.beads.size());
            Bead& bead = all_.beads.emplace_back();
            bead.node = number;
            if (parent != nullptr) {
                bead.above = parent->bead;
                bead.world = all_.beads[parent->bead].world;
            }
            if (node.hasTransform) bead.world = node.transform.then(bead.world);
            bead.isOpen = node.kind == kFltInstanceRef || node.kind == kFltExternalRef;
        }
        Statistics& figures = all_.report.statistics;
        ++figures.nodes;
        figures.depth = std::max<std::uint32_t>(figures.depth, kept.depth + 1U);
        return kept;
    }

    void keepPolygons(const Node& node, std::uint32_t number) {
        const Polygons& shown = *node.polygons;
        checkCorners(node, number);
        if (fltIsLightPoint(node.kind)) {
            all_.report.statistics.lightPoints += shown.corners.size();
            const Transform& world = all_.beads[all_.nodes[number].bead].world;
            for (const FltPoint3d& corner : shown.corners) {
                const FltPoint3d place = world(corner);
                if (isFinite(place)) all_.beads[all_.nodes[number].bead].box.add(place);
            }
            return;
        }
        KeptPolygon polygon;
        polygon.node = number;
        if (isSurface(node.kind) && node.record != nullptr) {
            const auto& surface = static_cast<const FltPolygonRec&>(*node.record);
            polygon.drawType = surface.drawType;
            polygon.layer = std::max<std::int16_t>(surface.relativePriority, 0);
            polygon.isHidden = (surface.flags & kFltSurfaceHidden) != 0;
        }
        for (std::uint32_t above = all_.nodes[number].parent;
             above != kNone && all_.nodes[above].kind == kFltFace && polygon.layer != kTopLayer;
             above = all_.nodes[above].parent)
            polygon.layer =
                static_cast<std::int16_t>(std::min<int>(polygon.layer + 0x100, kTopLayer));
        Bead& bead = all_.beads[all_.nodes[number].bead];
        std::size_t begin = 0;
        for (const std::uint32_t end : shown.ends) {
            polygon.first = static_cast<std::uint32_t>(all_.corners.size());
            all_.polygons.push_back(polygon);
            for (; begin < end; ++begin) {
                const FltPoint3d place = bead.world(shown.corners[begin]);
                all_.corners.push_back(place);
                if (isFinite(place)) bead.box.add(place);
            }
        }
        bead.polygons += shown.ends.size();
        all_.report.statistics.polygons += shown.ends.size();
        all_.report.statistics.corners += shown.corners.size();
    }

    /// What the vertices of a node say before they are placed in the world.
    void checkCorners(const Node& node, std::uint32_t number) {
        const Polygons& shown = *node.polygons;
        if (shown.unused != 0) all_.found(Rule::VERTEX_UNUSED, number, shown.unused);
        if (shown.badIndex >= 0)
            all_.foundDetail(Rule::INDEX_RANGE, number, shown.badIndex, "vertex", shown.badIndex);
        std::uint32_t notFinite = 0;
        double farthest = 0;
        for (const FltPoint3d& corner : shown.corners) {
            if (!isFinite(corner)) {
                ++notFinite;
                continue;
            }
            farthest =
                std::max({farthest, std::abs(corner.x), std::abs(corner.y), std::abs(corner.z)});
        }
        if (notFinite != 0) all_.found(Rule::VERTEX_NONFINITE, number, notFinite);
        // A float has 24 bits: from here on its steps are more than a millimetre.
        constexpr double kCoarse = 16384;
        if (farthest < kCoarse / 1852) return;
        const FltUnits* const units =
            fltUnits(all_.databaseOf(number).header.vertexCoordinateUnits);
        const double metres = units != nullptr ? farthest * units->metres : farthest;
        Bead& bead = all_.beads[all_.nodes[number].bead];
        if (metres < kCoarse || bead.isFar) return;
        bead.isFar = true;
        all_.found(Rule::VERTEX_FAR, bead.node, farthest);
    }

    /// Boxes and numbers of polygons upwards, and the box around everything.
    void addUpBeads() {
        for (std::size_t i = all_.beads.size(); i-- > 0;) {
            const Bead& bead = all_.beads[i];
            if (bead.above == kNone) {
                all_.box.add(bead.box);
                continue;
            }
            Bead& above = all_.beads[bead.above];
            above.box.add(bead.box);
            if (all_.nodes[bead.node].kind != kFltLod) above.polygons += bead.polygons;
            above.isOpen = above.isOpen || bead.isOpen;
        }
        if (all_.box.isEmpty()) return;
        Statistics& figures = all_.report.statistics;
        figures.lowest = {all_.box.lowest.x, all_.box.lowest.y, all_.box.lowest.z};
        figures.highest = {all_.box.highest.x, all_.box.highest.y, all_.box.highest.z};
    }

    /// By the order of the nodes.
    void sortFindings() {
        std::vector<std::uint32_t> order(all_.orders.size());
        std::iota(order.begin(), order.end(), 0U);
        std::ranges::stable_sort(order, {}, [&](std::uint32_t i) { return all_.orders[i]; });
        std::vector<Finding> sorted;
        sorted.reserve(order.size());
        for (const std::uint32_t i : order) sorted.push_back(std::move(all_.report.findings[i]));
        all_.report.findings = std::move(sorted);
    }

    KnownReferences own_;
    Gathered all_;
    std::unique_ptr<Coincidences> search_;  ///< that is under way
    std::size_t estimate_ = 0;
    int phase_ = 0;
    std::size_t next_ = 0;
};

Check::Check(Source& source, const Target& target, KnownReferences* known)
    : work_(std::make_unique<Work>(source, target, known)) {}

Check::~Check() = default;

bool Check::advance(std::chrono::milliseconds slice) {
    const auto end = std::chrono::steady_clock::now() + slice;
    while (work_->step())
        if (std::chrono::steady_clock::now() >= end) return false;
    return true;
}

void Check::finish() {
    while (work_->step()) {
    }
}

double Check::progress() const noexcept {
    return work_->progress();
}

const Report& Check::report() const noexcept {
    return work_->report();
}

}  // namespace checks
