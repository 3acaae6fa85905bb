// The hierarchy browser where there are no windows: there never is a form.
#include <tessera/browserexports.h>

void tessera::offerNodeCommands(const NodeCommands*) noexcept {}

void tessera::hostSelectionChanged() noexcept {}

std::int32_t _zufltguicreate(tessera::BrowserWindow, tessera::BrowserCallback, std::int32_t,
                             void*) {
    return tessera::kBrowserFormMissing;
}

bool _zufltguishow(std::uint8_t) {
    return false;
}

void _zufltguidestroy() {}

tessera::BrowserItem _zufltguiaddnode(tessera::BrowserItem, const char*, tessera::NodeHandle) {
    return nullptr;
}

bool _zufltguidelnode(tessera::BrowserItem) {
    return false;
}

bool _zufltguidelchildren(tessera::BrowserItem) {
    return false;
}

tessera::NodeHandle _zufltguinode2hdl(tessera::BrowserItem) {
    return 0;
}

bool _zufltguiselectnode(tessera::BrowserItem) {
    return false;
}

void zufltguirefresh() {}

void zufltguiSceneChanged() {}

void zufltguiresetpos() {}

void zufltguisettitle(const char*) {}
