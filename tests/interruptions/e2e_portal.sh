#!/usr/bin/env bash
# The heads-up inside a sandbox: the real program behind xdg-dbus-proxy's
# filter, as Flatpak runs it, where the bus shows the portals but not the
# notification server. The heads-up goes through the real Notification portal
# (xdg-desktop-portal with its GTK backend) to dunst; its "Skip this break"
# comes back the same way, and a pause withdraws it.
#
#   tests/interruptions/e2e_portal.sh path/to/narv
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")/../e2e" && pwd)
source "$here/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

narv_scratch_home
start_watcher
# The GTK backend serves GNOME; the portal picks a backend by the desktop.
dbus-update-activation-environment XDG_CURRENT_DESKTOP=GNOME XDG_RUNTIME_DIR
start_dunst
bus=$DBUS_SESSION_BUS_ADDRESS
xdg-dbus-proxy "$bus" "$home/runtime/proxy-bus" --filter --talk=org.kde.StatusNotifierWatcher \
    '--own=org.kde.*' --own=app.narv.Narv '--talk=org.freedesktop.portal.*' >"$home/proxy.out" 2>&1 &
proxy=$!
pid=
# The portal's document store mounts itself in the runtime folder.
cleanup() {
    kill "$dunst" "$proxy" "$watcher" ${pid:+"$pid"} 2>/dev/null || true
    fusermount3 -u -z "$home/runtime/doc" 2>/dev/null || true
    rm -rf "$home"
}
trap cleanup EXIT
wait_for 5 test -S "$home/runtime/proxy-bus" || fail "the proxy did not come up"

DBUS_SESSION_BUS_ADDRESS=unix:path=$home/runtime/proxy-bus narv_start <<'CONF'
[General]
pref.work.time=1
pref.heads.up.seconds=60
pref.pause.for.enable=true
auto_check_update=false
CONF
trap cleanup EXIT
wait_for 30 notes 1 || fail "no heads-up on the screen"
logged "heads-up: through the Notification portal" || fail "the portal was not chosen"
ok "the heads-up reaches the notification server through the portal"
dunstctl context
wait_for 20 logged "the coming break is skipped" || fail "Skip this break did not come back"
grep -q "Skip this break" "$home/actions" || fail "no Skip this break: $(cat "$home/actions")"
ok "its Skip this break comes back through the portal and skips"

wait_for 90 notes 1 || fail "no heads-up for the next break"
menu_click label '"Pause for 30 minutes"' || fail "no Pause for 30 minutes in the menu"
wait_for 10 notes 0 || fail "the heads-up stays through the pause"
ok "a pause withdraws it"
narv_stop
echo "e2e portal: $passed passed, 0 failed"
