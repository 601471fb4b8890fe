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

# The windows as sway sees them, one line each:
# app_id|name|output|x y w h|fullscreen|focused|visible
# (the name without the " — Narv" Qt adds to a title)
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
              node.get("fullscreen_mode"), node.get("focused"), node.get("visible"))))
    for child in node.get("nodes", []) + node.get("floating_nodes", []):
        walk(child, output)
walk(json.load(sys.stdin), None)'
}
narv_windows() { windows | grep "^app.narv.Narv|" || true; }
window_named() { narv_windows | awk -F'|' -v n="$1" '$2 == n'; }
has_window() { [[ -n $(window_named "$1") ]]; }
no_window() { [[ -z $(window_named "$1") ]]; }
focused_window() { windows | awk -F'|' '$6 == "True" { print $2 }'; }

# A client window with the focus, as the user's work would be.
weston-flower >/dev/null 2>&1 &
client_up() { [[ $(focused_window) == Flower ]]; }
wait_for 10 client_up || fail "the client window did not come up: $(windows | tr '\n' ';')"

# --- a break at once, 30 seconds long
narv_start < <(narv_settings 0 30)
wait_for 20 item_registered && ok "the status item is registered with waybar's tray" ||
    fail "the status item is not registered: $(registered_items | tail -2)"
if wait_for 10 logged "mouse activity: org_kde_kwin_idle"; then
    ok "idle source: $(log | grep -o 'mouse activity: [^(]*' | head -1)"
else
    fail "idle source: $(log | grep -o 'mouse activity: .*' | head -1)"
fi
breaks_up() { [[ $(narv_windows | awk -F'|' '$5 == 1' | wc -l) -eq 2 ]]; }
if wait_for 30 breaks_up; then
    sleep 1 # the first frame
    geometry=$(narv_windows | awk -F'|' '{ print $2 ": " $3 " " $4 }' | sort | tr '\n' ';')
    if [[ $geometry == "HEADLESS-1: HEADLESS-1 0 0 1280 800;HEADLESS-2: HEADLESS-2 1280 0 1280 800;" ]]; then
        ok "one full-screen break window per output ($geometry)"
    else
        fail "break windows: $geometry"
    fi
    covered=$(windows | awk -F'|' '$2 == "Flower" { print $7 }')
    [[ $covered == False ]] && ok "the client window is covered by the break" ||
        fail "the client window is still visible during the break"
    focus=$(focused_window)
    [[ $focus == HEADLESS-1 ]] && ok "the primary output's break window has the focus" ||
        fail "the focus is on \"$focus\", not on the primary output's break window"
    # Drawn on both outputs: the break screen's plain background a little
    # inside each output's left edge, half-way down.
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
    wait_for 10 drawn && ok "the break screen is drawn on both outputs" ||
        fail "the break screen is not drawn on both outputs"
    grim "$WORK/shots/desktop-sway-break.png" 2>/dev/null && shot desktop-sway-break.png
else
    fail "no full-screen break window on each output: $(narv_windows | tr '\n' ';')"
fi
kill -TERM "$pid"
wait "$pid"
pid=

# --- Settings and the water panel from the menu, closed by the compositor
rm -f "$XDG_CACHE_HOME"/narv/Logs/*.log
narv_start < <(narv_settings 25 300)
wait_for 20 item_registered || fail "the status item is not registered"
close_by_compositor() {
    local title=$1
    menu_click label "\"$2" || { fail "no \"$2\" in the menu"; return; }
    if ! wait_for 20 has_window "$title"; then
        fail "$title did not open: $(narv_windows | tr '\n' ';')"
        return
    fi
    local app_id
    app_id=$(window_named "$title" | cut -d'|' -f1)
    [[ $app_id == app.narv.Narv ]] && ok "$title carries the app id $app_id" || fail "$title: app id $app_id"
    [[ -z ${3:-} ]] || grim "$WORK/shots/$3" 2>/dev/null && shot "$3"
    swaymsg "[title=\"^$title\"] kill" >/dev/null
    if wait_for 10 no_window "$title" && sleep 1 && no_crash; then
        ok "$title closed by the compositor, no crash"
    else
        fail "$title closed by the compositor: $(narv_windows | tr '\n' ';') $(log | grep -E 'crash|error' | tail -2)"
    fi
    # And it opens again.
    menu_click label "\"$2"
    wait_for 20 has_window "$title" && ok "$title opens again" || fail "$title does not open again"
}
close_by_compositor "Settings" "Settings" desktop-sway-settings.png
close_by_compositor "Water Reminder" "Water (" desktop-sway-water.png
window_named "Water Reminder" | awk -F'|' '{ print "water panel placed by sway: " $3 " " $4 }'
menu_click label '"Water ('
wait_for 10 no_window "Water Reminder" || fail "the menu does not close the water panel"

# --- a second start brings Settings to the front
swaymsg '[app_id="org.freedesktop.weston.flower"] focus' >/dev/null
[[ $(focused_window) == Flower ]] || fail "the client window did not take the focus back"
"$build/narv" >>"$WORK/narv.out" 2>&1
status=$?
settings_focused() { [[ $(focused_window) == Settings ]]; }
# Settings still open behind the client come forward only with a launcher's
# activation token, and nothing here is a launcher that mints one.
if [[ $status -ne 0 ]]; then
    fail "a second start exited with $status"
elif wait_for 5 settings_focused; then
    ok "a second start brings the open Settings to the front"
else
    skip "a second start without a launcher's activation token leaves the open Settings behind (focus on \"$(focused_window)\")"
fi
swaymsg '[title="^Settings"] kill' >/dev/null
wait_for 10 no_window "Settings"
swaymsg '[app_id="org.freedesktop.weston.flower"] focus' >/dev/null
[[ $(focused_window) == Flower ]] || fail "the client window did not take the focus back"
"$build/narv" >>"$WORK/narv.out" 2>&1
if wait_for 10 settings_focused; then
    ok "a second start brings the closed Settings back with the focus"
else
    fail "a second start after a close: the focus is on \"$(focused_window)\""
fi
no_crash && ok "no crash in the whole run" || fail "$(log | grep -E 'crash' | tail -2)"

finish
