// The built module in a stand-in host, as a host would have it.
#pragma once

#include <kiln/host/host.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

/// Loads the module once for the whole program; the core is there afterwards.
HMODULE loadedModule();

/// A function that the module exports.
template <typename Function>
Function exported(const char* name) {
    const auto address = GetProcAddress(loadedModule(), name);
    if (!address) ADD_FAILURE() << name << " is not exported";
    return reinterpret_cast<Function>(reinterpret_cast<void*>(address));
}
