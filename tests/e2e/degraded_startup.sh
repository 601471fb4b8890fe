#!/usr/bin/env bash
# Narv on desktops that lack something: no session bus, no tray host, a
# settings folder it cannot write, a Wayland session without X11. Each time it
# must keep running (counting down, and on Wayland showing and ending a
# break), and say what it lacks once, not again and again.
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
source "$here/common.sh"
passed=0
failed=0

# Starts narv with the given env, waits for $2 in the log (or $1 seconds) and
# for narv to settle (or 10 seconds), and stops it.
run_narv() {
    local seconds=$1 wanted=$2
    shift 2
    # Its own process group, so that a wrapper (dbus-run-session) and narv
    # under it go together.
    setsid env "$@" "$narv" >"$home/stdout" 2>&1 &
    local pid=$!
    pid= wait_for "$seconds" logged "$wanted" || true
    local counting
    counting=$(pgrep -o -g "$pid" -x narv || true)
    [[ -z $counting ]] || pid= wait_for 10 settled "$counting" || true
    alive=0
    ! pgrep -g "$pid" -f "$narv" >/dev/null || alive=1
    kill -TERM -- "-$pid" 2>/dev/null || true
    wait "$pid" || true
    pid= wait_for 5 bash -c "! pgrep -g $pid >/dev/null" || true
    kill -KILL -- "-$pid" 2>/dev/null || true
}

check() {
    local name=$1
    shift
    local problems=()
    [[ $alive -eq 1 ]] || problems+=("narv did not keep running")
    logged "ticktack timer start" || problems+=("no countdown")
    # A break that comes round again (work of zero minutes) is there at least
    # once; how often depends on how long the run took.
    [[ -z ${breaks:-} ]] || logged "$breaks" || problems+=("no \"$breaks\"")
    for line in "$@"; do
        local n
        n=$(count "$line")
        [[ $n -eq 1 ]] || problems+=("\"$line\" logged $n times, not once")
    done
    # Nothing it lacks is reported twice.
    local repeated
    repeated=$(log | grep -E ' (notice|warning) ' | cut -d' ' -f2- | sort | uniq -d)
    [[ -z $repeated ]] || problems+=("repeated: $repeated")
    if ((${#problems[@]} == 0)); then
        echo "ok: $name"
        passed=$((passed + 1))
    else
        printf 'FAIL: %s: %s\n' "$name" "${problems[*]}"
        log | sed 's/^/    /'
        failed=$((failed + 1))
    fi
}

common=(QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8)

narv_scratch_home
run_narv 20 "sandbox home path" -u DBUS_SESSION_BUS_ADDRESS -u DISPLAY -u WAYLAND_DISPLAY "${common[@]}"
check "no session bus" "no session bus: one instance is kept by a lock file" \
    "the status item can only be a classic tray icon" \
    "screen lock: no session bus"
rm -rf "$home"

narv_scratch_home
rm -rf "$home/config" && touch "$home/config" # a file where the folder should be
run_narv 20 "sandbox home path" -u DISPLAY -u WAYLAND_DISPLAY "${common[@]}" dbus-run-session --
check "no tray host, settings folder not writable" "no StatusNotifierWatcher and no system tray" \
    "settings: cannot write"
rm -rf "$home"

if command -v weston >/dev/null; then
    narv_scratch_home
    cat >"$home/config/narv/narv.conf" <<'CONF'
[General]
pref.work.time=0
pref.break.time=1
auto_check_update=false
CONF
    weston --backend=headless-backend.so --socket=wayland-narv --idle-time=0 \
        >"$home/weston.log" 2>&1 &
    weston=$!
    wait_for 5 test -S "$XDG_RUNTIME_DIR/wayland-narv" || true
    # weston's headless backend has no seat, and Qt 6.4's Wayland input context
    # then crashes laying out text; a desktop session always has one. The
    # compose input method keeps that out of the way.
    run_narv 30 "skip break view" -u DISPLAY WAYLAND_DISPLAY=wayland-narv QT_QPA_PLATFORM=wayland QT_IM_MODULE=compose \
        XDG_SESSION_TYPE=wayland LC_ALL=C.UTF-8 dbus-run-session --
    kill "$weston" 2>/dev/null || true
    wait "$weston" 2>/dev/null || true
    breaks="skip break view" check "Wayland without X11" \
        "mouse activity: the Wayland compositor does not offer ext-idle-notify-v1"
    rm -rf "$home"
else
    echo "skipped: Wayland without X11 (weston is not installed)"
fi

echo "degraded start-up: $passed passed, $failed failed"
[[ $failed -eq 0 ]]
