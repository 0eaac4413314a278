#!/usr/bin/env bash
# Runs a command in a desktop session of its own, and ends with the command's exit status:
#
#   scripts/desktop-session.sh COMMAND [ARGUMENT…]
#
# The session is an X server without a screen (Xvfb), a session bus, a window manager (openbox), a compositing manager
# (picom) and a tray (trayer). The command starts when all of them answer, and whatever happens to it, they end with it.
# Nothing of the person's own session, settings or session bus is reached; HOME and standard input are the caller's.
#
#   DESKTOP_COMPOSITOR=no     no compositing manager
#   DESKTOP_TRAY=no           no tray
#   DESKTOP_SCREEN=1280x800   the size of the screen
#
# Exit status 125 means that the session could not be started; what its programs said goes to standard error.
set -uo pipefail

readonly session_failed=125
readonly seconds_to_start=30
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
(($#)) || { echo "usage: ${0##*/} COMMAND [ARGUMENT…]" >&2; exit "$session_failed"; }

# Short, because the path of a socket may have 107 bytes at most.
work=$(mktemp -d /tmp/session.XXXXXX) || exit "$session_failed"
mkdir "$work/home" "$work/logs"
mkdir -m 700 "$work/runtime"
processes=()

# Every process leads a group of its own, so its children end with it.
is_running() { kill -0 -- "-$1" 2>/dev/null; }

end_process() {
  local process=$1 tries=60
  kill -TERM -- "-$process" 2>/dev/null
  while is_running "$process" && ((tries-- > 0)); do
    sleep 0.05
  done
  kill -KILL -- "-$process" 2>/dev/null
  wait "$process" 2>/dev/null
}

end_session() {
  local status=$? index
  trap - EXIT
  trap '' INT TERM HUP
  for ((index = ${#processes[@]} - 1; index >= 0; index--)); do
    end_process "${processes[index]}"
  done
  rm -rf "$work"
  exit "$status"
}
trap end_session EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

fail() {
  printf '%s: %s\n' "${0##*/}" "$1" >&2
  tail -n 20 "$work"/logs/* >&2 2>/dev/null
  exit "$session_failed"
}

# start NAME COMMAND…: a part of the session, with an empty home so that nobody's settings change what it does. The
# death signal ends it even when this script is killed.
start() {
  local name=$1
  shift
  HOME=$work/home XDG_CONFIG_HOME=$work/home XDG_CACHE_HOME=$work/home XDG_DATA_HOME=$work/home \
    setsid setpriv --pdeathsig TERM -- "$@" >"$work/logs/$name" 2>&1 </dev/null &
  processes+=("$!")
}

# await NAME CONDITION…: until the condition holds; the part started last must be alive meanwhile.
await() {
  local name=$1 deadline=$((SECONDS + seconds_to_start))
  shift
  until "$@" >/dev/null 2>&1; do
    kill -0 "${processes[-1]}" 2>/dev/null || fail "$name ended before it was ready."
    ((SECONDS < deadline)) || fail "$name was not ready after $seconds_to_start seconds."
    sleep 0.02
  done
}

has_line() { [[ -n $(head -n 1 "$1") ]]; }
has_window_manager() { xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id # 0x'; }
has_owner() { python3 "$here/x-selection-owner.py" "$1"; }

for program in Xvfb dbus-daemon openbox picom trayer xprop python3 setpriv setsid; do
  command -v "$program" >/dev/null || fail "$program is missing: scripts/install-packages.sh desktop"
done

unset WAYLAND_DISPLAY XAUTHORITY DBUS_SESSION_BUS_ADDRESS DESKTOP_STARTUP_ID SESSION_MANAGER
export XDG_RUNTIME_DIR=$work/runtime XDG_SESSION_TYPE=x11 QT_QPA_PLATFORM=xcb NO_AT_BRIDGE=1
[[ -n ${LC_ALL:-}${LC_CTYPE:-}${LANG:-} ]] || export LANG=C.UTF-8

# The server chooses a free display number and writes it down, so sessions can run side by side.
: >"$work/display"
exec {display}>"$work/display"
start Xvfb Xvfb -displayfd "$display" -screen 0 "${DESKTOP_SCREEN:-1280x800}x24" -dpi 96 -nolisten tcp -noreset
await Xvfb has_line "$work/display"
exec {display}>&-
DISPLAY=:$(<"$work/display")
export DISPLAY

# A bus that starts no services: what a service leaves behind could outlive the session.
cat >"$work/bus.conf" <<CONFIGURATION
<busconfig>
  <type>session</type>
  <listen>unix:path=$work/runtime/bus</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
CONFIGURATION
start dbus-daemon dbus-daemon --nofork --nopidfile --config-file="$work/bus.conf"
await dbus-daemon test -S "$work/runtime/bus"
export DBUS_SESSION_BUS_ADDRESS=unix:path=$work/runtime/bus

start openbox openbox --sm-disable --config-file /etc/xdg/openbox/rc.xml
await openbox has_window_manager
if [[ ${DESKTOP_COMPOSITOR:-yes} != no ]]; then
  start picom picom --config /dev/null --backend xrender
  await picom has_owner _NET_WM_CM_S0
fi
if [[ ${DESKTOP_TRAY:-yes} != no ]]; then
  # Away from the edge, as on a desktop with a clock there: a window under an item has room for its arrow.
  start trayer trayer --edge top --align right --margin 40 --widthtype request --height 24
  await trayer has_owner _NET_SYSTEM_TRAY_S0
fi

setsid setpriv --pdeathsig TERM -- "$@" <&0 &
processes+=("$!")
wait "$!" 2>/dev/null
