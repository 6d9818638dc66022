#!/usr/bin/env bash
# usage: checks.sh ZIP SETUP: runs what is in the packages under Wine, on the display it is given,
# and prints a line for each check. What Quirkmeter does is seen in the lines that the practice
# simulator prints, in its windows' titles and in the files that it leaves.
set -Eeuo pipefail
zip=$(realpath "$1")
setup=$(realpath "$2")
pictures=$(dirname "$zip") # of what the display shows when a check fails
patience=60                # seconds

rm -f "$pictures"/FAILED-*.png

world=$(mktemp -d)
# A Windows of its own, which ends with all that runs on it.
export WINEPREFIX=$world/prefix WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe="
export HOME=$world/home LC_ALL=C.UTF-8
wine() { timeout "$patience" /usr/lib/wine/wine64 "$@" 2>/dev/null; }
wineserver() { timeout "$patience" /usr/lib/wine/wineserver64 "$@"; }
trap 'wineserver -k || true; wineserver -w || true; rm -rf "$world"' EXIT

users_folder="Flüge mit Übung"
folder="$WINEPREFIX/drive_c/$users_folder/Quirkmeter"
ini=$folder/Quirkmeter.ini
log=$world/simulator.log

# --- Checking -------------------------------------------------------------------------------------

passed=0 failed=0

# check NAME FUNCTION: the function's first failing command ends it.
check() {
    local status
    set +e
    (
        set -e
        trap 'echo "line $LINENO: $BASH_COMMAND" >&2' ERR
        "$2"
    ) >"$world/check.log" 2>&1
    status=$?
    set -e
    if ((status == 0)); then
        echo "ok $1"
        passed=$((passed + 1))
    else
        echo "FAILED $1"
        sed 's/^/   /' "$world/check.log"
        import -window root "$pictures/FAILED-$2.png"
        failed=$((failed + 1))
    fi
}

await() {
    local end=$((SECONDS + patience))
    until "$@"; do
        ((SECONDS < end)) || {
            echo "not within $patience seconds: $*"
            return 1
        }
        sleep 0.1
    done
}

no() { ! "$@"; }

fails_with() {
    local status=0
    "${@:2}" || status=$?
    ((status == $1))
}

# --- What is there --------------------------------------------------------------------------------

# running PROGRAM: the process ids of it on this Windows; fails when there is none.
running() {
    local pid found=1
    for pid in $(pgrep -x "${1:0:15}"); do
        if grep -qsxzF "WINEPREFIX=$WINEPREFIX" "/proc/$pid/environ"; then
            echo "$pid"
            found=0
        fi
    done
    return $found
}

one_runs() { [ "$(running "$1" | wc -l)" -eq 1 ]; }

# window TITLE: its number; fails unless there is exactly one visible window of that title.
window() {
    local numbers
    numbers=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null || true)
    [[ $numbers =~ ^[0-9]+$ ]] && echo "$numbers"
}

is_open() { window "$1" >/dev/null; }

# wrote COUNT OFFSET [TEXT]: the simulator has had that many writes there.
wrote() {
    awk -v count="$1" -v offset="$2" -v text="${3-}" \
        '$2 == offset && index($0, text) { ++n } END { exit n < count }' "$log"
}

# seconds_between FIRST LAST OFFSET: from that write there to that one.
seconds_between() {
    awk -v first="$1" -v last="$2" -v offset="$3" \
        '$2 == offset && ++n == first { from = $1 } n == last { print $1 - from; exit }' "$log"
}

# is_within LOW VALUE HIGH
is_within() { awk -v a="$1" -v b="$2" -v c="$3" 'BEGIN { exit !(a <= b && b <= c) }'; }

# --- What the user does ---------------------------------------------------------------------------

# start PROGRAM [OPTION]...: from its folder.
start() {
    local program=$1
    shift
    (cd "$folder" && exec /usr/lib/wine/wine64 "$program" "$@" </dev/null 2>/dev/null) &
}

# The aircraft takes off by itself.
start_simulator() {
    start practice-simulator.exe --headless --takeoff-after 2 >"$log"
    await grep -q '# ready' "$log"
}

end_simulator() {
    kill -KILL $(running practice-simulator.exe)
    await no running practice-simulator.exe
}

# press TITLE KEY...: in the window of that title, as soon as there is one.
press() {
    await is_open "$1"
    timeout "$patience" xdotool windowactivate --sync "$(window "$1")"
    shift
    xdotool key --delay 100 "$@"
}

close_program() {
    press 'FS2002 Quirkmeter' alt+F4
    await no running Quirkmeter.exe
}

# settings PROFILE [LINE]...: a settings file as the program writes it.
settings() {
    local profile=$1
    shift
    printf '%s\r\n' "LASTPROFILE=$profile" \
        STATUS_HK=83 STATUS_HKCS=3 CLEAR_HK=67 CLEAR_HKCS=3 ACTIVE_HK=68 ACTIVE_HKCS=3 \
        DISPLAYUPDATE=YES DISPLAYFAILURES=YES PLAYFAILURESOUND=YES "$@" | iconv -t CP1252
}

# --- The checks -----------------------------------------------------------------------------------

pitot=0x0B71
profile="C:\\$users_folder\\Quirkmeter\\pitot.qmp"

unpacked() {
    mkdir -p "$WINEPREFIX/drive_c/$users_folder"
    unzip -q "$zip" -d "$WINEPREFIX/drive_c/$users_folder"
    [ "$(ls "$WINEPREFIX/drive_c/$users_folder")" = Quirkmeter ]
    [ "$(cd "$folder" && LC_ALL=C ls | tr '\n' ' ')" = "LICENSE.txt Quirkmeter.exe Quirkmeter.htm \
fsqmhc.exe practice-simulator.exe practice.qmp sound_failure.wav sound_ok.wav sound_warning.wav " ]
}

fails_every_second() {
    printf '6#7#0#0\r\n' >"$folder/pitot.qmp"
    settings "$profile" >"$ini"
    start_simulator
    start Quirkmeter.exe
    await wrote 6 $pitot
    is_within 4 "$(seconds_between 1 6 $pitot)" 6.5
    wrote 1 0x3380 "Pitot Static"
}

second_instance_ends() {
    (cd "$folder" && wine Quirkmeter.exe)
    one_runs Quirkmeter.exe
    is_open 'FS2002 Quirkmeter'
}

reconnects() {
    end_simulator
    start_simulator
    await wrote 2 $pitot
    one_runs Quirkmeter.exe
}

airspeed=' Autopilot - Airspeed Reliability'

click_opens() {
    await is_open 'FS2002 Quirkmeter'
    xdotool mousemove --window "$(window 'FS2002 Quirkmeter')" 60 190 click 1
    await is_open "$airspeed"
    press "$airspeed" Escape
    await no is_open "$airspeed"
}

# The list keeps the focus after the click. In the dialog the whole percents have it, and one down
# from 100 is 99.999 %.
enter_opens_and_accepts() {
    press 'FS2002 Quirkmeter' Return
    press "$airspeed" Down Return
    await no is_open "$airspeed"
}

saves_heavy() {
    press 'FS2002 Quirkmeter' alt+s
    press 'Save As' C colon backslash h e a v y Return
    local heavy=$WINEPREFIX/drive_c/heavy
    await test -s "$heavy"
    [ "$(wc -l <"$heavy")" -eq 62 ]
    cmp <(head -n 1 "$heavy") <(printf '1#1#99.999#1\r\n')
}

settings_are_written() {
    rm "$ini"
    close_program
    cmp "$ini" <(settings 'C:\heavy')
}

hardcore_restarts() {
    end_simulator
    settings "$profile" HARDCOREMODE=YES >"$ini"
    start_simulator
    (cd "$folder" && wine Quirkmeter.exe)
    await one_runs fsqmhc.exe
    await is_open 'FS2002 Quirkmeter'
    await wrote 1 0x3380 "Hardcore Mode."
    await wrote 1 $pitot
    one_runs Quirkmeter.exe
}

hardcore_ends_the_flight() {
    rm "$ini"
    kill -KILL $(running fsqmhc.exe)
    await no running Quirkmeter.exe
    await no running fsqmhc.exe
    wrote 3 0x0560
    no wrote 4 0x0560
    is_within 1.9 "$(seconds_between 1 3 0x0560)" 4
    cmp "$ini" <(settings "$profile" HARDCOREMODE=YES)
    end_simulator
}

uninstall_key='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Quirkmeter'
installed() { echo "$WINEPREFIX"/drive_c/users/*/AppData/Local/Programs/Quirkmeter; }
menu() {
    echo "$WINEPREFIX"/drive_c/users/*/AppData/Roaming/Microsoft/Windows/Start*/Programs/FS2002*
}

installs() {
    wine "$setup" /S
    unzip -q "$zip" -d "$world/zip"
    diff -rq -x uninstall.exe "$(installed)" "$world/zip/Quirkmeter"
    [ "$(ls "$(menu)" | tr '\n' ' ')" = "FS2002 Quirkmeter.lnk Practice Simulator.lnk " ]
    wine reg query "$uninstall_key" /v QuietUninstallString |
        grep -qF 'Quirkmeter\uninstall.exe" /S'
}

# The uninstaller is told not to go on from a copy of itself, whose result nobody would see.
installed_program_runs() {
    folder=$(installed)
    start Quirkmeter.exe
    await is_open 'FS2002 Quirkmeter'
    fails_with 2 wine "$setup" /S
    local inside=${folder#*/drive_c}
    fails_with 2 wine "$folder/uninstall.exe" /S "_?=C:${inside//\//\\}"
    test -e "$folder/practice-simulator.exe"
    close_program
    cmp "$folder/Quirkmeter.ini" <(printf 'LASTPROFILE=\r\n')
}

uninstall() {
    wine "$(installed)/uninstall.exe" /S
    await test ! -e "$(menu)"
    await no wine reg query "$uninstall_key"
}

uninstall_keeps_the_users_files() {
    touch "$(installed)/mine.qmp"
    uninstall
    [ "$(ls "$(installed)" | tr '\n' ' ')" = "Quirkmeter.ini mine.qmp " ]
}

uninstall_leaves_nothing() {
    rm -r "$(installed)"
    wine "$setup" /S
    uninstall
    [ ! -e "$(installed)" ]
}

mkdir "$HOME" "$WINEPREFIX"
wineserver -p
wine wineboot --init || {
    echo "FAILED Wine does not start"
    exit 1
}

check "the zip unpacks into one folder with all its files" unpacked
check "a failure of the profile is written every second" fails_every_second
check "a second instance ends at once" second_instance_ends
check "the program connects again after the simulator was killed" reconnects
check "a click on a row opens its reliability" click_opens
check "Enter opens the row's reliability, and accepts it" enter_opens_and_accepts
check "a profile saved as heavy is named heavy" saves_heavy
check "closing writes the settings" settings_are_written
check "Hardcore Mode starts the companion, which starts the program again" hardcore_restarts
check "without its companion in the air Hardcore Mode ends the flight" hardcore_ends_the_flight
check "the installer installs" installs
check "the installed program starts, holds off the installers and writes its settings" \
    installed_program_runs
check "uninstalling keeps the user's files" uninstall_keeps_the_users_files
check "uninstalling leaves nothing else" uninstall_leaves_nothing
echo "$passed passed, $failed failed"
((failed == 0))
