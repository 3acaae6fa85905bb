#!/usr/bin/env bash
# Makes the pictures of the documents, in both languages: docs/pictures.sh [LANGUAGE FOLDER]
# FOLDER holds what `./dev run --language LANGUAGE --screenshots FOLDER` took (en or zh); without one
# the screenshots of both are taken first. Each picture is a part of a screenshot, given as
# WIDTHxHEIGHT+LEFT+TOP of its 1600 by 1000 pixels, and shown at a share of its size. When the
# program's windows move, this list follows. Needs ImageMagick.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# picture NAME SCREENSHOT PART SHARE
picture() {
    local source=$shots/$2.png
    [ -f "$source" ] || { printf 'pictures.sh: no screenshot %s\n' "$source" >&2; exit 1; }
    # Few colors make small files; dithering would make them large again.
    convert "$source" -crop "$3" +repage -resize "$4" -strip +dither -colors 250 \
        -define png:compression-level=9 "png8:$images/$1.png"
}

# pictures LANGUAGE FOLDER. What lies below the viewport is left out: the log names files of the
# machine.
pictures() {
    # The browser is wider in English, and the workbench's window beside it narrower.
    local shots=$2 images=$root/docs/images/en window=865
    [ "$1" = en ] || { images=$root/docs/images/zh-CN window=957; }
    mkdir -p "$images"
    picture atwork     06-selection    1600x840+0+0     62.5%
    picture opened     01-viewport     1080x740+0+0     83%
    picture progress   11-progress     370x130+615+434  100%
    picture selected   07-close-up     "${window}x840+0+0" 65%
    picture hierarchy  04-tree         1600x800+0+0     62.5%
    picture attributes 05-attributes   "$((1600 - window))x580+$window+0" 100%
    picture edited     08-edited-whole "${window}x840+0+0" 65%
    picture detail     09-most-detail  "${window}x840+0+0" 65%
    picture export     11-export       568x410+0+0      100%
}

case $# in
0)
    taken=$(mktemp -d)
    trap 'rm -rf "$taken"' EXIT
    # The browser keeps its size, and needs less of it in Chinese.
    for language in zh en; do
        "$root/dev" run --language "$language" --screenshots "$taken/$language"
        pictures "$language" "$taken/$language"
    done
    ;;
2) pictures "$1" "$2" ;;
*)
    printf 'usage: docs/pictures.sh [LANGUAGE FOLDER]\n' >&2
    exit 2
    ;;
esac
