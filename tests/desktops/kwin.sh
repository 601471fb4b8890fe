# KWin (Wayland, virtual backend, two 1280x800 outputs) with kded5, whose
# module is the StatusNotifierWatcher, and plasmashell. Window facts come
# from KWin scripts. kwin_wayland carries a file capability that containers
# refuse to exec, and its platform plugin only loads in a program of that
# name: a plain copy.
cp /usr/bin/kwin_wayland "$WORK/bin/kwin_wayland"
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

kde_lock() { dbus-send --session --print-reply --dest=org.freedesktop.ScreenSaver /ScreenSaver org.freedesktop.ScreenSaver.Lock >/dev/null; }

# plasmashell is up once its panel has its system tray.
tray_up() {
    dbus-send --session --print-reply --dest=org.kde.plasmashell /PlasmaShell org.kde.PlasmaShell.evaluateScript \
        'string:print(panels()[0].widgets("org.kde.plasma.systemtray").length)' 2>/dev/null | grep -q 'string "1'
}
wait_for 60 tray_up || fail "plasmashell has no system tray: $(tail -3 "$WORK/plasmashell.log")"
# A break owed while an application holds org.freedesktop.ScreenSaver's
# inhibitor, as a video call does: KWin's screen locker hands it to PowerDevil
# (with UPower on the stand-in system bus), which answers Narv, 5 s later.
between_runs() {
    /usr/libexec/upowerd >"$WORK/upower.log" 2>&1 &
    /usr/lib/x86_64-linux-gnu/libexec/org_kde_powerdevil >"$WORK/powerdevil.log" 2>&1 &
    local powerdevil=$! call
    has_inhibit() {
        gdbus call --session -d org.freedesktop.PowerManagement.Inhibit -o /org/freedesktop/PowerManagement/Inhibit \
            -m org.freedesktop.PowerManagement.Inhibit.HasInhibit 2>/dev/null | grep -q "$1"
    }
    wait_for 30 has_inhibit false || { fail "PowerDevil did not come up: $(tail -2 "$WORK/powerdevil.log")"; return; }
    /usr/bin/python3 -c 'import dbus, signal; dbus.SessionBus().get_object("org.freedesktop.ScreenSaver", "/ScreenSaver").Inhibit(
        "narv-test", "a call", dbus_interface="org.freedesktop.ScreenSaver"); signal.pause()' &
    call=$!
    wait_for 20 has_inhibit true || fail "the screensaver's inhibitor did not reach PowerDevil"
    narv_start < <(narv_settings 0 30; echo pref.defer.when.busy=true)
    no_break() { [[ -z $(narv_windows | awk -F'|' '$5 == "true"') ]]; }
    wait_for 20 logged "the break waits: an application inhibits the screensaver" && no_break &&
        ok "a break waits while an application inhibits the screensaver" || fail "the break did not wait for the inhibitor"
    kill "$call"
    wait_for 20 logged "the break waited [0-9]* seconds (an application inhibits the screensaver): it starts" &&
        ok "the break starts once the inhibitor is gone" || fail "the break did not start after the inhibitor"
    narv_end
    kill "$powerdevil"
}
run_checks "kded5's watcher" ext-idle-notify-v1 desktop-kde kde_lock "logind_session Unlock"
