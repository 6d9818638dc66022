#!/usr/bin/env bash
# Builds Quirkmeter and flies it against the practice simulator. With a display: two windows, until
# you close Quirkmeter. Without one: a minute of flight on a virtual display, printed line by line,
# and a picture of the windows at its end.
set -euo pipefail
cd "$(dirname "$0")"
. ./packages.sh

need "${build_packages[@]}" "${run_packages[@]}"
build release OFF Quirkmeter fsqmhc practice-simulator rehearse
cmake --install build/release --prefix build/hangar >/dev/null
cd build/hangar

# A first flight begins with a profile under which things happen soon; later ones with the user's own.
if [[ ! -f Quirkmeter.ini ]]; then
    printf '%s\r\n' "LASTPROFILE=$PWD/practice.qmp" \
        STATUS_HK=83 STATUS_HKCS=3 CLEAR_HK=67 CLEAR_HKCS=3 ACTIVE_HK=68 ACTIVE_HKCS=3 \
        DISPLAYUPDATE=YES DISPLAYFAILURES=YES PLAYFAILURESOUND=YES >Quirkmeter.ini
fi

processes=()
end() {
    trap - EXIT INT TERM
    for process in "${processes[@]}"; do
        kill "$process" 2>/dev/null || true
        wait "$process" 2>/dev/null || true
    done
}
trap end EXIT
trap 'exit 130' INT TERM

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
    ./practice-simulator > >(report) & processes+=($!)
    ./Quirkmeter
    exit
fi

cd ../..
need "${display_packages[@]}"
cd build/hangar
echo "No display: a minute of flight on a virtual one."
exec {number}< <(exec Xvfb -displayfd 1 -screen 0 2000x800x24 2>/dev/null)
processes+=($!)
read -r -u "$number" display
export DISPLAY=:$display
openbox >/dev/null 2>&1 & processes=($! "${processes[@]}")
./practice-simulator > >(report) & processes=($! "${processes[@]}")
sleep 1
./Quirkmeter & processes=($! "${processes[@]}")
sleep 60
import -window root ../flight.png
echo "The windows after a minute: build/flight.png"
