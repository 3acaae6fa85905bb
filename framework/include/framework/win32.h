// The platform's headers, in the order that they need.
#pragma once

#include <windows.h>

// After windows.h: these do not stand alone.
#include <commctrl.h>
