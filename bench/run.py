#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the kit beside its peers and prints a table of ratios: run.py [BUILD-FOLDER].

Every figure is the median of five fresh processes; the processes of all programs take turns, so that a busy moment of
the machine falls on all of them. Build the programs first: cmake --preset bench && cmake --build --preset bench.
"""
import pathlib
import statistics
import subprocess
import sys
import tempfile

from measuring import BUILD, HERE, head

ROUNDS = 5
DATA = BUILD / "data"

PEERS = {
    "VXKit": [BUILD / "bench_vxkit"],
    "libplist": [BUILD / "bench_libplist"],
    "plistlib": [sys.executable, HERE / "peers" / "plistlib_peer.py"],
    "GNUstep": [BUILD / "bench_gnustep"],
}


def installed(peer):
    return pathlib.Path(PEERS[peer][0]).exists()


def once(peer, environment, *arguments):
    command = [str(part) for part in PEERS[peer] + list(arguments)]
    output = subprocess.run(command, check=True, capture_output=True, text=True, env=environment).stdout
    seconds, memory = output.split()
    return float(seconds), int(memory)


def medians(runs):
    """runs: name to (peer, arguments); answers name to (seconds, KiB)."""
    figures = {name: [] for name in runs}
    with tempfile.TemporaryDirectory(dir=BUILD) as home:
        environment = {"HOME": home, "PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"}
        for _ in range(ROUNDS):
            for name, (peer, arguments) in runs.items():
                figures[name].append(once(peer, environment, *arguments))
    return {
        name: (statistics.median(seconds for seconds, _ in values), statistics.median(memory for _, memory in values))
        for name, values in figures.items()
    }


ROWS = []


def row(what, figure, goal, met):
    ROWS.append((what, figure, goal, "yes" if met else "no"))


def against_peers(what, task, file, goals, *target):
    runs = {
        peer: (peer, [task, DATA / file, *target]) for peer in ["VXKit", *[goal for goal in goals]] if installed(peer)
    }
    result = medians(runs)
    own = result["VXKit"][0]
    for peer, goal in goals.items():
        if peer not in result:
            row(f"{what}, beside {peer}", "not installed", f"at least {goal}x faster", False)
            continue
        ratio = result[peer][0] / own
        row(
            f"{what}, beside {peer}",
            f"{ratio:.1f}x faster ({own * 1000:.0f} ms against {result[peer][0] * 1000:.0f} ms)",
            f"at least {goal}x faster",
            ratio >= goal,
        )
    return result


def growth(what, small, large, goal):
    result = medians({"small": ("VXKit", small), "large": ("VXKit", large)})
    ratio = result["large"][0] / result["small"][0]
    row(
        what,
        f"{ratio:.1f}x ({result['large'][0] * 1000:.1f} ms against {result['small'][0] * 1000:.1f} ms)",
        f"at most {goal}x",
        ratio <= goal,
    )


def main():
    if not (DATA / "100k.bin").exists():
        subprocess.run([sys.executable, str(HERE / "makedata.py"), str(DATA)], check=True)
    target = DATA / "saved.plist"

    loads = against_peers("load XML", "load", "100k.xml", {"libplist": 2, "plistlib": 15, "GNUstep": 15})
    if "libplist" in loads:
        ratio = loads["VXKit"][1] / loads["libplist"][1]
        row(
            "peak memory while loading XML, beside libplist",
            f"{ratio:.2f} ({loads['VXKit'][1] / 1024:.0f} MiB against {loads['libplist'][1] / 1024:.0f} MiB)",
            "at most 0.65",
            ratio <= 0.65,
        )
    against_peers("serialise XML", "serialise", "100k.xml", {"libplist": 1.7, "plistlib": 10})
    against_peers("durable save", "save", "100k.xml", {"GNUstep": 8}, target)
    against_peers("load binary", "load", "100k.bin", {"libplist": 1.3, "plistlib": 5})
    growth("load, 100k records against 10k", ["load", DATA / "10k.xml"], ["load", DATA / "100k.xml"], 12)
    growth(
        "save, 100k records against 10k",
        ["save", DATA / "10k.xml", target],
        ["save", DATA / "100k.xml", target],
        12,
    )
    growth("20,000 free IDs from one start second against 2,000", ["free-ids", 2000], ["free-ids", 20000], 12)
    growth("a million looks for an ID, 100k records against 1k", ["look-up", 1000], ["look-up", 100000], 3)

    head()
    for entry in ROWS:
        print("| " + " | ".join(entry) + " |")


main()
