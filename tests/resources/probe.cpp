#include "probe.h"

HMODULE probe() {
    static const HMODULE module = LoadLibraryExW(
        probePath().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
    return module;
}

std::wstring probePath() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring file = path;
    return file.replace(file.find_last_of(L'\\') + 1, std::wstring::npos, L"resource_probe.dll");
}

std::span<const std::byte> resourceBytes(const wchar_t* type, const wchar_t* name) {
    const HRSRC found = FindResourceW(probe(), name, type);
    if (found == nullptr) return {};
    const void* data = LockResource(LoadResource(probe(), found));
    return {static_cast<const std::byte*>(data), SizeofResource(probe(), found)};
}

std::string utf8(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), size, nullptr, nullptr);
    return result;
}
