#!/usr/bin/env bash
# usage: wayland_test.sh FOLDER: tests a hotkey on a Wayland desktop with the programs of that
# folder. The desktop is a nested compositor; the key is pressed on the display around it.
set -euo pipefail
# Use separate namespaces: the compositor fails where another X server's socket exists.
if [[ -z ${OWN_SOCKETS-} ]]; then
    user=()
    ((EUID == 0)) || user=(--user --map-current-user --keep-caps)
    OWN_SOCKETS=yes exec unshare "${user[@]}" --mount --net -- "$0" "$@"
fi
mkdir -p /tmp/.X11-unix
mount -t tmpfs -o mode=1777 none /tmp/.X11-unix
folder=$(mktemp -d -p /tmp) # $TMPDIR may be closed to the ordinary user below
processes=()
trap 'kill "${processes[@]}" 2>/dev/null || true; wait; rm -rf "$folder"' EXIT
cp "$1"/{Quirkmeter,practice-simulator} "$folder"
printf 'STATUS_HK=83\r\nSTATUS_HKCS=1\r\nDISPLAYUPDATE=YES\r\n' >"$folder/Quirkmeter.ini"
user=()
if ((EUID == 0)); then  # the compositor refuses to run as root
    chown -R nobody: "$folder"
    user=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
fi
export XDG_RUNTIME_DIR=$folder HOME=$folder GSETTINGS_BACKEND=memory NO_AT_BRIDGE=1
unset DISPLAY WAYLAND_DISPLAY GDK_BACKEND

# start LOG COMMAND...: starts the command in the background, with its output in that file of the
# folder.
start() {
    local log=$folder/$1
    shift
    : >"$log"
    "${user[@]}" "$@" >"$log" 2>&1 &
    processes+=($!)
}
# await FILE COUNT PATTERN: waits until that many lines of the file match, by the options of grep.
await() {
    local log=$folder/$1 count=$2
    shift 2
    for _ in {1..600}; do
        (($(grep -c "$@" "$log") >= count)) && return
        sleep 0.1
    done
    echo "expected $count lines with $*, seen:" >&2
    cat "$log" >&2
    exit 1
}

start outer Xvfb -ac -noreset -displayfd 1 -screen 0 1280x1024x24
await outer 1 '^[0-9]'
outer=:$(grep -m 1 '^[0-9]' "$folder/outer")
DISPLAY=$outer start weston weston --backend=x11-backend.so --use-pixman --xwayland \
    --socket=wayland-test --idle-time=0
await weston 1 'xserver listening on display'
DISPLAY=$(sed -n 's/.*xserver listening on display //p' "$folder/weston")
export DISPLAY WAYLAND_DISPLAY=wayland-test

cd "$folder"
start program ./Quirkmeter
"${user[@]}" timeout 60 xdotool search --sync --onlyvisible --name '^FS2002 Quirkmeter$' >xdotool || {
    echo "the program is not on the X server" >&2
    exit 1
}
start simulator ./practice-simulator --log --takeoff-after 1000000
status='0x3380 128 "QM:  On hold (not airborne)."'
await simulator 1 "$status"
DISPLAY=$outer xdotool keydown ctrl keydown s
await simulator 2 "$status"
