# KWin (Wayland, virtual backend, two 1280x800 outputs) with kded5, whose
# module is the StatusNotifierWatcher, and plasmashell. Sourced by
# tests/desktops/run. Window facts come from KWin scripts, whose print()
# lands in KWin's output.

# kwin_wayland carries a file capability that containers refuse to exec, and
# its own platform plugin only loads in a program of that name: a plain copy.
mkdir -p "$WORK/bin"
cp /usr/bin/kwin_wayland "$WORK/bin/kwin_wayland"
"$WORK/bin/kwin_wayland" --virtual --output-count 2 --width 1280 --height 800 \
    --socket wayland-narv >"$WORK/kwin.log" 2>&1 &
trap 'kill $(jobs -p) 2>/dev/null' EXIT
kwin_up() {
    [[ -S $XDG_RUNTIME_DIR/wayland-narv ]] &&
        dbus-send --session --print-reply --dest=org.kde.KWin /KWin org.freedesktop.DBus.Peer.Ping >/dev/null 2>&1
}
if ! wait_for 60 kwin_up; then
    fail "kwin_wayland did not start: $(tail -3 "$WORK/kwin.log")"
    finish
    exit
fi
export WAYLAND_DISPLAY=wayland-narv XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=KDE
export KDE_FULL_SESSION=true QT_QPA_PLATFORM=wayland
echo "$(kwin_wayland --version 2>/dev/null)"

# What the bus starts on demand must find the compositor too.
dbus-update-activation-environment WAYLAND_DISPLAY XDG_SESSION_TYPE XDG_CURRENT_DESKTOP \
    KDE_FULL_SESSION QT_QPA_PLATFORM XDG_RUNTIME_DIR HOME XDG_CONFIG_HOME XDG_CACHE_HOME XDG_DATA_DIRS
kded5 >"$WORK/kded.log" 2>&1 &
/usr/lib/x86_64-linux-gnu/libexec/kactivitymanagerd >"$WORK/kamd.log" 2>&1 &
plasmashell --no-respawn >"$WORK/plasmashell.log" 2>&1 &
watcher_up() {
    dbus-send --session --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.NameHasOwner \
        string:org.kde.StatusNotifierWatcher 2>/dev/null | grep -q "boolean true"
}
kded_up() {
    dbus-send --session --print-reply --dest=org.kde.kded5 /kded org.kde.kded5.loadModule \
        string:statusnotifierwatcher >/dev/null 2>&1
}
wait_for 60 kded_up || fail "kded5 does not load its statusnotifierwatcher module"
wait_for 60 watcher_up || fail "no StatusNotifierWatcher from kded5: $(tail -3 "$WORK/kded.log")"

# Runs the KWin script $1 (JavaScript) once and echoes what it prints, which
# lands in KWin's output between two marker lines.
kwin_script() {
    local marker
    marker="narv-script-$(date +%s%N)"
    local file=$WORK/$marker.js
    printf 'print("%s");\n%s\nprint("%s-end");\n' "$marker" "$1" "$marker" >"$file"
    local id
    id=$(dbus-send --session --print-reply --dest=org.kde.KWin /Scripting org.kde.kwin.Scripting.loadScript \
        "string:$file" "string:$marker" 2>/dev/null | awk '/int32/ { print $2 }')
    [[ -n $id ]] || return 1
    dbus-send --session --print-reply --dest=org.kde.KWin "/Scripting/Script$id" org.kde.kwin.Script.run >/dev/null 2>&1 ||
        dbus-send --session --print-reply --dest=org.kde.KWin "/$id" org.kde.kwin.Script.run >/dev/null 2>&1
    for _ in $(seq 1 50); do
        grep -q "$marker-end" "$WORK/kwin.log" && break
        sleep 0.1
    done
    dbus-send --session --print-reply --dest=org.kde.KWin /Scripting org.kde.kwin.Scripting.unloadScript \
        "string:$marker" >/dev/null 2>&1
    sed -n "/js: $marker\$/,/js: $marker-end/p" "$WORK/kwin.log" | sed '1d;$d;s/^js: //' | awk '!seen[$0]++'
}
# resourceClass|caption|screen|x y w h|fullScreen|active|desktopFileName|place in the stacking order
windows() {
    kwin_script '
for (const w of workspace.clientList()) {
    if (!w.normalWindow && !w.dialog && !w.utility) continue;
    const g = w.frameGeometry;
    print([w.resourceClass, w.caption.replace(" \u2014 Narv", ""), w.screen,
           [g.x, g.y, g.width, g.height].join(" "), w.fullScreen, w.active, w.desktopFileName,
           w.stackingOrder].join("|"));
}'
}
narv_windows() { windows | awk -F'|' '$7 == "app.narv.Narv"'; }
window_named() { narv_windows | awk -F'|' -v n="$1" '$2 == n'; }
has_window() { [[ -n $(window_named "$1") ]]; }
no_window() { [[ -z $(window_named "$1") ]]; }
focused_window() { windows | awk -F'|' '$6 == "true" { print $2 }'; }
close_window() {
    kwin_script "for (const w of workspace.clientList()) if (w.caption.startsWith(\"$1\")) w.closeWindow();" >/dev/null
}
focus_client() {
    kwin_script 'for (const w of workspace.clientList()) if (w.caption == "Flower") workspace.activeClient = w;' >/dev/null
}

weston-flower >/dev/null 2>&1 &
client_up() { [[ $(focused_window) == Flower ]]; }
wait_for 20 client_up || fail "the client window did not come up with the focus: $(windows | tr '\n' ';')"

# --- a break at once, 30 seconds long
narv_start < <(narv_settings 0 30)
wait_for 30 item_registered && ok "the status item is registered with kded5's watcher" ||
    fail "the status item is not registered: $(registered_items | tail -2)"
if wait_for 10 logged "mouse activity: "; then
    source_line=$(log | grep -o 'mouse activity: [^(]*' | head -1)
    [[ $source_line == *org_kde_kwin_idle* || $source_line == *ext-idle-notify-v1* ]] &&
        ok "idle source: $source_line" || fail "idle source: $source_line"
else
    fail "no idle source in the log"
fi
breaks_up() { [[ $(narv_windows | awk -F'|' '$5 == "true"' | wc -l) -eq 2 ]]; }
if wait_for 30 breaks_up; then
    geometry=$(narv_windows | awk -F'|' '$5 == "true" { print $2 ": " $3 " " $4 }' | sort | tr '\n' ';')
    outputs=$(narv_windows | awk -F'|' '$5 == "true" { print $3 " " $4 }' | sort -u | wc -l)
    [[ $outputs -eq 2 ]] && ok "one full-screen break window per output ($geometry)" ||
        fail "break windows: $geometry"
    all=$(windows)
    client_place=$(awk -F'|' '$2 == "Flower" { print $8 }' <<<"$all")
    lowest_break=$(awk -F'|' '$7 == "app.narv.Narv" && $5 == "true" { print $8 }' <<<"$all" | sort -n | head -1)
    [[ -n $client_place && $lowest_break -gt $client_place ]] &&
        ok "the break windows are above the client window in KWin's stacking order" ||
        fail "the break windows are not above the client window: $(tr '\n' ';' <<<"$all")"
    focus=$(focused_window)
    primary=$(narv_windows | awk -F'|' '$4 ~ /^0 0 / { print $2 }' | head -1)
    [[ -n $focus && $focus == "$primary" ]] && ok "the primary output's break window ($primary) has the focus" ||
        fail "the focus is on \"$focus\", not on the primary output's break window \"$primary\""
else
    fail "no full-screen break window on each output: $(windows | tr '\n' ';')"
fi
kill -TERM "$pid"
wait "$pid"
pid=

# --- Settings and the water panel from the menu, closed by the compositor
rm -f "$XDG_CACHE_HOME"/narv/Logs/*.log
narv_start < <(narv_settings 25 300)
wait_for 30 item_registered || fail "the status item is not registered"
close_by_compositor() {
    local title=$1
    menu_click label "\"$2" || { fail "no \"$2\" in the menu"; return; }
    if ! wait_for 20 has_window "$title"; then
        fail "$title did not open: $(windows | tr '\n' ';')"
        return
    fi
    ok "$title carries the desktop file id app.narv.Narv"
    echo "$title placed by KWin: $(window_named "$title" | cut -d'|' -f3,4)"
    close_window "$title"
    if wait_for 10 no_window "$title" && sleep 1 && no_crash; then
        ok "$title closed by the compositor, no crash"
    else
        fail "$title closed by the compositor: $(log | grep -E 'crash|error' | tail -2)"
    fi
    menu_click label "\"$2"
    wait_for 20 has_window "$title" && ok "$title opens again" || fail "$title does not open again"
}
close_by_compositor "Settings" "Settings"
close_by_compositor "Water Reminder" "Water ("
menu_click label '"Water ('
wait_for 10 no_window "Water Reminder" || fail "the menu does not close the water panel"

# --- a second start brings Settings to the front
settings_focused() { [[ $(focused_window) == Settings ]]; }
focus_client
[[ $(focused_window) == Flower ]] || fail "the client window did not take the focus"
"$build/narv" >>"$WORK/narv.out" 2>&1
status=$?
if [[ $status -ne 0 ]]; then
    fail "a second start exited with $status"
elif wait_for 5 settings_focused; then
    ok "a second start brings the open Settings to the front"
else
    skip "a second start without a launcher's activation token leaves the open Settings behind (focus on \"$(focused_window)\")"
fi
close_window "Settings"
wait_for 10 no_window "Settings"
focus_client
"$build/narv" >>"$WORK/narv.out" 2>&1
wait_for 10 settings_focused && ok "a second start brings the closed Settings back with the focus" ||
    fail "a second start after a close: the focus is on \"$(focused_window)\""
no_crash && ok "no crash in the whole run" || fail "$(log | grep -E 'crash' | tail -2)"

finish
