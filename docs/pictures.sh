#!/usr/bin/env bash
# Makes the pictures of the user guide: docs/pictures.sh [FOLDER]
# FOLDER holds what `./dev run --screenshots FOLDER` took; without one they are taken first. Each
# picture is a part of a screenshot, given as WIDTHxHEIGHT+LEFT+TOP of its 1600 by 1000 pixels, and
# shown at a share of its size. When the program's windows move, this list follows. Needs ImageMagick.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
images=$root/docs/images

shots=${1:-}
if [ -z "$shots" ]; then
    shots=$(mktemp -d)
    trap 'rm -rf "$shots"' EXIT
    "$root/dev" run --screenshots "$shots"
fi

# picture NAME SCREENSHOT PART SHARE
picture() {
    local source=$shots/$2.png
    [ -f "$source" ] || { printf 'pictures.sh: no screenshot %s\n' "$source" >&2; exit 1; }
    # Few colors make small files; dithering would make them large again.
    convert "$source" -crop "$3" +repage -resize "$4" -strip +dither -colors 250 \
        -define png:compression-level=9 "png8:$images/$1.png"
}

picture opened     01-viewport     1080x740+0+0     83%
picture progress   11-progress     370x130+615+434  100%
picture selected   07-close-up     960x840+0+0      65%
picture hierarchy  04-tree         1600x800+0+0     62.5%
picture attributes 05-attributes   640x580+960+0    100%
picture edited     08-edited-whole 960x840+0+0      65%
picture detail     09-most-detail  960x840+0+0      65%
picture export     11-export       568x410+0+0      100%
