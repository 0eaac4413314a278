#!/usr/bin/env bash
# Finds controls and windows through the accessibility bus, as a screen reader does, and works with them; in a
# desktop session of its own.
#
#   tests/desktop/accessibility_test.sh PROGRAM [SCRIPT]
#
# PROGRAM is the one made of ControlsProgram.cpp, or the one that SCRIPT, of this folder, works with.
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly seconds_to_wait=30

if [[ ${ACCESSIBILITY_PROGRAM:-} == '' ]]; then
  ACCESSIBILITY_PROGRAM=$(readlink -f "$1") ACCESSIBILITY_SCRIPT=${2:-accessibility.py} DESKTOP_TRAY=no DESKTOP_COMPOSITOR=no \
    exec "$here/../../scripts/desktop-session.sh" "${BASH_SOURCE[0]}"
fi

# From here on: within the session, whose bus starts no services. The launcher of the accessibility bus is started like
# any other program, so that it ends with the test and takes its bus along.
launcher=
for folder in /usr/libexec /usr/lib/at-spi2-core; do
  [[ ! -x $folder/at-spi-bus-launcher ]] || launcher=$folder/at-spi-bus-launcher
done
[[ -n $launcher ]] || { echo 'The accessibility bus is missing: scripts/install-packages.sh desktop' >&2; exit 1; }

log=$(mktemp)
"$launcher" --launch-immediately >"$log" 2>&1 &
launcher_process=$!
end() {
  kill -TERM "$launcher_process" 2>/dev/null
  wait "$launcher_process" 2>/dev/null
  rm -f "$log"
}
trap end EXIT

has_bus() {
  dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus org.a11y.Bus.GetAddress | grep -q 'unix:'
}
deadline=$((SECONDS + seconds_to_wait))
until has_bus 2>/dev/null; do
  ((SECONDS < deadline)) || { echo 'No accessibility bus:' >&2; cat "$log" >&2; exit 1; }
  sleep 0.05
done

# Debian's own Python, which its packages are for.
QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 /usr/bin/python3 "$here/$ACCESSIBILITY_SCRIPT" "$ACCESSIBILITY_PROGRAM"
