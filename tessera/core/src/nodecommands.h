// What the browser's client does with whole nodes.
#pragma once

#include <tessera/browserexports.h>

namespace tessera {

/// Deleting and copying nodes; the client data is the `Interface`.
extern const NodeCommands kNodeCommands;

/// Stops telling the browser of the host's selection.
void leaveSelection() noexcept;

}  // namespace tessera
