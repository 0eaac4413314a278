#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures a window that turns over beside a QGraphicsRotation of the same pictures with a QGraphicsDropShadowEffect,
and prints a table:

    bench/flip.py [BUILD-FOLDER]

Both run in one desktop session of their own, in turns. Build the programs first:
cmake --preset bench && cmake --build --preset bench.
"""
import json

from measuring import BUILD, asked_for, figures, head, in_turns, median, on_desktop, row

PROGRAMS = (BUILD / "bench_flip_vxkit", BUILD / "bench_flip_qt")

TURNS = 5  # of each program


def ratio_row(what, own, other):
    row(what, f"{own / other:.2f} ({own:.2f} ms against {other:.2f} ms)", "at most 1", own <= other)


def main():
    if asked_for():
        print(json.dumps(list(in_turns(PROGRAMS, TURNS, figures).values())))
        return
    own, other = on_desktop(__file__)

    head()
    for what, name in (
        ("drawing a frame, beside QGraphicsRotation", "frame"),
        ("longest gap between two frames of a flip", "gap"),
        ("processor time of a flip", "processor"),
    ):
        ratio_row(what, median(own, name), median(other, name))
    rate = median(own, "rate")
    row(
        "frames of a flip",
        f"{rate:.0f} a second (QGraphicsRotation {median(other, 'rate'):.0f})",
        "60 a second",
        round(rate) >= 60,
    )
    own_gap, other_gap = (max(gap for result in results for gap in result["gap"]) for results in (own, other))
    row(
        "worst gap of all flips",
        f"{own_gap:.1f} ms (QGraphicsRotation {other_gap:.1f} ms)",
        "at most 25 ms",
        own_gap <= 25,
    )


main()
