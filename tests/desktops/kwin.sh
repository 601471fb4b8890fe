# KWin (Wayland, virtual backend, two 1280x800 outputs) with kded5, whose
# module is the StatusNotifierWatcher, and plasmashell. Window facts come
# from KWin scripts. kwin_wayland carries a file capability that containers
# refuse to exec, and its platform plugin only loads in a program of that
# name: a plain copy.
cp /usr/bin/kwin_wayland "$WORK/bin/kwin_wayland"
# A click as a pointer makes it: KWin offers its fake input protocol to the
# programs whose desktop file asks for it.
build_client click /usr/share/plasma-wayland-protocols/fake-input.xml
printf '[Desktop Entry]\nType=Application\nName=click\nExec=%s\nX-KDE-Wayland-Interfaces=%s\n' \
    "$WORK/bin/click" org_kde_kwin_fake_input >"$WORK/share/applications/click.desktop"
# No lock after five idle minutes: this script locks when it means to.
printf '[Daemon]\nAutolock=false\nLockOnResume=false\n' >"$XDG_CONFIG_HOME/kscreenlockerrc"
standin_logind
KWIN_SCREENSHOT_NO_PERMISSION_CHECKS=1 "$WORK/bin/kwin_wayland" --virtual --output-count 2 --width 1280 --height 800 \
    --socket wayland-narv >"$WORK/kwin.log" 2>&1 &
kwin_up() { [[ -S $XDG_RUNTIME_DIR/wayland-narv ]] && name_owned org.kde.KWin; }
shell_up 60 kwin_up "$WORK/kwin.log"
wayland_session wayland-narv KDE
export KDE_FULL_SESSION=true
kwin_wayland --version 2>/dev/null

# What the bus starts on demand must find the compositor too.
dbus-update-activation-environment WAYLAND_DISPLAY XDG_SESSION_TYPE XDG_CURRENT_DESKTOP \
    KDE_FULL_SESSION QT_QPA_PLATFORM XDG_RUNTIME_DIR HOME XDG_CONFIG_HOME XDG_CACHE_HOME XDG_DATA_DIRS
kded5 >"$WORK/kded.log" 2>&1 &
/usr/lib/x86_64-linux-gnu/libexec/kactivitymanagerd >"$WORK/kamd.log" 2>&1 &
plasmashell --no-respawn >"$WORK/plasmashell.log" 2>&1 &
kded_up() {
    dbus-send --session --print-reply --dest=org.kde.kded5 /kded org.kde.kded5.loadModule \
        string:statusnotifierwatcher >/dev/null 2>&1
}
wait_for 60 kded_up || fail "kded5 does not load its statusnotifierwatcher module"
wait_for 60 name_owned org.kde.StatusNotifierWatcher || fail "no StatusNotifierWatcher from kded5"

# Runs the KWin script $1 (JavaScript) once and echoes what it prints, which
# lands in KWin's output between two marker lines.
kwin_script() {
    local marker id
    marker="narv-script-$(date +%s%N)"
    printf 'print("%s");\n%s\nprint("%s-end");\n' "$marker" "$1" "$marker" >"$WORK/$marker.js"
    id=$(dbus-send --session --print-reply --dest=org.kde.KWin /Scripting org.kde.kwin.Scripting.loadScript \
        "string:$WORK/$marker.js" "string:$marker" 2>/dev/null | awk '/int32/ { print $2 }')
    [[ -n $id ]] || return 1
    dbus-send --session --print-reply --dest=org.kde.KWin "/Scripting/Script$id" org.kde.kwin.Script.run >/dev/null 2>&1 ||
        dbus-send --session --print-reply --dest=org.kde.KWin "/$id" org.kde.kwin.Script.run >/dev/null 2>&1
    wait_for 5 grep -q "$marker-end" "$WORK/kwin.log"
    dbus-send --session --print-reply --dest=org.kde.KWin /Scripting org.kde.kwin.Scripting.unloadScript \
        "string:$marker" >/dev/null 2>&1
    sed -n "/js: $marker\$/,/js: $marker-end/p" "$WORK/kwin.log" | sed '1d;$d;s/^js: //' | awk '!seen[$0]++'
}
windows() {
    kwin_script '
for (const w of workspace.clientList()) {
    if (!w.normalWindow && !w.dialog && !w.utility) continue;
    const g = w.frameGeometry;
    print([w.desktopFileName, w.caption.replace(" \u2014 Narv", ""), w.screen,
           [g.x, g.y, g.width, g.height].join(" "), w.fullScreen, w.active,
           w.stackingOrder].join("|"));
}'
}
close_window() {
    kwin_script "for (const w of workspace.clientList()) if (w.caption.startsWith(\"$1\")) w.closeWindow();" >/dev/null
}
focus_client() {
    kwin_script 'for (const w of workspace.clientList()) if (w.caption == "Flower") workspace.activeClient = w;' >/dev/null
}
# KWin's screenshot interface hands the pixels over a pipe.
screenshot() {
    /usr/bin/python3 - "$WORK/shots/$1" <<'PY' 2>/dev/null
import dbus, os, sys, gi
gi.require_version("GdkPixbuf", "2.0")
from gi.repository import GLib, GdkPixbuf
r, w = os.pipe()
kwin = dbus.SessionBus().get_object("org.kde.KWin", "/org/kde/KWin/ScreenShot2")
info = kwin.CaptureWorkspace({}, dbus.types.UnixFd(w), dbus_interface="org.kde.KWin.ScreenShot2")
os.close(w)
data = bytearray(b"".join(iter(lambda: os.read(r, 1 << 20), b"")))
data[0::4], data[2::4] = data[2::4], data[0::4]  # BGRA to RGBA
GdkPixbuf.Pixbuf.new_from_bytes(GLib.Bytes.new(bytes(data)), GdkPixbuf.Colorspace.RGB, True, 8,
    int(info["width"]), int(info["height"]), int(info["stride"])).savev(sys.argv[1], "png", [], [])
PY
}

# Narv's icon: the first place in the system tray of the panel at the
# bottom of the first screen, once the tray is wider than $1 (without it).
tray_geometry() {
    dbus-send --session --print-reply --dest=org.kde.plasmashell /PlasmaShell org.kde.PlasmaShell.evaluateScript \
        'string:var p = panels()[0]; var g = p.widgets("org.kde.plasma.systemtray")[0].geometry;
print(Math.round(g.x + 15) + " " + Math.round(screenGeometry(p.screen).height - p.height + g.y + g.height / 2) + " " + g.width);' \
        2>/dev/null | awk -F'"' '/string/ { print $2 }'
}
tray_grown() { [[ $(tray_geometry | cut -d' ' -f3) -gt $tray_width ]]; }
# A left click on the icon in the real plasmashell opens the item's menu:
# the tray's AboutToShow and the menu's "opened" event in a bus monitor.
# KWin passes no press on to a surface the pointer has only just entered, so
# the click is made again until the menu opens.
menu_opened() { grep -q '"opened"' "$WORK/click.bus"; }
click_opens() { "$WORK/bin/click" "$@" && wait_for 2 menu_opened; }
more_checks() {
    wait_for 20 tray_grown || { fail "Narv's icon is not in Plasma's tray"; return; }
    dbus-monitor --session "interface='org.kde.StatusNotifierItem'" "interface='com.canonical.dbusmenu'" \
        >"$WORK/click.bus" 2>&1 &
    local monitor=$! xy calls
    wait_for 10 grep -q NameLost "$WORK/click.bus"
    xy=$(tray_geometry)
    wait_for 20 click_opens ${xy% *}
    calls=$(grep -o 'member=[A-Za-z]*' "$WORK/click.bus" | sort -u | tr '\n' ' ')
    grep -q member=AboutToShow "$WORK/click.bus" && menu_opened &&
        ok "a left click on the icon in Plasma's tray opens the menu ($calls)" ||
        fail "a left click at ${xy% *} on the icon does not open the menu ($calls)"
    kill "$monitor"
    "$WORK/bin/click" 1920 700 # beside the menu, which closes it
}
kde_lock() { dbus-send --session --print-reply --dest=org.freedesktop.ScreenSaver /ScreenSaver org.freedesktop.ScreenSaver.Lock >/dev/null; }

wait_for 60 tray_geometry >/dev/null || fail "plasmashell has no system tray: $(tail -3 "$WORK/plasmashell.log")"
tray_width=$(tray_geometry | cut -d' ' -f3)
run_checks "kded5's watcher" ext-idle-notify-v1 desktop-kde kde_lock "logind_session Unlock"
