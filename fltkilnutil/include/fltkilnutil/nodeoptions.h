// The per-node options block kept beside the record.
#pragma once

#include <quillon/fltruntime.h>

/// What a node keeps that has no place in its OpenFlight record: `KilnFace` for faces, `KilnLight`
/// for light sources, `KilnLightPoint` for light points. Written and read like a record; a default
/// one stands for a node that has none.
using FltNodeOptions = FltRuntime;
