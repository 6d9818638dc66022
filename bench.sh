#!/usr/bin/env bash
# Measures the cost of the program, each figure beside a baseline from the same run; prints the
# table and writes docs/performance.md, with the sizes of the Windows programs if
# packaging/windows/build.sh has built them.
set -euo pipefail
cd "$(dirname "$0")"
. ./packages.sh

need "${build_packages[@]}" "${run_packages[@]}" "${display_packages[@]}" "${test_packages[@]}"
programs=(Quirkmeter practice-simulator core_bench window_bench empty_frame)
build release ON "${programs[@]}"
if [[ -d build/windows/stage ]]; then
    cmake --build build/windows --target empty_frame bare_window -- --quiet
fi

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export XDG_RUNTIME_DIR=$folder
cp "${programs[@]/#/build/release/bin/}" assets/*.wav "$folder"
echo "Measuring, which takes some minutes"
tests/on_display.sh bench/measure.py "$folder"
