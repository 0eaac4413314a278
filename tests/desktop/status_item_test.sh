#!/usr/bin/env bash
# Shows a status item in a tray, in a panel that is told of it over the session bus, and in the corner of the screen, and
# moves it from one to the other; each in a desktop session.
#
#   tests/desktop/status_item_test.sh ITEM PANEL FOLDER     FOLDER is emptied, and holds the pictures afterwards
#
# ITEM and PANEL are the programs made of StatusItemProgram.cpp and StatusNotifierPanel.cpp.
# shellcheck disable=SC2016 # what stands in single quotes is looked at anew each time that a condition is
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
session=$here/../../scripts/desktop-session.sh
readonly seconds_to_wait=20
readonly screen_width=1280 screen_height=800

if [[ ${STATUS_ITEM_CASE:-} == '' ]]; then
  item_program=$(readlink -f "$1")
  panel_program=$(readlink -f "$2")
  mkdir -p "$3"
  folder=$(readlink -f "$3")
  rm -f "$folder"/*
  export item_program panel_program folder
  failures=0
  for case in tray_right tray_center tray_left tray_restart tray_scaled opaque_tray translucent_tray \
    panel panel_bottom panel_silent panel_restart deaf_tray corner corner_opaque moves; do
    case $case in
    tray_* | opaque_tray) tray=yes ;;
    *) tray=no ;;
    esac
    compositor=yes
    [[ $case != corner_opaque ]] || compositor=no
    STATUS_ITEM_CASE=$case DESKTOP_TRAY=$tray DESKTOP_COMPOSITOR=$compositor \
      DESKTOP_SCREEN=${screen_width}x${screen_height} "$session" "${BASH_SOURCE[0]}" || {
      echo "FAILED: $case" >&2
      ((failures++))
    }
  done
  ((failures == 0))
  exit
fi

# From here on: one case, within its session.
work=$(mktemp -d)
processes=()
end() {
  for process in "${processes[@]}"; do
    kill -TERM "$process" 2>/dev/null
    wait "$process" 2>/dev/null
  done
  rm -rf "$work"
}
trap end EXIT

fail() {
  echo "$STATUS_ITEM_CASE: $1" >&2
  tail -n 8 "$work"/*.told "$work"/*.log >&2
  exit 1
}

# await WHAT CONDITION…: until the condition holds.
await() {
  local what=$1 deadline=$((SECONDS + seconds_to_wait))
  shift
  until "$@" >/dev/null 2>&1; do
    ((SECONDS < deadline)) || fail "no $what"
    sleep 0.02
  done
}

expect() { [[ $2 == "$3" ]] || fail "$1: expected \"$2\", got \"$3\""; }

start_item() {
  mkfifo "$work/item.orders"
  "$item_program" <"$work/item.orders" >"$work/item.told" 2>"$work/item.log" &
  processes+=("$!")
  exec {orders}>"$work/item.orders"
  await 'first word of the item' test -s "$work/item.told"
}

# start_panel ARGUMENT…
start_panel() {
  "$panel_program" "$@" >"$work/panel.told" 2>"$work/panel.log" &
  panel=$!
  processes+=("$panel")
  await 'first word of the panel' grep -q ready "$work/panel.told"
}

# start_tray ARGUMENT…: a tray like the session's own, which this replaces.
start_tray() {
  trayer --edge top --widthtype request --height 24 "$@" >"$work/tray.log" 2>&1 &
  tray=$!
  processes+=("$tray")
  await tray has_tray
}

has_tray() { python3 "$here/../../scripts/x-selection-owner.py" _NET_SYSTEM_TRAY_S0; }
has_no_tray() { ! has_tray; }

# The session's own tray ends, whose command line stands in its process.
end_session_tray() {
  local process
  for process in $(pgrep -P "$PPID" -x trayer); do
    kill -TERM "$process"
  done
  await 'end of the tray' has_no_tray
}

order() { echo "$*" >&"$orders"; }
last() { grep "^$1 " "$work/item.told" | tail -n 1 | cut -d ' ' -f 2-; }
lines() { grep -c "^$1" "$work/item.told"; }

# The item's frame in pixels from the top left, by what the item says of it: x y width height.
told_frame() {
  local x y width height
  read -r x y width height <<<"$(last frame)"
  echo "$x $((screen_height - y - height)) $width $height"
}

# The same by the X server; nothing where there is no window on the screen.
server_frame() {
  local id
  id=$(last window)
  # Without a number, xwininfo waits for somebody to click a window.
  ((id != 0)) || return
  xwininfo -id "$id" 2>/dev/null | awk '
    /Absolute upper-left X/ { x = $4 } /Absolute upper-left Y/ { y = $4 } /Width:/ { w = $2 } /Height:/ { h = $2 }
    /Map State/ { state = $3 }
    END { if (state == "IsViewable") print x, y, w, h }'
}

frames_agree() {
  order show
  [[ -n $(server_frame) && $(told_frame) == "$(server_frame)" ]]
}

is_docked() {
  order show
  local id
  id=$(last window)
  [[ -n $(server_frame) ]] && ! xwininfo -id "$id" -tree | grep -q 'Parent window id.*root window'
}

picture() { import -window root "$folder/$STATUS_ITEM_CASE.png"; }

# has_item_at X Y WIDTH HEIGHT: whether many pixels of this part of the screen are about the item's orange.
has_item_at() {
  local orange
  orange=$(import -window root -crop "$3x$4+$1+$2" +repage -depth 8 rgb:- | od -An -v -tu1 -w3 |
    awk '$1 > 200 && $2 > 90 && $2 < 190 && $3 < 80' | wc -l)
  ((orange > 40))
}
colour_at() { import -window root -crop "1x1+$1+$2" +repage -depth 8 rgb:- | od -An -tu1; }
# shellcheck disable=SC2046 # four words
shows_item() { has_item_at $(told_frame); }

# click X Y [BUTTON]
click() { xdotool mousemove "$1" "$2" click "${3:-1}"; }

# Clicks the item in the middle, and waits until it has told of it.
click_item() {
  local x y width height before
  read -r x y width height <<<"$(told_frame)"
  before=$(lines mouse-down)
  click "$((x + width / 2))" "$((y + height / 2))"
  await 'mouse-down of the view' is_told "$((before + 1))" mouse-down
}
is_told() { (($(lines "$2") >= $1)); }

# In a tray: docked, at the frame that the server has, seen, clicked, with a menu.
check_tray() {
  start_item
  await 'docked item' is_docked
  await 'frame like that of the server' frames_agree
  await 'picture of the item' shows_item
  picture
  local x y width height
  read -r x y width height <<<"$(told_frame)"
  expect 'the width of the item' 30 "$width"
  click_item
  order redraw 3
  await 'drawing' is_told 1 drawn
  expect 'drawings for each display' 3 "$(last drawn)"
  order length 60
  await 'longer item' eval '[[ $(server_frame) == *" 60 "* ]] && frames_agree'
  order menu
  await 'menu' is_told 1 'menu set'
  click "$((x + 5))" "$((y + 5))" 3
  await 'shown menu' is_told 1 'menu shown'
}

case_tray_right() {
  check_tray
  local x y width height
  read -r x y width height <<<"$(told_frame)"
  ((x + width > screen_width - 60)) || fail "not at the right: $x"
}

case_tray_center() {
  end_session_tray
  start_tray --align center
  check_tray
}

case_tray_left() {
  end_session_tray
  start_tray --align left
  check_tray
  local x y width height
  read -r x y width height <<<"$(told_frame)"
  ((x < 60)) || fail "not at the left: $x"
}

case_opaque_tray() {
  end_session_tray
  start_tray --align right --transparent true --alpha 0 --tint 0x4060a0
  check_tray
}

# A panel whose tray is see-through, so that the item's window must be, too. Its settings come from a service that
# nothing starts by itself in this session.
case_translucent_tray() {
  local settings=$work/xfce4/xfconf/xfce-perchannel-xml services service
  mkdir -p "$settings"
  cat >"$settings/xfce4-panel.xml" <<'SETTINGS'
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="26"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
SETTINGS
  services=(/usr/lib/*/xfce4/xfconf/xfconfd)
  service=${services[0]}
  export XDG_CONFIG_HOME=$work HOME=$work
  "$service" >"$work/settings.log" 2>&1 &
  processes+=("$!")
  await 'service of settings' dbus-send --session --print-reply --dest=org.xfce.Xfconf / org.freedesktop.DBus.Peer.Ping
  xfce4-panel --disable-wm-check >"$work/tray.log" 2>&1 &
  processes+=("$!")
  await tray has_tray
  start_item
  await 'docked item' is_docked
  await 'frame like that of the server' frames_agree
  await 'picture of the item' shows_item
  picture
  xwininfo -id "$(last window)" | grep -q 'Depth: 32' || fail 'the window is not translucent'
  local x y width height corner middle
  read -r x y width height <<<"$(told_frame)"
  ((width >= 28 && width <= 32)) || fail "the item is $width wide"
  corner=$(colour_at "$x" "$y")
  middle=$(colour_at "$((x + width + 40))" "$y")
  expect 'the colour behind the item' "$middle" "$corner"
  click_item
}

case_tray_restart() {
  start_item
  await 'docked item' is_docked
  end_session_tray
  start_tray --align left
  await 'item docked again' is_docked
  await 'frame like that of the server' frames_agree
  await 'picture of the item' shows_item
  picture
  kill -KILL "$tray"
  await 'end of the tray' has_no_tray
  start_tray --align right
  await 'item docked once more' is_docked
  await 'frame like that of the server' frames_agree
  await 'picture of the item' shows_item
  click_item
  order remove
  await 'removal' is_told 1 removed
  expect 'an item that was removed' '' "$(server_frame)"
}

case_tray_scaled() {
  export QT_SCALE_FACTOR=2
  start_item
  await 'docked item' is_docked
  await 'picture of the item' has_item_at 0 0 1280 24
  picture
  await 'frame like that of the server' eval 'order show; [[ $(told_frame_scaled) == "$(server_frame)" ]]'
}
# The same at two pixels a point, where a place may lie between whole points.
told_frame_scaled() {
  last frame | awk -v height="$screen_height" '{ print 2 * $1, height - 2 * $2 - 2 * $4, 2 * $3, 2 * $4 }'
}

# A click at X in a panel told the item, which then believes to be under it.
check_click_in_panel() {
  local x y width height
  click "$1" "$2"
  await 'mouse-down of the view' is_told 1 mouse-down
  read -r x y width height <<<"$(told_frame)"
  expect 'the middle of the item' "$1" "$((x + width / 2))"
}

case_panel() {
  start_panel --left 600 --height 26
  start_item
  await 'picture of the item in the panel' has_item_at 600 0 40 26
  picture
  local before x y width height
  expect 'a window of the item on the screen' '' "$(server_frame)"
  await 'sizes of the pictures' grep -q '^icon .* 30x22 60x44' "$work/panel.told"
  await 'frame below the edge of the panel' eval 'order show; [[ $(told_frame) == *" 4 30 22" ]]'
  check_click_in_panel 620 10
  read -r x y width height <<<"$(told_frame)"
  expect 'the lower edge of the item' 26 "$((y + height))"
  before=$(awk '/^icon/ { n = $2 } END { print n }' "$work/panel.told")
  order pulse 10
  await 'end of the pulse' is_told 1 pulsed
  expect 'drawings of the pulse' 10 "$(last pulsed)"
  await 'pictures of the pulse' eval "((\$(awk '/^icon/ { n = \$2 } END { print n }' '$work/panel.told') >= $before + 9))"
  order menu
  await 'menu' is_told 1 'menu set'
  click 620 10 3
  await 'shown menu' is_told 1 'menu shown'
}

case_panel_bottom() {
  start_panel --edge bottom --left 300 --height 30
  start_item
  await 'picture of the item in the panel' has_item_at 300 770 40 30
  picture
  check_click_in_panel 320 785
}

case_panel_silent() {
  start_panel --left 600 --silent
  start_item
  await 'picture of the item in the panel' has_item_at 600 0 40 26
  check_click_in_panel 620 12
}

# A tray that never answers is none; until that is clear, the item is nowhere.
case_deaf_tray() {
  start_panel --left 600 --deaf-tray
  await tray has_tray
  start_item
  await 'item in the panel' has_item_at 600 0 40 26
  expect 'a window of the item on the screen' '' "$(server_frame)"
}

case_panel_restart() {
  start_panel --left 600
  start_item
  await 'picture of the item in the panel' has_item_at 600 0 40 26
  kill -TERM "$panel"
  wait "$panel"
  await 'item in the corner' frames_agree
  start_panel --left 200
  await 'picture of the item in the panel' has_item_at 200 0 40 26
  await 'end of the window in the corner' eval 'order show; [[ -z $(server_frame) ]]'
}

case_corner() {
  start_item
  await 'item in the corner' frames_agree
  await 'picture of the item' shows_item
  picture
  local x y width height
  read -r x y width height <<<"$(told_frame)"
  expect 'the right edge' "$((screen_width - 32))" "$((x + width))"
  expect 'the upper edge' 4 "$y"
  click_item
  order length 50
  await 'longer item' eval '[[ $(server_frame) == *" 50 22" ]] && frames_agree'
}

case_corner_opaque() { case_corner; }

# From nothing to a panel, to a tray, back to the panel, to the corner.
case_moves() {
  start_item
  await 'item in the corner' frames_agree
  start_panel --left 600
  await 'item in the panel' has_item_at 600 0 40 26
  trayer --edge bottom --widthtype request --height 24 --align right >"$work/tray.log" 2>&1 &
  tray=$!
  processes+=("$tray")
  await 'item in the tray' eval 'is_docked && frames_agree'
  await 'picture of the item' shows_item
  await 'end of the item in the panel' grep -q '^gone ' "$work/panel.told"
  kill -TERM "$tray"
  await 'item back in the panel' has_item_at 600 0 40 26
  expect 'a window of the item on the screen' '' "$(order show; server_frame)"
  kill -TERM "$panel"
  await 'item in the corner' frames_agree
  await 'picture of the item' shows_item
  order quit
  await 'end of the item' eval '! kill -0 "${processes[0]}"'
  picture
}

"case_$STATUS_ITEM_CASE"
