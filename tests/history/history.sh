#!/usr/bin/env bash
# The history as the real program keeps it (tests/history/history.sh narv): a
# row for each kind of event in a short run, read back by `narv history --csv`;
# a damaged file set aside and a folder that cannot be made, each said once
# while Narv counts on.
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
source "$here/../e2e/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

narv_scratch_home
export XDG_DATA_HOME=$home/data
db=$XDG_DATA_HOME/narv/history.sqlite
unset XDG_SESSION_TYPE XDG_SESSION_ID
# Exit code in $code, standard output in $out.
run() {
    code=0
    out=$(timeout 20 "$narv" "$@" 2>"$home/err") || code=$?
}
state() { run status && [[ $out == "$1" ]]; }
working() { run status && [[ $out =~ ^2[45]:[0-5][0-9]$ ]]; }
screensaver() {
    dbus-send --session --type=signal /org/gnome/ScreenSaver org.gnome.ScreenSaver.ActiveChanged "boolean:$1"
}
start() {
    rm -rf "$home/cache/narv/Logs"
    narv_start <<CONF
[General]
pref.history.enable=true
pref.work.time=25
pref.break.time=2
pref.short.break.times=2
pref.long.break.time=1
auto_check_update=false
stop_timer_after_mouse_stop=false
pref.water.finished=0
CONF
    wait_for 15 logged "control interface on /app/narv/Narv/Control" || fail "no control interface"
}
# A short break that runs out by itself, and work after it.
short_break() {
    run break
    wait_for 5 logged "ticktack timer start 2$" || fail "no short break"
    wait_for 15 logged "ticktack timer start 1500" 2 || fail "the break did not end by itself"
}

start_watcher
start
short_break
run break
wait_for 5 logged "ticktack timer start 60$" || fail "the second break is not the long one"
run skip
wait_for 5 working || fail "skip did not start work"
run pause
wait_for 5 state paused || fail "not paused"
run resume
wait_for 5 working || fail "not working after resume"
screensaver true
wait_for 5 state stopped || fail "the lock did not stop work"
screensaver false
wait_for 5 working || fail "the unlock did not start work"
setting pref.water.finished 250
tally() {
    dbus-send --session --print-reply --dest=app.narv.Narv /app/narv/Narv/Control org.freedesktop.DBus.Properties.Get \
        string:app.narv.Narv.Control string:WaterTally | grep -q "int64 250"
}
wait_for 5 tally || fail "the drink did not arrive"
narv_stop

run history --csv
[[ $code -eq 0 ]] || fail "history --csv: exit $code, $(cat "$home/err")"
[[ $(grep -c "^work," <<<"$out") -ge 4 ]] || fail "fewer than four work periods: $out"
for row in "^break,[^,]*,[1-5],2,short,countdown," "^break,.*,60,long,skip," "^pause,.*,manual," \
    "^pause,.*,lock," "^drink,.*,250$"; do
    grep -q "$row" <<<"$out" || fail "no $row in: $out"
done
run history --csv --since "$(date -d tomorrow +%F)"
[[ $code -eq 0 && $out == kind,* && $(wc -l <<<"$out") -eq 1 ]] || fail "--since tomorrow kept rows: $out"
ok "every kind of row recorded and exported, from a given day on"

# A damaged file: kept aside, said once, and a new history begun.
rm -f "$db-wal" "$db-shm"
printf 'not a database, but somebody%.0s' {1..200} >"$db"
cp "$db" "$home/damaged"
start
expected_errors="history: .* is damaged"
wait_for 5 logged "history: .* is damaged .*; kept as $db.damaged-" || fail "the damage is not in the log"
[[ $(count "history: ") -eq 2 ]] || fail "more than one line about the damage"
cmp -s "$home/damaged" "$db".damaged-* || fail "the damaged file is not kept as it was"
short_break
narv_stop
run history --csv
grep -q "^break,.*,short,countdown," <<<"$out" || fail "the new history has no break: $out"
ok "a damaged file is set aside and a new history begun"

# A folder that cannot be made: said once; Narv counts as before.
rm -rf "$XDG_DATA_HOME/narv"
echo "in the way" >"$XDG_DATA_HOME/narv"
start
expected_errors="history: cannot make the folder"
wait_for 5 logged "history: cannot make the folder of $db" || fail "the failure is not in the log"
short_break
[[ $(count "history: cannot") -eq 1 ]] || fail "said more than once"
narv_stop
ok "a history that cannot be written leaves the counting alone"
echo "e2e history: all passed"
