#!/usr/bin/env bash
# Builds the Windows programs and packs them twice into build/windows: as a zip with one folder, and
# as an installer.
set -euo pipefail
cd "$(dirname "$0")/../.."
. ./packages.sh

need nsis zip
packaging/windows/build.sh

version=$(sed -n -E 's/^project\(.* VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
build=build/windows
package=$PWD/$build/Quirkmeter-$version

# Use a fresh folder: a flight with the staged programs may have left files there.
folder=$PWD/$build/package/Quirkmeter
rm -rf "$folder" "$build"/Quirkmeter-*
cmake --install "$build" --prefix "$folder" >/dev/null
(cd "$folder/.." && zip -q -X -r "$package.zip" Quirkmeter)
makensis -V2 -WX -DVERSION="$version" -DFOLDER="$folder" \
    -DOUTPUT="$package-setup.exe" packaging/windows/installer.nsi
ls -l "$package"*
