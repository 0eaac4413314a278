#!/usr/bin/env bash
# Runs the example host's tour in a desktop session and looks at what it leaves: pictures that show something, and the
# property list with the snippets.
#
#   tests/desktop/tour_test.sh HOST FOLDER     FOLDER is emptied, and holds the pictures and the home folder afterwards
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
host=$1
folder=$2
# Text is smoothed at its edges, so that a window full of it has hundreds of colours; a blank one has a handful.
readonly least_colours=64

fail() {
  printf 'FAILED: %s\n' "$1" >&2
  exit 1
}

rm -rf "$folder"
mkdir -p "$folder/home"
told=$(env HOME="$folder/home" XDG_CONFIG_HOME="$folder/home/.config" XDG_DATA_HOME="$folder/home/.local/share" \
  XDG_STATE_HOME="$folder/home/.local/state" XDG_CACHE_HOME="$folder/home/.cache" \
  "$root/scripts/desktop-session.sh" "$host" --tour "$folder" "$root/VXKit" "$root/README.md" </dev/null) ||
  fail "the tour ended with status $?"
printf '%s\n' "$told"

mapfile -t pictures < <(find "$folder" -maxdepth 1 -name '*.png' | sort)
((${#pictures[@]})) || fail 'the tour took no picture'
for step in list search importing stopped added renaming editing copied removed dragging exporting preferences about help; do
  grep -q -- "-$step\.png\$" <<<"$told" || fail "the tour does not show '$step'"
done
for picture in "${pictures[@]}"; do
  grep -qF -- "$picture" <<<"$told" || fail "the tour did not tell of $picture"
  # The middle, because a title bar or a tray would be there around a blank window too.
  middle=$(identify -format '%[fx:int(w/2)]x%[fx:int(h/2)]+%[fx:int(w/4)]+%[fx:int(h/4)]' "$picture") ||
    fail "$picture is no picture"
  colours=$(identify -format '%k' "${picture}[$middle]")
  ((colours >= least_colours)) || fail "$picture is blank: it has $colours colours"
done

mapfile -t lists < <(find "$folder/home" -name '*.plist')
((${#lists[@]})) || fail 'the tour left no property list'
python3 - "${lists[@]}" <<'PROGRAM' || fail 'no property list of the tour holds snippets'
import plistlib
import sys

for path in sys.argv[1:]:
    with open(path, "rb") as file:
        if plistlib.load(file).get("contents"):
            sys.exit(0)
sys.exit(1)
PROGRAM
