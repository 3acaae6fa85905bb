#!/usr/bin/env bash
# Unpacks the archives for Windows in a Wine prefix that has never seen them and uses them there:
# zips.sh VERSION PLACE PLUGINS.zip WORKBENCH.zip WINE-RUN OBJDUMP
set -uo pipefail
export LC_ALL=C.UTF-8
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/expect.sh"
version=$1 place=$2 plugins=$3 workbench=$4 wine=$5 objdump=$6
for archive in "$plugins" "$workbench"; do
    [ -f "$archive" ] || { wrong "there is no $archive"; finish; }
done
rm -rf "$place"
mkdir -p "$place"

# A prefix of its own, as Wine makes it; only the windows stand on a desktop, as in the project's.
export WINEPREFIX=$place/prefix
unset TESSERA_WINE_SEATS
leave() {
    /usr/lib/wine/wineserver64 -k 2>/dev/null
    rm -rf "$WINEPREFIX"
}
trap leave EXIT
works "a new Wine prefix" timeout 120 "$wine" wineboot --init
works "a desktop" timeout 30 "$wine" reg add 'HKCU\Software\Wine\Explorer' /v Desktop /d Test /f
works "its size" timeout 30 "$wine" reg add 'HKCU\Software\Wine\Explorer\Desktops' /v Test /d 1600x1000 /f

# The workbench lies in a folder as people name them; the modules of the other archive replace those
# that came with it.
programs=$WINEPREFIX/drive_c/'Meine 程序'
mkdir -p "$programs"
cd "$programs" || exit 1
works "unpacking the workbench" cmake -E tar xf "$workbench"
cd "tessera-workbench-$version" || { wrong "the archive has no folder with its version"; finish; }
mv plugins came-with
mkdir plugins
works "unpacking the modules" cmake -E chdir plugins cmake -E tar xf "$plugins"
same "what is at the top of the modules' archive" "$(ls plugins | tr '\n' ' ')" \
    "FltCheck.dlu FltInterchange.dli FltKilnUtilRes.dll FltPalettes.dlu Tessera Tessera.dlu "
for module in came-with/*; do
    works "both archives have the same modules" cmp "$module" "plugins/${module##*/}"
done

# run PROGRAM [ARGUMENT]...
run() { timeout 120 "$wine" "$@" 2>errors.txt; }
for program in fltool kilnbatch workbench; do
    same "version" "$(run "$program.exe" --version | tr -d '\r')" "$program $version"
done

# Their job: a file is looked into, edited by a script, exported at another revision, and still good.
works "check" run fltool.exe check 'samples\airport.flt'
echo '(nodeByName "塔台 control tower").name = "packed tower"' >rename.ks
works "kilnbatch" run kilnbatch.exe --import 'samples\airport.flt' --export out.flt --revision 1570 rename.ks
works "check of what was exported" run fltool.exe check out.flt
run fltool.exe dump out.flt >after.txt || wrong "dump of what was exported"
grep -q 'packed tower' after.txt || wrong "the export has no new name"
grep -q '1570' after.txt || wrong "the export has no revision 15.7"
# Pictures are drawn by the program beside it.
works "a report" run fltool.exe report out.flt -o report.html
grep -q 'data:image/png' report.html || wrong "the report has no pictures"
rm -f report.html
same "an attribute" "$(run kilnbatch.exe -e \
    'Aviary.CreateLOD(); setAttr $l001 "FltLodMin" 250; print (getAttr $l001 "FltLodMin")' |
    tr -d '\r')" 250

# The walk opens the utility, the browser and the dialogs, edits, exports and opens the result; it
# ends with 0 when each step worked.
mkdir shots
run workbench.exe out.flt --screenshots shots >walk.txt || wrong "the walk: $(cat errors.txt walk.txt)"
for picture in 01-viewport 03-browser 12-about; do
    [ "$(stat -c %s "shots/$picture.png" 2>/dev/null || echo 0)" -gt 5000 ] || wrong "no picture $picture"
done

# Whatever is not within the archive is a part of every Windows.
system='ADVAPI32 COMCTL32 COMDLG32 GDI32 KERNEL32 MSIMG32 MSVCRT OLE32 OLEACC OLEAUT32 SHELL32 USER32 UXTHEME'
while read -r file; do
    for needed in $("$objdump" -p "$file" | sed -n 's/^\tDLL Name: //p'); do
        upper=$(tr a-z A-Z <<<"${needed%.*}")
        [ "$upper" = KILNCORE ] || grep -qwF "$upper" <<<"$system" || wrong "$file needs $needed"
    done
    "$objdump" -t "$file" | grep -q '^no symbols' || wrong "$file is not stripped"
    ! "$objdump" -h "$file" | grep -q '\.debug' || wrong "$file has debug sections"
done < <(find . -name '*.exe' -o -name '*.dl?')
same "programs and modules" "$(find . -name '*.exe' -o -name '*.dl?' | wc -l)" 14

# Every page has what it links to beside it.
pages=0
while read -r page; do
    pages=$((pages + 1))
    for link in $(grep -oE '(href|src)="[^"#]*' "$page" | sed 's/.*="//' | grep -v '^https*:'); do
        [ -e "${page%/*}/$link" ] || wrong "$page leads to $link, which is not there"
    done
done < <(find . -name '*.html')
[ "$pages" -ge 6 ] || wrong "only $pages pages"
for text in README.txt README.zh-CN.txt LICENSE.txt; do
    for folder in . plugins/Tessera; do
        grep -q $'\r$' "$folder/$text" || wrong "$folder/$text is not there with Windows' line ends"
    done
done
finish
