#!/usr/bin/env bash
# Packs the programs for Linux and works the archive as a new user would, without root's rights, in
# two minimal Debian 12 systems: one as debootstrap makes it, one with the packages that the archive
# asks for. The systems are kept in the user's cache; where they cannot be made, it says so and
# skips the rest. The first failure ends it and leaves a picture of the display,
# build/linux/FAILED.png.
set -Eeuo pipefail
cd "$(dirname "$0")/../.."
. ./packages.sh
. packaging/roots.sh
patience=60 # seconds

skip() {
    echo "SKIPPED: no bare root can be made here. Not tried: that the archive runs where it was not"
    echo "built, and that its entries in the menu come and go without a trace."
    exit
}
furnish() {
    cp -a "$bare" "$furnished.partial" && chroot "$furnished.partial" \
        apt-get install -y --no-install-recommends libglib2.0-bin $packages
}

if (($# == 0)); then
    need "${display_packages[@]}" bubblewrap debootstrap desktop-file-utils libglib2.0-bin \
        shared-mime-info xdotool
    packaging/linux/pack.sh
    # Install the packages that the program itself names.
    packages=$(sed -n 's/^ *Debian.* sudo apt install //p' packaging/linux/start.sh)
    bare=$cache/bookworm furnished=$cache/bookworm-${packages// /-}
    make_root "$bare" bootstrap "$bare.partial" || skip
    make_root "$furnished" furnish || skip
    exec tests/on_display.sh "$0" "$bare" "$furnished"
fi

bare=$1 furnished=$2
cd build/linux
world=$(mktemp -d)
home=$world/home log=$world/simulator.log main='FS2002 Quirkmeter'
# The folder's name has characters that menu entries must escape.
flights='Meine Flüge = 100 % "$flights"'
folder=/home/pilot/$flights/Quirkmeter
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$world"' EXIT
trap 'echo "FAILED: $BASH_COMMAND"; cat "$world/errors"; import -window root FAILED.png' ERR

# on ROOT COMMAND...: runs the command as the user, who can write only the home folder and /tmp.
on() {
    exec bwrap --ro-bind "$1" / --dev /dev --ro-bind /proc /proc --bind "$world/tmp" /tmp \
        --ro-bind /tmp/.X11-unix /tmp/.X11-unix --tmpfs /home --bind "$home" /home/pilot \
        --unshare-user --uid 1000 --gid 1000 --die-with-parent --chdir /home/pilot --clearenv \
        --setenv HOME /home/pilot --setenv PATH /usr/bin:/bin --setenv DISPLAY "$DISPLAY" \
        --setenv LC_ALL C.UTF-8 --setenv GSETTINGS_BACKEND memory "${@:2}" 2>>"$world/errors"
}
await() { timeout "$patience" bash -c 'until eval "$1"; do sleep 0.1; done' - "$1"; }
activate() {
    # The search fails if any window closes meanwhile.
    await "xdotool search --onlyvisible --name '^$1\$' windowactivate --sync"
}
close() {
    activate "$1"
    xdotool key alt+F4
    await "! xdotool search --onlyvisible --name '^$1\$' >/dev/null 2>&1"
}
# Lists all folders, and all files with their checksums, except the libraries' cache.
contents() { (cd "$home" && find . -name .cache -prune -o -type d -print && find . ! -type d -exec sha256sum {} +) | sort; }

mkdir -p "$home/$flights" "$world/tmp/.X11-unix"
touch "$home/.profile"
began=$SECONDS
tar xzf Quirkmeter-*.tar.gz -C "$home/$flights"
(on "$bare" "$folder/Quirkmeter") && false
grep -q 'libgtk-3.so.0 is missing' "$world/errors"
echo "ok without GTK it says what is missing"

(on "$furnished" "$folder/rehearse" "$folder/program/practice.qmp" --flights 100) |
    grep 'in which nothing fails'
echo "ok a rehearsal flies"

# Writes of the text on the simulator's screen and of its time are no failures.
(on "$furnished" "$folder/try-it" --settings)
on "$furnished" "$folder/practice-simulator" --log >"$log" &
on "$furnished" "$folder/Quirkmeter" &
await "grep ' 0x' $log | grep -qvE ' 0x(3380|32FA) '"
echo "ok a failure in flight after $((SECONDS - began)) seconds"
close "$main"
close 'Practice Simulator'
wait
grep -q 'LASTPROFILE=.*practice.qmp' "$home/$flights/Quirkmeter/program/Quirkmeter.ini"

contents >"$world/before"
(on "$furnished" "$folder/desktop-entry.sh" install)
desktop-file-validate "$home"/.local/share/applications/*.desktop
on "$furnished" gio launch .local/share/applications/quirkmeter-try-it.desktop &
activate 'Practice Simulator'
close "$main"
close 'Practice Simulator'
(on "$furnished" "$folder/desktop-entry.sh" remove)
diff "$world/before" <(contents)
echo "ok the menu's entries come, work and go without a trace"

# Use this machine, which has a desktop's tools.
export XDG_DATA_HOME=$world/share
"$home/$flights/Quirkmeter/desktop-entry.sh" install
[[ $(gio info -a standard::content-type "$home/$flights/Quirkmeter/program/practice.qmp") == *quirkmeter-profile* ]]
# Not through a pipe: grep may end first, and gio would then fail with SIGPIPE.
grep -q quirkmeter-rehearse.desktop <(gio mime application/x-quirkmeter-profile)
"$home/$flights/Quirkmeter/desktop-entry.sh" remove
[[ ! -e $XDG_DATA_HOME ]]
unset XDG_DATA_HOME
echo "ok profiles open in rehearse"

installed=$world/installed/profiles
cmake --install ../release --prefix "$world/installed" >/dev/null
echo mine >"$installed/trainer.qmp"
rm "$installed/airliner.qmp"
cmake --install ../release --prefix "$world/installed" >/dev/null
[[ $(cat "$installed/trainer.qmp") == mine && -e $installed/airliner.qmp ]]
echo "ok installing again keeps what the pilot changed"
