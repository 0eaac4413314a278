#!/usr/bin/env python3
"""Fails where an #include points up: from a lower layer of the kit into a higher one, or in a circle.

    scripts/check-layers.py < FILES

The layers stand in docs/architecture.md. Two more rules keep the bottom of the house portable: foundation includes
nothing of Qt but QtCore, and only the platform folders include X11, D-Bus and Qt's private headers.
"""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# From the bottom up. Folders on one line may include one another, as long as no header does so in a circle.
LAYERS = (
    ("VXKit/platform/foundation",),
    ("VXKit/platform/graphics",),
    ("VXKit/platform/desktop",),
    ("VXKit/platform/appkit",),
    ("VXKit/support",),
    ("VXKit/database", "VXKit/hud", "VXKit/controls", "VXKit/transitions", "VXKit/app"),
    ("VXKit",),
    ("designer", "examples", "tests", "bench"),
)

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*[<"]([^">\n]+)[">]', re.MULTILINE)
PLATFORM_ONLY = re.compile(r"(xcb/|X11/|Q?DBus|QtDBus|Qt\w*/private/|private/)")


def layer_of(file: str) -> int:
    """The layer of the innermost folder that has one."""
    for folder in pathlib.PurePosixPath(file).parents:
        for number, folders in enumerate(LAYERS):
            if str(folder) in folders:
                return number
    sys.exit(f"{file}: its folder is in no layer; scripts/check-layers.py lists them")


def project_file(name: str, includer: str) -> str | None:
    for folder in (pathlib.PurePosixPath(includer).parent, pathlib.PurePosixPath(".")):
        if (ROOT / folder / name).is_file():
            return str(folder / name)
    return None


def circle_from(start: str, includes: dict[str, list[str]]) -> list[str]:
    """The shortest way from a header back to itself, or nothing."""
    ways = [[start]]
    seen: set[str] = set()
    while ways:
        way = ways.pop(0)
        for included in includes.get(way[-1], []):
            if included == start:
                return [*way, start]
            if included not in seen:
                seen.add(included)
                ways.append([*way, included])
    return []


def main() -> int:
    qt_headers = subprocess.run(["qmake6", "-query", "QT_INSTALL_HEADERS"], check=True, capture_output=True, text=True)
    qt_core = pathlib.Path(qt_headers.stdout.strip()) / "QtCore"
    complaints = []
    includes: dict[str, list[str]] = {}
    for file in sys.stdin.read().splitlines():
        includes[file] = []
        for name in INCLUDE.findall((ROOT / file).read_text(encoding="utf-8")):
            included = project_file(name, file)
            if included:
                includes[file].append(included)
                if layer_of(included) > layer_of(file):
                    complaints.append(f"{file}: includes {name} of a layer above it")
                continue
            is_qt = name.startswith("Qt") or re.match(r"Q[A-Z]\w*$|q\w+\.h$", name)
            if is_qt and layer_of(file) == 0 and not (qt_core / name.removeprefix("QtCore/")).exists():
                complaints.append(f"{file}: includes {name}, and foundation needs nothing of Qt but QtCore")
            if PLATFORM_ONLY.match(name) and file.startswith("VXKit/") and not file.startswith("VXKit/platform/"):
                complaints.append(f"{file}: includes {name}, which only VXKit/platform may")

    circles = {frozenset(circle): circle for file in includes if (circle := circle_from(file, includes))}
    complaints += [f"headers include one another in a circle: {' > '.join(circle)}" for circle in circles.values()]
    print("\n".join(complaints), end="\n" if complaints else "")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
