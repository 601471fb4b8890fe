#!/usr/bin/env bash
# The real program on a private X server with two monitors (tests/run-on-xvfb)
# and a private session bus: input made with xdotool reaches it as XInput 2
# raw events, and the kinds the idle stop watches restart work that a screen
# lock stopped, the others do not. Motion, left and right clicks and a Shift
# press count; a letter key, the wheel, the middle button and a drag with it
# do not. The locks are ActiveChanged signals sent with dbus-send. (The
# five-minute wait itself is tested with stepped time in tst_systemevents.)
#
#   tests/e2e/events.sh path/to/narv
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
source "$here/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

# The defaults: stop after five idle minutes, stop on lock, restart on unlock.
unset XDG_SESSION_TYPE XDG_SESSION_ID
narv_start <<'CONF'
[General]
pref.work.time=25
CONF
# Waits up to $1 seconds for the count of log lines matching $2 to exceed $3.
wait_count() { wait_for "$1" logged "$2" $(($3 + 1)); }
# Locks (true) or unlocks (false) the screen and waits until narv has seen it.
screensaver() {
    local line=" : screen $([[ $1 == true ]] && echo locked || echo unlocked)$" before
    before=$(count "$line")
    dbus-send --session --type=signal /org/gnome/ScreenSaver org.gnome.ScreenSaver.ActiveChanged \
        "boolean:$1"
    wait_count 5 "$line" "$before" || fail "the screen did not change to $1"
}
lock() { screensaver true; }
unlock() { screensaver false; }
restarts() { count " : mouse activity, work starts again$"; }

# With work stopped by a lock, the input ($3...) restarts it ($1 counts) or
# not ($1 does_not_count). Each case ends once narv has read every event of
# its input: a key's release or a button's may come a batch after its press,
# once the source's reading rests no more, and would otherwise count in the
# next case.
input() {
    local kind=$1 what=$2 before
    shift 2
    lock
    before=$(restarts)
    xdotool "$@"
    [[ $kind == does_not_count ]] || wait_count 10 " : mouse activity, work starts again$" "$before" ||
        fail "$what did not count"
    wait_for 10 settled || fail "narv did not settle after $what"
    [[ $kind == counts || $(restarts) -eq $before ]] || fail "$what counted"
    unlock
    ok "$what ${kind//_/ }"
}

wait_count 20 " : sandbox home path: " 0 || fail "narv did not start"
wait_for 10 settled || fail "narv did not settle after start"
log | grep -q " : mouse activity: XInput 2 raw events on $DISPLAY$" || fail "XInput 2 is not used"
ok "activity comes from XInput 2 raw events on its own connection"

input counts "mouse motion" mousemove_relative 7 5
input counts "a left click" click 1
input counts "a right click" click 3
input counts "a Shift press" key shift
input counts "a Control press" key ctrl
input does_not_count "a letter key" key a
input does_not_count "the wheel" click 4 click 5
input does_not_count "a middle click" click 2
input does_not_count "a drag with the middle button" mousedown 2 mousemove_relative 9 9 mouseup 2
input counts "motion after the middle button is let go" mousemove_relative -- -9 -9

narv_stop
echo "e2e events: $passed passed, 0 failed"
