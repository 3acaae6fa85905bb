// Light points that say themselves what they look like, and those that name entries of palettes.
#pragma once

#include <cstddef>
#include <span>

class INode;

namespace palettes {

struct ConvertedLightPoints {
    std::size_t done = 0;
    std::size_t passedOver = 0;  ///< what they are has no place in the other record
};

/// Has the light points among the nodes, and below them, name entries of their database's palettes
/// that say what their own records said, as one step. Those of the same look share an entry; one
/// that is there already is taken whatever its name. Throws `Refusal`, with nothing changed, where
/// there is none that can be converted.
ConvertedLightPoints indexLightPoints(std::span<INode* const> nodes);

/// The way back: has indexed light points say themselves what their entries say. The entries stay.
/// Passed over is what `indexLightPoints` would not make the same of again, but for the entries'
/// names: sequences of steps, Morse codes, textures and ranges.
ConvertedLightPoints inlineLightPoints(std::span<INode* const> nodes);

}  // namespace palettes
