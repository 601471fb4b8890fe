# Sourced by tests/desktops/run inside a shell's session: $build is the build
# folder, $WORK a scratch folder of the session's user.

failed=0
mkdir -p "$WORK/shots" "$WORK/runtime"
chmod 700 "$WORK/runtime"
export XDG_RUNTIME_DIR=$WORK/runtime
export HOME=$WORK XDG_CONFIG_HOME=$WORK/config XDG_CACHE_HOME=$WORK/cache
export XDG_DATA_DIRS=$WORK/share:/usr/local/share:/usr/share
mkdir -p "$XDG_CONFIG_HOME/narv" "$WORK/share/applications"
# The desktop file, so that the shell finds Narv's name and icon by its app id.
cp "$here/../../resources/desktop/app.narv.Narv.desktop" "$WORK/share/applications/"
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
# Waits up to $1 seconds for the command after it to succeed.
wait_for() {
    local seconds=$1
    shift
    for _ in $(seq 1 $((seconds * 10))); do
        "$@" && return 0
        sleep 0.1
    done
    return 1
}
shot() { [[ -n ${1:-} ]] && echo "screenshot: docs/screenshots/$1"; }

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

# The status menu over dbusmenu, as the shell's tray reads it.
menu_call() {
    local method=$1
    shift
    dbus-send --session --print-reply --dest="$item" /MenuBar "com.canonical.dbusmenu.$method" "$@" 2>/dev/null
}
menu_find() {
    local id
    for id in $(seq 1 20); do
        menu_call GetProperty "int32:$id" "string:$1" | grep -q -- "$2" && echo "$id" && return 0
    done
    return 1
}
menu_click() {
    local id
    id=$(menu_find "$1" "$2") || return 1
    menu_call Event "int32:$id" string:clicked variant:int32:0 uint32:0 >/dev/null
}
# The items the StatusNotifierWatcher holds.
registered_items() {
    dbus-send --session --print-reply --dest=org.kde.StatusNotifierWatcher /StatusNotifierWatcher \
        org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierWatcher \
        string:RegisteredStatusNotifierItems 2>/dev/null
}
item_registered() { registered_items | grep -q -- "$item"; }

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

finish() {
    [[ -z ${pid:-} ]] || kill -TERM "$pid" 2>/dev/null
    [[ -z ${pid:-} ]] || wait "$pid" 2>/dev/null
    echo "$shell: $failed failed"
    ((failed == 0))
}
