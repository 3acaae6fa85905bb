// What the module's application object calls when it starts and ends.
#pragma once

namespace tessera {

/// Loads the form's title, unless one was set already, and the names of the record kinds from the
/// module's strings. Call once, before any of the browser's exports. May throw `std::bad_alloc`.
void browserStartUp();

/// Shows the form, if there is one, in the host's language of now, with all that it shows: size,
/// tree, selection and what is open stay, and what is being typed is stored. Throws nothing.
void browserFollowLanguage();

/// Destroys the form if there is one and frees the names. Call once, last. Throws nothing.
void browserShutDown();

}  // namespace tessera
