// How the form answers what it cannot do.
#pragma once

#include <framework/cwnd.h>

namespace tessera {

/// A string of the module in a message box owned by the window.
void showMessage(const framework::CWnd& owner, unsigned stringId);

/// The platform's simple beep.
void beepSimply() noexcept;

}  // namespace tessera
