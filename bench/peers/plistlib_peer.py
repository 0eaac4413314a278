#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Python's plistlib at the tasks of the other programs of this folder."""
import plistlib
import sys
import time


def peak_memory():
    with open("/proc/self/status", encoding="ascii") as status:
        for line in status:
            if line.startswith("VmHWM:"):
                return int(line.split()[1])
    return 0


def measure(work):
    start = time.perf_counter()
    result = work()
    print(f"{time.perf_counter() - start:.9f} {peak_memory()}")
    return result


task, path = sys.argv[1], sys.argv[2]
with open(path, "rb") as file:
    content = file.read()
if task == "load":
    measure(lambda: plistlib.loads(content))
elif task == "serialise":
    value = plistlib.loads(content)
    measure(lambda: plistlib.dumps(value))
else:
    sys.exit("unknown task")
