# Sourced by tests/desktops/run inside a shell's session: $build is the build
# folder, $WORK a scratch folder of the session's user.

# The end-to-end tests' helpers, the status menu's (menu_call, menu_find,
# menu_click) among them; the functions of the same name below are this
# script's own and replace theirs.
source "$here/../e2e/common.sh"

failed=0
mkdir -p "$WORK/shots" "$WORK/runtime"
chmod 700 "$WORK/runtime"
export XDG_RUNTIME_DIR=$WORK/runtime
export HOME=$WORK XDG_CONFIG_HOME=$WORK/config XDG_CACHE_HOME=$WORK/cache
export XDG_DATA_DIRS=$WORK/share:/usr/local/share:/usr/share
mkdir -p "$XDG_CONFIG_HOME/narv" "$WORK/share/applications"
# The desktop file, so that the shell finds Narv's name and icon by its app id.
sed "s|^Exec=narv|Exec=$build/narv|" "$here/../../resources/desktop/app.narv.Narv.desktop" \
    >"$WORK/share/applications/app.narv.Narv.desktop"
cp -r "$here/../../resources/icons" "$WORK/share/"

ok() { echo "ok: $shell: $*"; }
fail() {
    echo "FAIL: $shell: $*"
    failed=$((failed + 1))
}
skip() { echo "skipped: $shell: $*"; }
log() { cat "$XDG_CACHE_HOME"/narv/Logs/*.log 2>/dev/null || true; }
count() { log | grep -c -- "$1" || true; }
logged() { [[ $(count "$1") -ge ${2:-1} ]]; }
# Waits up to $1 seconds for the command after it to succeed; counted in
# seconds, not tries: on a busy machine one try can take a second.
wait_for() {
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        ((SECONDS < end)) || return 1
        sleep 0.1
    done
}
shot() { echo "screenshot: docs/screenshots/$1"; }
# A shell without a way to take one says so.
screenshot() { return 1; }

# Starts Narv with the settings file read from standard input; $pid.
narv_start() {
    cat >"$XDG_CONFIG_HOME/narv/narv.conf"
    "$build/narv" >>"$WORK/narv.out" 2>&1 &
    pid=$!
    item=org.kde.StatusNotifierItem-$pid-1
}
narv_alive() { kill -0 "$pid" 2>/dev/null; }
views_pid() { pgrep -P "$pid" -f -- "--views" | head -1; }
no_crash() { ! logged "the window process crashed" && narv_alive; }
done_with() { settled "$1" || ! kill -0 "$1" 2>/dev/null; }

# The items the StatusNotifierWatcher holds.
registered_items() {
    dbus-send --session --print-reply --dest=org.kde.StatusNotifierWatcher /StatusNotifierWatcher \
        org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierWatcher \
        string:RegisteredStatusNotifierItems 2>/dev/null
}
# Narv registers under its connection's unique name, the owner of $item;
# watchers list it as ":1.42/StatusNotifierItem", ":1.42@/StatusNotifierItem"
# (GNOME's) or ":1.42".
item_owner() {
    dbus-send --session --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.GetNameOwner \
        "string:$item" 2>/dev/null | awk -F'"' '/string/ { print $2 }'
}
item_registered() {
    local owner
    owner=$(item_owner) && [[ -n $owner ]] && registered_items | grep -q -- "\"$owner[/@\"]"
}

# Settings that start a break at once and keep it on the screen for a while,
# the water reminder on all day, nothing that leaves the machine.
narv_settings() {
    cat <<CONF
[General]
auto_check_update=false
pref.work.time=${1:-25}
pref.break.time=${2:-300}
pref.water.enable=true
pref.water.interval.start=$(date -d 'today 00:00:00' +%s)
pref.water.interval.end=$(date -d 'today 23:59:59' +%s)
pref.water.lastShowDate=$(date +%s)
CONF
}

# A stand-in system bus with logind on it (python-dbusmock's template)
# holding the session "c1" as this session's: the shells lock it and read it,
# Narv watches its LockedHint. logind_session Lock or Unlock: what logind
# does on `loginctl lock-session` or `unlock-session`.
standin_logind() {
    cat >"$WORK/system-bus.conf" <<EOF
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:dir=$WORK</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/><allow own="*"/><allow send_destination="*"/><allow receive_sender="*"/>
  </policy>
</busconfig>
EOF
    dbus-daemon --config-file="$WORK/system-bus.conf" --nofork --print-address=3 3>"$WORK/system-bus.address" &
    wait_for 10 test -s "$WORK/system-bus.address" || fail "the stand-in system bus did not start"
    export DBUS_SYSTEM_BUS_ADDRESS=$(head -1 "$WORK/system-bus.address") XDG_SESSION_ID=c1
    /usr/bin/python3 -m dbusmock --system --template logind >"$WORK/logind.log" 2>&1 &
    wait_for 20 logind_mock AddSession c1 seat0 "$(id -u)" "$(id -un)" true ||
        fail "the stand-in logind did not start: $(tail -2 "$WORK/logind.log")"
    # Every process here is in it, whichever way it asks.
    logind_mock AddMethod org.freedesktop.login1.Manager GetSessionByPID u o \
        'ret = "/org/freedesktop/login1/session/c1"'
    logind_mock AddMethod org.freedesktop.login1.Manager GetSession s o \
        'ret = "/org/freedesktop/login1/session/" + ("c1" if args[0] in ("auto", "self") else args[0])'
}
logind_mock() {
    gdbus call --system -d org.freedesktop.login1 -o /org/freedesktop/login1 \
        -m "org.freedesktop.DBus.Mock.$1" "${@:2}" >/dev/null 2>&1
}
logind_session() {
    gdbus call --system -d org.freedesktop.login1 -o /org/freedesktop/login1/session/c1 \
        -m "org.freedesktop.login1.Session.$1" >/dev/null
}
narv_status() { "$build/narv" status 2>&1; }
counting() { [[ $(narv_status) =~ ^[0-9]+:[0-9]{2}$ ]]; }
not_counting() { ! counting; }

# A lock and unlock the shell's way: $1 locks, $2 unlocks. The countdown
# stops while locked, and the item is still registered after.
check_lock() {
    wait_for 10 counting || fail "not counting before the lock: $(narv_status)"
    $1
    if wait_for 20 logged "screen locked" && wait_for 10 not_counting; then
        ok "locked: the countdown stops (narv status: $(narv_status))"
    else
        fail "locked: $(log | grep 'screen lock' | tail -2), narv status: $(narv_status)"
    fi
    $2
    wait_for 20 logged "screen unlocked" && wait_for 10 counting && ok "unlocked: the countdown goes on" ||
        fail "unlocked: $(log | grep 'screen' | tail -2), narv status: $(narv_status)"
    wait_for 20 item_registered && ok "the status item is registered after the unlock" ||
        fail "the status item is gone after the unlock"
}

finish() {
    [[ -z ${pid:-} ]] || kill -TERM "$pid" 2>/dev/null
    [[ -z ${pid:-} ]] || wait "$pid" 2>/dev/null
    echo "$shell: $failed failed"
    ((failed == 0))
}

# What follows needs from the shell's script:
#   windows        one line per window: app_id|name|output|x y w h|fullscreen|focused|stack
#                  (name without the " — Narv" Qt adds; fullscreen and focused
#                  "true" or "false"; stack higher above lower)
#   close_window   NAME: the compositor's close, as its close button sends it
#   focus_client   gives the focus to the client window "Flower"
narv_windows() { windows | awk -F'|' '$1 == "app.narv.Narv"'; }
window_named() { narv_windows | awk -F'|' -v n="$1" '$2 == n'; }
has_window() { [[ -n $(window_named "$1") ]]; }
no_window() { [[ -z $(window_named "$1") ]]; }
focused_window() { windows | awk -F'|' '$6 == "true" { print $2 }'; }
client_focused() { [[ $(focused_window) == Flower ]]; }
settings_focused() { [[ $(focused_window) == Settings ]]; }

# A client window with the focus, as the user's work would be.
start_client() {
    weston-flower >/dev/null 2>&1 &
    wait_for 20 client_focused || fail "the client window did not come up with the focus: $(windows | tr '\n' ';')"
}

# A break at once: one full-screen window per output, above the client, the
# primary output's (the one at 0,0) with the focus. $1: a screenshot's name.
check_break() {
    breaks_up() { [[ $(narv_windows | awk -F'|' '$5 == "true"' | wc -l) -eq 2 ]]; }
    if ! wait_for 30 breaks_up; then
        fail "no full-screen break window on each output: $(windows | tr '\n' ';')"
        return
    fi
    local all geometry outputs client lowest focus primary
    all=$(windows)
    geometry=$(awk -F'|' '$1 == "app.narv.Narv" && $5 == "true" { print $2 ": " $3 " " $4 }' <<<"$all" | sort | tr '\n' ';')
    outputs=$(awk -F'|' '$1 == "app.narv.Narv" && $5 == "true" { print $4 }' <<<"$all" | sort -u | wc -l)
    [[ $outputs -eq 2 ]] && ok "one full-screen break window per output ($geometry)" || fail "break windows: $geometry"
    client=$(awk -F'|' '$2 == "Flower" { print $7 }' <<<"$all")
    lowest=$(awk -F'|' '$1 == "app.narv.Narv" && $5 == "true" { print $7 }' <<<"$all" | sort -n | head -1)
    [[ -n $client && $lowest -gt $client ]] && ok "the break windows are above the client window" ||
        fail "the break windows are not above the client window: $(tr '\n' ';' <<<"$all")"
    focus=$(focused_window)
    primary=$(awk -F'|' '$1 == "app.narv.Narv" && $4 ~ /^0 0 / { print $2 }' <<<"$all" | head -1)
    [[ -n $focus && $focus == "$primary" ]] && ok "the primary output's break window ($primary) has the focus" ||
        fail "the focus is on \"$focus\", not on the primary output's break window \"$primary\""
    [[ -z ${1:-} ]] || { screenshot "$1" && shot "$1"; }
}

# Opens window $1 with the menu item labelled $2..., closes it as the
# compositor does, and opens it again. $3: a screenshot's name.
check_close_by_compositor() {
    local title=$1
    menu_click label "\"$2" || { fail "no \"$2\" in the menu"; return; }
    if ! wait_for 20 has_window "$title"; then
        fail "$title did not open: $(windows | tr '\n' ';')"
        return
    fi
    ok "$title carries the app id app.narv.Narv"
    echo "$title placed at: $(window_named "$title" | cut -d'|' -f3,4)"
    [[ -z ${3:-} ]] || { screenshot "$3" && shot "$3"; }
    local views
    views=$(views_pid)
    close_window "$title"
    # The window process has handled the close once it sleeps with nothing
    # left to read, or has ended (with no window left it does).
    if wait_for 10 no_window "$title" && wait_for 10 done_with "$views" && no_crash; then
        ok "$title closed by the compositor, no crash"
    else
        fail "$title closed by the compositor: $(log | grep -E 'crash|error' | tail -2)"
    fi
    menu_click label "\"$2"
    wait_for 20 has_window "$title" && ok "$title opens again" || fail "$title does not open again"
}

# Settings open behind the client, then closed: a second start each time,
# with a launcher's activation token where the shell's script makes one
# (launch_token).
launch_token() { :; }
check_second_start() {
    focus_client
    client_focused || fail "the client window did not take the focus"
    local status=0 token
    token=$(launch_token)
    XDG_ACTIVATION_TOKEN=$token "$build/narv" >>"$WORK/narv.out" 2>&1 || status=$?
    if [[ $status -ne 0 ]]; then
        fail "a second start exited with $status"
    elif wait_for 5 settings_focused; then
        ok "a second start${token:+ with an activation token from the shell} brings the open Settings to the front"
    elif [[ -n $token ]]; then
        fail "a second start with the activation token $token leaves the open Settings behind (focus on \"$(focused_window)\")"
    else
        # Only a launcher's token lets a window come forward on Wayland.
        skip "a second start without a launcher's activation token leaves the open Settings behind (focus on \"$(focused_window)\")"
    fi
    close_window "Settings"
    wait_for 10 no_window "Settings"
    focus_client
    XDG_ACTIVATION_TOKEN=$(launch_token) "$build/narv" >>"$WORK/narv.out" 2>&1
    wait_for 10 settings_focused && ok "a second start brings the closed Settings back with the focus" ||
        fail "a second start after a close: the focus is on \"$(focused_window)\""
}

check_idle_source() {
    local line
    if wait_for 10 logged "mouse activity: "; then
        line=$(log | grep -o 'mouse activity: [^(]*' | head -1)
        [[ $line == *"$1"* ]] && ok "idle source: $line" || fail "idle source: $line, not $1"
    else
        fail "no idle source in the log"
    fi
}

# The menu's water item closes the panel it opened.
check_water_toggle() {
    menu_click label '"Water ('
    wait_for 10 no_window "Water Reminder" && ok "the menu closes the water panel" ||
        fail "the menu does not close the water panel"
}
