#!/usr/bin/env bash
# The real program on a private X server with two monitors (tests/run-on-xvfb)
# and a private session bus: a break opens exactly one window per monitor with
# that monitor's geometry, above, sticky, out of taskbar and pager, with the
# keyboard focus; "Skip" clicked with xdotool ends the break and work starts
# again; the next break reuses the same windows; a forced long break has no
# "Skip", and its water reminder promotion ends it; at the end of a break the
# windows go, and are kept for the next one without their backing stores.
#
#   tests/e2e/break_windows.sh path/to/narv
#   NARV_SCREENSHOT=out.png tests/e2e/break_windows.sh path/to/narv   also keeps
#                                                  a screenshot of the first break
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
source "$here/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

narv_scratch_home
pid=
trap '[[ -n $pid ]] && kill "$pid" 2>/dev/null; rm -rf "$home"' EXIT
# Work of zero minutes: a break one second after start and one second after
# each break. Every second break is long (two minutes) and may not be
# skipped. The prompt
# is typed with backslash-n, as in the settings window (\\ in the INI file).
# Nothing is to leave the machine: no update check.
cat >"$home/config/narv/narv.conf" <<'CONF'
[General]
pref.work.time=0
pref.break.time=50
pref.short.break.times=2
pref.long.break.time=2
force_long_break=true
custom_break_prompt=true
break_prompt_text=Stand up and stretch.\\nLook at something far away.
auto_check_update=false
CONF
export LC_ALL=C.UTF-8
"$narv" >"$home/stdout" 2>&1 &
pid=$!

passed=0
log() { cat "$home"/cache/narv/Logs/app.narv.Narv.*.log 2>/dev/null || true; }
fail() {
    echo "FAIL: $*"
    echo "--- windows"; xwininfo -root -tree | grep -E '"(left|right)' || true
    echo "--- log"; log | tail -40
    exit 1
}
ok() { passed=$((passed + 1)); echo "ok: $*"; }
# Waits up to $1 seconds for the command after it to succeed.
wait_for() {
    local seconds=$1
    shift
    for _ in $(seq 1 $((seconds * 10))); do
        "$@" && return 0
        kill -0 "$pid" 2>/dev/null || fail "narv is gone"
        sleep 0.1
    done
    return 1
}
count() { log | grep -c -- "$1" || true; }
# At least $1 lines of the log match $2.
logged() { [[ $(count "$2") -ge $1 ]]; }
# Edits the settings file under the running program, as another program may.
setting() { sed -i "s/^$1=.*/$1=$2/" "$home/config/narv/narv.conf"; }
# Window ids of the break windows (their title is the monitor's name).
windows_of() { xdotool search ${2:-} --name "^$1( |\$)" 2>/dev/null | sort || true; }
shown() { [[ $(windows_of left --onlyvisible | wc -l) -eq 1 && $(windows_of right --onlyvisible | wc -l) -eq 1 ]]; }
shot() { xwd -root -silent >"$home/shot.xwd"; }
# "capsule X Y W H" / "text X Y W H" for the blue things on a monitor.
blue_on() {
    case $1 in
    left) python3 "$here/xshot.py" blue "$home/shot.xwd" 0 0 1280 800 ;;
    right) python3 "$here/xshot.py" blue "$home/shot.xwd" 1280 0 1280 800 ;;
    esac
}

# --- the first break: one window per monitor
wait_for 20 shown || fail "no break window on each monitor"
left=$(windows_of left)
right=$(windows_of right)
[[ $(wc -w <<<"$left") -eq 1 && $(wc -w <<<"$right") -eq 1 ]] ||
    fail "expected exactly one window per monitor, got left: $left right: $right"
ok "one break window per monitor"

check_window() { # id x y w h
    local info state
    info=$(xwininfo -id "$1")
    grep -q "Absolute upper-left X:  $2$" <<<"$info" || fail "$1: x is not $2"
    grep -q "Absolute upper-left Y:  $3$" <<<"$info" || fail "$1: y is not $3"
    grep -q "Width: $4$" <<<"$info" || fail "$1: width is not $4"
    grep -q "Height: $5$" <<<"$info" || fail "$1: height is not $5"
    grep -q "Map State: IsViewable" <<<"$info" || fail "$1: not viewable"
    state=$(xprop -id "$1" _NET_WM_STATE _NET_WM_DESKTOP _MOTIF_WM_HINTS)
    for atom in ABOVE STICKY SKIP_TASKBAR SKIP_PAGER FULLSCREEN; do
        grep -q "_NET_WM_STATE_$atom" <<<"$state" || fail "$1: no _NET_WM_STATE_$atom in $state"
    done
    grep -q "_NET_WM_DESKTOP(CARDINAL) = 4294967295" <<<"$state" || fail "$1: not on all desktops"
    # Motif hints: flags 2 (decorations) with decorations 0, i.e. borderless.
    grep -Eq "_MOTIF_WM_HINTS\(_MOTIF_WM_HINTS\) = 0x2, 0x[0-9a-f]+, 0x0" <<<"$state" ||
        fail "$1: has a border: $state"
}
check_window "$left" 0 0 1280 800
check_window "$right" 1280 0 1280 800
ok "each covers its monitor, above, sticky, borderless, out of taskbar and pager"

focus=$(xdotool getwindowfocus)
[[ $focus == "$left" || $focus == "$right" ]] || fail "keyboard focus is on $focus, not a break window"
ok "a break window has the keyboard focus"

capsules() { shot && blue_on left | grep -q capsule && blue_on right | grep -q capsule; }
wait_for 10 capsules || fail "no Skip capsule on both monitors"
ok "Skip on both monitors"
! grep -q libQt6QuickTemplates2 "/proc/$pid/maps" || fail "Qt Quick Controls are loaded for a break"
ok "a break loads no Qt Quick Controls"
if [[ -n ${NARV_SCREENSHOT:-} ]]; then
    python3 "$here/xshot.py" png "$home/shot.xwd" "$NARV_SCREENSHOT"
fi

# --- Skip, clicked on the right monitor
read -r _ x y _ _ < <(blue_on right | grep capsule)
starts=$(count "ticktack timer start 0$")
xdotool mousemove "$x" "$y" click 1
wait_for 5 logged $((starts + 1)) "ticktack timer start 0$" || fail "work did not start again after Skip"
[[ $(count "skip break view") -eq 1 ]] || fail "Skip did not run the skip action once"
ok "Skip ends the break and work starts again"

# --- the second break: long and forced, the same windows, no Skip
wait_for 10 logged 1 "ticktack timer start 120$" || fail "no long break"
wait_for 5 shown || fail "the long break is not shown"
[[ $(windows_of left) == "$left" && $(windows_of right) == "$right" ]] ||
    fail "the second break made new windows: $(windows_of left) $(windows_of right)"
[[ $(count "create break window") -eq 2 ]] || fail "break windows made more than once"
check_window "$left" 0 0 1280 800
check_window "$right" 1280 0 1280 800
ok "the second break reuses the same windows"

no_capsule() { shot && ! blue_on left | grep -q capsule && ! blue_on right | grep -q capsule; }
wait_for 10 no_capsule || fail "the forced long break shows Skip"
blue_on left | grep -q text || fail "no water reminder promotion on the long break"
ok "a forced long break has no Skip"

# --- the promotion ends even that break. Work is made one minute long first
# (in the settings file, as another program may edit it), so that the windows
# have the time to fade out and go before the next break.
setting pref.work.time 1
sleep 1
read -r _ x y _ _ < <(blue_on left | grep text)
xdotool mousemove "$x" "$y" click 1
wait_for 5 logged 1 "Click new feature: Water Reminder$" || fail "the promotion did not react"
[[ $(count "skip break view") -eq 2 ]] || fail "the promotion did not end the break"
log | grep -q "show preferences" || fail "the promotion did not ask for the preferences"
ok "the water reminder promotion ends the break and asks for the preferences"

wait_for 5 logged 1 "ticktack timer start 60$" || fail "work did not start again"
gone() { [[ -z $(windows_of left --onlyvisible) && -z $(windows_of right --onlyvisible) ]]; }
wait_for 10 gone || fail "the break windows stay after the break"
[[ $(windows_of left) == "$left" && $(windows_of right) == "$right" ]] ||
    fail "the closed break windows were destroyed, not kept"
ok "the break windows go when the break ends, and are kept for the next"

# Hidden, they keep no backing store: a 1280x800 window's would be 4000 KiB of
# memory shared with the X server. What is left is the settings window's.
shmem_kib() { awk '/^RssShmem:/ { print $2 }' "/proc/$pid/status"; }
small_shmem() { [[ $(shmem_kib) -lt 2000 ]]; }
wait_for 5 small_shmem || fail "the hidden break windows keep $(shmem_kib) KiB of shared memory"
ok "the hidden break windows give their pixels back"

kill -TERM "$pid"
wait "$pid" && status=0 || status=$?
pid=
[[ $status -eq 0 ]] || fail "narv exited with $status after SIGTERM"
! log | grep -E " (error|critical) " || fail "errors in the log"
echo "e2e break windows: $passed passed, 0 failed"
