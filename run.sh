#!/usr/bin/env bash
# Builds Quirkmeter and flies it against the practice simulator. With a display: two windows, until
# you close Quirkmeter. Without one: a minute of flight on a virtual display, printed line by line,
# and a picture of the windows at its end.
set -euo pipefail
set -m # each background command is a process group, which ends as a whole
cd "$(dirname "$0")"
. ./packages.sh
. tests/display.sh

processes=()
end() {
    local i
    trap - EXIT INT TERM
    for ((i = ${#processes[@]} - 1; i >= 0; --i)); do
        kill -- "-${processes[i]}" 2>/dev/null || true
        wait "${processes[i]}" 2>/dev/null || true
    done
}
trap end EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

start() { "$@" & processes+=($!); }
# The shell handles a signal at once while it waits, but not while a command is in the foreground.
run() {
    start "$@"
    wait $!
}

need "${build_packages[@]}" "${run_packages[@]}"
run build release OFF Quirkmeter fsqmhc practice-simulator rehearse try-it
cmake --install build/release --prefix build/stage >/dev/null
cd build/stage

./try-it --settings
# The profiles of this folder move with the checkout.
last=$(sed -n 's/^LASTPROFILE=\(.*\)\r$/\1/p' Quirkmeter.ini)
moved=$PWD/${last##*/build/stage/}
if [[ ! -e $last && -f $moved ]]; then
    { printf 'LASTPROFILE=%s\r\n' "$moved"; sed /^LASTPROFILE=/d Quirkmeter.ini; } >Quirkmeter.new
    mv Quirkmeter.new Quirkmeter.ini
fi

# Prints what the practice simulator reports: its events, and of the writes that come every second
# those that say something new; of a draining tank the first.
report() {
    awk '$2 == "#" || $2 == "0x3380" || !($2 in last) || (last[$2] != $4 && !/tank level/) {
             print; fflush()
         }
         { last[$2] = $4 }'
}

if [[ -n ${DISPLAY-}${WAYLAND_DISPLAY-} ]]; then
    echo "Flying. The aircraft takes off by itself; close Quirkmeter to end."
    start ./practice-simulator --log > >(report)
    run ./Quirkmeter
    exit
fi

need "${display_packages[@]}"
echo "No display: a minute of flight on a virtual one."
open_display 2000x800
start ./practice-simulator --log > >(report)
sleep 1
start ./Quirkmeter
run sleep 60
import -window root ../flight.png
echo "The windows after a minute: build/flight.png"
