#!/usr/bin/env bash
# No break over full-screen work, under a real window manager (openbox): a
# window made full screen the way a desktop does it (wmctrl asks the window
# manager, which sets _NET_WM_STATE_FULLSCREEN and the active window) holds
# the break back; the break starts when the window leaves full screen.
#
#   tests/interruptions/e2e_fullscreen.sh path/to/narv
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")/../e2e" && pwd)
source "$here/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

narv_scratch_home
openbox --config-file /dev/null >"$home/openbox.out" 2>&1 &
wm=$!
wm_up() { xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q "window id"; }
wait_for 20 wm_up || fail "openbox did not come up"
# An editor: a window that takes the keyboard focus.
xedit >/dev/null 2>&1 &
editor=$!
trap 'kill "$editor" "$wm" 2>/dev/null || true; rm -rf "$home"' EXIT
wait_for 20 xdotool search --onlyvisible --class Xedit >/dev/null || fail "no xedit window"
editor_id=$(xdotool search --onlyvisible --class Xedit | head -1)
wmctrl -i -r "$editor_id" -b add,fullscreen
full() { xprop -id "$editor_id" _NET_WM_STATE | grep -q _NET_WM_STATE_FULLSCREEN; }
# Asked again until done: a request that comes before the window is managed is dropped.
active() {
    wmctrl -i -a "$editor_id"
    xprop -root _NET_ACTIVE_WINDOW | grep -qi "$(printf '0x%x' "$editor_id")"
}
wait_for 10 full || fail "openbox did not make the editor full screen"
wait_for 10 active || fail "openbox did not make the editor the active window"

narv_start <<'CONF'
[General]
pref.work.time=0
pref.break.time=3000
pref.defer.when.busy=true
auto_check_update=false
CONF
trap 'kill "$editor" "$wm" 2>/dev/null || true; [[ -n $pid ]] && kill "$pid" 2>/dev/null; rm -rf "$home"' EXIT
shown() { [[ -n $(windows_named right --onlyvisible) ]]; }
wait_for 20 logged "the break waits: the focused window is full screen" || fail "the break did not wait"
! shown || fail "a break window came up over the full-screen window"
ok "a break waits while the window manager keeps a window full screen"
wmctrl -i -r "$editor_id" -b remove,fullscreen
wait_for 10 logged "the break waited [0-9]* seconds (the focused window is full screen): it starts" ||
    fail "the break did not start when full screen ended"
wait_for 20 shown || fail "no break window"
ok "it starts when the window leaves full screen"
narv_stop
echo "e2e fullscreen: $passed passed, 0 failed"
