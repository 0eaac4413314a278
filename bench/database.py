#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures how the cost of a store grows with what it holds, and prints a table of ratios:

    bench/database.py [BUILD-FOLDER]

Every figure is the median of seven fresh processes that take turns. Build the program first:
cmake --preset bench && cmake --build --preset bench.
"""
import statistics
import subprocess

from measuring import BUILD, head

ROUNDS = 7
EDITS = 1000

TASKS = {
    "10k": ["merge", 10_000, EDITS],
    "100k": ["merge", 100_000, EDITS],
    "add": ["add", 1_000_000],
    "snippet": ["memory", "snippet"],
    "plain": ["memory", "plain"],
}


def medians():
    figures = {name: [] for name in TASKS}
    for _ in range(ROUNDS):
        for name, task in TASKS.items():
            command = [str(part) for part in [BUILD / "bench_database", *task]]
            output = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout
            figures[name].append([float(figure) for figure in output.split()])
    return {name: [statistics.median(column) for column in zip(*values)] for name, values in figures.items()}


def row(what, ratio, figures, goal):
    print(f"| {what} | {ratio:.2f} ({figures}) | at most {goal} | {'yes' if ratio <= goal else 'no'} |")


result = medians()
head()
(small,), (large,) = result["10k"], result["100k"]
row(
    f"each of {EDITS} held-back edits merged into 100,000 records, beside 10,000",
    large / small,
    f"{large * 1e6:.2f} µs against {small * 1e6:.2f} µs",
    3,
)
first, last = result["add"]
row(
    "last tenth of a million additions, beside the first",
    last / first,
    f"{last * 1000:.0f} ms against {first * 1000:.0f} ms",
    1.5,
)
for name, what in (("plain", "in plain records"), ("snippet", "in the example's records")):
    text, resident = result[name]
    row(
        f"memory of 100,000 records of 400 bytes of text {what}, beside the text",
        resident / text,
        f"{resident / 2**20:.1f} MiB against {text / 2**20:.1f} MiB",
        2.5,
    )
