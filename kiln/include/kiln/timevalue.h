// Time as the host counts it.
#pragma once

#include <cstdint>

/// A moment in ticks of 1/4800 second. Scenes are not animated: every query answers the same at
/// every time, but the signatures carry it as a host's do.
using TimeValue = std::int32_t;
