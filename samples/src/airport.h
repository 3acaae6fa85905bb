// The sample scene: a small airport.
#pragma once

#include "fltscene.h"

namespace samples {

/// A runway with its lights, a control tower with two levels of detail, a hangar whose doors are a
/// switch, a windsock that turns, parked aircraft that are instances of one, and what else an
/// OpenFlight scene can hold: every kind of node at least once, names and comments in Chinese
/// among them.
FltScene makeAirport();

/// What that refers to as "aircraft/airliner.flt".
FltScene makeAirliner();

}  // namespace samples
