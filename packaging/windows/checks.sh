#!/usr/bin/env bash
# usage: checks.sh FOLDER VERSION: runs the test programs and what is in the packages of that build
# folder under Wine, which says it is that version of Windows (winxp, win10), on the display it is
# given, and prints a line for each check. Checks that do not depend on the version run on XP only. The
# checks see the work of Quirkmeter in the lines that the practice simulator prints, in its windows' titles and
# in the files that it leaves; for each check that fails there is a picture of the display in the
# folder.
set -Eeuo pipefail
build=$(realpath "$1")
version=$2
zip=$(echo "$build"/Quirkmeter-*.zip)
setup=$(echo "$build"/Quirkmeter-*-setup.exe)
patience=60 # seconds

rm -f "$build"/FAILED-*.png

world=$(mktemp -d)
# Set before HOME changes below: Wine itself is in this folder.
export XDG_CACHE_HOME=${XDG_CACHE_HOME:-$HOME/.cache}
# Use a separate Wine prefix. Its programs end with it.
export WINEPREFIX=$world/prefix WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe="
export HOME=$world/home USER=Jörg LC_ALL=C.UTF-8
wine=$(realpath "$(dirname "$0")/wine.sh")
wine() { timeout "$patience" "$wine" wine "$@" 2>/dev/null; }
wineserver() { timeout "$patience" "$wine" wineserver "$@"; }
end_all() {
    for WINEPREFIX in "$world"/prefix*; do
        wineserver -k || true
        wineserver -w || true
    done
    rm -rf "$world"
}
trap end_all EXIT

main='FS2002 Quirkmeter'
# The system names its file dialogs.
save_dialog=Save
[[ $version != winxp ]] || save_dialog="Save As"
users_folder="100 % Flüge mit Übung"
folder="$WINEPREFIX/drive_c/$users_folder/Quirkmeter"
ini=$folder/Quirkmeter.ini
log=$world/simulator.log

# --- Checking -------------------------------------------------------------------------------------

passed=0 failed=0

# check NAME FUNCTION: runs the function up to its first failing command.
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
        import -window root "$build/FAILED-$2.png"
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

# running PROGRAM: prints the process ids of the program on this Windows; fails when there is none.
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

one_runs() { [[ "$(running "$1" | wc -l)" -eq 1 ]]; }

# A message box has the main window's title but is lower.
is_low() {
    local height
    height=$(xdotool getwindowgeometry "$1" 2>/dev/null | sed -n 's/.*Geometry: .*x//p')
    ((${height:-0} < 200))
}

# window TITLE: prints its number; fails unless there is exactly one visible window of that title.
# "box" stands for the title of a message box.
window() {
    local numbers number found=()
    numbers=$(xdotool search --onlyvisible --name "^${1/#box/$main}\$" 2>/dev/null || true)
    for number in $numbers; do
        case $1 in
        box) is_low "$number" || continue ;;
        "$main") is_low "$number" && continue ;;
        esac
        found+=("$number")
    done
    ((${#found[@]} == 1)) && echo "${found[0]}"
}

is_open() { window "$1" >/dev/null; }

# wrote COUNT OFFSET [TEXT]: succeeds when the simulator has received that many writes there.
wrote() {
    awk -v count="$1" -v offset="$2" -v text="${3-}" \
        '$2 == offset && index($0, text) { ++n } END { exit n < count }' "$log"
}

# seconds_of COUNT OFFSET: prints the whole seconds between the first write there and that one.
seconds_of() {
    awk -v count="$1" -v offset="$2" \
        '$2 == offset { if (++n == 1) from = $1; if (n == count) printf "%d", $1 - from }' "$log"
}

# --- Actions of the user --------------------------------------------------------------------------

# start PROGRAM [OPTION]...: starts the program in its folder.
start() {
    local program=$1
    shift
    (cd "$folder" && exec "$wine" wine "$program" "$@" </dev/null 2>/dev/null) &
}

start_simulator() {
    start practice-simulator.exe --log "$@" >"$log"
    await grep -q '# ready' "$log"
}

end_simulator() {
    kill -KILL $(running practice-simulator.exe)
    await no running practice-simulator.exe
}

# The first start only starts the companion.
start_hardcore() {
    settings "$profile" HARDCOREMODE=YES >"$ini"
    (cd "$folder" && wine Quirkmeter.exe)
    await one_runs fsqmhc.exe
    await is_open "$main"
}

activate() {
    local number
    number=$(window "$1") && timeout "$patience" xdotool windowactivate --sync "$number"
}

# to_front TITLE: waits for the window and brings it to the front.
to_front() { await activate "$1"; }

# press TITLE KEY...
press() {
    to_front "$1"
    shift
    xdotool key --delay 100 "$@"
}

# answer TITLE KEY...: presses the keys, which close that window.
answer() {
    press "$@"
    await no is_open "$1"
}

# hold KEY CONDITION...: holds CTRL, SHIFT and the key in the simulator until the condition is met.
hold() {
    local key=$1 status=0
    shift
    to_front 'Practice Simulator'
    xdotool keydown ctrl keydown shift keydown "$key"
    await "$@" || status=$?
    xdotool keyup "$key" keyup shift keyup ctrl
    return $status
}

# choose TITLE KEY...: types a name over the one that the file dialog proposes. The system sets the
# title.
choose() { answer "$1" Home shift+End "${@:2}" Return; }

# save NAME: saves a profile in the program's folder, where the file dialog looks first.
save() {
    press "$main" alt+s
    choose "$save_dialog" $(grep -o . <<<"$1")
    await test -s "$folder/$1"
}

close_program() {
    press "$main" alt+F4
    await no running Quirkmeter.exe
}

end_session() {
    rm "$ini"
    # Wine hangs if a program ends before it has answered for all of its windows.
    patience=20 wine wineboot --end-session || (($? == 124))
    await no running Quirkmeter.exe
}

# settings PROFILE [LINE]...: prints a settings file as the program writes it.
settings() {
    local profile=$1
    shift
    printf '%s\r\n' "LASTPROFILE=$profile" \
        STATUS_HK=83 STATUS_HKCS=3 CLEAR_HK=67 CLEAR_HKCS=3 ACTIVE_HK=68 ACTIVE_HKCS=3 \
        DISPLAYUPDATE=YES DISPLAYFAILURES=YES PLAYFAILURESOUND=YES "$@" | iconv -t CP1252
}

# --- The tests ------------------------------------------------------------------------------------

# The names of the tests' files may only have letters that every code page has, so the test programs
# run in a separate Wine prefix, as another user. A program that ended early has not passed.
plain=$world/prefix-plain
test_program() {
    cd "$world"
    USER=pilot WINEPREFIX=$plain timeout 300 "$wine" wine "$build/bin/$1" --gtest_brief=1 2>&1
}

passes() { test_program "$1" | tee "$world/tests.log" && grep '^\[  PASSED  \]' "$world/tests.log"; }

program_passes() { passes program_test.exe; }

# Runs beside the other checks: waiting for a module that never answers takes a minute and a half.
layer_passes() {
    await grep -s '^\[=.* ran\.' "$world/layer.log"
    cat "$world/layer.log"
    grep '^\[  PASSED  \]' "$world/layer.log"
}

windows_pass() { passes window_test.exe; }

# --- The checks -----------------------------------------------------------------------------------

unpacked() {
    mkdir -p "$WINEPREFIX/drive_c/$users_folder"
    unzip -q "$zip" -d "$WINEPREFIX/drive_c/$users_folder"
    [[ "$(ls "$WINEPREFIX/drive_c/$users_folder")" == Quirkmeter ]]
    [[ "$(cd "$folder" && LC_ALL=C ls | tr '\n' ' ')" == "LICENSE.txt Quirkmeter.exe Quirkmeter.htm Try it.exe \
fsqmhc.exe help practice-simulator.exe practice.qmp profiles rehearse.exe sound_failure.wav \
sound_ok.wav sound_warning.wav " ]]
}

one_job_is_left() { [[ "$(jobs -rp | wc -l)" -eq 1 ]]; }

one_instance_stays() {
    settings '' >"$ini"
    for _ in {1..4}; do start Quirkmeter.exe; done
    await one_job_is_left
    await is_open "$main"
    (cd "$folder" && wine Quirkmeter.exe)
    one_runs Quirkmeter.exe
    is_open "$main"
}

# The systems list has the focus at the start, and the list of whole percents in the dialog. One
# step down from 100 is 99.999 %, as the profile saved below shows.
enter_opens_and_accepts() {
    press "$main" End Tab KP_Enter
    answer ' Radio - ADF Reliability' Down KP_Enter
}

saves_as_named() {
    save heavy
    [[ "$(wc -l <"$folder/heavy")" -eq 62 ]]
    [[ "$(grep -n 99 "$folder/heavy")" == $'59:7#1#99.999#1\r' ]]
}

refuses_foreign_letters() {
    local before
    before=$(ls "$WINEPREFIX/drive_c")
    press "$main" alt+s
    choose "$save_dialog" C colon backslash Cyrillic_zhe
    answer box Return
    [[ "$(ls "$WINEPREFIX/drive_c")" == "$before" ]]
    one_runs Quirkmeter.exe
}

# Wine has no browser.
opens_help() {
    wine reg add 'HKCR\.htm' /ve /d htmlfile /f
    wine reg add 'HKCR\htmlfile\shell\open\command' /ve /d 'notepad.exe "%1"' /f
    press "$main" alt+p
    press Help alt+h
    answer 'Quirkmeter.htm - Notepad' alt+F4
    is_open Help
}

writes_settings() {
    answer Help Escape
    rm "$ini"
    close_program
    cmp "$ini" <(settings "C:\\$users_folder\\Quirkmeter\\heavy")
}

pitot=0x0B71
profile="C:\\$users_folder\\Quirkmeter\\pitot.qmp"

fails_every_second() {
    printf '6#7#0#0\r\n' >"$folder/pitot.qmp"
    settings "$profile" >"$ini"
    start_simulator --takeoff-after 2
    start Quirkmeter.exe
    await wrote 6 $pitot
    (($(seconds_of 6 $pitot) >= 4 && $(seconds_of 6 $pitot) < 20))
    wrote 1 0x3380 "Pitot Static"
}

obeys_hotkeys() {
    no wrote 2 0x3380 "Pitot Static"
    hold s wrote 2 0x3380 "Pitot Static"
    hold c wrote 1 $pitot "$pitot 1 0 "
    hold d wrote 1 0x3380 "(deactivated)"
    close_program
    end_simulator
}

rehearses() {
    (cd "$folder" && wine rehearse.exe practice.qmp --flights 100) | grep 'in which nothing fails'
}

hardcore_restarts() {
    start_hardcore
    start_simulator --headless --takeoff-after 2
    await wrote 1 0x3380 "Operational. Hardcore Mode."
    await wrote 1 $pitot
    one_runs Quirkmeter.exe
}

# The aircraft was moved three times.
flight_was_ended() {
    wrote 3 0x0560
    no wrote 4 0x0560
    cmp "$ini" <(settings "$profile" HARDCOREMODE=YES)
}

hardcore_ends_the_flight() {
    rm "$ini"
    kill -KILL $(running fsqmhc.exe)
    await no running Quirkmeter.exe
    await no running fsqmhc.exe
    flight_was_ended
    end_simulator
}

# Programs end in the order in which they were started, so the simulator outlives the others.
session_end_ends_the_flight() {
    start_hardcore
    start_simulator --headless --takeoff-after 2
    await wrote 1 0x3380 "Operational. Hardcore Mode."
    end_session
    await no running fsqmhc.exe
    flight_was_ended
    no running practice-simulator.exe || end_simulator
}

session_end_keeps_settings() {
    settings '' >"$ini"
    start Quirkmeter.exe
    press "$main" alt+p
    await is_open Help
    end_session
    cmp "$ini" <(settings '')
}

decimal_separator() { wine reg add 'HKCU\Control Panel\International' /v sDecimal /d "$1" /f; }

# In the dialog: one step down from 100 %, then the second-smallest of the thousandths.
follows_regional_settings() {
    trap 'decimal_separator .' EXIT
    decimal_separator ,
    start Quirkmeter.exe
    press "$main" Tab Return
    answer ' Autopilot - Airspeed Reliability' Down Tab End Up Return
    save comma
    cmp <(head -n 1 "$folder/comma") <(printf '1#1#99,001#1\r\n')
    close_program
}

# The folder's name is Greek: no path in it can be written in the ANSI code page.
runs_from_foreign_folder() {
    unzip -q "$zip" -d "$WINEPREFIX/drive_c/Πτήση"
    folder=$WINEPREFIX/drive_c/Πτήση/Quirkmeter
    printf 'PLAYFAILURESOUND=YES\r\n' >"$folder/Quirkmeter.ini"
    start Quirkmeter.exe
    close_program
    cmp "$folder/Quirkmeter.ini" <(printf 'LASTPROFILE=\r\nPLAYFAILURESOUND=YES\r\n')
}

uninstall_key='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Quirkmeter'
profile_key='HKCU\Software\Classes\Quirkmeter.Profile'
installed() { echo "$WINEPREFIX"/drive_c/users/*/AppData/Local/Programs/Quirkmeter; }
menu() {
    echo "$WINEPREFIX"/drive_c/users/*/AppData/Roaming/Microsoft/Windows/Start*/Programs/FS2002*
}

installs() {
    wine "$setup" /S
    unzip -q "$zip" -d "$world/zip"
    diff -rq -x uninstall.exe "$(installed)" "$world/zip/Quirkmeter"
    [[ "$(ls "$(menu)" | tr '\n' ' ')" == "FS2002 Quirkmeter.lnk Help.lnk Practice Simulator.lnk \
Rehearse.lnk Try it.lnk " ]]
    grep -qF 'Quirkmeter\uninstall.exe" /S' \
        <(wine reg query "$uninstall_key" /v QuietUninstallString)
    grep -qF 'Quirkmeter\rehearse.exe" "%1"' <(wine reg query "$profile_key" /s)
}

# Keep the uninstaller from restarting as a copy of itself, whose result would be lost.
installed_program_runs() {
    folder=$(installed)
    start Quirkmeter.exe
    await is_open "$main"
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
    await no wine reg query "$profile_key"
}

# "Older" has the time of its installation, as the profile of an earlier version has.
installing_again_keeps_the_users_files() {
    local profiles
    profiles=$(installed)/profiles
    echo mine >"$profiles/trainer.qmp"
    rm "$profiles/airliner.qmp"
    cp -p "$profiles/engines.qmp" "$world/engines.qmp"
    echo older >"$profiles/engines.qmp"
    touch -r "$world/engines.qmp" "$profiles/engines.qmp"
    wine "$setup" /S
    [[ "$(diff -rq "$profiles" "$world/zip/Quirkmeter/profiles" | wc -l)" -eq 1 ]]
    [[ "$(cat "$profiles/trainer.qmp")" == mine ]]
}

uninstalling_keeps_the_users_files() {
    touch "$(installed)/mine.qmp"
    uninstall
    [[ "$(cd "$(installed)" && find -type f | sort | tr '\n' ' ')" == \
        "./Quirkmeter.ini ./mine.qmp ./profiles/trainer.qmp " ]]
}

uninstall_leaves_nothing() {
    rm -r "$(installed)"
    wine "$setup" /S
    uninstall
    [[ ! -e "$(installed)" ]]
}

mkdir "$HOME" "$WINEPREFIX" "$plain"
# xdotool maps a letter that no layout has to a key only while it is pressed. Provide the layouts.
setxkbmap us,ru
# Windows XP lacks the file dialogs of Windows 7; Wine has them in every version.
new_dialogs=('{DC1C5A9C-E88A-4DDE-A5A1-60F82A20AEF7}' '{C0B4E2F3-BA21-4773-8DBA-335EC946EB8B}')
make_windows() {
    wine wineboot --init && wine winecfg -v "$version" || return
    [[ $version == winxp ]] || return 0
    local dialog
    for dialog in "${new_dialogs[@]}"; do wine reg delete "HKCR\\CLSID\\$dialog" /f || return; done
}
wineserver -p
make_windows && USER=pilot WINEPREFIX=$plain make_windows || {
    echo "FAILED Wine does not start"
    exit 1
}

check "the zip unpacks into one folder with all its files" unpacked
check "the tests of its windows pass" windows_pass
check "of several instances one stays" one_instance_stays
check "either Enter opens a reliability and accepts it" enter_opens_and_accepts
check "a profile saved as heavy is named heavy" saves_as_named
check "a profile's name that the code page cannot hold is refused" refuses_foreign_letters
check "the help opens" opens_help
check "the settings are written at the end, in the code page" writes_settings
if [[ $version == winxp ]]; then
    test_program windows_layer_test.exe >"$world/layer.log" &
    check "the tests of the program pass" program_passes
    check "a failure of the profile is written every second" fails_every_second
    check "the hotkeys work while the simulator has the keyboard" obeys_hotkeys
    check "a rehearsal flies" rehearses
    check "Hardcore Mode starts the companion, which starts the program again" hardcore_restarts
    check "without its companion in the air Hardcore Mode ends the flight" hardcore_ends_the_flight
    check "the end of the session in the air does so, too" session_end_ends_the_flight
    check "the end of the session writes the settings, whatever is open" session_end_keeps_settings
    check "numbers have the decimal separator of the regional settings" follows_regional_settings
    check "the program runs from a folder that the code page cannot hold" runs_from_foreign_folder
    check "the installer installs" installs
    check "the installed program starts, holds off the installers and writes its settings" \
        installed_program_runs
    check "installing again keeps what the user changed" installing_again_keeps_the_users_files
    check "uninstalling keeps the user's files" uninstalling_keeps_the_users_files
    check "uninstalling leaves nothing else" uninstall_leaves_nothing
    check "the tests of the Windows layer pass" layer_passes
fi
echo "$passed passed, $failed failed"
((failed == 0))
