#!/usr/bin/env bash
# The settings window keeps its place and size for the session: moved and
# resized, closed with Ctrl+W, its process gone, it comes back as it was
# left, not in the middle of the screen at its first size.
#
#   tests/e2e/settings_window_place.sh path/to/narv
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
geometry() { xdotool getwindowgeometry "$1" | tr -d '\n' | sed 's/.*Position: \([0-9,]*\).*Geometry: \([0-9x]*\).*/\1 \2/'; }

wait_for 10 logged "sandbox home path" || fail "narv did not start"
timeout 10 "$narv" >/dev/null 2>&1 || fail "the second start failed"
wait_for 10 one_window || fail "no settings window after a second start"
window=$(settings_windows)
xdotool windowsize "$window" 640 500 windowmove "$window" 1400 150
wait_for 5 bash -c "[[ \"\$(xdotool getwindowgeometry $window | tr -d '\n')\" == *'Position: 1400,150'*'Geometry: 640x500' ]]" ||
    fail "the window did not move: $(geometry "$window")"
wait_for 5 bash -c "[[ \$(xdotool getwindowfocus 2>/dev/null) == $window ]]" ||
    fail "the window does not have the keyboard"
xdotool key ctrl+w
wait_for 5 no_window || fail "Ctrl+W did not close the window"
wait_for 10 logged " : no window left: the window process ends$" || fail "the window process stayed"

timeout 10 "$narv" >/dev/null 2>&1 || fail "the third start failed"
wait_for 10 one_window || fail "the window did not come back"
window=$(settings_windows)
[[ $(geometry "$window") == "1400,150 640x500" ]] || fail "the window came back at $(geometry "$window")"
ok "moved and resized, closed, its process gone: the window comes back as it was left"

narv_stop
echo "settings window place: $passed passed, 0 failed"
