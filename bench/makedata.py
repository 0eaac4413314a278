#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes stores of 10,000 and 100,000 records, the same each time: makedata.py FOLDER."""
import datetime
import pathlib
import plistlib
import random
import sys

WORDS = (
    "alpha beta gamma delta snippet text paste <b>tag</b> R&D a<b x>y fish & chips naïve café 日本 "
    "lorem ipsum dolor sit amet consectetur adipiscing elit sed do eiusmod tempor"
).split()
FIRST = datetime.datetime(2010, 1, 1)


def record(index, dice):
    body = ""
    while len(body) < 200:
        body += dice.choice(WORDS) + " "
    if index % 3 == 0:
        body = body[:80] + "\n" + body[80:]
    created = FIRST + datetime.timedelta(seconds=index * 61)
    return {
        "title": f"Snippet {index} — {dice.choice(WORDS)}",
        "body": body,
        "created": created,
        "modified": created + datetime.timedelta(seconds=dice.randrange(10**7)),
        "order": dice.random() * 1e6,
        "tags": [dice.choice(WORDS) for _ in range(3)],
    }


def store(count):
    dice = random.Random(42)
    return {
        "DBVersion": "1.2",
        "SaveDate": datetime.datetime(2024, 5, 1, 12, 0, 0),
        "contents": [record(index, dice) for index in range(count)],
    }


folder = pathlib.Path(sys.argv[1])
folder.mkdir(parents=True, exist_ok=True)
for name, count in (("10k", 10_000), ("100k", 100_000)):
    value = store(count)
    (folder / f"{name}.xml").write_bytes(plistlib.dumps(value))
    (folder / f"{name}.bin").write_bytes(plistlib.dumps(value, fmt=plistlib.FMT_BINARY))
