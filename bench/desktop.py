#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the kit on a desktop beside a plain Qt program that does the same, and prints a table of ratios:

    bench/desktop.py [BUILD-FOLDER]

It starts a desktop session of its own for each kind of host. The programs take turns, so that a busy moment of the
machine falls on both. Build them first: cmake --preset bench && cmake --build --preset bench.
"""
import json
import os
import pathlib
import select
import statistics
import subprocess
import sys
import time

from measuring import BUILD, asked_for, head, on_desktop, processor_time_of, row, wakeups_of

KIT = BUILD / "bench_desktop_vxkit"
QT = BUILD / "bench_desktop_qt"
PANEL = BUILD / "bench_status_notifier_panel"

STARTS = 15  # of each program
PULSE_SECONDS = 20
IDLE_SECONDS = 20
SETTLING_SECONDS = 3


def start(program, *options):
    return subprocess.Popen([program, *options], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)


def end(process):
    process.kill()
    process.wait()
    process.stdout.close()


def await_line(process, line, seconds=30):
    deadline = time.monotonic() + seconds
    told = b""
    while line not in told:
        ready, _, _ = select.select([process.stdout], [], [], max(0, deadline - time.monotonic()))
        if not ready:
            sys.exit(f"{process.args}: did not say {line!r} in time")
        piece = os.read(process.stdout.fileno(), 4096)
        if not piece:
            sys.exit(f"{process.args}: ended")
        told += piece


def memory_of(pid):
    """KiB that are resident, and those of them that the process has for itself and has written to."""
    rollup = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()
    sizes = {entry.split()[0]: int(entry.split()[1]) for entry in rollup[1:]}
    return sizes["Rss:"], sizes["Private_Dirty:"]


def first_painting(program):
    begin = time.monotonic()
    process = start(program)
    await_line(process, b"painted")
    seconds = time.monotonic() - begin
    time.sleep(1)
    memory = memory_of(process.pid)
    end(process)
    return seconds, memory


def rate(program, options, count, seconds):
    process = start(program, *options)
    time.sleep(SETTLING_SECONDS)
    before = count(process.pid)
    time.sleep(seconds)
    rate = (count(process.pid) - before) / seconds
    end(process)
    return rate


def in_tray():
    figures = {KIT: [], QT: []}
    for program in figures:
        first_painting(program)  # into the cache of files
    for _ in range(STARTS):
        for program, values in figures.items():
            values.append(first_painting(program))
    return {
        "seconds": [statistics.median(seconds for seconds, _ in values) for values in figures.values()],
        "resident": [statistics.median(memory[0] for _, memory in values) for values in figures.values()],
        "written": [statistics.median(memory[1] for _, memory in values) for values in figures.values()],
        "pulse": [rate(program, ["--closed", "--pulse"], processor_time_of, PULSE_SECONDS) for program in figures],
        "idle": rate(KIT, [], wakeups_of, IDLE_SECONDS),
    }


def in_panel():
    panel = start(PANEL)
    await_line(panel, b"ready")
    result = {
        "pulse": [rate(program, ["--closed", "--pulse"], processor_time_of, PULSE_SECONDS) for program in (KIT, QT)],
        "idle": rate(KIT, [], wakeups_of, IDLE_SECONDS),
    }
    end(panel)
    return result


def main():
    if asked_for():
        print(json.dumps({"in_tray": in_tray, "in_panel": in_panel}[asked_for()]()))
        return
    tray = on_desktop(__file__, "in_tray", DESKTOP_TRAY="yes")
    panel = on_desktop(__file__, "in_panel")
    drawing = json.loads(
        subprocess.run(
            [BUILD / "bench_drawing", "--benchmark_format=json", "--benchmark_repetitions=5"],
            check=True,
            stdout=subprocess.PIPE,
        ).stdout
    )["benchmarks"]
    median = {entry["run_name"]: entry["real_time"] for entry in drawing if entry.get("aggregate_name") == "median"}

    head()
    (own, other) = tray["seconds"]
    row(
        "process start to first painted main window, beside Qt",
        f"{own / other:.2f} ({own * 1000:.0f} ms against {other * 1000:.0f} ms)",
        "at most 1.15",
        own / other <= 1.15,
    )
    (own, other) = tray["resident"]
    row(
        "resident memory, beside Qt",
        f"{own / other:.2f} ({own / 1024:.1f} MiB against {other / 1024:.1f} MiB)",
        "at most 1.2",
        own / other <= 1.2,
    )
    (own, other) = tray["written"]
    print(f"| of it written to by the process alone | {own / 1024:.1f} MiB against {other / 1024:.1f} MiB | | |")
    for name, result in (("tray", tray), ("panel over D-Bus", panel)):
        (own, other) = result["pulse"]
        row(
            f"processor time of the pulse, {name}, beside Qt's setIcon",
            f"{own / other:.2f} ({own:.1f} ms against {other:.1f} ms a second)",
            "at most 1",
            own <= other,
        )
        row(f"wake-ups of an idle program, {name}", f"{result['idle']:.2f} a second", "below 1", result["idle"] < 1)
    for name, what, goal in (
        ("updateBackgroundOfMainWindow", "background of a 400x500 main window", 0.5),
        ("shadowOfWindow", "shadow of 732x692", 3),
    ):
        row(what, f"{median[name]:.2f} ms", f"at most {goal} ms", median[name] <= goal)


main()
