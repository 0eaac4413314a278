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

HERE = pathlib.Path(__file__).resolve().parent
SESSION = HERE.parent / "scripts" / "desktop-session.sh"
BUILD = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else HERE.parent / "build" / "bench").resolve() / "bench"
KIT = BUILD / "bench_hud_vxkit"
QT = BUILD / "bench_hud_qt"

STARTS = 11  # of each program
STANDING_SECONDS = 5
SETTLING_SECONDS = 3


def figures(program, *options, **environment):
    """What a program says: the figures by their names, in the order in which they were told."""
    output = subprocess.run(
        [program, *options],
        check=True,
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,
        text=True,
        env={**os.environ, **environment},
    ).stdout
    result = {}
    for line in output.splitlines():
        name, figure = line.split()
        result.setdefault(name, []).append(float(figure))
    return result


def off_screen():
    told = {KIT: [], QT: []}
    with tempfile.TemporaryDirectory() as home:
        for turn in range(STARTS + 1):
            for program, values in told.items():
                result = figures(program, QT_QPA_PLATFORM="offscreen", HOME=home, QT_SCALE_FACTOR="1")
                if turn > 0:  # the first fills the cache of files
                    values.append(result)

    def medians(figure):
        return [statistics.median(figure(result) for result in values) for values in told.values()]

    return {
        "first": medians(lambda result: result["open"][0]),
        "later": medians(lambda result: statistics.median(result["open"][1:])),
        "repaint": medians(lambda result: result["repaint"][0]),
        "panel": statistics.median(result["repaint_panel"][0] for result in told[KIT]),
    }


def threads_of(pid):
    return pathlib.Path(f"/proc/{pid}/task").iterdir()


def processor_time_of(pid):
    """Milliseconds on a processor, of all threads."""
    return sum(int((thread / "schedstat").read_text().split()[0]) for thread in threads_of(pid)) / 1e6


def wakeups_of(pid):
    return sum(
        int(entry.split()[1])
        for thread in threads_of(pid)
        for entry in (thread / "status").read_text().splitlines()
        if entry.startswith("voluntary_ctxt_switches:")
    )


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


def row(what, figure, goal, met):
    print(f"| {what} | {figure} | {goal} | {'yes' if met else 'no'} |")


def ratio_row(what, pair, goal):
    (own, other) = pair
    row(what, f"{own / other:.2f} ({own:.2f} ms against {other:.2f} ms)", f"at most {goal}", own / other <= goal)


def main():
    if len(sys.argv) > 2:
        print(json.dumps(on_screen()))
        return
    off = off_screen()
    command = [SESSION, sys.executable, __file__, str(BUILD.parent), "on_screen"]
    environment = {**os.environ, "DESKTOP_TRAY": "no"}
    output = subprocess.run(command, check=True, stdout=subprocess.PIPE, env=environment).stdout
    on = json.loads(output.splitlines()[-1])

    print("| | measured | goal | met |\n|---|---|---|---|")
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
