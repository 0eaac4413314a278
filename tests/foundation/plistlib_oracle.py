# SPDX-License-Identifier: MIT
"""Python's plistlib as a second opinion on property lists.

make SEED COUNT FOLDER   writes COUNT random values, each as NUMBER.xml and NUMBER.bin
rewrite FOLDER           loads each NUMBER.plist and writes what it found as NUMBER.xml and NUMBER.bin
"""
import datetime
import pathlib
import plistlib
import random
import struct
import sys

PIECES = ["a", "Z", "9", " ", "_", "&", "<", ">", '"', "'", "\\", "\n", "\t", "é", "ß", "İ", "日", "😀", "\u2028", "]]>"]


def text(source):
    return "".join(source.choice(PIECES) for _ in range(source.randrange(40)))


def real(source):
    while True:
        value = struct.unpack("d", source.randbytes(8))[0]
        if value == value:
            return value


def value(source, depth=4):
    kind = source.randrange(11 if depth else 8)
    if kind == 0:
        return source.random() < 0.5
    if kind == 1:
        return source.randrange(-(2**63), 2**64)
    if kind == 2:
        return source.randrange(-300, 300)
    if kind == 3:
        return real(source)
    if kind == 4:
        return source.randrange(-(10**6), 10**6) / 1000
    if kind == 5:
        return datetime.datetime(1, 1, 1) + datetime.timedelta(seconds=source.randrange(315537897600))
    if kind == 6:
        return source.randbytes(source.randrange(200))
    if kind == 7:
        return text(source)
    if kind == 8:
        return [value(source, depth - 1) for _ in range(source.randrange(6))]
    return {text(source): value(source, depth - 1) for _ in range(source.randrange(20))}


def write(content, folder, name):
    (folder / f"{name}.xml").write_bytes(plistlib.dumps(content, sort_keys=True))
    (folder / f"{name}.bin").write_bytes(plistlib.dumps(content, fmt=plistlib.FMT_BINARY, sort_keys=False))


def main(command, *arguments):
    folder = pathlib.Path(arguments[-1])
    if command == "make":
        source = random.Random(int(arguments[0]))
        for number in range(int(arguments[1])):
            write(value(source), folder, number)
    else:
        for path in folder.glob("*.plist"):
            write(plistlib.loads(path.read_bytes()), folder, path.stem)


main(*sys.argv[1:])
