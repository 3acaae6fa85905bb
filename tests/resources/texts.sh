#!/usr/bin/env bash
# What users read stands in the string tables, in both languages: texts.sh ROOT fails when a source
# has Chinese in a string. The walk is no such place: it finds the buttons of plug-ins by what they say.
cd "$1" || exit 2
export LC_ALL=C.UTF-8
found=$(grep -rnP --include='*.cpp' --include='*.h' --exclude=walk.cpp '"[^"]*[\x{4e00}-\x{9fff}]' \
    base checks diagnostics fltkilnutil framework grid interchange kiln kilnbatch palettes plugin quillon \
    render script tessera tools workbench | grep -vP '^[^:]*:\d+: *//')
[ -z "$found" ] || { printf '%s\n' "$found"; exit 1; }
