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
