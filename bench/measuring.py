# SPDX-License-Identifier: MIT
"""What the measuring scripts have in common: where the programs are, what these say, and the rows of the tables."""
import json
import os
import pathlib
import statistics
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
SESSION = HERE.parent / "scripts" / "desktop-session.sh"
BUILD = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else HERE.parent / "build" / "bench").resolve() / "bench"

LONGEST_RUN = 300  # seconds that a program may take


def figures(program, *arguments, **environment):
    """What a program says: the figures by their names, in the order in which they were told."""
    output = subprocess.run(
        [program, *arguments],
        check=True,
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,
        text=True,
        timeout=LONGEST_RUN,
        env={**os.environ, **environment},
    ).stdout
    result = {}
    for line in output.splitlines():
        name, figure = line.split()
        result.setdefault(name, []).append(float(figure))
    return result


def figures_off_screen(home, program, *arguments):
    """The same without a desktop, at one pixel a point and with nothing of the person's."""
    folders = {f"XDG_{kind}_HOME": f"{home}/{kind.lower()}" for kind in ("CONFIG", "DATA", "STATE", "CACHE")}
    return figures(program, *arguments, QT_QPA_PLATFORM="offscreen", QT_SCALE_FACTOR="1", HOME=home, **folders)


def in_turns(programs, rounds, measure):
    """What `measure` answers for each program in each round, by program; but for a first one, which fills the cache of
    files."""
    told = {program: [] for program in programs}
    for turn in range(rounds + 1):
        for program, values in told.items():
            result = measure(program)
            if turn > 0:
                values.append(result)
    return told


def median(results, name):
    """The median of all figures of that name."""
    return statistics.median(figure for result in results for figure in result[name])


def on_desktop(script, what="on_screen", **environment):
    """What the script prints as JSON when it runs again, asked for `what`, in a desktop session of its own; without a
    tray, unless the environment says otherwise."""
    command = [SESSION, sys.executable, script, str(BUILD.parent), what]
    environment = {**os.environ, "DESKTOP_TRAY": "no", **environment}
    output = subprocess.run(command, check=True, stdout=subprocess.PIPE, env=environment).stdout
    return json.loads(output.splitlines()[-1])


def asked_for():
    """What on_desktop() began this process for; None where a person did."""
    return sys.argv[2] if len(sys.argv) > 2 else None


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


def head():
    print("| | measured | goal | met |\n|---|---|---|---|")


def row(what, figure, goal, met):
    print(f"| {what} | {figure} | {goal} | {'yes' if met else 'no'} |")
