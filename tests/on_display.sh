#!/usr/bin/env bash
# Runs a command on a virtual display of its own with a window manager. A test program that ends
# half-way has failed, whatever its exit status.
set -euo pipefail
processes=()
# It is there from the beginning of a test program to its end.
export TEST_PREMATURE_EXIT_FILE=${TMPDIR:-/tmp}/quirkmeter-display-$$
trap 'kill "${processes[@]}" 2>/dev/null || true; rm -f "$TEST_PREMATURE_EXIT_FILE"' EXIT
# It stays as it is when its first client leaves before the second has come.
exec {number}< <(exec Xvfb -noreset -displayfd 1 -screen 0 1280x1024x24 2>/dev/null)
processes+=($!)
read -r -u "$number" display
# The file dialog keeps settings of its own, which are nobody's here.
export GSETTINGS_BACKEND=memory
# What the toolkit's own libraries keep to the end is none of our leaks.
export LSAN_OPTIONS=suppressions=$(dirname "$0")/toolkit_leaks.supp:print_suppressions=0
export DISPLAY=:$display
manage() {
    openbox >/dev/null 2>&1 &
    manager=$!
    processes+=($!)
}
managed() { xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; }
manage
for _ in {1..600}; do
    managed && break
    kill -0 "$manager" 2>/dev/null || manage
    sleep 0.1
done
managed || {
    echo "the display has no window manager" >&2
    exit 1
}
"$@"
[ ! -e "$TEST_PREMATURE_EXIT_FILE" ]
