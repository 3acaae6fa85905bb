// Texts for the platform's calls, in the window layer's own namespace, the global one.
#pragma once

#include <base/text.h>
#include <base/utf16.h>

using base::clipUtf8;
using base::toUtf8;
using base::toWide;
