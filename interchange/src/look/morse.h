// Light points that flash in Morse code.
#pragma once

#include <kiln/nodelook.h>
#include <quillon/fltlightpointpalettes.h>

#include <vector>

namespace interchange {

/// The text of an animation in International Morse code and the pause until it begins again; none
/// where it has no character of the code. What is no such character parts words, as a space does.
/// Rates are in words a minute, a word being 50 dots long. Without any it is that of an aerodrome's
/// beacon.
std::vector<LightPointStep> morseStepsOf(const FltLightPointAnimation& animation);

}  // namespace interchange
