#!/usr/bin/env bash
# Packs the Windows programs and runs them under Wine on a virtual display, as a user would. Where
# what that takes cannot be installed, it says so and skips the rest.
set -euo pipefail
cd "$(dirname "$0")/../.."
. ./packages.sh

skip_without() {
    local package
    for package; do
        (need "$package") && continue
        echo "SKIPPED the packages, flights, profiles, Hardcore Mode and installer on Windows:" \
            "$package cannot be installed."
        exit 0
    done
}

skip_without nsis zip g++-mingw-w64-x86-64-posix wine64
need "${display_packages[@]}" procps unzip xdotool
packaging/windows/pack.sh
tests/on_display.sh packaging/windows/checks.sh \
    build/windows-x86_64/Quirkmeter-*-x86_64{.zip,-setup.exe}
