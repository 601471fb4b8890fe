#!/usr/bin/env bash
# The real program with its session bus behind xdg-dbus-proxy's filter, as
# Flatpak runs it: it may talk to the StatusNotifierWatcher and own org.kde.*
# names and its own identifier; the proxy cuts a client whose messages break
# the protocol. The item answers a panel, its label counts down, its menu
# works; when the proxy goes and comes back, so does the item.
#
#   bus_proxy.sh <narv> <narv_fakewatcher>
set -euo pipefail
narv=$1
fakewatcher=$2
source "$(dirname "$0")/common.sh"
narv_on_xvfb_and_bus "$0" "$@"
command -v xdg-dbus-proxy >/dev/null || { echo "FAIL: xdg-dbus-proxy is not installed (scripts/install-deps)"; exit 1; }

proxy=
narv_scratch_home
bus=$DBUS_SESSION_BUS_ADDRESS
start_proxy() {
    rm -f "$home/runtime/proxy-bus"
    xdg-dbus-proxy "$bus" "$home/runtime/proxy-bus" --filter --talk=org.kde.StatusNotifierWatcher \
        '--own=org.kde.*' --own=app.narv.Narv >>"$home/proxy.out" 2>&1 &
    proxy=$!
    wait_for 5 test -S "$home/runtime/proxy-bus" || fail "the proxy did not come up"
}
start_watcher
start_proxy
DBUS_SESSION_BUS_ADDRESS=unix:path=$home/runtime/proxy-bus narv_start <<'CONF'
[General]
pref.work.time=25
CONF
trap '[[ -n $pid ]] && kill "$pid" 2>/dev/null; kill "$watcher" "$proxy" 2>/dev/null; rm -rf "$home"' EXIT
fail_context() { echo "--- proxy"; cat "$home/proxy.out"; echo "--- watcher"; cat "$home/watcher.out"; }

registered() { [[ $(grep -c "^registered " "$home/watcher.out" || true) -ge $1 ]]; }
wait_for 10 registered 1 || fail "the item did not register through the proxy"
wait_for 5 logged " : status item registered as :" || fail "the watcher's listing is not in the log"

# Six changes of the label: more than five seconds of ticks.
label=$(item_property XAyatanaLabel)
changed() { local now; now=$(item_property XAyatanaLabel); [[ -n $now && $now != "$label" ]] && label=$now; }
for _ in 1 2 3 4 5 6; do
    wait_for 5 changed || fail "the label stopped at '$label'"
done
[[ $label =~ ^2[0-4]:[0-5][0-9]$ ]] || fail "the label is '$label', not a countdown from 25:00"
kill -0 "$proxy" || fail "the proxy ended"
! grep -qi "invalid\|disconnect" "$home/proxy.out" || fail "the proxy complained"
# Clicks the start/stop item and waits for the $2nd line $1 in the log.
toggle() {
    menu_click x-narv-tag "int32 2$" || fail "no start/stop item in the menu"
    wait_for 5 logged "$1" "$2" || fail "a click on the start/stop item did not log \"$1\" $2 times"
}
toggle " : ticktack timer stoped" 1
toggle " : ticktack timer start 1500$" 2
ok "behind the proxy: the item answers, its label counts down, its menu works"

# The proxy goes (the connection breaks) while Narv is paused, so no label is
# being sent, and comes back; the item is back, and work starts from its menu.
toggle " : ticktack timer stoped" 2
kill "$proxy"
wait "$proxy" 2>/dev/null || true
wait_for 10 logged " : lost the session bus: the status item comes back when it is there again$" ||
    fail "the lost bus is not in the log"
start_proxy
wait_for 40 logged " : the status item is back on the session bus$" || fail "the item did not come back"
wait_for 10 registered 2 || fail "the item did not register again"
toggle " : ticktack timer start 1500$" 3
label=$(item_property XAyatanaLabel)
wait_for 5 changed || fail "the label does not count down after the bus came back"
[[ $(count "lost the session bus") -eq 1 && $(count "back on the session bus") -eq 1 ]] ||
    fail "the bus's going and coming are not said once each"
ok "a broken connection while paused: said once, the item comes back and registers again"

narv_stop
echo "e2e bus proxy: $passed passed, 0 failed"
