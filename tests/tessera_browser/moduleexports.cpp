#include "moduleexports.h"

#include <framework/win32.h>

#include <stdexcept>
#include <string>

namespace {

HMODULE loadModule() {
    std::string path = "Z:" MODULE_FILE;
    for (char& c : path)
        if (c == '/') c = '\\';
    return LoadLibraryA(path.c_str());
}

template <typename Function>
void find(HMODULE module, const char* name, Function& function) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    if (!function) throw std::runtime_error(std::string("no export ") + name);
}

}  // namespace

const Exports& browser() {
    static const Exports exports = [] {
        const HMODULE module = loadModule();
        Exports found{};
        find(module, "_zufltguicreate", found.create);
        find(module, "_zufltguishow", found.show);
        find(module, "_zufltguidestroy", found.destroy);
        find(module, "_zufltguiaddnode", found.addNode);
        find(module, "_zufltguidelnode", found.delNode);
        find(module, "_zufltguidelchildren", found.delChildren);
        find(module, "_zufltguinode2hdl", found.nodeOf);
        find(module, "_zufltguiselectnode", found.selectNode);
        find(module, "zufltguirefresh", found.refresh);
        find(module, "zufltguiSceneChanged", found.sceneChanged);
        find(module, "zufltguiresetpos", found.resetPos);
        find(module, "zufltguisettitle", found.setTitle);
        return found;
    }();
    return exports;
}
