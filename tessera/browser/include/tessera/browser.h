// What the module's application object calls when it starts and ends.
#pragma once

namespace tessera {

/// Loads the form's title, unless one was set already, and the names of the record kinds from the
/// module's strings. Call once, before any of the browser's exports. May throw `std::bad_alloc`.
void browserStartUp();

/// Destroys the form if there is one and frees the names. Call once, last. Throws nothing.
void browserShutDown();

}  // namespace tessera
