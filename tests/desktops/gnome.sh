# GNOME Shell 43 on Wayland, headless, two 1280x800 virtual monitors, with
# the AppIndicator extension. Window facts, the compositor's close and
# screenshots go through org.gnome.Shell.Eval and .Screenshot, which the shell
# allows only in its unsafe mode: a small extension of the test's own turns
# that on. The shell wants a system bus with logind on it, and makes its lock
# screen only with a display manager there (GDM 3.5.91 or later).
standin_logind
/usr/bin/python3 -m dbusmock --system org.gnome.DisplayManager /org/gnome/DisplayManager/Manager \
    org.gnome.DisplayManager.Manager >"$WORK/gdm.log" 2>&1 &
gdm_mock() {
    gdbus call --system -d org.gnome.DisplayManager -o /org/gnome/DisplayManager/Manager \
        -m "org.freedesktop.DBus.Mock.$1" org.gnome.DisplayManager.Manager "${@:2}" >/dev/null 2>&1
}
wait_for 20 gdm_mock AddProperty Version "<'43.0'>" || fail "the stand-in display manager did not start"
gdm_mock AddMethod RegisterSession 'a{sv}' '' ''

export XDG_DATA_HOME=$WORK/share GSETTINGS_BACKEND=keyfile
extension=$XDG_DATA_HOME/gnome-shell/extensions/narv-test@narv.app
mkdir -p "$extension"
cat >"$extension/metadata.json" <<'EOF'
{ "uuid": "narv-test@narv.app", "name": "Narv test access", "shell-version": ["43"],
  "description": "Lets tests/desktops/run ask the shell over org.gnome.Shell.Eval" }
EOF
# Outside a systemd user session the shell forks ibus-daemon itself, and runs
# JavaScript in the forked child before the exec: now and then a lock another
# thread held at the fork hangs the child, and the shell in g_spawn_async with
# it. Under systemd, as on a real desktop, IBus is a unit and no fork happens.
# Extensions are enabled before the shell's first main-loop turn, which is
# where the fork would come, so the test's extension turns it off in time.
cat >"$extension/extension.js" <<'EOF'
function init() {}
function enable() {
    global.context.unsafe_mode = true;
    imports.misc.ibusManager.getIBusManager()._spawn = () => log('narv-test: ibus-daemon not forked');
}
function disable() { global.context.unsafe_mode = false; }
EOF
gsettings set org.gnome.shell enabled-extensions "['ubuntu-appindicators@ubuntu.com', 'narv-test@narv.app']"
gsettings set org.gnome.shell welcome-dialog-last-shown-version '999'

gnome-shell --wayland --headless --no-x11 --virtual-monitor 1280x800 --virtual-monitor 1280x800 \
    --wayland-display wayland-narv >"$WORK/gnome-shell.log" 2>&1 &

# Evaluates JavaScript in the shell; echoes its result (a string).
shell_eval() {
    dbus-send --session --print-reply --dest=org.gnome.Shell /org/gnome/Shell org.gnome.Shell.Eval \
        "string:$1" 2>/dev/null | python3 -c '
import json, sys
lines = sys.stdin.read().split("\n")
if len(lines) < 3 or "true" not in lines[1]:
    sys.exit(1)
value = json.loads("\n".join(lines[2:]).strip()[len("string \""):-1])
print(value if isinstance(value, str) else json.dumps(value))'
}
two_monitors() { [[ $(shell_eval 'String(global.display.get_n_monitors())') == 2 ]]; }
shell_up 90 two_monitors "$WORK/gnome-shell.log"
grep -q "narv-test: ibus-daemon not forked" "$WORK/gnome-shell.log" ||
    fail "the shell forked ibus-daemon before the test's extension was enabled"
# The shell ends its start-up in the overview, where a new window does not
# take the focus.
overview_closed() {
    [[ $(shell_eval 'Main.overview.hide(); String(Main.layoutManager._startingUp || Main.overview.visible)') == false ]]
}
wait_for 30 overview_closed || fail "the overview does not close"
wayland_session wayland-narv GNOME
gnome-shell --version

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
# Runs $1 on each window whose title starts with $2.
each_window() {
    shell_eval "global.get_window_actors().map(a => a.meta_window).filter(w => (w.get_title() || '')
        .startsWith('$2')).forEach(w => w.$1(global.get_current_time())); ''" >/dev/null
}
close_window() { each_window delete "$1"; }
focus_client() { each_window activate Flower; }
# A token as the shell's own launcher makes one for Narv's desktop file.
launch_token() {
    shell_eval 'global.create_app_launch_context(global.display.get_current_time_roundtrip(), -1).get_startup_notify_id(
        imports.gi.Gio.DesktopAppInfo.new("app.narv.Narv.desktop"), [])' >"$WORK/token"
}
screenshot() {
    dbus-send --session --print-reply --dest=org.gnome.Shell.Screenshot /org/gnome/Shell/Screenshot \
        org.gnome.Shell.Screenshot.Screenshot boolean:false boolean:false "string:$WORK/shots/$1" 2>/dev/null |
        grep -q "boolean true"
}
# Twenty starts: the item is registered each time.
between_runs() {
    local registered=0
    for _ in $(seq 1 20); do
        narv_start < <(narv_settings 25 300)
        wait_for 20 item_registered && registered=$((registered + 1))
        narv_end
    done
    [[ $registered -eq 20 ]] && ok "the status item is registered on 20 of 20 starts" ||
        fail "the status item is registered on $registered of 20 starts"
}

wait_for 30 name_owned org.kde.StatusNotifierWatcher || fail "the AppIndicator extension offers no StatusNotifierWatcher"
run_checks "the AppIndicator extension" "Mutter's idle monitor" desktop-gnome \
    "logind_session Lock" "logind_session Unlock"
