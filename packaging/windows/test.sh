#!/usr/bin/env bash
# Packs the Windows programs, and under Wine on a virtual display passes the tests of the program and
# its windows and works what is in the packages as a user would. Where what that takes cannot be had,
# it says so and skips the rest.
set -euo pipefail
cd "$(dirname "$0")/../.."
. ./packages.sh

skip() {
    echo "SKIPPED everything on Windows: $*"
    exit 0
}

for package in nsis zip g++-mingw-w64-x86-64-posix wine64 googletest; do
    (need "$package") || skip "$package cannot be installed."
done
need "${display_packages[@]}" clang-tidy-16 procps unzip xdotool
status=0
packaging/windows/pack.sh || status=$?
((status != 75)) || skip "the sources of wxWidgets cannot be fetched."
((status == 0))

build=build/windows-x86_64
cmake -DBUILD_TESTING=ON "$build" >/dev/null
cmake --build "$build" -j "$(nproc)" --target program_test window_test link-probe -- --quiet
# What is compiled for Windows only; where that compiler has its headers, clang-tidy must be told.
headers=$(x86_64-w64-mingw32-g++-posix -print-file-name=include/c++)
git ls-files 'src/platform/windows/*.cpp' tests/native_windows.cpp tests/link_probe.cpp |
    xargs -P "$(nproc)" -n 1 clang-tidy-16 -p "$build" --quiet \
        --extra-arg=-isystem"$headers" --extra-arg=-isystem"$headers/x86_64-w64-mingw32" \
        2> >(grep -v 'warnings generated' >&2)
tests/on_display.sh packaging/windows/checks.sh "$build"
