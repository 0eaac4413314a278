#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the table, the scroller and the progress indicators of HUD panels beside Qt's in Fusion style, and prints a
table:

    bench/table.py [BUILD-FOLDER]

Off screen, in fresh processes that take turns. Build the programs first:
cmake --preset bench && cmake --build --preset bench.
"""
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
BUILD = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else HERE.parent / "build" / "bench").resolve() / "bench"
KIT = BUILD / "bench_table_vxkit"
QT = BUILD / "bench_table_qt"

STARTS = 5  # of each program
GOAL = 1.3  # times the peer
FRAME = 1000 / 60  # milliseconds


def figures(program, home):
    """What a program says: the figures by their names."""
    environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "HOME": home, "QT_SCALE_FACTOR": "1"}
    output = subprocess.run(
        [program], check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, env=environment
    ).stdout
    return {name: float(figure) for name, figure in (line.split() for line in output.splitlines())}


def row(what, figure, goal, met):
    print(f"| {what} | {figure} | {goal} | {'yes' if met else 'no'} |")


def main():
    told = {KIT: [], QT: []}
    with tempfile.TemporaryDirectory() as home:
        for turn in range(STARTS + 1):
            for program, values in told.items():
                result = figures(program, home)
                if turn > 0:  # the first fills the cache of files
                    values.append(result)

    def median(program, name):
        return statistics.median(result[name] for result in told[program])

    def ratio_row(what, name, peer=None):
        own, other = median(KIT, name), median(QT, peer or name)
        figure = f"{own / other:.2f} ({own * 1000:.1f} µs against {other * 1000:.1f} µs)"
        row(what, figure, f"at most {GOAL}", own / other <= GOAL)

    print("| | measured | goal | met |\n|---|---|---|---|")
    ratio_row("opening a table with a million rows, to painted", "open")
    ratio_row("painting one row of it that is seen", "row")
    ratio_row("painting a scroller", "scroller")
    ratio_row("painting a progress bar", "progress")
    ratio_row("painting a wheel, beside a progress bar", "wheel", "progress")
    scroll = median(KIT, "scroll")
    row("a scroll of the table, painted", f"{scroll:.2f} ms", f"at most {FRAME:.1f} ms", scroll <= FRAME)
    own, other = median(KIT, "memory_per_row"), median(QT, "memory_per_row")
    row("memory for a row", f"{own:.1f} bytes (QTableView {other:.1f})", "the peer's", own <= other + 1)


main()
