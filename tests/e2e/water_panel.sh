#!/usr/bin/env bash
# The real program on a private X server with two monitors (tests/run-on-xvfb)
# and a private session bus: the status menu's water item, clicked over
# dbusmenu as a panel does, opens one 280x330 water panel at the top-right
# corner of the primary monitor, above other windows, on every desktop and
# borderless; "Done", clicked with xdotool, adds the chosen amount to the
# settings file and to the menu's item and closes the panel; the item toggles
# the same window in and out; hidden, the panel keeps no backing store. The
# menu's "Quit" ends the program.
#
#   tests/e2e/water_panel.sh path/to/narv
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
source "$here/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

# Working hours all day today, 600 ml drunk already (today, so that the
# launch does not start a new day), 250 ml chosen last time. Nothing is to
# leave the machine: no update check.
narv_scratch_home
start_watcher
narv_start <<CONF
[General]
auto_check_update=false
pref.water.enable=true
pref.water.interval.start=$(date -d 'today 00:00:00' +%s)
pref.water.interval.end=$(date -d 'today 23:59:59' +%s)
pref.water.finished=600
pref.water.lastSelectedAmount=250
pref.water.lastShowDate=$(date +%s)
CONF
fail_context() {
    echo "--- windows"; xwininfo -root -tree | grep '"Water' || true
    echo "--- settings"; cat "$home/config/narv/narv.conf"
}
water_label() {
    local id
    id=$(menu_find label '"Water (') && menu_label "$id"
}
label_is() { [[ $(water_label) == "$1" ]]; }
click_water_item() { menu_click label '"Water (' || fail "no water item in the menu"; }
panels() { windows_named "Water Reminder" "${1:-}"; }
shown() { [[ $(panels --onlyvisible | wc -l) -eq 1 ]]; }
gone() { [[ -z $(panels --onlyvisible) ]]; }
stored() { grep -qx "$1" "$home/config/narv/narv.conf"; }
shot() { xwd -root -silent >"$home/shot.xwd"; }
# "KIND X Y W H" for "Done", the one blue thing below the amounts. (Its white
# letters cut the blue in short columns, so it need not read as a capsule.)
done_button() { python3 "$here/xshot.py" blue "$home/shot.xwd" 1000 260 280 70 | head -1 | grep .; }

# --- the water item is in the menu, the panel is not on the screen
wait_for 20 label_is "Water (40% )" || fail "no water item reading \"Water (40% )\": $(water_label)"
gone || fail "the panel is there before it was asked for"
ok "the menu has the water item with today's tally"

# --- the item opens the panel
click_water_item
wait_for 10 shown || fail "the water item did not open the panel"
panel=$(panels)
[[ $(wc -w <<<"$panel") -eq 1 ]] || fail "expected one water panel, got $panel"
check_geometry "$panel" 1000 0 280 330
check_hints "$panel" ABOVE STICKY
ok "one panel at the top-right corner of the primary monitor, 280x330, above, on every desktop, borderless"

drawn() { shot && done_button >/dev/null; }
wait_for 10 drawn || fail "no \"Done\" on the panel"

# --- "Done" drinks the chosen amount, then the panel goes
read -r _ x y _ _ < <(done_button)
xdotool mousemove "$x" "$y" click 1
wait_for 5 stored "pref.water.finished=850" || fail "Done did not add 250 ml"
wait_for 5 label_is "Water (56% )" || fail "the menu's item did not follow: $(water_label)"
ok "Done adds the chosen amount to the settings and to the menu"
wait_for 10 gone || fail "the panel stayed after Done"
ok "the panel goes after Done"

ended() { logged " : no window left: the window process ends$" "$1"; }
# --- the item toggles the panel; moved, it comes back where it was put,
# from a new window process
click_water_item
wait_for 10 shown || fail "the water item did not open the panel again"
views=$(views_pid)
[[ -n $views ]] || fail "no window process draws the panel"
pid=$views mapped libQt6Quick || fail "the panel is not drawn by the window process"
! pid=$views mapped libQt6QuickTemplates2 || fail "Qt Quick Controls are loaded for the panel"
! mapped libQt6Quick || fail "Qt Quick came into the counting process"
xdotool windowmove "$(panels --onlyvisible)" 600 200
wait_for 10 settled "$views" || fail "the window process did not settle after the move"
click_water_item
wait_for 10 gone || fail "the water item did not close the panel"
wait_for 10 ended 2 || fail "the window process stayed after the panel went"
click_water_item
wait_for 10 shown || fail "the water item did not open the panel a third time"
check_geometry "$(panels --onlyvisible)" 600 200 280 330
click_water_item
wait_for 10 gone || fail "the water item did not close the panel"
ok "the water item toggles the panel, drawn without Qt Quick Controls, back where it was moved"

narv_stop menu
echo "e2e water panel: $passed passed, 0 failed"
