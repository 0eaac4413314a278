#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures switches between two pages of 400 x 300 points beside the same slide of a QStackedWidget's pages by
QPropertyAnimation, in a desktop session of its own, and prints a table:

    bench/switch.py [BUILD-FOLDER]

Build the programs first: cmake --preset bench && cmake --build --preset bench.
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
PROGRAMS = (BUILD / "bench_switch_vxkit", BUILD / "bench_switch_qt")

TURNS = 5  # of each program
TOLERANCE = 1.05  # what two runs of one program differ by


def figures(program):
    """What a program says of each switch: the figures by their names."""
    output = subprocess.run([program], check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout
    result = {}
    for line in output.splitlines():
        name, figure = line.split()
        result.setdefault(name, []).append(float(figure))
    return result


def on_screen():
    told = [{}, {}]
    for _ in range(TURNS):
        for program, values in zip(PROGRAMS, told):
            for name, measured in figures(program).items():
                values.setdefault(name, []).extend(measured)
    return told


def main():
    if len(sys.argv) > 2:
        print(json.dumps(on_screen()))
        return
    command = [SESSION, sys.executable, __file__, str(BUILD.parent), "on_screen"]
    environment = {**os.environ, "DESKTOP_TRAY": "no"}
    output = subprocess.run(command, check=True, stdout=subprocess.PIPE, env=environment).stdout
    own, other = json.loads(output.splitlines()[-1])

    print("| | VXKit | QPropertyAnimation | ratio | at most theirs, within 5 % |\n|---|---|---|---|---|")
    for what, name in (
        ("time from frame to frame", "interval"),
        ("longest gap of a switch, median", "gap"),
        ("processor time of a switch", "processor"),
        ("processor time of a frame", "frame"),
    ):
        left, right = statistics.median(own[name]), statistics.median(other[name])
        met = "yes" if left <= right * TOLERANCE else "no"
        print(f"| {what} | {left:.2f} ms | {right:.2f} ms | {left / right:.2f} | {met} |")
    print(f"\n{len(own['frames'])} switches of each; {statistics.median(own['frames']):.0f} and "
          f"{statistics.median(other['frames']):.0f} frames in the middle one; longest gaps of all "
          f"{max(own['gap']):.1f} and {max(other['gap']):.1f} ms.")


main()
