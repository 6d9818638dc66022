#!/usr/bin/env bash
# Draws the programs' icons with ImageMagick: for Quirkmeter a gauge with its needle in the red, on
# the lists' dark green; for the practice simulator an artificial horizon. Both are kept beside this
# script, so that a build needs no ImageMagick; run it again after changing a drawing.
set -euo pipefail
cd "$(dirname "$0")"

# draw SIZE TICKS NEEDLE: draws on a field of 256, with finer lines for large sizes.
draw() {
    local size=$1 ticks=$2 needle=$3
    local marks=() angle
    if ((ticks > 0)); then
        for angle in -120 -80 -40 0 40 80 120; do
            marks+=(-draw "translate 128,128 rotate $angle line 0,-84 0,-60")
        done
    fi
    convert -size 256x256 xc:none \
        -fill 'rgb(0,64,0)' -draw 'roundrectangle 0,0 255,255 40,40' \
        -fill 'rgb(255,0,0)' -stroke 'rgb(120,0,0)' -strokewidth 8 -draw 'circle 128,128 128,20' \
        -fill none -stroke white -strokewidth "$ticks" "${marks[@]}" \
        -strokewidth "$needle" -draw 'stroke-linecap round line 128,128 188,84' \
        -fill white -stroke none -draw "circle 128,128 128,$((128 - needle))" \
        -resize "${size}x$size" -depth 8 png:-
}

draw_horizon() {
    convert -size 256x256 xc:none -fill 'rgb(32,34,36)' -draw 'roundrectangle 0,0 255,255 40,40' \
        -fill 'rgb(70,150,230)' -draw 'circle 128,128 128,20' \
        -fill 'rgb(130,80,30)' -draw 'arc 20,20 236,236 0,180' \
        -stroke white -strokewidth 14 -draw 'line 20,128 236,128' \
        -stroke 'rgb(255,180,0)' -draw 'line 70,160 110,160 line 146,160 186,160' \
        -resize "$1x$1" -depth 8 png:-
}

pictures=$(mktemp -d)
trap 'rm -rf "$pictures"' EXIT
for size in 16 20 24; do draw $size 0 28 >"$pictures/$size.png"; done
for size in 32 48; do draw $size 14 20 >"$pictures/$size.png"; done
for size in 64 256; do draw $size 10 14 >"$pictures/$size.png"; done
convert "$pictures"/{16,20,24,32,48,64,256}.png quirkmeter.ico
for size in 16 20 24 32 48 64 256; do draw_horizon $size >"$pictures/$size.png"; done
convert "$pictures"/{16,20,24,32,48,64,256}.png practice-simulator.ico
