# sway with its headless backend, two 1280x800 outputs side by side, and
# waybar's tray. Sourced by tests/desktops/run as an unprivileged user.

cat >"$WORK/sway.conf" <<EOF
xwayland disable
output HEADLESS-1 resolution 1280x800 position 0 0
output HEADLESS-2 resolution 1280x800 position 1280 0
EOF
cat >"$WORK/waybar.json" <<'EOF'
{ "layer": "top", "position": "top", "height": 28, "modules-right": ["tray"], "tray": { "spacing": 4 } }
EOF
cat >"$WORK/waybar.css" <<'EOF'
* { font-family: sans-serif; font-size: 13px; }
window#waybar { background: #303030; color: #ffffff; }
EOF

WLR_BACKENDS=headless WLR_HEADLESS_OUTPUTS=2 WLR_LIBINPUT_NO_DEVICES=1 WLR_RENDERER=pixman \
    sway -c "$WORK/sway.conf" >"$WORK/sway.log" 2>&1 &
compositor=$!
trap 'kill $(jobs -p) 2>/dev/null' EXIT
sway_up() { compgen -G "$XDG_RUNTIME_DIR/sway-ipc.*.sock" >/dev/null && [[ -S $XDG_RUNTIME_DIR/wayland-1 ]]; }
if ! wait_for 20 sway_up; then
    fail "sway did not start: $(tail -3 "$WORK/sway.log")"
    finish
    exit
fi
SWAYSOCK=$(compgen -G "$XDG_RUNTIME_DIR/sway-ipc.*.sock")
export SWAYSOCK WAYLAND_DISPLAY=wayland-1 XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=sway
export QT_QPA_PLATFORM=wayland
echo "sway $(swaymsg -t get_version -r | python3 -c 'import json,sys; print(json.load(sys.stdin)["human_readable"])')"

waybar -c "$WORK/waybar.json" -s "$WORK/waybar.css" >"$WORK/waybar.log" 2>&1 &
watcher_up() {
    dbus-send --session --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.NameHasOwner \
        string:org.kde.StatusNotifierWatcher 2>/dev/null | grep -q "boolean true"
}
wait_for 20 watcher_up || fail "waybar's tray has no StatusNotifierWatcher: $(tail -3 "$WORK/waybar.log")"

# As checks.sh wants them; in sway a window that is covered is not visible,
# so the stacking is 1 for visible windows and 0 for covered ones.
windows() {
    swaymsg -t get_tree -r | python3 -c '
import json, sys
def walk(node, output):
    if node.get("type") == "output":
        output = node["name"]
    if node.get("type") in ("con", "floating_con") and node.get("pid"):
        r = node["rect"]
        name = (node.get("name") or "").removesuffix(" \u2014 Narv")
        print("|".join(str(v) for v in (node.get("app_id"), name, output,
              "%d %d %d %d" % (r["x"], r["y"], r["width"], r["height"]),
              str(node.get("fullscreen_mode") == 1).lower(), str(node.get("focused")).lower(),
              int(bool(node.get("visible"))))))
    for child in node.get("nodes", []) + node.get("floating_nodes", []):
        walk(child, output)
walk(json.load(sys.stdin), None)'
}
close_window() { swaymsg "[title=\"^$1\"] kill" >/dev/null; }
focus_client() { swaymsg '[app_id="org.freedesktop.weston.flower"] focus' >/dev/null; }
screenshot() { grim "$WORK/shots/$1" 2>/dev/null; }

# Drawn on both outputs: the break screen's plain background a little inside
# each output's left edge, half-way down.
drawn() {
    grim -t ppm "$WORK/break.ppm" 2>/dev/null && python3 - "$WORK/break.ppm" <<'PY'
import sys
data = open(sys.argv[1], "rb").read()
parts = data.split(b"\n", 3)
width, height = map(int, parts[1].split())
pixels = parts[3]
def at(x, y):
    i = (y * width + x) * 3
    return tuple(pixels[i:i + 3])
left, right = at(20, 400), at(1300, 400)
sys.exit(0 if left == right and min(left) > 200 else 1)
PY
}

start_client
narv_start < <(narv_settings 0 30)
wait_for 20 item_registered && ok "the status item is registered with waybar's tray" ||
    fail "the status item is not registered: $(registered_items | tail -2)"
check_idle_source org_kde_kwin_idle
check_break
wait_for 10 drawn && ok "the break screen is drawn on both outputs" ||
    fail "the break screen is not drawn on both outputs"
screenshot desktop-sway-break.png && shot desktop-sway-break.png
kill -TERM "$pid"
wait "$pid"
pid=

rm -f "$XDG_CACHE_HOME"/narv/Logs/*.log
narv_start < <(narv_settings 25 300)
wait_for 20 item_registered || fail "the status item is not registered"
check_close_by_compositor "Settings" "Settings" desktop-sway-settings.png
check_close_by_compositor "Water Reminder" "Water (" desktop-sway-water.png
check_water_toggle
check_second_start
no_crash && ok "no crash in the whole run" || fail "$(log | grep -E 'crash' | tail -2)"
skip "a lock and unlock: swaylock tells neither logind (LockedHint) nor a screensaver service, so Narv cannot see it"

finish
