// The host's keyboard accelerators.
#pragma once

#include <kiln/platform.h>

/// Lets the host have its accelerator keys, or takes them away while a plug-in's window needs the
/// keys. This is a switch, not a count: one call undoes any number of the other.
KILNAPI void EnableAccelerators() noexcept;
KILNAPI void DisableAccelerators() noexcept;
/// Whether the host acts on its accelerator keys; true at first.
KILNAPI bool AcceleratorsEnabled() noexcept;
