#!/usr/bin/env bash
# The real program on a private X server and session bus: a second start of
# Narv opens the window "Settings" (once, at least 480 x 400); the keyboard
# alone switches "Launch at login" on, which writes the setting and the
# autostart entry at once; Ctrl+W closes the window, the process that drew
# it ends, and the next start shows it again where it was left.
#
#   tests/e2e/preferences_window.sh path/to/narv
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
source "$here/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

narv_scratch_home
start_watcher
narv_start <<'CONF'
[General]
auto_check_update=false
CONF
fail_context() { echo "--- stdout"; cat "$home/stdout"; }
settings_windows() { windows_named Settings --onlyvisible; }
one_window() { [[ $(settings_windows | wc -l) -eq 1 ]]; }
no_window() { [[ -z $(settings_windows) ]]; }

wait_for 10 logged "sandbox home path" || fail "narv did not start"
no_window || fail "a settings window before anyone asked for one"

timeout 10 "$narv" >/dev/null 2>&1 || fail "the second start failed"
wait_for 10 one_window || fail "no settings window after a second start"
window=$(settings_windows)
eval "$(xdotool getwindowgeometry --shell "$window")"
((WIDTH >= 480 && HEIGHT >= 400)) || fail "the window is ${WIDTH}x${HEIGHT}"
xprop -id "$window" WM_NORMAL_HINTS | grep -q "minimum size: 480 by 400" ||
    fail "the window manager is not told the minimum size"
ok "a second start opens \"Settings\", ${WIDTH}x${HEIGHT}"

# The first tab has the keyboard; Tab goes past the other six to the first
# switch of the General tab, "Launch at login", and Space switches it on.
wait_for 5 bash -c "[[ \$(xdotool getwindowfocus 2>/dev/null) == $window ]]" ||
    fail "the window does not have the keyboard"
wait_for 10 settled "$(views_pid)" || fail "the window process did not settle"
xdotool key --delay 100 Tab Tab Tab Tab Tab Tab Tab space
wait_for 5 grep -q "launch_at_login=true" "$home/config/narv/narv.conf" || fail "launch_at_login was not stored"
[[ -f $home/config/autostart/app.narv.Narv.desktop ]] || fail "no autostart entry"
ok "Tab and Space switch \"Launch at login\" on: stored, and the autostart entry written"

# Moved and resized: it comes back so from the next window process.
xdotool windowsize "$window" 640 500 windowmove "$window" 1400 150
placed() { [[ $(xdotool getwindowgeometry "$window" | tr -d '\n') == *"Position: 1400,150"*"Geometry: 640x500" ]]; }
wait_for 5 placed || fail "the window did not move"
xdotool key ctrl+w
wait_for 5 no_window || fail "Ctrl+W did not close the window"
# With its last window closed and no break near, the window process goes.
wait_for 10 logged " : no window left: the window process ends$" || fail "the window process stayed"
ok "Ctrl+W closes the window, and the process that drew it ends"

timeout 10 "$narv" >/dev/null 2>&1 || fail "the third start failed"
wait_for 10 one_window || fail "the window did not come back"
grep -q "launch_at_login=true" "$home/config/narv/narv.conf" || fail "the setting did not stay"
window=$(settings_windows)
placed || fail "the window came back at $(xdotool getwindowgeometry "$window" | tr '\n' ' ')"
ok "the next start shows the window again, where and as large as it was left"

narv_stop
echo "preferences window: $passed passed, 0 failed"
