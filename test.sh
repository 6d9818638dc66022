#!/usr/bin/env bash
# Builds everything, checks the style of the changed files and runs all tests: ./test.sh for the
# release build, ./test.sh debug for the one with the address and undefined-behaviour sanitizers.
set -euo pipefail
cd "$(dirname "$0")"
. ./packages.sh

preset=${1-release}
need "${build_packages[@]}" "${run_packages[@]}" "${display_packages[@]}" "${test_packages[@]}"
build "$preset" ON
echo "Checking the style"
tests/style.sh "build/$preset"
echo "Testing"
ctest --test-dir "build/$preset" -j2 --output-on-failure --progress
