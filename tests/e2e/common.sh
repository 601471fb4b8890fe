# Sourced by the end-to-end scripts.

# Re-runs the calling script on a private X server with two monitors and a
# private session bus, once.
narv_on_xvfb_and_bus() {
    if [[ -z ${NARV_E2E_INSIDE:-} ]]; then
        export NARV_E2E_INSIDE=1
        local here
        here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
        exec "$here/../run-on-xvfb" dbus-run-session -- "$@" 2> >(grep -v "Failed to set fd limit" >&2)
    fi
}

# A scratch home in $home with private settings, cache and runtime folders,
# exported for the programs started from here.
narv_scratch_home() {
    home=$(mktemp -d)
    mkdir -p "$home/config/narv" "$home/runtime"
    chmod 700 "$home/runtime"
    export HOME=$home XDG_CONFIG_HOME=$home/config XDG_CACHE_HOME=$home/cache
    export XDG_RUNTIME_DIR=$home/runtime
}

# Starts $narv in a scratch home (narv_scratch_home, unless there is one)
# whose settings file is read from standard input; its process id in $pid. Whatever the script leaves
# running is stopped, and the home removed, at exit.
narv_start() {
    [[ -n ${home:-} ]] || narv_scratch_home
    pid=
    passed=0
    trap '[[ -n $pid ]] && kill "$pid" 2>/dev/null; [[ -n ${watcher:-} ]] && kill "$watcher" 2>/dev/null; rm -rf "$home"' EXIT
    cat >"$home/config/narv/narv.conf"
    export LC_ALL=C.UTF-8
    "$narv" >"$home/stdout" 2>&1 &
    pid=$!
    item=org.kde.StatusNotifierItem-$pid-1
}

log() { cat "$home"/cache/narv/Logs/*.log 2>/dev/null || true; }
# A script may define fail_context to print more of what it saw.
fail() {
    echo "FAIL: $*"
    if declare -F fail_context >/dev/null; then fail_context; fi
    echo "--- log"; log | tail -40
    exit 1
}
ok() { passed=$((passed + 1)); echo "ok: $*"; }

# Waits up to $1 seconds for the command after it to succeed; fails if narv
# goes meanwhile.
wait_for() {
    local seconds=$1
    shift
    for _ in $(seq 1 $((seconds * 10))); do
        "$@" && return 0
        [[ -z ${pid:-} ]] || kill -0 "$pid" 2>/dev/null || fail "narv is gone"
        sleep 0.1
    done
    return 1
}
count() { log | grep -c -- "$1" || true; }
# Narv (or process $1) has handled everything sent to it so far: none of its
# sockets holds unread data (a socket whose reading rests, as the X input
# source's does for a second after activity, keeps its data there), then
# none of its threads is runnable and its main thread sleeps in its event loop
# (poll or ppoll). Woken by a socket, a timer, a changed settings file or
# another thread, a thread would be runnable, not asleep.
settled() {
    local p=${1:-$pid} task line
    [[ -d /proc/$p ]] || return 1
    ss -xpn | awk -v p="pid=$p," 'index($0, p) && $3 != 0 { exit 1 }' || return 1
    # Read with the shell's own read: a process per thread would take seconds
    # on a busy machine.
    for task in "/proc/$p/task/"*; do
        read -r line <"$task/stat" 2>/dev/null || return 1
        [[ ${line##*) } == S\ * ]] || return 1
    done
    read -r line <"/proc/$p/syscall" 2>/dev/null || return 1
    [[ ${line%% *} == 7 || ${line%% *} == 271 ]]
}
# The log has a line matching $1, at least $2 (1) of them.
logged() { [[ $(count "$1") -ge ${2:-1} ]]; }
mapped() { grep -q -- "$1" "/proc/$pid/maps"; }
# A StatusNotifierWatcher on the bus, as most panels have: narv then counts
# in a process without QtGui and draws its windows in a second one.
start_watcher() {
    "${fakewatcher:-$(dirname "$narv")/narv_fakewatcher}" >>"$home/watcher.out" &
    watcher=$!
    wait_for 20 watcher_up || fail "the watcher did not come up"
}
watcher_up() {
    dbus-send --session --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.NameHasOwner \
        string:org.kde.StatusNotifierWatcher 2>/dev/null | grep -q "boolean true"
}
# dunst as the notification server ($dunst); its context menu hands the
# actions to this "dmenu", which keeps them in $home/actions and picks "Skip
# this break".
start_dunst() {
    mkdir -p "$home/config/dunst"
    cat >"$home/config/dunst/dunstrc" <<DUNST
[global]
    dmenu = /bin/sh -c "tee -a $home/actions | grep -m1 'Skip this break'"
DUNST
    dunst -conf "$home/config/dunst/dunstrc" >"$home/dunst.out" 2>&1 &
    dunst=$!
    wait_for 20 dunst_up || fail "dunst did not come up"
}
# Asked without starting anything: the bus would start another dunst.
dunst_up() {
    dbus-send --session --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.NameHasOwner \
        string:org.freedesktop.Notifications 2>/dev/null | grep -q "boolean true"
}
# dunst shows $1 notifications (asked anew at each try of a wait).
notes() { [[ $(dunstctl count displayed 2>/dev/null) == "$1" ]]; }
# The window process narv started, if there is one now.
views_pid() { pgrep -P "$pid" -f -- "--views" | head -1; }
# Edits the settings file under the running program, as another program may.
setting() { sed -i "s/^$1=.*/$1=$2/" "$home/config/narv/narv.conf"; }

# Ids of the windows titled $1, or "$1 …" (Qt adds the program's name);
# $2 may be --onlyvisible.
windows_named() { xdotool search ${2:-} --name "^$1( |\$)" 2>/dev/null | sort || true; }
# The status menu over dbusmenu, as a panel reads it.
menu_call() {
    local method=$1
    shift
    dbus-send --session --print-reply --dest="$item" /MenuBar "com.canonical.dbusmenu.$method" "$@" 2>/dev/null
}
# The id of the first menu item whose property $1 matches $2.
menu_find() {
    local id
    for id in $(seq 1 20); do
        menu_call GetProperty "int32:$id" "string:$1" | grep -q -- "$2" && echo "$id" && return 0
    done
    return 1
}
# Clicks the first menu item whose property $1 matches $2.
menu_click() {
    local id
    id=$(menu_find "$1" "$2") || return 1
    menu_call Event "int32:$id" string:clicked variant:int32:0 uint32:0 >/dev/null
}
item_property() {
    dbus-send --session --print-reply --dest="$item" /StatusNotifierItem org.freedesktop.DBus.Properties.Get \
        string:org.kde.StatusNotifierItem "string:$1" 2>/dev/null | awk -F'"' '/string/ { print $2 }'
}

# Ends narv with SIGTERM: it must exit 0 and have logged no error but those a
# script expects ($expected_errors, an extended regular expression).
narv_stop() {
    kill -TERM "$pid"
    local status=0
    wait "$pid" || status=$?
    pid=
    [[ $status -eq 0 ]] || fail "narv exited with $status after SIGTERM"
    ! log | grep -E " (error|critical) " | grep -vE "${expected_errors:-^$}" || fail "errors in the log"
}
