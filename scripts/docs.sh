#!/usr/bin/env bash
# Builds the reference of the public headers into build/docs/html, and fails where a public name has no words of its own
# or a reference leads nowhere.
#
# Public is what #include <VXKit/VXKit.h> brings, directly or not: that is all a host can name.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

readonly output=build/docs

command -v doxygen >/dev/null || {
  printf '%s: doxygen is missing. scripts/install-packages.sh lint installs it.\n' "${0##*/}" >&2
  exit 1
}

# public_headers HEADER: it and the headers of this tree that it brings, one a line. The generated one is not here.
public_headers() {
  local -A found=(["$1"]=yes)
  local -a unread=("$1")
  local header
  while ((${#unread[@]})); do
    header=${unread[0]}
    unread=("${unread[@]:1}")
    while IFS= read -r header; do
      [[ -z ${found[$header]:-} && -f $header ]] || continue
      found[$header]=yes
      unread+=("$header")
    done < <(sed -nE 's/^#include <(VXKit\/[^>]+)>.*/\1/p' "$header")
  done
  printf '%s\n' "${!found[@]}" | LC_ALL=C sort
}

# undocumented_constants XML_FOLDER: says which constants of enumerations have no words, of which doxygen itself warns
# only from version 1.9.7 on.
undocumented_constants() {
  python3 - "$1" <<'END'
import pathlib
import sys
from xml.etree import ElementTree

missing = set()
for file in pathlib.Path(sys.argv[1]).glob("*.xml"):
    for member in ElementTree.parse(file).iter("memberdef"):
        if member.get("kind") != "enum" or member.get("prot") == "private":
            continue
        for constant in member.iter("enumvalue"):
            words = "".join(
                text
                for description in ("briefdescription", "detaileddescription")
                for text in constant.find(description).itertext()
            )
            if not words.strip():
                place = member.find("location")
                missing.add(f"{place.get('file')}:{place.get('line')}: {constant.find('name').text} is not documented.")
for line in sorted(missing):
    print(line, file=sys.stderr)
sys.exit(bool(missing))
END
}

# Pages of an earlier run would stay otherwise, and links to them would work.
rm -rf "$output"
mkdir -p "$output"

version=$(sed -nE 's/^project\(VXKit VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
mapfile -t headers < <(public_headers VXKit/VXKit.h)
# It says the same once for each class that inherits what it is about.
doxygen - <<END 2>&1 | uniq >&2
@INCLUDE = docs/Doxyfile
PROJECT_NUMBER = $version
INPUT += ${headers[@]}
END
undocumented_constants "$output/xml"

# What the main page has a link to and doxygen does not take along.
mkdir -p "$output/html/VXKit/resources"
cp VXKit/resources/Inter-LICENSE.txt "$output/html/VXKit/resources"
