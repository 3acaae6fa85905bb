#!/usr/bin/env bash
# Installs the Debian package into an empty system and uses it there:
# debian.sh VERSION PLACE FOLDER-OF-PACKAGES SAMPLE
set -uo pipefail
export LC_ALL=C.UTF-8
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/expect.sh"
version=$1 place=$2 sample=$4
package=$3/tessera-tools_${version}_$(dpkg --print-architecture).deb
[ -f "$package" ] || { wrong "there is no $package"; finish; }
rm -rf "$place"
root=$place/root
mkdir -p "$root/var/lib/dpkg/"{info,updates,triggers} "$place/work"

# The empty system has the packages that every C++ program needs, and dpkg refuses whatever needs more.
for needed in libc6 libgcc-s1 libstdc++6; do
    dpkg-query -s "$needed" | grep -v -E '^(Depends|Pre-Depends|Breaks|Conflicts|Conffiles|Replaces| /)' ||
        wrong "this machine has no $needed"
    echo
done >"$root/var/lib/dpkg/status"
works "dpkg" dpkg --root="$root" --force-not-root --force-script-chrootless --no-triggers \
    --log=/dev/null -i "$package"

bin=$root/usr/bin
same "version" "$("$bin/fltool" --version) $("$bin/kilnbatch" --version)" \
    "fltool $version kilnbatch $version"
same "version of the package" "$(dpkg-deb -f "$package" Version)" "$version"

# Its job: a file is looked into, edited by a script, exported at another revision, and still good.
cd "$place/work" || exit 1
works "check" "$bin/fltool" check "$sample"
"$bin/fltool" dump "$sample" >before.txt || wrong "dump"
grep -q '塔台 control tower' before.txt || wrong "dump shows no tower"
echo '(nodeByName "塔台 control tower").name = "packed tower"' >rename.ks
works "kilnbatch" "$bin/kilnbatch" --import "$sample" --export out.flt --revision 1570 rename.ks
works "check of what was exported" "$bin/fltool" check out.flt
"$bin/fltool" dump out.flt >after.txt || wrong "dump of what was exported"
grep -q 'packed tower' after.txt || wrong "the export has no new name"
grep -q '1570' after.txt || wrong "the export has no revision 15.7"
works "the packaged example's language" "$bin/kilnbatch" -e 'Aviary.CreateGroup(); print $g001'

works "a report" "$bin/fltool" report out.flt -o report.html
grep -q 'data:image/png' report.html || wrong "the report has no pictures"
rm -f report.html

mkdir -p many/in && cp "$sample" many/in/a.flt
works "a batch" "$bin/kilnbatch" batch many/in many/out --revision 1570
works "check of what a batch exported" "$bin/fltool" check many/out/a.flt
rm -r many

documents=$root/usr/share/doc/tessera-tools
for linked in $(cat "$documents"/*.md | grep -oP '\]\(\K[\w.-]+\.md' | sort -u); do
    [ -f "$documents/$linked" ] || wrong "a document leads to $linked, which is not there"
done

for program in fltool kilnbatch; do
    ! readelf -S -W "$bin/$program" | grep -q ' \.\(symtab\|debug_info\) ' ||
        wrong "$program is not stripped"
    # Each library belongs to a package that Depends names.
    while read -r library; do
        # A file may be registered with the folder that was joined with /usr or without.
        owner=$(dpkg -S "$library" "/usr$library" 2>/dev/null | cut -d: -f1)
        dpkg-deb -f "$package" Depends | grep -qwF "${owner:-no package}" ||
            wrong "$program needs $library of $owner"
    done < <(ldd "$bin/$program" | grep -oE '/[^ ]+' | grep -v ld-linux)

    # The manual and the completion know every option and command that the program does.
    man=$root/usr/share/man/man1/$program.1.gz
    words=$("$bin/$program" --help | grep -oE -- '^  +(-[a-z-]+|dump|check|convert|stats|report)' | tr -d ' ')
    [ "$program" = kilnbatch ] ||
        for command in dump check convert stats report; do
            words+=" $("$bin/fltool" "$command" --help | grep -oE -- '^  --[a-z-]+' | tr -d ' ')"
        done
    [ "$program" = fltool ] ||
        words+=" batch $("$bin/kilnbatch" batch --help | grep -oE -- '^  --[a-z-]+' | tr -d ' ')"
    [ "$(wc -w <<<"$words")" -ge 8 ] || wrong "the help of $program lists only $words"
    page=$(zcat "$man" | sed 's/\\-/-/g')
    completions=$(cat "$root/usr/share/bash-completion/completions/$program")
    for word in $words; do
        grep -qF -- "$word" <<<"$page" || wrong "the manual of $program does not know $word"
        [ "$word" = -h ] || grep -qE -- "[' ]$word([' ]|\$)" <<<"$completions" ||
            wrong "the completion of $program does not know $word"
    done
    same "what groff says of $program.1" "$(zcat "$man" | groff -man -Tutf8 -ww -z 2>&1)" ""
    ! command -v mandoc >/dev/null ||
        same "what mandoc says of $program.1" "$(zcat "$man" | mandoc -T lint -W style 2>&1)" ""
done

# completes LINE WANT: the last word of LINE is being typed
completes() {
    local have
    have=$(bash -c '. "$1"; read -ra COMP_WORDS <<<"$2"; [[ $2 != *" " ]] || COMP_WORDS+=("")
        COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); "_${COMP_WORDS[0]}"; echo "${COMPREPLY[*]}"' bash \
        "$root/usr/share/bash-completion/completions/${1%% *}" "$1")
    same "completion of \"$1\"" "$have" "$2"
}
mkdir folder
touch other.txt scene.kiln
completes "fltool c" "check convert"
completes "fltool convert --rev" "--revision"
completes "fltool check " "folder out.flt"
completes "kilnbatch --max" "--max-steps"
completes "kilnbatch --scene " "folder scene.kiln"
completes "kilnbatch " "batch folder rename.ks"
completes "kilnbatch batch --time" "--time-limit"
completes "kilnbatch batch folder out --script " "folder rename.ks"

said=$(lintian --fail-on none "$package" 2>&1) || wrong "lintian: $said"
same "what lintian says" "$(grep -E '^[EW]:' <<<"$said")" ""
finish
