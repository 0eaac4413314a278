#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures alerts beside a QMessageBox in Qt's Fusion style that asks the same, and prints a table:

    bench/hud.py [BUILD-FOLDER]

Opening and painting are measured off screen, in fresh processes that take turns; what moves, and what an alert costs
that stands still, in a desktop session of its own. Build the programs first:
cmake --preset bench && cmake --build --preset bench.
"""
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

from measuring import (
    BUILD,
    asked_for,
    figures,
    figures_off_screen,
    head,
    in_turns,
    on_desktop,
    processor_time_of,
    row,
    wakeups_of,
)

KIT = BUILD / "bench_hud_vxkit"
QT = BUILD / "bench_hud_qt"

STARTS = 11  # of each program
STANDING_SECONDS = 5
SETTLING_SECONDS = 3


def off_screen():
    with tempfile.TemporaryDirectory() as home:
        told = in_turns((KIT, QT), STARTS, lambda program: figures_off_screen(home, program))

    def medians(figure):
        return [statistics.median(figure(result) for result in values) for values in told.values()]

    return {
        "first": medians(lambda result: result["open"][0]),
        "later": medians(lambda result: statistics.median(result["open"][1:])),
        "repaint": medians(lambda result: result["repaint"][0]),
        "panel": statistics.median(result["repaint_panel"][0] for result in told[KIT]),
    }


def compositor():
    """The process of the session's compositing manager, which this one has its parent in common with."""
    for folder in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            stat = (folder / "stat").read_text()
        except OSError:
            continue
        name, _, rest = stat.partition("(")[2].rpartition(")")
        if name == "picom" and int(rest.split()[1]) == os.getppid():
            return int(folder.name)
    sys.exit("The session has no compositing manager.")


def on_screen():
    pops = figures(KIT, "--pop")
    alert = subprocess.Popen([KIT, "--stand"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    watched = [alert.pid, compositor()]
    time.sleep(SETTLING_SECONDS)
    before = [(wakeups_of(pid), processor_time_of(pid)) for pid in watched]
    time.sleep(STANDING_SECONDS)
    after = [(wakeups_of(pid), processor_time_of(pid)) for pid in watched]
    alert.kill()
    alert.wait()
    return {"rate": pops["rate"], "gap": pops["gap"], "standing": [
        [now - then for now, then in zip(ends, begins)] for ends, begins in zip(after, before)
    ]}


def ratio_row(what, pair, goal):
    (own, other) = pair
    row(what, f"{own / other:.2f} ({own:.2f} ms against {other:.2f} ms)", f"at most {goal}", own / other <= goal)


def main():
    if asked_for():
        print(json.dumps(on_screen()))
        return
    off = off_screen()
    on = on_desktop(__file__)

    head()
    ratio_row("first alert of a process, from nothing to painted, beside QMessageBox", off["first"], 1.2)
    ratio_row("every later one", off["later"], 1.2)
    (own, other) = off["repaint"]
    row("painting an alert anew", f"{own:.2f} ms (QMessageBox {other:.2f} ms)", "at most 0.8 ms", own <= 0.8)
    row("painting a panel of all controls anew", f"{off['panel']:.2f} ms", "at most 0.8 ms", off["panel"] <= 0.8)
    rate = statistics.median(on["rate"])
    row("frames of a pop", f"{rate:.0f} a second", "60 a second", rate >= 60)
    row(
        "longest gap between two of them",
        f"{statistics.median(on['gap']):.1f} ms, in the worst of {len(on['gap'])} {max(on['gap']):.1f} ms",
        "at most 25 ms",
        max(on["gap"]) <= 25,
    )
    for who, (wakeups, milliseconds) in zip(("an alert that stands", "the compositing manager meanwhile"), on["standing"]):
        row(
            f"wake-ups of {who}, in {STANDING_SECONDS} seconds",
            f"{wakeups}, {milliseconds:.1f} ms of processor time",
            "none",
            wakeups == 0,
        )


main()
