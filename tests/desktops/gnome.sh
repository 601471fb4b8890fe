# GNOME Shell 43 on Wayland, headless, two 1280x800 virtual monitors, with
# the AppIndicator extension, on a stand-in system bus. Sourced by
# tests/desktops/run. Window facts, the compositor's close and screenshots go
# through org.gnome.Shell.Eval and org.gnome.Shell.Screenshot, which the shell
# allows only in its unsafe mode: a small extension of the test's own turns
# that on.

# GNOME Shell wants a system bus with logind on it, and makes its lock screen
# only with a display manager there (GDM 3.5.91 or later).
standin_logind
/usr/bin/python3 -m dbusmock --system org.gnome.DisplayManager /org/gnome/DisplayManager/Manager \
    org.gnome.DisplayManager.Manager >"$WORK/gdm.log" 2>&1 &
gdm_mock() {
    gdbus call --system -d org.gnome.DisplayManager -o /org/gnome/DisplayManager/Manager \
        -m "org.freedesktop.DBus.Mock.$1" "${@:2}" >/dev/null 2>&1
}
wait_for 20 gdm_mock AddProperty org.gnome.DisplayManager.Manager Version "<'43.0'>" ||
    fail "the stand-in display manager did not start: $(tail -2 "$WORK/gdm.log")"
gdm_mock AddMethod org.gnome.DisplayManager.Manager RegisterSession 'a{sv}' '' ''

export XDG_DATA_HOME=$WORK/share GSETTINGS_BACKEND=keyfile
extension=$XDG_DATA_HOME/gnome-shell/extensions/narv-test@narv.app
mkdir -p "$extension"
cat >"$extension/metadata.json" <<'EOF'
{ "uuid": "narv-test@narv.app", "name": "Narv test access", "shell-version": ["43"],
  "description": "Lets tests/desktops/run ask the shell over org.gnome.Shell.Eval" }
EOF
cat >"$extension/extension.js" <<'EOF'
function init() {}
function enable() { global.context.unsafe_mode = true; }
function disable() { global.context.unsafe_mode = false; }
EOF
gsettings set org.gnome.shell enabled-extensions "['ubuntu-appindicators@ubuntu.com', 'narv-test@narv.app']"
gsettings set org.gnome.shell welcome-dialog-last-shown-version '999'

gnome-shell --wayland --headless --no-x11 --virtual-monitor 1280x800 --virtual-monitor 1280x800 \
    --wayland-display wayland-narv >"$WORK/gnome-shell.log" 2>&1 &
trap 'kill $(jobs -p) 2>/dev/null' EXIT

# Evaluates JavaScript in the shell; echoes its result (a string).
shell_eval() {
    dbus-send --session --print-reply --dest=org.gnome.Shell /org/gnome/Shell org.gnome.Shell.Eval \
        "string:$1" 2>/dev/null | python3 -c '
import json, sys
lines = sys.stdin.read().split("\n")
if len(lines) < 3 or "true" not in lines[1]:
    sys.exit(1)
text = "\n".join(lines[2:]).strip()
value = json.loads(text[len("string \""):-1])
print(value if isinstance(value, str) else json.dumps(value))'
}
shell_up() { [[ $(shell_eval 'String(global.display.get_n_monitors())') == 2 ]]; }
if ! wait_for 90 shell_up; then
    fail "gnome-shell did not come up with two monitors: $(tail -3 "$WORK/gnome-shell.log")"
    finish
    exit
fi
# The shell ends its start-up in the overview, where a new window does not
# take the focus.
overview_closed() {
    [[ $(shell_eval 'Main.overview.hide(); String(Main.layoutManager._startingUp || Main.overview.visible)') == false ]]
}
wait_for 30 overview_closed || fail "the overview does not close"
export WAYLAND_DISPLAY=wayland-narv XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=GNOME
export QT_QPA_PLATFORM=wayland
echo "$(gnome-shell --version)"

windows() {
    shell_eval '
const Meta = imports.gi.Meta;
const all = global.get_window_actors().map(a => a.meta_window)
    .filter(w => w.get_window_type() === Meta.WindowType.NORMAL || w.get_window_type() === Meta.WindowType.UTILITY);
const stack = global.display.sort_windows_by_stacking(all);
all.map(w => {
    const r = w.get_frame_rect();
    return [w.get_wm_class(), (w.get_title() || "").replace(" \u2014 Narv", ""), w.get_monitor(),
            [r.x, r.y, r.width, r.height].join(" "), w.is_fullscreen(), w.has_focus(),
            stack.indexOf(w)].join("|");
}).join("\n")'
}
close_window() {
    shell_eval "global.get_window_actors().map(a => a.meta_window)
        .filter(w => (w.get_title() || '').startsWith('$1'))
        .forEach(w => w.delete(global.get_current_time())); ''" >/dev/null
}
focus_client() {
    shell_eval "global.get_window_actors().map(a => a.meta_window)
        .filter(w => w.get_title() === 'Flower').forEach(w => w.activate(global.get_current_time())); ''" >/dev/null
}
# A token as the shell's own launcher makes one for Narv's desktop file.
launch_token() {
    shell_eval 'global.create_app_launch_context(global.display.get_current_time_roundtrip(), -1).get_startup_notify_id(
        imports.gi.Gio.DesktopAppInfo.new("app.narv.Narv.desktop"), [])'
}
screenshot() {
    dbus-send --session --print-reply --dest=org.gnome.Shell.Screenshot /org/gnome/Shell/Screenshot \
        org.gnome.Shell.Screenshot.Screenshot boolean:false boolean:false "string:$WORK/shots/$1" 2>/dev/null |
        grep -q "boolean true"
}

watcher_up() {
    dbus-send --session --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.NameHasOwner \
        string:org.kde.StatusNotifierWatcher 2>/dev/null | grep -q "boolean true"
}
wait_for 30 watcher_up || fail "the AppIndicator extension offers no StatusNotifierWatcher"

start_client
narv_start < <(narv_settings 0 30)
wait_for 30 item_registered && ok "the status item is registered with the AppIndicator extension" ||
    fail "the status item is not registered: $(registered_items | tail -2)"
check_idle_source "Mutter's idle monitor"
check_break desktop-gnome-break.png
kill -TERM "$pid"
wait "$pid"
pid=

# Twenty starts: the item is registered each time.
registered=0
for _ in $(seq 1 20); do
    rm -f "$XDG_CACHE_HOME"/narv/Logs/*.log
    narv_start < <(narv_settings 25 300)
    wait_for 20 item_registered && registered=$((registered + 1))
    kill -TERM "$pid"
    wait "$pid"
    pid=
done
[[ $registered -eq 20 ]] && ok "the status item is registered on 20 of 20 starts" ||
    fail "the status item is registered on $registered of 20 starts"

rm -f "$XDG_CACHE_HOME"/narv/Logs/*.log
narv_start < <(narv_settings 25 300)
wait_for 30 item_registered || fail "the status item is not registered"
check_close_by_compositor "Settings" "Settings" desktop-gnome-settings.png
check_close_by_compositor "Water Reminder" "Water (" desktop-gnome-water.png
check_water_toggle
check_second_start
check_lock "logind_session Lock" "logind_session Unlock"
no_crash && ok "no crash in the whole run" || fail "$(log | grep -E 'crash' | tail -2)"

finish
