// What databases say as a whole: names, counters, palettes, instances, budgets.
#include "gathered.h"

#include <checks/counters.h>

#include <quillon/fltopcode.h>

#include <algorithm>

namespace checks {

namespace {

void checkCounters(Gathered& all, const Database& database) {
    for (const auto& [prefix, used] : database.greatest) {
        const std::int32_t next = database.header.*counterOf(prefix);
        if (next <= used)
            all.foundDetail(Rule::COUNTER_BEHIND, database.node, used, prefix, next, used);
    }
}

void checkPalettes(Gathered& all, Database& database) {
    for (const OpenIndex& open : database.openIndices) {
        if (!database.use(open.palette, open.index) && open.node != kNone)
            all.foundDetail(Rule::INDEX_RANGE, open.node, open.index, nameOf(open.palette),
                            open.index);
    }
    for (std::size_t i = 0; i < kPalettes; ++i) {
        const auto palette = static_cast<Palette>(i);
        for (const auto& [index, entry] : database.palettes[i]) {
            if (entry.isInvisible && entry.isUsed)
                all.found(Rule::MAT_ALPHA_ZERO, entry.node, index);
            // What scenes' lights use is their own.
            const bool isKnown =
                !database.usesUnknown && (palette != Palette::kLightSource || all.source.isFile());
            if (!entry.isUsed && isKnown)
                all.foundDetail(Rule::PALETTE_UNUSED, entry.node, index, nameOf(palette), index);
        }
    }
    Statistics& figures = all.report.statistics;
    figures.textures += database.entriesOf(Palette::kTexture).size();
    figures.materials += database.entriesOf(Palette::kMaterial).size();
}

/// Which definitions use which, to find those that lead back to themselves.
class InstanceUses {
public:
    InstanceUses(Gathered& all, Database& database) : all_(all), database_(database) {}

    void check() {
        for (const auto& [number, node] : database_.references) {
            if (!database_.definitions.contains(number)) {
                all_.found(Rule::INSTANCE_UNDEFINED, node, std::int32_t{number});
                continue;
            }
            // Whatever the reference stands in, up to the database, may be a definition.
            for (std::uint32_t above = all_.nodes[node].parent; above != kNone;
                 above = all_.nodes[above].parent)
                if (all_.nodes[above].kind == kFltInstanceDef) {
                    uses_[above].push_back(database_.definitions[number]);
                    break;
                }
        }
        for (const auto& [number, node] : database_.definitions)
            if (!visits_.contains(node)) visit(node);
        for (const auto& [number, node] : database_.definitions)
            if (visits_[node].isInRing)
                all_.found(Rule::INSTANCE_CYCLE, node, std::int32_t{number});
    }

private:
    struct Visit {
        std::uint32_t order = 0;   ///< counted as they are met
        std::uint32_t lowest = 0;  ///< of those on the way that it leads back to
        bool isOpen = true;        ///< its ring is not complete
        bool isInRing = false;
    };

    /// Visits the definition and all that it uses, each once, and closes their rings: Tarjan's
    /// search for strongly connected components.
    void visit(std::uint32_t start) {
        std::vector<std::pair<std::uint32_t, std::size_t>> way;  // and the next use of each
        const auto enter = [&](std::uint32_t node) {
            const auto order = static_cast<std::uint32_t>(visits_.size());
            visits_[node] = {order, order};
            open_.push_back(node);
            way.emplace_back(node, 0);
        };
        enter(start);
        while (!way.empty()) {
            const std::uint32_t node = way.back().first;
            Visit& here = visits_[node];
            if (const auto& uses = uses_[node]; way.back().second < uses.size()) {
                const std::uint32_t used = uses[way.back().second++];
                if (used == node) here.isInRing = true;
                if (!visits_.contains(used)) {
                    enter(used);
                } else if (visits_[used].isOpen) {
                    here.lowest = std::min(here.lowest, visits_[used].order);
                }
                continue;
            }
            way.pop_back();
            if (!way.empty()) {
                Visit& user = visits_[way.back().first];
                user.lowest = std::min(user.lowest, here.lowest);
            }
            if (here.lowest == here.order) close(node);
        }
    }

    /// What was met from `first` on and is still open leads back to it.
    void close(std::uint32_t first) {
        const bool isRing = open_.back() != first;
        for (bool isLast = false; !isLast; open_.pop_back()) {
            Visit& visit = visits_[open_.back()];
            visit.isOpen = false;
            visit.isInRing = visit.isInRing || isRing;
            isLast = open_.back() == first;
        }
    }

    Gathered& all_;
    Database& database_;
    std::map<std::uint32_t, std::vector<std::uint32_t>> uses_;
    std::map<std::uint32_t, Visit> visits_;
    std::vector<std::uint32_t> open_;
};

constexpr std::pair<std::string_view, std::int16_t FltHeader::*> kCounters[] = {
    {"g", &FltHeader::nextGroupId},
    {"l", &FltHeader::nextLodId},
    {"o", &FltHeader::nextObjectId},
    {"f", &FltHeader::nextFaceId},
    {"d", &FltHeader::nextDofId},
    {"b", &FltHeader::nextBspId},
    {"f (switch)", &FltHeader::nextSwitchId},
    {"c", &FltHeader::nextClipRegionId},
    {"ls", &FltHeader::nextLightSourceId},
    {"lp", &FltHeader::nextLightPointId},
};

}  // namespace

std::int16_t FltHeader::*counterOf(std::string_view prefix) noexcept {
    for (const auto& [name, counter] : kCounters)
        if (name == prefix) return counter;
    return nullptr;
}

void checkNames(Gathered& all) {
    const auto key = [](const NameEntry& entry) {
        return std::tuple(entry.database, entry.hash, entry.node);
    };
    std::ranges::sort(all.names, {}, key);
    for (std::size_t i = 1; i < all.names.size(); ++i) {
        const NameEntry& before = all.names[i - 1];
        const NameEntry& entry = all.names[i];
        if (before.hash == entry.hash && before.database == entry.database)
            all.found(Rule::NAME_DUPLICATE, entry.node,
                      all.source.nameAt(all.nodes[entry.node].place));
    }
}

void checkDatabases(Gathered& all) {
    for (Database& database : all.databases) {
        if (database.hasHeader) checkCounters(all, database);
        checkPalettes(all, database);
        InstanceUses(all, database).check();
    }
    if (all.source.unusedVertices() != 0 && !all.nodes.empty())
        all.found(Rule::VERTEX_UNUSED, 0, all.source.unusedVertices());
    const Statistics& figures = all.report.statistics;
    const Limits& limits = all.target.limits;
    if (figures.lightPoints > limits.lightPoints)
        all.found(Rule::BUDGET, kNone, "light points", figures.lightPoints, limits.lightPoints);
    if (figures.lightSources > limits.lightSources)
        all.found(Rule::BUDGET, kNone, "light sources", figures.lightSources, limits.lightSources);
}

}  // namespace checks
