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
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
source "$here/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

# Work of zero minutes: a break one second after start and one second after
# each break. Every second break is long and may not be skipped. Both last
# the best part of an hour: only a click ends them, however slow the machine
# is between a break's start and the click (a break that ran out first would
# leave the click to the next one). The prompt is typed with backslash-n, as
# in the settings window (\\ in the INI file). Nothing is to leave the
# machine: no update check.
narv_scratch_home
start_watcher
narv_start <<'CONF'
[General]
pref.work.time=0
pref.break.time=3000
pref.short.break.times=2
pref.long.break.time=60
force_long_break=true
custom_break_prompt=true
break_prompt_text=Stand up and stretch.\\nLook at something far away.
auto_check_update=false
CONF
fail_context() { echo "--- windows"; xwininfo -root -tree | grep -E '"(left|right)' || true; }
# The break windows are titled with their monitor's name.
shown() { [[ $(windows_named left --onlyvisible | wc -l) -eq 1 && $(windows_named right --onlyvisible | wc -l) -eq 1 ]]; }
gone() { [[ -z $(windows_named left --onlyvisible) && -z $(windows_named right --onlyvisible) ]]; }
same_windows() { [[ $(windows_named left) == "$left" && $(windows_named right) == "$right" ]]; }
check_both() {
    check_geometry "$left" 0 0 1280 800
    check_geometry "$right" 1280 0 1280 800
    check_hints "$left" ABOVE STICKY SKIP_TASKBAR SKIP_PAGER FULLSCREEN
    check_hints "$right" ABOVE STICKY SKIP_TASKBAR SKIP_PAGER FULLSCREEN
}
shot() { xwd -root -silent >"$home/shot.xwd"; }
# "capsule X Y W H" / "text X Y W H" for the blue things on a monitor.
blue_on() {
    local x=0
    [[ $1 == right ]] && x=1280
    python3 "$here/xshot.py" blue "$home/shot.xwd" $x 0 1280 800
}

# --- the first break: one window per monitor
wait_for 20 shown || fail "no break window on each monitor"
left=$(windows_named left)
right=$(windows_named right)
[[ $(wc -w <<<"$left") -eq 1 && $(wc -w <<<"$right") -eq 1 ]] ||
    fail "expected exactly one window per monitor, got left: $left right: $right"
check_both
focus=$(xdotool getwindowfocus)
[[ $focus == "$left" || $focus == "$right" ]] || fail "keyboard focus is on $focus, not a break window"
ok "one window per monitor, covering it, above, sticky, borderless, out of taskbar and pager, focused"

capsules() { shot && blue_on left | grep -q capsule && blue_on right | grep -q capsule; }
wait_for 10 capsules || fail "no Skip capsule on both monitors"
views=$(views_pid)
[[ -n $views ]] || fail "no window process draws the break"
! pid=$views mapped libQt6QuickTemplates2 || fail "Qt Quick Controls are loaded for a break"
ok "Skip on both monitors, without Qt Quick Controls"

# --- Skip, clicked on the right monitor
read -r _ x y _ _ < <(blue_on right | grep capsule)
starts=$(count "ticktack timer start 0$")
xdotool mousemove "$x" "$y" click 1
wait_for 5 logged "ticktack timer start 0$" $((starts + 1)) || fail "work did not start again after Skip"
[[ $(count "skip break view") -eq 1 ]] || fail "Skip did not run the skip action once"
ok "Skip ends the break and work starts again"

# --- the second break: long and forced, the same windows, no Skip
wait_for 10 logged "ticktack timer start 3600$" || fail "no long break"
wait_for 5 shown || fail "the long break is not shown"
same_windows || fail "the second break made new windows: $(windows_named left) $(windows_named right)"
[[ $(count "create break window") -eq 2 ]] || fail "break windows made more than once"
check_both
no_capsule() { shot && ! blue_on left | grep -q capsule && ! blue_on right | grep -q capsule; }
wait_for 10 no_capsule || fail "the forced long break shows Skip"
blue_on left | grep -q text || fail "no water reminder promotion on the long break"
ok "the forced long break reuses the same windows, without Skip"

# --- the promotion ends even that break. Work is made one minute long first,
# so that the windows have the time to fade out and go before the next break.
setting pref.work.time 1
wait_for 10 settled || fail "narv did not settle after the settings file changed"
read -r _ x y _ _ < <(blue_on left | grep text)
xdotool mousemove "$x" "$y" click 1
wait_for 5 logged "Click new feature: Water Reminder$" || fail "the promotion did not react"
[[ $(count "skip break view") -eq 2 ]] || fail "the promotion did not end the break"
logged "show preferences" || fail "the promotion did not ask for the preferences"
ok "the water reminder promotion ends the break and asks for the preferences"

wait_for 5 logged "ticktack timer start 60$" || fail "work did not start again"
wait_for 10 gone || fail "the break windows stay after the break"
same_windows || fail "the closed break windows were destroyed, not kept"
# Hidden, they keep no backing store: a 1280x800 window's would be 4000 KiB of
# memory shared with the X server. What is left is the settings window's.
small_shmem() { [[ $(pid=$views shmem_kib) -lt 2000 ]]; }
wait_for 5 small_shmem || fail "the hidden break windows keep $(pid=$views shmem_kib) KiB of shared memory"
ok "the break windows go when the break ends, kept for the next without their pixels"

narv_stop
echo "e2e break windows: $passed passed, 0 failed"
