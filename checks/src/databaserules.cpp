// What databases say as a whole: names, counters, palettes, instances, budgets.
#include "gathered.h"

#include <checks/counters.h>

#include <quillon/fltopcode.h>

#include <algorithm>

namespace checks {

namespace {

void judgeCounters(Gathered& all, const Database& database) {
    for (const auto& [prefix, used] : database.greatest) {
        const std::int32_t next = database.header.*counterOf(prefix);
        if (next <= used)
            all.foundDetail(Rule::COUNTER_BEHIND, database.node, used, prefix, next, used);
    }
}

void judgePalettes(Gathered& all, Database& database) {
    for (const OpenIndex& open : database.openIndices) {
        auto& entries = database.palettes[static_cast<std::size_t>(open.palette)];
        if (const auto found = entries.find(open.index); found != entries.end()) {
            found->second.isUsed = true;
        } else {
            all.foundDetail(Rule::INDEX_RANGE, open.node, open.index, nameOf(open.palette),
                            open.index);
        }
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
    figures.textures += database.palettes[static_cast<std::size_t>(Palette::kTexture)].size();
    figures.materials += database.palettes[static_cast<std::size_t>(Palette::kMaterial)].size();
}

/// Which definitions use which, to find those that lead back to themselves.
class InstanceUses {
public:
    InstanceUses(Gathered& all, Database& database) : all_(all), database_(database) {}

    void judge() {
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
            if (leadsBack(node)) all_.found(Rule::INSTANCE_CYCLE, node, std::int32_t{number});
    }

private:
    bool leadsBack(std::uint32_t start) const {
        std::unordered_set<std::uint32_t> seen;
        std::vector<std::uint32_t> pending{start};
        while (!pending.empty()) {
            const auto found = uses_.find(pending.back());
            pending.pop_back();
            if (found == uses_.end()) continue;
            for (const std::uint32_t used : found->second) {
                if (used == start) return true;
                if (seen.insert(used).second) pending.push_back(used);
            }
        }
        return false;
    }

    Gathered& all_;
    Database& database_;
    std::map<std::uint32_t, std::vector<std::uint32_t>> uses_;
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

void judgeNames(Gathered& all) {
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

void judgeDatabases(Gathered& all) {
    for (Database& database : all.databases) {
        if (database.hasHeader) judgeCounters(all, database);
        judgePalettes(all, database);
        InstanceUses(all, database).judge();
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
