#!/usr/bin/env bash
# One log across midnight. Narv runs in a time zone whose date moves on a day
# (a day-long jump to summer time) 15 seconds after it starts; then Narv is
# started again, which hands over and opens the settings in a window process.
# Everything, the second start's lines and the window process's included,
# goes into the file of the day Narv started; the file of a day before that
# was cleaned up at the start, and no file of the new day appears.
#
#   tests/e2e/log_across_midnight.sh path/to/narv
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

wait_for 10 logged "sandbox home path" || fail "narv did not start"
[[ $(date +%Y%m%d) == "$start_day" ]] || fail "narv took longer to start than the day lasted"
[[ ! -e $logs/app.narv.Narv.20200101.log ]] || fail "the old file was not cleaned up at the start"
in_file "hello Narv" || fail "no $file"
ok "the start picks the file of $start_day and cleans up the one of 20200101"

wait_for 30 bash -c "[[ \$(date +%Y%m%d) != $start_day ]]" || fail "the date did not move on"
timeout 10 "$narv" >/dev/null 2>&1 || fail "the second start failed"
wait_for 10 in_file " : show preferences$" || fail "the window process's record is not in $file"
in_file " : Narv is already running; asked it to show its settings$" ||
    fail "the second start's record is not in $file"
in_file " : window process [0-9]* started$" || fail "the counting process's record is not in $file"
[[ $(ls "$logs") == "app.narv.Narv.$start_day.log" ]] || fail "files in the logs folder: $(ls "$logs")"
ok "after the date moved on: the second start, the window process and Narv write to the same file"

narv_stop
in_file " : quit on signal$" || fail "the counting process's last record is not in $file"
echo "log across midnight: $passed passed, 0 failed"
