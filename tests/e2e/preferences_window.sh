#!/usr/bin/env bash
# The real program on a private X server and session bus: a second start of
# Narv opens the window "Settings" (once, at least 480 x 400, with the
# keyboard); Ctrl+W closes the window, the process that drew it ends, and
# the next start shows it again where it was left.
# Meanwhile midnight passes: Narv runs in a time zone whose date moves on a
# day (a day-long jump to summer time) 15 seconds after the start. Every
# record, the later starts' and the window process's included, goes into the
# file of the day Narv started; a day's file from before was cleaned up at
# the start, and no file of the new day appears.
#
#   tests/e2e/preferences_window.sh path/to/narv
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
source "$here/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

# Standard time 12 hours behind UTC, summer time 12 hours ahead: the switch,
# `seconds` from now, moves the clock on by a whole day.
day_jump_in() {
    local jump=$(($(date +%s) + $1))
    local at=$((jump - 43200)) # the switch is given in standard time
    local day=$((10#$(date -u -d "@$at" +%j) - 1)) time
    time=$(date -u -d "@$at" +%H:%M:%S)
    echo "NRA12NRB-12,$day/$time,$(((day + 2) % 365))/$time"
}

narv_scratch_home
start_watcher
logs=$home/cache/narv/Logs
mkdir -p "$logs"
echo "old" >"$logs/app.narv.Narv.20200101.log"
TZ=$(day_jump_in 15)
export TZ
start_day=$(date +%Y%m%d)
narv_start <<'CONF'
[General]
auto_check_update=false
CONF
fail_context() { echo "--- files"; ls -l "$logs"; echo "--- stdout"; cat "$home/stdout"; }
file=$logs/app.narv.Narv.$start_day.log
in_file() { grep -qs -- "$1" "$file"; }
settings_windows() { windows_named Settings --onlyvisible; }
one_window() { [[ $(settings_windows | wc -l) -eq 1 ]]; }
no_window() { [[ -z $(settings_windows) ]]; }

wait_for 10 logged "sandbox home path" || fail "narv did not start"
[[ $(date +%Y%m%d) == "$start_day" ]] || fail "narv took longer to start than the day lasted"
[[ ! -e $logs/app.narv.Narv.20200101.log ]] || fail "the old file was not cleaned up at the start"
in_file "hello Narv" || fail "no $file"
no_window || fail "a settings window before anyone asked for one"

timeout 10 "$narv" >/dev/null 2>&1 || fail "the second start failed"
wait_for 10 one_window || fail "no settings window after a second start"
window=$(settings_windows)
eval "$(xdotool getwindowgeometry --shell "$window")"
((WIDTH >= 480 && HEIGHT >= 400)) || fail "the window is ${WIDTH}x${HEIGHT}"
xprop -id "$window" WM_NORMAL_HINTS | grep -q "minimum size: 480 by 400" ||
    fail "the window manager is not told the minimum size"
wait_for 5 bash -c "[[ \$(xdotool getwindowfocus 2>/dev/null) == $window ]]" ||
    fail "the window does not have the keyboard"
wait_for 10 settled "$(views_pid)" || fail "the window process did not settle"
ok "a second start opens \"Settings\", ${WIDTH}x${HEIGHT}, with the keyboard"

# Moved and resized: it comes back so from the next window process.
xdotool windowsize "$window" 640 500 windowmove "$window" 1400 150
placed() { [[ $(xdotool getwindowgeometry "$window" | tr -d '\n') == *"Position: 1400,150"*"Geometry: 640x500" ]]; }
wait_for 5 placed || fail "the window did not move"
xdotool key ctrl+w
wait_for 5 no_window || fail "Ctrl+W did not close the window"
# With its last window closed and no break near, the window process goes.
wait_for 10 logged " : no window left: the window process ends$" || fail "the window process stayed"
ok "Ctrl+W closes the window, and the process that drew it ends"

wait_for 30 bash -c "[[ \$(date +%Y%m%d) != $start_day ]]" || fail "the date did not move on"
timeout 10 "$narv" >/dev/null 2>&1 || fail "the third start failed"
wait_for 10 one_window || fail "the window did not come back"
window=$(settings_windows)
placed || fail "the window came back at $(xdotool getwindowgeometry "$window" | tr '\n' ' ')"
ok "the next start shows the window again, where and as large as it was left"

narv_stop
in_file " : Narv is already running; asked it to show its settings$" || fail "the later starts' records are not in $file"
[[ $(grep -c " : show preferences$" "$file") -eq 2 ]] || fail "the window process's records are not in $file"
in_file " : quit on signal$" || fail "the counting process's last record is not in $file"
[[ $(ls "$logs") == "app.narv.Narv.$start_day.log" ]] || fail "files in the logs folder: $(ls "$logs")"
ok "across midnight, every process writes to the file of the day Narv started"
echo "preferences window: $passed passed, 0 failed"
