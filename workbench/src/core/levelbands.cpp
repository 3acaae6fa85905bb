#include <kiln/nodelook.h>
#include <kiln/subtree.h>
#include <workbench/levelbands.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace workbench {

double LevelBand::middle() const {
    constexpr double kBeyond = 1.25;  // times where the last one begins
    return std::isfinite(farthest) ? nearest + (farthest - nearest) / 2 : nearest * kBeyond;
}

std::vector<LevelBand> levelBands(Interface& host) {
    NodeLookSource* const source = GetNodeLookSource();
    if (!source) return {};
    std::vector<double> edges;
    source->BeginLooks(&host);
    ForEachInSubtree(host.GetRootNode(), [&](INode& node) {
        NodeBranch branch;
        if (!source->GetBranch(&node, branch) || !branch.range) return;
        for (const double edge : {branch.range->nearest, branch.range->farthest})
            if (std::isfinite(edge) && edge > 0) edges.push_back(edge);
    });
    source->EndLooks();
    std::ranges::sort(edges);
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    std::vector<LevelBand> bands;
    double nearest = 0;
    for (const double edge : edges) {
        bands.push_back({nearest, edge});
        nearest = edge;
    }
    if (!bands.empty()) bands.push_back({nearest, std::numeric_limits<double>::infinity()});
    return bands;
}

std::optional<std::size_t> bandAt(const std::vector<LevelBand>& bands, double distance) {
    const auto found = std::ranges::find_if(
        bands, [=](const LevelBand& band) { return distance <= band.farthest; });
    if (found == bands.end()) return std::nullopt;
    return static_cast<std::size_t>(found - bands.begin());
}

}  // namespace workbench
