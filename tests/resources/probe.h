#pragma once

#include <windows.h>

#include <span>
#include <string>

// The built library with the resources, loaded as data once for the whole program.
HMODULE probe();

// Where its file is.
std::wstring probePath();

// The bytes of a resource; empty when there is none. `type` and `name` as for FindResourceW.
std::span<const std::byte> resourceBytes(const wchar_t* type, const wchar_t* name);

std::string utf8(const std::wstring& text);
