#!/usr/bin/env bash
# Builds the example host and starts it:
#
#   ./run.sh [FILES and folders whose text becomes snippets…]
#
# Without a display it starts a desktop session of its own instead, lets the host show itself there, and says where the
# pictures are. That run has a home folder of its own, so nobody's snippets and settings are touched.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
"$root/scripts/install-packages.sh" build

# quietly COMMAND…: its output only where it fails.
quietly() {
  local output
  output=$("$@" 2>&1) && return
  printf '%s\n' "$output" >&2
  exit 1
}
# The presets and the paths in them are the project's, the paths among the arguments the caller's.
quietly env -C "$root" cmake --preset release
quietly cmake --build "$root/build/release" --target snippets
host=$root/build/release/examples/snippets/snippets

if [[ -n ${DISPLAY:-}${WAYLAND_DISPLAY:-} ]]; then
  exec "$host" "$@"
fi

"$root/scripts/install-packages.sh" desktop
tour=$root/build/tour
rm -rf "$tour"
mkdir -p "$tour/home"
(($#)) || set -- "$root"/{VXKit,examples,tests,docs} "$root"/*.md
status=0
env HOME="$tour/home" XDG_CONFIG_HOME="$tour/home/.config" XDG_DATA_HOME="$tour/home/.local/share" \
  XDG_STATE_HOME="$tour/home/.local/state" XDG_CACHE_HOME="$tour/home/.cache" \
  "$root/scripts/desktop-session.sh" "$host" --tour "$tour" "$@" </dev/null || status=$?

printf '\nPictures in %s\nProperty lists:\n' "$tour"
find "$tour/home" -name '*.plist' | sort | sed 's/^/  /'
exit "$status"
