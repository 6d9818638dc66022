#!/usr/bin/env bash
# usage: desktop-entry.sh install|remove: puts the programs of this folder into the user's menu, or
# takes them out again. After the folder has moved: install once more.
set -euo pipefail
cd "$(dirname "$0")"
data=${XDG_DATA_HOME:-$HOME/.local/share}
entries=$data/applications
icons=$data/icons/hicolor/256x256/apps

# The path as an argument in an entry: what is special in quotes, in texts, and as a code. Desktops
# read no codes in the place of a command.
argument() { sed -e 's/[\\"`$]/\\&/g; s/\\/\\\\/g; s/%/%%/g' <<<"$PWD/$1"; }

# practice-simulator is "Practice Simulator".
title_of() {
    local words=${1//-/ }
    words=(${words/Quirkmeter/FS2002 Quirkmeter})
    echo "${words[*]^}"
}

remove() {
    rm -f "$entries"/quirkmeter-*.desktop "$icons/quirkmeter.png"
    # Folders that were made for them go, too.
    for folder in "$entries" "$icons"; do
        [[ ! -d $folder ]] || (cd "$HOME" &&
            rmdir -p --ignore-fail-on-non-empty "${folder#"$HOME/"}")
    done
}

install() {
    mkdir -p "$entries" "$icons"
    cp quirkmeter.png "$icons"
    for program in *; do
        [[ -L $program ]] || continue
        dropped=
        [[ $program != rehearse ]] || dropped=' %f'
        cat >"$entries/quirkmeter-$program.desktop" <<END
[Desktop Entry]
Type=Application
Name=$(title_of "$program")
Exec=env "$(argument "$program")"$dropped
Icon=quirkmeter
Categories=Game;Simulation;
StartupWMClass=$program
END
    done
}

case ${1-} in
install | remove) "$1" ;;
*)
    sed -n '2,3s/^# //p' "$0" >&2
    exit 2
    ;;
esac
