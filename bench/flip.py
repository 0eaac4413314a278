#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures a window that turns over beside a QGraphicsRotation of the same pictures with a QGraphicsDropShadowEffect,
and prints a table:

    bench/flip.py [BUILD-FOLDER]

Both run in one desktop session of their own, in turns. Build the programs first:
cmake --preset bench && cmake --build --preset bench.
"""
import json
import os
import pathlib
import statistics
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
SESSION = HERE.parent / "scripts" / "desktop-session.sh"
BUILD = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else HERE.parent / "build" / "bench").resolve() / "bench"
PROGRAMS = (BUILD / "bench_flip_vxkit", BUILD / "bench_flip_qt")

TURNS = 5  # of each program


def figures(program):
    """What a program says: the figures by their names, in the order in which they were told."""
    output = subprocess.run(
        [program], check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, timeout=120
    ).stdout
    result = {}
    for line in output.splitlines():
        name, figure = line.split()
        result.setdefault(name, []).append(float(figure))
    return result


def on_screen():
    told = [{}, {}]
    for turn in range(TURNS + 1):
        for program, values in zip(PROGRAMS, told):
            result = figures(program)
            if turn == 0:  # the first fills the cache of files
                continue
            for name, series in result.items():
                values.setdefault(name, []).extend(series)
    return told


def row(what, figure, goal, met):
    print(f"| {what} | {figure} | {goal} | {'yes' if met else 'no'} |")


def ratio_row(what, own, other):
    row(what, f"{own / other:.2f} ({own:.2f} ms against {other:.2f} ms)", "at most 1", own <= other)


def main():
    if len(sys.argv) > 2:
        print(json.dumps(on_screen()))
        return
    command = [SESSION, sys.executable, __file__, str(BUILD.parent), "on_screen"]
    environment = {**os.environ, "DESKTOP_TRAY": "no"}
    output = subprocess.run(command, check=True, stdout=subprocess.PIPE, env=environment).stdout
    (own, other) = json.loads(output.splitlines()[-1])

    print("| | measured | goal | met |\n|---|---|---|---|")
    for what, name in (
        ("drawing a frame, beside QGraphicsRotation", "frame"),
        ("longest gap between two frames of a flip", "gap"),
        ("processor time of a flip", "processor"),
    ):
        ratio_row(what, statistics.median(own[name]), statistics.median(other[name]))
    rate = statistics.median(own["rate"])
    row(
        "frames of a flip",
        f"{rate:.0f} a second (QGraphicsRotation {statistics.median(other['rate']):.0f})",
        "60 a second",
        round(rate) >= 60,
    )
    row(
        "worst gap of all flips",
        f"{max(own['gap']):.1f} ms (QGraphicsRotation {max(other['gap']):.1f} ms)",
        "at most 25 ms",
        max(own["gap"]) <= 25,
    )


main()
