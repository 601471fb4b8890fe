#!/usr/bin/env bash
# Starts Narv, then starts it again: the second process must ask the first to
# show its settings and exit 0 without counting down itself. Runs once on the
# session bus it is given and once with no session bus at all, there also
# after a first Narv that was killed and left its lock and socket behind.
set -euo pipefail
narv=$1
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
fail() { echo "FAIL: $*"; [[ -n ${home:-} ]] && cat "$home"/cache/narv/Logs/*.log; exit 1; }

run_case() {
    local name=$1 expect=${2:-} crashed=${3:-}
    home=$(mktemp -d)
    export HOME=$home XDG_CONFIG_HOME=$home/config XDG_CACHE_HOME=$home/cache XDG_RUNTIME_DIR=$home/run
    mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
    log() { cat "$home"/cache/narv/Logs/*.log 2>/dev/null || true; }

    if [[ -n $crashed ]]; then
        "$narv" >/dev/null 2>&1 &
        local dead=$!
        for _ in $(seq 1 100); do
            log | grep -q "sandbox home path" && break
            sleep 0.1
        done
        kill -KILL "$dead"
        wait "$dead" 2>/dev/null || true
        [[ -n $(find "$XDG_RUNTIME_DIR" -name "*.socket") ]] || fail "$name: the killed Narv left no socket"
        rm -f "$home"/cache/narv/Logs/*.log
    fi

    "$narv" >/dev/null 2>&1 &
    local first=$!
    for _ in $(seq 1 100); do
        log | grep -q "sandbox home path" && break
        sleep 0.1
    done
    log | grep -q "sandbox home path" || fail "$name: first start did not come up"

    local status=0
    timeout 10 "$narv" >/dev/null 2>&1 || status=$?
    [[ $status -eq 0 ]] || fail "$name: second start exited with $status"
    kill -0 "$first" 2>/dev/null || fail "$name: the first process died"
    for _ in $(seq 1 50); do
        log | grep -q "another start of Narv: showing the settings" && break
        sleep 0.1
    done
    log | grep -q "another start of Narv: showing the settings" || fail "$name: first process was not asked"
    log | grep -q "Narv is already running; asked it to show its settings" || fail "$name: second start did not say so"
    [[ $(log | grep -c "ticktack timer start") -eq 1 ]] || fail "$name: two countdowns ran"
    [[ -z $expect ]] || log | grep -q "$expect" || fail "$name: expected \"$expect\" in the log"

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
