#!/usr/bin/env bash
# Makes the ready-made profiles, and of the help document the pictures and the parts that follow from
# the profiles. What it makes is kept in assets/, so that a build needs nothing of this; run it again
# after changing a window, docs/reliability.txt or docs/expectations.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
. ./packages.sh
need "${build_packages[@]}" "${display_packages[@]}" python3

docs/help_parts.py
build release OFF Quirkmeter fsqmhc practice-simulator
docs/take-screenshots.sh 100

# picture NAME [WIDTH]: from docs/pictures, in few colours, and no wider than that.
picture() {
    convert "docs/pictures/$1-100.png" -resize "${2-1000}x>" -strip +dither -colors 64 \
        -define png:compression-level=9 PNG8:"assets/help/$1.png"
}
for name in all-reliabilities hardcore main message options reliability settings; do
    picture "$name"
done
picture open 640
picture save 640
picture practice-simulator 680
# One colour, to be drawn as long as a number is large.
convert -size 8x8 xc:'#2e8b2e' -strip PNG8:assets/help/bar.png
