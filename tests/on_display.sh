#!/usr/bin/env bash
# Runs a command on a virtual display with a window manager. A test program that ends early has
# failed, whatever its exit status.
set -euo pipefail
. "$(dirname "$0")/display.sh"
processes=()
# GoogleTest creates this file when a test program starts and removes it at the program's end.
export TEST_PREMATURE_EXIT_FILE=${TMPDIR:-/tmp}/quirkmeter-display-$$
trap 'kill "${processes[@]}" 2>/dev/null || true; rm -f "$TEST_PREMATURE_EXIT_FILE"' EXIT
# Ignore what the libraries under wxWidgets never free.
export LSAN_OPTIONS=suppressions=$(dirname "$0")/library_leaks.supp:print_suppressions=0
open_display 1280x1024
"$@"
[[ ! -e $TEST_PREMATURE_EXIT_FILE ]]
