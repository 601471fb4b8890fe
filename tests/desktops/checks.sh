# Sourced by tests/desktops/run inside a shell's session: $build is the build
# folder, $WORK a scratch folder of the session's user. The shell's script
# starts its shell, says how to ask it about windows, then calls run_checks.
# The end-to-end tests' helpers (the status menu's, logged, views_pid) come
# along; the functions of the same name below replace theirs.
source "$here/../e2e/common.sh"

failed=0
mkdir -p "$WORK/shots" "$WORK/runtime" "$WORK/bin"
chmod 700 "$WORK/runtime"
export XDG_RUNTIME_DIR=$WORK/runtime
home=$WORK # common.sh's log reads $home/cache
export HOME=$WORK XDG_CONFIG_HOME=$WORK/config XDG_CACHE_HOME=$WORK/cache
export XDG_DATA_DIRS=$WORK/share:/usr/local/share:/usr/share
mkdir -p "$XDG_CONFIG_HOME/narv" "$WORK/share/applications"
# The desktop file, so that the shell finds Narv's name and icon by its app id.
sed "s|^Exec=narv|Exec=$build/narv|" "$here/../../resources/desktop/app.narv.Narv.desktop" \
    >"$WORK/share/applications/app.narv.Narv.desktop"
cp -r "$here/../../resources/icons" "$WORK/share/"
trap end_session EXIT

ok() { echo "ok: $shell: $*"; }
fail() {
    echo "FAIL: $shell: $*"
    failed=$((failed + 1))
}
skip() { echo "skipped: $shell: $*"; }
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
# The processes of this session but dbus-run-session, its bus and this
# script: each carries this $WORK in its environment, also those the bus
# started and those whose parent has gone.
session_processes() {
    local p line IFS=$'\n'
    local -a vars
    for p in /proc/[0-9]*; do
        mapfile -d '' -t vars 2>/dev/null <"$p/environ" || continue
        [[ $'\n'"${vars[*]}"$'\n' == *$'\n'"WORK=$WORK"$'\n'* ]] || continue
        read -r line 2>/dev/null <"$p/stat" || continue
        line=${line##*) } # the state, the parent, ...
        line=${line#* }
        p=${p#/proc/}
        ((p != BASHPID && p != PPID && ${line%% *} != PPID)) && echo "$p"
    done
}
no_session_processes() { [[ -z $(session_processes) ]]; }
# Ends the shell and everything it started, so that nothing of it is left
# when the next shell starts.
end_session() {
    kill -TERM $(session_processes) 2>/dev/null
    wait_for 30 no_session_processes || kill -KILL $(session_processes) 2>/dev/null
}
# The shell is up within $1 seconds ($2 says so), or the run ends here.
shell_up() {
    wait_for "$1" "$2" && return
    fail "$2: the shell did not come up: $(tail -3 "$3")"
    finish
    exit
}
name_owned() {
    dbus-send --session --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.NameHasOwner \
        "string:$1" 2>/dev/null | grep -q "boolean true"
}
wayland_session() {
    export WAYLAND_DISPLAY=$1 XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=$2 QT_QPA_PLATFORM=wayland
}
# Builds tests/desktops/$1.c into $WORK/bin with the protocols $2...
build_client() {
    local xml
    for xml in "${@:2}"; do
        wayland-scanner client-header "$xml" "$WORK/$(basename "$xml" .xml)-client.h"
        wayland-scanner private-code "$xml" "$WORK/$(basename "$xml" .xml).c"
    done
    cc -o "$WORK/bin/$1" -I"$WORK" "$here/$1.c" "$WORK"/*.c -lwayland-client
}

# Starts Narv with the settings file read from standard input; $pid.
narv_start() {
    cat >"$XDG_CONFIG_HOME/narv/narv.conf"
    "$build/narv" >>"$WORK/narv.out" 2>&1 &
    pid=$!
    item=org.kde.StatusNotifierItem-$pid-1
}
narv_end() {
    kill -TERM "$pid"
    wait "$pid"
    pid=
    rm -f "$XDG_CACHE_HOME"/narv/Logs/*.log
}
no_crash() { ! logged "the window process crashed" && kill -0 "$pid" 2>/dev/null; }
done_with() { settled "$1" || ! kill -0 "$1" 2>/dev/null; }

# The items the StatusNotifierWatcher holds. Narv registers under its
# connection's unique name, the owner of $item; watchers list it as
# ":1.42/StatusNotifierItem", ":1.42@/StatusNotifierItem" (GNOME's) or ":1.42".
registered_items() {
    dbus-send --session --print-reply --dest=org.kde.StatusNotifierWatcher /StatusNotifierWatcher \
        org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierWatcher \
        string:RegisteredStatusNotifierItems 2>/dev/null
}
item_registered() {
    local owner
    owner=$(dbus-send --session --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.GetNameOwner \
        "string:$item" 2>/dev/null | awk -F'"' '/string/ { print $2 }')
    [[ -n $owner ]] && registered_items | grep -q -- "\"$owner[/@\"]"
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

# A stand-in system bus (a bus with the session's rules, which let this user
# do anything) with logind on it (python-dbusmock's template) holding the
# session "c1" as this session's: the shells lock it and read it, Narv
# watches its LockedHint. logind_session Lock or Unlock: what logind does on
# `loginctl lock-session` or `unlock-session`.
standin_logind() {
    export DBUS_SYSTEM_BUS_ADDRESS=unix:path=$WORK/system_bus_socket XDG_SESSION_ID=c1
    dbus-daemon --session --nofork --address="$DBUS_SYSTEM_BUS_ADDRESS" >/dev/null 2>&1 &
    wait_for 10 test -S "$WORK/system_bus_socket" || fail "the stand-in system bus did not start"
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

finish() {
    [[ -z ${pid:-} ]] || kill -TERM "$pid" 2>/dev/null
    [[ -z ${pid:-} ]] || wait "$pid" 2>/dev/null
    echo "$shell: $failed failed"
    end_session
    ((failed == 0))
}

# What follows needs from the shell's script:
#   windows        one line per window: app_id|name|output|x y w h|fullscreen|focused|stack
#                  (name without the " — Narv" Qt adds; fullscreen and focused
#                  "true" or "false"; stack higher above lower)
#   close_window   NAME: the compositor's close, as its close button sends it
#   focus_client   gives the focus to the client window "Flower"
#   screenshot     NAME: the screen into $WORK/shots/NAME
# and may replace the hook between_runs.
narv_windows() { windows | awk -F'|' '$1 == "app.narv.Narv"'; }
window_named() { narv_windows | awk -F'|' -v n="$1" '$2 == n'; }
has_window() { [[ -n $(window_named "$1") ]]; }
no_window() { [[ -z $(window_named "$1") ]]; }
focused_window() { windows | awk -F'|' '$6 == "true" { print $2 }'; }
focused_on() { [[ $(focused_window) == "$1" ]]; }
shot() { screenshot "$1" && echo "screenshot: docs/screenshots/$1"; }
# Settings came forward; a shell may say how on standard output.
came_forward() { focused_on Settings; }
between_runs() { :; }

# A break at once: one full-screen window per output, above the client, the
# primary output's (the one at 0,0) with the focus.
check_break() {
    breaks() { narv_windows | awk -F'|' '$5 == "true"'; }
    two_breaks() { [[ $(breaks | wc -l) -eq 2 ]]; }
    wait_for 30 two_breaks || { fail "no full-screen break window on each output: $(windows | tr '\n' ';')"; return; }
    local shown client primary
    shown=$(breaks | awk -F'|' '{ print $2 ": " $3 " " $4 }' | sort | tr '\n' ';')
    [[ $(breaks | cut -d'|' -f4 | sort -u | wc -l) -eq 2 ]] && ok "one full-screen break window per output ($shown)" ||
        fail "break windows: $shown"
    client=$(windows | awk -F'|' '$2 == "Flower" { print $7 }')
    [[ -n $client && $(breaks | cut -d'|' -f7 | sort -n | head -1) -gt $client ]] &&
        ok "the break windows are above the client window" ||
        fail "the break windows are not above the client window: $(windows | tr '\n' ';')"
    primary=$(breaks | awk -F'|' '$4 ~ /^0 0 / { print $2 }' | head -1)
    [[ -n $primary ]] && focused_on "$primary" && ok "the primary output's break window ($primary) has the focus" ||
        fail "the focus is on \"$(focused_window)\", not on the primary output's break window \"$primary\""
}

# Opens window $1 with the menu item labelled $2... and closes it as the
# compositor does. $3: a screenshot's name.
check_close_by_compositor() {
    local title=$1 views
    menu_click label "\"$2" || { fail "no \"$2\" in the menu"; return; }
    wait_for 20 has_window "$title" || { fail "$title did not open: $(windows | tr '\n' ';')"; return; }
    ok "$title carries the app id app.narv.Narv"
    echo "$title placed at: $(window_named "$title" | cut -d'|' -f3,4)"
    shot "$3"
    views=$(views_pid)
    close_window "$title"
    # The window process has handled the close once it sleeps with nothing
    # left to read, or has ended (with no window left it does).
    wait_for 10 no_window "$title" && wait_for 10 done_with "$views" && no_crash &&
        ok "$title closed by the compositor, no crash" ||
        fail "$title closed by the compositor: $(log | grep -E 'crash|error' | tail -2)"
}

# A token in $WORK/token as a launcher asks the compositor for one: its own
# window focused, then xdg_activation_v1. The launcher's window stays up (and
# focused) until the second start has used the token; $launcher is its process.
launch_token() {
    [[ -x $WORK/bin/launcher ]] || build_client launcher \
        /usr/share/wayland-protocols/stable/xdg-shell/xdg-shell.xml \
        /usr/share/wayland-protocols/staging/xdg-activation/xdg-activation-v1.xml
    "$WORK/bin/launcher" app.narv.Narv >"$WORK/token" 2>>"$WORK/launcher.log" &
    launcher=$!
    wait_for 10 test -s "$WORK/token" && wait_for 10 focused_on Launcher
}
# Settings, opened again from the menu, behind the focused window: a second
# start with a launcher's token.
second_start() {
    local status=0 token
    launcher=
    launch_token || fail "no token from the launcher: $(tail -2 "$WORK/launcher.log")"
    token=$(head -1 "$WORK/token")
    XDG_ACTIVATION_TOKEN=$token "$build/narv" >>"$WORK/narv.out" 2>&1 || status=$?
    [[ $status -eq 0 ]] || fail "a second start exited with $status"
    wait_for 20 came_forward && ok "a second start with a launcher's token ($token) $1$(came_forward)" ||
        fail "a second start with the token \"$token\" $1: the focus is on \"$(focused_window)\""
    [[ -z $launcher ]] || kill "$launcher"
}
check_second_start() {
    menu_click label '"Settings'
    wait_for 20 has_window Settings && ok "Settings opens again after the compositor's close" ||
        fail "Settings does not open again after the compositor's close"
    # A new window may take the focus a moment after it is shown.
    flower_focused() { focus_client && focused_on Flower; }
    wait_for 10 flower_focused || fail "the client window did not take the focus"
    second_start "brings the open Settings to the front"
}

check_idle_source() {
    wait_for 10 logged "mouse activity: " || { fail "no idle source in the log"; return; }
    local line
    line=$(log | grep -o 'mouse activity: [^(]*' | head -1)
    [[ $line == *"$1"* ]] && ok "idle source: $line" || fail "idle source: $line, not $1"
}

# A lock and unlock the shell's way: $1 locks, $2 unlocks. The countdown
# stops while locked, and the item is still registered after.
check_lock() {
    wait_for 10 counting || fail "not counting before the lock: $(narv_status)"
    $1
    wait_for 20 logged "screen locked" && wait_for 10 not_counting &&
        ok "locked: the countdown stops (narv status: $(narv_status))" ||
        fail "locked: $(log | grep 'screen lock' | tail -2), narv status: $(narv_status)"
    $2
    wait_for 20 logged "screen unlocked" && wait_for 10 counting && ok "unlocked: the countdown goes on" ||
        fail "unlocked: $(log | grep 'screen' | tail -2), narv status: $(narv_status)"
    wait_for 20 item_registered && ok "the status item is registered after the unlock" ||
        fail "the status item is gone after the unlock"
}

# Every check, in order: $1 the tray that holds the item, $2 the idle source
# Narv should name, $3 the screenshots' prefix, $4 and $5 what locks and
# unlocks (none: skipped, $4 says why).
run_checks() {
    weston-flower >/dev/null 2>&1 &
    wait_for 20 focused_on Flower || fail "the client window did not come up with the focus: $(windows | tr '\n' ';')"
    narv_start < <(narv_settings 0 30)
    wait_for 30 item_registered && ok "the status item is registered with $1" ||
        fail "the status item is not registered: $(registered_items | tail -2)"
    check_idle_source "$2"
    check_break
    shot "$3-break.png"
    narv_end
    between_runs
    narv_start < <(narv_settings 25 300)
    wait_for 30 item_registered || fail "the status item is not registered"
    check_close_by_compositor "Settings" "Settings" "$3-settings.png"
    check_close_by_compositor "Water Reminder" "Water (" "$3-water.png"
    check_second_start
    if [[ -n ${5:-} ]]; then check_lock "$4" "$5"; else skip "a lock and unlock: $4"; fi
    no_crash && ok "no crash in the whole run" || fail "$(log | grep -E 'crash' | tail -2)"
    finish
}
