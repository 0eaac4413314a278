#!/usr/bin/env python3
"""Makes one source of the C++ in documents, so that a compiler can tell whether it is still true.

    scripts/documented-code.py DOCUMENTS… > SOURCE

A block that declares something (a class, a function, a test) is taken as it is. Any other is a part of a function, whose
parameters an HTML comment before the block names:

    <!-- given: NSWindow& window -->

A block that shows a file must be the same as that file without its licence line:

    <!-- file: examples/hello/main.cpp -->

Each block has a namespace of its own; a line of the compiler's names the line of the document.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LICENCE = "// SPDX-License-Identifier: MIT\n"
BLOCK = re.compile(
    r"(?:<!-- (?:given:(?P<given>[^>]*?)|file: (?P<file>\S+) )-->\n)?```cpp\n(?P<code>.*?)^```$", re.DOTALL | re.MULTILINE
)

PROLOGUE = """// Made of the documents' own examples.
#include <VXKit/VXKit.h>
#include <QtWidgets>
#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <gtest/gtest.h>
"""


def main() -> int:
    includes = [PROLOGUE]
    bodies = []
    for document in sys.argv[1:]:
        text = pathlib.Path(document).read_text(encoding="utf-8")
        for block in BLOCK.finditer(text):
            code = block["code"]
            if block["file"] and code != (ROOT / block["file"]).read_text(encoding="utf-8").removeprefix(LICENCE):
                sys.exit(f"{document}: {block['file']} is another one now")
            line = text.count("\n", 0, block.start("code")) + 1
            includes += re.findall(r"^#include .*\n", code, re.MULTILINE)
            code = re.sub(r"^#include .*$", "", code, flags=re.MULTILINE)
            opening, closing = f"namespace Block{len(bodies)} {{\n", "}\n"
            if block["given"] is not None:
                opening += f"[[maybe_unused]] void example({block['given'].strip()}) {{\n"
                closing = "}\n" + closing
            bodies.append(f'{opening}#line {line} "{document}"\n{code}{closing}')
    print("".join(dict.fromkeys(includes)) + "\n".join(bodies), end="")
    return 0


if __name__ == "__main__":
    sys.exit(main())
