// The browser's exports, as a host finds them: in the built module, by name.
#pragma once

#include <tessera/browserexports.h>

/// The module's exports, found by name.
struct Exports {
    decltype(&_zufltguicreate) create;
    decltype(&_zufltguishow) show;
    decltype(&_zufltguidestroy) destroy;
    decltype(&_zufltguiaddnode) addNode;
    decltype(&_zufltguidelnode) delNode;
    decltype(&_zufltguidelchildren) delChildren;
    decltype(&_zufltguinode2hdl) nodeOf;
    decltype(&_zufltguiselectnode) selectNode;
    decltype(&zufltguirefresh) refresh;
    decltype(&zufltguiSceneChanged) sceneChanged;
    decltype(&zufltguiresetpos) resetPos;
    decltype(&zufltguisettitle) setTitle;
};
const Exports& browser();
