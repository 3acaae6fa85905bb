// What "Aviary" publishes to scripts, and how a call of it reaches the interface.
#pragma once

#include <kiln/fp.h>

#include <vector>

class IAviaryUtil;

namespace tessera {

/// The published functions and properties, in the order of their description.
std::vector<FPFunctionDesc> aviaryFunctions();
std::vector<FPPropertyDesc> aviaryProperties();

/// Calls function `id`. An argument that is missing or of another type reads as null or 0. What the
/// function returns goes into `result`.
FPStatus callAviary(IAviaryUtil& aviary, FunctionID id, const FPParams* params, FPValue& result);

}  // namespace tessera
