#!/usr/bin/env bash
# Starts the program whose name this link has. If the system lacks a library for it, names the
# library and how to install it.
set -euo pipefail
name=$(basename "$0")
program=$(dirname "$(readlink -f "$0")")/program/$name
if missing=$(LD_TRACE_LOADED_OBJECTS=1 "$program" 2>&1 | grep 'not found' | sort -u); then
    cat >&2 <<END
$name cannot start here:
${missing// => not found/ is missing}
It needs GTK 3 and libcanberra, on a system with glibc 2.34 or newer. To install them:
  Debian, Ubuntu, Mint   sudo apt install libgtk-3-0 libcanberra0
  Fedora                 sudo dnf install gtk3 libcanberra
  openSUSE               sudo zypper install libgtk-3-0 libcanberra0
  Arch                   sudo pacman -S gtk3 libcanberra
END
    exit 1
fi
exec "$program" "$@"
