#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the table, the scroller and the progress indicators of HUD panels beside Qt's in Fusion style, and prints a
table:

    bench/table.py [BUILD-FOLDER]

Off screen, in fresh processes that take turns. Build the programs first:
cmake --preset bench && cmake --build --preset bench.
"""
import tempfile

from measuring import BUILD, figures_off_screen, head, in_turns, row
from measuring import median as median_of

KIT = BUILD / "bench_table_vxkit"
QT = BUILD / "bench_table_qt"

STARTS = 5  # of each program
GOAL = 1.3  # times the peer
FRAME = 1000 / 60  # milliseconds


def main():
    with tempfile.TemporaryDirectory() as home:
        told = in_turns((KIT, QT), STARTS, lambda program: figures_off_screen(home, program))

    def median(program, name):
        return median_of(told[program], name)

    def ratio_row(what, name, peer=None):
        own, other = median(KIT, name), median(QT, peer or name)
        figure = f"{own / other:.2f} ({own * 1000:.1f} µs against {other * 1000:.1f} µs)"
        row(what, figure, f"at most {GOAL}", own / other <= GOAL)

    head()
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
