#!/usr/bin/env bash
# usage: take-screenshots.sh [100] [200] [rehearsal] [windows]: takes the pictures of docs/pictures,
# or only the named ones, on a virtual display: the running programs at 100 % and at 200 %, a report
# of rehearse in a browser, and the main window on Windows. ./run.sh and packaging/windows/build.sh
# must have built the programs.
set -euo pipefail
cd "$(dirname "$0")/.."
. ./packages.sh
. tests/display.sh
need "${display_packages[@]}" xdotool
root=$PWD
folder=$(mktemp -d)
processes=()
trap 'kill "${processes[@]}" 2>/dev/null || true; rm -rf "$folder"' EXIT
mkdir -p docs/pictures
export XDG_RUNTIME_DIR=$folder
export XDG_CACHE_HOME=${XDG_CACHE_HOME:-$HOME/.cache} # Wine's, whatever the home folder is below

start() { "$@" >/dev/null 2>&1 & processes+=($!); }

# front TITLE: brings the window to the front. The search fails if any window closes meanwhile, as a
# dialog may, so it is repeated.
front() {
    local end=$((SECONDS + 20))
    until timeout 10 xdotool search --sync --onlyvisible --name "^$1\$" windowactivate --sync; do
        ((SECONDS < end))
    done
}
# shoot NAME TITLE: takes a picture of the window once it no longer changes.
shoot() {
    front "$2"
    shoot_active "$1"
}
shoot_active() {
    sleep 1
    import -window "$(xdotool getactivewindow)" "$root/docs/pictures/$1-$scale.png"
    echo "docs/pictures/$1-$scale.png"
}
keys() { for key; do xdotool key --clearmodifiers "$key"; sleep 0.3; done; }

close_display() {
    kill "${processes[@]}" 2>/dev/null || true
    wait 2>/dev/null || true
    processes=()
    cd "$root"
}

fly() {
    scale=$1
    export GDK_SCALE=$((scale / 100))
    open_display 2600x1800
    local display_processes=${#processes[@]}
    # Use a home folder, so that the file dialogs show no other place.
    export HOME=$folder/pilot
    rm -rf "$HOME/Quirkmeter"
    cmake --install build/release --prefix "$HOME/Quirkmeter" >/dev/null
    cd "$HOME/Quirkmeter"
    printf '%s\r\n' "LASTPROFILE=$PWD/profiles/trainer.qmp" DISPLAYUPDATE=YES \
        DISPLAYFAILURES=YES STATUS_HK=83 STATUS_HKCS=3 CLEAR_HK=67 CLEAR_HKCS=3 >Quirkmeter.ini
    start ./Quirkmeter
    front "FS2002 Quirkmeter"
    # Instrument, Vacuum.
    keys Down Down Down Down Down Tab Down Down Down Down Down Down Down Down Return
    shoot reliability " Instrument - Vacuum Reliability"
    keys alt+t
    shoot_active message
    keys Return
    start ./practice-simulator --takeoff-after 2
    front "Practice Simulator"
    sleep 4
    front "FS2002 Quirkmeter"
    keys Return alt+t
    sleep 2 # the list is filled anew, and the row chosen again
    keys Up Up Up Up Up Return alt+t
    sleep 2
    shoot practice-simulator "Practice Simulator"
    shoot main "FS2002 Quirkmeter"
    keys alt+a
    shoot all-reliabilities "All Reliabilities"
    keys Escape alt+p
    shoot options "Help"
    keys alt+s
    shoot settings "Settings"
    keys Escape Escape
    front "FS2002 Quirkmeter"
    keys alt+o
    shoot open "Open"
    keys Escape alt+s
    shoot save "Save As"
    keys Escape
    start ./rehearse profiles/light-twin.qmp </dev/null
    shoot rehearse "FS2002 Quirkmeter - Rehearsal"

    # In the air, Hardcore Mode shows a notice instead of the list.
    kill "${processes[@]:display_processes}" && wait "${processes[@]:display_processes}" || true
    processes=("${processes[@]:0:display_processes}")
    echo -e 'HARDCOREMODE=YES\r' >>Quirkmeter.ini
    start ./practice-simulator --takeoff-after 4
    sleep 1
    start ./fsqmhc.exe
    front "FS2002 Quirkmeter"
    sleep 8
    shoot hardcore "FS2002 Quirkmeter"
    close_display
}

rehearse() {
    local sandbox=()
    ((EUID)) || sandbox=(--no-sandbox)
    need chromium
    build/release/bin/rehearse assets/profiles/light-twin.qmp --engines 2 --seed 1 \
        --html "$folder/report.htm" >/dev/null
    chromium --headless --disable-gpu --hide-scrollbars --window-size=800,1290 "${sandbox[@]}" \
        --user-data-dir="$folder/browser" --screenshot="$root/docs/pictures/rehearsal.png" \
        "file://$folder/report.htm" >/dev/null 2>&1
    echo docs/pictures/rehearsal.png
}

fly_on_windows() {
    local wine=$root/packaging/windows/wine.sh
    scale=windows
    export WINEPREFIX=$folder/prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml="
    open_display 2600x1800
    cp -r build/windows/stage "$folder/stage"
    cd "$folder/stage"
    printf '%s\r\n' "LASTPROFILE=Z:${PWD//\//\\}\practice.qmp" DISPLAYFAILURES=YES >Quirkmeter.ini
    "$wine" wine wineboot --init >/dev/null 2>&1
    start "$wine" wine practice-simulator.exe --takeoff-after 2
    start "$wine" wine Quirkmeter.exe
    sleep 40
    shoot main "FS2002 Quirkmeter"
    "$wine" wineserver -k || true
    close_display
}

(($#)) || set -- 100 200 rehearsal windows
for what; do
    case $what in
    rehearsal) rehearse ;;
    windows) fly_on_windows ;;
    *) fly "$what" ;;
    esac
done
