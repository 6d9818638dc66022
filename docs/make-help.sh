#!/usr/bin/env bash
# Makes the ready-made profiles, and of the help document the pictures and the parts that follow from
# the profiles. What it makes is kept in assets/, so that a build needs nothing of this; run it again
# after changing a window or docs/reliability.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
. ./packages.sh
need "${build_packages[@]}" "${display_packages[@]}" python3

build release OFF Quirkmeter fsqmhc practice-simulator rehearse try-it

# expect PROFILE ENGINES: a line of docs/expectations.txt.
expect() {
    LC_ALL=C build/release/bin/rehearse "assets/profiles/$1.qmp" --engines "$2" --seed 1 |
        awk -F '  +' -v profile="$1" -v engines="$2" '
            /in which nothing fails/ { quiet = $2 }
            / on average/ { mean = $2 }
            /^Likeliest/ { left = 3; next }
            NF < 3 { left = 0 }
            left-- > 0 { likeliest = likeliest (likeliest ? ", " : "") sprintf("%s %.0f%%", $2, $3) }
            END { printf "%s | %s | %.0f | %.2f | %s\n", profile, engines, quiet, mean, likeliest }'
}
docs/help_parts.py # the profiles to be rehearsed
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
