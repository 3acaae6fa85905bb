// The platform types that the SDK's signatures use, on Windows and natively.
//
// On Windows they are the system's own. Natively there is no window system: the handles are opaque
// pointers to types nobody defines, so that code which only passes them along compiles and links,
// and code which would look inside does not.
#pragma once

#include <cstdint>

#ifdef _WIN32
#include <windows.h>

#ifdef KILNCORE_BUILD
#define KILNAPI __declspec(dllexport)
#else
#define KILNAPI __declspec(dllimport)
#endif
/// Marks a function that a plug-in module exports to the host under its plain name.
#define KILN_PLUGIN_EXPORT extern "C" __declspec(dllexport)
#else
#define KILNAPI
#define KILN_PLUGIN_EXPORT extern "C"

using HWND = struct HWND__*;  // NOLINT(bugprone-reserved-identifier): the system's own name
using HINSTANCE = struct KilnModule*;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
/// A color as 0x00BBGGRR.
using COLORREF = std::uint32_t;
using DLGPROC = INT_PTR (*)(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
#endif
