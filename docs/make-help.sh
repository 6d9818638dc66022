#!/usr/bin/env bash
# Generates the ready-made profiles, and the pictures and calculated parts of the help document.
# These files are kept in assets/, so that a build needs nothing of this; run it again after
# changing a window or docs/reliability.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
. ./packages.sh
need "${build_packages[@]}" "${display_packages[@]}" python3

build release OFF Quirkmeter fsqmhc practice-simulator rehearse try-it

# expect PROFILE ENGINES: prints a line of docs/expectations.txt, from calculated chances.
expect() {
    LC_ALL=C build/release/bin/rehearse "assets/profiles/$1.qmp" --engines "$2" --flights 1 --check |
        awk -F '  +' -v profile="$1" -v engines="$2" '
            /in which nothing fails/ { split($2, part, "calculated: "); quiet = part[2] }
            / on average/ { split($2, part, "calculated: "); mean = part[2] }
            /calculated    rehearsed/ { table = 1; next }
            table && !/^Nothing fails/ { chance[$1] = $2 + 0; name[++names] = $1 }
            END {
                for (place = 1; place <= 3; ++place) {
                    best = ""
                    for (i = 1; i <= names; ++i)
                        if (chance[name[i]] > chance[best] + 0) best = name[i]
                    if (best == "") break
                    likeliest = likeliest (place > 1 ? ", " : "") \
                        sprintf("%s %.0f%%", best, chance[best])
                    delete chance[best]
                }
                printf "%s | %s | %.0f | %.2f | %s\n", profile, engines, quiet, mean, likeliest
            }' || true # one flight lies beyond four standard errors of many chances
}
docs/help_parts.py # makes the profiles
while read -r profile engines; do
    expect "$profile" "$engines"
done >docs/expectations.new <<'END'
trainer 1
light-twin 2
airliner 2
freighter 4
check-ride 1
instruments 1
engines 1
engines 2
engines 4
END
mv docs/expectations.new docs/expectations.txt
docs/help_parts.py

docs/take-screenshots.sh 100

# picture NAME [WIDTH]: copies a picture from docs/pictures with few colours, reduced to that width.
picture() {
    convert "docs/pictures/$1-100.png" -resize "${2-1000}x>" -strip +dither -colors 64 \
        -define png:compression-level=9 PNG8:"assets/help/$1.png"
}
for name in all-reliabilities hardcore main message options reliability settings; do
    picture "$name"
done
# Cut the empty rows of the list and add a frame.
for name in open save; do
    picture $name 640
    mogrify -chop 0x270+0+140 -bordercolor '#808080' -border 1 "assets/help/$name.png"
done
picture practice-simulator 680
picture rehearse
docs/take-screenshots.sh rehearsal
convert docs/pictures/rehearsal.png -resize 640 -strip +dither -colors 64 \
    PNG8:assets/help/rehearsal.png
# The page stretches this single colour to draw bars.
convert -size 8x8 xc:'#2e8b2e' -strip PNG8:assets/help/bar.png
