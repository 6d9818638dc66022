#!/usr/bin/env bash
# usage: rehearse_checks.sh REHEARSE: works the program as its users do, on the display it is given.
set -euo pipefail
shopt -s nullglob
export LC_ALL=C.UTF-8
rehearse=$(realpath "$1")
cd "$(dirname "$0")/.."
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fail() {
    echo "FAILED $*" >&2
    exit 1
}

echo "the calculated chances"
for profile in assets/*.qmp assets/profiles/*.qmp; do
    "$rehearse" "$profile" --seed 1 --check >"$folder/check.txt" ||
        fail "$profile: $(cat "$folder/check.txt")"
done

echo "a bad profile"
printf '1#1#90#1\r\n1#2#ninety#1\r\n' >"$folder/bad.qmp"
status=0
"$rehearse" "$folder/bad.qmp" --seed 1 2>"$folder/bad.txt" || status=$?
((status == 2)) && grep -qF "bad.qmp:2: the reliability is not a number" "$folder/bad.txt" ||
    fail "$status $(cat "$folder/bad.txt")"

echo "an interrupt"
status=0
timeout --preserve-status -s INT 5 "$rehearse" assets/practice.qmp --flights 1000000000 \
    --html "$folder/report.htm" >"$folder/interrupt.txt" || status=$?
((status == 130)) && grep -q 'stopped before all of 1,000,000,000' "$folder/interrupt.txt" \
    "$folder/report.htm" || fail "$status $(cat "$folder/interrupt.txt")"

echo "a profile dropped on it"
mkdir "$folder/bin"
printf '#!/bin/sh\nbasename "$1" >"%s"\n' "$folder/opened" >"$folder/bin/xdg-open"
chmod +x "$folder/bin/xdg-open"
printf '6#9#50#1\r\n' >"$folder/Übung.qmp"
PATH=$folder/bin:$PATH timeout 120 setsid -w "$rehearse" "$folder/Übung.qmp" </dev/null >/dev/null 2>&1
for ((i = 0; i < 200; ++i)); do
    [[ -s $folder/opened ]] && break
    sleep 0.1
done
grep -qx "Übung rehearsal.htm" "$folder/opened" || fail "not opened"
grep -q "<h1>Rehearsal of Übung.qmp</h1>" "$folder/Übung rehearsal.htm" || fail "no report"
