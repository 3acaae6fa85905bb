// The browser's client: acts on the host's scene for the browser and keeps its tree filled.
#pragma once

#include <tessera/browserexports.h>

#include <cstdint>

class Interface;

namespace tessera {

/// The callback handed to the browser; `clientData` is the `Interface`. Failures are logged and
/// never reach the browser.
void browserClient(BrowserEvent event, BrowserItem first, BrowserItem second,
                   std::uintptr_t argument, std::uintptr_t argument2, void* clientData);

/// Creates the browser form, hidden, as a window of the host's, or binds the existing one.
/// Returns the result of `_zufltguicreate`. Throws what the host throws when asked for its window.
std::int32_t createBrowser(Interface& host);

/// Fills the browser's tree from the scene, shows the form and from then on follows changes of the
/// scene until the user closes it. Throws `std::bad_alloc`, with the tree filled in part.
void showBrowser(Interface& host);

/// Stops following the scene. The module calls it before it is unloaded, since the host would
/// otherwise call into it afterwards.
void leaveScene() noexcept;

/// Sounds the plain system beep, where there is one.
void beep() noexcept;

}  // namespace tessera
