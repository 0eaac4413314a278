#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the example host with 10,000 snippets, its search beside Qt's filtering model over the same texts, and
prints a table:

    bench/host.py [BUILD-FOLDER]

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
HOST = BUILD / "bench_host_vxkit"
QT = BUILD / "bench_host_qt"

STARTS = 5  # of each program
LOAD_GOAL = 200  # milliseconds
FRAME = 16  # milliseconds


def figures(home, program, *arguments):
    """What a program says: the figures by their names."""
    environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "HOME": home, "QT_SCALE_FACTOR": "1"}
    for variable in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"):
        environment.pop(variable, None)
    output = subprocess.run(
        [program, *arguments], check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, env=environment
    ).stdout
    return {name: float(figure) for name, figure in (line.split() for line in output.splitlines())}


def row(what, figure, goal, met):
    print(f"| {what} | {figure} | {goal} | {'yes' if met else 'no'} |")


def main():
    told = {HOST: [], QT: []}
    with tempfile.TemporaryDirectory() as home:
        written = figures(home, HOST, "--write")
        for turn in range(STARTS + 1):
            for program, values in told.items():
                result = figures(home, program)
                if turn > 0:  # the first fills the cache of files
                    values.append(result)

    def median(program, name):
        return statistics.median(result[name] for result in told[program])

    def goal_row(what, name, goal):
        figure = median(HOST, name)
        row(what, f"{figure:.1f} ms", f"at most {goal} ms", figure <= goal)

    print(f"10,000 snippets, {written['characters'] / 1e6:.1f} million characters\n")
    print("| | measured | goal | met |\n|---|---|---|---|")
    goal_row("from the file to the list on the screen", "load", LOAD_GOAL)
    for key, what in (("type", "a key more"), ("delete", "a key less")):
        goal_row(f"search, {what}, worst", f"{key}_worst", FRAME)
        own, peer = median(HOST, f"{key}_median"), median(QT, f"{key}_median")
        row(f"search, {what}, beside the peer", f"{own:.2f} ms against {peer:.2f} ms", "the peer's", own <= peer)
    goal_row("the first key", "first_letter", FRAME)
    for change in ("add", "use", "remove", "select"):
        goal_row(f"{change} one, worst", f"{change}_worst", FRAME)


main()
