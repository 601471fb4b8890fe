#!/usr/bin/env bash
# Starts the real binary in a scratch home with a zero-minute work period and a
# two-second break, and reads its log: the banner, the home path, the first
# work countdown, and the break that follows with its length.
set -euo pipefail
narv=$1
source "$(dirname "$0")/common.sh"
narv_scratch_home
trap 'kill "$pid" 2>/dev/null || true; rm -rf "$home"' EXIT
cat > "$home/config/narv/narv.conf" <<'CONF'
[General]
pref.work.time=0
pref.break.time=2
pref.short.break.times=2
pref.long.break.time=0
CONF
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
"$narv" >"$home/stdout" 2>&1 &
pid=$!

wait_for 10 logged "ticktack timer start" 2 || true
kill -TERM "$pid"
wait "$pid" && status=0 || status=$?

fail_context() { echo "--- stdout"; cat "$home/stdout"; }
[[ $status -eq 0 ]] || fail "narv exited with $status after SIGTERM"
[[ $(ls "$home"/cache/narv/Logs/ | wc -l) -eq 1 ]] || fail "expected one log file"
ls "$home"/cache/narv/Logs/ | grep -Eq '^app\.narv\.Narv\.[0-9]{8}\.log$' || fail "log file name"
log | head -1 | grep -Eq '^[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}[+-][0-9]{4} info app\.narv\.Narv : ~{24}hello Narv~{34}$' \
    || fail "banner is not the first line"
log | grep -q " info app.narv.Narv : sandbox home path: $home$" || fail "home path line"
log | grep -q "ticktack timer start 0$" || fail "work countdown of 0 minutes"
log | grep -q "ticktack timer timesup for 0$" || fail "work countdown ran out"
# The first break of a round of two is short: pref.break.time seconds.
log | grep -q "ticktack timer start 2$" || fail "short break of 2 seconds"
# Records reach standard output too.
grep -q "sandbox home path: $home" "$home/stdout" || fail "stdout copy"
echo "e2e startup: 1 passed, 0 failed"
