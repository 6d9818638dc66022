#!/usr/bin/env python3
"""usage: measure.py FOLDER: measures what the programs in FOLDER cost, on a display with a window
manager, prints it as a table and writes docs/performance.md."""
import contextlib
import json
import os
import re
import shutil
import signal
import statistics
import subprocess
import sys
import time
from datetime import date
from pathlib import Path

ROOT = Path(__file__).parent.parent
FOLDER = Path(sys.argv[1])
WINDOWS = ROOT / "build/windows"
FLIGHT_SECONDS = 40
FAILURES = 10


def counters(program):
    """What a program of benchmarks found, by the names of its functions."""
    found = subprocess.check_output([FOLDER / program, "--benchmark_format=json"], timeout=900,
                                    stderr=subprocess.DEVNULL)
    return {each["name"].split("/iter")[0]: each for each in json.loads(found)["benchmarks"]}


@contextlib.contextmanager
def running(*command, home=FOLDER, **options):
    """A process that meets others in the folder `home`."""
    environment = {**os.environ, "XDG_RUNTIME_DIR": str(home)}
    with subprocess.Popen(command, env=environment, **options) as process:
        try:
            yield process
        finally:
            process.kill()


def seconds_to_show(*programs):
    """The median time from the start of each to its window, by turns."""
    seconds = {program: [] for program in programs}
    with running("xprop", "-root", "-spy", "_NET_CLIENT_LIST", stdout=subprocess.PIPE) as spy:
        def await_windows(count):
            while spy.stdout.readline().count(b"0x") != count:
                pass

        await_windows(0)
        for program in programs * 31:
            signal.alarm(60)
            start = time.perf_counter()
            with running(FOLDER / program):
                await_windows(1)
                seconds[program].append(time.perf_counter() - start)
            await_windows(0)
    return map(statistics.median, seconds.values())


def used(process):
    """Its seconds of processor time and context switches so far, and the bytes resident now."""
    threads = list(Path(f"/proc/{process.pid}/task").iterdir())
    status = "".join((thread / "status").read_text() for thread in threads)
    return (sum(int((thread / "schedstat").read_text().split()[0]) for thread in threads) / 1e9,
            sum(map(int, re.findall(r"ctxt_switches:\s+(\d+)", status))),
            int(re.search(r"VmRSS:\s+(\d+)", status)[1]) * 1024)


def flight(stack, home, takeoff):
    """The program in a flight of its own, and how many variables it has written so far."""
    home.mkdir()
    shutil.copy(FOLDER / "Quirkmeter", home)
    (home / "all.qmp").write_text("".join(f"1#{n}#0#0\n" for n in range(1, FAILURES + 1)))
    (home / "Quirkmeter.ini").write_text(f"LASTPROFILE={home}/all.qmp\nDISPLAYFAILURES=YES\n")
    log = home / "writes"
    stack.enter_context(running(FOLDER / "practice-simulator", "--headless", "--takeoff-after",
                                takeoff, home=home, stdin=subprocess.PIPE, stdout=log.open("w")))
    program = stack.enter_context(running(home / "Quirkmeter", home=home))
    return program, lambda: len(set(re.findall(r"^\S+ (0x\w+)", log.read_text(), re.M)))


def use_in_flight():
    """What an empty frame, the program on the ground and in the air use in a second."""
    with contextlib.ExitStack() as stack:
        frame = stack.enter_context(running(FOLDER / "empty_frame"))
        idle, idle_writes = flight(stack, FOLDER / "idle", "86400")
        flying, writes = flight(stack, FOLDER / "flying", "1")
        signal.alarm(120 + FLIGHT_SECONDS)
        while writes() < FAILURES:
            time.sleep(1)
        before = [used(process) for process in (frame, idle, flying)]
        time.sleep(FLIGHT_SECONDS)
        after = [used(process) for process in (frame, idle, flying)]
        assert (idle_writes(), writes()) == (0, FAILURES), "the flights were not as they should be"
    return [((a[0] - b[0]) / FLIGHT_SECONDS, (a[1] - b[1]) / FLIGHT_SECONDS, a[2])
            for b, a in zip(before, after)]


def rows():
    """Name, aim, unit and figure of the program, and of its baseline where there is one."""
    found = counters("window_bench") | counters("core_bench")
    for name, aim, benchmark in (
            ("A tick across processes, nothing failed / a bare message", 1.2, "ATick/0"),
            ("A tick across processes, 10 failed / two bare messages", 1.2, "ATick/10"),
            ("A full block / the same bytes copied and walked", 1.5, "AFullBlock"),
            ("An hour of draw steps / on bare arrays", 3, "AnHourOfDrawSteps"),
            ("Reliability dialog / an empty dialog", 2, "TheReliabilityDialog"),
            ("A profile of a million lines / read and split", 3, "AMillionLines")):
        yield name, aim, "s", found[benchmark]["program"], found[benchmark]["baseline"]
    start = seconds_to_show("Quirkmeter", "empty_frame")
    yield "Start to the status line, no simulator / an empty frame", 1.05, "s", *start
    frame, idle, flying = use_in_flight()
    yield "Resident memory / an empty frame", 1.1, "B", idle[2], frame[2]
    yield "Its growth from tick 3600 to 86400", 0, "B", found["GrowthInADay"]["bytes"]
    yield "Idle: context switches a tick, beyond an empty frame", 3, "", idle[1] - frame[1]
    yield "Idle: processor time a tick, beyond an empty frame", 0.5e-3, "s", idle[0] - frame[0]
    yield "Flying with 10 failures: context switches / idle", 2, "", flying[1], idle[1]
    yield "Flying with 10 failures: processor time / idle", 2, "s", flying[0], idle[0]
    for program in sorted(WINDOWS.glob("stage/*.exe")):
        least = "bare_window" if program.stem == "fsqmhc" else "empty_frame"
        sizes = [path.stat().st_size for path in (program, WINDOWS / f"bin/{least}.exe")]
        yield f"Size of {program.name} / {least.replace('_', ' ')}", 1.15, "B", *sizes


def amount(value, unit):
    for factor, prefix in (1e6, "M"), (1e3, "k"), (1, ""), (1e-3, "m"), (1e-6, "µ"):
        if value >= factor:
            return f"{value / factor:.3g} {prefix}{unit}"
    return "none"


def table():
    yield "| Row | Program | Baseline | Ratio | Aim | |\n|---|---|---|---|---|---|"
    for name, aim, unit, value, *baseline in rows():
        compared = value / baseline[0] if baseline else value
        cells = [name, amount(value, unit), amount(baseline[0], unit) if baseline else ""]
        cells += [f"{compared:.2f}", f"{aim:.2f}"] if baseline else ["", amount(aim, unit)]
        yield f"| {' | '.join(cells)} | {'over' if compared > aim else ''} |"
    if not (WINDOWS / "stage").exists():
        yield "| Size of each Windows program | not built here | | | 1.15 | |"


processor = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text())[1]
made = f"{date.today()} on {os.cpu_count()} × {processor}, Linux {os.uname().release}, load "
page = "\n".join(["# Performance", "", *table(), "",
                  f"Made by `./bench.sh`, {made}{os.getloadavg()[0]:.1f}.", "",
                  (ROOT / "bench/performance.txt").read_text()])
print(page, end="")
(ROOT / "docs/performance.md").write_text(page)
