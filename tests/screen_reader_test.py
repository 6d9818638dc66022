#!/usr/bin/python3
"""usage: screen_reader_test.py FOLDER: works the programs of that folder by keyboard alone, and
hears what a screen reader does: TAB leads through all controls of each window, in order and back to
the first, and each says what it is called. Runs on a display and a D-Bus session of its own."""

import os, pathlib, shutil, subprocess, sys, tempfile, time
import gi
gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib

PATIENCE = 60  # seconds
PROFILE = pathlib.Path(__file__).parents[1] / "assets/practice.qmp"
COMBO_BOX = None  # wxWidgets does not report the focus of its own combo box.
MAIN = "FS2002 Quirkmeter"
REHEARSAL = "FS2002 Quirkmeter - Rehearsal"


def children(control):
    return filter(None, (control.get_child_at_index(i) for i in range(control.get_child_count())))


def described(control):
    """The name, and what it shows."""
    labels = [relation.get_target(0) for relation in control.get_relation_set()
              if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY]
    return (labels + [control])[0].get_name(), control.get_description()


def focused(control):
    if control.get_state_set().contains(Atspi.StateType.FOCUSED):
        return described(control)
    return next(filter(None, map(focused, children(control))), None)


def heard_in(title):
    windows = (window for program in children(Atspi.get_desktop(0)) for window in children(program))
    try:
        return next((focused(window) for window in windows if window.get_name() == title), None)
    except GLib.Error:  # the window is closing
        return None


def wait_until(happens, complaint):
    end = time.monotonic() + PATIENCE
    while not happens():
        if time.monotonic() > end:
            sys.exit(complaint())
        time.sleep(0.05)


def await_focus(title, *expected):
    wait_until(lambda: (heard_in(title) or ())[:len(expected)] == expected,
               lambda: f"{title}: heard {heard_in(title)} in the place of {expected}")


def xdotool(*command):
    subprocess.run(["xdotool", *command], check=True, timeout=PATIENCE)


def to_front(title):
    """The search fails when any window of the display closes under it, as a dialog may just do."""
    search = ["xdotool", "search", "--sync", "--onlyvisible", "--name", f"^{title}$"]
    wait_until(lambda: subprocess.run(search + ["windowactivate", "--sync"],
                                      timeout=PATIENCE).returncode == 0,
               lambda: f"{title}: cannot be brought to the front")


def walk(title, names, *keys):
    """TAB by TAB, then the keys."""
    to_front(title)
    await_focus(title, names[0])
    for expected in names[1:] + names[:1]:
        xdotool("key", "Tab")
        if expected is not COMBO_BOX:
            await_focus(title, expected)
    xdotool("key", *keys)


def hotkey(title):
    return [title, f"{title}, CTRL", f"{title}, SHIFT"]


def work_all_windows():
    main = ["Systems", "Sub-systems", "Set All Reliabilities", "Set Autopilot Reliabilities",
            "Clear All Failures", "Save Profile", "Open Profile", "Options"]
    lists = ["Reliability, whole percent", "Reliability, thousandths of a percent",
             "Based on hours of flight"]
    one = " Autopilot - Altitude Reliability"
    walk(MAIN, main, "Tab", "Down")
    await_focus(MAIN, "Sub-systems",
                "Altitude, Reliability 100%, Based on 1 hour of flight, Failed Never")
    xdotool("key", "Return")
    walk(one, lists + ["Accept", "Cancel", "Test Failure", "Clear Failure"], "Down")
    await_focus(one, lists[0], "99")
    xdotool("key", "Tab")
    await_focus(one, lists[1], "999")
    xdotool("key", "Return")
    await_focus(MAIN, "Sub-systems",
                "Altitude, Reliability 99.999%, Based on 1 hour of flight, Failed No")
    xdotool("key", "alt+a")
    walk("All Reliabilities", lists + ["Accept", "Cancel"], "Escape")
    walk(MAIN, main[1:] + main[:1], "alt+p")
    walk("Help", ["Help", "Settings", "Cancel"], "alt+s")
    walk("Settings", ["Display status changes in flight", "Display failure info in status",
                      "Play a sound when a failure occurs", "Hardcore Mode (see Options/Help)",
                      *hotkey("In Flight Status Hotkey"), *hotkey("Clear Last Failure Hotkey"),
                      *hotkey("Activate/Deactivate QM Hotkey"), "OK", "Cancel"], "Escape")
    walk("Practice Simulator", ["On the ground", "Paused", "Gear down", "Flaps down", "Engines",
                                COMBO_BOX, "Center", "Left", "Left Aux", "Left Tip", "Right",
                                "Right Aux", "Right Tip", "Center 2", "Center 3", "External 1",
                                "External 2"], "alt+F4")
    walk(REHEARSAL, ["Choose...", "Hours of flight", "Engines", "Nothing fails in",
                     "percent of flights", "Autopilot", "Control", "Electrical", "Engine", "Fuel",
                     "Instrument", "Radio", "Save as...", "Rehearse"], "alt+F4")


with tempfile.TemporaryDirectory() as folder:
    os.environ["XDG_RUNTIME_DIR"] = folder
    programs = []
    try:
        for title, program, *options in [
                ["Practice Simulator", "practice-simulator", "--takeoff-after", "9999"],
                [REHEARSAL, "rehearse", PROFILE], [MAIN, "Quirkmeter"]]:
            shutil.copy(pathlib.Path(sys.argv[1]) / program, folder)
            programs.append(subprocess.Popen([pathlib.Path(folder) / program, *options],
                                             stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL))
            to_front(title)  # otherwise it would take the focus from the next one
        work_all_windows()
    finally:
        for program in programs:
            program.kill()
            program.wait()
