# sway with its headless backend, two 1280x800 outputs side by side, and
# waybar's tray. Sourced by tests/desktops/run as an unprivileged user.

cat >"$WORK/sway.conf" <<EOF
xwayland disable
output HEADLESS-1 resolution 1280x800 position 0 0
output HEADLESS-2 resolution 1280x800 position 1280 0
EOF
echo '{ "layer": "top", "height": 28, "modules-right": ["tray"], "tray": { "spacing": 4 } }' >"$WORK/waybar.json"
echo 'window#waybar { background: #303030; color: #ffffff; }' >"$WORK/waybar.css"
WLR_BACKENDS=headless WLR_HEADLESS_OUTPUTS=2 WLR_LIBINPUT_NO_DEVICES=1 WLR_RENDERER=pixman \
    sway -c "$WORK/sway.conf" >"$WORK/sway.log" 2>&1 &
sway_up() { compgen -G "$XDG_RUNTIME_DIR/sway-ipc.*.sock" >/dev/null && [[ -S $XDG_RUNTIME_DIR/wayland-1 ]]; }
shell_up 20 sway_up "$WORK/sway.log"
SWAYSOCK=$(compgen -G "$XDG_RUNTIME_DIR/sway-ipc.*.sock")
export SWAYSOCK
wayland_session wayland-1 sway
swaymsg -t get_version -r | python3 -c 'import json,sys; print("sway", json.load(sys.stdin)["human_readable"])'
waybar -c "$WORK/waybar.json" -s "$WORK/waybar.css" >"$WORK/waybar.log" 2>&1 &
wait_for 20 name_owned org.kde.StatusNotifierWatcher || fail "waybar's tray has no StatusNotifierWatcher"

# As checks.sh wants them; in sway a window that is covered is not visible,
# so the stacking is 1 for visible windows and 0 for covered ones; and
# whether the window is urgent.
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
              int(bool(node.get("visible"))), str(node.get("urgent")).lower())))
    for child in node.get("nodes", []) + node.get("floating_nodes", []):
        walk(child, output)
walk(json.load(sys.stdin), None)'
}
close_window() { swaymsg "[title=\"^$1\"] kill" >/dev/null; }
focus_client() { swaymsg '[app_id="org.freedesktop.weston.flower"] focus' >/dev/null; }
screenshot() { grim "$WORK/shots/$1" 2>/dev/null; }
# sway does with an activation what its focus_on_window_activation says: by
# default it marks a window urgent, unless the window is new.
came_forward() {
    focused_on Settings || { [[ $(window_named Settings | cut -d'|' -f8) == true ]] &&
        echo " (marked urgent, sway's default)"; }
}

run_checks "waybar's tray" org_kde_kwin_idle desktop-sway \
    "swaylock tells neither logind (LockedHint) nor a screensaver service, so Narv cannot see it"
