#!/usr/bin/env bash
# Packs the Windows programs. Under Wine on a virtual display, runs the tests of the program and its
# windows and works the packages as a user would: completely as Windows XP, and as Windows 10 where
# that may differ. Where Wine cannot be installed, says so and skips the rest.
set -euo pipefail
cd "$(dirname "$0")/../.."
. ./packages.sh

skip() {
    echo "SKIPPED: $*"
    exit 0
}

for package in nsis zip g++-mingw-w64-i686-posix googletest; do
    (need "$package") || skip "$package cannot be installed. Not tried: anything on Windows."
done
need "${display_packages[@]}" clang-tidy-16 procps unzip xdotool
status=0
packaging/windows/pack.sh || status=$?
((status != 75)) ||
    skip "the sources of wxWidgets cannot be fetched. Not tried: anything on Windows."
((status == 0))

build=build/windows
packaging/windows/imports.sh "$build"/stage/*.exe
cmake -DBUILD_TESTING=ON "$build" >/dev/null
cmake --build "$build" -j "$(nproc)" --target program_test window_test windows_layer_test \
    -- --quiet
# Checks the files that are compiled for Windows only. clang-tidy must be told where that compiler has
# its headers.
headers=$(i686-w64-mingw32-g++-posix -print-file-name=include/c++)
git ls-files 'src/platform/windows/*.cpp' tests/native_windows.cpp \
    tests/windows_layer_test.cpp |
    xargs -P "$(nproc)" -n 1 clang-tidy-16 -p "$build" --quiet \
        --extra-arg=-isystem"$headers" --extra-arg=-isystem"$headers/i686-w64-mingw32" \
        --extra-arg=-Wno-ignored-optimization-argument \
        --extra-arg=-Wno-unused-command-line-argument \
        2> >(grep -v 'warnings generated' >&2)

packaging/windows/wine.sh wine --version || status=$?
((status != 75)) || skip "no root with 32-bit Wine can be made here. Not tried: whether the" \
    "programs run on Windows, and the tests of the program and its windows there."
((status == 0))
for version in winxp win10; do
    echo "On $version"
    tests/on_display.sh packaging/windows/checks.sh "$build" "$version"
done
