#!/usr/bin/env bash
# Proves of scripts/desktop-session.sh what the other desktop tests rely on: that a session is whole when its command
# starts, that the exit status comes through, that the parts left out are left out, and that nothing stays behind.
#
#   tests/desktop/session_test.sh
# shellcheck disable=SC2016 # what stands in single quotes is for the shell inside the session
set -uo pipefail
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../scripts" && pwd)
export scripts
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# expect WHAT EXPECTED ACTUAL
expect() {
  [[ $2 == "$3" ]] && return
  printf 'FAILED %s: expected "%s", got "%s"\n' "$1" "$2" "$3" >&2
  ((failures++))
}

# session COMMANDS: runs shell commands in a session, with standard input and a home folder of their own.
session() { HOME=$work "$scripts/desktop-session.sh" bash -uc "$1" <<<'typed text'; }

# The session's own folder is where its sockets are; its processes are the children of the one that runs the command.
told=$(session '
  read -r line
  printf "%s\n" "$line" "$HOME" "$XDG_RUNTIME_DIR"
  printf "%s\n" "$(cat /proc/$PPID/task/$PPID/children)"
  "$scripts/x-selection-owner.py" _NET_WM_CM_S0 && "$scripts/x-selection-owner.py" _NET_SYSTEM_TRAY_S0 &&
    xprop -root _NET_SUPPORTING_WM_CHECK && [[ -S ${DBUS_SESSION_BUS_ADDRESS#unix:path=} ]] || echo incomplete
  exit 42')
expect 'the exit status' 42 $?
mapfile -t lines <<<"$told"
expect 'standard input' 'typed text' "${lines[0]}"
expect 'the home folder' "$work" "${lines[1]}"
[[ $told != *incomplete* ]] || expect 'the parts of a whole session' 'all of them' "$told"
[[ ! -e ${lines[2]} ]] || expect 'the folder of sockets' 'taken away' "${lines[2]}"
read -ra processes <<<"${lines[3]}"
expect 'the number of processes' 6 "${#processes[@]}"
for process in "${processes[@]}"; do
  [[ ! -e /proc/$process ]] || expect 'a process of the session' 'ended' "$(tr '\0' ' ' <"/proc/$process/cmdline")"
done

told=$(DESKTOP_COMPOSITOR=no session '"$scripts/x-selection-owner.py" _NET_WM_CM_S0 || echo none')
expect 'the compositing manager left out' none "$told"
told=$(DESKTOP_TRAY=no session '"$scripts/x-selection-owner.py" _NET_SYSTEM_TRAY_S0 || echo none')
expect 'the tray left out' none "$told"

"$scripts/desktop-session.sh" bash -c 'kill -KILL $$'
expect 'the exit status of a killed command' 137 $?

"$scripts/desktop-session.sh" bash -c 'echo "$XDG_RUNTIME_DIR"; exec sleep 1000' >"$work/told" &
session=$!
until [[ -s $work/told ]] || ! kill -0 "$session"; do sleep 0.02; done
kill -TERM "$session"
wait "$session"
expect 'the exit status of a session that was told to end' 143 $?
[[ ! -e $(<"$work/told") ]] || expect 'the folder of a session that was told to end' 'taken away' "$(<"$work/told")"

((failures == 0))
