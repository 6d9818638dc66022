#!/usr/bin/env bash
# Builds the Windows programs and packs them twice, into build/windows-x86_64 (with --32 into
# build/windows-i686): as a zip with one folder to put anywhere, and as an installer.
set -euo pipefail
cd "$(dirname "$0")/../.."
. ./packages.sh

case "$*" in
"") arch=x86_64 target=amd64-unicode ;;
--32) arch=i686 target=x86-unicode ;;
*)
    echo "usage: $0 [--32]" >&2
    exit 2
    ;;
esac

need nsis zip
packaging/windows/build.sh "$@"

version=$(sed -n -E 's/^project\(.* VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
build=build/windows-$arch
package=$PWD/$build/Quirkmeter-$version-$arch

# From a fresh folder: somebody may have flown in the hangar, and left files there.
folder=$PWD/$build/package/Quirkmeter
rm -rf "$folder" "$build"/Quirkmeter-*
cmake --install "$build" --prefix "$folder" >/dev/null
(cd "$folder/.." && zip -q -X -r "$package.zip" Quirkmeter)
makensis -V2 -WX -DVERSION="$version" -DFOLDER="$folder" -DTARGET="$target" \
    -DOUTPUT="$package-setup.exe" packaging/windows/installer.nsi
ls -l "$package"*
