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
# Waiting for a background process lets the shell handle a signal at once.
run() {
    start "$@"
    wait $!
}

need "${build_packages[@]}" "${run_packages[@]}"
run build release OFF Quirkmeter fsqmhc practice-simulator rehearse try-it
cmake --install build/release --prefix build/stage >/dev/null
cd build/stage

./try-it --settings
# If the checkout has moved, look for the last profile in its new place.
last=$(sed -n 's/^LASTPROFILE=\(.*\)\r$/\1/p' Quirkmeter.ini)
moved=$PWD/${last##*/build/stage/}
if [[ ! -e $last && -f $moved ]]; then
    { printf 'LASTPROFILE=%s\r\n' "$moved"; sed /^LASTPROFILE=/d Quirkmeter.ini; } >Quirkmeter.new
    mv Quirkmeter.new Quirkmeter.ini
fi

# Prints the simulator's report without repetitions: all events, of the writes those with a new
# value, and of a draining tank only the first.
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
