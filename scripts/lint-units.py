#!/usr/bin/env python3
"""Runs one check on every C++ file it is for, several at once, and skips what has passed before.

    scripts/lint-units.py CHECK BUILD_FOLDER < FILES        (CHECK is tidy or headers)

What has passed is remembered in BUILD_FOLDER/passed by a digest of all that the answer depends on: the file, the
project's headers it includes, directly or not, the check's configuration, command line and version.
"""

import concurrent.futures
import functools
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
INCLUDE = re.compile(rb'^[ \t]*#[ \t]*include[ \t]*[<"]([^">\n]+)[">]', re.MULTILINE)


@functools.cache
def contents(file: pathlib.Path) -> bytes:
    return file.read_bytes()


def with_all_included(file: pathlib.Path, folders: list[pathlib.Path]) -> list[pathlib.Path]:
    """The file and the project's headers that it includes; others are the system's, and change with its packages."""
    found = {file}
    unread = [file]
    while unread:
        includer = unread.pop()
        for name in INCLUDE.findall(contents(includer)):
            for folder in (includer.parent, *folders):
                included = folder / name.decode()
                if included.is_file() and included not in found:
                    found.add(included)
                    unread.append(included)
    return sorted(found)


@functools.cache
def sources_of(unit: pathlib.Path) -> list[pathlib.Path]:
    """What a unit compiles: the sources that CMake has put together in it, or itself."""
    if not unit.is_relative_to(ROOT / "build"):
        return [unit]
    listed = [pathlib.Path(name.decode()) for name in INCLUDE.findall(contents(unit))] if unit.is_file() else []
    return [source for source in listed if source.suffix == ".cpp" and source.is_absolute()] or [unit]


@functools.cache
def version_of(*command: str) -> str:
    output = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return " ".join(output.split("\n")[:2])


class Check:
    """Which files are checked, and by what command."""

    def __init__(self, build: pathlib.Path):
        # Of a file that several targets compile the first is enough, and clang-tidy would go through all of them. A file
        # may be a list of others that are compiled with it as one.
        self.build = build / "one-command-a-file"
        self.compile_commands = {}
        for configuration in (build, build / "fuzz"):
            for entry in json.loads((configuration / "compile_commands.json").read_text()):
                self.compile_commands.setdefault(pathlib.Path(entry["file"]), entry)
        self.build.mkdir(exist_ok=True)
        (self.build / "compile_commands.json").write_text(json.dumps(list(self.compile_commands.values())))

        words = {word for entry in self.compile_commands.values() for word in shlex.split(entry["command"])}
        self.include_folders = sorted(pathlib.Path(word[2:]) for word in words if word.startswith(f"-I{ROOT}"))

    def files(self, tracked: list[pathlib.Path]) -> list[pathlib.Path]:
        raise NotImplementedError

    def version(self, file: pathlib.Path) -> str:
        """Of the program that checks, and of its configuration for the file."""
        raise NotImplementedError

    def command(self, file: pathlib.Path) -> list[str]:
        raise NotImplementedError


class Tidy(Check):
    """clang-tidy on every source, as many at once as the build compiles as one; headers with what includes them."""

    def files(self, tracked):
        tracked_sources = {file for file in tracked if file.suffix == ".cpp"}
        found = {}  # the unit that each source is in
        for unit in self.compile_commands:
            for source in tracked_sources.intersection(sources_of(unit)):
                found.setdefault(source, unit)
        return sorted({*found.values(), *(tracked_sources - found.keys())})

    def configuration(self, file):
        folder = next(folder for folder in sources_of(file)[0].parents if (folder / ".clang-tidy").is_file())
        return folder / ".clang-tidy"

    def version(self, file):
        return version_of("clang-tidy", "--version") + contents(self.configuration(file)).decode()

    def command(self, file):
        if file not in self.compile_commands:
            return ["sh", "-c", f"echo '{file.relative_to(ROOT)}: in no list of sources that CMake knows'; exit 1"]
        # What the project wrote, and not what is made from it.
        ours = rf"^{re.escape(str(ROOT))}/(VXKit|designer|examples|tests|bench)/.*\.(h|cpp)$"
        return [
            "clang-tidy",
            "--quiet",
            f"--config-file={self.configuration(file)}",
            f"--header-filter={ours}",
            "-p",
            str(self.build),
            str(file),
        ]


class Headers(Check):
    """Every header of the library compiles alone, under the library's own flags, with the compiler that ships it."""

    def files(self, tracked):
        return [file for file in tracked if file.suffix == ".h" and file.is_relative_to(ROOT / "VXKit")]

    @functools.cached_property
    def flags(self) -> list[str]:
        entry = next(entry for file, entry in self.compile_commands.items() if file.is_relative_to(ROOT / "VXKit"))
        words = shlex.split(entry["command"])[1:]
        return words[: words.index("-o")]

    def version(self, file):
        return version_of("g++", "--version")

    def command(self, file):
        header = file.relative_to(ROOT)
        compiler = shlex.join(["g++", *self.flags, "-Werror", "-fsyntax-only", "-x", "c++", "-"])
        return ["sh", "-c", f"echo '#include <{header}>' | {compiler}"]


CHECKS = {"tidy": Tidy, "headers": Headers}


def run(check: Check, file: pathlib.Path, passed: pathlib.Path) -> str:
    """What the check says of the file; nothing where it passes, or did so before."""
    digest = hashlib.sha256(check.version(file).encode())
    for dependency in with_all_included(file, check.include_folders):
        digest.update(str(dependency).encode() + b"\0" + contents(dependency) + b"\0")
    command = check.command(file)
    digest.update(json.dumps(command).encode())
    digest.update(json.dumps(check.compile_commands.get(file, {})).encode())
    mark = passed / digest.hexdigest()
    if mark.exists():
        return ""
    result = subprocess.run(command, cwd=check.build, capture_output=True, text=True, stdin=subprocess.DEVNULL)
    if result.returncode == 0:
        mark.touch()
        return ""
    noise = re.compile(r"^\d+ warnings?( treated as errors?| generated)?.*$|^Suppressed \d+.*$|^Use -header-filter.*$")
    said = [line for line in (result.stdout + result.stderr).splitlines() if not noise.match(line)]
    return "\n".join(said) or f"{file}: {command[0]} ended with status {result.returncode}"


def main() -> int:
    name, build = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    check = CHECKS[name](build)
    passed = build / "passed" / name
    passed.mkdir(parents=True, exist_ok=True)
    files = check.files([(ROOT / line).resolve() for line in sys.stdin.read().splitlines()])
    failed = False
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for said in pool.map(lambda file: run(check, file, passed), files):
            if said:
                failed = True
                print(said, flush=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
