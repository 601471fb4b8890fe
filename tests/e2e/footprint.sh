#!/usr/bin/env bash
# The real program on a private X server with two monitors and a private
# session bus: what it keeps out of its memory until it needs it. While it
# counts down, no Qt Quick, QML or views module is mapped into the process and
# fontconfig has not read the font list; at the first break the views module
# brings them, and the break windows appear on both monitors. The status item
# is on a bus connection of its own (not the one that holds app.narv.Narv).
#
#   tests/e2e/footprint.sh path/to/narv
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
source "$here/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

narv_scratch_home
pid=
trap '[[ -n $pid ]] && kill "$pid" 2>/dev/null; rm -rf "$home"' EXIT
# A two-minute period: the first break comes when the test makes it come.
cat >"$home/config/narv/narv.conf" <<'CONF'
[General]
pref.work.time=2
pref.break.time=2
auto_check_update=false
CONF
export LC_ALL=C.UTF-8
unset XDG_SESSION_TYPE
"$narv" >"$home/stdout" 2>&1 &
pid=$!

passed=0
log() { cat "$home"/cache/narv/Logs/app.narv.Narv.*.log 2>/dev/null || true; }
fail() {
    echo "FAIL: $*"
    echo "--- log"; log | tail -30
    exit 1
}
ok() { passed=$((passed + 1)); echo "ok: $*"; }
wait_for() { # seconds, command...
    local seconds=$1
    shift
    for _ in $(seq 1 $((seconds * 10))); do
        "$@" && return 0
        kill -0 "$pid" 2>/dev/null || fail "narv is gone"
        sleep 0.1
    done
    return 1
}
logged() { log | grep -q -- "$1"; }
mapped() { grep -q -- "$1" "/proc/$pid/maps"; }
shown() { [[ -n $(xdotool search --onlyvisible --name "^$1( |\$)" 2>/dev/null) ]]; }

wait_for 20 logged " : sandbox home path: " || fail "narv did not start"
sleep 1
for piece in libQt6Quick libQt6Qml narv_views.so /var/cache/fontconfig; do
    ! mapped "$piece" || fail "$piece is in the process before any window"
done
ok "counting: no Qt Quick, QML, views module or font list in the process"

# A bus connection of the status item's own: the item's name and the
# program's own name have different owners.
item=org.kde.StatusNotifierItem-$pid-1
owner_of() {
    dbus-send --session --print-reply --dest=org.freedesktop.DBus / \
        org.freedesktop.DBus.GetNameOwner "string:$1" 2>/dev/null | awk -F'"' '/string/ { print $2 }'
}
[[ -n $(owner_of "$item") && -n $(owner_of app.narv.Narv) ]] || fail "the item or the program has no name"
[[ $(owner_of "$item") != "$(owner_of app.narv.Narv)" ]] || fail "the item shares the program's connection"
ok "the status item has a connection of its own"

# The next period is none: a break a second after the current one is stopped
# and started again from the menu's start/stop item.
sed -i "s/^pref.work.time=.*/pref.work.time=0/" "$home/config/narv/narv.conf"
menu_click() { # the item with this x-narv-tag
    local id
    for id in $(seq 1 20); do
        if dbus-send --session --print-reply --dest="$item" /MenuBar com.canonical.dbusmenu.GetProperty \
            "int32:$id" string:x-narv-tag 2>/dev/null | grep -q "int32 $1\$"; then
            dbus-send --session --type=method_call --dest="$item" /MenuBar com.canonical.dbusmenu.Event \
                "int32:$id" string:clicked variant:int32:0 uint32:0
            return 0
        fi
    done
    return 1
}
menu_click 2 || fail "no start/stop item in the menu"
wait_for 5 logged " : ticktack timer stoped" || fail "the menu did not stop the work"
menu_click 2
wait_for 10 shown left || fail "no break window on the left monitor"
wait_for 5 shown right || fail "no break window on the right monitor"
logged " : windows loaded from .*narv_views.so$" || fail "the windows did not come from the views module"
for piece in libQt6Quick libQt6Qml narv_views.so; do
    mapped "$piece" || fail "$piece is not in the process during the break"
done
ok "the first break loads the views module, and its windows are on both monitors"

kill -TERM "$pid"
wait "$pid" && status=0 || status=$?
pid=
[[ $status -eq 0 ]] || fail "narv exited with $status after SIGTERM"
! log | grep -E " (error|critical) " || fail "errors in the log"
echo "e2e footprint: $passed passed, 0 failed"
