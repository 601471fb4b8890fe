#!/usr/bin/env bash
# The `narv` commands against the real program on a private session bus:
# with no Narv running (exit codes, one line on standard error, nothing
# started), then against a running one: status in its three forms, pause,
# resume and toggle, a break started and
# skipped, a forced long break that refuses the skip, the settings, and
# `status --follow` printing the seconds and ending with Narv.
set -euo pipefail
narv=$(realpath "$1")
source "$(dirname "$0")/common.sh"
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}

# Runs `narv "$@"`: its exit code in $code, its output in $out and $err.
run() {
    code=0
    out=$(timeout 20 "$narv" "$@" 2>"$home/err") || code=$?
    err=$(cat "$home/err")
}
expect() { # code, command...
    local want=$1
    shift
    run "$@"
    [[ $code -eq $want ]] || fail "narv $*: exit $code, not $want (stderr: $err)"
}

narv_scratch_home
passed=0
for command in status "status --json" "status --follow" pause resume toggle skip break settings; do
    # shellcheck disable=SC2086
    expect 1 $command
    [[ $err == "narv: Narv is not running" && -z $out ]] || fail "narv $command without Narv: \"$out\" \"$err\""
done
for bad in bogus "status --bogus" "pause now" "--version please"; do
    # shellcheck disable=SC2086
    expect 2 $bad
    grep -q "^Usage: narv" <<<"$err" || fail "narv $bad: no usage"
done
expect 0 --help
grep -q "status \[--json\] \[--follow\]" <<<"$out" || fail "--help: $out"
expect 0 --version
[[ $out =~ ^Narv\ [0-9]+\.[0-9]+\.[0-9]+$ ]] || fail "--version: $out"
[[ -z $(log) ]] || fail "a command without Narv wrote a log"
ok "no Narv: exit 1 and one line; bad arguments: usage and exit 2"

# Every second break is long, and may not be skipped; work is long enough
# not to end during the test.
start_watcher
narv_start <<'CONF'
[General]
pref.work.time=25
pref.break.time=60
pref.short.break.times=2
pref.long.break.time=2
force_long_break=true
auto_check_update=false
CONF
wait_for 15 logged "control interface on /app/narv/Narv/Control" || fail "no control interface"

expect 0 status
[[ $out =~ ^2[45]:[0-5][0-9]$ ]] || fail "status while working: $out"
expect 0 status --json
python3 - "$out" <<'PY' || fail "status --json: $out"
import json, re, sys
s = json.loads(sys.argv[1])
assert set(s) == {"text", "tooltip", "class", "percentage"}, s
assert s["class"] == "working" and re.fullmatch(r"2[45]:[0-5]\d", s["text"]), s
assert 90 <= s["percentage"] <= 100 and "Next break at" in s["tooltip"], s
PY
ok "status and status --json while working"

"$narv" status --follow >"$home/follow" 2>&1 &
follower=$!
followed() { [[ $(wc -l <"$home/follow") -ge $1 ]]; }
wait_for 10 followed 3 || fail "status --follow printed no lines a second"

state() { run status && [[ $out == "$1" ]]; }
working() { run status && [[ $out =~ ^2[45]:[0-5][0-9]$ ]]; }
expect 0 pause
wait_for 5 state paused || fail "not paused: $out"
logged "control: pause" || fail "pause is not in the log"
wait_for 5 grep -qx paused "$home/follow" || fail "status --follow did not see the pause"
expect 0 toggle
working || fail "toggle did not start work: $out"
starts=$(count "ticktack timer start")
expect 0 resume
[[ $(count "ticktack timer start") -eq $starts ]] || fail "resume restarted a running countdown"
expect 0 toggle
wait_for 5 state paused || fail "toggle did not pause: $out"
expect 0 resume
wait_for 5 working || fail "resume did not start work: $out"
ok "pause, toggle and resume"

expect 1 skip
[[ $err == "narv: no break to skip" ]] || fail "skip while working: $err"
expect 0 break
wait_for 5 state break || fail "break did not start a break: $out"
logged "ticktack timer start 60" || fail "no short break in the log"
expect 0 skip
wait_for 5 logged "control: skip the break" || fail "skip is not in the log"
wait_for 5 working || fail "skip did not start work: $out"
expect 0 break
wait_for 5 logged "ticktack timer start 120" || fail "the second break is not the long one"
expect 1 skip
[[ $err == "narv: this break may not be skipped" ]] || fail "skip of a forced break: $err"
expect 1 break
[[ $err == "narv: a break is on already" ]] || fail "break during a break: $err"
expect 0 status --json
python3 -c 'import json, sys; s = json.loads(sys.argv[1]); assert s["class"] == "break" and s["text"] == "break" and "may not be skipped" in s["tooltip"], s' "$out" ||
    fail "status --json on a forced break: $out"
ok "break and skip; a forced long break refuses the skip"

expect 0 settings
wait_for 5 logged "control: show the settings" || fail "settings is not in the log"
ok "settings"

[[ $(count "sandbox home path") -eq 1 ]] || fail "a command started a second Narv"
narv_stop
status=0
timeout 10 tail --pid="$follower" -f /dev/null || fail "status --follow outlived Narv"
wait "$follower" || status=$?
[[ $status -eq 0 ]] || fail "status --follow exited with $status"
# Working lines, one a second, counting down.
python3 - "$home/follow" <<'PY' || fail "status --follow: $(head -5 "$home/follow")"
import sys
lines = open(sys.argv[1]).read().split("\n")
seconds = [int(l[:2]) * 60 + int(l[3:]) for l in lines[:3]]
assert seconds[0] - seconds[1] == 1 and seconds[1] - seconds[2] == 1, seconds
PY
ok "status --follow: a line a second, ended with Narv"
echo "control commands: $passed passed, 0 failed"
