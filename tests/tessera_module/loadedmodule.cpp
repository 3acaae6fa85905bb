#include "loadedmodule.h"

namespace {

std::string modulePath() {
    std::string path = "Z:" MODULE_FILE;
    for (char& c : path)
        if (c == '/') c = '\\';
    return path;
}

}  // namespace

HMODULE loadedModule() {
    static const HMODULE module = [] {
        kiln::Core::create();
        const kiln::Status loaded = kiln::loadModule(modulePath());
        EXPECT_TRUE(loaded.ok()) << loaded.message();
        return GetModuleHandleW(L"Tessera.dlu");
    }();
    return module;
}

std::set<std::string> exportedNames(HMODULE module) {
    const auto* const base = reinterpret_cast<const BYTE*>(module);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const auto* const table =
        reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + directory.VirtualAddress);
    const auto* const names = reinterpret_cast<const DWORD*>(base + table->AddressOfNames);
    std::set<std::string> result;
    for (DWORD i = 0; i < table->NumberOfNames; ++i)
        result.insert(reinterpret_cast<const char*>(base + names[i]));
    return result;
}
