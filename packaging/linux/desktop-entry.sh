#!/usr/bin/env bash
# usage: desktop-entry.sh install|remove: adds the programs of this folder to the user's menu, or
# removes them. Install again after moving the folder.
set -euo pipefail
cd "$(dirname "$0")"
data=${XDG_DATA_HOME:-$HOME/.local/share}
entries=$data/applications
icons=$data/icons/hicolor/256x256/apps
types=$data/mime/packages
profile=application/x-quirkmeter-profile

# Prints the path as an argument of an entry: escaped for quotes, then for texts, then as a field
# code.
argument() {
    printf %s "$PWD/$1" |
        sed -z 's/[\\"`$]/\\&/g; s/\\/\\\\/g; s/\n/\\n/g; s/\t/\\t/g; s/%/%%/g'
}

# add PROGRAM NAME COMMENT [FIELD CODE [TYPE OF FILE]]: writes an entry. The command is nice:
# desktops do not unescape the command itself, and env would take a path with "=" for a variable.
add() {
    cat >"$entries/quirkmeter-$1.desktop" <<END
[Desktop Entry]
Type=Application
Name=$2
Comment=$3
Exec=nice -n 0 "$(argument "$1")"${4-}
Icon=quirkmeter
Categories=Game;Simulation;
StartupWMClass=$1
MimeType=${5-}
END
}

add_type() {
    cat >"$types/quirkmeter.xml" <<END
<?xml version="1.0" encoding="UTF-8"?>
<mime-info xmlns="http://www.freedesktop.org/standards/shared-mime-info">
  <mime-type type="$profile">
    <comment>FS2002 Quirkmeter Profile</comment>
    <glob pattern="*.qmp"/>
  </mime-type>
</mime-info>
END
}

# Updates the desktop's lists of file types and of the programs that open them. A desktop without
# these tools has no such lists.
update_lists() {
    if [[ -d $types ]]; then update-mime-database "$data/mime" || true; fi
    if [[ -d $entries ]]; then update-desktop-database "$entries" || true; fi
} 2>/dev/null

remove() {
    rm -f "$entries"/quirkmeter-*.desktop "$icons/quirkmeter.png" "$types/quirkmeter.xml"
    update_lists
    # Remove the lists if no other program is in them.
    [[ ! -d $types || -n $(ls -A "$types") ]] || rm -rf "$data/mime"
    [[ $(ls -A "$entries" 2>/dev/null) != mimeinfo.cache ]] || rm "$entries/mimeinfo.cache"
    # Also remove the folders that install made, if they are empty.
    for folder in "$entries" "$icons"; do
        [[ ! -d $folder ]] || (cd "$HOME" &&
            rmdir -p --ignore-fail-on-non-empty "${folder#"$HOME/"}")
    done
    echo "The programs are out of your menu."
}

install() {
    mkdir -p "$entries" "$icons" "$types"
    cp quirkmeter.png "$icons"
    add Quirkmeter 'FS2002 Quirkmeter' 'Makes aircraft systems fail at random while you fly'
    add try-it 'Try FS2002 Quirkmeter' 'Flies with the Practice Simulator and everything switched on'
    add practice-simulator 'Practice Simulator' 'Stands in for the flight simulator'
    add rehearse 'FS2002 Quirkmeter Rehearsal' 'Tells what to expect of a profile, and makes one' \
        ' %f' "$profile;"
    add_type
    update_lists
    echo "The programs are in your menu now."
}

case ${1-} in
install | remove) "$1" ;;
*)
    sed -n '2,3s/^# //p' "$0" >&2
    exit 2
    ;;
esac
