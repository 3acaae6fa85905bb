// The bands of distances between which the scene's levels of detail change.
#pragma once

#include <kiln/interface.h>

#include <optional>
#include <vector>

namespace workbench {

/// Distances from the eye within which the same levels show: nearest < distance <= farthest.
struct LevelBand {
    double nearest = 0;
    double farthest = 0;  ///< infinity for the last one

    friend bool operator==(const LevelBand&, const LevelBand&) = default;
    /// A distance well within it.
    double middle() const;
};

/// From the eye outwards, without gaps: the first begins at 0, the last has no end. Empty for a
/// scene without levels of detail. Walks the whole scene.
std::vector<LevelBand> levelBands(Interface& host);

/// The position of the band with that distance.
std::optional<std::size_t> bandAt(const std::vector<LevelBand>& bands, double distance);

}  // namespace workbench
