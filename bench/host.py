#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the example host with 10,000 snippets, its search beside Qt's filtering model over the same texts, and
prints a table:

    bench/host.py [BUILD-FOLDER]

Off screen, in fresh processes that take turns. Build the programs first:
cmake --preset bench && cmake --build --preset bench.
"""
import tempfile

from measuring import BUILD, figures_off_screen, head, in_turns, row
from measuring import median as median_of

HOST = BUILD / "bench_host_vxkit"
QT = BUILD / "bench_host_qt"

STARTS = 5  # of each program
LOAD_GOAL = 200  # milliseconds
FRAME = 16  # milliseconds


def main():
    with tempfile.TemporaryDirectory() as home:
        written = figures_off_screen(home, HOST, "--write")
        told = in_turns((HOST, QT), STARTS, lambda program: figures_off_screen(home, program))

    def median(program, name):
        return median_of(told[program], name)

    def goal_row(what, name, goal):
        figure = median(HOST, name)
        row(what, f"{figure:.1f} ms", f"at most {goal} ms", figure <= goal)

    print(f"10,000 snippets, {written['characters'][0] / 1e6:.1f} million characters\n")
    head()
    goal_row("from the file to the list on the screen", "load", LOAD_GOAL)
    for key, what in (("type", "a key more"), ("delete", "a key less")):
        goal_row(f"search, {what}, worst", f"{key}_worst", FRAME)
        own, peer = median(HOST, f"{key}_median"), median(QT, f"{key}_median")
        row(f"search, {what}, beside the peer", f"{own:.2f} ms against {peer:.2f} ms", "the peer's", own <= peer)
    goal_row("the first key", "first_letter", FRAME)
    for change in ("add", "use", "remove", "select"):
        goal_row(f"{change} one, worst", f"{change}_worst", FRAME)


main()
