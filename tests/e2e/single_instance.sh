#!/usr/bin/env bash
# Starts Narv, then starts it again: the second process must ask the first to
# show its settings and exit 0 without counting down itself. Runs once on the
# session bus it is given and once with no session bus at all, there also
# after a first Narv that was killed and left its lock and socket behind.
set -euo pipefail
narv=$1
source "$(dirname "$0")/common.sh"
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}

run_case() {
    local name=$1 expect=${2:-} crashed=${3:-}
    narv_scratch_home
    pid=

    if [[ -n $crashed ]]; then
        "$narv" >/dev/null 2>&1 &
        local dead=$!
        wait_for 10 logged "sandbox home path" || true
        kill -KILL "$dead"
        wait "$dead" 2>/dev/null || true
        [[ -n $(find "$XDG_RUNTIME_DIR" -name "*.socket") ]] || fail "$name: the killed Narv left no socket"
        rm -f "$home"/cache/narv/Logs/*.log
    fi

    "$narv" >/dev/null 2>&1 &
    local first=$!
    wait_for 10 logged "sandbox home path" || fail "$name: first start did not come up"

    local status=0
    timeout 10 "$narv" >/dev/null 2>&1 || status=$?
    [[ $status -eq 0 ]] || fail "$name: second start exited with $status"
    kill -0 "$first" 2>/dev/null || fail "$name: the first process died"
    wait_for 5 logged "another start of Narv: showing the settings" || fail "$name: first process was not asked"
    logged "Narv is already running; asked it to show its settings" || fail "$name: second start did not say so"
    [[ $(count "ticktack timer start") -eq 1 ]] || fail "$name: two countdowns ran"
    [[ -z $expect ]] || logged "$expect" || fail "$name: expected \"$expect\" in the log"

    kill -TERM "$first"
    wait "$first" || fail "$name: first process did not end cleanly"
    [[ -z $(find "$XDG_RUNTIME_DIR" -name "*.socket") ]] || fail "$name: the socket outlived Narv"
    rm -rf "$home"
    echo "$name: passed"
}

run_case "session bus"
(
    unset DBUS_SESSION_BUS_ADDRESS DISPLAY
    run_case "no session bus" "no session bus: one instance is kept by a lock file"
    run_case "no session bus, after a crash" "no session bus: one instance is kept by a lock file" crashed
)
echo "single instance: 3 passed, 0 failed"
