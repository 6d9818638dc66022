#!/usr/bin/env bash
# Runs a command on a virtual display of its own with a window manager. A test program that ends
# half-way has failed, whatever its exit status.
set -euo pipefail
. "$(dirname "$0")/display.sh"
processes=()
# It is there from the beginning of a test program to its end.
export TEST_PREMATURE_EXIT_FILE=${TMPDIR:-/tmp}/quirkmeter-display-$$
trap 'kill "${processes[@]}" 2>/dev/null || true; rm -f "$TEST_PREMATURE_EXIT_FILE"' EXIT
# Ignore what the libraries under wxWidgets never free.
export LSAN_OPTIONS=suppressions=$(dirname "$0")/library_leaks.supp:print_suppressions=0
open_display 1280x1024
"$@"
[[ ! -e $TEST_PREMATURE_EXIT_FILE ]]
