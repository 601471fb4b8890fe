#!/usr/bin/env bash
# The real program on a private X server and session bus, with dunst as the
# notification server, openbox as the window manager and gnome-session as the
# session manager: a break owed while an application inhibits idleness
# (gnome-session-inhibit) and then while the focused window is full screen
# (made so the way a desktop does it: wmctrl asks openbox) starts when neither
# holds, and asks for its sound as it starts; "Postpone" clicked on the
# break screen moves the break a minute on; the heads-up comes at once (60
# seconds before), offers "Skip this break" but no second postpone, and its skip
# is taken; "Pause until tomorrow" from the menu withdraws the heads-up, the
# status item says until when, and at midnight, in real time (the time zone is
# set so that midnight comes a minute after the start), the pause ends by
# itself and work starts again.
#
#   tests/interruptions/e2e_interruptions.sh path/to/narv
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")/../e2e" && pwd)
source "$here/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

narv_scratch_home
start_watcher
offset=$(((86400 - 60 - $(date -u +%s) % 86400) % 86400))
export TZ=$(printf 'NRV-%02d:%02d:%02d' $((offset / 3600)) $((offset / 60 % 60)) $((offset % 60)))
start_dunst
openbox --config-file /dev/null >"$home/openbox.out" 2>&1 &
wm=$!
wm_up() { xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q "window id"; }
wait_for 20 wm_up || fail "openbox did not come up"
# An editor: a window that takes the keyboard focus.
xedit >/dev/null 2>&1 &
editor=$!
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
# GNOME's session manager on a system bus of the test's own, and an application
# that inhibits idleness through it, as one in a call does.
system_bus=$(dbus-daemon --session --address="unix:path=$home/system_bus" --fork --print-pid)
mkdir -p "$home/share/gnome-session/sessions" "$home/autostart"
printf '[GNOME Session]\nName=Narv test\nRequiredComponents=\n' >"$home/share/gnome-session/sessions/narv.session"
DBUS_SYSTEM_BUS_ADDRESS=unix:path=$home/system_bus XDG_DATA_DIRS=$home/share:/usr/share GSETTINGS_BACKEND=memory \
    /usr/libexec/gnome-session-binary --builtin --session=narv --autostart="$home/autostart" >"$home/session.out" 2>&1 &
session=$!
inhibited() {
    gdbus call --session -d org.gnome.SessionManager -o /org/gnome/SessionManager \
        -m org.gnome.SessionManager.IsInhibited 8 2>/dev/null | grep -q "$1"
}
wait_for 20 inhibited false || fail "gnome-session did not come up: $(tail -2 "$home/session.out")"
gnome-session-inhibit --inhibit idle --reason "a call" --inhibit-only &
call=$!
wait_for 10 inhibited true || fail "gnome-session-inhibit did not inhibit idleness"

narv_start <<'CONF'
[General]
pref.work.time=0
pref.break.time=3000
pref.postpone.minutes=1
pref.postpone.limit=1
pref.heads.up.seconds=60
pref.pause.for.enable=true
pref.break.sounds=true
pref.defer.when.busy=true
auto_check_update=false
CONF
# gnome-session first, and waited for: it removes its ICE socket from /tmp as it ends.
trap 'kill "$session" 2>/dev/null; wait "$session"; kill "$dunst" "$editor" "$wm" "$call" "$system_bus" 2>/dev/null; [[ -n $pid ]] && kill "$pid" 2>/dev/null; kill "$watcher" 2>/dev/null; rm -rf "$home"' EXIT
gone() { [[ -z $(windows_named right --onlyvisible) ]]; }
shown() { [[ -n $(windows_named right --onlyvisible) ]]; }

wait_for 20 logged "the break waits: an application inhibits idleness (GNOME session)" ||
    fail "the break did not wait for the inhibitor"
kill "$call"
wait_for 10 logged "the break waits: the focused window is full screen" || fail "the break did not wait"
! shown || fail "a break window came up over the full-screen window"
wmctrl -i -r "$editor_id" -b remove,fullscreen
wait_for 10 logged "the break waited [0-9]* seconds (the focused window is full screen): it starts" ||
    fail "the break did not start when full screen ended"
wait_for 20 shown || fail "no break window"
# No sound card here: libcanberra is asked, and says why it cannot play.
wait_for 5 logged 'sound.*"alarm-clock-elapsed"' || fail "no sound asked for at the break's start"
ok "a break waits out an inhibitor and a full-screen window, says so, and asks for its sound as it starts"

# "Postpone" sits 48 px right of the Skip capsule: where it is drawn, the
# blue text's box (its label's, with the promotion's) reaches past the capsule.
postpone_at() {
    xwd -root -silent >"$home/shot.xwd"
    local blue cx cy cw tx tw
    blue=$(python3 "$here/xshot.py" blue "$home/shot.xwd" 1280 0 1280 800)
    read -r _ cx cy cw _ < <(grep capsule <<<"$blue") || return 1
    read -r _ tx _ tw _ < <(grep text <<<"$blue") || return 1
    ((tx + tw / 2 > cx + cw / 2 + 48)) || return 1
    echo "$((cx + cw / 2 + 60)) $cy"
}
wait_for 10 postpone_at >/dev/null || fail "no Postpone beside Skip"
read -r x y < <(postpone_at)
xdotool mousemove "$x" "$y" click 1
wait_for 5 logged "break postponed by 1 minutes (1 of 1 in a row)" || fail "Postpone did not postpone"
wait_for 10 gone || fail "the break windows stay after Postpone"
ok "Postpone moves the break a minute on"

wait_for 10 notes 1 || fail "no heads-up"
dunstctl context
wait_for 10 logged "the coming break is skipped" || fail "Skip this break did nothing"
! grep -q "Postpone" "$home/actions" || fail "a second postpone was offered"
ok "the heads-up offers Skip this break, no second postpone, and skips"

# Postponed again (the count starts afresh with work), then paused until midnight.
wait_for 20 shown || fail "no break after the skip"
read -r x y < <(postpone_at)
xdotool mousemove "$x" "$y" click 1
wait_for 10 notes 1 || fail "no heads-up after the second postpone"
menu_click label '"Pause until tomorrow"' || fail "no Pause until tomorrow in the menu"
wait_for 10 notes 0 || fail "the heads-up stays through the pause"
logged "paused until $(date -d tomorrow +%F)T00:00:00" || fail "the pause does not end at midnight"
says_until() { [[ $(item_property XAyatanaLabel) == "until $(LC_ALL=C date -d tomorrow +%a) 00:00" ]]; }
wait_for 5 says_until || fail "the status item says \"$(item_property XAyatanaLabel)\", not until when"
ok "pausing until tomorrow withdraws the heads-up; the status item says until when"
wait_for 90 logged "the pause is over" || fail "the pause did not end at midnight"
wait_for 20 shown || fail "no work period and break after the pause"
ok "the pause ends by itself at midnight, and work (of no minutes here) and a break follow"

narv_stop
echo "e2e interruptions: $passed passed, 0 failed"
