#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures switches between two pages of 400 x 300 points beside the same slide of a QStackedWidget's pages by
QPropertyAnimation, in a desktop session of its own, and prints a table:

    bench/switch.py [BUILD-FOLDER]

Build the programs first: cmake --preset bench && cmake --build --preset bench.
"""
import json
import statistics

from measuring import BUILD, asked_for, figures, in_turns, on_desktop

PROGRAMS = (BUILD / "bench_switch_vxkit", BUILD / "bench_switch_qt")

TURNS = 5  # of each program
TOLERANCE = 1.05  # what two runs of one program differ by


def on_screen():
    """The figures of all switches, of the one program and of the other."""
    told = in_turns(PROGRAMS, TURNS, figures)
    return [
        {name: [figure for result in values for figure in result[name]] for name in values[0]}
        for values in told.values()
    ]


def main():
    if asked_for():
        print(json.dumps(on_screen()))
        return
    own, other = on_desktop(__file__)

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
