#!/usr/bin/env bash
# The real program on a private X server with two monitors and a private
# session bus, with a StatusNotifierWatcher as most panels have: its window
# process. The first break starts it, from the views module, with the break
# windows on both monitors, and it ends once the break is over. When the
# watcher goes away Narv says so once and goes on counting, and registers
# again with the next one. (Which libraries each process holds when is the
# benchmark's: bench/run; the update check: tests/statusbar/tst_update.cpp.)
#
#   tests/e2e/window_process.sh path/to/narv path/to/narv_fakewatcher
set -euo pipefail
narv=$(realpath "$1")
fakewatcher=$(realpath "$2")
here=$(cd "$(dirname "$0")" && pwd)
source "$here/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

watcher=
unset XDG_SESSION_TYPE
narv_scratch_home
start_watcher
# A two-minute period: the first break comes when the test makes it come.
narv_start <<'CONF'
[General]
pref.work.time=2
pref.break.time=2
auto_check_update=false
CONF

shown() { [[ -n $(windows_named "$1" --onlyvisible) ]]; }

wait_for 20 logged " : sandbox home path: " || fail "narv did not start"
wait_for 10 settled || fail "narv did not settle after start"

# A break now: the next period is none, and the current one is stopped and
# started again from the menu's start/stop item. The period after the break
# is long again: once the break is over nothing is near.
setting pref.work.time 0
menu_click x-narv-tag "int32 2$" || fail "no start/stop item in the menu"
wait_for 5 logged " : ticktack timer stoped" || fail "the menu did not stop the work"
menu_click x-narv-tag "int32 2$"
wait_for 10 shown left || fail "no break window on the left monitor"
wait_for 5 shown right || fail "no break window on the right monitor"
setting pref.work.time 2
views=$(views_pid)
[[ -n $views ]] || fail "no window process beside narv during the break"
logged " : window process $views started$" || fail "the window process is not in the log"
logged " : windows loaded from .*narv_views.so$" || fail "the windows did not come from the views module"
[[ $(log | grep -c "hello Narv") -eq 1 ]] || fail "the window process wrote a hello record of its own"
ok "the first break starts the window process, and its windows are on both monitors"
# (How long it stays, and a crash during a break: tst_viewsprocess.)
wait_for 10 logged " : ticktack timer start 120$" || fail "the break did not end"
wait_for 10 bash -c "! kill -0 $views 2>/dev/null" || fail "the window process stays after the break"

# The panel goes, and comes back: no classic icon meanwhile (this is no
# QApplication), said once; the item registers with the new watcher.
kill "$watcher"
wait "$watcher" 2>/dev/null || true
watcher=
wait_for 10 logged "no StatusNotifierWatcher, and this Narv started without the classic tray icon" ||
    fail "the watcher's going is not in the log"
registrations() { grep -c "^registered " "$home/watcher.out" || true; }
[[ $(registrations) -eq 1 ]] || fail "expected one registration so far, not $(registrations)"
registered_again() { [[ $(registrations) -eq 2 ]]; }
start_watcher
wait_for 10 registered_again || fail "the item did not register with the new watcher"
ok "a panel that goes and comes back: said once, registered again"

narv_stop
[[ $(log | grep -c "no StatusNotifierWatcher") -eq 1 ]] || fail "the watcher's going is said more than once"
echo "e2e window process: $passed passed, 0 failed"
