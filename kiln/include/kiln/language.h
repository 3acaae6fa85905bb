// The language that the host's windows and messages speak.
#pragma once

#include <kiln/platform.h>

inline constexpr WORD KILN_LANGUAGE_CHINESE = 0x0804;  ///< Simplified Chinese, as at first
inline constexpr WORD KILN_LANGUAGE_ENGLISH = 0x0409;

/// The language of the host, one of the above whatever the machine speaks. A plug-in opens its
/// windows, and words what it reports, in this one. `NOTIFY_LANGUAGE_CHANGED` tells of another.
KILNAPI WORD GetLanguage() noexcept;
