#!/usr/bin/env bash
# usage: wine.sh wine|wineserver [ARGUMENT]...: runs 32-bit Wine, which often cannot be installed on
# a 64-bit Debian. The first call makes a minimal system for it, which sees only the checkout and
# /tmp of this machine. Exit status 75: that system cannot be made here.
set -euo pipefail
tree=$(realpath "$(dirname "$0")/../..")
. "$tree/packages.sh"
. "$tree/packaging/roots.sh"

furnish() {
    bootstrap "$root.partial" --arch=i386 && chroot "$root.partial" \
        apt-get install -y --no-install-recommends wine32 wine fonts-liberation
}

root=$cache/bookworm-wine32
if [[ ! -d $root ]]; then
    need debootstrap bubblewrap >&2
    make_root "$root" furnish || exit 75
fi
exec bwrap --bind "$root" / --dev /dev --ro-bind /proc /proc --bind /tmp /tmp \
    --bind "$tree" "$tree" "/usr/lib/wine/$1" "${@:2}"
